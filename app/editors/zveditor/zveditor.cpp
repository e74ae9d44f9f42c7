#include "app/editors/zveditor/zveditor.h"

#include "app/actions.h"
#include "app/message.h"
#include "app/settings.h"
#include "app/shell.h"
#include "zvwidgets/zveditor/textdoc.h"
#include "zvwidgets/zveditor/texteditor.h"
#include "zvwidgets/zveditor/textfolding.h"
#include "zvwidgets/zveditor/textline.h"
#include "zvwidgets/zveditor/textmanager.h"
#include "zvwidgets/zveditor/textview.h"
#include "zvwidgets/zvfiles/filenames.h"
#include "zvwidgets/zvfiles/posixfile.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QFileInfo>
#include <QGridLayout>
#include <QMenu>
#include <QMessageBox>
#include <QRegularExpression>
#include <QTimer>

#include <algorithm>

using zvwidgets::encodedPath;
using zvwidgets::FileKind;
using zvwidgets::FolderInfo;
using zvwidgets::FoldersState;
using zvwidgets::kindOf;
using zvwidgets::TextDocument;
using zvwidgets::TextEditor;
using zvwidgets::TextEditorManager;
using zvwidgets::TextLine;

namespace vesk {

namespace {

constexpr QLatin1String foldingPrefix("/editors/folding/");

constexpr int reloadCheckInterval = 1000; // ms
constexpr int contextLines = 10;

/// The bytes are printed without leading zeros: the keys of stored folds depend on it.
QString md5sum(const QString &text)
{
    const QByteArray digest = QCryptographicHash::hash(text.toUtf8(), QCryptographicHash::Md5);
    QString sum;
    for (const char byte : digest)
        sum += QString::number(static_cast<uchar>(byte), 16);
    return sum;
}

QString foldsKey(const QString &path)
{
    return foldingPrefix + md5sum(path);
}

QString foldsToText(const FoldersState &state)
{
    QString text;
    for (const FolderInfo &fold : state) {
        text += QString::number(fold.firstLine) + u' ' + QString::number(fold.lastLine) + u' ' +
                (fold.isOpened ? QStringLiteral("o;") : QStringLiteral("c;"));
    }
    return text;
}

FoldersState foldsFromText(const QString &text)
{
    static const QRegularExpression record(QStringLiteral("(\\d+) (\\d+) (o|c)"));
    FoldersState state;
    const QStringList pieces = text.split(u';', Qt::SkipEmptyParts);
    for (const QString &piece : pieces) {
        const QRegularExpressionMatch match = record.match(piece);
        bool isFirstNumber = false;
        bool isLastNumber = false;
        FolderInfo fold;
        fold.firstLine = match.captured(1).toInt(&isFirstNumber);
        fold.lastLine = match.captured(2).toInt(&isLastNumber);
        fold.isOpened = match.captured(3) == u'o';
        if (isFirstNumber && isLastNumber)
            state.append(fold);
        else
            qDebug("folders state is not correct\n%s", qPrintable(piece));
    }
    return state;
}

} // namespace

struct ZVEditor::Private
{
    static TextEditorManager *manager;

    static void tellDroppedRule(const QString &highlight, const QString &expression);

    /// Null if there is no line \a n.
    TextLine *lineAt(int n) const
    {
        return n >= 0 && n <= document->lastLine() ? document->lineOf(n) : nullptr;
    }

