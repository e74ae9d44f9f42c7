#pragma once

#include <QDialog>

class QLineEdit;
class QPushButton;

namespace vesk {

/// Asks for the name and the URL of one bookmark.
class EditBookmarkDialog : public QDialog
{
    Q_OBJECT
public:
    explicit EditBookmarkDialog(QWidget *parent);

    /// Starts with these texts; false if the user cancels.
    [[nodiscard]] bool ask(const QString &name, const QString &url);

    QLineEdit *nameLineEdit;
    QLineEdit *urlLineEdit;
    QPushButton *buttonOk;
    QPushButton *buttonCancel;
};

} // namespace vesk
