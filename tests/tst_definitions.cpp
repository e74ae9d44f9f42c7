#include "zvwidgets/zveditor/filemask.h"
#include "zvwidgets/zveditor/highlight.h"
#include "zvwidgets/zveditor/highlightdefinition.h"
#include "zvwidgets/zveditor/highlightmanager.h"
#include "zvwidgets/zveditor/highlightscanner.h"
#include "zvwidgets/zveditor/textline.h"
#include "zvwidgets/zveditor/textmanager.h"

#include <QColor>
#include <QDir>
#include <QDirIterator>
#include <QDomDocument>
#include <QFile>
#include <QRandomGenerator>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>

using namespace zvwidgets;

namespace {

/// What a built-in definition has to hold.
struct Row
{
    const char *key;
    const char *name;
    const char *wildcards;
    int items;
    int breaks;
    int contents;
    int rules;        ///< of Contents
    QList<int> words; ///< of its keyword lists, in any order
};

const QList<Row> &table()
{
    static const QList<Row> rows = {
        {"cfm", "ColdFusion", "*.cfm", 27, 7, 12, 72, {20, 3, 93, 1, 1, 1, 83}},
        {"ch", "Ch", "*.ch; *.chf; *.chs; *.CH; *.CHF; *.CHS", 15, 4, 4, 35, {26, 60}},
        {"cpp", "C++", "*.cpp; *.C; *.cxx; *.cc; *.h; *.H", 15, 4, 4, 36, {17, 58, 10}},
        {"db2", "DB2/SQL", "*.sql", 6, 4, 4, 17, {391}},
        {"dtml", "DTML - Zope", "*.dtml", 29, 7, 11, 78, {20, 3, 93, 1, 1, 1, 20}},
        {"html", "HTML", "*.html; *.htm;", 25, 7, 12, 64, {20, 3, 93, 1, 1, 1}},
        {"java", "Java", "*.java *.JAVA", 12, 3, 4, 25, {17, 48}},
        {"jsp", "JSP", "*.jsp; *.JSP", 38, 12, 17, 95, {17, 48, 20, 3, 93, 1, 1, 1}},
        {"mysql", "MY/SQL", "*.sql", 6, 4, 4, 17, {230}},
        {"nohighlight", "NoHighlight", "", 1, 1, 1, 1, {}},
        {"perl", "Perl", "*.pl", 7, 3, 3, 18, {}},
        {"pgsql", "PG/SQL", "*.sql", 6, 4, 4, 19, {530}},
        {"php",
         "PHP",
         "*.PHP; *.PHP3; *.php; *.php3; *.phtml; *.PHTML; *.inc; *.INC",
         39,
         15,
         16,
         93,
         {39, 13, 20, 3, 93, 1, 1, 1}},
        {"plsql", "PL/SQL", "*.sql", 6, 4, 4, 17, {683}},
        {"python", "Python", "*.py", 13, 3, 9, 38, {27, 261, 71}},
        {"ruby", "Ruby", "*.rb", 14, 3, 10, 41, {38, 50, 59}},
        {"sql", "SQL", "*.sql", 6, 4, 4, 18, {233}},
        {"tex", "TeX", "*.tex", 5, 1, 3, 14, {48}},
        {"xml", "XML", "*.xml; *.xls; *.ui; *.rc", 11, 6, 9, 35, {}},
        {"sbsql", "SB/SQL", "*.sql", 6, 4, 4, 18, {319}},
        {"msssql", "MSS/SQL", "*.sql", 6, 4, 4, 18, {406}},
    };
    return rows;
}

QString latin(const char *text)
{
    return QString::fromLatin1(text);
}

/// The root element; read once, for some tests ask often.
QDomElement definition(const QString &key)
{
    static QHash<QString, QDomDocument> documents;
    QDomDocument &document = documents[key];
    if (document.isNull())
        document.setContent(qembed_findData(key.toLatin1().constData()));
    return document.documentElement();
}

QList<QDomElement> childElements(const QDomElement &parent)
{
    QList<QDomElement> list;
    for (QDomElement e = parent.firstChildElement(); !e.isNull(); e = e.nextSiblingElement())
        list.append(e);
    return list;
}

QList<QDomElement> section(const QString &key, const char *name)
{
    return childElements(definition(key).firstChildElement(latin(name)));
}

QStringList names(const QString &key, const char *name)
{
    QStringList list;
    for (const QDomElement &e : section(key, name))
        list.append(e.tagName());
    return list;
}

QList<QDomElement> rules(const QString &key, const char *sectionName)
{
    QList<QDomElement> list;
    for (const QDomElement &context : section(key, sectionName))
        list.append(childElements(context));
    return list;
}

QStringList words(const QDomElement &rule)
{
    return rule.attribute(QStringLiteral("keyword")).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

/// The words of the rules of Contents that colour with \a item.
QStringList wordsOf(const QString &key, const char *item)
{
    QStringList list;
    for (const QDomElement &rule : rules(key, "Contents")) {
        if (rule.attribute(QStringLiteral("item")) == latin(item))
            list += words(rule);
    }
    return list;
}

/// Names of items that rules of Contents colour with.
QSet<QString> usedItems(const QString &key)
{
    QSet<QString> set;
    for (const QDomElement &rule : rules(key, "Contents"))
        set.insert(rule.attribute(QStringLiteral("item")));
    return set;
}

QString dataPath(const QString &name)
{
    return QStringLiteral(TEST_DATA_DIR "/highlight/") + name;
}

QByteArray content(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QStringList linesOf(const QString &path)
{
    QString text = QString::fromUtf8(content(path));
    text.replace(QLatin1String("\r\n"), QLatin1String("\n"));
    return text.split(QLatin1Char('\n'));
}

/// Sample file of each key; a definition without one has no language.
QString samplePath(const QString &key)
{
    const QStringList found =
        QDir(dataPath(QString())).entryList({key + QLatin1String(".*")}, QDir::Files);
    for (const QString &file : found) {
        if (!file.endsWith(QLatin1String(".ref")))
            return dataPath(file);
    }
    return {};
}

/// Writes how \a lines are coloured, one line of runs for each of them.
QString colouring(const QString &key, const QStringList &lines)
{
    TextHighlight highlight(key, nullptr);
    const QStringList contexts = names(key, "Break");
    QString result;
    int context = 0;
    for (const QString &text : lines) {
        TextLine line(text);
        const int next = highlight.doHighlight(context, &line);
        highlight.highlight(&line);
        if (context != 0)
            result += QLatin1Char('{') + contexts.at(context) + QLatin1String("} ");
        for (int from = 0, to = 0; from < text.size(); from = to) {
            while (to < text.size() && line.attribute(to) == line.attribute(from))
                ++to;
            result += from ? QStringLiteral("¦") : QString();
            result += highlight.attribute(line.attribute(from))->itemName + QLatin1Char(':') +
                      text.mid(from, to - from);
        }
        result += QLatin1Char('\n');
        context = next;
    }
    return result;
}

/// The context of Break that stands for a context which only Contents has: where a
/// line goes on whose last construct was cut off by its end.
QString crossing(const QString &context, const QStringList &breaks)
{
    if (breaks.contains(context))
        return context;
    if (context == QLatin1String("tag_val") || context.startsWith(QLatin1String("tagstring")))
        return QStringLiteral("tag");
    const bool inScript =
        context == QLatin1String("string2") && breaks.contains(QLatin1String("js"));
    return inScript ? QStringLiteral("js") : QStringLiteral("normal");
}

/// Lines the two scanners of Python are known to see differently: the reduced one
/// knows neither strings of one line nor comments.
bool isPythonException(const QString &line)
{
    const bool single = line.contains(QLatin1String("'''"));
    const bool twice = line.contains(QLatin1String("\"\"\""));
    return (single && twice) ||
           ((single || twice) &&
            (line.contains(QLatin1Char('#')) || line.contains(QLatin1Char('\\')) ||
             line.count(QLatin1Char('"')) % 3 != 0 || line.count(QLatin1Char('\'')) % 3 != 0 ||
             line.contains(QLatin1String("import ")) || line.contains(QLatin1String("class ")) ||
             line.contains(QLatin1String("def ")) || line.contains(QLatin1String("from "))));
}

/// Compares the scanners on \a lines and returns the first line they differ on.
/// \a exceptions receives the number of differing lines that are known to.
QString firstDifference(const QString &key, const QStringList &lines, int *exceptions)
{
    const auto scanners = highlightDefinition(key, QString());
    const QStringList breaks = names(key, "Break");
    const QStringList contents = names(key, "Contents");
    int context = 0;
    for (const QString &line : lines) {
        const int next = scanners->breakScanner->follow(context, line);
        // xml numbers two contexts differently: a line that begins in one of them
        // is painted by the other, which can say nothing about its end.
        if (breaks.at(context) == contents.at(context)) {
            const int end = scanners->contentScanner->follow(context, line);
            const bool same = crossing(contents.at(end), breaks) == breaks.at(next);
            const bool known =
                (key == QLatin1String("python") && isPythonException(line)) ||
                (key == QLatin1String("xml") && (line.contains(QLatin1String("<!--")) ||
                                                 line.contains(QLatin1String("<![CDATA["))));
            if (!same && !known)
                return QStringLiteral("from %1: Break %2, Contents %3: %4")
                    .arg(breaks.at(context), breaks.at(next), contents.at(end), line.left(200));
            *exceptions += same ? 0 : 1;
        }
        context = next;
    }
    return {};
}

/// Files with \a suffixes below \a root in a fixed order, at most \a count.
QStringList filesBelow(const QString &root, const QStringList &suffixes, int count)
{
    QStringList files;
    QDirIterator walk(root, suffixes, QDir::Files, QDirIterator::Subdirectories);
    while (walk.hasNext())
        files.append(walk.next());
    files.sort();
    return files.mid(0, count);
}

/// Signs that open, close or escape something in one of the languages.
const QStringList &signs()
{
    static const QStringList list =
        QStringLiteral("\"|'|\\|/*|*/|//|#|%|--|<|>|</|<!--|-->|<script>|</script>|<?php|?>|<%|%>|"
                       "<%--|--%>|<![CDATA[|]]>|&|&amp;|;|=|=~ s/|\"\"\"|'''|=begin|=end|%q(|$|@|"
                       "{|}|(|)|[|]|a|0x1f|1'0|.5|é| |class |def |import |<a href=|\\section{|"
                       "#include |R\"(|E'|$$|<dtml-var |&dtml-|<cfset |#a#|`|?|!")
            .split(QLatin1Char('|'));
    return list;
}

QString randomLine(QRandomGenerator *random, int parts)
{
    QString line;
    for (int i = 0; i < parts; ++i)
        line += signs().at(random->bounded(int(signs().size())));
    return line;
}

} // namespace

class TestDefinitions : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void countsAreThoseOfTheTable_data();
    void countsAreThoseOfTheTable();
    void everyReferenceResolves_data() { everyKey(); }
    void everyReferenceResolves();
    void undeclaredAndUnusedItems();
    void contextsThatDiffer();
    void wordsThatNoTokenYields();
    void plainSqlScannerNeverEntersDoubleQuotes();
    void coloursAreAlike();
    void sample_data() { everyKey(); }
    void sample();
    void scannersAgree_data() { everyKey(); }
    void scannersAgree();
    void scannersAgreeOnSourcesOfTheMachine_data();
    void scannersAgreeOnSourcesOfTheMachine();
    void longLinesEnd_data() { everyKey(); }
    void longLinesEnd();
    void followingAlwaysAdvances_data() { everyKey(); }
    void followingAlwaysAdvances();
    void definitionForFile_data();
    void definitionForFile();
    void definitionOfTheUser();
    void documentedExample();

private:
    static void everyKey();
};

void TestDefinitions::initTestCase()
{
    QCOMPARE(table().size(), 21);
}

void TestDefinitions::everyKey()
{
    QTest::addColumn<QString>("key");
    for (const Row &row : table())
        QTest::newRow(row.key) << latin(row.key);
}

void TestDefinitions::countsAreThoseOfTheTable_data()
{
    QTest::addColumn<int>("index");
    for (int i = 0; i < table().size(); ++i)
        QTest::newRow(table().at(i).key) << i;
}

void TestDefinitions::countsAreThoseOfTheTable()
{
    QFETCH(const int, index);
    const Row &row = table().at(index);
    const QString key = latin(row.key);
    const QDomElement root = definition(key);
    QVERIFY(qembed_findData(row.key).startsWith("<!DOCTYPE Highlight>\n"));
    QCOMPARE(root.attribute(QStringLiteral("name")), latin(row.name));
    QCOMPARE(root.attribute(QStringLiteral("wildcards")), latin(row.wildcards));
    QCOMPARE(section(key, "Items").size(), row.items);
    QCOMPARE(section(key, "Break").size(), row.breaks);
    QCOMPARE(section(key, "Contents").size(), row.contents);
    QCOMPARE(rules(key, "Contents").size(), row.rules);
    QList<int> counts;
    for (const QDomElement &rule : rules(key, "Contents")) {
        if (rule.hasAttribute(QStringLiteral("keyword")))
            counts.append(int(words(rule).size()));
    }
    QList<int> expected = row.words;
    std::sort(counts.begin(), counts.end());
    std::sort(expected.begin(), expected.end());
    QCOMPARE(counts, expected);
}

void TestDefinitions::everyReferenceResolves()
{
    QFETCH(const QString, key);
    for (const char *sectionName : {"Break", "Contents"}) {
        const QStringList contexts = names(key, sectionName);
        QCOMPARE(contexts.first(), QStringLiteral("normal"));
        for (const QDomElement &rule : rules(key, sectionName)) {
            for (const char *target : {"lineEndContent", "emptyContent"}) {
                if (rule.hasAttribute(latin(target)))
                    QVERIFY2(contexts.contains(rule.attribute(latin(target))),
                             qPrintable(rule.attribute(latin(target))));
            }
            const QString expression = rule.attribute(QStringLiteral("regexp"));
            QVERIFY2(TextPattern(expression).isValid(), qPrintable(expression));
            const QStringList list = words(rule);
            QCOMPARE(QSet<QString>(list.begin(), list.end()).size(), list.size());
            if (rule.attribute(QStringLiteral("caseSensitive")) == QLatin1String("false"))
                QCOMPARE(list.join(QLatin1Char(' ')), list.join(QLatin1Char(' ')).toLower());
        }
    }
    for (const QDomElement &item : section(key, "Items"))
        QVERIFY(QColor(item.attribute(QStringLiteral("color"))).isValid());
}

void TestDefinitions::undeclaredAndUnusedItems()
{
    QHash<QString, QString> undeclared;
    QHash<QString, QString> unused;
    for (const Row &row : table()) {
        const QStringList declared = names(latin(row.key), "Items");
        const QSet<QString> used = usedItems(latin(row.key));
        QStringList missing;
        for (const QString &item : used) {
            if (!declared.contains(item))
                missing.append(item);
        }
        missing.sort();
        undeclared.insert(latin(row.key), missing.join(QLatin1Char(' ')));
        QStringList idle;
        for (const QString &item : declared) {
            if (!used.contains(item))
                idle.append(item);
        }
        unused.insert(latin(row.key), idle.join(QLatin1Char(' ')));
    }
    for (const Row &row : table()) {
        const QString key = latin(row.key);
        const QString expected = key == QLatin1String("cpp")  ? QStringLiteral("QtKeyword Strings")
                                 : key == QLatin1String("ch") ? QStringLiteral("Strings")
                                                              : QString();
        QCOMPARE(undeclared.value(key), expected);
    }
    for (const char *key : {"cpp", "ch"})
        QCOMPARE(unused.value(latin(key)), QStringLiteral("QtClasses"));
    for (const char *key : {"python", "ruby", "sql", "msssql"})
        QCOMPARE(unused.value(latin(key)), QStringLiteral("EscapedChar"));
    for (const char *key : {"html", "cfm", "dtml", "jsp", "php"})
        QVERIFY(unused.value(latin(key)).contains(QLatin1String("jsDataType")));
    // The style's "u" stands for nothing.
    QCOMPARE(section(QStringLiteral("tex"), "Items").at(3).attribute(QStringLiteral("style")),
             QStringLiteral("bu"));
    const TextHighlight tex(QStringLiteral("tex"), nullptr);
    QCOMPARE(tex.attribute(3)->fontType, 2);
}

void TestDefinitions::contextsThatDiffer()
{
    const QHash<QString, QString> onlyContents = {
        {QStringLiteral("html"), QStringLiteral("string2")},
        {QStringLiteral("cfm"), QStringLiteral("string2")},
        {QStringLiteral("jsp"), QStringLiteral("string2")},
        {QStringLiteral("php"), QStringLiteral("string2")},
        {QStringLiteral("java"), QStringLiteral("class")},
        {QStringLiteral("ruby"), QStringLiteral("RegExp")}};
    for (auto it = onlyContents.begin(); it != onlyContents.end(); ++it) {
        QVERIFY(names(it.key(), "Contents").contains(it.value()));
        QVERIFY(!names(it.key(), "Break").contains(it.value()));
    }
    for (const Row &row : table()) {
        const QString key = latin(row.key);
        const QStringList breaks = names(key, "Break");
        QStringList first = names(key, "Contents").mid(0, breaks.size());
        if (key == QLatin1String("xml")) {
            QCOMPARE(breaks.mid(1, 2).join(QLatin1Char(' ')), QStringLiteral("cdata comment1"));
            QCOMPARE(first.mid(1, 2).join(QLatin1Char(' ')), QStringLiteral("comment1 cdata"));
            first.swapItemsAt(1, 2);
        }
        QCOMPARE(first, breaks);
    }
}

void TestDefinitions::wordsThatNoTokenYields()
{
    QHash<QString, QStringList> unreachable;
    for (const Row &row : table()) {
        for (const QDomElement &rule : rules(latin(row.key), "Contents")) {
            const TextPattern candidate(QLatin1Char('^') +
                                        rule.attribute(QStringLiteral("regexp")));
            for (const QString &word : words(rule)) {
                if (candidate.match(word) != word.size())
                    unreachable[latin(row.key)].append(word);
            }
        }
    }
    QStringList keys = unreachable.keys();
    keys.sort();
    QCOMPARE(keys.join(QLatin1Char(' ')), QStringLiteral("ruby sbsql"));
    QCOMPARE(unreachable.value(QStringLiteral("ruby")), QStringList(QStringLiteral("Pre-defined")));
    const QStringList variables = unreachable.value(QStringLiteral("sbsql"));
    QCOMPARE(variables.size(), 77);
    QCOMPARE(variables.filter(QLatin1String("@@")).size(), 77);

    QVERIFY(wordsOf(QStringLiteral("plsql"), "Keyword").contains(QLatin1String("accsess")));
    QCOMPARE(wordsOf(QStringLiteral("java"), "Type"), wordsOf(QStringLiteral("cpp"), "Type"));
    for (const char *type : {"auto", "uchar", "uint"})
        QVERIFY(wordsOf(QStringLiteral("java"), "Type").contains(latin(type)));
    QCOMPARE(wordsOf(QStringLiteral("tex"), "Keyword").mid(0, 5).join(QLatin1Char(' ')),
             QStringLiteral("delete from insert into select"));
}

void TestDefinitions::plainSqlScannerNeverEntersDoubleQuotes()
{
    for (const Row &row : table()) {
        const QString key = latin(row.key);
        if (latin(row.wildcards) != QLatin1String("*.sql"))
            continue;
        QCOMPARE(names(key, "Break").at(1), QStringLiteral("string1"));
        for (const QDomElement &rule : rules(key, "Break"))
            QVERIFY(rule.attribute(QStringLiteral("lineEndContent")) != QLatin1String("string1"));
    }
}

void TestDefinitions::coloursAreAlike()
{
    const QHash<QString, QString> colours = {{QStringLiteral("Keyword"), QStringLiteral("#0f0ff0")},
                                             {QStringLiteral("String"), QStringLiteral("#009000")},
                                             {QStringLiteral("Char"), QStringLiteral("#ff00ff")},
                                             {QStringLiteral("Memo"), QStringLiteral("#888888")}};
    for (const Row &row : table()) {
        for (const QDomElement &item : section(latin(row.key), "Items")) {
            QString name = item.tagName();
            for (const char *prefix : {"jsp", "js", "php"}) {
                if (name.startsWith(latin(prefix))) {
                    name.remove(0, int(qstrlen(prefix)));
                    break;
                }
            }
            if (colours.contains(name))
                QCOMPARE(item.attribute(QStringLiteral("color")), colours.value(name));
        }
    }
}

void TestDefinitions::sample()
{
    QFETCH(const QString, key);
    const QString path = samplePath(key);
    QVERIFY2(!path.isEmpty(), "no sample");
    const QStringList lines = linesOf(path);
    const QByteArray present = colouring(key, lines).toUtf8();
    const QString reference = dataPath(key + QLatin1String(".ref"));
    if (qEnvironmentVariableIsSet("VESK_REFRESH_REFERENCES")) {
        QFile file(reference);
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(present), present.size());
        return;
    }
    const QStringList expected = QString::fromUtf8(content(reference)).split(QLatin1Char('\n'));
    const QStringList actual = QString::fromUtf8(present).split(QLatin1Char('\n'));
    for (int i = 0; i < int(std::min(expected.size(), actual.size())); ++i)
        QCOMPARE(actual.at(i), expected.at(i));
    QCOMPARE(actual.size(), expected.size());
}

