#include "zvwidgets/zveditor/lines/textfile.h"

#include "zvwidgets/zveditor/lines/byteordermark.h"
#include "zvwidgets/zveditor/lines/keptbytes.h"
#include "zvwidgets/zveditor/lines/linecutter.h"
#include "zvwidgets/zveditor/lines/textfilereader.h"
#include "zvwidgets/zveditor/lines/textlinearray.h"

#include <QBuffer>
#include <QIODevice>
#include <QTextStream>

#include <algorithm>
#include <utility>

namespace zvwidgets {

namespace {

constexpr qsizetype bytesPerRead = 64 * 1024;
constexpr qsizetype charactersPerRead = 16 * 1024;

// What the file may be, likeliest first. The same bytes may be the mark of two.
QList<TextFormat> candidates(QByteArrayView head, QStringConverter::Encoding wish)
{
    QList<TextFormat> formats;
    for (const auto encoding :
         {QStringConverter::Utf8, QStringConverter::Utf32LE, QStringConverter::Utf32BE,
          QStringConverter::Utf16LE, QStringConverter::Utf16BE}) {
        if (head.startsWith(byteOrderMark(encoding)))
            formats.append({encoding, true});
    }
    const auto wanted = withByteOrder(wish);
    if (formats.isEmpty() || formats.constFirst().encoding != wanted)
        formats.append({wanted, false});
    return formats;
}

/// Reads a device anew for every try.
class Attempts
{
public:
    using Outcome = TextFileReader::Outcome;

    Attempts(QIODevice &source, TextLineArray *target, const ReadOptions &how)
        : device(source), lines(target), options(how), start(source.pos())
    {}

    Outcome attempt(const TextFormat &candidate, BadBytes badBytes, TextFormat *format) const
    {
        const bool wasAutoDelete = std::exchange(lines->autoDelete, true);
        lines->clear();
        lines->autoDelete = wasAutoDelete;
        const qsizetype mark =
            candidate.hasByteOrderMark ? byteOrderMark(candidate.encoding).size() : 0;
        if (!device.seek(start + mark))
            return Outcome::DeviceFailed;
        TextFileReader reader(device, candidate, badBytes, lines, options);
        const Outcome outcome = reader.read();
        *format = candidate;
        format->lineEnd = reader.lineEnd();
        format->isLastLineEnded = reader.isLastLineEnded();
        return outcome;
    }

    /// For bytes that no candidate understands.
    Outcome lastAttempt(QByteArrayView head, TextFormat *format) const
    {
        if (!device.seek(start))
            return Outcome::DeviceFailed;
        if (!hasMultiByteCharacter(device))
            return attempt({QStringConverter::Latin1}, BadBytes::Refuse, format);
        const bool hasMark = head.startsWith(byteOrderMark(QStringConverter::Utf8));
        return attempt({QStringConverter::Utf8, hasMark}, BadBytes::Keep, format);
    }

private:
    QIODevice &device;
    TextLineArray *const lines;
    const ReadOptions &options;
    const qint64 start;
};

// Such a device says the same, -1, of its end and of a failure. Its error is told by
// the text for it, which nothing else changes.
bool readAll(QIODevice &device, QByteArray *bytes)
{
    const QString noError = device.errorString();
    QByteArray part(bytesPerRead, Qt::Uninitialized);
    for (;;) {
        const qint64 got = device.read(part.data(), part.size());
        if (got < 0)
            return device.errorString() == noError;
        if (got == 0 && !device.waitForReadyRead(-1))
            return device.errorString() == noError;
        bytes->append(part.constData(), got);
    }
}

} // namespace

bool TextFile::read(QIODevice &device, QStringConverter::Encoding wish, TextLineArray *lines,
                    TextFormat *format, QString *error, const ReadOptions &options)
{
    using Outcome = TextFileReader::Outcome;
    if (device.isSequential()) {
        // A second try needs the bytes again.
        QByteArray bytes;
        if (!readAll(device, &bytes)) {
            if (error)
                *error = device.errorString();
            return false;
        }
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::ReadOnly);
        return read(buffer, wish, lines, format, error, options);
    }
    const Attempts attempts(device, lines, options);
    const QByteArray head = device.peek(4);
    Outcome outcome = Outcome::Undecodable;
    for (const TextFormat &candidate : candidates(head, wish)) {
        outcome = attempts.attempt(candidate, BadBytes::Refuse, format);
        if (outcome != Outcome::Undecodable)
            break;
    }
    if (outcome == Outcome::Undecodable)
        outcome = attempts.lastAttempt(head, format);
    if (outcome == Outcome::Done)
        return true;
    if (error)
        *error = device.errorString();
    return false;
}

void TextFile::read(QTextStream &stream, TextLineArray *lines, TextFormat *format)
{
    // The stream's own reading of lines keeps a lone carriage return in the text.
    CutLines cut;
    LineCutter cutter(nullptr);
    cutter.setTarget(&cut);
    for (;;) {
        const QString part = stream.read(charactersPerRead);
        if (part.isEmpty())
            break;
        std::copy_n(part.constData(), part.size(), cutter.room(part.size()));
        cutter.advance(part.size());
        lines->append(cut.lines);
        cut.lines.clear();
    }
    cutter.finish();
    lines->append(cut.lines);
    cut.lines.clear();
    format->lineEnd = settleLineEnds(lines, cut.firstEnd, cut.ends);
    format->isLastLineEnded = areAllEnded(*lines, cut.ends);
}

} // namespace zvwidgets
