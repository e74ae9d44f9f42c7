#include "app/actions.h"
#include "app/editors/editor.h"
#include "app/editors/editors.h"
#include "app/settings.h"
#include "app/shell.h"
#include "app/utils.h"
#include "app/widgets/splitter.h"
#include "app/widgetstack.h"

#include <QApplication>
#include <QFile>
#include <QLabel>
#include <QMenuBar>
#include <QMessageBox>
#include <QPushButton>
#include <QRegularExpression>
#include <QScreen>
#include <QSignalSpy>
#include <QStatusBar>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QToolBar>

#include <memory>

using namespace vesk;

namespace {

QTemporaryDir *commandLineDir = nullptr;

/// A page of a dock, which registers as the program's own panels do.
class Panel : public QWidget
{
    Q_OBJECT
public:
    Panel(bool isLeft, const QString &name)
        : stack(isLeft ? Shell::self()->leftDock() : Shell::self()->bottomDock())
    {
        Shell *const shell = Shell::self();
        const QString side = isLeft ? QStringLiteral("left") : QStringLiteral("bottom");
        action = Actions::createAction(name, side + QStringLiteral("Dock/") + name, 0, this,
                                       SLOT(makeVisible()));
        shell->actionGroup(QStringLiteral("docks/") + side)->add(action);
        action->setCheckable(true);
        action->setIcon(Utils::iconSet(QStringLiteral("16x16_Messages")));
        action->addTo(isLeft ? shell->leftDockTab() : shell->bottomDockTab());
        id = stack->addWidget(this, -1);
        connect(this, SIGNAL(raised()), shell,
                isLeft ? SLOT(raiseLeftDock()) : SLOT(raiseBottomDock()));
        connect(this, &Panel::gotFocus, shell, &Shell::focusIn);
        connect(shell, isLeft ? &Shell::leftDockRaised : &Shell::bottomDockRaised, this,
                [this](const QObject *panel) { action->setChecked(panel == this); });
    }

    Action *action = nullptr;
    WidgetStack *const stack;
    int id = -1;

public slots:
    void makeVisible()
    {
        stack->raiseWidget(this);
        emit raised();
    }

signals:
    void raised();
    void gotFocus();
};

QStringList menuTitles(const Shell &shell)
{
    QStringList titles;
    for (const QAction *const action : shell.menuBar()->actions())
        titles.append(action->text());
    return titles;
}

QStringList toolBarTitles(const Shell &shell)
{
    QStringList titles;
    for (const QToolBar *const bar : shell.findChildren<QToolBar *>(Qt::FindDirectChildrenOnly)) {
        if (bar->isVisibleTo(&shell))
            titles.append(bar->windowTitle());
    }
    return titles;
}

QList<int> sizesOf(const Shell &shell, const char *splitter)
{
    return shell.findChild<Splitter *>(QString::fromLatin1(splitter))->sizes();
}

} // namespace

/// The main window as the components and the user meet it.
class ShellTest : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void opensTheFilesOfTheCommandLine();
    void startsWithDefaults();
    void geometrySurvivesARestart();
    void storedGeometryThatCannotBe_data();
    void storedGeometryThatCannotBe();
    void hiddenDockComesBackWithItsSize();
    void groupsSpringIntoBeing();
    void menusStandInDeclaredOrder();
    void rebuildingReplacesMenusAndBars();
    void emptyDockHides();
    void tabStripFromTwoPanelsOn();
    void raisedPanelShowsItsDock();
    void storedPanelComesUp();
    void firstStartShowsThePanelsAndKeepsTheFocus();
    void keysShowAndHideDocks();
    void focusGoesToTheSender();
    void statusCells();
    void refusedCloseChangesNothing();
    void acceptedCloseLeavesTheLoop();

private:
    /// A shell as `main` brings it up, but for what \a prepare adds before.
    template <typename Prepare>
    void start(const Prepare &prepare)
    {
        shell = std::make_unique<Shell>(nullptr, QStringLiteral("vesk::Shell"));
        Editors::self();
        prepare();
        shell->rebuildUI();
        shell->show();
        QVERIFY(QTest::qWaitForWindowExposed(shell.get()));
    }

    void start()
    {
        start([] {});
    }

    void restart()
    {
        stop();
        start();
    }

    void stop()
    {
        shell.reset();
        Settings::forceWrite();
    }

    std::unique_ptr<QTemporaryDir> dir;
    std::unique_ptr<Shell> shell;
};

