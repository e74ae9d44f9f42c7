#include "zvwidgets/zvfileoperator/fileoperatordialog.h"

#include "zvwidgets/utils.h"

#include <QApplication>
#include <QCloseEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>
#include <QWindow>

namespace zvwidgets {

namespace {

constexpr int updateInterval = 100;

QLabel *newLabel(QWidget *parent, const QString &name)
{
    auto *const label = new QLabel(parent);
    label->setObjectName(name);
    label->setTextFormat(Qt::RichText);
    return label;
}

/// \a text for a rich text label, shortened to what \a label has room for.
QString fitted(const QLabel *label, const QString &text)
{
    // Bold, and beside the words around it.
    const int room = label->width() * 6 / 10;
    QString line = text;
    line.replace(QLatin1Char('\n'), QLatin1Char(' '));
    return label->fontMetrics().elidedText(line, Qt::ElideMiddle, room).toHtmlEscaped();
}

} // namespace

struct FileOperatorDialog::Private
{
    QString operationName = tr("Copying");
    QString dest;
    QString itemName;
    int items = 0;
    quint64 currentSize = 0;
    quint64 totalSize = 1;
};

FileOperatorDialog::FileOperatorDialog(QWidget *parent)
    : QWidget(parent, Qt::Window), d(std::make_unique<Private>())
{
    setObjectName(QStringLiteral("FileOperatorDialog"));
    setWindowTitle(tr("Operation"));
    // Whoever types goes on typing.
    setAttribute(Qt::WA_ShowWithoutActivating);
    auto *const all = new QVBoxLayout(this);
    operationLabel = newLabel(this, QStringLiteral("operationLabel"));
    itemLabel = newLabel(this, QStringLiteral("itemLabel"));
    statusLabel = newLabel(this, QStringLiteral("statusLabel"));
    progressBar = new QProgressBar(this);
    progressBar->setObjectName(QStringLiteral("progressBar"));
    progressBar->setRange(0, 100);
    buttonAbort = new QPushButton(tr("&Abort"), this);
    buttonAbort->setObjectName(QStringLiteral("buttonAbort"));
    buttonAbort->setShortcut(QKeySequence(tr("Alt+A")));
    auto *const row = new QHBoxLayout;
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(6);
    row->addWidget(statusLabel, 1);
    row->addWidget(buttonAbort);
    all->setContentsMargins(11, 11, 11, 11);
    all->setSpacing(6);
    all->addWidget(operationLabel);
    all->addWidget(itemLabel);
    all->addWidget(progressBar);
    all->addLayout(row);
    // Names of any length must not change the size.
    for (QLabel *const label : {operationLabel, itemLabel, statusLabel})
        label->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    const QFontMetrics metrics = fontMetrics();
    resize(metrics.averageCharWidth() * 70, metrics.lineSpacing() * 9);
    move(50, 50);
    connect(buttonAbort, &QPushButton::clicked, this, &FileOperatorDialog::abortPressed);
    auto *const timer = new QTimer(this);
    connect(timer, &QTimer::timeout, this, &FileOperatorDialog::updateInfo);
    timer->start(updateInterval);
}

FileOperatorDialog::~FileOperatorDialog() = default;

void FileOperatorDialog::setItems(int items)
{
    d->items = items;
}

void FileOperatorDialog::setDest(const QString &dest)
{
    d->dest = dest;
}

void FileOperatorDialog::setItemName(const QString &name)
{
    d->itemName = name;
}

void FileOperatorDialog::setOperationName(const QString &name)
{
    d->operationName = name;
}

void FileOperatorDialog::setTotalSize(quint64 bytes)
{
    d->totalSize = qMax(bytes, quint64(1));
}

void FileOperatorDialog::setCurrentSize(quint64 bytes)
{
    d->currentSize = bytes;
}

void FileOperatorDialog::show()
{
    updateInfo();
    const QPointer<QWidget> focused = QApplication::focusWidget();
    if (QWidget *const window = Utils::mainWindow()) {
        const QRect place(QPoint(0, 0), size());
        move(window->frameGeometry().center() - place.center());
        // It stays above that window, which keeps the focus.
        winId();
        windowHandle()->setTransientParent(window->windowHandle());
    }
    QWidget::show();
    // A question that is open must not be covered.
    if (QWidget *const question = QApplication::activeModalWidget())
        question->raise();
    // A window manager may give it the focus all the same, a moment later.
    QTimer::singleShot(0, this, [this, focused] {
        if (focused && isActiveWindow()) {
            focused->activateWindow();
            focused->setFocus();
        }
    });
}

void FileOperatorDialog::closeEvent(QCloseEvent *event)
{
    // It closes when the operation has ended.
    event->ignore();
    abortPressed();
}

void FileOperatorDialog::abortPressed()
{
    aborted = true;
    buttonAbort->setEnabled(false);
    emit abortRequested();
}

void FileOperatorDialog::updateInfo()
{
    operationLabel->setText(tr("%1 <b>%2</b> items to <b>%3</b>")
                                .arg(d->operationName.toHtmlEscaped(), QString::number(d->items),
                                     fitted(operationLabel, d->dest)));
    progressBar->setValue(qMin(int(double(d->currentSize) * 100 / double(d->totalSize)), 100));
    itemLabel->setText(tr("Item \"<b>%1</b>\"").arg(fitted(itemLabel, d->itemName)));
    statusLabel->setText(
        tr("Processed %1 of %2")
            .arg(Utils::humanReadableSize(d->currentSize), Utils::humanReadableSize(d->totalSize)));
}

} // namespace zvwidgets
