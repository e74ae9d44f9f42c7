#include "app/actions.h"
#include "app/editors/editor.h"
#include "app/editors/editors.h"
#include "app/messages/messageitem.h"
#include "app/messages/messageoutput.h"
#include "app/outputrows.h"
#include "app/project/project.h"
#include "app/runmake.h"
#include "app/runmakeoptionswidget.h"
#include "tests/apptest.h"

#include <QCheckBox>
#include <QDialog>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>
#include <QtTest>

#include <csignal>
#include <functional>

using namespace Qt::StringLiterals;
using namespace vesk;

/// The user's scripts: how they are started and stopped, what of their output is
/// listed, and where its rows lead.
class TestRunMake : public AppTest
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void placesInToolsOutput_data();
    void placesInToolsOutput();
    void outputBecomesRows_data();
    void outputBecomesRows();
    void fastOutputKeepsItsEndAndItsFolders();
    void listedOfARun_data();
    void listedOfARun();
    void scriptsKnowWhereTheUserIs();
    void pressOnAnErrorLeadsToItsLine();
    void makeShowsAndStops_data();
    void makeShowsAndStops();
    void severalRunsAtOnce();
    void scriptOutlivesTheEditor();
    void configureDialog_data();
    void configureDialog();
    void optionsPageOfAProject();

private:
    void makeWindow();
    /// An executable script of the shell. Returns its path.
    QString script(const QString &name, const QByteArray &lines) const;
    static void setScript(const char *key, const QString &value)
    {
        Settings::write(u"/scripts/"_s + QString::fromLatin1(key), value);
    }
    static QStringList rows();
    static bool isFinished() { return rows().join(u'\n').contains(u" finished. Exit code "_s); }
    static Action *action(const char *name)
    {
        return Actions::action(u"RunMake/"_s + QString::fromLatin1(name));
    }
};

void TestRunMake::init()
{
    failOnBadConnects();
    makeProfile();
}

void TestRunMake::cleanup()
{
    if (shell)
        dropShell();
}

void TestRunMake::makeWindow()
{
    makeShell();
    components->makePanels();
    shell->rebuildUI();
    shell->show();
    QVERIFY(QTest::qWaitForWindowExposed(shell));
}

