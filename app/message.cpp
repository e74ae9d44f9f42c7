#include "app/message.h"

#include "app/mainwindow.h"

#include <QAbstractButton>
#include <QCoreApplication>
#include <QMessageBox>
#include <QPushButton>

namespace vesk {

namespace {

void prepare(QMessageBox &box, QMessageBox::Icon icon, const QString &caption,
             const QString &message)
{
    box.setObjectName(QStringLiteral("message"));
    box.setTextFormat(Qt::PlainText);
    box.setIcon(icon);
    box.setWindowTitle(caption);
    box.setText(message);
}

/// The number of the pressed one of \a texts, counted without the empty ones.
int ask(QMessageBox::Icon icon, const QString &caption, const QString &message,
        const QStringList &texts, int defaultButton, int escapeButton)
{
    QMessageBox box(MainWindow::self());
    prepare(box, icon, caption, message);
    // One role for all keeps them in the given order.
    QList<QPushButton *> buttons;
    for (const QString &text : texts) {
        if (!text.isEmpty())
            buttons.append(box.addButton(text, QMessageBox::ActionRole));
    }
    if (buttons.isEmpty())
        buttons.append(
            box.addButton(QCoreApplication::translate("Message", "OK"), QMessageBox::ActionRole));
    if (defaultButton >= 0 && defaultButton < buttons.size())
        box.setDefaultButton(buttons.at(defaultButton));
    if (escapeButton >= 0 && escapeButton < buttons.size())
        box.setEscapeButton(buttons.at(escapeButton));
    box.exec();
    for (int i = 0; i < buttons.size(); ++i) {
        if (buttons.at(i) == box.clickedButton())
            return i;
    }
    return escapeButton;
}

} // namespace

int Message::information(const QString &caption, const QString &message)
{
    return ask(QMessageBox::Information, caption, message, {}, 0, -1);
}

int Message::information(const QString &caption, const QString &message, const QString &button0Text,
                         const QString &button1Text, const QString &button2Text, int defaultButton,
                         int escapeButton)
{
    return ask(QMessageBox::Information, caption, message, {button0Text, button1Text, button2Text},
               defaultButton, escapeButton);
}

int Message::warning(const QString &caption, const QString &message, int button0, int button1,
                     int button2)
{
    QMessageBox box(MainWindow::self());
    prepare(box, QMessageBox::Warning, caption, message);
    QPushButton *first = nullptr;
    for (const int code : {button0, button1, button2}) {
        const auto standard = QMessageBox::StandardButton(code & ~QMessageBox::FlagMask);
        if (standard == QMessageBox::NoButton)
            continue;
        QPushButton *const button = box.addButton(standard);
        if (!first || code & QMessageBox::Default)
            box.setDefaultButton(button);
        if (code & QMessageBox::Escape)
            box.setEscapeButton(button);
        if (!first)
            first = button;
    }
    return box.exec();
}

int Message::warning(const QString &caption, const QString &message, const QString &button0Text,
                     const QString &button1Text, const QString &button2Text, int defaultButton,
                     int escapeButton)
{
    return ask(QMessageBox::Warning, caption, message, {button0Text, button1Text, button2Text},
               defaultButton, escapeButton);
}

void Message::critical(const QString &caption, const QString &message, const QString &buttonText)
{
    ask(QMessageBox::Critical, caption, message, {buttonText}, 0, 0);
}

} // namespace vesk
