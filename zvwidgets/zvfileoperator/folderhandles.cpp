#include "zvwidgets/zvfileoperator/folderhandles.h"

#include "zvwidgets/zvfiles/filenames.h"

#include <fcntl.h>

namespace zvwidgets {

namespace {

constexpr int folderFlags = O_PATH | O_DIRECTORY | O_CLOEXEC;

/// Whether \a folder is the one named by the first \a end bytes of \a path or lies below.
bool isBelow(const QByteArray &folder, const QByteArray &path, qsizetype end)
{
    if (!folder.startsWith(QByteArrayView(path).first(end)))
        return false;
    return folder.size() == end || folder.at(end) == '/' || path.at(end - 1) == '/';
}

} // namespace

void FolderHandles::forget()
{
    chain.clear();
    current.clear();
}

QByteArray FolderHandles::rootOf(const QByteArray &folder) const
{
    QByteArray root = folder;
    while (!roots.contains(root)) {
        const QByteArray above = parentPath(root);
        if (above == root)
            return {};
        root = above;
    }
    return root;
}

bool FolderHandles::openRoot(const QByteArray &folder)
{
    chain.clear();
    const QByteArray root = rootOf(folder);
    Q_ASSERT(!root.isEmpty());
    FileHandle handle(retried([&root] { return ::open(root.constData(), folderFlags); }));
    if (!handle.isOpen())
        return false;
    chain.push_back({root.size(), std::move(handle)});
    return true;
}

bool FolderHandles::descend(const QByteArray &name, qsizetype end, Missing missing)
{
    const int above = chain.back().handle.get();
    const auto attempt = [&] {
        return retried([&] { return ::openat(above, name.constData(), folderFlags | O_NOFOLLOW); });
    };
    int handle = attempt();
    if (handle < 0 && errno == ENOENT && missing == Missing::Create) {
        if (retried([&] { return ::mkdirat(above, name.constData(), 0777); }) != 0)
            return false;
        handle = attempt();
    }
    if (handle < 0)
        return false;
    chain.push_back({end, FileHandle(handle)});
    return true;
}

int FolderHandles::open(const QByteArray &folder, Missing missing)
{
    if (folder == current)
        return chain.back().handle.get();
    while (!chain.empty() && !isBelow(folder, current, chain.back().end))
        chain.pop_back();
    // A shorter root of another tree could be in the way of the right one.
    if (chain.empty() || chain.front().end != rootOf(folder).size()) {
        if (!openRoot(folder)) {
            const int error = errno;
            forget();
            errno = error;
            return -1;
        }
    }
    current = folder;
    while (chain.back().end < folder.size()) {
        qsizetype start = chain.back().end;
        if (folder.at(start) == '/')
            ++start;
        const qsizetype slash = folder.indexOf('/', start);
        const qsizetype end = slash < 0 ? folder.size() : slash;
        if (!descend(folder.sliced(start, end - start), end, missing)) {
            current.truncate(chain.back().end);
            return -1;
        }
    }
    return chain.back().handle.get();
}

} // namespace zvwidgets
