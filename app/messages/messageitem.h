#pragma once

#include <QColor>
#include <QListWidgetItem>
#include <QString>

#include <functional>
#include <memory>

class QFont;
class QPainter;

namespace vesk {

/// A row of the message list: text with colour directives, maybe bound to a
/// line of a file.
///
/// "#color{x}" and "#bgcolor{x}", with any colour name as x, hold up to the end
/// of the row or the next directive of the same kind. There is no escape: a text
/// that happens to look like a directive is one, unless it stands after the part that
/// setMarkupLength() names.
class MessageItem : public QListWidgetItem
{
public:
    static constexpr int itemType = 2589235;

    /// \a line counts from 1, -1 for none; \a fname may be empty.
    MessageItem(QListWidget *listbox, const QString &text, int line, const QString &fname);
    ~MessageItem() override;

    /// The bound line, else the first number in the text, else -1.
    int line() const;
    void setLine(int line);
    QString fileName() const { return filename; }
    void setFileName(const QString &fname) { filename = fname; }

    /// The text without the directives.
    QString text() const;
    void setText(const QString &text);
    void addText(const QString &text);
    /// Directives count within the first \a length UTF-16 units only, from the start of
    /// the text; what follows is shown as it is. By default they count everywhere.
    void setMarkupLength(qsizetype length);
    /// Length of the text with its directives, in UTF-16 units.
    qsizetype rawLength() const { return rawText.size(); }

    /// Draws the row with its top left corner at the painter's origin. Of a long row
    /// only what lies within the painter's clip is looked at.
    void paint(QPainter *p) const;
    /// Width of the drawn text in pixels.
    int width(const QFont &font) const;

    QVariant data(int role) const override;

private:
    /// A stretch of text with the colours that hold for it. Without colorSet the
    /// pen is the list's own; an invalid background is none.
    struct Run
    {
        QStringView text;
        QColor color;
        bool colorSet = false;
        QColor background;
    };
    struct Layout;

    void announceText();
    void walk(const std::function<void(const Run &)> &visit) const;
    const Layout &layOut(const QFont &font) const;

    int lineNumber;
    bool lineDefined;
    QString filename;
    QString rawText;
    qsizetype markupLength = -1; ///< -1 for all of the text
    int changes = 0;
    mutable std::unique_ptr<Layout> layout; ///< null until the row is seen or measured
};

} // namespace vesk
