#include "tests/editortest.h"
#include "zvwidgets/zveditor/editormargins.h"

#include <QPainter>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace zvwidgets;

class TestEditorMargins : public EditorTest
{
    Q_OBJECT

private slots:
    void init();
    void cleanup() { closeEditor(); }

    void lineSelection_data();
    void lineSelection();
    void linesGoDuringADrag();
    void selectionBecomesAFold_data();
    void selectionBecomesAFold();
    void clicksOnAFold();
    void numberAtFirstRowOnly();
    void numberIsShownWhole();
    void iconOnEveryRow();
    void foldDrawing();
    void rowsAfterAFoldAreAllPainted();
    void fontChangeRefitsTheMargins();

private:
    static QPoint at(int row, int x = 6);
    void click(QWidget *margin, int row, Qt::MouseButton button = Qt::LeftButton);
    /// What the margin shows at screen ratio 1.
    static QImage image(QWidget *margin);
    int inkedPixels(const QImage &image, int row) const;
    static int rowHeight;
};

int TestEditorMargins::rowHeight = 0;

void TestEditorMargins::init()
{
    showEditor();
    editor->setText(u"zero\none\ntwo\nthree\nfour\nfive\nsix\nseven"_s);
    view->setCursorPosition(0, 0, false);
    rowHeight = view->lineHeight();
}

QPoint TestEditorMargins::at(int row, int x)
{
    return {x, row * rowHeight + rowHeight / 2};
}

void TestEditorMargins::click(QWidget *margin, int row, Qt::MouseButton button)
{
    QTest::mouseClick(margin, button, Qt::NoModifier, at(row));
}

QImage TestEditorMargins::image(QWidget *margin)
{
    QImage result(margin->size(), QImage::Format_RGB32);
    result.fill(Qt::magenta);
    margin->render(&result);
    return result;
}

/// Pixels of a row of text that aren't background, the dotted line left out.
int TestEditorMargins::inkedPixels(const QImage &image, int row) const
{
    const QRgb background = manager->normalBackgroundColor.rgb();
    int count = 0;
    for (int y = row * rowHeight; y < (row + 1) * rowHeight; ++y) {
        for (int x = 0; x < image.width() - 1; ++x)
            count += image.pixel(x, y) != background;
    }
    return count;
}

void TestEditorMargins::lineSelection_data()
{
    const Rows<QList<int>, QString> row("rows", "selected");

    row("a click takes the line break too", {1}, "one\n");
    row("the last line has none", {7}, "seven");
    row("dragging up keeps the first line", {3, 2, 1}, "one\ntwo\nthree\n");
    row("down, then up across the start", {3, 4, 1}, "one\ntwo\nthree\n");
    row("up, then down across the start", {3, 1, 4}, "three\nfour\n");
    row("up from the last line", {7, 6}, "six\nseven");
    row("below the text", {6, 12}, "six\nseven");
}

void TestEditorMargins::lineSelection()
{
    QFETCH(const QList<int>, rows);
    QFETCH(const QString, selected);

    QWidget *margin = view->selectionMargin();
    QTest::mousePress(margin, Qt::LeftButton, Qt::NoModifier, at(rows.first()));
    for (const int row : rows.mid(1))
        dragTo(margin, at(row));
    QTest::mouseRelease(margin, Qt::LeftButton, Qt::NoModifier, at(rows.last()));
    QCOMPARE(editor->getSelectedText(), selected);
}

void TestEditorMargins::linesGoDuringADrag()
{
    QWidget *margin = view->selectionMargin();
    QTest::mousePress(margin, Qt::LeftButton, Qt::NoModifier, at(5));
    dragTo(margin, at(7));
    editor->setText(u"zero\none\ntwo"_s);
    dragTo(margin, at(1));
    QTest::mouseRelease(margin, Qt::LeftButton, Qt::NoModifier, at(1));
    QCOMPARE(editor->getSelectedText(), u"one\ntwo"_s);
}

void TestEditorMargins::selectionBecomesAFold_data()
{
    const Rows<int, int, bool> row("lastLine", "row", "made");

    row("three lines, first", 3, 1, true);
    row("three lines, last", 3, 3, true);
    row("beside them", 3, 4, false);
    row("two lines", 2, 1, false);
}

void TestEditorMargins::selectionBecomesAFold()
{
    QFETCH(const int, lastLine);
    QFETCH(const int, row);
    QFETCH(const bool, made);

    view->setCursorPosition(1, 2, false);
    view->setCursorPosition(lastLine, 1, true);
    click(view->foldingMargin(), row, Qt::RightButton);
    QCOMPARE(doc->lineOf(1)->isFoldingStart, made);
    QCOMPARE(doc->lineOf(1)->isFolded, made);
    QCOMPARE(doc->lineOf(lastLine)->isFoldVisible, !made);
    QCOMPARE(view->hasSelection(), !made);
}

void TestEditorMargins::clicksOnAFold()
{
    QVERIFY(doc->folding()->createFold(2, 4));
    click(view->foldingMargin(), 2);
    QVERIFY(doc->lineOf(3)->isFoldVisible);
    click(view->foldingMargin(), 3);
    QVERIFY(!doc->lineOf(3)->isFoldVisible);
    click(view->foldingMargin(), 3);
    QVERIFY(doc->lineOf(2)->isFoldingStart);
    click(view->foldingMargin(), 2, Qt::RightButton);
    QVERIFY(!doc->lineOf(2)->isFoldingStart);
    QVERIFY(doc->lineOf(3)->isFoldVisible);
}

