#include "zvwidgets/zveditor/document/selectionrect.h"
#include "zvwidgets/zveditor/editor/texteditor_p.h"
#include "zvwidgets/zveditor/editorcursor.h"
#include "zvwidgets/zveditor/pattern/literalsearch.h"
#include "zvwidgets/zveditor/pattern/textpattern.h"
#include "zvwidgets/zveditor/textdoc.h"
#include "zvwidgets/zveditor/texteditor.h"
#include "zvwidgets/zveditor/textline.h"
#include "zvwidgets/zveditor/textmanager.h"
#include "zvwidgets/zveditor/textview.h"

#include <algorithm>

namespace zvwidgets {

namespace {

bool isBoundary(QChar c)
{
    const char16_t u = c.unicode();
    const bool word = (u >= u'0' && u <= u'9') || (u >= u'a' && u <= u'z') ||
                      (u >= u'A' && u <= u'Z') || u == u'_';
    return !word;
}

/// Finds the matches of a search text in one line after the other.
class LineMatcher
{
public:
    LineMatcher(const QString &text, bool caseSensitive, bool wholeWord)
        : literal(text, caseSensitive ? Qt::CaseSensitive : Qt::CaseInsensitive), whole(wholeWord)
    {}

    int length() const { return int(literal.length()); }

    /// Column of the first match from \a from on, -1 if there is none. \a before
    /// stands at the left of \a from; pass the line's own character.
    int find(QStringView line, int from, QChar before) const
    {
        qsizetype column = literal.indexIn(line, from);
        while (column >= 0 && whole && !isWholeWord(line, column, from, before))
            column = literal.indexIn(line, column + literal.length());
        return int(column);
    }

    int find(QStringView line, int from) const
    {
        return find(line, from, from > 0 && from <= line.size() ? line[from - 1] : QChar());
    }

private:
    bool isWholeWord(QStringView line, qsizetype column, qsizetype from, QChar before) const
    {
        const qsizetype end = column + literal.length();
        if (end < line.size() && !isBoundary(line[end]))
            return false;
        return column == 0 || isBoundary(column == from ? before : line[column - 1]);
    }

    const LiteralSearch literal;
    const bool whole;
};

/// Replaces all matches of one line after the other, each line by one removal
/// and one insertion, so that a line of any length costs one walk along it.
class LineReplacer
{
public:
    LineReplacer(TextDocument *document, const LineMatcher &lineMatcher, const QString &newText,
                 bool expandTabs)
        : doc(document)
        , matcher(lineMatcher)
        , replacement(newText.constData(), newText.size())
        , expand(expandTabs && newText.contains(u'\t'))
        , breaks(newText.contains(u'\n'))
    {}

    /// Replaces in \a line the matches from \a from on that end at or before
    /// \a limit. Returns the number of lines that took the place of this one.
    int replaceIn(int line, int from, int limit)
    {
        const QStringView text = *doc->lineOf(line);
        int column = matcher.find(text, from);
        if (column < 0 || column + matcher.length() > limit)
            return 1;
        const int begin = column;
        int end = column;
        visual = expand ? visualColumn(text.first(begin)) : 0;
        QString out;
        do {
            append(&out, text.mid(end, column - end));
            appendReplacement(&out);
            ++hits;
            end = column + matcher.length();
            column = matcher.find(text, end, out.isEmpty() ? charBefore(text, begin) : out.back());
        } while (column >= 0 && column + matcher.length() <= limit);
        return exchange(line, begin, end - begin, out);
    }

    int count() const { return hits; }
    /// Behind the last replacement.
    QPoint place() const { return lastPlace; }

private:
    static QChar charBefore(QStringView text, int column)
    {
        return column > 0 ? text[column - 1] : QChar(u' ');
    }

    int visualColumn(QStringView text) const
    {
        int result = 0;
        for (const QChar c : text)
            result += c == u'\t' ? doc->spacesInTab() - result % doc->spacesInTab() : 1;
        return result;
    }

    void append(QString *out, QStringView text)
    {
        out->append(text);
        if (!expand)
            return;
        for (const QChar c : text)
            visual += c == u'\t' ? doc->spacesInTab() - visual % doc->spacesInTab() : 1;
    }

    void appendReplacement(QString *out)
    {
        if (!expand) {
            out->append(replacement);
            return;
        }
        for (const QChar c : replacement) {
            const int width = c == u'\t' ? doc->spacesInTab() - visual % doc->spacesInTab() : 1;
            if (c == u'\t')
                out->append(QString(width, u' '));
            else
                out->append(c);
            visual = c == u'\n' ? 0 : visual + width;
        }
    }

