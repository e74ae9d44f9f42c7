#include "app/recentfiles.h"

#include "app/actions.h"
#include "app/filetype.h"
#include "app/settings.h"
#include "app/shell.h"
#include "app/utils.h"

#include <QFileInfo>
#include <QMenu>
#include <QPointer>
#include <QToolButton>

using namespace Qt::StringLiterals;

namespace vesk {

namespace {

const QString filesKey = u"/recent/files"_s;
const QString projectsKey = u"/project/recent"_s;
const QString projectNamesKey = u"/project/recentNames"_s;
/// Entries of a list that outlive the run.
constexpr qsizetype keptEntries = 10;

/// A path longer than a line of this many pixels is cut in its middle.
constexpr int labelWidth = 800;

void addEntry(QMenu *menu, const QString &path, const QIcon &icon = {})
{
    QString label = path;
    // A tab would part a shortcut from the label.
    label.replace(u'\t', u' ').replace(u'\n', u' ');
    label = menu->fontMetrics().elidedText(label, Qt::ElideMiddle, labelWidth);
    label.replace(u'&', u"&&"_s);
    menu->addAction(icon, label)->setData(path);
}

/// Puts \a menu next to the action \a name in the menu that shows it last.
void insertAfter(const QString &name, QMenu *menu)
{
    Action *action = Actions::action(name);
    if (!action || action->menus.isEmpty() || !action->menus.last())
        return;
    QMenu *const shown = action->menus.last();
    const QList<QAction *> entries = shown->actions();
    shown->insertMenu(entries.value(entries.indexOf(action) + 1), menu);
}

} // namespace

struct RecentFiles::Private
{
    static RecentFiles *self;

    QMenu *makeMenu(RecentFiles *q, const QString &title)
    {
        auto *menu = new QMenu(title, Shell::self());
        connect(menu, &QMenu::aboutToShow, q, &RecentFiles::updateRecentMenu);
        connect(menu, &QMenu::triggered, q, &RecentFiles::openInternal);
        return menu;
    }

    /// Without an entry to offer the button opens files as any other does.
    void setButtonMode() const
    {
        const bool isOffering = !recentFiles.isEmpty() || !recentProjects.isEmpty();
        if (button)
            button->setPopupMode(isOffering ? QToolButton::InstantPopup
                                            : QToolButton::DelayedPopup);
    }

    QPointer<QMenu> recentMenu;
    QPointer<QToolButton> button; ///< that shows recentMenu
    QMenu *recentFilesMenu = nullptr;
    QMenu *recentProjectsMenu = nullptr;
    QStringList recentFiles;
    QStringList recentProjects;
    QStringList recentProjectsNames;
};

RecentFiles *RecentFiles::Private::self = nullptr;

RecentFiles::RecentFiles() : QObject(Shell::self()), d(std::make_unique<Private>())
{
    setObjectName(u"RecentFiles"_s);
    d->recentFiles = Settings::readList(filesKey);
    d->recentProjects = Settings::readList(projectsKey);
    d->recentProjectsNames = Settings::readList(projectNamesKey);
    // The lists go together even if somebody edited the file.
    d->recentProjectsNames.resize(qMin(d->recentProjectsNames.size(), d->recentProjects.size()));
    while (d->recentProjectsNames.size() < d->recentProjects.size()) {
        const QString path = d->recentProjects.at(d->recentProjectsNames.size());
        d->recentProjectsNames.append(QFileInfo(path).completeBaseName());
    }
    d->recentFilesMenu = d->makeMenu(this, tr("Open &recent"));
    d->recentProjectsMenu = d->makeMenu(this, tr("Open &recent project"));
}

RecentFiles::~RecentFiles()
{
    Settings::write(projectsKey,
                    d->recentProjects.first(qMin(keptEntries, d->recentProjects.size())));
    Settings::write(projectNamesKey,
                    d->recentProjectsNames.first(qMin(keptEntries, d->recentProjectsNames.size())));
    Settings::write(filesKey, d->recentFiles.first(qMin(keptEntries, d->recentFiles.size())));
    Settings::forceWrite();
    Private::self = nullptr;
}

RecentFiles *RecentFiles::self()
{
    if (!Private::self)
        Private::self = new RecentFiles;
    return Private::self;
}

QMenu *RecentFiles::recentMenu() const
{
    return d->recentMenu;
}

QMenu *RecentFiles::recentFilesMenu() const
{
    return d->recentFilesMenu;
}

QMenu *RecentFiles::recentProjectsMenu() const
{
    return d->recentProjectsMenu;
}

QStringList RecentFiles::recentFiles() const
{
    return d->recentFiles;
}

QStringList RecentFiles::recentProjects() const
{
    return d->recentProjects;
}

QStringList RecentFiles::recentProjectsNames() const
{
    return d->recentProjectsNames;
}

void RecentFiles::integrate()
{
    const Action *open = Actions::action(u"Editors/toolbar/open"_s);
    if (open && !open->toolbuttons.isEmpty()) {
        delete d->recentMenu;
        d->button = open->toolbuttons.last();
        d->recentMenu = d->makeMenu(this, QString());
        d->button->setMenu(d->recentMenu);
        d->setButtonMode();
    }
    insertAfter(u"Editors/open"_s, d->recentFilesMenu);
    insertAfter(u"Project/open"_s, d->recentProjectsMenu);
}

void RecentFiles::updateRecentMenu()
{
    if (!d->recentMenu)
        return;
    for (QMenu *menu : {d->recentMenu.data(), d->recentFilesMenu, d->recentProjectsMenu})
        menu->clear();
    for (const QString &path : std::as_const(d->recentProjects)) {
        addEntry(d->recentMenu, path, Utils::iconSet(u"18x18_Project"_s));
        addEntry(d->recentProjectsMenu, path);
    }
    if (!d->recentProjects.isEmpty())
        d->recentMenu->addSeparator();
    for (const QString &path : std::as_const(d->recentFiles)) {
        addEntry(d->recentMenu, path);
        addEntry(d->recentFilesMenu, path);
    }
}

void RecentFiles::addRecent(const QString &fileName)
{
    d->recentFiles.removeOne(fileName);
    d->recentFiles.prepend(fileName);
    d->setButtonMode();
}

void RecentFiles::removeRecent(const QString &fileName)
{
    d->recentFiles.removeOne(fileName);
    d->setButtonMode();
}

void RecentFiles::addRecentProject(const QString &fileName, const QString &name)
{
    removeRecentProject(fileName);
    d->recentProjects.prepend(fileName);
    d->recentProjectsNames.prepend(name);
    d->setButtonMode();
}

void RecentFiles::removeRecentProject(const QString &fileName)
{
    const qsizetype index = d->recentProjects.indexOf(fileName);
    if (index >= 0) {
        d->recentProjects.removeAt(index);
        d->recentProjectsNames.removeAt(index);
    }
    d->setButtonMode();
}

void RecentFiles::openInternal(const QAction *entry)
{
    FileTypeManager::self()->openFile(entry->data().toString());
}

} // namespace vesk
