#include "app/editors/editors.h"

#include "app/actions.h"
#include "app/actiontable.h"
#include "app/editors/editors_p.h"
#include "app/shell.h"
#include "app/utils.h"

#include <QMenu>
#include <QToolBar>
#include <QToolButton>

namespace vesk {

namespace {

using Separator = ActionRow::Separator;

// The groups "std" are written so on purpose: they are sub-groups of their own
// behind the declared "Std" and "Misc".
const ActionRow actionRows[] = {
    {"Editors/new", "&New", Qt::ALT | Qt::Key_N, SLOT(newEditor()), "16x16_New", "menu/File/New"},
    {"Editors/toolbar/new", "New", noKey, SLOT(newEditor()), "22x22_New", "toolbar/File/New"},
    {"Editors/open", "&Open", Qt::CTRL | Qt::Key_O, SLOT(open()), "16x16_Open", "menu/File/Open"},
    {"Editors/toolbar/open", "Open", noKey, SLOT(open()), "22x22_Open", "toolbar/File/Open"},
    {"Editors/close", "&Close", Qt::CTRL | Qt::Key_W, SLOT(close()), nullptr, "menu/File/Close",
     Separator::Before},
    {"Editors/save", "&Save", Qt::CTRL | Qt::Key_S, SLOT(save()), "16x16_Save", "menu/File/Save",
     Separator::Before},
    {"Editors/toolbar/save", "Save", noKey, SLOT(save()), "22x22_Save", "toolbar/File/Save"},
    {"Editors/saveAs", "Save &as...", noKey, SLOT(saveAs()), nullptr, "menu/File/Save"},
    {"Editors/saveAll", "Save a&ll", noKey, SLOT(saveAll()), nullptr, "menu/File/Save"},
    {"Editors/undo", "&Undo", Qt::CTRL | Qt::Key_Z, SLOT(undo()), "16x16_Undo", "menu/Edit/std"},
    {"Editors/redo", "&Redo", Qt::CTRL | Qt::SHIFT | Qt::Key_Z, SLOT(redo()), "16x16_Redo",
     "menu/Edit/std"},
    {"Editors/toolbar/undo", "Undo", noKey, SLOT(undo()), "22x22_Undo", "toolbar/Edit"},
    {"Editors/toolbar/redo", "Redo", noKey, SLOT(redo()), "22x22_Redo", "toolbar/Edit"},
    {"Editors/cut", "Cu&t", Qt::CTRL | Qt::Key_X, SLOT(cut()), "16x16_Cut", "menu/Edit/std",
     Separator::Before},
    {"Editors/copy", "&Copy", Qt::CTRL | Qt::Key_C, SLOT(copy()), "16x16_Copy", "menu/Edit/std"},
    {"Editors/paste", "&Paste", Qt::CTRL | Qt::Key_V, SLOT(paste()), "16x16_Paste",
     "menu/Edit/std"},
    {"Editors/toolbar/cut", "Cut", noKey, SLOT(cut()), "22x22_Cut", "toolbar/Edit",
     Separator::Before},
    {"Editors/toolbar/copy", "Copy", noKey, SLOT(copy()), "22x22_Copy", "toolbar/Edit"},
    {"Editors/toolbar/paste", "Paste", noKey, SLOT(paste()), "22x22_Paste", "toolbar/Edit"},
    {"Editors/selectAll", "&Select All", Qt::CTRL | Qt::Key_A, SLOT(selectAll()), nullptr,
     "menu/Edit/std", Separator::Before},
    {"Editors/indent", "&Indent", Qt::CTRL | Qt::Key_I, SLOT(indent()), "16x16_Indent",
     "menu/Edit/std", Separator::Before},
    {"Editors/unindent", "U&nindent", Qt::CTRL | Qt::Key_U, SLOT(unindent()), "16x16_Unindent",
     "menu/Edit/std"},
    {"Editors/wrap", "&Word wrap", Qt::Key_F2, SLOT(wrap()), nullptr, "menu/Edit/std"},
    {"Editors/complete_next", "Next completion", Qt::CTRL | Qt::Key_N, SLOT(completeWordNext()),
     nullptr, "menu/Edit/std", Separator::Before},
    {"Editors/complete_prev", "Prev completion", Qt::CTRL | Qt::Key_P, SLOT(completeWordPrev()),
     nullptr, "menu/Edit/std"},
    {"Editors/prev", "P&rev Editor", Qt::ALT | Qt::Key_Left, SLOT(prevEditor()), nullptr,
     "menu/View/std"},
    {"Editors/next", "N&ext Editor", Qt::ALT | Qt::Key_Right, SLOT(nextEditor()), nullptr,
     "menu/View/std"},
    {"Editors/configure", "Configure &editor", noKey, SLOT(configure()), "16x16_EditorSetup",
     "menu/Options/std"},
    {"Editors/configure_hl", "Configure &highlighting", noKey, SLOT(configureHighlighting()),
     nullptr, "menu/Options/std"},
};

const ActionRow focusRow[] = {
    {"Editors/focus", QT_TRANSLATE_NOOP("vesk::Editors", "&Editor window"), Qt::CTRL | Qt::Key_E,
     SLOT(setFocus()), nullptr, "menu/Window/Docks"},
};

/// Work only while the editors have the focus of the window's components.
constexpr const char *focusActions[] = {
    "Editors/undo",         "Editors/redo",          "Editors/cut",           "Editors/copy",
    "Editors/paste",        "Editors/selectAll",     "Editors/indent",        "Editors/unindent",
    "Editors/wrap",         "Editors/complete_next", "Editors/complete_prev", "Editors/prev",
    "Editors/next",         "Editors/toolbar/undo",  "Editors/toolbar/redo",  "Editors/toolbar/cut",
    "Editors/toolbar/copy", "Editors/toolbar/paste",
};

} // namespace

void Editors::createActions()
{
    addActions(this, actionRows);
    addActions(this, focusRow, Labels::Translated);
    Action *const open = Actions::action(QStringLiteral("Editors/toolbar/open"));
    open->setUsesTextLabel(true);
    open->setTextPosition(Qt::ToolButtonTextBesideIcon);
}

void Editors::focusChanged(QObject *who)
{
    const bool on = who == this;
    for (const char *name : focusActions)
        Actions::action(QString::fromLatin1(name))->setEnabled(on);
}

void Editors::createToEditorAction()
{
    Action *const action =
        Actions::createAction(QStringLiteral("Show Editor"), QStringLiteral("Editors/toEditor"), 0,
                              this, SLOT(toEditor()));
    action->setIcon(Utils::iconSet(QStringLiteral("22x22_ToEditor")));
    action->addTo(d->shell.stackButtons());
    d->shell.actionGroup(QStringLiteral("stackButtons"))->add(action);

    QToolButton *const button = action->toolbuttons.first();
    d->editorsPopup = new QMenu(button);
    button->setMenu(d->editorsPopup);
    button->setPopupMode(QToolButton::InstantPopup);
    button->setMinimumWidth(36);
    connect(d->editorsPopup, &QMenu::aboutToShow, this, &Editors::updateEditorsPopup);
    connect(d->editorsPopup, &QMenu::triggered, this,
            [this](const QAction *chosen) { editorsPopupActivated(chosen->data().toInt()); });
}

void Editors::updateEditorsPopup()
{
    d->editorsPopup->clear();
    for (int i = 0; i < d->list.size(); ++i) {
        const QString name = displayPath(d->list.at(i)).replace(u'&', QStringLiteral("&&"));
        d->editorsPopup->addAction(name)->setData(i);
    }
}

void Editors::editorsPopupActivated(int index)
{
    setCurrentEditor(d->list.value(index));
}

void Editors::showEditorsPopupMenu()
{
    Actions::action(QStringLiteral("Editors/toEditor"))->toolbuttons.first()->showMenu();
}

void Editors::toEditor()
{}

void Editors::toEditor(bool)
{}

bool Editors::find(const QString &text, bool caseSensitive, bool wholeWord, bool fromCursor,
                   bool inSelection)
{
    return d->currentEditor->find(text, caseSensitive, wholeWord, fromCursor, inSelection);
}

bool Editors::findRegexp(const QString &pattern, bool caseSensitive, bool wildcard, bool fromCursor)
{
    return d->currentEditor->findRegexp(pattern, caseSensitive, wildcard, fromCursor);
}

void Editors::replaceFound(const QString &text)
{
    d->currentEditor->replaceFound(text);
}

bool Editors::getWrap() const
{
    return d->currentEditor->getWrap();
}

void Editors::setWrap(bool on)
{
    d->currentEditor->setWrap(on);
}

bool Editors::replaceTabs() const
{
    return d->currentEditor->replaceTabs();
}

int Editors::tabWidthInSpaces() const
{
    return d->currentEditor->tabWidthInSpaces();
}

void Editors::undo()
{
    d->currentEditor->undo();
}

void Editors::redo()
{
    d->currentEditor->redo();
}

void Editors::cut()
{
    d->currentEditor->cut();
}

void Editors::copy()
{
    d->currentEditor->copy();
}

void Editors::paste()
{
    d->currentEditor->paste();
}

void Editors::selectAll()
{
    d->currentEditor->selectAll();
}

void Editors::indent()
{
    d->currentEditor->indent();
}

void Editors::unindent()
{
    d->currentEditor->unindent();
}

void Editors::wrap()
{
    setWrap(!getWrap());
}

void Editors::completeWordNext()
{
    d->currentEditor->completeWordNext();
}

void Editors::completeWordPrev()
{
    d->currentEditor->completeWordPrev();
}

void Editors::configure()
{
    d->currentEditor->configure();
}

void Editors::configureHighlighting()
{
    d->currentEditor->configureHighlighting();
}

} // namespace vesk
