#include "app/search/filesearch.h"

#include "app/search/linebytes.h"

#include <QFile>
#include <QScopeGuard>

#include <cstring>
#include <fcntl.h>
#include <limits>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace vesk {

using namespace LineBytes;

namespace {

/// Read, and worked on, in blocks of this many bytes or characters, between two looks
/// at the user's wishes: no work of more than a few milliseconds.
constexpr qsizetype blockSize = 1024 * 1024;

/// What two windows of a long line share on either side of where the second one begins
/// to look: enough for a row to show, and for every match but absurd ones.
constexpr qsizetype overlap = 64 * 1024;

} // namespace

FileSearch::FileSearch(const SearchQuery &wanted, GoOn callback)
    : query(wanted), goOn(std::move(callback))
{
    const Qt::CaseSensitivity sensitivity =
        query.caseSensitive ? Qt::CaseSensitive : Qt::CaseInsensitive;
    const auto letters =
        query.caseSensitive ? ByteNeedle::Case::Sensitive : ByteNeedle::Case::Ignored;
    if (query.regExp) {
        pattern = SearchPattern(query.text, sensitivity, goOn);
        asciiNeedle = true;
        utf8Needle = ByteNeedle(pattern.requiredText().toLatin1(), letters);
        return;
    }
    matcher = QStringMatcher(query.text, sensitivity);
    const QByteArray utf8 = query.text.toUtf8();
    asciiNeedle = isAscii(utf8.constData(), utf8.size());
    // That of other letters is told apart in the bytes.
    utf8Needle = ByteNeedle(utf8, asciiNeedle ? letters : ByteNeedle::Case::Sensitive);
    const QByteArray latin1 = query.text.toLatin1();
    if (!asciiNeedle && QString::fromLatin1(latin1) == query.text)
        latin1Needle = ByteNeedle(latin1);
}

bool FileSearch::search(const QString &path, const HitHandler &hitHandler)
{
    if (query.text.isEmpty())
        return true;
    // Opening a named pipe would wait for somebody to write to it.
    const int fd =
        ::open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
    if (fd < 0)
        return true;
    const auto closer = qScopeGuard([fd] { ::close(fd); });
    struct stat info;
    if (::fstat(fd, &info) != 0 || !S_ISREG(info.st_mode))
        return true;
    handler = &hitHandler;
    lineNumber = 1;
    longLine = {};
    // Files that the system makes up have no size.
    unread = info.st_size > 0 ? info.st_size : std::numeric_limits<qint64>::max();
    decoding = Decoding::Undecided;
    const bool wentOn = searchFile(fd);
    handler = nullptr;
    return wentOn;
}

/// Does \a work on one piece after the other of what may be a line of megabytes:
/// it gets the start and the length of each, and answers with false when it has
/// enough. False if the search was stopped.
template <typename Work>
bool FileSearch::inPieces(qsizetype size, const Work &work) const
{
    for (qsizetype at = 0; at < size; at += blockSize) {
        if (at > 0 && !goOn())
            return false;
        if (!work(at, qMin(blockSize, size - at)))
            break;
    }
    return true;
}

bool FileSearch::searchFile(int fd)
{
    foreign = QStringDecoder();
    qsizetype kept = 0; // of a line that has not come to its end
    bool isLast = false;
    for (bool isFirst = true; !isLast; isFirst = false) {
        qsizetype size = kept + readBlock(fd, kept, &isLast);
        if (isFirst)
            size = meetMark(size);
        qsizetype taken = 0;
        if (!searchBuffer(kept, size, isLast, fd, &taken))
            return false;
        kept = size - taken;
        memmove(buffer.data(), buffer.constData() + taken, size_t(kept));
        if (!goOn())
            return false;
    }
    return true;
}

/// Reads the next block to \a kept in the buffer; the number of bytes that came.
qsizetype FileSearch::readBlock(int fd, qsizetype kept, bool *isLast)
{
    if (buffer.size() < kept + blockSize)
        buffer.resize(kept + blockSize);
    const qsizetype wanted = qMin<qint64>(blockSize, unread);
    const qsizetype got = readFully(fd, buffer.data() + kept, wanted);
    unread -= got;
    *isLast = got < wanted || unread == 0;
    return foreign.isValid() ? recode(kept, got) : got;
}

