#include "zvwidgets/tabbar_p.h"

#include <QPainter>
#include <QPolygonF>

namespace zvwidgets {

void TabBar::Private::paintButtons(QPainter &painter) const
{
    paintButton(painter, Back, canScrollBack(), backPressed);
    paintButton(painter, Forward, canScrollForward(), forwardPressed);
    if (has(WideButtons))
        paintButton(painter, Close, true, closePressed);
}

void TabBar::Private::paintButton(QPainter &painter, Button button, bool isLive, bool isHeld) const
{
    const QPalette::ColorGroup group = isLive ? QPalette::Active : QPalette::Disabled;
    const QColor color = q->palette().color(group, QPalette::WindowText);
    QRectF box = QRectF(buttonRect(button)).adjusted(0.5, 1.5, -0.5, -1.5);
    if (isHeld)
        box.translate(1, 1);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(color, 1.5));
    painter.setBrush(color);
    if (button == Close) {
        painter.drawLine(box.topLeft(), box.bottomRight());
        painter.drawLine(box.topRight(), box.bottomLeft());
    } else {
        const qreal tip = button == Back ? box.left() + 1 : box.right() - 1;
        const qreal base = button == Back ? box.right() - 2 : box.left() + 2;
        painter.setPen(Qt::NoPen);
        painter.drawPolygon(QPolygonF({QPointF(tip, box.center().y()), QPointF(base, box.top()),
                                       QPointF(base, box.bottom())}));
    }
    painter.restore();
}

void TabBar::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    const QPalette::ColorRole strip = d->has(NarrowOthers) ? QPalette::Midlight : QPalette::Window;
    painter.fillRect(rect(), palette().color(strip));
    painter.setTransform(d->transform());

    const auto draw = [&](Tab &tab, int x) {
        painter.save();
        painter.translate(x, 0);
        drawTab(painter, palette(), &tab);
        painter.restore();
    };
    // The edge of the pages, which only the current tab breaks.
    const bool isFlipped = d->tabPosition == Bottom || d->tabPosition == Left;
    painter.setPen(palette().color(QPalette::Mid));
    const int edge = isFlipped ? 0 : d->rh() - 1;
    painter.drawLine(0, edge, d->rw() - 1, edge);

    painter.save();
    painter.setClipRect(QRect(0, 0, d->rw() - d->buttonsWidth(), d->rh()));
    int x = d->startPos();
    for (int i = d->indexOf(d->firstVisibleTab); i >= 0 && i < count() && x < d->rw(); ++i) {
        Tab &tab = d->tabs[size_t(i)]->tab;
        if (tab.id != d->currentTab)
            draw(tab, x);
        x += tab.width;
    }
    const QRect current = d->rect(d->currentTab);
    if (!current.isNull())
        draw(d->entry(d->currentTab)->tab, current.left());
    painter.restore();
    d->paintButtons(painter);
}

void TabBar::drawTab(QPainter &painter, const QPalette &palette, Tab *tab)
{
    const bool isCurrent = tab->id == d->currentTab;
    const bool isFlipped = d->tabPosition == Bottom || d->tabPosition == Left;
    const int width = tab->width + (isCurrent ? 2 * Private::currentOverlap : 0);
    const int rise = isCurrent ? 2 : 5;
    QRect body(0, rise, width, d->rh() - rise);
    if (isFlipped)
        body.moveTop(0);

    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(palette.color(isCurrent ? QPalette::Dark : QPalette::Mid));
    painter.setBrush(isCurrent ? palette.window() : palette.button());
    // The outline runs beyond the open edge, so that nothing is drawn there.
    const QRectF outline =
        QRectF(body).adjusted(0.5, isFlipped ? -6.5 : 0.5, -0.5, isFlipped ? -0.5 : 6.5);
    painter.drawRoundedRect(outline, 3, 3);
    painter.setRenderHint(QPainter::Antialiasing, false);
    if (!isCurrent) {
        const int edge = isFlipped ? 0 : d->rh() - 1;
        painter.setPen(palette.color(QPalette::Mid));
        painter.drawLine(0, edge, width - 1, edge);
    }

    painter.setFont(d->labelFont(*tab));
    const int icon = d->has(ShowIcons) && !tab->icon.isNull() ? Private::iconStep : 0;
    const QString label = Private::clearString(tab->label);
    const int content = icon + painter.fontMetrics().horizontalAdvance(label);
    const int left = (width - content) / 2;
    if (icon) {
        tab->icon.paint(&painter,
                        QRect(left, body.center().y() - Private::iconSize / 2 + 1,
                              Private::iconSize, Private::iconSize),
                        Qt::AlignCenter, tab->enabled ? QIcon::Normal : QIcon::Disabled);
    }
    painter.setPen(
        palette.color(tab->enabled ? QPalette::Active : QPalette::Disabled, QPalette::WindowText));
    painter.drawText(QRect(left + icon, body.top(), width, body.height()),
                     Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, label);
    painter.restore();
}

} // namespace zvwidgets
