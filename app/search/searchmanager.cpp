#include "app/search/searchmanager.h"

#include "app/actions.h"
#include "app/editors/editor.h"
#include "app/editors/editors.h"
#include "app/message.h"
#include "app/messages/messageoutput.h"
#include "app/search/finddialog.h"
#include "app/search/gotolinedialog.h"
#include "app/search/replaceaskdialog.h"
#include "app/search/replacedialog.h"
#include "app/search/searchinfiles.h"
#include "app/shell.h"
#include "app/utils.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>

namespace vesk {

namespace {

struct ActionRow
{
    const char *name;
    const char *label;
    QKeyCombination accelerator;
    const char *slot;
    /// Null for none.
    const char *icon;
    const char *group;
    /// A separator stands behind it in its group.
    bool isSeparated = false;
};

constexpr QKeyCombination noKey = QKeyCombination::fromCombined(0);

// "Misk" is written so on purpose: a section of its own at the end of the menu.
const ActionRow actionRows[] = {
    {"Search/Find", "&Find", Qt::CTRL | Qt::Key_F, SLOT(findText()), "16x16_Find",
     "menu/Search/Find"},
    {"Search/FindNext", "Find &Next", Qt::Key_F3, SLOT(findNext()), "16x16_FindNext",
     "menu/Search/Find"},
    {"Search/FindInFiles", "&Search in files", Qt::CTRL | Qt::ALT | Qt::Key_F, SLOT(findInFiles()),
     "16x16_FindInFiles", "menu/Search/Find", true},
    {"Search/Replace", "&Replace", Qt::CTRL | Qt::Key_R, SLOT(replace()), "16x16_Replace",
     "menu/Search/Replace", true},
    {"Search/goToLine", "&Go to Line", Qt::CTRL | Qt::Key_G, SLOT(goToLine()), nullptr,
     "menu/Search/Misk"},
    {"Search/toolbar/Find", "Find", noKey, SLOT(findText()), "22x22_Find", "toolbar/Search"},
    {"Search/toolbar/FindNext", "Find Next", noKey, SLOT(findNext()), "22x22_FindNext",
     "toolbar/Search"},
    {"Search/toolbar/FindInFiles", "Search in files", noKey, SLOT(findInFiles()),
     "22x22_FindInFiles", "toolbar/Search"},
};

/// What to look for, so that a search can be repeated from the cursor.
struct Wanted
{
    QString text;
    bool caseSensitive;
    bool wholeWord;
    bool inSelection;
    bool isRegExp;

    bool findIn(Editor *editor, bool fromCursor) const
    {
        if (isRegExp)
            return editor->findRegexp(text, caseSensitive, false, fromCursor);
        return editor->find(text, caseSensitive, wholeWord, fromCursor, inSelection);
    }
};

template <typename Dialog>
Wanted wantedBy(const Dialog &dialog)
{
    return {dialog.findString->currentText(), dialog.caseSensitive->isChecked(),
            dialog.wholeWordsOnly->isChecked(), dialog.inSelection->isChecked(),
            dialog.regExp->isChecked()};
}

/// Puts \a text on top of the list, once, and into the edit field.
void insertOnTop(QComboBox *combo, const QString &text)
{
    if (text.isEmpty())
        return;
    const int former = combo->findText(text, Qt::MatchExactly | Qt::MatchCaseSensitive);
    if (former >= 0)
        combo->removeItem(former);
    combo->insertItem(0, text);
    combo->setEditText(text);
}

} // namespace

struct SearchManager::Private
{
    static SearchManager *self;

