#include "app/shell.h"

#include "app/actions.h"
#include "app/editors/editors.h"
#include "app/editors/editorstab.h"
#include "app/settings.h"
#include "app/widgets/splitter.h"
#include "app/widgetstack.h"

#include <QApplication>
#include <QCloseEvent>
#include <QFileInfo>
#include <QGridLayout>
#include <QHash>
#include <QLabel>
#include <QMenuBar>
#include <QPointer>
#include <QScreen>
#include <QStatusBar>
#include <QTimer>
#include <QToolBar>

#include <algorithm>

namespace vesk {

namespace {

constexpr int leftDockMargin = 3;
constexpr int bottomDockMargin = 3;
constexpr int dockTabThickness = 30;
constexpr int timerPeriod = 100; // ms

const char *const leftDockShownKey = "/geometry/leftDockShown";
const char *const bottomDockShownKey = "/geometry/bottomDockShown";
const char *const leftDockPanelKey = "/geometry/leftDockPanelID";
const char *const bottomDockPanelKey = "/geometry/bottomDockPanelID";
const char *const vSplitterKey = "/geometry/vSplitter";
const char *const hSplitterKey = "/geometry/hSplitter";

QString key(const char *text)
{
    return QString::fromLatin1(text);
}

QGridLayout *plainGrid(QWidget *parent)
{
    auto *const grid = new QGridLayout(parent);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setSpacing(0);
    return grid;
}

QFrame *plainFrame(QWidget *parent)
{
    auto *const frame = new QFrame(parent);
    frame->setFrameStyle(QFrame::NoFrame);
    frame->setLineWidth(0);
    return frame;
}

/// A bar that fills \a frame, which gives it its size.
QToolBar *frameToolBar(const QString &title, QWidget *frame, Qt::Orientation orientation)
{
    auto *const bar = new QToolBar(title, frame);
    bar->setOrientation(orientation);
    bar->setMovable(false);
    bar->setIconSize(QSize(22, 22));
    bar->setContentsMargins(0, 0, 0, 0);
    bar->layout()->setContentsMargins(0, 0, 0, 0);
    return bar;
}

QList<int> storedSizes(const char *storeKey, const QString &defaults)
{
    const auto toSizes = [](const QStringList &entries) {
        QList<int> sizes;
        for (const QString &entry : entries) {
            bool isNumber = false;
            const int size = entry.toInt(&isNumber);
            if (isNumber && size >= 0)
                sizes.append(size);
        }
        return sizes;
    };
    const QStringList entries = Settings::readList(key(storeKey));
    const QList<int> stored = toSizes(entries);
    // One that is no size would shut a pane.
    if (stored.isEmpty() || stored.size() != entries.size())
        return toSizes(defaults.split(QLatin1Char(',')));
    return stored;
}

/// A width or height of the window in pixels.
int storedEdge(const char *storeKey, int standard)
{
    const int edge = Settings::readNum(key(storeKey), standard);
    return edge > 0 ? edge : standard;
}

void storeSizes(const char *storeKey, const QList<int> &sizes)
{
    QStringList entries;
    for (const int size : sizes)
        entries.append(QString::number(size));
    Settings::write(key(storeKey), entries);
}

/// True if enough of the title bar of a window at \a position lies on a screen
/// to take hold of it.
bool isReachable(const QPoint &position, int width)
{
    constexpr QSize grip(48, 16);
    const QRect title(position, QSize(width, 24));
    const QList<QScreen *> screens = QGuiApplication::screens();
    return std::any_of(screens.cbegin(), screens.cend(), [&](const QScreen *screen) {
        const QRect visible = screen->availableGeometry().intersected(title);
        return visible.width() >= grip.width() && visible.height() >= grip.height();
    });
}

} // namespace

struct Shell::Private
{
    static Shell *self;

    void initLeftDock();
    void initBottomDock();
    void initCentre(QWidget *workspaceWidget);
    void buildMenus(Shell *shell);
    void buildToolBars(Shell *shell);
    void raiseFirstPanel(Shell *shell, WidgetStack *stack,
                         void (Shell::*raisedSignal)(QObject *)) const;
    void restoreGeometry(Shell *shell) const;
    void saveGeometry(Shell *shell) const;
    ActionGroup *newGroup(Shell *shell, const QString &path, const QString &title);

