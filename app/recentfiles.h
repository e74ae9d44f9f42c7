#pragma once

#include <QObject>
#include <QStringList>

#include <memory>

class QAction;
class QMenu;

namespace vesk {

/// The lists of files and projects that were used last, newest first, and the
/// menus that offer them. A list grows while the program runs; its first ten
/// entries are there again after a restart.
///
/// The main window makes the object with the first self(), owns it and deletes it
/// before its menus go.
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
    /// Opens the file of a menu's \a entry the way any file is opened: a project goes
    /// to the handler of its type.
    void openInternal(const QAction *entry);

private:
    struct Private;

    RecentFiles();

    const std::unique_ptr<Private> d;
};

} // namespace vesk
