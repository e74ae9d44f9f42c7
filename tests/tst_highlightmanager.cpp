#include "tests/testing.h"
#include "zvwidgets/zveditor/highlight.h"
#include "zvwidgets/zveditor/highlight/highlightmanager.h"
#include "zvwidgets/zveditor/highlight/highlightsettings.h"
#include "zvwidgets/zveditor/highlight/textattribute.h"
#include "zvwidgets/zveditor/pattern/filemask.h"

#include <QDir>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

#include <sys/stat.h>

using namespace Qt::StringLiterals;
using namespace zvwidgets;

namespace {

using Highlight = std::unique_ptr<TextHighlight>;

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
    void masks_data();
    void masks();
    void userFiles();
    void noFolder();
    void newerEntryWins();
    void overriddenMasks();
    void choosing_data();
    void choosing();
    void colours();

private:
    HighlightSettings builtIns;
};

void TestHighlightManager::masks_data()
{
    const Rows<QString, QString, bool> row("masks", "name", "taken");
    row("ending", "*.cpp; *.h", "a.h", true);
    row("case counts", "*.C", "a.c", false);
    row("the whole name", "*.htm", "a.html", false);
    row("empty masks are none", "*.html; *.htm;", "", false);
    row("blanks separate without semicolon", "*.java *.JAVA", "a.JAVA", true);
    row("blanks do not separate beside a semicolon", "*.a *.b;", "x.b", false);
    row("but belong to the mask", "a *.b;", "a x.b", true);
    row("no mask takes nothing", "", "a", false);
    row("one character", "?.c", "ab.c", false);
    row("star gives way", "*a*b", "aabab", true);
    row("star takes nothing too", "a*", "a", true);
    row("set", "*.[ch]", "x.h", true);
    row("range", "x[0-3]", "x4", false);
    row("all but a set", "[^ab]*", "abc", false);
    row("bracket in a set", "[]]", "]", true);
    row("a set left open is itself", "[ab", "[ab", true);
    row("hidden file", "*rc", ".bashrc", true);
    row("a dot is a dot", "*.cpp", "xcpp", false);
    row("many stars come to an end", u"*a"_s.repeated(60) + u'b', QString(5000, u'a'), false);
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
    writeFile(folder.filePath(u"python"_s), "<H name='Snake' wildcards='*.snake'/>");
    writeFile(folder.filePath(u"mine.xml"_s), "<H name='Mine' wildcards='*.mine'/>");
    writeFile(folder.filePath(u"plain"_s), "<H name='NoHighlight' wildcards='*'/>");
    writeFile(folder.filePath(u"broken"_s), "<H name='Broken'>");
    writeFile(folder.filePath(u"nameless"_s), "<H wildcards='*'/>");
    writeFile(folder.filePath(u"binary"_s), QByteArray(1000, '\0'));
    QCOMPARE(::mkfifo(QFile::encodeName(folder.filePath(u"pipe"_s)), 0600), 0);
    QVERIFY(QDir(folder.path()).mkdir(u"folder"_s));
    HighlightSettings hlSettings;
    hlSettings.setResourcesDir(folder.path());

    const auto registry = TextHighlightManager::buildRegistry(&hlSettings);
    QCOMPARE(registry->count(), 22);
    QCOMPARE(pathOf(*registry, u"Snake"_s), u"python"_s);
    QVERIFY(!registry->find(u"Python"_s));
    QCOMPARE(pathOf(*registry, u"Mine"_s), u"mine.xml"_s);
    QCOMPARE(pathOf(*registry, u"NoHighlight"_s), u"nohighlight"_s);
    QCOMPARE(registry->find(u"NoHighlight"_s)->mask, QString());

    // A path key is a file first, then a built-in key, then plain text.
    QCOMPARE(TextHighlight(u"mine.xml"_s, &hlSettings).name(), u"Mine"_s);
    QCOMPARE(TextHighlight(u"cpp"_s, &hlSettings).name(), u"C++"_s);
    QCOMPARE(TextHighlight(u"folder"_s, &hlSettings).name(), u"NoHighlight"_s);
}

/// Without a folder of definitions the one the program was started in is not one.
void TestHighlightManager::noFolder()
{
    QTemporaryDir folder;
    writeFile(folder.filePath(u"ruby"_s), "<H name='Stone' wildcards='*.rb'/>");
    const QString before = QDir::currentPath();
    QVERIFY(QDir::setCurrent(folder.path()));
    HighlightSettings hlSettings;
    hlSettings.setResourcesDir(QString());
    const auto registry = TextHighlightManager::buildRegistry(&hlSettings);
    const QString name = TextHighlight(u"ruby"_s, &hlSettings).name();
    hlSettings.setResourcesDir(folder.filePath(u"missing"_s));
    const int count = TextHighlightManager::buildRegistry(&hlSettings)->count();
    QVERIFY(QDir::setCurrent(before));
    QVERIFY(!registry->find(u"Stone"_s));
    QCOMPARE(name, u"Ruby"_s);
    QCOMPARE(count, 21);
}

