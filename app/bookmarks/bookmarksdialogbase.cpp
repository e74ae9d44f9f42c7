#include "app/bookmarks/bookmarksdialogbase.h"

#include <QGridLayout>
#include <QHeaderView>
#include <QPushButton>
#include <QTreeWidget>

namespace vesk {

namespace {

QPushButton *button(QDialog *dialog, const char *name, const QString &text)
{
    auto *const made = new QPushButton(text, dialog);
    made->setObjectName(QString::fromLatin1(name));
    return made;
}

QTreeWidget *listView(QDialog *dialog, const QStringList &columns)
{
    auto *const list = new QTreeWidget(dialog);
    list->setObjectName(QStringLiteral("bookmarkListView"));
    list->setHeaderLabels(columns);
    list->setRootIsDecorated(false);
    list->setUniformRowHeights(true);
    list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    list->header()->setSectionsMovable(false);
    list->header()->setSectionResizeMode(QHeaderView::Stretch);
    return list;
}

} // namespace

BookmarksDialogBase::BookmarksDialogBase(QWidget *parent)
    : QDialog(parent)
    , bookmarkListView(listView(this, {tr("Name"), tr("URL")}))
    , addButton(button(this, "addButton", tr("&Add")))
    , editButton(button(this, "editButton", tr("&Edit")))
    , removeButton(button(this, "removeButton", tr("&Remove")))
    , buttonOk(button(this, "buttonOk", tr("&OK")))
    , buttonCancel(button(this, "buttonCancel", tr("&Cancel")))
{
    setObjectName(QStringLiteral("BookmarksDialog"));
    setWindowTitle(tr("Bookmarks"));
    setSizeGripEnabled(true);
    buttonOk->setDefault(true);
    connect(buttonOk, &QPushButton::clicked, this, &QDialog::accept);
    connect(buttonCancel, &QPushButton::clicked, this, &QDialog::reject);

    auto *const changes = new QVBoxLayout;
    changes->setSpacing(6);
    for (QPushButton *const each : {addButton, editButton, removeButton})
        changes->addWidget(each);
    changes->addStretch();
    auto *const ends = new QHBoxLayout;
    ends->setSpacing(6);
    ends->addStretch();
    ends->addWidget(buttonOk);
    ends->addWidget(buttonCancel);
    auto *const grid = new QGridLayout(this);
    grid->setContentsMargins(11, 11, 11, 11);
    grid->setSpacing(6);
    grid->addWidget(bookmarkListView, 0, 0);
    grid->addLayout(changes, 0, 1);
    grid->addLayout(ends, 1, 0, 1, 2);
    resize(QSize(520, 320).expandedTo(minimumSizeHint()));
}

} // namespace vesk
