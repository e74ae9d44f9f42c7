#include "app/editors/editor.h"
#include "app/editors/editors.h"
#include "app/messages/messageitem.h"
#include "app/messages/messageoutput.h"
#include "tests/apptest.h"

#include <QPainter>
#include <QScrollBar>
#include <QToolButton>
#include <QtTest>

#include <functional>
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
    void coloursAreDrawnWhereTheyStand_data();
    void coloursAreDrawnWhereTheyStand();
    void whatIsInSightDoesNotDependOnTheRest();
    void oldestRowGoes();
    void othersTextIsShownAsItIs();
    void chunksBecomeRows();
    void tracebackLeadsToItsFile_data();
    void tracebackLeadsToItsFile();
    void pressOpensTheFileAtTheLine();
    void lastRowsAreKeptAndFollowed();
    void listIsNeverBlankWhileRowsArrive();
    void rowsAreShownWhileMoreArrive();
    void farEndOfALongRowIsDrawn_data();
    void farEndOfALongRowIsDrawn();
    void hostileRowsAreDrawn();
    void clearButtonClears();

private:
    QImage drawn(const MessageItem &item, bool isClipped = false) const;
    bool isShown(int row) const;
    /// Whether a pixel of the list, but for the clear button, is of \a color.
    bool shows(const std::function<bool(QRgb)> &color) const;

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

bool TestMessageOutput::isShown(int row) const
{
    return output->viewport()->rect().intersects(output->visualItemRect(output->item(row)));
}

bool TestMessageOutput::shows(const std::function<bool(QRgb)> &color) const
{
    const QImage image = output->viewport()->grab().toImage();
    for (int y = 0; y < image.height() / 2; ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (color(image.pixel(x, y)))
                return true;
        }
    }
    return false;
}

void TestMessageOutput::coloursAreDrawnWhereTheyStand_data()
{
    const Rows<QString, QStringList, QList<QColor>, QList<QColor>> row("raw", "texts", "pens",
                                                                       "backgrounds");
    const QColor none;
    row("plain", u"some text"_s, {u"some text"_s}, {Qt::black}, {none});
    row("two pens", u"ab#color{#ff0000}cd#color{blue}ef"_s, {u"ab"_s, u"cd"_s, u"ef"_s},
        {Qt::black, Qt::red, Qt::blue}, {none, none, none});
    row("a background ends at a colour that is none",
        u"ab#bgcolor{#00ff00}cd#bgcolor{none such}ef"_s, {u"ab"_s, u"cd"_s, u"ef"_s},
        {Qt::black, Qt::black, Qt::black}, {none, Qt::green, none});
    row("pen and background", u"#bgcolor{#d0d0d0} #color{red}x"_s, {u" "_s, u"x"_s},
        {Qt::black, Qt::red}, {QColor(0xd0d0d0), QColor(0xd0d0d0)});
}

void TestMessageOutput::coloursAreDrawnWhereTheyStand()
{
    QFETCH(QString, raw);
    QFETCH(QStringList, texts);
    QFETCH(QList<QColor>, pens);
    QFETCH(QList<QColor>, backgrounds);
    QImage expected(300, 30, QImage::Format_RGB32);
    expected.fill(Qt::white);
    QPainter painter(&expected);
    painter.setFont(output->font());
    const QFontMetrics metrics = painter.fontMetrics();
    int x = 3;
    for (int i = 0; i < texts.size(); ++i) {
        const int width = metrics.horizontalAdvance(texts[i]);
        if (backgrounds[i].isValid())
            painter.fillRect(x, 0, width, metrics.height() + metrics.ascent() + metrics.descent(),
                             backgrounds[i]);
        painter.setPen(pens[i]);
        painter.drawText(x, metrics.ascent() + metrics.leading() / 2, texts[i]);
        x += width;
    }
    painter.end();
    QCOMPARE(drawn(MessageItem(nullptr, raw, -1, QString())), expected);
}

