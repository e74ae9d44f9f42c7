#include "app/settings.h"

#include <QFile>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

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
    void environmentNamesTheFile();
    void installPathEndsWithASeparator();

private:
    void writeFile(const QByteArray &content) const;
    /// Runs \a check in the run that wrote and again after the file was read anew.
    template <typename Check>
    void inThisRunAndTheNext(const Check &check)
    {
        check();
        Settings::forceWrite();
        check();
    }

    std::unique_ptr<QTemporaryDir> dir;
    QString path;
};

void SettingsTest::init()
{
    dir = std::make_unique<QTemporaryDir>();
    path = dir->filePath(QStringLiteral("conf/vesk.ini"));
    Settings::setFileName(path);
    Settings::setKeyPrefix(QStringLiteral("/vesk"));
}

void SettingsTest::cleanup()
{
    Settings::forceWrite();
    Settings::setFileName({});
}

void SettingsTest::writeFile(const QByteArray &content) const
{
    QVERIFY(QDir().mkpath(QFileInfo(path).path()));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(content);
}

void SettingsTest::textComesBack_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("empty") << QString();
    QTest::newRow("comma") << QStringLiteral("Sans,10,-1,5");
    QTest::newRow("quotes and backslashes") << QStringLiteral(R"(a "b" \c\ %20)");
    QTest::newRow("blanks around") << QStringLiteral("  x  ");
    QTest::newRow("line ends") << QStringLiteral("a\nb\r\nc");
    QTest::newRow("semicolon and equals") << QStringLiteral("a;b=c");
    QTest::newRow("looks like a variant") << QStringLiteral("@Variant(x)");
    QTest::newRow("other scripts") << QStringLiteral("žluťoučký 日本 \U0001F600");
    QTest::newRow("long") << QString(100000, QLatin1Char('x'));
}

void SettingsTest::textComesBack()
{
    QFETCH(QString, text);
    QVERIFY(Settings::write(QStringLiteral("/a b/+c"), text));
    inThisRunAndTheNext([&] {
        bool found = false;
        QCOMPARE(Settings::read(QStringLiteral("/a b/+c"), QStringLiteral("default"), &found),
                 text);
        QVERIFY(found);
    });
}

void SettingsTest::listComesBack_data()
{
    QTest::addColumn<QStringList>("list");
    QTest::newRow("none") << QStringList();
    QTest::newRow("one") << QStringList{QStringLiteral("x")};
    QTest::newRow("one with a comma") << QStringList{QStringLiteral("x,y")};
    QTest::newRow("one empty") << QStringList{QString()};
    QTest::newRow("untitled among paths")
        << QStringList{QStringLiteral("/a b"), QString(), QStringLiteral("/c,d")};
    QTest::newRow("all empty") << QStringList{QString(), QString(), QString()};
}

void SettingsTest::listComesBack()
{
    QFETCH(QStringList, list);
    QVERIFY(Settings::write(QStringLiteral("/editors/openedFiles"), list));
    inThisRunAndTheNext([&] {
        bool found = false;
        QCOMPARE(Settings::readList(QStringLiteral("/editors/openedFiles"), &found), list);
        QVERIFY(found);
    });
}

void SettingsTest::listWithSeparator()
{
    const QString k = QStringLiteral("/masks");
    const QChar sep = QLatin1Char(';');
    QVERIFY(Settings::write(k, {QStringLiteral("*.c"), QString(), QStringLiteral("a,b")}, sep));
    inThisRunAndTheNext([&] {
        const QStringList kept = {QStringLiteral("*.c"), QStringLiteral("a,b")};
        QCOMPARE(Settings::readList(k, sep), kept);
    });
}

