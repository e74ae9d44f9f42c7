#include "zvwidgets/zveditor/highlightmanager.h"

#include "zvwidgets/zveditor/filemask.h"
#include "zvwidgets/zveditor/highlight.h"
#include "zvwidgets/zveditor/textmanager.h"

#include <QDir>
#include <QFile>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

#include <sys/stat.h>

using namespace zvwidgets;

namespace {

using Highlight = std::unique_ptr<TextHighlight>;

void write(const QString &path, const QByteArray &data)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(data) != data.size())
        qFatal("cannot write %s", qPrintable(path));
}

QString pathOf(const HighlightDataDict &registry, const QString &name)
{
    const HighlightData *data = registry.find(name);
    return data ? data->path : QString();
}

} // namespace

class TestHighlightManager : public QObject
{
    Q_OBJECT

private slots:
    void orderOfBuiltIns();
    void masks_data();
    void masks();
    void userFiles();
    void noFolder();
    void newerEntryWins();
    void overriddenMasks();
    void choosing_data();
    void choosing();
    void colours();
    void damagedSettings();

private:
    TextEditorManager builtIns;
};

void TestHighlightManager::orderOfBuiltIns()
{
    const QStringList expected =
        QStringLiteral("ColdFusion|XML|Java|NoHighlight|TeX|PHP|JSP|Ch|PG/SQL|DB2/SQL|Ruby|"
                       "MY/SQL|SQL|PL/SQL|Python|HTML|SB/SQL|Perl|DTML - Zope|MSS/SQL|C++")
            .split(u'|');
    builtIns.setResourcesDir(QString());
    QCOMPARE(TextHighlightManager::buildRegistry(&builtIns)->keys(), expected);
}

void TestHighlightManager::masks_data()
{
    QTest::addColumn<QString>("masks");
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("taken");
    struct Row
    {
        const char *name;
        const char *masks;
        const char *file;
        bool taken;
    };
    const Row rows[] = {
        {"ending", "*.cpp; *.h", "a.h", true},
        {"case counts", "*.C", "a.c", false},
        {"the whole name", "*.htm", "a.html", false},
        {"empty masks are none", "*.html; *.htm;", "", false},
        {"blanks separate without semicolon", "*.java *.JAVA", "a.JAVA", true},
        {"blanks do not separate beside a semicolon", "*.a *.b;", "x.b", false},
        {"but belong to the mask", "a *.b;", "a x.b", true},
        {"no mask takes nothing", "", "a", false},
        {"one character", "?.c", "ab.c", false},
        {"star gives way", "*a*b", "aabab", true},
        {"star takes nothing too", "a*", "a", true},
        {"set", "*.[ch]", "x.h", true},
        {"range", "x[0-3]", "x4", false},
        {"all but a set", "[^ab]*", "abc", false},
        {"bracket in a set", "[]]", "]", true},
        {"a set left open is itself", "[ab", "[ab", true},
        {"hidden file", "*rc", ".bashrc", true},
        {"a dot is a dot", "*.cpp", "xcpp", false},
    };
    for (const Row &row : rows)
        QTest::newRow(row.name) << QString::fromUtf8(row.masks) << QString::fromUtf8(row.file)
                                << row.taken;
    QTest::newRow("many stars come to an end")
        << QStringLiteral("*a").repeated(60) + u'b' << QString(5000, u'a') << false;
}

void TestHighlightManager::masks()
{
    QFETCH(QString, masks);
    QFETCH(QString, name);
    QFETCH(bool, taken);
    QCOMPARE(matchesFileMasks(masks, name), taken);
}

