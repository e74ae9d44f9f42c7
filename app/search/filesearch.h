#pragma once

#include "app/editors/zveditor/searchpattern.h"
#include "app/search/byteneedle.h"

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
/// their byte-order mark, else as UTF-8 if they hold a character of several
/// bytes, else as Latin-1. As long as its bytes show that a part of a file cannot
/// hold the text, that part is not decoded.
///
/// Memory doesn't grow with the file. A line of more than longestLine bytes is
/// searched in windows that share some tens of thousands of characters: a match
/// longer than that may come as several, each match within is found once.
class FileSearch
{
public:
    /// One match in one line.
    struct Hit
    {
        /// Counts from 1; the highest int for all lines after that.
        int lineNumber;
        /// The line without its end, or a part of a longer line. Valid during the call.
        QStringView line;
        /// Where the match stands in \a line, in UTF-16 units.
        qsizetype column;
        qsizetype length;
        bool isPart;
    };
    using HitHandler = std::function<void(const Hit &)>;
    /// Called again and again while a file is searched; false stops the search.
    using GoOn = std::function<bool()>;

    /// In bytes.
    static constexpr qsizetype longestLine = 4 * 1024 * 1024;

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
    };
    /// What bytes tell of the hits in them.
    struct Outlook
    {
        enum
        {
            Nothing, ///< there are none
            Lines,   ///< they are in lines that hold the needle
            Unknown,
        } kind = Unknown;
        const ByteNeedle *needle = nullptr;
    };
    /// The part of a line that is searched.
    struct Window
    {
        qsizetype from;  ///< where matches may begin
        qsizetype limit; ///< where none begins any more
        bool isPart;
    };
    /// A line that is searched window by window.
    struct LongLine
    {
        bool isOpen = false;
        bool isDone = false;  ///< no more hits, whatever follows
        qsizetype from = 0;   ///< bytes kept of the former window for their context
        qsizetype resume = 0; ///< columns after that which the last match took
    };

    template <typename Work>
    bool inPieces(qsizetype size, const Work &work) const;
    bool searchFile(int fd);
    qsizetype readBlock(int fd, qsizetype kept, bool *isLast);
    qsizetype recode(qsizetype kept, qsizetype size);
    qsizetype meetMark(qsizetype size);
    bool searchBuffer(qsizetype kept, qsizetype size, bool isLast, int fd, qsizetype *taken);
    bool searchWindow(const char *data, qsizetype size, bool isLast, int fd, qsizetype *taken);
    bool searchPart(const char *data, qsizetype size, const Window &bytes, int fd);
    bool searchBytes(const char *data, qsizetype size, int fd);
    bool judge(const char *data, qsizetype size, int fd, Outlook *outlook);
    bool searchRawLines(const char *data, qsizetype size, const ByteNeedle &needle, int fd);
    bool searchText(QStringView text);
    bool searchLine(QStringView line);
    bool searchLine(QStringView line, const Window &window, qsizetype *next);
    bool accepted(QStringView line, qsizetype column, qsizetype length) const;
    bool decide(int fd);
    bool decode(const char *data, qsizetype size, int fd);
    bool findBytes(const char *data, qsizetype size, const ByteNeedle &needle,
                   const char **hit) const;
    bool countLines(const char *data, const char *end);

    const SearchQuery query;
    const GoOn goOn;
    const HitHandler *handler = nullptr;
    SearchPattern pattern;
    QStringMatcher matcher;
    /// What a line with a hit holds; empty if that is not known. If case does not
    /// count it holds for lines in ASCII only.
    ByteNeedle utf8Needle;
    ByteNeedle latin1Needle; ///< empty if the text doesn't fit in Latin-1
    bool asciiNeedle = false;
    Decoding decoding = Decoding::Undecided;
    qint64 unread = 0; ///< bytes of the file
    qint64 lineNumber = 1;
    const char *endOfFile = nullptr; ///< null while it is not in the buffer
    LongLine longLine;
    /// Set for a text in UTF-16 or UTF-32, which is searched as UTF-8.
    QStringDecoder foreign;
    QStringEncoder toUtf8{QStringConverter::Utf8};
    QByteArray buffer;
    QString textBuffer;
};

} // namespace vesk
