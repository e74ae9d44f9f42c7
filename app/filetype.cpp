#include "app/filetype.h"

#include "app/utils.h"

#include <QFileInfo>
#include <QMap>

namespace vesk {

struct FileType::Private
{
    /// Without \a own the built-in one of that size, which Utils keeps.
    QPixmap pixmapOr(const QPixmap &own, const char *size) const
    {
        const bool isBuiltin = own.isNull() && !builtinIcon.isEmpty();
        return isBuiltin ? Utils::icon(QString::fromLatin1(size) + builtinIcon) : own;
    }

    QString name;
    QStringList mask;
    QPixmap pixmap;
    QPixmap bigPixmap;
    QString builtinIcon; ///< without its size
    int listOrder = 0;
    bool associacion = false;
    Parser *parser = nullptr;
    QMap<QString, QString> options;
};

namespace {

QStringList endings(const QString &mask)
{
    return mask.toLower().split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

} // namespace

FileType::FileType(const QString &name, const QString &mask, const QPixmap &pixmap,
                   const QPixmap &bigPixmap, int listOrder)
    : d(std::make_unique<Private>())
{
    d->name = name;
    d->mask = endings(mask);
    d->pixmap = pixmap;
    d->bigPixmap = bigPixmap;
    d->listOrder = listOrder;
    FileTypeManager::self()->installFileType(this);
}

FileType::~FileType() = default;

QString FileType::name() const
{
    return d->name;
}

void FileType::setName(const QString &name)
{
    d->name = name;
}

QString FileType::mask() const
{
    return d->mask.join(QLatin1Char(' '));
}

void FileType::setMask(const QString &mask)
{
    d->mask = endings(mask);
}

void FileType::addMask(const QString &mask)
{
    d->mask += endings(mask);
}

bool FileType::match(const QString &fileName) const
{
    for (const QString &ending : std::as_const(d->mask)) {
        if (fileName.endsWith(ending))
            return true;
    }
    return false;
}

QPixmap FileType::pixmap() const
{
    return d->pixmapOr(d->pixmap, "18x18_");
}

QIcon FileType::icon() const
{
    const bool isBuiltin = d->pixmap.isNull() && !d->builtinIcon.isEmpty();
    return isBuiltin ? Utils::iconSet(QStringLiteral("18x18_") + d->builtinIcon) : QIcon(d->pixmap);
}

QPixmap FileType::bigPixmap() const
{
    return d->pixmapOr(d->bigPixmap, "32x32_");
}

void FileType::setPixmap(const QPixmap &pixmap)
{
    d->pixmap = pixmap;
}

void FileType::setBigPixmap(const QPixmap &pixmap)
{
    d->bigPixmap = pixmap;
}

void FileType::setBuiltinIcon(const QString &name)
{
    d->builtinIcon = name;
}

int FileType::listOrder() const
{
    return d->listOrder;
}

void FileType::setListOrder(int order)
{
    d->listOrder = order;
}

bool FileType::hasAssociacion() const
{
    return d->associacion;
}

void FileType::installAssociacion(QObject *object, const char *slot)
{
    d->associacion = true;
    connect(this, SIGNAL(openFile(QString)), object, slot);
}

QString FileType::option(const QString &name) const
{
    return d->options.value(name);
}

bool FileType::hasOption(const QString &name) const
{
    return d->options.contains(name);
}

void FileType::addOption(const QString &name, const QString &value)
{
    d->options.insert(name, value);
}

Parser *FileType::parser() const
{
    return d->parser;
}

void FileType::setParser(Parser *parser)
{
    d->parser = parser;
}

void FileType::open(const QString &fileName)
{
    if (d->associacion)
        emit openFile(fileName);
    else
        FileTypeManager::self()->openByDefault(fileName);
}

QIcon FileIconProvider::icon(const QFileInfo &info) const
{
    if (info.isDir())
        return QFileIconProvider::icon(info);
    return FileTypeManager::self()->findType(info.fileName())->icon();
}

struct FileTypeManager::Private
{
    static FileTypeManager *self;

