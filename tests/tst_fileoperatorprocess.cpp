#include "tests/faults/faults.h"
#include "tests/filetree.h"
#include "tests/testing.h"
#include "zvwidgets/zvfileoperator/fileoperatorprocess.h"
#include "zvwidgets/zvfiles/filenames.h"

#include <QDir>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

#include <filesystem>
#include <sys/xattr.h>

using namespace Qt::StringLiterals;
using namespace zvwidgets;
using Operation = FileOperatorProcess::Operation;

namespace {

/// Answers as told, or at random, and remembers what was asked.
class Answers : public FileOperatorQuestions
{
public:
    Overwriting overwrite(const QByteArray &target) override
    {
        repeated = repeated || decisions.contains(target);
        if (asked)
            asked();
        const Overwriting answer = choose ? choose(target) : overwriting;
        decisions.insert(target, answer);
        overwritesAll = overwritesAll || answer == OverwriteAll;
        skipsAll = skipsAll || answer == SkipAll;
        aborted = aborted || answer == Abort;
        return answer;
    }
    Failure cannotAccess(const QByteArray &path, DeviceStatus) override { return fail(path); }
    Failure transferFailed(const QByteArray &path, DeviceStatus) override { return fail(path); }
    bool deleteIncomplete(const QByteArray &) override { return true; }
    Failure cannotDelete(const QByteArray &path) override { return fail(path); }
    void intoItself(const QByteArray &folder) override { failures.append(folder); }
    void notFlushed() override { failures.append("flush"); }
    void tell(const Notes &told) override
    {
        notes = told;
        ++tellings;
    }

    std::function<void()> asked;
    std::function<Overwriting(const QByteArray &)> choose;
    Overwriting overwriting = Overwrite;
    Failure failure = Failure::Skip;

    QHash<QByteArray, Overwriting> decisions;
    QByteArrayList failures;
    Notes notes;
    int tellings = 0;
    bool overwritesAll = false;
    bool skipsAll = false;
    bool aborted = false;
    /// The same target was asked about twice.
    bool repeated = false;

private:
    Failure fail(const QByteArray &path)
    {
        failures.append(path);
        if (asked)
            asked();
        aborted = aborted || failure == Failure::Abort;
        return failure;
    }
};

/// Folders "from", "to" and "outside" of a test's own.
class World
{
public:
    World() : dir(place()), root(QFile::encodeName(dir.path()))
    {
        for (const char *name : {"from", "to", "outside"})
            folder(name);
        file("outside/precious", "precious");
    }
    ~World()
    {
        faults::disarm();
        // Names that are no UTF-8 are too much for the toolkit.
        std::filesystem::remove_all(root.toStdString());
    }

    QByteArray path(const QByteArray &name) const { return joinedPath(root, name); }
    std::string text(const QByteArray &name) const { return path(name).toStdString(); }

    void folder(const QByteArray &name) const { ::mkdir(path(name).constData(), 0755); }
    void file(const QByteArray &name, const QByteArray &content, mode_t mode = 0644) const
    {
        const int handle = ::open(path(name).constData(), O_CREAT | O_WRONLY | O_TRUNC, 0600);
        if (::write(handle, content.constData(), size_t(content.size())) != content.size())
            qFatal("cannot write");
        ::fchmod(handle, mode);
        ::close(handle);
    }
    void link(const QByteArray &name, const QByteArray &target) const
    {
        if (::symlink(target.constData(), path(name).constData()) != 0)
            qFatal("cannot link");
    }
    QByteArray content(const QByteArray &name) const { return read(name).content; }
    bool has(const QByteArray &name) const { return read(name).info.st_mode != 0; }
    FileNode read(const QByteArray &name) const { return FileNode::read(text(name)); }

    bool run(Operation operation, const QByteArrayList &names, Answers &answers,
             const QByteArray &dest = "to") const
    {
        QByteArrayList paths;
        for (const QByteArray &name : names)
            paths.append(path(name));
        return FileOperatorProcess(operation, paths, path(dest), answers).run();
    }

