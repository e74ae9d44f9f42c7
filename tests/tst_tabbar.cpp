#include "tests/testing.h"
#include "zvwidgets/tabbar.h"

#include <QSignalSpy>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;
using zvwidgets::TabBar;

Q_DECLARE_METATYPE(TabBar::TabPosition)

class TestTabBar : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup() { window.reset(); }

    void clickTellsOnRelease_data();
    void clickTellsOnRelease();
    void rightClickSelects();
    void disabledTabs();
    void keysWalkAlong();
    void markedLetterSelects();
    void scrollButtons();
    void heldButtonRepeats();
    void closeButtonClosesTheCurrentTab();
    void hiddenTabComesIntoView();
    void dragSwaps();
    void wideTabDoesNotFlip();
    void noDragIfForbidden();
    void dragOut();
    void removingKeepsACurrentTab();

private:
    QPoint middle(int id) const { return bar->tabRect(id).center(); }
    /// The middle of a button; 0 is back, 1 forward, 2 close.
    QPoint button(int number) const;
    void addTabs(int count);
    void click(const QPoint &pos) { QTest::mouseClick(bar, Qt::LeftButton, {}, pos); }
    void drag(const QPoint &pos) { dragTo(bar, pos); }

    std::unique_ptr<QWidget> window;
    TabBar *bar = nullptr;
};

void TestTabBar::init()
{
    window = std::make_unique<QWidget>();
    bar = new TabBar(window.get());
    bar->setGeometry(0, 0, 400, 30);
    window->resize(500, 500);
    QVERIFY(showActive(window.get()));
}

QPoint TestTabBar::button(int number) const
{
    const int room = bar->viewStyle() & TabBar::WideButtons ? 52 : 38;
    return QPoint(bar->width() - room + 10 + 14 * number + 4, bar->height() / 2);
}

void TestTabBar::addTabs(int count)
{
    for (int i = 0; i < count; ++i)
        bar->addTab(u"number %1"_s.arg(i));
    bar->setCurrentTab(bar->firstTab(false));
}

void TestTabBar::clickTellsOnRelease_data()
{
    const Rows<TabBar::TabPosition> row("position");
    row("top", TabBar::Top);
    row("bottom", TabBar::Bottom);
    row("left", TabBar::Left);
    row("right", TabBar::Right);
}

void TestTabBar::clickTellsOnRelease()
{
    QFETCH(TabBar::TabPosition, position);
    bar->setTabPosition(position);
    const bool isUpright = position == TabBar::Left || position == TabBar::Right;
    bar->resize(isUpright ? QSize(30, 400) : QSize(400, 30));
    addTabs(3);
    QVERIFY(bar->rect().contains(bar->tabRect(2)));
    QSignalSpy spy(bar, &TabBar::currentChanged);
    QTest::mousePress(bar, Qt::LeftButton, {}, middle(2));
    QCOMPARE(bar->currentTab(), 2);
    QCOMPARE(spy.count(), 0);
    QTest::mouseRelease(bar, Qt::LeftButton, {}, middle(2));
    QCOMPARE(spy.count(), 1);
    QCOMPARE(spy.at(0).at(0).toInt(), 2);
    click(middle(2));
    QCOMPARE(spy.count(), 1);
}

void TestTabBar::rightClickSelects()
{
    addTabs(2);
    QSignalSpy changed(bar, &TabBar::currentChanged);
    QSignalSpy pressed(bar, &TabBar::tabRightButtonPressed);
    const QPoint pos = middle(1);
    QTest::mouseClick(bar, Qt::RightButton, {}, pos);
    QCOMPARE(changed.count(), 1);
    QCOMPARE(pressed.count(), 1);
    QCOMPARE(pressed.at(0).at(0).toInt(), 1);
    QCOMPARE(pressed.at(0).at(1).toPoint(), bar->mapToGlobal(pos));
}

void TestTabBar::disabledTabs()
{
    addTabs(3);
    bar->setTabEnabled(1, false);
    click(middle(1));
    QCOMPARE(bar->currentTab(), 0);
    QCOMPARE(bar->nextTab(0, true), 2);
    QCOMPARE(bar->nextTab(0, false), 1);
    QCOMPARE(bar->prevTab(0, false), -1);
    bar->setCurrentTab(77);
    bar->setCurrentTab(-1);
    QCOMPARE(bar->currentTab(), 0);
}

