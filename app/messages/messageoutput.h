#pragma once

#include <QListWidget>

#include <memory>

namespace vesk {

class MessageItem;

/// The message list in the bottom dock: rows of marked-up text, from builds and
/// searches, that lead to a line of a file when pressed. It follows its end and
/// drops the oldest rows.
///
/// Rows may come faster than they can be painted: the widget shows them some twenty
/// times a second, count() and item() know of them at once.
///
/// The first self() makes it and puts it into the main window, which owns it.
class MessageOutput : public QListWidget
{
    Q_OBJECT
public:
    ~MessageOutput() override;

    static MessageOutput *self();

    int count() const;
    /// Null if there is no such row. Does not give the row away.
    QListWidgetItem *item(int row) const;
    uint maxItems() const;
    /// Holds from the next insertion on, which drops one row at most.
    void setMaxItems(unsigned int count);
    /// Binds the last row if it is a line of a Python traceback that leads nowhere yet,
    /// and makes room for one row.
    void checkMaxItems();

public slots:
    void clear();
    void insertItem(const QString &s);
    /// \a line counts from 1.
    void insertItem(const QString &s, int line);
    void insertItem(const QString &s, int line, const QString &fname);
    /// Inserts a row of somebody else's text: directives count in \a directives only.
    /// \a line counts from 1, -1 for none; \a fname may be empty.
    void insertText(const QString &directives, const QString &text, int line = -1,
                    const QString &fname = QString());
    /// Takes output as it comes: each line feed ends a row, and what follows the
    /// last one is continued by the next call.
    void showMessage(const QString &message);
    void addToLastItem(const QString &s);
    void addToLastItem(const QString &s, int line, const QString &fname);
    /// Opens the file and goes to \a line, which counts from 1; nothing happens
    /// if there is no such file.
    void openFile(const QString &fileName, int line);
    void makeVisible();
    void clickItem(QListWidgetItem *item);

signals:
    /// A row that leads somewhere was pressed; \a fileName may be empty.
    void clicked(const QString &fileName, int line);

private:
    struct Private;

    explicit MessageOutput(QWidget *parent);

    MessageItem *lastItem() const;
    void createClearButton();
    void dropOldest();
    void showSoon();
    void showRows();

    const std::unique_ptr<Private> d;
};

} // namespace vesk
