#include "zvwidgets/zveditor/highlight.h"

#include "tests/testing.h"
#include "zvwidgets/zveditor/highlight/highlightmanager.h"
#include "zvwidgets/zveditor/highlight/highlightsettings.h"
#include "zvwidgets/zveditor/lines/scanmarks.h"
#include "zvwidgets/zveditor/textline.h"

#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;
using namespace zvwidgets;

namespace {

/// A definition of two sections, with items Text, A, B and C.
QString definitionXml(const QString &breaks, const QString &contents)
{
    return u"<!DOCTYPE Highlight><Highlight name=\"T\"><Items><Text/><A/><B/><C/>"
           "</Items><Break>%1</Break><Contents>%2</Contents></Highlight>"_s.arg(breaks, contents);
}

/// Walks the rule lists as they stand, each rule asked at each place; the plain form of
/// what the scanners do.
class Walker
{
public:
    explicit Walker(const TextHighlight &highlight) : hl(highlight) {}

    int follow(int ctx, const QString &text) const
    {
        int at = 0;
        int handOvers = 0;
        while (at < text.size()) {
            bool advanced = false;
            const int before = ctx;
            for (const HighlightItem *rule : *hl.ctnList[ctx]) {
                const int length = rule->find(text.constData() + at, int(text.size()) - at);
                if (length > 0) {
                    at += length;
                    handOvers = 0;
                    advanced = true;
                } else if (rule->empty >= 0 && ++handOvers > count(hl.ctnList)) {
                    return ctx;
                }
                const int next = length > 0 ? rule->ctx : rule->empty;
                if (next >= 0) {
                    ctx = next;
                    advanced = true;
                    break;
                }
                if (at >= text.size())
                    return ctx;
            }
            if (!advanced && ctx == before)
                return ctx;
        }
        return ctx;
    }

    QString colours(int ctx, const QString &text) const
    {
        QString result(text.size(), u'0');
        int at = 0;
        int shift = 0;
        int length = int(text.size());
        int handOvers = 0;
        while (length > 0) {
            bool matched = false;
            for (const HighlightItem *rule : *hl.contextList[ctx]) {
                const int taken = rule->find(text.constData() + at, length);
                if (taken > 0) {
                    for (int i = 0; i < taken; ++i)
                        result[at + shift + i] = QChar(u'0' + rule->attr);
                    at += taken;
                    length -= taken;
                    matched = true;
                    handOvers = 0;
                } else if (rule->empty >= 0) {
                    matched = true;
                    if (++handOvers > count(hl.contextList))
                        return result;
                }
                const int next = taken > 0 ? rule->ctx : rule->empty;
                if (next >= 0) {
                    ctx = next;
                    break;
                }
            }
            if (!matched) {
                ++shift;
                --length;
                handOvers = 0;
            }
        }
        return result;
    }

private:
    template <typename Table>
    static int count(const Table &table)
    {
        int contexts = 0;
        while (contexts < TextHighlight::tableSize && table[contexts])
            ++contexts;
        return contexts;
    }

    const TextHighlight &hl;
};

QString oneOf(QRandomGenerator &random, const QStringList &list)
{
    return list.at(random.bounded(int(list.size())));
}

QString randomRule(QRandomGenerator &random)
{
    static const QStringList patterns =
        QString::fromUtf8("a|ab|\\w+|[\\w_]+|\\s+|\\W|b*|.*|.+|$|a$|^b|\\bb|b\\b|é+|[^a]+|[ab]{2}|"
                          "ab(c)?|a(?=b)|a(?!b| )|(a~ab)(c~b)|[ab]*c|a+b|\\w+ |(a~b)c~ab|"
                          "(.)\\1|(?=ab)a|x~xx|b.*c|[^ ]*$|{")
            .split(u'|');
    static const QStringList modes =
        u",,,until,until exclude,until allowfull,until exclude allowfull,"
        "minimal,until minimal,noCaseSensitive"_s.split(u',');
    const auto attribute = [&](const char *name, const QStringList &values) {
        return u" %1=\"%2\""_s.arg(QLatin1String(name), oneOf(random, values));
    };
    const QStringList contexts{u"n"_s, u"m"_s, u"none"_s};
    QString rule = u"<citem"_s + attribute("item", {u"A"_s, u"B"_s, u"C"_s, u"?"_s}) +
                   attribute("regexp", patterns).replace(u'~', u'|') + attribute("mode", modes);
    if (random.bounded(2) == 0)
        rule += attribute("lineEndContent", contexts);
    if (random.bounded(8) == 0)
        rule += attribute("emptyContent", contexts);
    if (random.bounded(4) == 0)
        rule += attribute("keyword", {u"a ab abc"_s, u"b bb aé"_s});
    if (random.bounded(4) == 0)
        rule += attribute("caseSensitive", {u"false"_s, u"False"_s});
    return rule + u"/>"_s;
}

QString randomSection(QRandomGenerator &random)
{
    QString section;
    for (const char *name : {"n", "m"}) {
        QString rules;
        for (int i = random.bounded(1, 6); i > 0; --i)
            rules += randomRule(random);
        section += u"<%1>%2</%1>"_s.arg(QLatin1String(name), rules);
    }
    return section;
}

struct Settings : HighlightSettings
{
    void ruleDropped(const QString &, const QString &expression) override
    {
        dropped.append(expression);
    }

