#include "app/filedialog.h"
#include "app/filetype.h"
#include "app/message.h"
#include "app/project/addfilesdialog.h"
#include "app/project/project.h"
#include "app/project/project_p.h"
#include "app/project/projectnodes.h"
#include "app/project/projectxml.h"
#include "app/recentfiles.h"
#include "app/shell.h"
#include "app/utils.h"
#include "app/widgets/domlistview.h"
#include "zvwidgets/zvfileoperator/fileoperator.h"

#include <QDir>
#include <QFileInfo>
#include <QInputDialog>
#include <QStandardPaths>

using namespace Qt::StringLiterals;

namespace vesk {

namespace {

const QString folderTag = u"folder"_s;
const QString nameAttribute = u"name"_s;
const QString typeAttribute = u"type"_s;
const QString urlAttribute = u"url"_s;
const QString containerAttribute = u"container"_s;

QString withSeparator(const QString &place)
{
    return place.startsWith(QDir::separator()) ? place : QDir::separator() + place;
}

DomListViewItem *currentItemOf(const DomListView *view)
{
    return static_cast<DomListViewItem *>(view->currentItem());
}

/// True if \a path is below \a folder, where links really lead; a link at its end
/// stands for itself.
bool isInside(const QString &folder, const QString &path)
{
    if (path.split(QDir::separator()).contains(".."_L1))
        return false;
    QString above = QFileInfo(path).absolutePath();
    while (!QFileInfo::exists(above))
        above = QFileInfo(above).absolutePath();
    const QString home = QFileInfo(withSeparator(folder)).canonicalFilePath();
    const QString real = QFileInfo(above).canonicalFilePath();
    return real == home || real.startsWith(home == u'/' ? home : home + u'/');
}

bool isSameFolder(const QString &a, const QString &b)
{
    const QString real = QFileInfo(a).canonicalFilePath();
    return !real.isEmpty() && real == QFileInfo(b).canonicalFilePath();
}

/// The toolkit's ready-made questions take no object name.
QString ask(const QString &name, const QString &caption, const QString &label,
            const QStringList &choices = {})
{
    QInputDialog dialog(Shell::self());
    dialog.setObjectName(name);
    dialog.setWindowTitle(caption);
    dialog.setLabelText(label);
    dialog.setInputMode(QInputDialog::TextInput);
    if (!choices.isEmpty()) {
        dialog.setComboBoxItems(choices);
        dialog.setComboBoxEditable(true);
    }
    return dialog.exec() == QDialog::Accepted ? dialog.textValue() : QString();
}

/// Where there is no trash the file is removed for good. A folder is left alone.
bool deleteFromDisk(const QString &path)
{
    const QFileInfo info(path);
    if (info.isDir() && !info.isSymLink())
        return false;
    // The toolkit makes the trash, but not the folder it is in.
    QDir().mkpath(QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation));
    return QFile::moveToTrash(path) || QFile::remove(path);
}

} // namespace

QStringList Project::localNames() const
{
    return ProjectNodes::localNames(d->root);
}

QStringList Project::filePaths(const QString &localName) const
{
    const QDomNode top = localName.isEmpty() ? d->root : localName2node(localName);
    QStringList paths = ProjectNodes::places(top, d->root);
    const QString folder = dirPath();
    for (QString &path : paths)
        path.prepend(folder);
    return paths;
}

QStringList Project::folders() const
{
    return ProjectNodes::folders(d->root);
}

QString Project::node2localName(const QDomNode &node) const
{
    return ProjectNodes::localName(node, d->root);
}

QString Project::node2filePath(const QDomNode &node) const
{
    return node.isNull() ? QString() : dirPath() + ProjectNodes::placeOf(node, d->root);
}

QDomNode Project::localName2node(const QString &localName) const
{
    return ProjectNodes::find(d->root, localName);
}

QDomNode Project::filePath2node(const QString &path) const
{
    const QString folder = dirPath();
    if (!hasProject() || !path.startsWith(folder + QDir::separator()))
        return QDomNode();
    const QString place = path.mid(folder.size());
    const QDomNode node = localName2node(place);
    return node.isNull() ? ProjectNodes::findUrl(d->root, place) : node;
}

