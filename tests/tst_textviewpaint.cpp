#include "tests/viewtest.h"
#include "zvwidgets/zveditor/editormargins.h"
#include "zvwidgets/zveditor/highlight.h"
#include "zvwidgets/zveditor/highlight/highlightmanager.h"

#include <QApplication>
#include <QScreen>
#include <QTest>

#include <functional>

using namespace Qt::StringLiterals;
using namespace zvwidgets;

namespace {

const auto red = QColor(255, 0, 0);
const auto green = QColor(0, 255, 0);

} // namespace

class TestTextViewPaint;

/// Changes a text of nine lines, or what is shown of it.
using ViewStep = std::function<void(TestTextViewPaint *)>;
using ViewSteps = std::vector<std::pair<const char *, ViewStep>>;

class TestTextViewPaint : public ViewTest
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup() { closeEditor(); }

    void wordsHaveTheirColours();
    void variantsDiffer();
    void guidesStandAtTabStops();
    void partialUpdatesLeaveNothingStale_data();
    void partialUpdatesLeaveNothingStale();
    void typingPaintsFewRows();
    void selectionIsFilled_data();
    void selectionIsFilled();
    void fillsCoverEachOther();
    void backgroundLeavesTheWayToATabStop();
    void blankLinesInheritBackground();
    void longLineShowsItsPlace();

private:
    static ViewSteps editingSteps();
    static ViewSteps showingSteps();
    QImage shown() const;
    QImage shownEditor() const;
    /// The colour between rows of letters, where only fills are to be seen.
    QColor fillAt(int column, int line) const;
    /// \a p in pixels of the view.
    QColor colorAt(const QImage &image, const QPoint &p) const;
    /// What is painted of columns of a line.
    QImage boxOf(int column, int length, int line) const;
};

void TestTextViewPaint::initTestCase()
{
    // The blinking image would come and go between two pictures.
    QApplication::setCursorFlashTime(0);
}

void TestTextViewPaint::init()
{
    showEditor();
    manager->selectedBackgroundColor = red;
}

/// What the screen shows, as left behind by whatever was painted.
QImage TestTextViewPaint::shown() const
{
    QCoreApplication::processEvents();
    const QPoint corner = view->mapTo(editor.get(), QPoint(0, 0));
    const QPixmap window = editor->screen()->grabWindow(editor->winId(), corner.x(), corner.y(),
                                                        view->width(), view->height());
    return window.toImage().convertToFormat(QImage::Format_RGB32);
}

/// The same with the margins.
QImage TestTextViewPaint::shownEditor() const
{
    QCoreApplication::processEvents();
    return editor->screen()->grabWindow(editor->winId()).toImage();
}

QColor TestTextViewPaint::fillAt(int column, int line) const
{
    const QPoint p = pointAt(column, line);
    return colorAt(view->grab().toImage(), {p.x() + 1, p.y() - view->lineHeight() / 2 + 1});
}

QColor TestTextViewPaint::colorAt(const QImage &image, const QPoint &p) const
{
    const int scale = image.width() / view->width();
    return image.pixelColor(p * scale);
}

QImage TestTextViewPaint::boxOf(int column, int length, int line) const
{
    view->updateLinesList();
    const QPoint from = view->docPosToScreen(column, line);
    const QPoint to = view->docPosToScreen(column + length, line);
    // Text begins two pixels right of its place.
    const QRect box(from.x() + 2, from.y(), to.x() - from.x(), view->lineHeight());
    return view->grab(box).toImage().convertToFormat(QImage::Format_RGB32);
}

/// How much of an image isn't white: that many white pixels made black.
static double inkOf(const QImage &image)
{
    double ink = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            ink += (255 - qGray(image.pixel(x, y))) / 255.0;
    }
    return ink;
}

static int pixelsOf(const QImage &image, const QColor &color)
{
    int count = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            count += image.pixelColor(x, y) == color;
    }
    return count;
}

