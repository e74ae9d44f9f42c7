#include "app/actions.h"
#include "tests/apptest.h"

#include <QMenu>
#include <QTest>
#include <QToolBar>

#include <memory>

using namespace Qt::StringLiterals;
using namespace vesk;

namespace {

/// Takes what an action sends, by the slots' texts.
class Receiver : public QObject
{
    Q_OBJECT
public:
    int calls = 0;
    QList<bool> states;

public slots:
    void act() { ++calls; }
    void actWithDefault(int id = -1) { calls += id == -1 ? 1 : 100; }
    void switchTo(bool on) { states.append(on); }
};

QStringList textsOf(const QWidget *container)
{
    QStringList texts;
    for (const QAction *const action : container->actions())
        texts.append(action->isSeparator() ? u"-"_s : action->text());
    return texts;
}

} // namespace

/// Actions and their groups, as components declare them and menus show them.
class ActionsTest : public AppTest
{
    Q_OBJECT
private slots:
    void initTestCase() { makeShell(); }
    void init();
    void cleanupTestCase() { dropShell(); }
    void plainTextDropsMarks();
    void slotTextDecidesWhatIsSent();
    void tipFollowsTextAndShortcut();
    void shortcutWorksWithoutAMenu();
    void deadActionIsForgotten();
    void groupKeepsOrderAndSeparators();
    void dropDownBecomesASubmenu();
    void exclusiveGroupKeepsOneOn();
    void disabledGroupDisablesLaterMembers();
    void invisibleGroupShowsNothing();
    void deletedButtonIsForgotten();

private:
    Action *create(const QString &menuText)
    {
        const QString name = u"Test/%1"_s.arg(++count);
        return Actions::createAction(menuText, name, 0, &receiver, SLOT(act()));
    }

    Receiver receiver;
    int count = 0;
};

void ActionsTest::init()
{
    failOnBadConnects();
    receiver.calls = 0;
    receiver.states.clear();
}

void ActionsTest::plainTextDropsMarks()
{
    Action *const action = create(u"Save &as..."_s);
    QCOMPARE(action->text(), u"Save as"_s);
    QMenu menu;
    menu.addAction(action);
    QCOMPARE(textsOf(&menu), QStringList{u"Save &as..."_s});
}

void ActionsTest::slotTextDecidesWhatIsSent()
{
    Action *const plain = create(u"Plain"_s);
    QVERIFY(!plain->isCheckable());
    plain->trigger();
    QCOMPARE(receiver.calls, 1);

    Action *const withDefault =
        Actions::createAction(u"D"_s, u"Test/D"_s, 0, &receiver, SLOT(actWithDefault()));
    withDefault->setCheckable(true);
    withDefault->trigger();
    QCOMPARE(receiver.calls, 2);

    Action *const toggle =
        Actions::createAction(u"T"_s, u"Test/T"_s, 0, &receiver, SLOT(switchTo(bool)));
    QVERIFY(toggle->isCheckable());
    toggle->trigger();
    toggle->setChecked(false);
    QCOMPARE(receiver.states, (QList<bool>{true, false}));
    QCOMPARE(Actions::action(u"Test/T"_s), toggle);
    QCOMPARE(Actions::action(u"Test/t"_s), nullptr);
}

void ActionsTest::tipFollowsTextAndShortcut()
{
    Action *const action =
        Actions::createAction(u"&Open..."_s, u"Test/open"_s, (Qt::CTRL | Qt::Key_F12).toCombined(),
                              &receiver, SLOT(act()));
    QCOMPARE(action->toolTip(), u"Open (Ctrl+F12)"_s);
    QCOMPARE(action->statusTip(), u"Open"_s);
    action->setText(u"Shut"_s);
    action->setShortcut(QKeySequence());
    QCOMPARE(action->toolTip(), u"Shut"_s);
}

void ActionsTest::shortcutWorksWithoutAMenu()
{
    QVERIFY(showActive(shell.get()));
    Action *const action = Actions::createAction(
        u"Key"_s, u"Test/key"_s, (Qt::CTRL | Qt::Key_F11).toCombined(), &receiver, SLOT(act()));
    QTest::keyClick(shell.get(), Qt::Key_F11, Qt::ControlModifier);
    QCOMPARE(receiver.calls, 1);
    // Standing in a menu too, it still fires once.
    QMenu menu(shell.get());
    action->addTo(&menu);
    QTest::keyClick(shell.get(), Qt::Key_F11, Qt::ControlModifier);
    QCOMPARE(receiver.calls, 2);
    shell->hide();
}

