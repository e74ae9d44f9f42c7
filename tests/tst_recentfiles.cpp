#include "app/actions.h"
#include "app/editors/editor.h"
#include "app/editors/editors.h"
#include "app/recentfiles.h"
#include "tests/apptest.h"

#include <QApplication>
#include <QMenu>
#include <QStyle>
#include <QStyleFactory>
#include <QTest>
#include <QTimer>
#include <QToolButton>

using namespace Qt::StringLiterals;
using namespace vesk;

/// The lists of recent files and projects in all their menus, and the menu of styles.
class RecentFilesTest : public AppTest
{
    Q_OBJECT

private slots:
    void init() { makeProfile(); }
    void cleanup();
    void newestFirstInAllMenus();
    void tenOutliveTheRun();
    void menusStandOnceAfterEachRebuild();
    void openButtonWithoutEntries();
    void openedAndSavedFilesAreOffered();
    void damagedLists();
    void styles();

private:
    static QStringList texts(QMenu *menu)
    {
        emit menu->aboutToShow();
        QStringList result;
        for (const QAction *action : menu->actions())
            result += action->isSeparator() ? u"-"_s : action->text();
        return result;
    }
    void rebuild()
    {
        makeShell();
        recent = RecentFiles::self();
        shell->rebuildUI();
    }

    RecentFiles *recent = nullptr;
};

void RecentFilesTest::cleanup()
{
    if (shell)
        dropShell();
}

void RecentFilesTest::newestFirstInAllMenus()
{
    rebuild();
    for (const QString &path : {u"/a"_s, u"/b & c"_s, u"/a"_s})
        recent->addRecent(path);
    QCOMPARE(texts(recent->recentFilesMenu()), QStringList({u"/a"_s, u"/b && c"_s}));
    QCOMPARE(texts(recent->recentMenu()), QStringList({u"/a"_s, u"/b && c"_s}));

    recent->addRecentProject(u"/p.vesk"_s, u"P"_s);
    recent->addRecentProject(u"/q.vesk"_s, u"Q"_s);
    recent->addRecentProject(u"/p.vesk"_s, u"new P"_s);
    QCOMPARE(recent->recentProjectsNames(), QStringList({u"new P"_s, u"Q"_s}));
    QCOMPARE(texts(recent->recentMenu()),
             QStringList({u"/p.vesk"_s, u"/q.vesk"_s, u"-"_s, u"/a"_s, u"/b && c"_s}));
    QCOMPARE(texts(recent->recentProjectsMenu()), QStringList({u"/p.vesk"_s, u"/q.vesk"_s}));

    recent->removeRecent(u"/a"_s);
    recent->removeRecentProject(u"/p.vesk"_s);
    QCOMPARE(texts(recent->recentMenu()), QStringList({u"/q.vesk"_s, u"-"_s, u"/b && c"_s}));
}

void RecentFilesTest::tenOutliveTheRun()
{
    rebuild();
    for (int i = 0; i < 15; ++i) {
        recent->addRecent(u"/f%1, x"_s.arg(i));
        recent->addRecentProject(u"/p%1"_s.arg(i), u"P%1"_s.arg(i));
    }
    QCOMPARE(texts(recent->recentFilesMenu()).size(), 15);
    dropShell();
    rebuild();
    QCOMPARE(recent->recentFiles().size(), 10);
    QCOMPARE(recent->recentFiles().first(), u"/f14, x"_s);
    QCOMPARE(recent->recentProjects().last(), u"/p5"_s);
    QCOMPARE(recent->recentProjectsNames().last(), u"P5"_s);
}

void RecentFilesTest::menusStandOnceAfterEachRebuild()
{
    rebuild();
    for (int i = 0; i < 2; ++i) {
        const Action *open = Actions::action(u"Editors/open"_s);
        const QMenu *file = open->menus.last();
        const QStringList shown = [file] {
            QStringList result;
            for (const QAction *action : file->actions())
                result += action->text();
            return result;
        }();
        QCOMPARE(shown.count(u"Open &recent"_s), 1);
        QCOMPARE(shown.indexOf(u"Open &recent"_s), shown.indexOf(u"&Open"_s) + 1);
        QCOMPARE(Actions::action(u"Editors/toolbar/open"_s)->toolbuttons.last()->menu(),
                 recent->recentMenu());
        shell->rebuildUI();
    }
}

void RecentFilesTest::openButtonWithoutEntries()
{
    rebuild();
    const QToolButton *button = Actions::action(u"Editors/toolbar/open"_s)->toolbuttons.last();
    QVERIFY(button->popupMode() != QToolButton::InstantPopup);
    recent->addRecent(u"/a"_s);
    QCOMPARE(button->popupMode(), QToolButton::InstantPopup);
}

void RecentFilesTest::openedAndSavedFilesAreOffered()
{
    rebuild();
    const QString one = write(u"one.txt"_s);
    const QString two = write(u"two.txt"_s);
    const QString gone = path(u"gone.txt"_s);
    for (const QString &file : {one, two})
        Editors::self()->open(file);
    // It is offered all the same.
    QTimer::singleShot(0, [] { QApplication::activeModalWidget()->close(); });
    Editors::self()->open(gone);
    QCOMPARE(texts(recent->recentFilesMenu()), QStringList({gone, two, one}));
    Editors::self()->saveAs(path(u"three.txt"_s));
    QCOMPARE(recent->recentFiles().first(), path(u"three.txt"_s));

    for (QMenu *menu : {recent->recentFilesMenu(), recent->recentMenu()}) {
        while (Editors::self()->current()->hasFileName())
            Editors::self()->close();
        const QString oldest = recent->recentFiles().last();
        emit menu->aboutToShow();
        menu->actions().last()->trigger();
        QCOMPARE(Editors::self()->current()->filename(), oldest);
        QCOMPARE(recent->recentFiles().first(), oldest);
    }
}

void RecentFilesTest::damagedLists()
{
    Settings::write(u"/project/recent"_s, QStringList{u"/a/one.vesk"_s, u"/a/two.vesk"_s});
    Settings::write(u"/project/recentNames"_s, QStringList{u"One"_s});
    rebuild();
    QCOMPARE(recent->recentProjectsNames(), QStringList({u"One"_s, u"two"_s}));
    recent->removeRecentProject(u"/a/two.vesk"_s);
    QCOMPARE(recent->recentProjectsNames(), QStringList{u"One"_s});
}

void RecentFilesTest::styles()
{
    const auto isCurrent = [](const QString &name) {
        return QApplication::style()->name().compare(name, Qt::CaseInsensitive) == 0;
    };
    const auto action = [](const QString &name) {
        return Actions::action(u"StylesMenu/"_s + name);
    };
    makeShell();
    QVERIFY(isCurrent(u"Windows"_s));
    QVERIFY(!action(u"Windows"_s)->isChecked());
    action(u"Fusion"_s)->trigger();
    QVERIFY(isCurrent(u"Fusion"_s));
    QCOMPARE(Settings::readFull(u"/qt/style"_s), u"Fusion"_s);
    dropShell();

    QApplication::setStyle(u"Windows"_s);
    makeShell();
    QVERIFY(isCurrent(u"Fusion"_s));
    QVERIFY(action(u"Fusion"_s)->isChecked());
    action(u"Windows"_s)->trigger();
    QVERIFY(!action(u"Fusion"_s)->isChecked());
}

QTEST_MAIN(RecentFilesTest)
#include "tst_recentfiles.moc"
