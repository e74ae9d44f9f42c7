#include "app/bookmarks/bookmarks.h"

#include "app/bookmarks/bookmarksdialog.h"
#include "app/settings.h"
#include "app/shell.h"

#include <QPointer>

#include <algorithm>

namespace vesk {

namespace {

namespace keys {
constexpr QLatin1String categories("/bookmarks/categories");
constexpr QLatin1String namesOf("/bookmarks/bookmarks_");
constexpr QLatin1String urlOf("/bookmarks/bookmark_");
} // namespace keys

/// Units that a key of the settings cannot hold, or not everywhere.
bool isSpecial(QChar unit)
{
    return unit == u'=' || unit == u'\n' || unit == u'\r' || unit == u'/' || unit == u'%';
}

/// The key of the URL. A name that the settings would refuse, or take for that of
/// another bookmark, is written with percent signs.
QString urlKey(const QString &name)
{
    const bool isRefused = std::any_of(name.cbegin(), name.cend(), [](QChar unit) {
        return isSpecial(unit) && unit != u'/' && unit != u'%';
    });
    const bool isTakenForOther =
        name.startsWith(u'%') || name.endsWith(u'/') || name.contains(QLatin1String("//"));
    if (!isRefused && !isTakenForOther)
        return keys::urlOf + name;
    QString escaped(u'%');
    for (const QChar unit : name)
        escaped += isSpecial(unit) ? QString::asprintf("%%%02x", unit.unicode()) : QString(unit);
    return keys::urlOf + escaped;
}

} // namespace

struct Bookmarks::Private
{
    static QPointer<Bookmarks> self;

    void load();
    void store();

    /// Made when it is first needed.
    std::unique_ptr<BookmarksDialog> dialog;
    QMap<QString, BookmarkMap> categories;
    /// Whether the settings hold something else.
    bool isChanged = false;
};

QPointer<Bookmarks> Bookmarks::Private::self;

Bookmarks *Bookmarks::self()
{
    if (!Private::self)
        Private::self = new Bookmarks(Shell::self());
    return Private::self;
}

Bookmarks::Bookmarks(QObject *parent) : QObject(parent), d(std::make_unique<Private>())
{
    d->load();
}

Bookmarks::~Bookmarks()
{
    d->dialog.reset();
    // Another window may have stored its own since.
    if (d->isChanged)
        d->store();
}

void Bookmarks::Private::load()
{
    const QStringList known = Settings::readList(keys::categories);
    for (const QString &category : known) {
        BookmarkMap &map = categories[category];
        const QStringList names = Settings::readList(keys::namesOf + category);
        for (const QString &name : names)
            map.insert(name, Settings::read(urlKey(name)));
    }
}

/// The URLs of removed bookmarks stay behind; only the lists of names count.
void Bookmarks::Private::store()
{
    for (auto category = categories.cbegin(); category != categories.cend(); ++category) {
        for (auto bookmark = category->cbegin(); bookmark != category->cend(); ++bookmark)
            Settings::write(urlKey(bookmark.key()), bookmark.value());
        Settings::write(keys::namesOf + category.key(), QStringList(category->keys()));
    }
    Settings::write(keys::categories, QStringList(categories.keys()));
    Settings::forceWrite();
    isChanged = false;
}

BookmarkMap Bookmarks::bookmarks(const QString &category)
{
    if (!d->categories.contains(category))
        d->isChanged = true;
    return d->categories[category];
}

void Bookmarks::addBookmark(const QString &category, const QString &name, const QString &url)
{
    d->categories[category].insert(name, url);
    d->store();
}

void Bookmarks::showManageDialog(const QString &category)
{
    if (!d->dialog)
        d->dialog = std::make_unique<BookmarksDialog>(Shell::self());
    d->dialog->setBookmarks(bookmarks(category));
    if (d->dialog->exec() != QDialog::Accepted)
        return;
    d->categories[category] = d->dialog->bookmarks();
    d->store();
}

} // namespace vesk
