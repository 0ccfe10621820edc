#include "spinner.h"

#include <QPainter>
#include <QTimerEvent>

namespace Kestrun {

Spinner::Spinner(const QColor &color, QWidget *parent)
    : QWidget(parent)
    , m_color(color)
{
}

void Spinner::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    if (!m_timer)
        m_timer = startTimer(16);
}

void Spinner::hideEvent(QHideEvent *event)
{
    QWidget::hideEvent(event);
    if (m_timer)
        killTimer(m_timer);
    m_timer = 0;
}

void Spinner::timerEvent(QTimerEvent *event)
{
    if (event->timerId() != m_timer)
        return;
    m_angle = (m_angle + 8) % 360;
    update();
}

void Spinner::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const qreal side = qMin(width(), height()) - 3;
    const QRectF box((width() - side) / 2, (height() - side) / 2, side, side);
    QColor faint = m_color;
    faint.setAlphaF(0.25f);
    painter.setPen(QPen(faint, 2));
    painter.drawEllipse(box);
    painter.setPen(QPen(m_color, 2, Qt::SolidLine, Qt::RoundCap));
    painter.drawArc(box, -m_angle * 16, 100 * 16);
}

} // namespace Kestrun