void TestHighlightManager::newerEntryWins()
{
    HighlightDataDict registry;
    for (const char *path : {"old", "new"})
        registry.insert(std::make_unique<HighlightData>(
            HighlightData{u"X"_s, QString::fromLatin1(path), QString()}));
    QCOMPARE(pathOf(registry, u"X"_s), u"new"_s);
    QCOMPARE(registry.entries().first()->path, u"new"_s);
    QCOMPARE(registry.count(), 2);
    QVERIFY(!registry.find(u"x"_s));
}

void TestHighlightManager::overriddenMasks()
{
    QTemporaryDir folder;
    QSettings settings(folder.filePath(u"settings.ini"_s), QSettings::IniFormat);
    settings.setValue(u"/zveditor/hl/Python wildcards"_s, u"*.snake"_s);
    settings.setValue(u"/zveditor/hl/DB2/SQL wildcards"_s, QString());
    settings.setValue(u"/other/hl/Ruby wildcards"_s, u"*.stone"_s);
    HighlightSettings hlSettings;
    hlSettings.setResourcesDir(QString());
    hlSettings.setGlobalConfig(&settings);
    const auto mask = [&hlSettings](const char *name) {
        const auto registry = TextHighlightManager::buildRegistry(&hlSettings);
        return registry->find(QLatin1String(name))->mask;
    };
    QCOMPARE(mask("Python"), u"*.snake"_s);
    QCOMPARE(mask("DB2/SQL"), QString());
    QCOMPARE(mask("Ruby"), u"*.rb"_s);
    hlSettings.setHlSettingsKey(u"/other/hl"_s);
    QCOMPARE(mask("Ruby"), u"*.stone"_s);
    QCOMPARE(mask("Python"), u"*.py"_s);
}

void TestHighlightManager::choosing_data()
{
    const Rows<QString> row("name");
    row("a.cpp", "C++");
    row("a.h", "C++");
    row("a.CPP", "NoHighlight");
    row("/x/y.py/a.rb", "Ruby");
    row("/x.py/Makefile", "NoHighlight");
    row("q.sql", "PG/SQL");
    row("", "NoHighlight");
}

void TestHighlightManager::choosing()
{
    QFETCH(QString, name);
    const QString file = QString::fromLatin1(QTest::currentDataTag());
    builtIns.setResourcesDir(QString());
    const Highlight found(TextHighlightManager::findHighlight(&builtIns, file));
    QCOMPARE(found->name(), name);
    const Highlight named(TextHighlightManager::highlight(&builtIns, name));
    QCOMPARE(named->name(), name);
    const Highlight unknown(TextHighlightManager::highlight(&builtIns, file));
    QCOMPARE(unknown->name(), u"NoHighlight"_s);

    // A change of masks counts at once, and the first that takes a name gets it.
    HighlightData *data = TextHighlightManager::highlights(&builtIns).find(u"TeX"_s);
    const QString masks = std::exchange(data->mask, u"*.ltx *.py"_s);
    const Highlight changed(TextHighlightManager::findHighlight(&builtIns, u"a.py"_s));
    data->mask = masks;
    QCOMPARE(changed->name(), u"TeX"_s);
}

void TestHighlightManager::colours()
{
    QTemporaryDir folder;
    QSettings settings(folder.filePath(u"settings.ini"_s), QSettings::IniFormat);
    const QString item = u"/zveditor/hl/Python/Keyword"_s;
    settings.setValue(item + u"/style"_s, u"ib"_s);
    settings.setValue(item + u"/color"_s, u"#010203"_s);
    settings.setValue(item + u"/bgcolor"_s, u"#040506"_s);
    settings.setValue(u"/zveditor/hl/Python/Gone/color"_s, u"#070809"_s);
    HighlightSettings hlSettings;
    hlSettings.setResourcesDir(QString());
    const TextHighlight before(u"python"_s, &hlSettings);
    hlSettings.setGlobalConfig(&settings);
    const TextHighlight after(u"python"_s, &hlSettings);

    QCOMPARE(before.attribute(1)->itemName, u"Keyword"_s);
    QCOMPARE(before.attribute(1)->color, QColor(0x0f, 0x0f, 0xf0));
    QCOMPARE(before.attribute(1)->fontType, 0);
    QVERIFY(!before.attribute(1)->usebg);
    QCOMPARE(after.attribute(1)->color, QColor(1, 2, 3));
    QCOMPARE(after.attribute(1)->bgcolor, QColor(4, 5, 6));
    QVERIFY(after.attribute(1)->usebg);
    QCOMPARE(after.attribute(1)->fontType, 3);
    QCOMPARE(after.attribute(2)->color, before.attribute(2)->color);

    // An empty background takes the item's own away.
    settings.setValue(item + u"/bgcolor"_s, QString());
    QVERIFY(!TextHighlight(u"python"_s, &hlSettings).attribute(1)->usebg);
}

QTEST_MAIN(TestHighlightManager)
#include "tst_highlightmanager.moc"
