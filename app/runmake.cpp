#include "app/runmake.h"

#include "app/actions.h"
#include "app/actiontable.h"
#include "app/editors/editor.h"
#include "app/editors/editors.h"
#include "app/messages/messageoutput.h"
#include "app/project/project.h"
#include "app/runmakeoptionswidget.h"
#include "app/scriptprocess.h"
#include "app/settings.h"
#include "app/shell.h"
#include "app/utils.h"

#include <QCheckBox>
#include <QDialog>
#include <QDir>
#include <QFileInfo>
#include <QGridLayout>
#include <QLineEdit>
#include <QPointer>
#include <QProcessEnvironment>
#include <QPushButton>

#include <optional>

using namespace Qt::StringLiterals;

namespace vesk {

namespace {

constexpr QLatin1String dialogWidthKey("/geometry/configureScriptsDialog/w");
constexpr QLatin1String dialogHeightKey("/geometry/configureScriptsDialog/h");

// "std" is written so on purpose: a section of its own at the end of the menu.
const ActionRow actionRows[] = {
    {"RunMake/configure", QT_TRANSLATE_NOOP("vesk::RunMake", "Configure &scripts"), noKey,
     SLOT(configure()), nullptr, "menu/Options/std"},
    {"RunMake/run", QT_TRANSLATE_NOOP("vesk::RunMake", "Run"), Qt::Key_F5, SLOT(run()), "16x24_Run",
     "toolbar/Run"},
    {"RunMake/make", QT_TRANSLATE_NOOP("vesk::RunMake", "Make"), Qt::Key_F9, SLOT(make()),
     "16x24_Make", "toolbar/Run"},
};

/// Where one of the two scripts is kept.
struct ScriptPlace
{
    QLatin1String attribute;
    QLatin1String argsAttribute;
    QString Scripts::*script;
    QString Scripts::*args;
};

constexpr ScriptPlace runPlace = {QLatin1String("runScript"), QLatin1String("runScriptArgs"),
                                  &Scripts::run, &Scripts::runArgs};
constexpr ScriptPlace makePlace = {QLatin1String("makeScript"), QLatin1String("makeScriptArgs"),
                                   &Scripts::make, &Scripts::makeArgs};

/// What is to be started.
struct Command
{
    QString line;
    QString folder;
};

/// The command's name and arguments stand between blanks; there is no quoting.
QStringList argumentsOf(const Command &command)
{
    return command.line.split(u' ', Qt::SkipEmptyParts);
}

/// Tells a script where the user is, in a way that names with blanks survive.
QProcessEnvironment environment()
{
    QProcessEnvironment result = QProcessEnvironment::systemEnvironment();
    const Editor *const editor = Editors::self()->current();
    const QString file = editor->filename();
    result.insert(u"VESK_FILE"_s, file);
    result.insert(u"VESK_DIR"_s, file.isEmpty() ? QString() : QFileInfo(file).absolutePath());
    result.insert(u"VESK_LINE"_s, QString::number(editor->cursorLine() + 1));
    result.insert(u"VESK_PROJECT_DIR"_s, Project::self()->dirPath());
    return result;
}

/// The row of an event of a process, with a text that may hold anything.
void insertRow(const char *color, const QString &text)
{
    MessageOutput::self()->insertText(u"#color{%1}"_s.arg(QLatin1String(color)), text);
}

/// Brings the list into sight, also out of a dock that was dragged shut.
void showMessages()
{
    MessageOutput::self()->makeVisible();
}

bool isDockShown()
{
    const QWidget *const dock = Shell::self()->bottomDockWidget();
    return !dock->isHidden() && dock->height() > 0;
}

} // namespace

struct RunMake::Private
{
    static RunMake *self;

    std::optional<Command> askCommand(RunMake *q, const ScriptPlace &place);
    ScriptProcess *newProcess(RunMake *q, const Command &command);
    bool start(ScriptProcess *process, const Command &command);
    void showMaking(bool on);

