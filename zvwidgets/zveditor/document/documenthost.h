#pragma once

#include "zvwidgets/zveditor/document/editingflags.h"
#include "zvwidgets/zveditor/document/textfonts.h"

namespace zvwidgets {

class TextEditorManager;

/// What documents take from the program they belong to. The shared manager is one;
/// where there are documents without views any other serves.
class DocumentHost : public EditingFlags, public TextFonts
{
public:
    virtual ~DocumentHost() = default;

    /// Itself, which a document only hands on; null if it is none.
    virtual TextEditorManager *textEditorManager() { return nullptr; }
};

} // namespace zvwidgets
