#include "app/widgets/colorcombo.h"

#include <QApplication>
#include <QColorDialog>
#include <QPainter>
#include <QPixmap>

namespace vesk {

namespace {

constexpr int noneIndex = 0;
constexpr int customIndex = 1;
constexpr int swatchEdge = 16;

const char *const standardNames[] = {
    "red",     "green",     "blue",     "cyan",     "magenta",     "yellow",
    "darkRed", "darkGreen", "darkBlue", "darkCyan", "darkMagenta", "darkYellow",
    "white",   "lightGray", "gray",     "darkGray", "black"};

/// Invalid for a name that stands for no colour.
QColor colorOf(const QString &name)
{
    // The one standard name that the toolkit does not know.
    if (name == QLatin1String("darkYellow"))
        return QColor(0x80, 0x80, 0);
    return QColor::isValidColor(name) ? QColor(name) : QColor();
}

QIcon swatch(const QColor &color)
{
    // In the pixels of the finest screen.
    const qreal ratio = qApp->devicePixelRatio();
    QPixmap pixmap(QSize(swatchEdge, swatchEdge) * ratio);
    pixmap.setDevicePixelRatio(ratio);
    pixmap.fill(Qt::black);
    QPainter painter(&pixmap);
    painter.fillRect(1, 1, swatchEdge - 2, swatchEdge - 2, color);
    return QIcon(pixmap);
}

} // namespace

ColorCombo::ColorCombo(QWidget *parent, const QString &name) : QComboBox(parent)
{
    setObjectName(name);
    createStandardPalette();
    updateColors();
    connect(this, &QComboBox::activated, this, &ColorCombo::slotActivated);
}

void ColorCombo::createStandardPalette()
{
    addItem(tr("none"));
    addItem(swatch(customColor), tr("custom"));
    for (const char *const standardName : standardNames) {
        const QString name = QString::fromLatin1(standardName);
        pos2color.insert(count(), name);
        color2pos.insert(name, count());
        addItem(swatch(colorOf(name)), name);
    }
}

void ColorCombo::setColor(const QColor &color)
{
    hascolor = color.isValid();
    if (hascolor)
        currentColor = color;
    updateColors();
}

QColor ColorCombo::color() const
{
    return hasColor() ? currentColor : QColor();
}

bool ColorCombo::hasColor() const
{
    return currentIndex() > noneIndex;
}

void ColorCombo::setColorName(const QString &name)
{
    setColor(name.isEmpty() ? QColor() : colorOf(name));
}

QString ColorCombo::colorName() const
{
    if (!hasColor())
        return {};
    for (auto it = color2pos.cbegin(); it != color2pos.cend(); ++it) {
        if (colorOf(it.key()) == currentColor)
            return it.key();
    }
    return currentColor.name();
}

void ColorCombo::updateColors()
{
    if (!hascolor) {
        setCurrentIndex(noneIndex);
        return;
    }
    for (auto it = color2pos.cbegin(); it != color2pos.cend(); ++it) {
        if (colorOf(it.key()) == currentColor) {
            setCurrentIndex(it.value());
            return;
        }
    }
    customColor = currentColor;
    paintCustomSwatch();
    setCurrentIndex(customIndex);
}

void ColorCombo::paintCustomSwatch()
{
    setItemIcon(customIndex, swatch(customColor));
}

void ColorCombo::slotActivated(int index)
{
    hascolor = index != noneIndex;
    if (index == customIndex) {
        const QColor chosen = QColorDialog::getColor(customColor, this);
        if (chosen.isValid()) {
            customColor = chosen;
            currentColor = chosen;
            paintCustomSwatch();
        }
    } else if (index > customIndex) {
        currentColor = colorOf(pos2color.value(index));
    }
    emit activated(currentColor);
}

} // namespace vesk
