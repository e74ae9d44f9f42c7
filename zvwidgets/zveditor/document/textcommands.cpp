#include "zvwidgets/zveditor/textcommands.h"

#include "zvwidgets/zveditor/textdoc.h"
#include "zvwidgets/zveditor/textfolding.h"

#include <algorithm>

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
    if (!text.isEmpty()) {
        doc->lineOf(line)->insertText(column, text);
        lineChanged(doc, line, column);
    }
    doc->setMacroCursorPosition(line, column + int(text.length()));
}

void CmdInsert::undo()
{
    if (!text.isEmpty()) {
        doc->lineOf(line)->removeText(column, int(text.length()));
        lineChanged(doc, line, column);
    }
    doc->setMacroCursorPosition(line, column);
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
    TextLine *const target = doc->lineOf(line);
    length = std::max(0, std::min(length, target->textLength() - column));
    oldText = length > 0 ? copyOf(target, column, length) : QString();
    target->removeText(column, length);
    doc->setMacroCursorPosition(line, column);
    lineChanged(doc, line, column);
    hasRun = true;
    resetDescription();
}

void CmdRemove::undo()
{
    doc->lineOf(line)->insertText(column, oldText);
    doc->setMacroCursorPosition(line, column + int(oldText.length()));
    lineChanged(doc, line, column);
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
    doc->m_insertLine(line);
    doc->setMacroCursorPosition(line, 0);
}

void CmdMakeLine::undo()
{
    doc->m_removeLine(line);
    doc->setMacroCursorPosition(line, 0);
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
    doc->m_removeLine(line);
    doc->setMacroCursorPosition(line, 0);
}

void CmdRemoveLine::undo()
{
    doc->m_insertLine(line);
    doc->lineOf(line)->set(oldText);
    // Inserting only counted on an empty line.
    doc->updateLine(line);
    doc->setMacroCursorPosition(line, 0);
}

bool CmdRemoveLine::mergeMeWith(QtCommand *)
{
    return false;
}

} // namespace zvwidgets
