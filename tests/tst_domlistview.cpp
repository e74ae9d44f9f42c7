#include "app/actions.h"
#include "app/widgets/domlistview.h"
#include "tests/apptest.h"

#include <QApplication>
#include <QDomDocument>
#include <QMenu>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace vesk;

/// A tree of folders and files as a project has them.
class DomListViewTest : public AppTest
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void showsTheTagsOfItsSet();
    void opensAsTheDocumentSays();
    void userTogglesReachTheDocument();
    void followsTheDocument_data();
    void followsTheDocument();
    void showsTheMenuOfATag();
    void tellsWhatIsClicked();

private:
    /// The names shown, one a line, indented by a blank a level.
    QString shown() const;
    QTreeWidgetItem *item(const QString &name) const
    {
        return view->findItems(name, Qt::MatchExactly | Qt::MatchRecursive).value(0);
    }
    QDomElement element(const QString &tag, const QString &name)
    {
        QDomElement result = doc.createElement(tag);
        result.setAttribute(u"name"_s, name);
        return result;
    }

    QDomDocument doc;
    std::unique_ptr<DomListView> view;
};

void DomListViewTest::init()
{
    doc.setContent(uR"(<p name="root"><x name="hidden"><file name="lost"/></x>
        <file name="b.txt"/><folder name="src" open="1"><file name="z.cpp"/>
        <folder name="deep"><file name="leaf"/></folder></folder><file name="a.txt"/>
        <folder name="shut" open="0"><file name="in"/></folder></p>)"_s);
    view = std::make_unique<DomListView>();
    QStringList tags{u"p"_s, u"file"_s, u"folder"_s};
    view->setTagSet(tags);
    view->setDomTree(doc.firstChild());
    view->setOpen(view->rootItem(), true);
    view->resize(200, 300);
    view->show();
    QVERIFY(QTest::qWaitForWindowExposed(view.get()));
}

void DomListViewTest::cleanup()
{
    view.reset();
    if (shell)
        dropShell();
}

QString DomListViewTest::shown() const
{
    QString result;
    for (QTreeWidgetItemIterator it(view.get()); *it; ++it) {
        for (const QTreeWidgetItem *above = (*it)->parent(); above; above = above->parent())
            result += u' ';
        result += (*it)->text(0) + u'\n';
    }
    return result;
}

void DomListViewTest::showsTheTagsOfItsSet()
{
    QCOMPARE(shown(), u"root\n a.txt\n b.txt\n shut\n  in\n src\n  deep\n   leaf\n  z.cpp\n"_s);
    view->clear();
    QCOMPARE(view->rootItem(), nullptr);
    view->syncToDom();
    QCOMPARE(shown(), QString());
}

void DomListViewTest::opensAsTheDocumentSays()
{
    QVERIFY(item(u"src"_s)->isExpanded());
    QVERIFY(!item(u"shut"_s)->isExpanded());
    QVERIFY(!item(u"deep"_s)->isExpanded());
    QCOMPARE(static_cast<DomListViewItem *>(item(u"deep"_s))->node.toElement().attribute(u"open"_s),
             QString());
}

void DomListViewTest::userTogglesReachTheDocument()
{
    const QSignalSpy toggled(view.get(), &DomListView::setNodeOpen);
    view->setFocus();
    view->setCurrentItem(item(u"shut"_s));
    QTest::keyClick(view.get(), Qt::Key_Plus);
    QCOMPARE(static_cast<DomListViewItem *>(item(u"shut"_s))->node.toElement().attribute(u"open"_s),
             u"1"_s);
    view->setCurrentItem(view->rootItem());
    QTest::keyClick(view.get(), Qt::Key_Minus);
    QVERIFY(view->rootItem()->isExpanded());
    QCOMPARE(view->rootItem()->node.toElement().attribute(u"open"_s), u"1"_s);
    QCOMPARE(toggled.size(), 2);
}

