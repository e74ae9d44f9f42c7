#include "app/search/treesearch.h"

#include "app/messages/messagelimits.h"

#include <QElapsedTimer>
#include <QThread>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;

namespace vesk {

namespace {

/// How long take() waits for rows.
constexpr std::chrono::milliseconds patience{10};
/// Rows are handed over when they hold this much, in UTF-16 units, or are that old, in
/// ms.
constexpr qsizetype parcelSize = 64 * 1024;
constexpr qint64 parcelAge = 20;
/// What rows that nobody has taken may hold before the search waits, in UTF-16 units.
constexpr qint64 mostWaiting = 8 * 1024 * 1024;

/// The rows of one file.
class RowMaker
{
public:
    TreeSearch::Row header(const QString &file) const
    {
        return {u"#bgcolor{#d0d0d0} "_s + file + u' ', 1, file};
    }
    TreeSearch::Row hit(const QString &file, const FileSearch::Hit &hit);

private:
    qint64 longRows = 0;
};

TreeSearch::Row RowMaker::hit(const QString &file, const FileSearch::Hit &hit)
{
    const qsizetype size = hit.line.size();
    longRows += size > MessageLimits::longRow ? size : 0;
    const bool isWhole = !hit.isPart && size <= MessageLimits::hugeRow &&
                         (size <= MessageLimits::longRow || longRows <= MessageLimits::longRows);
    const qsizetype around = isWhole ? size : MessageLimits::excerpt;
    const qsizetype length = isWhole ? hit.length : qMin(hit.length, MessageLimits::longRow);
    const qsizetype first = qMax<qsizetype>(0, hit.column - around);
    QString text = u"   #color{#909090}"_s;
    text += QString::number(hit.lineNumber);
    text += u": #color{black}"_s;
    text += hit.line.mid(first, hit.column - first);
    text += u"#color{blue}"_s;
    text += hit.line.mid(hit.column, length);
    text += u"#color{black}"_s;
    text += hit.line.mid(hit.column + length, around);
    return {text.replace(u'\t', u"    "_s), hit.lineNumber, file};
}

} // namespace

struct TreeSearch::Private
{
    /// A file that is searched, or whose rows wait for those before it.
    struct Task
    {
        QString file;
        QList<Row> rows;
        qint64 size = 0; ///< of the rows
        bool isDone = false;
    };
    class Worker;

    explicit Private(NextFile source) : nextFile(std::move(source)) {}

    bool startThread(const SearchQuery &query);
    std::shared_ptr<Task> begin();
    void handOver(Task &task, QList<Row> *rows, qint64 size, bool isDone);
    bool goOn() const { return !isStopped.load(std::memory_order_relaxed); }

    std::atomic<bool> isStopped = false;
    /// Someone takes rows meanwhile. Not if no thread could be started.
    bool mayWait = true;

    std::mutex sourceMutex; ///< taken before the other one
    const NextFile nextFile;

    mutable std::mutex mutex; ///< for all that follows
    std::condition_variable rowsCame;
    std::condition_variable rowsWent;
    std::deque<std::shared_ptr<Task>> tasks; ///< in the order of the files
    qint64 waiting = 0;                      ///< size of all rows
    int workers = 0;                         ///< that still run

    std::vector<std::jthread> threads;
};

/// What one thread does.
class TreeSearch::Private::Worker
{
public:
    Worker(Private *search, const SearchQuery &query)
        : d(search), engine(query, [this] { return goOn(); })
    {}

    void run();

private:
    bool goOn();
    void take(const FileSearch::Hit &hit);

