#include "app/settings.h"
#include "tests/testing.h"

#include <QFile>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;
using vesk::Settings;

/// Values must come back as they were written, from the same run and from the
/// next one, and whatever stands in the file must not stop the program.
class SettingsTest : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void textComesBack_data();
    void textComesBack();
    void listComesBack_data();
    void listComesBack();
    void listWithSeparator();
    void numbersAndBoolsComeBack();
    void readsWhatAUserTyped_data();
    void readsWhatAUserTyped();
    void typedValueThatDoesNotFit_data();
    void typedValueThatDoesNotFit();
    void refusesKeys_data();
    void refusesKeys();
    void removesOneKeyOnly();
    void keysOfOtherPrefixesStayApart();
    void keepsACopyOfADamagedFile();
    void livesWithoutAUsableFile();
    void staysTheSameWhenWritten();
    void environmentNamesTheFile();

private:
    void writeTyped(const QByteArray &content) const;
    /// Runs \a check in the run that wrote and again after the file was read anew.
    template <typename Check>
    void inThisRunAndTheNext(const Check &check)
    {
        check();
        startAnotherRun();
        check();
    }

    void startAnotherRun() const { Settings::setFileName(path); }

    std::unique_ptr<QTemporaryDir> dir;
    QString path;
};

void SettingsTest::init()
{
    dir = std::make_unique<QTemporaryDir>();
    path = dir->filePath(u"conf/vesk.ini"_s);
    Settings::setFileName(path);
    Settings::setKeyPrefix(u"/vesk"_s);
}

void SettingsTest::cleanup()
{
    Settings::setFileName({});
}

void SettingsTest::writeTyped(const QByteArray &content) const
{
    QVERIFY(QDir().mkpath(QFileInfo(path).path()));
    writeFile(path, content);
}

void SettingsTest::textComesBack_data()
{
    const Rows<QString> row("text");
    row("empty", QString());
    row("comma", "Sans,10,-1,5");
    row("quotes and backslashes", QStringLiteral(R"(a "b" \c\ %20)"));
    row("blanks around", "  x  ");
    row("semicolon and equals", "a;b=c");
    row("line ends", "a\nb\r\nc");
    row("looks like a variant", "@Variant(x)");
    row("other scripts", "žluťoučký 日本 \U0001F600");
}

void SettingsTest::textComesBack()
{
    QFETCH(QString, text);
    QVERIFY(Settings::write(u"/a b/+c"_s, text));
    inThisRunAndTheNext([&] {
        bool found = false;
        QCOMPARE(Settings::read(u"/a b/+c"_s, u"default"_s, &found), text);
        QVERIFY(found);
    });
}

void SettingsTest::listComesBack_data()
{
    const Rows<QStringList> row("list");
    row("none", QStringList());
    row("one with a comma", {u"x,y"_s});
    row("one empty", {QString()});
    row("untitled among paths", {u"/a b"_s, QString(), u"/c,d"_s});
}

void SettingsTest::listComesBack()
{
    QFETCH(QStringList, list);
    QVERIFY(Settings::write(u"/editors/openedFiles"_s, list));
    inThisRunAndTheNext([&] {
        bool found = false;
        QCOMPARE(Settings::readList(u"/editors/openedFiles"_s, &found), list);
        QVERIFY(found);
    });
}

void SettingsTest::listWithSeparator()
{
    const QString k = u"/masks"_s;
    const QChar sep = QLatin1Char(';');
    QVERIFY(Settings::write(k, {u"*.c"_s, QString(), u"a,b"_s}, sep));
    inThisRunAndTheNext([&] {
        const QStringList kept = {u"*.c"_s, u"a,b"_s};
        QCOMPARE(Settings::readList(k, sep), kept);
    });
}

void SettingsTest::numbersAndBoolsComeBack()
{
    QVERIFY(Settings::write(u"/n/int"_s, -42));
    QVERIFY(Settings::write(u"/n/double"_s, 0.1));
    QVERIFY(Settings::write(u"/n/off"_s, false));
    QVERIFY(Settings::write(u"/n/text"_s, "7"));
    inThisRunAndTheNext([] {
        bool found = false;
        QCOMPARE(Settings::readNum(u"/n/int"_s, 1, &found), -42);
        QVERIFY(found);
        QCOMPARE(Settings::readDouble(u"/n/double"_s, 1), 0.1);
        QCOMPARE(Settings::readBool(u"/n/off"_s, true, &found), false);
        QVERIFY(found);
        QCOMPARE(Settings::readNum(u"/n/text"_s), 7);
        QCOMPARE(Settings::readNum(u"/n/missing"_s, 5, &found), 5);
        QVERIFY(!found);
    });
}

void SettingsTest::readsWhatAUserTyped_data()
{
    const Rows<QByteArray, QString> row("typed", "expected");
    row("plain", "Application=x", "x");
    row("unquoted commas", "Application=Sans,10,-1", "Sans,10,-1");
    row("quoted commas", "Application=\"Sans,10\"", "Sans,10");
    row("other letter case is another key", "application=x", "default");
}

void SettingsTest::readsWhatAUserTyped()
{
    QFETCH(QByteArray, typed);
    QFETCH(QString, expected);
    writeTyped("[fonts]\n" + typed + '\n');
    QCOMPARE(Settings::read(u"/fonts/Application"_s, u"default"_s), expected);
}

