#include "tests/xsession.h"

#include <QDir>
#include <QFileInfo>
#include <QSet>

#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

/// Whatever a user's files, folders and settings hold: the program comes up, takes
/// keys, loses nothing and ends.
class TestBadInput : public SessionTest
{
    Q_OBJECT

private slots:
    void init() { makeSession(); }
    void cleanup() { dropSession(); }

    void namesOnTheCommandLine();
    void contents_data();
    void contents();
    void rights_data();
    void rights();
    void fileWithoutRoom();
    void settings_data();
    void settings();
    void hostileDefinitions_data();
    void hostileDefinitions();

private:
    /// A launcher that takes root's right to open every file away.
    static QStringList asOrdinaryUser();
    /// True if keys still reach the text and the program still ends by itself.
    bool typesSavesAndEnds(const QString &path, const QByteArray &before);
};

QStringList TestBadInput::asOrdinaryUser()
{
    if (geteuid() != 0)
        return {};
    return {u"setpriv"_s, u"--bounding-set=-dac_override,-dac_read_search,-fowner"_s};
}

bool TestBadInput::typesSavesAndEnds(const QString &path, const QByteArray &before)
{
    session->keys(u"x ctrl+s"_s);
    const bool isSaved =
        QTest::qWaitFor([&] { return readFile(path) == 'x' + before; }, XSession::patience);
    session->keys(u"ctrl+q"_s);
    return isSaved && session->waitForEnd();
}

void TestBadInput::namesOnTheCommandLine()
{
    const QStringList names = {
        u" two  blanks "_s,
        u"line\nend"_s,
        u"%1 &amp; [*] \"'\\.cpp"_s,
        u"-minus"_s,
        u"\u00e4\u20ac\U0001f600.txt"_s,
        QString(200, u'n'),
    };
    for (const QString &name : names)
        session->write(name, name.toUtf8());
    QVERIFY(QDir(session->dir.path()).mkdir(u"folder"_s));
    const QString closed = session->write(u"closed"_s, "closed");
    QVERIFY(QFile::setPermissions(closed, QFileDevice::Permissions()));
    QCOMPARE(mkfifo(qPrintable(session->path(u"pipe"_s)), 0600), 0);

    const QStringList shell = {
        u"sh"_s, u"-c"_s,
        QStringLiteral("printf bytes >\"$(printf 'by\\377te')\"; "
                       "exec \"$0\" missing missing/file \"$(printf 'by\\377te')\" '' \"$@\"")};
    QVERIFY(session->start(
        QStringList{u"folder"_s, u"closed"_s, u"pipe"_s, u"folder/.."_s, u"/dev/zero"_s} + names,
        asOrdinaryUser() + shell));
    // Each of them has its editor; what cannot be read has none under its name.
    QSet<QString> seen;
    for (const QString &name : names) {
        const auto title = [] { return XSession::activeTitle().replace(u'\n', u' '); };
        const QString start =
            QString(name).replace(u'\n', u' ').mid(name.startsWith(u' ')) + u" : "_s;
        for (qsizetype i = 0; i < 2 * names.size() && !title().startsWith(start); ++i) {
            const QString before = title();
            seen.insert(before);
            session->keys(u"alt+Right"_s);
            QTRY_VERIFY_WITH_TIMEOUT(title() != before, XSession::patience);
        }
        QVERIFY2(title().startsWith(start), qPrintable(name + u'/' + title()));
        session->keys(u"x ctrl+s"_s);
        COMPARE_FILE(session->path(name), 'x' + name.toUtf8());
    }
    static const QRegularExpression unreadable(u"^(closed|pipe|folder|zero)"_s);
    QCOMPARE(seen.values().filter(unreadable), QStringList());
    session->keys(u"ctrl+q"_s);
    QVERIFY(session->waitForEnd());
    // The toolkit, which has no name for it, cannot remove it.
    QCOMPARE(unlink((QFile::encodeName(session->dir.path()) + "/by\377te").constData()), 0);
}

void TestBadInput::contents_data()
{
    const Rows<QByteArray, QByteArray> row("mark", "bytes");
    const QByteArray none;
    row("empty", none, none);
    row("mixed line ends, the last one too", none, "a\r\nb\r\rc\n\n");
    row("invalid bytes in latin-1", none, QByteArray("\xff\xfe\xc3\n\xe9\x80 \0\xf0\x9f\nz", 13));
    row("invalid bytes in utf-8", none, "\xff\xc3\xa9\n\xe9\x80\n");
    row("byte-order mark", "\xef\xbb\xbf", "\xc3\xa9\nb");
    row("one line of a megabyte", none, QByteArray("a b(\"\\ ").repeated(150000));
}

