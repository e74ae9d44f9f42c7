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

/// Read in blocks of this many bytes. A block is searched between two looks at
/// the user's wishes, so it is no work of more than a few milliseconds.
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

const char *findBytes(const char *data, qsizetype size, const QByteArray &needle)
{
    return static_cast<const char *>(
        memmem(data, size_t(size), needle.constData(), size_t(needle.size())));
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
    while (at > data && at[-1] != '\n' && at[-1] != '\r')
        --at;
    return at;
}

const char *lineEnd(const char *at, const char *end)
{
    while (at < end && *at != '\n' && *at != '\r')
        ++at;
    return at;
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

bool FileSearch::searchFile(int fd)
{
    qsizetype kept = 0;
    qsizetype wanted = blockSize;
    bool first = true;
    for (;;) {
        if (buffer.size() < kept + wanted)
            buffer.resize(kept + wanted);
        char *const data = buffer.data();
        const qsizetype got = readFully(fd, data + kept, wanted);
        const bool atEnd = got < wanted;
        const qsizetype size = kept + got;
        qsizetype offset = 0;
        if (first) {
            first = false;
            const auto encoding = QStringConverter::encodingForData(QByteArrayView(data, size));
            if (encoding && *encoding != QStringConverter::Utf8)
                return searchDecoded(fd, *encoding);
            if (encoding) {
                decoding = Decoding::Utf8;
                offset = 3;
            }
        }
        const qsizetype whole = atEnd ? size : wholeLines(data, size);
        if (whole == 0 && !atEnd) {
            // No line ends in here yet: a larger step each time keeps the
            // looking for it linear.
            kept = size;
            wanted = size;
            if (!goOn())
                return false;
            continue;
        }
        if (!searchBytes(data + offset, whole - offset, fd))
            return false;
        if (atEnd)
            return true;
        kept = size - whole;
        memmove(data, data + whole, size_t(kept));
        wanted = blockSize;
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

/// Finds out whether the whole file is UTF-8 or has to be read as Latin-1.
void FileSearch::decide(int fd)
{
    if (decoding != Decoding::Undecided)
        return;
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
    }
    decoding = check.isValid() ? Decoding::Utf8 : Decoding::Latin1;
}

QStringView FileSearch::decoded(const char *data, qsizetype size)
{
    if (decoding == Decoding::Utf8 && !isAscii(data, size))
        textBuffer = QString::fromUtf8(data, size);
    else
        textBuffer = QString::fromLatin1(data, size);
    return textBuffer;
}

bool FileSearch::searchBytes(const char *data, qsizetype size, int fd)
{
    const int firstLine = lineNumber;
    const auto skip = [&] {
        lineNumber = firstLine + countLineEnds(data, size);
        return true;
    };
    const bool ascii = isAscii(data, size);
    if (!query.regExp && query.caseSensitive) {
        if (asciiNeedle) {
            if (!findBytes(data, size, utf8Needle))
                return skip();
            if (!ascii)
                decide(fd);
            return searchRawLines(data, size, utf8Needle);
        }
        const bool found = findBytes(data, size, utf8Needle) ||
                           (!latin1Needle.isEmpty() && findBytes(data, size, latin1Needle));
        if (!found)
            return skip();
        decide(fd);
        const bool latin1 = decoding == Decoding::Latin1;
        if (latin1 && latin1Needle.isEmpty())
            return skip();
        return searchRawLines(data, size, latin1 ? latin1Needle : utf8Needle);
    }
    if (!query.regExp && asciiNeedle && ascii) {
        folded.resize(size);
        char *const to = folded.data();
        for (qsizetype i = 0; i < size; ++i)
            to[i] = char(data[i] | ((data[i] >= 'A' && data[i] <= 'Z') ? 0x20 : 0));
        if (!findBytes(to, size, utf8Needle))
            return skip();
    }
    if (!ascii)
        decide(fd);
    return searchText(decoded(data, size));
}

/// Searches the lines of \a data that hold the bytes \a needle.
bool FileSearch::searchRawLines(const char *data, qsizetype size, const QByteArray &needle)
{
    const char *const end = data + size;
    const char *at = data;
    while (const char *hit = findBytes(at, end - at, needle)) {
        const char *const start = lineStart(at, hit);
        lineNumber += countLineEnds(at, start - at);
        const char *stop = lineEnd(hit, end);
        if (!searchLine(decoded(start, stop - start)) || !goOn())
            return false;
        if (stop < end) {
            stop += (*stop == '\r' && stop + 1 < end && stop[1] == '\n') ? 2 : 1;
            ++lineNumber;
        }
        at = stop;
    }
    lineNumber += countLineEnds(at, end - at);
    return true;
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
    qsizetype column = 0;
    for (;;) {
        qsizetype length = query.text.size();
        if (query.regExp)
            column = pattern.search(line, column, &length);
        else
            column = matcher.indexIn(line, column);
        if (column < 0 || length == 0)
            return true;
        if (accepted(line, column, length)) {
            (*handler)({lineNumber, line, column, length});
            if (!goOn())
                return false;
        }
        column += length;
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
