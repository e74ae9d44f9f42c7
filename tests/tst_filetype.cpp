#include "app/editors/editor.h"
#include "app/editors/editors.h"
#include "app/filetype.h"
#include "tests/apptest.h"

#include <QDir>
#include <QFileInfo>
#include <QTest>

using namespace Qt::StringLiterals;
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
class FileTypeTest : public AppTest
{
    Q_OBJECT
private slots:
    void initTestCase() { makeShell(); }
    void init() { failOnBadConnects(); }
    void cleanupTestCase() { dropShell(); }
    void classifies_data();
    void classifies();
    void firstInstalledTypeWins();
    void typeWithoutHandlerOpensAnEditor();
    void handlerReplacesTheEditor();
};

void FileTypeTest::classifies_data()
{
    const Rows<QString, QString> row("fileName", "type");
    row("any case", "FOO.CPP", "cpp");
    row("other scripts", "ÄÖ.PY", "pyfile");
    row("no longer ending", "a.c", "cpp");
    row("no shorter ending", "a.ch", "ch");
    row("longest ending", "a.tar.gz", "tgz");
    row("part of an ending", "a.gz", "file");
    row("no ending", "Makefile", "file");
    row("no name", "", "file");
    row("an ending is no name", "vesk", "file");
    row("folder", "/some/folder.directory", "folder");
    row("project", "p.VESK", "project");
    row("digits", "a.php4", "php");
}

void FileTypeTest::classifies()
{
    QFETCH(QString, fileName);
    QFETCH(QString, type);
    QCOMPARE(FileTypeManager::self()->findType(fileName)->name(), type);
}

void FileTypeTest::firstInstalledTypeWins()
{
    FileTypeManager *const manager = FileTypeManager::self();
    // The manager takes it over.
    auto *const late = new FileType(u"late"_s, u" .py  .Late "_s, {}, {}, 500);
    manager->installFileType(late);
    QCOMPARE(manager->findType(u"a.py"_s)->name(), u"pyfile"_s);
    QCOMPARE(manager->findType(u"a.LATE"_s), late);
    // The fallback stays what it was, and folders stand before files.
    QCOMPARE(manager->findType(u"none"_s)->name(), u"file"_s);
    QVERIFY(manager->fileType(u"folder"_s)->listOrder() <
            manager->fileType(u"file"_s)->listOrder());
}

void FileTypeTest::typeWithoutHandlerOpensAnEditor()
{
    const QString file = write(u"picture.png"_s);
    FileTypeManager::self()->openFile(file);
    QCOMPARE(Editors::self()->current()->filename(), file);
}

void FileTypeTest::handlerReplacesTheEditor()
{
    const QString shown = Editors::self()->current()->filename();
    const QString file = write(u"a.handled"_s);
    Handler handler;
    auto *const type = new FileType(u"handled"_s, u".handled"_s, {}, {}, 500);
    type->installAssociacion(&handler, SLOT(load(const QString &)));
    FileTypeManager::self()->openFile(file);
    QCOMPARE(handler.loaded, QStringList{file});
    QCOMPARE(Editors::self()->current()->filename(), shown);
}

QTEST_MAIN(FileTypeTest)
#include "tst_filetype.moc"