    QStringList dropped;
};

} // namespace

class TestHighlight : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { settings.setResourcesDir(folder.path()); }
    void colouring_data();
    void colouring();
    void following_data();
    void following();
    void sameAsAPlainWalk();
    void keywords_data();
    void keywords();
    void oddDefinitions_data();
    void oddDefinitions();
    void longLines_data();
    void longLines();
    void costlyRulesAreDropped_data();
    void costlyRulesAreDropped();
    void editedLongLines_data();
    void editedLongLines();
    void farEndAppears();
    void editedLongLinesOfAllKinds();

private:
    /// \a xml as a highlight; each is a file of its own, for files are read once.
    std::unique_ptr<TextHighlight> make(const QByteArray &xml);
    std::unique_ptr<TextHighlight> make(const QString &breaks, const QString &contents)
    {
        return make(definitionXml(breaks, contents).toUtf8());
    }
    static QString colours(TextHighlight *hl, const QString &text, int ctx = 0);
    static void compareWithFresh(TextHighlight *hl, TextLine *line, int ctx, bool coloured);
    static void editAndCompare(TextHighlight *hl, const QString &text, const QStringList &parts,
                               int edits, QRandomGenerator *random);

    QTemporaryDir folder;
    Settings settings;
    int files = 0;
};

std::unique_ptr<TextHighlight> TestHighlight::make(const QByteArray &xml)
{
    const QString name = u"definition%1"_s.arg(++files);
    writeFile(folder.filePath(name), xml);
    return std::make_unique<TextHighlight>(name, &settings);
}

/// The attribute numbers as digits.
QString TestHighlight::colours(TextHighlight *hl, const QString &text, int ctx)
{
    TextLine line(text);
    (void)hl->doHighlight(0, &line);
    line.resetHighlight(ctx);
    hl->highlight(&line);
    QString result;
    for (int i = 0; i < text.size(); ++i)
        result += QString::number(line.attribute(unsigned(i)));
    return line.isHighlighted() ? result : u"not coloured"_s;
}