void TestTextViewPaint::wordsHaveTheirColours()
{
    manager->setFont(QFont(u"DejaVu Sans Mono"_s, 20));
    editor->resize(1000, 300);
    editor->setHighlight(u"C++"_s);
    // The last word has no glyphs of its own and is laid out.
    const QStringList words{u"if"_s, u"word"_s, u"\"text\""_s, u"4711"_s, u"//o\u0308o\u0308"_s};
    setText(words.join(u' '));
    cursor->deactivate();
    view->grab();
    const QColor colors[] = {red, Qt::blue, QColor(0, 128, 0), Qt::magenta, Qt::darkCyan};
    const TextLine &line = *doc->lineOf(0);
    int column = 0;
    for (int i = 0; i < words.size(); ++i) {
        view->hl->attribute(line.attribute(unsigned(column)))->color = colors[i];
        column += int(words.at(i).size()) + 1;
    }
    column = 0;
    for (int i = 0; i < words.size(); ++i) {
        const int length = int(words.at(i).size());
        const QImage box = boxOf(column, length, 0);
        for (int other = 0; other < words.size(); ++other)
            QVERIFY2((pixelsOf(box, colors[other]) > 0) == (other == i),
                     qPrintable(words.at(i) + u" in the colour of "_s + words.at(other)));
        column += length + 1;
        QCOMPARE(inkOf(boxOf(column - 1, 1, 0)), 0.0);
    }
    // Of the last word what follows the slashes.
    QVERIFY(pixelsOf(boxOf(column - 5, 4, 0), colors[4]) > 0);
}

void TestTextViewPaint::variantsDiffer()
{
    manager->setFont(QFont(u"DejaVu Sans Mono"_s, 20));
    editor->resize(1000, 300);
    setText(u"Illustrations"_s);
    cursor->deactivate();
    QList<QImage> images;
    for (int variant = 0; variant < 4; ++variant) {
        view->hl->attribute(0)->fontType = variant;
        images.append(boxOf(0, 13, 0));
    }
    const double plain = inkOf(images.at(0));
    QVERIFY(plain > 0);
    for (int variant = 1; variant < 4; ++variant) {
        const bool isBold = variant & 2;
        QCOMPARE(inkOf(images.at(variant)) > 1.2 * plain, isBold);
        QVERIFY(images.at(variant) != images.at(variant - 1));
    }
}

void TestTextViewPaint::guidesStandAtTabStops()
{
    setText(u"            x"_s);
    cursor->deactivate();
    const auto guides = [this] {
        QSet<int> columns;
        const QImage box = boxOf(0, 12, 0);
        const int columnWidth = box.width() / 12;
        for (int x = 0; x < box.width(); ++x) {
            if (pixelsOf(box.copy(x, 0, 1, box.height()), QColor(0xf0, 0xc0, 0xc0)) > 0)
                columns.insert(x / columnWidth);
        }
        return columns;
    };
    QCOMPARE(guides(), (QSet<int>{4, 8}));
    manager->fIndentationGuides = false;
    QCOMPARE(guides(), QSet<int>());
}

ViewSteps TestTextViewPaint::editingSteps()
{
    return {
        {"typing", [](TestTextViewPaint *t) { t->doc->cmdInsert(4, 3, u"typed "_s); }},
        {"row more or less",
         [](TestTextViewPaint *t) { t->doc->cmdInsert(1, 0, u"abcdefgh "_s.repeated(9)); }},
        {"line made", [](TestTextViewPaint *t) { t->doc->makeLine(3); }},
        {"line removed", [](TestTextViewPaint *t) { t->doc->removeLine(2); }},
        {"undone",
         [](TestTextViewPaint *t) {
             t->doc->cmdInsertLineBreak(1, 5);
             t->editor->undo();
         }},
        {"comment opened",
         [](TestTextViewPaint *t) {
             t->editor->setHighlight(u"C++"_s);
             QCoreApplication::processEvents();
             t->doc->cmdInsert(0, 0, u"/*"_s);
         }},
        {"typed in the last line", [](TestTextViewPaint *t) { t->doc->cmdInsert(8, 3, u"x"_s); }},
        {"typed in a closed fold, among others",
         [](TestTextViewPaint *t) {
             t->editor->folding()->createFold(3, 6);
             QCoreApplication::processEvents();
             t->doc->macroBegin(u"edits"_s);
             t->doc->cmdInsert(7, 0, u"x"_s);
             t->doc->cmdInsert(5, 0, u"x"_s);
             t->doc->macroEnd();
         }},
        {"last line marked, then removed",
         [](TestTextViewPaint *t) {
             static QPixmap icon(8, 8);
             icon.fill(Qt::red);
             t->editor->setLineIcon(8, &icon);
             QCoreApplication::processEvents();
             t->doc->macroBegin(u"exchange"_s);
             t->doc->removeLine(8);
             t->doc->makeLine(1);
             t->doc->macroEnd();
         }},
    };
}

