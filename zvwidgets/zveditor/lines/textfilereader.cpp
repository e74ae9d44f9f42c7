#include "zvwidgets/zveditor/lines/textfilereader.h"

#include "zvwidgets/zveditor/lines/keptbytes.h"
#include "zvwidgets/zveditor/lines/linepool.h"
#include "zvwidgets/zveditor/lines/textlinearray.h"

#include <QByteArray>
#include <QIODevice>
#include <QStringConverter>
#include <QtEndian>

#include <algorithm>
#include <cstring>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace zvwidgets {

namespace {

constexpr qint64 bytesPerRead = 64 * 1024;
/// The most bytes that a unit of an encoding has; no read may end amidst one.
constexpr qint64 unitSize = 4;
// Below this much room a block is not worth decoding into.
constexpr qsizetype leastRoom = 512;
/// The end of a chunk that goes on to the end of the device, wherever that will be.
constexpr qint64 openEnd = -1;
/// More would only wait for the device and for memory.
constexpr int mostThreads = 8;
/// With fewer for each, starting threads takes longer than they save.
constexpr int chunksPerThread = 4;

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

    /// False if the text ended amidst a character.
    bool finish(LineCutter &) const { return state.remainingChars == 0; }

private:
    const bool isUtf32;
    const bool isBigEndian;
};

/// Understands every byte.
class TolerantDecoder : public KeepingDecoder
{
public:
    bool accepts(QByteArrayView) const { return true; }
    bool hasError() const { return false; }
    bool finish(LineCutter &cutter)
    {
        QChar *const start = cutter.room(leastRoom);
        cutter.advance(KeepingDecoder::finish(start) - start);
        return true;
    }
};

// Reads until \a wanted bytes are there or the device ends: a short read must not cut
// a character of four bytes.
qint64 fill(QIODevice &device, char *bytes, qint64 wanted)
{
    qint64 filled = 0;
    while (filled < wanted) {
        const qint64 got = device.read(bytes + filled, wanted - filled);
        if (got < 0)
            return -1;
        if (got == 0)
            break;
        filled += got;
    }
    return filled;
}

template <typename Decoder>
void decodeInto(LineCutter &cutter, Decoder &decoder, QByteArrayView bytes)
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

} // namespace

/// A part of the file that one thread works on.
struct TextFileReader::Chunk
{
    /// Follows the contexts of the lines that came since the last call.
    void followOn(const ReadOptions::Follow &follow)
    {
        if (!follow)
            return;
        for (; followed < cut.lines.size(); ++followed) {
            TextLine *const line = cut.lines[followed];
            context = follow(context, line);
            line->setContext(context);
        }
    }

    int number = 0;
    qint64 at = 0; ///< offset of the bytes to be read next
    qint64 end = openEnd;
    CutLines cut;
    size_t followed = 0;  ///< number of lines
    int startContext = 0; ///< taken to be that of the first line
    int context = 0;      ///< behind the lines followed
};

/// A thread and what it has for its own.
struct TextFileReader::Helper
{
    LineSlabs slabs;
    ReadOptions::Follow follow;
    std::jthread thread;
};

TextFileReader::TextFileReader(QIODevice &source, const TextFormat &wanted, BadBytes bad,
                               TextLineArray *target, const ReadOptions &how)
    : format(wanted)
    , badBytes(bad)
    , options(how)
    , device(source)
    , size(source.size())
    , bufferSize(bytesPerRead)
    , unclaimed(source.pos())
    , lines(target)
{
    // A small file is not worth a large buffer. One that says nothing of its size gets it.
    if (size > unclaimed && size - unclaimed < bytesPerRead)
        bufferSize = (size - unclaimed + unitSize) / unitSize * unitSize;
}

TextFileReader::~TextFileReader() = default;

// Only where the byte of a line feed is a line feed everywhere.
bool TextFileReader::canBeSplit() const
{
    return format.encoding == QStringConverter::Utf8 || format.encoding == QStringConverter::Latin1;
}

int TextFileReader::threadCount() const
{
    const qint64 useful = (size - unclaimed) / (chunksPerThread * options.chunkSize);
    if (!canBeSplit() || useful < 2)
        return 1;
    const int wanted =
        options.threads > 0 ? options.threads : int(std::thread::hardware_concurrency());
    return int(std::clamp<qint64>(std::min(wanted, mostThreads), 1, useful));
}

TextFileReader::Outcome TextFileReader::read()
{
    std::vector<std::unique_ptr<Helper>> helpers;
    const int threads = threadCount();
    isSplit = threads > 1;
    for (int i = 1; i < threads; ++i) {
        auto helper = std::make_unique<Helper>();
        if (options.follow)
            helper->follow = options.followElsewhere();
        try {
            helper->thread = std::jthread([this, own = helper.get()] {
                LineCutter cutter(&own->slabs);
                work(cutter, own->follow);
            });
        } catch (const std::system_error &) {
            // No more threads are to be had: those there are do all of it.
            break;
        }
        helpers.push_back(std::move(helper));
    }
    LineCutter cutter(nullptr);
    work(cutter, options.follow);
    for (const auto &helper : helpers)
        helper->thread.join();
    for (const auto &helper : helpers)
        LinePool::adopt(&helper->slabs);
    if (!isStopped()) {
        mostCommonEnd = settleLineEnds(lines, firstEnd, ends);
        lastLineIsEnded = areAllEnded(*lines, ends);
    }
    return outcome;
}

