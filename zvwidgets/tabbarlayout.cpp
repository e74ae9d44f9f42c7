#include "zvwidgets/tabbar_p.h"

#include <QFontMetrics>
#include <QKeySequence>
#include <QTransform>

#include <utility>

namespace zvwidgets {

namespace {

// Pixels.
constexpr int buttonStep = 14;
constexpr int buttonWidth = 8;
constexpr int buttonHeight = 11;
constexpr int buttonsMargin = 10;

} // namespace

int TabBar::Private::indexOf(int id) const
{
    for (size_t i = 0; i < tabs.size(); ++i) {
        if (tabs[i]->tab.id == id)
            return int(i);
    }
    return -1;
}

TabBar::Private::Entry *TabBar::Private::entry(int id) const
{
    const int index = indexOf(id);
    return index < 0 ? nullptr : tabs[size_t(index)].get();
}

int TabBar::Private::idAt(int index) const
{
    return index >= 0 && index < int(tabs.size()) ? tabs[size_t(index)]->tab.id : -1;
}

/// The first tab from \a index on in steps of \a step; -1 if there is none.
int TabBar::Private::search(int index, int step, bool enabledOnly) const
{
    for (; index >= 0 && index < int(tabs.size()); index += step) {
        const Tab &tab = tabs[size_t(index)]->tab;
        if (tab.enabled || !enabledOnly)
            return tab.id;
    }
    return -1;
}

QString TabBar::Private::clearString(const QString &label)
{
    QString clear;
    for (qsizetype i = 0; i < label.size(); ++i) {
        if (label.at(i) == u'&' && i + 1 < label.size())
            ++i;
        clear += label.at(i);
    }
    return clear;
}

QFont TabBar::Private::labelFont(const Tab &tab) const
{
    QFont font = q->font();
    if (tab.id == currentTab && has(BoldCurrent))
        font.setWeight(QFont::Bold);
    return font;
}

void TabBar::Private::updateWidth(Tab &tab) const
{
    const bool isWide = tab.id == currentTab ? has(WideCurrent) : !has(NarrowOthers);
    const int icon = has(ShowIcons) && !tab.icon.isNull() ? iconStep : 0;
    tab.width = QFontMetrics(labelFont(tab)).horizontalAdvance(clearString(tab.label)) +
                (isWide ? 12 : 4) + icon + 8;
}

void TabBar::Private::updateWidths()
{
    for (const auto &each : tabs)
        updateWidth(each->tab);
    q->update();
    q->updateGeometry();
}

void TabBar::Private::updateShortcut(Entry &changed)
{
    const QKeySequence key = QKeySequence::mnemonic(changed.tab.label);
    changed.shortcut.reset();
    if (key.isEmpty())
        return;
    changed.shortcut = std::make_unique<QShortcut>(key, q);
    changed.shortcut->setEnabled(changed.tab.enabled);
    const int id = changed.tab.id;
    connect(changed.shortcut.get(), &QShortcut::activated, q, [this, id] { q->setCurrentTab(id); });
}

int TabBar::Private::startPos() const
{
    const bool isAtFront = firstVisibleTab == idAt(0) && !has(NarrowOthers);
    return (isAtFront ? 0 : tabsMargin) + (tabs.empty() ? 0 : currentOverlap);
}

/// In coordinates along and across the bar.
QRect TabBar::Private::rect(int id) const
{
    int x = startPos();
    for (int i = indexOf(firstVisibleTab); i >= 0 && i < int(tabs.size()); ++i) {
        const Tab &tab = tabs[size_t(i)]->tab;
        if (tab.id == id) {
            const int overlap = id == currentTab ? currentOverlap : 0;
            return QRect(x - overlap, 0, tab.width + 2 * overlap, rh());
        }
        x += tab.width;
    }
    return QRect();
}

QRect TabBar::Private::buttonRect(Button button) const
{
    return QRect(rw() - buttonsWidth() + buttonsMargin + button * buttonStep,
                 (rh() - buttonHeight) / 2 + 2, buttonWidth, buttonHeight);
}

/// Upright bars are the level one turned, so that text runs downwards.
QTransform TabBar::Private::transform() const
{
    QTransform turned;
    if (isVertical()) {
        turned.translate(q->width(), 0);
        turned.rotate(90);
    }
    return turned;
}

QPoint TabBar::Private::toBar(const QPointF &widgetPos) const
{
    const QPoint pos = widgetPos.toPoint();
    return isVertical() ? QPoint(pos.y(), q->width() - 1 - pos.x()) : pos;
}

int TabBar::Private::tabByPos(const QPoint &pos) const
{
    if (pos.x() < startPos())
        return search(indexOf(firstVisibleTab) - 1, -1, false);
    if (pos.x() >= rw() - buttonsWidth())
        return -1;
    // It lies over the edges of its neighbours.
    if (rect(currentTab).contains(pos))
        return currentTab;
    int x = startPos();
    for (int i = indexOf(firstVisibleTab); i >= 0 && i < int(tabs.size()); ++i) {
        const Tab &tab = tabs[size_t(i)]->tab;
        if (QRect(x, 0, tab.width, rh()).contains(pos))
            return tab.id;
        x += tab.width;
    }
    return -1;
}

void TabBar::Private::checkButtons(const QPoint &pos)
{
    backPressed = canScrollBack() && buttonRect(Back).contains(pos);
    forwardPressed = canScrollForward() && buttonRect(Forward).contains(pos);
    closePressed = buttonRect(Close).contains(pos);
}

bool TabBar::Private::canScrollBack() const
{
    return firstVisibleTab != idAt(0);
}

bool TabBar::Private::canScrollForward() const
{
    const int last = idAt(int(tabs.size()) - 1);
    return last != firstVisibleTab && rect(last).right() >= tabsEnd();
}

void TabBar::Private::makeTabVisible(int id)
{
    const int index = indexOf(id);
    if (index < 0)
        return;
    int first = indexOf(firstVisibleTab);
    if (index < first)
        firstVisibleTab = id;
    int right = rect(id).right();
    while (firstVisibleTab != id && right > tabsEnd()) {
        const int formerStart = startPos();
        right -= tabs[size_t(first)]->tab.width;
        firstVisibleTab = idAt(++first);
        right += startPos() - formerStart;
    }
    q->update();
}

/// Scrolls back as far as the last tab stays in view: what was scrolled out while
/// the bar was narrow comes back when it is wide.
void TabBar::Private::useRoom()
{
    const int last = idAt(int(tabs.size()) - 1);
    for (int i = indexOf(firstVisibleTab) - 1; i >= 0; --i) {
        const int former = firstVisibleTab;
        firstVisibleTab = idAt(i);
        if (rect(last).right() < tabsEnd())
            continue;
        firstVisibleTab = former;
        break;
    }
    makeTabVisible(currentTab);
    q->update();
}

void TabBar::Private::scrollLeft()
{
    if (!canScrollForward())
        return;
    firstVisibleTab = search(indexOf(firstVisibleTab) + 1, 1, false);
    q->update();
}

void TabBar::Private::scrollRight()
{
    if (!canScrollBack())
        return;
    firstVisibleTab = search(indexOf(firstVisibleTab) - 1, -1, false);
    q->update();
}

void TabBar::Private::setCurrentTabInternal(int id)
{
    Entry *const next = entry(id);
    if (id == currentTab || !next)
        return;
    Entry *const former = entry(currentTab);
    currentTab = id;
    updateWidth(next->tab);
    if (former)
        updateWidth(former->tab);
    q->update();
}

/// Puts the pressed tab in the place of \a other, unless the pointer would then
/// be over a third tab: under a resting pointer a wide tab would flip back and
/// forth with a narrow neighbour.
void TabBar::Private::swapPressed(int other, const QPoint &pos)
{
    const int formerFirst = firstVisibleTab;
    const int from = indexOf(pressedTab);
    const int to = indexOf(other);
    if (firstVisibleTab == pressedTab)
        firstVisibleTab = search(from + 1, 1, false);
    else if (firstVisibleTab == other)
        firstVisibleTab = pressedTab;
    const auto move = [this](int source, int target) {
        const auto begin = tabs.begin();
        if (source < target)
            std::rotate(begin + source, begin + source + 1, begin + target + 1);
        else
            std::rotate(begin + target, begin + source, begin + source + 1);
    };
    move(from, to);
    if (tabByPos(pos) == pressedTab) {
        q->update();
        emit q->changeTabsOrder(pressedTab, other);
        return;
    }
    move(to, from);
    firstVisibleTab = formerFirst;
}

void TabBar::Private::releaseButton()
{
    const bool isBack = std::exchange(backPressed, false);
    const bool isForward = std::exchange(forwardPressed, false);
    q->update();
    if (isBack)
        scrollRight();
    else if (isForward)
        scrollLeft();
}

} // namespace zvwidgets
