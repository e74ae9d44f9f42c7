#include "app/explorer/explorerpanel.h"

#include "app/actions.h"
#include "app/actiontable.h"
#include "app/bookmarks/bookmarks.h"
#include "app/explorer/fileslist.h"
#include "app/explorer/fileslistitem.h"
#include "app/filedialog.h"
#include "app/message.h"
#include "app/settings.h"
#include "app/shell.h"
#include "app/utils.h"
#include "zvwidgets/zvfileoperator/fileoperator.h"

#include <QDir>
#include <QInputDialog>
#include <QLabel>
#include <QMenu>
#include <QPointer>
#include <QSet>
#include <QSignalMapper>
#include <QToolButton>

#include <algorithm>

namespace vesk {

using zvwidgets::FileOperator;

namespace {

namespace keys {
constexpr QLatin1String listMode("/fileexplorer/listMode");
constexpr QLatin1String sortMode("/fileexplorer/sortMode");
constexpr QLatin1String lastPath("/fileexplorer/lastPath");
constexpr QLatin1String lastFile("/fileexplorer/lastFile");
} // namespace keys

constexpr QLatin1String bookmarkCategory("ExplorerPanel");

// Heights of the buffer in pixels.
constexpr int bufferMargin = 25;
constexpr int leastHeight = 70;
constexpr int wholeStretch = 255;

using Separator = ActionRow::Separator;

constexpr char navigation[] = "ExplorerPanel/navigation";
constexpr char optionActions[] = "ExplorerPanel/menu/options/actions";
constexpr char bookmarkActions[] = "ExplorerPanel/menu/bookmarks";

const ActionRow actionRows[] = {
    {"ExplorerPanel/navigation/back", QT_TRANSLATE_NOOP("vesk::ExplorerPanel", "Back"),
     Qt::ALT | Qt::Key_Left, SLOT(back()), nullptr, navigation},
    {"ExplorerPanel/navigation/forward", QT_TRANSLATE_NOOP("vesk::ExplorerPanel", "Forward"),
     Qt::ALT | Qt::Key_Right, SLOT(forward()), nullptr, navigation},
    {"ExplorerPanel/navigation/tofirst", QT_TRANSLATE_NOOP("vesk::ExplorerPanel", "To first item"),
     Qt::Key_Left, SLOT(setCurrentFirst()), nullptr, navigation},
    {"ExplorerPanel/navigation/tolast", QT_TRANSLATE_NOOP("vesk::ExplorerPanel", "To last item"),
     Qt::Key_Right, SLOT(setCurrentLast()), nullptr, navigation},
    {"ExplorerPanel/navigation/cdup", QT_TRANSLATE_NOOP("vesk::ExplorerPanel", "Go to up level"),
     Qt::ALT | Qt::Key_Up, SLOT(cdUp()), nullptr, navigation},
    {"ExplorerPanel/action/NewFolder", QT_TRANSLATE_NOOP("vesk::ExplorerPanel", "&New Folder"),
     Qt::CTRL | Qt::Key_N, SLOT(newFolder()), "16x16_NewFolder", optionActions, Separator::After},
    {"ExplorerPanel/action/open", QT_TRANSLATE_NOOP("vesk::ExplorerPanel", "Open"), noKey,
     SLOT(open()), nullptr, nullptr},
    {"ExplorerPanel/action/cut", QT_TRANSLATE_NOOP("vesk::ExplorerPanel", "Cut"),
     Qt::CTRL | Qt::Key_X, SLOT(cut()), "16x16_Cut", optionActions},
    {"ExplorerPanel/action/copy", QT_TRANSLATE_NOOP("vesk::ExplorerPanel", "Copy"),
     Qt::CTRL | Qt::Key_C, SLOT(copy()), "16x16_Copy", optionActions},
    {"ExplorerPanel/action/paste", QT_TRANSLATE_NOOP("vesk::ExplorerPanel", "Paste"),
     Qt::CTRL | Qt::Key_V, SLOT(paste()), "16x16_Paste", optionActions},
    {"ExplorerPanel/action/delete", QT_TRANSLATE_NOOP("vesk::ExplorerPanel", "Delete"),
     Qt::Key_Delete, SLOT(erase()), nullptr, optionActions, Separator::After},
    {"ExplorerPanel/bookmarks/showMenu",
     QT_TRANSLATE_NOOP("vesk::ExplorerPanel", "Show bookmark menu"), Qt::CTRL | Qt::Key_B,
     SLOT(showBookmarkMenu()), nullptr, "ExplorerPanel/bookmarks"},
    {"ExplorerPanel/bookmarks/add", QT_TRANSLATE_NOOP("vesk::ExplorerPanel", "Add bookmark"), noKey,
     SLOT(addBookmark()), nullptr, bookmarkActions},
    {"ExplorerPanel/bookmarks/manage", QT_TRANSLATE_NOOP("vesk::ExplorerPanel", "Manage bookmarks"),
     noKey, SLOT(manageBookmarks()), nullptr, bookmarkActions, Separator::After},
    {"ExplorerPanel/clearBuffer", QT_TRANSLATE_NOOP("vesk::ExplorerPanel", "Clear buffer"),
     Qt::Key_Escape, SLOT(showBuffer()), nullptr, nullptr},
    {"ExplorerPanel/focus", QT_TRANSLATE_NOOP("vesk::ExplorerPanel", "E&xplorer window"),
     Qt::CTRL | Qt::Key_T, SLOT(makeVisible()), nullptr, "menu/Window/Docks"},
};

/// A toggle that passes a number to its slot.
struct ModeRow
{
    const char *name;
    const char *label;
    QKeyCombination key;
    const char *icon;
    int mode;
};

const ModeRow sortRows[] = {
    {"ExplorerPanel/sort/name", QT_TRANSLATE_NOOP("vesk::ExplorerPanel", "Sort by &name"),
     Qt::Key_F2, "16x16_SortByName", ExplorerPanel::Name},
    {"ExplorerPanel/sort/date", QT_TRANSLATE_NOOP("vesk::ExplorerPanel", "Sort by &date"),
     Qt::Key_F3, "16x16_SortByDate", ExplorerPanel::Date},
    {"ExplorerPanel/sort/size", QT_TRANSLATE_NOOP("vesk::ExplorerPanel", "Sort by &size"),
     Qt::Key_F4, "16x16_SortBySize", ExplorerPanel::Size},
};

const ModeRow viewRows[] = {
    {"ExplorerPanel/viewMode/list", QT_TRANSLATE_NOOP("vesk::ExplorerPanel", "&List"),
     Qt::Key_Minus, nullptr, ExplorerPanel::ListView},
    {"ExplorerPanel/viewMode/detailed", QT_TRANSLATE_NOOP("vesk::ExplorerPanel", "&Detailed"),
     Qt::Key_Equal, nullptr, ExplorerPanel::DetailedView},
};

/// Work only while the panel owns the shared keys.
constexpr const char *focusActions[] = {
    "ExplorerPanel/action/NewFolder",   "ExplorerPanel/action/cut",
    "ExplorerPanel/action/copy",        "ExplorerPanel/action/paste",
    "ExplorerPanel/action/delete",      "ExplorerPanel/navigation/back",
    "ExplorerPanel/navigation/forward", "ExplorerPanel/navigation/tofirst",
    "ExplorerPanel/navigation/tolast",  "ExplorerPanel/navigation/cdup",
    "ExplorerPanel/bookmarks/showMenu", "ExplorerPanel/viewMode/list",
    "ExplorerPanel/viewMode/detailed",  "ExplorerPanel/sort/name",
    "ExplorerPanel/sort/date",          "ExplorerPanel/sort/size",
    "ExplorerPanel/clearBuffer",
};

Action *action(const char *name)
{
    return Actions::action(QString::fromLatin1(name));
}

/// The label of \a name in a menu, where "&" marks a key and a tab starts a column.
QString menuLabel(const QString &name)
{
    return shownName(name).replace(u'&', QStringLiteral("&&"));
}

} // namespace

struct ExplorerPanel::Private
{
    static QPointer<ExplorerPanel> self;

