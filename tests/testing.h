#pragma once

#include "tests/rows.h"

#include <QAbstractButton>
#include <QApplication>
#include <QByteArrayList>
#include <QDialog>
#include <QFile>
#include <QMessageBox>
#include <QMouseEvent>
#include <QPointer>
#include <QStringList>
#include <QTimer>
#include <QWidget>
#include <QWindow>

#include <functional>

/// Writes the whole file and gives back its path.
inline QString writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("cannot write %s", qPrintable(path));
    return path;
}

inline QByteArray readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no such file");
}

/// Empty if the bytes are the same, otherwise the first line that differs.
[[nodiscard]] inline QString difference(const QByteArray &actual, const QByteArray &expected)
{
    if (actual == expected)
        return {};
    const QByteArrayList got = actual.split('\n');
    const QByteArrayList wanted = expected.split('\n');
    const qsizetype shared = qMin(got.size(), wanted.size());
    qsizetype line = 0;
    while (line < shared && got.at(line) == wanted.at(line))
        ++line;
    const auto shown = [line](const QByteArrayList &lines) {
        return line < lines.size() ? QString::fromLatin1(lines.at(line).left(200).toPercentEncoding(
                                         " !\"#$&'()*+,/:;<=>?@[]^`{|}\\"))
                                   : QStringLiteral("(no line)");
    };
    return QStringLiteral("line %1 of %2: \"%3\" instead of \"%4\" (%5 lines)")
        .arg(line)
        .arg(got.size())
        .arg(shown(got), shown(wanted))
        .arg(wanted.size());
}

/// Shows \a window and gives it the keyboard; false if it doesn't come. A window
/// manager that is just starting may miss a request, so each is made again.
[[nodiscard]] inline bool showActive(QWidget *window)
{
    for (int i = 0; i < 20; ++i) {
        window->show();
        window->activateWindow();
        if (QTest::qWaitForWindowActive(window, 500))
            return true;
        if (!window->windowHandle()->isExposed())
            window->hide();
    }
    return false;
}

/// A move with the left button held, which the toolkit's own helper doesn't send.
inline void dragTo(QWidget *widget, const QPoint &pos, Qt::KeyboardModifiers modifiers = {})
{
    QMouseEvent move(QEvent::MouseMove, pos, widget->mapToGlobal(pos), Qt::NoButton, Qt::LeftButton,
                     modifiers);
    QCoreApplication::sendEvent(widget, &move);
}

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