void TestDefinitions::scannersAgree()
{
    QFETCH(const QString, key);
    int exceptions = 0;
    for (const Row &other : table()) {
        const QString found =
            firstDifference(key, linesOf(samplePath(latin(other.key))), &exceptions);
        QVERIFY2(found.isEmpty(), qPrintable(latin(other.key) + QLatin1String(": ") + found));
    }
    QRandomGenerator random(20);
    for (int i = 0; i < 400; ++i) {
        QStringList lines;
        for (int n = 0; n < 6; ++n)
            lines.append(randomLine(&random, random.bounded(12)));
        const QString found = firstDifference(key, lines, &exceptions);
        QVERIFY2(found.isEmpty(), qPrintable(found));
    }
}

void TestDefinitions::scannersAgreeOnSourcesOfTheMachine_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("folder");
    QTest::addColumn<QStringList>("masks");
    QTest::newRow("system headers")
        << QStringLiteral("cpp") << QStringLiteral("/usr/include")
        << QStringList({QStringLiteral("*.h"), QStringLiteral("*.hpp")});
    QTest::newRow("C++ library") << QStringLiteral("cpp") << QStringLiteral("/usr/include/c++")
                                 << QStringList(QStringLiteral("*"));
    QTest::newRow("Python library")
        << QStringLiteral("python") << QStringLiteral("/usr/lib/python3")
        << QStringList(QStringLiteral("*.py"));
}

