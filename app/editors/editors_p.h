#pragma once

#include "app/editors/editor.h"
#include "app/editors/editors.h"

#include <QFrame>
#include <QHash>
#include <QPointer>
#include <QStringList>

#include <map>

class QMenu;

namespace vesk {

class Shell;

struct Editors::Private
{
    static Editors *self;

    explicit Private(Shell &window) : shell(window) {}

    /// Notes under which names the file of \a editor can be asked for.
    void noteFile(Editor *editor);
    void forgetFile(Editor *editor);

    Shell &shell;
    std::map<QString, std::unique_ptr<EditorFactory>> factories;
    EditorFactory *currentFactory = nullptr;
    QList<Editor *> list;
    Editor *currentEditor = nullptr;
    /// Every noted name of an open file: the path that the editor gives, and the
    /// one that is left when links are followed.
    QHash<QString, Editor *> editorOfName;
    QHash<const Editor *, QStringList> namesOfEditor;
    QMenu *editorsPopup = nullptr;
    QString lastOpenSaveDir;
    /// What the status line says of the files that could not be opened or saved.
    QStringList failures;
    QPointer<QFrame> closeButtonFrame;
    int gatherings = 0;
    bool isListChangePending = false;
};

/// While one lives the changes of the list are gathered, and are told once at its
/// end: each makes the tabs anew, and hundreds of files may be opened at once.
class Editors::Gathering
{
public:
    explicit Gathering(Editors *editors) : q(editors) { ++q->d->gatherings; }
    ~Gathering()
    {
        if (--q->d->gatherings == 0 && q->d->isListChangePending)
            q->updateTabNames();
    }
    Q_DISABLE_COPY_MOVE(Gathering)

private:
    Editors *const q;
};

} // namespace vesk
