#include "zvwidgets/utils.h"

#include <QApplication>
#include <QMainWindow>

#include <array>
#include <charconv>

namespace zvwidgets {

namespace {

/// The toolkit's own formatting rounds halves up instead of to even.
QString fixed(double value, int digits)
{
    std::array<char, 64> text;
    const auto end =
        std::to_chars(text.begin(), text.end(), value, std::chars_format::fixed, digits).ptr;
    return QString::fromLatin1(text.data(), end - text.data());
}

} // namespace

QString Utils::humanReadableSize(quint64 size)
{
    if (size < 1024)
        return QString::number(size).rightJustified(3) + QLatin1Char('b');
    QChar unit = QLatin1Char('M');
    float value = float(size) / 1048576;
    if (size <= 0xFFFFF) {
        unit = QLatin1Char('K');
        value = float(size) / 1024;
    } else if (size >> 30) {
        unit = QLatin1Char('G');
        value = float(size) / 1073741824;
    }
    const int whole = int(value);
    if (whole <= 9)
        return fixed(value, 2) + unit;
    if (whole <= 99)
        return fixed(value, 1) + unit;
    if (whole <= 999)
        return fixed(value, 0) + unit;
    return unit;
}

QWidget *Utils::mainWindow()
{
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget *const window : windows) {
        if (window->isVisible() && qobject_cast<QMainWindow *>(window))
            return window;
    }
    return nullptr;
}

} // namespace zvwidgets