    QHash<QString, ActionGroup *> groups;
    QStringList menuGroups;
    QStringList toolbarGroups;
    QList<QPointer<QMenu>> menus;
    QList<QPointer<QToolBar>> toolbars;
    WidgetStack *leftDock = nullptr;
    WidgetStack *bottomDock = nullptr;
    QToolBar *leftDockTab = nullptr;
    QToolBar *bottomDockTab = nullptr;
    QFrame *leftDockTabHLine = nullptr;
    QFrame *bottomDockTabVLine = nullptr;
    QFrame *leftDockTabFrame = nullptr;
    QFrame *bottomDockTabFrame = nullptr;
    QWidget *leftDockWidget = nullptr;
    QWidget *bottomDockWidget = nullptr;
    Splitter *vSplitter = nullptr;
    Splitter *hSplitter = nullptr;
    QWidget *centralWidget = nullptr;
    QGridLayout *centralLayout = nullptr;
    WidgetStack *workspace = nullptr;
    QToolBar *stackButtons = nullptr;
    EditorsTab *editorsTab = nullptr;
    QLabel *statusMessage = nullptr;
    QLabel *statusCursorIns = nullptr;
    QLabel *statusCursorLine = nullptr;
    QLabel *statusCursorCol = nullptr;
    bool hasBottomTabStretch = false;
    bool isLeaving = false;
};

Shell *Shell::Private::self = nullptr;

Shell::Shell(QWidget *parent, const QString &name)
    : QMainWindow(parent), d(std::make_unique<Private>())
{
    // First of all: what is called below reaches for self().
    Private::self = this;
    setObjectName(name);
    menuBar()->setNativeMenuBar(false);
    Settings::setAppName(QStringLiteral("Vesk"));
    // The tab bar in the workspace makes the editors, which answer after this.
    connect(this, &Shell::uiRebuilded, this, &Shell::postPrepare);
    initActionGroups();
    initStatusBar();
    initWorkspace();

    ActionGroup *const quit = actionGroup(QStringLiteral("menu/File/Quit"));
    quit->addSeparator();
    quit->add(Actions::createAction(tr("&Exit"), QStringLiteral("Shell/exit"),
                                    (Qt::CTRL | Qt::Key_Q).toCombined(), this, SLOT(exit())));
    // actionGroup() never notes Help, so that it comes behind all these.
    d->menuGroups.append(QStringLiteral("Help"));
    d->restoreGeometry(this);

    auto *const timer = new QTimer(this);
    timer->setObjectName(QStringLiteral("halfsecTimer"));
    connect(timer, &QTimer::timeout, this, &Shell::timeout);
    timer->start(timerPeriod);

    openArguments();
}

/// Opens the files that the command line names. Others are passed over, without a
/// word unless their very name is the reason.
void Shell::openArguments()
{
    QStringList files;
    QStringList unreadable;
    const QStringList arguments = QCoreApplication::arguments().mid(1);
    for (const QString &argument : arguments) {
        const QFileInfo file(argument);
        // Absolute, so that the session finds it again from any folder and no
        // second editor opens for the same file.
        if (file.exists())
            files.append(file.absoluteFilePath());
        else if (argument.contains(QChar::ReplacementCharacter))
            unreadable.append(argument);
    }
    Editors::self()->openAll(files);
    for (const QString &name : std::as_const(unreadable))
        Editors::self()->tellFailure(tr("Cannot open %1: its name is not UTF-8").arg(name));
}

Shell::~Shell()
{
    d->saveGeometry(this);
    Settings::forceWrite();
    // What stands in the window may still ask for self() while it goes.
    Editors::destroy();
    std::unique_ptr<QWidget>(takeCentralWidget()).reset();
    Private::self = nullptr;
}

Shell *Shell::self()
{
    if (!Private::self)
        new Shell(nullptr, QStringLiteral("vesk::Shell"));
    return Private::self;
}

ActionGroup *Shell::Private::newGroup(Shell *shell, const QString &path, const QString &title)
{
    auto *const group = new ActionGroup(shell, path);
    group->setText(title);
    group->setMenuText(title);
    groups.insert(path, group);
    return group;
}

ActionGroup *Shell::actionGroup(const QString &name)
{
    if (ActionGroup *const known = d->groups.value(name))
        return known;
    const QStringList items = name.split(QLatin1Char('/'), Qt::SkipEmptyParts);
    QString path;
    ActionGroup *previous = nullptr;
    for (int level = 0; level < items.size(); ++level) {
        const QString &item = items.at(level);
        if (level == 1) {
            if (items.first() == QLatin1String("menu") && item != QLatin1String("Help") &&
                !d->menuGroups.contains(item))
                d->menuGroups.append(item);
            if (items.first() == QLatin1String("toolbar") && !d->toolbarGroups.contains(item))
                d->toolbarGroups.append(item);
        }
        path += item;
        ActionGroup *group = d->groups.value(path);
        if (!group) {
            group = d->newGroup(this, path, item);
            if (previous)
                previous->add(group);
        }
        previous = group;
        path += QLatin1Char('/');
    }
    return previous;
}

void Shell::initActionGroups()
{
    struct Row
    {
        const char *group;
        const char *sections;
    };
    static constexpr Row rows[] = {
        {"menu/File", "New Open Close Save Misc Quit"},
        {"menu/Edit", "Std Misc"},
        {"menu/View", "Std Misc"},
        {"menu/Search", "Find Replace Misc"},
        {"menu/Project", "New Std Options Misc"},
        {"menu/Build", "Std Misc"},
        {"menu/Run", "Std Debug Misc"},
        {"menu/Tools", "Misc"},
        {"menu/Options", "Main Std Misc"},
        {"menu/Window", "Docks Components Misc"},
        {"menu/Help", "Std Misc"},
        {"toolbar/File", "New Open Save Misc"},
        {"toolbar/Edit", ""},
        {"toolbar/Search", ""},
        {"toolbar/Navigation", ""},
        {"toolbar/Misc", ""},
        {"toolbar/Tools", ""},
        {"toolbar/Run", ""},
        {"docks/left", ""},
        {"docks/bottom", ""},
    };
    for (const Row &row : rows) {
        const QString group = key(row.group);
        actionGroup(group);
        if (group == QLatin1String("menu/Build"))
            actionGroup(group)->setVisible(false);
        const QStringList sections = key(row.sections).split(QLatin1Char(' '), Qt::SkipEmptyParts);
        for (const QString &section : sections)
            actionGroup(group + QLatin1Char('/') + section);
    }
    actionGroup(QStringLiteral("docks/left"))->setExclusive(true);
    actionGroup(QStringLiteral("docks/bottom"))->setExclusive(true);
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

void Shell::initWorkspace()
{
    d->vSplitter = new Splitter(Qt::Horizontal, this, QStringLiteral("vSplitter"));
    d->initLeftDock();
    d->hSplitter = new Splitter(Qt::Vertical, d->vSplitter, QStringLiteral("hSplitter"));
    auto *const workspaceWidget = new QWidget(d->hSplitter);
    d->initBottomDock();

    ActionGroup *const docks = actionGroup(QStringLiteral("menu/Window/Docks"));
    docks->add(Actions::createAction(
        tr("Show/hide &left panel"), QStringLiteral("Shell/showHideLeftPanel"),
        (Qt::CTRL | Qt::Key_L).toCombined(), this, SLOT(leftDockShowHide())));
    docks->add(Actions::createAction(
        tr("Show/hide &bottom panel"), QStringLiteral("Shell/showHideBottomPanel"),
        (Qt::CTRL | Qt::Key_D).toCombined(), this, SLOT(bottomDockShowHide())));
    docks->addSeparator();

    setCentralWidget(d->vSplitter);
    d->initCentre(workspaceWidget);
    actionGroup(QStringLiteral("stackButtons"))->setExclusive(true);
}

void Shell::Private::initLeftDock()
{
    leftDockWidget = new QWidget(vSplitter);
    QGridLayout *const grid = plainGrid(leftDockWidget);

    QGridLayout *const margins = plainGrid(nullptr);
    leftDock = new WidgetStack(leftDockWidget, QStringLiteral("leftDock"));
    margins->setRowMinimumHeight(0, leftDockMargin);
    margins->setColumnMinimumWidth(0, leftDockMargin);
    margins->addWidget(leftDock, 1, 1);
    margins->setRowStretch(1, 1);
    margins->setColumnStretch(1, 1);
    grid->addLayout(margins, 0, 0);

    QFrame *const tabs = plainFrame(leftDockWidget);
    QGridLayout *const tabsGrid = plainGrid(tabs);
    leftDockTabHLine = plainFrame(tabs);
    leftDockTabFrame = plainFrame(tabs);
    leftDockTabFrame->setFixedHeight(dockTabThickness);
    tabsGrid->addWidget(leftDockTabHLine, 0, 0);
    tabsGrid->addWidget(leftDockTabFrame, 1, 0);
    leftDockTab = frameToolBar(Shell::tr("Left dock"), leftDockTabFrame, Qt::Horizontal);
    grid->addWidget(tabs, 1, 0);
    grid->setRowStretch(0, 100);
    grid->setRowStretch(1, 0);
}

void Shell::Private::initBottomDock()
{
    bottomDockWidget = new QWidget(hSplitter);
    QGridLayout *const grid = plainGrid(bottomDockWidget);

    auto *const tabs = new QFrame(bottomDockWidget);
    tabs->setFrameStyle(QFrame::Panel | QFrame::Sunken);
    tabs->setLineWidth(0);
    QGridLayout *const tabsGrid = plainGrid(tabs);
    bottomDockTabFrame = plainFrame(tabs);
    bottomDockTabFrame->setFixedWidth(dockTabThickness);
    bottomDockTabVLine = new QFrame(tabs);
    bottomDockTabVLine->setFrameStyle(QFrame::VLine | QFrame::Raised);
    tabsGrid->addWidget(bottomDockTabFrame, 0, 0);
    tabsGrid->addWidget(bottomDockTabVLine, 0, 1);
    bottomDockTab = frameToolBar(Shell::tr("Bottom dock"), bottomDockTabFrame, Qt::Vertical);
    grid->addWidget(tabs, 0, 0);

    QGridLayout *const margins = plainGrid(nullptr);
    bottomDock = new WidgetStack(bottomDockWidget, QStringLiteral("bottomDock"));
    margins->setColumnMinimumWidth(0, bottomDockMargin);
    margins->addWidget(bottomDock, 0, 1);
    margins->setColumnMinimumWidth(2, bottomDockMargin);
    margins->setColumnStretch(1, 1);
    grid->addLayout(margins, 0, 1);
    grid->setColumnStretch(0, 0);
    grid->setColumnStretch(1, 100);
}

void Shell::Private::initCentre(QWidget *workspaceWidget)
{
    centralLayout = plainGrid(workspaceWidget);
    centralWidget = new QWidget(workspaceWidget);
    centralWidget->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Preferred);
    centralLayout->addWidget(centralWidget, 1, 1);
    centralLayout->setRowStretch(1, 100);
    centralLayout->setColumnStretch(1, 100);

    QGridLayout *const grid = plainGrid(centralWidget);
    workspace = new WidgetStack(centralWidget, QStringLiteral("vesk::workspace"));
    workspace->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    grid->addWidget(workspace, 0, 0, 1, 2);
    stackButtons = frameToolBar(Shell::tr("Tools"), centralWidget, Qt::Vertical);
    stackButtons->setObjectName(QStringLiteral("stackButtons"));
    stackButtons->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::MinimumExpanding);
    grid->addWidget(stackButtons, 1, 0);
    editorsTab = new EditorsTab(centralWidget);
    editorsTab->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::MinimumExpanding);
    editorsTab->setTabPosition(EditorsTab::Bottom);
    grid->addWidget(editorsTab, 1, 1);
    grid->setRowStretch(0, 1000);
    grid->setRowStretch(1, 0);
}