void TestEditorMargins::numberAtFirstRowOnly()
{
    editor->setWrap(true);
    editor->setText(u"word "_s.repeated(40) + u"\nlast"_s);
    view->setCursorPosition(0, 0, false);
    QCoreApplication::processEvents();
    const QImage margin = image(view->lineNumberMargin());
    QVERIFY(view->lineNumber(rowHeight) == 0);
    QVERIFY(inkedPixels(margin, 0) > 0);
    QCOMPARE(inkedPixels(margin, 1), 0);
    const int lastRow = view->docPosToScreen(0, 1).y() / rowHeight;
    QVERIFY(inkedPixels(margin, lastRow) > 0);
    QCOMPARE(inkedPixels(margin, lastRow + 1), 0);
}

void TestEditorMargins::numberIsShownWhole()
{
    editor->setText(u"\n"_s.repeated(88890));
    editor->moveCursor(88887, 0);
    QCoreApplication::processEvents();
    const int row = 88887 - view->contentsY() / rowHeight;
    // With room to spare at the left.
    QImage expected(200, (row + 1) * rowHeight, QImage::Format_RGB32);
    expected.fill(manager->normalBackgroundColor);
    QPainter painter(&expected);
    painter.setFont(manager->font(0));
    painter.setPen(QColor(0, 128, 128));
    painter.drawText(QRect(0, row * rowHeight, 197, rowHeight), Qt::AlignRight | Qt::AlignVCenter,
                     u"88888"_s);
    painter.end();
    const QImage margin = image(view->lineNumberMargin());
    const auto inRow = [row](const QImage &from, int width) {
        return from.copy(from.width() - width, row * rowHeight, width - 1, rowHeight);
    };
    QCOMPARE(inRow(margin, margin.width()), inRow(expected, margin.width()));
    QCOMPARE(inkedPixels(margin, row), inkedPixels(expected, row));
}

void TestEditorMargins::iconOnEveryRow()
{
    QPixmap icon(6, 6);
    icon.fill(Qt::red);
    editor->setWrap(true);
    editor->setText(u"word "_s.repeated(40) + u"\nlast"_s);
    view->setCursorPosition(0, 0, false);
    editor->setLineIcon(0, &icon);
    const auto shows = [this](int row) {
        return image(view->indicatorMargin()).pixelColor(8, row * rowHeight + rowHeight / 2) ==
               QColor(Qt::red);
    };
    const int lastRow = view->docPosToScreen(0, 1).y() / rowHeight;
    QVERIFY(lastRow > 1);
    QVERIFY(shows(0) && shows(1) && !shows(lastRow) && !shows(lastRow + 1));
    editor->clearLineIcon(0);
    editor->setLineIcon(1, &icon);
    QVERIFY(!shows(0) && shows(lastRow) && shows(lastRow + 1));
    editor->clearLineIcon(1);
    QVERIFY(!shows(lastRow));
}

void TestEditorMargins::foldDrawing()
{
    QVERIFY(doc->folding()->createFold(2, 4));
    view->setCursorPosition(0, 0, false);
    const int middle = rowHeight / 2;
    const auto pixel = [this](int x, int row, int y) {
        return image(view->foldingMargin()).pixelColor(x, row * rowHeight + y);
    };
    const QColor plain(240, 240, 240);
    // Closed: a plus, and nothing at the next line.
    QCOMPARE(pixel(6, 2, middle - 2), QColor(0, 128, 128));
    QCOMPARE(pixel(3, 3, middle), plain);
    // Open: a minus, and a line down to the end of the fold.
    doc->folding()->toggleFold(2);
    QCOMPARE(pixel(6, 2, middle - 2), QColor(Qt::white));
    QCOMPARE(pixel(6, 2, middle), QColor(0, 128, 128));
    QCOMPARE(pixel(3, 3, middle), QColor(Qt::black));
    QCOMPARE(pixel(9, 4, rowHeight - 1), QColor(Qt::black));
    QCOMPARE(pixel(3, 5, middle), plain);
    // The selection that a press would fold.
    view->setCursorPosition(0, 1, false);
    view->setCursorPosition(2, 1, true);
    QCOMPARE(pixel(6, 1, middle - 2), QColor(64, 64, 64));
}

/// Rows, not line numbers, tell where a margin has to be painted.
void TestEditorMargins::rowsAfterAFoldAreAllPainted()
{
    editor->setText(u"x\n"_s.repeated(200));
    QVERIFY(doc->folding()->createFold(1, 100));
    view->setCursorPosition(0, 0, false);
    const QList<QWidget *> margins{view->indicatorMargin(), view->lineNumberMargin(),
                                   view->foldingMargin(), view->selectionMargin()};
    for (QWidget *margin : margins) {
        const QRect part(0, 3 * rowHeight + 2, margin->width(), 2 * rowHeight);
        QImage shown(part.size(), QImage::Format_RGB32);
        shown.fill(Qt::magenta);
        margin->render(&shown, QPoint(), part);
        for (int y = 0; y < shown.height(); ++y) {
            for (int x = 0; x < shown.width(); ++x)
                QVERIFY(shown.pixelColor(x, y) != QColor(Qt::magenta));
        }
    }
}

void TestEditorMargins::fontChangeRefitsTheMargins()
{
    const int before = view->lineNumberMargin()->width();
    QFont font = manager->font();
    font.setPointSize(font.pointSize() + 10);
    manager->setFont(font);
    QTRY_VERIFY(view->lineNumberMargin()->width() > before);
    rowHeight = view->lineHeight();
    const QImage margin = image(view->lineNumberMargin());
    QVERIFY(inkedPixels(margin, 7) > 0);
}

QTEST_MAIN(TestEditorMargins)
#include "tst_editormargins.moc"
