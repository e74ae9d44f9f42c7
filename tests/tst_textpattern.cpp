#include "tests/rows.h"
#include "zvwidgets/zveditor/pattern/literalsearch.h"
#include "zvwidgets/zveditor/pattern/patternbudget.h"
#include "zvwidgets/zveditor/pattern/textpattern.h"

#include <QRandomGenerator>
#include <QRegularExpression>
#include <QTest>

using namespace Qt::StringLiterals;
using zvwidgets::LiteralSearch;
using zvwidgets::PatternBudget;
using zvwidgets::TextPattern;

namespace {

constexpr TextPattern::Options plain = TextPattern::NoOption;
constexpr auto folded = TextPattern::CaseInsensitive;
constexpr auto minimal = TextPattern::Minimal;

/// Whether \a pattern can match exactly \a length units at \a column of \a text, by an
/// engine that tries every way there is.
bool canMatch(const QString &pattern, bool fold, const QString &text, int column, int length)
{
    const QString whole = u"\\A[\\s\\S]{%1}(?:%2)(?=[\\s\\S]{%3}\\z)"_s.arg(
        QString::number(column), pattern, QString::number(text.size() - column - length));
    QRegularExpression::PatternOptions options = QRegularExpression::UseUnicodePropertiesOption |
                                                 QRegularExpression::DotMatchesEverythingOption;
    if (fold)
        options |= QRegularExpression::CaseInsensitiveOption;
    return QRegularExpression(whole, options).match(text).hasMatch();
}

int expectedLength(const QString &pattern, TextPattern::Options options, const QString &text,
                   int column)
{
    int found = -1;
    for (int length = 0; column + length <= text.size(); ++length) {
        if (!canMatch(pattern, options.testFlag(folded), text, column, length))
            continue;
        found = length;
        if (options.testFlag(minimal))
            break;
    }
    return found;
}

QString oneOf(QRandomGenerator &random, const QStringList &list)
{
    return list.at(random.bounded(int(list.size())));
}

QString randomPattern(QRandomGenerator &random, int depth)
{
    static const QStringList atoms =
        QString::fromUtf8("a b c A . \\w \\s \\W [ab] [^a] [a-c] [\\w_] \\b \\B ^ $ é [à-ê] "
                          "(?=a) (?!b) (?=ab|c$) (?![ab]c)")
            .split(QLatin1Char(' '));
    static const QStringList quantifiers = u"* + ? {2} {1,2} {0,2} {2,}"_s.split(QLatin1Char(' '));
    QString result;
    for (int i = random.bounded(1, 4); i > 0; --i) {
        const bool group = depth > 0 && random.bounded(4) == 0;
        const QString atom = oneOf(random, atoms);
        result +=
            group ? QLatin1Char('(') + randomPattern(random, depth - 1) + QLatin1Char(')') : atom;
        const bool takes = group || QRegularExpression(u"\\A(?:%1)\\z"_s.arg(atom))
                                        .match(QString::fromUtf8("a"))
                                        .hasMatch();
        if (random.bounded(2) == 0 && takes)
            result += oneOf(random, quantifiers);
    }
    return random.bounded(4) == 0 ? result + QLatin1Char('|') + randomPattern(random, 0) : result;
}

/// A search finds what asking at one place after the other finds.
void compareSearch(const TextPattern &expression, const QString &text)
{
    for (int from = 0; from <= text.size(); ++from) {
        int first = from;
        while (first <= text.size() && expression.match(text, first) < 0)
            ++first;
        int length = 0;
        const int found = expression.search(text, from, &length);
        QCOMPARE(found, first > text.size() ? -1 : first);
        QCOMPARE(length, found < 0 ? -1 : expression.match(text, found));
        if (text.size() > 100)
            from += 17;
    }
}

} // namespace

class TestTextPattern : public QObject
{
    Q_OBJECT

private slots:
    void search_data();
    void search();
    void validity_data();
    void validity();
    void wildcard_data();
    void wildcard();
    void everyWayThereIs();
    void longText_data();
    void longText();
    void hugeEffortIsGivenUp();
    void stops_data();
    void stops();
    void literals();
};

