#include "app/widgets/clicklabel.h"

namespace vesk {

ClickLabel::ClickLabel(QWidget *parent, const QString &name) : ClickLabel(QString(), parent, name)
{}

ClickLabel::ClickLabel(const QString &text, QWidget *parent, const QString &name)
    : QLabel(text, parent)
{
    setObjectName(name);
}

void ClickLabel::mousePressEvent(QMouseEvent *event)
{
    // The plain widget's handler: the label's own would start to select text.
    QWidget::mousePressEvent(event);
    emit clicked();
}

} // namespace vesk
