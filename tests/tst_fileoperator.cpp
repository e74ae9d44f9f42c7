#include "tests/testing.h"
#include "zvwidgets/zvfileoperator/fileoperator.h"
#include "zvwidgets/zvfileoperator/fileoperatordialog.h"

#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QProgressBar>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

using namespace Qt::StringLiterals;
using namespace zvwidgets;

namespace {

/// Folders "from" and "to" of a test's own.
class World
{
public:
    World()
    {
        QDir(dir.path()).mkdir(u"from"_s);
        QDir(dir.path()).mkdir(u"to"_s);
    }

    QString path(const QString &name) const { return dir.filePath(name); }
    QStringList paths(const QStringList &names) const
    {
        QStringList result;
        for (const QString &name : names)
            result.append(path(name));
        return result;
    }
    void file(const QString &name, const QByteArray &content) const
    {
        writeFile(path(name), content);
    }
    /// Can't be copied.
    void pipe(const QString &name) const
    {
        ::mkfifo(QFile::encodeName(path(name)).constData(), 0600);
    }
    QByteArray content(const QString &name) const { return readFile(path(name)); }
    bool copy(const QStringList &names) const
    {
        return FileOperator::self()->copy(paths(names), path(u"to"_s));
    }

private:
    QTemporaryDir dir;
};

FileOperatorDialog *progressWindow()
{
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget *const window : windows) {
        if (auto *const dialog = qobject_cast<FileOperatorDialog *>(window))
            return dialog;
    }
    return nullptr;
}

QStringList buttonTexts(QWidget *dialog)
{
    QStringList texts;
    const auto buttons = dialog->findChildren<QPushButton *>();
    for (const QPushButton *button : buttons)
        texts.append(button->text());
    return texts;
}

} // namespace

class TestFileOperator : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void existingTargets_data();
    void existingTargets();
    void questionsAsWorded();
    void problems_data();
    void problems();
    void folderIntoItself();
    void progressWindowAfterHalfASecond();
    void quickOperationShowsNoWindow();
    void secondOperationWaits();
    void quittingWaits();
    void bytesThatAreNoUtf8();

private:
    std::unique_ptr<QMainWindow> window;
    QLineEdit *edit = nullptr;
};

void TestFileOperator::init()
{
    window = std::make_unique<QMainWindow>();
    edit = new QLineEdit;
    window->setCentralWidget(edit);
    window->resize(600, 400);
    QVERIFY(showActive(window.get()));
    edit->setFocus();
}

void TestFileOperator::cleanup()
{
    QVERIFY(!FileOperator::self()->isRunning());
    QVERIFY(!progressWindow());
    window.reset();
}

void TestFileOperator::existingTargets_data()
{
    const Rows<QStringList, QString, bool> row("buttons", "contents", "ended");
    row("each overwritten", {u"&Overwrite"_s, u"&Overwrite"_s, u"&Overwrite"_s}, "nnn", true);
    row("each skipped", {u"&Skip"_s, u"&Skip"_s, u"&Skip"_s}, "ooo", true);
    row("all overwritten, also in folders", {u"Overwrite a&ll"_s}, "nnn", true);
    row("all skipped after one", {u"&Overwrite"_s, u"S&kip all"_s}, "noo", true);
    row("aborted after one", {u"&Overwrite"_s, u"&Abort"_s}, "noo", false);
}

void TestFileOperator::existingTargets()
{
    QFETCH(const QStringList, buttons);
    QFETCH(const QString, contents);
    QFETCH(const bool, ended);
    const World world;
    const QStringList names = {u"/a"_s, u"/sub/b"_s, u"/sub/c"_s};
    for (const QString &folder : {u"from"_s, u"to"_s}) {
        QDir(world.path(folder)).mkdir(u"sub"_s);
        for (const QString &name : names)
            world.file(folder + name, folder == u"from"_s ? "n" : "o");
    }
    Responder responder;
    for (const QString &button : buttons)
        responder.expect(button);
    QCOMPARE(world.copy({u"from/a"_s, u"from/sub"_s}), ended);
    QVERIFY(responder.isDone());
    QString now;
    for (const QString &name : names)
        now += QString::fromLatin1(world.content(u"to"_s + name));
    QCOMPARE(now, contents);
}

