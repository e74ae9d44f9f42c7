#include "app/actions.h"
#include "app/filetype.h"
#include "app/project/addfilesdialog.h"
#include "app/project/newprojectwizard.h"
#include "app/project/project.h"
#include "app/recentfiles.h"
#include "app/widgets/domlistview.h"
#include "app/widgetstack.h"
#include "tests/apptest.h"

#include <QDir>
#include <QFileDialog>
#include <QInputDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QTextEdit>
#include <QTreeWidget>

#include <csignal>
#include <sys/resource.h>

using namespace Qt::StringLiterals;
using namespace vesk;

namespace {

const QByteArray sample = R"(<!DOCTYPE veskproject>
<veskproject>
 <project name="Sample" version="8.0" odd="kept">
  <!-- a remark -->
  <description>what it is</description>
  <folder name="src">
   <cpp name="main.cpp" type="file"/>
   <folder name="deep">
    <text name="notes.txt" type="file"/>
   </folder>
  </folder>
  <uifile name="form.ui" type="file" container="1">
   <pyfile name="form.py" type="file" url="/forms/form.py"/>
  </uifile>
  <mystery name="m"/>
 </project>
</veskproject>
)";

QByteArray withRoot(const QByteArray &inner)
{
    return "<veskproject><project name=\"P\">" + inner + "</project></veskproject>";
}

} // namespace

class ProjectTest : public AppTest
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void tellsWhereNodesAre();
    void keepsWhatItDoesNotKnow();
    void refusesWhatIsNoProject_data();
    void refusesWhatIsNoProject();
    void takesWhatOtherToolsWrite_data();
    void takesWhatOtherToolsWrite();
    void createsFromTheWizard_data();
    void createsFromTheWizard();
    void asksBeforeReplacingAFile();
    void comesBackAfterARestart();
    void failedSaveKeepsItOpen();
    void asksWhenTheFileChanged_data();
    void asksWhenTheFileChanged();
    void addsFiles_data();
    void addsFiles();
    void copiesFromOutside();
    void addsByTheDialog();
    void makesFolders_data();
    void makesFolders();
    void removesAndDeletes_data();
    void removesAndDeletes();
    void leavesTheOutsideAlone_data();
    void leavesTheOutsideAlone();
    void menusOfNodes_data();
    void menusOfNodes();
    void commandsFollowTheState();
    void recentListOpens();

private:
    /// Starts the application; \a rights is for the user's own settings.
    void start()
    {
        makeShell();
        components->makePanels();
        shell->rebuildUI();
        QVERIFY(showActive(shell));
        project = Project::self();
    }
    void openSample(const QByteArray &bytes = sample)
    {
        opened = write(u"p/sample.vesk"_s, bytes);
        project->load(opened);
        QVERIFY(project->hasProject());
    }
    QTreeWidgetItem *select(const QString &localName)
    {
        const QDomNode node = project->localName2node(localName);
        for (QTreeWidgetItemIterator it(project->domView()); *it; ++it) {
            if (static_cast<DomListViewItem *>(*it)->node == node) {
                project->domView()->setCurrentItem(*it);
                return *it;
            }
        }
        return nullptr;
    }
    QString root(const QString &name) const { return path(u"p/"_s + name); }

    Project *project = nullptr;
    Responder responder;
    QString opened;
};

void ProjectTest::init()
{
    failOnBadConnects();
    makeProfile();
    qputenv("XDG_DATA_HOME", QFile::encodeName(path(u"data"_s)));
    QVERIFY(QDir(dir->path()).mkpath(u"p/src/deep"_s));
    QVERIFY(QDir(dir->path()).mkpath(u"p/forms"_s));
    for (const QString &name : {u"p/src/main.cpp"_s, u"p/src/deep/notes.txt"_s, u"p/form.ui"_s,
                                u"p/forms/form.py"_s, u"p/src/new.h"_s})
        write(name);
    start();
}

