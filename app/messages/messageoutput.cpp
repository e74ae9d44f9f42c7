#include "app/messages/messageoutput.h"

#include "app/actions.h"
#include "app/editors/editor.h"
#include "app/editors/editors.h"
#include "app/messages/messageitem.h"
#include "app/messages/messagelimits.h"
#include "app/shell.h"
#include "app/utils.h"
#include "app/widgetstack.h"

#include <QElapsedTimer>
#include <QFileInfo>
#include <QGridLayout>
#include <QPainter>
#include <QPointer>
#include <QStyledItemDelegate>
#include <QTimer>
#include <QToolBar>
#include <QToolButton>

#include <deque>
#include <utility>

namespace vesk {

namespace {

/// The list takes new rows in this often, in ms: it lays all its rows out anew then,
/// which a hundred thousand rows in a sequence can't each pay for.
constexpr int showInterval = 50;

const MessageItem *messageItem(const QListWidgetItem *item)
{
    return item && item->type() == MessageItem::itemType ? static_cast<const MessageItem *>(item)
                                                         : nullptr;
}

/// Draws rows in their own colours, over the list's fill where one is pressed.
class MessageDelegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override
    {
        const auto *list = static_cast<const QListWidget *>(option.widget);
        const MessageItem *const item = messageItem(list->item(index.row()));
        if (!item) {
            QStyledItemDelegate::paint(painter, option, index);
            return;
        }
        painter->save();
        painter->setClipRect(option.rect & list->viewport()->rect());
        if (option.state & QStyle::State_Selected)
            painter->fillRect(option.rect, option.palette.highlight());
        painter->translate(option.rect.topLeft());
        painter->setPen(option.palette.color(QPalette::Text));
        painter->setFont(option.font);
        item->paint(painter);
        painter->restore();
    }

    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override
    {
        const auto *list = static_cast<const QListWidget *>(option.widget);
        const MessageItem *const item = messageItem(list ? list->item(index.row()) : nullptr);
        if (!item)
            return QStyledItemDelegate::sizeHint(option, index);
        return {item->width(option.font), option.fontMetrics.lineSpacing() + 1};
    }
};

/// File and line of a Python traceback line, `  File "name", line N, in f`.
bool parseTraceback(const QString &text, QString *fileName, int *line)
{
    if (!text.contains(u"  File "))
        return false;
    *fileName = text.section(u'"', 1, 1);
    *line = text.section(u',', 1, 1).mid(5).trimmed().toInt();
    return true;
}

} // namespace

struct MessageOutput::Private
{
    static QPointer<MessageOutput> self;

    uint maxItems = MessageLimits::rows;
    /// What all rows hold, in UTF-16 units.
    qint64 textLength = 0;
    /// Rows that have come and are not in the list yet.
    std::deque<std::unique_ptr<MessageItem>> arriving;
    /// Number of rows at the list's top that are gone but for being taken out.
    int leaving = 0;
    QTimer *show = nullptr;
    QElapsedTimer sinceShown;
};

QPointer<MessageOutput> MessageOutput::Private::self;

MessageOutput *MessageOutput::self()
{
    if (!Private::self)
        Private::self = new MessageOutput(Shell::self());
    return Private::self;
}

MessageOutput::MessageOutput(QWidget *parent) : QListWidget(parent), d(std::make_unique<Private>())
{
    setObjectName(QStringLiteral("vesk::MessageOutput"));
    setWindowIcon(Utils::iconSet(QStringLiteral("16x16_Messages")));
    setLineWidth(1);
    QPalette colors = palette();
    colors.setColor(QPalette::HighlightedText, colors.color(QPalette::Active, QPalette::Text));
    colors.setColor(QPalette::Highlight, colors.color(QPalette::Active, QPalette::Mid));
    setPalette(colors);
    setFocusPolicy(Qt::NoFocus);
    setItemDelegate(new MessageDelegate(this));
    setHorizontalScrollMode(ScrollPerPixel);

    connect(this, &QListWidget::itemPressed, this, &MessageOutput::clickItem);
    connect(this, qOverload<const QString &, int>(&MessageOutput::clicked), this,
            &MessageOutput::openFile);

    d->show = new QTimer(this);
    d->show->setSingleShot(true);
    connect(d->show, &QTimer::timeout, this, &MessageOutput::showRows);

    createClearButton();

    Shell::self()->addPanel(
        Dock::Bottom, this,
        {"messages", tr("Messages"), Qt::CTRL | Qt::Key_M, "16x16_Messages", SLOT(makeVisible())});
}

/// The button stands over the rows, clear of the scroll bar.
void MessageOutput::createClearButton()
{
    auto *clearButton = new QToolButton(this);
    clearButton->setObjectName(QStringLiteral("buttonClear"));
    clearButton->setAutoRaise(true);
    clearButton->setIcon(Utils::iconSet(QStringLiteral("32x32_Clean")));
    clearButton->setIconSize(QSize(32, 32));
    clearButton->setToolTip(tr("Clear"));
    clearButton->setFocusPolicy(Qt::NoFocus);
    clearButton->setAutoFillBackground(true);
    QPalette buttonColors = clearButton->palette();
    buttonColors.setColor(QPalette::Window, palette().color(QPalette::Base));
    buttonColors.setColor(QPalette::Button, palette().color(QPalette::Base));
    clearButton->setPalette(buttonColors);
    connect(clearButton, &QToolButton::clicked, this, &MessageOutput::clear);
    auto *grid = new QGridLayout(this);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setSpacing(0);
    grid->addItem(new QSpacerItem(1, 1, QSizePolicy::Expanding, QSizePolicy::Minimum), 1, 0);
    grid->addItem(new QSpacerItem(1, 1, QSizePolicy::Minimum, QSizePolicy::Expanding), 0, 1);
    grid->addWidget(clearButton, 1, 1);
    grid->addItem(new QSpacerItem(16, 16, QSizePolicy::Fixed, QSizePolicy::Fixed), 2, 2);
}

