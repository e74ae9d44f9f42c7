#include "tests/testing.h"
#include "zvwidgets/zveditor/highlight.h"
#include "zvwidgets/zveditor/highlight/highlightdefinition.h"
#include "zvwidgets/zveditor/highlight/highlightmanager.h"
#include "zvwidgets/zveditor/highlight/highlightscanner.h"
#include "zvwidgets/zveditor/lines/textfile.h"
#include "zvwidgets/zveditor/lines/textlinearray.h"

#include <QBuffer>
#include <QFile>
#include <QRandomGenerator>
#include <QTest>

#include <cstring>
#include <string_view>

using namespace Qt::StringLiterals;
using namespace zvwidgets;
using namespace std::string_view_literals;

namespace {

struct Text
{
    Text() { lines.setAutoDelete(true); }

    TextLineArray lines;
    TextFormat format;
    QString error;
};

bool readFrom(QByteArray bytes, Text *text,
              QStringConverter::Encoding wish = QStringConverter::Utf8)
{
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    return TextFile::read(buffer, wish, &text->lines, &text->format, &text->error);
}

QByteArray written(Text *text)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    return TextFile::write(buffer, text->lines, text->format, &text->error) ? buffer.data()
                                                                            : "write failed";
}

QStringList linesOf(const Text &text)
{
    QStringList lines;
    for (int i = 0; i < text.lines.size(); ++i)
        lines.append(QStringView(*text.lines.at(i)).toString());
    return lines;
}

/// All that is known of the lines after reading, one entry a line.
QStringList described(const Text &text)
{
    QStringList lines;
    for (int i = 0; i < text.lines.size(); ++i) {
        const TextLine *line = text.lines.at(i);
        lines.append(QString::asprintf("%d %d %d %d %d ", line->highlightContext(), line->context(),
                                       line->mayHaveTabs(), int(line->lineEnd()),
                                       line->needsScan()) +
                     QStringView(*line).toString());
    }
    return lines;
}

ReadOptions::Follow follower(const HighlightDefinition &definition)
{
    const auto scanner = std::make_shared<HighlightScanner>(definition.breaks);
    return [scanner](int ctx, TextLine *line) {
        line->resetHighlight(ctx);
        return scanner->follow(ctx, QStringView(*line));
    };
}

/// Cannot be read behind a certain place.
class DamagedBuffer : public QBuffer
{
public:
    DamagedBuffer(QByteArray *bytes, qint64 place) : QBuffer(bytes), damagedAt(place)
    {
        open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    }
    qint64 readData(char *data, qint64 length) override
    {
        if (damagedAt >= 0 && pos() + length > damagedAt) {
            setErrorString(u"damaged"_s);
            return -1;
        }
        return QBuffer::readData(data, length);
    }

private:
    const qint64 damagedAt;
};

QByteArray anyOf(const QList<QByteArray> &pieces, qsizetype length, QRandomGenerator *random)
{
    QByteArray bytes;
    while (bytes.size() < length)
        bytes += pieces.at(random->bounded(int(pieces.size())));
    return bytes;
}

} // namespace

class TestTextFile : public QObject
{
    Q_OBJECT
private slots:
    void roundTrip_data();
    void roundTrip();
    void randomBytes();
    void tenMegabyteLine();
    void chunks_data();
    void chunks();
    void sequentialDevice();
    void mixedLineEnds();
    void emptiedLines_data();
    void emptiedLines();
    void unencodableCharacters_data();
    void unencodableCharacters();
    void writeFailure();
};