/// Those that leave the text alone, but for what they need.
ViewSteps TestTextViewPaint::showingSteps()
{
    return {
        {"selected", [](TestTextViewPaint *t) { t->view->setCursorPosition(3, 4, true); }},
        {"selection moved",
         [](TestTextViewPaint *t) {
             t->view->setCursorPosition(4, 4, true);
             QCoreApplication::processEvents();
             t->view->setCursorPosition(1, 9, true);
         }},
        {"fold toggled", [](TestTextViewPaint *t) { t->editor->folding()->createFold(3, 4); }},
        {"cursor moved",
         [](TestTextViewPaint *t) {
             t->manager->currentLineColor = green;
             t->view->setCursorPosition(4, 2, false);
         }},
        {"font made smaller",
         [](TestTextViewPaint *t) {
             // A change of its width would have everything painted.
             t->manager->setLineNumberMarginVisible(false);
             t->shownEditor();
             t->manager->setFont(QFont(u"DejaVu Sans Mono"_s, 6));
         }},
        {"background changed",
         [](TestTextViewPaint *t) {
             t->manager->normalBackgroundColor = green;
             t->doc->tagAll();
             t->doc->updateViews();
         }},
        {"scrolled sideways",
         [](TestTextViewPaint *t) { t->view->setCursorPosition(1, 140, false); }},
        {"scrolled over letters that join",
         [](TestTextViewPaint *t) {
             const QString joined = u"\u0628\u062a\u062b\u0633"_s.repeated(8);
             const QString others = u" o\u0308a\u0301\u4e2d\U0001f600\ti"_s;
             t->doc->cmdInsert(1, 0, (joined + others).repeated(5));
             t->view->setCursorPosition(1, 0, false);
             for (int column = 60; column < 140; ++column) {
                 QCoreApplication::processEvents();
                 t->view->setCursorPosition(1, column, false);
             }
             for (int column = 140; column > 0; column -= 7) {
                 QCoreApplication::processEvents();
                 t->view->setCursorPosition(1, column, false);
             }
         }},
        {"scrolled over what is selected",
         [](TestTextViewPaint *t) {
             t->view->setCursorPosition(3, 4, true);
             for (int column = 60; column < 90; ++column) {
                 QCoreApplication::processEvents();
                 t->view->setCursorPosition(3, column, true);
             }
         }},
        {"fold at the end", [](TestTextViewPaint *t) { t->editor->folding()->createFold(6, 8); }},
        {"fold at the end removed",
         [](TestTextViewPaint *t) {
             t->editor->folding()->createFold(6, 8);
             QCoreApplication::processEvents();
             t->editor->folding()->removeFold(7);
         }},
        {"last line of an open fold removed",
         [](TestTextViewPaint *t) {
             t->editor->folding()->createFold(3, 5);
             t->editor->folding()->toggleFold(3);
             QCoreApplication::processEvents();
             t->doc->removeLine(5);
         }},
        {"scrolled down, then typed",
         [](TestTextViewPaint *t) {
             t->view->vslide(2);
             QCoreApplication::processEvents();
             t->doc->cmdInsert(3, 0, u"abcdefgh "_s.repeated(9));
         }},
    };
}

void TestTextViewPaint::partialUpdatesLeaveNothingStale_data()
{
    QTest::addColumn<int>("way");
    QTest::addColumn<ViewStep>("step");
    for (const int way : {int(NoFlag), int(Wrapped), int(Folded), int(Wrapped | Folded)}) {
        for (const ViewSteps &steps : {editingSteps(), showingSteps()}) {
            for (const auto &[name, step] : steps)
                QTest::addRow("%s, way %d", name, way) << way << step;
        }
    }
}

void TestTextViewPaint::partialUpdatesLeaveNothingStale()
{
    QFETCH(int, way);
    QFETCH(ViewStep, step);
    const QString wide = u"word and word "_s.repeated(10);
    setText(u"one\n%1\ntwo\n%1%1\nthree\nfour\n%1\nfive\nsix"_s.arg(wide));
    apply(way);
    shownEditor();
    step(this);
    const QImage left = shownEditor();
    view->update();
    view->repaintMargins();
    const QImage whole = shownEditor();
    QVERIFY(left == whole);
}

void TestTextViewPaint::typingPaintsFewRows()
{
    setText(numberedLines(1000));
    // At the lowest place of the cursor nothing scrolls either.
    for (const int line : {5, 500}) {
        view->setCursorPosition(line, 3, false);
        QCoreApplication::processEvents();
        for (const Qt::Key key : {Qt::Key_X, Qt::Key_Up}) {
            const int before = TextView::paintCount();
            QTest::keyClick(view, key);
            QCoreApplication::processEvents();
            // The line and a neighbour, which could have been recoloured.
            QVERIFY(TextView::paintCount() > before);
            QVERIFY(TextView::paintCount() <= before + 2);
        }
    }
}

