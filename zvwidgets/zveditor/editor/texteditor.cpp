#include "zvwidgets/zveditor/texteditor.h"

#include "qtundo/src/qtundo.h"
#include "zvwidgets/zveditor/editor/texteditor_p.h"
#include "zvwidgets/zveditor/editorcursor.h"
#include "zvwidgets/zveditor/editormargins.h"
#include "zvwidgets/zveditor/highlight.h"
#include "zvwidgets/zveditor/textdoc.h"
#include "zvwidgets/zveditor/textfolding.h"
#include "zvwidgets/zveditor/textline.h"
#include "zvwidgets/zveditor/textmanager.h"
#include "zvwidgets/zveditor/textview.h"

#include <QClipboard>
#include <QFileInfo>
#include <QGuiApplication>

#include <algorithm>

namespace zvwidgets {

TextEditor::TextEditor(TextDocument *doc, QWidget *parent, const QString &name)
    : QFrame(parent), d(std::make_unique<Private>())
{
    setObjectName(name);
    d->self = this;
    d->doc = doc;
    d->manager = doc->manager();
    d->view = new TextView(this);
    d->view->installEventFilter(this);
    connect(d->view->cursor(), &EditorCursor::changePosition, this, &TextEditor::breakViCompletion);
    setFrameStyle(Panel | Sunken);
    setFocusProxy(d->view);
}

TextEditor::~TextEditor()
{
    // The view takes itself out of the document.
    std::unique_ptr<TextView>(d->view).reset();
    if (d->doc->views().isEmpty())
        std::unique_ptr<TextDocument>(d->doc).reset();
}

TextDocument *TextEditor::document() const
{
    return d->doc;
}

TextEditorManager *TextEditor::manager() const
{
    return d->manager;
}

TextView *TextEditor::view() const
{
    return d->view;
}

TextFolding *TextEditor::folding() const
{
    return d->doc->folding();
}

QString TextEditor::filePath() const
{
    return d->path;
}

void TextEditor::setFilePath(const QString &path)
{
    const QFileInfo info(path);
    d->path = path.isEmpty() ? QString() : info.absoluteFilePath();
    d->view->setHighlightByFileName(info.fileName());
    emit filePathChange();
}

QStringConverter::Encoding TextEditor::textCodec() const
{
    return d->textCodec;
}

void TextEditor::setTextCodec(QStringConverter::Encoding encoding)
{
    d->textCodec = encoding;
    TextFormat format = d->doc->fileFormat();
    format.encoding = encoding;
    format.hasByteOrderMark = format.hasByteOrderMark && encoding != QStringConverter::Latin1;
    d->doc->setFileFormat(format);
}

bool TextEditor::open(const QString &path)
{
    d->error.clear();
    if (path.isEmpty()) {
        d->error = tr("There is no file name.");
        return false;
    }
    const QString formerPath = d->path;
    // First, so that the text is scanned once, with the highlight of its name.
    setFilePath(path);
    if (d->doc->loadFile(d->path, d->textCodec, &d->error))
        return true;
    // The text is still the former one, and must not be saved over this file.
    setFilePath(formerPath);
    return false;
}

bool TextEditor::save()
{
    d->error.clear();
    if (!d->doc->isModified())
        return true;
    if (d->path.isEmpty()) {
        d->error = tr("There is no file name.");
        return false;
    }
    return d->doc->saveFile(d->path, &d->error);
}

bool TextEditor::saveAs(const QString &path)
{
    const QString formerPath = d->path;
    setFilePath(path);
    d->doc->setModified(true);
    if (save())
        return true;
    // Else the next save would go to the place that just failed.
    setFilePath(formerPath);
    return false;
}

QString TextEditor::errorString() const
{
    return d->error;
}

void TextEditor::fileNew()
{
    d->doc->clear();
    d->doc->setFileFormat({d->textCodec});
    setFilePath(QString());
}

void TextEditor::notifyChange(ChangeId id)
{
    emit changed(id);
}

int TextEditor::line() const
{
    return d->view->cursor()->line();
}

int TextEditor::column() const
{
    return d->view->cursor()->column();
}

bool TextEditor::isModified() const
{
    return d->doc->isModified();
}

void TextEditor::setModified(bool modified)
{
    d->doc->setModified(modified);
    notifyChange(Modification);
}

bool TextEditor::getWrap() const
{
    return d->doc->getWrap();
}

void TextEditor::setWrap(bool wrap)
{
    d->doc->setWrap(wrap);
}

QString TextEditor::highlight() const
{
    return d->view->hl ? d->view->hl->name() : QString();
}

void TextEditor::setHighlight(const QString &name)
{
    d->view->setHighlight(name);
}

bool TextEditor::isReadOnly() const
{
    return d->doc->isReadOnly();
}

void TextEditor::setReadOnly(bool readOnly)
{
    d->doc->setReadOnly(readOnly);
}

bool TextEditor::hasSelection() const
{
    return d->view->hasSelection();
}

void TextEditor::clear()
{
    d->doc->clear();
}

QString TextEditor::text() const
{
    return d->doc->text();
}

void TextEditor::setText(const QString &text)
{
    // What append() would refuse to put there must not be thrown away first.
    if (d->doc->isReadOnly())
        return;
    d->doc->clear();
    append(text);
}

QString TextEditor::getSelectedText()
{
    d->makeViewActive();
    return d->doc->selectionCommand(SelectionText);
}

void TextEditor::append(const QString &text)
{
    d->makeViewActive();
    d->doc->append(text);
    d->doc->updateViews();
}

void TextEditor::insertLine(const QString &text, int line)
{
    d->makeViewActive();
    d->doc->insert(text, line, 0);
    d->doc->updateViews();
}

void TextEditor::cut()
{
    d->makeViewActive();
    if (hasSelection())
        d->doc->selectionCommand(SelectionCut);
}

void TextEditor::copy()
{
    d->makeViewActive();
    if (hasSelection())
        d->doc->selectionCommand(SelectionCopy);
}

void TextEditor::paste()
{
    d->insertPasted(QGuiApplication::clipboard()->text(QClipboard::Clipboard));
}

void TextEditor::pasteSelection()
{
    const QClipboard *clipboard = QGuiApplication::clipboard();
    d->insertPasted(clipboard->supportsSelection() ? clipboard->text(QClipboard::Selection)
                                                   : d->manager->winClipboard);
}

/// Nothing to paste leaves the selected text where it is.
void TextEditor::Private::insertPasted(const QString &text)
{
    if (text.isEmpty() || doc->isReadOnly())
        return;
    makeViewActive();
    doc->selectionCommand(SelectionRemove);
    doc->insert(text, 0, 0);
}

void TextEditor::del()
{
    d->makeViewActive();
    if (hasSelection())
        d->doc->selectionCommand(SelectionRemove);
    else
        d->doc->del(0, 0);
}

void TextEditor::undo()
{
    qDebug("TextEditor::undo() is deprecated, use QtUndoManager actions instead");
    d->makeViewActive();
    d->doc->undoStack()->undo();
}

void TextEditor::redo()
{
    qDebug("TextEditor::redo() is deprecated, use QtUndoManager actions instead");
    d->makeViewActive();
    d->doc->undoStack()->redo();
}

bool TextEditor::canUndo() const
{
    return d->doc->undoStack()->canUndo();
}

bool TextEditor::canRedo() const
{
    return d->doc->undoStack()->canRedo();
}

void TextEditor::indent()
{
    d->makeViewActive();
    d->doc->indent();
}

void TextEditor::unindent()
{
    d->makeViewActive();
    d->doc->unindent();
}

void TextEditor::moveCursor(int line, int column)
{
    reveal(line);
    d->view->centerCursor(line, column);
}

void TextEditor::reveal(int line)
{
    line = std::clamp(line, 0, d->doc->lastLine());
    // A closed fold that begins here may stay closed.
    if (!d->doc->lineOf(line)->isFoldVisible)
        d->doc->folding()->ensureLineVisible(line);
}

void TextEditor::setLineIcon(int line, QPixmap *pixmap)
{
    if (line < 0 || line > d->doc->lastLine())
        return;
    d->doc->lineOf(line)->setLinePixmap(pixmap);
    d->view->indicatorMargin()->update();
}

void TextEditor::clearLineIcon(int line)
{
    setLineIcon(line, nullptr);
}

void TextEditor::Private::makeViewActive()
{
    doc->setActiveView(view);
}

bool TextEditor::event(QEvent *event)
{
    if (event->type() == completionFinished) {
        finishCompletion();
        if (d->completionPopup)
            d->completionPopup->close();
    }
    return QFrame::event(event);
}

bool TextEditor::eventFilter(QObject *object, QEvent *event)
{
    if (d->completionPopup && object == d->completionPopup)
        d->filterPopup(event);
    if (object == d->view && event->type() == QEvent::FocusIn)
        d->manager->editorActivated(this);
    return QFrame::eventFilter(object, event);
}

} // namespace zvwidgets