void TestTextFile::roundTrip_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("encoding");
    QTest::addColumn<bool>("hasMark");
    QTest::addColumn<QStringList>("lines");

    const int utf8 = QStringConverter::Utf8;
    const int latin1 = QStringConverter::Latin1;
    // A "|" stands between the lines; no text at all is no line.
    const auto row = [](const char *name, const QByteArray &bytes, int encoding, bool mark,
                        std::u16string_view lines) {
        const QString joined = QStringView(lines.data(), qsizetype(lines.size())).toString();
        QTest::newRow(name) << bytes << encoding << mark
                            << (lines.data() ? joined.split(QLatin1Char('|')) : QStringList());
    };

    row("empty", "", utf8, false, {});
    row("no final line end", "a\nb", utf8, false, u"a|b");
    row("final line end", "a\nb\n", utf8, false, u"a|b");
    row("final empty line", "a\n\n", utf8, false, u"a|");
    row("line end only", "\n", utf8, false, u"");
    row("crlf", "a\r\nb\r\n", utf8, false, u"a|b");
    row("cr", "a\rb\r", utf8, false, u"a|b");
    row("cr before crlf", "a\r\r\nb", utf8, false, u"a||b");
    row("lf before cr", "a\n\rb", utf8, false, u"a||b");
    row("mixed, mostly lf", "a\r\nb\rc\nd\ne\n", utf8, false, u"a|b|c|d|e");
    row("nul and controls", QByteArray("a\0b\x01\x1a\x0b\x0c\nc\0", 10), utf8, false,
        u"a\0b\x01\x1a\x0b\x0c|c\0"sv);
    row("utf-8", "\xC3\xA9\n\xF0\x9F\x98\x80", utf8, false, u"\u00e9|\U0001F600");
    row("separators are no line ends", "a\xE2\x80\xA8\xC2\x85z", utf8, false, u"a\u2028\u0085z");
    row("utf-8 mark", "\xEF\xBB\xBF\xC3\xA9\nb", utf8, true, u"\u00e9|b");
    row("utf-8 mark only", "\xEF\xBB\xBF", utf8, true, {});
    row("utf-8 mark twice", "\xEF\xBB\xBF\xEF\xBB\xBFz", utf8, true, u"\uFEFFz");
    row("utf-16le", QByteArray("\xFF\xFE\xE9\0\r\0\n\0b\0", 10), QStringConverter::Utf16LE, true,
        u"\u00e9|b");
    row("utf-16be", QByteArray("\xFE\xFF\0\xE9\0\n\0b", 8), QStringConverter::Utf16BE, true,
        u"\u00e9|b");
    const char16_t halfPair[] = {0xD83D, u'z'};
    row("utf-16le, half a pair", QByteArray("\xFF\xFE\x3D\xD8z\0", 6), QStringConverter::Utf16LE,
        true, {halfPair, 2});
    row("utf-16le, odd length", QByteArray("\xFF\xFEz\0z", 5), latin1, false,
        u"\u00ff\u00fez\0z"sv);
    row("utf-32le", QByteArray("\xFF\xFE\0\0\xE9\0\0\0\n\0\0\0b\0\0\0", 16),
        QStringConverter::Utf32LE, true, u"\u00e9|b");
    row("utf-32be", QByteArray("\0\0\xFE\xFF\0\0\0\xE9", 8), QStringConverter::Utf32BE, true,
        u"\u00e9");
    row("no utf-32, so utf-16", QByteArray("\xFF\xFE\0\0z\0", 6), QStringConverter::Utf16LE, true,
        u"\0z"sv);
    row("no byte is utf-8", "a\nb\xE9\n\xE2\x82", latin1, false, u"a|b\u00e9|\u00e2\u0082");
    row("overlong", "\xC0\x80", latin1, false, u"\u00c0\u0080");
    row("encoded surrogate", "\xED\xA0\x80", latin1, false, u"\u00ed\u00a0\u0080");
    // A byte that is no part of a character is the unit U+DC00 plus the byte.
    row("utf-8 mark and an invalid byte", "\xEF\xBB\xBFz\xFF", utf8, true, u"z\xDCFF");
    row("invalid bytes in utf-8", "a\xC3\xA9\nb\xE9\n\x80\xFE", utf8, false,
        u"a\u00e9|b\xDCE9|\xDC80\xDCFE");
    row("cut short in utf-8", "\xE2\x82\n\xF0\x9F\x98\xC3\xA9\xE2\x82", utf8, false,
        u"\xDCE2\xDC82|\xDCF0\xDC9F\xDC98\u00e9\xDCE2\xDC82");
    row("overlong, surrogate, too large in utf-8", "\xC0\x80\xED\xA0\x80\xF4\x90\x80\x80\xC3\xA9",
        utf8, false, u"\xDCC0\xDC80\xDCED\xDCA0\xDC80\xDCF4\xDC90\xDC80\xDC80\u00e9");
    row("overlong with a lead that may start a character", "\xE0\x9F\xBF\xF0\x8F\xBF\xBF\xC3\xA9",
        utf8, false, u"\xDCE0\xDC9F\xDCBF\xDCF0\xDC8F\xDCBF\xDCBF\u00e9");
    row("characters beside an invalid byte",
        "\xE0\xA0\x80\xED\x9F\xBF\xF4\x8F\xBF\xBF\xF0\x9F\x92\x80\xFF", utf8, false,
        u"\u0800\uD7FF\U0010FFFF\U0001F480\xDCFF");
}

