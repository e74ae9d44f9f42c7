#pragma once

#include "app/outputreference.h"

#include <QByteArray>
#include <QList>

#include <array>
#include <deque>

namespace vesk {

enum class OutputStream
{
    Output,
    Error
};

/// A line of a program's output. An empty file is none.
struct OutputRow
{
    QString text;
    OutputStream stream;
    OutputReference place;
};

/// Takes a program's output in as it comes and gives it on as rows, many at a time. It
/// keeps no more than the message list can show: of faster output only the last rows
/// are decoded and looked at.
class OutputRows
{
public:
    /// \a folder is the working folder of the program.
    explicit OutputRows(const QString &folder);

    void add(OutputStream stream, QByteArrayView bytes);
    /// Ends the lines that are open.
    void finish();
    bool isEmpty() const { return lines.empty(); }
    /// The rows that have come since the last call.
    QList<OutputRow> take();

private:
    struct Line
    {
        QByteArray bytes;
        OutputStream stream;
    };

    void addLine(OutputStream stream, QByteArrayView line);
    void dropFirst();

    /// By stream.
    std::array<QByteArray, 2> open;
    std::deque<Line> lines;
    OutputReferences references;
};

} // namespace vesk