void ProjectTest::cleanup()
{
    dropShell();
    dir.reset();
    QVERIFY2(responder.isDone(), qPrintable(responder.texts.join(u'\n')));
    responder.texts.clear();
}

void ProjectTest::tellsWhereNodesAre()
{
    openSample();
    QCOMPARE(project->localNames(), (QStringList{u"/src/main.cpp"_s, u"/src/deep/notes.txt"_s,
                                                 u"/form.ui"_s, u"/form.ui/form.py"_s}));
    QCOMPARE(project->filePaths(),
             (QStringList{root(u"src/main.cpp"_s), root(u"src/deep/notes.txt"_s),
                          root(u"form.ui"_s), root(u"forms/form.py"_s)}));
    QCOMPARE(project->filePaths(u"/src/deep"_s), QStringList{root(u"src/deep/notes.txt"_s)});
    QCOMPARE(project->folders(), (QStringList{u"/"_s, u"/src"_s, u"/src/deep"_s}));
    QCOMPARE(project->filePath2node(root(u"forms/form.py"_s)).nodeName(), u"pyfile"_s);
    QVERIFY(project->filePath2node(path(u"p2/src/main.cpp"_s)).isNull());
    QVERIFY(project->localName2node(u"/src/none"_s).isNull());

    const QSignalSpy changed(project, &Project::selectionChanged);
    select(u"/form.ui/form.py"_s);
    QCOMPARE(project->selectedFilePath(), root(u"forms/form.py"_s));
    QCOMPARE(changed.last().first().toString(), u"/form.ui/form.py"_s);
    project->domView()->selectAll();
    QCOMPARE(project->selectedLocalNames(),
             (QStringList{u"/form.ui"_s, u"/form.ui/form.py"_s, u"/src"_s}));
}

void ProjectTest::keepsWhatItDoesNotKnow()
{
    openSample();
    QVERIFY(!project->attribute(u"odd"_s).isNull());
    QVERIFY(project->attribute(u"none"_s).isNull());
    project->setAttribute(u"runScript"_s, u"a \"b\" <c> & d\n€"_s);
    project->domView()->setOpen(select(u"/src"_s), true);
    QDomElement temporary = project->domDocument().createElement(u"cpp"_s);
    temporary.setAttribute(u"type"_s, u"temp"_s);
    project->rootNode().appendChild(temporary);
    project->close();
    const QByteArray written = readFile(opened);
    QDomDocument doc;
    QVERIFY(doc.setContent(written));
    const QDomElement element = doc.documentElement().firstChildElement();
    QCOMPARE(element.attribute(u"odd"_s), u"kept"_s);
    QCOMPARE(element.attribute(u"runScript"_s), u"a \"b\" <c> & d\n€"_s);
    QVERIFY(written.contains("<!-- a remark -->"));
    QVERIFY(written.contains("<mystery name=\"m\"/>"));
    QVERIFY(written.contains("<description>what it is</description>"));
    QVERIFY(written.contains("<folder name=\"src\">"));
    QVERIFY(!written.contains("temp"));
}

void ProjectTest::refusesWhatIsNoProject_data()
{
    const Rows<QByteArray, QString> row("bytes", "text");
    const QString noProject = u"File:\n'%1'\nis not Vesk project file."_s;
    const QString wrong = u"XML file:\n'%1'\nhave wrong contents."_s;
    row("empty", "", noProject);
    row("text", "no xml", noProject);
    row("broken", sample.chopped(20), noProject);
    row("one element", "<veskproject/>", wrong);
    QByteArray deep = withRoot(QByteArray("<folder>").repeated(100000) +
                               QByteArray("</folder>").repeated(100000));
    row("100,000 levels", deep, noProject);
    row("unclosed levels", QByteArray("<a>").repeated(100000), noProject);
    QByteArray bomb = "<!DOCTYPE v [<!ENTITY a0 \"aaaaaaaaaa\">";
    for (int i = 1; i < 20000; ++i) {
        const QByteArray last = "&a" + QByteArray::number(i - 1) + ";";
        bomb += "<!ENTITY a" + QByteArray::number(i) + " \"" + last + last + "\">";
    }
    row("entities in entities", bomb + "]>" + withRoot("&a19999;"), noProject);
    row("one entity", "<!DOCTYPE v [<!ENTITY a \"b\">]>" + withRoot("<cpp name=\"&a;\"/>"),
        noProject);
    QByteArray wide("\xff\xfe", 2);
    const QString declared = u"<!DOCTYPE v [<!ENTITY a \"b\">]><v><p name=\"&a;\"/></v>"_s;
    wide.append(reinterpret_cast<const char *>(declared.utf16()), declared.size() * 2);
    row("one entity in UTF-16", wide, noProject);
}