void Shell::Private::restoreGeometry(Shell *shell) const
{
    QPoint position(Settings::readNum(QStringLiteral("/geometry/x"), 50),
                    Settings::readNum(QStringLiteral("/geometry/y"), 50));
    const QSize size = QSize(storedEdge("/geometry/w", 900), storedEdge("/geometry/h", 700))
                           .boundedTo(QGuiApplication::primaryScreen()->virtualSize());
    // The screen it stood on may be gone.
    if (!isReachable(position, size.width()))
        position = QGuiApplication::primaryScreen()->availableGeometry().topLeft() + QPoint(50, 50);
    shell->move(position);
    shell->resize(size);
    vSplitter->setSizes(storedSizes(vSplitterKey, QStringLiteral("200,700")));
    hSplitter->setSizes(storedSizes(hSplitterKey, QStringLiteral("600,100")));
    leftDockWidget->setVisible(Settings::readBool(key(leftDockShownKey), true));
    bottomDockWidget->setVisible(Settings::readBool(key(bottomDockShownKey), true));
}

void Shell::Private::saveGeometry(Shell *shell) const
{
    // x() and y() count the frame, as move() does: geometry() would let the
    // window creep over the screen from run to run.
    Settings::write(QStringLiteral("/geometry/x"), shell->x());
    Settings::write(QStringLiteral("/geometry/y"), shell->y());
    Settings::write(QStringLiteral("/geometry/w"), shell->width());
    Settings::write(QStringLiteral("/geometry/h"), shell->height());
    // A dock that is hidden for want of panels tells nothing of the user's wish.
    if (shell->actionGroup(QStringLiteral("docks/left"))->count() > 0)
        Settings::write(key(leftDockShownKey), !leftDockWidget->isHidden());
    if (shell->actionGroup(QStringLiteral("docks/bottom"))->count() > 0)
        Settings::write(key(bottomDockShownKey), !bottomDockWidget->isHidden());
    storeSizes(vSplitterKey, vSplitter->sizes());
    storeSizes(hSplitterKey, hSplitter->sizes());
    Settings::write(key(leftDockPanelKey), leftDock->id(leftDock->visibleWidget()));
    Settings::write(key(bottomDockPanelKey), bottomDock->id(bottomDock->visibleWidget()));
}

