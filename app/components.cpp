#include "app/components.h"

#include "app/bookmarks/bookmarks.h"
#include "app/ctags/ctagsparser.h"
#include "app/ctags/tagspanel.h"
#include "app/editors/editors.h"
#include "app/editors/editorstab.h"
#include "app/explorer/explorerpanel.h"
#include "app/filetype.h"
#include "app/messages/messageoutput.h"
#include "app/project/project.h"
#include "app/runmake.h"
#include "app/search/searchmanager.h"
#include "app/shell.h"

#include <QFileInfo>

namespace vesk {

Components::Components()
    : window(std::make_unique<Shell>(nullptr, QStringLiteral("vesk::Shell")))
    , editors(std::make_unique<Editors>(*window))
    , tabs(std::make_unique<EditorsTab>(*editors))
    , tagParser(CTagsParser::self())
{
    FileTypeManager::self()->setParser(tagParser.get());
    tabs->setTabPosition(EditorsTab::Bottom);
    window->setWorkspaceTabs(tabs.get());
}

Components::~Components()
{
    // Before the panels leave the docks. The members go after this, last one first.
    window->saveGeometryOnce();
    FileTypeManager::self()->setParser(nullptr);
}

void Components::openArguments()
{
    QStringList files;
    QStringList unreadable;
    const QStringList arguments = QCoreApplication::arguments().mid(1);
    for (const QString &argument : arguments) {
        const QFileInfo file(argument);
        // Absolute, so that the session finds it again from any folder and no
        // second editor opens for the same file.
        if (file.exists())
            files.append(file.absoluteFilePath());
        else if (argument.contains(QChar::ReplacementCharacter))
            unreadable.append(argument);
    }
    editors->openAll(files);
    for (const QString &name : std::as_const(unreadable))
        editors->tellFailure(tr("Cannot open %1: its name is not UTF-8").arg(name));
}

void Components::makePanels()
{
    bookmarks.reset(Bookmarks::self());
    explorer.reset(ExplorerPanel::self());
    project.reset(Project::self());
    window->setLeaveQuestion([this] { return project->mayLeave() && editors->closeAll(); });
    messages.reset(MessageOutput::self());
    tags.reset(TagsPanel::self());
    QObject::connect(project.get(), &Project::loaded, tags.get(), &TagsPanel::enableClassesAll);
    QObject::connect(project.get(), &Project::closed, tags.get(), &TagsPanel::disableClassesAll);
    search.reset(SearchManager::self());
    runMake.reset(RunMake::self());
}

} // namespace vesk
