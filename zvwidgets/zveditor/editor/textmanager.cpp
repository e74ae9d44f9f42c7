#include "zvwidgets/zveditor/textmanager.h"

#include "zvwidgets/zveditor/document/fontglyphs.h"
#include "zvwidgets/zveditor/highlight.h"
#include "zvwidgets/zveditor/highlight/highlightmanager.h"
#include "zvwidgets/zveditor/textdoc.h"
#include "zvwidgets/zveditor/texteditor.h"
#include "zvwidgets/zveditor/textview.h"

#include <QApplication>
#include <QFontDatabase>
#include <QFontInfo>
#include <QPrintDialog>
#include <QPrinter>

#include <utility>

namespace zvwidgets {

namespace {

constexpr int variants = 4;
constexpr int italicBit = 1;
constexpr int boldBit = 2;

/// Without these advances are fractions that depend on the neighbour, and no sum
/// of them finds a column again.
void setWholeAdvances(QFont *f)
{
    f->setKerning(false);
    f->setHintingPreference(QFont::PreferFullHinting);
}

/// As it is drawn, so that asking loads no other font than the one in use. A
/// family that is unknown needs no loading at all, which takes a millisecond.
bool isInstalled(QFont f)
{
    setWholeAdvances(&f);
    return QFontDatabase::hasFamily(f.family()) && QFontInfo(f).exactMatch();
}

/// Of a family that is not there the toolkit would make a proportional one.
QFont withFixedFallback(QFont f)
{
    if (!isInstalled(f)) {
        f.setStyleHint(QFont::TypeWriter);
        f.setFixedPitch(true);
    }
    return f;
}

} // namespace

struct TextEditorManager::Private
{
    void tagDocuments() const;
    void makeFonts();

    QList<TextEditor *> editors;
    QList<TextDocument *> documents;
    QFont fnt;
    FontData fonts[variants];
    /// False: the fonts are those before fnt.
    bool areFontsMade = false;
    int tabWidth = 8;
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

/// Loading fonts takes milliseconds, and the program sets one before it shows a text
/// in another.
void TextEditorManager::Private::makeFonts()
{
    if (areFontsMade)
        return;
    areFontsMade = true;
    const QFont base = withFixedFallback(fnt);
    for (int i = 0; i < variants; ++i)
        fonts[i].set(base, i & boldBit, i & italicBit);
}

FontData::FontData() = default;
FontData::~FontData() = default;

void FontData::set(const QFont &f, bool bold, bool italic)
{
    font = std::make_unique<QFont>(f);
    font->setBold(bold);
    font->setItalic(italic);
    setWholeAdvances(font.get());
    fm = std::make_unique<QFontMetrics>(*font);
    glyphs = std::make_unique<FontGlyphs>(*font);
    width = fm->horizontalAdvance(QLatin1Char('W'));
    if (fm->horizontalAdvance(QLatin1Char('i')) != width)
        width = -1;
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

int TextEditorManager::tabWidth() const
{
    return d->tabWidth;
}

void TextEditorManager::setTabWidth(int width)
{
    d->tabWidth = width;
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

QFont &TextEditorManager::font()
{
    return d->fnt;
}

QFont &TextEditorManager::font(int i)
{
    d->makeFonts();
    return *d->fonts[i].font;
}

void TextEditorManager::setFont(const QFont &f)
{
    d->fnt = f;
    d->areFontsMade = false;
    for (TextDocument *doc : std::as_const(d->documents))
        doc->updateFontData();
}

const FontData &TextEditorManager::fontData(int i) const
{
    d->makeFonts();
    return d->fonts[i];
}

int TextEditorManager::width(int i, QChar c) const
{
    const FontData &data = fontData(i);
    return data.width >= 0 ? data.width : data.glyphs->of(c).advance;
}

int TextEditorManager::width(int i, const QString &s) const
{
    const FontData &data = fontData(i);
    if (data.width >= 0)
        return int(s.length()) * data.width;
    int sum = 0;
    for (const QChar c : s)
        sum += data.glyphs->of(c).advance;
    return sum;
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