void TestHighlight::colouring_data()
{
    const Rows<QString, QString, QString> row("contents", "text", "colours");
    row("the first rule wins, not the longest",
        R"(<c item="A" regexp="a" lineEndContent="n"/><c item="B" regexp="ab"/>)", "ab", "10");
    row("without a next context the list goes on",
        R"(<c item="A" regexp="a"/><c item="B" regexp="b"/>)", "abab", "1212");
    row("a rule above waits for the next walk",
        R"(<c item="A" regexp="b"/><c item="B" regexp="[ab]"/>)", "aab", "221");
    row("a next context begins at its first rule",
        R"(<n><c item="A" regexp="a" lineEndContent="m"/></n><m><c item="B" regexp="a"/></m>)",
        "aaa", "122");
    row("an unknown next context is the first",
        R"(<n><c item="A" regexp="a" lineEndContent="m"/></n>
            <m><c item="B" regexp="a" lineEndContent="x"/></m>)",
        "aaa", "121");
    row("an unknown item colours as the first", R"(<c item="X" regexp="a"/>)", "a", "0");
    row("unclaimed text has attribute 0, and what is seen loses its end",
        R"(<c item="A" regexp="xa"/>)", "bxa", "000");
    row("a shorter text may match where the longer did not",
        R"(<c item="A" regexp="a$" mode="until"/>)", "bab", "011");
    row("a word comes to light in a shorter text", R"(<c item="A" regexp="\w+" keyword="if"/>)",
        "ifxy", "0011");
    row("a scan includes its match", R"(<c item="A" regexp="c" mode="until"/>)", "abcd", "1110");
    row("a scan excludes its match",
        R"(<c item="A" regexp="c" mode="until, exclude"/><c item="B" regexp="c"/>)", "abcd",
        "1120");
    row("a scan that finds at once has not matched",
        R"(<c item="A" regexp="c" mode="until, exclude"/><c item="B" regexp=".."/>)", "cd", "22");
    row("a scan that finds nothing fails",
        R"(<c item="A" regexp="x" mode="until"/><c item="B" regexp="a"/>)", "aa", "22");
    row("or takes the rest", R"(<c item="A" regexp="x" mode="until, allowfull"/>)", "aa", "11");
    row("the end as a scan takes the rest", R"(<c item="A" regexp="$" mode="until"/>)", "abc",
        "111");
    row("exclude without until does nothing", R"(<c item="A" regexp="ab" mode="exclude"/>)", "ab",
        "11");
    row("a mode word counts inside another word", R"(<c item="A" regexp="b" mode="xuntilx"/>)",
        "ab", "11");
    row("minimal", R"(<n><c item="A" regexp="a.*b" mode="minimal" lineEndContent="m"/></n><m/>)",
        "aabab", "11100");
    row("case ignored", R"(<c item="A" regexp="ab" mode="noCaseSensitive"/>)", "AB", "11");
    row("every alternative is bound to the place", R"(<c item="A" regexp="a|b"/>)", "xab", "000");
    row("nothing before the place is seen", R"(<c item="A" regexp="a"/><c item="B" regexp="\bb"/>)",
        "ab", "12");
    row("no match leads on, taking nothing",
        R"(<n><c item="A" regexp="a" emptyContent="m"/></n><m><c item="B" regexp="b"/></m>)", "aab",
        "112");
    row("contexts that only hand over end the line",
        R"(<n><c regexp="x" emptyContent="m"/></n><m><c regexp="x" emptyContent="n"/></m>)", "ab",
        "00");
    row("an empty match is none", R"(<c item="A" regexp="a*"/><c item="B" regexp="b"/>)", "ba",
        "21");
    row("a faulty expression never matches",
        R"(<c item="A" regexp="a)|(b"/><c item="B" regexp="a"/>)", "a", "2");
}

void TestHighlight::colouring()
{
    QFETCH(QString, contents);
    QFETCH(QString, text);
    QFETCH(QString, colours);
    // One context is written without its tag.
    if (!contents.startsWith(u"<n>"))
        contents = u"<n>%1</n>"_s.arg(contents);
    const auto hl = make(u"<n><c regexp=\"$\" mode=\"until\"/></n>"_s, contents);
    QCOMPARE(TestHighlight::colours(hl.get(), text), colours);
}

void TestHighlight::following_data()
{
    const Rows<QString, QString, QList<int>> row("breaks", "lines", "contexts");
    const QString comment =
        uR"(<n><c regexp="/\*" mode="until" lineEndContent="m"/><c regexp="$" mode="until"/></n>
           <m><c regexp="\*/" mode="until, exclude, allowfull"/>
              <c regexp="\*/" lineEndContent="n"/></m>)"_s;
    row("a comment goes on over lines, an empty one too, and ends within a line", comment,
        "a /* b||c|d */ e|f", {1, 1, 1, 0, 0});
    row("opened again behind its end", comment, "/*|*/ /*|x", {1, 1, 1});
    row("nothing matches: the line ends",
        R"(<n><c regexp="a" lineEndContent="m"/></n><m><c regexp="x"/></m>)", "ba|ab|b", {0, 1, 1});
    row("contexts that only hand over end the line",
        R"(<n><c regexp="x" emptyContent="m"/></n><m><c regexp="x" emptyContent="m"/></m>)", "a|x",
        {1, 1});
    row("no rules at all", "<n/>", "a", {0});
    row("no contexts at all", "", "a", {0});
    row("a rule behind the end of the line has no say",
        R"(<n><c regexp="a"/><c regexp="b" emptyContent="m"/></n><m><c regexp="."/></m>)", "a",
        {0});
}

