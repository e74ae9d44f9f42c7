#include "app/editors/editorslist.h"

#include "app/editors/editor.h"
#include "app/editors/editors.h"
#include "app/filetype.h"

#include <QGridLayout>
#include <QListWidget>
#include <QSignalBlocker>

namespace vesk {

EditorsListItem::EditorsListItem(const QPixmap &pixmap, const QString &text, Editor *shownEditor)
    : QListWidgetItem(QIcon(pixmap), text), editor(shownEditor)
{}

EditorsList::EditorsList(QWidget *parent, const QString &name)
    : QWidget(parent), list(new QListWidget(this))
{
    setObjectName(name);
    auto *const layout = new QGridLayout(this);
    layout->setContentsMargins(3, 3, 3, 3);
    layout->setSpacing(0);
    layout->addWidget(list, 0, 0);
    updateList();
    Editors *const editors = Editors::self();
    connect(editors, &Editors::listChanged, this, &EditorsList::updateList);
    connect(editors, &Editors::currentChanged, this, &EditorsList::setCurrentEditor);
    connect(this, &EditorsList::showEditor, editors, &Editors::setCurrentEditor);
    connect(list, &QListWidget::currentItemChanged, this, &EditorsList::currentChanged);
}

void EditorsList::updateList()
{
    // Clearing walks the current row through items that are about to go.
    const QSignalBlocker blocker(list);
    list->setUpdatesEnabled(false);
    list->clear();
    const QList<Editor *> editors = Editors::self()->editors();
    for (Editor *const editor : editors) {
        const FileType *const type = FileTypeManager::self()->findType(editor->filename());
        list->addItem(new EditorsListItem(type->pixmap(), Editors::displayName(editor), editor));
    }
    setCurrentEditor(Editors::self()->current());
    list->setUpdatesEnabled(true);
    list->update();
}

void EditorsList::setCurrentEditor(Editor *editor)
{
    for (int i = 0; i < list->count(); ++i) {
        if (static_cast<EditorsListItem *>(list->item(i))->editor == editor) {
            list->setCurrentRow(i);
            return;
        }
    }
}

void EditorsList::currentChanged()
{
    if (const auto *const item = static_cast<EditorsListItem *>(list->currentItem()))
        emit showEditor(item->editor);
}

} // namespace vesk
