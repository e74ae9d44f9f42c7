#pragma once

#include <QListWidgetItem>
#include <QWidget>

class QListWidget;

namespace vesk {

class Editor;

/// One row of an EditorsList.
class EditorsListItem : public QListWidgetItem
{
public:
    EditorsListItem(const QPixmap &pixmap, const QString &text, Editor *shownEditor);

    Editor *const editor;
};

/// A list of the open editors, in their order. It mirrors `Editors` and is built
/// anew whenever the list there changes.
class EditorsList : public QWidget
{
    Q_OBJECT
public:
    explicit EditorsList(QWidget *parent = nullptr, const QString &name = QString());

    QListWidget *listBox() const { return list; }

public slots:
    void updateList();
    void setCurrentEditor(vesk::Editor *editor);
    void currentChanged();

signals:
    void showEditor(vesk::Editor *editor);

private:
    QListWidget *const list;
};

} // namespace vesk
