#include "zvwidgets/zveditor/textline.h"

#include "zvwidgets/zveditor/lines/linepool.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace zvwidgets {

/// What only long lines have.
struct TextLine::LongLine
{
    ScanMarks contexts;
    ScanMarks colours;
    /// From the last colouring while it is void; in step with the text of that time.
    std::vector<qint8> oldAttributes;
};

struct TextLine::Private
{
    std::vector<qint8> attributes;
    std::unique_ptr<LongLine> longLine;
    int mark = 0;
    std::unique_ptr<QList<MarginData>> margins;
    QPixmap *pixmap = nullptr;
    QColor color;
};

namespace {

/// In characters.
constexpr int replacementRoom = 32;

// A line that has its text alone, in a buffer of about its size, is changed in
// place. Any other gets a copy made to measure: QString would take over the
// capacity of the block that the text is a part of.
bool hasOwnText(const QString &line)
{
    auto &text = const_cast<QString &>(line).data_ptr();
    return !text.needsDetach() && text.constAllocatedCapacity() <= 2 * text.size + 64;
}

} // namespace

TextLine::TextLine() : TextLine(QString())
{}

TextLine::TextLine(QString text)
    : QString(std::move(text))
    , isFoldingStart(false)
    , isFolded(false)
    , isFoldVisible(true)
    , highlighted(false)
    , scanPending(false)
    , tabsPossible(true)
    , endOfLine(0)
{}

TextLine::~TextLine() = default;

void *TextLine::operator new(size_t size)
{
    return LinePool::allocate(size);
}

void TextLine::operator delete(void *memory)
{
    if (memory)
        LinePool::release(memory);
}

TextLine::Private &TextLine::record()
{
    if (!d)
        d = std::make_unique<Private>();
    return *d;
}

/// Null if the line is not long.
TextLine::LongLine *TextLine::longLine()
{
    if (!isLong()) {
        if (d)
            d->longLine.reset();
        return nullptr;
    }
    if (!record().longLine)
        d->longLine = std::make_unique<LongLine>();
    return d->longLine.get();
}

void TextLine::textChanged(int column, int removed, int inserted)
{
    if (!d || !d->longLine)
        return;
    d->longLine->contexts.textChanged(column, removed, inserted);
    d->longLine->colours.textChanged(column, removed, inserted);
}

void TextLine::set(const QString &text)
{
    if (d)
        d->longLine.reset();
    QString::operator=(text);
    tabsPossible = true;
}

void TextLine::insertText(int column, const QString &text)
{
    if (text.isEmpty())
        return;
    tabsPossible = tabsPossible || text.contains(QLatin1Char('\t'));
    const int blanks = std::max(0, column - textLength());
    textChanged(column - blanks, 0, blanks + int(text.size()));
    if (hasOwnText(*this)) {
        QString::insert(column, text);
        return;
    }
    const QStringView old(*this);
    QString whole(old.size() + blanks + text.size(), Qt::Uninitialized);
    QChar *out = whole.data();
    const qsizetype head = std::min<qsizetype>(column, old.size());
    out = std::copy_n(old.data(), head, out);
    out = std::fill_n(out, blanks, QLatin1Char(' '));
    out = std::copy_n(text.constData(), text.size(), out);
    std::copy_n(old.data() + head, old.size() - head, out);
    QString::operator=(std::move(whole));
}

void TextLine::removeText(int column, int length)
{
    length = std::min(length, textLength() - column);
    if (column < 0 || length <= 0)
        return;
    textChanged(column, length, 0);
    if (hasOwnText(*this)) {
        QString::remove(column, length);
        return;
    }
    const QStringView old(*this);
    const qsizetype left = old.size() - length;
    // What is removed is often replaced at once, which needs no new memory then.
    QString whole(left + std::min(length, replacementRoom), Qt::Uninitialized);
    QChar *out = std::copy_n(old.data(), column, whole.data());
    std::copy_n(old.data() + column + length, left - column, out);
    whole.truncate(left);
    QString::operator=(std::move(whole));
}

void TextLine::replace(unsigned index, unsigned len, const QString &text)
{
    removeText(int(index), int(std::min(len, unsigned(std::numeric_limits<int>::max()))));
    insertText(int(index), text);
}

bool TextLine::removeSpaces()
{
    int end = textLength();
    while (end > 0 && at(end - 1).isSpace())
        --end;
    if (end == textLength())
        return false;
    removeText(end, textLength() - end);
    return true;
}