void TestDefinitions::scannersAgreeOnSourcesOfTheMachine()
{
    QFETCH(const QString, key);
    QFETCH(const QString, folder);
    QFETCH(const QStringList, masks);
    const QStringList files = filesBelow(folder, masks, 400);
    if (files.isEmpty())
        QSKIP("no such sources here");
    int exceptions = 0;
    qsizetype lines = 0;
    for (const QString &file : files) {
        const QStringList text = linesOf(file);
        lines += text.size();
        const QString found = firstDifference(key, text, &exceptions);
        QVERIFY2(found.isEmpty(), qPrintable(file + QLatin1String(": ") + found));
    }
    // What is known to differ has to stay rare, or it would hide what is not known.
    QVERIFY2(exceptions * 10000 <= lines, qPrintable(QString::number(exceptions)));
}

void TestDefinitions::longLinesEnd()
{
    QFETCH(const QString, key);
    // What takes time linear in the text: an expression that is a table.
    const auto scanners = highlightDefinition(key, QString());
    for (const auto *contexts : {&scanners->breaks, &scanners->contents}) {
        for (const auto &context : *contexts) {
            for (const HighlightItem *rule : std::as_const(*context))
                QVERIFY2(rule->regexp.automaton(), qPrintable(rule->regexp.pattern()));
        }
    }
    TextHighlight highlight(key, nullptr);
    QRandomGenerator random(7);
    QStringList units = signs();
    for (int i = 0; i < 20; ++i)
        units.append(randomLine(&random, 3));
    for (const QString &unit : std::as_const(units)) {
        TextLine line(unit.repeated(5000 / int(unit.size())));
        for (int context = 0; context < int(scanners->breaks.size()); ++context) {
            highlight.doHighlight(context, &line);
            highlight.highlight(&line);
            QVERIFY(line.isHighlighted());
        }
    }
}

