#include "zvwidgets/zveditor/pattern/literalsearch.h"
#include "zvwidgets/zveditor/pattern/patternbudget.h"
#include "zvwidgets/zveditor/pattern/textpattern.h"

#include <QRandomGenerator>
#include <QRegularExpression>
#include <QTest>

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
    const QString whole =
        QStringLiteral("\\A[\\s\\S]{%1}(?:%2)(?=[\\s\\S]{%3}\\z)")
            .arg(QString::number(column), pattern, QString::number(text.size() - column - length));
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
    static const QStringList quantifiers =
        QStringLiteral("* + ? {2} {1,2} {0,2} {2,}").split(QLatin1Char(' '));
    QString result;
    for (int i = random.bounded(1, 4); i > 0; --i) {
        const bool group = depth > 0 && random.bounded(4) == 0;
        const QString atom = oneOf(random, atoms);
        result +=
            group ? QLatin1Char('(') + randomPattern(random, depth - 1) + QLatin1Char(')') : atom;
        const bool takes = group || QRegularExpression(QStringLiteral("\\A(?:%1)\\z").arg(atom))
                                        .match(QString::fromUtf8("a"))
                                        .hasMatch();
        if (random.bounded(2) == 0 && takes)
            result += oneOf(random, quantifiers);
    }
    return random.bounded(4) == 0 ? result + QLatin1Char('|') + randomPattern(random, 0) : result;
}

} // namespace

