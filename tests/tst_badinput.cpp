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
    void settings_data();
    void settings();

private:
    /// A launcher that takes root's right to open every file away.
    static QStringList asOrdinaryUser();
};

QStringList TestBadInput::asOrdinaryUser()
{
    if (geteuid() != 0)
        return {};
    return {u"setpriv"_s, u"--bounding-set=-dac_override,-dac_read_search,-fowner"_s};
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
    session->keys(u"x ctrl+s"_s);
    COMPARE_FILE(path, QByteArray("xtext"));
    session->keys(u"ctrl+q"_s);
    QVERIFY(session->waitForEnd());
}

QTEST_MAIN(TestBadInput)

#include "tst_badinput.moc"