void TestHighlightManager::userFiles()
{
    QTemporaryDir folder;
    write(folder.filePath(QStringLiteral("python")), "<H name='Snake' wildcards='*.snake'/>");
    write(folder.filePath(QStringLiteral("mine.xml")), "<H name='Mine' wildcards='*.mine'/>");
    write(folder.filePath(QStringLiteral("plain")), "<H name='NoHighlight' wildcards='*'/>");
    write(folder.filePath(QStringLiteral("broken")), "<H name='Broken'>");
    write(folder.filePath(QStringLiteral("nameless")), "<H wildcards='*'/>");
    write(folder.filePath(QStringLiteral("binary")), QByteArray(1000, '\0'));
    QCOMPARE(::mkfifo(QFile::encodeName(folder.filePath(QStringLiteral("pipe"))), 0600), 0);
    QVERIFY(QDir(folder.path()).mkdir(QStringLiteral("folder")));
    TextEditorManager manager;
    manager.setResourcesDir(folder.path());

    const auto registry = TextHighlightManager::buildRegistry(&manager);
    QCOMPARE(registry->count(), 22);
    QCOMPARE(pathOf(*registry, QStringLiteral("Snake")), QStringLiteral("python"));
    QVERIFY(!registry->find(QStringLiteral("Python")));
    QCOMPARE(pathOf(*registry, QStringLiteral("Mine")), QStringLiteral("mine.xml"));
    QCOMPARE(pathOf(*registry, QStringLiteral("NoHighlight")), QStringLiteral("nohighlight"));
    QCOMPARE(registry->find(QStringLiteral("NoHighlight"))->mask, QString());

    // A path key is a file first, then a built-in key, then plain text.
    QCOMPARE(TextHighlight(QStringLiteral("mine.xml"), &manager).name(), QStringLiteral("Mine"));
    QCOMPARE(TextHighlight(QStringLiteral("cpp"), &manager).name(), QStringLiteral("C++"));
    QCOMPARE(TextHighlight(QStringLiteral("folder"), &manager).name(),
             QStringLiteral("NoHighlight"));
}

/// Without a folder of definitions the one the program was started in is not one.
void TestHighlightManager::noFolder()
{
    QTemporaryDir folder;
    write(folder.filePath(QStringLiteral("ruby")), "<H name='Stone' wildcards='*.rb'/>");
    const QString before = QDir::currentPath();
    QVERIFY(QDir::setCurrent(folder.path()));
    TextEditorManager manager;
    manager.setResourcesDir(QString());
    const auto registry = TextHighlightManager::buildRegistry(&manager);
    const QString name = TextHighlight(QStringLiteral("ruby"), &manager).name();
    manager.setResourcesDir(folder.filePath(QStringLiteral("missing")));
    const int count = TextHighlightManager::buildRegistry(&manager)->count();
    QVERIFY(QDir::setCurrent(before));
    QVERIFY(!registry->find(QStringLiteral("Stone")));
    QCOMPARE(name, QStringLiteral("Ruby"));
    QCOMPARE(count, 21);
}

void TestHighlightManager::newerEntryWins()
{
    HighlightDataDict registry;
    for (const char *path : {"old", "new"})
        registry.insert(std::make_unique<HighlightData>(
            HighlightData{QStringLiteral("X"), QString::fromLatin1(path), QString()}));
    QCOMPARE(pathOf(registry, QStringLiteral("X")), QStringLiteral("new"));
    QCOMPARE(registry.entries().first()->path, QStringLiteral("new"));
    QCOMPARE(registry.count(), 2);
    QVERIFY(!registry.find(QStringLiteral("x")));
}

void TestHighlightManager::overriddenMasks()
{
    QTemporaryDir folder;
    QSettings settings(folder.filePath(QStringLiteral("settings.ini")), QSettings::IniFormat);
    settings.setValue(QStringLiteral("/zveditor/hl/Python wildcards"), QStringLiteral("*.snake"));
    settings.setValue(QStringLiteral("/zveditor/hl/DB2/SQL wildcards"), QString());
    settings.setValue(QStringLiteral("/other/hl/Ruby wildcards"), QStringLiteral("*.stone"));
    TextEditorManager manager;
    manager.setResourcesDir(QString());
    manager.setGlobalConfig(&settings);
    const auto mask = [&manager](const char *name) {
        const auto registry = TextHighlightManager::buildRegistry(&manager);
        return registry->find(QLatin1String(name))->mask;
    };
    QCOMPARE(mask("Python"), QStringLiteral("*.snake"));
    QCOMPARE(mask("DB2/SQL"), QString());
    QCOMPARE(mask("Ruby"), QStringLiteral("*.rb"));
    manager.setHlSettingsKey(QStringLiteral("/other/hl"));
    QCOMPARE(mask("Ruby"), QStringLiteral("*.stone"));
    QCOMPARE(mask("Python"), QStringLiteral("*.py"));
}

