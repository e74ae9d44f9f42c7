#include "zvwidgets/zveditor/document/selectionrect.h"
#include "zvwidgets/zveditor/document/textdoc_p.h"
#include "zvwidgets/zveditor/pattern/columns.h"
#include "zvwidgets/zveditor/pattern/words.h"
#include "zvwidgets/zveditor/textfolding.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QStringBuilder>

#include <algorithm>

namespace zvwidgets {

namespace {

/// More than the description of a step shows.
constexpr int maxShown = 64;
constexpr QChar blank = u' ';
constexpr QChar lineBreak = u'\n';
constexpr QChar tab = u'\t';

QString blanks(int count)
{
    return QString(std::max(0, count), blank);
}

// \a part with its tabs made blanks up to the next stop, beginning at visual
// column \a x.
QString withoutTabs(QStringView part, int x, int spacesInTab)
{
    QString expanded;
    expanded.reserve(part.size());
    for (const QChar character : part) {
        const int next = visualColumnAfter(x, character, spacesInTab);
        if (character == tab)
            expanded += blanks(next - x);
        else
            expanded += character;
        x = next;
    }
    return expanded;
}

/// Cuts a text at every line end, be it CRLF, CR or LF.
class LineParts
{
public:
    explicit LineParts(QStringView text) : rest(text), hasCr(text.contains(u'\r')) {}

    /// What stands before the next line end, or the rest.
    QStringView next()
    {
        const qsizetype end = hasCr ? nextEnd() : rest.indexOf(lineBreak);
        atEnd = end < 0;
        const QStringView part = atEnd ? rest : rest.first(end);
        if (!atEnd)
            rest = rest.sliced(end + (rest.sliced(end).startsWith(u"\r\n") ? 2 : 1));
        return part;
    }
    /// True once the rest was handed out.
    bool isAtEnd() const { return atEnd; }

private:
    qsizetype nextEnd() const
    {
        const auto isEnd = [](QChar character) { return character == u'\r' || character == u'\n'; };
        const auto found = std::find_if(rest.begin(), rest.end(), isEnd);
        return found == rest.end() ? -1 : found - rest.begin();
    }

