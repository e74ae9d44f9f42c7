#include "app/editors/zveditor/zveditorsettingsdialog.h"

#include "app/widgets/dialogparts.h"

#include <QCheckBox>
#include <QFontDialog>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollArea>

#include <algorithm>

namespace vesk {

namespace {

using Dialog = ZVEditorSettingsDialog;

struct CheckBoxRow
{
    QCheckBox *Dialog::*box;
    const char *name;
    const char *label;
    const char *tip;
};

const char autoIndentTip[] = QT_TRANSLATE_NOOP("vesk::ZVEditorSettingsDialog",
                                               "When the <b>Automatically indent</b> is on,<br>\n"
                                               "editor will indent new lines to equal<br>\n"
                                               "the indent on previous line.<br>\n"
                                               "<br>\n"
                                               "If the previous line is blank, the nearest<br>\n"
                                               "line above with text used.");
const char backspaceTip[] = QT_TRANSLATE_NOOP("vesk::ZVEditorSettingsDialog",
                                              "This allow the <b>Backspace</b> key to be<br>\n"
                                              "used to decrease the indent level.");
const char smartHomeTip[] =
    QT_TRANSLATE_NOOP("vesk::ZVEditorSettingsDialog",
                      "If the feature enabled then on first press of <b>Home</b>\n"
                      "button cursos will jump on first non space symbol in line,\n"
                      "on second press of <b>Home</b> button it will jump on begin of line.");
const char removeSpacerTip[] = QT_TRANSLATE_NOOP(
    "vesk::ZVEditorSettingsDialog", "Editor will automatically eliminate extra spaces\n"
                                    "at the end of line of text.");
const char replaceTabsTip[] = QT_TRANSLATE_NOOP(
    "vesk::ZVEditorSettingsDialog", "Editor will replace any tabs with the number of spaces\n"
                                    "indicated in Tab width entry.");
const char wrapCursorTip[] = QT_TRANSLATE_NOOP(
    "vesk::ZVEditorSettingsDialog", "When on, moving the insertion cursor using the <b>Left</b> \n"
                                    "and <b>Right</b> keys will go on to\n"
                                    "previous/next line at beginning/end of the\n"
                                    "line, similar to most editors.<br>\n"
                                    "<br>\n"
                                    "When off, the insertion cursor cannot be \n"
                                    "moved left of the line start, but it can be\n"
                                    "moved off the line end, which can be very\n"
                                    "handy for programmers");
const char wordWrapTip[] = QT_TRANSLATE_NOOP(
    "vesk::ZVEditorSettingsDialog", "<b>Word wrap</b> is feature that cause the editor to\n"
                                    "automatically start a new line of text and move\n"
                                    "(wrap) the cursor to beginning of that new\n"
                                    "line. Editor will automatically start a new line of\n"
                                    "text of the current line reaches length of\n"
                                    "editor window.<br>\n"
                                    "<br>\n"
                                    "<b>NOTE:</b> Word wrap is not changing existing lines.");
const char indicatorMarginTip[] =
    QT_TRANSLATE_NOOP("vesk::ZVEditorSettingsDialog", "Show margin with special indicators as\n"
                                                      "breakpoints or bookmarks.");
const char lineNumberMarginTip[] =
    QT_TRANSLATE_NOOP("vesk::ZVEditorSettingsDialog", "Show line numbers at left side of editor.");
const char selectionMarginTip[] = QT_TRANSLATE_NOOP(
    "vesk::ZVEditorSettingsDialog", "The margin allow you selecting sections of text\n"
                                    "with dragging pressed mouse.");
const char verticalSelectionTip[] = QT_TRANSLATE_NOOP(
    "vesk::ZVEditorSettingsDialog", "Enbale vertical selection in editor. \n"
                                    "It mean that you are selecting box of text instead\n"
                                    "selecting through lines.");

/// In the order of the Tab key within each group.
const CheckBoxRow checkBoxRows[] = {
    {&Dialog::bAutoIndent, "bAutoIndent",
     QT_TRANSLATE_NOOP("vesk::ZVEditorSettingsDialog", "Automatically &indent"), autoIndentTip},
    {&Dialog::bBackSpaceIndent, "bBackSpaceIndent",
     QT_TRANSLATE_NOOP("vesk::ZVEditorSettingsDialog", "&Backspace key indent"), backspaceTip},
    {&Dialog::bSmartHome, "bSmartHome",
     QT_TRANSLATE_NOOP("vesk::ZVEditorSettingsDialog", "Smart &home key"), smartHomeTip},
    {&Dialog::bRemoveSpacer, "bRemoveSpacer",
     QT_TRANSLATE_NOOP("vesk::ZVEditorSettingsDialog", "&Remove trailing spaces"), removeSpacerTip},
    {&Dialog::bReplaceTabs, "bReplaceTabs",
     QT_TRANSLATE_NOOP("vesk::ZVEditorSettingsDialog", "R&eplace tabs"), replaceTabsTip},
    {&Dialog::bWrapCursor, "bWrapCursor",
     QT_TRANSLATE_NOOP("vesk::ZVEditorSettingsDialog", "Wrap &cursor"), wrapCursorTip},
    {&Dialog::bIndentationGuides, "bIndentationGuides",
     QT_TRANSLATE_NOOP("vesk::ZVEditorSettingsDialog", "Indentation guides"), nullptr},
    {&Dialog::bWordWrap, "bWordWrap",
     QT_TRANSLATE_NOOP("vesk::ZVEditorSettingsDialog", "Enable word &wrap"), wordWrapTip},
    {&Dialog::bIndicatorMargin, "bIndicatorMargin",
     QT_TRANSLATE_NOOP("vesk::ZVEditorSettingsDialog", "Indicator Margin"), indicatorMarginTip},
    {&Dialog::bLineNumberMargin, "bLineNumberMargin",
     QT_TRANSLATE_NOOP("vesk::ZVEditorSettingsDialog", "Line Number Margin"), lineNumberMarginTip},
    {&Dialog::bSelectionMargin, "bSelectionMargin",
     QT_TRANSLATE_NOOP("vesk::ZVEditorSettingsDialog", "Selection Margin"), selectionMarginTip},
    {&Dialog::bVerticalSelection, "bVerticalSelection",
     QT_TRANSLATE_NOOP("vesk::ZVEditorSettingsDialog", "&Vertical selection"),
     verticalSelectionTip},
};

} // namespace

ZVEditorSettingsDialog::ZVEditorSettingsDialog(QWidget *parent) : QDialog(parent)
{
    makeCheckBoxes();
    // Nothing reads the option.
    bIndentationGuides->hide();
    QGroupBox *const other = group(tr("Other"), {tabWidthRow(), bVerticalSelection});
    QGroupBox *const margins =
        group(tr("Margins"), {bIndicatorMargin, bLineNumberMargin, bSelectionMargin});
    QWidget *const sample = fontSample();
    QGroupBox *const font = group(tr("Font"), {sample, buttonSelectFont});
    QGroupBox *const edit =
        group(tr("Edit Options"), {bAutoIndent, bBackSpaceIndent, bSmartHome, bRemoveSpacer,
                                   bReplaceTabs, bWrapCursor, bIndentationGuides, bWordWrap});

    auto *const all = new QGridLayout(this);
    all->addWidget(other, 0, 0);
    all->addWidget(margins, 1, 0);
    all->addWidget(edit, 0, 1, 2, 1);
    all->addWidget(font, 2, 0, 1, 2);
    all->addLayout(DialogParts::okAndCancel(this), 3, 0, 1, 2);
    auto *const buttonOk = findChild<QPushButton *>(QStringLiteral("buttonOk"));
    all->setRowStretch(2, 1);
    DialogParts::finish(this, QStringLiteral("ZVEditorSettingsDialog"), tr("Configure editor..."),
                        0, 0);
    const QList<QWidget *> order = {
        lTabWidth,   bVerticalSelection, bIndicatorMargin, bLineNumberMargin, bSelectionMargin,
        bAutoIndent, bBackSpaceIndent,   bSmartHome,       bRemoveSpacer,     bReplaceTabs,
        bWrapCursor, bWordWrap,          buttonSelectFont, buttonOk};
    for (qsizetype i = 1; i < order.size(); ++i)
        setTabOrder(order.at(i - 1), order.at(i));
    lTabWidth->setFocus();
}

void ZVEditorSettingsDialog::makeCheckBoxes()
{
    for (const CheckBoxRow &row : checkBoxRows) {
        auto *const box = new QCheckBox(tr(row.label), this);
        box->setObjectName(QString::fromLatin1(row.name));
        if (row.tip)
            box->setToolTip(tr(row.tip));
        this->*row.box = box;
    }
}

QGroupBox *ZVEditorSettingsDialog::group(const QString &title, const QList<QWidget *> &members)
{
    auto *const box = new QGroupBox(title, this);
    auto *const column = new QVBoxLayout(box);
    column->setContentsMargins(11, 11, 11, 11);
    column->setSpacing(6);
    for (QWidget *const member : members)
        column->addWidget(member);
    if (!members.contains(sampleArea))
        column->addStretch();
    return box;
}

QWidget *ZVEditorSettingsDialog::tabWidthRow()
{
    auto *const row = new QWidget(this);
    auto *const layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(6);
    QLabel *const label = DialogParts::label(row, QStringLiteral("labelTabWidth"), tr("Tab width"));
    lTabWidth = new QLineEdit(row);
    lTabWidth->setObjectName(QStringLiteral("lTabWidth"));
    const QString tip = tr("Length of tabulation in space symbols.");
    label->setToolTip(tip);
    lTabWidth->setToolTip(tip);
    label->setBuddy(lTabWidth);
    layout->addWidget(label);
    layout->addWidget(lTabWidth);
    return row;
}

/// Scrolls: the font may be of any size.
QWidget *ZVEditorSettingsDialog::fontSample()
{
    fontViewLabel = DialogParts::label(this, QStringLiteral("fontViewLabel"),
                                       tr("qwertyuiop\nQWERTYUIOP\n1234567890"));
    fontViewLabel->setTextFormat(Qt::PlainText);
    fontViewLabel->setAlignment(Qt::AlignCenter);
    fontViewLabel->setBackgroundRole(QPalette::Base);
    fontViewLabel->setForegroundRole(QPalette::Text);
    sampleArea = new QScrollArea(this);
    sampleArea->setObjectName(QStringLiteral("fontViewArea"));
    sampleArea->setFocusPolicy(Qt::NoFocus);
    sampleArea->setWidgetResizable(true);
    sampleArea->setWidget(fontViewLabel);
    buttonSelectFont = new QPushButton(tr("&Select"), this);
    buttonSelectFont->setObjectName(QStringLiteral("buttonSelectFont"));
    // Return is for the whole dialog.
    buttonSelectFont->setAutoDefault(false);
    connect(buttonSelectFont, &QPushButton::clicked, this, &ZVEditorSettingsDialog::selectFont);
    return sampleArea;
}

void ZVEditorSettingsDialog::selectFont()
{
    bool isAccepted = false;
    const QFont chosen = QFontDialog::getFont(&isAccepted, fontViewLabel->font(), this);
    if (isAccepted)
        setSampleFont(chosen);
}

void ZVEditorSettingsDialog::setSampleFont(const QFont &font)
{
    constexpr int mostRows = 12;
    fontViewLabel->setFont(font);
    const int wanted = fontViewLabel->sizeHint().height() + 2 * sampleArea->frameWidth();
    sampleArea->setMinimumHeight(std::min(wanted, mostRows * fontMetrics().height()));
}

} // namespace vesk
