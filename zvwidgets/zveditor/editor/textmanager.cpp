#include "zvwidgets/zveditor/textmanager.h"

#include "zvwidgets/zveditor/highlight.h"
#include "zvwidgets/zveditor/highlight/highlightmanager.h"
#include "zvwidgets/zveditor/textdoc.h"
#include "zvwidgets/zveditor/texteditor.h"
#include "zvwidgets/zveditor/textview.h"

#include <QApplication>
#include <QPrintDialog>
#include <QPrinter>

#include <utility>

namespace zvwidgets {

struct TextEditorManager::Private
{
    void tagDocuments() const;

    QList<TextEditor *> editors;
    QList<TextDocument *> documents;
    QMap<int, QStringList> addedCompleteWords;
    std::unique_ptr<QPrinter> printer;
};

void TextEditorManager::Private::tagDocuments() const
{
    for (TextDocument *doc : documents) {
        doc->tagAll();
        doc->updateViews();
    }
}

TextEditorManager::TextEditorManager()
    : margins(30, 30, 30, 30)
    , normalBackgroundColor(Qt::white)
    , selectedBackgroundColor(QStringLiteral("#d0d0d0"))
    , foundBackgroundColor(QStringLiteral("#a0a0a0"))
    , d(std::make_unique<Private>())
{
    setFont(QFont());
    setResourcesDir(qEnvironmentVariable("QTDIR"));
}

TextEditorManager::~TextEditorManager() = default;

TextEditor *TextEditorManager::createEditor(QWidget *parent, TextDocument *doc, const QString &name)
{
    TextDocument *const made = doc ? nullptr : new TextDocument(this);
    auto *const editor = new TextEditor(made ? made : doc, parent, name);
    addEditor(editor, made);
    return editor;
}

void TextEditorManager::addEditor(TextEditor *e, TextDocument *doc)
{
    if (doc && !d->documents.contains(doc)) {
        connect(doc, &QObject::destroyed, this, &TextEditorManager::docDestroyed);
        d->documents.append(doc);
    }
    if (e && !d->editors.contains(e)) {
        connect(e, &QObject::destroyed, this, &TextEditorManager::editorDestroyed);
        d->editors.append(e);
    }
}

void TextEditorManager::docDestroyed()
{
    const QObject *const gone = sender();
    d->documents.removeIf([gone](const QObject *doc) { return doc == gone; });
}

void TextEditorManager::editorDestroyed()
{
    const QObject *const gone = sender();
    d->editors.removeIf([gone](const QObject *editor) { return editor == gone; });
}

void TextEditorManager::editorActivated(TextEditor *e)
{
    emit activate(e);
}

QStringList TextEditorManager::highlightsNames()
{
    QStringList names = TextHighlightManager::highlights(this).keys();
    names.sort();
    return names;
}

QMap<int, QStringList> TextEditorManager::addedCompleteWords() const
{
    return d->addedCompleteWords;
}

void TextEditorManager::addCompletionList(const QStringList &words, int minimumMatchedLength)
{
    d->addedCompleteWords[minimumMatchedLength] += words;
}

void TextEditorManager::setOverwriteMode(bool on)
{
    fOvr = on;
    emit overwriteModeChanged();
}

void TextEditorManager::setIndicatorMarginVisible(bool on)
{
    fIndicatorMargin = on;
    updateMarginsState();
}

void TextEditorManager::setLineNumberMarginVisible(bool on)
{
    fLineNumberMargin = on;
    updateMarginsState();
}

void TextEditorManager::setSelectionMarginVisible(bool on)
{
    fSelectionMargin = on;
    updateMarginsState();
}

void TextEditorManager::setFoldingMarginVisible(bool on)
{
    fFoldingMargin = on;
    updateMarginsState();
}

void TextEditorManager::updateMarginsState()
{
    for (const TextEditor *editor : std::as_const(d->editors))
        editor->view()->updateMarginsState();
}

void TextEditorManager::setTabWidth(int width)
{
    wantedTabWidth = width;
    for (TextDocument *doc : std::as_const(d->documents))
        doc->setSpacesInTab(width);
}

void TextEditorManager::setLineWrap(bool on)
{
    fLineWrap = on;
    for (TextDocument *doc : std::as_const(d->documents))
        doc->setWrap(on);
}

void TextEditorManager::setVerticalSelection(bool on)
{
    fVerticalSelection = on;
    d->tagDocuments();
}

void TextEditorManager::updateHighlight()
{
    for (const TextDocument *doc : std::as_const(d->documents)) {
        if (TextView *const view = doc->activeView())
            view->setHighlight(view->hl->name());
    }
}

void TextEditorManager::setFont(const QFont &f)
{
    replaceFont(f);
    for (TextDocument *doc : std::as_const(d->documents))
        doc->updateFontData();
}

bool TextEditorManager::setupPrinter()
{
    QPrintDialog dialog(printer(), QApplication::activeWindow());
    if (dialog.exec() != QDialog::Accepted)
        return false;
    setMargins(margins);
    return true;
}

QPrinter *TextEditorManager::printer() const
{
    if (!d->printer)
        d->printer = std::make_unique<QPrinter>(QPrinter::ScreenResolution);
    return d->printer.get();
}

void TextEditorManager::setMargins(const QRect &r)
{
    margins = r;
    d->tagDocuments();
}

int TextEditorManager::printWidth() const
{
    constexpr int pointsPerInch = 72;
    const QPrinter *const device = printer();
    return device->width() -
           (margins.x() + margins.width()) * device->logicalDpiX() / pointsPerInch;
}

void TextEditorManager::ruleDropped(const QString &highlight, const QString &expression)
{
    emit highlightRuleDropped(highlight, expression);
}

} // namespace zvwidgets
