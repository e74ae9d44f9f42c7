#pragma once

#include <QColor>
#include <QList>
#include <QStringList>
#include <QWidget>

#include <functional>
#include <memory>

class QCloseEvent;
class QPixmap;

namespace vesk {

/// All that the program knows about one open text. Tabs, search, tags and the
/// build commands work on this interface only; the text component behind it is
/// the business of the subclass.
///
/// `Editors` owns the editors. An editor never closes itself: a close event is
/// refused and answered with closing().
class Editor : public QWidget
{
    Q_OBJECT
public:
    explicit Editor(QWidget *parent = nullptr, const QString &name = QString());
    ~Editor() override;

    virtual QString text() const = 0;
    virtual void setText(const QString &text) = 0;
    /// Text of line \a n (0-based); empty if there is no such line.
    virtual QString line(int n) const = 0;
    virtual QString selection() const = 0;
    /// Loads the file \a url. On failure false; errorString() then says why,
    /// and the editor keeps the file name that it had.
    virtual bool open(const QString &url) = 0;
    /// Saves under the current name. On failure the editor stays modified and
    /// errorString() says why.
    virtual void save() = 0;
    /// Saves as \a url, which becomes the file name. On failure the editor
    /// keeps its former name, stays modified, and errorString() says why.
    virtual void saveAs(const QString &url) = 0;
    virtual void undo() = 0;
    virtual void redo() = 0;
    virtual void cut() = 0;
    virtual void copy() = 0;
    virtual void paste() = 0;
    /// Selects the next match of \a text; false, with nothing selected, if
    /// there is none up to the end of the text or of the selection.
    virtual bool find(const QString &text, bool caseSensitive, bool wholeWord, bool fromCursor,
                      bool inSelection) = 0;
    /// The same for a regular expression, or a shell pattern if \a wildcard.
    virtual bool findRegexp(const QString &pattern, bool caseSensitive, bool wildcard,
                            bool fromCursor) = 0;
    /// Puts \a text in the place of the selected match.
    virtual void replaceFound(const QString &text) = 0;
    /// Repeats the last find() or findRegexp() from the cursor.
    virtual bool findNext() = 0;
    /// Puts \a text in the place of the selected match and of all that findNext()
    /// would find, as one step of undo. Returns the number of replacements.
    virtual int replaceRest(const QString &text) = 0;
    /// Asked again and again while one of these runs, with the number of lines that
    /// are done and of all; false ends it. It may run the event loop if the user
    /// cannot reach the editor meanwhile.
    using SearchWatch = std::function<bool(int done, int all)>;
    virtual void setSearchWatch(const SearchWatch &watch) = 0;
    virtual void setWrap(bool on) = 0;
    virtual bool getWrap() const = 0;
    virtual void selectAll() = 0;
    virtual void indent() = 0;
    virtual void unindent() = 0;
    virtual void configure() = 0;
    virtual void configureHighlighting() = 0;
    /// Absolute path; empty for a text without a file.
    virtual QString filename() const = 0;
    virtual void setFileName(const QString &path) = 0;
    virtual bool isModified() const = 0;
    /// Line of the cursor, 0-based.
    virtual int cursorLine() const = 0;
    /// Column of the cursor, 0-based, in UTF-16 units.
    virtual int cursorColumn() const = 0;
    virtual void setCursorPosition(int line, int column) = 0;
    virtual void setHighlightedLine(int line, const QColor &color) = 0;
    virtual void clearHighlightedLine(int line) = 0;
    /// Shows \a icon in the indicator margin; it must outlive the editor's use of it.
    virtual void setLineIcon(int line, QPixmap *icon) = 0;
    virtual void clearLineIcon(int line) = 0;
    /// Marks the line a debugger stands on; only one line is marked at a time.
    virtual void showTrace(int line) = 0;
    virtual void clearTrace() = 0;
    /// True if Tab inserts spaces.
    virtual bool replaceTabs() const = 0;
    virtual int tabWidthInSpaces() const = 0;
    virtual void completeWordNext() = 0;
    virtual void completeWordPrev() = 0;
    /// Offers \a words from a typed prefix of \a minimumMatchedLength on.
    virtual void addCompletionList(const QStringList &words, int minimumMatchedLength) = 0;

    /// True without any text. Much text must not make it slow.
    virtual bool isEmpty() const = 0;
    virtual int lineCount() const = 0;
    /// Another number after each change of the text, and now and then without one.
    virtual unsigned revision() const = 0;

    bool hasFileName() const;
    /// Why the last open(), save() or saveAs() failed; empty if it succeeded, and
    /// only then.
    QString errorString() const;

    /// Sets a breakpoint on the cursor's line, or takes it away.
    void switchBreakpoint();
    void addBreakpoint(int line);
    void clearBreakpoints();
    /// The lines as they were set, in that order: they don't follow edits.
    QList<int> breakpoints() const;

signals:
    void focusChanged(bool on);
    void filenameChanged(const QString &path);
    void textChanged();
    void modificationStatusChanged(bool modified);
    void overwriteModeChanged(bool overwrite);
    void lineColChanged(int line, int column);
    void fileLoaded();
    /// Somebody asked the widget to close. Whoever answers by deleting the
    /// editor must do it with deleteLater(): the editor is in its close event.
    void closing();

protected:
    void closeEvent(QCloseEvent *event) override;
    void setErrorString(const QString &reason);

private:
    struct Private;
    const std::unique_ptr<Private> d;
};

/// Makes editors of one kind. `Editors` owns the factories.
class EditorFactory
{
public:
    EditorFactory() = default;
    EditorFactory(const EditorFactory &) = delete;
    EditorFactory &operator=(const EditorFactory &) = delete;
    virtual ~EditorFactory();

    virtual QString name() const = 0;
    /// A new editor, owned by \a parent.
    virtual Editor *createEditor(QWidget *parent) = 0;
};

/// A handle on an editor for code that can only pass plain objects on.
class EditorInterface : public QObject
{
    Q_OBJECT
public:
    /// \a editor is not owned and must outlive this object.
    explicit EditorInterface(Editor *editor);

    Editor *editor() const { return handled; }

private:
    Editor *const handled;
};

} // namespace vesk
