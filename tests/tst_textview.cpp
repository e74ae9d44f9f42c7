#include "tests/viewtest.h"
#include "zvwidgets/zveditor/editormargins.h"

#include <QApplication>
#include <QClipboard>
#include <QMenu>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>
#include <QWheelEvent>

#include <memory>

using namespace Qt::StringLiterals;
using namespace zvwidgets;

class TestTextView : public ViewTest
{
    Q_OBJECT

private slots:
    void init() { showEditor(); }
    void cleanup() { closeEditor(); }

    void positionsComeBack_data();
    void positionsComeBack();
    void wrappedRowsAreIndented_data();
    void wrappedRowsAreIndented();
    void rowsFollowEveryChange();
    void belowTheText();
    void scrollRanges();
    void removedLinesScrollBack();
    void cursorIsScrolledIntoView_data();
    void cursorIsScrolledIntoView();
    void wheelScrolls();
    void leftLineLosesTrailingBlanks();
    void selectionOrdersItsEnds();
    void selectionTakesWholeCharacters();
    void insideOfSelection_data();
    void insideOfSelection();
    void mouseSelects();
    void dragBeyondTheEdgeScrolls();
    void dragMovesOrCopies_data();
    void dragMovesOrCopies();
    void rightButtonOpensTheMenu();
    void middleDoubleClickPastesAgain();
    void keysBeforeShortcuts_data();
    void keysBeforeShortcuts();
};

void TestTextView::positionsComeBack_data()
{
    const Rows<int> row("way");
    row("unwrapped", NoFlag);
    row("wrapped", Wrapped);
    row("wrapped at words", WrappedAtWords);
    row("folded", Folded);
    row("proportional, wrapped", int(Proportional | Wrapped));
}

void TestTextView::positionsComeBack()
{
    QFETCH(int, way);
    const QString words = u"some words and more "_s.repeated(8);
    setText(u"a\tb\n"_s + words + u"\nhidden\n\n\t\tx = %1;\nlast"_s.arg(words));
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
    const Rows<QString, int, int> row("text", "editorWidth", "blanks");
    row("like the line", "      ", 500, 6);
    row("not at all", QString(), 500, 0);
    row("too far in", QString(42, u' '), 500, -1);
    row("narrow view", "  ", 170, -1);
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
    setText(u"a\n%1\nb\n%1\nend"_s.arg(wide));
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
    manager->setFont(QFont(u"DejaVu Sans Mono"_s, 5));
    QCOMPARE(rowOf(5), 5);
}

void TestTextView::belowTheText()
{
    setText(u"first\nsecond\nthird\nfourth"_s);
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

void TestTextView::scrollRanges()
{
    const QScrollBar *const vertical = bar(Qt::Vertical);
    const QScrollBar *const horizontal = bar(Qt::Horizontal);
    setText(u"short"_s);
    QVERIFY(!vertical->isEnabled());
    QVERIFY(vertical->isVisible());
    QVERIFY(horizontal->isHidden());
    setText(numberedLines(100) + QString(300, u'x'));
    QVERIFY(vertical->isEnabled());
    const int h = view->lineHeight();
    // The last line is in the middle then.
    QCOMPARE(vertical->maximum(), (100 * h - view->height() / 2) / h + 1);
    QVERIFY(horizontal->isVisible());
    // After the longest line there is room for the cursor.
    QCOMPARE(horizontal->maximum(), doc->documentWidth() + 2 + view->spaceWidth() - view->width());
    doc->setWrap(true);
    QCoreApplication::processEvents();
    QVERIFY(horizontal->isHidden());
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
    const Rows<int, int, int> row("way", "line", "column");
    row("down", NoFlag, 250, 0);
    row("to the end", NoFlag, 299, 7);
    row("to the end, wrapped", Wrapped, 299, 7);
    row("to the side", NoFlag, 20, 100);
    row("to the end of the longest line", NoFlag, 289, 108);
    row("to the end of the longest line, wrapped", Wrapped, 289, 108);
    row("after the end of the longest line", NoFlag, 289, 200);
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
        QVERIFY(area.contains(cursor->shape()));
        QCOMPARE(bar(Qt::Vertical)->value(),
                 std::min(view->contentsY() / view->lineHeight(), bar(Qt::Vertical)->maximum()));
    }
}

