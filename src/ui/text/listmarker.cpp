#include "listmarker.h"

#include "theme/theme.h"

#include <QEvent>
#include <QFontMetricsF>
#include <QPainter>

#include <cmath>

namespace Kestrun {

ListMarker::ListMarker(const QString &marker, QWidget *parent)
    : QWidget(parent)
    , m_marker(marker)
{
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

qreal ListMarker::digitWidth() const
{
    const QFontMetricsF metrics(font());
    qreal widest = 0;
    for (char16_t digit = u'0'; digit <= u'9'; ++digit)
        widest = qMax(widest, metrics.horizontalAdvance(QChar(digit)));
    return widest;
}

qreal ListMarker::advance(QChar c) const
{
    return c.isDigit() ? digitWidth() : QFontMetricsF(font()).horizontalAdvance(c);
}

QSize ListMarker::sizeHint() const
{
    qreal width = 0;
    for (QChar c : m_marker)
        width += advance(c);
    return QSize(int(std::ceil(width)), fontMetrics().height());
}

void ListMarker::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::FontChange)
        updateGeometry();
    QWidget::changeEvent(event);
}

void ListMarker::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setPen(Theme::label(Theme::Level::secondary, this));
    const QFontMetricsF metrics(font());
    qreal x = width() - sizeHint().width();
    for (QChar c : m_marker) {
        const qreal cell = advance(c);
        // A digit sits in the middle of its cell.
        painter.drawText(QPointF(x + (cell - metrics.horizontalAdvance(c)) / 2, metrics.ascent()), QString(c));
        x += cell;
    }
}

} // namespace Kestrun