namespace {

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
    QTest::addColumn<QString>("pattern");
    QTest::addColumn<int>("options");
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("from");
    QTest::addColumn<int>("column");
    QTest::addColumn<int>("length");
    struct Row
    {
        const char *name;
        const char *pattern;
        TextPattern::Options options;
        const char *text;
        int from;
        int column;
        int length;
    };
    const Row rows[] = {
        {"longest alternative, not the first", "a|ab", plain, "xab", 0, 1, 2},
        {"leftmost before longest", "b+|abb", plain, "abbbb", 0, 0, 3},
        {"longest over a repeated group", "(a|ab)(c|bcd)*", plain, "abcd", 0, 0, 4},
        {"optional group gives way", "a?(abbb)?", plain, "abbb", 0, 0, 4},
        {"minimal takes the shortest", "a.*b", minimal, "xaabab", 0, 1, 3},
        {"minimal may be empty", "a*", minimal, "aaa", 0, 0, 0},
        {"minimal alternative", "abc|ab", minimal, "abc", 0, 0, 2},
        {"greedy", "a.*b", plain, "xaabab", 0, 1, 5},
        {"case counts", "SELECT", plain, "select", 0, -1, -1},
        {"case ignored", "SeLECT", folded, "a selECt", 0, 2, 6},
        {"case ignored in a set", "[^a-c]+", folded, "ABxyC", 0, 2, 2},
        {"case ignored beyond Latin letters", "é", folded, "É", 0, 0, 1},
        {"dot takes a line feed", "a.b", plain, "a\nb", 0, 0, 3},
        {"dollar is the very end", "a$", plain, "a\na", 0, 2, 1},
        {"dollar before a last line feed is none", "a$", plain, "a\n", 0, -1, -1},
        {"caret is column 0 also from later on", "^a", plain, "aa", 1, -1, -1},
        {"caret binds the first alternative", "^a|b", plain, "xab", 0, 2, 1},
        {"empty match at the end", "$", plain, "abc", 0, 3, 0},
        {"word boundary sees what is before from", "\\bb", plain, "ab b", 1, 3, 1},
        {"word letters of other scripts", "\\w+", plain, "-жé٣_-", 0, 1, 4},
        {"digits of other scripts", "\\d+", plain, "x٣4", 0, 1, 2},
        {"no-break space is space", "\\s+", plain, "a\u00a0 b", 0, 1, 2},
        {"four hex digits", "\\x00e9f", plain, "éf", 0, 0, 2},
        {"octal", "\\0101", plain, "A", 0, 0, 1},
        {"unknown escape is the letter", "\\y\\e", plain, "ye", 0, 0, 2},
        {"escape letters", "\\t\\n", plain, "\t\n", 0, 0, 2},
        {"missing lower bound is 0", "ba{,2}c", plain, "baaac bc", 0, 6, 2},
        {"bracket first in a set", "[]a]+", plain, "x]a]", 0, 1, 3},
        {"bracket opens nothing in a set", "[[:a]+", plain, "x:[a", 0, 1, 3},
        {"hyphen at the end of a set", "[a-]+", plain, "x-a", 0, 1, 2},
        {"hyphen behind a class", "[\\w-]+", plain, ".a-b", 0, 1, 3},
        {"range of wide letters", "[а-я]+", plain, "Aжук", 0, 1, 3},
        {"look-ahead is not taken", "a(?=b)", plain, "acab", 0, 2, 1},
        {"long look-ahead", "<(?!/script)", plain, "</script></p>", 0, 9, 1},
        {"back-reference", "(a|b)x\\1", plain, "axb bxb", 0, 4, 3},
        {"a pair is one character", "a..", plain, "a\U0001F600bc", 0, 0, 4},
        {"and is taken whole", "^.", plain, "\U0001F600b", 0, 0, 2},
        {"at the end", ".$", plain, "b\U0001F600", 0, 1, 2},
        {"by a set of others", "[^x]b", plain, "\U0001F600b", 0, 0, 3},
        {"by a kind", "\\W", plain, "a\U0001F600", 0, 1, 2},
        {"nothing is found inside a pair", "x*b", plain, "\U0001F600b", 1, 2, 1},
        {"not even nothing", "x*", plain, "\U0001F600", 1, 2, 0},
        {"a pair is counted once", "^.{2}$", plain, "\U0001F600\U0001F601", 0, 0, 4},
        {"a pair repeated", "\U0001F600+$", plain, "\U0001F601\U0001F600\U0001F600", 0, 2, 4},
        {"a pair of escapes", "\\xd83d\\xde00+", plain, "\U0001F600\U0001F600", 0, 0, 4},
        {"a pair in a set", "[x\U0001F600]b", plain, "\U0001F601b\U0001F600b", 0, 3, 3},
        {"a pair not in a set", "[^\U0001F600]b", plain, "\U0001F600b\U0001F601b", 0, 3, 3},
        {"a range of pairs", "[\U0001F3FF-\U0001F401]+", plain, "\U0001F3FE\U0001F3FF\U0001F400", 0,
         2, 4},
        {"a range beyond one unit", "[a-\U0001F600]+", plain, "A\U0001F600z\U0001F601", 0, 1, 3},
        {"a pair referred to", "(.)\\1", plain, "\U0001F600\U0001F601\U0001F601", 0, 2, 4},
    };
    for (const Row &row : rows)
        QTest::newRow(row.name) << QString::fromUtf8(row.pattern) << int(row.options)
                                << QString::fromUtf8(row.text) << row.from << row.column
                                << row.length;
    const QChar loneLow(0xdc80);
    const QChar loneHigh(0xd83d);
    QTest::newRow("a lone low half is a character")
        << QStringLiteral("a.b") << int(plain) << QStringLiteral("aa") + loneLow + u'b' << 0 << 1
        << 3;
    QTest::newRow("so is a lone high half") << QStringLiteral("a[^x]b") << int(plain)
                                            << QStringLiteral("a") + loneHigh + u'b' << 0 << 0 << 3;
    QTest::newRow("lone halves beside a pair")
        << QStringLiteral("^.{3}$") << int(plain)
        << QString(loneLow) + QString::fromUtf8("\U0001F600") + loneHigh << 0 << 0 << 4;
    QTest::newRow("half of a pair is not found")
        << QStringLiteral("[\\xdc80\\xd83d]") << int(plain)
        << QString::fromUtf8("\U0001F600") + loneLow << 0 << 2 << 1;
    // Both alternatives run over the same stretch, the first of them in vain.
    QTest::newRow("what one scan has noted is not said of another")
        << QStringLiteral("a[^;]*=|b[^=]*;") << int(plain)
        << QStringLiteral("ab") + QString(100, u'-') + u';' << 0 << 1 << 102;
    QTest::newRow("too large for a table") << QStringLiteral("(ab?){500,600}c") << int(plain)
                                           << QString(550, u'a') + u'c' << 0 << 0 << 551;
}

void TestTextPattern::search()
{
    QFETCH(QString, pattern);
    QFETCH(int, options);
    QFETCH(QString, text);
    QFETCH(int, from);
    QFETCH(int, column);
    QFETCH(int, length);

    const TextPattern expression(pattern, TextPattern::Options(options));
    QVERIFY(expression.isValid());
    int found = 0;
    QCOMPARE(expression.search(text, from, &found), column);
    QCOMPARE(found, length);
    if (column >= 0)
        QCOMPARE(expression.match(text, column), length);
}

