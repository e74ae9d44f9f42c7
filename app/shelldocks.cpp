#include "app/shell.h"

#include "app/actions.h"
#include "app/settings.h"
#include "app/shell_p.h"
#include "app/utils.h"
#include "app/widgets/splitter.h"
#include "app/widgetstack.h"

#include <QGridLayout>
#include <QScreen>
#include <QToolBar>

#include <algorithm>

namespace vesk {

namespace {

// Pixels.
constexpr int leftDockMargin = 3;
constexpr int bottomDockMargin = 3;
constexpr int dockTabThickness = 30;
// Wide enough for the row of dots to be seen.
constexpr int handleWidth = 6;

namespace keys {
constexpr QLatin1String x("/geometry/x");
constexpr QLatin1String y("/geometry/y");
constexpr QLatin1String w("/geometry/w");
constexpr QLatin1String h("/geometry/h");
} // namespace keys

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

/// Sizes of panes in pixels, none longer than the screens.
QList<int> storedSizes(const QString &key, const char *standard)
{
    const QSize screens = QGuiApplication::primaryScreen()->virtualSize();
    const int longest = qMax(screens.width(), screens.height());
    const auto toSizes = [longest](const QStringList &entries) {
        QList<int> sizes;
        for (const QString &entry : entries) {
            bool isNumber = false;
            const int size = entry.toInt(&isNumber);
            if (isNumber && size >= 0)
                sizes.append(qMin(size, longest));
        }
        return sizes;
    };
    const QStringList entries = Settings::readList(key);
    const QList<int> stored = toSizes(entries);
    // One that is no size would shut a pane.
    if (stored.isEmpty() || stored.size() != entries.size())
        return toSizes(QString::fromLatin1(standard).split(QLatin1Char(',')));
    return stored;
}

void storeSizes(const QString &key, const QList<int> &sizes)
{
    QStringList entries;
    for (const int size : sizes)
        entries.append(QString::number(size));
    Settings::write(key, entries);
}

/// A width or height of the window in pixels.
int storedEdge(const QString &key, int standard)
{
    const int edge = Settings::readNum(key, standard);
    return edge > 0 ? edge : standard;
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

const Shell::Private::DockTraits &Shell::Private::traits(Dock dock)
{
    static const DockTraits leftTraits = {"docks/left",
                                          "leftDock/",
                                          "Shell/showHideLeftPanel",
                                          QLatin1String("/geometry/leftDockShown"),
                                          QLatin1String("/geometry/leftDockPanelID"),
                                          QLatin1String("/geometry/vSplitter"),
                                          "200,700",
                                          200,
                                          &Shell::leftDockRaised};
    static const DockTraits bottomTraits = {"docks/bottom",
                                            "bottomDock/",
                                            "Shell/showHideBottomPanel",
                                            QLatin1String("/geometry/bottomDockShown"),
                                            QLatin1String("/geometry/bottomDockPanelID"),
                                            QLatin1String("/geometry/hSplitter"),
                                            "600,100",
                                            100,
                                            &Shell::bottomDockRaised};
    return dock == Dock::Left ? leftTraits : bottomTraits;
}

void Shell::initWorkspace()
{
    d->vSplitter = new Splitter(Qt::Horizontal, this, QStringLiteral("vSplitter"));
    d->vSplitter->setHandleWidth(handleWidth);
    d->initLeftDock();
    d->hSplitter = new Splitter(Qt::Vertical, d->vSplitter, QStringLiteral("hSplitter"));
    d->hSplitter->setHandleWidth(handleWidth);
    auto *const workspaceWidget = new QWidget(d->hSplitter);
    d->initBottomDock();

    setCentralWidget(d->vSplitter);
    d->initCentre(workspaceWidget);
    actionGroup(QStringLiteral("stackButtons"))->setExclusive(true);
}

void Shell::Private::initLeftDock()
{
    left.splitter = vSplitter;
    left.widget = new QWidget(vSplitter);
    QGridLayout *const grid = plainGrid(left.widget);

    QGridLayout *const margins = plainGrid(nullptr);
    left.stack = new WidgetStack(left.widget, QStringLiteral("leftDock"));
    margins->setRowMinimumHeight(0, leftDockMargin);
    margins->setColumnMinimumWidth(0, leftDockMargin);
    margins->addWidget(left.stack, 1, 1);
    margins->setRowStretch(1, 1);
    margins->setColumnStretch(1, 1);
    grid->addLayout(margins, 0, 0);

    QFrame *const tabs = plainFrame(left.widget);
    QGridLayout *const tabsGrid = plainGrid(tabs);
    left.tabLine = plainFrame(tabs);
    left.tabFrame = plainFrame(tabs);
    left.tabFrame->setFixedHeight(dockTabThickness);
    tabsGrid->addWidget(left.tabLine, 0, 0);
    tabsGrid->addWidget(left.tabFrame, 1, 0);
    left.tab = frameToolBar(Shell::tr("Left dock"), left.tabFrame, Qt::Horizontal);
    grid->addWidget(tabs, 1, 0);
    grid->setRowStretch(0, 100);
    grid->setRowStretch(1, 0);
}

void Shell::Private::initBottomDock()
{
    bottom.splitter = hSplitter;
    bottom.widget = new QWidget(hSplitter);
    QGridLayout *const grid = plainGrid(bottom.widget);

    auto *const tabs = new QFrame(bottom.widget);
    tabs->setFrameStyle(QFrame::Panel | QFrame::Sunken);
    tabs->setLineWidth(0);
    QGridLayout *const tabsGrid = plainGrid(tabs);
    bottom.tabFrame = plainFrame(tabs);
    bottom.tabFrame->setFixedWidth(dockTabThickness);
    bottom.tabLine = new QFrame(tabs);
    bottom.tabLine->setFrameStyle(QFrame::VLine | QFrame::Raised);
    tabsGrid->addWidget(bottom.tabFrame, 0, 0);
    tabsGrid->addWidget(bottom.tabLine, 0, 1);
    bottom.tab = frameToolBar(Shell::tr("Bottom dock"), bottom.tabFrame, Qt::Vertical);
    grid->addWidget(tabs, 0, 0);

    QGridLayout *const margins = plainGrid(nullptr);
    bottom.stack = new WidgetStack(bottom.widget, QStringLiteral("bottomDock"));
    margins->setColumnMinimumWidth(0, bottomDockMargin);
    margins->addWidget(bottom.stack, 0, 1);
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

    centralGrid = plainGrid(centralWidget);
    workspace = new WidgetStack(centralWidget, QStringLiteral("vesk::workspace"));
    workspace->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    centralGrid->addWidget(workspace, 0, 0, 1, 2);
    stackButtons = frameToolBar(Shell::tr("Tools"), centralWidget, Qt::Vertical);
    stackButtons->setObjectName(QStringLiteral("stackButtons"));
    stackButtons->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::MinimumExpanding);
    centralGrid->addWidget(stackButtons, 1, 0);
    centralGrid->setRowStretch(0, 1000);
    centralGrid->setRowStretch(1, 0);
}

void Shell::setWorkspaceTabs(QWidget *tabs)
{
    tabs->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::MinimumExpanding);
    d->centralGrid->addWidget(tabs, 1, 1);
}

Action *Shell::addPanel(Dock dock, QWidget *panel, const PanelInfo &info)
{
    const Private::DockTraits &traits = Private::traits(dock);
    const Private::DockArea &area = d->area(dock);
    QObject *const receiver = info.receiver ? info.receiver : panel;
    const QString name = QString::fromLatin1(traits.actionPrefix) + QString::fromLatin1(info.name);
    Action *const action =
        Actions::createAction(info.label, name, info.key.toCombined(), receiver, info.slot);
    actionGroup(QString::fromLatin1(traits.group))->add(action);
    action->setCheckable(true);
    action->setIcon(Utils::iconSet(QString::fromLatin1(info.icon)));
    action->setUsesTextLabel(info.usesTextLabel);
    action->addTo(area.tab);
    area.stack->addWidget(panel, -1);
    connect(this, traits.raised, action, [action, panel, receiver](const QObject *raised) {
        action->setChecked(raised == panel || raised == receiver);
    });
    return action;
}

void Shell::raisePanel(QWidget *panel)
{
    for (const Dock dock : {Dock::Left, Dock::Bottom}) {
        WidgetStack *const stack = d->area(dock).stack;
        if (stack->id(panel) < 0)
            continue;
        stack->raiseWidget(panel);
        emit(this->*Private::traits(dock).raised)(panel);
        d->openDock(dock);
    }
}

void Shell::raiseLeftDock(QObject *panel)
{
    emit leftDockRaised(panel);
    d->openDock(Dock::Left);
}

void Shell::raiseBottomDock(QObject *panel)
{
    emit bottomDockRaised(panel);
    d->openDock(Dock::Bottom);
}

void Shell::leftDockShowHide()
{
    d->toggleDock(Dock::Left);
}

void Shell::bottomDockShowHide()
{
    d->toggleDock(Dock::Bottom);
}

void Shell::Private::toggleDock(Dock dock)
{
    const DockArea &shown = area(dock);
    const int pane = shown.splitter->indexOf(shown.widget);
    if (shown.widget->isHidden() || shown.splitter->sizes().at(pane) == 0)
        openDock(dock);
    else
        shown.widget->hide();
}

void Shell::Private::openDock(Dock dock)
{
    const DockArea &opened = area(dock);
    opened.splitter->reopen(opened.widget, traits(dock).standardSize);
    opened.widget->show();
}

/// A dock without panels is hidden, and so is the strip of one with a single panel,
/// which needs nothing to choose it from.
void Shell::Private::showDocksWithPanels(Shell *shell)
{
    for (const Dock dock : {Dock::Left, Dock::Bottom}) {
        const DockTraits &own = traits(dock);
        const DockArea &shown = area(dock);
        const uint panels = shell->actionGroup(QString::fromLatin1(own.group))->count();
        Actions::action(QString::fromLatin1(own.showHideAction))->setVisible(panels > 0);
        shown.widget->setVisible(panels > 0 && Settings::readBool(own.shownKey, true));
        shown.tabFrame->setVisible(panels != 1);
        shown.tabLine->setVisible(panels != 1);
    }
    // A pane without content cannot be shut, and would come up open.
    if (!std::exchange(hasPanelSizes, true))
        restoreSplitters();
}

void Shell::postPrepare()
{
    if (!std::exchange(d->hasBottomTabStretch, true)) {
        auto *const stretch = new QWidget(d->bottom.tab);
        stretch->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
        d->bottom.tab->addWidget(stretch);
    }
    for (const Dock dock : {Dock::Left, Dock::Bottom}) {
        d->raiseStoredPanel(this, dock);
        if (!d->area(dock).stack->visibleWidget())
            d->raiseFirstPanel(this, dock);
    }
}

void Shell::Private::raiseStoredPanel(Shell *shell, Dock dock)
{
    bool found = false;
    const int id = Settings::readNum(traits(dock).panelKey, 0, &found);
    if (!found)
        return;
    WidgetStack *const stack = area(dock).stack;
    stack->raiseWidget(id);
    emit(shell->*traits(dock).raised)(stack->widget(id));
}

/// At the first start no panel is stored, and a dock with one panel has not even
/// a strip to choose it from. The focus stays where it is: the user never asked
/// for the panel.
void Shell::Private::raiseFirstPanel(Shell *shell, Dock dock)
{
    WidgetStack *const stack = area(dock).stack;
    QWidget *const panel = stack->widget(0);
    if (!panel)
        return;
    const QPointer<QWidget> focus = shell->focusWidget();
    stack->raiseWidget(panel);
    emit(shell->*traits(dock).raised)(panel);
    if (focus)
        focus->setFocus();
}

void Shell::timeout()
{
    for (const Private::DockArea *area : {&d->left, &d->bottom})
        area->tab->setFixedSize(area->tabFrame->size());
}

void Shell::Private::restoreGeometry(Shell *shell)
{
    QPoint position(Settings::readNum(keys::x, 50), Settings::readNum(keys::y, 50));
    const QSize size = QSize(storedEdge(keys::w, 900), storedEdge(keys::h, 700))
                           .boundedTo(QGuiApplication::primaryScreen()->virtualSize());
    // The screen it stood on may be gone.
    if (!isReachable(position, size.width()))
        position = QGuiApplication::primaryScreen()->availableGeometry().topLeft() + QPoint(50, 50);
    shell->move(position);
    shell->resize(size);
    restoreSplitters();
    for (const Dock dock : {Dock::Left, Dock::Bottom})
        area(dock).widget->setVisible(Settings::readBool(traits(dock).shownKey, true));
}

void Shell::Private::restoreSplitters()
{
    for (const Dock dock : {Dock::Left, Dock::Bottom}) {
        // Its smallest size may be that of the time before it had panels.
        area(dock).widget->layout()->activate();
        area(dock).splitter->setSizes(
            storedSizes(traits(dock).sizesKey, traits(dock).standardSizes));
    }
}

void Shell::saveGeometryOnce()
{
    if (!std::exchange(d->isGeometrySaved, true))
        d->saveGeometry(this);
}

void Shell::Private::saveGeometry(Shell *shell)
{
    // x() and y() count the frame, as move() does: geometry() would let the
    // window creep over the screen from run to run.
    Settings::write(keys::x, shell->x());
    Settings::write(keys::y, shell->y());
    Settings::write(keys::w, shell->width());
    Settings::write(keys::h, shell->height());
    for (const Dock dock : {Dock::Left, Dock::Bottom}) {
        const DockTraits &own = traits(dock);
        const DockArea &saved = area(dock);
        // A dock that is hidden for want of panels tells nothing of the user's wish.
        if (shell->actionGroup(QString::fromLatin1(own.group))->count() > 0)
            Settings::write(own.shownKey, !saved.widget->isHidden());
        storeSizes(own.sizesKey, saved.splitter->sizes());
        Settings::write(own.panelKey, saved.stack->id(saved.stack->visibleWidget()));
    }
}

WidgetStack *Shell::leftDock() const
{
    return d->left.stack;
}

WidgetStack *Shell::bottomDock() const
{
    return d->bottom.stack;
}

QToolBar *Shell::leftDockTab() const
{
    return d->left.tab;
}

QToolBar *Shell::bottomDockTab() const
{
    return d->bottom.tab;
}

QWidget *Shell::leftDockWidget() const
{
    return d->left.widget;
}

QWidget *Shell::bottomDockWidget() const
{
    return d->bottom.widget;
}

} // namespace vesk