// The texts as the user reads them, markup in names included.
void TestFileOperator::questionsAsWorded()
{
    const World world;
    world.file(u"from/<b>a %1"_s, "n");
    world.file(u"to/<b>a %1"_s, "o");
    Responder responder;
    responder.expect([&](QWidget *dialog) {
        QCOMPARE(dialog->windowTitle(), u"File exists"_s);
        QStringList texts;
        const auto labels = dialog->findChildren<QLabel *>();
        for (const QLabel *label : labels) {
            if (label->textFormat() == Qt::PlainText)
                texts.append(label->text());
        }
        QCOMPARE(texts, QStringList{u"File "_s + world.path(u"to/<b>a %1"_s) +
                                    u" already exists.\nOverwrite this target?"_s});
        QCOMPARE(buttonTexts(dialog), QStringList({u"&Overwrite"_s, u"Overwrite a&ll"_s, u"&Skip"_s,
                                                   u"S&kip all"_s, u"&Abort"_s}));
        // What somebody types meanwhile must not replace a file.
        QTest::keyClick(dialog->focusWidget(), Qt::Key_Return);
    });
    QVERIFY(world.copy({u"from/<b>a %1"_s}));
    QVERIFY(responder.isDone());
    QCOMPARE(world.content(u"to/<b>a %1"_s), "o");
}

void TestFileOperator::problems_data()
{
    const Rows<QStringList, QStringList, bool> row("buttons", "copied", "ended");
    row("skipped", {u"Skip"_s, u"Skip"_s}, {u"file"_s}, true);
    row("all skipped", {u"Skip all"_s}, {u"file"_s}, true);
    row("aborted", {u"Abort"_s}, {}, false);
}

void TestFileOperator::problems()
{
    QFETCH(const QStringList, buttons);
    QFETCH(const QStringList, copied);
    QFETCH(const bool, ended);
    const World world;
    world.pipe(u"from/pipe1"_s);
    world.pipe(u"from/pipe2"_s);
    world.file(u"from/file"_s, "text");
    Responder responder;
    responder.expect([&buttons](QWidget *dialog) {
        QCOMPARE(dialog->windowTitle(), u"Access denied"_s);
        QCOMPARE(buttonTexts(dialog), QStringList({u"Skip"_s, u"Skip all"_s, u"Abort"_s}));
        dialog->findChildren<QPushButton *>()
            .at(buttonTexts(dialog).indexOf(buttons.first()))
            ->click();
    });
    for (const QString &button : buttons.mid(1))
        responder.expect(button);
    QCOMPARE(world.copy({u"from/pipe1"_s, u"from/pipe2"_s, u"from/file"_s}), ended);
    QVERIFY(responder.isDone());
    QCOMPARE(responder.texts.first(),
             u"Can't access file "_s + world.path(u"from/pipe1"_s) +
                 u".\nCould not connect to the device.\nContinue operations?"_s);
    QCOMPARE(QDir(world.path(u"to"_s)).entryList(QDir::NoDotAndDotDot | QDir::AllEntries), copied);
}

void TestFileOperator::folderIntoItself()
{
    const World world;
    Responder responder;
    responder.expect(u"OK"_s);
    QVERIFY(!FileOperator::self()->move({world.path(u"to"_s)}, world.path(u"to"_s)));
    QVERIFY(responder.isDone());
}

void TestFileOperator::progressWindowAfterHalfASecond()
{
    const World world;
    world.file(u"from/a"_s, "12345");
    world.file(u"from/b"_s, "12345");
    world.file(u"to/b"_s, "old");
    Responder responder;
    responder.expect([&](QWidget *question) {
        QVERIFY(!progressWindow()->isVisible());
        QTRY_VERIFY(progressWindow()->isVisible());
        const FileOperatorDialog *const shown = progressWindow();
        QTRY_COMPARE(shown->itemLabel->text(), u"Item \"<b>b</b>\""_s);
        QCOMPARE(shown->windowTitle(), u"Copying files..."_s);
        QVERIFY(shown->operationLabel->text().startsWith(u"Copying <b>1</b> items to <b>"_s));
        QCOMPARE(shown->statusLabel->text(), u"Processed   5b of  10b"_s);
        QCOMPARE(shown->progressBar->value(), 50);
        const QPoint middle = shown->geometry().center() - window->frameGeometry().center();
        QVERIFY(middle.manhattanLength() < 60);
        QVERIFY(!shown->isActiveWindow());
        shown->buttonAbort->click();
        static_cast<QDialog *>(question)->reject();
    });
    QVERIFY(!world.copy({u"from/a"_s, u"from/b"_s}));
    QVERIFY(responder.isDone());
    QCOMPARE(world.content(u"to/b"_s), "old");
    // The user goes on typing.
    QTRY_VERIFY(window->isActiveWindow());
    QTest::keyClicks(QApplication::focusWidget(), u"x"_s);
    QCOMPARE(edit->text(), u"x"_s);
}