void TestBadInput::contents()
{
    QFETCH(const QByteArray, mark);
    QFETCH(const QByteArray, bytes);

    const QString path = session->write(u"file.cpp"_s, mark + bytes);
    QVERIFY(session->start({path}));
    QVERIFY(XSession::waitForFile(u"file.cpp"_s));
    session->keys(u"x ctrl+s"_s);
    COMPARE_FILE(path, mark + 'x' + bytes);
    session->keys(u"ctrl+z ctrl+End y BackSpace ctrl+s"_s);
    COMPARE_FILE(path, mark + bytes);
    session->keys(u"ctrl+q"_s);
    QVERIFY(session->waitForEnd());
}

void TestBadInput::rights_data()
{
    const Rows<int, int, bool> row("fileMode", "folderMode", "saved");
    row("folder without write access", 0600, 0555, true);
    row("read-only file", 0444, 0755, false);
}

void TestBadInput::rights()
{
    QFETCH(const int, fileMode);
    QFETCH(const int, folderMode);
    QFETCH(const bool, saved);

    QVERIFY(QDir(session->dir.path()).mkdir(u"folder"_s));
    const QString path = session->write(u"folder/file.txt"_s, "text");
    const QByteArray folder = QFile::encodeName(session->path(u"folder"_s));
    const QByteArray file = QFile::encodeName(path);
    // Reached through a link, which stays one.
    const QString link = session->path(u"link.txt"_s);
    QVERIFY(QFile::link(path, link));
    QCOMPARE(chmod(file.constData(), mode_t(fileMode)), 0);
    QCOMPARE(chmod(folder.constData(), mode_t(folderMode)), 0);

    QVERIFY(session->start({link}, asOrdinaryUser()));
    session->keys(u"x ctrl+s"_s);
    if (saved) {
        COMPARE_FILE(path, QByteArray("xtext"));
        session->keys(u"ctrl+q"_s);
    } else {
        // The text isn't lost: it counts as changed still, and even a Yes that
        // cannot be kept doesn't end the program.
        session->keys(u"ctrl+q"_s);
        QVERIFY(XSession::waitForTitle(u"Warning"_s));
        session->keys(u"alt+y"_s);
        QVERIFY(XSession::waitForFile(u"link.txt"_s));
        QVERIFY(session->isRunning());
        QCOMPARE(readFile(path), QByteArray("text"));
        session->keys(u"ctrl+q"_s);
        QVERIFY(XSession::waitForTitle(u"Warning"_s));
        session->keys(u"alt+n"_s);
    }
    QVERIFY(session->waitForEnd());
    QVERIFY(QFileInfo(link).isSymLink());
    struct stat info = {};
    QCOMPARE(stat(file.constData(), &info), 0);
    QCOMPARE(int(info.st_mode & 07777), fileMode);
    QCOMPARE(chmod(folder.constData(), 0755), 0);
    // Nothing is left lying about.
    QCOMPARE(QDir(session->path(u"folder"_s)).entryList(QDir::Files | QDir::Hidden),
             QStringList{u"file.txt"_s});
}

void TestBadInput::fileWithoutRoom()
{
    const QByteArray text = QByteArray(99, 't').append('\n').repeated(10000).chopped(1);
    const QString path = session->write(u"file.txt"_s, text);
    // No file may grow beyond some kilobytes, as on a full disk.
    const QStringList shell = {u"sh"_s, u"-c"_s,
                               u"trap '' XFSZ; ulimit -f 64; exec \"$0\" \"$@\""_s};
    QVERIFY(session->start({path}, shell));
    session->keys(u"x ctrl+s ctrl+q"_s);
    QVERIFY(XSession::waitForTitle(u"Warning"_s));
    QCOMPARE(difference(readFile(path), text), QString());
    session->keys(u"Escape"_s);
    QVERIFY(XSession::waitForFile(u"file.txt"_s));
    // Made short enough, it can be saved.
    session->keys(u"ctrl+a"_s);
    session->type(u"short"_s);
    session->keys(u"ctrl+s"_s);
    COMPARE_FILE(path, QByteArray("short"));
    session->keys(u"ctrl+q"_s);
    QVERIFY(session->waitForEnd());
}

void TestBadInput::settings_data()
{
    const Rows<QByteArray, int> row("bytes", "mode");
    row("no settings at all", QByteArray(), 0644);
    row("not an ini file", QByteArray("\0\xff[[[\n=\n]\x01\xfe%", 12), 0644);
    row("numbers out of range",
        "[geometry]\nx=-99999\ny=99999999999\nw=2000000000\nh=-5\n"
        "hSplitter=-7, 99999999\nvSplitter=a, b, c\nbottomDockPanelID=77\n"
        "[zveditor]\nTabWidth=0\nFont=\",,,,\"\n",
        0644);
    row("other types",
        "[editors]\nopenedFiles=@Invalid()\n"
        "openedCurrent=@Variant(\\0\\0\\0\\t)\n"
        "openedFilePoses=@ByteArray(x)\n"
        "[geometry]\nx=@Rect(1 2 3 4)\n",
        0644);
    row("session of what is no file",
        "[editors]\nopenedFiles=/, /dev/zero, \"\", /nowhere/at/all\n"
        "openedCurrent=/dev\n",
        0644);
    row("unreadable", "[geometry]\nx=1\n", 0000);
    row("read-only", "[geometry]\nx=100\n", 0444);
    row("a folder", QByteArray(), -1);
}

