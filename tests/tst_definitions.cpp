#include "tests/testing.h"
#include "zvwidgets/zveditor/highlight.h"
#include "zvwidgets/zveditor/highlight/builtindefinitions.h"
#include "zvwidgets/zveditor/highlight/highlightdefinition.h"
#include "zvwidgets/zveditor/highlight/highlightmanager.h"
#include "zvwidgets/zveditor/highlight/highlightscanner.h"
#include "zvwidgets/zveditor/highlight/highlightsettings.h"
#include "zvwidgets/zveditor/pattern/filemask.h"
#include "zvwidgets/zveditor/textline.h"

#include <QColor>
#include <QDir>
#include <QDomDocument>
#include <QFile>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

#include <cmath>

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

QStringList wordList(const QDomElement &rule)
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
            lengths.append(QString::number(wordList(rule).size()));
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
QString firstDifference(const QString &key, const QStringList &lines)
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
        }
        context = next;
    }
    return {};
}

/// Signs that open, close or escape something in one of the languages.
const QStringList &signs()
{
    static const QStringList list =
        QStringLiteral("\"|'|\\|/*|*/|//|#|%|--|<|>|</|<!--|-->|<script>|</script>|<?php|?>|<%|%>|"
                       "<%--|--%>|<![CDATA[|]]>|&|&amp;|;|=|=~ s/|\"\"\"|'''|=begin|=end|%q(|$|@|"
                       "{|}|(|)|[|]|a|0x1f|1'0|.5|é| |class |def |import |<a href=|\\section{|"
                       "#include |R\"(|E'|$$|<dtml-var |&dtml-|<cfset "
                       "|#a#|`|?|!|=>|</cfscript>|<c:if | R\"(|)\"|%Q{|#[")
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
    void endOfLine_data();
    void endOfLine();
    void words_data();
    void words();
    void contrast_data() { everyKey(); }
    void contrast();
    void scannersAgree_data() { everyKey(); }
    void scannersAgree();
    void longLinesEnd_data() { everyKey(); }
    void longLinesEnd();
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
            const QStringList list = wordList(rule);
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

/// Where the line after the given ones goes on: what misleads a scanner that only looks
/// for the next sign.
void TestDefinitions::endOfLine_data()
{
    const Rows<QString, QString, QString> row("key", "text", "context");
    for (const char *key : {"html", "cfm", "dtml", "jsp", "php"}) {
        const auto page = [&](const char *claim, const char *text, const char *context) {
            row(qPrintable(QLatin1String(key) + ": "_L1 + QLatin1String(claim)), key, text,
                context);
        };
        page("script with source", "<script src='a.js'></script>", "normal");
        page("sign in a value", "<script data-x=\"a > b\" src=a>b()", "js");
        page("and its end", "<script data-x='a > b'>b()</script><p>", "normal");
        page("apostrophe in a bare value", "<script src=it's>'a'</script>", "normal");
        page("other tag", "<scripted>", "normal");
        page("comment before the end", "<script>\n// init</script>", "normal");
        page("hidden script", "<script><!--\na();\n//--></script>", "normal");
        page("string before the end", "<script>a = \"b</script>", "normal");
        page("apostrophe before the end", "<script>a = 'b</script>", "normal");
        page("block comment before the end", "<script>/* a\nb</script>", "normal");
        page("end in a comment's name", "<script>// </scripts", "js");
        page("string ends with its line", "<script>a = \"b", "js");
        page("but for a backslash", "<script>a = \"b\\", "string");
        page("block comment", "<script>a = 1 /* b", "multiLineComment");
        page("slashes in a template", "<script>a = `http://b/*`", "js");
        page("quotes in a template", "<script>a = `b \"\\` c` + '\"'; /* \"", "multiLineComment");
        page("slash in a set", "<script>a = /[/\"]/, b /* \"", "multiLineComment");
        page("expression of an arrow", "<script>a => /\"/.test(a)", "js");
        page("division", "<script>a = b / \"/*\" / c", "js");
        page("page comment", "<p><!-- <script>", "comment1");
        page("closed on a later line", "<!--\n<script>\n-->", "normal");
        page("less than", "1 <3 and <-1", "normal");
        page("open tag", "<p class='a'", "tag");
        page("sign in an attribute", "<p title=\"a > b\" id='>'", "tag");
        page("markup declaration", "<!DOCTYPE html", "tag");
    }
    row("jsp: code in a script's tag", "jsp", "<script src=\"<%= a > b %>/c.js\"></script>",
        "normal");
    row("jsp: code in a bare value", "jsp", "<p id=<%= a > b %> class", "tag");
    row("jsp: code in a tag", "jsp", "<p <% if (a > b) %> class", "tag");
    row("jsp: code in a string", "jsp", "<script>a = \"<%= b(\"c\") %>\", d = '<%= '\"' %>'", "js");
    row("jsp: comment in code", "jsp", "<% // it's %><p>", "normal");
    row("php: code in a script's tag", "php", "<script src=\"<?php echo $a; ?>/b.js\"></script>",
        "normal");
    row("php: code in a bare value", "php", "<p id=<?= $a->b ?> class", "tag");
    row("php: code in a string", "php", "<script>a = '<?php print $x['a'];?>'; /*",
        "multiLineComment");
    row("php: comment ends with the block", "php", "<?php // it's ?>", "normal");
    row("php: attribute", "php", "<?php\n#[A('b", "phpstring2");
    row("php: number sign", "php", "<?php\n# it's", "php");
    row("dtml: tag in a script's tag", "dtml", "<script src=\"<dtml-var a>/b.js\"></script>",
        "normal");
    for (const char *key : {"cpp", "ch"}) {
        const auto code = [&](const char *claim, const char *text, const char *context) {
            row(qPrintable(QLatin1String(key) + ": "_L1 + QLatin1String(claim)), key, text,
                context);
        };
        code("raw string", "a = R\"(b \"c/* \\)\" + LR\"()\";", "normal");
        code("comment in a string", "a = \"/*\" // /*", "normal");
        code("directive goes on", "#define a \"//\" '\"' \\", "preprocessor");
        code("directive ends", "#define a '\"' <b>", "normal");
        code("comment in a directive", "#define a /* b", "multiLineComment");
        code("separators of digits", "a = 1'000'000; /* ' */ '\"'", "normal");
    }
    for (const char *key : {"sql", "db2", "pgsql", "plsql", "sbsql", "msssql"})
        row(qPrintable(QLatin1String(key) + ": doubled quotes"_L1), key, "a = '' || 'it''''s -- b",
            "string2");
    row("mysql: escape", "mysql", "a = 'it\\'s -- b", "string2");
    row("mysql: comment", "mysql", "a # it's", "normal");
    row("pgsql: escape string", "pgsql", "a = E'\\'' || '", "string2");
    row("msssql: brackets", "msssql", "a = [it's]", "normal");
    row("java: text block", "java", "a = \"\"\"b \"c\" //", "string");
    row("xml: section", "xml", "<a><![CDATA[ <b> --> \"", "cdata");
    row("ruby: argument without brackets", "ruby", "a.scan /\"x/", "normal");
    row("ruby: division", "ruby", "a / b + \"c / d", "multistring2");
    row("ruby: character", "ruby", "a{?\"}; b", "normal");
    row("ruby: words in braces", "ruby", "%Q{a #{b} c} + \"", "multistring2");
    row("perl: variable of a sign", "perl", "$#a; $a =~ /\"/; # \"", "normal");
    row("python: triple quotes", "python", "a = '''b", "multistring1");
    row("cfm: script", "cfm", "<cfscript>\n// set x</cfscript>", "normal");
}

void TestDefinitions::endOfLine()
{
    QFETCH(const QString, key);
    QFETCH(const QString, text);
    QFETCH(const QString, context);
    TextHighlight highlight(key, nullptr);
    int number = 0;
    for (const QString &line : text.split(u'\n')) {
        TextLine present(line);
        number = highlight.doHighlight(number, &present);
    }
    QCOMPARE(names(key, "Break").at(number), context);
}

/// Words that have to be coloured, each at its place.
void TestDefinitions::words_data()
{
    const Rows<QString, QString, QString, QString> row("key", "before", "list", "item");
    row("JavaScript", "html", "<script>",
        "async await class default delete do export finally import in instanceof let of return "
        "throw typeof void while yield",
        "jsKeyword");
    row("numbers of JavaScript", "html", "<script>", "0b11 0B1 0xFFn", "jsHex");
    row("tags", "html", "<", "acronym details embed figcaption mark source summary template time",
        "Tag");
    row("PHP", "php", "<?php ",
        "and clone declare die do empty endif exit final finally fn instanceof isset list match "
        "or readonly unset xor yield",
        "phpKeyword");
    row("DTML", "dtml", "<", "dtml-with dtml-var dtml-in", "dtmlTag");
    row("PG/SQL", "pgsql", "",
        "if loop while elsif exit raise perform foreach RETURNING OVER PARTITION WINDOW "
        "concurrently "
        "current_schema variadic materialized jsonb uuid tablesample",
        "Keyword");
    row("SQL", "sql", "",
        "INDEX REPLACE return returns loop TRUNCATE boolean blob clob savepoint call new old",
        "Keyword");
    row("MY/SQL", "mysql", "",
        "RETURNS temporary engine offset lines sql sqlexception sqlstate reads modifies schemas "
        "release spatial low_priority distinctrow",
        "Keyword");
    row("PL/SQL", "plsql", "", "collect initial offline parallel accsess", "Keyword");
    row("DB2/SQL", "db2", "", "replace bufferpool stogroup vcat priqty", "Keyword");
    row("SB/SQL", "sbsql", "", "nullif work bulk errlvl level national output read shared",
        "Keyword");
    row("MSS/SQL", "msssql", "", "image try_convert", "Keyword");
    row("Ch", "ch", "", "fprintf importf remvar showvar", "Keyword");
    row("hexadecimal fractions", "cpp", "", "0x1.8p3 0xAp-2f 1.5e3", "Float");
    row("numbers of PHP", "php", "<?php ", "0b11 0xFF_FF", "phpHex");
    row("names with signs", "ruby", "def ", "name? name! name= self.name? == <=> []= self.[]",
        "FunctionDef");
    row("pairs of quotes", "sql", "'", "''''", "Char");
    row("tags of a library", "jsp", "<", "c:if jsp:useBean /c:if", "jspDirective");
}

void TestDefinitions::words()
{
    QFETCH(const QString, key);
    QFETCH(const QString, before);
    QFETCH(const QString, list);
    QFETCH(const QString, item);
    TextHighlight highlight(key, nullptr);
    for (const QString &word : list.split(u' ')) {
        TextLine line(before + word + u' ');
        highlight.doHighlight(0, &line);
        highlight.highlight(&line);
        for (const qsizetype at : {before.size(), before.size() + word.size() - 1})
            QCOMPARE(word + u' ' + highlight.attribute(line.attribute(int(at)))->itemName,
                     word + u' ' + item);
    }
}

/// Text has to be readable on white paper; the colours of Python are fixed.
void TestDefinitions::contrast()
{
    QFETCH(const QString, key);
    static const QStringList fixed = {u"Function"_s, u"ClassDef"_s, u"Number"_s, u"Module"_s,
                                      u"String"_s,   u"Char"_s,     u"Memo"_s,   u"EscapedChar"_s};
    const auto linear = [](double part) {
        return part <= 0.03928 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    QStringList pale;
    for (const QDomElement &item : section(key, "Items")) {
        const QColor color(item.attribute(u"color"_s));
        const double luminance = 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
                                 0.0722 * linear(color.blueF());
        if (1.05 / (luminance + 0.05) < 4.5)
            pale.append(item.tagName());
    }
    QCOMPARE(pale, key == "python"_L1 ? fixed : QStringList());
}

void TestDefinitions::scannersAgree()
{
    QFETCH(const QString, key);
    QStringList files;
    for (const QString &other : keys())
        files.append(samplePath(other));
    // Sources of this tree: what no sample was made for.
    for (const char *name : {"README.md", "docs/highlight-definitions.md", "scripts/bench",
                             "tests/tst_definitions.cpp", "resources/highlight/shared.xml",
                             "zvwidgets/zveditor/pattern/patternsyntax.cpp"})
        files.append(QStringLiteral(TEST_DATA_DIR "/../../") + QLatin1String(name));
    for (const QString &file : std::as_const(files)) {
        const QString found = firstDifference(key, linesOf(file));
        QVERIFY2(found.isEmpty(), qPrintable(file + ": "_L1 + found));
    }
    QRandomGenerator random(20);
    for (int i = 0; i < 400; ++i) {
        QStringList lines;
        for (int n = 0; n < 6; ++n)
            lines.append(randomLine(&random, random.bounded(12)));
        const QString found = firstDifference(key, lines);
        QVERIFY2(found.isEmpty(), qPrintable(found));
    }
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

void TestDefinitions::documentedExample()
{
    const QByteArray example = readFile(dataPath(u"example-ini.xml"_s));
    const QByteArray document =
        readFile(QStringLiteral(TEST_DATA_DIR "/../../docs/highlight-definitions.md"));
    QVERIFY(!example.isEmpty());
    QVERIFY2(document.contains("```xml\n" + example + "```\n"), "the document shows another file");

    const QTemporaryDir dir;
    writeFile(dir.filePath(u"example-ini"_s), example);
    HighlightSettings settings;
    settings.setResourcesDir(dir.path());
    const auto registry = TextHighlightManager::buildRegistry(&settings);
    const HighlightData *const ini = registry->find(u"Ini"_s);
    QVERIFY(ini && matchesFileMasks(ini->mask, u"vesk.ini"_s));

    TextHighlight highlight(ini->path, &settings);
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