void TestHighlight::following()
{
    QFETCH(QString, breaks);
    QFETCH(QString, lines);
    QFETCH(QList<int>, contexts);
    const auto hl = make(breaks, u"<n/>"_s);
    int ctx = 0;
    QList<int> found;
    for (const QString &text : lines.split(u'|')) {
        TextLine line(text);
        hl->highlight(&line);
        const int start = ctx;
        ctx = hl->doHighlight(ctx, &line);
        QCOMPARE(line.highlightContext(), start);
        QVERIFY(!line.isHighlighted());
        found.append(ctx);
    }
    QCOMPARE(found, contexts);
}

void TestHighlight::sameAsAPlainWalk()
{
    QRandomGenerator random(815);
    static const QStringList letters = QString::fromUtf8("a,a,b,b,c, ,A,é,_,x").split(u',');
    for (int round = 0; round < 300; ++round) {
        const QString xml = definitionXml(randomSection(random), randomSection(random));
        const auto hl = make(xml.toUtf8());
        QVERIFY2(hl->contextList[1] && hl->ctnList[1], qPrintable(xml));
        const Walker walker(*hl);
        for (int i = 0; i < 12; ++i) {
            QString text;
            for (int length = random.bounded(14); length > 0; --length)
                text += oneOf(random, letters);
            // Long enough for what a scan notes on its way to count.
            if (i == 0)
                text = text.repeated(15);
            const int ctx = random.bounded(2);
            const QString trouble = u"\"%1\" from %2\n%3"_s.arg(text).arg(ctx).arg(xml);
            TextLine line(text);
            QVERIFY2(hl->doHighlight(ctx, &line) == walker.follow(ctx, text), qPrintable(trouble));
            const QString found = colours(hl.get(), text, ctx);
            QVERIFY2(found == walker.colours(ctx, text),
                     qPrintable(found + u' ' + walker.colours(ctx, text) + u' ' + trouble));
        }
    }
}

void TestHighlight::keywords_data()
{
    const Rows<QString, QString, bool> row("rule", "text", "found");
    const auto rule = [](const char *attributes) {
        return u"<c item=\"A\" regexp=\"[^ ]+\" %1/>"_s.arg(QLatin1String(attributes));
    };
    const QString sensitive = rule("keyword=\"if then\"");
    row("word", sensitive, "then", true);
    row("part of a word", sensitive, "the", false);
    row("other case", sensitive, "If", false);
    row("case ignored", rule("keyword=\"if\" caseSensitive=\"false\""), "IF", true);
    row("the list is not lowered", rule("keyword=\"IF\" caseSensitive=\"false\""), "IF", false);
    row("only \"false\" ignores case", rule("keyword=\"if\" caseSensitive=\"False\""), "IF", false);
    row("Latin-1", rule("keyword=\"&#233;\""), "\u00e9", true);
    row("beyond Latin-1", rule("keyword=\"?\""), "\u0416", false);
    row("words over several lines", rule("keyword=\"if\n  then\n\telse\""), "else", true);
    // Each "a" begins a candidate with the same end, only one of which is in the list.
    const QString longWord = QString(90, u'a') + u"b;"_s;
    row("a candidate whose end an earlier one has found",
        u"<c item=\"A\" regexp=\"a[^;]*;\" keyword=\"%1\" lineEndContent=\"n\"/>"
        "<c item=\"B\" regexp=\".\"/>"_s.arg(longWord),
        QString(100, u'a') + longWord, true);
    row("no words", rule("keyword=\"\""), "if", false);
}

void TestHighlight::keywords()
{
    QFETCH(QString, rule);
    QFETCH(QString, text);
    QFETCH(bool, found);
    const auto hl = make(QString(), u"<n>%1</n>"_s.arg(rule));
    QCOMPARE(colours(hl.get(), text).contains(u'1'), found);
    QCOMPARE(colours(hl.get(), text), Walker(*hl).colours(0, text));
}

