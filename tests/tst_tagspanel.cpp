#include "app/actions.h"
#include "app/ctags/ctagsoutput.h"
#include "app/ctags/ctagsparser.h"
#include "app/ctags/node.h"
#include "app/ctags/tagspanel.h"
#include "app/ctags/tagsview.h"
#include "app/editors/editor.h"
#include "app/editors/editors.h"
#include "app/editors/editorslist.h"
#include "tests/apptest.h"

#include <QMenu>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace vesk;

namespace {

/// A line for each item: blanks for its depth, the name, "+" if it hides others, and
/// the type and position.
QString outline(const QTreeWidgetItem *above, int depth = 0)
{
    QString result;
    for (int i = 0; i < above->childCount(); ++i) {
        const auto *const item = static_cast<const TagsViewItem *>(above->child(i));
        const bool isShut = item->childCount() > 0 && !item->isExpanded();
        result += QString(depth, u' ') + item->text(0) + (isShut ? u"+ "_s : u" "_s) +
                  item->type.left(1) + QString::number(item->pos1) + u'\n';
        result += outline(item, depth + 1);
    }
    return result;
}

/// The tree of symbols "kind name line scope", parted by commas, in a text whose lines
/// hold one character each.
std::unique_ptr<Node> treeOf(const QString &symbols)
{
    CTagsOutput output(u"x\n"_s.repeated(50), u".cpp"_s);
    for (const QString &symbol : symbols.split(u',', Qt::SkipEmptyParts)) {
        const QStringList fields = symbol.split(u' ');
        output.addLine(u"%1\tx\t%2;\"\t%3\t%4"_s.arg(fields[1], fields[2], fields[0])
                           .arg(fields.size() > 3 ? u"class:"_s + fields[3] : QString()));
    }
    return output.buildTree();
}

QTreeWidgetItem *find(const QTreeWidget *view, const QString &name)
{
    return view->findItems(name, Qt::MatchExactly | Qt::MatchRecursive).value(0);
}

} // namespace

/// The panel of symbols: its tree, and how it follows the editors.
class TagsPanelTest : public AppTest
{
    Q_OBJECT

private slots:
    void initTestCase() { qRegisterMetaType<Node *>(); }
    void init();
    void cleanup();
    void updatesInPlace_data();
    void updatesInPlace();
    void staysWhereItIs();
    void manySymbols();
    void sorts_data();
    void sorts();
    void followsTheEditors();
    void showsNoTreeOfAnotherFile();
    void clickLeadsToTheLine();
    void goesFromSymbolToSymbol_data();
    void goesFromSymbolToSymbol();
    void contextMenus_data();
    void contextMenus();
    void filesListIsKept();

private:
    QString open(const QString &name, const QByteArray &text);
    TagsView *view() const { return TagsPanel::self()->findChild<TagsView *>(u"view"_s); }
    Editor *editor() const { return Editors::self()->current(); }
    QString shown() const { return outline(view()->invisibleRootItem()); }
};

void TagsPanelTest::init()
{
    failOnBadConnects();
    makeProfile();
    makeShell();
    components->makePanels();
    shell->rebuildUI();
    shell->show();
    TagsPanel::self()->makeVisible();
    QVERIFY(QTest::qWaitForWindowActive(shell));
}

void TagsPanelTest::cleanup()
{
    dropShell();
    dir.reset();
}

QString TagsPanelTest::open(const QString &name, const QByteArray &text)
{
    const QString file = write(name, text);
    Editors::self()->open(file);
    return file;
}

void TagsPanelTest::updatesInPlace_data()
{
    const Rows<QString, QString, QString> row("first", "second", "expected");
    row("positions", "c A 1,f a 2 A", "c A 4,f a 5 A", "A C6\n a F8\n");
    row("what comes is open", "f z 9", "c A 1,f a 2 A,f z 9", "A C0\n a F2\nz F16\n");
    row("what is shut stays shut", "c Shut 1,f a 2 Shut", "c Shut 1,f a 2 Shut,f b 3 Shut",
        "Shut+ C0\n a F2\n b F4\n");
    row("also where siblings come and go", "c Shut 1,f a 2 Shut,f old 4",
        "c Shut 1,f a 2 Shut,f new 5", "Shut+ C0\n a F2\nnew F8\n");
    row("what goes", "c A 1,f a 2 A,f b 3", "c A 1", "A C0\n");
    row("children come to what had none", "c A 1", "c A 1,f a 2 A", "A C0\n a F2\n");
    row("another kind", "c A 1", "f A 1", "A F0\n");
    row("nothing", "f a 1", "", "No tags found 0\n");
}