void DomListViewTest::followsTheDocument_data()
{
    QTest::addColumn<QString>("change");
    QTest::addColumn<QString>("expected");
    QTest::newRow("a node that goes takes its item along")
        << u"remove"_s << u"root\n a.txt\n shut\n  in\n src\n  deep\n   leaf\n  z.cpp\n"_s;
    QTest::newRow("a new folder comes with its files, in order")
        << u"add"_s
        << u"root\n a.txt\n b.txt\n more\n  m1\n  m2\n shut\n  in\n src\n  deep\n   leaf\n  z.cpp\n"_s;
    QTest::newRow("a second sibling of a name has no item")
        << u"twin"_s << u"root\n a.txt\n b.txt\n shut\n  in\n src\n  deep\n   leaf\n  z.cpp\n"_s;
    QTest::newRow("a renamed node is found twice")
        << u"rename"_s
        << u"root\n a.txt\n c.txt\n c.txt\n shut\n  in\n src\n  deep\n   leaf\n  z.cpp\n"_s;
}

void DomListViewTest::followsTheDocument()
{
    QFETCH(const QString, change);
    QDomNode root = doc.firstChild();
    QDomNode file = static_cast<DomListViewItem *>(item(u"b.txt"_s))->node;
    if (change == "remove"_L1) {
        root.removeChild(file);
    } else if (change == "add"_L1) {
        QDomElement folder = element(u"folder"_s, u"more"_s);
        folder.appendChild(element(u"file"_s, u"m2"_s));
        folder.appendChild(element(u"file"_s, u"m1"_s));
        root.insertBefore(folder, file);
    } else if (change == "twin"_L1) {
        root.appendChild(element(u"folder"_s, u"b.txt"_s));
    } else {
        file.toElement().setAttribute(u"name"_s, u"c.txt"_s);
    }
    view->syncToDom();
    QTEST(shown(), "expected");
    QVERIFY(item(u"src"_s)->isExpanded());
}

void DomListViewTest::showsTheMenuOfATag()
{
    makeShell();
    ActionGroup group(nullptr);
    Action *action = Actions::createAction(u"Do it"_s, u"Test/do"_s, 0, view.get(), SLOT(clear()));
    group.add(action);
    view->setActionGroup(u"folder"_s, &group);
    const QSignalSpy clicked(view.get(), &DomListView::rightClick);

    for (const QString &name : {u"a.txt"_s, u"src"_s}) {
        view->setCurrentItem(item(name));
        QContextMenuEvent event(QContextMenuEvent::Keyboard, {}, {});
        QApplication::sendEvent(view->viewport(), &event);
        const auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
        QCOMPARE(menu != nullptr, name == "src"_L1);
        if (menu)
            QVERIFY(menu->actions().contains(action));
    }
    QCOMPARE(clicked.size(), 1);
    QApplication::activePopupWidget()->close();
}

void DomListViewTest::tellsWhatIsClicked()
{
    const QSignalSpy clicks(view.get(), &DomListView::click);
    const QSignalSpy doubleClicks(view.get(), &DomListView::doubleClick);
    QTest::mouseClick(view->viewport(), Qt::LeftButton, {},
                      view->visualItemRect(item(u"a.txt"_s)).center());
    QTest::mouseDClick(view->viewport(), Qt::LeftButton, {},
                       view->visualItemRect(item(u"a.txt"_s)).center());
    QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, {100, 290});
    QCOMPARE(doubleClicks.size(), 1);
    const auto name = [](const QList<QVariant> &call) {
        return call.value(0).value<QDomNode>().toElement().attribute(u"name"_s);
    };
    QCOMPARE(name(doubleClicks[0]), u"a.txt"_s);
    QCOMPARE(name(clicks.first()), u"a.txt"_s);
    QVERIFY(clicks.last()[0].value<QDomNode>().isNull());
}

QTEST_MAIN(DomListViewTest)
#include "tst_domlistview.moc"
