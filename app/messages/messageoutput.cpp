#include "app/messages/messageoutput.h"

#include "app/actions.h"
#include "app/editors/editor.h"
#include "app/editors/editors.h"
#include "app/messages/messageitem.h"
#include "app/shell.h"
#include "app/utils.h"
#include "app/widgetstack.h"

#include <QFileInfo>
#include <QGridLayout>
#include <QPainter>
#include <QPointer>
#include <QStyledItemDelegate>
#include <QTimer>
#include <QToolBar>
#include <QToolButton>

namespace vesk {

namespace {

/// What all rows together may hold, in UTF-16 units. Rows are lines of files, and
/// five hundred lines of megabytes each would take the machine's memory.
constexpr qint64 maxTextLength = 64 * 1024 * 1024;

/// Draws rows in their own colours, over the list's fill where one is pressed.
class MessageDelegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override
    {
        const auto *list = static_cast<const QListWidget *>(option.widget);
        const QListWidgetItem *item = list->item(index.row());
        if (!item || item->type() != MessageItem::itemType) {
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
        static_cast<const MessageItem *>(item)->paint(painter);
        painter->restore();
    }

    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override
    {
        const auto *list = static_cast<const QListWidget *>(option.widget);
        const QListWidgetItem *item = list ? list->item(index.row()) : nullptr;
        if (!item || item->type() != MessageItem::itemType)
            return QStyledItemDelegate::sizeHint(option, index);
        return {static_cast<const MessageItem *>(item)->width(option.fontMetrics),
                option.fontMetrics.lineSpacing() + 1};
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

    uint maxItems = 500;
    /// At least what all rows hold: what has come since they were last counted is in
    /// it, what has gone is not out of it.
    qint64 textLength = 0;
    QTimer *follow = nullptr;
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

    // Scrolling lays all rows out anew, which a hundred thousand rows in a
    // sequence can't each pay for.
    d->follow = new QTimer(this);
    d->follow->setSingleShot(true);
    connect(d->follow, &QTimer::timeout, this, &QListWidget::scrollToBottom);

    createClearButton();

    Action *show =
        Actions::createAction(QStringLiteral("Messages"), QStringLiteral("bottomDock/messages"),
                              (Qt::CTRL | Qt::Key_M).toCombined(), this, SLOT(makeVisible()));
    Shell::self()->actionGroup(QStringLiteral("docks/bottom"))->add(show);
    show->setCheckable(true);
    show->setIcon(Utils::iconSet(QStringLiteral("16x16_Messages")));
    show->addTo(Shell::self()->bottomDockTab());
    Shell::self()->bottomDock()->addWidget(this, -1);
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
    connect(clearButton, &QToolButton::clicked, this, [this] { clear(); });
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

MessageItem *MessageOutput::lastItem() const
{
    QListWidgetItem *last = item(count() - 1);
    return last && last->type() == MessageItem::itemType ? static_cast<MessageItem *>(last)
                                                         : nullptr;
}

void MessageOutput::checkMaxItems()
{
    if (MessageItem *last = lastItem()) {
        QString fileName;
        int line = 0;
        if (parseTraceback(last->text(), &fileName, &line)) {
            last->setLine(line);
            last->setFileName(fileName);
        }
    }
    if (uint(count()) >= d->maxItems)
        dropRow(0);
    if (d->textLength > maxTextLength)
        dropLongRows();
}

void MessageOutput::dropRow(int row)
{
    const std::unique_ptr<QListWidgetItem> dropped(takeItem(row));
}

/// Takes as many of the oldest rows away as the list holds too much text.
void MessageOutput::dropLongRows()
{
    qint64 length = 0;
    for (int row = count() - 1; row >= 0; --row) {
        const QListWidgetItem *each = item(row);
        const bool isMessage = each->type() == MessageItem::itemType;
        const int own = isMessage ? static_cast<const MessageItem *>(each)->rawLength() : 0;
        if (length + own > maxTextLength) {
            for (; row >= 0; --row)
                dropRow(row);
            break;
        }
        length += own;
    }
    d->textLength = length;
}

void MessageOutput::followEnd()
{
    if (!d->follow->isActive())
        d->follow->start(0);
}

void MessageOutput::insertItem(const QString &s)
{
    checkMaxItems();
    d->textLength += s.size();
    new MessageItem(this, s, -1, QString());
    followEnd();
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
    followEnd();
}

void MessageOutput::addToLastItem(const QString &s)
{
    if (count() == 0) {
        insertItem(s);
        return;
    }
    d->textLength += s.size();
    if (MessageItem *last = lastItem())
        last->addText(s);
    else
        item(count() - 1)->setText(item(count() - 1)->text() + s);
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
    Shell::self()->bottomDock()->raiseWidget(this);
}

void MessageOutput::clickItem(QListWidgetItem *item)
{
    if (!item || item->type() != MessageItem::itemType)
        return;
    const auto *row = static_cast<const MessageItem *>(item);
    if (row->line() != -1)
        emit clicked(row->fileName(), row->line());
}

} // namespace vesk
