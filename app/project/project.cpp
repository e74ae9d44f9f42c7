#include "app/project/project.h"

#include "app/filedialog.h"
#include "app/filetype.h"
#include "app/message.h"
#include "app/project/newprojectwizard.h"
#include "app/project/project_p.h"
#include "app/project/projectnodes.h"
#include "app/project/projectxml.h"
#include "app/project/recentprojects.h"
#include "app/recentfiles.h"
#include "app/settings.h"
#include "app/shell.h"
#include "app/utils.h"
#include "app/widgets/domlistview.h"
#include "app/widgetstack.h"

#include <QDir>
#include <QFileInfo>
#include <QLineEdit>
#include <QTextEdit>

#include <cmath>
#include <utility>

using namespace Qt::StringLiterals;

namespace vesk {

namespace {

const QString addDirKey = u"/project/lastAddDir"_s;
const QString loadDirKey = u"/project/lastLoadDir"_s;
const QString addFilesDirKey = u"/project/lastAddFilesDir"_s;
const QString openedKey = u"/project/openedProject"_s;

/// The highest version of the format that is known here.
constexpr double knownVersion = 8;

/// What XML cannot hold, such as a control character that was pasted, is left out.
QString holdable(const QString &text)
{
    QString result;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const qsizetype length = text.at(i).isHighSurrogate() ? 2 : 1;
        const QStringView character = QStringView(text).mid(i, length);
        if (ProjectXml::canHold(character)) {
            result += character;
            i += length - 1;
        }
    }
    return result;
}

bool mayReplace(const QString &path)
{
    const QString question =
        Project::tr("The file:\n'%1'\nexists already. Do you want to replace it?").arg(path);
    return Message::warning(Project::tr("Warning"), question, Project::tr("&Replace"),
                            Project::tr("&Cancel"), QString(), 1, 1) == 0;
}

/// The path that \a wizard names. Empty if it was rejected; the user who doesn't want
/// to replace a file gets back to it.
QString askNewProject(NewProjectWizard &wizard)
{
    while (wizard.exec() == QDialog::Accepted) {
        const QString path =
            QDir::cleanPath(QFileInfo(wizard.lineDirectory->text() + QDir::separator() +
                                      wizard.lineFileName->text())
                                .absoluteFilePath());
        if (!QFileInfo::exists(path) || mayReplace(path))
            return path;
    }
    return QString();
}

} // namespace

Project *Project::Private::self = nullptr;

Project *Project::self()
{
    if (!Private::self)
        new Project;
    return Private::self;
}

Project::Project() : QObject(Shell::self()), d(std::make_unique<Private>())
{
    Private::self = this;
    setObjectName(u"vesk::Project"_s);
    FileTypeManager::self()
        ->fileType(u"project"_s)
        ->installAssociacion(this, SLOT(load(const QString &)));
    createPanels();
    createActions();
    installTags();
    followFocus();
    showRecent();
    emit enabled(false);
    restore();
    d->isStarting = false;
}

Project::~Project()
{
    Settings::write(openedKey, filePath());
    if (hasProject()) {
        const bool isSaved = (d->isSettled && Shell::self()->isLeaving()) ||
                             (!d->file.isChanged() && write(d->file, d->doc));
        if (!isSaved)
            qWarning("The project %s is not saved", qPrintable(filePath()));
        d->drop();
    }
    Settings::write(addDirKey, d->lastAddDir);
    Settings::write(loadDirKey, d->lastLoadDir);
    Settings::write(addFilesDirKey, d->lastAddFilesDir);
    Settings::forceWrite();
    Private::self = nullptr;
}

void Project::restore()
{
    const QString home = QDir::homePath();
    d->lastAddDir = Settings::read(addDirKey, home);
    d->lastLoadDir = Settings::read(loadDirKey, home);
    d->lastAddFilesDir = Settings::read(addFilesDirKey, home);
    const QString opened = Settings::read(openedKey);
    if (!opened.isEmpty() && QFileInfo::exists(opened))
        load(opened);
}

