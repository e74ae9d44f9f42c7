#pragma once

#include "app/editors/editor.h"

#include <functional>

namespace zvwidgets {
class TextEditorManager;
}

namespace vesk {

/// An `Editor` on the text library: one text view with its document, the
/// editor's options from the settings, and the folds of each file, which are
/// kept from one run to the next.
class ZVEditor : public Editor
{
    Q_OBJECT
public:
    explicit ZVEditor(QWidget *parent, const QString &name = QString());
    /// Stores the folds of the file.
    ~ZVEditor() override;

    /// The manager that all editors share. The first call makes it and reads
    /// the options; it is never deleted.
    static zvwidgets::TextEditorManager *manager();
    /// Reads the editor's options from the settings into the manager.
    static void loadConfig();

    QString text() const override;
    void setText(const QString &text) override;
    QString line(int n) const override;
    QString selection() const override;
    /// A missing file is reported in a message box.
    bool open(const QString &url) override;
    void save() override;
    void saveAs(const QString &url) override;
    void undo() override;
    void redo() override;
    void cut() override;
    void copy() override;
    void paste() override;
    bool find(const QString &text, bool caseSensitive, bool wholeWord, bool fromCursor,
              bool inSelection) override;
    bool findRegexp(const QString &pattern, bool caseSensitive, bool wildcard,
                    bool fromCursor) override;
    void replaceFound(const QString &text) override;
    int replaceRest(const QString &text) override;
    void setSearchWatch(const SearchWatch &watch) override;
    bool findNext() override;
    void setWrap(bool on) override;
    bool getWrap() const override;
    void selectAll() override;
    void indent() override;
    void unindent() override;
    /// Changes the options of all editors.
    void configure() override;
    void configureHighlighting() override;
    QString filename() const override;
    void setFileName(const QString &path) override;
    bool isModified() const override;
    int cursorLine() const override;
    int cursorColumn() const override;
    /// Scrolls so that the line has ten lines of context on both sides.
    void setCursorPosition(int line, int column) override;
    void setHighlightedLine(int line, const QColor &color) override;
    void clearHighlightedLine(int line) override;
    void setLineIcon(int line, QPixmap *icon) override;
    void clearLineIcon(int line) override;
    void showTrace(int line) override;
    void clearTrace() override;
    bool replaceTabs() const override;
    int tabWidthInSpaces() const override;
    void completeWordNext() override;
    void completeWordPrev() override;
    void addCompletionList(const QStringList &words, int minimumMatchedLength) override;
    bool isEmpty() const override;
    int lineCount() const override;
    unsigned revision() const override;

private slots:
    void changedStatus(int change);
    void managerOverwriteModeChanged();
    void updateFileInfo();

private:
    static void keepOptions();
    void fillContextMenu();
    void settleEncoding(const QString &path);
    bool write(const QString &path, const std::function<bool()> &save);
    bool load(const QString &url);
    bool succeeded(bool result);
    void restoreFolds();
    void storeFolds() const;
    void refreshModificationTime();

    struct Private;
    const std::unique_ptr<Private> d;
};

/// Makes editors on the text library.
class ZVEditorFactory : public EditorFactory
{
public:
    QString name() const override;
    Editor *createEditor(QWidget *parent) override;
};

} // namespace vesk