void TextFileReader::work(LineCutter &cutter, const ReadOptions::Follow &follow)
{
    QByteArray buffer(bufferSize, Qt::Uninitialized);
    while (std::optional<Chunk> chunk = claim())
        take(*chunk, cutter, follow, buffer);
}

// A chunk that failed is handed over too: its lines have to die in the main thread.
void TextFileReader::take(Chunk &chunk, LineCutter &cutter, const ReadOptions::Follow &follow,
                          QByteArray &buffer)
{
    cutter.setTarget(&chunk.cut);
    const bool isDecoded =
        badBytes == BadBytes::Keep
            ? decode(chunk, cutter, follow, buffer, TolerantDecoder())
            : decode(chunk, cutter, follow, buffer, StrictDecoder(format.encoding));
    if (isDecoded)
        cutter.finish();
    chunk.followOn(follow);
    handOver(chunk, follow, true);
}

template <typename Decoder>
bool TextFileReader::decode(Chunk &chunk, LineCutter &cutter, const ReadOptions::Follow &follow,
                            QByteArray &buffer, Decoder decoder)
{
    while (!isStopped()) {
        const qint64 got = readPart(chunk, buffer);
        if (got < 0) {
            stop(Outcome::DeviceFailed);
            return false;
        }
        const QByteArrayView bytes(buffer.constData(), got);
        const bool isAccepted = decoder.accepts(bytes);
        if (isAccepted)
            decodeInto(cutter, decoder, bytes);
        if (!isAccepted || decoder.hasError() || (got == 0 && !decoder.finish(cutter))) {
            stop(Outcome::Undecodable);
            return false;
        }
        if (got == 0)
            return true;
        chunk.followOn(follow);
        handOver(chunk, follow, false);
    }
    return false;
}

/// The next chunk, nothing if there is none.
std::optional<TextFileReader::Chunk> TextFileReader::claim()
{
    Chunk chunk;
    {
        const std::lock_guard lock(deviceMutex);
        if (isAllClaimed || isStopped())
            return {};
        chunk.number = claimed++;
        chunk.at = unclaimed;
        if (isSplit)
            chunk.end = findEnd(unclaimed + options.chunkSize);
        unclaimed = chunk.end;
        isAllClaimed = chunk.end == openEnd;
    }
    // The best that is known: most chunks start in the context that the text before
    // them is in.
    const std::lock_guard lock(joinMutex);
    chunk.startContext = chunk.context = context;
    return chunk;
}

/// Behind the first line feed that ends at \a from or behind it.
qint64 TextFileReader::findEnd(qint64 from)
{
    if (from >= size || !device.seek(from - 1))
        return openEnd;
    std::array<char, 4096> bytes;
    for (qint64 at = from - 1;;) {
        const qint64 got = fill(device, bytes.data(), qint64(bytes.size()));
        // Reading the chunk will meet the error again.
        if (got <= 0)
            return openEnd;
        if (const void *found = std::memchr(bytes.data(), '\n', size_t(got)))
            return at + (static_cast<const char *>(found) - bytes.data()) + 1;
        at += got;
    }
}

/// Reads what comes next of \a chunk; the number of bytes, 0 at its end, -1 on failure.
qint64 TextFileReader::readPart(Chunk &chunk, QByteArray &buffer)
{
    const qint64 left = chunk.end == openEnd ? buffer.size() : chunk.end - chunk.at;
    const qint64 wanted = std::min<qint64>(buffer.size(), left);
    if (wanted == 0)
        return 0;
    const std::lock_guard lock(deviceMutex);
    if (device.pos() != chunk.at && !device.seek(chunk.at))
        return -1;
    const qint64 got = fill(device, buffer.data(), wanted);
    chunk.at += std::max<qint64>(got, 0);
    return got;
}

/// Gives away the lines that \a chunk has so far if it is the next one; the last of
/// them if \a isWhole, and then if it isn't the next one too.
void TextFileReader::handOver(Chunk &chunk, const ReadOptions::Follow &follow, bool isWhole)
{
    const std::lock_guard lock(joinMutex);
    if (chunk.number != joined) {
        if (isWhole)
            early.emplace(chunk.number, std::move(chunk));
        return;
    }
    append(chunk, follow);
    if (!isWhole)
        return;
    ++joined;
    for (auto next = early.find(joined); next != early.end(); next = early.find(++joined)) {
        append(next->second, follow);
        early.erase(next);
    }
}

void TextFileReader::append(Chunk &chunk, const ReadOptions::Follow &follow)
{
    if (follow && chunk.startContext != context)
        mend(chunk, follow);
    CutLines &cut = chunk.cut;
    if (firstEnd == LineEnd::Document)
        firstEnd = cut.firstEnd;
    else if (cut.firstEnd != LineEnd::Document)
        cut.nameEndsAfter(firstEnd);
    for (size_t i = 0; i < ends.size(); ++i)
        ends[i] += std::exchange(cut.ends[i], 0);
    lines->append(cut.lines);
    cut.lines.clear();
    chunk.followed = 0;
    chunk.startContext = context = chunk.context;
}

/// Follows the lines of \a chunk again, in the context that is behind the lines
/// joined so far, until they end in the one that they had ended in.
void TextFileReader::mend(Chunk &chunk, const ReadOptions::Follow &follow) const
{
    int ctx = context;
    for (TextLine *const line : chunk.cut.lines) {
        const int before = line->context();
        ctx = follow(ctx, line);
        line->setContext(ctx);
        if (ctx == before)
            return;
    }
    chunk.context = ctx;
}

} // namespace zvwidgets
