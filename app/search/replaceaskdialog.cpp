#include "app/search/replaceaskdialog.h"

#include "app/widgets/dialogparts.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace vesk {

ReplaceAskDialog::ReplaceAskDialog(QWidget *parent) : QDialog(parent)
{
    auto *const all = new QVBoxLayout(this);
    all->addWidget(
        DialogParts::label(this, QStringLiteral("TextLabel2"), tr("Replace this occurrence of:")));
    labelText = DialogParts::note(this, QStringLiteral("labelText"), tr("Some text"));
    labelText->setMargin(4);
    all->addWidget(labelText);
    all->addStretch();

    auto *const row = new QHBoxLayout;
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(6);
    row->addStretch();
    const auto button = [this, row](const char *name, const QString &text, const char *shortcut,
                                    void (ReplaceAskDialog::*slot)()) {
        auto *const made = new QPushButton(text, this);
        made->setObjectName(QString::fromLatin1(name));
        if (shortcut)
            made->setShortcut(QKeySequence(QString::fromLatin1(shortcut)));
        connect(made, &QPushButton::clicked, this, slot);
        row->addWidget(made);
        return made;
    };
    button("buttonYes", tr("&Yes"), "Alt+Y", &ReplaceAskDialog::slotYes)->setDefault(true);
    button("buttonNo", tr("&No"), "Alt+N", &ReplaceAskDialog::slotNo);
    button("buttonAll", tr("&All"), nullptr, &ReplaceAskDialog::slotAll);
    button("buttonCancel", tr("&Cancel"), "Alt+C", &ReplaceAskDialog::slotCancel);
    all->addLayout(row);
    setObjectName(QStringLiteral("ReplaceAskDialog"));
    setWindowTitle(tr("Replace"));
    all->setContentsMargins(11, 11, 11, 11);
    all->setSpacing(6);
}

void ReplaceAskDialog::slotCancel()
{
    done(Cancel);
}

void ReplaceAskDialog::slotYes()
{
    done(Yes);
}

void ReplaceAskDialog::slotNo()
{
    done(No);
}

void ReplaceAskDialog::slotAll()
{
    done(All);
}

} // namespace vesk