    QPointer<RunMakeOptionsWidget> optionsWidget;
    bool bottomDockWasShown = false;
    bool making = false;
    QPointer<ScriptProcess> makeProcess;
};

RunMake *RunMake::Private::self = nullptr;

RunMake::RunMake() : QObject(Shell::self()), d(std::make_unique<Private>())
{
    setObjectName(u"vesk::RunMake"_s);
    d->optionsWidget = new RunMakeOptionsWidget(nullptr);
    Project::self()->setProjectOptionsWidget(d->optionsWidget);
    addActions(this, actionRows, Labels::Translated);
    for (const QString &name : {u"RunMake/run"_s, u"RunMake/make"_s}) {
        Action *const action = Actions::action(name);
        action->setUsesTextLabel(true);
        action->setTextPosition(Qt::ToolButtonTextBesideIcon);
    }
}

RunMake::~RunMake()
{
    Project::self()->setProjectOptionsWidget(nullptr);
    // Nobody's until the dialog takes it.
    const std::unique_ptr<QWidget> page(d->optionsWidget);
    Private::self = nullptr;
}

RunMake *RunMake::self()
{
    if (!Private::self)
        Private::self = new RunMake;
    return Private::self;
}

std::optional<Command> RunMake::Private::askCommand(RunMake *q, const ScriptPlace &place)
{
    Project *const project = Project::self();
    QString line;
    QString args;
    QString folder;
    if (project->hasProject()) {
        line = project->attribute(place.attribute);
        if (line.isEmpty()) {
            project->options();
            line = project->attribute(place.attribute);
        }
        args = project->attribute(place.argsAttribute);
        folder = project->dirPath();
    }
    if (line.isEmpty()) {
        if ((Scripts::global().*place.script).isEmpty())
            q->configure();
        const Scripts scripts = Scripts::global();
        line = scripts.*place.script;
        args = scripts.*place.args;
        // Meant: the path of a file is no folder, so the process starts in the editor's.
        const QString file = Editors::self()->current()->filename();
        folder = QDir(file).filePath(file);
    }
    if (line.isEmpty())
        return std::nullopt;
    if (!args.isEmpty())
        line += u' ' + args;
    line.replace(u"%s"_s, Editors::self()->current()->filename());
    return Command{line, folder};
}

/// A process that is told to be about to start.
ScriptProcess *RunMake::Private::newProcess(RunMake *q, const Command &command)
{
    MessageOutput::self()->clear();
    insertRow("#000000", command.line);
    auto *const process = new ScriptProcess(argumentsOf(command), command.folder, q);
    process->setProcessEnvironment(environment());
    QObject::connect(process, &ScriptProcess::rowsCame, q, &RunMake::showRows);
    QObject::connect(process, &QProcess::finished, q, [q, process] { q->processExited(process); });
    return process;
}

bool RunMake::Private::start(ScriptProcess *process, const Command &command)
{
    if (process->run())
        return true;
    insertRow("#f00000", tr("Can't run %1 process.").arg(command.line));
    process->deleteLater();
    return false;
}

void RunMake::run()
{
    const std::optional<Command> command = d->askCommand(this, runPlace);
    if (!command)
        return;
    ScriptProcess *const process = d->newProcess(this, *command);
    showMessages();
    d->start(process, *command);
}

void RunMake::make()
{
    if (d->making) {
        d->makeProcess->terminate();
        return;
    }
    const std::optional<Command> command = d->askCommand(this, makePlace);
    if (!command)
        return;
    ScriptProcess *const process = d->newProcess(this, *command);
    d->bottomDockWasShown = isDockShown();
    showMessages();
    if (!d->start(process, *command))
        return;
    d->makeProcess = process;
    d->showMaking(true);
}

/// The command for make is that for stopping meanwhile.
void RunMake::Private::showMaking(bool on)
{
    making = on;
    Action *const action = Actions::action(u"RunMake/make"_s);
    action->setIcon(Utils::iconSet(on ? u"22x22_Stop"_s : u"16x24_Make"_s));
    action->setText(on ? tr("Stop") : tr("Make"));
    Actions::action(u"RunMake/run"_s)->setEnabled(!on);
}

void RunMake::showRows(const QList<OutputRow> &rows)
{
    for (const OutputRow &row : rows) {
        const QString color =
            row.stream == OutputStream::Error ? u"#color{#f00000}"_s : u"#color{black}"_s;
        if (row.place.file.isEmpty())
            MessageOutput::self()->insertText(color, row.text);
        else
            MessageOutput::self()->insertText(color, row.text, row.place.line, row.place.file);
    }
}

void RunMake::processExited(ScriptProcess *process)
{
    // Of a killed one the number of the signal.
    const int code = process->exitCode();
    insertRow("#000080",
              tr("%1 finished. Exit code %2").arg(process->name(), QString::number(code)));
    if (process == d->makeProcess) {
        if (code == 0 && process->exitStatus() == QProcess::NormalExit)
            Shell::self()->bottomDockWidget()->setVisible(d->bottomDockWasShown);
        d->showMaking(false);
    }
    process->deleteLater();
}

void RunMake::configure()
{
    QDialog dialog(Shell::self());
    dialog.setObjectName(u"configureScripts"_s);
    auto *const grid = new QGridLayout(&dialog);
    grid->setContentsMargins(5, 5, 5, 5);
    grid->setSpacing(5);
    auto *const page = new RunMakeOptionsWidget(&dialog);
    grid->addWidget(page, 0, 0, 1, 3);
    grid->addItem(new QSpacerItem(100, 20, QSizePolicy::Expanding), 1, 0);
    auto *const ok = new QPushButton(tr("&OK"), &dialog);
    auto *const cancel = new QPushButton(tr("&Cancel"), &dialog);
    grid->addWidget(ok, 1, 1);
    grid->addWidget(cancel, 1, 2);
    grid->setRowStretch(0, 1);
    ok->setDefault(true);
    connect(ok, &QPushButton::clicked, &dialog, &QDialog::accept);
    connect(cancel, &QPushButton::clicked, &dialog, &QDialog::reject);
    dialog.resize(Settings::readNum(dialogWidthKey, 500), Settings::readNum(dialogHeightKey, 300));
    dialog.setWindowTitle(page->windowTitle());
    page->setScripts(Scripts::global());
    page->defaultScriptsCheckBox->setChecked(
        Settings::readBool(RunMakeOptionsWidget::useDefaultsKey));
    page->makeLineEdit->setFocus();
    if (dialog.exec() == QDialog::Accepted) {
        page->scripts().storeGlobal();
        Settings::write(RunMakeOptionsWidget::useDefaultsKey,
                        page->defaultScriptsCheckBox->isChecked());
    }
    Settings::write(dialogWidthKey, dialog.width());
    Settings::write(dialogHeightKey, dialog.height());
}

} // namespace vesk
