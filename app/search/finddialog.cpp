#include "app/search/finddialog.h"

#include "app/widgets/dialogparts.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QVBoxLayout>

namespace vesk {

FindDialog::FindDialog(QWidget *parent) : QDialog(parent)
{
    auto *const all = new QVBoxLayout(this);
    QLabel *const label =
        DialogParts::label(this, QStringLiteral("TextLabel1"), tr("Text to find:"));
    findString = DialogParts::textCombo(this, QStringLiteral("findString"));
    label->setBuddy(findString);
    all->addWidget(label);
    all->addWidget(findString);

    auto *const group = new QGroupBox(tr("Options"), this);
    group->setObjectName(QStringLiteral("ButtonGroup1"));
    const auto option = [group](const char *name, const QString &text, const char *shortcut) {
        return DialogParts::option(group, QString::fromLatin1(name), text,
                                   QString::fromLatin1(shortcut));
    };
    wholeWordsOnly = option("wholeWordsOnly", tr("&Whole words only"), "Alt+W");
    fromCursor = option("fromCursor", tr("&From cursor"), "Alt+F");
    inSelection = option("inSelection", tr("&In selected area"), "Alt+I");
    caseSensitive = option("caseSensitive", tr("&Case sensitive"), "Alt+C");
    regExp = option("regExp", tr("&Regular expression"), "Alt+R");
    auto *const grid = new QGridLayout(group);
    grid->setContentsMargins(11, 11, 11, 11);
    grid->setSpacing(6);
    grid->addWidget(caseSensitive, 0, 0);
    grid->addWidget(fromCursor, 1, 0);
    grid->addWidget(regExp, 2, 0);
    grid->addWidget(wholeWordsOnly, 0, 1);
    grid->addWidget(inSelection, 1, 1);
    all->addWidget(group);
    all->addStretch();
    all->addLayout(DialogParts::okAndCancel(this));

    connect(regExp, &QCheckBox::toggled, wholeWordsOnly, &QWidget::setDisabled);
    const QList<QWidget *> order = {findString, caseSensitive,  fromCursor,
                                    regExp,     wholeWordsOnly, inSelection};
    for (qsizetype i = 1; i < order.size(); ++i)
        setTabOrder(order.at(i - 1), order.at(i));
    DialogParts::finish(this, QStringLiteral("FindDialog"), tr("Find..."), 287, 190);
}

} // namespace vesk
