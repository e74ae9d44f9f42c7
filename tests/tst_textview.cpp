#include "zvwidgets/zveditor/editorcursor.h"
#include "zvwidgets/zveditor/highlight.h"
#include "zvwidgets/zveditor/highlightmanager.h"
#include "zvwidgets/zveditor/selectionrect.h"
#include "zvwidgets/zveditor/textdoc.h"
#include "zvwidgets/zveditor/texteditor.h"
#include "zvwidgets/zveditor/textfolding.h"
#include "zvwidgets/zveditor/textline.h"
#include "zvwidgets/zveditor/textmanager.h"
#include "zvwidgets/zveditor/textview.h"

#include <QApplication>
#include <QClipboard>
#include <QElapsedTimer>
#include <QMenu>
#include <QScreen>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>
#include <QWheelEvent>

#include <functional>
#include <memory>

using namespace zvwidgets;

namespace {

enum Way
{
    NoFlag = 0,
    Wrapped = 1,
    WrappedAtWords = 2,
    Folded = 4,
    Proportional = 8,
};

const auto red = QColor(255, 0, 0);
const auto green = QColor(0, 255, 0);

QString numberedLines(int count)
{
    QStringList lines;
    for (int i = 0; i < count; ++i)
        lines << QStringLiteral("line %1").arg(i);
    return lines.join(u'\n');
}

} // namespace

class TestTextView : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void positionsComeBack_data();
    void positionsComeBack();
    void wrappedRowsAreIndented_data();
    void wrappedRowsAreIndented();
    void rowsFollowEveryChange();
    void belowTheText();
    void partialUpdatesLeaveNothingStale_data();
    void partialUpdatesLeaveNothingStale();
    void typingPaintsFewRows();
    void scrollRanges();
    void removedLinesScrollBack();
    void cursorIsScrolledIntoView_data();
    void cursorIsScrolledIntoView();
    void cursorGoesToTheMiddle();
    void wheelScrolls();
    void leftLineLosesTrailingBlanks();
    void selectionOrdersItsEnds();
    void lockedSelectionStays();
    void insideOfSelection_data();
    void insideOfSelection();
    void selectionIsFilled_data();
    void selectionIsFilled();
    void fillsCoverEachOther();
    void blankLinesInheritBackground();
    void longLineShowsItsPlace();
    void longWrappedLineIsQuick();
    void pressAndDragSelect();
    void clickInSelectionClearsIt();
    void doubleClickSelectsWord();
    void dragMovesOrCopies_data();
    void dragMovesOrCopies();
    void middleButtonPastes();
    void rightButtonOpensTheMenu();
    void keysBeforeShortcuts_data();
    void keysBeforeShortcuts();
    void focusIsAnnounced();

private:
    void setText(const QString &text);
    void apply(int way);
    QImage shown() const;
    /// The colour between rows of letters, where only fills are to be seen.
    QColor fillAt(int column, int line) const;
    /// \a p in pixels of the view.
    QColor colorAt(const QImage &image, const QPoint &p) const;
    QPoint pointAt(int column, int line) const;
    QScrollBar *bar(Qt::Orientation orientation) const;

    std::unique_ptr<TextEditorManager> manager;
    std::unique_ptr<TextEditor> editor;
    TextDocument *doc = nullptr;
    TextView *view = nullptr;
};

void TestTextView::initTestCase()
{
    // The blinking image would come and go between two pictures.
    QApplication::setCursorFlashTime(0);
}

void TestTextView::init()
{
    manager = std::make_unique<TextEditorManager>();
    manager->setFont(QFont(QStringLiteral("DejaVu Sans Mono"), 10));
    manager->setTabWidth(4);
    manager->fSaveTab = true;
    manager->selectedBackgroundColor = red;
    editor.reset(manager->createEditor(nullptr, nullptr));
    doc = editor->document();
    view = editor->view();
    editor->resize(500, 300);
    editor->show();
    QVERIFY(QTest::qWaitForWindowActive(editor.get()));
    view->setFocus();
    QTRY_VERIFY(view->hasFocus());
}

void TestTextView::cleanup()
{
    editor.reset();
    manager.reset();
}

void TestTextView::setText(const QString &text)
{
    editor->setText(text);
    view->setCursorPosition(0, 0, false);
    QCoreApplication::processEvents();
}

void TestTextView::apply(int way)
{
    if (way & Proportional)
        manager->setFont(QFont(QStringLiteral("DejaVu Sans"), 10));
    if (way & WrappedAtWords)
        doc->setWrapMode(wrapWord);
    doc->setWrap(way & (Wrapped | WrappedAtWords));
    if (way & Folded)
        editor->folding()->createFold(1, 2);
    view->updateLinesList();
}

