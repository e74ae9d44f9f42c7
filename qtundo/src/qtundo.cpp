#include "qtundo/src/qtundo.h"

#include <QApplication>
#include <QEvent>
#include <QIcon>
#include <QPixmap>
#include <QSignalBlocker>
#include <QWidget>

#include <utility>

namespace {

/// Reports a broken promise of the stack and lets it go on.
void check(bool holds, const char *condition, int line)
{
    if (!holds)
        qWarning("ASSERT: \"%s\" in %s (%d)", condition, "qtundo.cpp", line);
}

/// The image of that name among the program's resources; null if it has none.
QPixmap loadPixmapFromMimeSource(const QString &name)
{
    return QPixmap(QLatin1String(":/") + name);
}

QIcon actionIcon(const QString &name)
{
    QPixmap pixmap = loadPixmapFromMimeSource(name);
    if (pixmap.isNull())
        pixmap = loadPixmapFromMimeSource(name + QLatin1String(".png"));
    return pixmap.isNull() ? QIcon() : QIcon(pixmap);
}

struct ActionLook
{
    QString name;
    QString iconName;
    QString text;
    bool enabled;
};

UndoRedoAction *createAction(QWidget *parent, const ActionLook &look)
{
    auto *action = new UndoRedoAction(parent, look.name);
    action->setText(look.text);
    action->setEnabled(look.enabled);
    action->setIcon(actionIcon(look.iconName));
    return action;
}

/// \a source is a stack or the manager. Its undo() has a default argument that
/// the action's own must not reach, hence the lambda.
template <typename Source>
QAction *createUndoActionFor(Source *source, QWidget *parent, const QString &text)
{
    auto *action = createAction(
        parent, {QStringLiteral("Undo"), QStringLiteral("undo"), text, source->canUndo()});
    QObject::connect(action, &QAction::triggered, source, [source] { source->undo(); });
    QObject::connect(source, &Source::undoDescriptionChanged, action, &UndoRedoAction::setTextSlot);
    QObject::connect(source, &Source::canUndoChanged, action, &QAction::setEnabled);
    return action;
}

template <typename Source>
QAction *createRedoActionFor(Source *source, QWidget *parent, const QString &text)
{
    auto *action = createAction(
        parent, {QStringLiteral("Redo"), QStringLiteral("redo"), text, source->canRedo()});
    QObject::connect(action, &QAction::triggered, source, [source] { source->redo(); });
    QObject::connect(source, &Source::redoDescriptionChanged, action, &UndoRedoAction::setTextSlot);
    QObject::connect(source, &Source::canRedoChanged, action, &QAction::setEnabled);
    return action;
}

} // namespace

QtCommand::QtCommand(const QString &description, bool canMerge)
    : QtCommand(Command, description, canMerge)
{}

QtCommand::QtCommand(Type type, const QString &description, bool canMerge)
    : m_can_merge(canMerge)
    , m_described(!description.isNull())
    , m_type(type)
    , m_description(description)
{}

QtCommand::~QtCommand() = default;

void QtCommand::redo()
{}

void QtCommand::undo()
{}

void QtCommand::setDescription(const QString &description)
{
    m_described = true;
    m_description = description;
}

void QtCommand::resetDescription()
{
    m_described = false;
    m_description.clear();
}

bool QtCommand::mergeMeWith(QtCommand *)
{
    return false;
}

QtUndoStack::QtUndoStack(QObject *parent, const QString &name) : QObject(parent)
{
    setObjectName(name);
    QtUndoManager *const manager = QtUndoManager::manager();
    connect(this, &QObject::destroyed, manager, &QtUndoManager::stackDestroyed);
    manager->associateView(parent, this);
}

QtUndoStack::~QtUndoStack() = default;

QtCommand *QtUndoStack::commandAt(int index) const
{
    return index < 0 ? nullptr : m_commands[size_t(index)].get();
}