    QList<FileType *> fileTypes;
    FileType *stdType = nullptr;
    std::function<void(const QString &)> defaultOpener;
    std::unique_ptr<FileIconProvider> fileIconProvider = std::make_unique<FileIconProvider>();
};

FileTypeManager *FileTypeManager::Private::self = nullptr;

FileTypeManager::FileTypeManager() : d(std::make_unique<Private>())
{
    // The types install themselves and so ask for the manager meanwhile.
    Private::self = this;
    installBuiltinTypes();
}

FileTypeManager::~FileTypeManager()
{
    qDeleteAll(d->fileTypes);
    Private::self = nullptr;
}

FileTypeManager *FileTypeManager::self()
{
    // Never deleted: its pixmaps must not be freed after the application object.
    if (!Private::self)
        new FileTypeManager;
    return Private::self;
}

void FileTypeManager::installBuiltinTypes()
{
    struct Row
    {
        const char *name;
        const char *mask;
        const char *icon;
        int listOrder;
    };
    static constexpr Row rows[] = {
        {"folder", ".directory", "Folder", 0},
        {"project", ".vesk", "Project", 500},
        {"uifile", ".ui", "Ui", 500},
        {"pyfile", ".py", "PyFile", 500},
        {"cpp", ".cpp .c .cc", "Cpp", 500},
        {"ch", ".ch .chs .chf", "Ch", 500},
        {"hpp", ".hpp .h", "H", 500},
        {"text", ".txt", "Txt", 500},
        {"javascript", ".js", "JavaScript", 500},
        {"sql", ".sql", "Sql", 500},
        {"html", ".htm .html", "HtmlFiles", 500},
        {"php", ".php .php3 .php4", "HtmlFiles", 500},
        {"image", ".png .gif .jpeg .jpg .bmp .mng", "Image", 500},
        {"pdf", ".pdf", "Pdf", 500},
        {"tar", ".tar", "Tar", 500},
        {"tgz", ".tgz .tar.gz .zip", "Tgz", 500},
        {"spreadsheet", ".xls", "Spreadsheet", 500},
        {"rtf", ".rtf .doc", "RtfDocument", 500},
        {"video", ".avi .asf .mov .wmv .mpg .mpeg", "Video", 500},
        {"file", nullptr, "File", 500},
    };
    for (const Row &row : rows) {
        d->stdType = new FileType(QString::fromLatin1(row.name), QString::fromLatin1(row.mask),
                                  QPixmap(), QPixmap(), row.listOrder);
        d->stdType->setBuiltinIcon(QString::fromLatin1(row.icon));
    }
}

FileType *FileTypeManager::fileType(const QString &name) const
{
    for (FileType *const type : std::as_const(d->fileTypes)) {
        if (type->name() == name)
            return type;
    }
    return nullptr;
}

void FileTypeManager::installFileType(FileType *type)
{
    if (!d->fileTypes.contains(type))
        d->fileTypes.append(type);
}

FileType *FileTypeManager::findType(const QString &fileName) const
{
    const QString name = fileName.toLower();
    for (FileType *const type : std::as_const(d->fileTypes)) {
        if (type->match(name))
            return type;
    }
    return d->stdType;
}

QList<FileType *> *FileTypeManager::fileTypes()
{
    return &d->fileTypes;
}

void FileTypeManager::openFile(const QString &fileName)
{
    findType(fileName)->open(fileName);
}

void FileTypeManager::setDefaultOpener(const std::function<void(const QString &)> &opener)
{
    d->defaultOpener = opener;
}

void FileTypeManager::openByDefault(const QString &fileName)
{
    if (d->defaultOpener)
        d->defaultOpener(fileName);
}

void FileTypeManager::setParser(Parser *parser)
{
    for (FileType *const type : std::as_const(d->fileTypes))
        type->setParser(parser);
}

QFileIconProvider *FileTypeManager::fileIconProvider() const
{
    return d->fileIconProvider.get();
}

} // namespace vesk