void TestBadInput::settings()
{
    QFETCH(const QByteArray, bytes);
    QFETCH(const int, mode);

    const QString ini = session->settingsFile();
    QVERIFY(QFile::remove(ini));
    if (mode < 0)
        QVERIFY(QDir().mkdir(ini));
    else if (!bytes.isEmpty())
        QCOMPARE(chmod(qPrintable(session->write(u"vesk.ini"_s, bytes)), mode_t(mode)), 0);
    const QString path = session->write(u"file.txt"_s, "text");
    QVERIFY(session->start({path}, asOrdinaryUser()));
    for (int i = 0; i < 10 && !XSession::activeTitle().startsWith(u"file.txt"_s); ++i)
        session->keys(u"alt+Right"_s);
    QVERIFY(XSession::waitForFile(u"file.txt"_s));
    QVERIFY(typesSavesAndEnds(path, "text"));
}

void TestBadInput::hostileDefinitions_data()
{
    const Rows<QByteArray> row("definition");
    const auto definition = [](const QByteArray &rules) {
        return "<!DOCTYPE Highlight>\n<Highlight name=\"bad\" wildcards=\"*.bad\">"
               "<Items><Text color=\"#000000\"/></Items><Contents>" +
               rules + "</Contents><Break>" + rules + "</Break></Highlight>";
    };
    row("no xml", QByteArray("\0\xff<\n", 4).repeated(1000));
    row("cut short", definition("<a><citem regexp=\"x\"/></a>").chopped(40));
    row("entities that grow", [] {
        QByteArray xml = "<!DOCTYPE Highlight [<!ENTITY a0 \"aaaaaaaaaa\">";
        for (int i = 1; i < 12; ++i)
            xml += "<!ENTITY a" + QByteArray::number(i) + " \"" +
                   ("&a" + QByteArray::number(i - 1) + ";").repeated(10) + "\">";
        return QByteArray(xml + "]><Highlight name=\"&a11;\" wildcards=\"*.bad\"/>");
    }());
    row("file from outside",
        QByteArray("<!DOCTYPE Highlight [<!ENTITY e SYSTEM \"file:///dev/zero\">]>"
                   "<Highlight name=\"bad&e;\" wildcards=\"*.bad\">&e;</Highlight>"));
    row("nested deeply", "<!DOCTYPE Highlight><Highlight name=\"bad\" wildcards=\"*.bad\">" +
                             QByteArray("<a>").repeated(100000));
    row("contexts that hand over for ever",
        definition("<a><citem regexp=\"z\" emptyContent=\"b\"/></a>"
                   "<b><citem regexp=\"z\" emptyContent=\"a\"/></b>"));
    row("matches of nothing", definition("<a><citem regexp=\"x*\" lineEndContent=\"a\"/></a>"));
    row("pattern that never ends",
        definition("<a><citem regexp=\"(a+)+b|((a|aa)+)+$c\" lineEndContent=\"a\"/></a>"));
    row("pattern that is none",
        definition("<a><citem regexp=\"((([{*\" mode=\"until\" lineEndContent=\"a\"/></a>"));
    row("more items than numbers", [] {
        QByteArray xml = "<!DOCTYPE Highlight><Highlight name=\"bad\" wildcards=\"*.bad\"><Items>";
        for (int i = 0; i < 2000; ++i)
            xml += "<i" + QByteArray::number(i) + " color=\"nonsense\"/>";
        xml += "</Items><Contents>";
        for (int i = 0; i < 2000; ++i)
            xml += "<c" + QByteArray::number(i) +
                   "><citem regexp=\"a\" item=\"i1999\" "
                   "lineEndContent=\"c1999\"/></c" +
                   QByteArray::number(i) + ">";
        return QByteArray(xml + "</Contents></Highlight>");
    }());
}

void TestBadInput::hostileDefinitions()
{
    QFETCH(const QByteArray, definition);

    QVERIFY(QDir(session->dir.path()).mkpath(u"resources/folder.xml"_s));
    session->write(u"resources/bad.xml"_s, definition);
    QCOMPARE(mkfifo(qPrintable(session->path(u"resources/pipe.xml"_s)), 0600), 0);
    session->environment.insert(u"QTDIR"_s, session->path(u"resources"_s));
    const QByteArray text =
        QByteArray(5000, 'a') + "\n" + QByteArray("aaaa aaa\n").repeated(2000) + "a";
    const QString path = session->write(u"file.bad"_s, text);
    QVERIFY(session->start({path}));
    QVERIFY(XSession::waitForFile(u"file.bad"_s));
    session->keys(u"ctrl+End Page_Up ctrl+Home"_s);
    QVERIFY(typesSavesAndEnds(path, text));
}

QTEST_MAIN(TestBadInput)

#include "tst_badinput.moc"
