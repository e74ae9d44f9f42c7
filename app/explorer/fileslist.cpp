#include "app/explorer/fileslist.h"

#include "app/actions.h"
#include "app/explorer/fileslistdelegate.h"
#include "app/explorer/fileslistitem.h"
#include "app/filetype.h"
#include "app/shell.h"
#include "zvwidgets/navigator.h"
#include "zvwidgets/utils.h"

#include <QContextMenuEvent>
#include <QHeaderView>
#include <QMenu>
#include <QScrollBar>
#include <QSet>

#include <algorithm>
#include <numeric>

namespace vesk {

namespace {

/// A folder that was shown, and where in it the user was when leaving it.
struct FilesListNavigatorData
{
    QString path;
    QString itemSelected;
    int scrollPos = 0;
};

} // namespace

struct FilesList::Private
{
    /// Sums up \a change of the selection; sizes are asked of the disk as it is now.
    void count(const FilesList &list, const QItemSelection &change, int sign);

    Browsing browsing = Browsing::Enabled;
    ViewMode viewMode = Simple;
    SortMode sortMode = Name;
    FolderReader::Sort sortSpec = FolderReader::Sort::Name;
    QString path;
    QStringList excludeFilePaths;
    QMap<QString, QMenu *> menus;
    QMap<QString, ActionGroup *> actionGroups;
    QList<Action *> shortcutActions;
    zvwidgets::Navigator<FilesListNavigatorData> navigator;
    // Kept up with the selection: to walk it all at each key would take long in a
    // folder of a hundred thousand entries.
    int selectedCount = 0;
    quint64 selectedSize = 0;
    QHash<const FilesListItem *, quint64> sizes;
};

void FilesList::Private::count(const FilesList &list, const QItemSelection &change, int sign)
{
    for (const QItemSelectionRange &range : change) {
        selectedCount += sign * range.height();
        for (int row = range.top(); row <= range.bottom(); ++row) {
            const FilesListItem *const item = list.itemAt(row);
            if (!item || item->isDir)
                continue;
            if (sign < 0) {
                selectedSize -= sizes.take(item);
                continue;
            }
            const quint64 size =
                FolderReader::status(item->filePath, FolderReader::Detail::Names).size;
            sizes.insert(item, size);
            selectedSize += size;
        }
    }
}

FilesList::FilesList(QWidget *parent, Browsing browsing)
    : QTreeWidget(parent), d(std::make_unique<Private>())
{
    d->browsing = browsing;
    setColumnCount(1);
    setHeaderLabel(tr("Name"));
    setHeaderHidden(true);
    setRootIsDecorated(false);
    setItemsExpandable(false);
    setUniformRowHeights(true);
    setEditTriggers(NoEditTriggers);
    setSelectionMode(ExtendedSelection);
    setFocusPolicy(Qt::ClickFocus);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    header()->setStretchLastSection(true);
    setItemDelegate(new FilesListDelegate(this));
}

FilesList::~FilesList() = default;

QString FilesList::path() const
{
    return d->path;
}

FilesList::ViewMode FilesList::viewMode() const
{
    return d->viewMode;
}

void FilesList::setViewMode(int mode)
{
    if (mode == d->viewMode || (mode != Simple && mode != Detailed))
        return;
    d->viewMode = ViewMode(mode);
    reload();
}

FilesList::SortMode FilesList::sortMode() const
{
    return d->sortMode;
}

void FilesList::setSortMode(int mode)
{
    static constexpr FolderReader::Sort sorts[] = {
        FolderReader::Sort::Name, FolderReader::Sort::Date, FolderReader::Sort::Size};
    if (mode == d->sortMode || mode < Name || mode > Size)
        return;
    d->sortMode = SortMode(mode);
    d->sortSpec = sorts[mode];
    reload();
}

FilesListItem *FilesList::itemAt(int row) const
{
    return static_cast<FilesListItem *>(topLevelItem(row));
}

QString FilesList::currentItemName() const
{
    const auto *const item = static_cast<const FilesListItem *>(currentItem());
    return item ? item->fileName : QString();
}

QList<FilesListItem *> FilesList::selectedItems() const
{
    QList<int> rows;
    const QItemSelection selection = selectionModel()->selection();
    for (const QItemSelectionRange &range : selection) {
        const qsizetype first = rows.size();
        rows.resize(first + range.height());
        std::iota(rows.begin() + first, rows.end(), range.top());
    }
    std::sort(rows.begin(), rows.end());
    QList<FilesListItem *> items;
    items.reserve(rows.size());
    for (const int row : std::as_const(rows)) {
        if (!itemAt(row)->isParent())
            items.append(itemAt(row));
    }
    return items;
}

QStringList FilesList::selectedNames() const
{
    QStringList names;
    const QList<FilesListItem *> items = selectedItems();
    for (const FilesListItem *const item : items)
        names.append(item->fileName);
    return names;
}

QStringList FilesList::selectedFileNames() const
{
    QStringList paths;
    const QList<FilesListItem *> items = selectedItems();
    for (const FilesListItem *const item : items)
        paths.append(item->filePath);
    return paths;
}

QStringList FilesList::filePaths() const
{
    QStringList paths;
    for (int row = 0; row < topLevelItemCount(); ++row)
        paths.append(itemAt(row)->filePath);
    return paths;
}

FilesListItem *FilesList::itemBelowSelection() const
{
    const QList<FilesListItem *> selected = selectedItems();
    if (selected.isEmpty())
        return nullptr;
    const int row = indexOfTopLevelItem(selected.last());
    return itemAt(qMin(row + 1, topLevelItemCount() - 1));
}

void FilesList::addEntry(const QString &name, const QString &path, int sortIndex, bool isFolder)
{
    auto item = std::make_unique<FilesListItem>(this, name, path, sortIndex, isFolder);
    int row = topLevelItemCount();
    while (row > 0 && *item < *itemAt(row - 1))
        --row;
    insertTopLevelItem(row, item.release());
}

QStringList FilesList::excludeFilePaths() const
{
    return d->excludeFilePaths;
}

void FilesList::setExcludeFilePaths(const QStringList &paths)
{
    d->excludeFilePaths = paths;
}

ActionGroup *FilesList::actionGroup(const QString &word) const
{
    return d->actionGroups.value(word);
}

void FilesList::setActionGroup(const QString &word, ActionGroup *group)
{
    d->actionGroups.insert(word, group);
}

void FilesList::setShortcutActions(const QList<Action *> &actions)
{
    d->shortcutActions = actions;
}

void FilesList::setCurrent(QTreeWidgetItem *item)
{
    if (!item)
        return;
    selectionModel()->setCurrentIndex(indexFromItem(item), QItemSelectionModel::ClearAndSelect |
                                                               QItemSelectionModel::Rows);
    scrollToItem(item);
    itemSelected();
}

void FilesList::setCurrentItem(const QString &name)
{
    if (name.isEmpty()) {
        setCurrentFirst();
        return;
    }
    for (int row = 0; row < topLevelItemCount(); ++row) {
        if (itemAt(row)->fileName == name) {
            setCurrent(itemAt(row));
            return;
        }
    }
}

void FilesList::setCurrentFirst()
{
    setCurrent(itemAt(0));
}

void FilesList::setCurrentLast()
{
    setCurrent(itemAt(topLevelItemCount() - 1));
}

void FilesList::adjustContentSize()
{
    executeDelayedItemsLayout();
    updateGeometries();
}

void FilesList::setFocus()
{
    QTreeWidget::setFocus();
}

/// A list that nobody sees leaves the line to others: at the start it tells of the
/// files that were opened.
void FilesList::status(const QString &text) const
{
    if (isVisible())
        Shell::self()->statusMessage(QStringLiteral("default"), text);
}

/// Shows the folder at \a path; false if there is none, and nothing changes then.
bool FilesList::setPath(const QString &path)
{
    const auto detail =
        d->viewMode == Detailed ? FolderReader::Detail::Status : FolderReader::Detail::Names;
    FolderReader folder;
    if (path.isEmpty() || !folder.read(path, d->sortSpec, detail))
        return false;
    d->path = path;
    fill(folder);
    adjustContentSize();
    status(path);
    emit filesListLoaded();
    emit upAvailable(path != QLatin1String("/"));
    emit backAvailable(d->navigator.isBackEnabled());
    emit forwardAvailable(d->navigator.isForwardEnabled());
    return true;
}

void FilesList::fill(const FolderReader &folder)
{
    const QSet<QString> excluded(d->excludeFilePaths.cbegin(), d->excludeFilePaths.cend());
    QList<QTreeWidgetItem *> items;
    items.reserve(folder.folders.size() + folder.files.size());
    const auto append = [&](const QList<FolderEntry> &entries, bool isFolder) {
        for (int i = 0; i < entries.size(); ++i) {
            const FolderEntry &entry = entries.at(i);
            const bool isParent = isFolder && entry.name == QLatin1String("..");
            const QString path = isParent ? FolderReader::parentOf(d->path)
                                          : FolderReader::joined(d->path, entry.name);
            auto item = std::make_unique<FilesListItem>(this, entry.name, path, i, isFolder);
            if (d->viewMode == Detailed)
                item->init(entry.status, i);
            if (!excluded.isEmpty() && excluded.contains(path))
                item->setGrayed(true);
            items.append(item.release());
        }
    };
    append(folder.folders, true);
    append(folder.files, false);
    std::stable_sort(items.begin(), items.end(),
                     [](const QTreeWidgetItem *a, const QTreeWidgetItem *b) { return *a < *b; });

    clear();
    addTopLevelItems(items);
}

void FilesList::clear()
{
    QTreeWidget::clear();
    // What was selected is taken off only in part.
    d->selectedCount = 0;
    d->selectedSize = 0;
    d->sizes.clear();
}

void FilesList::rememberPlace()
{
    if (d->path.isEmpty() || d->navigator.url().path != d->path)
        return;
    d->navigator.url().itemSelected = currentItemName();
    d->navigator.url().scrollPos = verticalScrollBar()->value();
}

void FilesList::setScrollPosition(int position)
{
    executeDelayedItemsLayout();
    verticalScrollBar()->setValue(position);
}

void FilesList::restorePlace()
{
    const FilesListNavigatorData place = d->navigator.url();
    if (!setPath(place.path))
        return;
    setCurrentItem(place.itemSelected);
    setScrollPosition(place.scrollPos);
}

void FilesList::go(const QString &path)
{
    const QString folder = FolderReader::cleanPath(path);
    if (path.isEmpty() || !FolderReader::isFolder(folder))
        return;
    rememberPlace();
    d->navigator.go({folder, QString(), 0});
    setPath(folder);
    setCurrentFirst();
}

void FilesList::back()
{
    if (!d->navigator.isBackEnabled())
        return;
    rememberPlace();
    d->navigator.back();
    restorePlace();
}

void FilesList::forward()
{
    if (!d->navigator.isForwardEnabled())
        return;
    rememberPlace();
    d->navigator.forward();
    restorePlace();
}

void FilesList::reload()
{
    const QString name = currentItemName();
    const int position = verticalScrollBar()->value();
    if (!setPath(d->path))
        return;
    setScrollPosition(position);
    if (!name.isEmpty())
        setCurrentItem(name);
}

void FilesList::itemClicked(QTreeWidgetItem *clicked)
{
    const auto *const item = static_cast<FilesListItem *>(clicked ? clicked : currentItem());
    if (!item)
        return;
    if (item->isLocked()) {
        status(tr("%1   is locked. It can't be opened.").arg(shownName(item->fileName)));
        return;
    }
    // Reading the folder deletes the item.
    const QString path = item->filePath;
    if (!item->isDir) {
        FileTypeManager::self()->openFile(path);
        return;
    }
    if (d->browsing == Browsing::Disabled)
        return;
    const bool isUp = item->isParent();
    const QString left = d->path.section(u'/', -1);
    go(path);
    if (isUp && d->path == path)
        setCurrentItem(left);
}

void FilesList::selectionChanged(const QItemSelection &selected, const QItemSelection &deselected)
{
    QTreeWidget::selectionChanged(selected, deselected);
    d->count(*this, deselected, -1);
    d->count(*this, selected, 1);
    itemSelected();
}

/// Brings the status line, and the row of a single entry, up to date.
void FilesList::itemSelected()
{
    if (d->selectedCount > 1) {
        QString text = tr("Selected %1 Items").arg(d->selectedCount);
        if (d->selectedSize != 0)
            text += tr(",   Size: %1").arg(zvwidgets::Utils::humanReadableSize(d->selectedSize));
        status(text);
        return;
    }
    // At a move the selection changes before the current entry does.
    const QItemSelection selection = selectionModel()->selection();
    FilesListItem *const item = selection.isEmpty()
                                    ? static_cast<FilesListItem *>(QTreeWidget::currentItem())
                                    : itemAt(selection.first().top());
    if (!item)
        return;
    const auto detail = d->viewMode == Detailed && !item->isParent() ? FolderReader::Detail::Status
                                                                     : FolderReader::Detail::Names;
    const FileStatus now = FolderReader::status(item->filePath, detail, item->status());
    const QString name = shownName(item->fileName);
    if (now.kind == FileStatus::Kind::Missing) {
        status(name);
        return;
    }
    item->init(now, item->sort_key);
    status(item->isDir ? tr("%1, Modified: %2").arg(name, item->date())
                       : tr("%1   Size: %2, Modified: %3").arg(name, item->size(), item->date()));
}

void FilesList::mouseRightClick(const FilesListItem *item, const QPoint &place)
{
    QString word = QStringLiteral("none");
    if (item)
        word = item->isDir ? QStringLiteral("folder") : item->fileType()->name();
    if (selectedNames().size() > 1)
        word = QStringLiteral("selection");
    QMenu *menu = d->menus.value(word);
    if (!menu) {
        const ActionGroup *group = d->actionGroups.value(word);
        if (!group)
            group = d->actionGroups.value(QStringLiteral("file"));
        if (!group)
            return;
        menu = new QMenu(this);
        group->addTo(menu);
        d->menus.insert(word, menu);
    }
    menu->popup(place);
}

void FilesList::contextMenuEvent(QContextMenuEvent *event)
{
    if (event->reason() == QContextMenuEvent::Mouse) {
        const auto *const item =
            static_cast<const FilesListItem *>(QTreeWidget::itemAt(event->pos()));
        mouseRightClick(item, event->globalPos());
        return;
    }
    const auto *const item = static_cast<const FilesListItem *>(currentItem());
    const QRect row = item ? visualItemRect(item) : QRect();
    mouseRightClick(item, viewport()->mapToGlobal(row.bottomLeft() + QPoint(row.height(), 0)));
}

void FilesList::mouseDoubleClickEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
        return;
    QTreeWidget::mouseDoubleClickEvent(event);
    if (QTreeWidgetItem *const item = QTreeWidget::itemAt(event->position().toPoint()))
        itemClicked(item);
}

