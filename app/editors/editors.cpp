#include "app/editors/editors.h"

#include "app/editors/editors_p.h"
#include "app/editors/zveditor/zveditor.h"
#include "app/filedialog.h"
#include "app/filetype.h"
#include "app/recentfiles.h"
#include "app/settings.h"
#include "app/shell.h"
#include "app/widgetstack.h"

#include <QDir>
#include <QFileInfo>
#include <QFrame>
#include <QHBoxLayout>
#include <QMenuBar>
#include <QStyle>
#include <QToolButton>

#include <utility>

namespace vesk {

namespace {

constexpr char openFilter[] =
    "Any files (*);;Ch files (*.ch *.chf *.chs *.h *.hpp *.c *.cc *.cpp);;"
    "C/C++ files (*.h *.hpp *.c *.cc *.cpp);;Python files (*.py);;Project files (*.vesk);;"
    "UI files (*.ui);;Text files (*.txt)";

/// The same for all paths that lead to one file, also while it does not exist.
QString fileKey(const QString &path)
{
    if (path.isEmpty())
        return {};
    const QFileInfo file(path);
    const QString canonical = file.canonicalFilePath();
    if (!canonical.isEmpty())
        return canonical;
    const QString folder = QFileInfo(file.absolutePath()).canonicalFilePath();
    return (folder.isEmpty() ? file.absolutePath() : folder) + u'/' + file.fileName();
}

} // namespace

Editors *Editors::Private::self = nullptr;

void Editors::Private::noteFile(Editor *editor)
{
    forgetFile(editor);
    const QString path = editor->filename();
    if (path.isEmpty())
        return;
    const QStringList names = {path, fileKey(path)};
    for (const QString &name : names)
        editorOfName.insert(name, editor);
    namesOfEditor.insert(editor, names);
}

void Editors::Private::forgetFile(Editor *editor)
{
    const QStringList names = namesOfEditor.take(editor);
    for (const QString &name : names) {
        if (editorOfName.value(name) == editor)
            editorOfName.remove(name);
    }
}

Editors::Editors(Shell &shell) : d(std::make_unique<Private>(shell))
{
    setObjectName(QStringLiteral("vesk::Editors"));
    Private::self = this;
    installEditorFactory(new ZVEditorFactory);
    shell.setLeaveQuestion([this] { return closeAll(); });
    FileTypeManager::self()->setDefaultOpener([this](const QString &path) { open(path); });
    connect(this, &Editors::gotFocus, &shell, [this, &shell] { shell.focusIn(this); });
    connect(&shell, &Shell::focusChanged, this, &Editors::focusChanged);
    connect(&shell, &Shell::uiRebuilded, this, &Editors::addCloseButton);
    connect(&shell, &Shell::uiRebuilded, this, &Editors::loadSessionFiles);
    connect(&shell, &Shell::uiRebuilded, this, &Editors::loadSession);
    createToEditorAction();
    connect(shell.workspace(), qOverload<QWidget *>(&WidgetStack::aboutToShow), this,
            &Editors::workspaceWidgetRaised);
    createActions();
    newEditor();
}

Editors::~Editors()
{
    d->shell.setLeaveQuestion({});
    FileTypeManager::self()->setDefaultOpener({});
    disconnect(d->shell.workspace(), nullptr, this, nullptr);
    while (!d->list.isEmpty())
        discard(d->list.takeLast(), DeleteWhen::Now);
    Private::self = nullptr;
}

Editors *Editors::self()
{
    Q_ASSERT(Private::self);
    return Private::self;
}

void Editors::installEditorFactory(EditorFactory *factory)
{
    d->currentFactory = factory;
    std::unique_ptr<EditorFactory> &installed = d->factories[factory->name()];
    if (installed.get() != factory)
        installed.reset(factory);
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

QString Editors::displayName(const Editor *editor)
{
    return subName(displayPath(editor), 1);
}

QString Editors::displayPath(const Editor *editor)
{
    return editor->hasFileName() ? editor->filename() : tr("Untitled");
}

void Editors::setCurrentEditor(Editor *editor)
{
    if (!editor || editor == d->currentEditor || !d->list.contains(editor))
        return;
    d->currentEditor = editor;
    emit currentChanged(editor);
    emit editorChanged();
    setCaption();
    WidgetStack *const workspace = d->shell.workspace();
    if (workspace->visibleWidget() != editor) {
        workspace->raiseWidget(editor);
        editor->setFocus();
    }
}

void Editors::workspaceWidgetRaised(QWidget *page)
{
    QWidget *const raised = page ? page : d->shell.workspace()->visibleWidget();
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
    WidgetStack *const workspace = d->shell.workspace();
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
    connect(editor, &Editor::filenameChanged, this, [this, editor] {
        d->noteFile(editor);
        updateTabNames();
    });
    connect(editor, &Editor::focusChanged, this, &Editors::editorFocusChanged);
    // The editor is in its close event still.
    connect(editor, &Editor::closing, this, [this, editor] { remove(editor, DeleteWhen::Later); });
    connect(editor, &Editor::fileLoaded, this, &Editors::fileLoaded);
    connect(editor, &Editor::modificationStatusChanged, this,
            [this, editor](bool modified) { emit editorModified(editor, modified); });
    connect(editor, &Editor::lineColChanged, this, &Editors::editorLineColChanged);
    connect(editor, &Editor::overwriteModeChanged, this, &Editors::editorOverwriteModeChanged);
}

/// A file reached through a link is the same file: two editors on it would write
/// over each other's text.
Editor *Editors::editorOfFile(const QString &path)
{
    const QString key = fileKey(path);
    for (const QString &name : {path, key}) {
        Editor *const editor = d->editorOfName.value(name);
        if (!editor)
            continue;
        const QString shown = editor->filename();
        if (shown == path || fileKey(shown) == key)
            return editor;
        // It shows a link that leads elsewhere since it was noted.
        d->noteFile(editor);
    }
    return nullptr;
}

void Editors::open()
{
    if (d->lastOpenSaveDir.isEmpty())
        d->lastOpenSaveDir = QStringLiteral(".");
    const QStringList names = FileDialog::openFileNames(tr("Choose files"), d->lastOpenSaveDir,
                                                        QString::fromLatin1(openFilter));
    openAll(names);
    if (!names.isEmpty())
        d->lastOpenSaveDir = QFileInfo(names.last()).absolutePath();
}

void Editors::openAll(const QStringList &paths)
{
    d->failures.clear();
    {
        const Gathering gathering(this);
        for (const QString &path : paths)
            FileTypeManager::self()->openFile(path);
    }
    repeatFailures();
}

void Editors::open(const QString &path)
{
    const QString file = path.isEmpty() ? path : QFileInfo(path).absoluteFilePath();
    if (Editor *const shown = editorOfFile(file)) {
        setCurrentEditor(shown);
        return;
    }
    if (d->gatherings == 0)
        d->failures.clear();
    const QString error = load(file);
    if (!file.isEmpty())
        RecentFiles::self()->addRecent(file);
    if (!error.isEmpty())
        tellFailure(tr("Cannot open %1: %2").arg(file, error));
}

/// Shows the file in the current editor if that is unused, else in a new one. Returns
/// why it could not.
QString Editors::load(const QString &file)
{
    const Gathering gathering(this);
    if (d->currentEditor->hasFileName() || !d->currentEditor->isEmpty())
        newEditor();
    Editor *const editor = d->currentEditor;
    editor->open(file);
    return editor->errorString();
}

void Editors::tellFailure(const QString &failure)
{
    d->failures.append(failure);
    repeatFailures();
}

/// To be called after the last of several files: each that is opened puts its own
/// name into the status line.
void Editors::repeatFailures()
{
    if (!d->failures.isEmpty())
        d->shell.statusMessage(QStringLiteral("default"), d->failures.join(QStringLiteral("; ")));
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
    d->isListChangePending = d->gatherings > 0;
    if (d->isListChangePending)
        return;
    emit listChanged();
    for (Editor *const editor : std::as_const(d->list)) {
        const QString path = editor->filename();
        // The property remembers for which path title and icon were set: the
        // list may be long, and one name changes at a time.
        if (!editor->windowTitle().isEmpty() && editor->windowFilePath() == path)
            continue;
        editor->setWindowFilePath(path);
        editor->setWindowTitle(displayName(editor));
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
    d->shell.setWindowTitle(caption);
    d->shell.statusMessage(QStringLiteral("default"), path);
    editorLineColChanged(editor->cursorLine(), editor->cursorColumn());
}

void Editors::editorLineColChanged(int line, int column)
{
    d->shell.statusMessage(QStringLiteral("line"), QString::number(line));
    d->shell.statusMessage(QStringLiteral("col"), QString::number(column));
}

void Editors::editorOverwriteModeChanged(bool overwrite)
{
    d->shell.statusMessage(QStringLiteral("insowr"), overwrite ? tr("OWR") : tr("INS"));
}

void Editors::addCloseButton()
{
    QMenuBar *const menuBar = d->shell.menuBar();
    // A rebuilt menu bar keeps its corner.
    if (d->closeButtonFrame) {
        d->closeButtonFrame->show();
        return;
    }
    auto *const frame = new QFrame(&d->shell);
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

} // namespace vesk