void TestHighlightManager::choosing_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("name");
    const char *const rows[][2] = {{"a.cpp", "C++"},
                                   {"a.h", "C++"},
                                   {"/x/y.py/a.rb", "Ruby"},
                                   {"q.sql", "PG/SQL"},
                                   {"a.CPP", "NoHighlight"},
                                   {"", "NoHighlight"},
                                   {"Makefile", "NoHighlight"},
                                   {"x.ui", "XML"}};
    for (const auto &row : rows)
        QTest::newRow(row[0]) << QString::fromLatin1(row[0]) << QString::fromLatin1(row[1]);
}

void TestHighlightManager::choosing()
{
    QFETCH(QString, file);
    QFETCH(QString, name);
    builtIns.setResourcesDir(QString());
    const Highlight found(TextHighlightManager::findHighlight(&builtIns, file));
    QCOMPARE(found->name(), name);
    const Highlight named(TextHighlightManager::highlight(&builtIns, name));
    QCOMPARE(named->name(), name);
    const Highlight unknown(TextHighlightManager::highlight(&builtIns, file));
    QCOMPARE(unknown->name(), QStringLiteral("NoHighlight"));

    // A change of masks counts at once.
    HighlightData *data = TextHighlightManager::highlights(&builtIns).find(QStringLiteral("TeX"));
    const QString masks = std::exchange(data->mask, QStringLiteral("*.new"));
    const Highlight changed(
        TextHighlightManager::findHighlight(&builtIns, QStringLiteral("a.new")));
    data->mask = masks;
    QCOMPARE(changed->name(), QStringLiteral("TeX"));
}

void TestHighlightManager::colours()
{
    QTemporaryDir folder;
    QSettings settings(folder.filePath(QStringLiteral("settings.ini")), QSettings::IniFormat);
    const QString item = QStringLiteral("/zveditor/hl/Python/Keyword");
    settings.setValue(item + QStringLiteral("/style"), QStringLiteral("ib"));
    settings.setValue(item + QStringLiteral("/color"), QStringLiteral("#010203"));
    settings.setValue(item + QStringLiteral("/bgcolor"), QStringLiteral("#040506"));
    settings.setValue(QStringLiteral("/zveditor/hl/Python/Gone/color"), QStringLiteral("#070809"));
    TextEditorManager manager;
    manager.setResourcesDir(QString());
    const TextHighlight before(QStringLiteral("python"), &manager);
    manager.setGlobalConfig(&settings);
    const TextHighlight after(QStringLiteral("python"), &manager);

    QCOMPARE(before.attribute(1)->itemName, QStringLiteral("Keyword"));
    QCOMPARE(before.attribute(1)->color, QColor(0x0f, 0x0f, 0xf0));
    QCOMPARE(before.attribute(1)->fontType, 0);
    QVERIFY(!before.attribute(1)->usebg);
    QCOMPARE(after.attribute(1)->color, QColor(1, 2, 3));
    QCOMPARE(after.attribute(1)->bgcolor, QColor(4, 5, 6));
    QVERIFY(after.attribute(1)->usebg);
    QCOMPARE(after.attribute(1)->fontType, 3);
    QCOMPARE(after.attribute(2)->color, before.attribute(2)->color);

    // An empty background takes the item's own away.
    settings.setValue(item + QStringLiteral("/bgcolor"), QString());
    QVERIFY(!TextHighlight(QStringLiteral("python"), &manager).attribute(1)->usebg);
}

/// Masks typed into the file by hand: an unquoted comma makes a list of them.
void TestHighlightManager::damagedSettings()
{
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("settings.ini"));
    write(path, "[zveditor]\nhl\\TeX%20wildcards=*.a,*.b\n");
    const QSettings settings(path, QSettings::IniFormat);
    const QString key = QStringLiteral("/zveditor/hl/TeX wildcards");
    QCOMPARE(highlightSetting(&settings, key, QString()), QStringLiteral("*.a,*.b"));
    QCOMPARE(highlightSetting(nullptr, key, QStringLiteral("x")), QStringLiteral("x"));
}

QTEST_MAIN(TestHighlightManager)
#include "tst_highlightmanager.moc"