void ProjectTest::refusesWhatIsNoProject()
{
    QFETCH(const QByteArray, bytes);
    QFETCH(const QString, text);
    openSample();
    const QString bad = write(u"bad.vesk"_s, bytes);
    responder.expect(u"OK"_s);
    project->load(bad);
    QCOMPARE(responder.texts, QStringList{text.arg(bad)});
    QVERIFY(!project->hasProject());
    QCOMPARE(project->domView()->topLevelItemCount(), 0);
    QCOMPARE(readFile(bad), bytes);
    QVERIFY(!Actions::action(u"Project/save"_s)->isEnabled());
}

void ProjectTest::takesWhatOtherToolsWrite_data()
{
    const Rows<QByteArray, QString, QString> row("bytes", "file", "text");
    row("a declaration and a comment first",
        "<?xml version=\"1.0\"?><!--x-->" + withRoot("<cpp name=\"a.cpp\" type=\"file\"/>"),
        "/a.cpp", "");
    row("another encoding is written as UTF-8",
        "<?xml version='1.0' encoding='ISO-8859-1'?>" +
            withRoot("<cpp name=\"\xfc.cpp\" type=\"file\"/>"),
        "/ü.cpp", "");
    row("8.99 is known",
        "<v><project version=\"8.99\"><cpp name=\"a\" type=\"file\"/></project></v>", "/a", "");
    row("9 is not", "<v><project version=\"9\"><cpp name=\"a\" type=\"file\"/></project></v>", "/a",
        "The project:\n'%1'\nwas created by higher version of Vesk.");
    row("names with quotes and line ends",
        withRoot("<cpp name=\"a&quot;b&#10;c'\" type=\"file\"/>"), "/a\"b\nc'", "");
}

void ProjectTest::takesWhatOtherToolsWrite()
{
    QFETCH(const QByteArray, bytes);
    QFETCH(const QString, file);
    QFETCH(const QString, text);
    const QString path = write(u"p/other.vesk"_s, bytes);
    if (!text.isEmpty())
        responder.expect(u"OK"_s);
    project->load(path);
    QCOMPARE(responder.texts, text.isEmpty() ? QStringList() : QStringList{text.arg(path)});
    QCOMPARE(project->localNames(), QStringList{file});
    // Whatever encoding it came in, it holds every character from now on.
    project->setAttribute(u"note"_s, u"€"_s);
    responder.texts.clear();
    project->close();
    if (!text.isEmpty())
        responder.expect(u"OK"_s);
    project->load(path);
    QCOMPARE(project->localNames(), QStringList{file});
    QCOMPARE(project->attribute(u"note"_s), u"€"_s);
}

void ProjectTest::createsFromTheWizard_data()
{
    const Rows<QString, bool> row("name", "succeeds");
    row("a name with blanks", u"My Project"_s, true);
    row("a quote gives no project", u"a\"b"_s, false);
}

