#pragma once

#include "app/bookmarks/bookmarksdialogbase.h"

#include <QMap>

namespace vesk {

class EditBookmarkDialog;

/// Edits the bookmarks of one category. Its size is kept in the settings.
class BookmarksDialog : public BookmarksDialogBase
{
    Q_OBJECT
public:
    explicit BookmarksDialog(QWidget *parent);
    ~BookmarksDialog() override;

    /// From name to URL; of rows with one name the last counts.
    QMap<QString, QString> bookmarks() const;
    /// Replaces all rows.
    void setBookmarks(const QMap<QString, QString> &bookmarks);

public slots:
    void addBookmark();
    void editBookmark();
    /// Without a question.
    void removeBookmark();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    EditBookmarkDialog *const editor;
};

} // namespace vesk
