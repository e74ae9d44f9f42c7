/// Draws the contact sheet of the icon set, see scripts/icon-sheet.

#include "app/utils.h"

#include <QApplication>
#include <QFile>
#include <QPainter>

namespace {

constexpr int cell = 64;
constexpr int columns = 14;

/// One icon at twice its size on screen, so that single pixels can be judged.
void drawIcon(QPainter *painter, const QRect &where, const QPixmap &pixmap)
{
    const int zoom = pixmap.width() > 40 ? 1 : 2;
    QPixmap flat = pixmap;
    flat.setDevicePixelRatio(1);
    const QSize size = flat.size() * zoom / int(qApp->devicePixelRatio());
    const QRect target(where.center() - QPoint(size.width() / 2, size.height() / 2),
                       size.boundedTo(where.size()));
    painter->drawPixmap(target, flat);
}

} // namespace

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    const QStringList arguments = QApplication::arguments();
    QFile list(arguments.value(1));
    if (!list.open(QIODevice::ReadOnly))
        return 1;
    QStringList names = QString::fromUtf8(list.readAll()).split(u'\n', Qt::SkipEmptyParts);
    names.removeIf([](const QString &name) { return name.startsWith(u"vesk"); });

    const int rows = int(names.size() + columns - 1) / columns;
    const QColor grounds[] = {QColor(0xf0, 0xf0, 0xf0), QColor(0x2b, 0x2b, 0x2b)};
    QImage sheet(columns * cell, rows * cell * 4, QImage::Format_RGB32);
    QPainter painter(&sheet);
    int top = 0;
    for (const bool disabled : {false, true}) {
        for (const QColor &ground : grounds) {
            painter.fillRect(0, top, sheet.width(), rows * cell, ground);
            for (int i = 0; i < names.size(); ++i) {
                const QRect where(i % columns * cell, top + i / columns * cell, cell, cell);
                drawIcon(&painter, where,
                         disabled ? vesk::Utils::disabledIcon(names[i])
                                  : vesk::Utils::icon(names[i]));
            }
            top += rows * cell;
        }
    }
    painter.end();
    return sheet.save(arguments.value(2)) ? 0 : 1;
}