void SettingsTest::numbersAndBoolsComeBack()
{
    QVERIFY(Settings::write(QStringLiteral("/n/int"), -42));
    QVERIFY(Settings::write(QStringLiteral("/n/double"), 0.1));
    QVERIFY(Settings::write(QStringLiteral("/n/off"), false));
    QVERIFY(Settings::write(QStringLiteral("/n/text"), "7"));
    inThisRunAndTheNext([] {
        bool found = false;
        QCOMPARE(Settings::readNum(QStringLiteral("/n/int"), 1, &found), -42);
        QVERIFY(found);
        QCOMPARE(Settings::readDouble(QStringLiteral("/n/double"), 1), 0.1);
        QCOMPARE(Settings::readBool(QStringLiteral("/n/off"), true, &found), false);
        QVERIFY(found);
        QCOMPARE(Settings::readNum(QStringLiteral("/n/text")), 7);
        QCOMPARE(Settings::readNum(QStringLiteral("/n/missing"), 5, &found), 5);
        QVERIFY(!found);
    });
}

void SettingsTest::readsWhatAUserTyped_data()
{
    QTest::addColumn<QByteArray>("typed");
    QTest::addColumn<QString>("expected");
    QTest::newRow("plain") << QByteArray("Application=x") << QStringLiteral("x");
    QTest::newRow("unquoted commas")
        << QByteArray("Application=Sans,10,-1") << QStringLiteral("Sans,10,-1");
    QTest::newRow("quoted commas")
        << QByteArray("Application=\"Sans,10\"") << QStringLiteral("Sans,10");
    QTest::newRow("other letter case is another key")
        << QByteArray("application=x") << QStringLiteral("default");
}

void SettingsTest::readsWhatAUserTyped()
{
    QFETCH(QByteArray, typed);
    QFETCH(QString, expected);
    writeFile("[fonts]\n" + typed + '\n');
    QCOMPARE(Settings::read(QStringLiteral("/fonts/Application"), QStringLiteral("default")),
             expected);
}

void SettingsTest::typedValueThatDoesNotFit_data()
{
    QTest::addColumn<QByteArray>("typed");
    QTest::addColumn<bool>("isNumber");
    QTest::addColumn<bool>("isBool");
    QTest::newRow("word") << QByteArray("yes") << false << false;
    QTest::newRow("empty") << QByteArray() << false << false;
    QTest::newRow("too large") << QByteArray("99999999999") << false << false;
    QTest::newRow("two") << QByteArray("2") << true << false;
    QTest::newRow("one") << QByteArray("1") << true << true;
    QTest::newRow("true") << QByteArray("true") << false << true;
}

void SettingsTest::typedValueThatDoesNotFit()
{
    QFETCH(QByteArray, typed);
    QFETCH(bool, isNumber);
    QFETCH(bool, isBool);
    writeFile("[geometry]\nx=" + typed + '\n');
    bool found = !isNumber;
    const int number = Settings::readNum(QStringLiteral("/geometry/x"), 50, &found);
    QCOMPARE(found, isNumber);
    QCOMPARE(number, isNumber ? typed.toInt() : 50);
    found = !isBool;
    QCOMPARE(Settings::readBool(QStringLiteral("/geometry/x"), true, &found), true);
    QCOMPARE(found, isBool);
}

void SettingsTest::refusesKeys_data()
{
    QTest::addColumn<QString>("k");
    QTest::newRow("equals") << QStringLiteral("/a=b");
    QTest::newRow("line end") << QStringLiteral("/a\nb");
    QTest::newRow("carriage return") << QStringLiteral("/a\rb");
    QTest::newRow("nothing behind the prefix") << QStringLiteral("/");
}

void SettingsTest::refusesKeys()
{
    QFETCH(QString, k);
    QVERIFY(!Settings::write(k, QStringLiteral("x")));
    QVERIFY(!Settings::remove(k));
    QCOMPARE(Settings::read(k, QStringLiteral("default")), QStringLiteral("default"));
}

