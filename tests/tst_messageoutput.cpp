#include "app/editors/editor.h"
#include "app/editors/editors.h"
#include "app/messages/messageitem.h"
#include "app/messages/messageoutput.h"
#include "tests/apptest.h"

#include <QPainter>
#include <QToolButton>
#include <QtTest>

#include <memory>

using namespace Qt::StringLiterals;
using namespace vesk;

/// The message list: what rows show, where they lead, and that neither their
/// number nor their text can hold up the window.
class TestMessageOutput : public AppTest
{
    Q_OBJECT
private slots:
    void initTestCase();
    void cleanupTestCase() { dropShell(); }
    void init();
    void plainTextAndLine_data();
    void plainTextAndLine();
    void coloursAreDrawnWhereTheyStand();
    void whatIsInSightDoesNotDependOnTheRest();
    void oldestRowGoes();
    void chunksBecomeRows();
    void tracebackLeadsToItsFile();
    void pressOpensTheFileAtTheLine();
    void manyRowsAreQuickAndFollowed();
    void hostileRowsAreDrawn();
    void clearButtonClears();

private:
    QImage drawn(const MessageItem &item, bool isClipped = false) const;

    MessageOutput *output = nullptr;
};

void TestMessageOutput::initTestCase()
{
    makeShell();
    Editors::self();
    output = MessageOutput::self();
    shell->rebuildUI();
    shell->show();
    output->makeVisible();
    QVERIFY(QTest::qWaitForWindowExposed(shell.get()));
}

void TestMessageOutput::init()
{
    output->clear();
    output->setMaxItems(500);
}

void TestMessageOutput::plainTextAndLine_data()
{
    const Rows<QString, QString, int> row("raw", "plain", "line");
    row("no directive", "a b", "a b", -1);
    row("first number is the line", "x 12: y 34", "x 12: y 34", 12);
    row("numbers of directives don't count", "#color{#909090}7: #color{black}x", "7: x", 7);
    row("shortest directive", "#color{red}}1", "}1", 1);
    row("unclosed", "#color{red 5", "#color{red 5", 5);
    row("directive in a directive", "#bgcolor{#color{red}x}", "x}", -1);
}

void TestMessageOutput::plainTextAndLine()
{
    QFETCH(QString, raw);
    QFETCH(QString, plain);
    QFETCH(int, line);
    const MessageItem item(nullptr, raw, -1, QString());
    QCOMPARE(item.text(), plain);
    QCOMPARE(item.line(), line);
}

QImage TestMessageOutput::drawn(const MessageItem &item, bool isClipped) const
{
    QImage image(300, 30, QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    painter.setFont(output->font());
    painter.setPen(Qt::black);
    if (isClipped)
        painter.setClipRect(image.rect());
    item.paint(&painter);
    return image;
}

void TestMessageOutput::coloursAreDrawnWhereTheyStand()
{
    const QFontMetrics metrics(output->font());
    const QImage image =
        drawn(MessageItem(nullptr, u"ab#bgcolor{#00ff00}cd#bgcolor{none such}ef"_s, -1, QString()));
    const int from = 3 + metrics.horizontalAdvance(u"ab"_s);
    const int to = from + metrics.horizontalAdvance(u"cd"_s);
    for (int x = 0; x < image.width(); ++x)
        QCOMPARE(image.pixelColor(x, 0) == QColor(Qt::green), x >= from && x < to);
}

void TestMessageOutput::whatIsInSightDoesNotDependOnTheRest()
{
    for (const QString &text :
         {u"il#color{blue}WM#bgcolor{red}"_s.repeated(200), QString(2000, u'i')}) {
        const MessageItem item(nullptr, text, -1, QString());
        QCOMPARE(drawn(item, true), drawn(item));
    }
}

void TestMessageOutput::oldestRowGoes()
{
    for (int i = 0; i < 503; ++i)
        output->insertItem(QString::number(i));
    QCOMPARE(output->count(), 500);
    QCOMPARE(output->item(0)->data(Qt::DisplayRole).toString(), u"3"_s);
    output->setMaxItems(10);
    output->insertItem(u"one more"_s);
    QCOMPARE(output->count(), 500);
}

void TestMessageOutput::chunksBecomeRows()
{
    output->showMessage(u"a\nb"_s);
    output->showMessage(u"c"_s);
    QCOMPARE(output->count(), 2);
    QCOMPARE(output->item(0)->data(Qt::DisplayRole).toString(), u"a"_s);
    QCOMPARE(output->item(1)->data(Qt::DisplayRole).toString(), u"bc"_s);
}

void TestMessageOutput::tracebackLeadsToItsFile()
{
    output->insertItem(u"  File \"x.py\", line 12, in f"_s);
    output->insertItem(u"    return 1"_s);
    const auto *row = static_cast<const MessageItem *>(output->item(0));
    QCOMPARE(row->fileName(), u"x.py"_s);
    QCOMPARE(row->line(), 12);
}

void TestMessageOutput::pressOpensTheFileAtTheLine()
{
    const QString file = write(u"some.txt"_s, QByteArray("line\n").repeated(50));
    output->insertItem(u"no place"_s);
    output->insertItem(u"gone"_s, 3, u"/no/such/file"_s);
    output->insertItem(u"here"_s, 20, file);
    QCoreApplication::processEvents();
    for (int row = 0; row < 3; ++row) {
        QTest::mouseClick(output->viewport(), Qt::LeftButton, Qt::NoModifier,
                          output->visualItemRect(output->item(row)).center());
        QCOMPARE(Editors::self()->current()->filename().isEmpty(), row < 2);
    }
    QCOMPARE(Editors::self()->current()->filename(), file);
    QCOMPARE(Editors::self()->current()->cursorLine(), 19);
    QVERIFY(!output->hasFocus());
}

void TestMessageOutput::manyRowsAreQuickAndFollowed()
{
    for (int i = 0; i < 100000; ++i)
        output->insertItem(u"row %1"_s.arg(i), i, u"/some/file"_s);
    QCOMPARE(output->count(), 500);
    QListWidgetItem *last = output->item(499);
    QCOMPARE(last->data(Qt::DisplayRole).toString(), u"row 99999"_s);
    QTRY_VERIFY(output->viewport()->rect().intersects(output->visualItemRect(last)));
}

void TestMessageOutput::hostileRowsAreDrawn()
{
    output->insertItem(u"#color{"_s.repeated(200000));
    output->insertItem(u"#color{nonsense}#bgcolor{}"_s.repeated(20000));
    output->insertItem(QString(10 * 1024 * 1024, u'x'));
    output->insertItem(u"a\nb\tc\r\u2028\x01"_s + QChar(0) + QChar(0xd800) + u"\x7f"_s);
    QCOMPARE(output->count(), 4);
    output->viewport()->repaint();
    QCOMPARE(static_cast<MessageItem *>(output->item(2))->text().size(), 10 * 1024 * 1024);
    // Rows of megabytes drop older ones before they fill the memory.
    for (int i = 0; i < 20; ++i)
        output->insertItem(QString(10 * 1024 * 1024, u'x'));
    QVERIFY(output->count() < 10);
    QTRY_VERIFY(output->viewport()->rect().intersects(
        output->visualItemRect(output->item(output->count() - 1))));
}

void TestMessageOutput::clearButtonClears()
{
    output->insertItem(u"x"_s);
    QTest::mouseClick(output->findChild<QToolButton *>(u"buttonClear"_s), Qt::LeftButton);
    QCOMPARE(output->count(), 0);
}

QTEST_MAIN(TestMessageOutput)
#include "tst_messageoutput.moc"
