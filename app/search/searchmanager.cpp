#include "app/search/searchmanager.h"

#include "app/actiontable.h"
#include "app/editors/editor.h"
#include "app/editors/editors.h"
#include "app/message.h"
#include "app/messages/messageoutput.h"
#include "app/search/finddialog.h"
#include "app/search/gotolinedialog.h"
#include "app/search/replaceaskdialog.h"
#include "app/search/replacedialog.h"
#include "app/search/searchinfiles.h"
#include "app/search/searchprogress.h"
#include "app/shell.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>

namespace vesk {

namespace {

// "Misk" is written so on purpose: a section of its own at the end of the menu.
const ActionRow actionRows[] = {
    {"Search/Find", QT_TRANSLATE_NOOP("vesk::SearchManager", "&Find"), Qt::CTRL | Qt::Key_F,
     SLOT(findText()), "16x16_Find", "menu/Search/Find"},
    {"Search/FindNext", QT_TRANSLATE_NOOP("vesk::SearchManager", "Find &Next"), Qt::Key_F3,
     SLOT(findNext()), "16x16_FindNext", "menu/Search/Find"},
    {"Search/FindInFiles", QT_TRANSLATE_NOOP("vesk::SearchManager", "&Search in files"),
     Qt::CTRL | Qt::ALT | Qt::Key_F, SLOT(findInFiles()), "16x16_FindInFiles", "menu/Search/Find",
     ActionRow::Separator::After},
    {"Search/Replace", QT_TRANSLATE_NOOP("vesk::SearchManager", "&Replace"), Qt::CTRL | Qt::Key_R,
     SLOT(replace()), "16x16_Replace", "menu/Search/Replace", ActionRow::Separator::After},
    {"Search/goToLine", QT_TRANSLATE_NOOP("vesk::SearchManager", "&Go to Line"),
     Qt::CTRL | Qt::Key_G, SLOT(goToLine()), nullptr, "menu/Search/Misk"},
    {"Search/toolbar/Find", QT_TRANSLATE_NOOP("vesk::SearchManager", "Find"), noKey,
     SLOT(findText()), "22x22_Find", "toolbar/Search"},
    {"Search/toolbar/FindNext", QT_TRANSLATE_NOOP("vesk::SearchManager", "Find Next"), noKey,
     SLOT(findNext()), "22x22_FindNext", "toolbar/Search"},
    {"Search/toolbar/FindInFiles", QT_TRANSLATE_NOOP("vesk::SearchManager", "Search in files"),
     noKey, SLOT(findInFiles()), "22x22_FindInFiles", "toolbar/Search"},
};

/// What to look for.
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

enum class Outcome
{
    Found,
    NotFound,
    Stopped ///< by the user
};

/// Runs \a search in \a editor, which answers whether it found something.
template <typename Search>
Outcome watched(Editor *editor, const Search &search)
{
    const SearchProgress progress(editor, SearchManager::tr("Searching..."));
    if (search())
        return Outcome::Found;
    return progress.wasStopped() ? Outcome::Stopped : Outcome::NotFound;
}

template <typename Dialog>
Wanted wantedBy(const Dialog &dialog)
{
    return {dialog.findString->currentText(), dialog.caseSensitive->isChecked(),
            dialog.wholeWordsOnly->isChecked(), dialog.inSelection->isChecked(),
            dialog.regExp->isChecked()};
}

/// Puts \a text on top of the list, once, and into the edit field. What the field can't
/// hold whole is left out.
void insertOnTop(QComboBox *combo, const QString &text)
{
    if (text.isEmpty() || text.size() > combo->lineEdit()->maxLength())
        return;
    const int former = combo->findText(text, Qt::MatchExactly | Qt::MatchCaseSensitive);
    if (former >= 0)
        combo->removeItem(former);
    combo->insertItem(0, text);
    // The list opens on the current entry.
    combo->setCurrentIndex(0);
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
    addActions(this, actionRows, Labels::Translated);
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
    const bool fromCursor = dialog->fromCursor->isChecked();
    if (watched(editor, [&] { return wanted.findIn(editor, fromCursor); }) == Outcome::NotFound)
        tellNotFound();
}

void SearchManager::findNext()
{
    Editor *const editor = Editors::self()->current();
    if (watched(editor, [editor] { return editor->findNext(); }) != Outcome::NotFound)
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
    const bool all = d->replaceDialog->replaceAll->isChecked();
    const bool fromCursor = d->replaceDialog->fromCursor->isChecked();
    Editor *const editor = Editors::self()->current();
    ReplaceAskDialog ask(Shell::self());
    ask.labelText->setText(wanted.text + QStringLiteral(" ?"));
    Outcome outcome = watched(editor, [&] { return wanted.findIn(editor, fromCursor); });
    while (outcome == Outcome::Found) {
        const int answer = all ? int(ReplaceAskDialog::All) : ask.exec();
        if (answer == ReplaceAskDialog::Cancel)
            return;
        if (answer == ReplaceAskDialog::All) {
            const SearchProgress progress(editor, tr("Replacing..."));
            editor->replaceRest(replacement);
            return;
        }
        if (answer == ReplaceAskDialog::Yes)
            editor->replaceFound(replacement);
        // This ends also for a pattern that matches nothing at all: the editor does
        // not find an empty match at the cursor again.
        outcome = watched(editor, [editor] { return editor->findNext(); });
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