/// What the screen shows, as left behind by whatever was painted.
QImage TestTextView::shown() const
{
    QCoreApplication::processEvents();
    const QPoint corner = view->mapTo(editor.get(), QPoint(0, 0));
    const QPixmap window = editor->screen()->grabWindow(editor->winId(), corner.x(), corner.y(),
                                                        view->width(), view->height());
    return window.toImage().convertToFormat(QImage::Format_RGB32);
}

QColor TestTextView::fillAt(int column, int line) const
{
    const QPoint p = pointAt(column, line);
    return colorAt(view->grab().toImage(), {p.x() + 1, p.y() - view->lineHeight() / 2 + 1});
}

QColor TestTextView::colorAt(const QImage &image, const QPoint &p) const
{
    const int scale = image.width() / view->width();
    return image.pixelColor(p * scale);
}

/// The middle of a character, in the view.
QPoint TestTextView::pointAt(int column, int line) const
{
    view->updateLinesList();
    const QPoint p = view->docPosToScreen(column, line);
    return {p.x() - view->contentsX() + 3, p.y() - view->contentsY() + view->lineHeight() / 2};
}

QScrollBar *TestTextView::bar(Qt::Orientation orientation) const
{
    for (QScrollBar *each : editor->findChildren<QScrollBar *>()) {
        if (each->orientation() == orientation)
            return each;
    }
    return nullptr;
}

void TestTextView::positionsComeBack_data()
{
    QTest::addColumn<int>("way");
    QTest::newRow("unwrapped") << int(NoFlag);
    QTest::newRow("wrapped") << int(Wrapped);
    QTest::newRow("wrapped at words") << int(WrappedAtWords);
    QTest::newRow("folded") << int(Folded);
    QTest::newRow("wrapped and folded") << int(Wrapped | Folded);
    QTest::newRow("proportional") << int(Proportional);
    QTest::newRow("proportional, wrapped") << int(Proportional | Wrapped);
}

void TestTextView::positionsComeBack()
{
    QFETCH(int, way);
    const QString words = QStringLiteral("some words and more ").repeated(8);
    setText(QStringLiteral("a\tb\n") + words +
            QStringLiteral("\nhidden\n\n\t\tx = %1;\nlast").arg(words));
    apply(way);
    int lastY = -1;
    for (int line = 0; line <= doc->lastLine(); ++line) {
        if (!doc->lineOf(line)->isFoldVisible)
            continue;
        for (int column = 0; column <= doc->textLength(line); ++column) {
            const QPoint p = view->docPosToScreen(column, line);
            QVERIFY2(p.y() < view->height(), "the text has to fit into the view");
            QVERIFY(p.y() >= lastY);
            lastY = p.y();
            QCOMPARE(view->screenPosToDoc(p.x() + 1, p.y()), QPoint(column, line));
            QCOMPARE(view->lineNumber(p.y()), line);
        }
        ++lastY;
    }
}

void TestTextView::wrappedRowsAreIndented_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("editorWidth");
    QTest::addColumn<int>("blanks");
    QTest::newRow("like the line") << QStringLiteral("      ") << 500 << 6;
    QTest::newRow("not at all") << QString() << 500 << 0;
    QTest::newRow("too far in") << QString(42, u' ') << 500 << -1;
    QTest::newRow("narrow view") << QStringLiteral("  ") << 170 << -1;
}

void TestTextView::wrappedRowsAreIndented()
{
    QFETCH(QString, text);
    QFETCH(int, editorWidth);
    QFETCH(int, blanks);
    setText(text + QString(200, u'x'));
    editor->resize(editorWidth, 300);
    QCoreApplication::processEvents();
    apply(Wrapped);
    int column = 0;
    while (view->docPosToScreen(column, 0).y() == 0)
        ++column;
    const int expected = blanks >= 0 ? blanks * view->spaceWidth() : 16;
    QCOMPARE(view->docPosToScreen(column, 0), QPoint(expected, view->lineHeight()));
    // A row holds what fits, leaving 8 pixels free.
    QVERIFY(doc->textWidth(0, column) <= view->width() - 8);
    QVERIFY(doc->textWidth(0, column + 1) > view->width() - 8);
}

// The rows are only worked out again when something has changed.
void TestTextView::rowsFollowEveryChange()
{
    const QString wide(90, u'x');
    setText(QStringLiteral("a\n%1\nb\n%1\nend").arg(wide));
    const auto rowOf = [this](int line) {
        view->updateLinesList();
        return view->docPosToScreen(0, line).y() / view->lineHeight();
    };
    QCOMPARE(rowOf(4), 4);
    doc->setWrap(true);
    QCOMPARE(rowOf(4), 6);
    editor->resize(1100, 300);
    QCoreApplication::processEvents();
    QCOMPARE(rowOf(4), 4);
    editor->resize(500, 300);
    QCoreApplication::processEvents();
    QCOMPARE(rowOf(4), 6);
    editor->folding()->createFold(0, 1);
    QCOMPARE(rowOf(4), 4);
    editor->folding()->toggleFold(0);
    QCOMPARE(rowOf(4), 6);
    doc->cmdRemove(1, 0, 90);
    QCOMPARE(rowOf(4), 5);
    doc->makeLine(0);
    QCOMPARE(rowOf(5), 6);
    manager->setFont(QFont(QStringLiteral("DejaVu Sans Mono"), 5));
    QCOMPARE(rowOf(5), 5);
}

