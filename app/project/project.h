#pragma once

#include <QDomDocument>
#include <QObject>
#include <QPixmap>
#include <QStringList>

#include <memory>
#include <utility>

class QDialog;
class QWidget;

namespace vesk {

class ActionGroup;
class DomListView;
class FileType;
class ProjectFile;

/// The open project: its document, the tree in the left dock that mirrors it, and the
/// commands on both. One project at most is open. Closing saves it; there is no
/// modified flag.
///
/// The first self() makes it; `Components` deletes it before the main window. At its
/// end it stores which project is open, for the next start, and saves that one.
class Project : public QObject
{
    Q_OBJECT
public:
    ~Project() override;

    static Project *self();

    bool hasProject() const;
    /// Absolute path of the project file, empty without a project.
    QString filePath() const;
    void setFilePath(const QString &path);
    /// The folder of the project file, without a separator at its end.
    QString dirPath() const;

    /// Attributes of the project element; a missing one is a null string.
    QString attribute(const QString &name) const;
    void setAttribute(const QString &name, const QString &value);
    bool hasAttribute(const QString &name) const;

    QDomNode rootNode() const;
    QDomDocument domDocument() const;
    void setDomDocument(const QDomDocument &document);
    DomListView *domView() const;

    /// The path of each file in the tree of the project.
    QStringList localNames() const;
    /// The absolute paths of the files below the node \a localName, of all for an
    /// empty one.
    QStringList filePaths(const QString &localName = QString()) const;
    /// The local names of all that can hold files, "/" first.
    QStringList folders() const;
    QString node2localName(const QDomNode &node) const;
    QString node2filePath(const QDomNode &node) const;
    /// Null if there is no such node.
    QDomNode localName2node(const QString &localName) const;
    QDomNode filePath2node(const QString &path) const;

    /// Of the current item; null or empty without one.
    QDomNode selectedNode() const;
    QString selectedFilePath() const;
    /// Of all selected items below the top one, folders too, as they stand in the tree.
    QStringList selectedFilePaths() const;
    QStringList selectedLocalNames() const;

    /// The page of the options dialog, with the slots loadSettings() and saveSettings().
    QWidget *projectOptionsWidget() const;
    /// \a widget goes over to the dialog when that is first shown.
    void setProjectOptionsWidget(QWidget *widget);

    /// Shows elements of the tag \a name, with the icon and the list order of \a type
    /// and the context menu \a group; new files of that type get the tag.
    void installHelper(const QString &name, FileType *type, ActionGroup *group);
    /// Shows elements of the tag \a name, which no file gets.
    void installHelper(const QString &name, const QPixmap &pixmap, ActionGroup *group);

    /// Saves the project because the program is about to end. False if that failed
    /// and the user wants to stay.
    bool mayLeave();

public slots:
    virtual void create();
    /// Asks for a file if \a path is empty. The project that is open is closed first.
    virtual void load(const QString &path = QString());
    /// Writes to \a path, or to filePath() if that is empty.
    virtual void save(const QString &path = QString());
    /// Does nothing if the project can't be saved and the user wants to keep it.
    virtual void close();
    virtual void options();
    /// Makes the tree what the document says.
    void updateProject();
    /// Opens the file of the current item.
    void openFile();
    /// Asks for files and adds them at the current item. Does nothing for a \a dest.
    void addFilesTo(const QString &dest = QString());
    /// Adds \a files, or what the user chooses if there are none, below the folder
    /// \a dest of the project, and copies there those that are elsewhere. Their nodes
    /// go below \a toNode where that is not null.
    void addFiles(const QStringList &files, const QString &dest, const QDomNode &toNode);
    void addFilesDialog();
    /// Asks for a folder to make below the current item. Does nothing for a \a dest.
    void addFolderTo(const QString &dest = QString());
    /// Makes the folder \a name and those above it; asks if it is empty.
    void addFolder(const QString &name = QString());
    /// Takes a node out of the project, the current one if \a name is empty; the disk
    /// is left alone.
    void removeFile(const QString &name = QString());
    /// Without a \a name the file of the current node is moved to the trash too.
    void deleteFile(const QString &name = QString());
    void removeFolder(const QString &name = QString());
    /// Brings the tree, or without a project the list of recent ones, to the top. With
    /// \a raised, the panel that the dock has raised, it takes the focus if it is meant.
    void makeVisible(QObject *raised = nullptr);
    void selectionChangedInternal();
    /// Says what went wrong while the project of the last run was loaded: boxes are for
    /// a window that is there.
    void tellOfStart();

signals:
    /// The content changed by a command, or may be changed by the options.
    void projectChanged();
    void loaded();
    void saved();
    void closed();
    /// Whether there is a project to work on.
    void enabled(bool on);
    void message(const QString &text);
    /// The local name of the current item, null if there is none.
    void selectionChanged(const QString &localName);
    void setNodeOpen(const QDomNode &node, bool open);
    void raised();
    void gotFocus();

private:
    Project();

    enum class Ending
    {
        Saved,
        /// The user does without saving.
        Unsaved,
        StaysOpen
    };

    void createPanels();
    QDialog *makeOptionsDialog();
    void createActions();
    void installTags();
    void restore();
    void followFocus();
    void showRecent();
    void tell(const QString &caption, const QString &text);

    bool open(const QString &path);
    bool write(ProjectFile &target, const QDomDocument &document);
    bool saveOrTell(ProjectFile &target, const QDomDocument &document);
    Ending saveForEnd();
    void describe(const QString &text);

    enum class NodeUrl
    {
        None,
        Written
    };

    QList<QDomNode> selectedNodes() const;
    std::pair<QString, const FileType *> tagOf(const QString &name) const;
    bool mayWriteTo(const QString &path) const;
    bool canName(const QString &name) const;
    bool createDirectory(const QString &dest);
    QDomNode createNodes(const QString &dest);
    QDomNode createFolder(const QString &dest);
    QStringList askFiles();
    QStringList bringTo(const QString &dest, const QStringList &files);
    void addNodes(const QStringList &names, const QString &dest, QDomNode parent, NodeUrl nodeUrl);
    void openItemOf(const QDomNode &node);
    bool removeNode(const QString &name);

    struct Private;
    const std::unique_ptr<Private> d;
};

} // namespace vesk