MessageOutput::~MessageOutput() = default;

uint MessageOutput::maxItems() const
{
    return d->maxItems;
}

void MessageOutput::setMaxItems(unsigned int count)
{
    d->maxItems = count;
}

int MessageOutput::count() const
{
    return QListWidget::count() - d->leaving + int(d->arriving.size());
}

QListWidgetItem *MessageOutput::item(int row) const
{
    if (row < 0 || row >= count())
        return nullptr;
    const int shown = QListWidget::count() - d->leaving;
    return row < shown ? QListWidget::item(row + d->leaving)
                       : d->arriving[size_t(row - shown)].get();
}

void MessageOutput::clear()
{
    d->arriving.clear();
    d->leaving = 0;
    d->textLength = 0;
    QListWidget::clear();
}

MessageItem *MessageOutput::lastItem() const
{
    return const_cast<MessageItem *>(messageItem(item(count() - 1)));
}

void MessageOutput::checkMaxItems()
{
    if (MessageItem *last = lastItem()) {
        QString fileName;
        int line = 0;
        if (last->fileName().isEmpty() && parseTraceback(last->text(), &fileName, &line)) {
            last->setLine(line);
            last->setFileName(fileName);
        }
    }
    if (uint(count()) >= d->maxItems)
        dropOldest();
    while (d->textLength > MessageLimits::text && count() > 0)
        dropOldest();
}

void MessageOutput::dropOldest()
{
    if (const MessageItem *const oldest = messageItem(item(0)))
        d->textLength -= oldest->rawLength();
    if (d->leaving < QListWidget::count())
        ++d->leaving;
    else if (!d->arriving.empty())
        d->arriving.pop_front();
}

void MessageOutput::showSoon()
{
    if (d->show->isActive())
        return;
    const qint64 elapsed = d->sinceShown.isValid() ? d->sinceShown.elapsed() : showInterval;
    d->show->start(int(qMax<qint64>(0, showInterval - elapsed)));
}

/// Brings the list up to date and to its end. Between two calls it stays as it was
/// last laid out: a list that has changed since paints nothing.
void MessageOutput::showRows()
{
    d->sinceShown.start();
    model()->removeRows(0, std::exchange(d->leaving, 0));
    for (std::unique_ptr<MessageItem> &row : d->arriving)
        addItem(row.release());
    d->arriving.clear();
    scheduleDelayedItemsLayout();
    scrollToBottom();
}

void MessageOutput::insertItem(const QString &s)
{
    checkMaxItems();
    d->textLength += s.size();
    d->arriving.push_back(std::make_unique<MessageItem>(nullptr, s, -1, QString()));
    showSoon();
}

void MessageOutput::insertItem(const QString &s, int line)
{
    insertItem(s);
    lastItem()->setLine(line);
}

void MessageOutput::insertItem(const QString &s, int line, const QString &fname)
{
    insertItem(s, line);
    lastItem()->setFileName(fname);
}

void MessageOutput::insertText(const QString &directives, const QString &text, int line,
                               const QString &fname)
{
    insertItem(directives + text);
    MessageItem *const row = lastItem();
    row->setMarkupLength(directives.size());
    if (line == -1)
        return;
    row->setLine(line);
    row->setFileName(fname);
}

void MessageOutput::showMessage(const QString &message)
{
    const qsizetype lastTraceback = message.lastIndexOf(u"  File ");
    qsizetype start = 0;
    for (;;) {
        const qsizetype end = message.indexOf(u'\n', start);
        if (end < 0)
            break;
        QString fileName;
        int line = 0;
        if (lastTraceback >= start && parseTraceback(message.mid(start), &fileName, &line))
            addToLastItem(message.mid(start, end - start), line, fileName);
        else
            addToLastItem(message.mid(start, end - start));
        insertItem(QString());
        start = end + 1;
    }
    addToLastItem(message.mid(start));
}

void MessageOutput::addToLastItem(const QString &s)
{
    if (count() == 0) {
        insertItem(s);
        return;
    }
    if (MessageItem *const last = lastItem()) {
        d->textLength += s.size();
        last->addText(s);
    } else {
        item(count() - 1)->setText(item(count() - 1)->text() + s);
    }
    showSoon();
}

void MessageOutput::addToLastItem(const QString &s, int line, const QString &fname)
{
    const bool wasEmpty = count() == 0;
    addToLastItem(s);
    MessageItem *last = lastItem();
    if (wasEmpty || !last)
        return;
    last->setLine(line);
    last->setFileName(fname);
}

void MessageOutput::openFile(const QString &fileName, int line)
{
    if (fileName.isEmpty() || !QFileInfo::exists(fileName))
        return;
    Editors::self()->open(fileName);
    Editors::self()->current()->setCursorPosition(line - 1, 0);
}

void MessageOutput::makeVisible()
{
    Shell::self()->raisePanel(this);
}

void MessageOutput::clickItem(QListWidgetItem *item)
{
    const MessageItem *const row = messageItem(item);
    if (row && row->line() != -1)
        emit clicked(row->fileName(), row->line());
}

} // namespace vesk
