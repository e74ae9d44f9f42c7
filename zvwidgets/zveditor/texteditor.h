#pragma once

#include <QFrame>
#include <QStringConverter>
#include <QStringList>

#include <functional>
#include <memory>

class QPixmap;

namespace zvwidgets {

class TextDocument;
class TextEditorManager;
class TextFolding;
class TextView;

/// A whole editor to be placed in a window: one view with its margins and
/// scroll bars on a document that other editors may share. Adds file paths,
/// loading and saving, find and replace, the clipboard, completion of words,
/// printing and export. Owns its view; the last editor of a document deletes
/// the document.
class TextEditor : public QFrame
{
    Q_OBJECT
public:
    enum ChangeId
    {
        CursorPosition,
        Modification,
        UndoRedo,
        Selection
    };

    /// \a doc must not be null. The last editor of a document deletes it.
    explicit TextEditor(TextDocument *doc, QWidget *parent = nullptr,
                        const QString &name = QString());
    ~TextEditor() override;

    TextDocument *document() const;
    TextEditorManager *manager() const;
    TextView *view() const;
    TextFolding *folding() const;

    /// Absolute; empty for a new text.
    QString filePath() const;
    /// Also picks the highlight by the file's name. Emits filePathChange().
    void setFilePath(const QString &path);
    /// Wanted encoding for files without a byte-order mark.
    QStringConverter::Encoding textCodec() const;
    void setTextCodec(QStringConverter::Encoding encoding);

    /// Loads \a path. On failure answers false and keeps the text there was;
    /// the path is the new one only if the text is.
    bool open(const QString &path);
    /// Writes to the present path, if there are changes. A failure leaves the
    /// file whole and the document modified; errorString() gives the reason.
    bool save();
    /// On failure the path is the former one again.
    bool saveAs(const QString &path);
    /// Why the last open(), save() or saveAs() failed; empty if it didn't.
    QString errorString() const;
    /// Empties the text and its undo history and forgets the path.
    void fileNew();

    /// Emits changed().
    void notifyChange(ChangeId id);

    /// Where the cursor is, from 0; the column may lie past the line's end.
    int line() const;
    int column() const;
    bool isModified() const;
    void setModified(bool modified);
    bool getWrap() const;
    void setWrap(bool wrap);
    /// Name of the highlight definition.
    QString highlight() const;
    void setHighlight(const QString &name);
    bool isReadOnly() const;
    void setReadOnly(bool readOnly);
    bool hasSelection() const;

    /// Also empties the undo history.
    void clear();
    QString text() const;
    /// Nothing happens to a read-only text.
    void setText(const QString &text);
    QString getSelectedText();
    /// Inserts at the cursor, as the document's append() does.
    void append(const QString &text);
    void insertLine(const QString &text, int line);

    // These work at the cursor of this editor's view. Without a selection cut() and
    // copy() do nothing.

    void cut();
    void copy();
    /// Replaces the selection.
    void paste();
    /// Pastes what the mouse selected last, on X11 in any program.
    void pasteSelection();
    /// Removes the selection, without one the character right of the cursor.
    void del();
    /// Deprecated: these write a debug line; QtUndoManager has the actions.
    void undo();
    void redo();
    bool canUndo() const;
    bool canRedo() const;
    void indent();
    void unindent();
    /// Places the cursor and brings it to the middle of the view, out of any
    /// closed fold.
    void moveCursor(int line, int column);
    /// Opens the folds that hide \a line, which may lie outside of the text.
    void reveal(int line);

    /// \a pixmap is not owned; null removes the icon. Lines outside of the text are
    /// ignored.
    void setLineIcon(int line, QPixmap *pixmap);
    void clearLineIcon(int line);

    /// Selects the next match and puts the cursor behind it, opening the folds that
    /// hide it. An empty \a text matches nothing. No wrapping round at the end.
    bool find(const QString &text, bool caseSensitive, bool wholeWord, bool fromCursor,
              bool inSelection);
    /// \a pattern has the syntax of TextPattern. A match of no characters at the
    /// cursor itself doesn't count, so that searching on comes to an end.
    bool findRegexp(const QString &pattern, bool caseSensitive, bool wildcard, bool fromCursor);
    /// Repeats the last find() or findRegexp() from the cursor. A search in the
    /// selection stays in the one in which it began, and finds nothing more once an edit
    /// or a cursor move has taken that away.
    bool findNext();
    /// Puts \a text in the place of the match that was found, or of the selection if
    /// something else is selected by now; one step of undo.
    void replaceFound(const QString &text);
    /// Puts \a text in the place of the match that was found and of all that findNext()
    /// would find after it, as one step of undo. Replaced text is not searched again.
    /// Returns the number of replacements; 0 if no match is selected any more.
    int replaceRest(const QString &text);
    /// find() from the start of the text and replaceRest().
    int replaceAll(const QString &text, const QString &replaceText, bool caseSensitive,
                   bool wholeWord, bool inSelection);
    /// Asked about every few milliseconds while one of these runs, with the number of
    /// lines that are done and of all; false ends it, and what was replaced stays so.
    /// It may run the event loop if that brings this editor no input.
    using SearchWatch = std::function<bool(int done, int all)>;
    void setSearchWatch(const SearchWatch &watch);

    /// The lines from \a from to \a to inclusive as rich text; a \a to of -1
    /// means the last line.
    QString html(int from, int to);
    /// Asks for the printer's settings, then prints the whole text in its colours.
    void print();

    /// Words that start with \a word, or with the word at the cursor if it is
    /// empty: those of the document sorted, then the manager's lists.
    QStringList completionList(const QString &word);

public slots:
    /// Opens a list of the words that contain the word at the cursor.
    void completeWord();
    /// Puts the next of the words that start with the word at the cursor in its place;
    /// repeated calls go round through all of them.
    void completeWordNext();
    void completeWordPrev();
    /// Ends that round; connected to the moves of the cursor.
    void breakViCompletion();
    /// Takes the word chosen in the list opened by completeWord().
    void applyCompleteWord();
    /// Forgets the words of that list.
    void finishCompletion();

signals:
    /// \a id is a ChangeId.
    void changed(int id);
    void filePathChange();

protected:
    bool event(QEvent *event) override;
    bool eventFilter(QObject *object, QEvent *event) override;

private:
    struct Private;
    const std::unique_ptr<Private> d;
};

} // namespace zvwidgets
