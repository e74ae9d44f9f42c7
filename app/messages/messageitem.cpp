#include "app/messages/messageitem.h"

#include <QFont>
#include <QFontMetricsF>
#include <QHash>
#include <QPainter>

#include <algorithm>
#include <array>
#include <vector>

namespace vesk {

namespace {

/// Longer texts, in UTF-16 units, are measured character by character: laying out a row
/// of megabytes would hold up the window.
constexpr qsizetype longText = 1000;
/// What is drawn at once of a long text.
constexpr qsizetype pieceLength = 512;
/// What is drawn of a row at most in one painting; characters without a width could
/// all be in sight.
constexpr qsizetype drawnLength = 16 * pieceLength;

/// \a c as it can be drawn in one line.
QChar drawable(QChar c)
{
    const bool isControl = c.unicode() < 0x20 || c.unicode() == 0x7f || c == QChar::LineSeparator ||
                           c == QChar::ParagraphSeparator;
    return isControl ? QChar(u' ') : c;
}

QString drawable(QStringView text)
{
    QString result = text.toString();
    std::transform(result.cbegin(), result.cend(), result.begin(),
                   [](QChar c) { return drawable(c); });
    return result;
}

/// Widths of characters in a font without kerning, each asked for once.
class Advances
{
public:
    explicit Advances(const QFont &font) : metrics(font) { ascii.fill(-1); }

    qreal of(QStringView text)
    {
        qreal sum = 0;
        for (qsizetype i = 0; i < text.size(); ++i) {
            const char16_t unit = drawable(text[i]).unicode();
            if (unit < 128) {
                qreal &known = ascii[unit];
                if (known < 0)
                    known = metrics.horizontalAdvance(QChar(unit));
                sum += known;
                continue;
            }
            const bool isPair =
                text[i].isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate();
            sum += ofCharacter(text.mid(i, isPair ? 2 : 1));
            i += isPair ? 1 : 0;
        }
        return sum;
    }

private:
    qreal ofCharacter(QStringView character)
    {
        const char32_t key = character.size() == 2
                                 ? QChar::surrogateToUcs4(character[0], character[1])
                                 : character[0].unicode();
        const auto known = others.constFind(key);
        if (known != others.constEnd())
            return *known;
        const qreal width =
            QChar::isMark(key) ? 0 : metrics.horizontalAdvance(character.toString());
        others.insert(key, width);
        return width;
    }

    const QFontMetricsF metrics;
    std::array<qreal, 128> ascii;
    QHash<char32_t, qreal> others;
};

/// Length of what is drawn at once from the start of \a text. Marks and the second
/// halves of surrogate pairs stay with what they belong to.
qsizetype cutPiece(QStringView text)
{
    qsizetype end = qMin(pieceLength, text.size());
    while (end < text.size() && end < 2 * pieceLength &&
           (text[end].isLowSurrogate() || text[end].isMark()))
        ++end;
    return end;
}

/// A directive at the start of \a text: its length, 0 if there is none.
int directiveLength(QStringView text, bool *background, QStringView *value)
{
    int open = 0;
    if (text.startsWith(u"#color{")) {
        *background = false;
        open = 7;
    } else if (text.startsWith(u"#bgcolor{")) {
        *background = true;
        open = 9;
    } else {
        return 0;
    }
    const qsizetype close = text.indexOf(u'}', open);
    if (close < 0)
        return 0;
    *value = text.mid(open, close - open);
    return int(close) + 1;
}

QColor colorFrom(QStringView name)
{
    // QColor complains about a name that it doesn't know.
    const QString text = name.toString();
    return QColor::isValidColor(text) ? QColor(text) : QColor();
}

} // namespace

/// Where the parts of the row's text stand, in pixels from its left end. Only a long
/// text is cut into several pieces a run.
struct MessageItem::Layout
{
    struct Piece
    {
        Run run;
        int x;
        int width;
    };

