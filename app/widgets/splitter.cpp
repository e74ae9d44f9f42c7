#include "app/widgets/splitter.h"

#include <QChildEvent>
#include <QHash>
#include <QLayoutItem>
#include <QMouseEvent>
#include <QPainter>
#include <QTextStream>

#include <optional>

namespace vesk {

namespace {

/// Mixes \a a, weighted with \a alpha of 255, into \a b.
QColor alphaBlendColors(const QColor &a, const QColor &b, int alpha)
{
    const int weight = qBound(0, alpha, 255);
    const auto mix = [weight](int first, int second) {
        return second * (255 - weight) / 255 + first * weight / 255;
    };
    return QColor(mix(a.red(), b.red()), mix(a.green(), b.green()), mix(a.blue(), b.blue()));
}

int along(Qt::Orientation orientation, const QSize &size)
{
    return orientation == Qt::Horizontal ? size.width() : size.height();
}

int along(Qt::Orientation orientation, const QPoint &point)
{
    return orientation == Qt::Horizontal ? point.x() : point.y();
}

} // namespace

SplitterHandle::SplitterHandle(Qt::Orientation orientation, Splitter *parent)
    : QSplitterHandle(orientation, parent), s(parent)
{}

void SplitterHandle::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    s->drawSplitter(&painter, 0, 0, width(), height());
}

int SplitterHandle::id() const
{
    return s->indexOf(const_cast<SplitterHandle *>(this));
}

int SplitterHandle::wantedPos(const QMouseEvent *event) const
{
    const QPointF inSplitter = s->mapFromGlobal(event->globalPosition());
    return along(orientation(), inSplitter.toPoint()) - grip;
}

void SplitterHandle::mousePressEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton)
        grip = along(orientation(), event->position().toPoint());
}

void SplitterHandle::mouseMoveEvent(QMouseEvent *event)
{
    if (!(event->buttons() & Qt::LeftButton))
        return;
    if (s->opaqueResize())
        s->moveSplitter(wantedPos(event), id());
    else
        s->setRubberband(s->adjustPos(wantedPos(event), id()));
}

void SplitterHandle::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton || s->opaqueResize())
        return;
    s->setRubberband(-1);
    s->moveSplitter(wantedPos(event), id());
}

struct Splitter::Private
{
    struct Pane
    {
        /// The last one that it had while it was visible and not collapsed; 0 if none.
        int openSize = 0;
        /// What counts while the pane is hidden; -1 if it never had a size.
        int hiddenSize = -1;
        ResizeMode mode = Auto;
        /// The value of setCollapsible(), if it was called for this pane.
        std::optional<bool> collapsible;
        enum class State
        {
            Shown,
            Hidden,
            Returning
        };
        /// Returning means that it was shown and has not got its size back yet.
        State state = State::Shown;
    };

    QHash<const QObject *, Pane> panes;
};

Splitter::Splitter(QWidget *parent, const QString &name) : Splitter(Qt::Horizontal, parent, name)
{}

Splitter::Splitter(Qt::Orientation orientation, QWidget *parent, const QString &name)
    : QSplitter(orientation, parent), d(std::make_unique<Private>())
{
    setObjectName(name);
    QSplitter::setOpaqueResize(false);
}

Splitter::~Splitter() = default;

void Splitter::setOrientation(Qt::Orientation orientation)
{
    QSplitter::setOrientation(orientation);
}

void Splitter::setResizeMode(QWidget *pane, ResizeMode mode)
{
    const int index = indexOf(pane);
    if (index < 0)
        return;
    d->panes[pane].mode = mode;
    bool keepsAny = false;
    for (const Private::Pane &record : std::as_const(d->panes))
        keepsAny |= record.mode == KeepSize || record.mode == FollowSizeHint;
    // Without any factor the toolkit lets all panes grow in proportion.
    for (int i = 0; i < count(); ++i) {
        const ResizeMode own = d->panes.value(widget(i)).mode;
        setStretchFactor(i, keepsAny && (own == Stretch || own == Auto) ? 1 : 0);
    }
}

void Splitter::setOpaqueResize(bool on)
{
    QSplitter::setOpaqueResize(on);
}

void Splitter::setCollapsible(QWidget *pane, bool on)
{
    const int index = indexOf(pane);
    if (index < 0)
        return;
    d->panes[pane].collapsible = on;
    QSplitter::setCollapsible(index, on);
}

void Splitter::moveToFirst(QWidget *pane)
{
    insertWidget(0, pane);
}

