#pragma once

#include "zvwidgets/zveditor/lines/linecutter.h"
#include "zvwidgets/zveditor/lines/textfile.h"

#include <array>
#include <atomic>
#include <map>
#include <mutex>
#include <optional>

class QByteArray;
class QIODevice;

namespace zvwidgets {

class TextLineArray;

/// What becomes of bytes that the encoding gives no meaning to.
enum class BadBytes
{
    Refuse,
    Keep, ///< see keptbytes.h; for UTF-8 only
};

/// One try to read a device in one encoding.
///
/// A large file is read in chunks that end behind a line feed. Each is decoded, cut
/// into lines, and its contexts are followed, while it is in the cache, by one of
/// several threads. Which context a chunk starts in is only guessed then; chunks are
/// joined in their order, and what follows from a wrong guess is followed again.
class TextFileReader
{
public:
    enum class Outcome
    {
        Done,
        Undecodable,
        DeviceFailed
    };

    /// The device, at the place to read from, and \a lines, which is empty, have to
    /// outlive this object. Of \a format the encoding counts.
    TextFileReader(QIODevice &device, const TextFormat &format, BadBytes badBytes,
                   TextLineArray *lines, const ReadOptions &options);
    ~TextFileReader();

    /// To be called once. With Outcome::Done all lines are there.
    [[nodiscard]] Outcome read();
    /// The line end that most lines have; after read().
    LineEnd lineEnd() const { return mostCommonEnd; }
    /// Whether the last line has a line end; after read().
    bool isLastLineEnded() const { return lastLineIsEnded; }

private:
    struct Chunk;
    struct Helper;

    bool canBeSplit() const;
    int threadCount() const;
    void work(LineCutter &cutter, const ReadOptions::Follow &follow);
    void take(Chunk &chunk, LineCutter &cutter, const ReadOptions::Follow &follow,
              QByteArray &buffer);
    template <typename Decoder>
    bool decode(Chunk &chunk, LineCutter &cutter, const ReadOptions::Follow &follow,
                QByteArray &buffer, Decoder decoder);
    void stop(Outcome reason) { outcome.store(reason, std::memory_order_relaxed); }
    bool isStopped() const { return outcome.load(std::memory_order_relaxed) != Outcome::Done; }

    std::optional<Chunk> claim();
    qint64 findEnd(qint64 from);
    qint64 readPart(Chunk &chunk, QByteArray &buffer);

    void handOver(Chunk &chunk, const ReadOptions::Follow &follow, bool isWhole);
    void append(Chunk &chunk, const ReadOptions::Follow &follow);
    void mend(Chunk &chunk, const ReadOptions::Follow &follow) const;

    const TextFormat format;
    const BadBytes badBytes;
    const ReadOptions options;
    std::atomic<Outcome> outcome = Outcome::Done;
    LineEnd mostCommonEnd = LineEnd::Lf;
    bool lastLineIsEnded = false;

    /// Held by whoever uses the device and what follows here.
    std::mutex deviceMutex;
    QIODevice &device;
    const qint64 size;
    qint64 bufferSize;    ///< of a thread
    bool isSplit = false; ///< into chunks
    qint64 unclaimed;     ///< where the next chunk starts
    bool isAllClaimed = false;
    int claimed = 0;

    /// Held by whoever joins chunks and uses what follows here.
    std::mutex joinMutex;
    TextLineArray *const lines;
    int joined = 0;             ///< number of the chunk that is next
    std::map<int, Chunk> early; ///< those that came before it
    int context = 0;            ///< behind the lines joined so far
    LineEnd firstEnd = LineEnd::Document;
    std::array<int, 4> ends{};
};

} // namespace zvwidgets
