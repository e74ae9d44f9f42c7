#include "tests/testing.h"
#include "zvwidgets/zveditor/lines/textfile.h"
#include "zvwidgets/zveditor/lines/textlinearray.h"
#include "zvwidgets/zvfiles/filesave.h"
#include "zvwidgets/zvfiles/keptcopies.h"

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>
#include <QtEndian>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <optional>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace zvwidgets;

namespace {

/// A user who is not the superuser.
constexpr uid_t stranger = 65534;

bool save(const QString &path, const QByteArray &bytes, QString *error = nullptr)
{
    QByteArray source = bytes;
    QBuffer buffer(&source);
    buffer.open(QIODevice::ReadOnly);
    TextLineArray lines;
    lines.setAutoDelete(true);
    TextFormat format;
    return TextFile::read(buffer, QStringConverter::Utf8, &lines, &format, error) &&
           TextFile::save(path, lines, format, error);
}

QString reason(int number)
{
    return QString::fromLocal8Bit(std::strerror(number));
}

QStringList entries(const QString &folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::System | QDir::Hidden |
                                  QDir::NoDotAndDotDot);
}

/// Lets a file of this process grow to 1000 bytes only, as a full disk would.
class FullDisk
{
public:
    FullDisk() : oldHandler(std::signal(SIGXFSZ, SIG_IGN))
    {
        ::getrlimit(RLIMIT_FSIZE, &old);
        rlimit small = old;
        small.rlim_cur = 1000;
        ::setrlimit(RLIMIT_FSIZE, &small);
    }
    ~FullDisk()
    {
        ::setrlimit(RLIMIT_FSIZE, &old);
        std::signal(SIGXFSZ, oldHandler);
    }

private:
    rlimit old;
    void (*oldHandler)(int);
};

/// For the moment nobody in particular, so that rights mean something.
class WithoutRights
{
public:
    WithoutRights() : old(::geteuid())
    {
        if (old == 0)
            ok = ::seteuid(stranger) == 0;
    }
    ~WithoutRights()
    {
        if (old == 0 && ::seteuid(old) != 0)
            qFatal("the former rights are gone");
    }

    bool ok = true;

private:
    const uid_t old;
};

QByteArray attribute(const QString &path, const char *name)
{
    std::array<char, 256> bytes;
    const ssize_t size = ::getxattr(qPrintable(path), name, bytes.data(), bytes.size());
    return size < 0 ? QByteArray("none") : QByteArray(bytes.data(), size);
}

bool setAttribute(const QString &path, const char *name, const QByteArray &value)
{
    return ::setxattr(qPrintable(path), name, value.constData(), size_t(value.size()), 0) == 0;
}

/// The owner may write, a further user too, the group may only read, others nothing.
QByteArray accessList()
{
    const auto entry = [](quint16 tag, quint16 rights, quint32 id) {
        QByteArray bytes(8, Qt::Uninitialized);
        qToLittleEndian(tag, bytes.data());
        qToLittleEndian(rights, bytes.data() + 2);
        qToLittleEndian(id, bytes.data() + 4);
        return bytes;
    };
    const quint32 nobody = ~0U;
    return QByteArray("\2\0\0\0", 4) + entry(1, 6, nobody) + entry(2, 6, 54321) +
           entry(4, 4, nobody) + entry(16, 6, nobody) + entry(32, 0, nobody);
}

/// A process that saves, held by this one at each of its system calls.
class SavingProcess
{
public:
    static constexpr int saved = 0;
    static constexpr int failed = 1;
    static constexpr int failedWithoutReason = 2;

    SavingProcess(const QString &path, const QByteArray &bytes) : child(::fork())
    {
        if (child == 0) {
            ::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
            ::raise(SIGSTOP);
            QString error;
            const bool isSaved = save(path, bytes, &error);
            ::_exit(isSaved ? saved : error.isEmpty() ? failedWithoutReason : failed);
        }
        wait();
    }
    ~SavingProcess() { kill(); }
    Q_DISABLE_COPY_MOVE(SavingProcess)

    bool isHeld() const { return WIFSTOPPED(status); }
    /// Of the process that ended; -1 if a signal ended it.
    int exitCode() const { return WIFEXITED(status) ? WEXITSTATUS(status) : -1; }