void Splitter::moveToLast(QWidget *pane)
{
    insertWidget(count(), pane);
}

QList<int> Splitter::sizes() const
{
    QList<int> list = QSplitter::sizes();
    for (int i = 0; i < list.size(); ++i) {
        const QWidget *const pane = widget(i);
        const int hint = along(orientation(), pane->sizeHint());
        if (pane->isHidden()) {
            const int hiddenSize = d->panes.value(pane).hiddenSize;
            list[i] = hiddenSize < 0 ? hint : hiddenSize;
        } else if (list.at(i) == 0 && !isVisible() && !isCollapsed(pane)) {
            list[i] = hint;
        }
    }
    return list;
}

void Splitter::setSizes(const QList<int> &list)
{
    QList<int> all = sizes();
    for (int i = 0; i < qMin(list.size(), all.size()); ++i) {
        all[i] = list.at(i);
        d->panes[widget(i)].hiddenSize = qMax(0, list.at(i));
    }
    QSplitter::setSizes(all);
}

/// Sets the entry \a index of \a list; the largest other visible pane pays for it.
void Splitter::give(QList<int> *list, int index, int size) const
{
    int payer = -1;
    for (int j = 0; j < count(); ++j) {
        if (j != index && !widget(j)->isHidden() && (payer < 0 || list->at(j) > list->at(payer)))
            payer = j;
    }
    if (payer < 0)
        return;
    (*list)[payer] = qMax(1, list->at(payer) + list->at(index) - size);
    (*list)[index] = size;
}

void Splitter::reopen(QWidget *pane, int standard)
{
    const int index = indexOf(pane);
    QList<int> list = sizes();
    if (index < 0 || list.at(index) > 0)
        return;
    Private::Pane &record = d->panes[pane];
    const int size = record.openSize > 0 ? record.openSize : standard;
    if (pane->isHidden()) {
        // It gets it when it is shown.
        record.hiddenSize = size;
        return;
    }
    give(&list, index, size);
    setSizes(list);
}

void Splitter::setHandleWidth(int width)
{
    QSplitter::setHandleWidth(width > 0 ? width : -1);
}

int Splitter::idAfter(const QWidget *pane) const
{
    const int index = indexOf(const_cast<QWidget *>(pane));
    return index >= 0 && index + 1 < count() ? index + 1 : 0;
}

void Splitter::moveSplitter(int pos, int id)
{
    QSplitter::moveSplitter(pos, id);
}

int Splitter::adjustPos(int pos, int id)
{
    return closestLegalPosition(pos, id);
}

void Splitter::getRange(int id, int *min, int *max) const
{
    QSplitter::getRange(id, min, max);
}

void Splitter::drawSplitter(QPainter *painter, int x, int y, int width, int height)
{
    constexpr int dotDistance = 5;
    constexpr int dotWeight = 70;
    const QColor background = palette().color(QPalette::Window);
    const QColor light = alphaBlendColors(background, background.lighter(160), dotWeight);
    const QColor dark = alphaBlendColors(background, background.darker(160), dotWeight);
    painter->fillRect(x, y, width, height, background);
    if (width > height && height > 4) {
        const int middle = y + height / 2;
        for (int i = x; i < x + width; i += dotDistance) {
            painter->setPen(light);
            painter->drawLine(i, middle - 1, i + 1, middle - 1);
            painter->drawPoint(i, middle);
            painter->setPen(dark);
            painter->drawPoint(i + 1, middle);
        }
    } else if (width <= height && width > 4) {
        const int middle = x + width / 2;
        for (int j = y; j < y + height; j += dotDistance) {
            painter->setPen(light);
            painter->drawLine(middle - 1, j, middle - 1, j + 1);
            painter->drawPoint(middle, j);
            painter->setPen(dark);
            painter->drawPoint(middle, j + 1);
        }
    }
}

void Splitter::setRubberband(int pos)
{
    QSplitter::setRubberBand(pos);
}

QSplitterHandle *Splitter::createHandle()
{
    return new SplitterHandle(orientation(), this);
}

void Splitter::childEvent(QChildEvent *event)
{
    QSplitter::childEvent(event);
    if (event->removed())
        d->panes.remove(event->child());
    else if (event->added())
        event->child()->installEventFilter(this);
}