void ShellTest::init()
{
    QTest::failOnWarning(QRegularExpression(QStringLiteral("No such (signal|slot)")));
    dir = std::make_unique<QTemporaryDir>();
    Settings::setFileName(dir->filePath(QStringLiteral("vesk.ini")));
    Settings::setKeyPrefix(QStringLiteral("/vesk"));
}

void ShellTest::cleanup()
{
    stop();
}

void ShellTest::opensTheFilesOfTheCommandLine()
{
    start();
    QStringList names;
    for (const Editor *const editor : Editors::self()->editors())
        names.append(editor->filename());
    QCOMPARE(names, (QStringList{commandLineDir->filePath(QStringLiteral("one.cpp")),
                                 commandLineDir->filePath(QStringLiteral("a b\nc.vesk"))}));
}

void ShellTest::startsWithDefaults()
{
    shell = std::make_unique<Shell>();
    QCOMPARE(shell->pos(), QPoint(50, 50));
    QCOMPARE(shell->size(), QSize(900, 700));
    shell->show();
    QVERIFY(QTest::qWaitForWindowExposed(shell.get()));
    QVERIFY(shell->leftDockWidget()->isVisible());
    QVERIFY(shell->bottomDockWidget()->isVisible());
    const QList<int> columns = sizesOf(*shell, "vSplitter");
    QVERIFY2(qAbs(columns.at(0) - 200) < 5 && qAbs(columns.at(1) - 700) < 10,
             qPrintable(QStringLiteral("%1 %2").arg(columns.at(0)).arg(columns.at(1))));
    const QList<int> rows = sizesOf(*shell, "hSplitter");
    QVERIFY2(qAbs(rows.at(0) - 6 * rows.at(1)) < 20,
             qPrintable(QStringLiteral("%1 %2").arg(rows.at(0)).arg(rows.at(1))));
}

void ShellTest::geometrySurvivesARestart()
{
    const auto panels = [] {
        new Panel(true, QStringLiteral("a"));
        new Panel(true, QStringLiteral("b"));
        new Panel(false, QStringLiteral("c"));
    };
    start(panels);
    shell->move(120, 90);
    shell->resize(800, 600);
    QTRY_COMPARE(shell->size(), QSize(800, 600));
    QTRY_COMPARE(shell->pos(), QPoint(120, 90));
    shell->findChild<Splitter *>(QStringLiteral("vSplitter"))->moveSplitter(300, 1);
    shell->leftDock()->raiseWidget(1);
    const QList<int> columns = sizesOf(*shell, "vSplitter");
    const QList<int> rows = sizesOf(*shell, "hSplitter");
    QCOMPARE(columns.constFirst(), 300);
    // A second round would show what creeps.
    for (int round = 0; round < 2; ++round) {
        stop();
        start(panels);
        QTRY_COMPARE(shell->pos(), QPoint(120, 90));
        QCOMPARE(shell->size(), QSize(800, 600));
        QCOMPARE(sizesOf(*shell, "vSplitter"), columns);
        QCOMPARE(sizesOf(*shell, "hSplitter"), rows);
        QCOMPARE(shell->leftDock()->id(shell->leftDock()->visibleWidget()), 1);
    }
}

void ShellTest::storedGeometryThatCannotBe_data()
{
    QTest::addColumn<QString>("k");
    QTest::addColumn<QString>("value");
    QTest::newRow("right of all screens") << QStringLiteral("x") << QStringLiteral("30000");
    QTest::newRow("left of all screens") << QStringLiteral("x") << QStringLiteral("-2000");
    QTest::newRow("above all screens") << QStringLiteral("y") << QStringLiteral("-500");
    QTest::newRow("no number") << QStringLiteral("x") << QStringLiteral("left");
    QTest::newRow("negative size") << QStringLiteral("w") << QStringLiteral("-5");
    QTest::newRow("absurd size") << QStringLiteral("h") << QStringLiteral("2000000000");
    QTest::newRow("splitter of words") << QStringLiteral("vSplitter") << QStringLiteral("a,b,c");
    QTest::newRow("stale panel") << QStringLiteral("leftDockPanelID") << QStringLiteral("77");
}

void ShellTest::storedGeometryThatCannotBe()
{
    QFETCH(QString, k);
    QFETCH(QString, value);
    Settings::write(QStringLiteral("/geometry/") + k, value);
    shell = std::make_unique<Shell>();
    const QRect title(shell->pos(), QSize(shell->width(), 20));
    QVERIFY(QGuiApplication::primaryScreen()->availableGeometry().intersects(title));
    QVERIFY(shell->width() <= 16384 && shell->height() <= 16384);
}

