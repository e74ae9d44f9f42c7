#pragma once

#include "zvwidgets/zveditor/lines/lineregion.h"
#include "zvwidgets/zveditor/lines/textfile.h"
#include "zvwidgets/zveditor/lines/textlinearray.h"
#include "zvwidgets/zveditor/textline.h"

#include <QList>
#include <QObject>
#include <QPoint>
#include <QRect>
#include <QString>

#include <memory>

class QIODevice;
class QTextStream;
class QtUndoStack;

namespace zvwidgets {

class DocumentHost;
class DocumentView;
class TextEditorManager;
class TextFolding;
class TextView;

/// Where a row of a wrapped line is cut.
enum wrapMode
{
    wrapLine = 0, ///< at the width
    wrapWord = 1, ///< at the last blank
};

/// What to do with the selected text; a bit mask.
enum SelectionCommand
{
    SelectionCopy = 1,
    SelectionRemove = 2,
    SelectionCut = 3,
    SelectionText = 4, ///< return it
};

/// The text of one file: an array of lines that is never empty, and what must
/// agree with it, which is undo history, folds, the width of the longest line
/// and the region that views have to paint again. All views of a file share it.
///
/// It has three floors. The operations of the user (insert() to
/// selectionCommand()) ask for the read-only flag, prefer the cursor of the
/// active view to their arguments and make macros. The cmd operations only push
/// commands on the undo stack, which executes them. m_insertLine(),
/// m_removeLine() and the string changes inside the commands change the lines;
/// nothing but a command calls them. After changing a line's text a command
/// calls updateLine().
///
/// Lines and columns count from 0 and are not checked, unless said otherwise.
class TextDocument : public QObject
{
    Q_OBJECT
public:
    using wrapMode = zvwidgets::wrapMode;
    using SelectionCommand = zvwidgets::SelectionCommand;

    /// \a host, usually the shared manager, is not owned and must outlive the
    /// document.
    explicit TextDocument(DocumentHost *host);
    ~TextDocument() override;

    // Relations

    /// \a view is not owned.
    void addView(DocumentView *view);
    void removeView(DocumentView *view);
    QList<TextView *> views() const;
    /// May be null.
    TextView *activeView() const;
    void setActiveView(DocumentView *view);
    /// Null if it was made for another host.
    TextEditorManager *manager() const;
    QtUndoStack *undoStack() const;
    TextFolding *folding() const;

    // State

    bool isModified() const;
    void setModified(bool on);
    bool isReadOnly() const;
    void setReadOnly(bool on);
    int spacesInTab() const;
    /// \a n is clamped to 1 to 16.
    void setSpacesInTab(int n);
    bool getWrap() const { return shouldWrap; }
    void setWrap(bool on);
    wrapMode getWrapMode() const { return nWrapMode; }
    void setWrapMode(wrapMode mode) { nWrapMode = mode; }
    QString getWordBound() const { return wordBound; }
    void setWordBound(const QString &characters) { wordBound = characters; }
    int marked(int line) const;
    void setMarked(int line, int m);

    // Content

    void clear();
    bool load(QTextStream &ts);
    /// Writes text(): "\n" parts the lines and none ends the last, whatever
    /// fileFormat() and the lines' own ends say. False if the document is read-only.
    bool save(QTextStream &ts);

    /// Loads what \a device, which is open, holds, in the encoding \a wish
    /// unless the bytes say otherwise, and notes the format. On failure answers
    /// false with \a error and leaves the document as it was.
    bool load(QIODevice &device, QStringConverter::Encoding wish = QStringConverter::Utf8,
              QString *error = nullptr);
    /// The same for the file at \a path.
    bool loadFile(const QString &path, QStringConverter::Encoding wish = QStringConverter::Utf8,
                  QString *error = nullptr);
    /// Writes to the file at \a path in fileFormat(). On failure, or if the
    /// document is read-only, answers false with \a error, and both the file
    /// and the modified flag stay as they were.
    [[nodiscard]] bool saveFile(const QString &path, QString *error = nullptr);
    /// The first character that the encoding of fileFormat() lacks, for which
    /// saveFile() would fail; null if there is none.
    QString unencodable() const;
    /// How the file was written, and will be. It outlives the text: clear() keeps it.
    TextFormat fileFormat() const;
    void setFileFormat(const TextFormat &format);