QDomNode Project::selectedNode() const
{
    const DomListViewItem *const item = currentItemOf(d->view);
    return item ? item->node : QDomNode();
}

QString Project::selectedFilePath() const
{
    return node2filePath(selectedNode());
}

QStringList Project::selectedFilePaths() const
{
    QStringList paths;
    for (const QDomNode &node : selectedNodes())
        paths.append(node2filePath(node));
    return paths;
}

QStringList Project::selectedLocalNames() const
{
    QStringList names;
    for (const QDomNode &node : selectedNodes())
        names.append(node2localName(node));
    return names;
}

QList<QDomNode> Project::selectedNodes() const
{
    QList<QDomNode> nodes;
    for (QTreeWidgetItemIterator it(d->view, QTreeWidgetItemIterator::Selected); *it; ++it) {
        if (*it != d->view->rootItem())
            nodes.append(static_cast<DomListViewItem *>(*it)->node);
    }
    return nodes;
}

void Project::selectionChangedInternal()
{
    const QDomNode node = selectedNode();
    const bool isThere = !node.isNull() && ProjectNodes::contains(d->root, node);
    emit selectionChanged(isThere ? node2localName(node) : QString());
}

void Project::updateProject()
{
    d->view->syncToDom();
}

void Project::openFile()
{
    const QString path = selectedFilePath();
    if (!QFileInfo(path).isFile())
        return;
    FileTypeManager::self()->openFile(path);
    RecentFiles::self()->addRecent(path);
}

/// Nothing is written or deleted where a name in the project leads out of it.
bool Project::mayWriteTo(const QString &path) const
{
    if (isInside(dirPath(), path))
        return true;
    Message::information(tr("Error"),
                         tr("'%1'\nlies outside the folder of the project.").arg(path));
    return false;
}

bool Project::createDirectory(const QString &dest)
{
    const QString path = dirPath() + withSeparator(dest);
    if (dest.isEmpty() || QFileInfo::exists(path))
        return true;
    if (!mayWriteTo(path))
        return false;
    if (Utils::createDirectory(path))
        return true;
    Message::information(tr("Error"), tr("Can't create directory '%1'").arg(path));
    return false;
}

/// The node of \a dest, made with those above it if it isn't there.
QDomNode Project::createNodes(const QString &dest)
{
    QDomNode node = d->root;
    const QStringList names = dest.split(QDir::separator(), Qt::SkipEmptyParts);
    for (const QString &name : names) {
        QDomNode next = ProjectNodes::child(node, name);
        if (next.isNull()) {
            QDomElement folder = d->doc.createElement(folderTag);
            folder.setAttribute(nameAttribute, name);
            next = node.appendChild(folder);
        }
        node = next;
    }
    return node;
}

bool Project::canName(const QString &name) const
{
    // That is what the toolkit makes of a name that is no UTF-8.
    if (ProjectXml::canHold(name) && !name.contains(QChar::ReplacementCharacter))
        return true;
    Message::information(tr("Error"), tr("A project can't hold the name:\n'%1'").arg(name));
    return false;
}

/// On the disk and in the project; null if it can't be made.
QDomNode Project::createFolder(const QString &dest)
{
    if (!canName(dest) || !createDirectory(dest))
        return QDomNode();
    return createNodes(dest);
}

QStringList Project::askFiles()
{
    QString filter =
        tr("Any files (*);;Ch files (*.ch *.chf *.chs *.h *.hpp *.c *.cc *.cpp);;C/C++ files (*.h "
           "*.hpp *.c *.cc *.cpp);;Python files (*.py);;Project files (*.vesk);;UI files "
           "(*.ui);;Text files (*.txt)");
    if (!d->formMask.isEmpty())
        filter.prepend(tr("Form mask (%1*.py);;").arg(d->formMask));
    d->formMask.clear();
    return FileDialog::openFileNames(tr("Please select files..."), d->lastAddFilesDir, filter,
                                     u"Project::addFiles"_s);
}