void ShellTest::hiddenDockComesBackWithItsSize()
{
    const auto panel = [] { new Panel(true, QStringLiteral("a")); };
    start(panel);
    shell->findChild<Splitter *>(QStringLiteral("vSplitter"))->moveSplitter(260, 1);
    shell->leftDockShowHide();
    QTRY_VERIFY(shell->workspace()->width() > 860);
    stop();
    start(panel);
    QVERIFY(shell->leftDockWidget()->isHidden());
    shell->leftDockShowHide();
    QTRY_COMPARE(shell->leftDockWidget()->width(), 260);
}

void ShellTest::groupsSpringIntoBeing()
{
    shell = std::make_unique<Shell>();
    ActionGroup *const deep = shell->actionGroup(QStringLiteral("panel/context/file/plugin"));
    QCOMPARE(deep->text(), QStringLiteral("plugin"));
    QCOMPARE(shell->actionGroup(QStringLiteral("panel/context/file/plugin")), deep);
    QCOMPARE(shell->actionGroup(QStringLiteral("/panel//context/file/plugin/")), deep);
    std::unique_ptr<Action> action(new Action(nullptr));
    deep->add(action.get());
    QCOMPARE(shell->actionGroup(QStringLiteral("panel"))->count(), 1u);
    // One letter makes another group.
    QVERIFY(shell->actionGroup(QStringLiteral("menu/Edit/std")) !=
            shell->actionGroup(QStringLiteral("menu/Edit/Std")));
    QVERIFY(shell->actionGroup(QStringLiteral("docks/left"))->isExclusive());
    QVERIFY(shell->actionGroup(QStringLiteral("stackButtons"))->isExclusive());
}

void ShellTest::menusStandInDeclaredOrder()
{
    QObject receiver;
    int made = 0;
    const auto add = [&](const char *group) {
        const QString name = QStringLiteral("Test/%1").arg(++made);
        shell->actionGroup(QString::fromLatin1(group))
            ->add(Actions::createAction(name, name, 0, &receiver, SLOT(deleteLater())));
    };
    start([&] {
        add("menu/Late/Std");
        add("menu/Help/Std");
        add("menu/Build/Std");
        add("menu/Tools/Misc");
        add("toolbar/Own/Misc");
        add("toolbar/Search");
    });
    QStringList titles = menuTitles(*shell);
    QCOMPARE(titles.takeFirst(), QStringLiteral("&File"));
    QVERIFY(!titles.contains(QStringLiteral("&Build")));
    QVERIFY(!titles.contains(QStringLiteral("&Project")));
    const QStringList tail = {QStringLiteral("&Tools"), QStringLiteral("&Options"),
                              QStringLiteral("&Window"), QStringLiteral("&Help"),
                              QStringLiteral("&Late")};
    QCOMPARE(titles.mid(titles.size() - tail.size()), tail);
    const QStringList bars = toolBarTitles(*shell);
    QVERIFY(bars.indexOf(QStringLiteral("Search")) < bars.indexOf(QStringLiteral("Own")));
    QVERIFY(!bars.contains(QStringLiteral("Navigation")));
    // Exit is the last of the File menu, behind a separator.
    const QList<QAction *> file = shell->menuBar()->actions().constFirst()->menu()->actions();
    QCOMPARE(file.constLast(), Actions::action(QStringLiteral("Shell/exit")));
    QVERIFY(file.at(file.size() - 2)->isSeparator());
}

void ShellTest::rebuildingReplacesMenusAndBars()
{
    start();
    const QStringList titles = menuTitles(*shell);
    const QStringList bars = toolBarTitles(*shell);
    QVERIFY(!bars.isEmpty());
    const Action *const exit = Actions::action(QStringLiteral("Shell/exit"));
    QCOMPARE(exit->menus.size(), 1);
    const QPointer<QMenu> former = exit->menus.constFirst();
    QSignalSpy spy(shell.get(), &Shell::uiRebuilded);
    shell->rebuildUI();
    QCOMPARE(spy.size(), 1);
    QCOMPARE(exit->menus.size(), 2);
    QCOMPARE(exit->menus.constLast().data(), shell->menuBar()->actions().constFirst()->menu());
    QTRY_VERIFY(former.isNull());
    QCOMPARE(menuTitles(*shell), titles);
    QTRY_COMPARE(toolBarTitles(*shell), bars);
    QCOMPARE(exit->menus.constLast()->actions().count(const_cast<Action *>(exit)), 1);
}

