#include "app/message.h"
#include "tests/apptest.h"

#include <QAbstractButton>
#include <QApplication>
#include <QMessageBox>
#include <QTest>
#include <QTimer>

#include <functional>

using namespace Qt::StringLiterals;
using namespace vesk;

/// Message boxes give back the button that was meant, also by keys.
class MessageTest : public AppTest
{
    Q_OBJECT
private slots:
    void initTestCase();
    void cleanupTestCase() { dropShell(); }
    void textButtons_data();
    void textButtons();
    void standardButtons_data();
    void standardButtons();
    void textsAreShownAsTheyAre();

private:
    /// Runs \a ask and presses \a key in its box, after \a look saw it.
    int answer(Qt::Key key, const std::function<int()> &ask,
               const std::function<void(QMessageBox *)> &look = {})
    {
        QTimer timer;
        connect(&timer, &QTimer::timeout, this, [key, look] {
            auto *const box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
            if (!box || box->objectName() != QLatin1String("message") || !box->isActiveWindow())
                return;
            if (look)
                look(box);
            QTest::keyClick(box->focusWidget(), key);
            // A key that means nothing leaves the box open.
            if (box->isVisible())
                box->done(77);
        });
        timer.start(10);
        return ask();
    }
};

void MessageTest::initTestCase()
{
    makeShell();
    QVERIFY(showActive(shell.get()));
}

void MessageTest::textButtons_data()
{
    const Rows<int, int, Qt::Key, int> row("defaultButton", "escapeButton", "key", "result");
    row("return presses the default", 2, 1, Qt::Key_Return, 2);
    row("escape presses its button", 2, 1, Qt::Key_Escape, 1);
    row("escape may be the first", 1, 0, Qt::Key_Escape, 0);
    // The box had to be closed by force, and says what it was told for escape.
    row("escape is ignored", 0, -1, Qt::Key_Escape, -1);
}

void MessageTest::textButtons()
{
    QFETCH(int, defaultButton);
    QFETCH(int, escapeButton);
    QFETCH(Qt::Key, key);
    QFETCH(int, result);
    QStringList shown;
    const int pressed = answer(
        key,
        [&] {
            return Message::warning(u"c"_s, u"m"_s, u"Delete"_s, u"Keep"_s, u"Cancel"_s,
                                    defaultButton, escapeButton);
        },
        [&shown](QMessageBox *box) {
            QMap<int, QString> byPlace;
            for (const QAbstractButton *const button : box->buttons())
                byPlace.insert(button->x(), button->text());
            shown = byPlace.values();
        });
    QCOMPARE(pressed, result);
    QCOMPARE(shown, (QStringList{u"Delete"_s, u"Keep"_s, u"Cancel"_s}));
}

void MessageTest::standardButtons_data()
{
    const Rows<QList<int>, Qt::Key, int> row("buttons", "key", "result");
    const int yes = QMessageBox::Yes;
    const int no = QMessageBox::No;
    const int cancel = QMessageBox::Cancel;
    row("the first is the default", {yes, no, cancel}, Qt::Key_Return, yes);
    row("escape is cancel", {yes, no, cancel}, Qt::Key_Escape, cancel);
    row("escape is no without cancel", {yes, no, 0}, Qt::Key_Escape, no);
    row("marked default", {yes, no | QMessageBox::Default, 0}, Qt::Key_Return, no);
    row("marked escape", {yes | QMessageBox::Escape, no, cancel}, Qt::Key_Escape, yes);
}

void MessageTest::standardButtons()
{
    QFETCH(QList<int>, buttons);
    QFETCH(Qt::Key, key);
    QFETCH(int, result);
    const auto ask = [&buttons] {
        return Message::warning(u"c"_s, u"m"_s, buttons.at(0), buttons.at(1), buttons.at(2));
    };
    QCOMPARE(answer(key, ask), result);
}

void MessageTest::textsAreShownAsTheyAre()
{
    const QString text = u"The file\n<b>a&amp;b</b>.c\nexists"_s;
    const int pressed = answer(
        Qt::Key_Return, [&text] { return Message::information(u"c"_s, text); },
        [&text](QMessageBox *box) {
            QCOMPARE(box->text(), text);
            QCOMPARE(box->textFormat(), Qt::PlainText);
            QCOMPARE(box->buttons().size(), 1);
        });
    QCOMPARE(pressed, 0);
}

QTEST_MAIN(MessageTest)
#include "tst_message.moc"
