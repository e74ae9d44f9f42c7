#include "app/actions.h"
#include "app/actiontable.h"
#include "app/editors/editor.h"
#include "app/editors/editors.h"
#include "app/widgets/splitter.h"
#include "app/widgetstack.h"
#include "tests/apptest.h"

#include <QApplication>
#include <QFile>
#include <QLabel>
#include <QMenuBar>
#include <QScreen>
#include <QSignalSpy>
#include <QStatusBar>
#include <QTest>
#include <QTimer>
#include <QToolBar>

#include <memory>

using namespace Qt::StringLiterals;
using namespace vesk;

namespace {

QTemporaryDir *commandLineDir = nullptr;

/// A page of a dock.
class Panel : public QWidget
{
    Q_OBJECT
public:
    Panel(Dock dock, const char *name)
    {
        const PanelInfo info{name, QString::fromLatin1(name), noKey, "16x16_Messages",
                             SLOT(makeVisible())};
        action = Shell::self()->addPanel(dock, this, info);
        // As wide and high as a panel is at least.
        setMinimumSize(70, 70);
    }

    Action *action = nullptr;

public slots:
    void makeVisible() { Shell::self()->raisePanel(this); }
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
class ShellTest : public AppTest
{
    Q_OBJECT
private slots:
    void init();
    void cleanup() { dropShell(); }
    void opensTheFilesOfTheCommandLine();
    void startsWithDefaults();
    void geometrySurvivesARestart();
    void storedGeometryThatCannotBe_data();
    void storedGeometryThatCannotBe();
    void hiddenDockComesBackWithItsSize();
    void shutDockStaysShutAndComesBack_data();
    void shutDockStaysShutAndComesBack();
    void handlesShowTheirDots();
    void groupsSpringIntoBeing();
    void menusStandInDeclaredOrder();
    void rebuildingReplacesMenusAndBars();
    void emptyDockHides();
    void tabStripFromTwoPanelsOn();
    void raisedPanelShowsItsDock();
    void firstStartShowsThePanelsAndKeepsTheFocus();
    void statusCells();
    void acceptedCloseLeavesTheLoop();

private:
    /// A shell as `main` brings it up, but for what \a prepare adds before.
    template <typename Prepare>
    void start(const Prepare &prepare)
    {
        makeShell();
        prepare();
        shell->rebuildUI();
        shell->show();
        QVERIFY(QTest::qWaitForWindowExposed(shell.get()));
    }

