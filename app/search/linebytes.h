#pragma once

#include <QtGlobal>

namespace vesk {

/// What can be told of the lines and the encoding of a text from its bytes alone.
namespace LineBytes {

bool isAscii(const char *data, qsizetype size);

/// Reads up to \a size bytes; less than that at the end of the file or on error.
qsizetype readFully(int fd, char *data, qsizetype size);

/// Number of line ends in \a data, CR LF counting as one.
int countLineEnds(const char *data, qsizetype size);

/// Start of the line that \a at lies in, not before \a data.
const char *lineStart(const char *data, const char *at);
/// The first line end from \a at on, \a end if there is none.
const char *lineEnd(const char *at, const char *end);
/// What follows the line end \a at, which is none if it is \a end.
const char *nextLine(const char *at, const char *end);

/// The length of the leading part of \a data that holds whole lines. A CR at the
/// very end may be the first half of a line end.
qsizetype wholeLines(const char *data, qsizetype size);

/// Moves \a at back, if need be, to where a character of UTF-8 begins.
qsizetype characterStart(const char *data, qsizetype at);

} // namespace LineBytes

/// Looks for a character of several bytes in bytes that come in pieces: with one a text
/// is UTF-8, whatever else it holds.
class MultiByteFinder
{
public:
    /// True once such a character has come whole.
    bool feed(const char *data, qsizetype size);

private:
    void take(unsigned char byte);
    void begin(unsigned char byte);

    int following = 0; ///< bytes that the character begun still needs
    unsigned char lowest = 0x80;
    unsigned char highest = 0xbf;
    bool isFound = false;
};

} // namespace vesk