void ProjectTest::createsFromTheWizard()
{
    QFETCH(const QString, name);
    QFETCH(const bool, succeeds);
    QDir().mkpath(path(u"projects"_s));
    Settings::write(u"/project/projectsDir"_s, path(u"projects/"_s));
    openSample();
    QString created;
    responder.expect([&](QWidget *dialog) {
        auto *const wizard = qobject_cast<NewProjectWizard *>(dialog);
        QVERIFY(wizard);
        QTest::keyClicks(wizard->lineName, u"x"_s);
        QTest::keyClick(wizard->lineName, Qt::Key_Backspace);
        QVERIFY(!wizard->buttonOk->isEnabled());
        QTest::keyClicks(wizard->lineName, name);
        created = wizard->lineDirectory->text() + u'/' + wizard->lineFileName->text();
        wizard->textEditDescription->setPlainText(u"first\n\x01second <&>"_s);
        QTest::mouseClick(wizard->buttonOk, Qt::LeftButton);
    });
    if (!succeeds)
        responder.expect(u"OK"_s);
    Actions::action(u"Project/create"_s)->trigger();
    QCOMPARE(project->hasProject(), succeeds);
    if (!succeeds) {
        QCOMPARE(readFile(created), QByteArray());
        return;
    }
    QCOMPARE(created, path(u"projects/my_project/my_project.vesk"_s));
    QCOMPARE(project->filePath(), created);
    QCOMPARE(project->domView()->rootItem()->text(0), name);
    QVERIFY(!readFile(created).contains("second"));
    project->close();
    QDomDocument doc;
    QVERIFY(doc.setContent(readFile(created)));
    QCOMPARE(doc.documentElement().text(), u"first\nsecond <&>"_s);
    QCOMPARE(RecentFiles::self()->recentProjects().first(), created);
    QCOMPARE(RecentFiles::self()->recentProjectsNames().first(), name);
}

void ProjectTest::asksBeforeReplacingAFile()
{
    openSample();
    project->close();
    const QByteArray before = readFile(opened);
    responder.expect([&](QWidget *dialog) {
        auto *const wizard = qobject_cast<NewProjectWizard *>(dialog);
        wizard->lineName->setText(u"New"_s);
        wizard->lineDirectory->setText(path(u"p"_s));
        wizard->lineFileName->setText(u"sample.vesk"_s);
        // What the user has written is left alone.
        QTest::keyClicks(wizard->lineName, u"er"_s);
        QCOMPARE(wizard->lineFileName->text(), u"sample.vesk"_s);
        wizard->buttonOk->click();
    });
    responder.expect(u"&Cancel"_s);
    // The wizard comes again.
    responder.expect(u"buttonCancel"_s);
    project->create();
    QCOMPARE(readFile(opened), before);
}

void ProjectTest::comesBackAfterARestart()
{
    openSample();
    const QString name = opened;
    QVERIFY(project->mayLeave());
    dropShell();
    start();
    QCOMPARE(project->filePath(), name);
    QCOMPARE(shell->leftDock()->visibleWidget(), project->domView());
    project->close();
    QVERIFY(shell->leftDock()->visibleWidget() != project->domView());
    dropShell();
    start();
    QVERIFY(!project->hasProject());
    QCOMPARE(RecentFiles::self()->recentProjects(), QStringList{name});
    // A bad one is told when there is a window to tell it in.
    openSample();
    dropShell();
    write(u"p/sample.vesk"_s, "bad");
    start();
    QVERIFY(responder.texts.isEmpty());
    responder.expect(u"OK"_s);
    project->tellOfStart();
}

