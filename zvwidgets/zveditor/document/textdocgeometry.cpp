#include "zvwidgets/zveditor/document/textdoc_p.h"
#include "zvwidgets/zveditor/highlight.h"
#include "zvwidgets/zveditor/highlight/textattribute.h"
#include "zvwidgets/zveditor/pattern/columns.h"
#include "zvwidgets/zveditor/pattern/words.h"

#include <QColor>

#include <algorithm>
#include <array>
#include <limits>

namespace zvwidgets {

namespace {

constexpr int fontCount = TextFonts::variants;
constexpr QChar tab = u'\t';

// Columns of 64 bits keep a line of many millions of characters from wrapping
// round.
int toPixels(qint64 x)
{
    return int(std::min<qint64>(x, std::numeric_limits<int>::max()));
}

/// The widths of the characters of one line, as one view shows it. While all
/// fonts give every character the same width, no character is looked at but to
/// find the tabs.
class Ruler
{
public:
    /// Without \a view every character has the plain font.
    Ruler(const TextFonts &textFonts, const DocumentView *view)
        : fonts(textFonts), highlight(view ? view->hl : nullptr)
    {
        for (int i = 0; i < fontCount; ++i)
            cells[size_t(i)] = fonts.fontData(i).width;
        const bool isFixed = std::all_of(cells.begin(), cells.end(),
                                         [this](int width) { return width == cells[0]; });
        common = isFixed ? cells[0] : -1;
    }

    /// Width of every character but the tab; -1 if it differs.
    int commonWidth() const { return common; }

    int width(const TextLine &line, int column)
    {
        const int number = line.attribute(unsigned(column));
        if (highlight && number != lastNumber) {
            lastNumber = number;
            font = highlight->attribute(number)->fontType & (fontCount - 1);
        }
        const int cell = cells[size_t(font)];
        return cell >= 0 ? cell : fonts.width(font, line.at(column));
    }

private:
    const TextFonts &fonts;
    TextHighlight *const highlight;
    std::array<int, fontCount> cells{};
    int common = -1;
    // Of the run of characters last asked for; no attribute is that large.
    int lastNumber = 256;
    int font = 0;
};

/// Walks the columns of a line from left to right.
struct Walk
{
    const TextLine &line;
    Ruler &ruler;
    /// Pixels between tab stops; 0 makes a tab as wide as nothing.
    int tabsWidth;
    int column = 0;
    qint64 x = 0;
    /// Passed on the way.
    int tabs = 0;

    /// Goes on until column \a end or, if that comes first, the first column
    /// whose position is not below \a width.
    void run(int end, qint64 width)
    {
        end = std::min(end, line.textLength());
        if (ruler.commonWidth() < 0) {
            while (column < end && x < width) {
                step(line.at(column) == tab ? -1 : ruler.width(line, column));
            }
            return;
        }
        while (column < end && x < width) {
            if (line.at(column) == tab)
                step(-1);
            else
                jump(end, width);
        }
    }

private:
    // A negative width is that of a tab.
    void step(int width)
    {
        if (width >= 0) {
            x += width;
        } else {
            ++tabs;
            x = tabsWidth > 0 ? (x / tabsWidth + 1) * tabsWidth : x;
        }
        ++column;
    }

    // Over characters of the same width, up to the next tab.
    void jump(int end, qint64 width)
    {
        const int cell = ruler.commonWidth();
        qint64 most = end - column;
        if (cell > 0)
            most = std::min(most, (width - x + cell - 1) / cell);
        const qsizetype next = QStringView(line).sliced(column, qsizetype(most)).indexOf(tab);
        const int characters = next < 0 ? int(most) : int(next);
        x += qint64(characters) * cell;
        column += characters;
    }
};

constexpr qint64 anyWidth = qint64(1) << 60;
/// From this length on a line gets marks.
constexpr int longLine = 2 * ColumnMarks::step;
/// Lines whose marks are kept.
constexpr qsizetype mostMarked = 64;

int tabsWidthOf(const QList<DocumentView *> &views)
{
    return views.isEmpty() ? 0 : views.constFirst()->tabsWidth();
}

/// The marks of one line for one walk along it.
class MarkedWalk
{
public:
    /// A walk that stands at column 0. A line of usual length gets no marks.
    MarkedWalk(TextDocument::Private &document, const TextLine &line, Ruler &ruler)
        : walk{line, ruler, tabsWidthOf(document.views)}
        , marks(line.textLength() < longLine
                    ? nullptr
                    : &document.marksOf(line, ruler.commonWidth() >= 0).marks)
    {}

