#pragma once

#include <QObject>
#include <QStringList>

#include <memory>

class QMenu;

namespace vesk {

/// The lists of files and projects that were used last, newest first, and the
/// menus that offer them. A list grows while the program runs; its first ten
/// entries are there again after a restart.
///
/// The first self() makes the object as a child of the main window, and before
/// that window's first rebuild.
class RecentFiles : public QObject
{
    Q_OBJECT
public:
    ~RecentFiles() override;

    static RecentFiles *self();

    /// The menu of the tool bar's open button; null until integrate() finds it.
    QMenu *recentMenu() const;
    QMenu *recentFilesMenu() const;
    QMenu *recentProjectsMenu() const;
    QStringList recentFiles() const;
    /// Paths of the project files.
    QStringList recentProjects() const;
    /// Names of the projects, at the same places as their paths.
    QStringList recentProjectsNames() const;

public slots:
    /// Hangs the menus beside the commands they belong to. Called after each
    /// rebuild of the window's menus.
    void integrate();
    void updateRecentMenu();
    /// Puts \a fileName, an absolute path, at the head of the files.
    void addRecent(const QString &fileName);
    void removeRecent(const QString &fileName);
    void addRecentProject(const QString &fileName, const QString &name);
    void removeRecentProject(const QString &fileName);

private:
    struct Private;

    RecentFiles();

    const std::unique_ptr<Private> d;
};

} // namespace vesk
