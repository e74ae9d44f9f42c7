#pragma once

#include <QString>

namespace zvwidgets {

/// How keys and selection act, in all documents and views of the program.
struct EditingFlags
{
    bool fCursorWrap = false; ///< Left and Right cross line ends
    /// Tabs are kept and not replaced by blanks. The option of the opposite
    /// name is stored here as it stands, which is meant.
    bool fSaveTab = false;
    bool fVerticalSelection = false; ///< the selection is a box of columns
    bool fOvr = false;
    bool fAutoIndent = true;
    bool fRemoveSpaces = false; ///< strip trailing blanks of a line the cursor leaves
    bool fBackspaceIndent = true;
    bool fSmartHome = true;
    bool fLineWrap = false;
    /// As it was set; documents hold it clamped to 1 to 16.
    int wantedTabWidth = 8;
    /// Stands in for the X11 selection where there is none.
    QString winClipboard;
};

} // namespace zvwidgets
