#pragma once

#include "zvwidgets/zveditor/document/documenthost.h"
#include "zvwidgets/zveditor/document/documentview.h"
#include "zvwidgets/zveditor/textcommands.h"
#include "zvwidgets/zveditor/textdoc.h"

#include <QHash>

#include <vector>

namespace zvwidgets {

struct TextSelection;

/// What lies left of every so many columns of a long line, noted as far as it
/// was measured. Measuring far to the right then starts close by.
struct ColumnMarks
{
    /// Columns from one mark to the next.
    static constexpr int step = 4096;

    struct Mark
    {
        qint64 x = 0; ///< pixels
        int tabs = 0;
    };

    /// The first stands at column 0.
    std::vector<Mark> marks{Mark()};
    /// Length and revision of what was measured.
    int length = 0;
    unsigned revision = 0;
};

/// Whether lines hold the contexts that the highlight of the views gives them.
enum class Contexts
{
    Unknown,
    Known
};

/// What the sources of the document share.
struct TextDocument::Private
{
    Private(TextDocument *document, DocumentHost *of) : q(document), m(of) {}
    ~Private() { freeLines(); }

    void freeLines();
    void reset();
    void adopt(TextLineArray &lines, Contexts contexts);

    /// Commands run whose end macroExecuted() will announce.
    bool isExecuting() const;
    /// Does \a edit as a command of its own or, in a macro, as one of a batch;
    /// \a text is what an Insert puts in.
    void run(const TextEdit &edit, const QString &text = QString());
    QtCommand *command(const TextEdit &edit, const QString &text) const;
    CmdBatch *openBatch() const;
    void rescan(int start, int end);
    void markForScan(int line);
    void linesInserted(int line);
    void linesRemoved(int line);
    int scan(TextLine *line, int ctx) const;
    void scanPending();
    void takeWidth(int line);
    void findLongest();
    void updateGeometry();

    void preferCursor(int *line, int *column) const;
    int wholeColumn(int line, int column) const;
    int backspaceLength(int line, int column) const;
    QString expandedTabs(QStringView part, int line, int column) const;
    QString blockSelection(int actions, const TextSelection &selection);
    QString streamSelection(int actions, const TextSelection &selection);

    /// Colours the line if it isn't.
    void colour(TextLine *line) const;

    ColumnMarks &marksOf(const TextLine &line, bool isFixed);
    /// To be called when the text of a line changed behind \a column.
    void cutMarks(const TextLine *line, int column);

    TextDocument *const q;
    DocumentHost *const m;
    QList<DocumentView *> views;
    DocumentView *view = nullptr;
    /// Those that the undo manager knows.
    QList<DocumentView *> associatedViews;
    TextFolding *folding = nullptr;
    bool modified = false;
    bool readonly = false;
    int spacesInTab = 8;
    TextLineArray contents;
    /// Gave maxLength; null if that has to be found again.
    TextLine *longestLine = nullptr;
    bool newDocGeometry = false;
    QtUndoStack *undoStack = nullptr;
    int macroCursorLine = -1;
    int macroCursorColumn = -1;
    LineRegion updateRegion;
    unsigned revision = 0;
    /// Holds every line that needs a scan, and others.
    LineRegion pendingScan;
    TextFormat format;
    /// Of a few long lines.
    QHash<const TextLine *, ColumnMarks> columnMarks;
};

} // namespace zvwidgets