    FindDialog *findDialog = nullptr;
    GotoLineDialog *gotoDialog = nullptr;
    ReplaceDialog *replaceDialog = nullptr;
    SearchInFiles *searchInFiles = nullptr;
};

SearchManager *SearchManager::Private::self = nullptr;

SearchManager::SearchManager() : QObject(Shell::self()), d(std::make_unique<Private>())
{
    Private::self = this;
    createActions();
}

SearchManager::~SearchManager()
{
    Private::self = nullptr;
}

SearchManager *SearchManager::self()
{
    if (!Private::self)
        new SearchManager;
    return Private::self;
}

void SearchManager::createActions()
{
    for (const ActionRow &row : actionRows) {
        Action *const action =
            Actions::createAction(QString::fromLatin1(row.label), QString::fromLatin1(row.name),
                                  row.accelerator.toCombined(), this, row.slot);
        if (row.icon)
            action->setIcon(Utils::iconSet(QString::fromLatin1(row.icon)));
        ActionGroup *const group = Shell::self()->actionGroup(QString::fromLatin1(row.group));
        group->add(action);
        if (row.isSeparated)
            group->addSeparator();
    }
}

void SearchManager::ensureFindDialog()
{
    if (d->findDialog)
        return;
    d->findDialog = new FindDialog(Shell::self());
    d->findDialog->findString->setDuplicatesEnabled(false);
}

void SearchManager::findText()
{
    ensureFindDialog();
    FindDialog *const dialog = d->findDialog;
    Editor *const editor = Editors::self()->current();
    const QString selection = editor->selection();
    const bool isMultiLine = selection.contains(u'\n');
    dialog->inSelection->setChecked(isMultiLine);
    if (!isMultiLine)
        insertOnTop(dialog->findString, selection);
    dialog->findString->setFocus();
    dialog->findString->lineEdit()->selectAll();
    if (dialog->exec() != QDialog::Accepted)
        return;
    const Wanted wanted = wantedBy(*dialog);
    insertOnTop(dialog->findString, wanted.text);
    if (!wanted.findIn(editor, dialog->fromCursor->isChecked()))
        tellNotFound();
}

void SearchManager::findNext()
{
    if (Editors::self()->current()->findNext())
        return;
    ensureFindDialog();
    tellNotFound();
}

void SearchManager::tellNotFound()
{
    Message::information(tr("Not found..."), d->findDialog->inSelection->isChecked()
                                                 ? tr("End of selection reached.")
                                                 : tr("End of document reached."));
}

void SearchManager::replace()
{
    if (!d->replaceDialog)
        d->replaceDialog = new ReplaceDialog(Shell::self());
    d->replaceDialog->findString->setFocus();
    if (d->replaceDialog->exec() != QDialog::Accepted)
        return;
    const Wanted wanted = wantedBy(*d->replaceDialog);
    const QString replacement = d->replaceDialog->replaceString->currentText();
    bool all = d->replaceDialog->replaceAll->isChecked();
    Editor *const editor = Editors::self()->current();
    bool found = wanted.findIn(editor, d->replaceDialog->fromCursor->isChecked());
    ReplaceAskDialog ask(Shell::self());
    ask.labelText->setText(wanted.text + QStringLiteral(" ?"));
    while (found) {
        const int answer = all ? int(ReplaceAskDialog::All) : ask.exec();
        if (answer == ReplaceAskDialog::Cancel)
            return;
        all = answer == ReplaceAskDialog::All;
        if (answer != ReplaceAskDialog::No)
            editor->replaceFound(replacement);
        // This ends also for a pattern that matches nothing at all: the editor does
        // not find an empty match at the cursor again.
        found = wanted.findIn(editor, true);
    }
}

void SearchManager::goToLine()
{
    if (!d->gotoDialog)
        d->gotoDialog = new GotoLineDialog(Shell::self());
    d->gotoDialog->comboLine->setFocus();
    if (d->gotoDialog->exec() == QDialog::Accepted)
        Editors::self()->current()->setCursorPosition(
            d->gotoDialog->comboLine->currentText().toInt(), 0);
}

void SearchManager::findInFiles()
{
    if (!d->searchInFiles) {
        d->searchInFiles = new SearchInFiles(Shell::self());
        connect(d->searchInFiles, &SearchInFiles::newEntry, MessageOutput::self(),
                qOverload<const QString &, int, const QString &>(&MessageOutput::insertItem));
    }
    d->searchInFiles->comboSearch->setFocus();
    d->searchInFiles->show();
    MessageOutput::self()->clear();
}

} // namespace vesk