void TestTabBar::keysWalkAlong()
{
    addTabs(4);
    bar->setTabEnabled(3, false);
    bar->setFocus();
    const QList<std::pair<Qt::Key, int>> walk = {{Qt::Key_End, 2},  {Qt::Key_Right, 2},
                                                 {Qt::Key_Left, 1}, {Qt::Key_Up, 0},
                                                 {Qt::Key_Down, 1}, {Qt::Key_Home, 0}};
    for (const auto &step : walk) {
        QTest::keyClick(bar, step.first);
        QCOMPARE(bar->currentTab(), step.second);
    }
}

void TestTabBar::markedLetterSelects()
{
    bar->addTab(u"one"_s);
    bar->addTab(u"t&wo"_s);
    bar->setCurrentTab(0);
    QTest::keyClick(window.get(), Qt::Key_W, Qt::AltModifier);
    QCOMPARE(bar->currentTab(), 1);
    const int width = bar->tabRect(1).width();
    bar->setTabTitle(1, u"two"_s);
    QCOMPARE(bar->tabRect(1).width(), width);
    bar->setTabTitle(0, u"&one"_s);
    QTest::keyClick(window.get(), Qt::Key_W, Qt::AltModifier);
    QCOMPARE(bar->currentTab(), 1);
    QTest::keyClick(window.get(), Qt::Key_O, Qt::AltModifier);
    QCOMPARE(bar->currentTab(), 0);
}

void TestTabBar::scrollButtons()
{
    addTabs(12);
    click(button(0));
    QVERIFY(!bar->tabRect(0).isNull());
    click(button(1));
    QVERIFY(bar->tabRect(0).isNull());
    QVERIFY(!bar->tabRect(1).isNull());
    // Scrolling does not choose.
    QCOMPARE(bar->currentTab(), 0);
    for (int i = 0; i < 20; ++i)
        click(button(1));
    // It ends when the last tab stands in full in front of the buttons.
    QVERIFY(bar->tabRect(11).right() < bar->width() - 38 - 5);
    QVERIFY(!bar->tabRect(10).isNull());
    for (int i = 0; i < 20; ++i)
        click(button(0));
    QVERIFY(!bar->tabRect(0).isNull());
    // The strip in front of the first tab belongs to the one before it.
    bar->setCurrentTab(1);
    click(button(1));
    click(QPoint(2, 15));
    QCOMPARE(bar->currentTab(), 0);
    QVERIFY(!bar->tabRect(0).isNull());
    // Fast clicks there count one by one.
    bar->setCurrentTab(11);
    click(QPoint(2, 15));
    const int afterOne = bar->currentTab();
    QTest::mouseDClick(bar, Qt::LeftButton, {}, QPoint(2, 15));
    QTest::mouseRelease(bar, Qt::LeftButton, {}, QPoint(2, 15));
    QCOMPARE(bar->currentTab(), afterOne - 1);
}

void TestTabBar::heldButtonRepeats()
{
    addTabs(12);
    QTest::mousePress(bar, Qt::LeftButton, {}, button(1));
    QTRY_VERIFY(bar->tabRect(2).isNull());
    QTest::mouseRelease(bar, Qt::LeftButton, {}, button(1));
}

void TestTabBar::closeButtonClosesTheCurrentTab()
{
    addTabs(3);
    bar->setViewStyle(TabBar::WideButtons);
    bar->setCurrentTab(1);
    QSignalSpy spy(bar, &TabBar::closeTab);
    click(button(2));
    QCOMPARE(spy.count(), 1);
    QCOMPARE(spy.at(0).at(0).toInt(), 1);
    // In the narrow style there is no room for it.
    bar->setViewStyle(0);
    click(QPoint(bar->width() - 2, 15));
    QCOMPARE(spy.count(), 1);
}

