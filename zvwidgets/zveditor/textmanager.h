#pragma once

#include "zvwidgets/zveditor/document/documenthost.h"
#include "zvwidgets/zveditor/highlight/highlightsettings.h"

#include <QColor>
#include <QMap>
#include <QObject>
#include <QRect>
#include <QString>
#include <QStringList>

#include <memory>

class QPrinter;

namespace zvwidgets {

class TextDocument;
class TextEditor;

/// What all documents and editors of the program share: the text font in four
/// variants, the flags that decide how keys and selection act, the colours, the
/// printer, and the registers of the living documents and editors, to which
/// every setter hands a change on. The program makes one and keeps it until all
/// documents are gone. Owns no document and no editor.
class TextEditorManager : public QObject, public DocumentHost, public HighlightSettings
{
    Q_OBJECT
public:
    TextEditorManager();
    ~TextEditorManager() override;

    /// Makes an editor for \a doc, or for a new document if that is null, and
    /// registers what it made. The parent owns the editor, the last editor of
    /// a document deletes it.
    TextEditor *createEditor(QWidget *parent, TextDocument *doc, const QString &name = QString());
    /// Registers what the caller made; \a doc may be null.
    void addEditor(TextEditor *e, TextDocument *doc);
    /// Emits activate().
    void editorActivated(TextEditor *e);

    /// Names of the known highlight definitions, sorted.
    QStringList highlightsNames();
    /// Words offered besides those of the document, by the number of typed
    /// characters from which on they are.
    QMap<int, QStringList> addedCompleteWords() const;
    void addCompletionList(const QStringList &words, int minimumMatchedLength);

    bool overwriteMode() const { return fOvr; }
    void setOverwriteMode(bool on);
    bool isIndicatorMarginVisible() const { return fIndicatorMargin; }
    void setIndicatorMarginVisible(bool on);
    bool isLineNumberMarginVisible() const { return fLineNumberMargin; }
    void setLineNumberMarginVisible(bool on);
    bool isSelectionMarginVisible() const { return fSelectionMargin; }
    void setSelectionMarginVisible(bool on);
    bool isFoldingMarginVisible() const { return fFoldingMargin; }
    void setFoldingMarginVisible(bool on);
    /// Shows or hides the margins of all editors by the flags.
    void updateMarginsState();
    /// As it was set; documents hold it clamped to 1 to 16.
    int tabWidth() const { return wantedTabWidth; }
    void setTabWidth(int width);
    void setLineWrap(bool on);
    void setVerticalSelection(bool on);
    /// Builds the highlights of all documents anew, with the present settings.
    void updateHighlight();

    void setFont(const QFont &f);

    /// Asks the user; false if he cancels.
    bool setupPrinter();
    /// The one printer of the process, made when first asked for: that may have
    /// to wait for a print server.
    QPrinter *printer() const;
    /// In points, 1/72 inch: width and height are the right and bottom margin.
    void setMargins(const QRect &r);
    /// Printable width in device pixels.
    int printWidth() const;

    TextEditorManager *textEditorManager() override { return this; }
    /// Emits highlightRuleDropped().
    void ruleDropped(const QString &highlight, const QString &expression) override;

    bool fIndentationGuides = true;
    bool fIndicatorMargin = true;
    bool fSelectionMargin = true;
    bool fLineNumberMargin = true;
    bool fFoldingMargin = true;
    QRect margins;
    QColor normalBackgroundColor;
    QColor selectedBackgroundColor;
    QColor foundBackgroundColor; ///< kept for clients
    QColor currentLineColor;     ///< invalid: the cursor's line is not marked

    struct Private;
    const std::unique_ptr<Private> d;

signals:
    void activate(zvwidgets::TextEditor *e);
    void overwriteModeChanged();
    /// A rule of the \a highlight took more than a few milliseconds on a line, where it is
    /// ignored from then on. Emitted once for each \a expression, while a text is being
    /// measured or painted: do no more than note it.
    void highlightRuleDropped(const QString &highlight, const QString &expression);

public slots:
    void docDestroyed();
    void editorDestroyed();
};

} // namespace zvwidgets
