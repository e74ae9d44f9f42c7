#include "app/bookmarks/editbookmarkdialog.h"

#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace vesk {

EditBookmarkDialog::EditBookmarkDialog(QWidget *parent)
    : QDialog(parent)
    , nameLineEdit(new QLineEdit(this))
    , urlLineEdit(new QLineEdit(this))
    , buttonOk(new QPushButton(tr("&OK"), this))
    , buttonCancel(new QPushButton(tr("&Cancel"), this))
{
    setObjectName(QStringLiteral("EditBookmarkDialog"));
    setWindowTitle(tr("Bookmark..."));
    setSizeGripEnabled(true);
    nameLineEdit->setObjectName(QStringLiteral("nameLineEdit"));
    urlLineEdit->setObjectName(QStringLiteral("urlLineEdit"));
    buttonOk->setObjectName(QStringLiteral("buttonOk"));
    buttonCancel->setObjectName(QStringLiteral("buttonCancel"));
    buttonOk->setDefault(true);
    connect(buttonOk, &QPushButton::clicked, this, &QDialog::accept);
    connect(buttonCancel, &QPushButton::clicked, this, &QDialog::reject);

    auto *const grid = new QGridLayout(this);
    grid->setContentsMargins(11, 11, 11, 11);
    grid->setSpacing(6);
    grid->addWidget(new QLabel(tr("Name:"), this), 0, 0);
    grid->addWidget(nameLineEdit, 0, 1);
    grid->addWidget(new QLabel(tr("URL:"), this), 1, 0);
    grid->addWidget(urlLineEdit, 1, 1);
    auto *const ends = new QHBoxLayout;
    ends->setSpacing(6);
    ends->addStretch();
    ends->addWidget(buttonOk);
    ends->addWidget(buttonCancel);
    grid->addLayout(ends, 2, 0, 1, 2);
    resize(QSize(420, 0).expandedTo(minimumSizeHint()));
}

bool EditBookmarkDialog::ask(const QString &name, const QString &url)
{
    nameLineEdit->setText(name);
    urlLineEdit->setText(url);
    nameLineEdit->setFocus();
    return exec() == Accepted;
}

} // namespace vesk