    /// From now on no rename takes anything out of "from".
    void partDevices() const
    {
        faults::arm(text("from"), {{faults::Call::Rename, 1, EXDEV, true}});
    }

private:
    /// In memory, if possible: a real disk takes its time to be flushed.
    static QString place()
    {
        const QString memory = u"/dev/shm"_s;
        return (QFileInfo(memory).isWritable() ? memory : QDir::tempPath()) + u"/fileops-XXXXXX"_s;
    }

    QTemporaryDir dir;

public:
    const QByteArray root;
};

/// What an operation has to leave on the disk, given what the user answered.
class Model
{
public:
    Model(const World &world, Answers &given, bool sameDevice)
        : answers(given)
        , renames(sameDevice)
        , from(world.read("from"))
        , to(world.read("to"))
        , target(world.path("to"))
    {}

    void run(Operation operation, const std::vector<std::string> &names)
    {
        std::vector<std::string> toCopy;
        for (const std::string &name : names) {
            FileNode &source = from.children[name];
            if (operation == Operation::Erase)
                from.children.erase(name);
            else if (operation == Operation::Move && !moved(name, source))
                toCopy.push_back(name);
            else if (operation == Operation::Copy)
                (void)transfer(source, to, name,
                               joinedPath(target, QByteArray::fromStdString(name)));
        }
        for (const std::string &name : toCopy) {
            FileNode &source = from.children[name];
            if (transfer(source, to, name, joinedPath(target, QByteArray::fromStdString(name))))
                from.children.erase(name);
        }
    }

    Answers &answers;
    const bool renames;
    FileNode from;
    FileNode to;
    /// Why the questions asked cannot be right.
    QString fault;

private:
    bool mayReplace(const QByteArray &path)
    {
        const auto known = answers.decisions.constFind(path);
        if (known != answers.decisions.constEnd())
            return *known == Answers::Overwrite || *known == Answers::OverwriteAll;
        if (!answers.overwritesAll && !answers.skipsAll)
            fault = u"not asked about "_s + decodedPath(path);
        return answers.overwritesAll;
    }

    static bool isOneFile(const FileNode &source, const FileNode &present, const QByteArray &path)
    {
        struct stat pointedTo;
        return source.isSame(present) ||
               (source.isLink() && source.content.startsWith('/') &&
                ::stat(source.content.constData(), &pointedTo) == 0 &&
                pointedTo.st_ino == present.info.st_ino && !path.isEmpty());
    }

    /// Whether nothing is left to do after the first phase of a move.
    bool moved(const std::string &name, FileNode &source)
    {
        const QByteArray path = joinedPath(target, QByteArray::fromStdString(name));
        const auto present = to.children.find(name);
        if (present != to.children.end()) {
            if (isOneFile(source, present->second, path) || !mayReplace(path))
                return true;
            const FileNode &old = present->second;
            const bool fits = source.isFolder() ? old.isFolder() && old.children.empty()
                                                : old.isFile() || old.isLink();
            if (!fits)
                return false;
        }
        if (!renames)
            return false;
        to.children[name] = source;
        from.children.erase(name);
        return true;
    }

    /// Whether nothing of \a source is left to be moved.
    bool transfer(FileNode &source, FileNode &folder, const std::string &name,
                  const QByteArray &path)
    {
        const auto present = folder.children.find(name);
        const bool exists = present != folder.children.end();
        if (source.isFolder()) {
            if (exists && (source.isSame(present->second) || !present->second.isFolder()))
                return false;
            if (!exists)
                folder.children[name].info = source.info;
            FileNode &made = folder.children[name];
            made.isNew = made.isNew || !exists;
            for (auto child = source.children.begin(); child != source.children.end();) {
                const bool gone =
                    transfer(child->second, made, child->first,
                             joinedPath(path, QByteArray::fromStdString(child->first)));
                child = gone && removes ? source.children.erase(child) : std::next(child);
            }
            return source.children.empty();
        }
        if (exists && (isOneFile(source, present->second, path) || !mayReplace(path)))
            return false;
        if (exists && !present->second.isFile() && !present->second.isLink())
            return false;
        if (!source.isFile() && !source.isLink())
            return false;
        folder.children[name] = source;
        return true;
    }

public:
    bool removes = false;

private:
    const QByteArray target;
};

class TreeMaker
{
public:
    TreeMaker(const World &made, quint32 seed) : world(made), random(seed) {}