    Private *const d;
    FileSearch engine;
    std::shared_ptr<Task> task;
    RowMaker maker;
    /// Those of the task that were not handed over yet, and their size.
    QList<Row> rows;
    qint64 size = 0;
    QElapsedTimer age;
    bool hasHits = false;
};

void TreeSearch::Private::Worker::run()
{
    while ((task = d->begin())) {
        maker = {};
        hasHits = false;
        engine.search(task->file, [this](const FileSearch::Hit &hit) { take(hit); });
        d->handOver(*task, &rows, std::exchange(size, 0), true);
    }
    const std::lock_guard lock(d->mutex);
    --d->workers;
    d->rowsCame.notify_one();
}

void TreeSearch::Private::Worker::take(const FileSearch::Hit &hit)
{
    if (rows.isEmpty())
        age.start();
    if (!std::exchange(hasHits, true))
        rows << maker.header(task->file);
    rows << maker.hit(task->file, hit);
    size += rows.last().text.size();
}

bool TreeSearch::Private::Worker::goOn()
{
    if (!rows.isEmpty() && (size > parcelSize || age.hasExpired(parcelAge)))
        d->handOver(*task, &rows, std::exchange(size, 0), false);
    return d->goOn();
}

/// False if the system has no thread left.
bool TreeSearch::Private::startThread(const SearchQuery &query)
{
    {
        const std::lock_guard lock(mutex);
        ++workers;
    }
    try {
        threads.emplace_back([this, query] { Worker(this, query).run(); });
    } catch (const std::system_error &) {
        const std::lock_guard lock(mutex);
        --workers;
        return false;
    }
    return true;
}

/// Null if there is nothing left to do.
std::shared_ptr<TreeSearch::Private::Task> TreeSearch::Private::begin()
{
    // Held until the task has its place among the others.
    const std::lock_guard sourceLock(sourceMutex);
    auto task = std::make_shared<Task>();
    if (!goOn() || !nextFile(&task->file, [this] { return goOn(); }))
        return nullptr;
    const std::lock_guard lock(mutex);
    tasks.push_back(task);
    return task;
}

void TreeSearch::Private::handOver(Task &task, QList<Row> *rows, qint64 size, bool isDone)
{
    std::unique_lock lock(mutex);
    const auto isFront = [this, &task] { return !tasks.empty() && tasks.front().get() == &task; };
    if (!rows->isEmpty() && isFront())
        rowsCame.notify_one();
    task.rows += std::exchange(*rows, {});
    task.size += size;
    task.isDone = isDone;
    waiting += size;
    if (isDone || !mayWait)
        return;
    // The first one must go on whatever waits after it.
    rowsWent.wait(lock,
                  [&] { return !goOn() || (isFront() ? task.size : waiting) <= mostWaiting; });
}

TreeSearch::TreeSearch(const SearchQuery &query, NextFile nextFile)
    : d(std::make_unique<Private>(std::move(nextFile)))
{
    const int wanted = qBound(1, QThread::idealThreadCount(), 16);
    int started = 0;
    while (started < wanted && d->startThread(query))
        ++started;
    if (started > 0)
        return;
    // All of it here and now, better than none.
    d->mayWait = false;
    d->workers = 1;
    Private::Worker(d.get(), query).run();
}

TreeSearch::~TreeSearch()
{
    {
        const std::lock_guard lock(d->mutex);
        d->isStopped = true;
    }
    d->rowsWent.notify_all();
}

bool TreeSearch::take(QList<Row> *rows)
{
    std::unique_lock lock(d->mutex);
    auto &tasks = d->tasks;
    // Not woken by every file without hits.
    d->rowsCame.wait_for(lock, patience, [&] {
        return d->workers == 0 || (!tasks.empty() && !tasks.front()->rows.isEmpty());
    });
    while (!tasks.empty()) {
        Private::Task &front = *tasks.front();
        *rows += std::exchange(front.rows, {});
        d->waiting -= std::exchange(front.size, 0);
        if (!front.isDone)
            break;
        tasks.pop_front();
    }
    d->rowsWent.notify_all();
    return !rows->isEmpty() || !tasks.empty() || d->workers > 0;
}

QString TreeSearch::currentFile() const
{
    const std::lock_guard lock(d->mutex);
    return d->tasks.empty() ? QString() : d->tasks.front()->file;
}

} // namespace vesk
