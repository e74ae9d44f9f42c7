#include "xsession.h"

#include <QDir>
#include <QFileInfo>
#include <QSet>

#include <memory>

#include <sys/stat.h>
#include <unistd.h>

/// Whatever a user's files, folders and settings hold: the program comes up, takes
/// keys, loses nothing and ends.
class TestBadInput : public QObject
{
    Q_OBJECT

private slots:
    void init() { session = std::make_unique<XSession>(); }
    void cleanup();

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

    std::unique_ptr<XSession> session;
};

QStringList TestBadInput::asOrdinaryUser()
{
    if (geteuid() != 0)
        return {};
    return {QStringLiteral("setpriv"),
            QStringLiteral("--bounding-set=-dac_override,-dac_read_search,-fowner")};
}

void TestBadInput::cleanup()
{
    const QString pictures = qEnvironmentVariable("VESK_TEST_PICTURES");
    if (QTest::currentTestFailed() && !pictures.isEmpty())
        XSession::screenshot().save(pictures + u'/' +
                                    QString::fromLatin1(QTest::currentTestFunction()) +
                                    QStringLiteral(".png"));
    session.reset();
}

bool TestBadInput::typesSavesAndEnds(const QString &path, const QByteArray &before)
{
    session->keys(QStringLiteral("x ctrl+s"));
    const bool isSaved =
        QTest::qWaitFor([&] { return XSession::read(path) == 'x' + before; }, XSession::patience);
    session->keys(QStringLiteral("ctrl+q"));
    return isSaved && session->waitForEnd();
}

void TestBadInput::namesOnTheCommandLine()
{
    const QStringList names = {
        QStringLiteral(" two  blanks "),
        QStringLiteral("line\nend"),
        QStringLiteral("%1 &amp; [*] \"'\\.cpp"),
        QStringLiteral("-minus"),
        QStringLiteral("\u00e4\u20ac\U0001f600.txt"),
        QString(200, u'n'),
    };
    for (const QString &name : names)
        session->write(name, name.toUtf8());
    QVERIFY(QDir(session->dir.path()).mkdir(QStringLiteral("folder")));
    const QString closed = session->write(QStringLiteral("closed"), "closed");
    QVERIFY(QFile::setPermissions(closed, QFileDevice::Permissions()));
    QCOMPARE(mkfifo(qPrintable(session->path(QStringLiteral("pipe"))), 0600), 0);

    const QStringList shell = {
        QStringLiteral("sh"), QStringLiteral("-c"),
        QStringLiteral("printf bytes >\"$(printf 'by\\377te')\"; "
                       "exec \"$0\" missing missing/file \"$(printf 'by\\377te')\" '' \"$@\"")};
    QVERIFY(session->start(QStringList{QStringLiteral("folder"), QStringLiteral("closed"),
                                       QStringLiteral("pipe"), QStringLiteral("folder/.."),
                                       QStringLiteral("/dev/zero")} +
                               names,
                           asOrdinaryUser() + shell));
    // Each of them has its editor; what cannot be read has none under its name.
    QSet<QString> seen;
    for (const QString &name : names) {
        const auto title = [] { return XSession::activeTitle().replace(u'\n', u' '); };
        const QString start =
            QString(name).replace(u'\n', u' ').mid(name.startsWith(u' ')) + QStringLiteral(" : ");
        for (qsizetype i = 0; i < 2 * names.size() && !title().startsWith(start); ++i) {
            const QString before = title();
            seen.insert(before);
            session->keys(QStringLiteral("alt+Right"));
            QTRY_VERIFY_WITH_TIMEOUT(title() != before, XSession::patience);
        }
        QVERIFY2(title().startsWith(start), qPrintable(name + u'/' + title()));
        session->keys(QStringLiteral("x ctrl+s"));
        COMPARE_FILE(session->path(name), 'x' + name.toUtf8());
    }
    for (const QString &title : std::as_const(seen))
        QVERIFY2(!title.startsWith(QLatin1String("closed")) &&
                     !title.startsWith(QLatin1String("pipe")) &&
                     !title.startsWith(QLatin1String("folder")) &&
                     !title.startsWith(QLatin1String("zero")),
                 qPrintable(title));
    session->keys(QStringLiteral("ctrl+q"));
    QVERIFY(session->waitForEnd());
    // The toolkit, which has no name for it, cannot remove it.
    QCOMPARE(unlink((QFile::encodeName(session->dir.path()) + "/by\377te").constData()), 0);
}