void TestHighlight::oddDefinitions_data()
{
    const Rows<QByteArray, QString> row("xml", "name");
    const QByteArray rule = "<n><c regexp='.' item='A'/></n>";
    row("empty", "", "");
    row("no XML", QByteArray("\x7f\x45LF\0\1", 6), "");
    row("cut off", "<H name='x'><Items><A/>", "");
    row("fault behind the end", "<H name='x'/><H/>", "");
    row("no sections", "<H name='x'/>", "x");
    row("no items", "<H name='x'><Contents>" + rule + "</Contents></H>", "x");
    row("nested beyond measure", "<H>" + QByteArray("<a>").repeated(200000), "");
    row("more than the tables hold",
        "<H name='x'><Items>" + QByteArray("<A/>").repeated(300) + "</Items><Break>" +
            rule.repeated(300) + "</Break><Contents>" + rule.repeated(300) + "</Contents></H>",
        "x");
    QByteArray growing = "<!DOCTYPE H [<!ENTITY a0 \"aaaaaaaaaa\">";
    for (char n = '1'; n <= '9'; ++n)
        growing += QByteArray("<!ENTITY a") + n + " \"" +
                   (QByteArray("&a") + char(n - 1) + ';').repeated(10) + "\">";
    row("entities that grow", growing + "]><H name='&a9;'/>", "");
    row("a file from outside",
        "<!DOCTYPE H [<!ENTITY e SYSTEM 'file:///dev/zero'>]><H name='x'>&e;</H>", "x");
}

void TestHighlight::oddDefinitions()
{
    QFETCH(QByteArray, xml);
    QFETCH(QString, name);
    const auto hl = make(xml);
    QCOMPARE(hl->name(), name);
    for (const int ctx : {0, 1, 255}) {
        TextLine line(u"some text"_s);
        (void)hl->doHighlight(ctx, &line);
        hl->highlight(&line);
        QVERIFY(line.isHighlighted());
        QVERIFY(hl->attribute(line.attribute(0)));
    }
}

void TestHighlight::longLines_data()
{
    const Rows<QString, QString> row("rule", "text");
    const int size = 20000;
    const QString ands(size, u'&');
    row("match to a missing end", "regexp=\"&amp;[^;]+;\"", ands);
    row("scan for what is nowhere", "regexp=\"x\" mode=\"until\"", ands);
    row("scan for what is at the end", "regexp=\"&amp;;\" mode=\"until, exclude\" keyword=\"a\"",
        ands + u';');
    row("scan for a run to a missing end", "regexp=\"&amp;+x\" mode=\"until\"", ands);
    row("words of all lengths", "regexp=\"\\w+\" keyword=\"a\"", QString(size, u'a'));
    row("back-reference", "regexp=\"(&amp;+)x\\1\"", ands);
    row("exponential", "regexp=\"((a*)*)*\\2b\"", QString(size, u'a'));
    row("unclaimed, and looked at again each time", "regexp=\"&amp;+x$\" mode=\"until\"", ands);
}

void TestHighlight::longLines()
{
    QFETCH(QString, rule);
    QFETCH(QString, text);
    const bool isRest = rule.contains(u'$');
    const QString contents = u"<n><c item=\"A\" %1/>%2</n>"_s.arg(
        rule, isRest ? QString() : u"<c item=\"B\" regexp=\".\"/>"_s);
    const auto hl = make(contents, contents);
    TextLine line(text);
    // Cost that grows with the square of the length would not end within the time of a test.
    QCOMPARE(hl->doHighlight(0, &line), 0);
    hl->highlight(&line);
    QCOMPARE(line.attribute(unsigned(text.size()) / 2), isRest ? 0 : 2);
}

/// The text of each expression could match nearly everywhere and matches nowhere.
void TestHighlight::costlyRulesAreDropped_data()
{
    const Rows<QString, QString> row("expression", "text");
    const QString letters(5000, u'a');
    row("all ways at once", "((a|b)*a(a|b){12})x", letters + u'b' + QString(12, u'a') + u'x');
    row("back-reference", "(a+)b\\1c", letters + u"bc"_s);
}

