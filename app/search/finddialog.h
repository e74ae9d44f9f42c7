#pragma once

#include <QDialog>

class QCheckBox;
class QComboBox;

namespace vesk {

/// Asks for a text to find. It keeps its texts and options from one use to the
/// next.
class FindDialog : public QDialog
{
    Q_OBJECT
public:
    explicit FindDialog(QWidget *parent = nullptr);

    QComboBox *findString;
    QCheckBox *wholeWordsOnly;
    QCheckBox *fromCursor;
    QCheckBox *inSelection;
    QCheckBox *caseSensitive;
    QCheckBox *regExp;
};

} // namespace vesk
