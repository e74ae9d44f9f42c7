#include "app/editors/editor.h"
#include "app/editors/editors.h"
#include "app/filetype.h"
#include "app/settings.h"
#include "app/shell.h"
#include "app/utils.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

using namespace vesk;

namespace {

class Handler : public QObject
{
    Q_OBJECT
public:
    QStringList loaded;

public slots:
    void load(const QString &fileName) { loaded.append(fileName); }
};

} // namespace

/// Files are told apart by the ending of their name, and opened by their type.
class FileTypeTest : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void init();
    void cleanupTestCase();
    void classifies_data();
    void classifies();
    void masksAreLowerCaseLists();
    void firstInstalledTypeWins();
    void iconsOfFilesAndFolders();
    void typeWithoutHandlerOpensAnEditor();
    void handlerReplacesTheEditor();

private:
    QString newFile(const QString &name) const;

    QTemporaryDir dir;
    std::unique_ptr<Shell> shell;
};

void FileTypeTest::initTestCase()
{
    Settings::setFileName(dir.filePath(QStringLiteral("vesk.ini")));
    Settings::setKeyPrefix(QStringLiteral("/vesk"));
    shell = std::make_unique<Shell>();
}

void FileTypeTest::init()
{
    QTest::failOnWarning(QRegularExpression(QStringLiteral("No such (signal|slot)")));
}

void FileTypeTest::cleanupTestCase()
{
    shell.reset();
    Settings::forceWrite();
}

QString FileTypeTest::newFile(const QString &name) const
{
    const QString path = dir.filePath(name);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write("text\n") < 0)
        qFatal("cannot write %s", qPrintable(path));
    return path;
}

void FileTypeTest::classifies_data()
{
    QTest::addColumn<QString>("fileName");
    QTest::addColumn<QString>("type");
    const auto row = [](const char *fileName, const char *type) {
        QTest::newRow(fileName) << QString::fromUtf8(fileName) << QString::fromLatin1(type);
    };
    row("FOO.CPP", "cpp");
    row("a.c", "cpp");
    row("a.ch", "ch");
    row("a.h", "hpp");
    row("a.tar.gz", "tgz");
    row("a.tar", "tar");
    row("a.gz", "file");
    row("Makefile", "file");
    row("", "file");
    row("vesk", "file");
    row("/some/folder.directory", "folder");
    row(".directory", "folder");
    row("p.VESK", "project");
    row("index.html", "html");
    row("a.php4", "php");
    row("ÄÖ.PY", "pyfile");
}

void FileTypeTest::classifies()
{
    QFETCH(QString, fileName);
    QFETCH(QString, type);
    QCOMPARE(FileTypeManager::self()->findType(fileName)->name(), type);
}

void FileTypeTest::masksAreLowerCaseLists()
{
    // The manager takes it over.
    auto *const type = new FileType(QStringLiteral("test"), {}, {}, {}, 7);
    QVERIFY(!type->match(QStringLiteral("a.xyz")));
    type->setMask(QStringLiteral(" .XYZ  .Two "));
    type->addMask(QStringLiteral(".Three"));
    QCOMPARE(type->mask(), QStringLiteral(".xyz .two .three"));
    QVERIFY(type->match(QStringLiteral("a.three")));
    // match() itself compares as it stands; findType() gives it lower case.
    QVERIFY(!type->match(QStringLiteral("a.XYZ")));
    QCOMPARE(FileTypeManager::self()->findType(QStringLiteral("a.XYZ")), type);
}

void FileTypeTest::firstInstalledTypeWins()
{
    FileTypeManager *const manager = FileTypeManager::self();
    const qsizetype before = manager->fileTypes()->size();
    auto *const late =
        new FileType(QStringLiteral("late"), QStringLiteral(".py .late"), {}, {}, 500);
    manager->installFileType(late);
    QCOMPARE(manager->fileTypes()->size(), before + 1);
    QCOMPARE(manager->findType(QStringLiteral("a.py"))->name(), QStringLiteral("pyfile"));
    QCOMPARE(manager->findType(QStringLiteral("a.late")), late);
    QCOMPARE(manager->fileType(QStringLiteral("late")), late);
    QCOMPARE(manager->fileType(QStringLiteral("Late")), nullptr);
    // The fallback stays what it was, and folders stand before files.
    QCOMPARE(manager->findType(QStringLiteral("none"))->name(), QStringLiteral("file"));
    QVERIFY(manager->fileType(QStringLiteral("folder"))->listOrder() <
            manager->fileType(QStringLiteral("file"))->listOrder());
}

void FileTypeTest::iconsOfFilesAndFolders()
{
    QFileIconProvider *const provider = FileTypeManager::self()->fileIconProvider();
    const QFileInfo file(newFile(QStringLiteral("icon.py")));
    QCOMPARE(provider->icon(file).pixmap(18, 18).toImage(),
             Utils::icon(QStringLiteral("18x18_PyFile")).toImage());
    QVERIFY(QDir().mkpath(dir.filePath(QStringLiteral("folder.py"))));
    const QFileInfo folder(dir.filePath(QStringLiteral("folder.py")));
    QVERIFY(provider->icon(folder).pixmap(18, 18).toImage() !=
            Utils::icon(QStringLiteral("18x18_PyFile")).toImage());
}

void FileTypeTest::typeWithoutHandlerOpensAnEditor()
{
    const QString path = newFile(QStringLiteral("picture.png"));
    FileTypeManager::self()->openFile(path);
    QCOMPARE(Editors::self()->current()->filename(), path);
}

void FileTypeTest::handlerReplacesTheEditor()
{
    const QString shown = Editors::self()->current()->filename();
    const QString path = newFile(QStringLiteral("a.handled"));
    Handler handler;
    auto *const type =
        new FileType(QStringLiteral("handled"), QStringLiteral(".handled"), {}, {}, 500);
    type->installAssociacion(&handler, SLOT(load(const QString &)));
    FileTypeManager::self()->openFile(path);
    QCOMPARE(handler.loaded, QStringList{path});
    QCOMPARE(Editors::self()->current()->filename(), shown);
}

QTEST_MAIN(FileTypeTest)
#include "tst_filetype.moc"