void QtUndoStack::push(QtCommand *command)
{
    std::unique_ptr<QtCommand> owned(command);
    const bool announces = m_macro_nest == 0 || command->isMacroEnd();
    // A macro may hold a great many commands, and while it is open only the
    // clean state can change.
    const bool wasClean = isClean();
    const QtUndoState before = announces ? beforeChange() : QtUndoState();

    command->redo();
    dropRedoTail();
    const bool executed = record(std::move(owned));
    // A slot may well call back, so the signal comes with the history complete.
    moveToLast();
    if (executed && m_macro_nest == 0) {
        ++m_num_commands;
        emit commandExecuted();
    }

    if (announces)
        afterChange(before);
    else if (isClean() != wasClean)
        emit cleanChanged(!wasClean);
}

void QtUndoStack::dropRedoTail()
{
    while (m_current_iter != lastIndex()) {
        // It is the present command that is asked, not the dropped one: a clean
        // state that is left by undoing and a new command is forgotten.
        const bool leavesClean = current() == m_clean_command;
        // A later command may get the address of a deleted one.
        const bool dropsClean = m_commands.back().get() == m_clean_command;
        if (m_have_clean_command && (leavesClean || dropsClean)) {
            m_have_clean_command = false;
            m_clean_command = nullptr;
        }
        m_commands.pop_back();
    }
}

/// True if a step may have been completed: not for a marker that opens a macro
/// or for one that was refused.
bool QtUndoStack::record(std::unique_ptr<QtCommand> command)
{
    switch (command->type()) {
    case QtCommand::MacroBegin:
        m_commands.push_back(std::move(command));
        ++m_macro_nest;
        return false;
    case QtCommand::MacroEnd:
        return recordMacroEnd(std::move(command));
    case QtCommand::Command:
        if (!mergesIntoCurrent(command.get()))
            m_commands.push_back(std::move(command));
        return true;
    }
    return false;
}

bool QtUndoStack::recordMacroEnd(std::unique_ptr<QtCommand> command)
{
    if (m_macro_nest == 0) {
        qWarning("QtUndoStack::push(): MacroEnd without MacroBegin");
        return false;
    }
    m_commands.push_back(std::move(command));
    --m_macro_nest;
    const int begin = findMacroBegin(lastIndex());
    m_commands.back()->setDescription(commandAt(begin)->description());
    return true;
}

bool QtUndoStack::mergesIntoCurrent(QtCommand *command) const
{
    QtCommand *const present = current();
    if (!command->canMerge() || !present || present->metaObject() != command->metaObject())
        return false;
    // A saved state must not melt into the next edit.
    if (m_have_clean_command && present == m_clean_command)
        return false;
    return present->mergeMeWith(command);
}

bool QtUndoStack::canUndo() const
{
    return m_macro_nest == 0 && m_current_iter >= 0;
}

bool QtUndoStack::canRedo() const
{
    return m_macro_nest == 0 && m_current_iter != lastIndex();
}

QString QtUndoStack::undoDescription() const
{
    return canUndo() ? current()->description() : QString();
}

QString QtUndoStack::redoDescription() const
{
    return canRedo() ? commandAt(m_current_iter + 1)->description() : QString();
}

QStringList QtUndoStack::undoList() const
{
    return descriptions(0, m_current_iter);
}

QStringList QtUndoStack::redoList() const
{
    return descriptions(m_current_iter + 1, lastIndex());
}

/// One row for each step that begins from \a first to \a last. An open macro
/// counts to the end of the list.
QStringList QtUndoStack::descriptions(int first, int last) const
{
    QStringList rows;
    for (int i = first; i <= last; ++i) {
        const QtCommand *const command = commandAt(i);
        check(command, "*it != 0", __LINE__);
        check(!command->isMacroEnd(), "!command->isMacroEnd()", __LINE__);
        rows.append(command->description());
        if (command->isMacroBegin())
            i = findMacroEnd(i);
    }
    return rows;
}

bool QtUndoStack::isClean() const
{
    return m_have_clean_command && m_clean_command == current();
}

void QtUndoStack::setClean()
{
    const bool wasClean = isClean();
    m_have_clean_command = true;
    m_clean_command = current();
    if (!wasClean)
        emit cleanChanged(true);
}

QAction *QtUndoStack::createUndoAction(QWidget *parent)
{
    return createUndoActionFor(this, parent, undoDescription());
}

