#include "app/ctags/tagspanel.h"

#include "app/actiongroup.h"
#include "app/actions.h"
#include "app/actiontable.h"
#include "app/ctags/node.h"
#include "app/ctags/parser.h"
#include "app/ctags/tagsview.h"
#include "app/ctags/textcopy.h"
#include "app/editors/editor.h"
#include "app/editors/editors.h"
#include "app/editors/editorslist.h"
#include "app/filetype.h"
#include "app/recentfiles.h"
#include "app/settings.h"
#include "app/shell.h"
#include "app/utils.h"
#include "app/widgets/clicklabel.h"
#include "app/widgetstack.h"

#include <QGridLayout>
#include <QListWidget>
#include <QPointer>
#include <QProgressBar>
#include <QTimer>
#include <QToolButton>

#include <utility>

using namespace Qt::StringLiterals;

namespace vesk {

namespace {

// In ms.
constexpr int parsePeriod = 5000;
/// Several triggers come with one change, and files are leafed through.
constexpr int triggerDelay = 50;

namespace keys {
constexpr QLatin1String sortMode("/classes/sortMode");
constexpr QLatin1String sortModeClassesAll("/classes/sortModeClassesAll");
constexpr QLatin1String showEditorsList("/geometry/tagsPanel/showEditorsList");
} // namespace keys

enum Page
{
    CurrentFile,
    AllClasses
};

using Separator = ActionRow::Separator;

const ActionRow actionRows[] = {
    {"Editors/prevFunction", QT_TRANSLATE_NOOP("vesk::TagsPanel", "Prev function/class/tag"),
     Qt::ALT | Qt::Key_Up, SLOT(prevFunction()), nullptr, "menu/View/std", Separator::Before},
    {"Editors/nextFunction", QT_TRANSLATE_NOOP("vesk::TagsPanel", "Next function/class/tag"),
     Qt::ALT | Qt::Key_Down, SLOT(nextFunction()), nullptr, "menu/View/std"},
    {"Classes/context/class/sortByName", QT_TRANSLATE_NOOP("vesk::TagsPanel", "Name"), noKey,
     SLOT(sortByName()), nullptr, "classes/context/class/Sorting"},
    {"Classes/context/class/sortByLineNumber", QT_TRANSLATE_NOOP("vesk::TagsPanel", "Line number"),
     noKey, SLOT(sortByLineNumber()), nullptr, "classes/context/class/Sorting"},
    {"Classes/context/function/sortByName", QT_TRANSLATE_NOOP("vesk::TagsPanel", "Name"), noKey,
     SLOT(sortByName()), nullptr, "classes/context/function/Sorting"},
    {"Classes/context/function/sortByLineNumber",
     QT_TRANSLATE_NOOP("vesk::TagsPanel", "Line number"), noKey, SLOT(sortByLineNumber()), nullptr,
     "classes/context/function/Sorting"},
    {"ClassesAll/context/function/sortByName", QT_TRANSLATE_NOOP("vesk::TagsPanel", "Name"), noKey,
     SLOT(sortByNameClassesAll()), nullptr, "classesAll/context/function/Sorting"},
    {"ClassesAll/context/function/sortByLineNumber",
     QT_TRANSLATE_NOOP("vesk::TagsPanel", "Line number"), noKey, SLOT(sortByLineNumberClassesAll()),
     nullptr, "classesAll/context/function/Sorting"},
};

const ActionRow openRows[] = {
    {"Classes/context/open", QT_TRANSLATE_NOOP("vesk::TagsView", "Open"), noKey,
     SLOT(openCurrent()), nullptr, "classes/context/class/open"},
};

/// Which toggles go with a sorting mode.
struct SortRow
{
    const char *action;
    bool isOfAll;
    int mode;
};

constexpr SortRow sortRows[] = {
    {"Classes/context/class/sortByName", false, TagsView::ByName},
    {"Classes/context/function/sortByName", false, TagsView::ByName},
    {"Classes/context/class/sortByLineNumber", false, TagsView::ByLineNumber},
    {"Classes/context/function/sortByLineNumber", false, TagsView::ByLineNumber},
    {"ClassesAll/context/function/sortByName", true, TagsView::ByName},
    {"ClassesAll/context/function/sortByLineNumber", true, TagsView::ClassesByName},
};

void checkSorting(int mode, bool isOfAll)
{
    for (const SortRow &row : sortRows) {
        if (row.mode == mode && row.isOfAll == isOfAll)
            Actions::action(QString::fromLatin1(row.action))->setChecked(true);
    }
}

/// The context menu of some types of a view.
struct ContextRow
{
    const char *group;
    const char *sections;
    const char *separated; ///< sections that are parted from what stands above them
    bool isOfAll;
    const char *types;
};

constexpr ContextRow contextRows[] = {
    {"classes/context/class", "open std Sorting plugin close", "std", false, "Class"},
    {"classes/context/function", "open std Sorting plugin close", "std", false,
     "Function FunctionPrivate"},
    {"classesAll/context/class", "open std plugin close", "close", true, "Class"},
    {"classesAll/context/function", "open std Sorting plugin close", "std close", true,
     "Function FunctionPrivate"},
};

QStringList words(const char *text)
{
    return QString::fromLatin1(text).split(u' ');
}

Parser *parserOf(const QString &fileName)
{
    return FileTypeManager::self()->findType(fileName)->parser();
}

/// A text at a moment.
struct TextState
{
    explicit TextState(Editor *of = nullptr)
        : editor(of), fileName(of ? of->filename() : QString()), revision(of ? of->revision() : 0)
    {}