/// Copies those of \a files that are elsewhere into the folder of \a dest. The names
/// of all that are there now.
QStringList Project::bringTo(const QString &dest, const QStringList &files)
{
    const QDir folder(dirPath() + dest);
    QStringList names;
    QStringList foreign;
    for (const QString &file : files) {
        const QFileInfo info(file);
        if (isSameFolder(info.absolutePath(), folder.path()))
            names.append(info.fileName());
        else if (info.exists())
            foreign.append(file);
        else
            Message::information(tr("Error"), tr("Can't copy file:\n'%1'").arg(file));
    }
    if (foreign.isEmpty() || !mayWriteTo(folder.filePath(u"name"_s)))
        return names;
    // It asks about what is there already, and tells what fails.
    zvwidgets::FileOperator::self()->copy(foreign, folder.path());
    for (const QString &file : std::as_const(foreign)) {
        const QString name = QFileInfo(file).fileName();
        if (folder.exists(name))
            names.append(name);
    }
    return names;
}

void Project::addFiles(const QStringList &files, const QString &dest, const QDomNode &toNode)
{
    if (!hasProject())
        return;
    if (!dest.isEmpty())
        d->lastAddFilesDir = dirPath() + withSeparator(dest);
    const QStringList chosen = files.isEmpty() ? askFiles() : files;
    if (chosen.isEmpty())
        return;
    const QString place = withSeparator(dest);
    const QDomNode folder = createFolder(place);
    const QDomNode parent = toNode.isNull() ? folder : toNode;
    if (folder.isNull())
        return;
    d->lastAddFilesDir = QFileInfo(chosen.first()).absolutePath();
    const QStringList names = bringTo(place, chosen);
    // The user may have gone on to another project while files were copied.
    if (!ProjectNodes::contains(d->root, parent))
        return;
    addNodes(names, place, parent, toNode.isNull() ? NodeUrl::None : NodeUrl::Written);
    updateProject();
}

/// Nodes for the files \a names of the folder \a dest, below \a parent. One that is
/// there already gets the type that its name has now.
void Project::addNodes(const QStringList &names, const QString &dest, QDomNode parent,
                       NodeUrl nodeUrl)
{
    const QString start = dest.endsWith(QDir::separator()) ? dest : dest + QDir::separator();
    QHash<QString, QDomElement> known;
    for (const QDomNode &folder : {localName2node(dest), parent}) {
        for (QDomElement child = folder.firstChildElement(); !child.isNull();
             child = child.nextSiblingElement()) {
            const QString name = child.attribute(nameAttribute);
            if (!known.contains(name))
                known.insert(name, child);
        }
    }
    for (const QString &name : names) {
        if (!canName(name))
            continue;
        QDomElement element = known.value(name);
        const bool isNew = element.isNull();
        const auto [tag, type] = tagOf(name);
        const bool isContainer = type && type->hasOption(containerAttribute);
        if (isNew)
            element = d->doc.createElement(tag);
        element.setTagName(tag);
        element.setAttribute(nameAttribute, name);
        element.setAttribute(typeAttribute, u"file"_s);
        if (nodeUrl == NodeUrl::Written)
            element.setAttribute(urlAttribute, start + name);
        if (isNew && isContainer)
            element.setAttribute(containerAttribute, u"1"_s);
        if (!isNew && type && !isContainer)
            element.removeAttribute(containerAttribute);
        if (isNew)
            known.insert(name, parent.appendChild(element).toElement());
    }
}

/// The tag for a file \a name, with its type, null if none matches. Names in capitals
/// match nothing, which is meant.
std::pair<QString, const FileType *> Project::tagOf(const QString &name) const
{
    for (auto it = d->fileTypes.cbegin(); it != d->fileTypes.cend(); ++it) {
        if (it.value()->match(name))
            return {it.key(), it.value()};
    }
    return {u"file"_s, nullptr};
}

void Project::addFilesTo(const QString &dest)
{
    const QDomElement element = selectedNode().toElement();
    if (!dest.isEmpty() || element.isNull())
        return;
    const QString tag = element.tagName();
    const bool isForm = tag == "uifile"_L1;
    if (!isForm && tag != folderTag && tag != "project"_L1 &&
        !element.hasAttribute(containerAttribute))
        return;
    const QString name = element.attribute(nameAttribute);
    if (isForm && (name.endsWith(".ui"_L1) || name.endsWith(".UI"_L1)))
        d->formMask = name.chopped(3);
    const QString place = node2localName(isForm ? element.parentNode() : QDomNode(element));
    d->lastAddFilesDir = dirPath() + place;
    addFiles({}, place, isForm ? QDomNode(element) : QDomNode());
    openItemOf(element);
    emit projectChanged();
}