QAction *QtUndoStack::createRedoAction(QWidget *parent)
{
    return createRedoActionFor(this, parent, redoDescription());
}

void QtUndoStack::undo(int count)
{
    const QtUndoState before = beforeChange();
    int done = 0;
    m_replaying = true;
    for (; done < count; ++done) {
        if (!canUndo()) {
            qWarning("QtUndoStack::undo(): can't undo");
            break;
        }
        QtCommand *const command = current();
        check(!command->isMacroBegin(), "!command->isMacroBegin()", __LINE__);
        if (command->isMacroEnd())
            undoMacro();
        else
            command->undo();
        --m_current_iter;
    }
    m_replaying = false;
    if (done == 0)
        return;
    afterChange(before);
    emit commandExecuted();
}

void QtUndoStack::redo(int count)
{
    const QtUndoState before = beforeChange();
    int done = 0;
    m_replaying = true;
    for (; done < count; ++done) {
        if (!canRedo()) {
            qWarning("QtUndoStack::redo(): can't redo");
            break;
        }
        QtCommand *const command = commandAt(++m_current_iter);
        check(!command->isMacroEnd(), "!command->isMacroEnd()", __LINE__);
        if (command->isMacroBegin())
            redoMacro();
        else
            command->redo();
    }
    m_replaying = false;
    if (done == 0)
        return;
    afterChange(before);
    emit commandExecuted();
}

void QtUndoStack::clear()
{
    const QtUndoState before = beforeChange();
    m_commands.clear();
    m_current_iter = -1;
    m_macro_nest = 0;
    m_num_commands = 0;
    m_have_clean_command = true;
    m_clean_command = nullptr;
    afterChange(before);
}

/// Takes back the macro whose end is current and leaves its begin current.
void QtUndoStack::undoMacro()
{
    check(m_macro_nest == 0, "m_macro_nest == 0", __LINE__);
    const QtCommand *const marker = current();
    check(marker, "m_current_iter.current() != 0", __LINE__);
    check(marker && marker->type() == QtCommand::MacroEnd,
          "m_current_iter.current()->type() == QtCommand::MacroEnd", __LINE__);
    m_current_iter = walkMacro(m_current_iter, -1, &QtCommand::undo);
}

/// Does the macro whose begin is current again and leaves its end current.
void QtUndoStack::redoMacro()
{
    check(m_macro_nest == 0, "m_macro_nest == 0", __LINE__);
    const QtCommand *const marker = current();
    check(marker, "m_current_iter.current() != 0", __LINE__);
    check(marker && marker->type() == QtCommand::MacroBegin,
          "m_current_iter.current()->type() == QtCommand::MacroBegin", __LINE__);
    m_current_iter = walkMacro(m_current_iter, 1, &QtCommand::redo);
}

/// Goes from the marker at \a index by \a step, 1 or -1, to the one that matches it,
/// and calls \a run, which may be null, for each command on the way. Stops short
/// at the end of the list if the macro is open.
int QtUndoStack::walkMacro(int index, int step, void (QtCommand::*run)()) const
{
    const QtCommand::Type inner = step > 0 ? QtCommand::MacroBegin : QtCommand::MacroEnd;
    int nest = 1;
    while (nest > 0) {
        const int next = index + step;
        QtCommand *const command = next <= lastIndex() ? commandAt(next) : nullptr;
        check(command, "command != 0", __LINE__);
        if (!command)
            break;
        index = next;
        if (!command->isCommand())
            nest += command->type() == inner ? 1 : -1;
        if (run)
            (command->*run)();
    }
    check(nest >= 0, "nest >= 0", __LINE__);
    return index;
}

int QtUndoStack::findMacroBegin(int index) const
{
    const QtCommand *const end = commandAt(index);
    check(end && end->isMacroEnd(), "command != 0 && command->isMacroEnd()", __LINE__);
    return walkMacro(index, -1, nullptr);
}

int QtUndoStack::findMacroEnd(int index) const
{
    const QtCommand *const begin = commandAt(index);
    check(begin && begin->isMacroBegin(), "command != 0 && command->isMacroBegin()", __LINE__);
    return walkMacro(index, 1, nullptr);
}