void TestHighlight::costlyRulesAreDropped()
{
    QFETCH(QString, expression);
    QFETCH(QString, text);
    const QString rules = u"<n><c item=\"A\" regexp=\"%1\" mode=\"until, exclude\"/>"
                          "<c item=\"B\" regexp=\".\"/></n>"_s.arg(expression);
    const auto hl = make(rules, rules);
    QStringList &dropped = settings.dropped;
    dropped.clear();
    const QString dull(5000, u'c');
    QCOMPARE(colours(hl.get(), dull), QString(dull.size(), u'2'));
    QCOMPARE(dropped.count(), 0);
    for (int i = 0; i < 3; ++i)
        QCOMPARE(colours(hl.get(), text), QString(text.size(), u'2'));
    QCOMPARE(dropped, QStringList(expression));
}

/// \a line, which may have been scanned before, has to be what a new line is.
void TestHighlight::compareWithFresh(TextHighlight *hl, TextLine *line, int ctx, bool coloured)
{
    TextLine fresh{QString(*line)};
    QCOMPARE(hl->doHighlight(ctx, line), hl->doHighlight(ctx, &fresh));
    QVERIFY(!line->isHighlighted());
    if (!coloured)
        return;
    hl->highlight(line);
    hl->highlight(&fresh);
    int size = 0;
    int freshSize = 0;
    const qint8 *attributes = line->attributes(&size);
    const qint8 *freshAttributes = fresh.attributes(&freshSize);
    QCOMPARE(size, freshSize);
    const auto wrong = std::mismatch(attributes, attributes + size, freshAttributes);
    QCOMPARE(int(wrong.first - attributes), size);
}

/// Edits a long line at random places with some of \a parts; what is found out near an
/// edit alone has to be what a scan of the whole line finds.
void TestHighlight::editAndCompare(TextHighlight *hl, const QString &text, const QStringList &parts,
                                   int edits, QRandomGenerator *random)
{
    TextLine line(text);
    int column = 0;
    for (int i = 0; i < edits; ++i) {
        const ScanMarks *marks = random->bounded(2) ? line.contextMarks() : line.colourMarks();
        if (!marks || random->bounded(8) == 0)
            column = random->bounded(line.textLength());
        else if (!marks->noted().empty() && random->bounded(3) > 0)
            column = marks->noted()[random->bounded(quint32(marks->noted().size()))].at +
                     random->bounded(-2, 80);
        column = std::clamp(column + random->bounded(3), 0, line.textLength() - 1);
        const int spare = line.textLength() - ScanMarks::longLine;
        if (spare < 100)
            line.insertText(column, text);
        else if (random->bounded(3) == 0)
            line.removeText(column, random->bounded(20) ? random->bounded(4) : spare - 50);
        else
            line.insertText(random->bounded(20) ? column : line.textLength(),
                            oneOf(*random, parts).repeated(random->bounded(9) ? 1 : 20));
        if (random->bounded(4) == 0)
            continue;
        const int ctx = random->bounded(12) == 0 ? 1 : 0;
        compareWithFresh(hl, &line, ctx, random->bounded(4) > 0);
        if (QTest::currentTestFailed())
            return;
    }
}