/// The current item, if it still stands for \a node after dialogs were answered.
void Project::openItemOf(const QDomNode &node)
{
    DomListViewItem *const item = currentItemOf(d->view);
    if (item && item->node == node)
        d->view->setOpen(item, true);
}

void Project::addFilesDialog()
{
    if (!hasProject())
        return;
    QStringList chosen;
    {
        AddFilesDialog dialog(*this, Shell::self());
        if (dialog.exec() == QDialog::Accepted)
            chosen = dialog.addedFilePaths;
    }
    // A folder at a time: the tree is brought up to date once.
    const qsizetype cut = dirPath().size();
    for (qsizetype first = 0; first < chosen.size();) {
        const QString folder = QFileInfo(chosen.at(first)).absolutePath();
        QStringList names;
        while (first < chosen.size() && QFileInfo(chosen.at(first)).absolutePath() == folder)
            names.append(QFileInfo(chosen.at(first++)).fileName());
        const QString dest = withSeparator(folder.mid(cut));
        if (canName(dest))
            addNodes(names, dest, createNodes(dest), NodeUrl::Written);
        d->lastAddFilesDir = folder;
    }
    updateProject();
    makeVisible(nullptr);
}

void Project::addFolderTo(const QString &dest)
{
    const QDomElement element = selectedNode().toElement();
    if (!dest.isEmpty() || element.isNull())
        return;
    if (element.tagName() != folderTag && element.tagName() != "project"_L1 &&
        !element.hasAttribute(containerAttribute))
        return;
    QString name =
        ask(u"Project::addFolderTo"_s, tr("Please enter name."), tr("<b>Folder&nbsp;name:</b>"));
    if (name.isEmpty())
        return;
    if (name.startsWith(QDir::separator()))
        name.remove(0, 1);
    if (createFolder(node2localName(element) + QDir::separator() + name).isNull())
        return;
    updateProject();
    openItemOf(element);
    emit projectChanged();
}

void Project::addFolder(const QString &name)
{
    if (!hasProject())
        return;
    QString dest = name;
    if (dest.isEmpty())
        dest = ask(u"Project::addFolder"_s, tr("New folder"),
                   tr("<b>Folder:</b> (You can create set of subfolders when enter "
                      "%1folder%2folder2; begins it from <b>%1</b> - it is relative to project "
                      "directory)")
                       .arg(QDir::separator(), QDir::separator()),
                   folders());
    if (dest.isEmpty() || createFolder(withSeparator(dest)).isNull())
        return;
    updateProject();
}

/// Takes the node of the local name \a name out of the document, or the current one if
/// that is empty; the item of that one goes with the next update. False if there is none.
bool Project::removeNode(const QString &name)
{
    DomListViewItem *const item = name.isEmpty() ? currentItemOf(d->view) : nullptr;
    QDomNode node = item ? item->node : QDomNode();
    if (!name.isEmpty())
        node = localName2node(name);
    // Without its root there would be nothing to save.
    if (node.isNull() || node == d->root)
        return false;
    if (item)
        item->node = QDomNode();
    node.parentNode().removeChild(node);
    return true;
}

void Project::removeFile(const QString &name)
{
    if (!removeNode(name) || !name.isEmpty())
        return;
    updateProject();
    emit projectChanged();
}

void Project::removeFolder(const QString &name)
{
    removeFile(name);
}

void Project::deleteFile(const QString &name)
{
    if (!name.isEmpty())
        return removeFile(name);
    const QString path = selectedFilePath();
    if (path.isEmpty() || !mayWriteTo(path) || !removeNode(QString()))
        return;
    if (!deleteFromDisk(path))
        Message::information(tr("Error"), tr("Can't delete file:\n'%1'").arg(path));
    updateProject();
    emit projectChanged();
}

} // namespace vesk