QtUndoState QtUndoStack::beforeChange() const
{
    return {canUndo(), canRedo(), isClean(), undoDescription(), redoDescription()};
}

void QtUndoStack::afterChange(const QtUndoState &before)
{
    const QtUndoState after = beforeChange();
    if (after.can_undo != before.can_undo)
        emit canUndoChanged(after.can_undo);
    if (after.can_redo != before.can_redo)
        emit canRedoChanged(after.can_redo);
    if (after.undo_description != before.undo_description)
        emit undoDescriptionChanged(after.undo_description);
    if (after.redo_description != before.redo_description)
        emit redoDescriptionChanged(after.redo_description);
    if (after.clean != before.clean)
        emit cleanChanged(after.clean);
    QtUndoManager::manager()->updateActions();
}

QtUndoManager *QtUndoManager::m_manager = nullptr;
unsigned QtUndoManager::m_undo_limit = 0;

QtUndoManager::QtUndoManager()
{
    updateActions();
    qApp->installEventFilter(this);
}

QtUndoManager *QtUndoManager::manager()
{
    if (!m_manager)
        m_manager = new QtUndoManager;
    return m_manager;
}

void QtUndoManager::associateView(QObject *view, QtUndoStack *stack)
{
    if (!view) {
        qWarning("QtUndoManager::associateView(): cannot associate a null object");
        return;
    }
    if (!stack) {
        qWarning("QtUndoManager::associateView(): cannot associate a null stack");
        return;
    }
    if (m_stack_map.contains(view)) {
        qWarning("QtUndoManager::associateView(): view already associated with a stack");
        return;
    }
    m_stack_map.insert(view, stack);
    connect(view, &QObject::destroyed, this, &QtUndoManager::viewDestroyed);
    updateActions();
}

void QtUndoManager::disassociateView(QObject *view)
{
    if (!view) {
        qWarning("QtUndoManager::disassociateView(): canot disassociate null object");
        return;
    }
    const auto found = m_stack_map.constFind(view);
    if (found == m_stack_map.cend()) {
        qWarning("QtUndoManager::disassociateView(): object has no associated stack");
        return;
    }
    disconnect(view, &QObject::destroyed, this, &QtUndoManager::viewDestroyed);
    m_stack_map.erase(found);
}

void QtUndoManager::viewDestroyed(QObject *view)
{
    const auto found = m_stack_map.constFind(view);
    if (found == m_stack_map.cend()) {
        qWarning("QtUndoManager::viewDestroyed(): no such view");
        return;
    }
    if (m_current_stack == *found)
        m_current_stack = nullptr;
    m_stack_map.erase(found);
    updateActions();
}

void QtUndoManager::stackDestroyed(QObject *stack)
{
    for (auto it = m_stack_map.cbegin(); it != m_stack_map.cend();) {
        if (static_cast<QObject *>(*it) != stack) {
            ++it;
            continue;
        }
        disconnect(it.key(), &QObject::destroyed, this, &QtUndoManager::viewDestroyed);
        it = m_stack_map.erase(it);
    }
    if (static_cast<QObject *>(m_current_stack) == stack)
        m_current_stack = nullptr;
    updateActions();
}

QtUndoStack *QtUndoManager::currentStack() const
{
    for (QWidget *widget = QApplication::focusWidget(); widget; widget = widget->parentWidget()) {
        const auto found = m_stack_map.constFind(widget);
        if (found != m_stack_map.cend()) {
            m_current_stack = *found;
            break;
        }
    }
    return m_current_stack;
}

bool QtUndoManager::canUndo() const
{
    const QtUndoStack *const stack = currentStack();
    return stack && stack->canUndo();
}

bool QtUndoManager::canRedo() const
{
    const QtUndoStack *const stack = currentStack();
    return stack && stack->canRedo();
}

QString QtUndoManager::undoDescription() const
{
    const QtUndoStack *const stack = currentStack();
    return stack ? stack->undoDescription() : QString();
}

QString QtUndoManager::redoDescription() const
{
    const QtUndoStack *const stack = currentStack();
    return stack ? stack->redoDescription() : QString();
}