    /// Lets it run to where its next system call starts or ends.
    void step() { go(PTRACE_SYSCALL); }
    /// Lets it make its next system call, not counting those for memory, of which a
    /// sanitizer makes now more, now fewer.
    void makeCall()
    {
        bool isCounted = false;
        while (isHeld() && !isCounted) {
            step();
            isCounted = !isHeld() || !isForMemory();
            if (isHeld())
                step();
        }
    }
    void finish()
    {
        while (isHeld())
            go(PTRACE_CONT);
    }
    void kill()
    {
        if (!isHeld())
            return;
        ::kill(child, SIGKILL);
        wait();
    }

#ifdef __x86_64__
    /// Number of the system call that is about to start.
    long call() const
    {
        return registers().orig_rax;
    }

    /// Has that call fail with \a number and not be made.
    void refuse(int number)
    {
        user_regs_struct changed = registers();
        changed.orig_rax = ~0ULL;
        ::ptrace(PTRACE_SETREGS, child, nullptr, &changed);
        step();
        changed = registers();
        changed.rax = static_cast<unsigned long long>(-number);
        ::ptrace(PTRACE_SETREGS, child, nullptr, &changed);
    }
#endif

private:
    void go(decltype(PTRACE_SYSCALL) how)
    {
        ::ptrace(how, child, nullptr, nullptr);
        wait();
    }
    void wait()
    {
        ::waitpid(child, &status, 0);
    }
    bool isForMemory() const
    {
#ifdef __x86_64__
        constexpr std::array calls = {SYS_mmap, SYS_munmap, SYS_madvise, SYS_mprotect, SYS_brk};
        return std::find(calls.begin(), calls.end(), call()) != calls.end();
#else
        return false;
#endif
    }
#ifdef __x86_64__
    user_regs_struct registers() const
    {
        user_regs_struct now = {};
        ::ptrace(PTRACE_GETREGS, child, nullptr, &now);
        return now;
    }
#endif

    const pid_t child;
    int status = 0;
};

enum class Place
{
    Plain,
    New,
    TwoNames,
    ClosedFolder,
};

/// A file of some size in a folder of its own, to be saved in one of the ways.
class Scene
{
public:
    explicit Scene(Place where) : place(where)
    {
        QDir(dir.path()).mkdir(u"folder"_s);
        QDir(dir.path()).mkdir(u"state"_s);
        qputenv("XDG_STATE_HOME", QFile::encodeName(dir.filePath(u"state"_s)));
        if (place != Place::New)
            writeFile(path, before);
        if (place == Place::TwoNames)
            linked = ::link(qPrintable(path), qPrintable(folder + u"/other"_s)) == 0;
        ::chmod(qPrintable(path), 0666);
        for (const QString &each : {dir.path(), folder, dir.filePath(u"state"_s)})
            ::chmod(qPrintable(each), 0777);
        if (place == Place::ClosedFolder)
            ::chmod(qPrintable(folder), 0555);
        files = entries(folder);
    }
    ~Scene()
    {
        ::chmod(qPrintable(folder), 0777);
        qunsetenv("XDG_STATE_HOME");
    }
    Q_DISABLE_COPY_MOVE(Scene)

    /// What a file that this user cannot replace needs.
    std::unique_ptr<WithoutRights> rights() const
    {
        return place == Place::ClosedFolder ? std::make_unique<WithoutRights>() : nullptr;
    }
    bool isWhole() const
    {
        const QByteArray now = readFile(path);
        return now == before || now == after || (place == Place::New && !QFile::exists(path));
    }
    /// Nothing but the file, in both folders. A file that was about to take the place
    /// of the old one has a name for a moment.
    bool isTidy(bool isKilled = false) const
    {
        QStringList now = entries(folder);
        if (isKilled && place == Place::Plain && now.constFirst().startsWith(u".save-"))
            now.removeFirst();
        if (place == Place::New)
            now.removeOne(u"file"_s);
        const QString state = dir.filePath(u"state/tst_filesave"_s);
        return now == files && entries(state).isEmpty();
    }