void TestDefinitions::followingAlwaysAdvances()
{
    QFETCH(const QString, key);
    const auto scanners = highlightDefinition(key, QString());
    for (const auto &context : scanners->breaks) {
        for (char16_t unit = 0; unit < 0x100; ++unit) {
            for (const QString &text : {QString(QChar(unit)), QChar(unit) + QStringLiteral(" x")}) {
                const bool advances =
                    std::any_of(context->begin(), context->end(), [&](const HighlightItem *rule) {
                        return rule->empty != -1 ||
                               rule->find(text.constData(), int(text.size())) > 0;
                    });
                QVERIFY2(advances, qPrintable(text));
            }
        }
    }
}

void TestDefinitions::definitionForFile_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("name");
    const auto row = [](const char *file, const char *name) {
        QTest::newRow(file) << latin(file) << latin(name);
    };
    row("a.sql", "PG/SQL");
    row("a.cpp", "C++");
    row("a.C", "C++");
    row("a.c", "NoHighlight");
    row("a.h", "C++");
    row("a.java", "Java");
    row("a.JAVA", "Java");
    row("a.htm", "HTML");
    row("a.ui", "XML");
    row("a.inc", "PHP");
    row("a.ch", "Ch");
    row("a.dtml", "DTML - Zope");
    row("a.cfm", "ColdFusion");
    row("a.jsp", "JSP");
    row("a.pl", "Perl");
    row("a.py", "Python");
    row("a.rb", "Ruby");
    row("a.tex", "TeX");
    row("/home/x.py/readme", "NoHighlight");
    row("", "NoHighlight");
}