    QFont font; ///< what was measured for
    bool isLong = false;
    std::vector<Piece> pieces;
    int width = 0;
};

MessageItem::MessageItem(QListWidget *listbox, const QString &text, int line, const QString &fname)
    : QListWidgetItem(listbox, itemType)
    , lineNumber(line)
    , lineDefined(line != -1)
    , filename(fname)
    , rawText(text)
{}

MessageItem::~MessageItem() = default;

int MessageItem::line() const
{
    if (lineDefined)
        return lineNumber;
    const QString plain = text();
    qsizetype start = 0;
    const auto isDigit = [](QChar c) { return c >= u'0' && c <= u'9'; };
    while (start < plain.size() && !isDigit(plain[start]))
        ++start;
    if (start == plain.size())
        return lineNumber;
    qsizetype end = start;
    while (end < plain.size() && isDigit(plain[end]))
        ++end;
    return QStringView(plain).mid(start, end - start).toInt();
}

void MessageItem::setLine(int line)
{
    lineNumber = line;
    lineDefined = true;
}

void MessageItem::walk(const std::function<void(const Run &)> &visit) const
{
    const QStringView raw(rawText);
    Run run;
    qsizetype start = 0;
    qsizetype search = 0;
    // Without any "}" left a "#" can't begin a directive: a row of nothing but
    // openers would otherwise be searched to its end for each of them.
    const QStringView markup = markupLength < 0 ? raw : raw.left(markupLength);
    const qsizetype lastClose = markup.lastIndexOf(u'}');
    for (;;) {
        const qsizetype at = raw.indexOf(u'#', search);
        if (at < 0 || at > lastClose)
            break;
        bool background = false;
        QStringView value;
        const int length = directiveLength(raw.mid(at), &background, &value);
        if (length == 0) {
            search = at + 1;
            continue;
        }
        run.text = raw.mid(start, at - start);
        visit(run);
        if (background) {
            run.background = colorFrom(value);
        } else {
            run.color = colorFrom(value);
            run.colorSet = true;
        }
        start = search = at + length;
    }
    run.text = raw.mid(start);
    visit(run);
}

QString MessageItem::text() const
{
    QString plain;
    walk([&plain](const Run &run) { plain += run.text; });
    return plain;
}

void MessageItem::setText(const QString &text)
{
    rawText = text;
    announceText();
}

void MessageItem::addText(const QString &text)
{
    rawText += text;
    announceText();
}

void MessageItem::setMarkupLength(qsizetype length)
{
    markupLength = length;
    announceText();
}

void MessageItem::announceText()
{
    layout.reset();
    // The list learns of a change through the data it stores.
    setData(Qt::UserRole, ++changes);
}

const MessageItem::Layout &MessageItem::layOut(const QFont &font) const
{
    if (layout && layout->font == font)
        return *layout;
    layout = std::make_unique<Layout>();
    layout->font = font;
    layout->isLong = rawText.size() > longText;
    const QFontMetrics metrics(font);
    QFont unkerned = font;
    unkerned.setKerning(false);
    Advances advances(unkerned);
    qreal x = 0;
    walk([&](const Run &run) {
        QStringView rest = run.text;
        while (!rest.isEmpty()) {
            Run part = run;
            part.text = layout->isLong ? rest.left(cutPiece(rest)) : rest;
            rest = rest.mid(part.text.size());
            const qreal width = layout->isLong ? advances.of(part.text)
                                               : metrics.horizontalAdvance(drawable(part.text));
            layout->pieces.push_back({part, qRound(x), qRound(x + width) - qRound(x)});
            // Far beyond what anybody scrolls to, and still a number of pixels.
            x = qMin(x + width, 1e9);
        }
    });
    layout->width = qRound(x);
    return *layout;
}

void MessageItem::paint(QPainter *p) const
{
    const QFontMetrics metrics = p->fontMetrics();
    const int baseline = metrics.ascent() + metrics.leading() / 2;
    const int fillHeight = metrics.height() + metrics.ascent() + metrics.descent();
    const QRectF clip = p->hasClipping() ? p->clipBoundingRect() : QRectF(0, 0, 1e9, 1);
    const Layout &row = layOut(p->font());
    if (row.isLong) {
        QFont unkerned = p->font();
        unkerned.setKerning(false);
        p->setFont(unkerned);
    }
    // Ink may reach over the edges of its piece: one more is drawn on the left.
    auto piece = std::lower_bound(
        row.pieces.begin(), row.pieces.end(), clip.left(),
        [](const Layout::Piece &each, qreal left) { return each.x + each.width + 3 < left; });
    if (piece != row.pieces.begin())
        --piece;
    qsizetype left = drawnLength;
    for (; piece != row.pieces.end() && piece->x < clip.right() && left > 0; ++piece) {
        const Run &run = piece->run;
        if (run.background.isValid())
            p->fillRect(piece->x + 3, 0, piece->width, fillHeight, run.background);
        if (run.colorSet)
            p->setPen(run.color);
        p->drawText(piece->x + 3, baseline, drawable(run.text));
        left -= run.text.size();
    }
}

int MessageItem::width(const QFont &font) const
{
    return layOut(font).width + 6;
}

QVariant MessageItem::data(int role) const
{
    if (role == Qt::DisplayRole)
        return text();
    return QListWidgetItem::data(role);
}

} // namespace vesk
