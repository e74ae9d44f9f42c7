#include "app/widgets/clicklabel.h"
#include "app/widgets/colorcombo.h"
#include "app/widgets/splitter.h"
#include "app/widgetstack.h"

#include <QApplication>
#include <QColorDialog>
#include <QLineEdit>
#include <QPainter>
#include <QSignalSpy>
#include <QTest>
#include <QTextStream>
#include <QTimer>
#include <QVBoxLayout>

#include <memory>

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

    QString text() const
    {
        QString result;
        QTextStream stream(&result);
        stream << splitter;
        return result;
    }

    void read(const QString &line)
    {
        QString copy = line;
        QTextStream stream(&copy);
        stream >> splitter;
        // What the toolkit still has to lay out.
        QCoreApplication::sendPostedEvents();
    }

    Splitter splitter;
    QList<QWidget *> panes;
};

bool hasDots(int thickness, Qt::Orientation orientation)
{
    Splitter splitter(orientation);
    splitter.setHandleWidth(thickness);
    auto *const first = new QWidget(&splitter);
    auto *const second = new QWidget(&splitter);
    first->setFixedSize(60, 60);
    second->setFixedSize(60, 60);
    splitter.show();
    if (!QTest::qWaitForWindowExposed(&splitter))
        qFatal("no window");
    const QImage image = splitter.handle(1)->grab().toImage();
    const QColor background = splitter.palette().color(QPalette::Window);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (image.pixelColor(x, y) != background)
                return true;
        }
    }
    return false;
}

} // namespace

/// Splitter, page stack, colour combo and label.
class WidgetsTest : public QObject
{
    Q_OBJECT
private slots:
    void handleShowsDotsFrom5Pixels();
    void shortListLeavesTheRest();
    void hiddenPaneKeepsItsSize();
    void paneHiddenBeforeTheFirstShow();
    void collapsedPaneIsZero();
    void paneOfOnePixelDoesNotCollapse();
    void dragMovesTheHandleAtTheEnd();
    void writesPanes();
    void readsPanes_data();
    void readsPanes();
    void stackShowsNothingByItself();
    void stackSwitchesPages();
    void stackListenerMayRaiseToo();
    void stackForgetsADeletedPage();
    void stackMovesTheFocus();
    void comboSelectsByColor_data();
    void comboSelectsByColor();
    void comboActivates_data();
    void comboActivates();
    void labelTellsPresses();
};

void WidgetsTest::handleShowsDotsFrom5Pixels()
{
    for (const Qt::Orientation orientation : {Qt::Horizontal, Qt::Vertical}) {
        QVERIFY(!hasDots(4, orientation));
        QVERIFY(hasDots(5, orientation));
    }
}

void WidgetsTest::shortListLeavesTheRest()
{
    Panes panes(3, {100, 200, 300});
    QVERIFY(panes.show());
    QCOMPARE(panes.splitter.sizes(), (QList<int>{100, 200, 300}));
    panes.splitter.setSizes({100});
    QCOMPARE(panes.splitter.sizes(), (QList<int>{100, 200, 300}));
    panes.splitter.setSizes({});
    QCOMPARE(panes.splitter.sizes(), (QList<int>{100, 200, 300}));
}

void WidgetsTest::hiddenPaneKeepsItsSize()
{
    Panes panes(2, {150, 450});
    QVERIFY(panes.show());
    panes.panes.first()->hide();
    QTRY_COMPARE(panes.panes.last()->width(), 604);
    QCOMPARE(panes.splitter.sizes().constFirst(), 150);
    panes.panes.first()->show();
    QTRY_COMPARE(panes.splitter.sizes(), (QList<int>{150, 450}));
    QCOMPARE(panes.panes.first()->width(), 150);
}

void WidgetsTest::paneHiddenBeforeTheFirstShow()
{
    Panes panes(2, {150, 450});
    panes.panes.first()->hide();
    QVERIFY(panes.show());
    QCOMPARE(panes.splitter.sizes().constFirst(), 150);
    panes.panes.first()->show();
    QTRY_COMPARE(panes.splitter.sizes(), (QList<int>{150, 450}));
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

void WidgetsTest::paneOfOnePixelDoesNotCollapse()
{
    Panes panes(2, {150, 450});
    panes.panes.first()->setMinimumWidth(1);
    QVERIFY(panes.show());
    QCoreApplication::sendPostedEvents();
    panes.splitter.moveSplitter(0, 1);
    QCOMPARE(panes.splitter.sizes(), (QList<int>{1, 599}));
}

void WidgetsTest::dragMovesTheHandleAtTheEnd()
{
    Panes panes(2, {150, 450});
    QVERIFY(panes.show());
    QWidget *const handle = panes.splitter.handle(1);
    QTest::mousePress(handle, Qt::LeftButton, {}, QPoint(1, 50));
    QTest::mouseMove(handle, QPoint(101, 50));
    QCOMPARE(panes.splitter.sizes(), (QList<int>{150, 450}));
    QTest::mouseRelease(handle, Qt::LeftButton, {}, QPoint(101, 50));
    QCOMPARE(panes.splitter.sizes(), (QList<int>{250, 350}));
}

void WidgetsTest::writesPanes()
{
    Panes panes(3, {100, 200, 300});
    panes.panes.first()->setMinimumWidth(40);
    QVERIFY(panes.show());
    QCOMPARE(panes.text(), QStringLiteral("[100,200,300]\n"));
    panes.panes.last()->hide();
    QTRY_COMPARE(panes.panes.at(1)->geometry().right(), panes.splitter.width() - 1);
    panes.splitter.moveSplitter(0, 1);
    QVERIFY2(panes.text().startsWith(QStringLiteral("[0,")), qPrintable(panes.text()));
    QVERIFY2(panes.text().endsWith(QStringLiteral(",H300]\n")), qPrintable(panes.text()));
}

void WidgetsTest::readsPanes_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("result");
    QTest::newRow("sizes") << QStringLiteral("[200,100,300]") << QStringLiteral("[200,100,300]\n");
    QTest::newRow("blanks before")
        << QStringLiteral(" \n [200,100,300]\nmore") << QStringLiteral("[200,100,300]\n");
    QTest::newRow("collapses") << QStringLiteral("[0,300,300]") << QStringLiteral("[0,300,300]\n");
    QTest::newRow("fewer than panes")
        << QStringLiteral("[100]") << QStringLiteral("[100,200,300]\n");
    QTest::newRow("more than panes")
        << QStringLiteral("[200,100,300,H500,900]") << QStringLiteral("[200,100,300]\n");
    QTest::newRow("stops at junk")
        << QStringLiteral("[100,x,0]") << QStringLiteral("[100,200,300]\n");
    QTest::newRow("no list") << QStringLiteral("200,100,300") << QStringLiteral("[100,200,300]\n");
    QTest::newRow("nothing") << QString() << QStringLiteral("[100,200,300]\n");
}

