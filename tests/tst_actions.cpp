#include "app/actions.h"
#include "app/settings.h"
#include "app/shell.h"

#include <QMenu>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QToolBar>

#include <memory>

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
        texts.append(action->isSeparator() ? QStringLiteral("-") : action->text());
    return texts;
}

} // namespace

/// Actions and their groups, as components declare them and menus show them.
class ActionsTest : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void init();
    void cleanupTestCase();
    void plainTextDropsMarks_data();
    void plainTextDropsMarks();
    void slotTextDecidesWhatIsSent();
    void tipFollowsTextAndShortcut();
    void shortcutWorksWithoutAMenu();
    void deadActionIsForgotten();
    void groupKeepsOrderAndSeparators();
    void dropDownBecomesASubmenu();
    void countGoesThroughSubGroups();
    void exclusiveGroupKeepsOneOn();
    void actionInTwoGroups();
    void disabledGroupDisablesLaterMembers();
    void invisibleGroupShowsNothing();
    void toolButtonIsAtLeast24Pixels();
    void textLabelHoldsForLaterButtons();
    void deletedButtonIsForgotten();

private:
    Action *create(const QString &menuText)
    {
        const QString name = QStringLiteral("Test/%1").arg(++count);
        return Actions::createAction(menuText, name, 0, &receiver, SLOT(act()));
    }

    QTemporaryDir dir;
    std::unique_ptr<Shell> shell;
    Receiver receiver;
    int count = 0;
};

void ActionsTest::initTestCase()
{
    Settings::setFileName(dir.filePath(QStringLiteral("vesk.ini")));
    Settings::setKeyPrefix(QStringLiteral("/vesk"));
    shell = std::make_unique<Shell>();
}

void ActionsTest::init()
{
    QTest::failOnWarning(QRegularExpression(QStringLiteral("No such (signal|slot)")));
    receiver.calls = 0;
    receiver.states.clear();
}

void ActionsTest::cleanupTestCase()
{
    shell.reset();
    Settings::forceWrite();
}

void ActionsTest::plainTextDropsMarks_data()
{
    QTest::addColumn<QString>("menuText");
    QTest::addColumn<QString>("text");
    QTest::newRow("mark and dots") << QStringLiteral("Save &as...") << QStringLiteral("Save as");
    QTest::newRow("nothing to drop") << QStringLiteral("New") << QStringLiteral("New");
    QTest::newRow("all of them") << QStringLiteral("&A.b.&C") << QStringLiteral("AbC");
}

void ActionsTest::plainTextDropsMarks()
{
    QFETCH(QString, menuText);
    QFETCH(QString, text);
    const Action *const action = create(menuText);
    QCOMPARE(action->text(), text);
    QCOMPARE(action->menuText(), menuText);
    QMenu menu;
    menu.addAction(const_cast<Action *>(action));
    QCOMPARE(textsOf(&menu), QStringList{menuText});
}

void ActionsTest::slotTextDecidesWhatIsSent()
{
    Action *const plain = create(QStringLiteral("Plain"));
    QVERIFY(!plain->isCheckable());
    plain->trigger();
    QCOMPARE(receiver.calls, 1);

    Action *const withDefault = Actions::createAction(QStringLiteral("D"), QStringLiteral("Test/D"),
                                                      0, &receiver, SLOT(actWithDefault()));
    withDefault->setCheckable(true);
    withDefault->trigger();
    QCOMPARE(receiver.calls, 2);

    Action *const toggle = Actions::createAction(QStringLiteral("T"), QStringLiteral("Test/T"), 0,
                                                 &receiver, SLOT(switchTo(bool)));
    QVERIFY(toggle->isCheckable());
    toggle->trigger();
    toggle->setChecked(false);
    QCOMPARE(receiver.states, (QList<bool>{true, false}));
    QCOMPARE(Actions::action(QStringLiteral("Test/T")), toggle);
    QCOMPARE(Actions::action(QStringLiteral("Test/t")), nullptr);
}

void ActionsTest::tipFollowsTextAndShortcut()
{
    Action *const action =
        Actions::createAction(QStringLiteral("&Open..."), QStringLiteral("Test/open"),
                              (Qt::CTRL | Qt::Key_F12).toCombined(), &receiver, SLOT(act()));
    QCOMPARE(action->toolTip(), QStringLiteral("Open (Ctrl+F12)"));
    QCOMPARE(action->statusTip(), QStringLiteral("Open"));
    action->setText(QStringLiteral("Shut"));
    action->setShortcut(QKeySequence());
    QCOMPARE(action->toolTip(), QStringLiteral("Shut"));
    action->setToolTip(QStringLiteral("own"));
    action->setText(QStringLiteral("Open"));
    QCOMPARE(action->toolTip(), QStringLiteral("own"));
}