void TestTextPattern::search_data()
{
    const Rows<QString, TextPattern::Options, QString, int, int, int> row(
        "pattern", "options", "text", "from", "column", "length");
    row("longest alternative, not the first", "a|ab", plain, "xab", 0, 1, 2);
    row("leftmost before longest", "b+|abb", plain, "abbbb", 0, 0, 3);
    row("longest over a repeated group", "(a|ab)(c|bcd)*", plain, "abcd", 0, 0, 4);
    row("optional group gives way", "a?(abbb)?", plain, "abbb", 0, 0, 4);
    row("minimal takes the shortest", "a.*b", minimal, "xaabab", 0, 1, 3);
    row("minimal may be empty", "a*", minimal, "aaa", 0, 0, 0);
    row("minimal alternative", "abc|ab", minimal, "abc", 0, 0, 2);
    row("greedy", "a.*b", plain, "xaabab", 0, 1, 5);
    row("case counts", "SELECT", plain, "select", 0, -1, -1);
    row("case ignored", "SeLECT", folded, "a selECt", 0, 2, 6);
    row("case ignored in a set", "[^a-c]+", folded, "ABxyC", 0, 2, 2);
    row("case ignored beyond Latin letters", "é", folded, "É", 0, 0, 1);
    row("dot takes a line feed", "a.b", plain, "a\nb", 0, 0, 3);
    row("dollar is the very end", "a$", plain, "a\na", 0, 2, 1);
    row("dollar before a last line feed is none", "a$", plain, "a\n", 0, -1, -1);
    row("caret is column 0 also from later on", "^a", plain, "aa", 1, -1, -1);
    row("caret binds the first alternative", "^a|b", plain, "xab", 0, 2, 1);
    row("empty match at the end", "$", plain, "abc", 0, 3, 0);
    row("word boundary sees what is before from", "\\bb", plain, "ab b", 1, 3, 1);
    row("word letters of other scripts", "\\w+", plain, "-жé٣_-", 0, 1, 4);
    row("digits of other scripts", "\\d+", plain, "x٣4", 0, 1, 2);
    row("no-break space is space", "\\s+", plain, "a\u00a0 b", 0, 1, 2);
    row("four hex digits", "\\x00e9f", plain, "éf", 0, 0, 2);
    row("octal", "\\0101", plain, "A", 0, 0, 1);
    row("unknown escape is the letter", "\\y\\e", plain, "ye", 0, 0, 2);
    row("escape letters", "\\t\\n", plain, "\t\n", 0, 0, 2);
    row("missing lower bound is 0", "ba{,2}c", plain, "baaac bc", 0, 6, 2);
    row("bracket first in a set", "[]a]+", plain, "x]a]", 0, 1, 3);
    row("bracket opens nothing in a set", "[[:a]+", plain, "x:[a", 0, 1, 3);
    row("hyphen at the end of a set", "[a-]+", plain, "x-a", 0, 1, 2);
    row("hyphen behind a class", "[\\w-]+", plain, ".a-b", 0, 1, 3);
    row("range of wide letters", "[а-я]+", plain, "Aжук", 0, 1, 3);
    row("look-ahead is not taken", "a(?=b)", plain, "acab", 0, 2, 1);
    row("long look-ahead", "<(?!/script)", plain, "</script></p>", 0, 9, 1);
    row("back-reference", "(a|b)x\\1", plain, "axb bxb", 0, 4, 3);
    row("a pair is one character", "a..", plain, "a\U0001F600bc", 0, 0, 4);
    row("and is taken whole", "^.", plain, "\U0001F600b", 0, 0, 2);
    row("at the end", ".$", plain, "b\U0001F600", 0, 1, 2);
    row("by a set of others", "[^x]b", plain, "\U0001F600b", 0, 0, 3);
    row("by a kind", "\\W", plain, "a\U0001F600", 0, 1, 2);
    row("nothing is found inside a pair", "x*b", plain, "\U0001F600b", 1, 2, 1);
    row("not even nothing", "x*", plain, "\U0001F600", 1, 2, 0);
    row("a pair is counted once", "^.{2}$", plain, "\U0001F600\U0001F601", 0, 0, 4);
    row("a pair repeated", "\U0001F600+$", plain, "\U0001F601\U0001F600\U0001F600", 0, 2, 4);
    row("a pair of escapes", "\\xd83d\\xde00+", plain, "\U0001F600\U0001F600", 0, 0, 4);
    row("a pair in a set", "[x\U0001F600]b", plain, "\U0001F601b\U0001F600b", 0, 3, 3);
    row("a pair not in a set", "[^\U0001F600]b", plain, "\U0001F600b\U0001F601b", 0, 3, 3);
    row("a range of pairs", "[\U0001F3FF-\U0001F401]+", plain, "\U0001F3FE\U0001F3FF\U0001F400", 0,
        2, 4);
    row("a range beyond one unit", "[a-\U0001F600]+", plain, "A\U0001F600z\U0001F601", 0, 1, 3);
    row("a pair referred to", "(.)\\1", plain, "\U0001F600\U0001F601\U0001F601", 0, 2, 4);
    const QString pair = u"\U0001F600"_s;
    const QChar loneLow(0xdc80);
    const QChar loneHigh(0xd83d);
    row("a lone low half is a character", "a.b", plain, u"aa"_s + loneLow + u'b', 0, 1, 3);
    row("so is a lone high half", "a[^x]b", plain, u"a"_s + loneHigh + u'b', 0, 0, 3);
    row("lone halves beside a pair", "^.{3}$", plain, loneLow + pair + loneHigh, 0, 0, 4);
    row("half of a pair is not found", "[\\xdc80\\xd83d]", plain, pair + loneLow, 0, 2, 1);
    // Both alternatives run over the same stretch, the first of them in vain.
    row("what one scan has noted is not said of another", "a[^;]*=|b[^=]*;", plain,
        u"ab"_s + QString(100, u'-') + u';', 0, 1, 102);
    row("too large for a table", "(ab?){500,600}c", plain, QString(550, u'a') + u'c', 0, 0, 551);
}

