#pragma once

#include <QWidget>

#include <memory>

namespace vesk {

class Editor;
struct Node;

/// The page of the left dock that lists the symbols of the current editor's file and
/// leads to them, with the open editors below. It asks for the symbols when the text
/// changed, a few seconds later at most, and holds on to the tree that it shows.
///
/// The first self() makes it and puts it into the main window; `Components` owns it.
class TagsPanel : public QWidget
{
    Q_OBJECT
public:
    /// Stores sorting modes and whether the open editors are shown.
    ~TagsPanel() override;

    static TagsPanel *self();

public slots:
    /// Has the text of the current editor parsed, unless it is the one that was parsed
    /// last or is being parsed.
    void reparse();
    /// Shows the tree of \a node if \a key is that of the current editor's text and the
    /// tree that of its file.
    void reparseShowNodes(int key, vesk::Node *node);
    /// The cursor goes to the nearest line above its own that holds a symbol.
    void prevFunction();
    /// The same with the lines below.
    void nextFunction();
    /// Without an object raises the panel. Otherwise its button is down exactly if that
    /// is the panel.
    void makeVisible(QObject *panel = nullptr);
    /// Moves the cursor to the line of \a pos in the file, or in the current editor if
    /// \a fileName is empty, and gives it the focus.
    void gotoTextPos(int pos, const QString &fileName);
    void sortByName();
    void sortByLineNumber();
    void sortByNameClassesAll();
    void sortByLineNumberClassesAll();

    // The page of all classes. Nothing raises it yet, and it lists nothing.
    void showAllClasses();
    void checkShowAllClasses(bool on);
    void enableClassesAll();
    void disableClassesAll();
    void switchShowAllClasses(bool on);

    /// Shows the open editors, at most in the lower third, or hides them.
    void showFilesList(bool show);
    void showHideFilesList();

signals:
    void raised();

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    struct Private;

    explicit TagsPanel(QWidget *parent);

    void createPages();
    void createActions();
    void createMenus();
    void connectTriggers();
    void parseCopy();
    void parseFailed(int key);

    const std::unique_ptr<Private> d;
};

} // namespace vesk
