#include "tests/faults/faults.h"
#include "tests/filetree.h"
#include "tests/testing.h"
#include "zvwidgets/zvfileoperator/filenames.h"
#include "zvwidgets/zvfileoperator/fileoperatorprocess.h"

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

    QByteArray path(const QByteArray &name) const { return joined(root, name); }
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
                (void)transfer(source, to, name, joined(target, QByteArray::fromStdString(name)));
        }
        for (const std::string &name : toCopy) {
            FileNode &source = from.children[name];
            if (transfer(source, to, name, joined(target, QByteArray::fromStdString(name))))
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
        const QByteArray path = joined(target, QByteArray::fromStdString(name));
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
                const bool gone = transfer(child->second, made, child->first,
                                           joined(path, QByteArray::fromStdString(child->first)));
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
                make(joined(folder, name), depth);
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
    void randomTrees();
};

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

QTEST_GUILESS_MAIN(TestFileOperatorProcess)
#include "tst_fileoperatorprocess.moc"