    const QTemporaryDir dir;
    const QString folder = dir.filePath(u"folder"_s);
    const QString path = folder + u"/file"_s;
    /// Longer than what is written at a time.
    const QByteArray before = QByteArray("old\n").repeated(75'000);
    const QByteArray after = QByteArray("new!\n").repeated(55'000);
    QStringList files;
    bool linked = true;

private:
    const Place place;
};

} // namespace

class TestFileSave : public QObject
{
    Q_OBJECT
private slots:
    void saveFollowsLinks();
    void saveKeepsRights();
    void attributes_data();
    void attributes();
    void foldersRightsAreNotAdded();
    void longNames_data();
    void longNames();
    void saveWithoutFolderRights();
    void saveFailureKeepsOldFile_data();
    void saveFailureKeepsOldFile();
    void killed_data();
    void killed();
    void restoring_data();
    void restoring();
    void faults_data();
    void faults();
    void diskThatIsGone();
};

void TestFileSave::saveFollowsLinks()
{
    const QTemporaryDir dir;
    const QString path = dir.filePath(u"f"_s);
    const QString link = dir.filePath(u"link"_s);
    const QString toLink = dir.filePath(u"link to link"_s);
    QVERIFY(QFile::link(u"f"_s, link));
    QVERIFY(QFile::link(u"link"_s, toLink));

    QVERIFY2(save(toLink, "first"), "the file behind a link need not exist");
    QCOMPARE(readFile(path), QByteArray("first"));
    QVERIFY(save(toLink, "second"));
    QCOMPARE(readFile(path), QByteArray("second"));
    QVERIFY(QFileInfo(link).isSymLink() && QFileInfo(toLink).isSymLink());

    const QString other = dir.filePath(u"other name"_s);
    QCOMPARE(::link(qPrintable(path), qPrintable(other)), 0);
    QVERIFY(save(path, "third, and longer"));
    QCOMPARE(readFile(other), QByteArray("third, and longer"));
    QVERIFY(save(other, "4"));
    QCOMPARE(readFile(path), QByteArray("4"));

    QVERIFY(QFile::link(u"round"_s, dir.filePath(u"round"_s)));
    QString error;
    QVERIFY(!save(dir.filePath(u"round"_s), "z", &error));
    QVERIFY(!error.isEmpty());
}

void TestFileSave::saveKeepsRights()
{
    const QTemporaryDir dir;
    const QString path = dir.filePath(u"f"_s);
    writeFile(path, "a");
    // The bit beyond those of users is one that the toolkit does not know.
    const mode_t mode = 01751;
    QCOMPARE(::chmod(qPrintable(path), mode), 0);
    const bool isRoot = ::geteuid() == 0;
    if (isRoot)
        QCOMPARE(::chown(qPrintable(path), stranger, stranger), 0);
    QVERIFY(save(path, "b"));
    struct stat now;
    QCOMPARE(::stat(qPrintable(path), &now), 0);
    QCOMPARE(now.st_mode & 07777, mode);
    if (isRoot)
        QCOMPARE(now.st_uid, stranger);
}

void TestFileSave::attributes_data()
{
    const Rows<QString, QByteArray, bool> row("name", "value", "asStranger");
    row("what the user noted", "user.origin", "somewhere", false);
    row("an access control list", "system.posix_acl_access", accessList(), false);
    row("what this user may not copy", "security.vesktest", "z", true);
}

void TestFileSave::attributes()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, value);
    QFETCH(bool, asStranger);
    const Scene scene(Place::Plain);
    if (!setAttribute(scene.path, qPrintable(name), value))
        QSKIP("this attribute cannot be set here");
    // The group is this process's still: it is the attribute that cannot be copied.
    if (asStranger)
        QCOMPARE(::chown(qPrintable(scene.path), stranger, gid_t(-1)), 0);
    struct stat old = {};
    struct stat now = {};
    QCOMPARE(::stat(qPrintable(scene.path), &old), 0);
    {
        const auto rights = asStranger ? std::make_unique<WithoutRights>() : nullptr;
        QString error;
        QVERIFY2(save(scene.path, scene.after, &error), qPrintable(error));
    }
    QCOMPARE(readFile(scene.path), scene.after);
    QCOMPARE(attribute(scene.path, qPrintable(name)), value);
    QCOMPARE(::stat(qPrintable(scene.path), &now), 0);
    QCOMPARE(now.st_mode, old.st_mode);
    QVERIFY(scene.isTidy());
}

