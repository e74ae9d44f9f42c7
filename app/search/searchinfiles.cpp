#include "app/search/searchinfiles.h"

#include "app/filedialog.h"
#include "app/search/treewalk.h"
#include "app/settings.h"
#include "app/shell.h"
#include "app/utils.h"
#include "app/widgets/dialogparts.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QElapsedTimer>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QToolButton>

#include <utility>

using namespace Qt::StringLiterals;

namespace vesk {

namespace {

/// The window gets its turn this often, in ms.
constexpr int turn = 25;

QComboBox *editableCombo(QWidget *parent, const QString &name)
{
    QComboBox *const combo = DialogParts::textCombo(parent, name);
    combo->setInsertPolicy(QComboBox::InsertAtBottom);
    combo->setDuplicatesEnabled(true);
    return combo;
}

/// \a current first, then the entries of \a combo that differ.
QStringList history(const QString &current, const QComboBox *combo)
{
    QStringList result{current};
    for (int i = 0; i < combo->count(); ++i) {
        if (!result.contains(combo->itemText(i)))
            result << combo->itemText(i);
    }
    return result;
}

} // namespace

SearchInFiles::SearchInFiles(QWidget *parent, const QString &name) : QDialog(parent)
{
    setObjectName(name.isEmpty() ? u"SearchInFiles"_s : name);
    setWindowTitle(tr("Search in files..."));
    setSizeGripEnabled(true);
    createWidgets();
    layOutWidgets();
    connect(buttonDirectory, &QToolButton::clicked, this, &SearchInFiles::selectDirectory);
    connect(buttonSearch, &QPushButton::clicked, this, &SearchInFiles::searchPressed);
    connect(buttonCancel, &QPushButton::clicked, this, &SearchInFiles::cancelPressed);
    connect(comboSearch, &QComboBox::editTextChanged, this, &SearchInFiles::searchStringChanged);
    connect(checkSearchInProject, &QCheckBox::toggled, comboDirectory, &QWidget::setDisabled);
    connect(checkSearchInProject, &QCheckBox::toggled, buttonDirectory, &QWidget::setDisabled);
    init();
    resize(QSize(406, 316).expandedTo(minimumSizeHint()));
}

void SearchInFiles::createWidgets()
{
    const auto label = [this](const QString &name, const QString &text) {
        return DialogParts::label(this, name, text);
    };
    const auto check = [this](const QString &name, const QString &text) {
        return DialogParts::option(this, name, text, QKeySequence::mnemonic(text).toString());
    };
    TextLabel2 = label(u"TextLabel2"_s, tr("Search for:"));
    comboSearch = editableCombo(this, u"comboSearch"_s);
    replaceLabel = label(u"replaceLabel"_s, tr("Replace with:"));
    comboReplace = editableCombo(this, u"comboReplace"_s);
    TextLabel1 = label(u"TextLabel1"_s, tr("Directory:"));
    comboDirectory = editableCombo(this, u"comboDirectory"_s);
    buttonDirectory = new QToolButton(this);
    buttonDirectory->setObjectName(u"buttonDirectory"_s);
    buttonDirectory->setIcon(Utils::iconSet(u"16x16_FolderOpen"_s));
    buttonDirectory->setAutoRaise(true);
    buttonDirectory->setMaximumWidth(32);
    TextLabel3 = label(u"TextLabel3"_s, tr("File pattern:"));
    comboPattern = editableCombo(this, u"comboPattern"_s);
    checkWholeWord = check(u"checkWholeWord"_s, tr("&Whole word"));
    checkCaseSensetive = check(u"checkCaseSensetive"_s, tr("&Case sensitive"));
    checkSearchInProject = check(u"checkSearchInProject"_s, tr("Search in &project files only"));
    checkRegExp = check(u"checkRegExp"_s, tr("&Regular expression"));
    buttonSearch = new QPushButton(tr("Search"), this);
    buttonSearch->setObjectName(u"buttonSearch"_s);
    buttonSearch->setDefault(true);
    buttonCancel = new QPushButton(tr("Cancel"), this);
    buttonCancel->setObjectName(u"buttonCancel"_s);
    buttonCancel->setAutoDefault(false);
    labelProcessing = DialogParts::note(this, u"labelProcessing"_s, tr("No file"));
}

void SearchInFiles::layOutWidgets()
{
    auto *fields = new QGridLayout;
    fields->setContentsMargins(0, 0, 0, 0);
    fields->setSpacing(6);
    fields->addWidget(TextLabel2, 0, 0);
    fields->addWidget(comboSearch, 0, 1, 1, 2);
    fields->addWidget(replaceLabel, 1, 0);
    fields->addWidget(comboReplace, 1, 1, 1, 2);
    fields->addWidget(TextLabel1, 2, 0);
    fields->addWidget(comboDirectory, 2, 1);
    fields->addWidget(buttonDirectory, 2, 2);
    fields->addWidget(TextLabel3, 3, 0);
    fields->addWidget(comboPattern, 3, 1, 1, 2);

    auto *options = new QGroupBox(tr("Options"), this);
    options->setObjectName(u"GroupBox1"_s);
    auto *checks = new QGridLayout(options);
    checks->setContentsMargins(11, 11, 11, 11);
    checks->setSpacing(6);
    checks->addWidget(checkWholeWord, 0, 0);
    checks->addWidget(checkCaseSensetive, 0, 1);
    checks->addWidget(checkRegExp, 1, 0);
    checks->addWidget(checkSearchInProject, 1, 1);

    auto *buttons = new QHBoxLayout;
    buttons->setContentsMargins(0, 0, 0, 0);
    buttons->setSpacing(6);
    buttons->addStretch();
    buttons->addWidget(buttonSearch);
    buttons->addWidget(buttonCancel);

    auto *all = new QVBoxLayout(this);
    all->setContentsMargins(11, 11, 11, 11);
    all->setSpacing(6);
    all->addLayout(fields);
    all->addWidget(options);
    all->addStretch();
    all->addWidget(labelProcessing);
    all->addLayout(buttons);
}

void SearchInFiles::init()
{
    searching = false;
    checkSearchInProject->hide();
    replaceLabel->hide();
    comboReplace->hide();
    searchStringChanged();
    comboDirectory->clear();
    comboDirectory->addItems(Settings::readList(u"/SearchInFiles/Dirs"_s));
    comboDirectory->setEditText(Settings::read(u"/SearchInFiles/Last Dir"_s, QDir::currentPath()));
    comboPattern->clear();
    comboPattern->addItems(Settings::readList(u"/SearchInFiles/Patterns"_s));
    comboPattern->setEditText(Settings::read(u"/SearchInFiles/Last Pattern"_s));
    comboSearch->clear();
    comboSearch->addItems(Settings::readList(u"/SearchInFiles/SearchStrings"_s));
    comboSearch->setInsertPolicy(QComboBox::InsertAtTop);
}

void SearchInFiles::searchStringChanged()
{
    buttonSearch->setEnabled(!comboSearch->currentText().isEmpty());
}

void SearchInFiles::selectDirectory()
{
    const QString folder =
        FileDialog::existingDirectory(this, QString(), comboDirectory->currentText());
    if (!folder.isEmpty())
        comboDirectory->setEditText(folder);
}

void SearchInFiles::saveHistory()
{
    const QString dir = comboDirectory->currentText();
    const QString pattern = comboPattern->currentText();
    Settings::write(u"/SearchInFiles/Last Dir"_s, dir);
    Settings::write(u"/SearchInFiles/Last Pattern"_s, pattern);
    Settings::write(u"/SearchInFiles/Dirs"_s, history(dir, comboDirectory));
    Settings::write(u"/SearchInFiles/Patterns"_s, history(pattern, comboPattern));
    Settings::write(u"/SearchInFiles/SearchStrings"_s,
                    history(comboSearch->currentText(), comboSearch));
}

void SearchInFiles::searchPressed()
{
    // From within the search below.
    if (searching) {
        canceled = true;
        return;
    }
    buttonSearch->setText(tr("Stop"));
    const QString dir = comboDirectory->currentText();
    saveHistory();
    labelProcessing->clear();
    searching = true;
    if (QDir(dir).exists()) {
        // A folder without a name is the one that the program runs in.
        processDirectory(dir.isEmpty() ? u"."_s : dir);
    } else {
        QMessageBox box(QMessageBox::Warning, tr("warning"),
                        tr("The directory \n%1\n dosn't exist.").arg(dir), QMessageBox::Ok, this);
        box.setTextFormat(Qt::PlainText);
        box.exec();
    }
    searching = false;
    buttonSearch->setText(tr("Search"));
    accept();
}

void SearchInFiles::cancelPressed()
{
    canceled = true;
    reject();
}

void SearchInFiles::reject()
{
    canceled = true;
    QDialog::reject();
}

void SearchInFiles::processDirectory(const QString &path)
{
    const auto walk = std::make_shared<TreeWalk>(path, comboPattern->currentText());
    search([walk](QString *file, const FileSearch::GoOn &goOn) { return walk->next(file, goOn); });
}

void SearchInFiles::processFile(const QString &fname)
{
    search([rest = QStringList{fname}](QString *file, const FileSearch::GoOn &) mutable {
        if (rest.isEmpty())
            return false;
        *file = rest.takeFirst();
        return true;
    });
}

void SearchInFiles::search(const TreeSearch::NextFile &files)
{
    canceled = false;
    TreeSearch tree({comboSearch->currentText(), checkRegExp->isChecked(),
                     checkCaseSensetive->isChecked(), checkWholeWord->isChecked()},
                    files);
    QElapsedTimer sinceTurn;
    sinceTurn.start();
    const auto goOn = [&] {
        if (!canceled && sinceTurn.hasExpired(turn)) {
            labelProcessing->setText(tree.currentFile());
            QApplication::processEvents();
            sinceTurn.restart();
            // Nobody reads the rows of a program that is on its way out.
            canceled = canceled || Shell::self()->isLeaving();
        }
        return !canceled;
    };
    QList<TreeSearch::Row> rows;
    while (goOn() && tree.take(&rows)) {
        for (const TreeSearch::Row &row : std::exchange(rows, {})) {
            emit newEntry(row.text, row.line, row.fileName);
            if (!goOn())
                return;
        }
    }
}

void SearchInFiles::setProjectFiles(const QString &root, const QStringList &files)
{
    projectRoot = root;
    projectFiles = files;
    checkSearchInProject->setHidden(files.isEmpty());
}

} // namespace vesk