void TestBadInput::contents_data()
{
    QTest::addColumn<QByteArray>("mark");
    QTest::addColumn<QByteArray>("bytes");

    const QByteArray none;
    QTest::newRow("empty") << none << none;
    QTest::newRow("crlf") << none << QByteArray("a\r\nb\r\n\r\nc");
    QTest::newRow("lone cr") << none << QByteArray("a\rb\r\rc");
    QTest::newRow("nul bytes") << none << QByteArray("a\0\0b\n\0\n\0", 8);
    QTest::newRow("invalid utf-8") << none << QByteArray("\xff\xfe\xc3\n\xe9\x80 \xf0\x9f\nz");
    QTest::newRow("byte-order mark") << QByteArray("\xef\xbb\xbf") << QByteArray("\xc3\xa9\nb");
    QTest::newRow("every byte") << none << [] {
        QByteArray all;
        for (int byte = 0; byte < 256; ++byte)
            all += QByteArray(byte % 7, char(byte)) + char(byte == '\r' ? 'r' : byte);
        return all.replace('\r', 'r');
    }();
    QTest::newRow("one line of a megabyte") << none << QByteArray("a b(\"\\ ").repeated(150000);
}

void TestBadInput::contents()
{
    QFETCH(const QByteArray, mark);
    QFETCH(const QByteArray, bytes);

    const QString path = session->write(QStringLiteral("file.cpp"), mark + bytes);
    QVERIFY(session->start({path}));
    QVERIFY(XSession::waitForFile(QStringLiteral("file.cpp")));
    session->keys(QStringLiteral("x ctrl+s"));
    COMPARE_FILE(path, mark + 'x' + bytes);
    session->keys(QStringLiteral("ctrl+z ctrl+End y BackSpace ctrl+s"));
    COMPARE_FILE(path, mark + bytes);
    session->keys(QStringLiteral("ctrl+q"));
    QVERIFY(session->waitForEnd());
}

void TestBadInput::rights_data()
{
    QTest::addColumn<int>("fileMode");
    QTest::addColumn<int>("folderMode");
    QTest::addColumn<bool>("saved");

    QTest::newRow("owner and group") << 0640 << 0755 << true;
    QTest::newRow("executable for all") << 0755 << 0755 << true;
    QTest::newRow("folder without write access") << 0600 << 0555 << true;
    QTest::newRow("read-only file") << 0444 << 0755 << false;
    QTest::newRow("read-only file and folder") << 0444 << 0555 << false;
}

