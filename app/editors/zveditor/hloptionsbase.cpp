#include "app/editors/zveditor/hloptionsbase.h"

#include "app/widgets/colorcombo.h"
#include "app/widgets/dialogparts.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>

#include <climits>

namespace DialogParts = vesk::DialogParts;
using vesk::ColorCombo;

namespace zvwidgets {

namespace {

constexpr int spacing = 6; // pixels

template <typename Widget>
Widget *named(Widget *widget, const QString &name)
{
    widget->setObjectName(name);
    return widget;
}

QGridLayout *grid()
{
    auto *const made = new QGridLayout;
    made->setContentsMargins(0, 0, 0, 0);
    made->setSpacing(spacing);
    return made;
}

} // namespace

HLOptionsBase::HLOptionsBase(QWidget *parent, const char *name, bool modal, unsigned int flags)
    : QDialog(parent, Qt::WindowFlags(QFlag(flags)))
    , listHl(named(new QListWidget(this), QStringLiteral("listHl")))
{
    setModal(modal);
    auto *const all = new QGridLayout(this);
    all->addWidget(listHl, 0, 0, 2, 1);
    all->addLayout(definitionRows(), 0, 1);
    all->addLayout(itemRows(), 1, 1);
    all->addLayout(DialogParts::okAndCancel(this), 2, 0, 1, 2);
    all->setRowStretch(1, 1);
    all->setColumnStretch(0, 1);
    all->setColumnStretch(1, 2);
    buttonOk = findChild<QPushButton *>(QStringLiteral("buttonOk"));
    buttonOk->setText(tr("&OK"));
    buttonCancel = findChild<QPushButton *>(QStringLiteral("buttonCancel"));
    buttonCancel->setText(tr("&Cancel"));
    DialogParts::finish(this, QString::fromLatin1(name), tr("HL Options"), 640, 420);
}

/// What a definition has as a whole.
QGridLayout *HLOptionsBase::definitionRows()
{
    lineFileMask = named(new QLineEdit(this), QStringLiteral("lineFileMask"));
    // What is longer would be cut when it is shown.
    lineFileMask->setMaxLength(INT_MAX);
    QLabel *const label =
        DialogParts::label(this, QStringLiteral("labelFileMask"), tr("File masks :"));
    label->setBuddy(lineFileMask);
    labelAutodetection = DialogParts::label(this, QStringLiteral("labelAutodetection"),
                                            tr("File type autodetection:"));
    buttonAutodetection =
        named(new QPushButton(tr("Configure"), this), QStringLiteral("buttonAutodetection"));
    buttonAutodetection->setAutoDefault(false);
    QGridLayout *const rows = grid();
    rows->addWidget(label, 0, 0);
    rows->addWidget(lineFileMask, 0, 1);
    rows->addWidget(labelAutodetection, 1, 0);
    rows->addWidget(buttonAutodetection, 1, 1, Qt::AlignLeft);
    rows->setColumnStretch(1, 1);
    return rows;
}

/// What each of its items has.
QGridLayout *HLOptionsBase::itemRows()
{
    listItems = named(new QListWidget(this), QStringLiteral("listItems"));
    color = new ColorCombo(this, QStringLiteral("color"));
    bgColor = new ColorCombo(this, QStringLiteral("bgColor"));
    checkBold = named(new QCheckBox(tr("Bold"), this), QStringLiteral("checkBold"));
    checkItalic = named(new QCheckBox(tr("Italic"), this), QStringLiteral("checkItalic"));
    const auto label = [this](const char *name, const QString &text, QWidget *buddy) {
        QLabel *const made = DialogParts::label(this, QString::fromLatin1(name), text);
        made->setBuddy(buddy);
        return made;
    };
    QGridLayout *const rows = grid();
    rows->addWidget(label("labelItems", tr("Items"), listItems), 0, 0);
    rows->addWidget(listItems, 1, 0, 7, 1);
    rows->addWidget(label("labelColor", tr("Text color:"), color), 1, 1);
    rows->addWidget(color, 2, 1);
    rows->addWidget(label("labelBgColor", tr("Background color:"), bgColor), 3, 1);
    rows->addWidget(bgColor, 4, 1);
    rows->addWidget(checkBold, 5, 1);
    rows->addWidget(checkItalic, 6, 1);
    rows->setRowStretch(7, 1);
    rows->setColumnStretch(0, 1);
    return rows;
}

} // namespace zvwidgets
