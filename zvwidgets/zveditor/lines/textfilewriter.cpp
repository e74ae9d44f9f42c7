#include "zvwidgets/zveditor/lines/byteordermark.h"
#include "zvwidgets/zveditor/lines/keptbytes.h"
#include "zvwidgets/zveditor/lines/textfile.h"
#include "zvwidgets/zveditor/lines/textlinearray.h"
#include "zvwidgets/zvfiles/filenames.h"
#include "zvwidgets/zvfiles/filesave.h"
#include "zvwidgets/zvfiles/posixfile.h"

#include <QIODevice>

#include <algorithm>
#include <climits>
#include <unistd.h>

namespace zvwidgets {

namespace {

constexpr qsizetype charactersPerWrite = 64 * 1024;

bool isLatin1(QStringView text)
{
    // Without a way out in the middle this runs over several characters at once.
    char16_t all = 0;
    for (const QChar character : text)
        all = char16_t(all | character.unicode());
    return all <= 0xff;
}

QString firstNotLatin1(QStringView text)
{
    const auto found = std::find_if(text.begin(), text.end(),
                                    [](QChar character) { return character.unicode() > 0xff; });
    const bool isPair = found->isHighSurrogate() && found + 1 != text.end();
    return QString(found, isPair ? 2 : 1);
}

QStringView characters(LineEnd end)
{
    switch (end) {
    case LineEnd::CrLf:
        return u"\r\n";
    case LineEnd::Cr:
        return u"\r";
    case LineEnd::Lf:
    case LineEnd::Document:
        break;
    }
    return u"\n";
}

// A short write says no reason; the next one does.
bool writeFully(QIODevice &device, const char *bytes, qint64 size)
{
    while (size > 0) {
        const qint64 written = device.write(bytes, size);
        if (written <= 0)
            return false;
        bytes += written;
        size -= written;
    }
    return true;
}

/// Gathers text and writes it in large encoded pieces.
class EncodedWriter
{
public:
    EncodedWriter(QIODevice &target, QStringConverter::Encoding wanted)
        : device(target)
        , encoding(wanted)
        // Without a state between pieces half a character at the end of one
        // can't get lost; append() never parts a whole one.
        , encoder(encoding, QStringConverter::Flag::Stateless)
    {
        text.reserve(2 * charactersPerWrite);
    }

    bool append(QStringView part)
    {
        while (part.size() > charactersPerWrite) {
            qsizetype length = charactersPerWrite;
            if (part.at(length - 1).isHighSurrogate())
                --length;
            text.append(part.first(length));
            part = part.sliced(length);
            if (!flush())
                return false;
        }
        text.append(part);
        return text.size() < charactersPerWrite || flush();
    }

    bool flush()
    {
        bytes.resize(encoder.requiredSpace(text.size()));
        const char *end = encoder.appendToBuffer(bytes.data(), text);
        // Units that stand for bytes are the only ones that UTF-8 cannot hold, but for
        // halves of pairs.
        if (encoding == QStringConverter::Utf8 && encoder.hasError())
            end = encodeKeptBytes();
        text.resize(0);
        return writeFully(device, bytes.constData(), end - bytes.constData());
    }

private:
    /// Encodes again, with the bytes that units stand for; returns the end.
    char *encodeKeptBytes()
    {
        encoder.resetState();
        char *out = bytes.data();
        qsizetype start = 0;
        const QStringView all = text;
        for (qsizetype i = 0; i < all.size(); ++i) {
            if (!isKeptByte(all, i))
                continue;
            out = encoder.appendToBuffer(out, all.sliced(start, i - start));
            *out++ = char(all.at(i).unicode() - keptByteBase);
            start = i + 1;
        }
        out = encoder.appendToBuffer(out, all.sliced(start));
        encoder.resetState();
        return out;
    }

    QIODevice &device;
    const QStringConverter::Encoding encoding;
    QStringEncoder encoder;
    QString text;
    QByteArray bytes;
};

LineEnd endOf(const TextLine &line, const TextFormat &format)
{
    return line.lineEnd() == LineEnd::Document ? format.lineEnd : line.lineEnd();
}

/// How the end of line \a i is written, which has one.
LineEnd writtenEnd(const TextLineArray &lines, int i, const TextFormat &format)
{
    const LineEnd end = endOf(*lines.at(i), format);
    const int last = lines.size() - 1;
    if (end != LineEnd::Cr || i == last)
        return end;
    const TextLine &next = *lines.at(i + 1);
    const bool nextIsEnded = i + 1 < last || format.isLastLineEnded;
    // Read again the two would be one line end, and the empty line gone.
    const bool wouldMerge = next.isEmpty() && nextIsEnded && endOf(next, format) == LineEnd::Lf;
    return wouldMerge ? LineEnd::CrLf : end;
}

bool writeLines(QIODevice &device, const TextLineArray &lines, const TextFormat &format)
{
    const QByteArrayView mark =
        format.hasByteOrderMark ? byteOrderMark(format.encoding) : QByteArrayView();
    if (!writeFully(device, mark.data(), mark.size()))
        return false;
    EncodedWriter writer(device, format.encoding);
    const int last = lines.size() - 1;
    for (int i = 0; i <= last; ++i) {
        if (!writer.append(*lines.at(i)))
            return false;
        const bool isEnded = i < last || format.isLastLineEnded;
        if (isEnded && !writer.append(characters(writtenEnd(lines, i, format))))
            return false;
    }
    return writer.flush();
}

// The name of the file that \a path stands for, also if that file doesn't exist
// yet. Empty if links go round in a circle.
QString resolved(const QString &path)
{
    QByteArray name = encodedPath(path);
    QByteArray target(PATH_MAX, Qt::Uninitialized);
    for (int links = 0; links < 40; ++links) {
        const ssize_t length = ::readlink(name.constData(), target.data(), size_t(target.size()));
        if (length < 0)
            return decodedPath(name);
        const QByteArray leads = target.first(length);
        name = leads.startsWith('/') ? leads : folderOf(name) + leads;
    }
    return QString();
}

} // namespace

QString TextFile::unencodable(const TextLineArray &lines, const TextFormat &format)
{
    if (format.encoding != QStringConverter::Latin1)
        return QString();
    for (int i = 0; i < lines.size(); ++i) {
        if (!isLatin1(*lines.at(i)))
            return firstNotLatin1(*lines.at(i));
    }
    return QString();
}

bool TextFile::write(QIODevice &device, const TextLineArray &lines, const TextFormat &format,
                     QString *error)
{
    const QString lacking = unencodable(lines, format);
    TextFormat used = format;
    used.encoding = withByteOrder(used.encoding);
    if (lacking.isEmpty() && writeLines(device, lines, used))
        return true;
    if (error)
        *error = lacking.isEmpty() ? device.errorString()
                                   : tr("Latin-1 has no character \"%1\"").arg(lacking);
    return false;
}

bool TextFile::save(const QString &path, const TextLineArray &lines, const TextFormat &format,
                    QString *error)
{
    QString ignored;
    QString &message = error ? *error : ignored;
    const QString target = resolved(path);
    if (target.isEmpty()) {
        message = systemError(ELOOP);
        return false;
    }
    const auto write = [&](QIODevice &device, QString *reason) {
        return TextFile::write(device, lines, format, reason);
    };
    if (!saveContent(target, write, &message))
        return false;
    message.clear();
    return true;
}

} // namespace zvwidgets