void TestTabBar::hiddenTabComesIntoView()
{
    addTabs(12);
    QVERIFY(bar->tabRect(9).right() > bar->width());
    bar->setCurrentTab(9);
    QVERIFY(bar->tabRect(9).right() <= bar->width() - 38 - 5);
    bar->setCurrentTab(1);
    QVERIFY(!bar->tabRect(1).isNull());
    QVERIFY(bar->tabRect(0).isNull());
}

void TestTabBar::dragSwaps()
{
    addTabs(3);
    QSignalSpy spy(bar, &TabBar::changeTabsOrder);
    QTest::mousePress(bar, Qt::LeftButton, {}, middle(0));
    drag(middle(1));
    QCOMPARE(spy.count(), 1);
    QCOMPARE(spy.at(0), QList<QVariant>({0, 1}));
    QCOMPARE(bar->firstTab(false), 1);
    QCOMPARE(bar->nextTab(1, false), 0);
    drag(bar->tabRect(2).center());
    QCOMPARE(bar->lastTab(false), 0);
    QTest::mouseRelease(bar, Qt::LeftButton, {}, middle(0));
    QCOMPARE(bar->currentTab(), 0);
}

void TestTabBar::wideTabDoesNotFlip()
{
    bar->addTab(u"a tab of a very long name"_s);
    bar->addTab(u"i"_s);
    QSignalSpy spy(bar, &TabBar::changeTabsOrder);
    QTest::mousePress(bar, Qt::LeftButton, {}, middle(1));
    // At the left end of the wide tab the narrow one would not come to rest there.
    drag(QPoint(bar->tabRect(0).right() - 30, 15));
    QCOMPARE(spy.count(), 0);
    QCOMPARE(bar->firstTab(false), 0);
    drag(QPoint(10, 15));
    QCOMPARE(spy.count(), 1);
    QTest::mouseRelease(bar, Qt::LeftButton, {}, QPoint(10, 15));
}

void TestTabBar::noDragIfForbidden()
{
    addTabs(2);
    bar->setAllowDragging(false);
    QSignalSpy order(bar, &TabBar::changeTabsOrder);
    int starts = 0;
    connect(bar, &TabBar::startTabDrag, this, [&starts] { ++starts; });
    QTest::mousePress(bar, Qt::LeftButton, {}, middle(0));
    drag(middle(1));
    drag(QPoint(10, 200));
    QTest::mouseRelease(bar, Qt::LeftButton, {}, QPoint(10, 200));
    QCOMPARE(order.count() + starts, 0);
}

void TestTabBar::dragOut()
{
    addTabs(2);
    QStringList told;
    connect(bar, &TabBar::startTabDrag, this, [&](int id) { told << QString::number(id); });
    connect(bar, &TabBar::continueTabDrag, this, [&] { told << u"on"_s; });
    connect(bar, &TabBar::cancelTabDrag, this, [&] { told << u"back"_s; });
    connect(bar, &TabBar::finishTabDrag, this, [&] { told << u"drop"_s; });
    QTest::mousePress(bar, Qt::LeftButton, {}, middle(1));
    for (const QPoint &pos : {QPoint(10, 200), QPoint(10, 210), middle(1), QPoint(10, 200)})
        drag(pos);
    QTest::mouseRelease(bar, Qt::LeftButton, {}, QPoint(10, 200));
    QCOMPARE(told.join(u' '), u"1 on back 1 drop"_s);
}

void TestTabBar::removingKeepsACurrentTab()
{
    addTabs(3);
    bar->setCurrentTab(1);
    bar->removeTab(1);
    QCOMPARE(bar->currentTab(), 2);
    bar->removeTab(2);
    QCOMPARE(bar->currentTab(), 0);
    bar->removeTab(0);
    QCOMPARE(bar->currentTab(), -1);
    QCOMPARE(bar->count(), 0);
    QTest::mouseClick(bar, Qt::LeftButton, {}, QPoint(10, 15));
    // Ids are not used again.
    QCOMPARE(bar->addTab(u"x"_s), 3);
    QCOMPARE(bar->addTab(u"y"_s, 3), 4);
    QCOMPARE(bar->addTab(u"z"_s, 40), 40);
}

QTEST_MAIN(TestTabBar)
#include "tst_tabbar.moc"