// Every case is also read with its first bytes at the borders of the pieces that
// files are read and lines are kept in.
void TestTextFile::roundTrip()
{
    QFETCH(QByteArray, bytes);
    QFETCH(int, encoding);
    QFETCH(bool, hasMark);
    QFETCH(QStringList, lines);

    const auto check = [&](const QByteArray &read, const QStringList &expected) {
        Text text;
        QVERIFY(readFrom(read, &text));
        QCOMPARE(int(text.format.encoding), encoding);
        QCOMPARE(text.format.hasByteOrderMark, hasMark);
        QCOMPARE(linesOf(text), expected);
        QCOMPARE(written(&text), read);
    };
    check(bytes, lines);
    if (hasMark || bytes.startsWith("\xFF\xFE"))
        return;
    for (const int border : {32 * 1024, 64 * 1024, 128 * 1024}) {
        for (int before = border - 5; before <= border + 2; ++before) {
            QByteArray ahead(before, 'x');
            for (int i = 100; i < before - 200; i += 101)
                ahead[i] = '\n';
            QStringList expected = QString::fromLatin1(ahead).split(QLatin1Char('\n'));
            QStringList rest = lines;
            if (!rest.isEmpty())
                expected.last() += rest.takeFirst();
            check(ahead + bytes, expected + rest);
            if (QTest::currentTestFailed())
                return;
        }
    }
}

