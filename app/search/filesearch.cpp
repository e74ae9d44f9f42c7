#include "app/search/filesearch.h"

#include <QFile>
#include <QScopeGuard>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vesk {

namespace {

/// Read, and worked on, in blocks of this many bytes or characters, between two looks
/// at the user's wishes: no work of more than a few milliseconds.
constexpr qsizetype blockSize = 1024 * 1024;

bool isAscii(const char *data, qsizetype size)
{
    qsizetype i = 0;
    quint64 word = 0;
    for (; i + 8 <= size; i += 8) {
        quint64 next;
        memcpy(&next, data + i, 8);
        word |= next;
    }
    for (; i < size; ++i)
        word |= quint64(uchar(data[i]));
    return (word & 0x8080808080808080U) == 0;
}

/// Reads up to \a size bytes; less than that at the end of the file or on error.
qsizetype readFully(int fd, char *data, qsizetype size)
{
    qsizetype done = 0;
    while (done < size) {
        const ssize_t got = ::read(fd, data + done, size_t(size - done));
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            break;
        done += got;
    }
    return done;
}

/// Number of line ends in \a data, CR LF counting as one.
int countLineEnds(const char *data, qsizetype size)
{
    int count = 0;
    const char *const end = data + size;
    if (!memchr(data, '\r', size_t(size))) {
        for (const char *p = data; p < end; ++p)
            count += *p == '\n';
        return count;
    }
    for (const char *p = data; p < end; ++p)
        count += *p == '\n' || (*p == '\r' && (p + 1 == end || p[1] != '\n'));
    return count;
}

const char *lineStart(const char *data, const char *at)
{
    for (const char end : {'\n', '\r'}) {
        if (const void *const found = memrchr(data, end, size_t(at - data)))
            data = static_cast<const char *>(found) + 1;
    }
    return data;
}

const char *lineEnd(const char *at, const char *end)
{
    for (const char mark : {'\n', '\r'}) {
        if (const void *const found = memchr(at, mark, size_t(end - at)))
            end = static_cast<const char *>(found);
    }
    return end;
}

/// The length of the leading part of \a data that holds whole lines. A CR at the
/// very end may be the first half of a line end.
qsizetype wholeLines(const char *data, qsizetype size)
{
    for (qsizetype i = size - 1; i >= 0; --i) {
        if (data[i] == '\n' || (data[i] == '\r' && i + 1 < size))
            return i + 1;
    }
    return 0;
}

/// Tells whether bytes that come in pieces are UTF-8.
class Utf8Check
{
public:
    /// False once a byte can't belong to UTF-8.
    bool feed(const char *data, qsizetype size)
    {
        for (qsizetype i = 0; i < size && !broken; ++i)
            take(uchar(data[i]));
        return !broken;
    }

    /// True if all that was fed is UTF-8 and ends with a whole character.
    bool isValid() const { return !broken && following == 0; }

private:
    void take(uchar byte)
    {
        if (following > 0) {
            broken = byte < lowest || byte > highest;
            lowest = 0x80;
            highest = 0xbf;
            --following;
        } else if (byte >= 0x80) {
            begin(byte);
        }
    }

    void begin(uchar byte)
    {
        following = byte >= 0xf0 ? 3 : byte >= 0xe0 ? 2 : 1;
        broken = byte < 0xc2 || byte > 0xf4;
        // Overlong forms, surrogates and what lies beyond Unicode.
        lowest = byte == 0xe0 ? 0xa0 : byte == 0xf0 ? 0x90 : 0x80;
        highest = byte == 0xed ? 0x9f : byte == 0xf4 ? 0x8f : 0xbf;
    }

