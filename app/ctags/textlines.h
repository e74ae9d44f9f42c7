#pragma once

#include <QList>
#include <QStringView>

namespace vesk {

/// Where the lines of a text stand, so that positions in it are found without
/// walking it, and without the text itself.
class TextLines
{
public:
    TextLines() = default;
    explicit TextLines(QStringView text);

    /// Puts a line of \a length UTF-16 units after the last one.
    void append(qsizetype length);

    /// What Parser::xy2pos() says for the text.
    int lastPos(int line) const;
    /// The same, but for an empty line its own place.
    int endOf(int line) const;
    /// What Parser::pos2y() says for the text.
    int lineOf(int pos) const;

private:
    qsizetype startOf(int line) const;

    /// Offsets of the line ends.
    QList<qsizetype> lineEnds;
    qsizetype length = 0;
    bool isStarted = false;
};

} // namespace vesk