void TestTextFile::randomBytes()
{
    const QList<QByteArray> pieces = {
        "\n", "\r",          "\r\n", QByteArray("\0", 1), "\xC3\xA9", "text ", "\xF0\x9F\x98\x80",
        "\t", "\xE2\x82\xAC"};
    for (quint32 seed = 0; seed < 60; ++seed) {
        QRandomGenerator random(seed);
        QByteArray bytes;
        const int length = random.bounded(200'000);
        const bool isBroken = seed % 4 == 0;
        while (bytes.size() < length) {
            const QByteArray &piece = pieces.at(random.bounded(int(pieces.size())));
            for (int i = random.bounded(40); i >= 0 && piece != "\r"; --i)
                bytes += piece;
            bytes += piece;
            if (isBroken)
                bytes += char(random.bounded(256));
        }
        Text text;
        QVERIFY(readFrom(bytes, &text));
        QCOMPARE(int(text.format.encoding), int(QStringConverter::Utf8));
        if (written(&text) != bytes)
            QFAIL(qPrintable(u"other bytes with seed %1"_s.arg(seed)));
        if (isBroken)
            continue;
        QString plain = QString::fromUtf8(bytes);
        plain.replace(QLatin1String("\r\n"), QLatin1String("\n"));
        plain.replace(QLatin1Char('\r'), QLatin1Char('\n'));
        if (plain.endsWith(QLatin1Char('\n')))
            plain.chop(1);
        if (linesOf(text) != plain.split(QLatin1Char('\n')))
            QFAIL(qPrintable(u"other lines with seed %1"_s.arg(seed)));
    }
}

void TestTextFile::tenMegabyteLine()
{
    QByteArray bytes = QByteArray("\xC3\xA9").repeated(2'500'000) + QByteArray(5'000'000, 'x');
    // No piece that is written may end within a pair.
    bytes += "\nshort\ny" + QByteArray("\xF0\x9F\x98\x80").repeated(100'000);
    Text text;
    QVERIFY(readFrom(bytes, &text));
    QCOMPARE(text.lines.size(), 3);
    QCOMPARE(text.lines.at(0)->textLength(), 7'500'000);
    QVERIFY(written(&text) == bytes);
}

void TestTextFile::chunks_data()
{
    const Rows<QList<QByteArray>, QByteArray, QByteArray, int> row("pieces", "head", "tail",
                                                                   "damagedAt");
    const QList<QByteArray> code = {"int a;\n", "/*",   "*/ b\n",        "\n", "// c\n",
                                    "\"",       "\\\n", "#define e f\n", "\tg"};
    const QList<QByteArray> sameEnds = {"a\n", "\tb /*\n", "*/\n"};
    row("contexts across seams", code, "", "", -1);
    row("a comment that stays open", {"int a;\n", "/* b\n", "// c\n"}, "", "", -1);
    row("one open comment before plain text", {"int a;\n", "b();\n"}, "/*\n", "\n*/ c", -1);
    row("line ends of all kinds", {"\r", "\n", "\r\n", "a", "\t", "/*", "*/"}, "", "", -1);
    row("other line ends first", {"a\r\n", "b"}, "c\nd\re\n", "", -1);
    row("one other line end last", sameEnds, "", "x\r\ny", -1);
    row("no final line end", sameEnds, "", "end", -1);
    row("carriage returns alone", {"a\r", "/*\r", "*/\r"}, "", "", -1);
    row("long lines", {QByteArray(3000, 'x'), "\n", QByteArray(40'000, 'y'), "/*", "*/\t"}, "", "",
        -1);
    row("characters of several bytes", {"\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9F\x98\x80", "a\n"}, "",
        "", -1);
    row("nulls and marks", {QByteArray(1, '\0'), "\n", "\xEF\xBB\xBF", "/*"}, "\xEF\xBB\xBF", "",
        -1);
    row("an invalid byte at the end", code, "", "\xFF", -1);
    row("an invalid byte at the start", code, "\xC3\n", "", -1);
    row("cut short", code, "", "\xE2\x82", -1);
    row("invalid bytes in utf-8", {"\xC3\xA9", "\xFF", "\xE2\x82", "\xF0\x9F", "a\n"}, "", "", -1);
    row("utf-16", {QByteArray("a\0", 2), QByteArray("\n\0", 2), QByteArray("\0\n", 2)}, "\xFF\xFE",
        "", -1);
    row("a device that fails", code, "", "", 700);
}

// What was read must not depend on where the chunks end nor on who reads them. The
// one that reads all alone, and follows the contexts then, is right.
void TestTextFile::chunks()
{
    QFETCH(QList<QByteArray>, pieces);
    QFETCH(QByteArray, head);
    QFETCH(QByteArray, tail);
    QFETCH(int, damagedAt);
    const std::unique_ptr<TextHighlight> highlight(
        TextHighlightManager::highlight(nullptr, u"C++"_s));
    const HighlightDefinition &definition = highlight->rules();
    QVERIFY(definition.canShareBreaks);
    bool isMarked = false;
    for (quint32 seed = 0; seed < 40; ++seed) {
        QRandomGenerator random(seed);
        QByteArray bytes = head + anyOf(pieces, random.bounded(500, 5000), &random) + tail;
        Text alone;
        ReadOptions options;
        options.threads = 1;
        DamagedBuffer device(&bytes, damagedAt);
        const bool isRead = TextFile::read(device, QStringConverter::Utf8, &alone.lines,
                                           &alone.format, &alone.error, options);
        QCOMPARE(isRead, damagedAt < 0);
        const ReadOptions::Follow follow = follower(definition);
        int context = 0;
        for (int i = 0; i < alone.lines.size(); ++i) {
            context = follow(context, alone.lines.at(i));
            alone.lines.at(i)->setContext(context);
            isMarked = isMarked || context != 0;
        }

        options.follow = follower(definition);
        options.followElsewhere = [&] { return follower(definition); };
        options.threads = 1 + int(seed % 4);
        options.chunkSize = random.bounded(1, 60);
        Text shared;
        DamagedBuffer again(&bytes, damagedAt);
        QCOMPARE(TextFile::read(again, QStringConverter::Utf8, &shared.lines, &shared.format,
                                &shared.error, options),
                 isRead);
        QCOMPARE(shared.error, alone.error);
        if (!isRead)
            continue;
        if (described(shared) != described(alone))
            QFAIL(qPrintable(u"other lines with seed %1"_s.arg(seed)));
        QCOMPARE(shared.format.lineEnd, alone.format.lineEnd);
        QCOMPARE(shared.format.encoding, alone.format.encoding);
        QCOMPARE(shared.format.isLastLineEnded, alone.format.isLastLineEnded);
        QCOMPARE(written(&shared), written(&alone));
    }
    QCOMPARE(isMarked, damagedAt < 0 && (pieces.join().contains('*') || head.contains('*')));
}

void TestTextFile::sequentialDevice()
{
    class Pipe : public QIODevice
    {
    public:
        QByteArray left = "\xC3\xA9\nb\xFF";
        bool isBroken = false;
        bool isSequential() const override { return true; }
        qint64 readData(char *data, qint64 size) override
        {
            if (left.isEmpty() && isBroken)
                setErrorString(u"broken"_s);
            if (left.isEmpty() || size == 0)
                return left.isEmpty() ? -1 : 0;
            *data = left.at(0);
            left.remove(0, 1);
            return 1;
        }
        qint64 writeData(const char *, qint64) override { return -1; }
    } pipe;
    QVERIFY(pipe.open(QIODevice::ReadOnly | QIODevice::Unbuffered));
    Text text;
    QVERIFY(TextFile::read(pipe, QStringConverter::Utf8, &text.lines, &text.format, &text.error));
    QCOMPARE(written(&text), QByteArray("\xC3\xA9\nb\xFF"));
    pipe.left = "half";
    pipe.isBroken = true;
    QVERIFY(!TextFile::read(pipe, QStringConverter::Utf8, &text.lines, &text.format, &text.error));
    QCOMPARE(text.error, u"broken"_s);
}

void TestTextFile::mixedLineEnds()
{
    Text text;
    QVERIFY(readFrom("a\nb\r\nc\r\nd\re", &text));
    QCOMPARE(text.format.lineEnd, LineEnd::CrLf);
    text.lines.insert(1, std::make_unique<TextLine>(u"new"_s).release());
    text.lines.at(4)->insertText(1, u"!"_s);
    QCOMPARE(written(&text), QByteArray("a\nnew\r\nb\r\nc\r\nd!\re"));
    // The last line had no end of its own.
    text.lines.append(std::make_unique<TextLine>(u"f"_s).release());
    QCOMPARE(written(&text), QByteArray("a\nnew\r\nb\r\nc\r\nd!\re\r\nf"));
}

void TestTextFile::emptiedLines_data()
{
    const Rows<QByteArray, int, QByteArray> row("bytes", "emptied", "expected");
    row("cr, then lf", "a\rb\nc\nd", 1, "a\r\n\nc\nd");
    row("cr, then the last lf", "a\nc\rb\n", 2, "a\nc\r\n\n");
    row("cr, then the end", "a\nc\rb", 2, "a\nc\r");
    row("cr, then crlf", "a\rb\r\nc", 1, "a\r\r\nc");
    row("cr, then cr", "a\rb\rc", 1, "a\r\rc");
    row("crlf, then lf", "a\r\nb\nc", 1, "a\r\n\nc");
}

// The lines have to be the same when they are read again.
void TestTextFile::emptiedLines()
{
    QFETCH(QByteArray, bytes);
    QFETCH(int, emptied);
    Text text;
    QVERIFY(readFrom(bytes, &text));
    text.lines.at(emptied)->removeText(0, 1);
    QTEST(written(&text), "expected");
    // A last line without text and end cannot be seen in a file.
    Text again;
    QVERIFY(readFrom(written(&text), &again));
    QStringList lines = linesOf(text);
    if (lines.constLast().isEmpty() && !text.format.isLastLineEnded)
        lines.removeLast();
    QCOMPARE(linesOf(again), lines);
}

void TestTextFile::unencodableCharacters_data()
{
    const Rows<QByteArray, QString, QByteArray> row("bytes", "typed", "expected");
    row("latin-1 takes its own letters", "\xFF", QString(QChar(0xE9)), "\xE9\xFF");
    row("latin-1 is not left unasked", "\xFF", QString(QChar(0x20AC)), "write failed");
    row("utf-8 marks half a pair", "z", QString(QChar(0xD83D)), "\xEF\xBF\xBDz");
    row("utf-8 with a bad byte takes all", "\xC3\xA9\xFF", u"\u20AC\U0001F600"_s,
        "\xE2\x82\xAC\xF0\x9F\x98\x80\xC3\xA9\xFF");
    row("a bad byte may be moved", "\xC3\xA9", QString(QChar(0xDCFF)) + u'x', "\xFFx\xC3\xA9");
    row("utf-16 holds half a pair", QByteArray("\xFF\xFEz\0", 4), QString(QChar(0xD83D)),
        QByteArray("\xFF\xFE\x3D\xD8z\0", 6));
}

void TestTextFile::unencodableCharacters()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, typed);
    QFETCH(QByteArray, expected);
    Text text;
    QVERIFY(readFrom(bytes, &text));
    text.lines.at(0)->insertText(0, typed);
    const bool isLacking = expected == "write failed";
    QCOMPARE(TextFile::unencodable(text.lines, text.format), isLacking ? typed : QString());
    QCOMPARE(written(&text), expected);
    QCOMPARE(!text.error.isEmpty(), isLacking);
}

void TestTextFile::writeFailure()
{
    QFile full(u"/dev/full"_s);
    QVERIFY(full.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
    Text text;
    QVERIFY(readFrom("text", &text));
    QVERIFY(!TextFile::write(full, text.lines, text.format, &text.error));
    QCOMPARE(text.error, QString::fromLocal8Bit(std::strerror(ENOSPC)));
}

QTEST_MAIN(TestTextFile)
#include "tst_textfile.moc"
