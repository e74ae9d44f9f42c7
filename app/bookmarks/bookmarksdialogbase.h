#pragma once

#include <QDialog>

class QPushButton;
class QTreeWidget;

namespace vesk {

/// The form of the dialog that manages bookmarks.
class BookmarksDialogBase : public QDialog
{
    Q_OBJECT
public:
    explicit BookmarksDialogBase(QWidget *parent);

    QTreeWidget *bookmarkListView;
    QPushButton *addButton;
    QPushButton *editButton;
    QPushButton *removeButton;
    QPushButton *buttonOk;
    QPushButton *buttonCancel;
};

} // namespace vesk