/// Makes UTF-8 of the \a size bytes at \a kept in the buffer; the number of bytes then.
qsizetype FileSearch::recode(qsizetype kept, qsizetype size)
{
    const QString text = foreign.decode(QByteArrayView(buffer.constData() + kept, size));
    const QByteArray utf8 = toUtf8.encode(text);
    buffer.resize(qMax(buffer.size(), kept + utf8.size()));
    memcpy(buffer.data() + kept, utf8.constData(), size_t(utf8.size()));
    return utf8.size();
}

/// Learns what a byte-order mark in the first \a size bytes of the file tells; the
/// number of bytes in the buffer then.
qsizetype FileSearch::meetMark(qsizetype size)
{
    const auto encoding =
        QStringConverter::encodingForData(QByteArrayView(buffer.constData(), size));
    if (!encoding)
        return size;
    decoding = Decoding::Utf8;
    if (*encoding != QStringConverter::Utf8) {
        foreign = QStringDecoder(*encoding);
        toUtf8.resetState();
        return recode(0, size);
    }
    constexpr qsizetype markSize = 3;
    memmove(buffer.data(), buffer.constData() + markSize, size_t(size - markSize));
    return size - markSize;
}

/// Searches what can be searched of the \a size bytes in the buffer and tells how many
/// are no longer needed. The first \a kept were there before. False if the search was
/// stopped.
bool FileSearch::searchBuffer(qsizetype kept, qsizetype size, bool isLast, int fd, qsizetype *taken)
{
    const char *const data = buffer.constData();
    endOfFile = isLast ? data + size : nullptr;
    // The kept part can hold a line end only in its last byte, a CR.
    const qsizetype unseen = qMax<qsizetype>(0, kept - 1);
    const qsizetype ends = wholeLines(data + unseen, size - unseen);
    const qsizetype whole = isLast ? size : ends > 0 ? unseen + ends : 0;
    if (whole == 0)
        return size < longestLine || searchWindow(data, size, false, fd, taken);
    const char *start = data;
    const char *const end = data + whole;
    if (longLine.isOpen) {
        const char *const stop = lineEnd(data + longLine.from, end);
        if (!searchWindow(data, stop - data, true, fd, taken))
            return false;
        start = nextLine(stop, end);
        lineNumber += start > stop ? 1 : 0;
        longLine = {};
    }
    *taken = whole;
    return searchBytes(start, end - start, fd);
}

/// Searches the next part of a line that is longer than what is held of it.
bool FileSearch::searchWindow(const char *data, qsizetype size, bool isLast, int fd,
                              qsizetype *taken)
{
    // It may be the first half of the line's end.
    if (!isLast && data[size - 1] == '\r')
        --size;
    const qsizetype from = longLine.from;
    const qsizetype limit = isLast ? size : characterStart(data, size - overlap);
    *taken = isLast ? size : characterStart(data, limit - overlap);
    if (!longLine.isDone && !searchPart(data, size, {from, limit, true}, fd))
        return false;
    longLine.isOpen = true;
    longLine.from = limit - *taken;
    return true;
}

/// \a bytes counts in bytes where a window counts in columns.
bool FileSearch::searchPart(const char *data, qsizetype size, const Window &bytes, int fd)
{
    Outlook outlook;
    if (!judge(data, size, fd, &outlook))
        return false;
    const char *hit = nullptr;
    if (outlook.kind == Outlook::Lines &&
        !findBytes(data + bytes.from, size - bytes.from, *outlook.needle, &hit))
        return false;
    const qsizetype resume = std::exchange(longLine.resume, 0);
    if (outlook.kind == Outlook::Nothing || (outlook.kind == Outlook::Lines && !hit))
        return true;
    textBuffer.clear();
    if (!decode(data, bytes.from, fd))
        return false;
    const qsizetype from = textBuffer.size() + resume;
    if (!decode(data + bytes.from, bytes.limit - bytes.from, fd))
        return false;
    const bool isLast = bytes.limit == size;
    const qsizetype limit = textBuffer.size() + (isLast ? 1 : 0);
    qsizetype next = -1;
    if (!decode(data + bytes.limit, size - bytes.limit, fd) ||
        !searchLine(textBuffer, {from, limit, true}, &next))
        return false;
    longLine.isDone = next < 0;
    longLine.resume = qMax<qsizetype>(0, next - limit);
    return true;
}