    bool operator==(const TextState &) const = default;

    QPointer<Editor> editor;
    QString fileName;
    unsigned revision;
};

} // namespace

struct TagsPanel::Private
{
    /// How far the text in `asked` has come.
    enum class Step
    {
        Open, ///< there will be no answer
        Copied,
        Parsed,
        Answered
    };

    explicit Private(TagsPanel *panel) : copy(new TextCopy(panel)) {}

    const TextLines &linesOf(Editor *editor);
    const Node *symbolBefore(int pos) const;
    const Node *symbolAfter(int pos) const;
    bool isShown(const Editor *editor) const;
    void show(const std::shared_ptr<const Node> &tree, Editor *editor);

    static QPointer<TagsPanel> self;

    /// The tree on show, and whose it is.
    std::shared_ptr<const Node> currentNode;
    QPointer<Editor> shownEditor;
    TagsView *view = nullptr;
    TagsView *viewAll = nullptr;
    EditorsList *filesList = nullptr;
    QProgressBar *progress = nullptr;
    QToolButton *filesButton = nullptr;
    ClickLabel *filesLabel = nullptr;
    WidgetStack *stack = nullptr;
    QGridLayout *grid = nullptr; ///< of the page of the current file
    Action *action = nullptr;
    QList<Parser *> parsers; ///< those connected

    TextCopy *const copy;
    TextState asked;
    Step step = Step::Open;
    int askedKey = 0;
    /// The text was to be parsed again while it was being parsed.
    bool isOutdated = false;