void TestMessageOutput::whatIsInSightDoesNotDependOnTheRest()
{
    for (const QString &text :
         {u"il#color{blue}WM#bgcolor{red}"_s.repeated(200), QString(20000, u'i')}) {
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

void TestMessageOutput::othersTextIsShownAsItIs()
{
    const QString text = u"#color{#0000ff}\u2588#bgcolor{#00ff00}  File \"x.py\", line 12, in f"_s;
    output->insertText(u"#color{#ff0000}"_s, text, 7, u"/some/file"_s);
    output->insertItem(u"next"_s);
    const auto *const row = static_cast<const MessageItem *>(output->item(0));
    QCOMPARE(row->text(), text);
    QCOMPARE(row->fileName(), u"/some/file"_s);
    QCOMPARE(row->line(), 7);
    QTRY_VERIFY(isShown(1));
    QVERIFY(shows([](QRgb pixel) { return pixel == qRgb(255, 0, 0); }));
    QVERIFY(!shows([](QRgb pixel) { return pixel == qRgb(0, 255, 0); }));
}

void TestMessageOutput::chunksBecomeRows()
{
    output->showMessage(u"a\nb"_s);
    output->showMessage(u"c"_s);
    QCOMPARE(output->count(), 2);
    QCOMPARE(output->item(0)->data(Qt::DisplayRole).toString(), u"a"_s);
    QCOMPARE(output->item(1)->data(Qt::DisplayRole).toString(), u"bc"_s);
}

void TestMessageOutput::tracebackLeadsToItsFile_data()
{
    const Rows<QStringList, QString, int> row("chunks", "first", "bound");
    const QString line = u"  File \"x.py\", line 12, in f"_s;
    row("whole rows", {}, line, 1);
    row("a chunk", {line + u"\n    return 1\n"_s}, line, 1);
    row("a line that comes in two", {line.left(15), line.mid(15) + u"\nx"_s}, line, 1);
    // Meant: a chunk binds the rows above its traceback line as well.
    row("a chunk that begins above", {u"Trace"_s, u"back:\n"_s + line + u"\n"_s}, u"Traceback:"_s,
        2);
}

void TestMessageOutput::tracebackLeadsToItsFile()
{
    QFETCH(QStringList, chunks);
    QFETCH(QString, first);
    QFETCH(int, bound);
    for (const QString &chunk : std::as_const(chunks))
        output->showMessage(chunk);
    if (chunks.isEmpty()) {
        output->insertItem(first);
        output->insertItem(u"    return 1"_s);
    }
    QCOMPARE(static_cast<const MessageItem *>(output->item(0))->text(), first);
    for (int i = 0; i < output->count(); ++i) {
        const auto *row = static_cast<const MessageItem *>(output->item(i));
        const bool isBound = i < bound;
        QCOMPARE(row->fileName(), isBound ? u"x.py"_s : QString());
        QCOMPARE(row->line() == 12, isBound);
    }
}

void TestMessageOutput::pressOpensTheFileAtTheLine()
{
    const QString file = write(u"some.txt"_s, QByteArray("line\n").repeated(50));
    output->insertItem(u"no place"_s);
    output->insertItem(u"gone"_s, 3, u"/no/such/file"_s);
    output->insertItem(u"here"_s, 20, file);
    QTRY_VERIFY(isShown(2));
    for (int row = 0; row < 3; ++row) {
        QTest::mouseClick(output->viewport(), Qt::LeftButton, Qt::NoModifier,
                          output->visualItemRect(output->item(row)).center());
        QCOMPARE(Editors::self()->current()->filename().isEmpty(), row < 2);
    }
    QCOMPARE(Editors::self()->current()->filename(), file);
    QCOMPARE(Editors::self()->current()->cursorLine(), 19);
    QVERIFY(!output->hasFocus());
}

void TestMessageOutput::lastRowsAreKeptAndFollowed()
{
    for (int i = 0; i < 2000; ++i)
        output->insertItem(u"row %1"_s.arg(i), i, u"/some/file"_s);
    QCOMPARE(output->count(), 500);
    const QListWidgetItem *const last = output->item(499);
    QCOMPARE(last->data(Qt::DisplayRole).toString(), u"row 1999"_s);
    QTRY_VERIFY(isShown(499));
    QCOMPARE(output->item(499), last);
    QCOMPARE(output->model()->rowCount(), 500);
    output->insertItem(u"one more"_s);
    QCOMPARE(output->item(498), last);
    QCOMPARE(output->item(500), nullptr);
    QTRY_VERIFY(isShown(499));
}

void TestMessageOutput::listIsNeverBlankWhileRowsArrive()
{
    const auto isInk = [](QRgb pixel) { return qGray(pixel) < 128; };
    for (int i = 0; i < 500; ++i)
        output->insertItem(u"some row"_s);
    QTRY_VERIFY(isShown(499));
    for (int step = 0; step < 20; ++step) {
        for (int i = 0; i < 40; ++i)
            output->insertItem(u"another row"_s);
        QVERIFY(shows(isInk));
        QCoreApplication::processEvents();
        QVERIFY(shows(isInk));
    }
}

void TestMessageOutput::rowsAreShownWhileMoreArrive()
{
    const auto isGreen = [](QRgb pixel) { return pixel == qRgb(0, 255, 0); };
    QDeadlineTimer deadline(10000);
    while (!shows(isGreen) && !deadline.hasExpired()) {
        output->insertItem(u"#bgcolor{#00ff00}a row"_s);
        QCoreApplication::processEvents();
    }
    QVERIFY(!deadline.hasExpired());
}

void TestMessageOutput::farEndOfALongRowIsDrawn_data()
{
    const Rows<QString> row("text");
    row("5000 units", QString(5000, u'x'));
    row("a million", QString(1000000, u'W'));
    row("other letters", u"\u00e9\u0416\u05d0\t"_s.repeated(20000));
    row("marks and pairs", u"a\u0301\u0302\U0001f600"_s.repeated(20000));
    row("directives", u"a#color{red}"_s.repeated(20000));
}

void TestMessageOutput::farEndOfALongRowIsDrawn()
{
    QFETCH(QString, text);
    const auto isBlue = [](QRgb pixel) { return pixel == qRgb(0, 0, 255); };
    output->insertItem(text + u"#color{#0000ff}\u2588\u2588"_s);
    QTRY_VERIFY(isShown(0));
    QVERIFY(!shows(isBlue));
    output->horizontalScrollBar()->setValue(output->horizontalScrollBar()->maximum());
    QVERIFY(shows(isBlue));
    QVERIFY(output->horizontalScrollBar()->maximum() > 3 * 5000 / 2);
}

void TestMessageOutput::hostileRowsAreDrawn()
{
    output->insertItem(u"#color{"_s.repeated(200000));
    output->insertItem(u"#color{nonsense}#bgcolor{}"_s.repeated(20000));
    output->insertItem(QString(10 * 1024 * 1024, u'x'));
    output->insertItem(QString(1024 * 1024, QChar(0x301)));
    output->insertItem(u"a\nb\tc\r\u2028\x01"_s + QChar(0) + QChar(0xd800) + u"\x7f"_s);
    QCOMPARE(output->count(), 5);
    QTRY_VERIFY(isShown(4));
    output->viewport()->repaint();
    QCOMPARE(static_cast<MessageItem *>(output->item(2))->text().size(), 10 * 1024 * 1024);
    // Rows of megabytes drop older ones before they fill the memory.
    for (int i = 0; i < 20; ++i)
        output->insertItem(QString(10 * 1024 * 1024, u'x'));
    QVERIFY(output->count() < 10);
    QTRY_VERIFY(isShown(output->count() - 1));
}

void TestMessageOutput::clearButtonClears()
{
    output->insertItem(u"x"_s);
    QTest::mouseClick(output->findChild<QToolButton *>(u"buttonClear"_s), Qt::LeftButton);
    QCOMPARE(output->count(), 0);
}

QTEST_MAIN(TestMessageOutput)
#include "tst_messageoutput.moc"