void TestTextPattern::search()
{
    QFETCH(QString, pattern);
    QFETCH(TextPattern::Options, options);
    QFETCH(QString, text);
    QFETCH(int, from);
    QFETCH(int, column);
    QFETCH(int, length);

    const TextPattern expression(pattern, options);
    QVERIFY(expression.isValid());
    int found = 0;
    QCOMPARE(expression.search(text, from, &found), column);
    QCOMPARE(found, length);
    if (column >= 0)
        QCOMPARE(expression.match(text, column), length);
}

void TestTextPattern::validity_data()
{
    const Rows<bool> row("valid");
    for (const char *pattern :
         {"", "a||b", "()", "]", "a{2}", "a{,}", "[\\b]", "(?:a)(?=b)(?!c)", "-"})
        row(pattern, true);
    for (const char *pattern : {"\\",      "{",       "}",     "a{",   "a{2",   "*a",     "a*?",
                                "a++",     "a{2}{3}", "(a",    "a)",   "[a",    "a{3,2}", "a{2000}",
                                "(?<=a)b", "(?i)a",   "(?>a)", "\\1a", "[\\1]", "|*",     "\\0777"})
        row(pattern, false);
}

void TestTextPattern::validity()
{
    QFETCH(bool, valid);
    const TextPattern expression(QString::fromLatin1(QTest::currentDataTag()));
    QCOMPARE(expression.isValid(), valid);
    if (!valid)
        QCOMPARE(expression.search(u"a{2}1\\"), -1);
}

void TestTextPattern::wildcard_data()
{
    const Rows<QString, QString, int, int> row("pattern", "text", "column", "length");
    row("star and question mark", "a*b?", "xa..bc", 1, 5);
    row("all else is itself", "$(a)+.{|}\\^", "-$(a)+.{|}\\^", 1, 11);
    row("set", "[^a-c\\]?", "ab\\dx", 3, 2);
    row("a set left open matches nothing", "[ab", "[ab", -1, -1);
}

void TestTextPattern::wildcard()
{
    QFETCH(QString, pattern);
    QFETCH(QString, text);
    QFETCH(int, column);
    QFETCH(int, length);
    const TextPattern expression(pattern, plain, TextPattern::Syntax::Wildcard);
    int found = 0;
    QCOMPARE(expression.search(text, 0, &found), column);
    QCOMPARE(found, length);
}

void TestTextPattern::everyWayThereIs()
{
    QRandomGenerator random(4711);
    static const QStringList letters = QString::fromUtf8("a,b,c,A, ,é,_").split(u',');
    for (int round = 0; round < 800; ++round) {
        const QString pattern = randomPattern(random, 2);
        const TextPattern::Options options(random.bounded(4));
        const TextPattern expression(pattern, options);
        QVERIFY2(expression.isValid(), qPrintable(pattern));
        QString text;
        for (int i = random.bounded(8); i > 0; --i)
            text += oneOf(random, letters);
        for (int column = 0; column <= text.size(); ++column) {
            const int expected = expectedLength(pattern, options, text, column);
            const int found = expression.match(text, column);
            QVERIFY2(found == expected,
                     qPrintable(u"%1 options %2 in \"%3\" at %4: %5, not %6"_s.arg(pattern)
                                    .arg(int(options))
                                    .arg(text)
                                    .arg(column)
                                    .arg(found)
                                    .arg(expected)));
        }
        compareSearch(expression, text);
        // Long enough for what a search notes on its way to count.
        compareSearch(expression, text.repeated(20));
    }
}