QString TestRunMake::script(const QString &name, const QByteArray &lines) const
{
    const QString file = write(name, "#!/bin/sh\n" + lines);
    QFile::setPermissions(file, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    return file;
}

QStringList TestRunMake::rows()
{
    QStringList result;
    const MessageOutput *const output = MessageOutput::self();
    for (int i = 0; i < output->count(); ++i)
        result += static_cast<const MessageItem *>(output->item(i))->text();
    return result;
}

namespace {

const QString records = QStringLiteral(TEST_DATA_DIR "/messages/");

/// What "places.ref" says of each record: "row file:line", for all rows that lead somewhere.
QMap<QString, QStringList> expectedPlaces()
{
    QMap<QString, QStringList> result;
    const QStringList lines = QString::fromUtf8(readFile(records + u"places.ref"_s)).split(u'\n');
    QString record;
    for (const QString &line : lines) {
        if (line.startsWith(u"# "))
            record = line.mid(2);
        else if (!line.isEmpty())
            result[record] += line;
    }
    return result;
}

QString fileOfPlace(const QString &place)
{
    return place.section(u' ', 1).section(u':', 0, -2);
}

} // namespace

void TestRunMake::placesInToolsOutput_data()
{
    QTest::addColumn<QStringList>("places");
    const QMap<QString, QStringList> expected = expectedPlaces();
    const QStringList names = QDir(records).entryList(QDir::Files);
    for (const QString &name : names) {
        if (name != u"places.ref")
            QTest::newRow(qPrintable(name)) << expected.value(name);
    }
}

void TestRunMake::placesInToolsOutput()
{
    QFETCH(const QStringList, places);
    const QMap<QString, QStringList> all = expectedPlaces();
    for (const QStringList &each : all) {
        for (const QString &place : each) {
            const QString file = path(fileOfPlace(place));
            QVERIFY(QDir().mkpath(QFileInfo(file).path()));
            writeFile(file, "x");
        }
    }
    OutputRows output(dir->path());
    output.add(OutputStream::Output,
               readFile(records + QString::fromLatin1(QTest::currentDataTag()))
                   .replace("@DIR@", dir->path().toUtf8()));
    output.finish();
    QStringList found;
    const QDir folder(dir->path());
    const QList<OutputRow> rows = output.take();
    for (int i = 0; i < rows.size(); ++i) {
        const OutputReference &place = rows.at(i).place;
        if (!place.file.isEmpty())
            found += u"%1 %2:%3"_s.arg(QString::number(i + 1), folder.relativeFilePath(place.file),
                                       QString::number(place.line));
    }
    QCOMPARE(found.join(u'\n'), places.join(u'\n'));
}

void TestRunMake::outputBecomesRows_data()
{
    const Rows<QByteArrayList, QStringList> row("chunks", "expected");
    row("whole lines", {"a\nb\n"}, {u"a"_s, u"b"_s});
    row("a line in pieces", {"a", "b", "\nc\n"}, {u"ab"_s, u"c"_s});
    row("no end of the last line", {"a\nb"}, {u"a"_s, u"b"_s});
    row("empty lines", {"\n\na\n"}, {u""_s, u""_s, u"a"_s});
    row("line ends of two characters", {"a\r\nb\r\n"}, {u"a"_s, u"b"_s});
    row("a character in two pieces", {"\xc3", "\xa4\n"}, {u"\u00e4"_s});
    row("not UTF-8, line by line", {"\xe4\n\xc3\xa4\n"}, {u"\u00e4"_s, u"\u00e4"_s});
    row("control characters", {QByteArray("a\0\x1b[31mb\n", 9)},
        {QString::fromLatin1("a\0\x1b[31mb", 8)});
    const QString half = u"\u00e4"_s.repeated(32 * 1024);
    row("a line too long for one row", {(half + half + u"x\nb\n"_s).toUtf8()},
        {half, half, u"x"_s, u"b"_s});
}

void TestRunMake::outputBecomesRows()
{
    QFETCH(const QByteArrayList, chunks);
    QFETCH(const QStringList, expected);
    OutputRows output(dir->path());
    for (const QByteArray &chunk : chunks)
        output.add(OutputStream::Output, chunk);
    output.finish();
    QStringList texts;
    const QList<OutputRow> rows = output.take();
    for (const OutputRow &each : rows)
        texts += each.text;
    QCOMPARE(texts, expected);
    QVERIFY(output.take().isEmpty());
}

void TestRunMake::fastOutputKeepsItsEndAndItsFolders()
{
    QVERIFY(QDir(dir->path()).mkdir(u"sub"_s));
    const QString file = write(u"sub/a.c"_s);
    OutputRows output(dir->path());
    output.add(OutputStream::Output, "make[1]: Entering direc");
    output.add(OutputStream::Output, "tory '" + dir->path().toUtf8() + "/sub'\n" +
                                         QByteArray("x\n").repeated(2000) + "a.c:3: wrong\nopen");
    output.add(OutputStream::Error, QByteArray(300 * 1024, 'e'));
    const QList<OutputRow> rows = output.take();
    QCOMPARE(rows.size(), 500);
    QCOMPARE(rows.first().stream, OutputStream::Output);
    QCOMPARE(rows.last().stream, OutputStream::Error);
    const auto wrong = std::find_if(
        rows.begin(), rows.end(), [](const OutputRow &row) { return row.text == u"a.c:3: wrong"; });
    QVERIFY(wrong != rows.end());
    QCOMPARE(wrong->place.file, file);
    QCOMPARE(wrong->place.line, 3);
}

void TestRunMake::listedOfARun_data()
{
    const Rows<QByteArray, QString, QString, QStringList> row("lines", "command", "args",
                                                              "expected");
    const QString end = u"%p finished. Exit code "_s;
    row("arguments and both fields", "echo \"$#:$1:$2\"", u"%p  %s"_s, u"%s,%s b"_s,
        {u"%p  %f %f,%f b"_s, u"3:%f:%f,%f"_s, end + u"0"_s});
    row("exit code", "exit 3", u"%p"_s, u""_s, {u"%p"_s, end + u"3"_s});
    row("killed", "kill -KILL $$", u"%p"_s, u""_s, {u"%p"_s, end + u"9"_s});
    row("last line without end", "printf 'a\\nb'", u"%p"_s, u""_s,
        {u"%p"_s, u"a"_s, u"b"_s, end + u"0"_s});
    row("reads from its input", "cat; read x || echo nothing", u"%p"_s, u""_s,
        {u"%p"_s, u"nothing"_s, end + u"0"_s});
    row("closes its output and goes on", "echo a; exec >&- 2>&-; sleep 0.05; exit 4", u"%p"_s,
        u""_s, {u"%p"_s, u"a"_s, end + u"4"_s});
    row("markup", "echo '#color{red}x#bgcolor{blue}'", u"%p"_s, u"#color{blue}"_s,
        {u"%p #color{blue}"_s, u"#color{red}x#bgcolor{blue}"_s, end + u"0"_s});
    row("no such program", "", u"/no/such"_s, u"a"_s,
        {u"/no/such a"_s, u"Can't run /no/such a process."_s});
    row("not found in the current folder", "", u"own-script"_s, u""_s,
        {u"own-script"_s, u"Can't run own-script process."_s});
    row("blanks only", "", u"   "_s, u""_s, {u"   "_s, u"Can't run     process."_s});
    row("found on the search path", "", u"true"_s, u""_s,
        {u"true"_s, u"true finished. Exit code 0"_s});
    row("ten thousand characters", "echo ${#1}", u"%p "_s + QString(10000, u'x'), u""_s,
        {u"%p "_s + QString(10000, u'x'), u"10000"_s, end + u"0"_s});
}

void TestRunMake::listedOfARun()
{
    QFETCH(const QByteArray, lines);
    QFETCH(QString, command);
    QFETCH(const QString, args);
    QFETCH(QStringList, expected);
    const QString program = script(u"own-script"_s, lines);
    const QString file = write(u"file.txt"_s);
    makeWindow();
    Editors::self()->open(file);
    setScript("runProject", command.replace(u"%p"_s, program));
    setScript("runProjectArgs", args);
    expected.replaceInStrings(u"%p"_s, program).replaceInStrings(u"%f"_s, file);

    // An entry of the path that is no absolute folder means the current one.
    const QByteArray searchPath = qgetenv("PATH");
    const QString before = QDir::currentPath();
    qputenv("PATH", ":.:" + searchPath);
    QVERIFY(QDir::setCurrent(dir->path()));
    action("run")->trigger();
    qputenv("PATH", searchPath);
    QVERIFY(QDir::setCurrent(before));
    QTRY_COMPARE(rows().join(u'\n'), expected.join(u'\n'));
    QVERIFY(!shell->bottomDockWidget()->isHidden());
}

void TestRunMake::scriptsKnowWhereTheUserIs()
{
    const QString file = write(u"a b.txt"_s, "1\n2\n3\n");
    setScript("runProject",
              script(u"script"_s, "echo \"$VESK_FILE|$VESK_DIR|$VESK_LINE|$VESK_PROJECT_DIR|\""));
    makeWindow();
    Editors::self()->open(file);
    Editors::self()->current()->setCursorPosition(2, 0);
    action("run")->trigger();
    QTRY_VERIFY(isFinished());
    QCOMPARE(rows().value(1), u"%1|%2|3||"_s.arg(file, dir->path()));
}

void TestRunMake::pressOnAnErrorLeadsToItsLine()
{
    const QString file = write(u"a.c"_s, "1\n2\n3\n4\n");
    setScript("makeProject", script(u"script"_s, "echo '" + file.toUtf8() + ":3:1: wrong' >&2"));
    makeWindow();
    action("make")->trigger();
    QTRY_VERIFY(isFinished());
    MessageOutput *const output = MessageOutput::self();
    QTRY_VERIFY(output->visualItemRect(output->item(1)).isValid());
    shell->bottomDockWidget()->show();
    QTest::mouseClick(output->viewport(), Qt::LeftButton, Qt::NoModifier,
                      output->visualItemRect(output->item(1)).center());
    QCOMPARE(Editors::self()->current()->filename(), file);
    QCOMPARE(Editors::self()->current()->cursorLine(), 2);
}

void TestRunMake::makeShowsAndStops_data()
{
    const Rows<QByteArray, bool, bool, int> row("lines", "wasShown", "isShown", "code");
    row("good, dock was hidden", "while ! [ -e go ]; do sleep 0.02; done", false, false, 0);
    row("good, dock was shown", "while ! [ -e go ]; do sleep 0.02; done", true, true, 0);
    row("failed", "while ! [ -e go ]; do sleep 0.02; done; exit 2", false, true, 2);
    row("stopped", "exec sleep 1000", false, true, SIGTERM);
    row("ignores that it shall stop", "trap '' TERM; while ! [ -e go ]; do sleep 0.02; done", false,
        false, 0);
}

void TestRunMake::makeShowsAndStops()
{
    QFETCH(const QByteArray, lines);
    QFETCH(const bool, wasShown);
    QFETCH(const bool, isShown);
    QFETCH(const int, code);
    setScript("makeProject",
              script(u"script"_s, "cd " + dir->path().toUtf8() + "\necho begun\n" + lines));
    makeWindow();
    shell->bottomDockWidget()->setVisible(wasShown);
    action("make")->trigger();
    QVERIFY(!shell->bottomDockWidget()->isHidden());
    QCOMPARE(action("make")->text(), u"Stop"_s);
    QCOMPARE(action("make")->toolbuttons.last()->text(), u"Stop"_s);
    QVERIFY(!action("run")->isEnabled());
    QTRY_VERIFY(rows().contains(u"begun"_s));
    const bool isIgnoring = lines.startsWith("trap");
    if (code == SIGTERM || isIgnoring)
        action("make")->trigger();
    if (isIgnoring)
        QCOMPARE(action("make")->text(), u"Stop"_s);
    write(u"go"_s);
    QTRY_VERIFY(isFinished());
    QVERIFY(rows().last().endsWith(u" finished. Exit code %1"_s.arg(code)));
    QCOMPARE(action("make")->text(), u"Make"_s);
    QVERIFY(action("run")->isEnabled());
    QCOMPARE(!shell->bottomDockWidget()->isHidden(), isShown);
}

void TestRunMake::severalRunsAtOnce()
{
    setScript("runProject",
              script(u"script"_s, "cd " + dir->path().toUtf8() +
                                      "\nwhile ! [ -e go ]; do sleep 0.02; done; echo done $1"));
    makeWindow();
    for (const QString &args : {u"one"_s, u"two"_s}) {
        setScript("runProjectArgs", args);
        action("run")->trigger();
    }
    QCOMPARE(rows().size(), 1);
    write(u"go"_s);
    QTRY_COMPARE(rows().filter(u"finished"_s).size(), 2);
    QVERIFY(rows().contains(u"done one"_s) && rows().contains(u"done two"_s));
}

void TestRunMake::scriptOutlivesTheEditor()
{
    setScript("runProject",
              script(u"script"_s, "cd " + dir->path().toUtf8() +
                                      "\ntouch begun; while ! [ -e go ]; do sleep 0.02; done\n"
                                      "touch ended"));
    makeWindow();
    action("run")->trigger();
    QTRY_VERIFY(QFile::exists(path(u"begun"_s)));
    dropShell();
    write(u"go"_s);
    QTRY_VERIFY(QFile::exists(path(u"ended"_s)));
}

void TestRunMake::configureDialog_data()
{
    const Rows<QString, QString> row("button", "stored");
    row("accepted", u"&OK"_s, u"/bin/true"_s);
    row("rejected", u"&Cancel"_s, u""_s);
}

void TestRunMake::configureDialog()
{
    QFETCH(const QString, button);
    QFETCH(const QString, stored);
    makeWindow();
    // Nothing is known of a script, so the command asks first.
    QTimer::singleShot(0, this, [&] {
        auto *const dialog = qobject_cast<QDialog *>(QApplication::activeModalWidget());
        QVERIFY(dialog);
        QCOMPARE(dialog->size(), QSize(500, 300));
        dialog->findChild<QLineEdit *>(u"runLineEdit"_s)->setText(u"/bin/true"_s);
        dialog->findChild<QLineEdit *>(u"makeArgsLineEdit"_s)->setText(u"a,b"_s);
        dialog->findChild<QCheckBox *>(u"defaultScriptsCheckBox"_s)->setChecked(true);
        dialog->resize(600, 320);
        const QList<QPushButton *> buttons = dialog->findChildren<QPushButton *>();
        for (QPushButton *each : buttons) {
            if (each->text() == button)
                each->click();
        }
    });
    action("run")->trigger();
    QCOMPARE(Settings::read(u"/scripts/runProject"_s), stored);
    QCOMPARE(Settings::read(u"/scripts/makeProjectArgs"_s), stored.isEmpty() ? u""_s : u"a,b"_s);
    QCOMPARE(Settings::readBool(u"/scripts/useDefaultsForProjects"_s), !stored.isEmpty());
    QCOMPARE(Settings::readNum(u"/geometry/configureScriptsDialog/w"_s), 600);
    if (stored.isEmpty())
        QCOMPARE(rows().size(), 0);
    else
        QTRY_VERIFY(isFinished());
}

void TestRunMake::optionsPageOfAProject()
{
    const QString file = write(
        u"p.vesk"_s,
        "<veskproject><project name=\"p\" runScript=\"true\" runScriptArgs=\"%s\"/></veskproject>");
    setScript("makeProjectArgs", u"-j"_s);
    makeWindow();
    Project::self()->load(file);
    QVERIFY(Project::self()->hasProject());
    RunMakeOptionsWidget page(nullptr);
    page.loadSettings();
    QCOMPARE(page.runLineEdit->text(), u"true"_s);
    QCOMPARE(page.runArgsLineEdit->text(), u"%s"_s);
    QCOMPARE(page.makeLineEdit->text(), u"make"_s);
    QCOMPARE(page.makeArgsLineEdit->text(), u"-s"_s);

    page.makeLineEdit->setText(u"ninja"_s);
    page.defaultScriptsCheckBox->setChecked(true);
    page.saveSettings();
    QCOMPARE(Project::self()->attribute(u"makeScript"_s), u"ninja"_s);
    QCOMPARE(Settings::read(u"/scripts/makeProject"_s), u"ninja"_s);
    QVERIFY(Settings::readBool(u"/scripts/useDefaultsForProjects"_s));
    page.loadSettings();
    QVERIFY(!page.defaultScriptsCheckBox->isChecked());

    action("run")->trigger();
    QTRY_VERIFY(isFinished());
    QCOMPARE(rows().value(0), u"true "_s);
}

QTEST_MAIN(TestRunMake)
#include "tst_runmake.moc"
