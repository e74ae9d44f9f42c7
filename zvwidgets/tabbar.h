#pragma once

#include <QIcon>
#include <QWidget>

#include <memory>

namespace zvwidgets {

/// A strip of tabs with buttons to scroll them and to close the current one. It
/// knows nothing of pages: it shows labels and tells which tab was chosen.
///
/// Tabs are known by ids, which stay when tabs are moved. An id of -1 is no tab.
class TabBar : public QWidget
{
    Q_OBJECT
public:
    /// The side of its pages on which the bar stands. The last two are vertical.
    enum TabPosition
    {
        Top,
        Bottom,
        Left,
        Right
    };

    /// Bits of viewStyle().
    enum ViewStyle
    {
        ShowIcons = 1,
        /// Room for the close button, which otherwise lies outside the bar.
        WideButtons = 2,
        BoldCurrent = 4,
        /// Less padding in the other tabs, and a strip of another colour.
        NarrowOthers = 8,
        /// More padding in the current tab.
        WideCurrent = 16
    };

    struct Tab
    {
        /// "&" marks the letter that selects the tab with Alt; "&&" is one "&".
        QString label;
        QIcon icon;
        int id = -1;
        /// Along the bar, in pixels.
        int width = 0;
        bool enabled = true;
    };

    explicit TabBar(QWidget *parent = nullptr, const QString &name = QString());
    ~TabBar() override;

    /// Inserts a tab in front of the tab at \a index, or at the end. Returns its
    /// id: \a id, or the next free one if that is negative or taken.
    int insertTab(const QString &label, int index, int id = -1);
    int insertTab(const QIcon &icon, const QString &label, int index, int id = -1);
    int addTab(const QString &label, int id = -1);
    int addTab(const QIcon &icon, const QString &label, int id = -1);
    /// If it was the current tab a neighbour becomes current.
    void removeTab(int id);
    void clear();
    int count() const;

    void setTabTitle(int id, const QString &label);
    void setTabIcon(int id, const QIcon &icon);
    void setTabEnabled(int id, bool enabled);
    QString tabTitle(int id) const;
    QIcon tabIcon(int id) const;
    bool isTabEnabled(int id) const;

    // Ids in display order; -1 if there is none.

    int firstTab(bool enabledOnly) const;
    int lastTab(bool enabledOnly) const;
    int prevTab(int id, bool enabledOnly) const;
    int nextTab(int id, bool enabledOnly) const;

    int currentTab() const;
    /// Unknown ids are ignored.
    void setCurrentTab(int id);

    /// A TabPosition.
    void setTabPosition(int position);
    int tabPosition() const;
    /// A sum of ViewStyle.
    void setViewStyle(int style);
    int viewStyle() const;
    /// Whether the mouse may move tabs, along the bar or out of it.
    void setAllowDragging(bool allow);

    /// Where a tab stands in this widget; null if it is scrolled out to the front.
    QRect tabRect(int id) const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

public slots:
    /// Scrolls by one tab while a scroll button is held.
    void breakTimeout();

signals:
    void currentChanged(int id);
    void startTabDrag(int id, QMouseEvent *event);
    void continueTabDrag(QMouseEvent *event);
    void finishTabDrag(QMouseEvent *event);
    void cancelTabDrag(QMouseEvent *event);
    void closeTab(int id);
    void tabRightButtonPressed(int id, const QPoint &globalPos);
    /// The mouse took the tab \a from to the place of \a to.
    void changeTabsOrder(int from, int to);
    void tabDoubleClick(int id);

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void changeEvent(QEvent *event) override;

    /// Draws one tab with its left edge at 0. However the bar stands, x runs
    /// along it and the text from left to right.
    virtual void drawTab(QPainter &painter, const QPalette &palette, Tab *tab);

private:
    struct Private;
    friend struct Private;
    const std::unique_ptr<Private> d;
};

} // namespace zvwidgets