    Walk &toColumn(int column)
    {
        const int end = std::min(column, walk.line.textLength());
        if (marks) {
            while (int(marks->size()) <= end / ColumnMarks::step)
                addMark();
            goTo(size_t(std::max(end, 0) / ColumnMarks::step));
        }
        walk.run(end, anyWidth);
        return walk;
    }

    /// To the first column whose position is not below \a width, or the end.
    Walk &toWidth(qint64 width)
    {
        const int length = walk.line.textLength();
        if (marks) {
            while (marks->back().x < width && int(marks->size()) <= length / ColumnMarks::step)
                addMark();
            const auto behind = std::partition_point(
                marks->begin(), marks->end(),
                [width](const ColumnMarks::Mark &mark) { return mark.x < width; });
            goTo(size_t(std::max<qptrdiff>(behind - marks->begin() - 1, 0)));
        }
        walk.run(length, width);
        return walk;
    }

private:
    void goTo(size_t number)
    {
        walk.column = int(number) * ColumnMarks::step;
        walk.x = (*marks)[number].x;
        walk.tabs = (*marks)[number].tabs;
    }

    void addMark()
    {
        goTo(marks->size() - 1);
        walk.run(walk.column + ColumnMarks::step, anyWidth);
        marks->push_back({walk.x, walk.tabs});
    }

    Walk walk;
    std::vector<ColumnMarks::Mark> *const marks;
};

/// Measures whole lines, as TextDocument::lineWidth(). Made once for many of them, as
/// asking for fonts takes longer than a line without tabs.
class LineMeasure
{
public:
    explicit LineMeasure(TextDocument::Private &of)
        : document(of)
        // A wide letter of the widest font: typing must not ask for each character.
        , wide(of.m->width(fontCount - 1, QChar(u'W')))
        , tabsWidth(tabsWidthOf(of.views))
    {}

