#pragma once

#include <QList>
#include <QObject>
#include <QString>

#include <memory>

class QWidget;

namespace vesk {

class Editor;
class EditorFactory;
class Shell;

/// Owns the open editors and knows which one is current: creates, saves and
/// closes them, remembers the session, and holds the actions that act on text.
/// The editors are pages of the main window's workspace; tabs and lists only
/// mirror this object. There is always at least one editor, until closeAll().
///
/// `Components` makes the one object after the main window and deletes it before
/// that.
class Editors : public QObject
{
    Q_OBJECT
public:
    /// Puts the actions into the groups of \a shell, and the editors, of which the
    /// first is made here, into its workspace.
    explicit Editors(Shell &shell);
    /// Deletes the editors that are left.
    ~Editors() override;

    /// There must be an object; the pointer is good from its constructor on.
    static Editors *self();

    /// New editors come from \a factory from now on. Takes ownership; another
    /// factory of the same name is replaced and deleted.
    void installEditorFactory(EditorFactory *factory);

    /// What stands in \a path behind the separator that is the \a level-th from
    /// the right; all of \a path if it has fewer.
    static QString subName(const QString &path, int level);
    /// What tabs and lists call \a editor: its file's name without the folder, or
    /// "Untitled".
    static QString displayName(const Editor *editor);
    /// Its file's whole path, or "Untitled".
    static QString displayPath(const Editor *editor);

    /// Null only after closeAll().
    Editor *current() const;
    /// In tab order.
    QList<Editor *> editors() const;

    bool find(const QString &text, bool caseSensitive, bool wholeWord, bool fromCursor,
              bool inSelection);
    bool findRegexp(const QString &pattern, bool caseSensitive, bool wildcard, bool fromCursor);
    void replaceFound(const QString &text);
    bool getWrap() const;
    void setWrap(bool on);
    bool replaceTabs() const;
    int tabWidthInSpaces() const;

public slots:
    void setCurrentEditor(vesk::Editor *editor);
    void setFocus();
    void newEditor();
    /// Asks for files and opens them.
    void open();
    /// Raises the editor that shows the file \a path, or loads it. What fails
    /// is said in a box or in the status line.
    void open(const QString &path);
    /// Opens each of \a paths as its type wants it, and then says what failed.
    void openAll(const QStringList &paths);
    /// Says \a failure in the status line, beside what failed before in the same
    /// operation. It is said again after the session was loaded.
    void tellFailure(const QString &failure);
    void save();
    /// Asks for a name and saves under it.
    void saveAs();
    /// \a url is a path, or one after "file:". Another editor that shows that file
    /// is closed, unless it is modified: then nothing is saved.
    void saveAs(const QString &url);
    void saveAll();
    void close();
    /// Closes \a editor after asking about unsaved changes. False if the user
    /// said no, or if a wanted save did not come about.
    bool close(vesk::Editor *editor);
    /// Asks about every unsaved text, then stores the session and closes all.
    /// False, with nothing closed, if the user said no or a wanted save did not
    /// come about. After true the program is expected to end.
    bool closeAll();
    void prevEditor();
    void nextEditor();
    /// Swaps the places of two editors.
    void changeEditorsOrder(vesk::Editor *a, vesk::Editor *b);

    void undo();
    void redo();
    void cut();
    void copy();
    void paste();
    void selectAll();
    void indent();
    void unindent();
    void wrap();
    void completeWordNext();
    void completeWordPrev();
    void configure();
    void configureHighlighting();

    /// The button acts through its menu.
    void toEditor();
    void toEditor(bool on);
    void updateEditorsPopup();
    void editorsPopupActivated(int index);
    void showEditorsPopupMenu();

    void setCaption();
    void updateTabNames();
    /// Puts the small button that closes the current editor into the menu bar.
    void addCloseButton();
    void loadSession();
    void loadSessionFiles();
    void loadSessionCurrent();
    /// Asks about files that an earlier run was saving when it ended, and shows what
    /// becomes of them. To be called once the main window is there.
    void settleInterruptedSaves();

signals:
    void currentChanged(vesk::Editor *editor);
    void listChanged();
    void gotFocus();
    void fileLoaded();
    /// A save was carried out; there is nothing to write for an unmodified text.
    /// Save all tells only of the texts that got a name.
    void fileSaved();
    void editorChanged();
    void editorModified(vesk::Editor *editor, bool modified);

private slots:
    void editorFocusChanged(bool on);
    void focusChanged(QObject *who);
    void workspaceWidgetRaised(QWidget *page);
    void editorLineColChanged(int line, int column);
    void editorOverwriteModeChanged(bool overwrite);

private:
    enum class DeleteWhen
    {
        Now,
        /// When the event that the editor is in has come to its end.
        Later
    };

    void createToEditorAction();
    void createActions();
    void connectEditor(Editor *editor);
    Editor *editorOfFile(const QString &path);
    bool remove(Editor *editor, DeleteWhen when);
    QString load(const QString &file);
    void drop(Editor *editor, DeleteWhen when);
    void discard(Editor *editor, DeleteWhen when);
    bool saveEditor(Editor *editor);
    bool writeEditor(Editor *editor);
    bool saveCurrentAs();
    bool saveCurrentAs(const QString &url);
    QString askSaveName();
    void repeatFailures();
    void storeSession() const;

    struct Private;
    class Gathering;
    const std::unique_ptr<Private> d;
};

} // namespace vesk