    int below(int limit) { return int(random.bounded(limit)); }

    void fill(const QByteArray &folder, int depth)
    {
        static const QByteArrayList names = {
            "a", "b", "c", "-d e", "new\nline", "\xff\xfe", "%1 <b>", QByteArray(255, 'n'), ".dot"};
        for (const QByteArray &name : names) {
            if (below(3) == 0)
                make(joinedPath(folder, name), depth);
        }
    }

private:
    void make(const QByteArray &name, int depth)
    {
        switch (below(9)) {
        case 0:
        case 1:
        case 2:
            if (depth > 0) {
                world.folder(name);
                fill(name, depth - 1);
                ::chmod(world.path(name).constData(), below(2) ? 0755 : 0711);
                return;
            }
            break;
        case 3:
            world.link(name, below(2) ? world.path("outside") : QByteArray("nowhere"));
            return;
        case 4:
            if (!files.isEmpty() &&
                ::link(world.path(files.at(below(int(files.size())))).constData(),
                       world.path(name).constData()) == 0)
                return;
            break;
        case 5:
            if (below(3) == 0) {
                ::mkfifo(world.path(name).constData(), 0600);
                return;
            }
            if (!files.isEmpty()) {
                world.link(name, world.path(files.at(below(int(files.size())))));
                return;
            }
            break;
        default:
            break;
        }
        makeFile(name);
    }

    void makeFile(const QByteArray &name)
    {
        static const QList<mode_t> modes = {0644, 0600, 0444, 0755, 0640, 04755};
        const int size = below(4) == 0 ? 0 : below(30) == 0 ? 400000 : below(3000);
        world.file(name, QByteArray(size, char('a' + below(26))), modes.at(below(6)));
        if (below(8) == 0)
            ::truncate(world.path(name).constData(), size + 200000);
        const timespec times[2] = {{1000 + below(100000), 5}, {2000 + below(100000), below(1000)}};
        ::utimensat(AT_FDCWD, world.path(name).constData(), times, 0);
        files.append(name);
    }

    const World &world;
    QRandomGenerator random;
    QByteArrayList files;
};

/// A small tree with conflicts for the faults. What it asks is answered by name.
class FaultWorld : public World
{
public:
    FaultWorld()
    {
        folder("from/tree");
        folder("from/tree/below");
        folder("to/tree");
        file("from/tree/large", QByteArray(250000, 'l'), 0640);
        file("from/tree/empty", QByteArray());
        file("from/tree/below/small", "small", 0600);
        file("from/tree/below/replacing", "new");
        file("from/tree/keeping", "new");
        link("from/tree/link", path("outside"));
        file("from/single", "single");
        file("from/replacing", "new");
        folder("to/tree/below");
        file("to/tree/below/replacing", "old");
        file("to/tree/keeping", "keep");
        file("to/replacing", "old");
        file("to/other", "other");
    }

    static FileOperatorQuestions::Overwriting answer(const QByteArray &target)
    {
        return target.endsWith("keeping") ? FileOperatorQuestions::Skip
                                          : FileOperatorQuestions::Overwrite;
    }

