#include "app/project/addfilesdialog.h"

#include "app/filetype.h"
#include "app/project/project.h"
#include "app/settings.h"

#include <QDir>
#include <QElapsedTimer>
#include <QGridLayout>
#include <QHeaderView>
#include <QPushButton>
#include <QSet>
#include <QTimer>
#include <QTreeWidget>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace vesk {

namespace {

const QString widthKey = u"/project/addfiles/width"_s;
const QString heightKey = u"/project/addfiles/height"_s;

// How long folders are read at a time, in ms: before the dialog comes up, and then.
constexpr int firstTurn = 500;
constexpr int laterTurn = 20;

bool isVersionControl(const QString &name)
{
    return name == "cvs"_L1 || name == "Cvs"_L1 || name == "CVS"_L1;
}

AddFilesDialogItem *filesItem(QTreeWidgetItem *item)
{
    return static_cast<AddFilesDialogItem *>(item);
}

} // namespace

AddFilesDialogBase::AddFilesDialogBase(QWidget *parent) : QDialog(parent)
{
    setObjectName(u"AddFilesDialogBase"_s);
    setWindowTitle(tr("Add files"));
    setSizeGripEnabled(true);
    const auto button = [this](const QString &name, const QString &text, const QString &shortcut) {
        auto *const made = new QPushButton(text, this);
        made->setObjectName(name);
        made->setShortcut(QKeySequence(shortcut));
        made->setAutoDefault(false);
        return made;
    };
    buttonSelectAll = button(u"buttonSelectAll"_s, tr("&Select All"), tr("Alt+S"));
    buttonClearSelection = button(u"buttonClearSelection"_s, tr("&Clear selection"), tr("Alt+C"));
    buttonAddExternalFiles =
        button(u"buttonAddExternalFiles"_s, tr("Add &external files"), tr("Alt+E"));
    listViewFiles = new QTreeWidget(this);
    listViewFiles->setObjectName(u"listViewFiles"_s);
    listViewFiles->setHeaderLabels({tr("Name")});
    buttonOk = button(u"buttonOk"_s, tr("&OK"), tr("Alt+O"));
    buttonOk->setDefault(true);
    // Its letter is taken: Escape serves.
    buttonCancel = button(u"buttonCancel"_s, tr("&Cancel"), QString());

    auto *const above = new QHBoxLayout;
    above->setSpacing(6);
    above->addWidget(buttonSelectAll);
    above->addWidget(buttonClearSelection);
    above->addWidget(buttonAddExternalFiles);
    above->addStretch();
    auto *const below = new QHBoxLayout;
    below->setSpacing(6);
    below->addStretch();
    below->addWidget(buttonOk);
    below->addWidget(buttonCancel);
    auto *const all = new QVBoxLayout(this);
    all->setContentsMargins(11, 11, 11, 11);
    all->setSpacing(6);
    all->addLayout(above);
    all->addWidget(listViewFiles, 1);
    all->addLayout(below);
    const QList<QWidget *> order{listViewFiles, buttonSelectAll, buttonClearSelection, buttonOk,
                                 buttonCancel};
    for (int i = 1; i < order.size(); ++i)
        setTabOrder(order.at(i - 1), order.at(i));
    listViewFiles->setFocus();
    connect(buttonOk, &QPushButton::clicked, this, &QDialog::accept);
    connect(buttonCancel, &QPushButton::clicked, this, &QDialog::reject);
}

AddFilesDialogItem::AddFilesDialogItem(Kind kind, const QString &name, const QString &path,
                                       int place)
    : QTreeWidgetItem(UserType)
    , isDir(kind == Kind::Folder)
    , fileName(name)
    , filePath(path)
    , sort_key(place)
{
    FileTypeManager *const types = FileTypeManager::self();
    setText(0, name);
    setIcon(0, isDir ? types->fileType(u"folder"_s)->icon() : types->findType(name)->icon());
}

struct AddFilesDialog::Private
{
    /// The item of the project's folder.
    AddFilesDialogItem *root = nullptr;
    /// What filePaths had when the dialog was made.
    QSet<QString> known;
    /// Folders to read, the next one last.
    QList<AddFilesDialogItem *> unread;
    QTimer *reading = nullptr;
};