    int following = 0;
    uchar lowest = 0x80;
    uchar highest = 0xbf;
    bool broken = false;
};

bool isWordCharacter(QChar c)
{
    return (c >= u'0' && c <= u'9') || (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') ||
           c == u'_';
}

} // namespace

FileSearch::FileSearch(const SearchQuery &wanted, GoOn callback)
    : query(wanted), goOn(std::move(callback))
{
    const Qt::CaseSensitivity sensitivity =
        query.caseSensitive ? Qt::CaseSensitive : Qt::CaseInsensitive;
    if (query.regExp) {
        pattern = SearchPattern(query.text, sensitivity);
        utf8Needle = pattern.requiredText().toLatin1();
        asciiNeedle = true;
        return;
    }
    matcher = QStringMatcher(query.text, sensitivity);
    utf8Needle = query.text.toUtf8();
    asciiNeedle = isAscii(utf8Needle.constData(), utf8Needle.size());
    if (!asciiNeedle) {
        const QByteArray latin1 = query.text.toLatin1();
        if (QString::fromLatin1(latin1) == query.text)
            latin1Needle = latin1;
    } else if (!query.caseSensitive) {
        utf8Needle = utf8Needle.toLower();
    }
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
    qsizetype kept = 0; // of a line that has not come to its end
    qsizetype mark = 0; // bytes of a byte-order mark at the start of the buffer
    bool first = true;
    for (;;) {
        if (buffer.size() < kept + blockSize)
            buffer.resize(qMax(kept + blockSize, 2 * kept));
        char *const data = buffer.data();
        const qsizetype got = readFully(fd, data + kept, blockSize);
        const bool atEnd = got < blockSize;
        const qsizetype size = kept + got;
        if (first) {
            first = false;
            const auto encoding = QStringConverter::encodingForData(QByteArrayView(data, size));
            if (encoding && *encoding != QStringConverter::Utf8)
                return searchDecoded(fd, *encoding);
            if (encoding) {
                decoding = Decoding::Utf8;
                mark = 3;
            }
        }
        // The kept part can hold a line end only in its last byte, a CR.
        const qsizetype unseen = qMax<qsizetype>(0, kept - 1);
        const qsizetype ends = wholeLines(data + unseen, size - unseen);
        const qsizetype whole = atEnd ? size : ends > 0 ? unseen + ends : 0;
        if (whole > 0 && !searchBytes(data + mark, whole - mark, fd))
            return false;
        if (atEnd)
            return true;
        kept = size - whole;
        if (whole > 0) {
            memmove(data, data + whole, size_t(kept));
            mark = 0;
        }
        if (!goOn())
            return false;
    }
}

bool FileSearch::searchDecoded(int fd, QStringConverter::Encoding encoding)
{
    decoding = Decoding::Stateful;
    if (::lseek(fd, 0, SEEK_SET) != 0)
        return true;
    QStringDecoder decoder(encoding);
    QString rest;
    qsizetype scanned = 0;
    QByteArray block(blockSize, Qt::Uninitialized);
    for (;;) {
        const qsizetype got = readFully(fd, block.data(), blockSize);
        const bool atEnd = got < blockSize;
        rest += decoder.decode(QByteArrayView(block.constData(), got));
        qsizetype whole = rest.size();
        if (!atEnd) {
            while (whole > scanned && rest[whole - 1] != u'\n' &&
                   (rest[whole - 1] != u'\r' || whole == rest.size()))
                --whole;
            if (whole == scanned)
                whole = 0;
        }
        if (!searchText(QStringView(rest).left(whole)) || !goOn())
            return false;
        if (atEnd)
            return true;
        rest.remove(0, whole);
        scanned = qMax<qsizetype>(0, rest.size() - 1);
    }
}

/// Finds out whether the whole file is UTF-8 or has to be read as Latin-1. False if
/// the search was stopped.
bool FileSearch::decide(int fd)
{
    if (decoding != Decoding::Undecided)
        return true;
    Utf8Check check;
    QByteArray block(blockSize, Qt::Uninitialized);
    off_t at = 0;
    for (;;) {
        const ssize_t got = ::pread(fd, block.data(), size_t(blockSize), at);
        if (got <= 0)
            break;
        at += got;
        if (!check.feed(block.constData(), got))
            break;
        if (!goOn())
            return false;
    }
    decoding = check.isValid() ? Decoding::Utf8 : Decoding::Latin1;
    return true;
}

/// Puts the text of \a data into textBuffer. False if the search was stopped.
bool FileSearch::decode(const char *data, qsizetype size, int fd)
{
    textBuffer.clear();
    textBuffer.reserve(size);
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

/// Puts \a data in lower case into folded. False if the search was stopped.
bool FileSearch::fold(const char *data, qsizetype size)
{
    if (folded.size() < size)
        folded.resize(size);
    char *const to = folded.data();
    return inPieces(size, [&](qsizetype at, qsizetype length) {
        for (qsizetype i = at; i < at + length; ++i)
            to[i] = char(data[i] | ((data[i] >= 'A' && data[i] <= 'Z') ? 0x20 : 0));
        return true;
    });
}

/// Where \a hit, null if nowhere, \a needle begins in \a data. False if the search
/// was stopped.
bool FileSearch::findBytes(const char *data, qsizetype size, const QByteArray &needle,
                           const char **hit) const
{
    *hit = nullptr;
    return inPieces(size, [&](qsizetype at, qsizetype length) {
        // Up to where a needle ends that begins in this piece.
        const qsizetype reach = qMin(length + needle.size() - 1, size - at);
        *hit = static_cast<const char *>(
            memmem(data + at, size_t(reach), needle.constData(), size_t(needle.size())));
        return !*hit;
    });
}

/// Counts the lines that end from \a data on. False if the search was stopped.
bool FileSearch::countLines(const char *data, const char *end)
{
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

bool FileSearch::searchBytes(const char *data, qsizetype size, int fd)
{
    bool ascii = true;
    const bool wentOn = inPieces(size, [&](qsizetype at, qsizetype length) {
        ascii = isAscii(data + at, length);
        return ascii;
    });
    if (!wentOn)
        return false;
    if (ascii && query.caseSensitive && !asciiNeedle)
        return countLines(data, data + size);
    const bool knowsNeedle =
        !utf8Needle.isEmpty() && (query.caseSensitive || (ascii && asciiNeedle));
    if (!knowsNeedle)
        return decode(data, size, fd) && searchText(textBuffer);
    if (!query.caseSensitive)
        return fold(data, size) && searchRawLines(data, size, folded.constData(), utf8Needle, fd);
    if (asciiNeedle)
        return searchRawLines(data, size, data, utf8Needle, fd);
    if (!decide(fd))
        return false;
    const QByteArray &needle = decoding == Decoding::Latin1 ? latin1Needle : utf8Needle;
    return needle.isEmpty() ? countLines(data, data + size)
                            : searchRawLines(data, size, data, needle, fd);
}

/// Searches the lines of \a data that hold \a needle where \a looked, which is \a data
/// or what became of it byte by byte, holds it.
bool FileSearch::searchRawLines(const char *data, qsizetype size, const char *looked,
                                const QByteArray &needle, int fd)
{
    const char *const end = data + size;
    const char *at = data;
    for (;;) {
        const char *hit = nullptr;
        if (!findBytes(looked + (at - data), end - at, needle, &hit))
            return false;
        if (!hit)
            return countLines(at, end);
        hit = data + (hit - looked);
        const char *const start = lineStart(at, hit);
        const char *stop = lineEnd(hit, end);
        if (!countLines(at, start) || !decode(start, stop - start, fd) || !searchLine(textBuffer) ||
            !goOn())
            return false;
        if (stop < end) {
            stop += (*stop == '\r' && stop + 1 < end && stop[1] == '\n') ? 2 : 1;
            ++lineNumber;
        }
        at = stop;
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
    if (query.regExp)
        pattern.setText(line);
    qsizetype column = 0;
    for (;;) {
        // Up to here, not included, a match may begin before the next look around.
        const qsizetype limit = qMin(column + blockSize, line.size() + 1);
        qsizetype length = query.text.size();
        const qsizetype found = query.regExp
                                    ? pattern.search(column, limit, &length)
                                    : matcher.indexIn(line.left(limit + length - 1), column);
        if (found < 0) {
            if (limit > line.size())
                return true;
            if (!goOn())
                return false;
            column = limit;
            continue;
        }
        if (length == 0)
            return true;
        if (accepted(line, found, length)) {
            (*handler)({lineNumber, line, found, length});
            if (!goOn())
                return false;
        }
        column = found + length;
    }
}

bool FileSearch::accepted(QStringView line, qsizetype column, qsizetype length) const
{
    if (!query.wholeWord)
        return true;
    if (column > 0 && isWordCharacter(line[column - 1]))
        return false;
    return column + length >= line.size() || !isWordCharacter(line[column + length]);
}

} // namespace vesk
