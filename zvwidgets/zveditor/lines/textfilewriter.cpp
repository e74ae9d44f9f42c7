#include "zvwidgets/zveditor/lines/byteordermark.h"
#include "zvwidgets/zveditor/lines/textfile.h"
#include "zvwidgets/zveditor/lines/textlinearray.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QTemporaryFile>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

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

bool areLatin1(const TextLineArray &lines)
{
    for (int i = 0; i < lines.size(); ++i) {
        if (!isLatin1(*lines.at(i)))
            return false;
    }
    return true;
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

/// Gathers text and writes it in large encoded pieces.
class EncodedWriter
{
public:
    EncodedWriter(QIODevice &target, QStringConverter::Encoding encoding)
        : device(target)
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
        const qint64 size = end - bytes.constData();
        text.resize(0);
        return device.write(bytes.constData(), size) == size;
    }

private:
    QIODevice &device;
    QStringEncoder encoder;
    QString text;
    QByteArray bytes;
};

bool writeLines(QIODevice &device, const TextLineArray &lines, const TextFormat &format)
{
    const QByteArrayView mark =
        format.hasByteOrderMark ? byteOrderMark(format.encoding) : QByteArrayView();
    if (device.write(mark.data(), mark.size()) != mark.size())
        return false;
    EncodedWriter writer(device, format.encoding);
    const int last = lines.size() - 1;
    for (int i = 0; i <= last; ++i) {
        const TextLine *line = lines.at(i);
        if (!writer.append(*line))
            return false;
        const LineEnd own = line->lineEnd();
        if (i < last && !writer.append(characters(own == LineEnd::Document ? format.lineEnd : own)))
            return false;
    }
    return writer.flush();
}

// The name of the file that \a path stands for, also if that file doesn't exist
// yet. Empty if links go round in a circle.
QString resolved(QString path)
{
    for (int links = 0; links < 40; ++links) {
        const QFileInfo info(path);
        if (!info.isSymLink())
            return path;
        path = info.symLinkTarget();
    }
    return QString();
}

QString systemError(int number)
{
    return QString::fromLocal8Bit(std::strerror(number));
}

bool writeAll(int file, QFile &from)
{
    QByteArray buffer;
    while (!(buffer = from.read(256 * 1024)).isEmpty()) {
        const char *next = buffer.constData();
        qint64 left = buffer.size();
        while (left > 0) {
            const ssize_t written = ::write(file, next, size_t(left));
            if (written < 0 && errno == EINTR)
                continue;
            if (written <= 0)
                return false;
            next += written;
            left -= written;
        }
    }
    return from.error() == QFileDevice::NoError;
}

bool overwrite(int file, QFile &content)
{
    const off_t size = off_t(content.size());
    return content.seek(0) && ::lseek(file, 0, SEEK_SET) == 0 && writeAll(file, content) &&
           ::ftruncate(file, size) == 0 && ::fsync(file) == 0;
}

bool copyTo(QFile &copy, const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    QByteArray buffer;
    while (!(buffer = file.read(256 * 1024)).isEmpty()) {
        if (copy.write(buffer) != buffer.size())
            return false;
    }
    return file.error() == QFileDevice::NoError && copy.flush();
}

} // namespace

bool TextFile::write(QIODevice &device, const TextLineArray &lines, TextFormat *format,
                     QString *error)
{
    TextFormat used = *format;
    used.encoding = withByteOrder(used.encoding);
    if (used.encoding == QStringConverter::Latin1 && !areLatin1(lines))
        used.encoding = QStringConverter::Utf8;
    if (!writeLines(device, lines, used)) {
        if (error)
            *error = device.errorString();
        return false;
    }
    *format = used;
    return true;
}

