#pragma once

#include <QColor>
#include <QFont>
#include <QList>
#include <QMap>
#include <QObject>
#include <QRect>
#include <QString>
#include <QStringList>

#include <memory>

class QFontMetrics;
class QPrinter;
class QSettings;

namespace zvwidgets {

class TextDocument;
class TextEditor;

/// One variant of the font and its measures.
struct FontData
{
    FontData();
    ~FontData();

    void set(const QFont &f, bool bold, bool italic);

    std::unique_ptr<QFont> font;
    std::unique_ptr<QFontMetrics> fm;
    /// Cell width of a fixed-pitch font in pixels; -1 for a proportional one.
    int width = -1;
};

/// What all documents and views of the library share: the four font variants,
/// the flags that decide how keys and selection act, colours, the printer, added
/// completion words, and the registers of live documents and editors. A setter
/// pushes the change to all of them at once; the flags without a setter are read
/// where they count.
///
/// The application makes one and keeps it longer than any document. It owns
/// neither documents nor editors.
class TextEditorManager : public QObject
{
    Q_OBJECT
public:
    TextEditorManager();
    ~TextEditorManager() override;

    /// Makes an editor and, with a null \a doc, a document for it; both are
    /// registered. The editor belongs to \a parent, the document to its editors.
    TextEditor *createEditor(QWidget *parent, TextDocument *doc, const QString &name = QString());
    /// Registers objects that the caller made; \a doc may be null.
    void addEditor(TextEditor *e, TextDocument *doc);
    /// Called by an editor whose view got the focus.
    void editorActivated(TextEditor *e);

    /// Names of the known highlight definitions, sorted.
    QStringList highlightsNames();

    /// Word lists by the shortest typed prefix for which they are offered.
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
    void updateMarginsState();

    /// In columns, as it was set; documents clamp theirs to 1 to 16.
    int tabWidth() const;
    void setTabWidth(int columns);
    void setLineWrap(bool on);
    void setVerticalSelection(bool on);
    /// Builds the highlight of every document's active view anew, with the
    /// settings of now.
    void updateHighlight();

    QFont &font();
    /// Variant \a i: 0 plain, 1 italic, 2 bold, 3 bold italic.
    QFont &font(int i);
    void setFont(const QFont &f);
    /// Widths in pixels in variant \a i.
    int width(int i, QChar c) const;
    int width(int i, const QString &s) const;
    /// Cell width of variant \a i, -1 if it is proportional.
    int fixedWidth(int i) const;

    /// Asks for printer and page; false if the user refused.
    bool setupPrinter();
    /// Made on first use: finding the printers takes a while.
    QPrinter *printer();
    /// \a r in points: x and y are the left and top margin, width and height the
    /// right and bottom one.
    void setMargins(const QRect &r);
    /// Printable width in device pixels.
    int printWidth();

    QString resourcesDir() const;
    void setResourcesDir(const QString &path);
    /// If none was set, the folder "local" below resourcesDir().
    QString localResourcesDir() const;
    void setLocalResourcesDir(const QString &path);
    QString hlSettingsKey() const { return hlSettings; }
    virtual void setHlSettingsKey(const QString &key);
    /// Where colours and masks of the definitions are kept. Not owned; may be
    /// null, then the definitions' own hold.
    QSettings *globalConfig() const;
    void setGlobalConfig(QSettings *config);

    bool fCursorWrap = false;
    /// True keeps tab characters, false expands them to blanks.
    bool fSaveTab = false;
    bool fVerticalSelection = false;
    bool fOvr = false;
    bool fAutoIndent = true;
    bool fRemoveSpaces = false;
    bool fBackspaceIndent = true;
    bool fSmartHome = true;
    /// The wrap state of new documents.
    bool fLineWrap = false;
    bool fIndentationGuides = true;
    bool fIndicatorMargin = true;
    bool fSelectionMargin = true;
    bool fLineNumberMargin = true;
    bool fFoldingMargin = true;
    /// Page margins in points, see setMargins().
    QRect margins;
    QString hlSettings;
    QColor normalBackgroundColor;
    QColor selectedBackgroundColor;
    /// Kept for marking found text.
    QColor foundBackgroundColor;
    /// Invalid means that the cursor's line isn't marked.
    QColor currentLineColor;
    /// Stands in for the X selection where there is none.
    QString winClipboard;

signals:
    void activate(zvwidgets::TextEditor *editor);
    void overwriteModeChanged();

public slots:
    void docDestroyed();
    void editorDestroyed();

private:
    struct Private;
    const std::unique_ptr<Private> d;
};

} // namespace zvwidgets
