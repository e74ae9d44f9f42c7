#include "app/editors/zveditor/hloptions.h"
#include "app/editors/zveditor/zveditor.h"
#include "app/editors/zveditor/zveditorsettingsdialog.h"
#include "app/settings.h"
#include "app/shell.h"
#include "zvwidgets/zveditor/textmanager.h"

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>

#include <algorithm>

using zvwidgets::HLOptions;
using zvwidgets::TextEditorManager;

namespace vesk {

namespace {

constexpr QLatin1String highlightPrefix("/zveditor/hl");
constexpr QLatin1String tabWidthKey("/zveditor/TabWidth");
constexpr QLatin1String guidesKey("/zveditor/IndentationGuides");
constexpr QLatin1String fontKey("/zveditor/Font");
/// Nothing writes it: the width for other programs' use does not follow the width on
/// screen. The dialog shows it all the same, which is meant.
constexpr QLatin1String otherTabWidthKey("/Editor/TabWidth");
constexpr int standardTabWidth = 4;

/// Where nothing is stored, the dialog offers another font than the editors show, which
/// is meant.
constexpr QLatin1String runningFont("Luxi Mono [Zvc],11,-1,5,50,0,0,0,0,0");
constexpr QLatin1String offeredFont("Fixed [Misc],14,-1,5,50,0,0,0,1,0");
/// A row of a larger font would be higher than any screen.
constexpr qreal largestSize = 500; // points or pixels

struct SwitchOption
{
    const char *key;
    bool running; ///< value of the editors where nothing is stored
    bool offered; ///< value in the dialog then
    QCheckBox *ZVEditorSettingsDialog::*box;
    bool TextEditorManager::*flag;
    void (TextEditorManager::*set)(bool) = nullptr; ///< instead of the flag
};

using Dialog = ZVEditorSettingsDialog;
using Manager = TextEditorManager;

/// "ReplaceTabs" goes into the flag that keeps tabs, as it stands: with the option on,
/// tabs are kept. Word wrap is only the start value of new documents. Line numbers are
/// offered but not shown until the dialog was accepted once. All of this is meant.
constexpr SwitchOption switchOptions[] = {
    {"/zveditor/AutoIndent", true, true, &Dialog::bAutoIndent, &Manager::fAutoIndent},
    {"/zveditor/BackspaceIndent", true, true, &Dialog::bBackSpaceIndent,
     &Manager::fBackspaceIndent},
    {"/zveditor/SmartHome", true, true, &Dialog::bSmartHome, &Manager::fSmartHome},
    {"/zveditor/WrapCursor", true, true, &Dialog::bWrapCursor, &Manager::fCursorWrap},
    {"/zveditor/ReplaceTabs", true, true, &Dialog::bReplaceTabs, &Manager::fSaveTab},
    {"/zveditor/RemoveSpacer", false, false, &Dialog::bRemoveSpacer, &Manager::fRemoveSpaces},
    {"/zveditor/WordWrap", true, true, &Dialog::bWordWrap, &Manager::fLineWrap},
    {"/zveditor/IndicatorMargin", true, true, &Dialog::bIndicatorMargin, nullptr,
     &Manager::setIndicatorMarginVisible},
    {"/zveditor/LineNumberMargin", false, true, &Dialog::bLineNumberMargin, nullptr,
     &Manager::setLineNumberMarginVisible},
    {"/zveditor/SelectionMargin", false, false, &Dialog::bSelectionMargin, nullptr,
     &Manager::setSelectionMarginVisible},
    {"/zveditor/VerticalSelection", false, false, &Dialog::bVerticalSelection, nullptr,
     &Manager::setVerticalSelection},
};

QString keyOf(const SwitchOption &option)
{
    return QString::fromLatin1(option.key);
}

/// The font that is stored, or \a standard if that is none; of a size that can be shown.
QFont storedFont(const QString &standard)
{
    const QString stored = Settings::read(fontKey, standard);
    QFont font;
    // Of nothing the toolkit would complain.
    if (stored.isEmpty() || !font.fromString(stored))
        font.fromString(standard);
    if (font.pointSizeF() > largestSize)
        font.setPointSizeF(largestSize);
    else if (font.pixelSize() > largestSize)
        font.setPixelSize(int(largestSize));
    // No dialog sets them, and a text of any width could be asked for with them.
    font.setLetterSpacing(QFont::AbsoluteSpacing, 0);
    font.setWordSpacing(0);
    return font;
}

int offeredTabWidth()
{
    return Settings::readNum(otherTabWidthKey, standardTabWidth);
}

void fill(ZVEditorSettingsDialog *dialog)
{
    for (const SwitchOption &option : switchOptions)
        (dialog->*option.box)->setChecked(Settings::readBool(keyOf(option), option.offered));
    dialog->lTabWidth->setText(QString::number(offeredTabWidth()));
    dialog->setSampleFont(storedFont(offeredFont));
}

void store(const ZVEditorSettingsDialog &dialog)
{
    for (const SwitchOption &option : switchOptions)
        Settings::write(keyOf(option), (dialog.*option.box)->isChecked());
    Settings::write(tabWidthKey, dialog.lTabWidth->text().toInt());
    Settings::write(guidesKey, dialog.bIndentationGuides->isChecked());
    Settings::write(fontKey, dialog.fontViewLabel->font().toString());
}

} // namespace

void ZVEditor::loadConfig()
{
    TextEditorManager *const m = manager();
    m->setGlobalConfig(Settings::self());
    m->setHlSettingsKey(Settings::storeKey(Settings::keyPrefix() + highlightPrefix));
    m->fIndentationGuides = false;
    for (const SwitchOption &option : switchOptions) {
        const bool on = Settings::readBool(keyOf(option), option.running);
        if (option.flag)
            m->*option.flag = on;
        else
            (m->*option.set)(on);
    }
    m->setTabWidth(Settings::readNum(tabWidthKey, standardTabWidth));
    m->setFont(storedFont(runningFont));
    m->currentLineColor = QColor(QStringLiteral("#efefff"));
}

int ZVEditor::tabWidthInSpaces() const
{
    return offeredTabWidth();
}

/// Writes the options at once. They hold for this run also where that fails.
void ZVEditor::keepOptions()
{
    Settings::forceWrite();
    if (Settings::self()->isWritable())
        return;
    Shell::self()->statusMessage(QStringLiteral("default"),
                                 tr("The options hold until the program ends: %1 cannot be written")
                                     .arg(Settings::self()->fileName()));
}

void ZVEditor::configure()
{
    ZVEditorSettingsDialog dialog(Shell::self());
    fill(&dialog);
    if (dialog.exec() != QDialog::Accepted)
        return;
    store(dialog);
    keepOptions();
    loadConfig();
    repaint();
}

void ZVEditor::configureHighlighting()
{
    manager()->setGlobalConfig(Settings::self());
    HLOptions dialog(Shell::self(), "options", true);
    if (dialog.exec() == QDialog::Accepted)
        keepOptions();
}

} // namespace vesk