    /// The lines joined by "\n", without a line end after the last.
    QString text() const;
    int lastLine() const;
    TextLine *lineOf(int line) const;
    int textLength(int line) const;
    /// One line as rich text.
    QString html(int line);
    /// The word, or the run of other characters, that holds \a column; \a start
    /// and \a end (half-open) may be null. Null if there is only a blank.
    QString wordIn(int line, int column, int *start, int *end) const;
    QString wordIn(const QPoint &pos, int *start, int *end) const;
    /// The word at the left of the active view's cursor.
    QString currentWord() const;

    // Geometry, in pixels

    /// An upper bound: every character counts as wide as the widest letter.
    int lineWidth(TextLine *line) const;
    /// Position of column \a length, which may lie past the end of the text.
    int textWidth(int line, int length);
    /// The column at \a width, at most the length of the text.
    int textLength(int line, int width);
    /// Number of tabs left of \a column; like the measures in pixels it is
    /// cheap at the far end of a long line.
    int tabsBefore(int line, int column);
    /// Where the row of a wrapped line that starts at column \a from ends.
    int nextWrapPos(int line, int width, int from);
    int documentWidth() const { return maxLength; }
    int documentHeight() const;

    // Update. Tagging only notes what updateViews() will paint.

    /// Another number after everything that may change what the rows of a view
    /// show: text, folds, wrapping, fonts, tab stops. All of these tag lines.
    unsigned revision() const;
    void tagLine(int line);
    void tagLines(int start, int end);
    void tagAll();
    /// Works out contexts and width again after the text of a line changed, at
    /// or behind \a fromColumn. Inside a macro this waits for its end.
    void updateLine(int line, int fromColumn = 0);
    void updateLines(int startLine, int endLine);
    void updateLines();
    void updateMaxLength(TextLine *textLine);
    void updateViews();
    void updateFontData();
    void documentChanged(bool isModified);

    // Operations of the user

    /// "\r\n", "\r" and "\n" in \a s become line breaks.
    void insert(const QString &s, int line, int column);
    void insertLineBreak(int line, int column);
    void del(int line, int column);
    void backspace(int line, int column);
    void removeText(int fromLine, int fromColumn, int toLine, int toColumn);
    void append(const QString &s);
    void indent();
    void unindent();
    void replaceCurrentWord(const QString &newWord);
    QString selectionCommand(SelectionCommand command);
    /// \a rect is a pair of points, see selectionrect.h.
    QString selectionCommand(SelectionCommand command, const QRect &rect, bool verticalSelection);

    // Commands

    void macroBegin(const QString &description);
    /// Undoing the macro puts the cursor to \a line, \a column.
    void macroBegin(const QString &description, int line, int column);
    void macroEnd();
    /// Leaves the cursor at \a line, \a column.
    void macroEnd(int line, int column);
    /// Where the cursor goes when the running command or macro has ended.
    void setMacroCursorPosition(int line, int column);
    void cmdInsert(int line, int column, const QString &text);
    void cmdRemove(int line, int column, int length);
    void cmdReplace(int line, int column, int length, const QString &text);
    void cmdInsertLineBreak(int line, int column);
    void cmdRemoveLineBreak(int line);
    void makeLine(int line);
    void removeLine(int line);

    // For commands only

    void m_insertLine(int line);
    void m_removeLine(int line);

    bool shouldWrap;
    wrapMode nWrapMode = wrapLine;
    /// Kept for clients.
    QString wordBound;
    /// Pixel width of the longest line.
    int maxLength = 0;

    struct Private;
    const std::unique_ptr<Private> d;

public slots:
    void macroExecuted();
};

} // namespace zvwidgets