    bool runAll(Operation operation, Answers &answers) const
    {
        answers.choose = &FaultWorld::answer;
        return run(operation, {"from/tree", "from/single", "from/replacing"}, answers);
    }
};

/// What of \a source is neither there any more nor whole at \a target.
QByteArrayList lost(const FileNode &before, const FileNode &source, const FileNode &target,
                    const QByteArray &path = {})
{
    if (!before.isFolder()) {
        const bool isWhole = source.content == before.content || target.content == before.content;
        return isWhole ? QByteArrayList() : QByteArrayList{path};
    }
    QByteArrayList result;
    const auto child = [](const FileNode &folder, const std::string &name) {
        const auto found = folder.children.find(name);
        // Nothing has this content.
        static const FileNode none = {{}, "no such file", {}, false};
        return found == folder.children.end() ? none : found->second;
    };
    for (const auto &[name, node] : before.children)
        result += lost(node, child(source, name), child(target, name),
                       path + '/' + QByteArray::fromStdString(name));
    return result;
}

/// What is in \a now and neither as it was before nor a whole copy.
QByteArrayList damaged(const FileNode &now, const FileNode *before, const FileNode *copied,
                       const QByteArray &path = {})
{
    if (!now.isFolder()) {
        const bool isOld = before && before->content == now.content;
        const bool isNew = copied && copied->content == now.content &&
                           FaultWorld::answer(path) == FileOperatorQuestions::Overwrite;
        return isOld || isNew ? QByteArrayList() : QByteArrayList{path};
    }
    QByteArrayList result;
    const auto child = [](const FileNode *folder, const std::string &name) {
        const auto found = folder ? folder->children.find(name) : decltype(now.children.end())();
        return folder && found != folder->children.end() ? &found->second : nullptr;
    };
    for (const auto &[name, node] : now.children)
        result += damaged(node, child(before, name), child(copied, name),
                          path + '/' + QByteArray::fromStdString(name));
    return result;
}

/// The ways in which the call of this kind and number is made to fail: they take
/// turns, unless there is time for all.
QList<int> errorsOf(faults::Call call, int number)
{
    static const QList<int> fatal = {ENOSPC, EIO, EACCES};
    QList<int> errors = {EINTR};
    if (qEnvironmentVariableIsSet("VESK_SOAK"))
        errors += fatal;
    else
        errors.append(fatal.at(number % 3));
    if (call == faults::Call::Read || call == faults::Call::Write || call == faults::Call::Copy)
        errors.append(faults::shortCount);
    return errors;
}

int soaked(int runs)
{
    return runs * qMax(1, qEnvironmentVariableIntValue("VESK_SOAK"));
}

} // namespace

class TestFileOperatorProcess : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase() { ::umask(022); }
    void refusedPaths_data();
    void refusedPaths();
    void oneFileByTwoPaths_data();
    void oneFileByTwoPaths();
    void intoItself_data();
    void intoItself();
    void depthIsCut_data();
    void depthIsCut();
    void stoppedInAFile_data();
    void stoppedInAFile();
    void keepsAttributesAndHoles();
    void unreadableFolderIsAskedAbout();
    void eraseFollowsNoSwappedFolder();
    void movedSourceThatChangedIsKept();
    void moveReplacesNothingJustMoved_data();
    void moveReplacesNothingJustMoved();
    void namesOfAnyBytes();
    void randomTrees();
    void faultsLoseNothing_data();
    void faultsLoseNothing();

private:
    void checkFault(Operation operation, bool sameDevice, const faults::Fault &fault);

    int faultRuns = 0;
};

void TestFileOperatorProcess::refusedPaths_data()
{
    const Rows<QByteArray> row("name");
    row("empty", "");
    row("the folder itself", "from/.");
    row("the folder above", "from/..");
    row("no such file", "from/none");
    row("ends early", QByteArray("from/a\0b", 8));
}

void TestFileOperatorProcess::refusedPaths()
{
    QFETCH(const QByteArray, name);
    const World world;
    world.file("from/a", "text");
    Answers answers;
    for (const auto operation : {Operation::Copy, Operation::Move, Operation::Erase}) {
        const QByteArray path = name.isEmpty() ? name : world.path(name);
        QVERIFY(
            !FileOperatorProcess(operation, {world.path("from/a"), path}, world.path("to"), answers)
                 .run());
    }
    QVERIFY(!world.run(Operation::Copy, {"from/a"}, answers, "no such folder"));
    QVERIFY(answers.failures.isEmpty());
    QCOMPARE(world.content("from/a"), "text");
    QVERIFY(!world.has("to/a"));
}