    int operator()(const TextLine &line) const
    {
        const QStringView text(line);
        if (tabsWidth <= 0 || !line.mayHaveTabs())
            return toPixels(text.size() * wide);
        if (text.size() >= longLine) {
            Ruler ruler(*document.m, nullptr);
            if (ruler.commonWidth() == wide)
                return toPixels(MarkedWalk(document, line, ruler).toColumn(line.textLength()).x);
        }
        qint64 x = 0;
        qsizetype from = 0;
        for (;;) {
            const qsizetype next = text.indexOf(tab, from);
            if (next < 0)
                return toPixels(x + (text.size() - from) * wide);
            x += (next - from) * wide;
            x = (x / tabsWidth + 1) * tabsWidth;
            from = next + 1;
        }
    }

private:
    TextDocument::Private &document;
    const qint64 wide;
    const int tabsWidth;
};

void appendRun(QString &html, QStringView run, int spacesInTab)
{
    // The stops are those of the text before signs are escaped.
    int visual = 0;
    for (const QChar character : run) {
        const int next = visualColumnAfter(visual, character, spacesInTab);
        if (character == tab)
            html.append(QString(next - visual, QLatin1Char(' ')));
        else if (character == QLatin1Char('<'))
            html.append(QLatin1String("&lt;"));
        else
            html.append(character);
        visual = next;
    }
}

bool isOther(QChar character)
{
    return !isWordCharacter(character) && !character.isSpace();
}

} // namespace

void TextDocument::Private::colour(TextLine *line) const
{
    if (line->isHighlighted())
        return;
    for (const DocumentView *each : views)
        each->hl->highlight(line);
}

ColumnMarks &TextDocument::Private::marksOf(const TextLine &line, bool isFixed)
{
    if (columnMarks.size() >= mostMarked && !columnMarks.contains(&line))
        columnMarks.clear();
    ColumnMarks &marks = columnMarks[&line];
    // Where widths differ they hang on the colouring too, which may change
    // anywhere in the line.
    if (marks.length != line.textLength() || (!isFixed && marks.revision != revision))
        marks = ColumnMarks();
    marks.length = line.textLength();
    marks.revision = revision;
    return marks;
}

void TextDocument::Private::cutMarks(const TextLine *line, int column)
{
    const auto found = columnMarks.find(line);
    if (found == columnMarks.end())
        return;
    const size_t valid = size_t(std::max(column, 0) / ColumnMarks::step) + 1;
    if (found->marks.size() > valid)
        found->marks.resize(valid);
    found->length = line->textLength();
}

int TextDocument::lineWidth(TextLine *line) const
{
    return LineMeasure(*d)(*line);
}

void TextDocument::Private::findLongest()
{
    newDocGeometry = true;
    const LineMeasure measure(*this);
    const auto widthOf = [&measure](const TextLine *line) { return measure(*line); };
    longestLine = contents.widest(widthOf, &q->maxLength);
}

int TextDocument::textWidth(int line, int length)
{
    TextLine *textLine = lineOf(line);
    Ruler ruler(*d->m, d->view);
    if (ruler.commonWidth() < 0)
        d->colour(textLine);
    qint64 x = MarkedWalk(*d, *textLine, ruler).toColumn(length).x;
    const int beyond = length - textLine->textLength();
    if (beyond > 0)
        x += qint64(beyond) * std::max(0, d->m->width(0, QChar(u' ')));
    return toPixels(x);
}

int TextDocument::textLength(int line, int width)
{
    TextLine *textLine = lineOf(line);
    Ruler ruler(*d->m, d->view);
    if (ruler.commonWidth() < 0)
        d->colour(textLine);
    MarkedWalk marked(*d, *textLine, ruler);
    const Walk &walk = marked.toWidth(width);
    const int column = walk.x < width ? walk.column + 1 : walk.column;
    return std::max(0, column - 1);
}

int TextDocument::tabsBefore(int line, int column)
{
    TextLine *textLine = lineOf(line);
    Ruler ruler(*d->m, d->view);
    if (ruler.commonWidth() < 0)
        d->colour(textLine);
    return MarkedWalk(*d, *textLine, ruler).toColumn(column).tabs;
}

int TextDocument::nextWrapPos(int line, int width, int from)
{
    TextLine *textLine = lineOf(line);
    const int length = textLine->textLength();
    if (d->views.isEmpty() || from >= length)
        return std::max(from, length);
    width = std::max(width, 30);
    Ruler ruler(*d->m, d->views.constFirst());
    if (ruler.commonWidth() < 0)
        d->colour(textLine);
    Walk walk{*textLine, ruler, tabsWidthOf(d->views), from};
    walk.run(length, width);
    int end = walk.column;
    int lastSpace = -1;
    if (getWrapMode() == wrapWord && end < length) {
        lastSpace = end - 1;
        while (lastSpace > from && !textLine->at(lastSpace).isSpace())
            --lastSpace;
    }
    if (lastSpace > from)
        end = lastSpace;
    else if (walk.x > width && end > 1)
        --end;
    if (splitsPair(*textLine, end))
        end = end - 1 > from ? end - 1 : end + 1;
    // A character wider than the row has to stay in it, or there were no end to
    // the rows.
    return std::max(end, from + 1);
}

int TextDocument::documentHeight() const
{
    return d->view ? d->view->linePosition(lastLine() + 1) : 0;
}

QString TextDocument::html(int line)
{
    TextLine *textLine = lineOf(line);
    d->colour(textLine);
    const QStringView text(*textLine);
    QString html;
    if (!d->view) {
        appendRun(html, text, spacesInTab());
        return html;
    }
    for (int start = 0, end = 0; start < text.size(); start = end) {
        const int number = textLine->attribute(unsigned(start));
        while (end < text.size() && textLine->attribute(unsigned(end)) == number)
            ++end;
        const TextAttribute *attr = d->view->hl->attribute(number);
        const bool isItalic = attr->fontType & 1;
        const bool isBold = attr->fontType & 2;
        html += QStringLiteral("<font color=\"%1\">").arg(attr->color.name());
        html += QLatin1String(isItalic ? "<i>" : "");
        html += QLatin1String(isBold ? "<b>" : "");
        appendRun(html, text.sliced(start, end - start), spacesInTab());
        html += QLatin1String(isBold ? "</b>" : "");
        html += QLatin1String(isItalic ? "</i>" : "");
        html += QLatin1String("</font>");
    }
    return html;
}

QString TextDocument::wordIn(int line, int column, int *start, int *end) const
{
    int first = column;
    int last = column;
    const QStringView text(*lineOf(line));
    const auto isInside = [&text](int position, bool (*kind)(QChar)) {
        return position >= 0 && position < text.size() && kind(text[position]);
    };
    const auto kind = isInside(column, isNameCharacter) ? isNameCharacter : isOther;
    const bool found = isInside(column, kind);
    while (found && isInside(first - 1, kind))
        --first;
    while (found && isInside(last, kind))
        ++last;
    if (start)
        *start = first;
    if (end)
        *end = last;
    return found ? text.sliced(first, last - first).toString() : QString();
}

QString TextDocument::wordIn(const QPoint &pos, int *start, int *end) const
{
    return wordIn(pos.y(), pos.x(), start, end);
}

QString TextDocument::currentWord() const
{
    if (!d->view)
        return QString();
    return wordIn(d->view->cursorPosition() - QPoint(1, 0), nullptr, nullptr);
}

} // namespace zvwidgets
