#pragma once

#include "app/editors/zveditor/searchpattern.h"

#include <QByteArray>
#include <QString>
#include <QStringConverter>
#include <QStringMatcher>

#include <functional>

namespace vesk {

/// What to look for in files.
struct SearchQuery
{
    QString text;
    bool regExp = false;
    bool caseSensitive = false;
    /// A hit may have no letter, digit or underscore as neighbour.
    bool wholeWord = false;
};

/// Finds the hits of a query in files, line by line: each hit of a line in
/// order, without overlaps; a match of no length ends the line.
///
/// Lines end at LF, CR LF or CR. Files are read as the editor reads them: by
/// their byte-order mark, as UTF-8, or as Latin-1 if they are not UTF-8. As long
/// as its bytes show that a part of a file cannot hold the text, that part is
/// not decoded.
class FileSearch
{
public:
    /// One match in one line.
    struct Hit
    {
        /// Counts from 1.
        int lineNumber;
        /// The line without its end. Valid during the call.
        QStringView line;
        /// Where the match stands in the line, in UTF-16 units.
        qsizetype column;
        qsizetype length;
    };
    using HitHandler = std::function<void(const Hit &)>;
    /// Called again and again while a file is searched; false stops the search.
    using GoOn = std::function<bool()>;

    FileSearch(const SearchQuery &query, GoOn goOn);

    /// False if the search was stopped. A file that can't be read, or is none,
    /// has no hits.
    bool search(const QString &path, const HitHandler &handler);

private:
    enum class Decoding
    {
        Undecided, ///< no byte-order mark, UTF-8 or Latin-1
        Utf8,
        Latin1,
        Stateful, ///< a mark says UTF-16 or UTF-32
    };

    template <typename Work>
    bool inPieces(qsizetype size, const Work &work) const;
    bool searchFile(int fd);
    bool searchDecoded(int fd, QStringConverter::Encoding encoding);
    bool searchBytes(const char *data, qsizetype size, int fd);
    bool searchRawLines(const char *data, qsizetype size, const char *looked,
                        const QByteArray &needle, int fd);
    bool searchText(QStringView text);
    bool searchLine(QStringView line);
    bool accepted(QStringView line, qsizetype column, qsizetype length) const;
    bool decide(int fd);
    bool decode(const char *data, qsizetype size, int fd);
    bool fold(const char *data, qsizetype size);
    bool findBytes(const char *data, qsizetype size, const QByteArray &needle,
                   const char **hit) const;
    bool countLines(const char *data, const char *end);

    const SearchQuery query;
    const GoOn goOn;
    const HitHandler *handler = nullptr;
    SearchPattern pattern;
    QStringMatcher matcher;
    /// What a line with a hit holds; empty if that is not known. In lower case if
    /// case does not count, and only for lines in ASCII then.
    QByteArray utf8Needle;
    QByteArray latin1Needle; ///< empty if the text doesn't fit in Latin-1
    bool asciiNeedle = false;
    Decoding decoding = Decoding::Undecided;
    int lineNumber = 1;
    QByteArray buffer;
    QByteArray folded;
    QString textBuffer;
};

} // namespace vesk