void TestTextViewPaint::selectionIsFilled_data()
{
    // For each line the filled columns, "#" for filled.
    const Rows<bool, QPoint, QPoint, QString> row("box", "from", "to", "fills");
    row("in one line", false, {2, 0}, {5, 0}, "..###...|........");
    row("over lines", false, {3, 0}, {2, 2}, "...#####|########|##......");
    row("to a line's start", false, {3, 0}, {0, 1}, "...#####|........");
    row("box over lines is a stream too", true, {3, 0}, {5, 2}, "...#####|########|#####...");
}

void TestTextViewPaint::selectionIsFilled()
{
    QFETCH(bool, box);
    QFETCH(QPoint, from);
    QFETCH(QPoint, to);
    QFETCH(QString, fills);
    setText(u"        \n        \n        \n        \n"_s);
    view->setCursorPosition(4, 0, false);
    manager->setVerticalSelection(box);
    view->setSelection(from, to);
    view->updateView(false);
    const QImage image = shown();
    QStringList seen;
    for (int line = 0; line <= fills.count(u'|'); ++line) {
        seen.append(QString());
        for (int column = 0; column < 8; ++column)
            seen.last() += colorAt(image, pointAt(column, line)) == red ? u'#' : u'.';
        // The free edge at the left belongs to the first column.
        const bool edge = colorAt(image, {0, pointAt(0, line).y()}) == red;
        QCOMPARE(edge, seen.last().startsWith(u'#'));
    }
    QCOMPARE(seen.join(u'|'), fills);
}

void TestTextViewPaint::fillsCoverEachOther()
{
    setText(u"one\n\nthree\nfour"_s);
    doc->lineOf(0)->setLineColor(green);
    QCOMPARE(fillAt(20, 0), green);
    manager->currentLineColor = QColor(0, 0, 255);
    QCOMPARE(fillAt(20, 0), manager->currentLineColor);
    view->setSelection(QPoint(0, 0), QPoint(0, 1));
    QCOMPARE(fillAt(20, 0), red);
    // A closed fold has a line below its first line.
    const int h = view->lineHeight();
    QCOMPARE(colorAt(view->grab().toImage(), {200, h - 1}), red);
    view->clearSelection();
    editor->folding()->createFold(2, 3);
    QCOMPARE(colorAt(view->grab().toImage(), {200, 3 * h - 1}), QColor(50, 50, 50));
}

void TestTextViewPaint::backgroundLeavesTheWayToATabStop()
{
    editor->setHighlight(u"C++"_s);
    setText(u"\"s\"\tx"_s);
    view->grab();
    TextAttribute *const attribute = view->hl->attribute(doc->lineOf(0)->attribute(1));
    attribute->usebg = true;
    attribute->bgcolor = green;
    QCOMPARE(fillAt(1, 0), green);
    QCOMPARE(fillAt(3, 0), QColor(Qt::white));
    QCOMPARE(fillAt(6, 0), green);
}

void TestTextViewPaint::blankLinesInheritBackground()
{
    setText(u"\n\nx\n\n\ny\n"_s);
    TextAttribute *const attribute = view->hl->attribute(0);
    attribute->usebg = true;
    attribute->bgcolor = green;
    // Walking up ends at line 1, and the first two lines never inherit.
    for (const int line : {0, 1, 2, 3, 4, 6})
        QCOMPARE(fillAt(30, line), line < 2 ? QColor(Qt::white) : green);
    setText(u"x\n\n\n\n\n\n"_s);
    // Each change of a line above shows at once.
    const auto inherits = [this](int line) { return fillAt(30, line) == green; };
    QVERIFY(!inherits(2) && !inherits(5));
    doc->cmdInsert(3, 0, u"y"_s);
    QVERIFY(!inherits(2) && inherits(4) && inherits(5));
    doc->makeLine(4);
    QVERIFY(inherits(4) && inherits(6));
    doc->cmdRemove(3, 0, 1);
    QVERIFY(!inherits(4) && !inherits(6));
    doc->cmdInsert(1, 0, u"z"_s);
    QVERIFY(inherits(2) && inherits(6));
}

// Only what is on screen is drawn of a line, so it has to be found.
void TestTextViewPaint::longLineShowsItsPlace()
{
    const QString piece = u"ab\tcdefg hij-"_s;
    const auto shot = [this, &piece](int repeats, int first) {
        setText(piece.repeated(repeats));
        view->hslide(doc->textWidth(0, first * int(piece.size())));
        return shown();
    };
    const QImage expected = shot(30, 4);
    setText(piece.repeated(200000));
    const int x = doc->textWidth(0, 100000 * int(piece.size()));
    view->hslide(x);
    const QImage image = shown();
    QVERIFY(image == expected);
}

QTEST_MAIN(TestTextViewPaint)
#include "tst_textviewpaint.moc"
