#include "app/editors/editorstab.h"

#include "app/editors/editor.h"
#include "app/editors/editors.h"

#include <QMap>
#include <QPalette>
#include <QScopedValueRollback>
#include <QSet>

namespace vesk {

struct EditorsTab::Private
{
    explicit Private(Editors &mirrored) : editors(mirrored) {}

    Editors &editors;
    QMap<int, Editor *> tab2editor;
    QMap<Editor *, int> editor2tab;
    QSet<int> modifiedTabs;
    bool lockUpdate = false;
    bool lockUpdateList = false;
};

EditorsTab::EditorsTab(Editors &editors, QWidget *parent, const QString &name)
    : TabBar(parent, name), d(std::make_unique<Private>(editors))
{
    setViewStyle(BoldCurrent | NarrowOthers);
    setAllowDragging(false);
    updateList();
    connect(this, &TabBar::currentChanged, this, &EditorsTab::itemSelected);
    connect(&editors, &Editors::listChanged, this, &EditorsTab::updateList);
    connect(&editors, &Editors::currentChanged, this, &EditorsTab::setCurrentEditor);
    connect(this, &EditorsTab::showEditor, &editors, &Editors::setCurrentEditor);
    connect(this, &TabBar::closeTab, &editors, qOverload<>(&Editors::close));
    connect(this, &TabBar::changeTabsOrder, this, &EditorsTab::slotTabOrderChanged);
    connect(&editors, &Editors::editorModified, this, &EditorsTab::editorModified);
}

EditorsTab::~EditorsTab() = default;

QString EditorsTab::subName(const QString &name, int level)
{
    return Editors::subName(name, level);
}

void EditorsTab::updateList()
{
    if (d->lockUpdateList)
        return;
    setUpdatesEnabled(false);
    d->lockUpdate = true;
    d->tab2editor.clear();
    d->editor2tab.clear();
    d->modifiedTabs.clear();
    clear();
    const QList<Editor *> list = d->editors.editors();
    for (Editor *const editor : list) {
        const QString label = Editors::displayName(editor);
        const int id = addTab(QString(label).replace(u'&', QStringLiteral("&&")), -1);
        d->tab2editor.insert(id, editor);
        d->editor2tab.insert(editor, id);
        editorModified(editor, editor->isModified());
    }
    setCurrentTab(firstTab(false));
    d->lockUpdate = false;
    setCurrentEditor(d->editors.current());
    setUpdatesEnabled(true);
    update();
}

void EditorsTab::setCurrentEditor(Editor *editor)
{
    setCurrentTab(d->editor2tab.value(editor, -1));
}

void EditorsTab::itemSelected(int id)
{
    if (!d->lockUpdate)
        emit showEditor(d->tab2editor.value(id));
}

/// Labels stay with their ids, so that afterwards each of the two tabs raises the
/// other's editor. Meant so; it takes a bar that allows dragging to come here.
void EditorsTab::slotTabOrderChanged(int a, int b)
{
    if (!d->tab2editor.contains(a) || !d->tab2editor.contains(b))
        return;
    Editor *const first = d->tab2editor.value(a);
    Editor *const second = d->tab2editor.value(b);
    d->tab2editor.insert(a, second);
    d->tab2editor.insert(b, first);
    d->editor2tab.insert(first, b);
    d->editor2tab.insert(second, a);
    // The answer must not build the bar anew: the mouse still holds a tab of it.
    const QScopedValueRollback lock(d->lockUpdateList, true);
    d->editors.changeEditorsOrder(first, second);
}

void EditorsTab::editorModified(Editor *editor, bool modified)
{
    const int id = d->editor2tab.value(editor, -1);
    if (id < 0)
        return;
    if (modified)
        d->modifiedTabs.insert(id);
    else
        d->modifiedTabs.remove(id);
    update();
}

void EditorsTab::drawTab(QPainter &painter, const QPalette &palette, Tab *tab)
{
    QPalette colors = palette;
    if (d->modifiedTabs.contains(tab->id))
        colors.setColor(QPalette::WindowText, QColor(0, 0, 200));
    TabBar::drawTab(painter, colors, tab);
}

} // namespace vesk
