#pragma once

#include <QAction>
#include <QHash>
#include <QListWidget>
#include <QObject>
#include <QString>
#include <QStringList>

#include <memory>
#include <vector>

class QtUndoStack;

/// One undoable step. Subclasses hold what they need to do and take back their
/// change; the stack runs them, nobody else does. Every subclass needs
/// Q_OBJECT: the stack tells command classes apart by their meta objects.
/// The markers that open and close a macro are plain QtCommands.
class QtCommand : public QObject
{
    Q_OBJECT
public:
    enum Type
    {
        Command = 0,
        MacroBegin = 1,
        MacroEnd = 2
    };

    /// \a canMerge tells whether the stack may offer this command to its
    /// predecessor for merging.
    QtCommand(const QString &description, bool canMerge);
    QtCommand(Type type, const QString &description, bool canMerge);
    ~QtCommand() override;

    virtual void redo();
    virtual void undo();
    /// Takes over what \a command, already executed, did after this one; the
    /// stack then deletes \a command. False if the two stay separate steps.
    virtual bool mergeMeWith(QtCommand *command);

    QString description() const { return m_described ? m_description : describe(); }
    void setDescription(const QString &description);
    bool canMerge() const { return m_can_merge; }
    void setCanMerge(bool canMerge) { m_can_merge = canMerge; }
    Type type() const { return m_type; }
    bool isMacroBegin() const { return m_type == MacroBegin; }
    bool isMacroEnd() const { return m_type == MacroEnd; }
    bool isCommand() const { return m_type == Command; }

protected:
    /// What the description is as long as none was given or set. A history may
    /// hold a great many commands, of which few are ever shown.
    virtual QString describe() const { return QString(); }
    /// Makes describe() count again.
    void resetDescription();

private:
    bool m_can_merge;
    bool m_described;
    Type m_type;
    QString m_description;
};

/// What a stack publishes, taken before a change and compared after it.
struct QtUndoState
{
    bool can_undo;
    bool can_redo;
    bool clean;
    QString undo_description;
    QString redo_description;
};

/// The history of one document. A command is executed by pushing it. Commands
/// between a MacroBegin and its MacroEnd are one step; while a macro is open
/// undo and redo are refused and nothing but the clean state is announced.
class QtUndoStack : public QObject
{
    Q_OBJECT
public:
    /// Associates the new stack with \a parent in the manager.
    explicit QtUndoStack(QObject *parent, const QString &name = QString());
    ~QtUndoStack() override;

    /// Takes ownership of \a command, executes it and records it; whatever was
    /// undone before is dropped. A MacroEnd that closes nothing is refused.
    void push(QtCommand *command);

    bool canUndo() const;
    bool canRedo() const;
    /// Null if there is nothing to undo.
    QString undoDescription() const;
    /// Null if there is nothing to redo.
    QString redoDescription() const;
    /// The steps in force, oldest first; a macro is one row.
    QStringList undoList() const;
    /// The steps undone, the next one to redo first; a macro is one row.
    QStringList redoList() const;
    bool isClean() const;
    bool hasOpenMacro() const { return m_macro_nest > 0; }
    /// True while a macro is open or while undo() or redo() runs commands: more
    /// is to come before commandExecuted() tells of it.
    bool isExecuting() const { return hasOpenMacro() || m_replaying; }
    /// The command that the next undo takes back, in an open macro its last one;
    /// null if there is none. Owned by the stack.
    QtCommand *current() const { return commandAt(m_current_iter); }

    QAction *createUndoAction(QWidget *parent);
    QAction *createRedoAction(QWidget *parent);

public slots:
    void undo(int count = 1);
    void redo(int count = 1);
    /// Forgets all commands and open macros. The empty stack is clean.
    virtual void clear();
    void setClean();

signals:
    void cleanChanged(bool isClean);
    /// A step was done, undone or redone: a command outside macros or a whole
    /// macro. Within push() it comes before the signals of the new state.
    void commandExecuted();
    void undoDescriptionChanged(const QString &description);
    void redoDescriptionChanged(const QString &description);
    void canUndoChanged(bool canUndo);
    void canRedoChanged(bool canRedo);

private:
    using Commands = std::vector<std::unique_ptr<QtCommand>>;

