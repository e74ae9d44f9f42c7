#include "app/messages/messageitem.h"

#include <QPainter>

namespace vesk {

namespace {

/// What is drawn of a row at most, in UTF-16 units: nobody scrolls that far, and
/// laying out a row of megabytes would hold up the window.
constexpr int drawnLength = 4000;

/// The width of \a text, told from its start if it is long: exact enough to scroll by,
/// and the list asks for the widths of hundreds of rows at once.
int roughWidth(const QString &text, const QFontMetrics &metrics)
{
    constexpr qsizetype sample = 150;
    if (text.size() <= sample)
        return metrics.horizontalAdvance(text);
    return int(metrics.horizontalAdvance(text.left(sample)) * text.size() / sample);
}

/// Text as it can be drawn in one line.
QString drawable(QStringView text)
{
    QString result = text.toString();
    for (QChar &c : result) {
        if (c.unicode() < 0x20 || c.unicode() == 0x7f || c == QChar::LineSeparator ||
            c == QChar::ParagraphSeparator)
            c = u' ';
    }
    return result;
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

MessageItem::MessageItem(QListWidget *listbox, const QString &text, int line, const QString &fname)
    : QListWidgetItem(listbox, itemType)
    , lineNumber(line)
    , lineDefined(line != -1)
    , filename(fname)
    , rawText(text)
{}

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
    const qsizetype lastClose = raw.lastIndexOf(u'}');
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

void MessageItem::announceText()
{
    measuredFor.reset();
    // The list learns of a change through the data it stores.
    setData(Qt::UserRole, rawText);
}

void MessageItem::paint(QPainter *p) const
{
    const QFontMetrics metrics = p->fontMetrics();
    const int baseline = metrics.ascent() + metrics.leading() / 2;
    const int fillHeight = metrics.height() + metrics.ascent() + metrics.descent();
    const int right = p->hasClipping() ? int(p->clipBoundingRect().right()) : QWIDGETSIZE_MAX;
    int x = 0;
    int left = drawnLength;
    walk([&](const Run &run) {
        // What lies to the right of all that can be seen is not even laid out; no
        // text is narrower than two pixels a character.
        const int visible = qBound(0, (right - x) / 2 + 1, left);
        const QString text = drawable(run.text.left(visible));
        left -= int(text.size());
        const int width = metrics.horizontalAdvance(text);
        if (run.background.isValid())
            p->fillRect(x + 3, 0, width, fillHeight, run.background);
        if (run.colorSet)
            p->setPen(run.color);
        p->drawText(x + 3, baseline, text);
        x += width;
    });
}

int MessageItem::width(const QFontMetrics &metrics) const
{
    // The list asks every row whenever one is added.
    if (measuredFor == metrics)
        return measured;
    int x = 0;
    int left = drawnLength;
    walk([&](const Run &run) {
        const QString text = drawable(run.text.left(left));
        left -= int(text.size());
        x += roughWidth(text, metrics);
    });
    measuredFor = metrics;
    measured = x + 6;
    return measured;
}

QVariant MessageItem::data(int role) const
{
    if (role == Qt::DisplayRole)
        return text();
    return QListWidgetItem::data(role);
}

} // namespace vesk
