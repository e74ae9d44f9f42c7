#include "zvwidgets/zveditor/textfile.h"

#include "zvwidgets/zveditor/byteordermark.h"
#include "zvwidgets/zveditor/textlinearray.h"

#include <QBuffer>
#include <QFile>
#include <QIODevice>
#include <QTextStream>
#include <QtEndian>

#include <array>
#include <utility>

namespace zvwidgets {

namespace {

constexpr qint64 bytesPerRead = 64 * 1024;
constexpr qsizetype blockCapacity = 32 * 1024;
// Below this much room a block is not worth decoding into.
constexpr qsizetype leastRoom = 512;
// A longer line has its text alone, so that changing its neighbours gives their
// memory back.
constexpr qsizetype longLine = blockCapacity / 2;

/// Collects decoded text in blocks that many lines share and cuts it into lines
/// that refer to their part of the block.
class LineCutter
{
public:
    explicit LineCutter(TextLineArray *target) : lines(target) {}

    /// Room for at least \a wanted characters; what was written there is
    /// announced by advance().
    QChar *room(qsizetype wanted)
    {
        if (capacity - used < wanted)
            newBlock(wanted);
        return reinterpret_cast<QChar *>(text() + used);
    }
    qsizetype roomLeft() const { return capacity - used; }

    void advance(qsizetype written)
    {
        used += written;
        cut(false);
    }

    /// Hands out what follows the last line end, if there is anything.
    void finish()
    {
        cut(true);
        if (lineStart < used)
            addLine(used, used);
        settleLineEnds();
    }

    LineEnd lineEnd() const { return mostCommonEnd; }

private:
    char16_t *text() { return block.data(); }

    void newBlock(qsizetype wanted)
    {
        const qsizetype unfinished = used - lineStart;
        // Growing by half again keeps the copying of a long line linear.
        const qsizetype needed = unfinished + std::max(wanted, unfinished / 2);
        const qsizetype size = std::max(blockCapacity, needed);
        // One more for the null character behind the last line.
        QStringPrivate fresh(QTypedArrayData<char16_t>::allocate(size + 1));
        Q_CHECK_PTR(fresh.data());
        std::copy_n(text() + lineStart, unfinished, fresh.data());
        block = std::move(fresh);
        capacity = size;
        used = unfinished;
        searched -= lineStart;
        nextTab -= lineStart;
        lineStart = 0;
    }

    qsizetype find(char16_t character, qsizetype from)
    {
        const qsizetype found = QStringView(text() + from, used - from).indexOf(character);
        return found < 0 ? used : from + found;
    }

    // A carriage return at the very end waits for what follows it.
    void cut(bool atEnd)
    {
        if (nextTab >= searched)
            nextTab = find(u'\t', searched);
        qsizetype cr = find(u'\r', searched);
        qsizetype lf = find(u'\n', searched);
        while (std::min(cr, lf) < used) {
            const qsizetype end = std::min(cr, lf);
            const bool isCr = end == cr;
            if (isCr && end + 1 == used && !atEnd) {
                searched = end;
                return;
            }
            const bool isCrLf = isCr && end + 1 == lf && lf < used;
            addLine(end, end + (isCrLf ? 2 : 1));
            noteEnd(isCrLf ? LineEnd::CrLf : isCr ? LineEnd::Cr : LineEnd::Lf);
            if (cr < lineStart)
                cr = find(u'\r', lineStart);
            if (lf < lineStart)
                lf = find(u'\n', lineStart);
            if (nextTab < lineStart)
                nextTab = find(u'\t', lineStart);
        }
        searched = used;
    }

    // The null character behind the text takes the place of the line end: a
    // QString promises one.
    void addLine(qsizetype end, qsizetype next)
    {
        const qsizetype length = end - lineStart;
        char16_t *const start = text() + lineStart;
        const bool fillsBlock = 2 * length > capacity;
        QString lineText;
        if (length > longLine && !fillsBlock) {
            lineText = QString(reinterpret_cast<const QChar *>(start), length);
        } else if (length > 0) {
            start[length] = 0;
            block.d_ptr()->ref();
            lineText = QString(QStringPrivate(block.d_ptr(), start, length));
        }
        auto line = std::make_unique<TextLine>(std::move(lineText));
        line->setMayHaveTabs(nextTab < end);
        lines->append(line.release());
        lineStart = next;
    }

    // Most files know one line end, and then no line has to name it.
    void noteEnd(LineEnd end)
    {
        if (firstEnd == LineEnd::Document)
            firstEnd = end;
        ++ends[size_t(end)];
        if (end != firstEnd)
            lines->at(lines->size() - 1)->setLineEnd(end);
    }

    void settleLineEnds()
    {
        if (firstEnd == LineEnd::Document)
            return;
        mostCommonEnd = firstEnd;
        for (const LineEnd end : {LineEnd::Lf, LineEnd::CrLf, LineEnd::Cr}) {
            if (ends[size_t(end)] > ends[size_t(mostCommonEnd)])
                mostCommonEnd = end;
        }
        if (mostCommonEnd == firstEnd)
            return;
        for (int i = 0; i < lines->size(); ++i) {
            TextLine *line = lines->at(i);
            if (line->lineEnd() == LineEnd::Document)
                line->setLineEnd(firstEnd);
            else if (line->lineEnd() == mostCommonEnd)
                line->setLineEnd(LineEnd::Document);
        }
    }

