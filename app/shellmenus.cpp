#include "app/shell.h"

#include "app/actions.h"
#include "app/shell_p.h"

#include <QMenuBar>
#include <QToolBar>

namespace vesk {

ActionGroup *Shell::Private::newGroup(Shell *shell, const QString &path, const QString &title)
{
    auto *const group = new ActionGroup(shell, path);
    group->setText(title);
    group->setMenuText(title);
    groups.insert(path, group);
    return group;
}

ActionGroup *Shell::actionGroup(const QString &name)
{
    if (ActionGroup *const known = d->groups.value(name))
        return known;
    const QStringList items = name.split(QLatin1Char('/'), Qt::SkipEmptyParts);
    QString path;
    ActionGroup *previous = nullptr;
    for (int level = 0; level < items.size(); ++level) {
        const QString &item = items.at(level);
        if (level == 1) {
            if (items.first() == QLatin1String("menu") && item != QLatin1String("Help") &&
                !d->menuGroups.contains(item))
                d->menuGroups.append(item);
            if (items.first() == QLatin1String("toolbar") && !d->toolbarGroups.contains(item))
                d->toolbarGroups.append(item);
        }
        path += item;
        ActionGroup *group = d->groups.value(path);
        if (!group) {
            group = d->newGroup(this, path, item);
            if (previous)
                previous->add(group);
        }
        previous = group;
        path += QLatin1Char('/');
    }
    return previous;
}

void Shell::initActionGroups()
{
    struct Row
    {
        const char *group;
        const char *sections;
    };
    static constexpr Row rows[] = {
        {"menu/File", "New Open Close Save Misc Quit"},
        {"menu/Edit", "Std Misc"},
        {"menu/View", "Std Misc"},
        {"menu/Search", "Find Replace Misc"},
        {"menu/Project", "New Std Options Misc"},
        {"menu/Build", "Std Misc"},
        {"menu/Run", "Std Debug Misc"},
        {"menu/Tools", "Misc"},
        {"menu/Options", "Main Std Misc"},
        {"menu/Window", "Docks Components Misc"},
        {"menu/Help", "Std Misc"},
        {"toolbar/File", "New Open Save Misc"},
        {"toolbar/Edit", ""},
        {"toolbar/Search", ""},
        {"toolbar/Navigation", ""},
        {"toolbar/Misc", ""},
        {"toolbar/Tools", ""},
        {"toolbar/Run", ""},
        {"docks/left", ""},
        {"docks/bottom", ""},
    };
    for (const Row &row : rows) {
        const QString group = QString::fromLatin1(row.group);
        actionGroup(group);
        if (group == QLatin1String("menu/Build"))
            actionGroup(group)->setVisible(false);
        const QStringList sections =
            QString::fromLatin1(row.sections).split(QLatin1Char(' '), Qt::SkipEmptyParts);
        for (const QString &section : sections)
            actionGroup(group + QLatin1Char('/') + section);
    }
    actionGroup(QStringLiteral("docks/left"))->setExclusive(true);
    actionGroup(QStringLiteral("docks/bottom"))->setExclusive(true);
}

void Shell::rebuildUI()
{
    d->buildMenus(this);
    d->buildToolBars(this);
    d->showDocksWithPanels(this);
    emit uiRebuilded();
}

void Shell::Private::buildMenus(Shell *shell)
{
    QMenuBar *const bar = shell->menuBar();
    bar->clear();
    // Later, because the command that asks for the rebuild may stand in one.
    for (const QPointer<QMenu> &menu : std::as_const(menus)) {
        if (menu)
            menu->deleteLater();
    }
    menus.clear();
    for (const QString &name : std::as_const(menuGroups)) {
        auto menu = std::make_unique<QMenu>();
        shell->actionGroup(QStringLiteral("menu/") + name)->addTo(menu.get());
        if (menu->actions().isEmpty())
            continue;
        menu->setTitle(Shell::tr(qPrintable(QLatin1Char('&') + name)));
        menu->setParent(bar, menu->windowFlags());
        bar->addMenu(menu.get());
        menus.append(menu.release());
    }
}

void Shell::Private::buildToolBars(Shell *shell)
{
    for (const QPointer<QToolBar> &bar : std::as_const(toolbars)) {
        if (!bar)
            continue;
        shell->removeToolBar(bar);
        bar->deleteLater();
    }
    toolbars.clear();
    for (const QString &name : std::as_const(toolbarGroups)) {
        const ActionGroup *const group = shell->actionGroup(QStringLiteral("toolbar/") + name);
        if (group->count() == 0)
            continue;
        auto *const bar = new QToolBar(name, shell);
        bar->setIconSize(QSize(22, 22));
        shell->addToolBar(Qt::TopToolBarArea, bar);
        group->addTo(bar);
        toolbars.append(bar);
    }
}

} // namespace vesk
