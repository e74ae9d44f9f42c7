#pragma once

#include <QPixmap>
#include <QWidget>

#include <memory>

namespace zvwidgets {

class TextDocument;
class TextEditorManager;
class TextView;

/// A narrow column left of the text that follows the rows of the view and
/// paints them one by one through a pixmap of one row. The view creates its
/// margins as children of the editor and lays them out.
class Margin : public QWidget
{
    Q_OBJECT
public:
    /// \a view is not owned and must have its document and font data already.
    explicit Margin(TextView *view, QWidget *parent = nullptr);
    ~Margin() override;

    /// Fits the row's pixmap to the width, the line height and the screen's
    /// pixel ratio. To be called after a change of the font.
    void resizeBuffer();

protected:
    void resizeEvent(QResizeEvent *event) override;
    /// Scrolls the text beside the margin.
    void wheelEvent(QWheelEvent *event) override;

    /// Makes the buffer anew if the widget came to a screen of another pixel
    /// ratio. False if there is nothing to paint into.
    bool ensureBuffer();
    /// Line shown at \a y pixels from the top of the widget.
    int lineAt(int y) const;
    /// Upper edge, in pixels of the widget, of the row that holds \a y.
    int rowTop(int y) const;
    /// Upper edge, in pixels of the widget, of the row in which the last line begins.
    int lastLineTop() const;

    TextView *view;
    TextDocument *document;
    TextEditorManager *manager;
    std::unique_ptr<QPixmap> buffer;
};

/// Shows the icons of lines, such as break points.
class IndicatorMargin : public Margin
{
    Q_OBJECT
public:
    using Margin::Margin;
    QSize sizeHint() const override;
    /// The icon of the last line was painted below the text too.
    const QPixmap *iconBelow() const { return shownBelow; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void paintRow(int line);

    const QPixmap *shownBelow = nullptr;
};

/// Shows the line numbers, from 1, at the first row of each line.
class LineNumberMargin : public Margin
{
    Q_OBJECT
public:
    using Margin::Margin;
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    void paintRow(int contentY, int line);
};

/// Shows the folds. A click toggles or removes a fold; on a selection of three
/// lines or more it makes one of them.
class FoldingMargin : public Margin
{
    Q_OBJECT
public:
    using Margin::Margin;
    QSize sizeHint() const override;
    /// True if \a line is one of at least three that are selected, which can be
    /// made a fold here.
    bool showAddFoldArea(int line) const;
    /// Colour of the dots below a row of \a line, if \a above is that of the dots beside
    /// it: each mark leaves its colour to the rows below it.
    QRgb dotsBelow(int line, QRgb above) const;

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;

private:
    /// Lines of the folds around a row, from pixel row \a y0 to \a y1 of the
    /// buffer; \a last adds the foot of the innermost one.
    void paintFoldLine(QPainter *painter, int level, bool last, int y0, int y1) const;
    void paintRow(QPainter *painter, int line) const;
    void paintAddFoldRow(QPainter *painter, int line) const;
    void paintFoldStart(QPainter *painter, int line) const;
};

/// Selects whole lines by click and drag.
class SelectionMargin : public Margin
{
    Q_OBJECT
public:
    using Margin::Margin;
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    /// Moves the cursor past the line break of \a line, or to the end of the last
    /// line, which has none.
    void moveBehind(int line, bool select);

    bool doSelect = false;
    int start = 0;
    int last = 0;
    bool upOrDown = false;
};

} // namespace zvwidgets