/// Finds out whether the file is UTF-8 or has to be read as Latin-1. False if the
/// search was stopped.
bool FileSearch::decide(int fd)
{
    if (decoding != Decoding::Undecided)
        return true;
    decoding = Decoding::Latin1;
    MultiByteFinder finder;
    QByteArray block(blockSize, Qt::Uninitialized);
    off_t at = 0;
    for (;;) {
        const ssize_t got = ::pread(fd, block.data(), size_t(blockSize), at);
        if (got <= 0)
            break;
        at += got;
        if (finder.feed(block.constData(), got)) {
            decoding = Decoding::Utf8;
            break;
        }
        if (!goOn())
            return false;
    }
    return true;
}

/// Appends the text of \a data to textBuffer. False if the search was stopped.
bool FileSearch::decode(const char *data, qsizetype size, int fd)
{
    textBuffer.reserve(textBuffer.size() + size);
    QStringDecoder decoder;
    bool wentOn = true;
    const bool isDone = inPieces(size, [&](qsizetype at, qsizetype length) {
        const QByteArrayView piece(data + at, length);
        if (!decoder.isValid()) {
            if (isAscii(piece.data(), length)) {
                textBuffer += QLatin1String(piece);
                return true;
            }
            wentOn = decide(fd);
            if (!wentOn)
                return false;
            decoder = QStringDecoder(decoding == Decoding::Utf8 ? QStringConverter::Utf8
                                                                : QStringConverter::Latin1,
                                     QStringConverter::Flag::ConvertInitialBom);
        }
        textBuffer += decoder.decode(piece);
        return true;
    });
    return isDone && wentOn;
}

/// Where \a hit, null if nowhere, \a needle begins in \a data. False if the search
/// was stopped.
bool FileSearch::findBytes(const char *data, qsizetype size, const ByteNeedle &needle,
                           const char **hit) const
{
    *hit = nullptr;
    return inPieces(size, [&](qsizetype at, qsizetype length) {
        // Up to where a needle ends that begins in this piece.
        const qsizetype reach = qMin(length + needle.size() - 1, size - at);
        *hit = needle.findIn(data + at, reach);
        return !*hit;
    });
}

/// Counts the lines that end from \a data on, unless no line follows them that could
/// have a hit. False if the search was stopped.
bool FileSearch::countLines(const char *data, const char *end)
{
    if (end == endOfFile)
        return true;
    return inPieces(end - data, [&](qsizetype at, qsizetype length) {
        const char *const piece = data + at;
        lineNumber += countLineEnds(piece, length);
        // A pair that is cut in two has been counted here and counts there.
        const bool cutsPair =
            piece + length < end && piece[length - 1] == '\r' && piece[length] == '\n';
        lineNumber -= cutsPair ? 1 : 0;
        return true;
    });
}

/// Searches whole lines.
bool FileSearch::searchBytes(const char *data, qsizetype size, int fd)
{
    Outlook outlook;
    if (!judge(data, size, fd, &outlook))
        return false;
    switch (outlook.kind) {
    case Outlook::Nothing:
        return countLines(data, data + size);
    case Outlook::Lines:
        return searchRawLines(data, size, *outlook.needle, fd);
    case Outlook::Unknown:
        break;
    }
    textBuffer.clear();
    return decode(data, size, fd) && searchText(textBuffer);
}

