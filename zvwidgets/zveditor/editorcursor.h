#pragma once

#include <QObject>
#include <QPoint>
#include <QRect>

#include <memory>

class QKeyEvent;
class QPainter;

namespace zvwidgets {

class TextView;

/// The insertion point of one view: holds the position and the column wanted
/// by vertical moves, turns key presses into moves or commands of the
/// document, and decides when its blinking image is to be seen. The view owns
/// it, draws it last in its paint event, and must outlive it.
class EditorCursor : public QObject
{
    Q_OBJECT
public:
    enum CursorAction
    {
        MoveBackward,
        MoveForward,
        MoveWordBackward,
        MoveWordForward,
        MoveUp,
        MoveDown,
        MoveLineStart,
        MoveLineEnd,
        MoveHome,
        MoveEnd,
        MovePgUp,
        MovePgDown
    };

    explicit EditorCursor(TextView *view);
    ~EditorCursor() override;

    /// Runs the command of the key, or types its text. Other events are ignored, so
    /// that the parent gets them.
    void keyPressEvent(QKeyEvent *event);
    /// What a key with \a text does: the text replaces the selection or is inserted at
    /// the cursor, over the characters there in overwrite mode. Nothing happens in
    /// a read-only document. Also the way in for an input method.
    void typeText(const QString &text);

    /// \a select extends the selection to the new place; otherwise it is cleared.
    void move(CursorAction action, bool select);
    /// Places the cursor; \a line is clamped to the document, \a column may lie
    /// past the line's end. \a update scrolls the view to the new place.
    /// Leaves the selection and the wanted column alone.
    void set(int line, int column, bool update);
    /// Vertical moves return to the visual column of \a column in this line.
    void setWantedColumn(int column);

    int line() const;
    int column() const;
    /// x is the column, y the line.
    QPoint pos() const;

    /// The image is to be seen at this moment of the blinking.
    bool isEnabled() const;
    /// Calls nest: each setEnabled(false) needs one setEnabled(true).
    void setEnabled(bool enabled);
    /// The view got the focus: shows the image and starts the blinking.
    void activate();
    void deactivate();
    /// Asks the view to repaint the image's old and its present place.
    void paint();

    /// Where the image stood at the last paint(), in pixels of the view.
    QRect shape() const;
    /// Inverts the pixels of shape(), if isEnabled(). For the end of the view's
    /// paint event; changes nothing, so it may run at any repaint.
    void draw(QPainter &painter) const;

signals:
    void changePosition(int line, int column);

protected:
    void timerEvent(QTimerEvent *event) override;

    /// First line below \a line that no closed fold hides; the last line of
    /// the document ends the search, hidden or not.
    int nextVisibleLine(int line) const;
    int prevVisibleLine(int line) const;

private:
    struct Private;
    const std::unique_ptr<Private> d;
};

} // namespace zvwidgets
