#include "app/actions.h"
#include "app/actiontable.h"
#include "app/filetype.h"
#include "app/project/project.h"
#include "app/project/project_p.h"
#include "app/project/recentprojects.h"
#include "app/recentfiles.h"
#include "app/settings.h"
#include "app/shell.h"
#include "app/utils.h"
#include "app/widgets/domlistview.h"
#include "app/widgetstack.h"

#include <QDialog>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QPushButton>
#include <QSpacerItem>
#include <QToolButton>

using namespace Qt::StringLiterals;

namespace vesk {

namespace {

const QString optionsWidthKey = u"/geometry/projectOptionsDialog/w"_s;
const QString optionsHeightKey = u"/geometry/projectOptionsDialog/h"_s;

const ActionRow actionRows[] = {
    {"Project/create", QT_TRANSLATE_NOOP("vesk::Project", "&New"), noKey, SLOT(create()), nullptr,
     nullptr},
    {"Project/open", QT_TRANSLATE_NOOP("vesk::Project", "&Open project"), noKey, SLOT(load()),
     "16x16_Open", nullptr},
    {"Project/save", QT_TRANSLATE_NOOP("vesk::Project", "&Save project"), noKey, SLOT(save()),
     "16x16_Save", nullptr},
    {"Project/close", QT_TRANSLATE_NOOP("vesk::Project", "&Close project"), noKey, SLOT(close()),
     nullptr, nullptr},
    {"Project/addfiles", QT_TRANSLATE_NOOP("vesk::Project", "Add f&iles"), noKey,
     SLOT(addFilesDialog()), nullptr, nullptr},
    {"Project/addfolder", QT_TRANSLATE_NOOP("vesk::Project", "Add f&older"), noKey,
     SLOT(addFolder()), nullptr, nullptr},
    {"Project/options", QT_TRANSLATE_NOOP("vesk::Project", "O&ptions"), noKey, SLOT(options()),
     nullptr, nullptr},
    {"Project/context/openfile", QT_TRANSLATE_NOOP("vesk::Project", "Open"), noKey,
     SLOT(openFile()), nullptr, nullptr},
    {"Project/addfilesto", QT_TRANSLATE_NOOP("vesk::Project", "Add files"), noKey,
     SLOT(addFilesTo()), nullptr, nullptr},
    {"Project/addfolderto", QT_TRANSLATE_NOOP("vesk::Project", "New Folder"), noKey,
     SLOT(addFolderTo()), nullptr, nullptr},
    {"Project/context/deletefile", QT_TRANSLATE_NOOP("vesk::Project", "Delete the file"), noKey,
     SLOT(deleteFile()), nullptr, nullptr},
    {"Project/context/removefile", QT_TRANSLATE_NOOP("vesk::Project", "Remove from project"), noKey,
     SLOT(removeFile()), nullptr, nullptr},
    {"Project/context/removefolder", QT_TRANSLATE_NOOP("vesk::Project", "Remove from project"),
     noKey, SLOT(removeFolder()), nullptr, nullptr},
    {"Project/focus", QT_TRANSLATE_NOOP("vesk::Project", "&Project window"), noKey,
     SLOT(makeVisible()), nullptr, "menu/Window/Docks"},
};

/// The commands that need a project.
constexpr const char *projectCommands[] = {"Project/save", "Project/close", "Project/options",
                                           "Project/addfiles", "Project/addfolder"};

struct GroupRow
{
    const char *group;
    /// Names of actions with a blank between; "-" stands for a separator.
    const char *members;
};

// A group without members keeps a place for commands to come.
constexpr GroupRow groupRows[] = {
    {"menu/Project/New", "Project/create"},
    {"menu/Project/Std", "- Project/open Project/save Project/close - Project/addfiles"},
    {"menu/Project/Options", "- Project/options"},
    {"project/context/project/add", "Project/addfolderto Project/addfilesto"},
    {"project/context/project/std", "- Project/options"},
    {"project/context/project/plugin", ""},
    {"project/context/project/close", "- Project/save Project/close"},
    {"project/context/folder/add", "Project/addfolderto Project/addfilesto"},
    {"project/context/folder/plugin", ""},
    {"project/context/folder/close", "- Project/context/removefolder - Project/close"},
    {"project/context/file/open", "Project/context/openfile"},
    {"project/context/file/std", ""},
    {"project/context/file/plugin", ""},
    {"project/context/file/close",
     "- Project/context/removefile Project/context/deletefile - Project/close"},
};

ActionGroup *contextGroup(const char *kind)
{
    return Shell::self()->actionGroup(u"project/context/"_s + QString::fromLatin1(kind));
}

} // namespace

void Project::createPanels()
{
    Shell *const shell = Shell::self();
    d->view = new DomListView(shell, u"projectView"_s);
    d->view->setWindowIcon(Utils::iconSet(u"18x18_Project"_s));
    Action *const dock = shell->addPanel(
        Dock::Left, d->view,
        {"project", tr("Project"), noKey, "22x22_Project", SLOT(makeVisible()), this});
    dock->setUsesTextLabel(true);
    for (QToolButton *const button : std::as_const(dock->toolbuttons))
        button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    d->recent = new RecentProjects(shell);
    shell->leftDock()->addWidget(d->recent);
    connect(d->recent, &RecentProjects::chosen, this, &Project::load);

    // Without an item nothing is meant, not the current one.
    const auto openNode = [this](const QDomNode &node) {
        if (!node.isNull())
            openFile();
    };
    connect(d->view, &DomListView::doubleClick, this, openNode);
    connect(d->view, &DomListView::returnPressed, this, openNode);
    connect(d->view, &DomListView::itemSelectionChanged, this, &Project::selectionChangedInternal);
    connect(d->view, &DomListView::setNodeOpen, this, &Project::setNodeOpen);
}

void Project::followFocus()
{
    Shell *const shell = Shell::self();
    connect(this, &Project::gotFocus, shell, [this, shell] { shell->focusIn(this); });
    connect(this, &Project::raised, shell, [this, shell] { shell->raiseLeftDock(this); });
    // A panel that was stored may be gone: then it is null, which means another thing here.
    connect(shell, &Shell::leftDockRaised, this, [this](QObject *panel) {
        if (panel)
            makeVisible(panel);
    });
    connect(this, &Project::message, shell,
            [shell](const QString &text) { shell->statusMessage(u"default"_s, text); });
}

void Project::createActions()
{
    addActions(this, actionRows, Labels::Translated);
    for (const GroupRow &row : groupRows) {
        ActionGroup *const group = Shell::self()->actionGroup(QString::fromLatin1(row.group));
        const QStringList members =
            QString::fromLatin1(row.members).split(u' ', Qt::SkipEmptyParts);
        for (const QString &member : members) {
            if (member == "-"_L1)
                group->addSeparator();
            else
                group->add(member);
        }
    }
    for (const char *const name : projectCommands)
        connect(this, &Project::enabled, Actions::action(QString::fromLatin1(name)),
                &QAction::setEnabled);
}

void Project::installTags()
{
    FileTypeManager *const manager = FileTypeManager::self();
    const QList<FileType *> types = *manager->fileTypes();
    for (FileType *const type : types)
        installHelper(type->name(), type, contextGroup("file"));
    manager->fileType(u"uifile"_s)->addOption(u"container"_s, u"1"_s);

    const QString project = u"project"_s;
    d->view->setActionGroup(project, contextGroup("project"));
    d->view->setIcon(project, Utils::iconSet(u"22x22_Project"_s));
    const QString folder = u"folder"_s;
    d->view->setActionGroup(folder, contextGroup("folder"));
    d->view->setIcon(folder, Utils::iconSet(u"18x18_Folder"_s));
    d->view->setListOrder(folder, 0);
}

void Project::installHelper(const QString &name, FileType *type, ActionGroup *group)
{
    if (!type)
        return;
    d->fileTypes.insert(name, type);
    if (!d->view->tagSet().contains(name))
        d->view->tagSet().append(name);
    d->view->setIcon(name, type->icon());
    d->view->setActionGroup(name, group);
    d->view->setListOrder(name, type->listOrder());
}

void Project::installHelper(const QString &name, const QPixmap &pixmap, ActionGroup *group)
{
    if (!d->view->tagSet().contains(name))
        d->view->tagSet().append(name);
    d->view->setPixmap(name, pixmap);
    d->view->setActionGroup(name, group);
}

void Project::makeVisible(QObject *raisedPanel)
{
    QWidget *const panel = hasProject() ? static_cast<QWidget *>(d->view) : d->recent;
    WidgetStack *const stack = Shell::self()->leftDock();
    if (!raisedPanel) {
        stack->raiseWidget(panel);
        if (hasProject())
            d->view->adjustContentSize();
        else
            d->recent->adjustContentSize();
        emit gotFocus();
        emit raised();
        return;
    }
    const bool isMeant = raisedPanel == this || raisedPanel == d->view || raisedPanel == d->recent;
    Actions::action(u"leftDock/project"_s)->setChecked(isMeant);
    // The page that was stored may belong to the other state.
    if (isMeant)
        stack->raiseWidget(panel);
    if (raisedPanel == this)
        panel->setFocus();
}

QWidget *Project::projectOptionsWidget() const
{
    return d->optionsWidget;
}

void Project::setProjectOptionsWidget(QWidget *widget)
{
    d->optionsWidget = widget;
}

QDialog *Project::makeOptionsDialog()
{
    auto *const dialog = new QDialog(Shell::self());
    dialog->setObjectName(u"projectOptions"_s);
    QWidget *const page = d->optionsWidget;
    page->setParent(dialog);
    page->move(0, 0);
    page->show();
    auto *const ok = new QPushButton(tr("&OK"), dialog);
    ok->setObjectName(u"buttonOk"_s);
    ok->setDefault(true);
    auto *const cancel = new QPushButton(tr("&Cancel"), dialog);
    cancel->setObjectName(u"buttonCancel"_s);
    auto *const buttons = new QHBoxLayout;
    buttons->setSpacing(6);
    buttons->addItem(new QSpacerItem(100, 20, QSizePolicy::Expanding, QSizePolicy::Minimum));
    buttons->addWidget(ok);
    buttons->addWidget(cancel);
    auto *const grid = new QGridLayout(dialog);
    grid->setContentsMargins(5, 5, 5, 5);
    grid->setSpacing(5);
    grid->addWidget(page, 0, 0);
    grid->addLayout(buttons, 1, 0);
    QWidget::setTabOrder(ok, cancel);
    connect(this, SIGNAL(projectChanged()), page, SLOT(loadSettings()));
    connect(ok, SIGNAL(clicked()), page, SLOT(saveSettings()));
    connect(ok, &QPushButton::clicked, dialog, &QDialog::accept);
    connect(cancel, &QPushButton::clicked, dialog, &QDialog::reject);
    return dialog;
}

void Project::options()
{
    if (!hasProject() || !d->optionsWidget)
        return;
    if (!d->optionsDialog)
        d->optionsDialog = makeOptionsDialog();
    QDialog *const dialog = d->optionsDialog;
    dialog->resize(Settings::readNum(optionsWidthKey, 500),
                   Settings::readNum(optionsHeightKey, 300));
    dialog->setWindowTitle(d->optionsWidget->windowTitle());
    emit projectChanged();
    dialog->exec();
    Settings::write(optionsWidthKey, dialog->width());
    Settings::write(optionsHeightKey, dialog->height());
    updateProject();
    RecentFiles::self()->removeRecentProject(filePath());
    RecentFiles::self()->addRecentProject(filePath(), attribute(u"name"_s));
    emit projectChanged();
}

} // namespace vesk