void TestTextView::wheelScrolls()
{
    setText(numberedLines(300));
    const auto turn = [](QWidget *widget, int angle) {
        const QPointF at(5, 50);
        QWheelEvent event(at, widget->mapToGlobal(at), QPoint(), QPoint(0, angle), Qt::NoButton,
                          Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(widget, &event);
        return event.isAccepted();
    };
    const QList<QWidget *> widgets{view, view->indicatorMargin(), view->lineNumberMargin(),
                                   view->foldingMargin(), view->selectionMargin()};
    for (QWidget *widget : widgets) {
        QVERIFY(turn(widget, -120));
        QCOMPARE(view->contentsY(), QApplication::wheelScrollLines() * view->lineHeight());
        QVERIFY(turn(widget, 120));
        QCOMPARE(view->contentsY(), 0);
        QVERIFY2(turn(widget, 120), "what cannot be scrolled must not scroll the parent");
    }
}

void TestTextView::leftLineLosesTrailingBlanks()
{
    setText(u"one  \t \ntwo  \nthree"_s);
    manager->fRemoveSpaces = true;
    doc->setModified(false);
    view->setCursorPosition(0, 2, false);
    QCOMPARE(doc->text(), u"one  \t \ntwo  \nthree"_s);
    view->setCursorPosition(1, 2, false);
    QCOMPARE(doc->text(), u"one\ntwo  \nthree"_s);
    QVERIFY(!doc->isModified());
    doc->setReadOnly(true);
    view->setCursorPosition(2, 0, false);
    QCOMPARE(doc->text(), u"one\ntwo  \nthree"_s);
}

void TestTextView::selectionOrdersItsEnds()
{
    setText(numberedLines(10));
    const QSignalSpy changes(editor.get(), &TextEditor::changed);
    view->setSelection(QPoint(2, 5), QPoint(4, 3));
    QCOMPARE(view->selection(), QRect(QPoint(4, 3), QPoint(2, 5)));
    view->setSelection(QPoint(4, 3), QPoint(2, 5));
    QCOMPARE(changes.count(), 1);
    view->clearSelection();
    view->setCursorPosition(4, 3, false);
    // The anchor stays while the other end passes it.
    view->setCursorPosition(6, 1, true);
    view->setCursorPosition(2, 5, true);
    QCOMPARE(view->selection(), QRect(QPoint(5, 2), QPoint(3, 4)));
    view->setCursorPosition(4, 3, true);
    QVERIFY(!view->hasSelection());
}

void TestTextView::selectionTakesWholeCharacters()
{
    setText(u"a😀😀b\nabcdef"_s);
    view->setSelection(QPoint(4, 0), QPoint(2, 0));
    QCOMPARE(view->selection(), QRect(QPoint(1, 0), QPoint(5, 0)));
    view->setSelection(QPoint(1, 1), QPoint(4, 0));
    QCOMPARE(view->selection(), QRect(QPoint(3, 0), QPoint(1, 1)));
    // A box keeps its columns for the other lines.
    manager->fVerticalSelection = true;
    view->setSelection(QPoint(2, 0), QPoint(4, 1));
    QCOMPARE(view->selection(), QRect(QPoint(2, 0), QPoint(4, 1)));
    QString inside;
    for (int column = 0; column <= 5; ++column)
        inside += view->inSelected(0, column) ? u'x' : u'.';
    QCOMPARE(inside, u".xxxx."_s);
    QVERIFY(!view->inSelected(1, 1) && view->inSelected(1, 2) && !view->inSelected(1, 4));
}

void TestTextView::insideOfSelection_data()
{
    const Rows<QPoint, QPoint, bool, QPoint, bool> row("from", "to", "box", "place", "inside");
    row("empty", {3, 3}, {3, 3}, false, {3, 3}, false);
    row("start", {2, 1}, {5, 3}, false, {2, 1}, true);
    row("behind first line", {2, 1}, {5, 3}, false, {90, 1}, true);
    row("before end", {2, 1}, {5, 3}, false, {4, 3}, true);
    row("end", {2, 1}, {5, 3}, false, {5, 3}, false);
    row("below", {2, 1}, {5, 3}, false, {0, 4}, false);
    row("end left of start", {5, 1}, {2, 3}, false, {4, 1}, false);
    row("start right of end", {5, 1}, {2, 3}, false, {5, 1}, true);
    row("end left of start, before", {5, 1}, {2, 3}, false, {1, 3}, true);
    row("right of box", {5, 1}, {2, 3}, true, {5, 2}, false);
    row("left of box", {2, 1}, {5, 3}, true, {1, 2}, false);
}

void TestTextView::insideOfSelection()
{
    QFETCH(QPoint, from);
    QFETCH(QPoint, to);
    QFETCH(bool, box);
    QFETCH(QPoint, place);
    manager->fVerticalSelection = box;
    view->selected = QRect(from, to);
    QTEST(view->inSelected(place.y(), place.x()), "inside");
    view->selected = QRect(QPoint(0, 0), QPoint(0, 0));
}

void TestTextView::mouseSelects()
{
    setText(numberedLines(10));
    QTest::mousePress(view, Qt::LeftButton, Qt::NoModifier, pointAt(2, 1));
    QCOMPARE(view->cursor()->pos(), QPoint(2, 1));
    dragTo(view, pointAt(4, 3));
    QTest::mouseRelease(view, Qt::LeftButton, Qt::NoModifier, pointAt(4, 3));
    QCOMPARE(view->selection(), QRect(QPoint(2, 1), QPoint(4, 3)));
    QCOMPARE(QGuiApplication::clipboard()->text(QClipboard::Selection), u"ne 1\nline 2\nline"_s);
    QTest::mouseClick(view, Qt::LeftButton, Qt::ShiftModifier, pointAt(1, 5));
    QCOMPARE(view->selection(), QRect(QPoint(2, 1), QPoint(1, 5)));

    // A press inside could begin a drag, so only the release clears.
    QTest::mousePress(view, Qt::LeftButton, Qt::NoModifier, pointAt(2, 2));
    QVERIFY(view->hasSelection());
    QTest::mouseRelease(view, Qt::LeftButton, Qt::NoModifier, pointAt(2, 2));
    QVERIFY(!view->hasSelection());
    QCOMPARE(view->cursor()->pos(), QPoint(2, 2));
    // The armed drag is over.
    view->setCursorPosition(4, 4, false);
    QTest::mouseClick(view, Qt::RightButton, Qt::NoModifier, pointAt(0, 0));
    QCOMPARE(view->cursor()->pos(), QPoint(4, 4));

    // A character of two units is selected whole or not at all.
    const QString faces = u"\U0001f600"_s.repeated(3);
    setText(faces);
    QTest::mousePress(view, Qt::LeftButton, Qt::NoModifier, pointAt(0, 0));
    dragTo(view, pointAt(3, 0));
    QCOMPARE(editor->getSelectedText(), faces.left(2));
    QTest::mouseRelease(view, Qt::LeftButton, Qt::NoModifier, pointAt(3, 0));
    view->setSelection(QPoint(1, 0), QPoint(3, 0));
    QCOMPARE(editor->getSelectedText(), faces.left(4));

    setText(u"some_word, other"_s);
    QTest::mouseDClick(view, Qt::LeftButton, Qt::NoModifier, pointAt(4, 0));
    QCOMPARE(editor->getSelectedText(), u"some_word"_s);
    QTest::mouseDClick(view, Qt::LeftButton, Qt::NoModifier, pointAt(12, 0));
    QCOMPARE(editor->getSelectedText(), u"other"_s);
    QTest::mouseDClick(view, Qt::LeftButton, Qt::NoModifier, QPoint(300, 5));
    QVERIFY(!view->hasSelection());
}

/// How far out the pointer has to be depends on where the window is, which is meant.
void TestTextView::dragBeyondTheEdgeScrolls()
{
    setText(QString(300, u'x') + (u'\n' + QString(30, u'x')).repeated(100));
    view->setCursorPosition(50, 20, false);
    view->hslide(50);
    const QPoint start = pointAt(20, 50);
    QTest::mousePress(view, Qt::LeftButton, Qt::NoModifier, start);
    const auto scrolledBy = [this](const QPoint &pointer) {
        const QPoint before(view->contentsX(), view->contentsY());
        cursor->set(50, 20, false);
        dragTo(view, pointer);
        return QPoint(view->contentsX(), view->contentsY()) - before;
    };
    const QPoint outside = view->mapToGlobal(view->rect().bottomRight()) + QPoint(1, 1);
    QVERIFY(scrolledBy({start.x(), -1}).y() < 0);
    QVERIFY(scrolledBy({start.x(), outside.y()}).y() > 0);
    // The end of the line is in view.
    QCOMPARE(scrolledBy({outside.x(), start.y()}), QPoint(1, 0));
    QTest::mouseRelease(view, Qt::LeftButton, Qt::NoModifier, start);
    QVERIFY(view->hasSelection());
}

void TestTextView::dragMovesOrCopies_data()
{
    const Rows<bool, QString> row("ctrl", "text");
    row("moved", false, "first\nsec\nthirdond");
    row("copied", true, "first\nsecond\nthirdond");
}

void TestTextView::dragMovesOrCopies()
{
    QFETCH(bool, ctrl);
    QFETCH(QString, text);
    setText(u"first\nsecond\nthird"_s);
    // Somebody else's selection must not come in the place of what is dragged.
    QGuiApplication::clipboard()->setText(u"foreign"_s, QClipboard::Selection);
    view->setCursorPosition(1, 3, false);
    view->setCursorPosition(1, 6, true);
    const Qt::KeyboardModifiers modifiers = ctrl ? Qt::ControlModifier : Qt::NoModifier;
    QTest::mousePress(view, Qt::LeftButton, modifiers, pointAt(4, 1));
    for (const QPoint &to : {pointAt(5, 1), pointAt(2, 2), pointAt(5, 2)}) {
        dragTo(view, to, modifiers);
        QVERIFY(view->hasSelection());
    }
    QCOMPARE(view->QWidget::cursor().shape(), Qt::PointingHandCursor);
    QTest::mouseRelease(view, Qt::LeftButton, modifiers, pointAt(5, 2));
    QCOMPARE(doc->text(), text);
    QVERIFY(!view->hasSelection());
    QVERIFY(doc->isModified());
}

void TestTextView::rightButtonOpensTheMenu()
{
    setText(numberedLines(10));
    view->rmbMenu()->addAction(u"entry"_s);
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

// The toolkit turns the second of two quick clicks into a double click.
void TestTextView::middleDoubleClickPastesAgain()
{
    setText(u"return"_s);
    QGuiApplication::clipboard()->setText(u"PASTE"_s, QClipboard::Selection);
    const QPointF at = pointAt(0, 0);
    for (const QEvent::Type type : {QEvent::MouseButtonPress, QEvent::MouseButtonDblClick}) {
        QMouseEvent event(type, at, view->mapToGlobal(at), Qt::MiddleButton, Qt::MiddleButton,
                          Qt::NoModifier);
        QCoreApplication::sendEvent(view, &event);
    }
    QCOMPARE(doc->text(), u"PASTEPASTEreturn"_s);
    QVERIFY(!view->hasSelection());
    QCOMPARE(QGuiApplication::clipboard()->text(QClipboard::Selection), u"PASTE"_s);
}

void TestTextView::keysBeforeShortcuts_data()
{
    const Rows<Qt::Key, Qt::KeyboardModifier, QString, bool> row("key", "modifiers", "text",
                                                                 "taken");
    row("letter", Qt::Key_A, Qt::NoModifier, "a", true);
    row("Left", Qt::Key_Left, Qt::NoModifier, QString(), true);
    row("Delete", Qt::Key_Delete, Qt::NoModifier, "\x7f", true);
    row("Escape", Qt::Key_Escape, Qt::NoModifier, "\x1b", true);
    row("Ctrl+Insert", Qt::Key_Insert, Qt::ControlModifier, QString(), true);
    row("Ctrl+C", Qt::Key_C, Qt::ControlModifier, "\x03", false);
    row("F3", Qt::Key_F3, Qt::NoModifier, QString(), false);
    row("Alt+Up", Qt::Key_Up, Qt::AltModifier, QString(), false);
}

void TestTextView::keysBeforeShortcuts()
{
    QFETCH(Qt::Key, key);
    QFETCH(Qt::KeyboardModifier, modifiers);
    QFETCH(QString, text);
    QKeyEvent event(QEvent::ShortcutOverride, key, modifiers, text);
    event.ignore();
    QApplication::sendEvent(view, &event);
    QTEST(event.isAccepted(), "taken");
}

QTEST_MAIN(TestTextView)
#include "tst_textview.moc"
