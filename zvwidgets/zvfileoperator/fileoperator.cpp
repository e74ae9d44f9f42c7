#include "zvwidgets/zvfileoperator/fileoperator.h"

#include "zvwidgets/utils.h"
#include "zvwidgets/zvfileoperator/fileoperatordialog.h"
#include "zvwidgets/zvfileoperator/fileoperatorprocess.h"
#include "zvwidgets/zvfiles/filenames.h"

#include <QApplication>
#include <QDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QStyle>
#include <QTimer>
#include <QVBoxLayout>

#include <chrono>
#include <functional>
#include <future>
#include <thread>

namespace zvwidgets {

namespace {

constexpr int showDelay = 500;
constexpr int refreshInterval = 100;

using Questions = FileOperatorQuestions;

/// \a path with places where a line may be broken, if it is long: neither a path nor a
/// name needs to have a blank.
QString shownPath(const QByteArray &path)
{
    constexpr qsizetype longPath = 80;
    constexpr qsizetype longName = 40;
    const QString text = decodedPath(path);
    if (text.size() <= longPath)
        return text;
    QString result;
    qsizetype unbroken = 0;
    for (const QChar character : text) {
        result += character;
        const bool isEnd = character == u'/' || ++unbroken >= longName;
        if (isEnd && !character.isHighSurrogate()) {
            result += QChar(0x200b);
            unbroken = 0;
        }
    }
    return result;
}

/// What a dialog was answered with, for a thread that waits. A dialog that vanishes
/// with its parent counts as left by Escape.
class Answer
{
public:
    explicit Answer(int escape) : number(escape) {}
    ~Answer() { promise.set_value(number); }

    void set(int given) { number = given; }
    std::future<int> future() { return promise.get_future(); }

private:
    int number;
    std::promise<int> promise;
};

/// A dialog that gives its answer when a button is pressed.
struct Question
{
    QDialog *dialog = nullptr;
    std::shared_ptr<Answer> answer;
};

void addAnswer(const Question &question, QAbstractButton *button, int number)
{
    // The dialog holds the answer until it ends.
    QObject::connect(button, &QAbstractButton::clicked, question.dialog,
                     [answer = question.answer, number] { answer->set(number); });
}

void show(const Question &question)
{
    QObject::connect(question.dialog, &QDialog::finished, question.dialog,
                     [dialog = question.dialog] { dialog->deleteLater(); });
    question.dialog->setWindowModality(Qt::ApplicationModal);
    question.dialog->show();
}

/// A message box whose buttons answer with their numbers; Escape presses \a escape.
Question newBox(const QString &caption, const QString &text, const QStringList &buttons, int escape)
{
    auto *const box = new QMessageBox(Utils::mainWindow());
    const Question question = {box, std::make_shared<Answer>(escape)};
    box->setObjectName(QStringLiteral("fileOperatorQuestion"));
    box->setIcon(QMessageBox::Critical);
    box->setTextFormat(Qt::PlainText);
    box->setWindowTitle(caption);
    box->setText(text);
    for (int i = 0; i < buttons.size(); ++i) {
        // One role for all keeps them in the given order.
        QPushButton *const button = box->addButton(buttons.at(i), QMessageBox::ActionRole);
        addAnswer(question, button, i);
        if (i == 0)
            box->setDefaultButton(button);
        if (i == escape)
            box->setEscapeButton(button);
    }
    return question;
}

QLabel *newWarningSign(QDialog *dialog)
{
    auto *const sign = new QLabel(dialog);
    const QStyle *const style = dialog->style();
    const int edge = style->pixelMetric(QStyle::PM_MessageBoxIconSize, nullptr, dialog);
    sign->setPixmap(style->standardIcon(QStyle::SP_MessageBoxWarning, nullptr, dialog)
                        .pixmap(QSize(edge, edge)));
    return sign;
}

Question newOverwriteWarning(QWidget *parent, const QString &filePath)
{
    auto *const dialog = new QDialog(parent);
    const Question question = {dialog, std::make_shared<Answer>(Questions::Abort)};
    dialog->setObjectName(QStringLiteral("overwriteWarning"));
    dialog->setWindowTitle(FileOperator::tr("File exists"));
    auto *const label = new QLabel(dialog);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setMinimumWidth(label->fontMetrics().averageCharWidth() * 60);
    label->setText(
        FileOperator::tr("File %1 already exists.\nOverwrite this target?").arg(filePath));
    const std::pair<QString, int> rows[] = {
        {FileOperator::tr("&Overwrite"), Questions::Overwrite},
        {FileOperator::tr("Overwrite a&ll"), Questions::OverwriteAll},
        {FileOperator::tr("&Skip"), Questions::Skip},
        {FileOperator::tr("S&kip all"), Questions::SkipAll},
        {FileOperator::tr("&Abort"), Questions::Abort}};
    auto *const buttons = new QVBoxLayout;
    for (const auto &[text, number] : rows) {
        auto *const button = new QPushButton(text, dialog);
        addAnswer(question, button, number);
        QObject::connect(button, &QPushButton::clicked, dialog, &QDialog::accept);
        buttons->addWidget(button);
        // What is typed when it comes up must not lose a file.
        if (number == Questions::Skip) {
            button->setDefault(true);
            button->setFocus();
        }
    }
    buttons->addStretch();
    auto *const all = new QHBoxLayout(dialog);
    all->setContentsMargins(11, 11, 11, 11);
    all->setSpacing(11);
    all->addWidget(newWarningSign(dialog), 0, Qt::AlignTop);
    all->addWidget(label, 1);
    all->addLayout(buttons);
    return question;
}

} // namespace

struct FileOperator::Private
{
    /// One call of an operation.
    struct Call : Questions
    {
        Call(Private *owner, FileOperatorProcess::Operation wanted, const QStringList &paths,
             const QString &dest);

