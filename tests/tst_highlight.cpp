#include "zvwidgets/zveditor/highlight.h"

#include "zvwidgets/zveditor/highlight/highlightmanager.h"
#include "zvwidgets/zveditor/highlight/highlightsettings.h"
#include "zvwidgets/zveditor/lines/scanmarks.h"
#include "zvwidgets/zveditor/textline.h"

#include <QFile>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

using namespace zvwidgets;

namespace {

/// A definition of two sections, with items Text, A, B and C.
QString definitionXml(const QString &breaks, const QString &contents)
{
    return QStringLiteral("<!DOCTYPE Highlight><Highlight name=\"T\"><Items><Text/><A/><B/><C/>"
                          "</Items><Break>%1</Break><Contents>%2</Contents></Highlight>")
        .arg(breaks, contents);
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
        QStringLiteral(",,,until,until exclude,until allowfull,until exclude allowfull,"
                       "minimal,until minimal,noCaseSensitive")
            .split(u',');
    const auto attribute = [&](const char *name, const QStringList &values) {
        return QStringLiteral(" %1=\"%2\"").arg(QLatin1String(name), oneOf(random, values));
    };
    const QStringList contexts{QStringLiteral("n"), QStringLiteral("m"), QStringLiteral("none")};
    QString rule = QStringLiteral("<citem") +
                   attribute("item", {QStringLiteral("A"), QStringLiteral("B"), QStringLiteral("C"),
                                      QStringLiteral("?")}) +
                   attribute("regexp", patterns).replace(u'~', u'|') + attribute("mode", modes);
    if (random.bounded(2) == 0)
        rule += attribute("lineEndContent", contexts);
    if (random.bounded(8) == 0)
        rule += attribute("emptyContent", contexts);
    if (random.bounded(4) == 0)
        rule += attribute("keyword", {QStringLiteral("a ab abc"), QStringLiteral("b bb aé")});
    if (random.bounded(4) == 0)
        rule += attribute("caseSensitive", {QStringLiteral("false"), QStringLiteral("False")});
    return rule + QStringLiteral("/>");
}

QString randomSection(QRandomGenerator &random)
{
    QString section;
    for (const char *name : {"n", "m"}) {
        QString rules;
        for (int i = random.bounded(1, 6); i > 0; --i)
            rules += randomRule(random);
        section += QStringLiteral("<%1>%2</%1>").arg(QLatin1String(name), rules);
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
    void styles();

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
    const QString name = QStringLiteral("definition%1").arg(++files);
    QFile file(folder.filePath(name));
    if (!file.open(QIODevice::WriteOnly) || file.write(xml) != xml.size())
        qFatal("cannot write a definition");
    file.close();
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
    return line.isHighlighted() ? result : QStringLiteral("not coloured");
}

void TestHighlight::colouring_data()
{
    QTest::addColumn<QString>("contents");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("colours");
    struct Row
    {
        const char *name;
        const char *contents;
        const char *text;
        const char *colours;
    };
    const Row rows[] = {
        {"the first rule wins, not the longest",
         R"(<n><c item="A" regexp="a" lineEndContent="n"/><c item="B" regexp="ab"/></n>)", "ab",
         "10"},
        {"without a next context the list goes on",
         R"(<n><c item="A" regexp="a"/><c item="B" regexp="b"/></n>)", "abab", "1212"},
        {"a rule above waits for the next walk",
         R"(<n><c item="A" regexp="b"/><c item="B" regexp="[ab]"/></n>)", "aab", "221"},
        {"a next context begins at its first rule",
         R"(<n><c item="A" regexp="a" lineEndContent="m"/></n><m><c item="B" regexp="a"/></m>)",
         "aaa", "122"},
        {"an unknown next context is the first",
         R"(<n><c item="A" regexp="a" lineEndContent="m"/></n>
            <m><c item="B" regexp="a" lineEndContent="x"/></m>)",
         "aaa", "121"},
        {"an unknown item colours as the first", R"(<n><c item="X" regexp="a"/></n>)", "a", "0"},
        {"unclaimed text has attribute 0, and what is seen loses its end",
         R"(<n><c item="A" regexp="xa"/></n>)", "bxa", "000"},
        {"a shorter text may match where the longer did not",
         R"(<n><c item="A" regexp="a$" mode="until"/></n>)", "bab", "011"},
        {"a word comes to light in a shorter text",
         R"(<n><c item="A" regexp="\w+" keyword="if"/></n>)", "ifxy", "0011"},
        {"a scan includes its match", R"(<n><c item="A" regexp="c" mode="until"/></n>)", "abcd",
         "1110"},
        {"a scan excludes its match",
         R"(<n><c item="A" regexp="c" mode="until, exclude"/><c item="B" regexp="c"/></n>)", "abcd",
         "1120"},
        {"a scan that finds at once has not matched",
         R"(<n><c item="A" regexp="c" mode="until, exclude"/><c item="B" regexp=".."/></n>)", "cd",
         "22"},
        {"a scan that finds nothing fails",
         R"(<n><c item="A" regexp="x" mode="until"/><c item="B" regexp="a"/></n>)", "aa", "22"},
        {"or takes the rest", R"(<n><c item="A" regexp="x" mode="until, allowfull"/></n>)", "aa",
         "11"},
        {"the end as a scan takes the rest", R"(<n><c item="A" regexp="$" mode="until"/></n>)",
         "abc", "111"},
        {"exclude without until does nothing", R"(<n><c item="A" regexp="ab" mode="exclude"/></n>)",
         "ab", "11"},
        {"a mode word counts inside another word",
         R"(<n><c item="A" regexp="b" mode="xuntilx"/></n>)", "ab", "11"},
        {"minimal", R"(<n><c item="A" regexp="a.*b" mode="minimal" lineEndContent="m"/></n><m/>)",
         "aabab", "11100"},
        {"case ignored", R"(<n><c item="A" regexp="ab" mode="noCaseSensitive"/></n>)", "AB", "11"},
        {"every alternative is bound to the place", R"(<n><c item="A" regexp="a|b"/></n>)", "xab",
         "000"},
        {"nothing before the place is seen",
         R"(<n><c item="A" regexp="a"/><c item="B" regexp="\bb"/></n>)", "ab", "12"},
        {"no match leads on, taking nothing",
         R"(<n><c item="A" regexp="a" emptyContent="m"/></n><m><c item="B" regexp="b"/></m>)",
         "aab", "112"},
        {"contexts that only hand over end the line",
         R"(<n><c regexp="x" emptyContent="m"/></n><m><c regexp="x" emptyContent="n"/></m>)", "ab",
         "00"},
        {"an empty match is none", R"(<n><c item="A" regexp="a*"/><c item="B" regexp="b"/></n>)",
         "ba", "21"},
        {"a faulty expression never matches",
         R"(<n><c item="A" regexp="a)|(b"/><c item="B" regexp="a"/></n>)", "a", "2"},
    };
    for (const Row &row : rows)
        QTest::newRow(row.name) << QString::fromUtf8(row.contents) << QString::fromUtf8(row.text)
                                << QString::fromUtf8(row.colours);
}

void TestHighlight::colouring()
{
    QFETCH(QString, contents);
    QFETCH(QString, text);
    QFETCH(QString, colours);
    const auto hl = make(QStringLiteral("<n><c regexp=\"$\" mode=\"until\"/></n>"), contents);
    QCOMPARE(TestHighlight::colours(hl.get(), text), colours);
}

void TestHighlight::following_data()
{
    QTest::addColumn<QString>("breaks");
    QTest::addColumn<QStringList>("lines");
    QTest::addColumn<QList<int>>("contexts");
    const QString comment = QStringLiteral(
        R"(<n><c regexp="/\*" mode="until" lineEndContent="m"/><c regexp="$" mode="until"/></n>
           <m><c regexp="\*/" mode="until, exclude, allowfull"/>
              <c regexp="\*/" lineEndContent="n"/></m>)");
    const auto lines = [](const char *text) { return QString::fromUtf8(text).split(u'|'); };
    QTest::newRow("a comment goes on over lines, an empty one too, and ends within a line")
        << comment << lines("a /* b||c|d */ e|f") << QList<int>{1, 1, 1, 0, 0};
    QTest::newRow("opened again behind its end")
        << comment << lines("/*|*/ /*|x") << QList<int>{1, 1, 1};
    QTest::newRow("nothing matches: the line ends")
        << QStringLiteral(R"(<n><c regexp="a" lineEndContent="m"/></n><m><c regexp="x"/></m>)")
        << lines("ba|ab|b") << QList<int>{0, 1, 1};
    QTest::newRow("contexts that only hand over end the line")
        << QStringLiteral(
               R"(<n><c regexp="x" emptyContent="m"/></n><m><c regexp="x" emptyContent="m"/></m>)")
        << lines("a|x") << QList<int>{1, 1};
    QTest::newRow("no rules at all") << QStringLiteral("<n/>") << lines("a") << QList<int>{0};
    QTest::newRow("no contexts at all") << QString() << lines("a") << QList<int>{0};
    QTest::newRow("a rule behind the end of the line has no say")
        << QStringLiteral(
               R"(<n><c regexp="a"/><c regexp="b" emptyContent="m"/></n><m><c regexp="."/></m>)")
        << lines("a") << QList<int>{0};
}

void TestHighlight::following()
{
    QFETCH(QString, breaks);
    QFETCH(QStringList, lines);
    QFETCH(QList<int>, contexts);
    const auto hl = make(breaks, QStringLiteral("<n/>"));
    int ctx = 0;
    QList<int> found;
    for (const QString &text : std::as_const(lines)) {
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
            const QString trouble =
                QStringLiteral("\"%1\" from %2\n%3").arg(text).arg(ctx).arg(xml);
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
    QTest::addColumn<QString>("rule");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("found");
    const auto rule = [](const char *attributes) {
        return QStringLiteral("<c item=\"A\" regexp=\"[^ ]+\" %1/>").arg(QLatin1String(attributes));
    };
    const QString sensitive = rule("keyword=\"if then\"");
    QTest::newRow("word") << sensitive << QStringLiteral("then") << true;
    QTest::newRow("part of a word") << sensitive << QStringLiteral("the") << false;
    QTest::newRow("other case") << sensitive << QStringLiteral("If") << false;
    const QString lowered = rule("keyword=\"if\" caseSensitive=\"false\"");
    QTest::newRow("case ignored") << lowered << QStringLiteral("IF") << true;
    QTest::newRow("the list is not lowered")
        << rule("keyword=\"IF\" caseSensitive=\"false\"") << QStringLiteral("IF") << false;
    QTest::newRow("only \"false\" ignores case")
        << rule("keyword=\"if\" caseSensitive=\"False\"") << QStringLiteral("IF") << false;
    QTest::newRow("Latin-1") << rule("keyword=\"&#233;\"") << QString(QChar(0xe9)) << true;
    QTest::newRow("beyond Latin-1") << rule("keyword=\"?\"") << QString(QChar(0x416)) << false;
    QTest::newRow("words over several lines")
        << rule("keyword=\"if\n  then\n\telse\"") << QStringLiteral("else") << true;
    // Each "a" begins a candidate with the same end, only one of which is in the list.
    const QString longWord = QString(90, u'a') + QStringLiteral("b;");
    QTest::newRow("a candidate whose end an earlier one has found")
        << QStringLiteral("<c item=\"A\" regexp=\"a[^;]*;\" keyword=\"%1\" lineEndContent=\"n\"/>"
                          "<c item=\"B\" regexp=\".\"/>")
               .arg(longWord)
        << QString(100, u'a') + longWord << true;
    QTest::newRow("no words") << rule("keyword=\"\"") << QStringLiteral("if") << false;
}

void TestHighlight::keywords()
{
    QFETCH(QString, rule);
    QFETCH(QString, text);
    QFETCH(bool, found);
    const auto hl = make(QString(), QStringLiteral("<n>%1</n>").arg(rule));
    QCOMPARE(colours(hl.get(), text).contains(u'1'), found);
    QCOMPARE(colours(hl.get(), text), Walker(*hl).colours(0, text));
}

void TestHighlight::oddDefinitions_data()
{
    QTest::addColumn<QByteArray>("xml");
    QTest::addColumn<QString>("name");
    const QByteArray rule = "<n><c regexp='.' item='A'/></n>";
    QTest::newRow("empty") << QByteArray() << QString();
    QTest::newRow("no XML") << QByteArray("\x7f\x45LF\0\1", 6) << QString();
    QTest::newRow("cut off") << QByteArray("<H name='x'><Items><A/>") << QString();
    QTest::newRow("fault behind the end") << QByteArray("<H name='x'/><H/>") << QString();
    QTest::newRow("no sections") << QByteArray("<H name='x'/>") << QStringLiteral("x");
    QTest::newRow("no items") << QByteArray("<H name='x'><Contents>" + rule + "</Contents></H>")
                              << QStringLiteral("x");
    QTest::newRow("nested beyond measure")
        << QByteArray("<H>" + QByteArray("<a>").repeated(200000)) << QString();
    QTest::newRow("more than the tables hold")
        << QByteArray("<H name='x'><Items>" + QByteArray("<A/>").repeated(300) + "</Items><Break>" +
                      rule.repeated(300) + "</Break><Contents>" + rule.repeated(300) +
                      "</Contents></H>")
        << QStringLiteral("x");
}

void TestHighlight::oddDefinitions()
{
    QFETCH(QByteArray, xml);
    QFETCH(QString, name);
    const auto hl = make(xml);
    QCOMPARE(hl->name(), name);
    for (const int ctx : {0, 1, 255}) {
        TextLine line(QStringLiteral("some text"));
        (void)hl->doHighlight(ctx, &line);
        hl->highlight(&line);
        QVERIFY(line.isHighlighted());
        QVERIFY(hl->attribute(line.attribute(0)));
    }
}

void TestHighlight::longLines_data()
{
    QTest::addColumn<QString>("contents");
    QTest::addColumn<QString>("text");
    const int size = 200000;
    const auto rule = [](const char *attributes) {
        return QStringLiteral("<n><c item=\"A\" %1/><c item=\"B\" regexp=\".\"/></n>")
            .arg(QLatin1String(attributes));
    };
    const QString ands(size, u'&');
    QTest::newRow("match to a missing end") << rule("regexp=\"&amp;[^;]+;\"") << ands;
    QTest::newRow("scan for what is nowhere") << rule("regexp=\"x\" mode=\"until\"") << ands;
    QTest::newRow("scan for what is at the end")
        << rule("regexp=\"&amp;;\" mode=\"until, exclude\" keyword=\"a\"") << ands + u';';
    QTest::newRow("scan for a run to a missing end")
        << rule("regexp=\"&amp;+x\" mode=\"until\"") << ands;
    QTest::newRow("words of all lengths")
        << rule("regexp=\"\\w+\" keyword=\"a\"") << QString(size, u'a');
    QTest::newRow("back-reference") << rule("regexp=\"(&amp;+)x\\1\"") << ands;
    QTest::newRow("exponential") << rule("regexp=\"((a*)*)*\\2b\"") << QString(size, u'a');
    QTest::newRow("unclaimed, and looked at again each time")
        << QStringLiteral("<n><c item=\"A\" regexp=\"&amp;+x$\" mode=\"until\"/></n>") << ands;
}

void TestHighlight::longLines()
{
    QFETCH(QString, contents);
    QFETCH(QString, text);
    const auto hl = make(contents, contents);
    TextLine line(text);
    // Cost that grows with the square of the length would not end within the time of a test.
    QCOMPARE(hl->doHighlight(0, &line), 0);
    hl->highlight(&line);
    const int expected = contents.contains(QStringLiteral("\"B\"")) ? 2 : 0;
    QCOMPARE(line.attribute(unsigned(text.size()) / 2), expected);
}

/// \a line, which may have been scanned before, has to be what a new line is.
/// The text of each expression could match nearly everywhere and matches nowhere.
void TestHighlight::costlyRulesAreDropped_data()
{
    QTest::addColumn<QString>("expression");
    QTest::addColumn<QString>("text");
    const QString letters(5000, u'a');
    QTest::newRow("all ways at once")
        << QStringLiteral("((a|b)*a(a|b){12})x") << letters + u'b' + QString(12, u'a') + u'x';
    QTest::newRow("back-reference")
        << QStringLiteral("(a+)b\\1c") << letters + QStringLiteral("bc");
}

void TestHighlight::costlyRulesAreDropped()
{
    QFETCH(QString, expression);
    QFETCH(QString, text);
    const QString rules = QStringLiteral("<n><c item=\"A\" regexp=\"%1\" mode=\"until, exclude\"/>"
                                         "<c item=\"B\" regexp=\".\"/></n>")
                              .arg(expression);
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
    QTest::addColumn<QString>("rules");
    QTest::addColumn<QString>("parts");
    const QByteArray run(120, 'a');
    const auto row = [](const char *name, const QByteArray &rules, const QByteArray &parts) {
        QTest::newRow(name) << QString::fromLatin1(rules) << QString::fromLatin1(parts);
    };
    row("looking ahead", R"-(regexp="a(?=a*b)"|regexp="a(?=.{20}c)"|regexp=".")-", "a|a|a|a|b|c");
    row("words", "regexp=\"a+\" keyword=\"" + run + "\"|regexp=\"aa\"|regexp=\".\"",
        run + '|' + run + "a|a| |a |aa ");
    row("far ends", R"-(regexp="\([^;]*;"|regexp=".")-", "a|(|a(a(|(((a|;");
    row("ends that are rare", R"-(regexp="\([^;]*;"|regexp=".")-",
        QByteArray("a|b|aa|").repeated(40) + QByteArray(9000, 'b') + "|(|;");
    row("scans for what is rare", R"-(regexp="x" mode="until"|regexp="y" mode="until"|regexp=".")-",
        "a|a|a|ab|abc|" + QByteArray("abcdef").repeated(2000) + "|x|y");
    row("scans for what is far",
        R"-(regexp="ab" mode="until"|regexp="ax" mode="until, exclude"|regexp=".")-",
        "b|bbb|a|x|ab|ax|" + QByteArray("b").repeated(2000));
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
        list +=
            QStringLiteral("<c item=\"%1\" %2/>").arg(QChar(u"ABC"[list.count(u'<') % 3]), rule);
    const QString section =
        QStringLiteral("<n>%1</n><m><c item=\"C\" regexp=\"x\" lineEndContent=\"n\"/>"
                       "<c item=\"B\" regexp=\".\"/></m>")
            .arg(list);
    const auto hl = make(section, section);
    QRandomGenerator random(2342);
    const QStringList pieces = parts.split(u'|');
    QString text;
    while (text.size() < 2 * ScanMarks::longLine)
        text += oneOf(random, pieces);
    editAndCompare(hl.get(), text, pieces, 120, &random);
}

void TestHighlight::farEndAppears()
{
    const QString rules =
        QStringLiteral("<n><c item=\"A\" regexp=\"\\([^;]*;\" lineEndContent=\"m\"/>"
                       "<c item=\"B\" regexp=\".\"/></n><m><c item=\"C\" regexp=\".\"/></m>");
    const auto hl = make(rules, rules);
    TextLine line(QString(2 * ScanMarks::longLine, u'a'));
    compareWithFresh(hl.get(), &line, 0, true);
    // Looks for the end in all of the line, and goes on as before behind it.
    line.replace(6000, 1, QStringLiteral("("));
    compareWithFresh(hl.get(), &line, 0, true);
    line.insertText(40000, QStringLiteral(";"));
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
        QStringLiteral("x~ ~\"~'~/*~*/~//~#~\\~<~>~<!--~-->~(~)~{~;~0~12.5e3~if~<?php~?>~$a~&amp;~"
                       "-- ~\t~@~%~=~`~word <b a=\"1\">~\"text\"~/* c */~Q_OBJECT ")
            .split(u'~');
    for (const QString &name : TextHighlightManager::highlights(nullptr).keys()) {
        const std::unique_ptr<TextHighlight> hl(TextHighlightManager::highlight(nullptr, name));
        QString text;
        while (text.size() < 2 * ScanMarks::longLine)
            text += oneOf(random, code) + QStringLiteral("word ").repeated(random.bounded(2));
        editAndCompare(hl.get(), text, code, 15, &random);
        QVERIFY2(!QTest::currentTestFailed(), qPrintable(name));
    }
}

void TestHighlight::styles()
{
    const auto hl = make("<H name='S'><Items><Text color='#102030'/><A style='bi' bgcolor='red'/>"
                         "<B style='x i'/><C style='b' color='no colour'/></Items></H>");
    QCOMPARE(hl->attribute(0)->itemName, QStringLiteral("Text"));
    QCOMPARE(hl->attribute(0)->color, QColor(0x10, 0x20, 0x30));
    QVERIFY(!hl->attribute(0)->usebg);
    QCOMPARE(hl->attribute(1)->fontType, 3);
    QVERIFY(hl->attribute(1)->usebg);
    QCOMPARE(hl->attribute(1)->bgcolor, QColor(Qt::red));
    QCOMPARE(hl->attribute(2)->fontType, 1);
    QCOMPARE(hl->attribute(3)->fontType, 2);
    QVERIFY(!hl->attribute(3)->color.isValid());
    QVERIFY(!hl->attributeList[4]);
    QCOMPARE(hl->attribute(4), hl->attribute(0));
    QCOMPARE(hl->attribute(-1), hl->attribute(0));
}

QTEST_MAIN(TestHighlight)
#include "tst_highlight.moc"