void TestFileOperatorProcess::oneFileByTwoPaths_data()
{
    const Rows<QByteArray, QByteArray> row("source", "dest");
    row("the same folder", "from/a", "from");
    row("a path through a link", "from/a", "alias");
    row("a folder", "from/tree", "alias");
    row("a second name of the file", "from/a", "to");
    row("a link where its target is", "from/link", "outside");
}

void TestFileOperatorProcess::oneFileByTwoPaths()
{
    QFETCH(const QByteArray, source);
    QFETCH(const QByteArray, dest);
    const World world;
    world.file("from/a", "text");
    world.folder("from/tree");
    world.file("from/tree/b", "text");
    world.link("alias", "from");
    QCOMPARE(::link(world.path("from/a").constData(), world.path("to/a").constData()), 0);
    world.file("outside/link", "target");
    world.link("from/link", "../outside/link");
    const FileNode all = world.read("");
    Answers answers;
    QVERIFY(world.run(Operation::Copy, {source}, answers, dest));
    QVERIFY(world.run(Operation::Move, {source}, answers, dest));
    QVERIFY(answers.decisions.isEmpty());
    QCOMPARE(world.read("").differenceFrom(all), QString());
}

void TestFileOperatorProcess::intoItself_data()
{
    const Rows<QByteArray> row("dest");
    row("itself", "from/tree");
    row("a folder below", "from/tree/below");
    row("a folder below by a link", "alias/below");
}

void TestFileOperatorProcess::intoItself()
{
    QFETCH(const QByteArray, dest);
    const World world;
    world.folder("from/tree");
    world.folder("from/tree/below");
    world.file("from/tree/a", "text");
    world.file("from/b", "text");
    world.link("alias", "from/tree");
    const FileNode all = world.read("");
    for (const auto operation : {Operation::Copy, Operation::Move}) {
        Answers answers;
        QVERIFY(!world.run(operation, {"from/b", "from/tree"}, answers, dest));
        QCOMPARE(answers.failures, QByteArrayList{world.path("from/tree")});
        QCOMPARE(world.read("").differenceFrom(all), QString());
    }
}

void TestFileOperatorProcess::depthIsCut_data()
{
    const Rows<int> row("operation");
    row("copy", int(Operation::Copy));
    row("move", int(Operation::Move));
    row("erase", int(Operation::Erase));
}

void TestFileOperatorProcess::depthIsCut()
{
    QFETCH(const int, operation);
    const World world;
    // The folder at level 33 is not visited any more.
    QByteArray folder = "from/0";
    QByteArray deepest;
    world.folder(folder);
    for (int i = 1; i <= 35; ++i) {
        world.file(folder + "/file", "text");
        folder += '/' + QByteArray::number(i);
        world.folder(folder);
        if (i == 32)
            deepest = folder;
    }
    world.partDevices();
    Answers answers;
    QVERIFY(world.run(Operation(operation), {"from/0"}, answers));
    QCOMPARE(answers.tellings, 1);
    QCOMPARE(answers.notes.size(), 1);
    QCOMPARE(answers.notes.first().second, world.path(deepest + "/33"));
    QVERIFY(answers.failures.isEmpty());
    QVERIFY(world.has(deepest + "/33/file"));
    QCOMPARE(world.has(deepest + "/file"), Operation(operation) == Operation::Copy);
    deepest.replace(0, 4, "to");
    QCOMPARE(world.has(deepest + "/file"), Operation(operation) != Operation::Erase);
    QVERIFY(!world.has(deepest + "/33/file"));
}

void TestFileOperatorProcess::stoppedInAFile_data()
{
    const Rows<bool> row("exists");
    row("a new target stays as far as it got", false);
    row("an old target stays whole", true);
}