    TextEditor *editor = nullptr;
    TextDocument *document = nullptr;
    int traceLine = -1;
    /// Drives updateFileInfo(). Nothing makes one yet.
    QTimer *timer = nullptr;
    QFileInfo fileInfo;
    QDateTime modificationTime;
};

TextEditorManager *ZVEditor::Private::manager = nullptr;

void ZVEditor::Private::tellDroppedRule(const QString &highlight, const QString &expression)
{
    Shell::self()->statusMessage(
        QStringLiteral("default"),
        tr("Highlighting %1: a rule takes too long on some lines and is left out there: %2")
            .arg(highlight, expression));
}

ZVEditor::ZVEditor(QWidget *parent, const QString &name)
    : Editor(parent, name), d(std::make_unique<Private>())
{
    manager()->setGlobalConfig(Settings::self());
    d->document = new TextDocument(manager());
    d->editor = new TextEditor(d->document, this);
    manager()->addEditor(d->editor, d->document);
    // No highlight has this name: a new text is shown with the default one.
    d->editor->setHighlight(QStringLiteral("a.py"));

    auto *layout = new QGridLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(d->editor, 0, 0);
    setFocusProxy(d->editor->view());

    connect(d->editor, &TextEditor::changed, this, &ZVEditor::changedStatus);
    connect(d->editor->view(), &zvwidgets::TextView::focusChanged, this, &Editor::focusChanged);
    connect(manager(), &TextEditorManager::overwriteModeChanged, this,
            &ZVEditor::managerOverwriteModeChanged);
    fillContextMenu();
}

ZVEditor::~ZVEditor()
{
    storeFolds();
    // The view loses the focus when the widgets go; nobody may hear of it through
    // an editor that is half gone.
    disconnect(d->editor, nullptr, this, nullptr);
    disconnect(d->editor->view(), nullptr, this, nullptr);
}

void ZVEditor::fillContextMenu()
{
    // An empty name stands for a separator.
    static constexpr const char *names[] = {
        "Editors/undo",   "Editors/redo",    "", "Editors/cut", "Editors/copy", "Editors/paste", "",
        "Editors/indent", "Editors/unindent"};
    QMenu *menu = d->editor->view()->rmbMenu();
    for (const char *name : names) {
        if (!*name)
            menu->addSeparator();
        else if (Action *action = Actions::action(QString::fromLatin1(name)))
            menu->addAction(action);
    }
}

TextEditorManager *ZVEditor::manager()
{
    if (!Private::manager) {
        Private::manager = new TextEditorManager;
        connect(Private::manager, &TextEditorManager::highlightRuleDropped, Private::manager,
                &Private::tellDroppedRule, Qt::QueuedConnection);
        loadConfig();
    }
    return Private::manager;
}

QString ZVEditor::text() const
{
    return d->editor->text();
}

void ZVEditor::setText(const QString &text)
{
    d->editor->setText(text);
}

QString ZVEditor::line(int n) const
{
    const TextLine *const found = d->lineAt(n);
    // The line shares its text with the document; the copy has to outlive it.
    return found ? QString(found->constData(), found->size()) : QString();
}

QString ZVEditor::selection() const
{
    return d->editor->getSelectedText();
}

bool ZVEditor::open(const QString &url)
{
    setErrorString(QString());
    if (kindOf(encodedPath(url)) == FileKind::Missing) {
        setErrorString(tr("No such file"));
        Message::critical(tr("Error"), tr("Can not open file\n%1\n").arg(url), tr("Ok"));
        return false;
    }
    if (!load(url))
        return false;
    setFileName(url);
    d->fileInfo = QFileInfo(url);
    d->modificationTime = d->fileInfo.lastModified();
    emit fileLoaded();
    restoreFolds();
    return true;
}

bool ZVEditor::load(const QString &url)
{
    // Reading a pipe or a device might never end.
    if (kindOf(encodedPath(url)) != FileKind::Regular) {
        setErrorString(tr("Not a regular file"));
        return false;
    }
    return succeeded(d->editor->open(url));
}

/// Keeps why an operation on a file failed: whoever asked for it goes by that text.
bool ZVEditor::succeeded(bool result)
{
    const QString reason = result ? QString() : d->editor->errorString();
    setErrorString(result || !reason.isEmpty() ? reason : tr("Unknown error"));
    return result;
}

void ZVEditor::restoreFolds()
{
    const QString stored = Settings::read(foldsKey(d->editor->filePath()), QString());
    d->editor->folding()->setFolderstState(foldsFromText(stored));
}

void ZVEditor::storeFolds() const
{
    const QString path = d->editor->filePath();
    if (path.isEmpty())
        return;
    Settings::write(foldsKey(path), foldsToText(d->editor->folding()->foldersState()));
}

/// Asks to make the file UTF-8 if it is Latin-1 and got a character that this lacks.
/// Whoever refuses is told by the save, which fails then.
void ZVEditor::settleEncoding(const QString &path)
{
    const QString lacking = d->document->unencodable();
    if (lacking.isEmpty())
        return;
    const int answer =
        Message::warning(tr("Warning"),
                         tr("The file\n%1\nis Latin-1, which has no character \"%2\".\n"
                            "Would you like to save all of it as UTF-8?")
                             .arg(path, lacking),
                         QMessageBox::Yes, QMessageBox::No, QMessageBox::NoButton);
    if (answer != QMessageBox::Yes)
        return;
    zvwidgets::TextFormat format = d->document->fileFormat();
    format.encoding = QStringConverter::Utf8;
    d->document->setFileFormat(format);
}

/// Calls \a save, which writes to \a path; false if that fails.
bool ZVEditor::write(const QString &path, const std::function<bool()> &save)
{
    const zvwidgets::TextFormat format = d->document->fileFormat();
    settleEncoding(path);
    const bool isWritten = save();
    // It is still the former one on the disk.
    if (!isWritten)
        d->document->setFileFormat(format);
    return succeeded(isWritten);
}

void ZVEditor::save()
{
    setErrorString(QString());
    if (isModified())
        write(filename(), [this] { return d->editor->save(); });
    refreshModificationTime();
}

void ZVEditor::saveAs(const QString &url)
{
    if (write(url, [&] { return d->editor->saveAs(url); }))
        setFileName(url);
    refreshModificationTime();
}

void ZVEditor::refreshModificationTime()
{
    d->fileInfo.refresh();
    d->modificationTime = d->fileInfo.lastModified();
}

void ZVEditor::undo()
{
    d->editor->undo();
}

void ZVEditor::redo()
{
    d->editor->redo();
}

void ZVEditor::cut()
{
    d->editor->cut();
}

void ZVEditor::copy()
{
    d->editor->copy();
}

void ZVEditor::paste()
{
    d->editor->paste();
}

bool ZVEditor::find(const QString &text, bool caseSensitive, bool wholeWord, bool fromCursor,
                    bool inSelection)
{
    return d->editor->find(text, caseSensitive, wholeWord, fromCursor, inSelection);
}

bool ZVEditor::findRegexp(const QString &pattern, bool caseSensitive, bool wildcard,
                          bool fromCursor)
{
    return d->editor->findRegexp(pattern, caseSensitive, wildcard, fromCursor);
}

void ZVEditor::replaceFound(const QString &text)
{
    d->editor->replaceFound(text);
}

int ZVEditor::replaceRest(const QString &text)
{
    return d->editor->replaceRest(text);
}

void ZVEditor::setSearchWatch(const SearchWatch &watch)
{
    d->editor->setSearchWatch(watch);
}

bool ZVEditor::findNext()
{
    return d->editor->findNext();
}

void ZVEditor::setWrap(bool on)
{
    d->editor->setWrap(on);
}

bool ZVEditor::getWrap() const
{
    return d->editor->getWrap();
}

void ZVEditor::selectAll()
{
    zvwidgets::TextView *const view = d->editor->view();
    const int last = d->document->lastLine();
    view->setCursorPosition(0, 0, false);
    view->setCursorPosition(last, d->document->textLength(last), true);
}

void ZVEditor::indent()
{
    d->editor->indent();
}

void ZVEditor::unindent()
{
    d->editor->unindent();
}

QString ZVEditor::filename() const
{
    return d->editor->filePath();
}

void ZVEditor::setFileName(const QString &path)
{
    // Setting the path picks the highlight anew, which costs a pass over the text.
    if (QFileInfo(path).absoluteFilePath() != filename())
        d->editor->setFilePath(path);
    emit filenameChanged(filename());
}

bool ZVEditor::isModified() const
{
    return d->editor->isModified();
}

int ZVEditor::cursorLine() const
{
    return d->editor->line();
}

int ZVEditor::cursorColumn() const
{
    return d->editor->column();
}

void ZVEditor::setCursorPosition(int line, int column)
{
    zvwidgets::TextView *const view = d->editor->view();
    line = std::clamp(line, 0, d->editor->document()->lastLine());
    d->editor->reveal(line);
    for (const int passed : {line + contextLines, line - contextLines, line})
        view->setCursorPosition(passed, column, false);
}

void ZVEditor::setHighlightedLine(int, const QColor &)
{}

void ZVEditor::clearHighlightedLine(int)
{}

void ZVEditor::setLineIcon(int line, QPixmap *icon)
{
    d->editor->setLineIcon(line, icon);
}

void ZVEditor::clearLineIcon(int line)
{
    d->editor->clearLineIcon(line);
}

void ZVEditor::showTrace(int line)
{
    if (TextLine *const former = d->lineAt(d->traceLine))
        former->clearLineColor();
    d->traceLine = line;
    if (TextLine *const traced = d->lineAt(line))
        traced->setLineColor(QColor(QStringLiteral("#bfffbf")));
    d->editor->view()->update();
}

void ZVEditor::clearTrace()
{
    if (TextLine *const traced = d->lineAt(d->traceLine))
        traced->clearLineColor();
    d->editor->view()->update();
}

bool ZVEditor::replaceTabs() const
{
    return !manager()->fSaveTab;
}

void ZVEditor::completeWordNext()
{
    d->editor->completeWordNext();
}

void ZVEditor::completeWordPrev()
{
    d->editor->completeWordPrev();
}

void ZVEditor::addCompletionList(const QStringList &words, int minimumMatchedLength)
{
    manager()->addCompletionList(words, minimumMatchedLength);
}

bool ZVEditor::isEmpty() const
{
    return d->document->lastLine() <= 0 && d->document->textLength(0) == 0;
}

int ZVEditor::lineCount() const
{
    return d->document->lastLine() + 1;
}

unsigned ZVEditor::revision() const
{
    return d->document->revision();
}

void ZVEditor::changedStatus(int change)
{
    if (change == TextEditor::Modification)
        emit modificationStatusChanged(d->editor->isModified());
    else if (change == TextEditor::CursorPosition)
        emit lineColChanged(d->editor->line(), d->editor->column());
}

void ZVEditor::managerOverwriteModeChanged()
{
    emit overwriteModeChanged(manager()->overwriteMode());
}

void ZVEditor::updateFileInfo()
{
    if (!hasFocus())
        return;
    d->fileInfo.refresh();
    if (d->fileInfo.lastModified() <= d->modificationTime)
        return;
    if (d->timer)
        d->timer->stop();
    const QString fn = filename();
    const int answer = Message::warning(
        tr("Warning"),
        tr("The file\n%1\nwas changed outside of the editor! Would you like to reloadit?").arg(fn),
        tr("No"), tr("Reload"), QString(), 0, 0);
    if (answer == 1) {
        const int line = d->editor->line();
        const int column = d->editor->column();
        open(fn);
        d->editor->moveCursor(line, column);
    }
    if (d->timer)
        d->timer->start(reloadCheckInterval);
}

QString ZVEditorFactory::name() const
{
    return QStringLiteral("ZVEditor");
}

Editor *ZVEditorFactory::createEditor(QWidget *parent)
{
    return new ZVEditor(parent, QStringLiteral("ZVEditor"));
}

} // namespace vesk
