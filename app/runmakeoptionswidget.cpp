#include "app/runmakeoptionswidget.h"

#include "app/filedialog.h"
#include "app/project/project.h"
#include "app/settings.h"

#include <QCheckBox>
#include <QDir>
#include <QFileInfo>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QToolButton>

using namespace Qt::StringLiterals;

namespace vesk {

namespace {

constexpr QLatin1String lastRunFolderKey("/scripts/lastRunFolder");
constexpr QLatin1String lastMakeFolderKey("/scripts/lastMakeFolder");
/// The toolkit's own limit would cut what a project file holds.
constexpr int longestScript = 1 << 24;

struct ScriptField
{
    QLatin1String settingsKey;
    QLatin1String attribute;
    QString Scripts::*value;
};

constexpr ScriptField fields[] = {
    {QLatin1String("/scripts/makeProject"), QLatin1String("makeScript"), &Scripts::make},
    {QLatin1String("/scripts/makeProjectArgs"), QLatin1String("makeScriptArgs"),
     &Scripts::makeArgs},
    {QLatin1String("/scripts/runProject"), QLatin1String("runScript"), &Scripts::run},
    {QLatin1String("/scripts/runProjectArgs"), QLatin1String("runScriptArgs"), &Scripts::runArgs},
};

/// Asks for a script, from where the last one was, and puts its path into \a edit.
void selectScript(const QString &key, QLineEdit *edit)
{
    QString home = QDir::homePath();
    if (!home.endsWith(QDir::separator()))
        home += QDir::separator();
    // The last one chosen, or a folder.
    const QFileInfo last(Settings::read(key, home));
    const QString folder = last.isDir() ? last.filePath() : last.path();
    const QString script =
        FileDialog::openFileName(QString(), folder, RunMakeOptionsWidget::tr("Any files (*)"));
    if (script.isEmpty())
        return;
    Settings::write(key, script);
    edit->setText(QDir::toNativeSeparators(script));
}

} // namespace

Scripts Scripts::global()
{
    Scripts scripts;
    for (const ScriptField &field : fields)
        scripts.*field.value = Settings::read(field.settingsKey);
    return scripts;
}

void Scripts::storeGlobal() const
{
    for (const ScriptField &field : fields)
        Settings::write(field.settingsKey, this->*field.value);
}

RunMakeOptionsWidgetBase::RunMakeOptionsWidgetBase(QWidget *parent) : QWidget(parent)
{
    setObjectName(u"RunMakeOptionsWidgetBase"_s);
    setWindowTitle(tr("Run/make scripts"));
    auto *const group = new QGroupBox(tr("Scripts:"), this);
    group->setObjectName(u"groupBox1"_s);
    auto *const grid = new QGridLayout(group);
    int row = 0;
    const auto addField = [&](const char *label, const QString &text, const char *name) {
        auto *const edit = new QLineEdit(group);
        edit->setObjectName(QString::fromLatin1(name));
        edit->setMaxLength(longestScript);
        edit->setToolTip(tr("The program finds the current file, its folder, the cursor's line "
                            "and the project's folder in VESK_FILE, VESK_DIR, VESK_LINE and "
                            "VESK_PROJECT_DIR."));
        auto *const caption = new QLabel(text, group);
        caption->setObjectName(QString::fromLatin1(label));
        caption->setBuddy(edit);
        grid->addWidget(caption, row, 0);
        grid->addWidget(edit, row++, 1);
        return edit;
    };
    const auto addButton = [&](const char *name) {
        auto *const button = new QToolButton(group);
        button->setObjectName(QString::fromLatin1(name));
        button->setText(tr("..."));
        button->setFocusPolicy(Qt::TabFocus);
        grid->addWidget(button, row - 1, 2);
        return button;
    };
    makeLineEdit = addField("textLabel2", tr("Make script:"), "makeLineEdit");
    makeToolButton = addButton("makeToolButton");
    makeArgsLineEdit =
        addField("textLabel4", tr("Make script - add default args:"), "makeArgsLineEdit");
    runLineEdit = addField("textLabel3", tr("Run script:"), "runLineEdit");
    runToolButton = addButton("runToolButton");
    runArgsLineEdit =
        addField("textLabel5", tr("Run script - add default args:"), "runArgsLineEdit");
    defaultScriptsCheckBox =
        new QCheckBox(tr("Use these scripts as default values for all projects"), group);
    defaultScriptsCheckBox->setObjectName(u"defaultScriptsCheckBox"_s);
    grid->addWidget(defaultScriptsCheckBox, row++, 0, 1, 3);
    auto *const space = new QLabel(group);
    space->setObjectName(u"textLabel1"_s);
    grid->addWidget(space, row, 0);
    auto *const tip = new QLabel(
        tr("<p align=\"right\">Tip: You can use %s for defining currently edited file</p>"), group);
    tip->setObjectName(u"textLabel1_2"_s);
    tip->setTextFormat(Qt::RichText);
    tip->setWordWrap(true);
    grid->addWidget(tip, row++, 1, 1, 2);
    grid->setRowStretch(row, 1);

    auto *const all = new QGridLayout(this);
    all->setContentsMargins(0, 0, 0, 0);
    all->addWidget(group, 0, 0);
}

Scripts RunMakeOptionsWidgetBase::scripts() const
{
    return {makeLineEdit->text(), makeArgsLineEdit->text(), runLineEdit->text(),
            runArgsLineEdit->text()};
}

void RunMakeOptionsWidgetBase::setScripts(const Scripts &scripts)
{
    makeLineEdit->setText(scripts.make);
    makeArgsLineEdit->setText(scripts.makeArgs);
    runLineEdit->setText(scripts.run);
    runArgsLineEdit->setText(scripts.runArgs);
}

RunMakeOptionsWidget::RunMakeOptionsWidget(QWidget *parent) : RunMakeOptionsWidgetBase(parent)
{
    connect(runToolButton, &QToolButton::clicked, this, &RunMakeOptionsWidget::selectRunFolder);
    connect(makeToolButton, &QToolButton::clicked, this, &RunMakeOptionsWidget::selectMakeFolder);
}

void RunMakeOptionsWidget::loadSettings()
{
    const Project *const project = Project::self();
    Scripts shown{u"make"_s, u"-s"_s, QString(), QString()};
    if (Settings::readBool(useDefaultsKey))
        shown = Scripts::global();
    for (const ScriptField &field : fields) {
        if (project->hasAttribute(field.attribute))
            shown.*field.value = project->attribute(field.attribute);
    }
    setScripts(shown);
    defaultScriptsCheckBox->setChecked(false);
}

void RunMakeOptionsWidget::saveSettings()
{
    const Scripts edited = scripts();
    for (const ScriptField &field : fields)
        Project::self()->setAttribute(field.attribute, edited.*field.value);
    if (!defaultScriptsCheckBox->isChecked())
        return;
    Settings::write(useDefaultsKey, true);
    edited.storeGlobal();
}

void RunMakeOptionsWidget::selectRunFolder()
{
    selectScript(lastRunFolderKey, runLineEdit);
}

void RunMakeOptionsWidget::selectMakeFolder()
{
    selectScript(lastMakeFolderKey, makeLineEdit);
}

} // namespace vesk
