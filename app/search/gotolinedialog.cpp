#include "app/search/gotolinedialog.h"

#include "app/widgets/dialogparts.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

namespace vesk {

GotoLineDialog::GotoLineDialog(QWidget *parent) : QDialog(parent)
{
    auto *const all = new QVBoxLayout(this);
    auto *const row = new QHBoxLayout;
    QLabel *const label =
        DialogParts::label(this, QStringLiteral("TextLabel4"), tr("Line number:"));
    comboLine = DialogParts::textCombo(this, QStringLiteral("comboLine"));
    label->setBuddy(comboLine);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(6);
    row->addWidget(label);
    row->addWidget(comboLine);
    all->addLayout(row);
    all->addLayout(DialogParts::okAndCancel(this));
    DialogParts::finish(this, QStringLiteral("GotoLineDialog"), tr("Goto line..."), 230, 72);
}

} // namespace vesk