void ProjectTest::failedSaveKeepsItOpen()
{
    openSample();
    const QSignalSpy saved(project, &Project::saved);
    const QString target = u"Can't open file:\n'%1' for writing."_s.arg(opened);
    // Neither the opened nor another one beside it can be written, also for root.
    struct rlimit before = {};
    QCOMPARE(::getrlimit(RLIMIT_FSIZE, &before), 0);
    struct rlimit none = before;
    none.rlim_cur = 0;
    ::signal(SIGXFSZ, SIG_IGN);
    QCOMPARE(::setrlimit(RLIMIT_FSIZE, &none), 0);
    project->setAttribute(u"note"_s, u"new"_s);
    responder.expect(u"OK"_s);
    project->save();
    responder.expect(u"OK"_s);
    responder.expect(u"&Keep open"_s);
    project->close();
    responder.expect(u"OK"_s);
    responder.expect(u"&Keep open"_s);
    const bool mayLeave = project->mayLeave();
    ::setrlimit(RLIMIT_FSIZE, &before);
    QVERIFY(!mayLeave);
    QCOMPARE(responder.texts.count(target), 3);
    QCOMPARE(saved.size(), 0);
    QVERIFY(project->hasProject());
    QCOMPARE(readFile(opened), sample);
    QVERIFY(select(u"/src/deep/notes.txt"_s));
    project->close();
    QCOMPARE(saved.size(), 1);
    QVERIFY(readFile(opened).contains("note=\"new\""));
}

void ProjectTest::asksWhenTheFileChanged_data()
{
    const Rows<QString, bool, bool> row("answer", "overwritten", "closed");
    row("overwritten", u"&Overwrite"_s, true, true);
    row("closed without saving", u"&Don't save"_s, false, true);
    row("left open", u"&Cancel"_s, false, false);
}

void ProjectTest::asksWhenTheFileChanged()
{
    QFETCH(const QString, answer);
    QFETCH(const bool, overwritten);
    QFETCH(const bool, closed);
    openSample();
    const QByteArray other = withRoot("<cpp name=\"theirs\"/>");
    write(u"p/sample.vesk"_s, other);
    responder.expect(answer);
    project->close();
    QCOMPARE(project->hasProject(), !closed);
    QCOMPARE(readFile(opened) != other, overwritten);
    if (!closed)
        write(u"p/sample.vesk"_s, sample);
}

void ProjectTest::addsFiles_data()
{
    const Rows<QString, QString, QStringList, QStringList> row("target", "folder", "names",
                                                               "nodes");
    row("to a folder", "/src", "src", {u"new.h"_s}, {u"hpp /src/new.h - "_s});
    row("a known one is typed anew", "/src", "src", {u"main.cpp"_s}, {u"cpp /src/main.cpp - "_s});
    row("below a form", "/form.ui", "", {u"form.cpp"_s, u"form.cpp"_s},
        {u"cpp /form.ui/form.cpp /form.cpp "_s});
    row("a container", "/", "", {u"other.ui"_s}, {u"uifile /other.ui - 1"_s});
    row("names in capitals and of no type", "/", "", {u"MAIN.CPP"_s, u"Makefile"_s},
        {u"file /MAIN.CPP - "_s, u"file /Makefile - "_s});
    row("a project", "/", "", {u"sub.vesk"_s}, {u"project /sub.vesk - "_s});
}

void ProjectTest::addsFiles()
{
    QFETCH(const QString, target);
    QFETCH(const QString, folder);
    QFETCH(const QStringList, names);
    QFETCH(const QStringList, nodes);
    openSample();
    const QSignalSpy changed(project, &Project::projectChanged);
    QVERIFY(select(target));
    for (const QString &name : names) {
        const QString chosen = write(u"p/"_s + folder + u'/' + name);
        responder.expect([&](QWidget *dialog) {
            auto *const files = qobject_cast<QFileDialog *>(dialog);
            QVERIFY(files);
            QCOMPARE(files->directory().absolutePath(), QFileInfo(chosen).absolutePath());
            QCOMPARE(files->nameFilters().first().startsWith(u"Form mask (form*.py)"_s),
                     target == "/form.ui"_L1);
            files->findChild<QLineEdit *>(u"fileNameEdit"_s)->setText(name);
            QMetaObject::invokeMethod(files, "accept");
        });
        Actions::action(u"Project/addfilesto"_s)->trigger();
    }
    QCOMPARE(changed.size(), names.size());
    QTreeWidgetItem *const parent = select(target);
    for (const QString &wanted : nodes) {
        const QStringList parts = wanted.split(u' ');
        const QString name = parts.at(1).section(u'/', -1);
        const QDomElement node = project->localName2node(parts.at(1)).toElement();
        QCOMPARE(node.tagName(), parts.at(0));
        QCOMPARE(node.attribute(u"type"_s), u"file"_s);
        QCOMPARE(node.attribute(u"url"_s, u"-"_s), parts.at(2));
        QCOMPARE(node.attribute(u"container"_s), parts.at(3));
        int items = 0;
        int elements = 0;
        for (int i = 0; i < parent->childCount(); ++i)
            items += parent->child(i)->text(0) == name;
        for (QDomElement each = node.parentNode().firstChildElement(); !each.isNull();
             each = each.nextSiblingElement())
            elements += each.attribute(u"name"_s) == name;
        QCOMPARE(items, 1);
        QCOMPARE(elements, 1);
    }
    QVERIFY(parent->isExpanded());
}

