#pragma once

#include <QColor>
#include <QFontMetrics>
#include <QListWidgetItem>
#include <QString>

#include <functional>
#include <optional>

class QPainter;

namespace vesk {

/// A row of the message list: text with colour directives, maybe bound to a
/// line of a file.
///
/// "#color{x}" and "#bgcolor{x}", with any colour name as x, hold up to the end
/// of the row or the next directive of the same kind. There is no escape: a text
/// that happens to look like a directive is one.
class MessageItem : public QListWidgetItem
{
public:
    static constexpr int itemType = 2589235;

    /// \a line counts from 1, -1 for none; \a fname may be empty.
    MessageItem(QListWidget *listbox, const QString &text, int line, const QString &fname);

    /// The bound line, else the first number in the text, else -1.
    int line() const;
    void setLine(int line);
    QString fileName() const { return filename; }
    void setFileName(const QString &fname) { filename = fname; }

    /// The text without the directives.
    QString text() const;
    void setText(const QString &text);
    void addText(const QString &text);
    /// Length of the text with its directives, in UTF-16 units.
    int rawLength() const { return int(rawText.size()); }

    /// Draws the row with its top left corner at the painter's origin, as far as
    /// the painter's clip reaches to the right.
    void paint(QPainter *p) const;
    /// Width of the drawn text in pixels, roughly for a long one. Measured once for
    /// a font.
    int width(const QFontMetrics &metrics) const;

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

    void announceText();
    void walk(const std::function<void(const Run &)> &visit) const;

    int lineNumber;
    bool lineDefined;
    QString filename;
    QString rawText;
    mutable int measured = 0;
    mutable std::optional<QFontMetrics> measuredFor;
};

} // namespace vesk