void TestBadInput::rights()
{
    QFETCH(const int, fileMode);
    QFETCH(const int, folderMode);
    QFETCH(const bool, saved);

    QVERIFY(QDir(session->dir.path()).mkdir(QStringLiteral("folder")));
    const QString path = session->write(QStringLiteral("folder/file.txt"), "text");
    const QByteArray folder = QFile::encodeName(session->path(QStringLiteral("folder")));
    const QByteArray file = QFile::encodeName(path);
    // Reached through a link, which stays one.
    const QString link = session->path(QStringLiteral("link.txt"));
    QVERIFY(QFile::link(path, link));
    QCOMPARE(chmod(file.constData(), mode_t(fileMode)), 0);
    QCOMPARE(chmod(folder.constData(), mode_t(folderMode)), 0);

    QVERIFY(session->start({link}, asOrdinaryUser()));
    session->keys(QStringLiteral("x ctrl+s"));
    if (saved) {
        COMPARE_FILE(path, QByteArray("xtext"));
        session->keys(QStringLiteral("ctrl+q"));
    } else {
        // The text isn't lost: it counts as changed still, and even a Yes that
        // cannot be kept doesn't end the program.
        session->keys(QStringLiteral("ctrl+q"));
        QVERIFY(XSession::waitForTitle(QStringLiteral("Warning")));
        session->keys(QStringLiteral("alt+y"));
        QVERIFY(XSession::waitForFile(QStringLiteral("link.txt")));
        QVERIFY(session->isRunning());
        QCOMPARE(XSession::read(path), QByteArray("text"));
        session->keys(QStringLiteral("ctrl+q"));
        QVERIFY(XSession::waitForTitle(QStringLiteral("Warning")));
        session->keys(QStringLiteral("alt+n"));
    }
    QVERIFY(session->waitForEnd());
    QVERIFY(QFileInfo(link).isSymLink());
    struct stat info = {};
    QCOMPARE(stat(file.constData(), &info), 0);
    QCOMPARE(int(info.st_mode & 07777), fileMode);
    QCOMPARE(chmod(folder.constData(), 0755), 0);
    // Nothing is left lying about.
    QCOMPARE(QDir(session->path(QStringLiteral("folder"))).entryList(QDir::Files | QDir::Hidden),
             QStringList{QStringLiteral("file.txt")});
}

void TestBadInput::fileWithoutRoom()
{
    const QByteArray text = QByteArray(99, 't').append('\n').repeated(10000).chopped(1);
    const QString path = session->write(QStringLiteral("file.txt"), text);
    // No file may grow beyond some kilobytes, as on a full disk.
    const QStringList shell = {QStringLiteral("sh"), QStringLiteral("-c"),
                               QStringLiteral("trap '' XFSZ; ulimit -f 64; exec \"$0\" \"$@\"")};
    QVERIFY(session->start({path}, shell));
    session->keys(QStringLiteral("x ctrl+s ctrl+q"));
    QVERIFY(XSession::waitForTitle(QStringLiteral("Warning")));
    QCOMPARE(difference(XSession::read(path), text), QString());
    session->keys(QStringLiteral("Escape"));
    QVERIFY(XSession::waitForFile(QStringLiteral("file.txt")));
    // Made short enough, it can be saved.
    session->keys(QStringLiteral("ctrl+a"));
    session->type(QStringLiteral("short"));
    session->keys(QStringLiteral("ctrl+s"));
    COMPARE_FILE(path, QByteArray("short"));
    session->keys(QStringLiteral("ctrl+q"));
    QVERIFY(session->waitForEnd());
}

void TestBadInput::settings_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("mode");

    QTest::newRow("no settings at all") << QByteArray() << 0644;
    QTest::newRow("not an ini file") << QByteArray("\0\xff[[[\n=\n]\x01\xfe%", 12) << 0644;
    QTest::newRow("numbers out of range")
        << QByteArray("[geometry]\nx=-99999\ny=99999999999\nw=2000000000\nh=-5\n"
                      "hSplitter=-7, 99999999\nvSplitter=a, b, c\nbottomDockPanelID=77\n"
                      "[zveditor]\nTabWidth=0\nFont=\",,,,\"\n")
        << 0644;
    QTest::newRow("other types") << QByteArray("[editors]\nopenedFiles=@Invalid()\n"
                                               "openedCurrent=@Variant(\\0\\0\\0\\t)\n"
                                               "openedFilePoses=@ByteArray(x)\n"
                                               "[geometry]\nx=@Rect(1 2 3 4)\n")
                                 << 0644;
    QTest::newRow("session of what is no file")
        << QByteArray("[editors]\nopenedFiles=/, /dev/zero, \"\", /nowhere/at/all\n"
                      "openedCurrent=/dev\n")
        << 0644;
    QTest::newRow("unreadable") << QByteArray("[geometry]\nx=1\n") << 0000;
    QTest::newRow("read-only") << QByteArray("[geometry]\nx=100\n") << 0444;
    QTest::newRow("a folder") << QByteArray() << -1;
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
        QCOMPARE(chmod(qPrintable(session->write(QStringLiteral("vesk.ini"), bytes)), mode_t(mode)),
                 0);
    const QString path = session->write(QStringLiteral("file.txt"), "text");
    QVERIFY(session->start({path}, asOrdinaryUser()));
    for (int i = 0; i < 10 && !XSession::activeTitle().startsWith(QLatin1String("file.txt")); ++i)
        session->keys(QStringLiteral("alt+Right"));
    QVERIFY(XSession::waitForFile(QStringLiteral("file.txt")));
    QVERIFY(typesSavesAndEnds(path, "text"));
}