void ProjectTest::copiesFromOutside()
{
    openSample();
    QDir().mkpath(path(u"away"_s));
    const QStringList away{write(u"away/fresh.cpp"_s, "fresh"), write(u"away/main.cpp"_s, "theirs"),
                           path(u"away/none.cpp"_s)};
    // What is missing is told; then comes the file operator's question.
    responder.expect(u"OK"_s);
    responder.expect([](QWidget *dialog) { qobject_cast<QDialog *>(dialog)->reject(); });
    project->addFiles({away.at(1), away.at(2)}, u"/src"_s, QDomNode());
    QCOMPARE(readFile(root(u"src/main.cpp"_s)), QByteArray("text"));
    responder.texts.clear();
    project->addFiles({away.at(0)}, u"/src/more"_s, QDomNode());
    QCOMPARE(readFile(root(u"src/more/fresh.cpp"_s)), QByteArray("fresh"));
    QCOMPARE(project->localName2node(u"/src/more/fresh.cpp"_s).nodeName(), u"cpp"_s);
    QVERIFY(project->localName2node(u"/src/none.cpp"_s).isNull());
}

void ProjectTest::addsByTheDialog()
{
    openSample();
    QDir().mkpath(root(u"src/CVS"_s));
    write(u"p/src/CVS/entry"_s);
    write(u"p/src/deep/b.py"_s);
    QFile::link(root(QString()), root(u"src/loop"_s));
    responder.expect([&](QWidget *dialog) {
        auto *const adding = qobject_cast<AddFilesDialog *>(dialog);
        QVERIFY(adding);
        QVERIFY(adding->buttonAddExternalFiles->isHidden());
        QTRY_VERIFY(adding->buttonSelectAll->isEnabled());
        adding->buttonSelectAll->click();
        QCOMPARE(adding->selectedFilePaths(),
                 (QStringList{root(u"src/deep/b.py"_s), root(u"src/new.h"_s)}));
        adding->buttonClearSelection->click();
        QCOMPARE(adding->selectedFilePaths(), QStringList());
        QTreeWidget *const list = adding->listViewFiles;
        const QTreeWidgetItem *const item =
            list->findItems(u"b.py"_s, Qt::MatchExactly | Qt::MatchRecursive).value(0);
        list->scrollToItem(item);
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {},
                          list->visualItemRect(item).center());
        adding->buttonOk->click();
    });
    Actions::action(u"Project/addfiles"_s)->trigger();
    const QDomElement node = project->localName2node(u"/src/deep/b.py"_s).toElement();
    QCOMPARE(node.tagName(), u"pyfile"_s);
    QCOMPARE(node.attribute(u"url"_s), u"/src/deep/b.py"_s);
    QVERIFY(select(u"/src/deep/b.py"_s));
    QVERIFY(project->localName2node(u"/src/new.h"_s).isNull());
}

