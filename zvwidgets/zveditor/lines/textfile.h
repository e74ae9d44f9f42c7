#pragma once

#include "zvwidgets/zveditor/textline.h"

#include <QCoreApplication>
#include <QString>
#include <QStringConverter>

#include <functional>

class QIODevice;
class QTextStream;

namespace zvwidgets {

class TextLineArray;

/// How the bytes of a file stand for lines of text.
struct TextFormat
{
    QStringConverter::Encoding encoding = QStringConverter::Utf8;
    /// The file starts with a byte-order mark.
    bool hasByteOrderMark = false;
    /// The line end of new lines: the one most lines of the file have. Never
    /// LineEnd::Document.
    LineEnd lineEnd = LineEnd::Lf;
    /// The last line has a line end too. A text without any line has none.
    bool isLastLineEnded = false;
};

/// What goes along with the reading of a file.
struct ReadOptions
{
    /// Works out and notes the contexts of a line that starts in \a ctx; returns the
    /// one it ends in, which the reader notes.
    using Follow = std::function<int(int ctx, TextLine *line)>;

    /// For the thread that reads. Null leaves the contexts of all lines 0.
    Follow follow;
    /// Makes another one for another thread; called by the thread that reads. Set
    /// if `follow` is.
    std::function<Follow()> followElsewhere;
    /// What a thread takes at a time of a file that is larger, in bytes.
    qint64 chunkSize = 128 * 1024;
    /// At most, the one that reads included; 0 for as many as there are cores.
    int threads = 0;
};

/// Reads the lines of a file and writes them, losing nothing: text that wasn't
/// edited is written with the bytes it was read from.
///
/// A byte-order mark decides the encoding, else the wish of the caller counts.
/// If bytes don't decode, a file that holds at least one valid sequence of several
/// bytes is UTF-8, and each bad byte is kept as a code unit (see keptbytes.h); any
/// other file is Latin-1, in which every byte stands for a character. CRLF, LF and CR
/// end a line, and each line remembers its own end where the file mixes them.
class TextFile
{
    Q_DECLARE_TR_FUNCTIONS(zvwidgets::TextFile)
public:
    /// Reads \a device, which is open, to its end; its lines replace those of
    /// \a lines. A final line end doesn't begin another line, so that an empty
    /// file has none. False with \a error if the device fails; \a lines may
    /// then hold some lines.
    ///
    /// Several threads share the work on a large file, and read from \a device by
    /// turns; all have ended when this returns. What was read does not depend on
    /// their number.
    static bool read(QIODevice &device, QStringConverter::Encoding wish, TextLineArray *lines,
                     TextFormat *format, QString *error, const ReadOptions &options = {});

    /// Reads the text that \a stream, which decodes, holds, as above; of
    /// \a format only the line ends are known.
    static void read(QTextStream &stream, TextLineArray *lines, TextFormat *format);

    /// The first character of \a lines that the encoding of \a format lacks; null if
    /// there is none, as in every encoding but Latin-1.
    static QString unencodable(const TextLineArray &lines, const TextFormat &format);

    /// Writes \a lines to \a device, which is open. Half of a surrogate pair alone,
    /// which no byte encoding but UTF-16 can hold, is written as U+FFFD unless it
    /// stands for a byte of UTF-8. A carriage return that would become one line end
    /// with the line feed of an empty line after it is written as CRLF. False with
    /// \a error if not all was written, or if a character is unencodable().
    static bool write(QIODevice &device, const TextLineArray &lines, const TextFormat &format,
                      QString *error);

    /// Writes \a lines to the file at \a path, or the one it links to, as
    /// saveContent() does. False with \a error, the old file untouched, if that
    /// cannot be done.
    [[nodiscard]] static bool save(const QString &path, const TextLineArray &lines,
                                   const TextFormat &format, QString *error);
};

} // namespace zvwidgets
