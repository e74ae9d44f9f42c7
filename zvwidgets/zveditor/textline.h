#pragma once

#include "zvwidgets/zveditor/lines/lineregion.h"
#include "zvwidgets/zveditor/lines/scanmarks.h"

#include <QColor>
#include <QList>
#include <QString>
#include <QStringList>

#include <memory>
#include <vector>

class QPixmap;

namespace zvwidgets {

/// What ended a line in the file it was read from.
enum class LineEnd : quint8
{
    Document, ///< whatever the document uses for new lines
    Lf,
    CrLf,
    Cr,
};

/// One mark on a line: the margin class and the item of it.
struct MarginData
{
    QString classId;
    QString itemId;
};

/// One line of a document: its text without line end, the highlight contexts at
/// both of its ends, its fold state, and what only few lines have (colouring,
/// marks, icon, background) in a record made on first use.
///
/// A document may hold millions of lines, so this object is kept small, and the
/// text of a loaded line is a part of a larger shared block. Text is changed
/// through insertText() and removeText(), which give the line a copy of its own
/// first; the block is read-only.
class TextLine : public QString
{
public:
    /// What few lines have.
    struct Private;

    TextLine();
    explicit TextLine(QString text);
    TextLine(const TextLine &) = delete;
    TextLine &operator=(const TextLine &) = delete;
    ~TextLine();

    static void *operator new(size_t size);
    static void operator delete(void *memory);

    // Text. Columns count UTF-16 units.

    /// Replaces the text and keeps everything else.
    void set(const QString &text);
    /// Inserts at \a column, filling with blanks up to it if the text is
    /// shorter. An empty \a text changes nothing.
    void insertText(int column, const QString &text);
    /// Removes what there is of \a length units from \a column on.
    void removeText(int column, int length);
    void replace(unsigned index, unsigned len, const QString &text);
    /// Cuts trailing blanks; true if there were any.
    bool removeSpaces();
    /// Column of the first character that is not blank; -1 if there is none.
    int firstChar() const;
    /// The character at \a column, a null character outside the text.
    QChar charAt(int column) const;
    int textLength() const { return int(size()); }
    /// False only if the text is known to hold no tab.
    bool mayHaveTabs() const { return tabsPossible; }
    /// To be told by who made the text; changes of it are minded.
    void setMayHaveTabs(bool on) { tabsPossible = on; }

    LineEnd lineEnd() const { return LineEnd(endOfLine); }
    void setLineEnd(LineEnd end) { endOfLine = unsigned(end); }

    // Highlighting. Contexts are 0 to 255.

    /// Notes the context at the line's start and forgets the colouring.
    void resetHighlight(int ctx);
    void doneHighlight() { highlighted = true; }
    /// True while the attributes belong to the text.
    bool isHighlighted() const { return highlighted; }
    /// Context in force at the start of the line.
    int highlightContext() const { return startContext; }
    /// Context in force at the end of the line.
    int context() const { return endContext; }
    void setContext(int ctx) { endContext = quint8(ctx); }

    /// Stores \a attr for the columns from \a from up to, not including, \a to.
    void setAttributes(int attr, unsigned from, unsigned to);
    /// The attribute of a column; 0 where none was stored.
    int attribute(unsigned pos) const;
    /// One zeroed byte for each character, to be filled in place. Valid until
    /// the line changes.
    qint8 *attributesForWrite();
    /// For a long line, see ScanMarks, what was noted on it while its contexts were
    /// followed, and while it was coloured; null for any other. Kept in step with
    /// the text; valid until the line changes.
    ScanMarks *contextMarks() { return d || isLong() ? longContextMarks() : nullptr; }
    ScanMarks *colourMarks() { return d || isLong() ? longColourMarks() : nullptr; }
    /// As attributesForWrite(), but of a long line: characters that have not changed
    /// since the last colouring keep what it gave them, the others hold anything.
    qint8 *attributesForUpdate();
    /// The stored attributes and their number, which may be less than the
    /// length of the text; what is missing counts as 0.
    const qint8 *attributes(int *count) const;

    /// True while the contexts have to be worked out again; kept by the document.
    bool needsScan() const { return scanPending; }
    void setNeedsScan(bool on) { scanPending = on; }

    // Marks

    void setMarked(int mark);
    int marked() const;
    void setMargin(const QString &classId, const QString &itemId);
    /// Removes the first mark equal in both ids.
    void delMargin(const QString &classId, const QString &itemId);
    /// Hands out the oldest mark; false if the line has none.
    bool firstMargin(QString &classId, QString &itemId) const;
    QStringList marginsForClass(const QString &classId) const;
    /// Not owned.
    QPixmap *linePixmap() const;
    void setLinePixmap(QPixmap *pixmap);
    /// Background of the whole line; invalid if it has none.
    QColor lineColor() const;
    void setLineColor(const QColor &color);
    void clearLineColor();

    /// Null until first needed.
    std::unique_ptr<Private> d;
    /// Number of folds that contain this line.
    int foldingLevel = 0;
    /// A fold opens here.
    bool isFoldingStart : 1;
    /// The fold that opens here is closed.
    bool isFolded : 1;
    /// False while a closed fold hides the line.
    bool isFoldVisible : 1;

private:
    struct LongLine;

    Private &record();
    bool isLong() const { return textLength() >= ScanMarks::longLine; }
    LongLine *longLine();
    ScanMarks *longContextMarks();
    ScanMarks *longColourMarks();
    void textChanged(int column, int removed, int inserted);

    bool highlighted : 1;
    bool scanPending : 1;
    bool tabsPossible : 1;
    unsigned char endOfLine : 2;
    quint8 endContext = 0;
    quint8 startContext = 0;
};

static_assert(sizeof(void *) != 8 || sizeof(TextLine) <= 40, "millions of these are held");

} // namespace zvwidgets
