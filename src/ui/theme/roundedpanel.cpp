#include "roundedpanel.h"

#include <QPainter>
#include <QPainterPath>

namespace Kestrun {

RoundedPanel::RoundedPanel(const QColor &fill, qreal radius, QWidget *parent)
    : QFrame(parent)
    , m_fill(fill)
    , m_radius(radius)
{
}

void RoundedPanel::setFill(const QColor &fill)
{
    m_fill = fill;
    update();
}

void RoundedPanel::setBorder(const QColor &border)
{
    m_border = border;
    update();
}

void RoundedPanel::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF box = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    QPainterPath path;
    path.addRoundedRect(box, m_radius, m_radius);
    painter.fillPath(path, m_fill);
    if (m_border.isValid()) {
        painter.setPen(QPen(m_border, 1));
        painter.drawPath(path);
    }
}

} // namespace Kestrun