namespace {

/// Replaces the file in one step. NotPossible leaves it as it was, and another
/// way may succeed.
enum class Replacement
{
    Done,
    Failed,
    NotPossible
};

bool keepsOwner(int file, const struct stat &old)
{
    struct stat fresh;
    if (::fstat(file, &fresh) != 0)
        return false;
    const bool same = fresh.st_uid == old.st_uid && fresh.st_gid == old.st_gid;
    if (!same && ::fchown(file, old.st_uid, old.st_gid) != 0)
        return false;
    return ::fchmod(file, old.st_mode & 07777) == 0;
}

Replacement replaceFile(const QString &path, const struct stat *old, const TextLineArray &lines,
                        TextFormat *format, QString *error)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        *error = file.errorString();
        return old && QFileInfo(path).isWritable() ? Replacement::NotPossible : Replacement::Failed;
    }
    if (old && !keepsOwner(file.handle(), *old))
        return Replacement::NotPossible;
    if (!TextFile::write(file, lines, format, error))
        return Replacement::Failed;
    // commit() would not notice that what is still buffered found no room.
    if (!file.flush()) {
        *error = file.errorString();
        return Replacement::Failed;
    }
    if (file.commit())
        return Replacement::Done;
    *error = file.errorString();
    // Another user's file in a folder such as /tmp may be written, not replaced.
    return old && file.error() == QFileDevice::RenameError ? Replacement::NotPossible
                                                           : Replacement::Failed;
}

/// Writes over the old content of an existing file. Both contents are kept
/// aside until that is done, so that a failure can be taken back.
bool overwriteFile(const QString &path, const TextLineArray &lines, TextFormat *format,
                   QString *error)
{
    QTemporaryFile fresh;
    QTemporaryFile old;
    if (!fresh.open() || !old.open()) {
        *error = fresh.isOpen() ? old.errorString() : fresh.errorString();
        return false;
    }
    if (!TextFile::write(fresh, lines, format, error))
        return false;
    if (!fresh.flush() || !copyTo(old, path)) {
        *error = TextFile::tr("No room for a copy of the file");
        return false;
    }
    const int file = ::open(QFile::encodeName(path).constData(), O_WRONLY | O_CLOEXEC);
    if (file < 0) {
        *error = systemError(errno);
        return false;
    }
    // Room is made sure of before the first byte changes.
    const int noRoom =
        fresh.size() > old.size()
            ? ::posix_fallocate(file, off_t(old.size()), off_t(fresh.size() - old.size()))
            : 0;
    const bool written = !noRoom && overwrite(file, fresh);
    if (!written) {
        *error = systemError(noRoom ? noRoom : errno);
        const bool restored =
            noRoom ? ::ftruncate(file, off_t(old.size())) == 0 : overwrite(file, old);
        if (!restored) {
            old.setAutoRemove(false);
            *error = TextFile::tr("%1; the former content is in %2").arg(*error, old.fileName());
        }
    }
    ::close(file);
    return written;
}

} // namespace

bool TextFile::save(const QString &path, const TextLineArray &lines, TextFormat *format,
                    QString *error)
{
    QString ignored;
    QString &message = error ? *error : ignored;
    const QString target = resolved(path);
    if (target.isEmpty()) {
        message = systemError(ELOOP);
        return false;
    }
    struct stat old;
    const bool exists = ::stat(QFile::encodeName(target).constData(), &old) == 0;
    if (exists && !S_ISREG(old.st_mode)) {
        message = tr("Not a regular file");
        return false;
    }
    TextFormat used = *format;
    // Replacing a file would part it from its other names.
    const bool hasOtherNames = exists && old.st_nlink > 1;
    Replacement outcome = Replacement::NotPossible;
    if (!hasOtherNames)
        outcome = replaceFile(target, exists ? &old : nullptr, lines, &used, &message);
    if (outcome == Replacement::NotPossible) {
        used = *format;
        outcome =
            overwriteFile(target, lines, &used, &message) ? Replacement::Done : Replacement::Failed;
    }
    if (outcome != Replacement::Done)
        return false;
    message.clear();
    *format = used;
    return true;
}

} // namespace zvwidgets