void ShellTest::emptyDockHides()
{
    start();
    QVERIFY(shell->leftDockWidget()->isHidden());
    QVERIFY(shell->bottomDockWidget()->isHidden());
    QVERIFY(!Actions::action(QStringLiteral("Shell/showHideLeftPanel"))->isVisible());
    // Nobody hid them: the first panel brings them back.
    restart();
    new Panel(false, QStringLiteral("late"));
    shell->rebuildUI();
    QVERIFY(shell->bottomDockWidget()->isVisible());
    QVERIFY(Actions::action(QStringLiteral("Shell/showHideBottomPanel"))->isVisible());
}

void ShellTest::tabStripFromTwoPanelsOn()
{
    start([] {
        new Panel(true, QStringLiteral("a"));
        new Panel(true, QStringLiteral("b"));
        new Panel(false, QStringLiteral("c"));
    });
    QVERIFY(shell->leftDockTab()->isVisible());
    QVERIFY(!shell->bottomDockTab()->isVisible());
    const QWidget *const frame = shell->leftDockTab()->parentWidget();
    QCOMPARE(frame->height(), 30);
    QTRY_COMPARE(shell->leftDockTab()->size(), frame->size());
    shell->findChild<Splitter *>(QStringLiteral("vSplitter"))->moveSplitter(330, 1);
    QTRY_COMPARE(shell->leftDockTab()->width(), 330);
}

void ShellTest::raisedPanelShowsItsDock()
{
    Panel *a = nullptr;
    Panel *b = nullptr;
    start([&] {
        a = new Panel(true, QStringLiteral("a"));
        b = new Panel(true, QStringLiteral("b"));
    });
    a->action->trigger();
    QVERIFY(a->isVisible() && a->action->isChecked());
    shell->leftDockShowHide();
    QSignalSpy spy(shell.get(), &Shell::leftDockRaised);
    b->action->trigger();
    QCOMPARE(spy.size(), 1);
    QCOMPARE(spy.constFirst().constFirst().value<QObject *>(), b);
    QVERIFY(shell->leftDockWidget()->isVisible());
    QVERIFY(b->isVisible() && !a->isVisible());
    QVERIFY(b->action->isChecked() && !a->action->isChecked());
    // Pressing the button of the panel on top must not leave none pressed.
    b->action->trigger();
    QVERIFY(b->isVisible() && b->action->isChecked());
}

void ShellTest::storedPanelComesUp()
{
    Settings::write(QStringLiteral("/geometry/leftDockPanelID"), 1);
    Panel *second = nullptr;
    start([&] {
        new Panel(true, QStringLiteral("a"));
        second = new Panel(true, QStringLiteral("b"));
    });
    QVERIFY(second->isVisible());
    QVERIFY(second->action->isChecked());
}

void ShellTest::firstStartShowsThePanelsAndKeepsTheFocus()
{
    Panel *left = nullptr;
    Panel *bottom = nullptr;
    start([&] {
        left = new Panel(true, QStringLiteral("a"));
        new Panel(true, QStringLiteral("b"));
        bottom = new Panel(false, QStringLiteral("c"));
        connect(shell.get(), &Shell::leftDockRaised, left, [left] { left->setFocus(); });
    });
    QVERIFY(left->isVisible() && left->action->isChecked());
    QVERIFY(bottom->isVisible() && bottom->action->isChecked());
    QVERIFY(Editors::self()->current()->isAncestorOf(shell->focusWidget()));
}

void ShellTest::keysShowAndHideDocks()
{
    start([] {
        new Panel(true, QStringLiteral("a"));
        new Panel(false, QStringLiteral("b"));
    });
    QVERIFY(QTest::qWaitForWindowActive(shell.get()));
    QTest::keyClick(shell.get(), Qt::Key_L, Qt::ControlModifier);
    QVERIFY(shell->leftDockWidget()->isHidden());
    QTest::keyClick(shell.get(), Qt::Key_D, Qt::ControlModifier);
    QVERIFY(shell->bottomDockWidget()->isHidden());
    QTest::keyClick(shell.get(), Qt::Key_L, Qt::ControlModifier);
    QVERIFY(shell->leftDockWidget()->isVisible());
}