void TestTextView::belowTheText()
{
    setText(QStringLiteral("first\nsecond\nthird\nfourth"));
    view->updateLinesList();
    QCOMPARE(view->screenPosToDoc(500, 250), QPoint(6, 3));
    QCOMPARE(view->lineNumber(250), 3);
    QCOMPARE(view->screenPosToDoc(10, -500), QPoint(0, 0));
    QCOMPARE(view->docPosToScreen(0, -2), QPoint(0, -2 * view->lineHeight()));
    // What a closed fold at the end hides has its end as nearest place.
    editor->folding()->createFold(1, 3);
    view->updateLinesList();
    QCOMPARE(view->screenPosToDoc(5, 250), QPoint(6, 3));
    QCOMPARE(view->docPosToScreen(2, 3).y(), view->lineHeight());
    setText(QString());
    view->updateLinesList();
    QCOMPARE(view->screenPosToDoc(100, 100), QPoint(0, 0));
    QCOMPARE(view->docPosToScreen(0, 0), QPoint(0, 0));
}

void TestTextView::partialUpdatesLeaveNothingStale_data()
{
    using Step = std::function<void(TestTextView *)>;
    QTest::addColumn<int>("way");
    QTest::addColumn<Step>("step");
    struct Change
    {
        const char *name;
        Step step;
    };
    const Change changes[] = {
        {"typing", [](TestTextView *t) { t->doc->cmdInsert(4, 3, QStringLiteral("typed ")); }},
        {"row more or less",
         [](TestTextView *t) { t->doc->cmdInsert(1, 0, QStringLiteral("abcdefgh ").repeated(9)); }},
        {"line made", [](TestTextView *t) { t->doc->makeLine(3); }},
        {"line removed", [](TestTextView *t) { t->doc->removeLine(2); }},
        {"last lines removed",
         [](TestTextView *t) {
             const int last = t->doc->lastLine();
             t->doc->removeText(last - 2, 0, last, t->doc->textLength(last));
         }},
        {"undone",
         [](TestTextView *t) {
             t->doc->cmdInsertLineBreak(1, 5);
             t->editor->undo();
         }},
        {"comment opened",
         [](TestTextView *t) {
             t->editor->setHighlight(QStringLiteral("C++"));
             QCoreApplication::processEvents();
             t->doc->cmdInsert(0, 0, QStringLiteral("/*"));
         }},
        {"selected", [](TestTextView *t) { t->view->setCursorPosition(3, 4, true); }},
        {"selection moved",
         [](TestTextView *t) {
             t->view->setCursorPosition(4, 4, true);
             QCoreApplication::processEvents();
             t->view->setCursorPosition(1, 9, true);
         }},
        {"fold toggled", [](TestTextView *t) { t->editor->folding()->createFold(3, 4); }},
        {"cursor moved",
         [](TestTextView *t) {
             t->manager->currentLineColor = green;
             t->view->setCursorPosition(4, 2, false);
         }},
        {"scrolled sideways", [](TestTextView *t) { t->view->setCursorPosition(1, 140, false); }},
        {"scrolled down, then typed",
         [](TestTextView *t) {
             t->view->vslide(2);
             QCoreApplication::processEvents();
             t->doc->cmdInsert(3, 0, QStringLiteral("abcdefgh ").repeated(9));
         }},
    };
    for (const int way : {int(NoFlag), int(Wrapped), int(Folded), int(Wrapped | Folded)}) {
        for (const Change &change : changes) {
            QTest::addRow("%s, way %d", change.name, way) << way << change.step;
        }
    }
}

void TestTextView::partialUpdatesLeaveNothingStale()
{
    QFETCH(int, way);
    QFETCH(std::function<void(TestTextView *)>, step);
    const QString wide = QStringLiteral("word and word ").repeated(10);
    setText(QStringLiteral("one\n%1\ntwo\n%1%1\nthree\nfour\n%1\nfive\nsix").arg(wide));
    apply(way);
    shown();
    step(this);
    const QImage left = shown();
    view->update();
    const QImage whole = shown();
    QVERIFY(left == whole);
}