bool Project::hasProject() const
{
    return !d->file.path().isEmpty();
}

QString Project::filePath() const
{
    return d->file.path();
}

void Project::setFilePath(const QString &path)
{
    d->file = ProjectFile(path);
}

QString Project::dirPath() const
{
    return d->file.dirPath();
}

QString Project::attribute(const QString &name) const
{
    return d->root.toElement().attribute(name);
}

void Project::setAttribute(const QString &name, const QString &value)
{
    d->root.toElement().setAttribute(name, holdable(value));
}

bool Project::hasAttribute(const QString &name) const
{
    return d->root.toElement().hasAttribute(name);
}

QDomNode Project::rootNode() const
{
    return d->root;
}

QDomDocument Project::domDocument() const
{
    return d->doc;
}

void Project::setDomDocument(const QDomDocument &document)
{
    d->view->clear();
    d->doc = document;
    d->root = ProjectXml::projectElement(d->doc);
    if (!d->root.isNull())
        d->view->setDomTree(d->root);
    if (d->view->rootItem())
        d->view->setOpen(d->view->rootItem(), true);
}

DomListView *Project::domView() const
{
    return d->view;
}

/// At the start a box would come before the window.
void Project::tell(const QString &caption, const QString &text)
{
    if (d->isStarting)
        d->startNotices.append({caption, text});
    else
        Message::information(caption, text);
}

void Project::tellOfStart()
{
    while (!d->startNotices.isEmpty()) {
        const auto [caption, text] = d->startNotices.takeFirst();
        Message::information(caption, text);
    }
}

void Project::load(const QString &path)
{
    QString chosen = path;
    if (chosen.isEmpty())
        chosen = FileDialog::openFileName(tr("Load project..."), d->lastLoadDir,
                                          tr("Vesk project files (*.vesk);;All files (*)"),
                                          u"Project::load"_s);
    if (!chosen.isEmpty())
        open(chosen);
}

bool Project::open(const QString &path)
{
    const QString absolute = QFileInfo(path).absoluteFilePath();
    d->lastLoadDir = QFileInfo(absolute).absolutePath();
    ProjectFile file(absolute);
    const auto isReadable = [&](ProjectFile::Reading reading) {
        if (reading == ProjectFile::Reading::Unreadable)
            tell(tr("Error"), tr("Can't open project file:\n'%1'").arg(path));
        if (reading == ProjectFile::Reading::TooLarge)
            tell(tr("Error"), tr("The project file:\n'%1'\nis too large.").arg(path));
        return reading == ProjectFile::Reading::Done;
    };
    if (!isReadable(file.canRead()))
        return false;
    if (hasProject()) {
        close();
        if (hasProject())
            return false;
    }
    // Not before: it may be the very file that was saved just now.
    QByteArray bytes;
    if (!isReadable(file.read(&bytes)))
        return false;
    const QDomDocument doc = ProjectXml::parse(bytes);
    if (doc.isNull()) {
        tell(tr("Error"), tr("File:\n'%1'\nis not Vesk project file.").arg(path));
        return false;
    }
    setDomDocument(doc);
    if (!d->view->rootItem()) {
        d->drop();
        tell(tr("Error"), tr("XML file:\n'%1'\nhave wrong contents.").arg(path));
        return false;
    }
    if (std::trunc(attribute(u"version"_s).toDouble()) > knownVersion)
        tell(tr("Warning"),
             tr("The project:\n'%1'\nwas created by higher version of Vesk.").arg(path));
    d->file = file;
    emit message(tr("Project file loaded."));
    emit enabled(true);
    emit loaded();
    RecentFiles::self()->addRecentProject(filePath(), attribute(u"name"_s));
    makeVisible(nullptr);
    return true;
}

void Project::Private::drop()
{
    view->clear();
    file = ProjectFile();
    root = QDomNode();
    doc = QDomDocument();
}

