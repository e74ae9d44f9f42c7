#include "zvwidgets/zveditor/lines/textfile.h"

#include "zvwidgets/zveditor/lines/byteordermark.h"
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

constexpr qsizetype charactersPerRead = 16 * 1024;

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
                    TextFormat *format, QString *error, const ReadOptions &options)
{
    if (device.isSequential()) {
        // A second try needs the bytes again.
        QByteArray bytes = device.readAll();
        QBuffer buffer(&bytes);
        buffer.open(QIODevice::ReadOnly);
        return read(buffer, wish, lines, format, error, options);
    }
    using Outcome = TextFileReader::Outcome;
    const qint64 start = device.pos();
    const QByteArray head = device.peek(4);
    const QList<TextFormat> formats = candidates(head, wish);
    for (const TextFormat &candidate : formats) {
        const qsizetype mark =
            candidate.hasByteOrderMark ? byteOrderMark(candidate.encoding).size() : 0;
        const bool wasAutoDelete = std::exchange(lines->autoDelete, true);
        lines->clear();
        lines->autoDelete = wasAutoDelete;
        if (!device.seek(start + mark))
            break;
        TextFileReader reader(device, candidate, lines, options);
        const Outcome outcome = reader.read();
        *format = candidate;
        format->lineEnd = reader.lineEnd();
        if (outcome == Outcome::Done)
            return true;
        if (outcome == Outcome::DeviceFailed)
            break;
    }
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
}

} // namespace zvwidgets
