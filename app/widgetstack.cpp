#include "app/widgetstack.h"

#include <QChildEvent>
#include <QList>

namespace vesk {

struct WidgetStack::Private
{
    struct Page
    {
        int id = -1;
        // Only compared, never called through, once the page is being destroyed.
        QWidget *widget = nullptr;
    };

    int indexOf(const QObject *page) const
    {
        for (int i = 0; i < pages.size(); ++i) {
            if (pages.at(i).widget == page)
                return i;
        }
        return -1;
    }

    QList<Page> pages;
    QWidget *top = nullptr;
    int nextId = 0;
};

WidgetStack::WidgetStack(QWidget *parent, const QString &name)
    : QFrame(parent), d(std::make_unique<Private>())
{
    setObjectName(name);
}

WidgetStack::~WidgetStack() = default;

int WidgetStack::addWidget(QWidget *page, int id)
{
    removeWidget(page);
    if (QWidget *const former = widget(id))
        removeWidget(former);
    const int pageId = id < 0 ? d->nextId : id;
    d->nextId = qMax(d->nextId, pageId + 1);
    page->hide();
    page->setParent(this);
    d->pages.append({pageId, page});
    updateGeometry();
    return pageId;
}

void WidgetStack::removeWidget(QWidget *page)
{
    const int index = d->indexOf(page);
    if (index < 0)
        return;
    d->pages.removeAt(index);
    if (d->top == page)
        d->top = nullptr;
    page->hide();
    updateGeometry();
}

int WidgetStack::id(const QWidget *page) const
{
    const int index = d->indexOf(page);
    return index < 0 ? -1 : d->pages.at(index).id;
}

QWidget *WidgetStack::widget(int id) const
{
    for (const Private::Page &page : std::as_const(d->pages)) {
        if (page.id == id)
            return page.widget;
    }
    return nullptr;
}

QWidget *WidgetStack::visibleWidget() const
{
    return d->top;
}

void WidgetStack::raiseWidget(int id)
{
    raiseWidget(widget(id));
}

void WidgetStack::raiseWidget(QWidget *page)
{
    if (!page || page == d->top || id(page) < 0)
        return;
    emit aboutToShow(id(page));
    emit aboutToShow(page);
    // A listener may have raised or removed the page meanwhile.
    if (page == d->top || id(page) < 0)
        return;
    QWidget *const former = d->top;
    const bool hadFocus = former && former->isAncestorOf(window()->focusWidget());
    d->top = page;
    page->setGeometry(contentsRect());
    page->show();
    page->raise();
    if (hadFocus)
        (page->focusWidget() ? page->focusWidget() : page)->setFocus();
    if (former)
        former->hide();
}

QSize WidgetStack::sizeHint() const
{
    QSize size;
    for (const Private::Page &page : std::as_const(d->pages))
        size = size.expandedTo(page.widget->sizeHint());
    return size.isValid() ? size + QSize(2, 2) * frameWidth() : QFrame::sizeHint();
}

QSize WidgetStack::minimumSizeHint() const
{
    QSize size(0, 0);
    for (const Private::Page &page : std::as_const(d->pages)) {
        const QWidget *const widget = page.widget;
        size = size.expandedTo(widget->minimumSizeHint().expandedTo(widget->minimumSize()));
    }
    return size + QSize(2, 2) * frameWidth();
}

void WidgetStack::childEvent(QChildEvent *event)
{
    QFrame::childEvent(event);
    if (!event->removed())
        return;
    const int index = d->indexOf(event->child());
    if (index < 0)
        return;
    d->pages.removeAt(index);
    if (d->top == event->child())
        d->top = nullptr;
    updateGeometry();
}

void WidgetStack::resizeEvent(QResizeEvent *event)
{
    QFrame::resizeEvent(event);
    if (d->top)
        d->top->setGeometry(contentsRect());
}

bool WidgetStack::event(QEvent *event)
{
    // A page's wishes have changed, and the layout around knows only the stack's.
    if (event->type() == QEvent::LayoutRequest)
        updateGeometry();
    return QFrame::event(event);
}

} // namespace vesk