    TextLineArray *const lines;
    QStringPrivate block;
    qsizetype capacity = 0;
    qsizetype used = 0;
    qsizetype lineStart = 0;
    qsizetype searched = 0;
    /// First tab of the unfinished line or behind it, at least `searched` if none is known.
    qsizetype nextTab = 0;
    LineEnd firstEnd = LineEnd::Document;
    LineEnd mostCommonEnd = LineEnd::Lf;
    std::array<int, 4> ends{};
};

/// Tells whether all bytes were understood.
class StrictDecoder : public QStringDecoder
{
public:
    explicit StrictDecoder(QStringConverter::Encoding encoding)
        : QStringDecoder(encoding, Flag::ConvertInitialBom)
        , isUtf32(encoding == QStringConverter::Utf32LE || encoding == QStringConverter::Utf32BE)
        , isBigEndian(encoding == QStringConverter::Utf32BE)
    {}

    /// The decoder itself takes any number of 32 bits for a character.
    bool accepts(QByteArrayView bytes) const
    {
        if (!isUtf32)
            return true;
        if (bytes.size() % 4)
            return false;
        for (qsizetype i = 0; i < bytes.size(); i += 4) {
            const void *unit = bytes.data() + i;
            const auto code =
                isBigEndian ? qFromBigEndian<quint32>(unit) : qFromLittleEndian<quint32>(unit);
            if (code > QChar::LastValidCodePoint || QChar::isSurrogate(code))
                return false;
        }
        return true;
    }

    /// True if the text ended amidst a character.
    bool isIncomplete() const { return state.remainingChars != 0; }

private:
    const bool isUtf32;
    const bool isBigEndian;
};

enum class Outcome
{
    Done,
    Undecodable,
    DeviceFailed
};

// Reads until the buffer is full or the device ends: a short read must not cut a
// character of four bytes.
qint64 fill(QIODevice &device, QByteArray &buffer)
{
    qint64 filled = 0;
    while (filled < buffer.size()) {
        const qint64 got = device.read(buffer.data() + filled, buffer.size() - filled);
        if (got < 0)
            return -1;
        if (got == 0)
            break;
        filled += got;
    }
    return filled;
}

void decode(StrictDecoder &decoder, QByteArrayView bytes, LineCutter &cutter)
{
    while (!bytes.isEmpty()) {
        // Every encoding makes at most one character of a byte; the margin is
        // for what the decoder still holds.
        const qsizetype margin = 8;
        if (cutter.roomLeft() < leastRoom)
            cutter.room(leastRoom);
        const QByteArrayView part = bytes.first(std::min(bytes.size(), cutter.roomLeft() - margin));
        QChar *const start = cutter.room(part.size());
        QChar *const end = decoder.appendToBuffer(start, part);
        cutter.advance(end - start);
        bytes = bytes.sliced(part.size());
    }
}

Outcome readAs(QIODevice &device, TextLineArray *lines, TextFormat *format)
{
    StrictDecoder decoder(format->encoding);
    LineCutter cutter(lines);
    QByteArray buffer(bytesPerRead, Qt::Uninitialized);
    for (;;) {
        const qint64 got = fill(device, buffer);
        if (got < 0)
            return Outcome::DeviceFailed;
        if (got == 0)
            break;
        const QByteArrayView bytes(buffer.constData(), got);
        if (!decoder.accepts(bytes))
            return Outcome::Undecodable;
        decode(decoder, bytes, cutter);
        if (decoder.hasError())
            return Outcome::Undecodable;
    }
    if (decoder.isIncomplete())
        return Outcome::Undecodable;
    cutter.finish();
    format->lineEnd = cutter.lineEnd();
    return Outcome::Done;
}

// What the file may be, likeliest first; Latin-1 ends the list and takes
// everything.
QList<TextFormat> candidates(QByteArrayView head, QStringConverter::Encoding wish)
{
    QList<TextFormat> formats;
    for (const auto encoding :
         {QStringConverter::Utf8, QStringConverter::Utf32LE, QStringConverter::Utf32BE,
          QStringConverter::Utf16LE, QStringConverter::Utf16BE}) {
        if (head.startsWith(byteOrderMark(encoding)))
            formats.append({encoding, true, LineEnd::Lf});
    }
    formats.append({withByteOrder(wish), false, LineEnd::Lf});
    formats.append({QStringConverter::Latin1, false, LineEnd::Lf});
    return formats;
}

} // namespace

bool TextFile::read(QIODevice &device, QStringConverter::Encoding wish, TextLineArray *lines,
                    TextFormat *format, QString *error)
{
    if (device.isSequential()) {
        // A second try needs the bytes again.
        QByteArray bytes = device.readAll();
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::ReadOnly);
        return read(buffer, wish, lines, format, error);
    }
    const qint64 start = device.pos();
    const QByteArray head = device.peek(4);
    const QList<TextFormat> formats = candidates(head, wish);
    for (const TextFormat &candidate : formats) {
        *format = candidate;
        const qsizetype mark =
            candidate.hasByteOrderMark ? byteOrderMark(candidate.encoding).size() : 0;
        const bool wasAutoDelete = std::exchange(lines->autoDelete, true);
        lines->clear();
        lines->autoDelete = wasAutoDelete;
        const Outcome outcome =
            device.seek(start + mark) ? readAs(device, lines, format) : Outcome::DeviceFailed;
        if (outcome == Outcome::DeviceFailed)
            break;
        if (outcome == Outcome::Done)
            return true;
    }
    if (error)
        *error = device.errorString();
    return false;
}

void TextFile::read(QTextStream &stream, TextLineArray *lines, TextFormat *format)
{
    // The stream's own reading of lines keeps a lone carriage return in the text.
    LineCutter cutter(lines);
    for (;;) {
        const QString part = stream.read(blockCapacity / 2);
        if (part.isEmpty())
            break;
        std::copy_n(part.constData(), part.size(), cutter.room(part.size()));
        cutter.advance(part.size());
    }
    cutter.finish();
    format->lineEnd = cutter.lineEnd();
}

} // namespace zvwidgets
