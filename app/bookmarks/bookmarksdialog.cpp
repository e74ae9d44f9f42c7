#include "app/bookmarks/bookmarksdialog.h"

#include "app/bookmarks/editbookmarkdialog.h"
#include "app/settings.h"

#include <QKeyEvent>
#include <QLineEdit>
#include <QPushButton>
#include <QTreeWidget>

namespace vesk {

namespace {

namespace keys {
constexpr QLatin1String width("/bookmarks/dialog/width");
constexpr QLatin1String height("/bookmarks/dialog/height");
} // namespace keys

enum Column
{
    Name,
    Url
};

} // namespace

BookmarksDialog::BookmarksDialog(QWidget *parent)
    : BookmarksDialogBase(parent), editor(new EditBookmarkDialog(this))
{
    bookmarkListView->setAllColumnsShowFocus(true);
    bookmarkListView->installEventFilter(this);
    const QSize stored(Settings::readNum(keys::width, width()),
                       Settings::readNum(keys::height, height()));
    resize(stored.expandedTo(minimumSizeHint()));
    connect(addButton, &QPushButton::clicked, this, &BookmarksDialog::addBookmark);
    connect(editButton, &QPushButton::clicked, this, &BookmarksDialog::editBookmark);
    connect(removeButton, &QPushButton::clicked, this, &BookmarksDialog::removeBookmark);
    connect(bookmarkListView, &QTreeWidget::itemDoubleClicked, this,
            &BookmarksDialog::editBookmark);
}

BookmarksDialog::~BookmarksDialog()
{
    Settings::write(keys::width, width());
    Settings::write(keys::height, height());
}

QMap<QString, QString> BookmarksDialog::bookmarks() const
{
    QMap<QString, QString> result;
    for (int row = 0; row < bookmarkListView->topLevelItemCount(); ++row) {
        const QTreeWidgetItem *const item = bookmarkListView->topLevelItem(row);
        result.insert(item->text(Name), item->text(Url));
    }
    return result;
}

void BookmarksDialog::setBookmarks(const QMap<QString, QString> &bookmarks)
{
    bookmarkListView->clear();
    for (auto it = bookmarks.cbegin(); it != bookmarks.cend(); ++it)
        bookmarkListView->addTopLevelItem(new QTreeWidgetItem({it.key(), it.value()}));
    bookmarkListView->setCurrentItem(bookmarkListView->topLevelItem(0));
    bookmarkListView->setFocus();
}

void BookmarksDialog::addBookmark()
{
    if (!editor->ask(QString(), QString()))
        return;
    auto *const item = new QTreeWidgetItem(
        bookmarkListView, {editor->nameLineEdit->text(), editor->urlLineEdit->text()});
    bookmarkListView->setCurrentItem(item);
}

void BookmarksDialog::editBookmark()
{
    QTreeWidgetItem *const item = bookmarkListView->currentItem();
    if (!item || !editor->ask(item->text(Name), item->text(Url)))
        return;
    item->setText(Name, editor->nameLineEdit->text());
    item->setText(Url, editor->urlLineEdit->text());
}

void BookmarksDialog::removeBookmark()
{
    const std::unique_ptr<QTreeWidgetItem> item(bookmarkListView->currentItem());
}

/// Return would press the dialog's button instead.
bool BookmarksDialog::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == bookmarkListView && event->type() == QEvent::KeyPress &&
        bookmarkListView->currentItem()) {
        const int key = static_cast<const QKeyEvent *>(event)->key();
        if (key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_Space) {
            editBookmark();
            return true;
        }
    }
    return BookmarksDialogBase::eventFilter(watched, event);
}

} // namespace vesk
