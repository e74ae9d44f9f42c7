#include "app/widgets/dialogparts.h"

#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QShortcutEvent>
#include <QTextLayout>

namespace vesk::DialogParts {

namespace {

QPushButton *button(QDialog *dialog, const char *name, const QString &text)
{
    auto *const made = new QPushButton(text, dialog);
    made->setObjectName(QString::fromLatin1(name));
    made->setAutoDefault(true);
    return made;
}

/// Changes at its key. The toolkit's own waits a moment to show the press, in which
/// Return could have ended the dialog.
class OptionBox : public QCheckBox
{
public:
    using QCheckBox::QCheckBox;

protected:
    bool event(QEvent *event) override
    {
        const bool isKey = event->type() == QEvent::Shortcut &&
                           !static_cast<QShortcutEvent *>(event)->isAmbiguous();
        if (!isKey)
            return QCheckBox::event(event);
        setFocus(Qt::ShortcutFocusReason);
        click();
        return true;
    }
};

/// Wraps its text wherever a row is full, and shows all of it unless that takes a great
/// many rows.
class NoteLabel : public QLabel
{
public:
    using QLabel::QLabel;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override { return rowsFor(width) * rowHeight() + frame(); }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    static constexpr int mostRows = 12;
    static constexpr int widestInLetters = 60;

    int frame() const { return 2 * margin(); }
    int rowHeight() const { return fontMetrics().height(); }
    int rowsFor(int width) const;
    int layOut(QTextLayout *layout, int width) const;
};

/// Cuts the text into rows; returns where the row begins that is one too many, or the
/// length of the text.
int NoteLabel::layOut(QTextLayout *layout, int width) const
{
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout->setTextOption(option);
    layout->beginLayout();
    for (QTextLine row = layout->createLine(); row.isValid(); row = layout->createLine()) {
        const int number = layout->lineCount() - 1;
        row.setLineWidth(qMax(1, width - frame()));
        row.setPosition(QPointF(0, number * rowHeight()));
        if (number == mostRows)
            break;
    }
    layout->endLayout();
    return layout->lineCount() > mostRows ? layout->lineAt(mostRows).textStart()
                                          : int(layout->text().size());
}

int NoteLabel::rowsFor(int width) const
{
    QTextLayout layout(text(), font());
    layOut(&layout, width);
    return qBound(1, layout.lineCount(), mostRows);
}

QSize NoteLabel::sizeHint() const
{
    const int widest = widestInLetters * fontMetrics().averageCharWidth();
    const int wanted = fontMetrics().horizontalAdvance(text()) + 1;
    const int width = qMin(wanted, widest) + frame();
    return {width, heightForWidth(width)};
}

QSize NoteLabel::minimumSizeHint() const
{
    return {frame() + 1, frame() + rowHeight()};
}

void NoteLabel::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    QTextLayout layout(text(), font());
    const int shown = layOut(&layout, width());
    if (shown < layout.text().size()) {
        layout.setText(layout.text().left(shown).chopped(1) + QChar(0x2026));
        layOut(&layout, width());
    }
    layout.draw(&painter, QPointF(margin(), margin()));
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
    auto *const box = new OptionBox(text, parent);
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
    QLabel *const made = new NoteLabel(text, parent);
    made->setObjectName(name);
    made->setTextFormat(Qt::PlainText);
    QFont bold = made->font();
    bold.setBold(true);
    made->setFont(bold);
    QPalette paper = made->palette();
    paper.setColor(QPalette::Window, QColor(242, 236, 200));
    paper.setColor(QPalette::WindowText, Qt::black);
    made->setPalette(paper);
    made->setAutoFillBackground(true);
    return made;
}

QHBoxLayout *okAndCancel(QDialog *dialog)
{
    auto *const row = new QHBoxLayout;
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(6);
    row->addStretch();
    QPushButton *const ok =
        button(dialog, "buttonOk", QCoreApplication::translate("DialogParts", "OK"));
    QPushButton *const cancel =
        button(dialog, "buttonCancel", QCoreApplication::translate("DialogParts", "Cancel"));
    // The dialog itself takes Return and Esc. As shortcuts they would come before the open
    // list of a combo box, which they are meant for then.
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