    QStringView rest;
    const bool hasCr;
    bool atEnd = false;
};

/// What is selected of \a doc, not torn inside a character. A box keeps its columns: each
/// of its lines is widened by itself.
TextSelection wholeSelection(const TextDocument &doc, const QRect &rect, bool box)
{
    TextSelection selection(rect, box);
    if (selection.isBox)
        return selection;
    if (selection.first >= 0 && selection.first <= doc.lastLine())
        selection.start =
            wholeCharacters(*doc.lineOf(selection.first), {selection.start, selection.start}).from;
    if (selection.last <= doc.lastLine())
        selection.end = wholeCharacters(*doc.lineOf(selection.last), {0, selection.end}).to;
    return selection;
}

/// Half-open range of lines.
struct LineSpan
{
    int first;
    int last;
};

// The lines that indenting moves: all selected ones, but not a last one that is
// selected only up to its start, or the cursor's.
LineSpan linesToIndent(const TextDocument &doc, const QRect &selected, int cursorLine)
{
    if (isEmptySelection(selected))
        return {cursorLine, cursorLine + 1};
    // A box is indented like a stream.
    const TextSelection selection = wholeSelection(doc, selected, false);
    const bool leavesLast = selection.end == 0 && selection.last > selection.first;
    const int behind = selection.last + (leavesLast ? 0 : 1);
    // Another view may have removed lines that are selected in this one.
    return {selection.first, std::min(behind, doc.lastLine() + 1)};
}

} // namespace

void TextDocument::insert(const QString &s, int line, int column)
{
    if (isReadOnly())
        return;
    d->preferCursor(&line, &column);
    column = d->wholeColumn(line, column);
    macroBegin(QLatin1String("insert ") + s.left(maxShown), line, column);
    const EditingFlags &m = *d->m;
    LineParts parts(s);
    const bool flows = !m.fVerticalSelection && !m.fOvr;
    for (bool isFirst = true;; isFirst = false) {
        const QStringView part = parts.next();
        const bool isLast = parts.isAtEnd();
        // What followed the cursor is moved to the last line by the first break,
        // not from line to line; only overwriting eats from it on the way.
        const bool isWholeLine = flows && !isFirst && !isLast;
        if (isWholeLine)
            makeLine(line);
        const int at = d->wholeColumn(line, column);
        const QString ins = d->expandedTabs(part, line, at);
        const int length = int(ins.length());
        if (m.fOvr)
            cmdReplace(line, at, length, ins);
        else if (length > 0)
            cmdInsert(line, at, ins);
        if (isLast) {
            column = at + length;
            break;
        }
        if (!m.fVerticalSelection) {
            if (!isWholeLine)
                cmdInsertLineBreak(line, at + length);
            column = 0;
        }
        ++line;
        if (line > lastLine())
            makeLine(line);
    }
    macroEnd(line, column);
}

// \a part as insert() puts it in at \a column of a line.
QString TextDocument::Private::expandedTabs(QStringView part, int line, int column) const
{
    if (m->fSaveTab || !part.contains(tab))
        return part.toString();
    return withoutTabs(part, visualColumn(*contents[line], column, spacesInTab), spacesInTab);
}

void TextDocument::insertLineBreak(int line, int column)
{
    if (isReadOnly())
        return;
    d->preferCursor(&line, &column);
    column = d->wholeColumn(line, column);
    macroBegin(QStringLiteral("break line"), line, column);
    const TextLine *broken = lineOf(line);
    // A colon at the end opens a block.
    const bool addIndent = column == broken->textLength() && broken->endsWith(QLatin1Char(':'));
    int pos = std::min(column, broken->firstChar());
    if (pos == -1)
        pos = column;
    const int copied = pos;
    if (addIndent)
        pos += spacesInTab();
    cmdInsertLineBreak(line, column);
    ++line;
    column = 0;
    if (pos > 0 && d->m->fAutoIndent) {
        const TextLine *above = lineOf(line - 1);
        QString ins;
        if (above->textLength() >= pos)
            ins = QStringView(*above).first(copied) % blanks(pos - copied);
        else if (d->m->fSaveTab)
            ins = QString(pos / spacesInTab(), tab) + blanks(pos % spacesInTab());
        else
            ins = blanks(pos);
        cmdInsert(line, column, ins);
        column = int(ins.length());
    }
    macroEnd(line, column);
}

void TextDocument::del(int line, int column)
{
    if (isReadOnly())
        return;
    d->preferCursor(&line, &column);
    if (column < textLength(line)) {
        cmdRemove(line, column, 1);
    } else if (line < lastLine()) {
        macroBegin(QStringLiteral("delete line break"), line, column);
        cmdRemoveLineBreak(line);
        macroEnd(line, column);
    }
}

void TextDocument::backspace(int line, int column)
{
    if (isReadOnly())
        return;
    d->preferCursor(&line, &column);
    if (column > 0) {
        const int n = d->backspaceLength(line, column);
        cmdRemove(line, column - n, n);
    } else if (line > 0) {
        cmdRemoveLineBreak(line - 1);
    }
}

// How many characters go: back to the indentation of the nearest line above that
// is indented less, if the cursor stands in leading blanks.
int TextDocument::Private::backspaceLength(int line, int column) const
{
    const TextLine &textLine = *contents[line];
    const int pos = textLine.firstChar();
    const bool isInIndent = pos == -1 || pos >= column;
    if (!m->fBackspaceIndent || !isInIndent)
        return 1;
    int indent = 0;
    for (int above = line - 1; above >= 0; --above) {
        const int first = contents[above]->firstChar();
        if (first != -1 && first < column) {
            indent = first;
            break;
        }
    }
    return column - indent;
}

void TextDocument::removeText(int fromLine, int fromColumn, int toLine, int toColumn)
{
    macroBegin(QStringLiteral("remove text"), toLine, toColumn);
    if (toLine < fromLine || (toLine == fromLine && toColumn < fromColumn)) {
        std::swap(fromLine, toLine);
        std::swap(fromColumn, toColumn);
    }
    const bool isEmpty = fromLine == toLine && fromColumn == toColumn;
    if (!isEmpty)
        fromColumn = d->wholeColumn(fromLine, fromColumn);
    if (fromLine == toLine) {
        cmdRemove(fromLine, fromColumn, toColumn - fromColumn);
    } else {
        cmdRemove(fromLine, fromColumn, textLength(fromLine) - fromColumn);
        for (int line = fromLine + 1; line < toLine; ++line)
            removeLine(fromLine + 1);
        cmdRemove(fromLine + 1, 0, toColumn);
        cmdRemoveLineBreak(fromLine);
    }
    macroEnd(fromLine, fromColumn);
}

void TextDocument::append(const QString &s)
{
    // With a view this inserts at its cursor, which is meant.
    insert(s, lastLine(), textLength(lastLine()));
}

void TextDocument::indent()
{
    if (isReadOnly() || !d->view)
        return;
    const QPoint cursor = d->view->cursorPosition();
    const QRect selected = d->view->selected;
    const LineSpan lines = linesToIndent(*this, selected, cursor.y());
    const QString ins = d->m->fSaveTab ? QString(tab) : blanks(spacesInTab());
    macroBegin(QStringLiteral("indent"), cursor.y(), cursor.x());
    for (int line = lines.first; line < lines.last; ++line)
        cmdInsert(line, 0, ins);
    macroEnd();
    d->view->setSelection(selected.topLeft(), selected.bottomRight());
}

void TextDocument::unindent()
{
    if (isReadOnly() || !d->view)
        return;
    const QPoint cursor = d->view->cursorPosition();
    const QRect selected = d->view->selected;
    const LineSpan lines = linesToIndent(*this, selected, cursor.y());
    macroBegin(QStringLiteral("unindent"), cursor.y(), cursor.x());
    for (int line = lines.first; line < lines.last; ++line) {
        const TextLine *textLine = lineOf(line);
        const int length =
            textLine->startsWith(tab) ? 1 : std::min(spacesInTab(), textLine->firstChar());
        if (length > 0)
            cmdRemove(line, 0, length);
    }
    macroEnd();
    d->view->setSelection(selected.topLeft(), selected.bottomRight());
}

void TextDocument::replaceCurrentWord(const QString &newWord)
{
    const QString word = currentWord();
    if (word.isEmpty())
        return;
    DocumentView *const view = d->view;
    const int line = view->cursorPosition().y();
    const int column = view->cursorPosition().x();
    const QStringView text(*lineOf(line));
    int start = std::min(column, int(text.size()));
    while (start > 0 && isWordCharacter(text[start - 1]))
        --start;
    int end = column;
    while (end < text.size() && isWordCharacter(text[end]))
        ++end;
    macroBegin(QStringLiteral("replace %1 to %2").arg(word, newWord), line, column);
    cmdRemove(line, start, end - start);
    d->folding->settle();
    view->setCursorPosition(line, start, false);
    // A read-only document would lose the word and get nothing for it.
    if (isReadOnly())
        cmdInsert(line, start, newWord);
    else
        insert(newWord, 0, 0);
    view->setCursorPosition(line, start + int(newWord.length()), false);
    macroEnd(line, start + int(newWord.length()));
}

QString TextDocument::selectionCommand(SelectionCommand command)
{
    if (!d->view)
        return QString();
    return selectionCommand(command, d->view->selected, d->m->fVerticalSelection);
}

QString TextDocument::selectionCommand(SelectionCommand command, const QRect &rect,
                                       bool verticalSelection)
{
    int actions = command;
    if (isReadOnly()) {
        if (command == SelectionRemove)
            return QString();
        actions &= ~SelectionRemove;
    }
    // Another view may have removed all the lines that are selected in this one.
    const TextSelection selection = wholeSelection(*this, rect, verticalSelection);
    if (isEmptySelection(rect) || selection.first > lastLine())
        return QString();
    const QString text = selection.isBox ? d->blockSelection(actions, selection)
                                         : d->streamSelection(actions, selection);
    if ((actions & SelectionCopy) && !text.isEmpty()) {
        QGuiApplication::clipboard()->setText(text);
        d->m->winClipboard = text;
    }
    return (actions & SelectionText) ? text : QString();
}

QString TextDocument::Private::blockSelection(int actions, const TextSelection &selection)
{
    const bool wantsText = actions & (SelectionCopy | SelectionText);
    const bool removes = actions & SelectionRemove;
    const ColumnRange box{selection.start, selection.end};
    const int first = std::max(0, selection.first);
    const int last = std::min(selection.last, q->lastLine());
    const int cursorColumn = wholeCharacters(*contents[first], box).from;
    QString text;
    if (removes)
        q->macroBegin(QStringLiteral("remove selection"), selection.last, selection.end);
    for (int line = first; line <= last; ++line) {
        const TextLine *textLine = contents[line];
        const ColumnRange columns = wholeCharacters(*textLine, box);
        if (wantsText && columns.from < textLine->textLength())
            text += QStringView(*textLine).mid(columns.from, columns.length()) % lineBreak;
        if (removes)
            q->cmdRemove(line, columns.from, columns.length());
    }
    if (removes)
        q->macroEnd(selection.first, cursorColumn);
    text.chop(1);
    return text;
}

QString TextDocument::Private::streamSelection(int actions, const TextSelection &selection)
{
    const bool wantsText = actions & (SelectionCopy | SelectionText);
    const bool removes = actions & SelectionRemove;
    const int line = std::max(0, selection.first);
    if (removes)
        q->macroBegin(QStringLiteral("remove selection"), selection.last, selection.end);
    QString text;
    // A selection that starts at the very end of a line loses that line break in
    // the text, which is meant.
    if (wantsText && selection.start < q->textLength(line))
        text += QStringView(*contents[line]).sliced(selection.start) % lineBreak;
    if (removes)
        q->cmdRemove(line, selection.start, q->textLength(line) - selection.start);
    int current = line + 1;
    for (int middle = current; middle < selection.last && current <= q->lastLine(); ++middle) {
        if (wantsText)
            text += QStringView(*contents[current]) % lineBreak;
        if (removes)
            q->removeLine(current);
        else
            ++current;
    }
    if (current <= q->lastLine()) {
        if (wantsText)
            text += QStringView(*contents[current]).left(selection.end);
        if (removes) {
            q->cmdRemove(current, 0, selection.end);
            q->cmdRemoveLineBreak(current - 1);
        }
    }
    if (removes)
        q->macroEnd(selection.first, selection.start);
    return text;
}

// A column inside a surrogate pair becomes that of its start. A place past the
// text stays as it is.
int TextDocument::Private::wholeColumn(int line, int column) const
{
    if (line < 0 || line >= contents.size())
        return column;
    return splitsPair(*contents[line], column) ? column - 1 : column;
}

// The cursor of the active view goes before the arguments of an operation.
void TextDocument::Private::preferCursor(int *line, int *column) const
{
    if (!view)
        return;
    *line = view->cursorPosition().y();
    *column = view->cursorPosition().x();
}

} // namespace zvwidgets
