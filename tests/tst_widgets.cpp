#include "app/widgets/colorcombo.h"
#include "app/widgets/splitter.h"
#include "app/widgetstack.h"
#include "tests/testing.h"

#include <QApplication>
#include <QColorDialog>
#include <QLineEdit>
#include <QSignalSpy>
#include <QTest>
#include <QVBoxLayout>

#include <memory>

using namespace Qt::StringLiterals;
using namespace vesk;

namespace {

/// A shown splitter of 604 pixels with plain panes and handles of 4 pixels.
class Panes
{
public:
    explicit Panes(int count, const QList<int> &sizes = {})
    {
        splitter.setHandleWidth(4);
        for (int i = 0; i < count; ++i)
            panes.append(new QWidget(&splitter));
        splitter.resize(600 + 4 * (count - 1), 100);
        if (!sizes.isEmpty())
            splitter.setSizes(sizes);
    }

    bool show()
    {
        splitter.show();
        return QTest::qWaitForWindowExposed(&splitter);
    }

    Splitter splitter;
    QList<QWidget *> panes;
};

} // namespace

/// Splitter, page stack, colour combo and label.
class WidgetsTest : public QObject
{
    Q_OBJECT
private slots:
    void hiddenPaneKeepsItsSize_data();
    void hiddenPaneKeepsItsSize();
    void collapsedPaneIsZero();
    void dragMovesTheHandleAtTheEnd();
    void rubberBandGoesThroughTheHook();
    void stackSwitchesPages();
    void stackListenerMayRaiseToo();
    void stackForgetsADeletedPage();
    void stackMovesTheFocus();
    void comboSelectsByColor_data();
    void comboSelectsByColor();
    void comboActivates_data();
    void comboActivates();
};

void WidgetsTest::hiddenPaneKeepsItsSize_data()
{
    const Rows<bool> row("isShown");
    row("hidden before the first show", false);
    row("hidden later", true);
}

void WidgetsTest::hiddenPaneKeepsItsSize()
{
    QFETCH(bool, isShown);
    Panes panes(2, {150, 450});
    if (isShown)
        QVERIFY(panes.show());
    panes.panes.first()->hide();
    QVERIFY(panes.show());
    QTRY_COMPARE(panes.panes.last()->width(), 604);
    QCOMPARE(panes.splitter.sizes().constFirst(), 150);
    panes.panes.first()->show();
    QTRY_COMPARE(panes.splitter.sizes(), (QList<int>{150, 450}));
    QCOMPARE(panes.panes.first()->width(), 150);
}

void WidgetsTest::collapsedPaneIsZero()
{
    Panes panes(2, {150, 450});
    panes.panes.first()->setMinimumWidth(40);
    QVERIFY(panes.show());
    panes.splitter.moveSplitter(0, 1);
    QCOMPARE(panes.splitter.sizes(), (QList<int>{0, 600}));
    QVERIFY(!panes.panes.first()->isHidden());
    // Half-way to the minimum is as far as it goes before it collapses.
    panes.splitter.moveSplitter(30, 1);
    QCOMPARE(panes.splitter.sizes().constFirst(), 40);
    panes.splitter.setCollapsible(panes.panes.first(), false);
    panes.splitter.moveSplitter(0, 1);
    QCOMPARE(panes.splitter.sizes().constFirst(), 40);
}

void WidgetsTest::dragMovesTheHandleAtTheEnd()
{
    Panes panes(2, {150, 450});
    QVERIFY(panes.show());
    QWidget *const handle = panes.splitter.handle(1);
    QTest::mousePress(handle, Qt::LeftButton, {}, QPoint(1, 50));
    dragTo(handle, QPoint(101, 50));
    QCOMPARE(panes.splitter.sizes(), (QList<int>{150, 450}));
    QTest::mouseRelease(handle, Qt::LeftButton, {}, QPoint(101, 50));
    QCOMPARE(panes.splitter.sizes(), (QList<int>{250, 350}));
    panes.splitter.setOpaqueResize(true);
    QTest::mousePress(handle, Qt::LeftButton, {}, QPoint(1, 50));
    dragTo(handle, QPoint(31, 50));
    QCOMPARE(panes.splitter.sizes(), (QList<int>{280, 320}));
    QTest::mouseRelease(handle, Qt::LeftButton, {}, QPoint(1, 50));
}