void TestTextView::typingPaintsFewRows()
{
    setText(numberedLines(1000));
    view->setCursorPosition(5, 3, false);
    QCoreApplication::processEvents();
    int before = TextView::paintCount();
    QTest::keyClick(view, Qt::Key_X);
    QCoreApplication::processEvents();
    // The line and the one below, which could have been recoloured.
    QVERIFY(TextView::paintCount() > before);
    QVERIFY(TextView::paintCount() <= before + 2);
    before = TextView::paintCount();
    QTest::keyClick(view, Qt::Key_Down);
    QCoreApplication::processEvents();
    QVERIFY(TextView::paintCount() <= before + 2);
    // At the lowest place of the cursor nothing scrolls either.
    view->setCursorPosition(500, 0, false);
    QCoreApplication::processEvents();
    before = TextView::paintCount();
    QTest::keyClick(view, Qt::Key_X);
    QCoreApplication::processEvents();
    QVERIFY(TextView::paintCount() <= before + 2);
}

void TestTextView::scrollRanges()
{
    const QScrollBar *const vertical = bar(Qt::Vertical);
    const QScrollBar *const horizontal = bar(Qt::Horizontal);
    setText(QStringLiteral("short"));
    QVERIFY(!vertical->isEnabled());
    QVERIFY(vertical->isVisible());
    QVERIFY(horizontal->isHidden());
    setText(numberedLines(100) + QString(300, u'x'));
    QVERIFY(vertical->isEnabled());
    const int h = view->lineHeight();
    QCOMPARE(vertical->maximum(), (100 * h - view->height() / 2) / h + 1);
    QCOMPARE(vertical->pageStep(), view->height() / h + 1);
    QVERIFY(horizontal->isVisible());
    QCOMPARE(horizontal->maximum(), doc->documentWidth() - view->width());
    view->vslide(vertical->maximum());
    // The last line is in the middle then.
    QCOMPARE(view->lineNumber(view->contentsY()), vertical->maximum());
    doc->setWrap(true);
    QCoreApplication::processEvents();
    QVERIFY(horizontal->isHidden());
    view->setHScrollBarMode(TextView::AlwaysOn);
    view->setVScrollBarMode(TextView::AlwaysOff);
    view->updateView(true);
    QVERIFY(!horizontal->isHidden());
    QVERIFY(!horizontal->isEnabled());
    QVERIFY(vertical->isHidden());
}

void TestTextView::removedLinesScrollBack()
{
    setText(numberedLines(200) + QString(300, u'x'));
    const std::unique_ptr<TextEditor> other(manager->createEditor(nullptr, doc));
    other->resize(400, 200);
    other->show();
    QVERIFY(QTest::qWaitForWindowExposed(other.get()));
    other->moveCursor(199, 300);
    QVERIFY(other->view()->contentsX() > 0);
    doc->removeText(2, 0, 199, doc->textLength(199));
    QCoreApplication::processEvents();
    QCOMPARE(other->view()->contentsY(), 0);
    QCOMPARE(other->view()->contentsX(), 0);
    other->view()->updateLinesList();
    QCOMPARE(other->view()->lineNumber(0), 0);
}

void TestTextView::cursorIsScrolledIntoView_data()
{
    QTest::addColumn<int>("way");
    QTest::addColumn<int>("line");
    QTest::addColumn<int>("column");
    for (const int way : {int(NoFlag), int(Wrapped)}) {
        QTest::addRow("down, way %d", way) << way << 250 << 0;
        QTest::addRow("to the end, way %d", way) << way << 299 << 7;
        QTest::addRow("to the side, way %d", way) << way << 20 << 100;
    }
}

void TestTextView::cursorIsScrolledIntoView()
{
    QFETCH(int, way);
    QFETCH(int, line);
    QFETCH(int, column);
    QStringList lines = numberedLines(300).split(u'\n');
    for (int i = 10; i < 290; ++i)
        lines[i] += QString(100, u'x');
    setText(lines.join(u'\n'));
    apply(way);
    const QRect area(0, 0, view->width(), view->height());
    for (const QPoint &place : {QPoint(column, line), QPoint(0, 0), QPoint(column, line)}) {
        view->setCursorPosition(place.y(), place.x(), false);
        QVERIFY(area.contains(pointAt(place.x(), place.y())));
        QCOMPARE(bar(Qt::Vertical)->value(),
                 std::min(view->contentsY() / view->lineHeight(), bar(Qt::Vertical)->maximum()));
    }
}

void TestTextView::cursorGoesToTheMiddle()
{
    setText(numberedLines(300));
    view->centerCursor(150, 2);
    QCOMPARE(view->cursor()->pos(), QPoint(2, 150));
    const int y = pointAt(2, 150).y();
    QVERIFY(std::abs(y - view->height() / 2) <= 2 * view->lineHeight());
    view->centerCursor(0, 0);
    QCOMPARE(view->contentsY(), 0);
}

