#include "app/editors/editor.h"

#include "app/utils.h"

#include <QCloseEvent>
#include <QPixmap>

namespace vesk {

struct Editor::Private
{
    QPixmap breakpointPixmap;
    QList<int> breakpoints;
    QString errorString;
};

Editor::Editor(QWidget *parent, const QString &name)
    : QWidget(parent), d(std::make_unique<Private>())
{
    setObjectName(name);
}

Editor::~Editor() = default;

bool Editor::hasFileName() const
{
    return !filename().isEmpty();
}

QString Editor::errorString() const
{
    return d->errorString;
}

void Editor::setErrorString(const QString &reason)
{
    d->errorString = reason;
}

void Editor::switchBreakpoint()
{
    const int line = cursorLine();
    if (!d->breakpoints.removeOne(line)) {
        addBreakpoint(line);
        return;
    }
    clearLineIcon(line);
}

void Editor::addBreakpoint(int line)
{
    if (d->breakpoints.contains(line))
        return;
    d->breakpoints.append(line);
    if (d->breakpointPixmap.isNull())
        d->breakpointPixmap = Utils::icon(QStringLiteral("16x16_Breakpoint"));
    setLineIcon(line, &d->breakpointPixmap);
}

void Editor::clearBreakpoints()
{
    for (const int line : std::as_const(d->breakpoints))
        clearLineIcon(line);
    d->breakpoints.clear();
}

QList<int> Editor::breakpoints() const
{
    return d->breakpoints;
}

void Editor::closeEvent(QCloseEvent *event)
{
    event->ignore();
    emit closing();
}

EditorFactory::~EditorFactory() = default;

EditorInterface::EditorInterface(Editor *editor) : handled(editor)
{}

} // namespace vesk
