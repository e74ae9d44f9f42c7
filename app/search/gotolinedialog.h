#pragma once

#include <QDialog>

class QComboBox;

namespace vesk {

/// Asks for a line number.
class GotoLineDialog : public QDialog
{
    Q_OBJECT
public:
    explicit GotoLineDialog(QWidget *parent = nullptr);

    QComboBox *comboLine;
};

} // namespace vesk