void ProjectTest::makesFolders_data()
{
    const Rows<QString, QString, QString> row("command", "answer", "node");
    row("below the current folder", "Project/addfolderto", "/one/two", "/src/one/two");
    row("from the top", "Project/addfolder", "src/three", "/src/three");
    row("where a file stands", "Project/addfolder", "/form.ui/x", "");
    row("out of the project", "Project/addfolder", "/../x", "");
    row("of a name that XML cannot hold", "Project/addfolder", u"a\x02"_s, "");
}

void ProjectTest::makesFolders()
{
    QFETCH(const QString, command);
    QFETCH(const QString, answer);
    QFETCH(const QString, node);
    openSample();
    const QByteArray before = project->domDocument().toByteArray();
    select(u"/src"_s);
    responder.expect([&](QWidget *dialog) {
        auto *const asking = qobject_cast<QInputDialog *>(dialog);
        QVERIFY(asking);
        asking->setTextValue(answer);
        asking->accept();
    });
    if (node.isEmpty())
        responder.expect(u"OK"_s);
    Actions::action(command)->trigger();
    if (node.isEmpty()) {
        QCOMPARE(project->domDocument().toByteArray(), before);
        QVERIFY(!QFileInfo::exists(path(u"x"_s)));
        return;
    }
    QCOMPARE(project->localName2node(node).nodeName(), u"folder"_s);
    QVERIFY(QFileInfo(root(node.mid(1))).isDir());
    QVERIFY(select(node));
}

void ProjectTest::removesAndDeletes_data()
{
    const Rows<QString, QString, QString, bool> row("command", "node", "file", "isGone");
    row("remove a file", "Project/context/removefile", "/src/main.cpp", "src/main.cpp", false);
    row("remove a folder", "Project/context/removefolder", "/src", "src/main.cpp", false);
    row("delete a file", "Project/context/deletefile", "/src/main.cpp", "src/main.cpp", true);
    row("delete where the url says", "Project/context/deletefile", "/form.ui/form.py",
        "forms/form.py", true);
}

void ProjectTest::removesAndDeletes()
{
    QFETCH(const QString, command);
    QFETCH(const QString, node);
    QFETCH(const QString, file);
    QFETCH(const bool, isGone);
    openSample();
    const QSignalSpy changed(project, &Project::projectChanged);
    QVERIFY(select(node));
    Actions::action(command)->trigger();
    QVERIFY(project->localName2node(node).isNull());
    QVERIFY(project->domView()
                ->findItems(node.section(u'/', -1), Qt::MatchExactly | Qt::MatchRecursive)
                .isEmpty());
    QCOMPARE(QFileInfo::exists(root(file)), !isGone);
    QCOMPARE(QFileInfo::exists(path(u"data/Trash/files/"_s + QFileInfo(file).fileName())), isGone);
    QCOMPARE(changed.size(), 1);
    // The root stays, or there would be nothing to save.
    project->domView()->setCurrentItem(project->domView()->rootItem());
    Actions::action(u"Project/context/removefolder"_s)->trigger();
    QVERIFY(!project->domDocument().documentElement().firstChildElement().isNull());
}

void ProjectTest::leavesTheOutsideAlone_data()
{
    const Rows<QByteArray, QString> row("node", "localName");
    row("dots in a url", "<cpp name=\"f\" type=\"file\" url=\"/../victim\"/>", "/f");
    row("dots in a folder's name",
        "<folder name=\"..\"><cpp name=\"victim\" type=\"file\"/></folder>", "/../victim");
    row("a link to a folder", "<folder name=\"link\"><cpp name=\"victim\" type=\"file\"/></folder>",
        "/link/victim");
}

