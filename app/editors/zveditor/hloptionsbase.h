#pragma once

#include <QDialog>

class QCheckBox;
class QGridLayout;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;

namespace vesk {
class ColorCombo;
}

namespace zvwidgets {

/// The form of the highlighting dialog: widgets and layout only.
class HLOptionsBase : public QDialog
{
    Q_OBJECT
public:
    explicit HLOptionsBase(QWidget *parent = nullptr, const char *name = nullptr,
                           bool modal = false, unsigned int flags = 0);

    QListWidget *listHl; ///< names of the definitions
    QListWidget *listItems;
    QCheckBox *checkItalic;
    QCheckBox *checkBold;
    QLineEdit *lineFileMask;
    vesk::ColorCombo *color;
    vesk::ColorCombo *bgColor;
    QLabel *labelAutodetection;
    QPushButton *buttonAutodetection;
    QPushButton *buttonOk;
    QPushButton *buttonCancel;

private:
    QGridLayout *definitionRows();
    QGridLayout *itemRows();
};

} // namespace zvwidgets
