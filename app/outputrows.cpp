#include "app/outputrows.h"

#include "app/messages/messagelimits.h"

#include <algorithm>

namespace vesk {

namespace {

/// A longer line makes several rows, in bytes.
constexpr qsizetype longestLine = MessageLimits::longRow;

/// Output that is not UTF-8 is taken for Latin-1.
QString decoded(QByteArrayView bytes)
{
    if (bytes.endsWith('\r'))
        bytes.chop(1);
    return bytes.isValidUtf8() ? QString::fromUtf8(bytes) : QString::fromLatin1(bytes);
}

/// Length of the row that a line too long for one begins with. Characters stay whole.
qsizetype cutRow(QByteArrayView line)
{
    qsizetype end = longestLine;
    while (end > longestLine - 4 && (uchar(line[end]) & 0xc0) == 0x80)
        --end;
    return end;
}

} // namespace

OutputRows::OutputRows(const QString &folder) : references(folder)
{}

void OutputRows::add(OutputStream stream, QByteArrayView bytes)
{
    const qsizetype count = std::count(bytes.begin(), bytes.end(), '\n');
    qsizetype skipped = count - qsizetype(MessageLimits::rows);
    QByteArray &rest = open[size_t(stream)];
    if (skipped > 0) {
        // Nobody would see them. Only the folders they name matter to those that follow.
        while (!lines.empty())
            dropFirst();
        qsizetype end = bytes.indexOf('\n') + 1;
        references.follow(rest.append(bytes.first(end)));
        rest.clear();
        while (--skipped > 0)
            end = bytes.indexOf('\n', end) + 1;
        references.follow(bytes.first(end));
        bytes = bytes.sliced(end);
    }
    for (qsizetype end = bytes.indexOf('\n'); end >= 0; end = bytes.indexOf('\n')) {
        if (rest.isEmpty()) {
            addLine(stream, bytes.first(end));
        } else {
            rest.append(bytes.first(end));
            addLine(stream, rest);
            rest.clear();
        }
        bytes = bytes.sliced(end + 1);
    }
    rest.append(bytes);
    while (rest.size() > longestLine) {
        const qsizetype end = cutRow(rest);
        addLine(stream, QByteArrayView(rest).first(end));
        rest.remove(0, end);
    }
}

void OutputRows::finish()
{
    for (const OutputStream stream : {OutputStream::Output, OutputStream::Error}) {
        QByteArray &rest = open[size_t(stream)];
        if (!rest.isEmpty())
            addLine(stream, rest);
        rest.clear();
    }
}

void OutputRows::addLine(OutputStream stream, QByteArrayView line)
{
    while (line.size() > longestLine) {
        const qsizetype end = cutRow(line);
        addLine(stream, line.first(end));
        line = line.sliced(end);
    }
    if (lines.size() >= MessageLimits::rows)
        dropFirst();
    lines.push_back({line.toByteArray(), stream});
}

void OutputRows::dropFirst()
{
    references.follow(lines.front().bytes);
    lines.pop_front();
}

QList<OutputRow> OutputRows::take()
{
    QList<OutputRow> rows;
    rows.reserve(qsizetype(lines.size()));
    references.forgetFiles();
    for (const Line &line : lines) {
        references.follow(line.bytes);
        const QString text = decoded(line.bytes);
        rows.append({text, line.stream, references.find(text)});
    }
    lines.clear();
    return rows;
}

} // namespace vesk