void SettingsTest::typedValueThatDoesNotFit_data()
{
    const Rows<QByteArray, bool, bool> row("typed", "isNumber", "isBool");
    row("word", "yes", false, false);
    row("too large", "99999999999", false, false);
    row("two", "2", true, false);
    row("one", "1", true, true);
    row("true", "true", false, true);
}

void SettingsTest::typedValueThatDoesNotFit()
{
    QFETCH(QByteArray, typed);
    QFETCH(bool, isNumber);
    QFETCH(bool, isBool);
    writeTyped("[geometry]\nx=" + typed + '\n');
    bool found = !isNumber;
    const int number = Settings::readNum(u"/geometry/x"_s, 50, &found);
    QCOMPARE(found, isNumber);
    QCOMPARE(number, isNumber ? typed.toInt() : 50);
    found = !isBool;
    QCOMPARE(Settings::readBool(u"/geometry/x"_s, true, &found), true);
    QCOMPARE(found, isBool);
}

void SettingsTest::refusesKeys_data()
{
    const Rows<QString> row("k");
    row("equals", "/a=b");
    row("line end", "/a\nb");
    row("nothing behind the prefix", "/");
}

void SettingsTest::refusesKeys()
{
    QFETCH(QString, k);
    QVERIFY(!Settings::write(k, u"x"_s));
    QVERIFY(!Settings::remove(k));
    QCOMPARE(Settings::read(k, u"default"_s), u"default"_s);
}

void SettingsTest::removesOneKeyOnly()
{
    Settings::write(u"/a"_s, 1);
    Settings::write(u"/a/b"_s, 2);
    Settings::write(u"/a/b/c"_s, QStringList{u"x"_s, QString()});
    QVERIFY(Settings::remove(u"/a"_s));
    QVERIFY(!Settings::remove(u"/a"_s));
    inThisRunAndTheNext([] {
        QCOMPARE(Settings::readNum(u"/a"_s, -1), -1);
        QCOMPARE(Settings::readNum(u"/a/b"_s, -1), 2);
        QCOMPARE(Settings::readList(u"/a/b/c"_s).size(), 2);
    });
}

void SettingsTest::keysOfOtherPrefixesStayApart()
{
    Settings::write(u"/geometry/x"_s, 1);
    QCOMPARE(Settings::readFull(u"/vesk/geometry/x"_s), u"1"_s);
    QCOMPARE(Settings::readFull(u"//vesk//geometry/x/"_s), u"1"_s);
    Settings::setKeyPrefix(u"/"_s);
    inThisRunAndTheNext([] {
        QCOMPARE(Settings::readNum(u"/geometry/x"_s, -1), -1);
        QCOMPARE(Settings::readNum(u"/vesk/geometry/x"_s, -1), 1);
    });
    Settings::write(u"/geometry/x"_s, 2);
    inThisRunAndTheNext([] {
        QCOMPARE(Settings::readNum(u"/vesk/geometry/x"_s), 1);
        QCOMPARE(Settings::readNum(u"/geometry/x"_s), 2);
    });
}

void SettingsTest::keepsACopyOfADamagedFile()
{
    const QByteArray damaged = "[geometry]\nx=7\nprecious line without a sign\n[fonts]\n\xff\xfe\n";
    writeTyped(damaged);
    QCOMPARE(Settings::readNum(u"/geometry/x"_s), 7);
    Settings::write(u"/geometry/y"_s, 8);
    startAnotherRun();
    QCOMPARE(readFile(path + u".damaged"_s), damaged);
    QCOMPARE(Settings::readNum(u"/geometry/x"_s), 7);
    QCOMPARE(Settings::readNum(u"/geometry/y"_s), 8);
}

void SettingsTest::livesWithoutAUsableFile()
{
    QVERIFY(QDir().mkpath(path));
    QCOMPARE(Settings::readNum(u"/geometry/x"_s, 50), 50);
    QVERIFY(Settings::write(u"/geometry/x"_s, 1));
    Settings::forceWrite();
    // It holds for this run at least.
    QCOMPARE(Settings::readNum(u"/geometry/x"_s, 50), 1);
    startAnotherRun();
    QCOMPARE(Settings::readNum(u"/geometry/x"_s, 50), 50);
}

void SettingsTest::staysTheSameWhenWritten()
{
    const Settings *const store = Settings::self();
    Settings::write(u"/geometry/x"_s, 1);
    Settings::forceWrite();
    QCOMPARE(Settings::self(), store);
    QVERIFY(readFile(path).contains("x=1"));
    // What another program wrote meanwhile is taken over.
    writeTyped("[geometry]\nx=12\n");
    Settings::forceWrite();
    QCOMPARE(Settings::readNum(u"/geometry/x"_s), 12);
}

void SettingsTest::environmentNamesTheFile()
{
    const QString other = dir->filePath(u"other.ini"_s);
    Settings::setFileName({});
    qputenv("VESK_SETTINGS", QFile::encodeName(other));
    Settings::write(u"/a/b"_s, 3);
    Settings::forceWrite();
    QVERIFY(QFile::exists(other));
    qunsetenv("VESK_SETTINGS");
    Settings::setFileName({});
    // With neither, it is a file of the user's configuration folder.
    QStandardPaths::setTestModeEnabled(true);
    const QString standard = Settings::self()->fileName();
    Settings::setFileName({});
    QStandardPaths::setTestModeEnabled(false);
    QVERIFY2(standard.endsWith(u"/vesk/vesk.ini"_s), qPrintable(standard));
}

QTEST_GUILESS_MAIN(SettingsTest)
#include "tst_settings.moc"
