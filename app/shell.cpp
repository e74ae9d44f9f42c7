#include "app/shell.h"

#include "app/actiontable.h"
#include "app/mainwindow.h"
#include "app/recentfiles.h"
#include "app/settings.h"
#include "app/shell_p.h"
#include "app/stylesmenu.h"

#include <QApplication>
#include <QCloseEvent>
#include <QLabel>
#include <QMenuBar>
#include <QStatusBar>
#include <QTimer>

namespace vesk {

namespace {

constexpr int timerPeriod = 100; // ms

const ActionRow actionRows[] = {
    {"Shell/showHideLeftPanel", QT_TRANSLATE_NOOP("vesk::Shell", "Show/hide &left panel"),
     Qt::CTRL | Qt::Key_L, SLOT(leftDockShowHide()), nullptr, "menu/Window/Docks"},
    {"Shell/showHideBottomPanel", QT_TRANSLATE_NOOP("vesk::Shell", "Show/hide &bottom panel"),
     Qt::CTRL | Qt::Key_D, SLOT(bottomDockShowHide()), nullptr, "menu/Window/Docks",
     ActionRow::Separator::After},
    {"Shell/exit", QT_TRANSLATE_NOOP("vesk::Shell", "&Exit"), Qt::CTRL | Qt::Key_Q, SLOT(exit()),
     nullptr, "menu/File/Quit", ActionRow::Separator::Before},
};

} // namespace

Shell *Shell::Private::self = nullptr;

Shell::Shell(QWidget *parent, const QString &name)
    : QMainWindow(parent), d(std::make_unique<Private>())
{
    // First of all: what is called below reaches for self().
    Private::self = this;
    MainWindow::set(this);
    setObjectName(name);
    menuBar()->setNativeMenuBar(false);
    Settings::setAppName(QStringLiteral("Vesk"));
    initActionGroups();
    initStatusBar();
    initWorkspace();
    vesk::addActions(this, actionRows, Labels::Translated);
    // actionGroup() never notes Help, so that it comes after all these.
    d->menuGroups.append(QStringLiteral("Help"));
    d->styles.reset(StylesMenu::self());
    d->styles->initStylesMenu();
    d->recent.reset(RecentFiles::self());
    connect(this, &Shell::uiRebuilded, d->recent.get(), &RecentFiles::integrate);
    connect(this, &Shell::uiRebuilded, this, &Shell::postPrepare);
    d->restoreGeometry(this);

    auto *const timer = new QTimer(this);
    timer->setObjectName(QStringLiteral("halfsecTimer"));
    connect(timer, &QTimer::timeout, this, &Shell::timeout);
    timer->start(timerPeriod);
}

Shell::~Shell()
{
    saveGeometryOnce();
    // Their menus stand in the window, which is about to go.
    d->recent.reset();
    d->styles.reset();
    Settings::forceWrite();
    // What stands in the window may still ask for self() while it goes.
    std::unique_ptr<QWidget>(takeCentralWidget()).reset();
    Private::self = nullptr;
}

Shell *Shell::self()
{
    Q_ASSERT(Private::self);
    return Private::self;
}

void Shell::initStatusBar()
{
    d->statusMessage = new QLabel(tr("Ready"), statusBar());
    d->statusCursorIns = new QLabel(tr(" INS "), statusBar());
    d->statusCursorLine = new QLabel(tr(" Line: WWWW "), statusBar());
    d->statusCursorCol = new QLabel(tr(" Col:      "), statusBar());
    // A file name may be long or hold a line end without moving the window's edges.
    d->statusMessage->setTextFormat(Qt::PlainText);
    d->statusMessage->setMinimumWidth(1);
    d->statusMessage->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Ignored);
    // Wide enough for the longest numbers, so that the cells don't jitter.
    d->statusCursorLine->adjustSize();
    const int width = d->statusCursorLine->width();
    d->statusCursorLine->setMinimumWidth(width);
    d->statusCursorCol->setMinimumWidth(width);
    d->statusCursorLine->setText(tr(" Line:     "));

    statusBar()->addPermanentWidget(d->statusMessage, 1000);
    statusBar()->addPermanentWidget(d->statusCursorIns);
    statusBar()->addPermanentWidget(d->statusCursorLine);
    statusBar()->addPermanentWidget(d->statusCursorCol);
}

void Shell::statusMessage(const QString &type, const QString &message)
{
    if (type == QLatin1String("default")) {
        d->statusMessage->setText(message);
        // The cell may be too narrow for it.
        const QString tip = QStringLiteral("<p>%1</p>").arg(message.toHtmlEscaped());
        d->statusMessage->setToolTip(message.isEmpty() ? QString() : tip);
        return;
    }
    const QHash<QString, QLabel *> cells = {
        {QStringLiteral("insowr"), d->statusCursorIns},
        {QStringLiteral("line"), d->statusCursorLine},
        {QStringLiteral("col"), d->statusCursorCol},
    };
    if (QLabel *const cell = cells.value(type))
        cell->setText(QLatin1Char(' ') + message + QLatin1Char(' '));
}

void Shell::focusIn(QObject *component)
{
    emit focusChanged(component);
}

void Shell::setLeaveQuestion(const std::function<bool()> &mayLeave)
{
    d->mayLeave = mayLeave;
}

void Shell::exit()
{
    if (d->isLeaving || (d->mayLeave && !d->mayLeave()))
        return;
    // Keys and clicks that wait already still arrive, and find no editors any more.
    d->isLeaving = true;
    setEnabled(false);
    QApplication::exit(0);
}

bool Shell::isLeaving() const
{
    return d->isLeaving;
}

void Shell::closeEvent(QCloseEvent *event)
{
    // The window goes with the program, not before it.
    event->ignore();
    exit();
}

QGridLayout *Shell::centralLayout() const
{
    return d->centralLayout;
}

WidgetStack *Shell::workspace() const
{
    return d->workspace;
}

QToolBar *Shell::stackButtons() const
{
    return d->stackButtons;
}

} // namespace vesk
