#pragma once

#include <QDialog>

class QLabel;

namespace vesk {

/// Asks about one occurrence of a text that is to be replaced.
class ReplaceAskDialog : public QDialog
{
    Q_OBJECT
public:
    enum Answer
    {
        Cancel,
        Yes,
        No,
        All
    };

    explicit ReplaceAskDialog(QWidget *parent = nullptr);

    QLabel *labelText;

public slots:
    // Each ends the dialog with the Answer of its name.
    void slotCancel();
    void slotYes();
    void slotNo();
    void slotAll();
};

} // namespace vesk
