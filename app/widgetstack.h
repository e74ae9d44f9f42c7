#pragma once

#include <QFrame>

#include <memory>

namespace vesk {

/// Pages on top of each other of which one at most is visible, known by ids.
/// No page comes up by itself: neither the first one added nor a neighbour of
/// one that was deleted.
class WidgetStack : public QFrame
{
    Q_OBJECT
public:
    explicit WidgetStack(QWidget *parent = nullptr, const QString &name = QString());
    ~WidgetStack() override;

    /// Makes \a page a hidden child and returns its id: \a id, or the next free
    /// one from 0 if that is negative. A page that had the id is removed.
    int addWidget(QWidget *page, int id = -1);
    /// Takes \a page out of the stack; it stays a hidden child.
    void removeWidget(QWidget *page);

    /// -1 for a widget that is no page.
    int id(const QWidget *page) const;
    /// Null for an unknown id.
    QWidget *widget(int id) const;
    /// The page on top, null if there is none. It is the one raised last also
    /// while the stack itself is hidden.
    QWidget *visibleWidget() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

public slots:
    /// Unknown ids are ignored.
    void raiseWidget(int id);
    /// Null and widgets that are no page are ignored. A focus inside the former
    /// page moves to the new one.
    void raiseWidget(QWidget *page);

signals:
    // Sent before the pages are switched.
    void aboutToShow(int id);
    void aboutToShow(QWidget *page);

protected:
    void childEvent(QChildEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    bool event(QEvent *event) override;

private:
    struct Private;
    const std::unique_ptr<Private> d;
};

} // namespace vesk
