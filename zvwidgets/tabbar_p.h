#pragma once

#include "zvwidgets/tabbar.h"

#include <QShortcut>
#include <QTimer>

#include <memory>
#include <vector>

class QFont;
class QPainter;
class QTransform;

namespace zvwidgets {

struct TabBar::Private
{
    explicit Private(TabBar *bar) : q(bar) {}

    enum Button
    {
        Back,
        Forward,
        Close
    };

    struct Entry
    {
        Tab tab;
        std::unique_ptr<QShortcut> shortcut;
    };

    // All in pixels. The buttons lie outside the bar as far as its width for them
    // does not hold them: that is how the close button is left out.
    static constexpr int tabsMargin = 5;
    static constexpr int currentOverlap = 2;
    static constexpr int iconSize = 16;
    static constexpr int iconStep = 19;

    TabBar *const q;
    QTimer scrollTimer;
    std::vector<std::unique_ptr<Entry>> tabs;
    int tabPosition = Top;
    int viewStyle = ShowIcons;
    int nextId = 0;
    int currentTab = -1;
    /// The tab of the last currentChanged(): a press shows its tab as current at
    /// once, the release tells it.
    int announcedTab = -1;
    int firstVisibleTab = -1;
    int pressedTab = -1;
    bool backPressed = false;
    bool forwardPressed = false;
    bool closePressed = false;
    bool dragging = false;
    bool allowDragging = true;

    bool isVertical() const { return tabPosition >= Left; }
    bool has(ViewStyle style) const { return viewStyle & style; }
    int buttonsWidth() const { return has(WideButtons) ? 52 : 38; }
    /// Length along the tabs, and across them.
    int rw() const { return isVertical() ? q->height() : q->width(); }
    int rh() const { return isVertical() ? q->width() : q->height(); }
    int tabsEnd() const { return rw() - buttonsWidth() - tabsMargin; }

    int indexOf(int id) const;
    Entry *entry(int id) const;
    int idAt(int index) const;
    int search(int index, int step, bool enabledOnly) const;

    /// The label as it is shown, without the marks of its letters.
    static QString clearString(const QString &label);
    QFont labelFont(const Tab &tab) const;
    void updateWidth(Tab &tab) const;
    void updateWidths();
    void updateShortcut(Entry &changed);
    int startPos() const;
    QRect rect(int id) const;
    QRect buttonRect(Button button) const;
    QPoint toBar(const QPointF &widgetPos) const;
    QTransform transform() const;
    int tabByPos(const QPoint &pos) const;

    bool canScrollBack() const;
    bool canScrollForward() const;
    void checkButtons(const QPoint &pos);
    void makeTabVisible(int id);
    void useRoom();
    void scrollLeft();
    void scrollRight();
    void setCurrentTabInternal(int id);
    void swapPressed(int other, const QPoint &pos);
    void releaseButton();

    void paintButtons(QPainter &painter) const;
    void paintButton(QPainter &painter, Button button, bool isLive, bool isHeld) const;
};

} // namespace zvwidgets