    int viewMode = ListView;
    QMenu *pathMenu = nullptr;
    QMenu *actionMenu = nullptr;
    QMenu *bookmarkMenu = nullptr;
    /// From the data of a bookmark's entry to its path.
    QMap<int, QString> bookmarkIds;
    bool isActive = false;
    bool mayGoUp = false;
    bool mayGoBack = false;
    bool mayGoForward = false;
};

QPointer<ExplorerPanel> ExplorerPanel::Private::self;

ExplorerPanel *ExplorerPanel::self()
{
    if (!Private::self)
        Private::self = new ExplorerPanel(Shell::self());
    return Private::self;
}

ExplorerPanel::ExplorerPanel(QWidget *parent)
    : ExplorerPanelBase(parent), d(std::make_unique<Private>())
{
    setObjectName(QStringLiteral("vesk::ExplorerPanel"));
    setWindowIcon(Utils::iconSet(QStringLiteral("16x16_FileExplorer")));
    setFocusProxy(filesList);
    Shell *const shell = Shell::self();
    createActions();
    createContextGroups();
    createMenus();
    connectButtons();
    for (QWidget *const each :
         std::initializer_list<QWidget *>{bufferLabel, clearBufferButton, bufferList})
        each->hide();
    PanelInfo info{"files", tr("Files"), noKey, "22x22_FileExplorer", SLOT(makeVisible())};
    info.usesTextLabel = true;
    shell->addPanel(Dock::Left, this, info);

    connect(filesList, &FilesList::gotFocus, this, &ExplorerPanel::gotFocus);
    connect(this, &ExplorerPanel::gotFocus, shell, [this, shell] { shell->focusIn(this); });
    connect(shell, &Shell::focusChanged, this, &ExplorerPanel::focusChanged);
    connect(shell, &Shell::leftDockRaised, this, [this](QObject *panel) {
        if (panel)
            makeVisible(panel);
    });
    updateActions();
    restore();
}

ExplorerPanel::~ExplorerPanel()
{
    Settings::write(keys::listMode, d->viewMode);
    Settings::write(keys::sortMode, int(filesList->sortMode()));
    Settings::write(keys::lastPath, filesList->path());
    Settings::write(keys::lastFile, filesList->currentItemName());
}

void ExplorerPanel::restore()
{
    const int view = Settings::readNum(keys::listMode, ListView);
    setViewMode(view == DetailedView ? DetailedView : ListView);
    const int sort = Settings::readNum(keys::sortMode, Name);
    setSortMode(sort >= Name && sort <= Size ? sort : Name);
    // It may be gone since, the home folder too.
    filesList->go(FolderReader::nearestFolder(Settings::read(keys::lastPath, QDir::homePath())));
    const QString file = Settings::read(keys::lastFile);
    if (!file.isEmpty())
        filesList->setCurrentItem(file);
}

void ExplorerPanel::createActions()
{
    Shell *const shell = Shell::self();
    for (const char *section : {"actions", "sorts", "sortsExt", "mode"})
        shell->actionGroup(QStringLiteral("ExplorerPanel/menu/options/") +
                           QString::fromLatin1(section));
    vesk::addActions(this, actionRows, Labels::Translated);
    const auto addModes = [this](std::span<const ModeRow> rows, ActionGroup *group) {
        auto *const mapper = new QSignalMapper(this);
        group->setExclusive(true);
        for (const ModeRow &mode : rows) {
            Action *const made =
                Actions::createAction(tr(mode.label), QString::fromLatin1(mode.name),
                                      mode.key.toCombined(), mapper, SLOT(map()));
            made->setCheckable(true);
            if (mode.icon)
                made->setIcon(Utils::iconSet(QString::fromLatin1(mode.icon)));
            mapper->setMapping(made, mode.mode);
            group->add(made);
        }
        return mapper;
    };
    ActionGroup *const sorts =
        shell->actionGroup(QStringLiteral("ExplorerPanel/menu/options/sorts"));
    connect(addModes(sortRows, sorts), &QSignalMapper::mappedInt, this,
            &ExplorerPanel::setSortMode);
    sorts->addSeparator();
    connect(
        addModes(viewRows, shell->actionGroup(QStringLiteral("ExplorerPanel/menu/options/mode"))),
        &QSignalMapper::mappedInt, this, &ExplorerPanel::setViewMode);

    QList<Action *> shortcuts;
    for (const char *name : focusActions)
        shortcuts.append(action(name));
    filesList->setShortcutActions(shortcuts);
}

void ExplorerPanel::createContextGroups()
{
    struct Section
    {
        const char *name;
        /// Without "ExplorerPanel/", separated by blanks.
        const char *actions;
    };
    static constexpr Section sort = {"sort", "sort/name sort/date sort/size"};
    static constexpr Section mode = {"mode", "viewMode/list viewMode/detailed"};
    static constexpr Section main = {"main", "action/cut action/copy action/paste"};
    static constexpr Section erase = {"delete", "action/delete"};
    const struct
    {
        const char *word;
        QList<Section> sections;
    } groups[] = {
        {"folder", {{"open", "action/NewFolder"}, main, erase, sort, mode}},
        {"file", {{"open", "action/open action/NewFolder"}, main, erase, sort, mode}},
        {"selection", {{"main", "action/cut action/copy"}, erase}},
        {"none", {{"open", "action/NewFolder"}, {"main", "action/paste"}, sort, mode}},
    };
    Shell *const shell = Shell::self();
    for (const auto &[word, sections] : groups) {
        const QString path = QStringLiteral("ExplorerPanel/context/") + QString::fromLatin1(word);
        ActionGroup *const group = shell->actionGroup(path);
        for (const Section &section : sections) {
            if (group->count() > 0)
                group->addSeparator();
            ActionGroup *const made =
                shell->actionGroup(path + u'/' + QString::fromLatin1(section.name));
            const QStringList names = QString::fromLatin1(section.actions).split(QLatin1Char(' '));
            for (const QString &name : names)
                made->add(QStringLiteral("ExplorerPanel/") + name);
        }
        filesList->setActionGroup(QString::fromLatin1(word), group);
    }
}

void ExplorerPanel::createMenus()
{
    Shell *const shell = Shell::self();
    d->pathMenu = new QMenu(this);
    cdUpButton->setMenu(d->pathMenu);
    connect(d->pathMenu, &QMenu::aboutToShow, this, &ExplorerPanel::pathMenu);
    connect(d->pathMenu, &QMenu::triggered, this,
            [this](const QAction *chosen) { cdUp(chosen->data().toInt()); });

    d->actionMenu = new QMenu(this);
    shell->actionGroup(QStringLiteral("ExplorerPanel/menu/options"))->addTo(d->actionMenu);
    actionButton->setMenu(d->actionMenu);

    d->bookmarkMenu = new QMenu(this);
    shell->actionGroup(QString::fromLatin1(bookmarkActions))->addTo(d->bookmarkMenu);
    bookmarkButton->setMenu(d->bookmarkMenu);
    connect(d->bookmarkMenu, &QMenu::aboutToShow, this, &ExplorerPanel::aboutToShowBookmarkMenu);
    connect(d->bookmarkMenu, &QMenu::triggered, this, [this](const QAction *chosen) {
        if (chosen->data().isValid())
            activatedBookmarkMenu(chosen->data().toInt());
    });
}

void ExplorerPanel::connectButtons()
{
    connect(backButton, &QToolButton::clicked, filesList, &FilesList::back);
    connect(forwardButton, &QToolButton::clicked, filesList, &FilesList::forward);
    connect(cdUpButton, &QToolButton::clicked, this, [this] { cdUp(); });
    connect(chooseButton, &QToolButton::clicked, this, &ExplorerPanel::selectPath);
    // Before the menu, whose commands work only then.
    connect(actionButton, &QToolButton::pressed, this, &ExplorerPanel::setFocus);
    connect(actionButton, &QToolButton::clicked, this, &ExplorerPanel::showActionMenu);
    connect(bookmarkButton, &QToolButton::clicked, this, &ExplorerPanel::showBookmarkMenu);
    connect(clearBufferButton, &QToolButton::clicked, this, [this] { showBuffer(false); });
    const auto follow = [this](void (FilesList::*available)(bool), bool Private::*may,
                               QToolButton *button) {
        button->setEnabled(false);
        connect(filesList, available, this, [this, may, button](bool is) {
            d.get()->*may = is;
            button->setEnabled(is);
            updateActions();
        });
    };
    follow(&FilesList::upAvailable, &Private::mayGoUp, cdUpButton);
    follow(&FilesList::backAvailable, &Private::mayGoBack, backButton);
    follow(&FilesList::forwardAvailable, &Private::mayGoForward, forwardButton);
}

/// A command works while the panel is active and there is something for it to do.
void ExplorerPanel::updateActions()
{
    for (const char *name : focusActions)
        action(name)->setEnabled(d->isActive);
    const auto restrict = [](const char *name, bool may) {
        if (!may)
            action(name)->setEnabled(false);
    };
    restrict("ExplorerPanel/navigation/back", d->mayGoBack);
    restrict("ExplorerPanel/navigation/forward", d->mayGoForward);
    restrict("ExplorerPanel/navigation/cdup", d->mayGoUp);
    restrict("ExplorerPanel/action/paste", !bufferList->isHidden());
}

void ExplorerPanel::focusChanged(QObject *who)
{
    d->isActive = who == this;
    updateActions();
}

void ExplorerPanel::setFocus()
{
    filesList->setFocus();
    emit gotFocus();
}

void ExplorerPanel::makeVisible(QObject *raisedPanel)
{
    if (raisedPanel) {
        // The panel that comes up with the window was not asked for by anybody.
        if (raisedPanel == this && Shell::self()->isVisible())
            setFocus();
        return;
    }
    Shell::self()->raisePanel(this);
    filesList->adjustContentSize();
    emit raised();
}

void ExplorerPanel::setViewMode(int mode)
{
    d->viewMode = mode;
    if (mode == ListView || mode == DetailedView) {
        action(viewRows[mode - ListView].name)->setChecked(true);
        filesList->setViewMode(mode == ListView ? FilesList::Simple : FilesList::Detailed);
    }
    Settings::write(keys::listMode, mode);
}

void ExplorerPanel::setSortMode(int mode)
{
    filesList->setSortMode(mode);
    action(sortRows[filesList->sortMode()].name)->setChecked(true);
    Settings::write(keys::sortMode, int(filesList->sortMode()));
}

void ExplorerPanel::back()
{
    filesList->back();
}

void ExplorerPanel::forward()
{
    filesList->forward();
}

void ExplorerPanel::setCurrentLast()
{
    filesList->setCurrentLast();
}

void ExplorerPanel::setCurrentFirst()
{
    filesList->setCurrentFirst();
}

void ExplorerPanel::cdUp(int id)
{
    const QString path = filesList->path();
    if (id == -1) {
        // The folder above may be gone with this one.
        const QString parent = FolderReader::nearestFolder(FolderReader::parentOf(path));
        if (parent == path)
            return;
        filesList->go(parent);
        filesList->setCurrentItem(path.section(u'/', -1));
        return;
    }
    const QStringList pieces = path.split(u'/', Qt::SkipEmptyParts);
    filesList->go(u'/' + pieces.first(qBound(0, id, int(pieces.size()))).join(u'/'));
}

void ExplorerPanel::pathMenu()
{
    d->pathMenu->clear();
    d->pathMenu->addAction(QStringLiteral("/"))->setData(0);
    const QStringList pieces = filesList->path().split(u'/', Qt::SkipEmptyParts);
    for (int i = 0; i < pieces.size(); ++i) {
        const QString indent(2 * (i + 1), u' ');
        d->pathMenu->addAction(indent + menuLabel(pieces.at(i)))->setData(i + 1);
    }
}

void ExplorerPanel::selectPath()
{
    const QString folder = FileDialog::existingDirectory(
        Shell::self(), tr("Please select folder..."), filesList->path());
    if (folder.isEmpty())
        return;
    filesList->go(folder);
    Settings::write(keys::lastPath, filesList->path());
}

void ExplorerPanel::warnAccess(const QString &message) const
{
    Message::warning(tr("Access denied..."), message, tr("OK"), QString(), QString(), 0, 0);
}

void ExplorerPanel::newFolder()
{
    const QString folder = filesList->path();
    if (!FolderReader::isWritable(folder)) {
        warnAccess(tr("Folder %1 is not writable.").arg(folder));
        return;
    }
    bool isAccepted = false;
    const QString name = QInputDialog::getText(Shell::self(), tr("Create new folder..."),
                                               tr("Create new folder in %1").arg(folder),
                                               QLineEdit::Normal, tr("New folder"), &isAccepted);
    if (!isAccepted)
        return;
    if (FolderReader::makeFolder(FolderReader::joined(folder, name)))
        filesList->reload();
    else
        Message::warning(tr("Error happens..."), tr("Can't create new folder in %1").arg(folder),
                         tr("OK"), QString(), QString(), 0, 0);
}

void ExplorerPanel::open()
{
    filesList->itemClicked(nullptr);
}

/// Puts the selection into the buffer and moves on to what stands below it.
void ExplorerPanel::stage()
{
    const QStringList staged = bufferList->filePaths();
    const QSet<QString> known(staged.cbegin(), staged.cend());
    const QList<FilesListItem *> selected = filesList->selectedItems();
    for (const FilesListItem *const item : selected) {
        if (!known.contains(item->filePath))
            bufferList->addEntry(item->fileName, item->filePath, item->sort_key, item->isDir);
    }
    showBuffer(true);
    bufferList->adjustContentSize();
    filesList->setCurrent(filesList->itemBelowSelection());
}

void ExplorerPanel::cut()
{
    const QString folder = filesList->path();
    if (!FolderReader::isWritable(folder)) {
        warnAccess(tr("Folder %1 is not writable.\nYou can't move these files.").arg(folder));
        return;
    }
    const QStringList selected = filesList->selectedFileNames();
    if (selected.isEmpty())
        return;
    stage();
    QStringList excluded = filesList->excludeFilePaths() + selected;
    excluded.removeDuplicates();
    filesList->setExcludeFilePaths(excluded);
    filesList->reload();
}

void ExplorerPanel::copy()
{
    if (!filesList->selectedItems().isEmpty())
        stage();
}

void ExplorerPanel::paste()
{
    const QString folder = filesList->path();
    if (!FolderReader::isWritable(folder)) {
        warnAccess(tr("Folder %1 is not writable.\nYou can't move or copy files to the folder.")
                       .arg(folder));
        return;
    }
    const QStringList moved = filesList->excludeFilePaths();
    const QSet<QString> excluded(moved.cbegin(), moved.cend());
    QStringList copied = bufferList->filePaths();
    copied.removeIf([&excluded](const QString &path) { return excluded.contains(path); });
    // Before the work, during which the user may stage other files.
    showBuffer(false);
    if (!moved.isEmpty())
        FileOperator::self()->move(moved, folder);
    if (!copied.isEmpty())
        FileOperator::self()->copy(copied, folder);
    filesList->reload();
}

void ExplorerPanel::erase()
{
    const QStringList paths = filesList->selectedFileNames();
    if (paths.isEmpty())
        return;
    // Nothing brings the files back, so that a hasty Return keeps them.
    const int answer = Message::warning(tr("Warning"), tr("Do you really want to delete it?"),
                                        tr("Delete"), tr("Cancel"), QString(), 1, 1);
    if (answer != 0)
        return;
    filesList->setCurrent(filesList->itemBelowSelection());
    FileOperator::self()->erase(paths);
    filesList->reload();
}

void ExplorerPanel::showBuffer(bool show)
{
    if (!show && bufferList->isHidden())
        return;
    if (show)
        sizeBuffer();
    bufferLabel->setVisible(show);
    clearBufferButton->setVisible(show);
    bufferList->setVisible(show);
    updateActions();
    if (show)
        return;
    bufferList->clear();
    filesList->setExcludeFilePaths({});
    filesList->reload();
}

/// As high as its entries, but a third of the room at most.
void ExplorerPanel::sizeBuffer()
{
    int whole = filesList->height();
    if (!bufferList->isHidden())
        whole += bufferList->height();
    const int limit = whole / 3;
    int buffer = bufferMargin;
    if (const int count = bufferList->topLevelItemCount())
        buffer = qMin(bufferList->sizeHintForRow(0) * count + bufferMargin, limit);
    whole = qMax(whole, leastHeight);
    setListStretch((whole - buffer) * wholeStretch / whole, buffer * wholeStretch / whole);
}

void ExplorerPanel::showActionMenu()
{
    actionButton->showMenu();
}

void ExplorerPanel::showBookmarkMenu()
{
    bookmarkButton->showMenu();
}

void ExplorerPanel::aboutToShowBookmarkMenu()
{
    const QList<QAction *> entries = d->bookmarkMenu->actions();
    for (QAction *const entry : entries) {
        if (!entry->data().isValid())
            continue;
        d->bookmarkMenu->removeAction(entry);
        entry->deleteLater();
    }
    d->bookmarkIds.clear();
    const BookmarkMap bookmarks = Bookmarks::self()->bookmarks(bookmarkCategory);
    for (auto it = bookmarks.cbegin(); it != bookmarks.cend(); ++it) {
        const int id = int(d->bookmarkIds.size());
        d->bookmarkIds.insert(id, it.value());
        d->bookmarkMenu->addAction(menuLabel(it.key()))->setData(id);
    }
}

void ExplorerPanel::activatedBookmarkMenu(int id)
{
    const QString path = d->bookmarkIds.value(id);
    if (!path.isEmpty() && path != filesList->path())
        filesList->go(path);
}

void ExplorerPanel::addBookmark()
{
    const QString path = filesList->path();
    Bookmarks::self()->addBookmark(bookmarkCategory, path, path);
}

void ExplorerPanel::manageBookmarks()
{
    Bookmarks::self()->showManageDialog(bookmarkCategory);
}

} // namespace vesk