// The rights that a folder gives to new files are not those of an old one.
void TestFileSave::foldersRightsAreNotAdded()
{
    const Scene scene(Place::Plain);
    if (!setAttribute(scene.folder, "system.posix_acl_default", accessList()))
        QSKIP("no access control lists here");
    QVERIFY(save(scene.path, scene.after));
    QCOMPARE(attribute(scene.path, "system.posix_acl_access"), QByteArray("none"));
}

void TestFileSave::longNames_data()
{
    const Rows<QString, bool> row("name", "hasOtherName");
    row("255 bytes", QString(255, u'n'), false);
    row("of two bytes a letter", QString(127, QChar(0x44F)), false);
    row("255 bytes, two names", QString(255, u'n'), true);
    row("of three bytes a letter, two names", QString(85, QChar(0x6587)), true);
}

void TestFileSave::longNames()
{
    QFETCH(QString, name);
    QFETCH(bool, hasOtherName);
    const Scene scene(Place::Plain);
    const QString path = scene.folder + u'/' + name;
    QVERIFY(save(path, "first"));
    if (hasOtherName)
        QCOMPARE(::link(qPrintable(path), qPrintable(scene.folder + u"/other"_s)), 0);
    QString error;
    QVERIFY2(save(path, "second", &error), qPrintable(error));
    QCOMPARE(readFile(path), QByteArray("second"));
    QCOMPARE(entries(scene.folder).size(), hasOtherName ? 3 : 2);
}

void TestFileSave::saveWithoutFolderRights()
{
    const Scene scene(Place::ClosedFolder);
    QString error;
    {
        const WithoutRights rights;
        QVERIFY(rights.ok);
        QVERIFY2(save(scene.path, "b", &error), qPrintable(error));
        QCOMPARE(readFile(scene.path), QByteArray("b"));
        QVERIFY(save(scene.path, "longer again"));
        const FullDisk full;
        QVERIFY(!save(scene.path, QByteArray(5000, 'x'), &error));
    }
    QCOMPARE(error, reason(EFBIG));
    QCOMPARE(readFile(scene.path), QByteArray("longer again"));
    QVERIFY(scene.isTidy());
}

void TestFileSave::saveFailureKeepsOldFile_data()
{
    const Rows<QString, QByteArray, QString> row("name", "bytes", "reason");
    row("no room for a file of the user's own", "own", QByteArray(5000, 'x'), reason(EFBIG));
    row("no room", "f", QByteArray(5000, 'x'), reason(EFBIG));
    row("no room for a file of two names", "two", QByteArray(5000, 'x'), reason(EFBIG));
    row("no right to write", "read-only", "x", reason(EACCES));
    row("a folder", "folder", "x", "Not a regular file");
    row("in no folder", "missing/f", "x", reason(ENOENT));
    row("in a file", "f/f", "x", reason(ENOTDIR));
    row("no regular file", "pipe", "x", "Not a regular file");
}

void TestFileSave::saveFailureKeepsOldFile()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, bytes);
    const QTemporaryDir dir;
    const QByteArray old(900, 'o');
    for (const char *file : {"f", "own", "two", "read-only"})
        writeFile(dir.filePath(QLatin1String(file)), old);
    QCOMPARE(::chmod(qPrintable(dir.path()), 0777), 0);
    QCOMPARE(::chmod(qPrintable(dir.filePath(u"f"_s)), 0666), 0);
    QCOMPARE(::chmod(qPrintable(dir.filePath(u"two"_s)), 0666), 0);
    // Only the user's own file can be replaced by a new one.
    for (const QString &each : {u"own"_s, u"read-only"_s}) {
        if (::geteuid() == 0)
            QCOMPARE(::chown(qPrintable(dir.filePath(each)), stranger, gid_t(-1)), 0);
    }
    QCOMPARE(::chmod(qPrintable(dir.filePath(u"read-only"_s)), 0444), 0);
    QCOMPARE(::link(qPrintable(dir.filePath(u"two"_s)), qPrintable(dir.filePath(u"second name"_s))),
             0);
    QVERIFY(QDir(dir.path()).mkdir(u"folder"_s));
    QCOMPARE(::mkfifo(qPrintable(dir.filePath(u"pipe"_s)), 0666), 0);
    const QStringList entries = QDir(dir.path()).entryList(QDir::AllEntries | QDir::System);

    QString error;
    {
        const WithoutRights rights;
        QVERIFY(rights.ok);
        const FullDisk full;
        QVERIFY(!save(dir.filePath(name), bytes, &error));
    }
    QTEST(error, "reason");
    for (const char *file : {"f", "own", "two", "read-only"})
        QCOMPARE(readFile(dir.filePath(QLatin1String(file))), old);
    QCOMPARE(QDir(dir.path()).entryList(QDir::AllEntries | QDir::System), entries);
}

