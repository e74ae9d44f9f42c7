#include "app/search/replacedialog.h"

#include "app/widgets/dialogparts.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QVBoxLayout>

namespace vesk {

ReplaceDialog::ReplaceDialog(QWidget *parent) : QDialog(parent)
{
    auto *const all = new QVBoxLayout(this);
    const auto field = [this, all](const char *labelName, const QString &text, const char *name) {
        QLabel *const label = DialogParts::label(this, QString::fromLatin1(labelName), text);
        QComboBox *const combo = DialogParts::textCombo(this, QString::fromLatin1(name));
        label->setBuddy(combo);
        all->addWidget(label);
        all->addWidget(combo);
        return combo;
    };
    findString = field("TextLabel1", tr("Text to find:"), "findString");
    replaceString = field("TextLabel1_2", tr("Replace with:"), "replaceString");

    auto *const group = new QGroupBox(tr("Options"), this);
    group->setObjectName(QStringLiteral("ButtonGroup1"));
    const auto option = [group](const char *name, const QString &text, const char *shortcut) {
        return DialogParts::option(group, QString::fromLatin1(name), text,
                                   QString::fromLatin1(shortcut));
    };
    caseSensitive = option("caseSensitive", tr("&Case sensitive"), "Alt+C");
    replaceAll = option("replaceAll", tr("Replace &All"), "Alt+A");
    regExp = option("regExp", tr("&Regular expression"), "Alt+R");
    fromCursor = option("fromCursor", tr("&From cursor position"), "Alt+F");
    wholeWordsOnly = option("wholeWordsOnly", tr("&Whole words only"), "Alt+W");
    inSelection = option("inSelection", tr("&In selected area"), "Alt+I");
    auto *const grid = new QGridLayout(group);
    grid->setContentsMargins(11, 11, 11, 11);
    grid->setSpacing(6);
    grid->addWidget(caseSensitive, 0, 0);
    grid->addWidget(wholeWordsOnly, 1, 0);
    grid->addWidget(regExp, 2, 0);
    grid->addWidget(replaceAll, 0, 1);
    grid->addWidget(fromCursor, 1, 1);
    grid->addWidget(inSelection, 2, 1);
    all->addWidget(group);
    all->addStretch();
    all->addLayout(DialogParts::okAndCancel(this));

    connect(regExp, &QCheckBox::toggled, wholeWordsOnly, &QWidget::setDisabled);
    const QList<QWidget *> order = {findString,     replaceString, caseSensitive,
                                    wholeWordsOnly, regExp,        inSelection};
    for (qsizetype i = 1; i < order.size(); ++i)
        setTabOrder(order.at(i - 1), order.at(i));
    DialogParts::finish(this, QStringLiteral("ReplaceDialog"), tr("Replace..."), 347, 272);
}

} // namespace vesk