void TagsPanelTest::updatesInPlace()
{
    QFETCH(const QString, first);
    QFETCH(const QString, second);
    TagsView tree;
    tree.updateSubTree(nullptr, {treeOf(first).get()}, {});
    if (QTreeWidgetItem *const shut = find(&tree, u"Shut"_s))
        shut->setExpanded(false);
    tree.updateSubTree(nullptr, {treeOf(second).get()}, {});
    QTEST(outline(tree.invisibleRootItem()), "expected");
}

void TagsPanelTest::staysWhereItIs()
{
    TagsView tree;
    tree.resize(200, 100);
    QString symbols;
    for (int i = 1; i < 40; ++i)
        symbols += u"f f%1 %1,"_s.arg(i);
    tree.updateSubTree(nullptr, {treeOf(symbols).get()}, {});
    tree.show();
    tree.setCurrentItem(find(&tree, u"f20"_s));
    tree.verticalScrollBar()->setValue(9);
    tree.updateSubTree(nullptr, {treeOf(symbols + u"f more 45"_s).get()}, {});
    QCOMPARE(tree.verticalScrollBar()->value(), 9);
    QCOMPARE(tree.currentItem()->text(0), u"f20"_s);
    QVERIFY(tree.currentItem()->isSelected());
}

void TagsPanelTest::manySymbols()
{
    // Every second one goes, and as many come.
    const auto symbols = [](int shift) {
        CTagsOutput output(QString(), u".cpp"_s);
        for (int i = 0; i < 50'000; ++i)
            output.addLine(
                u"f%1\tx\t1;\"\tf\tclass:A%2"_s.arg(i + (i % 2 ? 0 : shift)).arg(i % 3000));
        return output.buildTree();
    };
    TagsView tree;
    tree.updateSubTree(nullptr, {symbols(0).get()}, {});
    tree.updateSubTree(nullptr, {symbols(100'000).get()}, {});
    QCOMPARE(tree.topLevelItemCount(), 3000);
    QCOMPARE(tree.findItems(u"f"_s, Qt::MatchStartsWith | Qt::MatchRecursive).size(), 50'000);
    QVERIFY(!find(&tree, u"f0"_s));
    QVERIFY(find(&tree, u"f100000"_s));
}

void TagsPanelTest::sorts_data()
{
    const Rows<int, QStringList> row("mode", "expected");
    row("by line", 0, {u"b"_s, u"_c"_s, u"a"_s});
    row("by name, where the underscore counts as a digit", 1, {u"_c"_s, u"a"_s, u"b"_s});
    row("classes first", 2, {u"a"_s, u"b"_s, u"_c"_s});
}

void TagsPanelTest::sorts()
{
    QFETCH(const int, mode);
    TagsView tree;
    tree.setSortingMode(mode);
    tree.updateSubTree(nullptr, {treeOf(u"f b 1,f _c 2,c a 3"_s).get()}, {});
    QStringList names;
    for (int i = 0; i < tree.topLevelItemCount(); ++i)
        names.append(tree.topLevelItem(i)->text(0));
    QTEST(names, "expected");
}

void TagsPanelTest::followsTheEditors()
{
    open(u"a.cpp"_s, "int one() { return 1; }\n");
    QTRY_COMPARE(shown(), u"one F23\n"_s);
    editor()->setText(u"int two() { return 2; }\nint three() { return 3; }\n"_s);
    TagsPanel::self()->reparse();
    QTRY_COMPARE(shown(), u"two F22\nthree F48\n"_s);
    // What has not changed is not copied or parsed again.
    const QSignalSpy delivered(CTagsParser::self(), &Parser::nodes);
    TagsPanel::self()->reparse();
    open(u"b.py"_s, "def other():\n    pass\n");
    QTRY_COMPARE(shown(), u"other F11\n"_s);
    QCOMPARE(delivered.size(), 1);
    Editors::self()->prevEditor();
    QTRY_COMPARE(shown(), u"two F22\nthree F48\n"_s);
}

void TagsPanelTest::showsNoTreeOfAnotherFile()
{
    QStringList files;
    for (int i = 0; i < 50; ++i)
        files.append(
            write(u"f%1.c"_s.arg(i), "int name" + QByteArray::number(i) + "() { return 1; }\n"));
    Editors::self()->openAll(files);
    // Each parse is begun and left behind; the sums of many of these texts are equal.
    for (int i = 0; i < 200; ++i) {
        Editors::self()->setCurrentEditor(Editors::self()->editors().at(i * 7 % 50));
        TagsPanel::self()->reparse();
        if (i % 3 == 0)
            QCoreApplication::processEvents();
        const QString name = Editors::displayName(editor()).section(u'.', 0, 0);
        if (i % 20 == 0)
            QTRY_COMPARE_WITH_TIMEOUT(shown().section(u' ', 0, 0), u"name"_s + name.mid(1), 20'000);
    }
}

void TagsPanelTest::clickLeadsToTheLine()
{
    open(u"a.cpp"_s, "int one() { return 1; }\n\n\nint two() { return 2; }\n");
    QTRY_VERIFY(find(view(), u"two"_s));
    const QPoint place = view()->visualItemRect(find(view(), u"two"_s)).center();
    QTest::mouseClick(view()->viewport(), Qt::LeftButton, Qt::NoModifier, place);
    QCOMPARE(editor()->cursorLine(), 3);
    QVERIFY(editor()->hasFocus());
    view()->setFocus();
    QTest::keyClick(view(), Qt::Key_Up);
    QTest::keyClick(view(), Qt::Key_Return);
    QCOMPARE(editor()->cursorLine(), 0);
}

void TagsPanelTest::goesFromSymbolToSymbol_data()
{
    const Rows<int, int, int> row("from", "above", "below");
    row("first symbol", 0, 0, 3);
    row("empty line over a symbol", 2, 0, 3);
    row("inside", 4, 3, 6);
    row("last symbol", 6, 3, 6);
    row("after all", 7, 6, 7);
}

void TagsPanelTest::goesFromSymbolToSymbol()
{
    QFETCH(const int, from);
    open(u"a.cpp"_s,
         "int one() { return 1; }\n\n\nint two() {\n  return 2;\n}\nint three;\n// end\n");
    QTRY_VERIFY(find(view(), u"three"_s));
    editor()->setFocus();
    editor()->setCursorPosition(from, 0);
    QTest::keyClick(shell, Qt::Key_Up, Qt::AltModifier);
    QTEST(editor()->cursorLine(), "above");
    editor()->setCursorPosition(from, 0);
    QTest::keyClick(shell, Qt::Key_Down, Qt::AltModifier);
    QTEST(editor()->cursorLine(), "below");
}

void TagsPanelTest::contextMenus_data()
{
    const Rows<QString, QString> row("item", "entries");
    row("class", "k", "Open||Sorting");
    row("function", "f", "Open||Sorting");
    row("other", "e", "");
}

void TagsPanelTest::contextMenus()
{
    QFETCH(const QString, item);
    open(u"a.cpp"_s, "class k {};\nvoid f() {}\nenum e { v };\nint a;\n");
    QTRY_VERIFY(find(view(), item));
    const QPoint place = view()->visualItemRect(find(view(), item)).center();
    QContextMenuEvent event(QContextMenuEvent::Mouse, place,
                            view()->viewport()->mapToGlobal(place));
    QCoreApplication::sendEvent(view()->viewport(), &event);
    QStringList entries;
    auto *const menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
    for (const QAction *action : menu ? menu->actions() : QList<QAction *>())
        entries.append(action->text());
    QTEST(entries.join(u'|'), "entries");
    if (!menu)
        return;
    menu->actions().first()->trigger();
    menu->close();
    QCOMPARE(editor()->cursorLine(), item == u"k"_s ? 0 : 1);
    // Its submenu sorts, and both kinds of items show how.
    Actions::action(u"Classes/context/class/sortByName"_s)->trigger();
    QCOMPARE(view()->topLevelItem(0)->text(0), u"a"_s);
    QVERIFY(Actions::action(u"Classes/context/function/sortByName"_s)->isChecked());
    QVERIFY(!Actions::action(u"Classes/context/function/sortByLineNumber"_s)->isChecked());
    dropShell();
    makeShell();
    components->makePanels();
    QCOMPARE(view()->sortingMode(), 1);
}

void TagsPanelTest::filesListIsKept()
{
    auto *const list = TagsPanel::self()->findChild<EditorsList *>();
    QVERIFY(list->isVisible());
    QTRY_VERIFY(list->height() <= (list->height() + view()->height()) / 3 + 1);
    QTest::mouseClick(TagsPanel::self()->findChild<QWidget *>(u"filesLabel"_s), Qt::LeftButton);
    QVERIFY(list->isHidden());
    components.reset();
    makeShell();
    components->makePanels();
    QVERIFY(TagsPanel::self()->findChild<EditorsList *>()->isHidden());
    TagsPanel::self()->showHideFilesList();
    QVERIFY(!TagsPanel::self()->findChild<EditorsList *>()->isHidden());
}

QTEST_MAIN(TagsPanelTest)
#include "tst_tagspanel.moc"
