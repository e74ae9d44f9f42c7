#pragma once

#include "qtundo/src/qtundo.h"
#include "zvwidgets/zveditor/textline.h"

#include <vector>

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

/// Inserts an empty line. Its line end is that of the line above.
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

/// Removes a whole line. Undo brings back its text and its line end, not its
/// marks, margins, pixmap, colour or the fold that began on it.
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
    LineEnd oldEnd = LineEnd::Document;
};

/// What one of the commands above does, or a new line end, as one of many in a
/// batch.
struct TextEdit
{
    enum class Kind : quint8
    {
        Insert,
        Remove,
        MakeLine,
        RemoveLine,
        SetLineEnd
    };

    Kind kind;
    /// Of a removed line; for SetLineEnd the one that isn't in force.
    LineEnd end = LineEnd::Document;
    int line = 0;
    int column = 0;
    /// Of the text inserted or removed. A removal takes at most what there is.
    int length = 0;
};

static_assert(sizeof(TextEdit) <= 16, "millions of these are held");

/// The edits between two markers of a macro, in order. A macro may edit each of
/// millions of lines, and a command of its own for each would need many times
/// the memory of the text.
class CmdBatch : public QtCommand
{
    Q_OBJECT
public:
    explicit CmdBatch(TextDocument *doc);

    /// Does \a edit and appends it; \a text is what an Insert puts in. Only while
    /// this is the last command of an open macro.
    void run(TextEdit edit, const QString &text);
    /// Gives back memory that was kept for more edits.
    void squeeze();

    void redo() override;
    void undo() override;

private:
    void undo(TextEdit *edit, QStringView text);

    TextDocument *const doc;
    std::vector<TextEdit> edits;
    /// What they put in or took away, joined.
    QString texts;
};

} // namespace zvwidgets
