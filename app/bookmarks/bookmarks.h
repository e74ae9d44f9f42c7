#pragma once

#include <QMap>
#include <QObject>
#include <QString>

#include <memory>

namespace vesk {

/// From the name of a bookmark to its URL.
using BookmarkMap = QMap<QString, QString>;

/// Named URLs in categories, one for each user of the class. They are read from the
/// settings at the start and written whenever the user has confirmed a change, so that
/// none is lost with the program.
///
/// The first self() makes it as a child of the main window.
class Bookmarks : public QObject
{
    Q_OBJECT
public:
    ~Bookmarks() override;

    static Bookmarks *self();

    /// Empty for an unknown category, which is known from then on.
    BookmarkMap bookmarks(const QString &category);
    /// A bookmark of that name is replaced.
    void addBookmark(const QString &category, const QString &name, const QString &url);
    /// Lets the user edit the bookmarks of \a category.
    void showManageDialog(const QString &category);

private:
    struct Private;

    explicit Bookmarks(QObject *parent);

    const std::unique_ptr<Private> d;
};

} // namespace vesk
