#include "tests/testing.h"
#include "zvwidgets/zveditor/highlight.h"
#include "zvwidgets/zveditor/highlight/highlightdefinition.h"
#include "zvwidgets/zveditor/highlight/highlightmanager.h"
#include "zvwidgets/zveditor/highlight/highlightscanner.h"
#include "zvwidgets/zveditor/pattern/filemask.h"
#include "zvwidgets/zveditor/textline.h"
#include "zvwidgets/zveditor/textmanager.h"

#include <QColor>
#include <QDir>
#include <QDirIterator>
#include <QDomDocument>
#include <QFile>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>

using namespace Qt::StringLiterals;
using namespace zvwidgets;

namespace {

/// The built-in definitions: each has a reference file.
QStringList keys()
{
    QStringList all = QDir(QStringLiteral(TEST_DATA_DIR "/highlight")).entryList({u"*.ref"_s});
    for (QString &key : all)
        key.chop(4);
    return all;
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
    return childElements(definition(key).firstChildElement(QLatin1String(name)));
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
    return rule.attribute(u"keyword"_s).split(u' ', Qt::SkipEmptyParts);
}

QString dataPath(const QString &name)
{
    return QStringLiteral(TEST_DATA_DIR "/highlight/") + name;
}

QStringList linesOf(const QString &path)
{
    QString text = QString::fromUtf8(readFile(path));
    text.replace("\r\n"_L1, "\n"_L1);
    return text.split(u'\n');
}

/// Sample file of each key; a definition without one has no language.
QString samplePath(const QString &key)
{
    const QStringList found = QDir(dataPath(QString())).entryList({key + ".*"_L1}, QDir::Files);
    for (const QString &file : found) {
        if (!file.endsWith(".ref"_L1))
            return dataPath(file);
    }
    return {};
}

/// What the definition holds: its name and masks, its items with colour and font
/// type, the contexts with the number of their rules, the lengths of its word lists.
QString outline(const QString &key)
{
    const QDomElement root = definition(key);
    const TextHighlight highlight(key, nullptr);
    QStringList items;
    for (int i = 0; i < section(key, "Items").size(); ++i) {
        const TextAttribute &item = *highlight.attribute(i);
        items.append(item.itemName + u' ' + item.color.name() + u' ' +
                     QString::number(item.fontType) +
                     (item.usebg ? u' ' + item.bgcolor.name() : QString()));
    }
    QString text = root.attribute(u"name"_s) + u": "_s + root.attribute(u"wildcards"_s) + u'\n' +
                   items.join(u", "_s) + u'\n';
    for (const char *sectionName : {"Break", "Contents"}) {
        QStringList contexts;
        for (const QDomElement &context : section(key, sectionName))
            contexts.append(u"%1 %2"_s.arg(context.tagName()).arg(childElements(context).size()));
        text += QLatin1String(sectionName) + u": "_s + contexts.join(u", "_s) + u'\n';
    }
    QStringList lengths;
    for (const QDomElement &rule : rules(key, "Contents")) {
        if (rule.hasAttribute(u"keyword"_s))
            lengths.append(QString::number(words(rule).size()));
    }
    return text + u"Words: "_s + lengths.join(u' ') + u"\n\n"_s;
}

/// Calls \a run for each run of one attribute in the coloured \a line.
template <typename Run>
void forEachRun(const TextHighlight &highlight, const TextLine &line, const Run &run)
{
    for (int from = 0, to = 0; from < line.textLength(); from = to) {
        while (to < line.textLength() && line.attribute(to) == line.attribute(from))
            ++to;
        run(highlight.attribute(line.attribute(from))->itemName, from, to);
    }
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
            result += u'{' + contexts.at(context) + "} "_L1;
        forEachRun(highlight, line, [&](const QString &item, int from, int to) {
            result += (from ? u"¦"_s : QString()) + item + u':' + text.mid(from, to - from);
        });
        result += u'\n';
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
    if (context == "tag_val"_L1 || context.startsWith("tagstring"_L1))
        return u"tag"_s;
    const bool inScript = context == "string2"_L1 && breaks.contains("js"_L1);
    return inScript ? u"js"_s : u"normal"_s;
}

/// Lines the two scanners of Python are known to see differently: the reduced one
/// knows neither strings of one line nor comments.
bool isPythonException(const QString &line)
{
    const bool single = line.contains("'''"_L1);
    const bool twice = line.contains("\"\"\""_L1);
    return (single && twice) ||
           ((single || twice) &&
            (line.contains(u'#') || line.contains(u'\\') || line.count(u'"') % 3 != 0 ||
             line.count(u'\'') % 3 != 0 || line.contains("import "_L1) ||
             line.contains("class "_L1) || line.contains("def "_L1) || line.contains("from "_L1)));
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
                (key == "python"_L1 && isPythonException(line)) ||
                (key == "xml"_L1 && (line.contains("<!--"_L1) || line.contains("<![CDATA["_L1)));
            if (!same && !known)
                return u"from %1: Break %2, Contents %3: %4"_s.arg(
                    breaks.at(context), breaks.at(next), contents.at(end), line.left(200));
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
            .split(u'|');
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
    void everyReferenceResolves_data() { everyKey(); }
    void everyReferenceResolves();
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
    void documentedExample();

private:
    static void everyKey();
};

void TestDefinitions::initTestCase()
{
    QCOMPARE(keys().size(), 21);
}

void TestDefinitions::everyKey()
{
    const Rows<QString> row("key");
    for (const QString &key : keys())
        row(qPrintable(key), key);
}

void TestDefinitions::everyReferenceResolves()
{
    QFETCH(const QString, key);
    QVERIFY(qembed_findData(qPrintable(key)).startsWith("<!DOCTYPE Highlight>\n"));
    for (const char *sectionName : {"Break", "Contents"}) {
        const QStringList contexts = names(key, sectionName);
        QCOMPARE(contexts.first(), u"normal"_s);
        for (const QDomElement &rule : rules(key, sectionName)) {
            for (const char *target : {"lineEndContent", "emptyContent"}) {
                const QString name = rule.attribute(QLatin1String(target), contexts.first());
                QVERIFY2(contexts.contains(name), qPrintable(name));
            }
            const QString expression = rule.attribute(u"regexp"_s);
            QVERIFY2(TextPattern(expression).isValid(), qPrintable(expression));
            const QStringList list = words(rule);
            QCOMPARE(QSet<QString>(list.begin(), list.end()).size(), list.size());
            if (rule.attribute(u"caseSensitive"_s) == "false"_L1)
                QCOMPARE(list.join(u' '), list.join(u' ').toLower());
        }
    }
    for (const QDomElement &item : section(key, "Items"))
        QVERIFY(QColor(item.attribute(u"color"_s)).isValid());
}

void TestDefinitions::sample()
{
    QFETCH(const QString, key);
    const QString path = samplePath(key);
    QVERIFY2(!path.isEmpty(), "no sample");
    const QStringList lines = linesOf(path);
    const QByteArray present = (outline(key) + colouring(key, lines)).toUtf8();
    const QString reference = dataPath(key + ".ref"_L1);
    if (qEnvironmentVariableIsSet("VESK_REFRESH_REFERENCES")) {
        writeFile(reference, present);
        return;
    }
    QCOMPARE(difference(present, readFile(reference)), QString());
}

void TestDefinitions::scannersAgree()
{
    QFETCH(const QString, key);
    int exceptions = 0;
    for (const QString &other : keys()) {
        const QString found = firstDifference(key, linesOf(samplePath(other)), &exceptions);
        QVERIFY2(found.isEmpty(), qPrintable(other + ": "_L1 + found));
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
    const Rows<QString, QString, QStringList> row("key", "folder", "masks");
    row("system headers", "cpp", "/usr/include", {u"*.h"_s, u"*.hpp"_s});
    row("C++ library", "cpp", "/usr/include/c++", {u"*"_s});
    row("Python library", "python", "/usr/lib/python3", {u"*.py"_s});
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
        QVERIFY2(found.isEmpty(), qPrintable(file + ": "_L1 + found));
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
            for (const QString &text : {QString(QChar(unit)), QChar(unit) + u" x"_s}) {
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

void TestDefinitions::documentedExample()
{
    const QByteArray example = readFile(dataPath(u"example-ini.xml"_s));
    const QByteArray document =
        readFile(QStringLiteral(TEST_DATA_DIR "/../../docs/highlight-definitions.md"));
    QVERIFY(!example.isEmpty());
    QVERIFY2(document.contains("```xml\n" + example + "```\n"), "the document shows another file");

    const QTemporaryDir dir;
    writeFile(dir.filePath(u"example-ini"_s), example);
    TextEditorManager manager;
    manager.setResourcesDir(dir.path());
    const auto registry = TextHighlightManager::buildRegistry(&manager);
    const HighlightData *const ini = registry->find(u"Ini"_s);
    QVERIFY(ini && matchesFileMasks(ini->mask, u"vesk.ini"_s));

    TextHighlight highlight(ini->path, &manager);
    QStringList items;
    int context = 0;
    for (const auto text :
         {"[main] ; not in the name"_L1, "path = \"a;b"_L1, "; in the string\""_L1, "on=true"_L1}) {
        TextLine line(text);
        context = highlight.doHighlight(context, &line);
        highlight.highlight(&line);
        forEachRun(highlight, line, [&](const QString &item, int, int) { items.append(item); });
    }
    QCOMPARE(items.join(u' '), u"Section Text Comment Key Text String String Key Text Keyword"_s);
}

QTEST_MAIN(TestDefinitions)
#include "tst_definitions.moc"
