#pragma once

#include <QDialog>

class QCheckBox;
class QGroupBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QScrollArea;

namespace vesk {

/// The form of the options that all editors share. It only holds what was filled in:
/// `ZVEditor::configure()` loads and stores it.
class ZVEditorSettingsDialog : public QDialog
{
    Q_OBJECT
public:
    explicit ZVEditorSettingsDialog(QWidget *parent = nullptr);

    // Edit Options
    QCheckBox *bAutoIndent = nullptr;
    QCheckBox *bBackSpaceIndent = nullptr;
    QCheckBox *bSmartHome = nullptr;
    QCheckBox *bRemoveSpacer = nullptr;
    QCheckBox *bReplaceTabs = nullptr;
    QCheckBox *bWrapCursor = nullptr;
    QCheckBox *bIndentationGuides = nullptr;
    QCheckBox *bWordWrap = nullptr;
    // Margins
    QCheckBox *bIndicatorMargin = nullptr;
    QCheckBox *bLineNumberMargin = nullptr;
    QCheckBox *bSelectionMargin = nullptr;
    // Other
    QCheckBox *bVerticalSelection = nullptr;
    QLineEdit *lTabWidth = nullptr;
    // Font
    /// A sample text; its font is the one chosen.
    QLabel *fontViewLabel = nullptr;
    QPushButton *buttonSelectFont = nullptr;

    /// Makes room for the sample in that font, as far as that is no waste.
    void setSampleFont(const QFont &font);

public slots:
    /// Asks for a font for the sample.
    void selectFont();

private:
    void makeCheckBoxes();
    QGroupBox *group(const QString &title, const QList<QWidget *> &members);
    QWidget *tabWidthRow();
    QWidget *fontSample();

    QScrollArea *sampleArea = nullptr;
};

} // namespace vesk