void ActionsTest::shortcutWorksWithoutAMenu()
{
    shell->show();
    QVERIFY(QTest::qWaitForWindowActive(shell.get()));
    Action *const action =
        Actions::createAction(QStringLiteral("Key"), QStringLiteral("Test/key"),
                              (Qt::CTRL | Qt::Key_F11).toCombined(), &receiver, SLOT(act()));
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
    std::unique_ptr<Action> action(create(QStringLiteral("Dead")));
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
    second.add(create(QStringLiteral("c")));
    second.addSeparator();
    second.add(create(QStringLiteral("d")));
    Action *const a = create(QStringLiteral("a"));
    first.add(a->objectName());
    first.add(a);
    first.add(create(QStringLiteral("b")));
    const QStringList expected = {QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("c"),
                                  QStringLiteral("-"), QStringLiteral("d")};
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
    styles.setMenuText(QStringLiteral("Select &style"));
    styles.setUsesDropDown(true);
    root.add(create(QStringLiteral("a")));
    root.add(&styles);
    styles.add(create(QStringLiteral("b")));
    QMenu menu;
    root.addTo(&menu);
    QCOMPARE(textsOf(&menu), (QStringList{QStringLiteral("a"), QStringLiteral("Select &style")}));
    const QMenu *const submenu = menu.actions().constLast()->menu();
    QVERIFY(submenu);
    QCOMPARE(textsOf(submenu), QStringList{QStringLiteral("b")});
}

void ActionsTest::countGoesThroughSubGroups()
{
    ActionGroup root(nullptr);
    ActionGroup inner(nullptr);
    ActionGroup innermost(nullptr);
    root.add(&inner);
    inner.add(&innermost);
    root.addSeparator();
    QCOMPARE(root.count(), 0u);
    Action *const deep = create(QStringLiteral("deep"));
    Action *const own = create(QStringLiteral("own"));
    innermost.add(deep);
    root.add(own);
    // Own actions come first, whatever was added first.
    QCOMPARE(root.actions(), (QList<Action *>{own, deep}));
    QCOMPARE(root.count(), 2u);
}

void ActionsTest::exclusiveGroupKeepsOneOn()
{
    ActionGroup group(nullptr, QString(), true);
    Action *const a = create(QStringLiteral("a"));
    Action *const b = create(QStringLiteral("b"));
    group.add(a);
    group.add(b);
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

void ActionsTest::actionInTwoGroups()
{
    ActionGroup exclusive(nullptr, QString(), true);
    ActionGroup plain(nullptr);
    Action *const a = create(QStringLiteral("a"));
    Action *const b = create(QStringLiteral("b"));
    for (Action *const action : {a, b}) {
        exclusive.add(action);
        plain.add(action);
        action->setCheckable(true);
    }
    QCOMPARE(exclusive.count(), 2u);
    QCOMPARE(plain.count(), 2u);
    a->setChecked(true);
    b->setChecked(true);
    QVERIFY(!a->isChecked());
}

void ActionsTest::disabledGroupDisablesLaterMembers()
{
    ActionGroup root(nullptr);
    ActionGroup inner(nullptr);
    Action *const early = create(QStringLiteral("early"));
    Action *const late = create(QStringLiteral("late"));
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
    Action *const action = create(QStringLiteral("a"));
    inner.add(action);
    QMenu menu;
    root.addTo(&menu);
    QVERIFY(menu.actions().isEmpty());
    QVERIFY(!action->isVisible());
    root.setVisible(true);
    root.addTo(&menu);
    QCOMPARE(textsOf(&menu), (QStringList{QStringLiteral("-"), QStringLiteral("a")}));
}

void ActionsTest::toolButtonIsAtLeast24Pixels()
{
    Action *const action = create(QStringLiteral("i"));
    QPixmap tiny(4, 4);
    tiny.fill(Qt::red);
    action->setIcon(QIcon(tiny));
    QToolBar bar;
    bar.setIconSize(QSize(4, 4));
    action->addTo(&bar);
    action->addTo(&bar);
    QCOMPARE(action->toolbuttons.size(), 1);
    QCOMPARE(action->toolbuttons.constFirst(), bar.widgetForAction(action));
    bar.show();
    QVERIFY(QTest::qWaitForWindowExposed(&bar));
    QVERIFY(action->toolbuttons.constFirst()->width() >= 24);
    QVERIFY(action->toolbuttons.constFirst()->height() >= 24);
}

void ActionsTest::textLabelHoldsForLaterButtons()
{
    Action *const action = create(QStringLiteral("Open"));
    QToolBar early;
    action->addTo(&early);
    action->setUsesTextLabel(true);
    action->setTextPosition(Qt::ToolButtonTextUnderIcon);
    QToolBar late;
    action->addTo(&late);
    QCOMPARE(action->toolbuttons.size(), 2);
    QCOMPARE(action->toolbuttons.constFirst()->toolButtonStyle(), Qt::ToolButtonIconOnly);
    QCOMPARE(action->toolbuttons.constLast()->toolButtonStyle(), Qt::ToolButtonTextUnderIcon);
    QCOMPARE(action->toolbuttons.constLast()->text(), QStringLiteral("Open"));
}

void ActionsTest::deletedButtonIsForgotten()
{
    Action *const action = create(QStringLiteral("a"));
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