void TestDefinitions::definitionForFile()
{
    QFETCH(const QString, file);
    QFETCH(const QString, name);
    const std::unique_ptr<TextHighlight> found(TextHighlightManager::findHighlight(nullptr, file));
    QCOMPARE(found->name(), name);
}

namespace {

QString winner(const HighlightDataDict &registry, const QString &file)
{
    for (const HighlightData *data : registry.entries()) {
        if (matchesFileMasks(data->mask, file))
            return data->name;
    }
    return {};
}

void write(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(bytes), bytes.size());
}

} // namespace

void TestDefinitions::definitionOfTheUser()
{
    const QTemporaryDir dir;
    TextEditorManager manager;
    manager.setResourcesDir(dir.path());
    QSettings settings(dir.filePath(QStringLiteral("settings")), QSettings::IniFormat);
    manager.setGlobalConfig(&settings);
    manager.setHlSettingsKey(QStringLiteral("/zveditor/hl"));
    QFile::remove(settings.fileName());
    QVERIFY(QDir(dir.path()).mkdir(QStringLiteral("definitions")));
    manager.setResourcesDir(dir.filePath(QStringLiteral("definitions")));
    const auto path = [&dir](const char *name) {
        return dir.filePath(QLatin1String("definitions/") + latin(name));
    };

    QCOMPARE(winner(*TextHighlightManager::buildRegistry(&manager), QStringLiteral("a.sql")),
             QStringLiteral("PG/SQL"));
    QCOMPARE(TextHighlightManager::buildRegistry(&manager)->count(), 21);

    settings.setValue(QStringLiteral("/zveditor/hl/PG/SQL wildcards"), QString());
    settings.setValue(QStringLiteral("/zveditor/hl/TeX wildcards"), QStringLiteral("*.ltx *.py"));
    auto registry = TextHighlightManager::buildRegistry(&manager);
    QCOMPARE(winner(*registry, QStringLiteral("a.sql")), QStringLiteral("DB2/SQL"));
    QCOMPARE(winner(*registry, QStringLiteral("a.py")), QStringLiteral("TeX"));
    QCOMPARE(winner(*registry, QStringLiteral("a.tex")), QString());
    QVERIFY(registry->find(QStringLiteral("PG/SQL")));

    // A file called like a built-in key takes its place, under a name of its own.
    write(path("ruby"),
          "<!DOCTYPE Highlight><Highlight name=\"Mine\" wildcards=\"*.mine; *.cpp\"/>");
    write(path("other"), "<!DOCTYPE Highlight><Highlight name=\"Other\" wildcards=\"*.rb\"/>");
    write(path("plain"),
          "<!DOCTYPE Highlight><Highlight name=\"NoHighlight\" wildcards=\"*.sql\"/>");
    write(path("broken"), "<!DOCTYPE Highlight><Highlight name=\"Broken\" wildcards=\"*.h\">");
    registry = TextHighlightManager::buildRegistry(&manager);
    QVERIFY(!registry->find(QStringLiteral("Ruby")));
    QVERIFY(!registry->find(QStringLiteral("Broken")));
    QCOMPARE(registry->find(QStringLiteral("Mine"))->path, QStringLiteral("ruby"));
    QCOMPARE(winner(*registry, QStringLiteral("a.rb")), QStringLiteral("Other"));
    QCOMPARE(winner(*registry, QStringLiteral("a.mine")), QStringLiteral("Mine"));
    QCOMPARE(registry->find(QStringLiteral("NoHighlight"))->mask, QString());
}