void TestFileSave::killed_data()
{
    const Rows<Place> row("place");
    row("a file", Place::Plain);
    row("a new file", Place::New);
    row("a file of two names", Place::TwoNames);
    row("a file in a closed folder", Place::ClosedFolder);
}

// Killed at each of its system calls, a save leaves the old or the new text in the
// file, or a whole copy of both that is found again.
void TestFileSave::killed()
{
    QFETCH(Place, place);
    int torn = 0;
    int after = 0;
    for (int calls = 0;; ++calls) {
        const Scene scene(place);
        QVERIFY(scene.linked);
        const auto rights = scene.rights();
        SavingProcess process(scene.path, scene.after);
        for (int i = 0; i < calls && process.isHeld(); ++i)
            process.makeCall();
        if (!process.isHeld())
            break;
        QVERIFY2(InterruptedSave::findAll().empty(), "the process lives");
        process.kill();
        std::vector<InterruptedSave> found = InterruptedSave::findAll();
        if (!scene.isWhole()) {
            ++torn;
            QCOMPARE(int(found.size()), 1);
        }
        if (readFile(scene.path) == scene.after)
            ++after;
        for (InterruptedSave &save : found) {
            QCOMPARE(save.target(), scene.path);
            QCOMPARE(readFile(save.former()), scene.before);
            QCOMPARE(readFile(save.fresh()), scene.after);
            QString error;
            QVERIFY2(calls % 2 ? save.restoreFresh(&error) : save.restoreFormer(&error),
                     qPrintable(error));
            QCOMPARE(readFile(scene.path), calls % 2 ? scene.after : scene.before);
        }
        QVERIFY(scene.isTidy(true));
    }
    QVERIFY(after > 0);
    QCOMPARE(torn > 0, place == Place::TwoNames || place == Place::ClosedFolder);
}

void TestFileSave::restoring_data()
{
    const Rows<QString, bool, QString> row("lost", "isFound", "error");
    row("both copies", "file.*", false, QString());
    row("all, with its disk maybe", "*", false, QString());
    row("the former text", "file.before*", true, reason(ENOENT));
    row("the file", "file", true, QString());
}

// Copies and file may go before anybody asks for them.
void TestFileSave::restoring()
{
    QFETCH(QString, lost);
    QFETCH(bool, isFound);
    const Scene scene(Place::TwoNames);
    SavingProcess process(scene.path, scene.after);
    while (process.isHeld() && scene.isWhole())
        process.step();
    process.kill();
    const QStringList gone = QDir(scene.folder).entryList({lost}, QDir::Files);
    QVERIFY(!gone.isEmpty());
    for (const QString &name : gone)
        QVERIFY(QFile::remove(scene.folder + u'/' + name));
    {
        std::vector<InterruptedSave> found = InterruptedSave::findAll();
        QCOMPARE(int(found.size()), int(isFound));
        // Without a file they may come back with it.
        const bool isForgotten = !isFound && QFile::exists(scene.path);
        QCOMPARE(entries(scene.dir.filePath(u"state/tst_filesave"_s)).isEmpty(), isForgotten);
        QVERIFY2(InterruptedSave::findAll().empty(), "it was found by another one");
        if (!isFound)
            return;
        QString error;
        const bool isRestored = found.front().restoreFormer(&error);
        QTEST(error, "error");
        QCOMPARE(isRestored, error.isEmpty());
        if (isRestored) {
            QCOMPARE(readFile(scene.path), scene.before);
            return;
        }
        QVERIFY(found.front().former().isEmpty() && !found.front().fresh().isEmpty());
    }
    std::vector<InterruptedSave> again = InterruptedSave::findAll();
    QCOMPARE(int(again.size()), 1);
    again.front().dismiss();
    QCOMPARE(readFile(again.front().fresh()), scene.after);
    QVERIFY(InterruptedSave::findAll().empty());
}