void TestFileOperator::quickOperationShowsNoWindow()
{
    struct Watch : QObject
    {
        bool eventFilter(QObject *watched, QEvent *event) override
        {
            shown = shown ||
                    (event->type() == QEvent::Show && qobject_cast<FileOperatorDialog *>(watched));
            return false;
        }
        bool shown = false;
    };
    const World world;
    world.file(u"from/a"_s, "text");
    Watch watch;
    qApp->installEventFilter(&watch);
    QVERIFY(world.copy({u"from/a"_s}));
    QVERIFY(FileOperator::self()->erase({world.path(u"from/a"_s)}));
    QVERIFY(!watch.shown);
    QVERIFY(!QFile::exists(world.path(u"from/a"_s)));
    QCOMPARE(world.content(u"to/a"_s), "text");
}

// The first one waits for an answer while the second is started.
void TestFileOperator::secondOperationWaits()
{
    const World world;
    world.file(u"from/a"_s, "new");
    world.file(u"to/a"_s, "old");
    bool bothEnded = false;
    Responder responder;
    responder.expect([&](QWidget *question) {
        QTimer::singleShot(0, question, [&] {
            const bool moved =
                FileOperator::self()->move({world.path(u"to/a"_s)}, world.path(u"from"_s));
            bothEnded = moved && world.content(u"from/a"_s) == "old";
        });
        QTimer::singleShot(50, question, [&world, question] {
            QCOMPARE(world.content(u"to/a"_s), "old");
            static_cast<QDialog *>(question)->findChildren<QPushButton *>().at(2)->click();
        });
    });
    responder.expect(u"&Overwrite"_s);
    QVERIFY(world.copy({u"from/a"_s}));
    QVERIFY(responder.isDone());
    QVERIFY(bothEnded);
    QVERIFY(!QFile::exists(world.path(u"to/a"_s)));
}

void TestFileOperator::quittingWaits()
{
    const World world;
    world.pipe(u"from/pipe"_s);
    world.file(u"from/a"_s, "text");
    bool ended = false;
    Responder responder;
    responder.expect([](QWidget *question) {
        QCoreApplication::exit();
        QTimer::singleShot(
            0, question, [question] { question->findChildren<QPushButton *>().first()->click(); });
    });
    QTimer::singleShot(0, window.get(), [&] { ended = world.copy({u"from/pipe"_s, u"from/a"_s}); });
    QCoreApplication::exec();
    QVERIFY(responder.isDone());
    QVERIFY(ended);
    QCOMPARE(world.content(u"to/a"_s), "text");
}

void TestFileOperator::bytesThatAreNoUtf8()
{
    const World world;
    const QByteArray bytes = "caf\xe9";
    const QByteArray source = QFile::encodeName(world.path(u"from/"_s)) + bytes;
    QVERIFY(::mkdir(source.constData(), 0700) == 0);
    const QString name = u"caf"_s + QChar(0xdce9);
    QVERIFY(world.copy({u"from/"_s + name}));
    struct stat info;
    const QByteArray target = QFile::encodeName(world.path(u"to/"_s)) + bytes;
    QCOMPARE(::stat(target.constData(), &info), 0);
    QVERIFY(FileOperator::self()->erase(world.paths({u"from/"_s + name, u"to/"_s + name})));
    QVERIFY(::stat(target.constData(), &info) != 0);
    QVERIFY(::stat(source.constData(), &info) != 0);
}

QTEST_MAIN(TestFileOperator)
#include "tst_fileoperator.moc"
