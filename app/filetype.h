#pragma once

#include <QFileIconProvider>
#include <QList>
#include <QObject>
#include <QPixmap>
#include <QStringList>

#include <functional>
#include <memory>

namespace vesk {

class Parser;

/// What is known of the files with certain name endings. A type installs itself
/// in the FileTypeManager, which owns it from then on.
class FileType : public QObject
{
    Q_OBJECT
public:
    /// \a mask holds name endings with their dots, separated by blanks; a null
    /// one matches no file. Lower \a listOrder stands first in file lists.
    FileType(const QString &name, const QString &mask, const QPixmap &pixmap,
             const QPixmap &bigPixmap, int listOrder);
    ~FileType() override;

    QString name() const;
    void setName(const QString &name);

    /// The endings, separated by blanks.
    virtual QString mask() const;
    virtual void setMask(const QString &mask);
    virtual void addMask(const QString &mask);
    /// True if \a fileName, which should be in lower case, has one of the endings.
    virtual bool match(const QString &fileName) const;

    virtual QPixmap pixmap() const;
    /// The small pixmap; a built-in one is drawn when it is first shown.
    QIcon icon() const;
    virtual QPixmap bigPixmap() const;
    void setPixmap(const QPixmap &pixmap);
    void setBigPixmap(const QPixmap &pixmap);
    /// Takes the pixmaps that are null from the built-in icon \a name when they
    /// are first asked for: most types are never seen.
    void setBuiltinIcon(const QString &name);

    int listOrder() const;
    void setListOrder(int order);

    bool hasAssociacion() const;
    /// From now on files of this type are opened by \a slot of \a object, the text
    /// of a SLOT() that takes the file name, instead of in an editor.
    void installAssociacion(QObject *object, const char *slot);

    /// Null if there is no option \a name.
    QString option(const QString &name) const;
    bool hasOption(const QString &name) const;
    void addOption(const QString &name, const QString &value);

    /// The tag parser, not owned; null if none was set.
    Parser *parser() const;
    void setParser(Parser *parser);

public slots:
    void open(const QString &fileName);

signals:
    /// Only sent once a handler was installed.
    void openFile(const QString &fileName);

private:
    struct Private;
    const std::unique_ptr<Private> d;
};

/// Shows the icons of the file types in file dialogs.
class FileIconProvider : public QFileIconProvider
{
public:
    using QFileIconProvider::icon;
    QIcon icon(const QFileInfo &info) const override;
};

/// Classifies files by the ending of their names and opens them. It is made on
/// first use and lives to the end of the process.
class FileTypeManager
{
public:
    virtual ~FileTypeManager();

    static FileTypeManager *self();

    /// Null if no type has exactly this name.
    FileType *fileType(const QString &name) const;
    /// Appends \a type and takes it over; ignored if it is installed already.
    void installFileType(FileType *type);
    /// The first type that matches, the fallback type if none does; never null.
    FileType *findType(const QString &fileName) const;
    /// In order of installation, which is the order of matching.
    QList<FileType *> *fileTypes();
    /// The one way to open a file by its path.
    void openFile(const QString &fileName);
    /// \a opener gets the files whose type has no handler of its own.
    void setDefaultOpener(const std::function<void(const QString &)> &opener);
    void openByDefault(const QString &fileName);
    /// Gives all types \a parser, or none if it is null.
    void setParser(Parser *parser);
    QFileIconProvider *fileIconProvider() const;

private:
    struct Private;

    FileTypeManager();
    void installBuiltinTypes();

    const std::unique_ptr<Private> d;
};

} // namespace vesk
