#pragma once

#include <QColor>
#include <QString>

namespace zvwidgets {

/// One colour item of a definition at run time.
struct TextAttribute
{
    QString itemName;
    QColor color;
    bool usebg = false; ///< the item has a background of its own
    QColor bgcolor;
    int fontType = 0; ///< bit 0 italic, bit 1 bold: index of the manager's font
};

} // namespace zvwidgets
