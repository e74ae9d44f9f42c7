#include "app/editors/editors.h"

#include "app/editors/editors_p.h"
#include "app/filedialog.h"
#include "app/message.h"
#include "app/recentfiles.h"
#include "app/shell.h"
#include "app/widgetstack.h"

#include <QFileInfo>
#include <QMessageBox>

#include <utility>

namespace vesk {

namespace {

// The first letter of a filter tells saveAs() the extension to add. Some names differ
// from those of the filters for opening to keep these letters distinct.
constexpr char saveFilter[] =
    "Any files (*);;Ch files (*.ch *.chf *.chs *.h *.hpp *.c *.cc *.cpp);;"
    "C/C++ files (*.h *.hpp *.c *.cc *.cpp);;Python files (*.py);;Files of project (*.vesk);;"
    "User-Interface files (*.ui);;Text files (*.txt)";

QString extensionOfFilter(const QString &filter)
{
    static constexpr std::pair<char, const char *> extensions[] = {
        {'P', ".py"}, {'F', ".vesk"}, {'U', ".ui"}, {'T', ".txt"}};
    for (const auto &[letter, extension] : extensions) {
        if (filter.startsWith(QLatin1Char(letter)))
            return QString::fromLatin1(extension);
    }
    return QString();
}

/// Whatever is neither yes nor no counts as a cancel.
int askToSave(const QString &question)
{
    const int answer = Message::warning(Editors::tr("Warning"), question, QMessageBox::Yes,
                                        QMessageBox::No, QMessageBox::Cancel);
    const bool isClear = answer == QMessageBox::Yes || answer == QMessageBox::No;
    return isClear ? answer : int(QMessageBox::Cancel);
}

} // namespace

void Editors::save()
{
    if (!d->currentEditor)
        return;
    const bool wasTold = !d->failures.isEmpty();
    d->failures.clear();
    // What failed before, maybe just this, is over.
    if (saveEditor(d->currentEditor) && wasTold)
        setCaption();
}

bool Editors::saveEditor(Editor *editor)
{
    if (!editor->hasFileName()) {
        setCurrentEditor(editor);
        return saveCurrentAs();
    }
    if (!writeEditor(editor))
        return false;
    emit fileSaved();
    return true;
}

bool Editors::writeEditor(Editor *editor)
{
    editor->save();
    if (editor->errorString().isEmpty())
        return true;
    tellFailure(tr("Cannot save %1: %2").arg(editor->filename(), editor->errorString()));
    return false;
}

void Editors::saveAs()
{
    d->failures.clear();
    saveCurrentAs();
}

bool Editors::saveCurrentAs()
{
    const QString fn = askSaveName();
    if (fn.isEmpty() || !saveCurrentAs(fn))
        return false;
    d->lastOpenSaveDir = QFileInfo(fn).absolutePath();
    return true;
}

QString Editors::askSaveName()
{
    if (d->lastOpenSaveDir.isEmpty())
        d->lastOpenSaveDir = QStringLiteral(".");
    const Editor *const editor = d->currentEditor;
    const QString dir =
        editor->hasFileName() ? QFileInfo(editor->filename()).absolutePath() : d->lastOpenSaveDir;
    QString filter;
    QString fn =
        FileDialog::saveFileName(tr("Save As"), dir, QString::fromLatin1(saveFilter), &filter);
    if (fn.isEmpty())
        return fn;
    const QString extension = extensionOfFilter(filter);
    if (!fn.endsWith(extension))
        fn += extension;
    if (!QFileInfo::exists(fn))
        return fn;
    const int answer = Message::warning(
        tr("Warning"), tr("The file\n%1\nalready exists! Would you like to replace it?").arg(fn),
        QMessageBox::Yes, QMessageBox::No, QMessageBox::NoButton);
    return answer == QMessageBox::Yes ? fn : QString();
}

void Editors::saveAs(const QString &url)
{
    d->failures.clear();
    saveCurrentAs(url);
}

bool Editors::saveCurrentAs(const QString &url)
{
    constexpr QLatin1String scheme("file:");
    const QString file = url.startsWith(scheme) ? url.mid(scheme.size()) : url;
    Editor *const editor = d->currentEditor;
    Editor *const other = editorOfFile(QFileInfo(file).absoluteFilePath());
    const bool isShownElsewhere = other && other != editor;
    if (isShownElsewhere && other->isModified()) {
        tellFailure(
            tr("Cannot save %1: another tab shows this file with unsaved changes").arg(file));
        return false;
    }
    editor->saveAs(file);
    if (!editor->errorString().isEmpty()) {
        tellFailure(tr("Cannot save %1: %2").arg(file, editor->errorString()));
        return false;
    }
    RecentFiles::self()->addRecent(editor->filename());
    // Left open it would write its former text over the new one.
    if (isShownElsewhere)
        drop(other, DeleteWhen::Now);
    emit fileSaved();
    return true;
}

void Editors::saveAll()
{
    const QList<Editor *> all = d->list;
    d->failures.clear();
    for (Editor *const editor : all) {
        // One saved before may have taken the place of this one.
        if (!d->list.contains(editor) || !editor->isModified())
            continue;
        if (editor->hasFileName()) {
            writeEditor(editor);
            continue;
        }
        setCurrentEditor(editor);
        saveCurrentAs();
    }
    repeatFailures();
}

void Editors::close()
{
    close(d->currentEditor);
}

bool Editors::close(Editor *editor)
{
    return remove(editor, DeleteWhen::Now);
}

bool Editors::remove(Editor *editor, DeleteWhen when)
{
    if (!editor || !d->list.contains(editor))
        return false;
    if (editor->isModified()) {
        setCurrentEditor(editor);
        const int answer =
            askToSave(tr("The current document has been modified.\nWould you like to save it?"));
        if (answer == QMessageBox::Cancel)
            return false;
        d->failures.clear();
        // A text that was to be saved never goes unsaved, be it changed while it was.
        if (answer == QMessageBox::Yes && (!saveEditor(editor) || editor->isModified()))
            return false;
    }
    const qsizetype left = qMax<qsizetype>(d->list.indexOf(d->currentEditor) - 1, 0);
    drop(editor, when);
    setCurrentEditor(d->list.at(qMin(left, d->list.size() - 1)));
    return true;
}

/// Takes \a editor out of the list and deletes it. If it was the current one there
/// is none afterwards, unless it was the last: then there is a new one.
void Editors::drop(Editor *editor, DeleteWhen when)
{
    d->list.removeOne(editor);
    if (d->list.isEmpty())
        newEditor();
    else
        emit listChanged();
    if (d->currentEditor == editor)
        d->currentEditor = nullptr;
    discard(editor, when);
}

/// Deletes an editor that has left the list.
void Editors::discard(Editor *editor, DeleteWhen when)
{
    disconnect(editor, nullptr, this, nullptr);
    d->forgetFile(editor);
    if (when == DeleteWhen::Now) {
        const std::unique_ptr<Editor> dying(editor);
        return;
    }
    d->shell.workspace()->removeWidget(editor);
    editor->deleteLater();
}

bool Editors::closeAll()
{
    const QList<Editor *> all = d->list;
    d->failures.clear();
    for (Editor *const editor : all) {
        // One saved before may have taken the place of this one.
        if (!d->list.contains(editor) || !editor->isModified())
            continue;
        setCurrentEditor(editor);
        const int answer =
            askToSave(tr("The file\n%1\nhas been modified.\nWould you like to save it?")
                          .arg(displayPath(editor)));
        if (answer == QMessageBox::Cancel)
            return false;
        if (answer == QMessageBox::Yes &&
            (!(editor->hasFileName() ? writeEditor(editor) : saveCurrentAs()) ||
             editor->isModified()))
            return false;
    }
    storeSession();
    // What is left in the list goes with this object, or with the workspace.
    d->currentEditor = nullptr;
    for (qsizetype i = 0; i < d->list.size(); ++i)
        discard(d->list.takeAt(i), DeleteWhen::Now);
    return true;
}

} // namespace vesk
