#pragma once

#include <QIconEngine>

namespace vesk {

/// Draws an icon of Utils by its name, not before it is needed: a start-up that
/// makes a hundred actions renders only what comes on the screen. Never larger
/// than the size the name gives; smaller ones are scaled down.
class NamedIconEngine : public QIconEngine
{
public:
    explicit NamedIconEngine(const QString &name);

    void paint(QPainter *painter, const QRect &rect, QIcon::Mode mode, QIcon::State state) override;
    QSize actualSize(const QSize &size, QIcon::Mode mode, QIcon::State state) override;
    QPixmap pixmap(const QSize &size, QIcon::Mode mode, QIcon::State state) override;
    QIconEngine *clone() const override;
    QString key() const override;

private:
    const QString iconName;
};

} // namespace vesk
