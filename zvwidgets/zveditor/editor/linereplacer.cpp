#include "zvwidgets/zveditor/editor/linereplacer.h"

#include "zvwidgets/zveditor/pattern/columns.h"
#include "zvwidgets/zveditor/textdoc.h"
#include "zvwidgets/zveditor/textline.h"

#include <QStringList>

namespace zvwidgets {

namespace {

constexpr QChar lineBreak(u'\n');
constexpr QChar tab(u'\t');

/// What stands left of \a column when the text from \a begin up to it was replaced by
/// \a out; null if a line begins there.
std::optional<QChar> unitBefore(QStringView text, int begin, const QString &out)
{
    if (!out.isEmpty())
        return out.back() == lineBreak ? std::nullopt : std::optional(out.back());
    return begin > 0 ? std::optional(text[begin - 1]) : std::nullopt;
}

} // namespace

LineReplacer::LineReplacer(TextDocument *document, const QString &newText, bool expandTabs)
    : doc(document)
    , replacement(newText.constData(), newText.size())
    , expand(expandTabs && newText.contains(tab))
    , breaks(newText.contains(lineBreak))
{}

void LineReplacer::replace(int line, const LineMatcher::Hit &hit)
{
    QString begin;
    visual = 0;
    append(&begin, QStringView(*doc->lineOf(line)).first(hit.column));
    QString out;
    appendReplacement(&out);
    ++hits;
    exchange(line, hit.column, hit.length, out);
}

int LineReplacer::replaceIn(int line, LineMatcher *matcher, int from, int limit, EmptyAtStart empty)
{
    const QStringView text = *doc->lineOf(line);
    matcher->setLine(text);
    LineMatcher::Hit hit = matcher->find(from, empty);
    if (!hit.isFound() || hit.end() > limit)
        return 1;
    const int begin = hit.column;
    int end = begin;
    QString out;
    visual = 0;
    append(&out, text.first(begin));
    out.clear();
    do {
        append(&out, text.mid(end, hit.column - end));
        appendReplacement(&out);
        ++hits;
        end = hit.end();
        matcher->setBefore(end, unitBefore(text, begin, out));
        hit = matcher->find(end, EmptyAtStart::IsPassed);
    } while (hit.isFound() && hit.end() <= limit);
    return exchange(line, begin, end - begin, out);
}

void LineReplacer::advance(QChar c)
{
    visual = visualColumnAfter(visual, c, doc->spacesInTab());
}

void LineReplacer::append(QString *out, QStringView text)
{
    out->append(text);
    if (!expand)
        return;
    for (const QChar c : text)
        advance(c);
}

void LineReplacer::appendReplacement(QString *out)
{
    if (!expand) {
        out->append(replacement);
        return;
    }
    for (const QChar c : replacement) {
        const int before = visual;
        advance(c);
        if (c == tab)
            out->append(QString(visual - before, QLatin1Char(' ')));
        else
            out->append(c);
        if (c == lineBreak)
            visual = 0;
    }
}

/// Puts \a out, which may hold line breaks, in the place of \a length characters.
int LineReplacer::exchange(int line, int column, int length, const QString &out)
{
    if (length > 0)
        doc->cmdRemove(line, column, length);
    if (!breaks) {
        doc->cmdInsert(line, column, out);
        lastPlace = QPoint(column + int(out.length()), line);
        return 1;
    }
    const QStringList parts = out.split(lineBreak);
    doc->cmdInsert(line, column, parts.first());
    const int added = int(parts.size()) - 1;
    doc->cmdInsertLineBreak(line, column + int(parts.first().length()));
    doc->cmdInsert(line + 1, 0, parts.last());
    for (int i = 1; i < added; ++i) {
        doc->makeLine(line + i);
        doc->cmdInsert(line + i, 0, parts.at(i));
    }
    lastPlace = QPoint(int(parts.last().length()), line + added);
    return added + 1;
}

} // namespace zvwidgets