void TestTextPattern::longText_data()
{
    const Rows<QString, TextPattern::Options, QString, int> row("pattern", "options", "text",
                                                                "column");
    const int size = 600000;
    const QString ands(size, u'&');
    row("run to a missing end", "&[^;]+;", plain, ands, -1);
    row("alternating states", "(a|b)*(aa|bb)+x", plain, u"ab"_s.repeated(size / 2), -1);
    row("look-ahead to a missing end", "a(?=[^;]*;)", plain, QString(size, u'a'), -1);
    row("found at the end", "&[^;]+;", plain, ands + u';', 0);
    row("minimal", "a[^x]*x", minimal, QString(size, u'a'), -1);
}

void TestTextPattern::longText()
{
    QFETCH(QString, pattern);
    QFETCH(TextPattern::Options, options);
    QFETCH(QString, text);
    QFETCH(int, column);
    const TextPattern expression(pattern, options);
    // Cost that grows with the square of the length would not end within the time of a test.
    QCOMPARE(expression.search(text), column);
}

void TestTextPattern::hugeEffortIsGivenUp()
{
    const TextPattern expression(u"((a*)*)*\\2b"_s);
    QVERIFY(expression.isValid());
    QCOMPARE(expression.search(QString(60, u'a')), -1);

    // Several calls share a budget, and when it is used up nothing is found.
    PatternBudget budget(1000);
    const TextPattern pair(u"(a)\\1"_s);
    QCOMPARE(pair.search(u"xaa", 0, nullptr, &budget), 1);
    const QString text(5000, u'b');
    QCOMPARE(pair.search(text, 0, nullptr, &budget), -1);
    QVERIFY(budget.isSpent());
    QCOMPARE(pair.search(u"xaa", 0, nullptr, &budget), -1);
}

/// Expressions whose cost grows with a power of the length: with a filter the first ends by
/// itself, and all others are asked often enough whether to go on.
void TestTextPattern::stops_data()
{
    const Rows<QString, QString, bool> row("pattern", "text", "isStopped");
    const QString letters(64000, u'a');
    const QString words = u"some words and zebras "_s.repeated(3000);
    row("doubled word", "(\\w+)\\s+\\1", letters, false);
    row("far apart", "[^x]*x.{40}y|a.{50}Z", words, false);
    row("doubled word, spaced", "(\\w+)\\s+\\1", letters + u" b"_s, true);
    row("repeated to the end", "(.+)\\1+$", letters + u'!', true);
    row("all ways at once", "(a|b)*b(a|b){12}c", letters + u"bac"_s, true);
    row("a large table", "[^x]*x.{40}y|a.{50}z", words + u"xylophone z"_s, true);
}

void TestTextPattern::stops()
{
    QFETCH(QString, pattern);
    QFETCH(QString, text);
    QFETCH(bool, isStopped);
    int looks = 0;
    PatternBudget budget(PatternBudget::unlimited, [&looks] { return ++looks < 20; });
    QCOMPARE(TextPattern(pattern).search(text, 0, nullptr, &budget), -1);
    QCOMPARE(budget.wasStopped(), isStopped);
}

void TestTextPattern::literals()
{
    QRandomGenerator random(815);
    // The Kelvin sign and the long s are letters too, once their case is ignored.
    const QString letters = QString::fromUtf8("kKsSaA\u212a\u017f.é");
    for (int round = 0; round < 20000; ++round) {
        QString text;
        for (int i = random.bounded(60); i > 0; --i)
            text += letters.at(random.bounded(letters.size()));
        QString needle = text.mid(random.bounded(60), random.bounded(1, 4));
        for (QChar &c : needle)
            c = random.bounded(4) == 0 ? c.toUpper() : c;
        for (const auto cs : {Qt::CaseSensitive, Qt::CaseInsensitive}) {
            const int from = random.bounded(8);
            const qsizetype expected =
                needle.isEmpty() || from > text.size() ? -1 : text.indexOf(needle, from, cs);
            const qsizetype found = LiteralSearch(needle, cs).indexIn(text, from);
            QVERIFY2(found == expected, qPrintable(text + u'|' + needle));
        }
    }
}

QTEST_APPLESS_MAIN(TestTextPattern)
#include "tst_textpattern.moc"