int TextLine::firstChar() const
{
    const auto first =
        std::find_if(cbegin(), cend(), [](const QChar character) { return !character.isSpace(); });
    return first == cend() ? -1 : int(first - cbegin());
}

QChar TextLine::charAt(int column) const
{
    return column >= 0 && column < textLength() ? at(column) : QChar();
}

void TextLine::resetHighlight(int ctx)
{
    startContext = quint8(ctx);
    if (d && highlighted && d->longLine)
        d->longLine->oldAttributes.swap(d->attributes);
    highlighted = false;
    if (d)
        d->attributes.clear();
}

void TextLine::setAttributes(int attr, unsigned from, unsigned to)
{
    std::vector<qint8> &attributes = record().attributes;
    if (d->longLine)
        d->longLine->colours.clear();
    if (attributes.size() < size_t(size()))
        attributes.resize(size_t(size()));
    const size_t end = std::min<size_t>(to, attributes.size());
    if (from < end)
        std::fill(attributes.begin() + from, attributes.begin() + qptrdiff(end), qint8(attr));
}

int TextLine::attribute(unsigned pos) const
{
    return d && pos < d->attributes.size() ? d->attributes[pos] : 0;
}

qint8 *TextLine::attributesForWrite()
{
    std::vector<qint8> &attributes = record().attributes;
    attributes.assign(size_t(size()), 0);
    return attributes.data();
}

ScanMarks *TextLine::longContextMarks()
{
    LongLine *const line = longLine();
    return line ? &line->contexts : nullptr;
}

ScanMarks *TextLine::longColourMarks()
{
    LongLine *const line = longLine();
    return line ? &line->colours : nullptr;
}

qint8 *TextLine::attributesForUpdate()
{
    LongLine &line = *longLine();
    std::vector<qint8> &attributes = d->attributes;
    if (!highlighted)
        attributes.swap(line.oldAttributes);
    line.oldAttributes.clear();
    const size_t length = size_t(size());
    if (attributes.size() != size_t(line.colours.scannedSize()))
        line.colours.clear();
    const qptrdiff tail = line.colours.sameEnd();
    if (attributes.size() < length)
        attributes.insert(attributes.end() - tail, length - attributes.size(), 0);
    else
        attributes.erase(attributes.end() - tail - qptrdiff(attributes.size() - length),
                         attributes.end() - tail);
    return attributes.data();
}

const qint8 *TextLine::attributes(int *count) const
{
    *count = d ? int(d->attributes.size()) : 0;
    return d ? d->attributes.data() : nullptr;
}

void TextLine::setMarked(int mark)
{
    if (mark != marked())
        record().mark = mark;
}

int TextLine::marked() const
{
    return d ? d->mark : 0;
}

void TextLine::setMargin(const QString &classId, const QString &itemId)
{
    auto &margins = record().margins;
    if (!margins)
        margins = std::make_unique<QList<MarginData>>();
    margins->append({classId, itemId});
}

void TextLine::delMargin(const QString &classId, const QString &itemId)
{
    if (!d || !d->margins)
        return;
    QList<MarginData> &margins = *d->margins;
    const auto found = std::find_if(margins.begin(), margins.end(), [&](const MarginData &margin) {
        return margin.classId == classId && margin.itemId == itemId;
    });
    if (found != margins.end())
        margins.erase(found);
    if (margins.isEmpty())
        d->margins.reset();
}

bool TextLine::firstMargin(QString &classId, QString &itemId) const
{
    if (!d || !d->margins)
        return false;
    const MarginData &first = d->margins->constFirst();
    classId = first.classId;
    itemId = first.itemId;
    return true;
}

QStringList TextLine::marginsForClass(const QString &classId) const
{
    QStringList items;
    if (!d || !d->margins)
        return items;
    for (const MarginData &margin : std::as_const(*d->margins)) {
        if (margin.classId == classId)
            items.append(margin.itemId);
    }
    return items;
}

QPixmap *TextLine::linePixmap() const
{
    return d ? d->pixmap : nullptr;
}

void TextLine::setLinePixmap(QPixmap *pixmap)
{
    if (pixmap != linePixmap())
        record().pixmap = pixmap;
}

QColor TextLine::lineColor() const
{
    return d ? d->color : QColor();
}

void TextLine::setLineColor(const QColor &color)
{
    if (color != lineColor())
        record().color = color;
}

void TextLine::clearLineColor()
{
    setLineColor(QColor());
}

} // namespace zvwidgets