    void start()
    {
        start([] {});
    }
};

void ShellTest::init()
{
    failOnBadConnects();
    makeProfile();
}

void ShellTest::opensTheFilesOfTheCommandLine()
{
    start();
    QStringList names;
    for (const Editor *const editor : Editors::self()->editors())
        names.append(editor->filename());
    QCOMPARE(names, (QStringList{commandLineDir->filePath(u"one.cpp"_s),
                                 commandLineDir->filePath(u"a b\nc.vesk"_s)}));
    // One whose name the toolkit cannot hold is not passed over in silence.
    const QString status = shell->statusBar()->findChild<QLabel *>()->text();
    QVERIFY2(status.contains(u".cpp: its name is not UTF-8"_s), qPrintable(status));
}

void ShellTest::startsWithDefaults()
{
    makeShell();
    QCOMPARE(shell->pos(), QPoint(50, 50));
    QCOMPARE(shell->size(), QSize(900, 700));
    shell->show();
    QVERIFY(QTest::qWaitForWindowExposed(shell.get()));
    const QList<int> columns = sizesOf(*shell, "vSplitter");
    QVERIFY(qAbs(columns.at(0) - 200) < 5 && qAbs(columns.at(1) - 700) < 10);
    const QList<int> rows = sizesOf(*shell, "hSplitter");
    QVERIFY(qAbs(rows.at(0) - 6 * rows.at(1)) < 20);
}

void ShellTest::geometrySurvivesARestart()
{
    const auto panels = [] {
        new Panel(Dock::Left, "a");
        new Panel(Dock::Left, "b");
        new Panel(Dock::Bottom, "c");
    };
    start(panels);
    shell->move(120, 90);
    shell->resize(800, 600);
    QTRY_COMPARE(shell->size(), QSize(800, 600));
    QTRY_COMPARE(shell->pos(), QPoint(120, 90));
    shell->findChild<Splitter *>(u"vSplitter"_s)->moveSplitter(300, 1);
    shell->leftDock()->raiseWidget(1);
    const QList<int> columns = sizesOf(*shell, "vSplitter");
    const QList<int> rows = sizesOf(*shell, "hSplitter");
    QCOMPARE(columns.constFirst(), 300);
    // A second round would show what creeps.
    for (int round = 0; round < 2; ++round) {
        dropShell();
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
    const Rows<QString, QString> row("k", "value");
    row("right of all screens", "x", "30000");
    row("above all screens", "y", "-500");
    row("negative size", "w", "-5");
    row("absurd size", "h", "2000000000");
    row("splitter of words", "vSplitter", "a,b,c");
    row("negative pane", "hSplitter", "-7,400");
    row("absurd pane", "vSplitter", "9999999,1280");
    row("stale panel", "leftDockPanelID", "77");
}

void ShellTest::storedGeometryThatCannotBe()
{
    QFETCH(QString, k);
    QFETCH(QString, value);
    Settings::write(u"/geometry/"_s + k, value);
    makeShell();
    const QRect title(shell->pos(), QSize(shell->width(), 20));
    QVERIFY(QGuiApplication::primaryScreen()->availableGeometry().intersects(title));
    const QSize screen = QGuiApplication::primaryScreen()->virtualSize();
    QVERIFY(shell->width() <= screen.width() && shell->height() <= screen.height());
    QVERIFY(sizesOf(*shell, "hSplitter").first() > 0);
    QVERIFY(sizesOf(*shell, "vSplitter").first() <= screen.width());
}

void ShellTest::hiddenDockComesBackWithItsSize()
{
    const auto panel = [] { new Panel(Dock::Left, "a"); };
    start(panel);
    shell->findChild<Splitter *>(u"vSplitter"_s)->moveSplitter(260, 1);
    QVERIFY(QTest::qWaitForWindowActive(shell.get()));
    QTest::keyClick(shell.get(), Qt::Key_L, Qt::ControlModifier);
    QTRY_VERIFY(shell->workspace()->width() > 860);
    dropShell();
    start(panel);
    QVERIFY(shell->leftDockWidget()->isHidden());
    shell->leftDockShowHide();
    QTRY_COMPARE(shell->leftDockWidget()->width(), 260);
}

void ShellTest::shutDockStaysShutAndComesBack_data()
{
    const Rows<Dock, QString, bool> row("dock", "way", "isDragged");
    row("left, dragged, command", Dock::Left, "command", true);
    row("left, dragged, panel", Dock::Left, "panel", true);
    row("left, stored, command", Dock::Left, "command", false);
    row("bottom, dragged, command", Dock::Bottom, "command", true);
    row("bottom, dragged, hidden, panel", Dock::Bottom, "hidden panel", true);
    row("bottom, stored, panel", Dock::Bottom, "panel", false);
}

void ShellTest::shutDockStaysShutAndComesBack()
{
    QFETCH(Dock, dock);
    QFETCH(QString, way);
    QFETCH(bool, isDragged);
    const bool isLeft = dock == Dock::Left;
    const char *const splitterName = isLeft ? "vSplitter" : "hSplitter";
    const QString key = u"/geometry/"_s + QLatin1String(splitterName);
    Panel *panel = nullptr;
    const auto makePanel = [&] { panel = new Panel(dock, "a"); };
    const auto size = [&] {
        QWidget *const whole = isLeft ? shell->leftDockWidget() : shell->bottomDockWidget();
        return sizesOf(*shell, splitterName).at(isLeft ? 0 : 1) == 0 ? 0
               : isLeft                                              ? whole->width()
                                                                     : whole->height();
    };
    if (!isDragged)
        Settings::write(key,
                        isLeft ? QStringList{u"0"_s, u"900"_s} : QStringList{u"618"_s, u"0"_s});
    start(makePanel);
    auto *const splitter = shell->findChild<Splitter *>(QLatin1String(splitterName));
    const int whole = isLeft ? splitter->width() : splitter->height();
    if (isDragged) {
        splitter->moveSplitter(isLeft ? 150 : whole - 150, 1);
        splitter->moveSplitter(isLeft ? 0 : whole, 1);
    }
    QTRY_COMPARE(size(), 0);
    const int wanted = !isDragged ? (isLeft ? 200 : 100)
                       : isLeft   ? 150
                                  : 150 - splitter->handleWidth();
    if (!isDragged) {
        // Another restart, and it is shut still.
        dropShell();
        QCOMPARE(Settings::readList(key).at(isLeft ? 0 : 1), u"0"_s);
        start(makePanel);
        QCOMPARE(size(), 0);
    }
    const QString command = isLeft ? u"Shell/showHideLeftPanel"_s : u"Shell/showHideBottomPanel"_s;
    if (way == u"hidden panel"_s) {
        panel->parentWidget()->parentWidget()->hide();
        QCoreApplication::sendPostedEvents();
    }
    if (way == u"command"_s)
        Actions::action(command)->trigger();
    else
        panel->action->trigger();
    QTRY_COMPARE(size(), wanted);
    QVERIFY(panel->isVisible());
    // Open as it is now, the command hides it.
    Actions::action(command)->trigger();
    QVERIFY(!panel->isVisible());
}

void ShellTest::handlesShowTheirDots()
{
    start([] {
        new Panel(Dock::Left, "a");
        new Panel(Dock::Bottom, "b");
    });
    for (const char *name : {"vSplitter", "hSplitter"}) {
        const QImage handle =
            shell->findChild<Splitter *>(QLatin1String(name))->handle(1)->grab().toImage();
        QSet<QRgb> colours;
        for (int y = 0; y < handle.height(); ++y) {
            for (int x = 0; x < handle.width(); ++x)
                colours.insert(handle.pixel(x, y));
        }
        QCOMPARE(colours.size(), 3);
    }
}

void ShellTest::groupsSpringIntoBeing()
{
    makeShell();
    ActionGroup *const deep = shell->actionGroup(u"panel/context/file/plugin"_s);
    QCOMPARE(deep->text(), u"plugin"_s);
    QCOMPARE(shell->actionGroup(u"/panel//context/file/plugin/"_s), deep);
    std::unique_ptr<Action> action(new Action(nullptr));
    deep->add(action.get());
    QCOMPARE(shell->actionGroup(u"panel"_s)->count(), 1u);
    // One letter makes another group.
    QVERIFY(shell->actionGroup(u"menu/Edit/std"_s) != shell->actionGroup(u"menu/Edit/Std"_s));
}

void ShellTest::menusStandInDeclaredOrder()
{
    QObject receiver;
    int made = 0;
    const auto add = [&](const char *group) {
        const QString name = u"Test/%1"_s.arg(++made);
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
    QCOMPARE(titles.takeFirst(), u"&File"_s);
    QVERIFY(!titles.contains(u"&Build"_s));
    QVERIFY(!titles.contains(u"&Project"_s));
    const QStringList tail = {u"&Tools"_s, u"&Options"_s, u"&Window"_s, u"&Help"_s, u"&Late"_s};
    QCOMPARE(titles.mid(titles.size() - tail.size()), tail);
    const QStringList bars = toolBarTitles(*shell);
    QVERIFY(bars.indexOf(u"Search"_s) < bars.indexOf(u"Own"_s));
    QVERIFY(!bars.contains(u"Navigation"_s));
    // Exit is the last of the File menu, behind a separator.
    const QList<QAction *> file = shell->menuBar()->actions().constFirst()->menu()->actions();
    QCOMPARE(file.constLast(), Actions::action(u"Shell/exit"_s));
    QVERIFY(file.at(file.size() - 2)->isSeparator());
}

void ShellTest::rebuildingReplacesMenusAndBars()
{
    start();
    const QStringList titles = menuTitles(*shell);
    const QStringList bars = toolBarTitles(*shell);
    QVERIFY(!bars.isEmpty());
    const Action *const exit = Actions::action(u"Shell/exit"_s);
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
    QVERIFY(!Actions::action(u"Shell/showHideLeftPanel"_s)->isVisible());
    // Nobody hid them: the first panel brings them back.
    dropShell();
    start();
    new Panel(Dock::Bottom, "late");
    shell->rebuildUI();
    QVERIFY(shell->bottomDockWidget()->isVisible());
    QVERIFY(Actions::action(u"Shell/showHideBottomPanel"_s)->isVisible());
}

void ShellTest::tabStripFromTwoPanelsOn()
{
    start([] {
        new Panel(Dock::Left, "a");
        new Panel(Dock::Left, "b");
        new Panel(Dock::Bottom, "c");
    });
    QVERIFY(shell->leftDockTab()->isVisible());
    QVERIFY(!shell->bottomDockTab()->isVisible());
    const QWidget *const frame = shell->leftDockTab()->parentWidget();
    QCOMPARE(frame->height(), 30);
    QTRY_COMPARE(shell->leftDockTab()->size(), frame->size());
    shell->findChild<Splitter *>(u"vSplitter"_s)->moveSplitter(330, 1);
    QTRY_COMPARE(shell->leftDockTab()->width(), 330);
}

void ShellTest::raisedPanelShowsItsDock()
{
    Panel *a = nullptr;
    Panel *b = nullptr;
    start([&] {
        a = new Panel(Dock::Left, "a");
        b = new Panel(Dock::Left, "b");
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

void ShellTest::firstStartShowsThePanelsAndKeepsTheFocus()
{
    Panel *left = nullptr;
    Panel *bottom = nullptr;
    start([&] {
        left = new Panel(Dock::Left, "a");
        new Panel(Dock::Left, "b");
        bottom = new Panel(Dock::Bottom, "c");
        connect(shell.get(), &Shell::leftDockRaised, left, [left] { left->setFocus(); });
    });
    QVERIFY(left->isVisible() && left->action->isChecked());
    QVERIFY(bottom->isVisible() && bottom->action->isChecked());
    QVERIFY(Editors::self()->current()->isAncestorOf(shell->focusWidget()));
}

void ShellTest::statusCells()
{
    makeShell();
    const QSize minimum = shell->minimumSizeHint();
    const QString longText = u"<b>\n"_s + QString(5000, QLatin1Char('x'));
    shell->statusMessage(u"default"_s, longText);
    shell->statusMessage(u"insowr"_s, u"OWR"_s);
    shell->statusMessage(u"line"_s, u"7"_s);
    shell->statusMessage(u"col"_s, u"12"_s);
    shell->statusMessage(u"Line"_s, u"8"_s);
    shell->statusMessage({}, u"8"_s);
    QStringList texts;
    for (const QLabel *const cell :
         shell->statusBar()->findChildren<QLabel *>(Qt::FindDirectChildrenOnly))
        texts.append(cell->text());
    QCOMPARE(texts, (QStringList{longText, u" OWR "_s, u" 7 "_s, u" 12 "_s}));
    QCOMPARE(shell->minimumSizeHint(), minimum);
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
    QCOMPARE(Settings::readList(u"/editors/openedFiles"_s).size(), open);
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