void TestFileOperatorProcess::stoppedInAFile()
{
    QFETCH(const bool, exists);
    const World world;
    world.file("from/a", QByteArray(5000, 'a'));
    if (exists)
        world.file("to/a", "old");
    FolderHandles sources;
    sources.addRoot(world.root);
    FolderHandles targets;
    targets.addRoot(world.root);
    FileTransfer transfer;
    const auto outcome =
        transfer.run({sources.open(world.path("from")), "a"}, {targets.open(world.path("to")), "a"},
                     exists ? FileTransfer::Target::Replace : FileTransfer::Target::New,
                     [](qint64) { return false; });
    QCOMPARE(outcome, FileTransfer::Outcome::Stopped);
    QCOMPARE(world.content("to/a"), exists ? QByteArray("old") : QByteArray(1024, 'a'));
    QCOMPARE(world.read("to").children.size(), size_t(1));
}

void TestFileOperatorProcess::keepsAttributesAndHoles()
{
    const World world;
    world.folder("from/tree");
    world.file("from/tree/holes", "start");
    constexpr qint64 size = qint64(1) << 30;
    QCOMPARE(::truncate(world.path("from/tree/holes").constData(), size), 0);
    world.file("from/tree/a", "text", 0440);
    const auto set = [&](const QByteArray &name) {
        return ::setxattr(world.path(name).constData(), "user.vesk", "value", 5, 0) == 0;
    };
    const bool knowsAttributes = set("from/tree/a") && set("from/tree");
    ::chmod(world.path("from/tree").constData(), 0551);
    Answers answers;
    QVERIFY(world.run(Operation::Copy, {"from/tree"}, answers));
    struct stat info;
    QCOMPARE(::lstat(world.path("to/tree/holes").constData(), &info), 0);
    QCOMPARE(qint64(info.st_size), size);
    QVERIFY(info.st_blocks < 1000);
    QCOMPARE(::lstat(world.path("to/tree").constData(), &info), 0);
    QCOMPARE(info.st_mode & 07777, mode_t(0551));
    if (!knowsAttributes)
        QSKIP("no extended attributes here");
    for (const QByteArray name : {"to/tree", "to/tree/a"}) {
        QByteArray value(100, '\0');
        const auto length =
            ::getxattr(world.path(name).constData(), "user.vesk", value.data(), 100);
        QCOMPARE(value.first(qMax<qsizetype>(length, 0)), "value");
    }
}

void TestFileOperatorProcess::unreadableFolderIsAskedAbout()
{
    const World world;
    world.folder("from/tree");
    world.folder("from/tree/closed");
    world.file("from/tree/closed/a", "text");
    Answers answers;
    faults::arm(world.root.toStdString(),
                {{faults::Call::List, 1, EACCES, true, world.text("from/tree/closed")},
                 {faults::Call::Rename, 1, EXDEV, true, world.text("from")}});
    QVERIFY(world.run(Operation::Move, {"from/tree"}, answers));
    faults::disarm();
    QCOMPARE(answers.failures, QByteArrayList{world.path("from/tree/closed")});
    QCOMPARE(world.content("from/tree/closed/a"), "text");
}

void TestFileOperatorProcess::eraseFollowsNoSwappedFolder()
{
    const World world;
    world.folder("from/tree");
    world.folder("from/tree/sub");
    world.file("from/tree/sub/precious", "copy");
    world.file("from/tree/a", "text");
    Answers answers;
    answers.asked = [&] {
        answers.asked = nullptr;
        QCOMPARE(
            ::rename(world.path("from/tree/sub").constData(), world.path("from/away").constData()),
            0);
        world.link("from/tree/sub", world.path("outside"));
    };
    faults::arm(world.root.toStdString(), {{faults::Call::Unlink, 1, EACCES}});
    QVERIFY(world.run(Operation::Erase, {"from/tree"}, answers));
    QCOMPARE(world.content("outside/precious"), "precious");
    QCOMPARE(world.content("from/away/precious"), "copy");
    QVERIFY(answers.failures.contains(world.path("from/tree/sub/precious")));
}