void WidgetsTest::readsPanes()
{
    QFETCH(QString, line);
    QFETCH(QString, result);
    Panes panes(3, {100, 200, 300});
    panes.panes.first()->setMinimumWidth(40);
    QVERIFY(panes.show());
    panes.read(line);
    QCOMPARE(panes.text(), result);

    Panes two(2, {100, 500});
    QVERIFY(two.show());
    two.read(QStringLiteral("[h0,100]"));
    QVERIFY(two.panes.first()->isHidden());
    QVERIFY(!two.panes.last()->isHidden());
    two.read(QStringLiteral("[99999999999,1]"));
    QVERIFY(!two.panes.first()->isHidden());
}

void WidgetsTest::stackShowsNothingByItself()
{
    WidgetStack stack;
    auto *const first = new QWidget;
    auto *const second = new QWidget;
    QCOMPARE(stack.addWidget(first), 0);
    QCOMPARE(stack.addWidget(second, -1), 1);
    stack.show();
    QVERIFY(QTest::qWaitForWindowExposed(&stack));
    QCOMPARE(stack.visibleWidget(), nullptr);
    QCOMPARE(stack.id(nullptr), -1);
    QVERIFY(first->isHidden() && second->isHidden());
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
    window.show();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    first->setFocus();
    stack->raiseWidget(second);
    QCOMPARE(window.focusWidget(), second);
    outside->setFocus();
    stack->raiseWidget(first);
    QCOMPARE(window.focusWidget(), outside);
}

void WidgetsTest::comboSelectsByColor_data()
{
    QTest::addColumn<QString>("given");
    QTest::addColumn<QString>("shown");
    QTest::addColumn<QString>("name");
    const auto row = [](const char *given, const char *shown, const char *name) {
        QTest::newRow(*given ? given : "empty")
            << QString::fromLatin1(given) << QString::fromLatin1(shown)
            << QString::fromLatin1(name);
    };
    row("", "none", "");
    row("nonsense", "none", "");
    row("red", "red", "red");
    row("#ff0000", "red", "red");
    row("darkYellow", "darkYellow", "darkYellow");
    row("#808000", "darkYellow", "darkYellow");
    row("#123456", "custom", "#123456");
    row("orange", "custom", "#ffa500");
}

void WidgetsTest::comboSelectsByColor()
{
    QFETCH(QString, given);
    QFETCH(QString, shown);
    QFETCH(QString, name);
    ColorCombo combo;
    QCOMPARE(combo.count(), 19);
    combo.setColorName(QStringLiteral("blue"));
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
    QTest::addColumn<int>("index");
    QTest::addColumn<bool>("accept");
    QTest::addColumn<QColor>("color");
    QTest::addColumn<bool>("hasColor");
    QTest::newRow("standard") << 3 << false << QColor(QStringLiteral("green")) << true;
    QTest::newRow("none keeps the colour") << 0 << false << QColor(Qt::blue) << false;
    QTest::newRow("custom") << 1 << true << QColor(1, 2, 3) << true;
    QTest::newRow("custom, cancelled") << 1 << false << QColor(Qt::blue) << true;
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
    QTimer answer;
    connect(&answer, &QTimer::timeout, &combo, [accept] {
        auto *const dialog = qobject_cast<QColorDialog *>(QApplication::activeModalWidget());
        if (!dialog)
            return;
        dialog->setCurrentColor(QColor(1, 2, 3));
        accept ? dialog->accept() : dialog->reject();
    });
    answer.start(10);
    combo.setCurrentIndex(index);
    emit static_cast<QComboBox &>(combo).activated(index);
    QCOMPARE(spy.size(), 1);
    QCOMPARE(spy.constFirst().constFirst().value<QColor>(), color);
    QCOMPARE(combo.color(), color);
    QCOMPARE(combo.hasColor(), hasColor);
}

void WidgetsTest::labelTellsPresses()
{
    ClickLabel label(QStringLiteral("press"));
    QSignalSpy spy(&label, &ClickLabel::clicked);
    QTest::mousePress(&label, Qt::LeftButton);
    QCOMPARE(spy.size(), 1);
}

QTEST_MAIN(WidgetsTest)
#include "tst_widgets.moc"