void SettingsTest::removesOneKeyOnly()
{
    Settings::write(QStringLiteral("/a"), 1);
    Settings::write(QStringLiteral("/a/b"), 2);
    Settings::write(QStringLiteral("/a/b/c"), QStringList{QStringLiteral("x"), QString()});
    QVERIFY(Settings::remove(QStringLiteral("/a")));
    QVERIFY(!Settings::remove(QStringLiteral("/a")));
    inThisRunAndTheNext([] {
        QCOMPARE(Settings::readNum(QStringLiteral("/a"), -1), -1);
        QCOMPARE(Settings::readNum(QStringLiteral("/a/b"), -1), 2);
        QCOMPARE(Settings::readList(QStringLiteral("/a/b/c")).size(), 2);
    });
}

void SettingsTest::keysOfOtherPrefixesStayApart()
{
    Settings::write(QStringLiteral("/geometry/x"), 1);
    QCOMPARE(Settings::readFull(QStringLiteral("/vesk/geometry/x")), QStringLiteral("1"));
    QCOMPARE(Settings::readFull(QStringLiteral("//vesk//geometry/x/")), QStringLiteral("1"));
    Settings::setKeyPrefix(QStringLiteral("/"));
    inThisRunAndTheNext([] {
        QCOMPARE(Settings::readNum(QStringLiteral("/geometry/x"), -1), -1);
        QCOMPARE(Settings::readNum(QStringLiteral("/vesk/geometry/x"), -1), 1);
    });
    Settings::write(QStringLiteral("/geometry/x"), 2);
    inThisRunAndTheNext([] {
        QCOMPARE(Settings::readNum(QStringLiteral("/vesk/geometry/x")), 1);
        QCOMPARE(Settings::readNum(QStringLiteral("/geometry/x")), 2);
    });
}

void SettingsTest::keepsACopyOfADamagedFile()
{
    const QByteArray damaged = "[geometry]\nx=7\nprecious line without a sign\n[fonts]\n\xff\xfe\n";
    writeFile(damaged);
    QCOMPARE(Settings::readNum(QStringLiteral("/geometry/x")), 7);
    Settings::write(QStringLiteral("/geometry/y"), 8);
    Settings::forceWrite();
    QFile copy(path + QStringLiteral(".damaged"));
    QVERIFY(copy.open(QIODevice::ReadOnly));
    QCOMPARE(copy.readAll(), damaged);
    QCOMPARE(Settings::readNum(QStringLiteral("/geometry/x")), 7);
    QCOMPARE(Settings::readNum(QStringLiteral("/geometry/y")), 8);
}

void SettingsTest::livesWithoutAUsableFile()
{
    QVERIFY(QDir().mkpath(path));
    QCOMPARE(Settings::readNum(QStringLiteral("/geometry/x"), 50), 50);
    QVERIFY(Settings::write(QStringLiteral("/geometry/x"), 1));
    Settings::forceWrite();
    QCOMPARE(Settings::readNum(QStringLiteral("/geometry/x"), 50), 50);
}

void SettingsTest::environmentNamesTheFile()
{
    const QString other = dir->filePath(QStringLiteral("other.ini"));
    Settings::forceWrite();
    Settings::setFileName({});
    qputenv("VESK_SETTINGS", QFile::encodeName(other));
    Settings::write(QStringLiteral("/a/b"), 3);
    Settings::forceWrite();
    QVERIFY(QFile::exists(other));
    qunsetenv("VESK_SETTINGS");
    // With neither, it is a file of the user's configuration folder.
    QStandardPaths::setTestModeEnabled(true);
    const QString standard = Settings::self()->fileName();
    Settings::forceWrite();
    QStandardPaths::setTestModeEnabled(false);
    QVERIFY2(standard.endsWith(QStringLiteral("/vesk/vesk.ini")), qPrintable(standard));
}

void SettingsTest::installPathEndsWithASeparator()
{
    for (const QString &folder : {QStringLiteral("/opt/vesk"), QStringLiteral("/opt/vesk/")}) {
        Settings::setInstallPath(folder);
        QCOMPARE(Settings::installPath(), QStringLiteral("/opt/vesk/"));
    }
}

QTEST_GUILESS_MAIN(SettingsTest)
#include "tst_settings.moc"