    QtCommand *commandAt(int index) const;
    int lastIndex() const { return int(m_commands.size()) - 1; }
    void moveToLast() { m_current_iter = lastIndex(); }
    void dropRedoTail();
    bool record(std::unique_ptr<QtCommand> command);
    bool recordMacroEnd(std::unique_ptr<QtCommand> command);
    bool mergesIntoCurrent(QtCommand *command) const;
    void undoMacro();
    void redoMacro();
    int walkMacro(int index, int step, void (QtCommand::*run)()) const;
    int findMacroBegin(int index) const;
    int findMacroEnd(int index) const;
    QStringList descriptions(int first, int last) const;
    QtUndoState beforeChange() const;
    void afterChange(const QtUndoState &before);

    Commands m_commands;
    /// Index of the command the next undo takes back; -1 when all is undone.
    int m_current_iter = -1;
    unsigned m_num_commands = 0;
    int m_macro_nest = 0;
    bool m_replaying = false;
    bool m_have_clean_command = true;
    /// Null is the empty history. Compared, never followed.
    const QtCommand *m_clean_command = nullptr;
};

/// Knows which widget shows which history and publishes the state of the stack
/// that has the keyboard focus. With the focus elsewhere the last stack stays
/// in force. Made by the first call of manager(), after the QApplication, and
/// never destroyed.
class QtUndoManager : public QObject
{
    Q_OBJECT
public:
    static QtUndoManager *manager();

    /// \a view or one of its children having the focus brings \a stack in
    /// force. Neither is owned, either may die first. A view keeps the stack it
    /// got first.
    void associateView(QObject *view, QtUndoStack *stack);
    void disassociateView(QObject *view);

    /// These answer for the stack in force; its own descriptions, without the
    /// leading word that the signals' texts have.
    bool canUndo() const;
    bool canRedo() const;
    QString undoDescription() const;
    QString redoDescription() const;
    QStringList undoList() const;
    QStringList redoList() const;

    /// Only remembered: no history is cut at the limit.
    static void setUndoLimit(unsigned limit);
    static unsigned undoLimit();

    QAction *createUndoAction(QWidget *parent);
    QAction *createRedoAction(QWidget *parent);

    bool eventFilter(QObject *watched, QEvent *event) override;

public slots:
    void undo(int count = 1);
    void redo(int count = 1);
    /// Publishes the state of the stack in force, as far as it changed.
    void updateActions();

signals:
    void changed();
    /// The text for an undo action: "Undo" and the description of the step.
    void undoDescriptionChanged(const QString &text);
    /// The text for a redo action: "Redo" and the description of the step.
    void redoDescriptionChanged(const QString &text);
    void canUndoChanged(bool canUndo);
    void canRedoChanged(bool canRedo);

private slots:
    void stackDestroyed(QObject *stack);
    void viewDestroyed(QObject *view);

private:
    /// It connects its own end to stackDestroyed().
    friend class QtUndoStack;

    QtUndoManager();
    QtUndoStack *currentStack() const;

    QHash<QObject *, QtUndoStack *> m_stack_map;
    /// Follows the focus whenever it is asked for.
    mutable QtUndoStack *m_current_stack = nullptr;
    bool m_can_undo = false;
    bool m_can_redo = false;
    QString m_undo_description;
    QString m_redo_description;

    static QtUndoManager *m_manager;
    static unsigned m_undo_limit;
};

/// An action whose text a signal can set.
class UndoRedoAction : public QAction
{
    Q_OBJECT
public:
    UndoRedoAction(QObject *parent, const QString &name);

public slots:
    void setTextSlot(const QString &text) { setText(text); }
};

/// Lists the history of the stack in force; choosing a row undoes or redoes
/// up to it. The first row stands for the state before the first step.
class QtUndoListBox : public QListWidget
{
    Q_OBJECT
public:
    explicit QtUndoListBox(QWidget *parent = nullptr, const QString &name = QString());

private slots:
    void updateContents();
    void undoOrRedo();

private:
    /// Row of the present state.
    int m_undo_idx = 0;
    bool m_dont_update = false;
};
