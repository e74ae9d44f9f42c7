#pragma once

#include <QByteArray>
#include <QFile>
#include <QTest>

#include <climits>
#include <dirent.h>
#include <fcntl.h>
#include <map>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

/// A file or folder as it is on the disk, with all below it. Links are not followed.
struct FileNode
{
    struct stat info = {};
    /// Of a file; of a link where it points to.
    QByteArray content;
    std::map<std::string, FileNode> children;
    /// Made by the modelled operation, so that a folder's times are known.
    bool isNew = false;

    bool isFolder() const { return S_ISDIR(info.st_mode); }
    bool isLink() const { return S_ISLNK(info.st_mode); }
    bool isFile() const { return S_ISREG(info.st_mode); }
    bool isSame(const FileNode &other) const
    {
        return info.st_dev == other.info.st_dev && info.st_ino == other.info.st_ino;
    }

    static FileNode read(const std::string &path)
    {
        FileNode node;
        if (::lstat(path.c_str(), &node.info) != 0)
            return node;
        if (node.isLink()) {
            node.content.resize(PATH_MAX);
            node.content.truncate(
                ::readlink(path.c_str(), node.content.data(), size_t(node.content.size())));
        } else if (node.isFile()) {
            node.content.resize(node.info.st_size);
            const int file = ::open(path.c_str(), O_RDONLY);
            if (::read(file, node.content.data(), size_t(node.content.size())) !=
                node.content.size())
                node.content = "cannot be read";
            ::close(file);
        } else if (node.isFolder()) {
            node.readChildren(path);
        }
        return node;
    }

    /// Empty if both are the same, otherwise what differs first. A folder's times
    /// count only if it is new.
    QString differenceFrom(const FileNode &expected, const std::string &path = {}) const
    {
        const auto at = [&path](const char *what) {
            return QString::fromLatin1(what) + QLatin1String(" of ") +
                   QString::fromLatin1(QByteArray::fromStdString(path).toPercentEncoding("/ "));
        };
        if ((info.st_mode & S_IFMT) != (expected.info.st_mode & S_IFMT))
            return at("type");
        if (!isLink() && info.st_mode != expected.info.st_mode)
            return at("mode");
        if (content != expected.content)
            return at("content");
        const timespec &time = info.st_mtim;
        const timespec &wanted = expected.info.st_mtim;
        if ((!isFolder() || expected.isNew) &&
            (time.tv_sec != wanted.tv_sec || time.tv_nsec != wanted.tv_nsec))
            return at("time");
        for (const auto &[name, child] : expected.children) {
            if (!children.contains(name))
                return at("missing entry") + QLatin1Char('/') + QString::fromStdString(name);
        }
        for (const auto &[name, child] : children) {
            const auto other = expected.children.find(name);
            if (other == expected.children.end())
                return at("surplus entry") + QLatin1Char('/') + QString::fromStdString(name);
            const QString below = child.differenceFrom(other->second, path + '/' + name);
            if (!below.isEmpty())
                return below;
        }
        return {};
    }

private:
    void readChildren(const std::string &path)
    {
        DIR *const list = ::opendir(path.c_str());
        while (const dirent *const entry = list ? ::readdir(list) : nullptr) {
            const std::string name = entry->d_name;
            if (name != "." && name != "..")
                children[name] = read(path + '/' + name);
        }
        if (list)
            ::closedir(list);
    }
};
