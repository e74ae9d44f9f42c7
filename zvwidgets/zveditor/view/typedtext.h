#pragma once

#include <QKeyEvent>

namespace zvwidgets {

/// True if the key brings something to type, not a control character. A null
/// character is what some keys give together with Ctrl.
inline bool isTypedText(const QKeyEvent *event)
{
    const QString text = event->text();
    if (text.isEmpty())
        return false;
    const char16_t first = text.at(0).unicode();
    if (first == u'\t' || first == 0)
        return !event->modifiers().testFlag(Qt::ControlModifier);
    return first > 31 && first != 127;
}

} // namespace zvwidgets
