#include "app/editors/editors.h"

#include "app/actions.h"
#include "app/editors/editor.h"
#include "app/editors/zveditor/zveditor.h"
#include "app/filedialog.h"
#include "app/filetype.h"
#include "app/message.h"
#include "app/settings.h"
#include "app/shell.h"
#include "app/utils.h"
#include "app/widgetstack.h"

#include <QDir>
#include <QFileInfo>
#include <QFrame>
#include <QHBoxLayout>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QPointer>
#include <QStyle>
#include <QToolBar>
#include <QToolButton>

#include <map>
#include <utility>

namespace vesk {

namespace {

// The first letter of a filter tells saveAs() the extension to add. The names of
// the two lists differ to keep those letters distinct.
constexpr char openFilter[] =
    "Any files (*);;Ch files (*.ch *.chf *.chs *.h *.hpp *.c *.cc *.cpp);;"
    "C/C++ files (*.h *.hpp *.c *.cc *.cpp);;Python files (*.py);;Project files (*.vesk);;"
    "UI files (*.ui);;Text files (*.txt)";
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

QString displayName(const Editor *editor)
{
    const QString path = editor->filename();
    return path.isEmpty() ? QStringLiteral("Untitled") : path;
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

struct Editors::Private
{
    static Editors *self;

    std::map<QString, std::unique_ptr<EditorFactory>> factories;
    EditorFactory *currentFactory = nullptr;
    QList<Editor *> list;
    Editor *currentEditor = nullptr;
    QMenu *editorsPopup = nullptr;
    QString lastOpenSaveDir;
    /// What the status line said of the last file that could not be opened or saved.
    QString failure;
    QPointer<QFrame> closeButtonFrame;
};

Editors *Editors::Private::self = nullptr;

Editors::Editors() : d(std::make_unique<Private>())
{
    setObjectName(QStringLiteral("vesk::Editors"));
    Private::self = this;
    installEditorFactory(new ZVEditorFactory);
    Shell *const shell = Shell::self();
    connect(this, &Editors::gotFocus, shell, &Shell::focusIn);
    connect(shell, &Shell::focusChanged, this, &Editors::focusChanged);
    connect(shell, &Shell::uiRebuilded, this, &Editors::addCloseButton);
    connect(shell, &Shell::uiRebuilded, this, &Editors::loadSessionFiles);
    connect(shell, &Shell::uiRebuilded, this, &Editors::loadSession);
    createToEditorAction();
    connect(shell->workspace(), qOverload<QWidget *>(&WidgetStack::aboutToShow), this,
            &Editors::workspaceWidgetRaised);
    createActions();
    newEditor();
}

Editors::~Editors()
{
    disconnect(Shell::self()->workspace(), nullptr, this, nullptr);
    while (!d->list.isEmpty())
        discard(d->list.takeLast(), DeleteWhen::Now);
    Private::self = nullptr;
}

Editors *Editors::self()
{
    // The constructor stores the pointer: what it calls reaches for it already.
    if (!Private::self)
        new Editors;
    return Private::self;
}

void Editors::destroy()
{
    const std::unique_ptr<Editors> dying(Private::self);
}

void Editors::installEditorFactory(EditorFactory *factory)
{
    d->currentFactory = factory;
    d->factories[factory->name()].reset(factory);
}

Editor *Editors::current() const
{
    return d->currentEditor;
}

QList<Editor *> Editors::editors() const
{
    return d->list;
}

QString Editors::subName(const QString &path, int level)
{
    qsizetype separator = path.size();
    for (; level > 0; --level) {
        separator = separator > 0 ? path.lastIndexOf(u'/', separator - 1) : -1;
        if (separator < 0)
            return path;
    }
    return path.mid(separator + 1);
}

void Editors::setCurrentEditor(Editor *editor)
{
    if (!editor || editor == d->currentEditor || !d->list.contains(editor))
        return;
    d->currentEditor = editor;
    emit currentChanged(editor);
    emit editorChanged();
    setCaption();
    WidgetStack *const workspace = Shell::self()->workspace();
    if (workspace->visibleWidget() != editor) {
        workspace->raiseWidget(editor);
        editor->setFocus();
    }
}

void Editors::workspaceWidgetRaised(QWidget *page)
{
    QWidget *const raised = page ? page : Shell::self()->workspace()->visibleWidget();
    setCurrentEditor(qobject_cast<Editor *>(raised));
}

void Editors::setFocus()
{
    if (d->currentEditor)
        d->currentEditor->setFocus();
}

void Editors::editorFocusChanged(bool)
{
    if (d->currentEditor && d->currentEditor->hasFocus())
        emit gotFocus();
}

void Editors::newEditor()
{
    if (!d->currentFactory) {
        qDebug("no editors selected");
        return;
    }
    WidgetStack *const workspace = Shell::self()->workspace();
    Editor *const editor = d->currentFactory->createEditor(workspace);
    workspace->addWidget(editor, -1);
    d->list.append(editor);
    d->currentEditor = editor;
    connectEditor(editor);
    updateTabNames();
    d->currentEditor = nullptr;
    setCurrentEditor(editor);
    editorFocusChanged(true);
}

void Editors::connectEditor(Editor *editor)
{
    connect(editor, &Editor::filenameChanged, this, &Editors::updateTabNames);
    connect(editor, &Editor::focusChanged, this, &Editors::editorFocusChanged);
    connect(editor, &Editor::closing, this, &Editors::closeEditor);
    connect(editor, &Editor::fileLoaded, this, &Editors::fileLoaded);
    connect(editor, &Editor::modificationStatusChanged, this, &Editors::modifiedEditor);
    connect(editor, &Editor::lineColChanged, this, &Editors::editorLineColChanged);
    connect(editor, &Editor::overwriteModeChanged, this, &Editors::editorOverwriteModeChanged);
}

void Editors::modifiedEditor(bool modified)
{
    if (auto *const editor = qobject_cast<Editor *>(sender()))
        emit editorModified(editor, modified);
}

/// A file reached through a link is the same file: two editors on it would write
/// over each other's text.
Editor *Editors::editorOfFile(const QString &path) const
{
    const QFileInfo wanted(path);
    for (Editor *const editor : std::as_const(d->list)) {
        const QString shown = editor->filename();
        if (shown == path || (!shown.isEmpty() && wanted.exists() && QFileInfo(shown) == wanted))
            return editor;
    }
    return nullptr;
}

void Editors::open()
{
    if (d->lastOpenSaveDir.isEmpty())
        d->lastOpenSaveDir = QStringLiteral(".");
    const QStringList names = FileDialog::openFileNames(tr("Choose files"), d->lastOpenSaveDir,
                                                        QString::fromLatin1(openFilter));
    d->failure.clear();
    for (const QString &name : names) {
        FileTypeManager::self()->openFile(name);
        d->lastOpenSaveDir = QFileInfo(name).absolutePath();
    }
    repeatFailure();
}

void Editors::open(const QString &path)
{
    const QString file = path.isEmpty() ? path : QFileInfo(path).absoluteFilePath();
    if (Editor *const shown = file.isEmpty() ? nullptr : editorOfFile(file)) {
        setCurrentEditor(shown);
        return;
    }
    if (d->currentEditor->hasFileName() || !d->currentEditor->text().isEmpty())
        newEditor();
    Editor *const editor = d->currentEditor;
    if (editor->open(file))
        return;
    tellFailure(tr("Cannot open %1: %2").arg(file, editor->errorString()));
}

/// To be called behind the last of several files: each that is opened puts its own
/// name into the status line.
void Editors::repeatFailure()
{
    if (!d->failure.isEmpty())
        Shell::self()->statusMessage(QStringLiteral("default"), d->failure);
}

void Editors::tellFailure(const QString &failure)
{
    d->failure = failure;
    Shell::self()->statusMessage(QStringLiteral("default"), failure);
}

void Editors::save()
{
    if (d->currentEditor)
        saveEditor(d->currentEditor);
}

bool Editors::saveEditor(Editor *editor)
{
    if (!editor->hasFileName()) {
        setCurrentEditor(editor);
        return saveCurrentAs();
    }
    if (!writeEditor(editor))
        return false;
    // What failed before, maybe just this, is over.
    if (!std::exchange(d->failure, QString()).isEmpty())
        setCaption();
    emit fileSaved();
    return true;
}

bool Editors::writeEditor(Editor *editor)
{
    editor->save();
    if (!editor->isModified())
        return true;
    tellFailure(tr("Cannot save %1: %2").arg(editor->filename(), editor->errorString()));
    return false;
}

void Editors::saveAs()
{
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
    saveCurrentAs(url);
}

bool Editors::saveCurrentAs(const QString &url)
{
    constexpr QLatin1String scheme("file:");
    const QString file = url.startsWith(scheme) ? url.mid(scheme.size()) : url;
    Editor *const editor = d->currentEditor;
    editor->saveAs(file);
    if (editor->isModified()) {
        tellFailure(tr("Cannot save %1: %2").arg(file, editor->errorString()));
        return false;
    }
    emit fileSaved();
    return true;
}

void Editors::saveAll()
{
    const QList<Editor *> all = d->list;
    d->failure.clear();
    for (Editor *const editor : all) {
        if (!editor->isModified())
            continue;
        if (editor->hasFileName()) {
            writeEditor(editor);
            continue;
        }
        setCurrentEditor(editor);
        saveCurrentAs();
    }
    repeatFailure();
}

void Editors::close()
{
    close(d->currentEditor);
}

bool Editors::close(Editor *editor)
{
    return remove(editor, DeleteWhen::Now);
}

void Editors::closeEditor()
{
    // The sender is in its close event still.
    remove(qobject_cast<Editor *>(sender()), DeleteWhen::Later);
}

bool Editors::remove(Editor *editor, DeleteWhen when)
{
    if (!editor || !d->list.contains(editor))
        return false;
    if (editor->isModified()) {
        setCurrentEditor(editor);
        const int answer =
            askToSave(tr("The current document has been modified.\nWould you like to save it?"));
        // A text that was to be saved never goes unsaved.
        if (answer == QMessageBox::Cancel || (answer == QMessageBox::Yes && !saveEditor(editor)))
            return false;
    }
    const qsizetype left = qMax<qsizetype>(d->list.indexOf(d->currentEditor) - 1, 0);
    d->list.removeOne(editor);
    if (d->list.isEmpty())
        newEditor();
    else
        emit listChanged();
    if (d->currentEditor == editor)
        d->currentEditor = nullptr;
    discard(editor, when);
    setCurrentEditor(d->list.at(qMin(left, d->list.size() - 1)));
    return true;
}

/// Deletes an editor that has left the list.
void Editors::discard(Editor *editor, DeleteWhen when)
{
    disconnect(editor, nullptr, this, nullptr);
    if (when == DeleteWhen::Now) {
        const std::unique_ptr<Editor> dying(editor);
        return;
    }
    Shell::self()->workspace()->removeWidget(editor);
    editor->deleteLater();
}

bool Editors::closeAll()
{
    const QList<Editor *> all = d->list;
    for (Editor *const editor : all) {
        if (!editor->isModified())
            continue;
        setCurrentEditor(editor);
        const int answer =
            askToSave(tr("The file\n%1\nhas been modified.\nWould you like to save it?")
                          .arg(displayName(editor)));
        if (answer == QMessageBox::Cancel)
            return false;
        if (answer == QMessageBox::Yes &&
            !(editor->hasFileName() ? writeEditor(editor) : saveCurrentAs()))
            return false;
    }
    storeSession();
    // What is left in the list goes with this object, or with the workspace.
    d->currentEditor = nullptr;
    for (qsizetype i = 0; i < d->list.size(); ++i)
        discard(d->list.takeAt(i), DeleteWhen::Now);
    return true;
}

void Editors::prevEditor()
{
    const qsizetype i = d->list.indexOf(d->currentEditor);
    if (i >= 0)
        setCurrentEditor(d->list.at(i > 0 ? i - 1 : d->list.size() - 1));
}

void Editors::nextEditor()
{
    const qsizetype i = d->list.indexOf(d->currentEditor);
    if (i >= 0)
        setCurrentEditor(d->list.at((i + 1) % d->list.size()));
}

void Editors::changeEditorsOrder(Editor *a, Editor *b)
{
    static bool lockUpdate = false;
    const qsizetype i = d->list.indexOf(a);
    const qsizetype j = d->list.indexOf(b);
    if (lockUpdate || i < 0 || j < 0)
        return;
    d->list.swapItemsAt(i, j);
    lockUpdate = true;
    emit listChanged();
    lockUpdate = false;
}

void Editors::updateTabNames()
{
    emit listChanged();
    for (Editor *const editor : std::as_const(d->list)) {
        const QString path = editor->filename();
        // The property remembers for which path title and icon were set: the
        // list may be long, and one name changes at a time.
        if (!editor->windowTitle().isEmpty() && editor->windowFilePath() == path)
            continue;
        editor->setWindowFilePath(path);
        editor->setWindowTitle(subName(displayName(editor), 1));
        editor->setWindowIcon(FileTypeManager::self()->findType(path)->icon());
    }
    setCaption();
}

void Editors::setCaption()
{
    const Editor *const editor = d->currentEditor;
    if (!editor)
        return;
    const QString path = editor->filename();
    QStringList parts = path.split(QDir::separator());
    QString caption = path;
    if (parts.size() > 1) {
        const QString shortName = std::exchange(parts.last(), QString());
        QString dirName = parts.join(QDir::separator());
        const QString home = QDir::homePath() + QDir::separator();
        if (dirName.startsWith(home))
            dirName = u'~' + dirName.mid(home.size() - 1);
        caption = shortName + QStringLiteral(" : ") + dirName + QStringLiteral(" - ") +
                  Settings::appName();
    }
    // Twice the placeholder stands for its own text.
    caption.replace(QStringLiteral("[*]"), QStringLiteral("[*][*]"));
    Shell::self()->setWindowTitle(caption);
    Shell::self()->statusMessage(QStringLiteral("default"), path);
    editorLineColChanged(editor->cursorLine(), editor->cursorColumn());
}

void Editors::editorLineColChanged(int line, int column)
{
    Shell::self()->statusMessage(QStringLiteral("line"), QString::number(line));
    Shell::self()->statusMessage(QStringLiteral("col"), QString::number(column));
}

void Editors::editorOverwriteModeChanged(bool overwrite)
{
    Shell::self()->statusMessage(QStringLiteral("insowr"),
                                 overwrite ? QStringLiteral("OWR") : QStringLiteral("INS"));
}

void Editors::createToEditorAction()
{
    Action *const action =
        Actions::createAction(QStringLiteral("Show Editor"), QStringLiteral("Editors/toEditor"), 0,
                              this, SLOT(toEditor()));
    action->setIcon(Utils::iconSet(QStringLiteral("22x22_ToEditor")));
    action->addTo(Shell::self()->stackButtons());
    Shell::self()->actionGroup(QStringLiteral("stackButtons"))->add(action);

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
        const QString name = displayName(d->list.at(i)).replace(u'&', QStringLiteral("&&"));
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

void Editors::addCloseButton()
{
    QMenuBar *const menuBar = Shell::self()->menuBar();
    // A rebuilt menu bar keeps its corner.
    if (d->closeButtonFrame) {
        d->closeButtonFrame->show();
        return;
    }
    auto *const frame = new QFrame(Shell::self());
    d->closeButtonFrame = frame;
    auto *const layout = new QHBoxLayout(frame);
    const int margin = frame->frameWidth();
    layout->setContentsMargins(margin, margin, margin, margin);
    layout->setSpacing(0);
    auto *const button = new QToolButton(frame);
    button->setObjectName(QStringLiteral("close"));
    button->setToolTip(tr("Close"));
    button->setFocusPolicy(Qt::NoFocus);
    button->setIcon(frame->style()->standardIcon(QStyle::SP_TitleBarCloseButton));
    button->setFixedSize(16, 14);
    connect(button, &QToolButton::clicked, this, [this] { close(); });
    layout->addWidget(button);
    layout->addSpacing(4);
    frame->setFixedSize(frame->sizeHint());
    menuBar->setCornerWidget(frame);
    frame->show();
}

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
