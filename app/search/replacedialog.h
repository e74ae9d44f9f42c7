#pragma once

#include <QDialog>

class QCheckBox;
class QComboBox;

namespace vesk {

/// Asks for a text to find and what to put in its place. It keeps its options
/// from one use to the next.
class ReplaceDialog : public QDialog
{
    Q_OBJECT
public:
    explicit ReplaceDialog(QWidget *parent = nullptr);

    QComboBox *findString;
    QComboBox *replaceString;
    QCheckBox *caseSensitive;
    QCheckBox *replaceAll;
    QCheckBox *regExp;
    QCheckBox *fromCursor;
    QCheckBox *wholeWordsOnly;
    QCheckBox *inSelection;
};

} // namespace vesk