void Shell::rebuildUI()
{
    d->buildMenus(this);
    d->buildToolBars(this);

    const uint leftPanels = actionGroup(QStringLiteral("docks/left"))->count();
    const uint bottomPanels = actionGroup(QStringLiteral("docks/bottom"))->count();
    Actions::action(QStringLiteral("Shell/showHideLeftPanel"))->setVisible(leftPanels > 0);
    d->leftDockWidget->setVisible(leftPanels > 0 &&
                                  Settings::readBool(key(leftDockShownKey), true));
    Actions::action(QStringLiteral("Shell/showHideBottomPanel"))->setVisible(bottomPanels > 0);
    d->bottomDockWidget->setVisible(bottomPanels > 0 &&
                                    Settings::readBool(key(bottomDockShownKey), true));
    // One panel alone needs no strip to choose it from.
    d->leftDockTabFrame->setVisible(leftPanels != 1);
    d->leftDockTabHLine->setVisible(leftPanels != 1);
    d->bottomDockTabFrame->setVisible(bottomPanels != 1);
    d->bottomDockTabVLine->setVisible(bottomPanels != 1);
    emit uiRebuilded();
}

void Shell::Private::buildMenus(Shell *shell)
{
    QMenuBar *const bar = shell->menuBar();
    bar->clear();
    // Later, because the command that asks for the rebuild may stand in one.
    for (const QPointer<QMenu> &menu : std::as_const(menus)) {
        if (menu)
            menu->deleteLater();
    }
    menus.clear();
    for (const QString &name : std::as_const(menuGroups)) {
        auto menu = std::make_unique<QMenu>();
        shell->actionGroup(QStringLiteral("menu/") + name)->addTo(menu.get());
        if (menu->actions().isEmpty())
            continue;
        menu->setTitle(Shell::tr(qPrintable(QLatin1Char('&') + name)));
        menu->setParent(bar, menu->windowFlags());
        bar->addMenu(menu.get());
        menus.append(menu.release());
    }
}