void TestFileOperatorProcess::movedSourceThatChangedIsKept()
{
    const World world;
    world.folder("from/tree");
    world.folder("to/tree");
    world.file("from/tree/a", "first");
    world.file("from/tree/b", "text");
    world.file("to/tree/b", "old");
    Answers answers;
    answers.asked = [&] {
        if (world.has("to/tree/a"))
            world.file("from/tree/a", "first and more");
    };
    world.partDevices();
    QVERIFY(world.run(Operation::Move, {"from/tree"}, answers));
    QCOMPARE(world.content("from/tree/a"), "first and more");
    QVERIFY(!world.has("from/tree/b"));
    QCOMPARE(answers.notes.size(), 1);
    QCOMPARE(answers.notes.first().second, world.path("from/tree/a"));
}

void TestFileOperatorProcess::moveReplacesNothingJustMoved_data()
{
    const Rows<bool> row("sameDevice");
    row("renamed", true);
    row("copied", false);
}

void TestFileOperatorProcess::moveReplacesNothingJustMoved()
{
    QFETCH(const bool, sameDevice);
    const World world;
    world.folder("from/x");
    world.folder("from/y");
    world.file("from/x/same", "x");
    world.file("from/y/same", "y");
    world.file("to/same", "old");
    Answers answers;
    answers.overwriting = FileOperatorQuestions::OverwriteAll;
    if (!sameDevice)
        world.partDevices();
    QVERIFY(world.run(Operation::Move, {"from/x/same", "from/y/same"}, answers));
    QCOMPARE(world.content("to/same"), "x");
    QCOMPARE(world.content("from/y/same"), "y");
    QCOMPARE(answers.notes.size(), 1);
}

void TestFileOperatorProcess::namesOfAnyBytes()
{
    QByteArray all;
    for (int i = 1; i < 256; ++i)
        all += char(i);
    for (const QByteArray &name :
         {all, QByteArray("\xef\xbb\xbfmark"), QByteArray("\xed\xb2\x80"), QByteArray("\xc3"),
          QByteArray("\xf0\x9f\x98\x80 \xc3\xa4"), QByteArray("\xef\xbf\xbd")})
        QCOMPARE(encodedPath(decodedPath(name)), name);
    QCOMPARE(decodedPath("\xc3\xa4"), u"ä"_s);
}

void TestFileOperatorProcess::randomTrees()
{
    const int runs = soaked(2000);
    for (int seed = 1; seed <= runs; ++seed) {
        const World world;
        TreeMaker maker(world, quint32(seed));
        maker.fill("from", 3);
        maker.fill("to", 3);
        Answers answers;
        const int usual = maker.below(8);
        answers.choose = [&](const QByteArray &) {
            return FileOperatorQuestions::Overwriting(usual < 5 ? maker.below(4) % 2 * 2
                                                                : maker.below(20) * 4 / 19);
        };
        if (maker.below(10) == 0)
            answers.failure = FileOperatorQuestions::Failure(maker.below(3));
        const auto operation = Operation(maker.below(3));
        const bool sameDevice = maker.below(2) == 0;
        Model model(world, answers, sameDevice);
        const FileNode from = model.from;
        const FileNode to = model.to;
        const FileNode outside = world.read("outside");
        std::vector<std::string> names;
        QByteArrayList paths;
        for (const auto &[name, child] : from.children) {
            if (maker.below(4) == 0)
                continue;
            names.push_back(name);
            paths.append("from/" + QByteArray::fromStdString(name));
        }
        if (!sameDevice)
            world.partDevices();
        const bool ended = world.run(operation, paths, answers);
        faults::disarm();
        const auto context = QStringLiteral("seed %1").arg(seed).toLatin1();
        QVERIFY2(!answers.repeated, context);
        QVERIFY2(ended != answers.aborted, context);
        QCOMPARE(world.read("outside").differenceFrom(outside), QString());
        if (answers.aborted)
            continue;
        model.removes = operation == Operation::Move;
        model.run(operation, names);
        QVERIFY2(model.fault.isEmpty(), context + qPrintable(model.fault));
        const QString fromDifference = world.read("from").differenceFrom(model.from, "from");
        QVERIFY2(fromDifference.isEmpty(), context + ' ' + qPrintable(fromDifference));
        const QString toDifference = world.read("to").differenceFrom(model.to, "to");
        QVERIFY2(toDifference.isEmpty(), context + ' ' + qPrintable(toDifference));
    }
}