void TestBadInput::hostileDefinitions_data()
{
    QTest::addColumn<QByteArray>("definition");

    const auto definition = [](const QByteArray &rules) {
        return "<!DOCTYPE Highlight>\n<Highlight name=\"bad\" wildcards=\"*.bad\">"
               "<Items><Text color=\"#000000\"/></Items><Contents>" +
               rules + "</Contents><Break>" + rules + "</Break></Highlight>";
    };
    QTest::newRow("no xml") << QByteArray("\0\xff<\n", 4).repeated(1000);
    QTest::newRow("cut short") << definition("<a><citem regexp=\"x\"/></a>").chopped(40);
    QTest::newRow("entities that grow") << [] {
        QByteArray xml = "<!DOCTYPE Highlight [<!ENTITY a0 \"aaaaaaaaaa\">";
        for (int i = 1; i < 12; ++i)
            xml += "<!ENTITY a" + QByteArray::number(i) + " \"" +
                   ("&a" + QByteArray::number(i - 1) + ";").repeated(10) + "\">";
        return QByteArray(xml + "]><Highlight name=\"&a11;\" wildcards=\"*.bad\"/>");
    }();
    QTest::newRow("file from outside")
        << QByteArray("<!DOCTYPE Highlight [<!ENTITY e SYSTEM \"file:///dev/zero\">]>"
                      "<Highlight name=\"bad&e;\" wildcards=\"*.bad\">&e;</Highlight>");
    QTest::newRow("nested deeply")
        << "<!DOCTYPE Highlight><Highlight name=\"bad\" wildcards=\"*.bad\">" +
               QByteArray("<a>").repeated(100000);
    QTest::newRow("contexts that hand over for ever")
        << definition("<a><citem regexp=\"z\" emptyContent=\"b\"/></a>"
                      "<b><citem regexp=\"z\" emptyContent=\"a\"/></b>");
    QTest::newRow("matches of nothing")
        << definition("<a><citem regexp=\"x*\" lineEndContent=\"a\"/></a>");
    QTest::newRow("pattern that never ends")
        << definition("<a><citem regexp=\"(a+)+b|((a|aa)+)+$c\" lineEndContent=\"a\"/></a>");
    QTest::newRow("pattern that is none")
        << definition("<a><citem regexp=\"((([{*\" mode=\"until\" lineEndContent=\"a\"/></a>");
    QTest::newRow("more items than numbers") << [] {
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
    }();
}

void TestBadInput::hostileDefinitions()
{
    QFETCH(const QByteArray, definition);

    QVERIFY(QDir(session->dir.path()).mkpath(QStringLiteral("resources/folder.xml")));
    session->write(QStringLiteral("resources/bad.xml"), definition);
    QCOMPARE(mkfifo(qPrintable(session->path(QStringLiteral("resources/pipe.xml"))), 0600), 0);
    session->environment.insert(QStringLiteral("QTDIR"),
                                session->path(QStringLiteral("resources")));
    const QByteArray text =
        QByteArray(5000, 'a') + "\n" + QByteArray("aaaa aaa\n").repeated(2000) + "a";
    const QString path = session->write(QStringLiteral("file.bad"), text);
    QVERIFY(session->start({path}));
    QVERIFY(XSession::waitForFile(QStringLiteral("file.bad")));
    session->keys(QStringLiteral("ctrl+End Page_Up ctrl+Home"));
    QVERIFY(typesSavesAndEnds(path, text));
}

QTEST_MAIN(TestBadInput)

#include "tst_badinput.moc"
