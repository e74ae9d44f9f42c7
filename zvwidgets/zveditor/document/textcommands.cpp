#include "zvwidgets/zveditor/textcommands.h"

#include "zvwidgets/zveditor/textdoc.h"
#include "zvwidgets/zveditor/textfolding.h"

#include <algorithm>
#include <utility>

namespace zvwidgets {

namespace {

constexpr qsizetype maxDescription = 32;

/// To be called once the text of the line has changed from \a column on. Text
/// that changes is never left hidden in a fold.
void lineChanged(TextDocument *doc, int line, int column)
{
    doc->updateLine(line, column);
    doc->folding()->ensureLineVisible(line);
}

void insertText(TextDocument *doc, int line, int column, const QString &text)
{
    if (!text.isEmpty()) {
        doc->lineOf(line)->insertText(column, text);
        lineChanged(doc, line, column);
    }
    doc->setMacroCursorPosition(line, column + int(text.length()));
}

void takeInsertedText(TextDocument *doc, int line, int column, int length)
{
    if (length > 0) {
        doc->lineOf(line)->removeText(column, length);
        lineChanged(doc, line, column);
    }
    doc->setMacroCursorPosition(line, column);
}

/// How much of \a length there is from \a column on.
int lengthToRemove(const TextLine &line, int column, int length)
{
    return std::max(0, std::min(length, line.textLength() - column));
}

void removeText(TextDocument *doc, int line, int column, int length)
{
    doc->lineOf(line)->removeText(column, length);
    doc->setMacroCursorPosition(line, column);
    lineChanged(doc, line, column);
}

void bringBackText(TextDocument *doc, int line, int column, const QString &text)
{
    doc->lineOf(line)->insertText(column, text);
    doc->setMacroCursorPosition(line, column + int(text.length()));
    lineChanged(doc, line, column);
}

void makeLine(TextDocument *doc, int line)
{
    doc->m_insertLine(line);
    doc->setMacroCursorPosition(line, 0);
}

void takeLine(TextDocument *doc, int line)
{
    doc->m_removeLine(line);
    doc->setMacroCursorPosition(line, 0);
}

/// \a text shares nothing.
void bringBackLine(TextDocument *doc, int line, const QString &text, LineEnd end)
{
    doc->m_insertLine(line);
    doc->lineOf(line)->set(text);
    doc->lineOf(line)->setLineEnd(end);
    // Inserting only counted on an empty line.
    doc->updateLine(line);
    doc->setMacroCursorPosition(line, 0);
}

/// Gives the line the end that \a edit names, and notes there the one it had.
void swapEnds(TextDocument *doc, TextEdit *edit)
{
    TextLine *const line = doc->lineOf(edit->line);
    const LineEnd old = line->lineEnd();
    line->setLineEnd(edit->end);
    edit->end = old;
}

/// Refers to the characters of \a text, which must outlive it.
QString shared(QStringView text)
{
    return QString::fromRawData(text.data(), text.size());
}

/// A copy that shares nothing with the line, whose text may be part of a block
/// that goes with the document's lines.
QString copyOf(const TextLine *line, int column, int length)
{
    return QStringView(*line).mid(column, length).toString();
}

} // namespace

// Cut before it is joined, as the text may be that of a whole file.
QString stepDescription(QLatin1String prefix, const QString &text)
{
    const qsizetype room = maxDescription - prefix.size();
    if (text.size() <= room)
        return prefix.isEmpty() ? text : prefix + text;
    return prefix + text.left(room) + QLatin1String("...");
}

CmdInsert::CmdInsert(TextDocument *document, int atLine, int atColumn, const QString &insertedText)
    : QtCommand(QString(), true), doc(document), line(atLine), column(atColumn), text(insertedText)
{}

void CmdInsert::redo()
{
    insertText(doc, line, column, text);
}

void CmdInsert::undo()
{
    takeInsertedText(doc, line, column, int(text.length()));
}

bool CmdInsert::mergeMeWith(QtCommand *)
{
    // Undo takes back one typed character at a time; merging would make it words.
    return false;
}

QString CmdInsert::describe() const
{
    return stepDescription(QLatin1String("insert "), text);
}

CmdRemove::CmdRemove(TextDocument *document, int atLine, int atColumn, int removedLength)
    : QtCommand(QString(), true)
    , doc(document)
    , line(atLine)
    , column(atColumn)
    , length(removedLength)
{}

void CmdRemove::redo()
{
    const TextLine *const target = doc->lineOf(line);
    length = lengthToRemove(*target, column, length);
    oldText = length > 0 ? copyOf(target, column, length) : QString();
    removeText(doc, line, column, length);
    hasRun = true;
    resetDescription();
}

void CmdRemove::undo()
{
    bringBackText(doc, line, column, oldText);
}

bool CmdRemove::mergeMeWith(QtCommand *)
{
    return false;
}

QString CmdRemove::describe() const
{
    return hasRun ? stepDescription(QLatin1String("remove "), oldText) : QString();
}

CmdMakeLine::CmdMakeLine(TextDocument *document, int atLine)
    : QtCommand(QString(), true), doc(document), line(atLine)
{}

void CmdMakeLine::redo()
{
    makeLine(doc, line);
}

void CmdMakeLine::undo()
{
    takeLine(doc, line);
}

bool CmdMakeLine::mergeMeWith(QtCommand *)
{
    return false;
}

CmdRemoveLine::CmdRemoveLine(TextDocument *document, int atLine)
    : QtCommand(QString(), true), doc(document), line(atLine)
{}

void CmdRemoveLine::redo()
{
    const TextLine *const target = doc->lineOf(line);
    oldText = copyOf(target, 0, target->textLength());
    oldEnd = target->lineEnd();
    takeLine(doc, line);
}

void CmdRemoveLine::undo()
{
    bringBackLine(doc, line, oldText, oldEnd);
}

bool CmdRemoveLine::mergeMeWith(QtCommand *)
{
    return false;
}

CmdBatch::CmdBatch(TextDocument *document) : QtCommand(QString(), false), doc(document)
{}

void CmdBatch::run(TextEdit edit, const QString &text)
{
    switch (edit.kind) {
    case TextEdit::Kind::Insert:
        edit.length = int(text.length());
        texts += text;
        insertText(doc, edit.line, edit.column, text);
        break;
    case TextEdit::Kind::Remove: {
        const TextLine &target = *doc->lineOf(edit.line);
        edit.length = lengthToRemove(target, edit.column, edit.length);
        texts += QStringView(target).mid(edit.column, edit.length);
        removeText(doc, edit.line, edit.column, edit.length);
        break;
    }
    case TextEdit::Kind::MakeLine:
        makeLine(doc, edit.line);
        break;
    case TextEdit::Kind::RemoveLine: {
        const TextLine &target = *doc->lineOf(edit.line);
        edit.length = target.textLength();
        edit.end = target.lineEnd();
        texts += QStringView(target);
        takeLine(doc, edit.line);
        break;
    }
    case TextEdit::Kind::SetLineEnd:
        swapEnds(doc, &edit);
        break;
    }
    edits.push_back(edit);
}

void CmdBatch::squeeze()
{
    edits.shrink_to_fit();
    texts.squeeze();
}

// What a removal takes is only known once it runs, so everything is noted anew.
void CmdBatch::redo()
{
    const std::vector<TextEdit> todo = std::exchange(edits, {});
    const QString before = std::exchange(texts, {});
    edits.reserve(todo.size());
    texts.reserve(before.size());
    qsizetype at = 0;
    for (const TextEdit &edit : todo) {
        const bool inserts = edit.kind == TextEdit::Kind::Insert;
        run(edit, inserts ? shared(QStringView(before).mid(at, edit.length)) : QString());
        at += edit.length;
    }
}

void CmdBatch::undo()
{
    QStringView rest(texts);
    for (auto edit = edits.rbegin(); edit != edits.rend(); ++edit) {
        const QStringView text = rest.last(edit->length);
        rest.chop(edit->length);
        undo(&*edit, text);
    }
}

void CmdBatch::undo(TextEdit *edit, QStringView text)
{
    switch (edit->kind) {
    case TextEdit::Kind::Insert:
        takeInsertedText(doc, edit->line, edit->column, edit->length);
        break;
    case TextEdit::Kind::Remove:
        bringBackText(doc, edit->line, edit->column, shared(text));
        break;
    case TextEdit::Kind::MakeLine:
        takeLine(doc, edit->line);
        break;
    case TextEdit::Kind::RemoveLine:
        bringBackLine(doc, edit->line, text.toString(), edit->end);
        break;
    case TextEdit::Kind::SetLineEnd:
        swapEnds(doc, edit);
        break;
    }
}

} // namespace zvwidgets