/// False if the search was stopped.
bool FileSearch::judge(const char *data, qsizetype size, int fd, Outlook *outlook)
{
    outlook->needle = &utf8Needle;
    const bool isKnown = !utf8Needle.isEmpty();
    if (isKnown && asciiNeedle && query.caseSensitive) {
        outlook->kind = Outlook::Lines;
        return true;
    }
    bool ascii = true;
    const bool wentOn = inPieces(size, [&](qsizetype at, qsizetype length) {
        ascii = isAscii(data + at, length);
        return ascii;
    });
    if (!wentOn)
        return false;
    if (!query.caseSensitive || !isKnown) {
        outlook->kind = isKnown && ascii && asciiNeedle ? Outlook::Lines : Outlook::Unknown;
        return true;
    }
    if (!ascii && !decide(fd))
        return false;
    if (decoding == Decoding::Latin1)
        outlook->needle = &latin1Needle;
    outlook->kind = ascii || outlook->needle->isEmpty() ? Outlook::Nothing : Outlook::Lines;
    return true;
}

/// Searches the lines of \a data where it holds \a needle.
bool FileSearch::searchRawLines(const char *data, qsizetype size, const ByteNeedle &needle, int fd)
{
    const char *const end = data + size;
    const char *at = data;
    for (;;) {
        const char *hit = nullptr;
        if (!findBytes(at, end - at, needle, &hit))
            return false;
        if (!hit)
            return countLines(at, end);
        const char *const start = lineStart(at, hit);
        const char *const stop = lineEnd(hit, end);
        textBuffer.clear();
        if (!countLines(at, start) || !decode(start, stop - start, fd) || !searchLine(textBuffer) ||
            !goOn())
            return false;
        at = nextLine(stop, end);
        lineNumber += at > stop ? 1 : 0;
    }
}

/// Searches whole lines of text.
bool FileSearch::searchText(QStringView text)
{
    const bool onlyLf = !text.contains(u'\r');
    qsizetype start = 0;
    while (start < text.size()) {
        qsizetype stop = text.indexOf(u'\n', start);
        if (stop < 0)
            stop = text.size();
        if (!onlyLf) {
            const qsizetype cr = text.mid(start, stop - start).indexOf(u'\r');
            if (cr >= 0)
                stop = start + cr;
        }
        if (!searchLine(text.mid(start, stop - start)) || !goOn())
            return false;
        ++lineNumber;
        if (stop + 1 < text.size() && text[stop] == u'\r' && text[stop + 1] == u'\n')
            ++stop;
        start = stop + 1;
    }
    return true;
}

bool FileSearch::searchLine(QStringView line)
{
    qsizetype next = 0;
    return searchLine(line, {0, line.size() + 1, false}, &next);
}

/// \a next receives where a following window would have to go on, -1 if the line has
/// no more hits. False if the search was stopped.
bool FileSearch::searchLine(QStringView line, const Window &window, qsizetype *next)
{
    if (query.regExp)
        pattern.setText(line);
    qsizetype column = window.from;
    while (column < window.limit) {
        // Up to here, not included, a match may begin before the next look around.
        const qsizetype limit = qMin(column + blockSize, window.limit);
        qsizetype length = query.text.size();
        const qsizetype found = query.regExp
                                    ? pattern.search(column, limit, &length)
                                    : matcher.indexIn(line.left(limit + length - 1), column);
        if (pattern.wasStopped())
            return false;
        if (found < 0 || found >= window.limit) {
            column = limit;
            if (column < window.limit && !goOn())
                return false;
            continue;
        }
        if (length == 0) {
            *next = -1;
            return true;
        }
        if (accepted(line, found, length)) {
            constexpr qint64 most = std::numeric_limits<int>::max();
            (*handler)({int(qMin(lineNumber, most)), line, found, length, window.isPart});
            if (!goOn())
                return false;
        }
        column = found + length;
    }
    *next = column;
    return true;
}

bool FileSearch::accepted(QStringView line, qsizetype column, qsizetype length) const
{
    return !query.wholeWord || isWholeWord(line, column, length);
}

} // namespace vesk
