#pragma once

#include "qtundo/src/qtundo.h"

namespace zvwidgets {

class TextDocument;

/// The text of an undo step: \a prefix and \a text, cut off if they are long.
QString stepDescription(QLatin1String prefix, const QString &text);

/// Inserts text within one line. A column past the line's end is reached by
/// padding with blanks, which undo leaves. An empty text changes nothing and
/// only places the cursor: a macro marks its first and last position so.
///
/// These commands name their place by line and column, never by a pointer to
/// a line, so that they outlive any line. The document is not owned; it owns
/// the stack that owns them. Coordinates are the caller's duty. Each leaves
/// the wanted cursor in the document, which applies the last one of a macro.
class CmdInsert : public QtCommand
{
    Q_OBJECT
public:
    CmdInsert(TextDocument *doc, int line, int column, const QString &text);

    void redo() override;
    void undo() override;
    bool mergeMeWith(QtCommand *command) override;

protected:
    QString describe() const override;

private:
    TextDocument *const doc;
    const int line;
    const int column;
    const QString text;
};

/// Removes text within one line, at most up to its end.
class CmdRemove : public QtCommand
{
    Q_OBJECT
public:
    CmdRemove(TextDocument *doc, int line, int column, int length);

    void redo() override;
    void undo() override;
    bool mergeMeWith(QtCommand *command) override;

protected:
    QString describe() const override;

private:
    TextDocument *const doc;
    const int line;
    const int column;
    int length;
    /// Only then oldText is known, and with it the description.
    bool hasRun = false;
    QString oldText;
};

/// Inserts an empty line.
class CmdMakeLine : public QtCommand
{
    Q_OBJECT
public:
    CmdMakeLine(TextDocument *doc, int line);

    void redo() override;
    void undo() override;
    bool mergeMeWith(QtCommand *command) override;

private:
    TextDocument *const doc;
    const int line;
};

/// Removes a whole line. Undo brings back its text, not its marks, margins,
/// pixmap, colour or the fold that began on it.
class CmdRemoveLine : public QtCommand
{
    Q_OBJECT
public:
    CmdRemoveLine(TextDocument *doc, int line);

    void redo() override;
    void undo() override;
    bool mergeMeWith(QtCommand *command) override;

private:
    TextDocument *const doc;
    const int line;
    QString oldText;
};

} // namespace zvwidgets
