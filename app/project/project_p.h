#pragma once

#include "app/project/project.h"
#include "app/project/projectfile.h"

#include <QMap>
#include <QPair>
#include <QPointer>

class QDialog;

namespace vesk {

class RecentProjects;

struct Project::Private
{
    static Project *self;

    /// Both are pages of the left dock, which owns them.
    DomListView *view = nullptr;
    RecentProjects *recent = nullptr;
    /// Has no path while no project is open.
    ProjectFile file;
    QDomDocument doc;
    QDomNode root;
    QString lastAddDir;
    QString lastLoadDir;
    QString lastAddFilesDir;
    /// Tag to type; a new file gets the first tag, in their order, whose type matches.
    QMap<QString, FileType *> fileTypes;
    /// Offers the files of a form first, in the next choice of files.
    QString formMask;
    QPointer<QWidget> optionsWidget;
    QPointer<QDialog> optionsDialog;

    bool isStarting = true;
    /// The program is to end, and nothing is left to do for the file.
    bool isSettled = false;
    /// Captions and texts of the boxes for tellOfStart().
    QList<QPair<QString, QString>> startNotices;

    /// Forgets the project without a word.
    void drop();
};

} // namespace vesk