AddFilesDialog::AddFilesDialog(const Project &project, QWidget *parent)
    : AddFilesDialogBase(parent), d(std::make_unique<Private>())
{
    setObjectName(u"AddFilesDialog"_s);
    buttonAddExternalFiles->hide();
    listViewFiles->setRootIsDecorated(false);
    listViewFiles->setSelectionMode(QAbstractItemView::MultiSelection);
    listViewFiles->setUniformRowHeights(true);
    listViewFiles->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    filePaths = project.filePaths();
    filePaths.append(project.filePath());
    d->known = QSet<QString>(filePaths.cbegin(), filePaths.cend());
    const QString folder = project.dirPath();
    d->root = new AddFilesDialogItem(AddFilesDialogItem::Kind::Folder, project.attribute(u"name"_s),
                                     folder, 0);
    listViewFiles->addTopLevelItem(d->root);
    d->unread.append(d->root);
    // Neither a file nor a folder can be told before all are there.
    buttonSelectAll->setEnabled(false);
    d->reading = new QTimer(this);
    d->reading->setInterval(0);
    connect(d->reading, &QTimer::timeout, this, [this] { readOn(laterTurn); });
    readOn(firstTurn);
    resize(Settings::readNum(widthKey, sizeHint().width()),
           Settings::readNum(heightKey, sizeHint().height()));
    QTimer::singleShot(0, this, &AddFilesDialog::adjustContentSize);
    connect(buttonSelectAll, &QPushButton::clicked, this, &AddFilesDialog::selectAll);
    connect(buttonClearSelection, &QPushButton::clicked, this, &AddFilesDialog::clearSelection);
}

AddFilesDialog::~AddFilesDialog()
{
    Settings::write(widthKey, width());
    Settings::write(heightKey, height());
}

/// Reads folders for \a patience ms, one at least.
void AddFilesDialog::readOn(int patience)
{
    QElapsedTimer timer;
    timer.start();
    while (!d->unread.isEmpty()) {
        readFolder(d->unread.takeLast());
        if (timer.elapsed() >= patience)
            break;
    }
    if (d->unread.isEmpty()) {
        d->reading->stop();
        buttonSelectAll->setEnabled(true);
    } else if (!d->reading->isActive()) {
        d->reading->start();
    }
}

void AddFilesDialog::readFolder(AddFilesDialogItem *folder)
{
    using Kind = AddFilesDialogItem::Kind;
    const QDir dir(folder->filePath.isEmpty() ? QDir::rootPath() : folder->filePath);
    const QString start = folder->filePath + QDir::separator();
    QList<QTreeWidgetItem *> folders;
    // Links may lead round in a circle.
    const QStringList folderNames =
        dir.entryList(QDir::Dirs | QDir::NoDotAndDotDot | QDir::NoSymLinks, QDir::Name);
    for (const QString &name : folderNames) {
        if (!isVersionControl(name))
            folders.append(
                new AddFilesDialogItem(Kind::Folder, name, start + name, int(folders.size())));
    }
    QList<std::pair<int, QTreeWidgetItem *>> files;
    const QStringList fileNames = dir.entryList(QDir::Files, QDir::Name);
    for (const QString &name : fileNames) {
        if (d->known.contains(start + name))
            continue;
        const int order = FileTypeManager::self()->findType(name)->listOrder();
        files.append(
            {order, new AddFilesDialogItem(Kind::File, name, start + name, int(files.size()))});
    }
    std::stable_sort(files.begin(), files.end(),
                     [](const auto &a, const auto &b) { return a.first < b.first; });
    for (auto it = folders.crbegin(); it != folders.crend(); ++it)
        d->unread.append(filesItem(*it));
    QList<QTreeWidgetItem *> all = folders;
    all.reserve(folders.size() + files.size());
    for (const auto &[order, item] : std::as_const(files))
        all.append(item);
    folder->addChildren(all);
    folder->setExpanded(true);
}

void AddFilesDialog::selectAll()
{
    // A range for each folder: one for each row would take long.
    QItemSelection rows;
    const QAbstractItemModel *const model = listViewFiles->model();
    QList<QModelIndex> folders{model->index(0, 0)};
    while (!folders.isEmpty()) {
        const QModelIndex folder = folders.takeLast();
        const int count = model->rowCount(folder);
        if (count > 0)
            rows.select(model->index(0, 0, folder), model->index(count - 1, 0, folder));
        for (int row = 0; row < count; ++row) {
            const QModelIndex child = model->index(row, 0, folder);
            if (model->hasChildren(child))
                folders.append(child);
        }
    }
    listViewFiles->selectionModel()->select(rows, QItemSelectionModel::Select);
}

void AddFilesDialog::clearSelection()
{
    listViewFiles->clearSelection();
}

QStringList AddFilesDialog::selectedFilePaths() const
{
    const QList<QTreeWidgetItem *> selected = listViewFiles->selectedItems();
    const QSet<QTreeWidgetItem *> wanted(selected.cbegin(), selected.cend());
    QStringList paths;
    if (wanted.isEmpty())
        return paths;
    for (QTreeWidgetItemIterator it(listViewFiles); *it; ++it) {
        const AddFilesDialogItem *const item = filesItem(*it);
        if (!item->isDir && wanted.contains(*it))
            paths.append(item->filePath);
    }
    return paths;
}

void AddFilesDialog::adjustContentSize()
{
    listViewFiles->header()->setStretchLastSection(true);
}

void AddFilesDialog::accept()
{
    AddFilesDialogBase::accept();
    const QStringList selected = selectedFilePaths();
    addedFilePaths += selected;
    filePaths += selected;
}

} // namespace vesk