bool Splitter::eventFilter(QObject *object, QEvent *event)
{
    const int index = object->isWidgetType() ? indexOf(static_cast<QWidget *>(object)) : -1;
    // A handle has the index of its pane.
    const QWidget *const pane = widget(index);
    if (pane && pane == object && event->type() == QEvent::HideToParent) {
        Private::Pane &record = d->panes[pane];
        record.state = Private::Pane::State::Hidden;
        // Before the splitter is shown the pane has no size of its own yet.
        if (isVisible())
            record.hiddenSize = isCollapsed(pane) ? 0 : along(orientation(), pane->size());
    } else if (pane && pane == object && event->type() == QEvent::Resize) {
        const int size = along(orientation(), pane->size());
        if (pane->isVisible() && size > 0 && !isCollapsed(pane))
            d->panes[pane].openSize = size;
    } else if (pane && pane == object && event->type() == QEvent::ShowToParent) {
        Private::Pane &record = d->panes[pane];
        if (record.state == Private::Pane::State::Hidden)
            record.state = Private::Pane::State::Returning;
    }
    return QSplitter::eventFilter(object, event);
}

bool Splitter::event(QEvent *event)
{
    const bool result = QSplitter::event(event);
    if (event->type() == QEvent::LayoutRequest || event->type() == QEvent::Show)
        settleCollapsible();
    if (event->type() == QEvent::LayoutRequest)
        settleSizes();
    return result;
}

bool Splitter::isCollapsed(const QWidget *pane) const
{
    return pane->x() < 0 || pane->y() < 0;
}

/// The size that the pane \a index must have now that the room was shared out
/// anew; -1 if any is right.
int Splitter::takeWantedSize(int index)
{
    const QWidget *const pane = widget(index);
    Private::Pane &record = d->panes[pane];
    if (pane->isHidden())
        return -1;
    if (record.state == Private::Pane::State::Returning) {
        record.state = Private::Pane::State::Shown;
        return record.hiddenSize;
    }
    return record.mode == FollowSizeHint ? along(orientation(), pane->sizeHint()) : -1;
}

/// Tells the toolkit which panes may collapse as their minimum sizes are now.
void Splitter::settleCollapsible()
{
    for (int i = 0; i < count(); ++i) {
        const int minimum = along(orientation(), QWidgetItem(widget(i)).minimumSize());
        const bool wish = d->panes[widget(i)].collapsible.value_or(childrenCollapsible());
        QSplitter::setCollapsible(i, minimum != 1 && wish);
    }
}

/// Gives, after the toolkit has shared out the room, the panes that want a
/// certain size just that.
void Splitter::settleSizes()
{
    QList<int> list = sizes();
    const QList<int> shared = list;
    for (int i = 0; i < count(); ++i) {
        const int wanted = takeWantedSize(i);
        if (wanted < 0 || wanted == list.at(i))
            continue;
        give(&list, i, wanted);
    }
    if (list != shared)
        setSizes(list);
}

QTextStream &operator<<(QTextStream &stream, const Splitter &splitter)
{
    const QList<int> sizes = splitter.sizes();
    stream << QLatin1Char('[');
    for (int i = 0; i < sizes.size(); ++i) {
        const QWidget *const pane = splitter.widget(i);
        if (i > 0)
            stream << QLatin1Char(',');
        if (pane->isHidden())
            stream << QLatin1Char('H');
        stream << (splitter.isCollapsed(pane) ? 0 : sizes.at(i));
    }
    return stream << QLatin1Char(']') << Qt::endl;
}

QTextStream &operator>>(QTextStream &stream, Splitter &splitter)
{
    stream.skipWhiteSpace();
    const QString line = stream.readLine();
    QList<int> sizes = splitter.sizes();
    if (!line.startsWith(QLatin1Char('[')))
        return stream;
    int pane = 0;
    qsizetype at = 1;
    const auto isAt = [&line, &at](char c) {
        return at < line.size() && line.at(at).toLower() == QLatin1Char(c);
    };
    for (; pane < sizes.size() && at < line.size(); ++pane) {
        const bool isHidden = isAt('h');
        if (isHidden)
            ++at;
        const qsizetype digits = at;
        while (at < line.size() && line.at(at) >= QLatin1Char('0') &&
               line.at(at) <= QLatin1Char('9'))
            ++at;
        if (at == digits && !isHidden)
            break;
        splitter.widget(pane)->setVisible(!isHidden);
        if (at == digits)
            break;
        bool fits = false;
        const int size = QStringView(line).mid(digits, at - digits).toInt(&fits);
        sizes[pane] = fits ? qMin(size, QWIDGETSIZE_MAX) : QWIDGETSIZE_MAX;
        if (isAt(','))
            ++at;
    }
    splitter.setSizes(sizes);
    return stream;
}

} // namespace vesk