void Shell::Private::buildToolBars(Shell *shell)
{
    for (const QPointer<QToolBar> &bar : std::as_const(toolbars)) {
        if (!bar)
            continue;
        shell->removeToolBar(bar);
        bar->deleteLater();
    }
    toolbars.clear();
    for (const QString &name : std::as_const(toolbarGroups)) {
        const ActionGroup *const group = shell->actionGroup(QStringLiteral("toolbar/") + name);
        if (group->count() == 0)
            continue;
        auto *const bar = new QToolBar(name, shell);
        bar->setIconSize(QSize(22, 22));
        shell->addToolBar(Qt::TopToolBarArea, bar);
        group->addTo(bar);
        toolbars.append(bar);
    }
}

void Shell::postPrepare()
{
    if (!d->hasBottomTabStretch) {
        auto *const stretch = new QWidget(d->bottomDockTab);
        stretch->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
        d->bottomDockTab->addWidget(stretch);
        d->hasBottomTabStretch = true;
    }
    bool found = false;
    const int leftId = Settings::readNum(key(leftDockPanelKey), 0, &found);
    if (found) {
        d->leftDock->raiseWidget(leftId);
        emit leftDockRaised(d->leftDock->widget(leftId));
    }
    const int bottomId = Settings::readNum(key(bottomDockPanelKey), 0, &found);
    if (found) {
        d->bottomDock->raiseWidget(bottomId);
        emit bottomDockRaised(d->bottomDock->widget(bottomId));
    }
    if (!d->leftDock->visibleWidget())
        d->raiseFirstPanel(this, d->leftDock, &Shell::leftDockRaised);
    if (!d->bottomDock->visibleWidget())
        d->raiseFirstPanel(this, d->bottomDock, &Shell::bottomDockRaised);
}