void TestTextView::wheelScrolls()
{
    setText(numberedLines(300));
    const auto turn = [this](int angle) {
        const QPointF at(50, 50);
        QWheelEvent event(at, view->mapToGlobal(at), QPoint(), QPoint(0, angle), Qt::NoButton,
                          Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(view, &event);
        return event.isAccepted();
    };
    QVERIFY(turn(-120));
    QCOMPARE(view->contentsY(), QApplication::wheelScrollLines() * view->lineHeight());
    QVERIFY(turn(120));
    QCOMPARE(view->contentsY(), 0);
    QVERIFY2(turn(120), "what cannot be scrolled must not scroll the parent");
}

void TestTextView::leftLineLosesTrailingBlanks()
{
    setText(QStringLiteral("one  \t \ntwo  \nthree"));
    manager->fRemoveSpaces = true;
    doc->setModified(false);
    view->setCursorPosition(0, 2, false);
    QCOMPARE(doc->text(), QStringLiteral("one  \t \ntwo  \nthree"));
    view->setCursorPosition(1, 2, false);
    QCOMPARE(doc->text(), QStringLiteral("one\ntwo  \nthree"));
    QVERIFY(!doc->isModified());
    doc->setReadOnly(true);
    view->setCursorPosition(2, 0, false);
    QCOMPARE(doc->text(), QStringLiteral("one\ntwo  \nthree"));
}

void TestTextView::selectionOrdersItsEnds()
{
    setText(numberedLines(10));
    const QSignalSpy changes(editor.get(), &TextEditor::changed);
    view->setSelection(QPoint(2, 5), QPoint(4, 3));
    QCOMPARE(view->selection().topLeft(), QPoint(4, 3));
    QCOMPARE(view->selection().bottomRight(), QPoint(2, 5));
    QCOMPARE(changes.count(), 1);
    view->setSelection(QPoint(4, 3), QPoint(2, 5));
    QCOMPARE(changes.count(), 1);
    view->clearSelection();
    view->setCursorPosition(4, 3, false);
    // The anchor stays while the other end passes it.
    view->setCursorPosition(6, 1, true);
    view->setCursorPosition(2, 5, true);
    QCOMPARE(view->selection().topLeft(), QPoint(5, 2));
    QCOMPARE(view->selection().bottomRight(), QPoint(3, 4));
    view->setCursorPosition(4, 3, true);
    QVERIFY(!view->hasSelection());
}

void TestTextView::lockedSelectionStays()
{
    setText(numberedLines(10));
    view->setSelection(QPoint(1, 1), QPoint(2, 2));
    view->lockSelection();
    view->setCursorPosition(5, 0, false);
    QVERIFY(view->hasSelection());
    const QSignalSpy changes(editor.get(), &TextEditor::changed);
    view->clearSelection();
    QVERIFY(view->hasSelection());
    QCOMPARE(changes.count(), 1);
    view->unlockSelection();
    view->setCursorPosition(6, 0, false);
    QVERIFY(!view->hasSelection());
}

void TestTextView::insideOfSelection_data()
{
    QTest::addColumn<QRect>("selection");
    QTest::addColumn<bool>("box");
    QTest::addColumn<QPoint>("place");
    QTest::addColumn<bool>("inside");
    const auto pair = [](int x1, int y1, int x2, int y2) {
        return QRect(QPoint(x1, y1), QPoint(x2, y2));
    };
    const QRect empty = pair(3, 3, 3, 3);
    const QRect forward = pair(2, 1, 5, 3);
    const QRect backward = pair(5, 1, 2, 3);
    QTest::newRow("empty") << empty << false << QPoint(3, 3) << false;
    QTest::newRow("start") << forward << false << QPoint(2, 1) << true;
    QTest::newRow("before start") << forward << false << QPoint(1, 1) << false;
    QTest::newRow("behind first line") << forward << false << QPoint(90, 1) << true;
    QTest::newRow("line between") << forward << false << QPoint(0, 2) << true;
    QTest::newRow("before end") << forward << false << QPoint(4, 3) << true;
    QTest::newRow("end") << forward << false << QPoint(5, 3) << false;
    QTest::newRow("below") << forward << false << QPoint(0, 4) << false;
    QTest::newRow("end left of start") << backward << false << QPoint(4, 1) << false;
    QTest::newRow("start right of end") << backward << false << QPoint(5, 1) << true;
    QTest::newRow("end left of start, end") << backward << false << QPoint(2, 3) << false;
    QTest::newRow("end left of start, before") << backward << false << QPoint(1, 3) << true;
    QTest::newRow("box") << backward << true << QPoint(2, 1) << true;
    QTest::newRow("right of box") << backward << true << QPoint(5, 2) << false;
    QTest::newRow("left of box") << forward << true << QPoint(1, 2) << false;
    QTest::newRow("one line") << pair(2, 1, 5, 1) << false << QPoint(5, 1) << false;
}

void TestTextView::insideOfSelection()
{
    QFETCH(QRect, selection);
    QFETCH(bool, box);
    QFETCH(QPoint, place);
    manager->fVerticalSelection = box;
    view->selected = selection;
    QTEST(view->inSelected(place.y(), place.x()), "inside");
    view->selected = QRect(QPoint(0, 0), QPoint(0, 0));
}

void TestTextView::selectionIsFilled_data()
{
    QTest::addColumn<bool>("box");
    QTest::addColumn<QRect>("selection");
    // For each line the filled columns, "#" for filled.
    QTest::addColumn<QStringList>("fills");
    const auto pair = [](int x1, int y1, int x2, int y2) {
        return QRect(QPoint(x1, y1), QPoint(x2, y2));
    };
    QTest::newRow("in one line") << false << pair(2, 0, 5, 0)
                                 << QStringList{QStringLiteral("..###..."),
                                                QStringLiteral("........")};
    QTest::newRow("over lines") << false << pair(3, 0, 2, 2)
                                << QStringList{QStringLiteral("...#####"),
                                               QStringLiteral("########"),
                                               QStringLiteral("##......")};
    QTest::newRow("to a line's start")
        << false << pair(3, 0, 0, 1)
        << QStringList{QStringLiteral("...#####"), QStringLiteral("........")};
    QTest::newRow("box in one line")
        << true << pair(2, 0, 5, 0)
        << QStringList{QStringLiteral("..###..."), QStringLiteral("........")};
    QTest::newRow("box over lines is a stream too")
        << true << pair(3, 0, 5, 2)
        << QStringList{QStringLiteral("...#####"), QStringLiteral("########"),
                       QStringLiteral("#####...")};
}

void TestTextView::selectionIsFilled()
{
    QFETCH(bool, box);
    QFETCH(QRect, selection);
    QFETCH(QStringList, fills);
    setText(QStringLiteral("        \n        \n        \n        \n"));
    view->setCursorPosition(4, 0, false);
    manager->setVerticalSelection(box);
    view->setSelection(selection.topLeft(), selection.bottomRight());
    view->updateView(false);
    const QImage image = shown();
    for (int line = 0; line < fills.size(); ++line) {
        QString seen;
        for (int column = 0; column < fills[line].size(); ++column) {
            const bool filled = colorAt(image, pointAt(column, line)) == red;
            seen += filled ? u'#' : u'.';
        }
        QCOMPARE(seen, fills[line]);
        // The free edge at the left belongs to the first column.
        const bool edge = colorAt(image, {0, pointAt(0, line).y()}) == red;
        QCOMPARE(edge, fills[line].startsWith(u'#'));
    }
}

void TestTextView::fillsCoverEachOther()
{
    setText(QStringLiteral("one\n\nthree\nfour"));
    doc->lineOf(0)->setLineColor(green);
    doc->lineOf(2)->setLineColor(green);
    QCOMPARE(fillAt(20, 0), green);
    manager->currentLineColor = QColor(0, 0, 255);
    QCOMPARE(fillAt(20, 0), manager->currentLineColor);
    QCOMPARE(fillAt(20, 2), green);
    manager->currentLineColor = manager->normalBackgroundColor;
    QCOMPARE(fillAt(20, 0), green);
    view->setSelection(QPoint(0, 0), QPoint(0, 1));
    QCOMPARE(fillAt(20, 0), red);
    // A closed fold has a line below its first line.
    const int h = view->lineHeight();
    QCOMPARE(colorAt(view->grab().toImage(), {200, h - 1}), red);
    view->clearSelection();
    editor->folding()->createFold(2, 3);
    QCOMPARE(colorAt(view->grab().toImage(), {200, 3 * h - 1}), QColor(50, 50, 50));
}

void TestTextView::blankLinesInheritBackground()
{
    setText(QStringLiteral("\n\nx\n\n\ny\n"));
    TextAttribute *const attribute = view->hl->attribute(0);
    attribute->usebg = true;
    attribute->bgcolor = green;
    QCOMPARE(fillAt(30, 2), green);
    QCOMPARE(fillAt(30, 3), green);
    QCOMPARE(fillAt(30, 4), green);
    QCOMPARE(fillAt(30, 6), green);
    // The first two lines never inherit.
    QCOMPARE(fillAt(30, 0), QColor(Qt::white));
    QCOMPARE(fillAt(30, 1), QColor(Qt::white));
    setText(QStringLiteral("x\n\n\n"));
    QCOMPARE(fillAt(30, 1), QColor(Qt::white));
    // Walking up ends at line 1.
    QCOMPARE(fillAt(30, 2), QColor(Qt::white));
}

// Only what is on screen is drawn of a line, so it has to be found.
void TestTextView::longLineShowsItsPlace()
{
    const QString piece = QStringLiteral("ab\tcdefg hij-");
    const auto shot = [this, &piece](int repeats, int first) {
        setText(piece.repeated(repeats));
        view->hslide(doc->textWidth(0, first * int(piece.size())));
        return shown();
    };
    const QImage expected = shot(30, 4);
    QElapsedTimer timer;
    setText(piece.repeated(200000));
    const int x = doc->textWidth(0, 100000 * int(piece.size()));
    timer.start();
    view->hslide(x);
    const QImage image = shown();
    QVERIFY2(timer.elapsed() < 500, qPrintable(QString::number(timer.elapsed())));
    QVERIFY(image == expected);
}

void TestTextView::longWrappedLineIsQuick()
{
    doc->setWrap(true);
    setText(QStringLiteral("word and text ").repeated(150000));
    QElapsedTimer timer;
    timer.start();
    QTest::keyClick(view, Qt::Key_X);
    shown();
    QVERIFY2(timer.elapsed() < 1000, qPrintable(QString::number(timer.elapsed())));
    QCOMPARE(view->docPosToScreen(1, 0).y(), 0);
    view->setCursorPosition(0, doc->textLength(0), false);
    // The line stays in view though its end cannot be.
    QCOMPARE(view->contentsY(), 0);
}

void TestTextView::pressAndDragSelect()
{
    setText(numberedLines(10));
    QTest::mousePress(view, Qt::LeftButton, Qt::NoModifier, pointAt(2, 1));
    QCOMPARE(view->cursor()->pos(), QPoint(2, 1));
    QTest::mouseMove(view, pointAt(4, 3));
    QMouseEvent move(QEvent::MouseMove, pointAt(4, 3), view->mapToGlobal(pointAt(4, 3)),
                     Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(view, &move);
    QTest::mouseRelease(view, Qt::LeftButton, Qt::NoModifier, pointAt(4, 3));
    QCOMPARE(view->selection(), QRect(QPoint(2, 1), QPoint(4, 3)));
    const QString text = QStringLiteral("ne 1\nline 2\nline");
    const QClipboard *const clipboard = QGuiApplication::clipboard();
    if (clipboard->supportsSelection())
        QCOMPARE(clipboard->text(QClipboard::Selection), text);
    else
        QCOMPARE(manager->winClipboard, text);
    QTest::mouseClick(view, Qt::LeftButton, Qt::ShiftModifier, pointAt(1, 5));
    QCOMPARE(view->selection(), QRect(QPoint(2, 1), QPoint(1, 5)));
}

void TestTextView::clickInSelectionClearsIt()
{
    setText(numberedLines(10));
    view->setCursorPosition(1, 1, false);
    view->setCursorPosition(3, 3, true);
    QTest::mousePress(view, Qt::LeftButton, Qt::NoModifier, pointAt(2, 2));
    QVERIFY(view->hasSelection());
    QTest::mouseRelease(view, Qt::LeftButton, Qt::NoModifier, pointAt(2, 2));
    QVERIFY(!view->hasSelection());
    QCOMPARE(view->cursor()->pos(), QPoint(2, 2));
    // The armed drag is over.
    view->setCursorPosition(4, 4, false);
    QTest::mouseClick(view, Qt::RightButton, Qt::NoModifier, pointAt(0, 0));
    QCOMPARE(view->cursor()->pos(), QPoint(4, 4));
}

void TestTextView::doubleClickSelectsWord()
{
    setText(QStringLiteral("some_word, other"));
    QTest::mouseDClick(view, Qt::LeftButton, Qt::NoModifier, pointAt(4, 0));
    QCOMPARE(view->selection(), QRect(QPoint(0, 0), QPoint(9, 0)));
    QTest::mouseDClick(view, Qt::LeftButton, Qt::NoModifier, pointAt(12, 0));
    QCOMPARE(editor->getSelectedText(), QStringLiteral("other"));
    QTest::mouseDClick(view, Qt::LeftButton, Qt::NoModifier, QPoint(300, 5));
    QVERIFY(!view->hasSelection());
}

void TestTextView::dragMovesOrCopies_data()
{
    QTest::addColumn<bool>("ctrl");
    QTest::addColumn<QString>("text");
    QTest::newRow("moved") << false << QStringLiteral("first\nsec\nthirdond");
    QTest::newRow("copied") << true << QStringLiteral("first\nsecond\nthirdond");
}

void TestTextView::dragMovesOrCopies()
{
    QFETCH(bool, ctrl);
    QFETCH(QString, text);
    setText(QStringLiteral("first\nsecond\nthird"));
    // Somebody else's selection must not come in the place of what is dragged.
    QGuiApplication::clipboard()->setText(QStringLiteral("foreign"), QClipboard::Selection);
    view->setCursorPosition(1, 3, false);
    view->setCursorPosition(1, 6, true);
    const Qt::KeyboardModifiers modifiers = ctrl ? Qt::ControlModifier : Qt::NoModifier;
    QTest::mousePress(view, Qt::LeftButton, modifiers, pointAt(4, 1));
    for (const QPoint &to : {pointAt(5, 1), pointAt(2, 2), pointAt(5, 2)}) {
        QMouseEvent move(QEvent::MouseMove, to, view->mapToGlobal(to), Qt::NoButton, Qt::LeftButton,
                         modifiers);
        QApplication::sendEvent(view, &move);
        QVERIFY(view->hasSelection());
    }
    QCOMPARE(view->QWidget::cursor().shape(), Qt::PointingHandCursor);
    QTest::mouseRelease(view, Qt::LeftButton, modifiers, pointAt(5, 2));
    QCOMPARE(doc->text(), text);
    QVERIFY(!view->hasSelection());
    QVERIFY(doc->isModified());
}

void TestTextView::middleButtonPastes()
{
    QClipboard *const clipboard = QGuiApplication::clipboard();
    if (!clipboard->supportsSelection())
        QSKIP("needs the X11 selection");
    setText(QStringLiteral("first\nsecond"));
    clipboard->setText(QStringLiteral("pasted "), QClipboard::Selection);
    view->setCursorPosition(1, 0, false);
    QTest::mouseClick(view, Qt::MiddleButton, Qt::NoModifier, pointAt(2, 0));
    QCOMPARE(doc->text(), QStringLiteral("first\npasted second"));
}

void TestTextView::rightButtonOpensTheMenu()
{
    setText(numberedLines(10));
    view->rmbMenu()->addAction(QStringLiteral("entry"));
    view->setCursorPosition(4, 4, false);
    bool opened = false;
    QTimer::singleShot(0, view, [this, &opened] {
        opened = view->rmbMenu()->isVisible();
        view->rmbMenu()->close();
    });
    QTest::mouseClick(view, Qt::RightButton, Qt::NoModifier, pointAt(1, 1));
    QVERIFY(opened);
    QCOMPARE(view->cursor()->pos(), QPoint(4, 4));
}

void TestTextView::keysBeforeShortcuts_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("taken");
    const Qt::KeyboardModifiers none;
    const Qt::KeyboardModifiers shift = Qt::ShiftModifier;
    const Qt::KeyboardModifiers ctrl = Qt::ControlModifier;
    const Qt::KeyboardModifiers alt = Qt::AltModifier;
    QTest::newRow("letter") << int(Qt::Key_A) << none << QStringLiteral("a") << true;
    QTest::newRow("minus") << int(Qt::Key_Minus) << none << QStringLiteral("-") << true;
    QTest::newRow("Left") << int(Qt::Key_Left) << none << QString() << true;
    QTest::newRow("Shift+Down") << int(Qt::Key_Down) << shift << QString() << true;
    QTest::newRow("Delete") << int(Qt::Key_Delete) << none << QStringLiteral("\x7f") << true;
    QTest::newRow("Escape") << int(Qt::Key_Escape) << none << QStringLiteral("\x1b") << true;
    QTest::newRow("Ctrl+Insert") << int(Qt::Key_Insert) << ctrl << QString() << true;
    QTest::newRow("Shift+Insert") << int(Qt::Key_Insert) << shift << QString() << true;
    QTest::newRow("Ctrl+C") << int(Qt::Key_C) << ctrl << QStringLiteral("\x03") << false;
    QTest::newRow("F3") << int(Qt::Key_F3) << none << QString() << false;
    QTest::newRow("Alt+Up") << int(Qt::Key_Up) << alt << QString() << false;
    QTest::newRow("Alt+A") << int(Qt::Key_A) << alt << QStringLiteral("a") << false;
}

void TestTextView::keysBeforeShortcuts()
{
    QFETCH(int, key);
    QFETCH(Qt::KeyboardModifiers, modifiers);
    QFETCH(QString, text);
    QKeyEvent event(QEvent::ShortcutOverride, key, modifiers, text);
    event.ignore();
    QApplication::sendEvent(view, &event);
    QTEST(event.isAccepted(), "taken");
}

void TestTextView::focusIsAnnounced()
{
    const QSignalSpy focus(view, &TextView::focusChanged);
    const QSignalSpy active(manager.get(), &TextEditorManager::activate);
    QWidget other;
    other.setFocusPolicy(Qt::StrongFocus);
    other.show();
    other.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&other));
    QTRY_COMPARE(focus.count(), 1);
    QVERIFY(!focus.last().first().toBool());
    QVERIFY(!view->cursor()->isEnabled());
    editor->activateWindow();
    QTRY_COMPARE(focus.count(), 2);
    QVERIFY(focus.last().first().toBool());
    QVERIFY(view->cursor()->isEnabled());
    QCOMPARE(active.count(), 1);
}

Q_DECLARE_METATYPE(std::function<void(TestTextView *)>)

QTEST_MAIN(TestTextView)
#include "tst_textview.moc"
