#pragma once

#include <QList>
#include <QSplitter>
#include <QSplitterHandle>

#include <memory>

class QTextStream;

namespace vesk {

class Splitter;

/// The handle between two panes: a row of small raised dots. While it is dragged
/// either the panes move along, or a rubber band does and the panes at the end.
class SplitterHandle : public QSplitterHandle
{
    Q_OBJECT
public:
    SplitterHandle(Qt::Orientation orientation, Splitter *parent);

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    int id() const;
    int wantedPos(const QMouseEvent *event) const;

    Splitter *const s;
    /// Where in the handle it was taken hold of, in pixels along the splitter.
    int grip = 0;
};

/// The toolkit's splitter with handles of its own, moved by a rubber band, and
/// with a memory for hidden panes: sizes() tells the size a hidden pane had, and
/// it gets that size back when it is shown again.
class Splitter : public QSplitter
{
    Q_OBJECT
public:
    /// What a pane does when the splitter is resized. Auto shares the room as
    /// the toolkit does.
    enum ResizeMode
    {
        Stretch = 0,
        KeepSize = 1,
        FollowSizeHint = 2,
        Auto = 3
    };

    explicit Splitter(QWidget *parent = nullptr, const QString &name = QString());
    explicit Splitter(Qt::Orientation orientation, QWidget *parent = nullptr,
                      const QString &name = QString());
    ~Splitter() override;

    virtual void setOrientation(Qt::Orientation orientation);
    virtual void setResizeMode(QWidget *pane, ResizeMode mode);
    virtual void setOpaqueResize(bool on);

    /// A pane whose minimum size is exactly 1 cannot be collapsed all the same.
    void setCollapsible(QWidget *pane, bool on);

    void moveToFirst(QWidget *pane);
    void moveToLast(QWidget *pane);

    /// In pixels, one entry a pane in order: 0 for a collapsed pane, for a hidden
    /// one the size it had when it was visible last.
    QList<int> sizes() const;
    /// Panes beyond the end of \a list keep their size.
    void setSizes(const QList<int> &list);

    /// Gives a collapsed \a pane, visible or hidden, the size that it had before,
    /// \a standard in pixels if it never had one. Others stay as they are.
    void reopen(QWidget *pane, int standard);

    /// 0 means the width that the style gives.
    void setHandleWidth(int width);

    /// The id of the handle behind \a pane; 0 if there is none.
    int idAfter(const QWidget *pane) const;
    /// Moves the handle \a id as near to \a pos, in pixels from the start of the
    /// splitter, as the panes allow.
    void moveSplitter(int pos, int id);
    int adjustPos(int pos, int id);
    void getRange(int id, int *min, int *max) const;

    friend QTextStream &operator<<(QTextStream &stream, const Splitter &splitter);
    friend QTextStream &operator>>(QTextStream &stream, Splitter &splitter);

protected:
    friend class SplitterHandle;

    /// Paints a handle in the given rectangle.
    virtual void drawSplitter(QPainter *painter, int x, int y, int width, int height);
    /// Shows where a dragged handle would come to stand; -1 ends it.
    virtual void setRubberband(int pos);

    QSplitterHandle *createHandle() override;
    bool event(QEvent *event) override;
    bool eventFilter(QObject *object, QEvent *event) override;
    void childEvent(QChildEvent *event) override;

private:
    struct Private;

    bool isCollapsed(const QWidget *pane) const;
    int takeWantedSize(int index);
    void settleCollapsible();
    void settleSizes();
    void give(QList<int> *list, int index, int size) const;

    const std::unique_ptr<Private> d;
};

/// Writes the panes on one line: `[200,H0,700]` is a visible pane of 200 pixels,
/// a hidden and collapsed one, and one of 700.
QTextStream &operator<<(QTextStream &stream, const Splitter &splitter);
/// Reads such a line. Panes beyond its list, and all from the first unexpected
/// character on, stay as they are.
QTextStream &operator>>(QTextStream &stream, Splitter &splitter);

} // namespace vesk