void TestFileSave::faults_data()
{
    const Rows<Place, int> row("place", "number");
    for (const int number : {EIO, EINTR}) {
        const QByteArray error = std::strerror(number);
        row(("a file: " + error).constData(), Place::Plain, number);
        row(("a new file: " + error).constData(), Place::New, number);
        row(("a file of two names: " + error).constData(), Place::TwoNames, number);
    }
}

// Each system call that has to do with files fails once. A save that says so has left
// the old text, any other one the new text; an interruption harms none.
void TestFileSave::faults()
{
#ifdef __x86_64__
    QFETCH(Place, place);
    QFETCH(int, number);
    const QList<long> calls = {SYS_openat,    SYS_newfstatat, SYS_fstat,     SYS_statx,
                               SYS_write,     SYS_pwrite64,   SYS_pread64,   SYS_fsync,
                               SYS_ftruncate, SYS_fallocate,  SYS_rename,    SYS_linkat,
                               SYS_fchown,    SYS_fchmod,     SYS_listxattr, SYS_getxattr,
                               SYS_fsetxattr, SYS_faccessat,  SYS_flock,     SYS_faccessat2};
    int failures = 0;
    int nth = 0;
    for (bool isRefused = true; isRefused; ++nth) {
        isRefused = false;
        const Scene scene(place);
        SavingProcess process(scene.path, scene.after);
        process.step();
        bool isSynced = false;
        for (int i = 0; process.isHeld() && !isRefused; process.step()) {
            isSynced = isSynced || process.call() == SYS_fsync;
            QVERIFY2(isSynced || process.call() != SYS_rename, "the new text may get lost");
            isRefused = calls.contains(process.call()) && i++ == nth;
            if (isRefused)
                process.refuse(number);
            else
                process.step();
        }
        process.finish();
        const bool isSaved = process.exitCode() == SavingProcess::saved;
        const QByteArray expected = isSaved ? scene.after : scene.before;
        if (place != Place::New || isSaved)
            QVERIFY2(readFile(scene.path) == expected, qPrintable(u"fault %1"_s.arg(nth)));
        else
            QVERIFY(!QFile::exists(scene.path));
        struct stat now = {};
        if (place != Place::New && ::stat(qPrintable(scene.path), &now) == 0) {
            QCOMPARE(int(now.st_mode & 0777), 0666);
            QCOMPARE(int(now.st_nlink), place == Place::TwoNames ? 2 : 1);
        }
        QVERIFY(isSaved || process.exitCode() == SavingProcess::failed);
        QVERIFY2(isSaved || number != EINTR, qPrintable(u"interruption %1"_s.arg(nth)));
        QVERIFY(scene.isTidy());
        failures += !isSaved;
    }
    QVERIFY(nth > 10);
    QCOMPARE(failures > 3, number != EINTR);
#else
    QSKIP("the calls of this machine are not known");
#endif
}

// From some call on nothing can be written any more: what the file has lost is in the
// copy.
void TestFileSave::diskThatIsGone()
{
#ifdef __x86_64__
    const QList<long> calls = {SYS_write, SYS_pwrite64, SYS_fsync, SYS_ftruncate, SYS_fallocate};
    int lost = 0;
    bool isRefused = true;
    for (int nth = 0; isRefused; ++nth) {
        isRefused = false;
        const Scene scene(Place::TwoNames);
        SavingProcess process(scene.path, scene.after);
        process.step();
        for (int i = 0; process.isHeld(); process.step()) {
            if (calls.contains(process.call()) && i++ >= nth) {
                isRefused = true;
                process.refuse(EIO);
            } else {
                process.step();
            }
        }
        QCOMPARE(process.exitCode(), isRefused ? SavingProcess::failed : SavingProcess::saved);
        if (!isRefused || scene.isWhole())
            continue;
        ++lost;
        const std::vector<InterruptedSave> found = InterruptedSave::findAll();
        QCOMPARE(int(found.size()), 1);
        QCOMPARE(readFile(found.front().former()), scene.before);
    }
    QVERIFY(lost > 0);
#else
    QSKIP("the calls of this machine are not known");
#endif
}

QTEST_MAIN(TestFileSave)
#include "tst_filesave.moc"