void TestHighlight::editedLongLines_data()
{
    const Rows<QString, QString> row("rules", "parts");
    const QString run(120, u'a');
    row("looking ahead", R"-(regexp="a(?=a*b)"|regexp="a(?=.{20}c)"|regexp=".")-", "a|a|a|a|b|c");
    row("words", u"regexp=\"a+\" keyword=\"%1\"|regexp=\"aa\"|regexp=\".\""_s.arg(run),
        u"%1|%1a|a| |a |aa "_s.arg(run));
    row("far ends", R"-(regexp="\([^;]*;"|regexp=".")-", "a|(|a(a(|(((a|;");
    row("ends that are rare", R"-(regexp="\([^;]*;"|regexp=".")-",
        u"a|b|aa|"_s.repeated(40) + QString(9000, u'b') + u"|(|;"_s);
    row("scans for what is rare", R"-(regexp="x" mode="until"|regexp="y" mode="until"|regexp=".")-",
        u"a|a|a|ab|abc|"_s + u"abcdef"_s.repeated(2000) + u"|x|y"_s);
    row("scans for what is far",
        R"-(regexp="ab" mode="until"|regexp="ax" mode="until, exclude"|regexp=".")-",
        u"b|bbb|a|x|ab|ax|"_s + QString(2000, u'b'));
    row("the end", R"-(regexp="a[ab]*$"|regexp="b(?=[ab]*$)"|regexp=".")-", "a|b|ab|c|cc|cab");
    row("characters without a rule", R"-(regexp="a+"|regexp="b(?=b)")-", "a|a|aa|aaaaa|a|b|bb");
    row("a text cut short until it matches", R"-(regexp="[abc](?=[abc]*c$)"|regexp="c$")-",
        "a|b|ab|c|ca|b");
    row("contexts", R"-(regexp="x" lineEndContent="m"|regexp=".")-", "a|ab|abc|x|aaaa");
    row("what was matched in the list before", R"-(regexp="a"|regexp="b"|regexp="a+b")-",
        "a|a|aaa|b|c");
    row("back-reference", R"-(regexp="(a+)b\1"|regexp=".")-", "a|aaa|b|ab|c|cc|c");
}

void TestHighlight::editedLongLines()
{
    QFETCH(QString, rules);
    QFETCH(QString, parts);
    QString list;
    for (const QString &rule : rules.split(u'|'))
        list += u"<c item=\"%1\" %2/>"_s.arg(QChar(u"ABC"[list.count(u'<') % 3]), rule);
    const QString section = u"<n>%1</n><m><c item=\"C\" regexp=\"x\" lineEndContent=\"n\"/>"
                            "<c item=\"B\" regexp=\".\"/></m>"_s.arg(list);
    const auto hl = make(section, section);
    QRandomGenerator random(2342);
    const QStringList pieces = parts.split(u'|');
    QString text;
    while (text.size() < 2 * ScanMarks::longLine)
        text += oneOf(random, pieces);
    editAndCompare(hl.get(), text, pieces, 40, &random);
}

void TestHighlight::farEndAppears()
{
    const QString rules = u"<n><c item=\"A\" regexp=\"\\([^;]*;\" lineEndContent=\"m\"/>"
                          "<c item=\"B\" regexp=\".\"/></n><m><c item=\"C\" regexp=\".\"/></m>"_s;
    const auto hl = make(rules, rules);
    TextLine line(QString(2 * ScanMarks::longLine, u'a'));
    compareWithFresh(hl.get(), &line, 0, true);
    // Looks for the end in all of the line, and goes on as before behind it.
    line.replace(6000, 1, u"("_s);
    compareWithFresh(hl.get(), &line, 0, true);
    line.insertText(40000, u";"_s);
    compareWithFresh(hl.get(), &line, 0, true);
    line.removeText(40000, 1);
    compareWithFresh(hl.get(), &line, 0, true);
    QCOMPARE(line.attribute(50000), 2);
}

void TestHighlight::editedLongLinesOfAllKinds()
{
    QRandomGenerator random(4711);
    static const QStringList letters =
        QString::fromUtf8("a,a,b,b,c, , ,A,é,_,x,ab ,ba").split(u',');
    for (int round = 0; round < 15; ++round) {
        const QString xml = definitionXml(randomSection(random), randomSection(random));
        const auto hl = make(xml.toUtf8());
        QString text;
        while (text.size() < ScanMarks::longLine + 10000)
            text += oneOf(random, letters);
        editAndCompare(hl.get(), text, letters, 12, &random);
        QVERIFY2(!QTest::currentTestFailed(), qPrintable(xml));
    }
    static const QStringList code =
        u"x~ ~\"~'~/*~*/~//~#~\\~<~>~<!--~-->~(~)~{~;~0~12.5e3~if~<?php~?>~$a~&amp;~"
        "-- ~\t~@~%~=~`~word <b a=\"1\">~\"text\"~/* c */~Q_OBJECT "_s.split(u'~');
    for (const QString &name : TextHighlightManager::highlights(nullptr).keys()) {
        const std::unique_ptr<TextHighlight> hl(TextHighlightManager::highlight(nullptr, name));
        QString text;
        while (text.size() < 2 * ScanMarks::longLine)
            text += oneOf(random, code) + u"word "_s.repeated(random.bounded(2));
        editAndCompare(hl.get(), text, code, 15, &random);
        QVERIFY2(!QTest::currentTestFailed(), qPrintable(name));
    }
}

QTEST_MAIN(TestHighlight)
#include "tst_highlight.moc"