void ShellTest::focusGoesToTheSender()
{
    Panel *panel = nullptr;
    start([&] { panel = new Panel(true, QStringLiteral("a")); });
    const Action *const copy = Actions::action(QStringLiteral("Editors/copy"));
    QVERIFY(copy);
    QSignalSpy spy(shell.get(), &Shell::focusChanged);
    emit panel->gotFocus();
    QCOMPARE(spy.size(), 1);
    QCOMPARE(spy.constFirst().constFirst().value<QObject *>(), panel);
    QVERIFY(!copy->isEnabled());
    emit Editors::self()->gotFocus();
    QVERIFY(copy->isEnabled());
}

void ShellTest::statusCells()
{
    shell = std::make_unique<Shell>();
    const QList<QLabel *> cells =
        shell->statusBar()->findChildren<QLabel *>(Qt::FindDirectChildrenOnly);
    const auto texts = [&cells] {
        QStringList result;
        for (const QLabel *const cell : cells)
            result.append(cell->text());
        return result;
    };
    const QSize minimum = shell->minimumSizeHint();
    const QString longText = QStringLiteral("<b>\n") + QString(5000, QLatin1Char('x'));
    shell->statusMessage(QStringLiteral("default"), longText);
    shell->statusMessage(QStringLiteral("insowr"), QStringLiteral("OWR"));
    shell->statusMessage(QStringLiteral("line"), QStringLiteral("7"));
    shell->statusMessage(QStringLiteral("col"), QStringLiteral("12"));
    const QStringList expected = {longText, QStringLiteral(" OWR "), QStringLiteral(" 7 "),
                                  QStringLiteral(" 12 ")};
    QCOMPARE(texts(), expected);
    shell->statusMessage(QStringLiteral("Line"), QStringLiteral("8"));
    shell->statusMessage({}, QStringLiteral("8"));
    QCOMPARE(texts(), expected);
    QCOMPARE(shell->minimumSizeHint(), minimum);
}

void ShellTest::refusedCloseChangesNothing()
{
    start();
    Editors::self()->newEditor();
    Editor *const editor = Editors::self()->current();
    QTest::keyClicks(shell->focusWidget(), QStringLiteral("x"));
    QVERIFY(editor->isModified());
    int asked = 0;
    QTimer answer;
    connect(&answer, &QTimer::timeout, this, [&asked] {
        auto *const box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
        if (!box)
            return;
        ++asked;
        box->button(QMessageBox::Cancel)->click();
    });
    answer.start(10);
    shell->close();
    QCOMPARE(asked, 1);
    QVERIFY(shell->isVisible());
    QVERIFY(Editors::self()->editors().contains(editor));
    bool found = true;
    Settings::readNum(QStringLiteral("/geometry/x"), 0, &found);
    QVERIFY(!found);
}

void ShellTest::acceptedCloseLeavesTheLoop()
{
    start();
    const int open = int(Editors::self()->editors().size());
    QTimer::singleShot(0, shell.get(), [this] {
        shell->close();
        // The window goes with the program.
        QVERIFY(shell->isVisible());
        // What the user was quick enough to press as well does no harm.
        shell->close();
        for (const Qt::Key key : {Qt::Key_Q, Qt::Key_Z})
            QTest::keyClick(shell.get(), key, Qt::ControlModifier);
    });
    QTimer::singleShot(10000, shell.get(), [] { QApplication::exit(99); });
    QCOMPARE(QApplication::exec(), 0);
    QCOMPARE(Settings::readList(QStringLiteral("/editors/openedFiles")).size(), open);
}

int main(int argc, char **argv)
{
    // The shell reads the program's command line: files that exist are opened.
    QTemporaryDir dir;
    commandLineDir = &dir;
    QList<QByteArray> names = {"vesk"};
    for (const char *const name : {"/one.cpp", "/a b\nc.vesk"}) {
        names.append(QFile::encodeName(dir.path()) + name);
        QFile file(QFile::decodeName(names.constLast()));
        if (!file.open(QIODevice::WriteOnly))
            return 1;
        file.write("text\n");
    }
    names.append(QFile::encodeName(dir.path()) + "/missing.cpp");
    names.append(QFile::encodeName(dir.path()) + "/\xff\xfe.cpp");
    names.append("");
    QList<char *> pointers;
    for (QByteArray &name : names)
        pointers.append(name.data());
    int count = int(pointers.size());
    QApplication application(count, pointers.data());
    QApplication::setQuitOnLastWindowClosed(false);
    ShellTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_shell.moc"
