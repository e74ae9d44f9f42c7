#include "app/directoryitem.h"

#include "app/utils.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QTreeWidget>

namespace vesk {

namespace {

/// Hands what the user opens and closes in \a tree to the items, once per tree.
void followTree(QTreeWidget *tree)
{
    const QString name = QStringLiteral("directoryItemFollower");
    if (tree->findChild<QObject *>(name, Qt::FindDirectChildrenOnly))
        return;
    auto *const follower = new QObject(tree);
    follower->setObjectName(name);
    const auto pass = [](QTreeWidgetItem *item, bool open) {
        if (auto *const folder = dynamic_cast<DirectoryItem *>(item))
            folder->setOpen(open);
    };
    QObject::connect(tree, &QTreeWidget::itemExpanded, follower,
                     [pass](QTreeWidgetItem *item) { pass(item, true); });
    QObject::connect(tree, &QTreeWidget::itemCollapsed, follower,
                     [pass](QTreeWidgetItem *item) { pass(item, false); });
}

} // namespace

DirectoryItem::DirectoryItem(QTreeWidget *p, const QString &label, const QString &absName)
    : QTreeWidgetItem(p, {label})
    , fileName(absName.endsWith(QDir::separator()) ? absName : absName + QDir::separator())
{
    setIcon(0, Utils::iconSet(QStringLiteral("22x22_FolderRed")));
    followTree(p);
    setOpen(false);
    setup();
}

DirectoryItem::DirectoryItem(DirectoryItem *p, const QString &name)
    : QTreeWidgetItem(p, {name}), fileName(name)
{
    setOpen(false);
    setup();
}

QString DirectoryItem::fullName() const
{
    const auto *const above = static_cast<const DirectoryItem *>(parent());
    return above ? above->fullName() + fileName + QDir::separator() : fileName;
}

void DirectoryItem::setOpen(bool o)
{
    if (parent())
        setIcon(0, Utils::iconSet(o ? QStringLiteral("22x22_FolderOpen")
                                    : QStringLiteral("22x22_Folder")));
    if (o && childCount() == 0) {
        const QFileInfo folder(fullName());
        if (!folder.isDir()) {
            setExpandable(false);
            setIcon(0, Utils::iconSet(QStringLiteral("22x22_FolderNoExists")));
            return;
        }
        if (!folder.isReadable()) {
            setExpandable(false);
            setIcon(0, Utils::iconSet(QStringLiteral("22x22_FolderLocked")));
            return;
        }
        readFolder();
    }
    if (isExpanded() != o)
        setExpanded(o);
}

void DirectoryItem::setup()
{
    const QString path = fullName();
    if (!QFileInfo(path).isReadable()) {
        setExpandable(false);
        setIcon(0, Utils::iconSet(QStringLiteral("22x22_FolderLocked")));
        return;
    }
    // One subfolder is all that has to be known here.
    if (QDirIterator(path, QDir::Dirs | QDir::NoDotAndDotDot).hasNext())
        setExpandable(true);
}

void DirectoryItem::readFolder()
{
    QTreeWidget *const tree = treeWidget();
    const bool updates = tree->updatesEnabled();
    tree->setUpdatesEnabled(false);
    const QStringList names =
        QDir(fullName()).entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name);
    for (const QString &name : names)
        new DirectoryItem(this, name);
    tree->setUpdatesEnabled(updates);
}

void DirectoryItem::setExpandable(bool on)
{
    setChildIndicatorPolicy(on ? QTreeWidgetItem::ShowIndicator
                               : QTreeWidgetItem::DontShowIndicator);
}

} // namespace vesk