void ProjectTest::leavesTheOutsideAlone()
{
    QFETCH(const QByteArray, node);
    QFETCH(const QString, localName);
    const QString victim = write(u"victim"_s, "precious");
    QFile::link(dir->path(), root(u"link"_s));
    openSample(withRoot(node));
    QVERIFY(select(localName));
    QCOMPARE(QFileInfo(project->selectedFilePath()).canonicalFilePath(),
             QFileInfo(victim).canonicalFilePath());
    responder.expect(u"OK"_s);
    Actions::action(u"Project/context/deletefile"_s)->trigger();
    QCOMPARE(readFile(victim), QByteArray("precious"));
    QVERIFY(!project->localName2node(localName).isNull());
    if (localName.count(u'/') < 2)
        return;
    QDir().mkpath(path(u"away"_s));
    responder.expect(u"OK"_s);
    project->addFiles({write(u"away/victim"_s, "theirs")}, localName.section(u'/', 0, 1),
                      QDomNode());
    QCOMPARE(readFile(victim), QByteArray("precious"));
}

void ProjectTest::menusOfNodes_data()
{
    const Rows<QString, QStringList> row("node", "entries");
    row("project", "/",
        {u"New Folder"_s, u"Add files"_s, u"-"_s, u"O&ptions"_s, u"-"_s, u"&Save project"_s,
         u"&Close project"_s});
    row("folder", "/src",
        {u"New Folder"_s, u"Add files"_s, u"-"_s, u"Remove from project"_s, u"-"_s,
         u"&Close project"_s});
    row("file", "/src/main.cpp",
        {u"Open"_s, u"-"_s, u"Remove from project"_s, u"Delete the file"_s, u"-"_s,
         u"&Close project"_s});
}

void ProjectTest::menusOfNodes()
{
    QFETCH(const QString, node);
    QFETCH(const QStringList, entries);
    openSample();
    QVERIFY(select(node));
    QContextMenuEvent event(QContextMenuEvent::Keyboard, {}, {});
    QApplication::sendEvent(project->domView()->viewport(), &event);
    auto *const menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
    QVERIFY(menu);
    QStringList shown;
    for (const QAction *action : menu->actions())
        shown.append(action->isSeparator() ? u"-"_s : action->text());
    menu->close();
    QCOMPARE(shown, entries);
}

void ProjectTest::commandsFollowTheState()
{
    const auto enabled = [] {
        QStringList names;
        for (const char *name : {"save", "close", "options", "addfiles", "addfolder"}) {
            if (Actions::action(u"Project/"_s + QLatin1StringView(name))->isEnabled())
                names.append(QString::fromLatin1(name));
        }
        return names.size();
    };
    QCOMPARE(enabled(), 0);
    QSignalSpy loaded(project, &Project::loaded);
    openSample();
    QCOMPARE(loaded.size(), 1);
    QCOMPARE(enabled(), 5);
    const QSignalSpy closed(project, &Project::closed);
    Actions::action(u"Project/close"_s)->trigger();
    QCOMPARE(closed.size(), 1);
    QCOMPARE(enabled(), 0);
    // A project is opened as one from wherever it is opened.
    FileTypeManager::self()->openFile(opened);
    QCOMPARE(project->filePath(), opened);
    QVERIFY(Actions::action(u"leftDock/project"_s)->isChecked());
}

void ProjectTest::recentListOpens()
{
    openSample();
    project->close();
    auto *const list = qobject_cast<QTreeWidget *>(shell->leftDock()->visibleWidget());
    QVERIFY(list);
    QCOMPARE(list->topLevelItemCount(), 1);
    QTRY_VERIFY(list->hasFocus());
    QFile::rename(opened, root(u"hidden"_s));
    responder.expect(u"OK"_s);
    QTest::keyClick(list, Qt::Key_Return);
    QCOMPARE(responder.texts, QStringList{u"Can't open project file:\n'%1'"_s.arg(opened)});
    QFile::rename(root(u"hidden"_s), opened);
    QTest::keyClick(list, Qt::Key_Return);
    QCOMPARE(project->filePath(), opened);
}

QTEST_MAIN(ProjectTest)
#include "tst_project.moc"