bool Project::write(ProjectFile &target, const QDomDocument &document)
{
    d->view->clearSelection();
    if (ProjectXml::dropTransient(d->root))
        d->view->syncToDom();
    const auto tellBegin = [this, &target, isTold = false]() mutable {
        if (!std::exchange(isTold, true))
            emit message(tr("Saving project file: %1").arg(target.path()));
    };
    QString error;
    if (!target.write(ProjectXml::toBytes(document), tellBegin, &error)) {
        emit message(tr("Cannot save %1: %2").arg(target.path(), error));
        return false;
    }
    emit saved();
    return true;
}

bool Project::saveOrTell(ProjectFile &target, const QDomDocument &document)
{
    if (write(target, document))
        return true;
    Message::information(tr("Error"), tr("Can't open file:\n'%1' for writing.").arg(target.path()));
    return false;
}

void Project::save(const QString &path)
{
    if (!path.isEmpty() && path != filePath()) {
        ProjectFile target(QFileInfo(path).absoluteFilePath());
        saveOrTell(target, d->doc);
        return;
    }
    if (!hasProject())
        return;
    if (d->file.isChanged()) {
        const QString question = tr("The project file:\n'%1'\nwas changed by another program. "
                                    "Do you want to overwrite it?")
                                     .arg(filePath());
        if (Message::warning(tr("Warning"), question, tr("&Overwrite"), tr("&Cancel"), QString(), 1,
                             1) != 0)
            return;
    }
    saveOrTell(d->file, d->doc);
}

Project::Ending Project::saveForEnd()
{
    if (d->file.isChanged()) {
        const QString question = tr("The project file:\n'%1'\nwas changed by another program. "
                                    "Do you want to overwrite it?")
                                     .arg(filePath());
        const int answer = Message::warning(tr("Warning"), question, tr("&Overwrite"),
                                            tr("&Don't save"), tr("&Cancel"), 2, 2);
        if (answer != 0)
            return answer == 1 ? Ending::Unsaved : Ending::StaysOpen;
    }
    if (saveOrTell(d->file, d->doc))
        return Ending::Saved;
    const QString question =
        tr("The project:\n'%1'\nis not saved. Do you want to close it all the same?")
            .arg(filePath());
    const int answer = Message::warning(tr("Warning"), question, tr("&Close without saving"),
                                        tr("&Keep open"), QString(), 1, 1);
    return answer == 0 ? Ending::Unsaved : Ending::StaysOpen;
}

void Project::close()
{
    if (!hasProject() || saveForEnd() == Ending::StaysOpen)
        return;
    d->drop();
    emit enabled(false);
    emit projectChanged();
    emit closed();
    showRecent();
}

bool Project::mayLeave()
{
    d->isSettled = !hasProject() || saveForEnd() != Ending::StaysOpen;
    return d->isSettled;
}

void Project::create()
{
    NewProjectWizard wizard(Shell::self());
    const QString path = askNewProject(wizard);
    if (path.isEmpty())
        return;
    close();
    if (hasProject())
        return;
    const QString folder = QFileInfo(path).absolutePath();
    if (!Utils::createDirectory(folder)) {
        Message::information(tr("Error"), tr("Can't create directory: '%1'").arg(folder));
        return;
    }
    ProjectFile file(path);
    if (!saveOrTell(file, ProjectXml::parse(ProjectXml::newProject(wizard.lineName->text()))))
        return;
    // It is saved with the project, at the latest when that is closed.
    if (open(path))
        describe(wizard.textEditDescription->toPlainText());
    emit projectChanged();
}

void Project::describe(const QString &text)
{
    QDomElement description = d->doc.createElement(u"description"_s);
    description.appendChild(d->doc.createTextNode(holdable(text)));
    d->root.appendChild(description);
}

void Project::showRecent()
{
    Shell::self()->leftDock()->raiseWidget(d->recent);
    emit Shell::self()->leftDockRaised(d->recent);
    d->recent->updateRecent();
    // The editor has the focus at the start.
    if (!d->isStarting)
        d->recent->setFocus();
}

} // namespace vesk