void WidgetsTest::rubberBandGoesThroughTheHook()
{
    class Bands : public Splitter
    {
    public:
        QList<int> bands;

    protected:
        void setRubberband(int pos) override { bands.append(pos); }
    };
    Bands splitter;
    splitter.setHandleWidth(4);
    for (int i = 0; i < 2; ++i)
        (new QWidget(&splitter))->setMinimumWidth(100);
    splitter.resize(604, 100);
    splitter.show();
    QVERIFY(QTest::qWaitForWindowExposed(&splitter));
    QWidget *const handle = splitter.handle(1);
    const QPoint start(2, 50);
    QTest::mousePress(handle, Qt::LeftButton, {}, start);
    dragTo(handle, start + QPoint(50, 0));
    // As far as the panes allow.
    dragTo(handle, start + QPoint(230, 0));
    QTest::mouseRelease(handle, Qt::LeftButton, {}, start);
    QCOMPARE(splitter.bands, (QList<int>{350, 500, -1}));
}

void WidgetsTest::stackSwitchesPages()
{
    WidgetStack stack;
    auto *const first = new QWidget;
    auto *const second = new QWidget;
    stack.addWidget(first);
    stack.addWidget(second, 7);
    QCOMPARE(stack.addWidget(new QWidget), 8);
    QWidget stranger;
    // Raised while hidden, as the docks are before the window comes up.
    stack.raiseWidget(7);
    stack.resize(200, 100);
    stack.show();
    QVERIFY(QTest::qWaitForWindowExposed(&stack));
    QVERIFY(second->isVisible() && !first->isVisible());
    QCOMPARE(second->size(), QSize(200, 100));

    QWidget *topDuringSignal = nullptr;
    connect(&stack, qOverload<QWidget *>(&WidgetStack::aboutToShow), &stack,
            [&] { topDuringSignal = stack.visibleWidget(); });
    QSignalSpy ids(&stack, SIGNAL(aboutToShow(int)));
    stack.raiseWidget(first);
    QCOMPARE(topDuringSignal, second);
    QCOMPARE(ids.size(), 1);
    QCOMPARE(ids.constFirst().constFirst().toInt(), 0);
    stack.resize(300, 50);
    QTRY_COMPARE(first->size(), QSize(300, 50));

    stack.raiseWidget(99);
    stack.raiseWidget(-1);
    stack.raiseWidget(&stranger);
    stack.raiseWidget(first);
    QCOMPARE(stack.visibleWidget(), first);
    QCOMPARE(ids.size(), 1);
}

void WidgetsTest::stackListenerMayRaiseToo()
{
    WidgetStack stack;
    auto *const first = new QWidget;
    auto *const second = new QWidget;
    stack.addWidget(first);
    stack.addWidget(second);
    stack.raiseWidget(first);
    bool answered = false;
    connect(&stack, qOverload<QWidget *>(&WidgetStack::aboutToShow), &stack, [&](QWidget *page) {
        if (!std::exchange(answered, true))
            stack.raiseWidget(page);
    });
    stack.raiseWidget(second);
    QCOMPARE(stack.visibleWidget(), second);
    QVERIFY(first->isHidden() && !second->isHidden());
}