QStringList QtUndoManager::undoList() const
{
    const QtUndoStack *const stack = currentStack();
    return stack ? stack->undoList() : QStringList();
}

QStringList QtUndoManager::redoList() const
{
    const QtUndoStack *const stack = currentStack();
    return stack ? stack->redoList() : QStringList();
}

void QtUndoManager::setUndoLimit(unsigned limit)
{
    m_undo_limit = limit;
}

unsigned QtUndoManager::undoLimit()
{
    return m_undo_limit;
}

QAction *QtUndoManager::createUndoAction(QWidget *parent)
{
    return createUndoActionFor(this, parent, m_undo_description);
}

QAction *QtUndoManager::createRedoAction(QWidget *parent)
{
    return createRedoActionFor(this, parent, m_redo_description);
}

bool QtUndoManager::eventFilter(QObject *, QEvent *event)
{
    if (event->type() == QEvent::FocusIn || event->type() == QEvent::FocusOut)
        updateActions();
    return false;
}

void QtUndoManager::undo(int count)
{
    QtUndoStack *const stack = currentStack();
    if (!stack || !stack->canUndo()) {
        qWarning("QtUndoManager::undo(): can't undo");
        return;
    }
    stack->undo(count);
}

void QtUndoManager::redo(int count)
{
    QtUndoStack *const stack = currentStack();
    if (!stack || !stack->canRedo()) {
        qWarning("QtUndoManager::redo(): can't redo");
        return;
    }
    stack->redo(count);
}

void QtUndoManager::updateActions()
{
    const QtUndoStack *const stack = currentStack();
    const bool undoEnabled = stack && stack->canUndo();
    const bool redoEnabled = stack && stack->canRedo();
    QString undoText = tr("Undo");
    if (undoEnabled)
        undoText += QLatin1Char(' ') + stack->undoDescription();
    QString redoText = tr("Redo");
    if (redoEnabled)
        redoText += QLatin1Char(' ') + stack->redoDescription();

    bool anyChanged = false;
    if (undoEnabled != m_can_undo) {
        m_can_undo = undoEnabled;
        anyChanged = true;
        emit canUndoChanged(undoEnabled);
    }
    if (undoText != m_undo_description) {
        m_undo_description = undoText;
        anyChanged = true;
        emit undoDescriptionChanged(undoText);
    }
    if (redoEnabled != m_can_redo) {
        m_can_redo = redoEnabled;
        anyChanged = true;
        emit canRedoChanged(redoEnabled);
    }
    if (redoText != m_redo_description) {
        m_redo_description = redoText;
        anyChanged = true;
        emit redoDescriptionChanged(redoText);
    }
    if (anyChanged)
        emit changed();
}

UndoRedoAction::UndoRedoAction(QObject *parent, const QString &name) : QAction(parent)
{
    setObjectName(name);
}

QtUndoListBox::QtUndoListBox(QWidget *parent, const QString &name) : QListWidget(parent)
{
    setObjectName(name);
    connect(QtUndoManager::manager(), &QtUndoManager::changed, this,
            &QtUndoListBox::updateContents);
    connect(this, &QListWidget::currentRowChanged, this, &QtUndoListBox::undoOrRedo);
    updateContents();
}

void QtUndoListBox::updateContents()
{
    if (m_dont_update)
        return;
    const QSignalBlocker blocker(this);
    const QtUndoManager *const manager = QtUndoManager::manager();
    QStringList rows{QLatin1Char('<') + tr("empty") + QLatin1Char('>')};
    rows += manager->undoList();
    m_undo_idx = int(rows.size()) - 1;
    rows += manager->redoList();

    QStringList present;
    for (int i = 0; i < count(); ++i)
        present.append(item(i)->text());
    if (rows != present) {
        clear();
        addItems(rows);
    }
    setCurrentRow(m_undo_idx);
}

void QtUndoListBox::undoOrRedo()
{
    const int row = currentRow();
    if (row == -1 || row == m_undo_idx)
        return;
    m_dont_update = true;
    if (row < m_undo_idx)
        QtUndoManager::manager()->undo(m_undo_idx - row);
    else
        QtUndoManager::manager()->redo(row - m_undo_idx);
    m_dont_update = false;
    updateContents();
}