        Overwriting overwrite(const QByteArray &target) override;
        Failure cannotAccess(const QByteArray &path, DeviceStatus status) override;
        Failure transferFailed(const QByteArray &path, DeviceStatus status) override;
        bool deleteIncomplete(const QByteArray &target) override;
        Failure cannotDelete(const QByteArray &path) override;
        void intoItself(const QByteArray &folder) override;
        void notFlushed() override;
        void tell(const Notes &notes) override;

        void start();
        void end(bool ranToEnd);
        void refresh();

        /// Shows the question that \a make makes on the main thread, and waits for its
        /// answer. The main thread must not wait too: what the user does meanwhile may
        /// start another operation, which waits for this one.
        int ask(const std::function<Question()> &make) const;
        int ask(const QString &caption, const QString &text, const QStringList &buttons,
                int escape) const;

        Private *const d;
        const FileOperatorProcess::Operation operation;
        const QString destination;
        FileOperatorProcess process;
        std::unique_ptr<FileOperatorDialog> dialog;
        std::jthread thread;
        bool result = false;
        bool isDone = false;
    };

    explicit Private(FileOperator *operatorItself) : q(operatorItself)
    {
        showTimer.setSingleShot(true);
        showTimer.setInterval(showDelay);
        refreshTimer.setInterval(refreshInterval);
        QObject::connect(&showTimer, &QTimer::timeout, q, &FileOperator::showOnTimer);
        QObject::connect(&refreshTimer, &QTimer::timeout, q, [this] { calls.first()->refresh(); });
    }

    bool run(FileOperatorProcess::Operation operation, const QStringList &filePaths,
             const QString &dest);

