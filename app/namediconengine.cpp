#include "app/namediconengine.h"

#include "app/utils.h"

#include <QPainter>

namespace vesk {

NamedIconEngine::NamedIconEngine(const QString &name) : iconName(name)
{}

QSize NamedIconEngine::actualSize(const QSize &size, QIcon::Mode, QIcon::State)
{
    const QSize own = Utils::icon(iconName).deviceIndependentSize().toSize();
    if (own.width() <= size.width() && own.height() <= size.height())
        return own;
    return own.scaled(size, Qt::KeepAspectRatio);
}

QPixmap NamedIconEngine::pixmap(const QSize &size, QIcon::Mode mode, QIcon::State)
{
    QPixmap result =
        mode == QIcon::Disabled ? Utils::disabledIcon(iconName) : Utils::icon(iconName);
    if (result.width() > size.width() || result.height() > size.height())
        result = result.scaled(size, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    return result;
}

void NamedIconEngine::paint(QPainter *painter, const QRect &rect, QIcon::Mode mode,
                            QIcon::State state)
{
    const qreal ratio = painter->device()->devicePixelRatio();
    painter->drawPixmap(rect, pixmap((QSizeF(rect.size()) * ratio).toSize(), mode, state));
}

QIconEngine *NamedIconEngine::clone() const
{
    return new NamedIconEngine(iconName);
}

QString NamedIconEngine::key() const
{
    return QStringLiteral("NamedIconEngine");
}

} // namespace vesk
