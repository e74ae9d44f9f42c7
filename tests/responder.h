#pragma once

#include <QAbstractButton>
#include <QApplication>
#include <QDialog>
#include <QMessageBox>
#include <QPointer>
#include <QStringList>
#include <QTimer>

#include <functional>

/// Answers modal dialogs from the event loop in the order in which they come. A
/// dialog that nobody expected is rejected and makes unexpected() true.
class Responder : public QObject
{
public:
    using Answer = std::function<void(QWidget *)>;

    Responder()
    {
        connect(&timer, &QTimer::timeout, this, &Responder::look);
        timer.start(5);
    }

    void expect(const Answer &answer) { answers.append(answer); }
    void expect(QMessageBox::StandardButton button)
    {
        expect([button](QWidget *dialog) {
            if (auto *const box = qobject_cast<QMessageBox *>(dialog))
                box->button(button)->click();
        });
    }
    /// Presses the button of this object name or text.
    void expect(const QString &button)
    {
        expect([button](QWidget *dialog) {
            const QList<QAbstractButton *> buttons = dialog->findChildren<QAbstractButton *>();
            for (QAbstractButton *const each : buttons) {
                if (each->objectName() == button || each->text() == button) {
                    each->click();
                    return;
                }
            }
        });
    }

    bool isDone() const { return answers.isEmpty() && !surprised; }
    /// What the message boxes said.
    QStringList texts;

private:
    void look()
    {
        QWidget *const dialog = QApplication::activeModalWidget();
        if (!dialog)
            return;
        if (dialog == last) {
            // The answer did not end it, and nothing else would.
            if (++waited > 400)
                giveUp(dialog);
            return;
        }
        // Keys go to a dialog only when it is active. One that never becomes so is
        // answered all the same.
        if (!dialog->isActiveWindow() && ++waited < 200)
            return;
        waited = 0;
        last = dialog;
        // A button may take a moment, and one dialog may be shown again and again.
        if (auto *const asking = qobject_cast<QDialog *>(dialog))
            connect(asking, &QDialog::finished, this, [this] { last.clear(); });
        if (const auto *const box = qobject_cast<QMessageBox *>(dialog))
            texts.append(box->text());
        if (answers.isEmpty()) {
            giveUp(dialog);
            return;
        }
        answers.takeFirst()(dialog);
    }

    void giveUp(QWidget *dialog)
    {
        surprised = true;
        waited = 0;
        if (auto *const asking = qobject_cast<QDialog *>(dialog))
            asking->reject();
    }

    QTimer timer;
    QList<Answer> answers;
    QPointer<QWidget> last;
    bool surprised = false;
    int waited = 0;
};
