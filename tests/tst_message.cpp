#include "app/message.h"
#include "app/settings.h"
#include "app/shell.h"

#include <QAbstractButton>
#include <QApplication>
#include <QMessageBox>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <functional>
#include <memory>

using namespace vesk;

/// Message boxes give back the button that was meant, also by keys.
class MessageTest : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void cleanupTestCase();
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

    QTemporaryDir dir;
    std::unique_ptr<Shell> shell;
};

void MessageTest::initTestCase()
{
    Settings::setFileName(dir.filePath(QStringLiteral("vesk.ini")));
    Settings::setKeyPrefix(QStringLiteral("/vesk"));
    shell = std::make_unique<Shell>();
    shell->show();
    QVERIFY(QTest::qWaitForWindowActive(shell.get()));
}

void MessageTest::cleanupTestCase()
{
    shell.reset();
    Settings::forceWrite();
}

void MessageTest::textButtons_data()
{
    QTest::addColumn<int>("defaultButton");
    QTest::addColumn<int>("escapeButton");
    QTest::addColumn<Qt::Key>("key");
    QTest::addColumn<int>("result");
    QTest::newRow("return presses the default") << 2 << 1 << Qt::Key_Return << 2;
    QTest::newRow("escape presses its button") << 2 << 1 << Qt::Key_Escape << 1;
    QTest::newRow("escape may be the first") << 1 << 0 << Qt::Key_Escape << 0;
    // The box had to be closed by force, and says what it was told for escape.
    QTest::newRow("escape is ignored") << 0 << -1 << Qt::Key_Escape << -1;
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
            return Message::warning(QStringLiteral("c"), QStringLiteral("m"),
                                    QStringLiteral("Delete"), QStringLiteral("Keep"),
                                    QStringLiteral("Cancel"), defaultButton, escapeButton);
        },
        [&shown](QMessageBox *box) {
            QMap<int, QString> byPlace;
            for (const QAbstractButton *const button : box->buttons())
                byPlace.insert(button->x(), button->text());
            shown = byPlace.values();
        });
    QCOMPARE(pressed, result);
    QCOMPARE(shown, (QStringList{QStringLiteral("Delete"), QStringLiteral("Keep"),
                                 QStringLiteral("Cancel")}));
}

void MessageTest::standardButtons_data()
{
    QTest::addColumn<QList<int>>("buttons");
    QTest::addColumn<Qt::Key>("key");
    QTest::addColumn<int>("result");
    const int yes = QMessageBox::Yes;
    const int no = QMessageBox::No;
    const int cancel = QMessageBox::Cancel;
    QTest::newRow("the first is the default")
        << QList<int>{yes, no, cancel} << Qt::Key_Return << yes;
    QTest::newRow("escape is cancel") << QList<int>{yes, no, cancel} << Qt::Key_Escape << cancel;
    QTest::newRow("escape is no without cancel") << QList<int>{yes, no, 0} << Qt::Key_Escape << no;
    QTest::newRow("marked default")
        << QList<int>{yes, no | QMessageBox::Default, 0} << Qt::Key_Return << no;
    QTest::newRow("marked escape")
        << QList<int>{yes | QMessageBox::Escape, no, cancel} << Qt::Key_Escape << yes;
}

void MessageTest::standardButtons()
{
    QFETCH(QList<int>, buttons);
    QFETCH(Qt::Key, key);
    QFETCH(int, result);
    const auto ask = [&buttons] {
        return Message::warning(QStringLiteral("c"), QStringLiteral("m"), buttons.at(0),
                                buttons.at(1), buttons.at(2));
    };
    QCOMPARE(answer(key, ask), result);
}

void MessageTest::textsAreShownAsTheyAre()
{
    const QString text = QStringLiteral("The file\n<b>a&amp;b</b>.c\nexists");
    const int pressed = answer(
        Qt::Key_Return, [&text] { return Message::information(QStringLiteral("c"), text); },
        [&text](QMessageBox *box) {
            QCOMPARE(box->text(), text);
            QCOMPARE(box->textFormat(), Qt::PlainText);
            QCOMPARE(box->buttons().size(), 1);
        });
    QCOMPARE(pressed, 0);
}

QTEST_MAIN(MessageTest)
#include "tst_message.moc"