    FileOperator *const q;
    /// The first one is being worked on, the others wait. Owned by the calls.
    QList<Call *> calls;
    QTimer showTimer;
    QTimer refreshTimer;
};

namespace {

QByteArrayList encodedPaths(const QStringList &paths)
{
    QByteArrayList result;
    result.reserve(paths.size());
    for (const QString &path : paths)
        result.append(encodedPath(path));
    return result;
}

QString ioDeviceStatus(Questions::DeviceStatus status)
{
    switch (status) {
    case Questions::ReadError:
        return FileOperator::tr("Could not read from the device.");
    case Questions::WriteError:
        return FileOperator::tr("Could not write to the device.");
    case Questions::OpenError:
        return FileOperator::tr("Could not connect to the device.");
    case Questions::CloseError:
        return FileOperator::tr("An unspecified error happened on close.");
    }
    return FileOperator::tr("Unknown error happened.");
}

QString noteText(Questions::Note note)
{
    switch (note) {
    case Questions::Note::TooDeep:
        return FileOperator::tr("Left out, because the folders are nested too deep:");
    case Questions::Note::Changed:
        return FileOperator::tr("Changed while being copied, the originals are kept:");
    case Questions::Note::Collision:
        return FileOperator::tr("Not moved, to keep a file of the same name moved just before:");
    case Questions::Note::NotMade:
        return FileOperator::tr("Folders that could not be created:");
    }
    return {};
}

/// The notes by kind, each with as many paths as a message box has room for.
QString notesText(const Questions::Notes &notes)
{
    constexpr int shown = 10;
    QStringList parts;
    for (const auto kind : {Questions::Note::TooDeep, Questions::Note::Changed,
                            Questions::Note::Collision, Questions::Note::NotMade}) {
        QStringList lines;
        int more = 0;
        for (const auto &[note, path] : notes) {
            if (note != kind)
                continue;
            if (lines.size() < shown)
                lines.append(shownPath(path));
            else
                ++more;
        }
        if (lines.isEmpty())
            continue;
        if (more)
            lines.append(FileOperator::tr("and %n more", nullptr, more));
        parts.append(noteText(kind) + QLatin1Char('\n') + lines.join(QLatin1Char('\n')));
    }
    return parts.join(QLatin1String("\n\n"));
}

struct OperationTexts
{
    const char *caption;
    const char *name;
};

OperationTexts operationTexts(FileOperatorProcess::Operation operation)
{
    switch (operation) {
    case FileOperatorProcess::Operation::Copy:
        return {QT_TRANSLATE_NOOP("zvwidgets::FileOperator", "Copying files..."),
                QT_TRANSLATE_NOOP("zvwidgets::FileOperator", "Copying")};
    case FileOperatorProcess::Operation::Move:
        return {QT_TRANSLATE_NOOP("zvwidgets::FileOperator", "Moving files..."),
                QT_TRANSLATE_NOOP("zvwidgets::FileOperator", "Moving")};
    case FileOperatorProcess::Operation::Erase:
        break;
    }
    return {QT_TRANSLATE_NOOP("zvwidgets::FileOperator", "Removing files..."),
            QT_TRANSLATE_NOOP("zvwidgets::FileOperator", "Removing")};
}

} // namespace

FileOperator::Private::Call::Call(Private *owner, FileOperatorProcess::Operation wanted,
                                  const QStringList &paths, const QString &dest)
    : d(owner)
    , operation(wanted)
    , destination(dest)
    , process(wanted, encodedPaths(paths), encodedPath(dest), *this)
{}

int FileOperator::Private::Call::ask(const std::function<Question()> &make) const
{
    std::future<int> answer;
    QMetaObject::invokeMethod(
        d->q,
        [&] {
            const Question question = make();
            answer = question.answer->future();
            show(question);
        },
        Qt::BlockingQueuedConnection);
    return answer.get();
}

int FileOperator::Private::Call::ask(const QString &caption, const QString &text,
                                     const QStringList &buttons, int escape) const
{
    return ask([&] { return newBox(caption, text, buttons, escape); });
}

FileOperatorQuestions::Overwriting FileOperator::Private::Call::overwrite(const QByteArray &target)
{
    return Overwriting(
        ask([&] { return newOverwriteWarning(Utils::mainWindow(), shownPath(target)); }));
}

FileOperatorQuestions::Failure FileOperator::Private::Call::cannotAccess(const QByteArray &path,
                                                                         DeviceStatus status)
{
    return Failure(ask(tr("Access denied"),
                       tr("Can't access file %1.\n%2\nContinue operations?")
                           .arg(shownPath(path), ioDeviceStatus(status)),
                       {tr("Skip"), tr("Skip all"), tr("Abort")}, int(Failure::Abort)));
}

FileOperatorQuestions::Failure FileOperator::Private::Call::transferFailed(const QByteArray &path,
                                                                           DeviceStatus status)
{
    return Failure(
        ask(tr("Critical error"),
            ioDeviceStatus(status) + tr("\n%1\nContinue operations?").arg(shownPath(path)),
            {tr("&Skip"), tr("Skip a&ll"), tr("&Abort")}, int(Failure::Abort)));
}

bool FileOperator::Private::Call::deleteIncomplete(const QByteArray &target)
{
    return ask(tr("Incomplete operation"), tr("Delete incomplete file %1?").arg(shownPath(target)),
               {tr("&Delete"), tr("&Cancel")}, 1) == 0;
}

FileOperatorQuestions::Failure FileOperator::Private::Call::cannotDelete(const QByteArray &path)
{
    return Failure(ask(tr("Access denied"),
                       tr("Can't delete file:\n%1\nContinue operations?").arg(shownPath(path)),
                       {tr("Skip"), tr("Skip all"), tr("Abort")}, int(Failure::Abort)));
}

void FileOperator::Private::Call::intoItself(const QByteArray &folder)
{
    ask(tr("Access denied"), tr("Folder %1 can't be put into itself.").arg(shownPath(folder)),
        {tr("OK")}, 0);
}

void FileOperator::Private::Call::notFlushed()
{
    ask(tr("Critical error"), tr("Could not write to the device.\nThe original files are kept."),
        {tr("OK")}, 0);
}

void FileOperator::Private::Call::tell(const Notes &notes)
{
    ask(tr("Incomplete operation"), notesText(notes), {tr("OK")}, 0);
}

void FileOperator::Private::Call::start()
{
    const OperationTexts texts = operationTexts(operation);
    dialog = std::make_unique<FileOperatorDialog>();
    dialog->setWindowTitle(tr(texts.caption));
    dialog->setOperationName(tr(texts.name));
    dialog->setDest(destination);
    QObject::connect(dialog.get(), &FileOperatorDialog::abortRequested, d->q,
                     [this] { process.abort(); });
    d->showTimer.start();
    d->refreshTimer.start();
    thread = std::jthread([this] {
        const bool ranToEnd = process.run();
        QMetaObject::invokeMethod(
            d->q, [this, ranToEnd] { end(ranToEnd); }, Qt::QueuedConnection);
    });
}

void FileOperator::Private::Call::end(bool ranToEnd)
{
    thread.join();
    result = ranToEnd;
    isDone = true;
    d->showTimer.stop();
    d->refreshTimer.stop();
    dialog.reset();
    d->calls.removeFirst();
    if (!d->calls.isEmpty())
        d->calls.first()->start();
}

void FileOperator::Private::Call::refresh()
{
    const FileOperatorProcess::Progress progress = process.progress();
    if (progress.isRemoving) {
        const OperationTexts texts = operationTexts(FileOperatorProcess::Operation::Erase);
        dialog->setWindowTitle(tr(texts.caption));
        dialog->setOperationName(tr(texts.name));
    }
    dialog->setItems(progress.items);
    dialog->setTotalSize(progress.totalBytes);
    dialog->setCurrentSize(progress.bytes);
    dialog->setItemName(decodedPath(entryName(progress.filePath)));
}

bool FileOperator::Private::run(FileOperatorProcess::Operation operation,
                                const QStringList &filePaths, const QString &dest)
{
    Call call(this, operation, filePaths, dest);
    calls.append(&call);
    if (calls.size() == 1)
        call.start();
    while (!call.isDone)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    return call.result;
}

FileOperator *FileOperator::self()
{
    static FileOperator instance;
    return &instance;
}

FileOperator::FileOperator() : d(std::make_unique<Private>(this))
{}

FileOperator::~FileOperator() = default;

bool FileOperator::copy(const QStringList &filePaths, const QString &dest)
{
    return d->run(FileOperatorProcess::Operation::Copy, filePaths, dest);
}

bool FileOperator::move(const QStringList &filePaths, const QString &dest)
{
    return d->run(FileOperatorProcess::Operation::Move, filePaths, dest);
}

bool FileOperator::erase(const QStringList &filePaths)
{
    return d->run(FileOperatorProcess::Operation::Erase, filePaths, QStringLiteral("/"));
}

bool FileOperator::isRunning() const
{
    return !d->calls.isEmpty();
}

int FileOperator::overwriteWarning(QWidget *parent, const QString &filePath)
{
    std::future<int> answer;
    {
        const Question question = newOverwriteWarning(parent, filePath);
        answer = question.answer->future();
        show(question);
    }
    // A loop of its own would end unanswered when the application is told to quit.
    while (answer.wait_for(std::chrono::seconds(0)) != std::future_status::ready)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    return answer.get();
}

void FileOperator::showOnTimer()
{
    if (isRunning())
        d->calls.first()->dialog->show();
}

} // namespace zvwidgets
