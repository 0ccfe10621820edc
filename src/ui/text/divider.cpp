#include "divider.h"

#include "theme/theme.h"

#include <QPainter>

namespace Kestrun {

Divider::Divider(QWidget *parent)
    : QWidget(parent)
{
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    setFixedHeight(1);
}

QSize Divider::sizeHint() const
{
    return QSize(0, 1);
}

QColor Divider::color() const
{
    return Theme::label(Theme::Level::quaternary, this);
}

void Divider::paintEvent(QPaintEvent *)
{
    QPainter(this).fillRect(rect(), color());
}

} // namespace Kestrun
