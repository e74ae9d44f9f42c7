#include "tests/testing.h"
#include "zvwidgets/zvfileoperator/fileoperator.h"
#include "zvwidgets/zvfileoperator/fileoperatordialog.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>
using namespace Qt::StringLiterals;
using namespace zvwidgets;
class TestFileOperator : public QObject
{
    Q_OBJECT
private slots:
    void simple();
};
void TestFileOperator::simple()
{
    QTemporaryDir dir;
    QDir().mkdir(dir.filePath(u"to"_s));
    writeFile(dir.filePath(u"a"_s), "text");
    QVERIFY(FileOperator::self()->copy({dir.filePath(u"a"_s)}, dir.filePath(u"to"_s)));
    QCOMPARE(readFile(dir.filePath(u"to/a"_s)), "text");
}
QTEST_MAIN(TestFileOperator)
#include "tst_fileoperator.moc"
