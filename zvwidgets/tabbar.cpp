#include "zvwidgets/tabbar.h"

#include "zvwidgets/tabbar_p.h"

#include <QKeyEvent>
#include <QMouseEvent>

#include <utility>

namespace zvwidgets {

namespace {

constexpr int pressInterval = 250; // ms
constexpr int hoverInterval = 500; // ms

} // namespace

TabBar::TabBar(QWidget *parent, const QString &name)
    : QWidget(parent), d(std::make_unique<Private>(this))
{
    setObjectName(name);
    setFocusPolicy(Qt::TabFocus);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    connect(&d->scrollTimer, &QTimer::timeout, this, &TabBar::breakTimeout);
}

TabBar::~TabBar() = default;

int TabBar::insertTab(const QString &label, int index, int id)
{
    return insertTab(QIcon(), label, index, id);
}

int TabBar::insertTab(const QIcon &icon, const QString &label, int index, int id)
{
    auto added = std::make_unique<Private::Entry>();
    const int wanted = id >= 0 && d->indexOf(id) < 0 ? id : d->nextId;
    d->nextId = qMax(d->nextId, wanted + 1);
    added->tab.label = label;
    added->tab.icon = icon;
    added->tab.id = wanted;
    d->updateShortcut(*added);
    d->updateWidth(added->tab);
    const bool isInside = index >= 0 && index < count();
    d->tabs.insert(isInside ? d->tabs.begin() + index : d->tabs.end(), std::move(added));
    if (d->firstVisibleTab < 0)
        d->firstVisibleTab = wanted;
    update();
    return wanted;
}

int TabBar::addTab(const QString &label, int id)
{
    return insertTab(QIcon(), label, count(), id);
}

int TabBar::addTab(const QIcon &icon, const QString &label, int id)
{
    return insertTab(icon, label, count(), id);
}

void TabBar::removeTab(int id)
{
    const int index = d->indexOf(id);
    if (index < 0)
        return;
    const int after = d->idAt(index + 1);
    const int neighbour = after >= 0 ? after : d->idAt(index - 1);
    d->tabs.erase(d->tabs.begin() + index);
    if (d->firstVisibleTab == id)
        d->firstVisibleTab = neighbour;
    if (d->pressedTab == id)
        d->pressedTab = -1;
    if (d->currentTab == id) {
        d->currentTab = d->announcedTab = -1;
        setCurrentTab(neighbour);
    }
    update();
}

void TabBar::clear()
{
    d->tabs.clear();
    d->currentTab = d->announcedTab = d->firstVisibleTab = d->pressedTab = -1;
    update();
}

int TabBar::count() const
{
    return int(d->tabs.size());
}

void TabBar::setTabTitle(int id, const QString &label)
{
    Private::Entry *const changed = d->entry(id);
    if (!changed || changed->tab.label == label)
        return;
    changed->tab.label = label;
    d->updateShortcut(*changed);
    d->updateWidth(changed->tab);
    update();
}

void TabBar::setTabIcon(int id, const QIcon &icon)
{
    Private::Entry *const changed = d->entry(id);
    if (!changed)
        return;
    changed->tab.icon = icon;
    d->updateWidth(changed->tab);
    update();
}

void TabBar::setTabEnabled(int id, bool enabled)
{
    Private::Entry *const changed = d->entry(id);
    if (!changed)
        return;
    changed->tab.enabled = enabled;
    if (changed->shortcut)
        changed->shortcut->setEnabled(enabled);
    update();
}

QString TabBar::tabTitle(int id) const
{
    const Private::Entry *const found = d->entry(id);
    return found ? found->tab.label : QString();
}

QIcon TabBar::tabIcon(int id) const
{
    const Private::Entry *const found = d->entry(id);
    return found ? found->tab.icon : QIcon();
}

bool TabBar::isTabEnabled(int id) const
{
    const Private::Entry *const found = d->entry(id);
    return found && found->tab.enabled;
}

int TabBar::firstTab(bool enabledOnly) const
{
    return d->search(0, 1, enabledOnly);
}

int TabBar::lastTab(bool enabledOnly) const
{
    return d->search(count() - 1, -1, enabledOnly);
}

int TabBar::prevTab(int id, bool enabledOnly) const
{
    const int index = d->indexOf(id);
    return index < 0 ? -1 : d->search(index - 1, -1, enabledOnly);
}

int TabBar::nextTab(int id, bool enabledOnly) const
{
    const int index = d->indexOf(id);
    return index < 0 ? -1 : d->search(index + 1, 1, enabledOnly);
}

int TabBar::currentTab() const
{
    return d->currentTab;
}

void TabBar::setCurrentTab(int id)
{
    if (!d->entry(id))
        return;
    d->setCurrentTabInternal(id);
    if (d->announcedTab == id)
        return;
    d->announcedTab = id;
    d->makeTabVisible(id);
    emit currentChanged(id);
}

void TabBar::setTabPosition(int position)
{
    if (position < Top || position > Right || position == d->tabPosition)
        return;
    const bool wasVertical = d->isVertical();
    d->tabPosition = position;
    if (wasVertical != d->isVertical()) {
        QSizePolicy turned = sizePolicy();
        turned.transpose();
        setSizePolicy(turned);
    }
    updateGeometry();
    update();
}

int TabBar::tabPosition() const
{
    return d->tabPosition;
}

void TabBar::setViewStyle(int style)
{
    d->viewStyle = style;
    d->updateWidths();
}

int TabBar::viewStyle() const
{
    return d->viewStyle;
}

void TabBar::setAllowDragging(bool allow)
{
    d->allowDragging = allow;
}

QRect TabBar::tabRect(int id) const
{
    const QRect along = d->rect(id);
    return along.isNull() ? along : d->transform().mapRect(along);
}

QSize TabBar::sizeHint() const
{
    const int text = fontMetrics().height() + 12;
    const QSize level(d->buttonsWidth() + 28, d->has(ShowIcons) ? qMax(text, 26) : text);
    return d->isVertical() ? level.transposed() : level;
}

QSize TabBar::minimumSizeHint() const
{
    return sizeHint();
}

void TabBar::breakTimeout()
{
    if (d->backPressed) {
        update();
        d->scrollRight();
    }
    if (d->forwardPressed) {
        update();
        d->scrollLeft();
    }
}

void TabBar::mousePressEvent(QMouseEvent *event)
{
    const QPoint pos = d->toBar(event->position());
    const int pressed = d->tabByPos(pos);
    d->pressedTab = isTabEnabled(pressed) ? pressed : -1;
    if (event->button() == Qt::RightButton) {
        setCurrentTab(d->pressedTab);
        return;
    }
    d->dragging = false;
    d->checkButtons(pos);
    if (d->backPressed || d->forwardPressed)
        d->scrollTimer.start(pressInterval);
    update();
    d->setCurrentTabInternal(d->pressedTab);
}

void TabBar::mouseMoveEvent(QMouseEvent *event)
{
    if ((event->buttons() & Qt::RightButton) || !d->allowDragging)
        return;
    if (!rect().contains(event->position().toPoint())) {
        if (std::exchange(d->dragging, true))
            emit continueTabDrag(event);
        else
            emit startTabDrag(d->pressedTab, event);
        return;
    }
    if (std::exchange(d->dragging, false))
        emit cancelTabDrag(event);
    const QPoint pos = d->toBar(event->position());
    d->checkButtons(pos);
    if (d->backPressed || d->forwardPressed)
        d->scrollTimer.start(hoverInterval);
    else
        d->scrollTimer.stop();
    update();
    const int other = d->tabByPos(pos);
    if (d->pressedTab >= 0 && other != d->pressedTab && isTabEnabled(other))
        d->swapPressed(other, pos);
}

void TabBar::mouseReleaseEvent(QMouseEvent *event)
{
    const int pressed = std::exchange(d->pressedTab, -1);
    if (event->button() == Qt::RightButton) {
        emit tabRightButtonPressed(pressed, event->globalPosition().toPoint());
        return;
    }
    d->scrollTimer.stop();
    if (std::exchange(d->dragging, false)) {
        emit finishTabDrag(event);
        return;
    }
    if (d->backPressed || d->forwardPressed) {
        d->releaseButton();
        return;
    }
    if (std::exchange(d->closePressed, false)) {
        update();
        emit closeTab(d->currentTab);
        return;
    }
    setCurrentTab(pressed);
}

void TabBar::mouseDoubleClickEvent(QMouseEvent *event)
{
    const QPoint pos = d->toBar(event->position());
    const int tab = d->tabByPos(pos);
    // Fast clicks on a button are clicks, and so are those that scroll tab by tab.
    if (tab < 0 || pos.x() < d->startPos())
        mousePressEvent(event);
    else
        emit tabDoubleClick(tab);
}

void TabBar::resizeEvent(QResizeEvent *)
{
    d->useRoom();
}

void TabBar::keyPressEvent(QKeyEvent *event)
{
    switch (event->key()) {
    case Qt::Key_Home:
        setCurrentTab(firstTab(true));
        break;
    case Qt::Key_End:
        setCurrentTab(lastTab(true));
        break;
    case Qt::Key_Left:
    case Qt::Key_Up:
        setCurrentTab(prevTab(d->currentTab, true));
        break;
    case Qt::Key_Right:
    case Qt::Key_Down:
        setCurrentTab(nextTab(d->currentTab, true));
        break;
    default:
        event->ignore();
    }
}

void TabBar::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange)
        d->updateWidths();
    QWidget::changeEvent(event);
}

} // namespace zvwidgets
