#pragma once

#include <QLabel>

namespace vesk {

/// A label that tells when it is pressed.
class ClickLabel : public QLabel
{
    Q_OBJECT
public:
    explicit ClickLabel(QWidget *parent = nullptr, const QString &name = QString());
    explicit ClickLabel(const QString &text, QWidget *parent = nullptr,
                        const QString &name = QString());

signals:
    void clicked();

protected:
    void mousePressEvent(QMouseEvent *event) override;
};

} // namespace vesk
