#pragma once

#include <QCoreApplication>

#include <memory>

namespace vesk {

class Bookmarks;
class CTagsParser;
class Editors;
class EditorsTab;
class ExplorerPanel;
class MessageOutput;
class Project;
class RunMake;
class SearchManager;
class Shell;
class TagsPanel;

/// Owns what the program consists of. What is written first is made first and
/// deleted last; a component may use those before it, through its arguments or
/// their self(). Where something stands in menus and docks is decided by the
/// groups of the shell, not by this order.
class Components
{
    Q_DECLARE_TR_FUNCTIONS(Components)
public:
    /// Makes the window with the editors in it.
    Components();
    ~Components();
    Q_DISABLE_COPY_MOVE(Components)

    Shell *shell() const { return window.get(); }

    /// Opens the files that the command line names. Others are passed over, without
    /// a word unless their very name is the reason. Done before the panels exist:
    /// none of them has taken over a file type yet.
    void openArguments();
    /// Makes the components that work on the editors, with their panels.
    void makePanels();

private:
    std::unique_ptr<Shell> window;
    std::unique_ptr<Editors> editors;
    std::unique_ptr<EditorsTab> tabs;
    std::unique_ptr<CTagsParser> tagParser;
    std::unique_ptr<Bookmarks> bookmarks;
    std::unique_ptr<ExplorerPanel> explorer;
    std::unique_ptr<Project> project;
    std::unique_ptr<MessageOutput> messages;
    std::unique_ptr<TagsPanel> tags;
    std::unique_ptr<SearchManager> search;
    std::unique_ptr<RunMake> runMake;
};

} // namespace vesk
