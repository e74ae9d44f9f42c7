#include "app/search/treewalk.h"

#include <QByteArray>
#include <QFile>
#include <QScopeGuard>

#include <algorithm>
#include <dirent.h>
#include <sys/stat.h>

namespace vesk {

namespace {

QString below(const QString &folder, const QString &name)
{
    return folder.endsWith(u'/') ? folder + name : folder + u'/' + name;
}

/// What \a entry is, a link told by what it leads to; DT_UNKNOWN if it is gone.
unsigned char typeOf(const QByteArray &folder, const dirent &entry)
{
    if (entry.d_type != DT_LNK && entry.d_type != DT_UNKNOWN)
        return entry.d_type;
    struct stat info;
    if (::stat((folder + '/' + entry.d_name).constData(), &info) != 0)
        return DT_UNKNOWN;
    return S_ISDIR(info.st_mode) ? DT_DIR : S_ISREG(info.st_mode) ? DT_REG : DT_UNKNOWN;
}

void sortBackwards(QStringList *names)
{
    std::sort(names->begin(), names->end(), std::greater<>());
}

} // namespace

TreeWalk::TreeWalk(const QString &top, const QString &wanted) : masks(wanted), root(top)
{}

bool TreeWalk::next(QString *file, const GoOn &goOn)
{
    if (!root.isNull())
        enter(std::exchange(root, QString()), goOn);
    while (!way.empty()) {
        Folder &folder = way.back();
        if (!folder.files.isEmpty()) {
            *file = below(folder.path, folder.files.takeLast());
            return true;
        }
        if (folder.folders.isEmpty())
            way.pop_back();
        else
            enter(below(folder.path, folder.folders.takeLast()), goOn);
    }
    return false;
}

void TreeWalk::enter(const QString &path, const GoOn &goOn)
{
    struct stat info;
    if (::stat(QFile::encodeName(path).constData(), &info) != 0)
        return;
    Folder folder{path, {info.st_dev, info.st_ino}, {}, {}};
    const bool isOnTheWay = std::any_of(
        way.begin(), way.end(), [&folder](const Folder &each) { return each.id == folder.id; });
    if (isOnTheWay)
        return;
    if (list(&folder, goOn))
        way.push_back(std::move(folder));
    else
        way.clear();
}

/// False if the walk has to end.
bool TreeWalk::list(Folder *folder, const GoOn &goOn) const
{
    const QByteArray path = QFile::encodeName(folder->path);
    DIR *const dir = ::opendir(path.constData());
    if (!dir)
        return true;
    const auto closer = qScopeGuard([dir] { ::closedir(dir); });
    while (const dirent *const entry = ::readdir(dir)) {
        if (!goOn())
            return false;
        if (entry->d_name[0] == '.')
            continue;
        const unsigned char type = typeOf(path, *entry);
        const QString name = QFile::decodeName(entry->d_name);
        if (type == DT_DIR)
            folder->folders << name;
        else if (type == DT_REG && masks.match(name))
            folder->files << name;
    }
    sortBackwards(&folder->files);
    sortBackwards(&folder->folders);
    return true;
}

} // namespace vesk