    /// Puts \a out, which may hold line breaks, in the place of \a length
    /// characters.
    int exchange(int line, int column, int length, const QString &out)
    {
        doc->cmdRemove(line, column, length);
        if (!breaks) {
            doc->cmdInsert(line, column, out);
            lastPlace = QPoint(column + int(out.length()), line);
            return 1;
        }
        const QStringList parts = out.split(u'\n');
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

    TextDocument *const doc;
    const LineMatcher &matcher;
    /// A copy, as a literal would be copied for each command that holds it.
    const QString replacement;
    const bool expand;
    const bool breaks;
    int visual = 0;
    int hits = 0;
    QPoint lastPlace;
};

} // namespace

bool TextEditor::find(const QString &text, bool caseSensitive, bool wholeWord, bool fromCursor,
                      bool inSelection)
{
    d->keepSearchedSelection(text, caseSensitive, wholeWord, fromCursor, inSelection);
    d->findText = text;
    d->findCaseSensitive = caseSensitive;
    d->findWholeWord = wholeWord;
    d->findFromCursor = fromCursor;
    d->findInSelection = inSelection;
    return d->find();
}

/// Notes the selection that a search in it is bound to. A search that goes on
/// from its last match stays bound to the selection in which it began: the one
/// there is now is only that match, or gone if it was replaced.
void TextEditor::Private::keepSearchedSelection(const QString &text, bool caseSensitive,
                                                bool wholeWord, bool fromCursor, bool inSelection)
{
    const QRect selected = view->selection();
    const bool sameSearch = inSelection && findInSelection && fromCursor && text == findText &&
                            caseSensitive == findCaseSensitive && wholeWord == findWholeWord;
    const bool untouched = isEmptySelection(selected) || selected == lastFound;
    if (sameSearch && untouched && !isEmptySelection(lastFound))
        return;
    selectionForFind = selected;
}

bool TextEditor::findNext()
{
    d->findFromCursor = true;
    return d->find();
}

SearchScope TextEditor::Private::searchScope() const
{
    SearchScope scope;
    scope.lastLine = doc->lastLine();
    if (findFromCursor) {
        scope.firstLine = view->cursor()->line();
        scope.firstColumn = view->cursor()->column();
    }
    if (!findInSelection)
        return scope;
    scope.box = manager->fVerticalSelection;
    const QRect range = scope.box ? ordered(selectionForFind) : selectionForFind;
    if (scope.firstLine < range.top()) {
        scope.firstLine = range.top();
        scope.firstColumn = 0;
    }
    if (scope.firstLine == range.top() || scope.box)
        scope.firstColumn = std::max(scope.firstColumn, range.left());
    if (scope.box)
        scope.leftColumn = range.left();
    // The lines below the text must not become the selection's last one.
    if (range.bottom() <= scope.lastLine || scope.box)
        scope.rightColumn = range.right();
    scope.lastLine = std::min(scope.lastLine, range.bottom());
    return scope;
}

bool TextEditor::Private::find()
{
    view->clearSelection();
    lastFound = QRect(QPoint(0, 0), QPoint(0, 0));
    if (findText.isEmpty())
        return false;
    const SearchScope scope = searchScope();
    const LineMatcher matcher(findText, findCaseSensitive, findWholeWord);
    for (int line = scope.firstLine; line <= scope.lastLine; ++line) {
        const int column = matcher.find(*doc->lineOf(line), scope.startColumn(line));
        if (column < 0 || column + matcher.length() > scope.endColumn(line))
            continue;
        select(line, column, matcher.length());
        lastFound = view->selection();
        return true;
    }
    return false;
}

void TextEditor::Private::select(int line, int column, int length)
{
    self->reveal(line);
    view->setCursorPosition(line, column + length, false);
    view->setSelection(QPoint(column, line), QPoint(column + length, line));
    view->updateView(false);
}

bool TextEditor::findRegexp(const QString &pattern, bool caseSensitive, bool wildcard,
                            bool fromCursor)
{
    d->view->clearSelection();
    const TextPattern expression(
        pattern, caseSensitive ? TextPattern::NoOption : TextPattern::CaseInsensitive,
        wildcard ? TextPattern::Syntax::Wildcard : TextPattern::Syntax::Expression);
    int column = fromCursor ? this->column() : 0;
    // A match of nothing where the cursor stands would be found for ever.
    bool emptyCounts = !fromCursor;
    for (int line = fromCursor ? this->line() : 0; line <= d->doc->lastLine(); ++line) {
        const QStringView text = *d->doc->lineOf(line);
        int length = 0;
        int found = column <= text.size() ? expression.search(text, column, &length) : -1;
        if (found == column && length == 0 && !emptyCounts)
            found = column < text.size() ? expression.search(text, column + 1, &length) : -1;
        if (found >= 0) {
            d->select(line, found, length);
            return true;
        }
        column = 0;
        emptyCounts = true;
    }
    d->view->updateView(false);
    return false;
}

int TextEditor::replaceAll(const QString &text, const QString &replaceText, bool caseSensitive,
                           bool wholeWord, bool inSelection)
{
    if (!find(text, caseSensitive, wholeWord, false, inSelection))
        return 0;
    if (d->doc->isReadOnly())
        return 0;
    d->makeViewActive();
    d->view->clearSelection();
    SearchScope scope = d->searchScope();
    const LineMatcher matcher(text, caseSensitive, wholeWord);
    LineReplacer replacer(d->doc, matcher, replaceText, !d->manager->fSaveTab);
    d->doc->macroBegin(QStringLiteral("replace all"));
    int line = scope.firstLine;
    while (line <= scope.lastLine) {
        const int taken = replacer.replaceIn(line, scope.startColumn(line), scope.endColumn(line));
        line += taken;
        scope.lastLine += taken - 1;
    }
    d->doc->macroEnd(replacer.place().y(), replacer.place().x());
    d->findFromCursor = true;
    return replacer.count();
}

} // namespace zvwidgets