void ActionsTest::deadActionIsForgotten()
{
    std::unique_ptr<Action> action(create(u"Dead"_s));
    const QString name = action->objectName();
    ActionGroup group(nullptr);
    group.add(action.get());
    QCOMPARE(Actions::action(name), action.get());
    action.reset();
    QCOMPARE(Actions::action(name), nullptr);
    QCOMPARE(group.count(), 0u);
    QMenu menu;
    group.addTo(&menu);
    QVERIFY(menu.actions().isEmpty());
}

void ActionsTest::groupKeepsOrderAndSeparators()
{
    ActionGroup first(nullptr);
    ActionGroup second(nullptr);
    ActionGroup root(nullptr);
    root.add(&first);
    root.add(&second);
    second.add(create(u"c"_s));
    second.addSeparator();
    second.add(create(u"d"_s));
    Action *const a = create(u"a"_s);
    first.add(a->objectName());
    first.add(a);
    first.add(create(u"b"_s));
    const QStringList expected = {u"a"_s, u"b"_s, u"c"_s, u"-"_s, u"d"_s};
    QMenu menu;
    root.addTo(&menu);
    QCOMPARE(textsOf(&menu), expected);
    QToolBar bar;
    root.addTo(&bar);
    QCOMPARE(textsOf(&bar), expected);
}

void ActionsTest::dropDownBecomesASubmenu()
{
    ActionGroup root(nullptr);
    ActionGroup styles(nullptr);
    styles.setMenuText(u"Select &style"_s);
    styles.setUsesDropDown(true);
    root.add(create(u"a"_s));
    root.add(&styles);
    styles.add(create(u"b"_s));
    QMenu menu;
    root.addTo(&menu);
    QCOMPARE(textsOf(&menu), (QStringList{u"a"_s, u"Select &style"_s}));
    const QMenu *const submenu = menu.actions().constLast()->menu();
    QVERIFY(submenu);
    QCOMPARE(textsOf(submenu), QStringList{u"b"_s});
}

void ActionsTest::exclusiveGroupKeepsOneOn()
{
    ActionGroup exclusive(nullptr, QString(), true);
    ActionGroup plain(nullptr);
    Action *const a = create(u"a"_s);
    Action *const b = create(u"b"_s);
    for (Action *const action : {a, b}) {
        exclusive.add(action);
        plain.add(action);
    }
    QCOMPARE(exclusive.count(), 2u);
    QCOMPARE(plain.count(), 2u);
    // Panels make their actions toggles after they were added.
    a->setCheckable(true);
    b->setCheckable(true);
    QVERIFY(!a->isChecked() && !b->isChecked());
    a->setChecked(true);
    b->setChecked(true);
    QVERIFY(!a->isChecked() && b->isChecked());
    b->setChecked(false);
    QVERIFY(b->isChecked());
    a->trigger();
    QVERIFY(a->isChecked() && !b->isChecked());
}

void ActionsTest::disabledGroupDisablesLaterMembers()
{
    ActionGroup root(nullptr);
    ActionGroup inner(nullptr);
    Action *const early = create(u"early"_s);
    Action *const late = create(u"late"_s);
    inner.add(early);
    root.add(&inner);
    root.setEnabled(false);
    inner.add(late);
    QVERIFY(!early->isEnabled() && !late->isEnabled());
    root.setEnabled(true);
    QVERIFY(early->isEnabled() && late->isEnabled());
}

void ActionsTest::invisibleGroupShowsNothing()
{
    ActionGroup root(nullptr);
    root.setVisible(false);
    ActionGroup inner(nullptr);
    root.add(&inner);
    inner.addSeparator();
    Action *const action = create(u"a"_s);
    inner.add(action);
    QMenu menu;
    root.addTo(&menu);
    QVERIFY(menu.actions().isEmpty());
    QVERIFY(!action->isVisible());
    root.setVisible(true);
    root.addTo(&menu);
    QCOMPARE(textsOf(&menu), (QStringList{u"-"_s, u"a"_s}));
}

void ActionsTest::deletedButtonIsForgotten()
{
    Action *const action = create(u"a"_s);
    auto early = std::make_unique<QToolBar>();
    QToolBar late;
    action->addTo(early.get());
    action->addTo(&late);
    early.reset();
    QCOMPARE(action->toolbuttons,
             (QList<QToolButton *>{qobject_cast<QToolButton *>(late.widgetForAction(action))}));
}

QTEST_MAIN(ActionsTest)
#include "tst_actions.moc"
