#include "app/search/searchinfiles.h"

#include "app/editors/editors.h"
#include "app/messages/messagelimits.h"
#include "app/search/dialogparts.h"
#include "app/search/filesearch.h"
#include "app/settings.h"
#include "app/utils.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QRegularExpression>
#include <QToolButton>

#include <algorithm>
#include <dirent.h>
#include <sys/stat.h>

using namespace Qt::StringLiterals;

namespace vesk {

namespace {

/// The window gets its turn this often, in ms. Laying out a list that has changed as
/// a whole takes it 10.
constexpr int turn = 25;

/// File name masks with "*", "?" and "[...]", separated by ";" if there is one,
/// else by blanks.
class NameFilter
{
public:
    explicit NameFilter(const QString &masks)
    {
        const QChar separator = masks.contains(u';') ? u';' : u' ';
        for (const QString &part : masks.split(separator, Qt::SkipEmptyParts)) {
            const QString mask = part.trimmed();
            if (mask == u"*")
                all = true;
            else if (!mask.isEmpty())
                expressions << QRegularExpression::fromWildcard(mask, Qt::CaseSensitive);
        }
        all = all || expressions.isEmpty();
    }

    bool matches(const QString &name) const
    {
        return all || std::any_of(expressions.begin(), expressions.end(),
                                  [&](const auto &each) { return each.match(name).hasMatch(); });
    }

private:
    bool all = false;
    QList<QRegularExpression> expressions;
};

/// The names in a folder, in order, links told by what they lead to.
struct Listing
{
    QStringList files;
    QStringList folders;
};

Listing list(const QString &path, const NameFilter &filter)
{
    Listing listing;
    const QByteArray folder = QFile::encodeName(path);
    DIR *dir = ::opendir(folder.constData());
    if (!dir)
        return listing;
    while (const dirent *entry = ::readdir(dir)) {
        if (entry->d_name[0] == '.')
            continue;
        unsigned char type = entry->d_type;
        if (type == DT_LNK || type == DT_UNKNOWN) {
            struct stat info;
            if (::stat((folder + '/' + entry->d_name).constData(), &info) != 0)
                continue;
            type = S_ISDIR(info.st_mode) ? DT_DIR : S_ISREG(info.st_mode) ? DT_REG : DT_UNKNOWN;
        }
        const QString name = QFile::decodeName(entry->d_name);
        if (type == DT_DIR)
            listing.folders << name;
        else if (type == DT_REG && filter.matches(name))
            listing.files << name;
    }
    ::closedir(dir);
    listing.files.sort();
    listing.folders.sort();
    return listing;
}

using FolderId = std::pair<dev_t, ino_t>;

bool folderId(const QString &path, FolderId *id)
{
    struct stat info;
    if (::stat(QFile::encodeName(path).constData(), &info) != 0)
        return false;
    *id = {info.st_dev, info.st_ino};
    return true;
}

QString below(const QString &folder, const QString &name)
{
    return folder.endsWith(u'/') ? folder + name : folder + u'/' + name;
}

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

struct SearchInFiles::Private
{
    std::unique_ptr<FileSearch> search; ///< only during a walk
    std::unique_ptr<NameFilter> filter;
    /// The folders on the way down to the one that is walked: entering one of
    /// them again through a link would never end.
    QList<FolderId> way;
    QElapsedTimer sinceTurn;
    QString current;
    qint64 longRows = 0;

    QString row(const FileSearch::Hit &hit);
};

QString SearchInFiles::Private::row(const FileSearch::Hit &hit)
{
    const qsizetype size = hit.line.size();
    longRows += size > MessageLimits::longRow ? size : 0;
    const bool isWhole = !hit.isPart && size <= MessageLimits::hugeRow &&
                         (size <= MessageLimits::longRow || longRows <= MessageLimits::longRows);
    const qsizetype around = isWhole ? size : MessageLimits::excerpt;
    const qsizetype length = isWhole ? hit.length : qMin(hit.length, MessageLimits::longRow);
    const qsizetype first = qMax<qsizetype>(0, hit.column - around);
    QString text = u"   #color{#909090}"_s;
    text += QString::number(hit.lineNumber);
    text += u": #color{black}"_s;
    text += hit.line.mid(first, hit.column - first);
    text += u"#color{blue}"_s;
    text += hit.line.mid(hit.column, length);
    text += u"#color{black}"_s;
    text += hit.line.mid(hit.column + length, around);
    return text.replace(u'\t', u"    "_s);
}

SearchInFiles::SearchInFiles(QWidget *parent, const QString &name)
    : QDialog(parent), d(std::make_unique<Private>())
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

SearchInFiles::~SearchInFiles() = default;

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
    const QString folder = QFileDialog::getExistingDirectory(
        this, QString(), comboDirectory->currentText(),
        QFileDialog::ShowDirsOnly | QFileDialog::DontUseNativeDialog);
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
    // Also between a stop and the end of the walk, from within which this is called.
    if (searching || d->search) {
        canceled = true;
        searching = false;
        return;
    }
    buttonSearch->setText(tr("Stop"));
    const QString dir = comboDirectory->currentText();
    saveHistory();
    labelProcessing->clear();
    canceled = false;
    searching = true;
    if (QDir(dir).exists()) {
        const SearchQuery query{comboSearch->currentText(), checkRegExp->isChecked(),
                                checkCaseSensetive->isChecked(), checkWholeWord->isChecked()};
        d->search = std::make_unique<FileSearch>(query, [this] { return goOn(); });
        d->filter = std::make_unique<NameFilter>(comboPattern->currentText());
        d->way.clear();
        d->longRows = 0;
        d->sinceTurn.start();
        // A folder without a name is the one that the program runs in.
        processDirectory(dir.isEmpty() ? u"."_s : dir);
        d->search.reset();
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

bool SearchInFiles::goOn()
{
    if (canceled)
        return false;
    if (d->sinceTurn.elapsed() < turn)
        return true;
    labelProcessing->setText(d->current);
    QApplication::processEvents();
    d->sinceTurn.restart();
    // Nobody reads the rows of a program that is on its way out.
    if (!Editors::self()->current())
        canceled = true;
    return !canceled;
}

void SearchInFiles::processDirectory(const QString &path)
{
    FolderId id;
    if (!d->filter || !folderId(path, &id) || d->way.contains(id))
        return;
    d->way.append(id);
    const Listing listing = list(path, *d->filter);
    for (const QString &name : listing.files) {
        processFile(below(path, name));
        if (canceled)
            break;
    }
    for (const QString &name : listing.folders) {
        if (canceled)
            break;
        processDirectory(below(path, name));
    }
    d->way.removeLast();
}

void SearchInFiles::processFile(const QString &fname)
{
    d->current = fname;
    if (!d->search || !goOn())
        return;
    bool foundSomething = false;
    d->search->search(fname, [&](const FileSearch::Hit &hit) {
        if (!foundSomething) {
            foundSomething = true;
            emit newEntry(u"#bgcolor{#d0d0d0} "_s + fname + u' ', 1, fname);
        }
        emit newEntry(d->row(hit), hit.lineNumber, fname);
    });
}

void SearchInFiles::setProjectFiles(const QString &root, const QStringList &files)
{
    projectRoot = root;
    projectFiles = files;
    checkSearchInProject->setHidden(files.isEmpty());
}

} // namespace vesk