void TestFileOperatorProcess::faultsLoseNothing_data()
{
    QTest::addColumn<int>("operation");
    QTest::addColumn<bool>("sameDevice");
    QTest::newRow("copy") << int(Operation::Copy) << true;
    QTest::newRow("move by renaming") << int(Operation::Move) << true;
    QTest::newRow("move to another device") << int(Operation::Move) << false;
    QTest::newRow("erase") << int(Operation::Erase) << true;
}

void TestFileOperatorProcess::faultsLoseNothing()
{
    QFETCH(const int, operation);
    QFETCH(const bool, sameDevice);
    std::array<int, faults::callCount> counts;
    {
        const FaultWorld world;
        Answers answers;
        std::vector<faults::Fault> plan;
        if (!sameDevice)
            plan.push_back({faults::Call::Rename, 1, EXDEV, true, world.text("from")});
        faults::arm(world.root.toStdString(), plan);
        QVERIFY(world.runAll(Operation(operation), answers));
        for (int call = 0; call < faults::callCount; ++call)
            counts.at(size_t(call)) = faults::count(faults::Call(call));
        QVERIFY(answers.failures.isEmpty());
    }
    faultRuns = 0;
    for (int call = 0; call < faults::callCount; ++call) {
        for (int number = 1; number <= counts.at(size_t(call)); ++number) {
            const QList<int> errors = errorsOf(faults::Call(call), number);
            for (const int error : errors) {
                checkFault(Operation(operation), sameDevice, {faults::Call(call), number, error});
                if (error != EINTR && number % 5 == 1)
                    checkFault(Operation(operation), sameDevice,
                               {faults::Call(call), number, error, true});
                if (QTest::currentTestFailed())
                    return;
            }
        }
    }
    qInfo("%d runs", faultRuns);
}

void TestFileOperatorProcess::checkFault(Operation operation, bool sameDevice,
                                         const faults::Fault &fault)
{
    ++faultRuns;
    const FaultWorld world;
    const FileNode from = world.read("from");
    const FileNode to = world.read("to");
    Answers answers;
    std::vector<faults::Fault> plan = {fault};
    if (!sameDevice)
        plan.push_back({faults::Call::Rename, 1, EXDEV, true, world.text("from")});
    faults::arm(world.root.toStdString(), plan);
    const bool ended = world.runAll(operation, answers);
    faults::disarm();
    const QByteArray context = "call " + QByteArray::number(int(fault.call)) + ", number " +
                               QByteArray::number(fault.first) + ", error " +
                               QByteArray::number(fault.error) + (fault.lasts ? ", lasting" : "");
    const auto check = [&context](const QByteArrayList &paths) {
        QVERIFY2(paths.isEmpty(), context + ": " + paths.join(' '));
    };
    const FileNode fromNow = world.read("from");
    const FileNode toNow = world.read("to");
    QCOMPARE(world.content("outside/precious"), "precious");
    if (operation != Operation::Erase)
        check(lost(from, fromNow, toNow));
    if (operation == Operation::Copy)
        QVERIFY2(fromNow.differenceFrom(from).isEmpty(), context);
    // A temporary or incomplete file stays only if it can't be removed.
    if (fault.call != faults::Call::Unlink)
        check(damaged(toNow, &to, operation == Operation::Erase ? nullptr : &from));
    // What may not have reached the disk is not removed at its source.
    if (!sameDevice && fault.call == faults::Call::Sync && fault.error != EINTR)
        QCOMPARE(fromNow.differenceFrom(from), QString());
    // What nobody was told of has to be done, but for sources that stayed.
    if (!ended || !answers.failures.isEmpty() || !answers.notes.isEmpty())
        return;
    if (operation == Operation::Erase)
        QVERIFY2(fromNow.children.empty(), context);
    else
        QCOMPARE(lost(from, FileNode(), toNow), QByteArrayList{"/tree/keeping"});
}

QTEST_GUILESS_MAIN(TestFileOperatorProcess)
#include "tst_fileoperatorprocess.moc"