void WidgetsTest::stackForgetsADeletedPage()
{
    WidgetStack stack;
    auto page = std::make_unique<QWidget>();
    auto *const other = new QWidget;
    stack.addWidget(page.get());
    stack.addWidget(other);
    stack.raiseWidget(page.get());
    QSignalSpy spy(&stack, SIGNAL(aboutToShow(int)));
    page.reset();
    QCOMPARE(stack.visibleWidget(), nullptr);
    QCOMPARE(stack.widget(0), nullptr);
    QCOMPARE(spy.size(), 0);
    QCOMPARE(stack.addWidget(new QWidget), 2);
    stack.raiseWidget(other);
    QCOMPARE(stack.visibleWidget(), other);
}

void WidgetsTest::stackMovesTheFocus()
{
    QWidget window;
    QVBoxLayout layout(&window);
    auto *const outside = new QLineEdit;
    auto *const stack = new WidgetStack;
    layout.addWidget(outside);
    layout.addWidget(stack);
    auto *const first = new QLineEdit;
    auto *const second = new QLineEdit;
    stack->addWidget(first);
    stack->addWidget(second);
    stack->raiseWidget(first);
    QVERIFY(showActive(&window));
    first->setFocus();
    stack->raiseWidget(second);
    QCOMPARE(window.focusWidget(), second);
    // What stands after it is elsewhere.
    stack->raiseWidget(first);
    QCOMPARE(window.focusWidget(), first);
    outside->setFocus();
    stack->raiseWidget(second);
    QCOMPARE(window.focusWidget(), outside);
}

void WidgetsTest::comboSelectsByColor_data()
{
    const Rows<QString, QString, QString> row("given", "shown", "name");
    row("nothing", "", "none", "");
    row("nonsense", "nonsense", "none", "");
    row("value of a standard colour", "#808000", "darkYellow", "darkYellow");
    row("any other value", "#123456", "custom", "#123456");
    row("any other name", "orange", "custom", "#ffa500");
}

void WidgetsTest::comboSelectsByColor()
{
    QFETCH(QString, given);
    QFETCH(QString, shown);
    QFETCH(QString, name);
    ColorCombo combo;
    combo.setColorName(u"blue"_s);
    combo.setColorName(given);
    QCOMPARE(combo.currentText(), shown);
    QCOMPARE(combo.colorName(), name);
    QCOMPARE(combo.hasColor(), !name.isEmpty());
    if (shown == QLatin1String("custom")) {
        const QImage swatch = combo.itemIcon(1).pixmap(16, 16).toImage();
        QCOMPARE(swatch.pixelColor(8, 8), QColor(given));
    }
}

void WidgetsTest::comboActivates_data()
{
    const Rows<int, bool, QColor, bool> row("index", "accept", "color", "hasColor");
    row("standard", 3, false, QColor(u"green"_s), true);
    row("none keeps the colour", 0, false, QColor(Qt::blue), false);
    row("custom", 1, true, QColor(1, 2, 3), true);
    row("custom, cancelled", 1, false, QColor(Qt::blue), true);
}

void WidgetsTest::comboActivates()
{
    QFETCH(int, index);
    QFETCH(bool, accept);
    QFETCH(QColor, color);
    QFETCH(bool, hasColor);
    ColorCombo combo;
    combo.setColor(Qt::blue);
    QSignalSpy spy(&combo, SIGNAL(activated(QColor)));
    Responder responder;
    if (index == 1) {
        responder.expect([accept](QWidget *widget) {
            auto *const dialog = qobject_cast<QColorDialog *>(widget);
            dialog->setCurrentColor(QColor(1, 2, 3));
            accept ? dialog->accept() : dialog->reject();
        });
    }
    combo.setCurrentIndex(index);
    emit static_cast<QComboBox &>(combo).activated(index);
    QVERIFY(responder.isDone());
    QCOMPARE(spy.size(), 1);
    QCOMPARE(spy.constFirst().constFirst().value<QColor>(), color);
    QCOMPARE(combo.color(), hasColor ? color : QColor());
    QCOMPARE(combo.hasColor(), hasColor);
}

QTEST_MAIN(WidgetsTest)
#include "tst_widgets.moc"
