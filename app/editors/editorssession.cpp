#include "app/editors/editors.h"

#include "app/editors/editors_p.h"
#include "app/editors/zveditor/interruptedsaves.h"
#include "app/settings.h"

#include <QFileInfo>
#include <QTimer>

#include <algorithm>

namespace vesk {

namespace {

constexpr QLatin1String openedFilesKey("/editors/openedFiles");
constexpr QLatin1String openedFilePosesKey("/editors/openedFilePoses");
constexpr QLatin1String openedCurrentKey("/editors/openedCurrent");

} // namespace

void Editors::storeSession() const
{
    QStringList paths;
    QStringList positions;
    const QList<Editor *> all = editors();
    for (const Editor *editor : all) {
        paths.append(editor->filename());
        positions.append(QString::number(editor->cursorLine()) + u':' +
                         QString::number(editor->cursorColumn()));
    }
    Settings::write(openedCurrentKey, current()->filename());
    Settings::write(openedFilesKey, paths);
    Settings::write(openedFilePosesKey, positions);
}

void Editors::loadSessionFiles()
{
    const QStringList paths = Settings::readList(openedFilesKey);
    const Gathering gathering(this);
    for (const QString &path : paths) {
        if (QFileInfo::exists(path))
            open(path);
    }
}

void Editors::loadSession()
{
    // The windows come up first.
    QTimer::singleShot(1, this, &Editors::loadSessionCurrent);
}

/// The stored positions are not applied: reopened files start at the top, and the
/// program relies on nothing else.
void Editors::loadSessionCurrent()
{
    // The window may have been closed meanwhile.
    if (!current())
        return;
    const QString path = Settings::read(openedCurrentKey);
    if (QFileInfo::exists(path)) {
        const Gathering gathering(this);
        open(path);
    }
    repeatFailures();
}

void Editors::settleInterruptedSaves()
{
    // The window may have been closed meanwhile.
    if (!current())
        return;
    const QStringList changed = InterruptedSaves::settle();
    const QList<Editor *> all = editors();
    for (Editor *const editor : all) {
        const QFileInfo shown(editor->filename());
        const bool hasChanged =
            std::any_of(changed.begin(), changed.end(),
                        [&shown](const QString &path) { return QFileInfo(path) == shown; });
        if (hasChanged && !editor->isModified())
            editor->open(editor->filename());
    }
}

} // namespace vesk