    TextState measured; ///< what `lines` is of
    TextLines lines;
};

QPointer<TagsPanel> TagsPanel::Private::self;

TagsPanel *TagsPanel::self()
{
    if (!Private::self)
        Private::self = new TagsPanel(Shell::self());
    return Private::self;
}

TagsPanel::TagsPanel(QWidget *parent) : QWidget(parent), d(std::make_unique<Private>(this))
{
    setObjectName(u"vesk::TagsPanel"_s);
    createPages();
    createActions();
    createMenus();
    connectTriggers();
    d->view->setSortingMode(Settings::readNum(keys::sortMode, TagsView::ByLineNumber));
    d->viewAll->setSortingMode(
        Settings::readNum(keys::sortModeClassesAll, TagsView::ClassesByName));
    checkSorting(d->view->sortingMode(), false);
    // The other default is meant: at a first start neither toggle is down.
    checkSorting(Settings::readNum(keys::sortModeClassesAll, 0), true);
    showFilesList(Settings::readBool(keys::showEditorsList, true));
}

TagsPanel::~TagsPanel()
{
    Settings::write(keys::sortMode, d->view->sortingMode());
    Settings::write(keys::sortModeClassesAll, d->viewAll->sortingMode());
    Settings::write(keys::showEditorsList, !d->filesList->isHidden());
}

void TagsPanel::createPages()
{
    auto *const layout = new QGridLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    d->stack = new WidgetStack(this);
    layout->addWidget(d->stack, 0, 0);

    auto *const current = new QWidget;
    d->grid = new QGridLayout(current);
    d->grid->setContentsMargins(0, 0, 0, 0);
    d->grid->setSpacing(0);
    d->view = new TagsView(current, u"view"_s);
    d->filesLabel = new ClickLabel(tr("Files:"), current, u"filesLabel"_s);
    d->filesLabel->setAutoFillBackground(true);
    d->filesButton = new QToolButton(current);
    d->filesButton->setObjectName(u"filesButton"_s);
    d->filesButton->setAutoRaise(true);
    d->filesButton->setFixedSize(15, 15);
    d->filesButton->setIconSize(QSize(9, 9));
    d->filesButton->setFocusPolicy(Qt::NoFocus);
    d->filesList = new EditorsList(current, u"filesList"_s);
    // Its own would keep the tree from most of a small panel.
    d->filesList->listBox()->setMinimumHeight(1);
    d->grid->addWidget(d->view, 0, 0, 1, 2);
    d->grid->addWidget(d->filesLabel, 1, 0);
    d->grid->addWidget(d->filesButton, 1, 1);
    d->grid->addWidget(d->filesList, 2, 0, 1, 2);
    d->grid->setColumnStretch(0, 100);
    connect(d->filesLabel, &ClickLabel::clicked, this, &TagsPanel::showHideFilesList);
    connect(d->filesButton, &QToolButton::clicked, this, &TagsPanel::showHideFilesList);

    auto *const all = new QWidget;
    auto *const column = new QGridLayout(all);
    column->setContentsMargins(0, 0, 0, 0);
    d->viewAll = new TagsView(all, u"viewAll"_s);
    d->progress = new QProgressBar(all);
    d->progress->setAlignment(Qt::AlignCenter);
    d->progress->hide();
    column->addWidget(d->viewAll, 0, 0);
    column->addWidget(d->progress, 1, 0);

    d->stack->addWidget(current, CurrentFile);
    d->stack->addWidget(all, AllClasses);
    d->stack->raiseWidget(CurrentFile);
    setFocusProxy(d->view);
}

void TagsPanel::createActions()
{
    PanelInfo info{"classes", tr("Tags"), noKey, "22x22_Tags", SLOT(makeVisible())};
    info.usesTextLabel = true;
    d->action = Shell::self()->addPanel(Dock::Left, this, info);
    connect(d->action, &Action::toggled, this, &TagsPanel::switchShowAllClasses);

    // The sections stand in the order in which they are first asked for.
    for (const ContextRow &row : contextRows) {
        for (const QString &section : words(row.sections))
            Shell::self()->actionGroup(QString::fromLatin1(row.group) + u'/' + section);
    }
    vesk::addActions(this, actionRows, Labels::Translated);
    vesk::addActions(d->view, openRows, Labels::Translated);
    for (const SortRow &row : sortRows)
        Actions::action(QString::fromLatin1(row.action))->setCheckable(true);
}

void TagsPanel::createMenus()
{
    for (const ContextRow &row : contextRows) {
        const QString group = QString::fromLatin1(row.group);
        const QStringList separated = words(row.separated);
        for (const QString &section : words(row.sections)) {
            ActionGroup *const members = Shell::self()->actionGroup(group + u'/' + section);
            if (separated.contains(section))
                members->addSeparator();
            if (section == "open"_L1)
                members->add(u"Classes/context/open"_s);
            if (section == "Sorting"_L1) {
                members->setExclusive(true);
                members->setUsesDropDown(true);
            }
            Action *const close = Actions::action(u"Project/close"_s);
            if (section == "close"_L1 && row.isOfAll && close)
                members->add(close);
        }
        for (const QString &type : words(row.types))
            (row.isOfAll ? d->viewAll : d->view)
                ->installHelper(type, Shell::self()->actionGroup(group));
    }
}

void TagsPanel::connectTriggers()
{
    auto *const soon = new QTimer(this);
    soon->setSingleShot(true);
    soon->setInterval(triggerDelay);
    connect(soon, &QTimer::timeout, this, &TagsPanel::reparse);
    const auto startSoon = [soon] { soon->start(); };
    Editors *const editors = Editors::self();
    connect(editors, &Editors::fileSaved, soon, startSoon);
    connect(editors, &Editors::fileLoaded, soon, startSoon);
    connect(editors, &Editors::listChanged, soon, startSoon);
    connect(editors, &Editors::currentChanged, soon, startSoon);
    auto *const period = new QTimer(this);
    connect(period, &QTimer::timeout, this, &TagsPanel::reparse);
    period->start(parsePeriod);
    connect(d->copy, &TextCopy::finished, this, &TagsPanel::parseCopy);

    const auto choose = [this](int pos, const QString &fileName) {
        // Until the tree of another file is there its symbols lead nowhere.
        if (!fileName.isEmpty() || d->isShown(Editors::self()->current()))
            gotoTextPos(pos, fileName);
    };
    connect(d->view, &TagsView::gotoTextPos, this, choose);
    connect(d->viewAll, &TagsView::gotoTextPos, this, choose);
}

void TagsPanel::reparse()
{
    Editor *const editor = Editors::self()->current();
    if (!editor)
        return;
    Parser *const parser = parserOf(editor->filename());
    if (!parser)
        return;
    if (!d->parsers.contains(parser)) {
        d->parsers.append(parser);
        connect(parser, &Parser::nodes, this, &TagsPanel::reparseShowNodes);
        connect(parser, &Parser::failed, this, &TagsPanel::parseFailed);
    }
    const TextState now(editor);
    const bool isSameFile = now.editor == d->asked.editor && now.fileName == d->asked.fileName;
    const bool isParsing = d->step == Private::Step::Parsed && parser->isParsing(d->askedKey);
    if (d->step == Private::Step::Answered && now == d->asked) {
        showFilesList(!d->filesList->isHidden());
        return;
    }
    // The copy follows the text by itself. And a tool that takes long is not to be
    // started over and over.
    if (isSameFile && (d->step == Private::Step::Copied || isParsing)) {
        d->isOutdated = now.revision != d->asked.revision;
        return;
    }
    d->asked = now;
    d->step = Private::Step::Copied;
    d->isOutdated = false;
    d->copy->start(editor);
}

void TagsPanel::parseCopy()
{
    d->asked.revision = d->copy->revision();
    d->askedKey = d->copy->key();
    d->measured = d->asked;
    d->lines = d->copy->takeLines();
    d->step = Private::Step::Parsed;
    if (Parser *const parser = parserOf(d->asked.fileName))
        parser->parse(d->copy->takeText(), d->asked.fileName, d->askedKey);
}

void TagsPanel::reparseShowNodes(int key, Node *node)
{
    if (key != d->askedKey || d->step != Private::Step::Parsed)
        return;
    Editor *const editor = Editors::self()->current();
    const Parser *const parser = parserOf(d->asked.fileName);
    const std::shared_ptr<const Node> tree = parser ? parser->tree(d->asked.fileName) : nullptr;
    // A text of another file may have the same key; and this one may have changed.
    const bool isCurrent = tree.get() == node && d->asked == TextState(editor);
    d->step = isCurrent ? Private::Step::Answered : Private::Step::Open;
    if (isCurrent)
        d->show(tree, editor);
    if (std::exchange(d->isOutdated, false))
        reparse();
    showFilesList(!d->filesList->isHidden());
}

void TagsPanel::parseFailed(int key)
{
    if (key != d->askedKey || d->step != Private::Step::Parsed)
        return;
    d->step = Private::Step::Answered;
    if (!d->isShown(Editors::self()->current()))
        d->show(nullptr, nullptr);
}

bool TagsPanel::Private::isShown(const Editor *editor) const
{
    return editor && shownEditor == editor;
}

void TagsPanel::Private::show(const std::shared_ptr<const Node> &tree, Editor *editor)
{
    if (stack->visibleWidget() != stack->widget(CurrentFile))
        return;
    shownEditor = editor;
    if (currentNode == tree)
        return;
    currentNode = tree;
    view->setUpdatesEnabled(false);
    view->updateSubTree(nullptr, {tree.get()}, {});
    view->setUpdatesEnabled(true);
    view->adjustContentSize();
    view->viewport()->update();
}

/// Those of the last copy if the text is still that one.
const TextLines &TagsPanel::Private::linesOf(Editor *editor)
{
    const TextState now(editor);
    if (measured == now)
        return lines;
    measured = now;
    lines = TextLines();
    for (int i = 0; i < editor->lineCount(); ++i)
        lines.append(editor->line(i).size());
    return lines;
}

const Node *TagsPanel::Private::symbolBefore(int pos) const
{
    const Node *found = nullptr;
    for (const Node *node = currentNode.get(); node; node = node->following()) {
        if (node->start < pos && (!found || node->start > found->start))
            found = node;
    }
    return found;
}

const Node *TagsPanel::Private::symbolAfter(int pos) const
{
    const Node *found = nullptr;
    for (const Node *node = currentNode.get(); node; node = node->following()) {
        if (node->start > pos && (!found || node->start < found->start))
            found = node;
    }
    return found;
}

void TagsPanel::prevFunction()
{
    Editor *const editor = Editors::self()->current();
    if (!d->isShown(editor) || !parserOf(editor->filename()))
        return;
    const TextLines &lines = d->linesOf(editor);
    const int line = editor->cursorLine();
    const Node *symbol = d->symbolBefore(lines.endOf(line));
    if (symbol && lines.lineOf(symbol->start) == line)
        symbol = d->symbolBefore(lines.endOf(line - 1));
    if (symbol)
        editor->setCursorPosition(lines.lineOf(symbol->start), 0);
}

void TagsPanel::nextFunction()
{
    Editor *const editor = Editors::self()->current();
    if (!d->isShown(editor) || !parserOf(editor->filename()))
        return;
    const TextLines &lines = d->linesOf(editor);
    const int line = editor->cursorLine();
    const Node *symbol = d->symbolAfter(lines.endOf(line));
    if (symbol && lines.lineOf(symbol->start) == line)
        symbol = d->symbolAfter(lines.endOf(line + 1));
    if (symbol)
        editor->setCursorPosition(lines.lineOf(symbol->start), 0);
}

void TagsPanel::makeVisible(QObject *panel)
{
    if (panel) {
        d->action->setChecked(panel == this);
        return;
    }
    Shell::self()->raisePanel(this);
    d->view->adjustContentSize();
    d->viewAll->adjustContentSize();
    emit raised();
}

void TagsPanel::gotoTextPos(int pos, const QString &fileName)
{
    if (!fileName.isEmpty()) {
        Editors::self()->open(fileName);
        RecentFiles::self()->addRecent(fileName);
    }
    Editor *const editor = Editors::self()->current();
    if (!editor || !parserOf(fileName))
        return;
    editor->setCursorPosition(d->linesOf(editor).lineOf(pos), 0);
    // The tree is in the middle of the click and would keep the focus otherwise.
    editor->setFocus();
    editor->clearFocus();
    editor->setFocus();
}

void TagsPanel::sortByName()
{
    checkSorting(TagsView::ByName, false);
    d->view->setSortingMode(TagsView::ByName);
    d->view->sort();
}

void TagsPanel::sortByLineNumber()
{
    checkSorting(TagsView::ByLineNumber, false);
    d->view->setSortingMode(TagsView::ByLineNumber);
    d->view->sort();
}

void TagsPanel::sortByNameClassesAll()
{
    checkSorting(TagsView::ByName, true);
    d->viewAll->setSortingMode(TagsView::ByName);
    d->viewAll->sort();
}

void TagsPanel::sortByLineNumberClassesAll()
{
    checkSorting(TagsView::ClassesByName, true);
    d->viewAll->setSortingMode(TagsView::ClassesByName);
    d->viewAll->sort();
}

void TagsPanel::showAllClasses()
{
    d->viewAll->setSortingMode(TagsView::ByName);
    d->progress->setValue(100);
    d->viewAll->updateSubTree(nullptr, {}, {});
    d->viewAll->viewport()->update();
    d->progress->hide();
}

void TagsPanel::checkShowAllClasses(bool on)
{
    d->stack->raiseWidget(on ? AllClasses : CurrentFile);
}

void TagsPanel::enableClassesAll()
{}

void TagsPanel::disableClassesAll()
{}

void TagsPanel::switchShowAllClasses(bool on)
{
    if (on && d->stack->visibleWidget() == d->stack->widget(AllClasses))
        d->progress->show();
}

void TagsPanel::showFilesList(bool show)
{
    if (!show && d->filesList->isHidden())
        return;
    QListWidget *const list = d->filesList->listBox();
    const int whole =
        qMax(1, d->view->height() + (d->filesList->isHidden() ? 0 : d->filesList->height()));
    const int wanted = list->sizeHintForRow(0) * list->count() + 10;
    const int height = show ? qMin(wanted, whole / 3) : 0;
    d->grid->setRowStretch(0, (whole - height) * 255 / whole);
    d->grid->setRowStretch(2, height * 255 / whole);
    QPalette colors = d->filesLabel->palette();
    colors.setColor(QPalette::Window, palette().color(show ? QPalette::Window : QPalette::Mid));
    d->filesLabel->setPalette(colors);
    d->filesButton->setIcon(Utils::iconSet(show ? u"9x9_Close"_s : u"9x9_Maximize"_s));
    d->filesList->setVisible(show);
}

void TagsPanel::showHideFilesList()
{
    showFilesList(d->filesList->isHidden());
}

void TagsPanel::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    showFilesList(!d->filesList->isHidden());
}

} // namespace vesk