void TestDefinitions::documentedExample()
{
    const QByteArray example = content(dataPath(QStringLiteral("example-ini.xml")));
    const QByteArray document =
        content(QStringLiteral(TEST_DATA_DIR "/../../docs/highlight-definitions.md"));
    QVERIFY(!example.isEmpty());
    QVERIFY2(document.contains("```xml\n" + example + "```\n"), "the document shows another file");

    const QTemporaryDir dir;
    write(dir.filePath(QStringLiteral("example-ini")), example);
    TextEditorManager manager;
    manager.setResourcesDir(dir.path());
    const auto registry = TextHighlightManager::buildRegistry(&manager);
    QCOMPARE(winner(*registry, QStringLiteral("vesk.ini")), QStringLiteral("Ini"));

    TextHighlight highlight(QStringLiteral("example-ini"), &manager);
    QStringList items;
    int context = 0;
    for (const char *text :
         {"[main] ; not in the name", "path = \"a;b", "; in the string\"", "on=true"}) {
        TextLine line(latin(text));
        context = highlight.doHighlight(context, &line);
        highlight.highlight(&line);
        for (int from = 0, to = 0; from < line.textLength(); from = to) {
            while (to < line.textLength() && line.attribute(to) == line.attribute(from))
                ++to;
            items.append(highlight.attribute(line.attribute(from))->itemName);
        }
    }
    QCOMPARE(items.join(QLatin1Char(' ')),
             QStringLiteral("Section Text Comment Key Text String String Key Text Keyword"));
}

QTEST_MAIN(TestDefinitions)
#include "tst_definitions.moc"
