#include "app/search/dialogparts.h"

#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>

namespace vesk::DialogParts {

namespace {

QPushButton *button(QDialog *dialog, const char *name, const QString &text, const char *shortcut)
{
    auto *const made = new QPushButton(text, dialog);
    made->setObjectName(QString::fromLatin1(name));
    made->setShortcut(QKeySequence(QString::fromLatin1(shortcut)));
    made->setAutoDefault(true);
    return made;
}

} // namespace

QComboBox *textCombo(QWidget *parent, const QString &name)
{
    auto *const combo = new QComboBox(parent);
    combo->setObjectName(name);
    combo->setEditable(true);
    combo->setInsertPolicy(QComboBox::NoInsert);
    combo->setCompleter(nullptr);
    combo->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    combo->setMinimumContentsLength(10);
    combo->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    return combo;
}

QCheckBox *option(QWidget *parent, const QString &name, const QString &text,
                  const QString &shortcut)
{
    auto *const box = new QCheckBox(text, parent);
    box->setObjectName(name);
    box->setShortcut(QKeySequence(shortcut));
    return box;
}

QLabel *label(QWidget *parent, const QString &name, const QString &text)
{
    auto *const made = new QLabel(text, parent);
    made->setObjectName(name);
    return made;
}

QLabel *note(QWidget *parent, const QString &name, const QString &text)
{
    QLabel *const made = label(parent, name, text);
    made->setTextFormat(Qt::PlainText);
    QFont bold = made->font();
    bold.setBold(true);
    made->setFont(bold);
    QPalette paper = made->palette();
    paper.setColor(QPalette::Window, QColor(242, 236, 200));
    paper.setColor(QPalette::WindowText, Qt::black);
    made->setPalette(paper);
    made->setAutoFillBackground(true);
    made->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    return made;
}

QHBoxLayout *okAndCancel(QDialog *dialog)
{
    auto *const row = new QHBoxLayout;
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(6);
    row->addStretch();
    QPushButton *const ok =
        button(dialog, "buttonOk", QCoreApplication::translate("DialogParts", "OK"), "Return");
    QPushButton *const cancel =
        button(dialog, "buttonCancel", QCoreApplication::translate("DialogParts", "Cancel"), "Esc");
    ok->setDefault(true);
    QObject::connect(ok, &QPushButton::clicked, dialog, &QDialog::accept);
    QObject::connect(cancel, &QPushButton::clicked, dialog, &QDialog::reject);
    row->addWidget(ok);
    row->addWidget(cancel);
    return row;
}

void finish(QDialog *dialog, const QString &name, const QString &caption, int width, int height)
{
    dialog->setObjectName(name);
    dialog->setWindowTitle(caption);
    dialog->setSizeGripEnabled(true);
    dialog->layout()->setContentsMargins(11, 11, 11, 11);
    dialog->layout()->setSpacing(6);
    dialog->resize(QSize(width, height).expandedTo(dialog->minimumSizeHint()));
}

} // namespace vesk::DialogParts