void TestTextPattern::validity_data()
{
    QTest::addColumn<bool>("valid");
    const char *const good[] = {
        "", "a||b", "()", "]", "a{2}", "a{,}", "\\", "[\\b]", "(?:a)(?=b)(?!c)", "-"};
    for (const char *pattern : good)
        QTest::newRow(pattern) << (qstrcmp(pattern, "\\") != 0);
    const char *const bad[] = {"{",       "}",     "a{",   "a{2",   "*a",     "a*?",     "a++",
                               "a{2}{3}", "(a",    "a)",   "[a",    "a{3,2}", "a{2000}", "(?<=a)b",
                               "(?i)a",   "(?>a)", "\\1a", "[\\1]", "|*",     "\\0777"};
    for (const char *pattern : bad)
        QTest::newRow(pattern) << false;
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
    QTest::addColumn<QString>("pattern");
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("column");
    QTest::addColumn<int>("length");
    QTest::newRow("star and question mark")
        << QStringLiteral("a*b?") << QStringLiteral("xa..bc") << 1 << 5;
    QTest::newRow("all else is itself")
        << QStringLiteral("$(a)+.{|}\\^") << QStringLiteral("-$(a)+.{|}\\^") << 1 << 11;
    QTest::newRow("set") << QStringLiteral("[^a-c\\]?") << QStringLiteral("ab\\dx") << 3 << 2;
    QTest::newRow("a set left open matches nothing")
        << QStringLiteral("[ab") << QStringLiteral("[ab") << -1 << -1;
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
                     qPrintable(QStringLiteral("%1 options %2 in \"%3\" at %4: %5, not %6")
                                    .arg(pattern)
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
    QTest::addColumn<QString>("pattern");
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("column");
    const int size = 600000;
    QTest::newRow("run to a missing end") << QStringLiteral("&[^;]+;") << QString(size, u'&') << -1;
    QTest::newRow("alternating states")
        << QStringLiteral("(a|b)*(aa|bb)+x") << QStringLiteral("ab").repeated(size / 2) << -1;
    QTest::newRow("look-ahead to a missing end")
        << QStringLiteral("a(?=[^;]*;)") << QString(size, u'a') << -1;
    QTest::newRow("found at the end")
        << QStringLiteral("&[^;]+;") << QString(size, u'&') + u';' << 0;
    QTest::newRow("minimal") << QStringLiteral("a[^x]*x") << QString(size, u'a') << -1;
}

void TestTextPattern::longText()
{
    QFETCH(QString, pattern);
    QFETCH(QString, text);
    QFETCH(int, column);
    const bool isMinimal = qstrcmp(QTest::currentDataTag(), "minimal") == 0;
    const TextPattern expression(pattern, isMinimal ? minimal : plain);
    // Cost that grows with the square of the length would not end within the time of a test.
    QCOMPARE(expression.search(text), column);
}

void TestTextPattern::hugeEffortIsGivenUp()
{
    const TextPattern expression(QStringLiteral("((a*)*)*\\2b"));
    QVERIFY(expression.isValid());
    QCOMPARE(expression.search(QString(60, u'a')), -1);

    // Several calls share a budget, and when it is used up nothing is found.
    PatternBudget budget(1000);
    const TextPattern pair(QStringLiteral("(a)\\1"));
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
    QTest::addColumn<QString>("pattern");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("isStopped");
    const QString letters(64000, u'a');
    const QString words = QStringLiteral("some words and zebras ").repeated(3000);
    QTest::newRow("doubled word") << QStringLiteral("(\\w+)\\s+\\1") << letters << false;
    QTest::newRow("far apart") << QStringLiteral("[^x]*x.{40}y|a.{50}Z") << words << false;
    QTest::newRow("doubled word, spaced")
        << QStringLiteral("(\\w+)\\s+\\1") << letters + QStringLiteral(" b") << true;
    QTest::newRow("repeated to the end") << QStringLiteral("(.+)\\1+$") << letters + u'!' << true;
    QTest::newRow("all ways at once")
        << QStringLiteral("(a|b)*b(a|b){12}c") << letters + QStringLiteral("bac") << true;
    QTest::newRow("a large table")
        << QStringLiteral("[^x]*x.{40}y|a.{50}z") << words + QStringLiteral("xylophone z") << true;
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
