#include "app/project/newprojectwizard.h"

#include "app/filedialog.h"
#include "app/settings.h"

#include <QDir>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTextEdit>
#include <QToolButton>

using namespace Qt::StringLiterals;

namespace vesk {

namespace {

const QString projectsDirKey = u"/project/projectsDir"_s;

/// Where projects are made, with a separator at its end.
QString projectsFolder()
{
    QString home = QDir::fromNativeSeparators(QDir::homePath());
    if (!home.endsWith(u'/'))
        home += u'/';
    QString folder = Settings::read(projectsDirKey, home + u"projects/"_s);
    if (!folder.endsWith(u'/'))
        folder += u'/';
    return folder;
}

/// \a name as a file name: in lower case, without white space.
QString stemOf(const QString &name)
{
    QString stem = name.toLower();
    for (QChar &c : stem) {
        if (c.isSpace())
            c = u'_';
    }
    return stem;
}

} // namespace

NewProjectWizard::NewProjectWizard(QWidget *parent) : QDialog(parent)
{
    setObjectName(u"NewProjectWizard"_s);
    setWindowTitle(tr("New project"));
    setSizeGripEnabled(true);
    createWidgets();
    layOutWidgets();
    connect(lineName, &QLineEdit::textChanged, this, &NewProjectWizard::projectNameChanged);
    for (const QLineEdit *line : {lineName, lineDirectory, lineFileName})
        connect(line, &QLineEdit::textChanged, this, &NewProjectWizard::textChanged);
    connect(selectDirectoryButton, &QToolButton::clicked, this, &NewProjectWizard::selectFolder);
    connect(buttonOk, &QPushButton::clicked, this, &NewProjectWizard::accept);
    connect(buttonCancel, &QPushButton::clicked, this, &NewProjectWizard::reject);
    resize(QSize(440, 300).expandedTo(minimumSizeHint()));
}

void NewProjectWizard::createWidgets()
{
    const auto named = [](auto *widget, const QString &name) {
        widget->setObjectName(name);
        return widget;
    };
    // In the order in which Tab visits them.
    labelName = named(new QLabel(tr("Name:"), this), u"labelName"_s);
    lineName = named(new QLineEdit(this), u"lineName"_s);
    labelDirectory = named(new QLabel(tr("Project directory:"), this), u"labelDirectory"_s);
    lineDirectory = named(new QLineEdit(this), u"lineDirectory"_s);
    labelFilename = named(new QLabel(tr("Project file name:"), this), u"labelFilename"_s);
    lineFileName = named(new QLineEdit(this), u"lineFileName"_s);
    textLabel1 = named(new QLabel(tr("Description:"), this), u"textLabel1"_s);
    textEditDescription = named(new QTextEdit(this), u"textEditDescription"_s);
    textEditDescription->setAcceptRichText(false);
    textEditDescription->setTabChangesFocus(true);
    buttonOk = named(new QPushButton(tr("&OK"), this), u"buttonOk"_s);
    buttonOk->setEnabled(false);
    buttonOk->setDefault(true);
    buttonCancel = named(new QPushButton(tr("&Cancel"), this), u"buttonCancel"_s);
    buttonCancel->setAutoDefault(false);
    selectDirectoryButton = named(new QToolButton(this), u"selectDirectoryButton"_s);
    selectDirectoryButton->setText(u"..."_s);
    selectDirectoryButton->setMinimumWidth(30);
    // Last in the tab order, after the buttons: the fields are what one goes through.
    selectDirectoryButton->setFocusPolicy(Qt::TabFocus);
}

void NewProjectWizard::layOutWidgets()
{
    auto *const grid = new QGridLayout(this);
    grid->setContentsMargins(11, 11, 11, 11);
    grid->setSpacing(6);
    grid->addWidget(labelName, 0, 0);
    grid->addWidget(lineName, 0, 1, 1, 2);
    grid->addWidget(labelDirectory, 1, 0);
    grid->addWidget(lineDirectory, 1, 1);
    grid->addWidget(selectDirectoryButton, 1, 2);
    grid->addWidget(labelFilename, 2, 0);
    grid->addWidget(lineFileName, 2, 1, 1, 2);
    grid->addWidget(textLabel1, 3, 0, Qt::AlignTop);
    grid->addWidget(textEditDescription, 3, 1, 1, 2);
    auto *const buttons = new QHBoxLayout;
    buttons->setSpacing(6);
    buttons->addStretch();
    buttons->addWidget(buttonOk);
    buttons->addWidget(buttonCancel);
    grid->addLayout(buttons, 4, 0, 1, 3);
    grid->setRowStretch(3, 1);
}

void NewProjectWizard::textChanged()
{
    buttonOk->setEnabled(!lineName->text().isEmpty() && !lineDirectory->text().isEmpty() &&
                         !lineFileName->text().isEmpty());
}

void NewProjectWizard::projectNameChanged()
{
    const bool isDirectoryOurs = lineDirectory->text() == prevDirectory;
    if (!lineFileName->text().isEmpty() && lineFileName->text() != prevFileName)
        return;
    const QString stem = stemOf(lineName->text());
    if (isDirectoryOurs) {
        prevDirectory = projectsFolder() + stem;
        lineDirectory->setText(prevDirectory);
    }
    prevFileName = stem + u".vesk"_s;
    lineFileName->setText(prevFileName);
}

void NewProjectWizard::selectFolder()
{
    const QString folder =
        FileDialog::existingDirectory(this, tr("Project directory:"), projectsFolder());
    if (!folder.isEmpty())
        lineDirectory->setText(QDir::fromNativeSeparators(folder));
}

} // namespace vesk
