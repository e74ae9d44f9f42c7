#pragma once

#include "zvwidgets/tabbar.h"

#include <memory>

namespace vesk {

class Editor;
class Editors;

/// The strip of tabs below the editors. It mirrors `Editors` and is built anew
/// whenever the list there changes, so that ids live no longer than that. The
/// labels of unsaved texts are blue.
///
/// It follows the current editor and lets the user choose another one.
class EditorsTab : public zvwidgets::TabBar
{
    Q_OBJECT
public:
    /// \a editors must outlive it.
    explicit EditorsTab(Editors &editors, QWidget *parent = nullptr,
                        const QString &name = QString());
    ~EditorsTab() override;

    /// As Editors::subName().
    static QString subName(const QString &name, int level);

public slots:
    void updateList();
    void setCurrentEditor(vesk::Editor *editor);
    void editorModified(vesk::Editor *editor, bool modified);
    void itemSelected(int id);
    void slotTabOrderChanged(int a, int b);

signals:
    void showEditor(vesk::Editor *editor);
    void updateTabs();

protected:
    void drawTab(QPainter &painter, const QPalette &palette, Tab *tab) override;

private:
    struct Private;
    const std::unique_ptr<Private> d;
};

} // namespace vesk