/// At the first start no panel is stored, and a dock with one panel has not even
/// a strip to choose it from. The focus stays where it is: the user never asked
/// for the panel.
void Shell::Private::raiseFirstPanel(Shell *shell, WidgetStack *stack,
                                     void (Shell::*raisedSignal)(QObject *)) const
{
    QWidget *const panel = stack->widget(0);
    if (!panel)
        return;
    const QPointer<QWidget> focus = shell->focusWidget();
    stack->raiseWidget(panel);
    emit(shell->*raisedSignal)(panel);
    if (focus)
        focus->setFocus();
}

void Shell::timeout()
{
    d->leftDockTab->setFixedSize(d->leftDockTabFrame->size());
    d->bottomDockTab->setFixedSize(d->bottomDockTabFrame->size());
}

void Shell::leftDockShowHide()
{
    d->leftDockWidget->setVisible(d->leftDockWidget->isHidden());
}

void Shell::bottomDockShowHide()
{
    d->bottomDockWidget->setVisible(d->bottomDockWidget->isHidden());
}

void Shell::focusIn()
{
    emit focusChanged(sender());
}

void Shell::raiseLeftDock()
{
    emit leftDockRaised(sender());
    d->leftDockWidget->show();
}

void Shell::raiseBottomDock()
{
    emit bottomDockRaised(sender());
    d->bottomDockWidget->show();
}

void Shell::exit()
{
    if (d->isLeaving || !Editors::self()->closeAll())
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

WidgetStack *Shell::leftDock() const
{
    return d->leftDock;
}

WidgetStack *Shell::bottomDock() const
{
    return d->bottomDock;
}

QToolBar *Shell::leftDockTab() const
{
    return d->leftDockTab;
}

QToolBar *Shell::bottomDockTab() const
{
    return d->bottomDockTab;
}

QWidget *Shell::leftDockWidget() const
{
    return d->leftDockWidget;
}

QWidget *Shell::bottomDockWidget() const
{
    return d->bottomDockWidget;
}

} // namespace vesk