void FilesList::focusInEvent(QFocusEvent *event)
{
    QTreeWidget::focusInEvent(event);
    const bool isReturn =
        event->reason() == Qt::PopupFocusReason || event->reason() == Qt::ActiveWindowFocusReason;
    if (!isReturn && !d->path.isEmpty())
        status(d->path);
    emit gotFocus();
}

namespace {

/// The enabled one of \a actions that \a event is the shortcut of.
Action *actionOf(const QKeyEvent *event, const QList<Action *> &actions)
{
    const QKeySequence keys(
        QKeyCombination(event->modifiers() & ~Qt::KeypadModifier, Qt::Key(event->key())));
    const auto found = std::find_if(actions.cbegin(), actions.cend(), [&](const Action *action) {
        return action->isEnabled() && action->shortcut() == keys;
    });
    return found != actions.cend() ? *found : nullptr;
}

} // namespace

bool FilesList::event(QEvent *event)
{
    if (event->type() == QEvent::ShortcutOverride) {
        auto *const key = static_cast<QKeyEvent *>(event);
        if (actionOf(key, d->shortcutActions)) {
            key->accept();
            return true;
        }
    }
    return QTreeWidget::event(event);
}

void FilesList::keyPressEvent(QKeyEvent *event)
{
    if (Action *const action = actionOf(event, d->shortcutActions)) {
        action->trigger();
        return;
    }
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        itemClicked(nullptr);
        return;
    }
    QTreeWidget::keyPressEvent(event);
}

} // namespace vesk
