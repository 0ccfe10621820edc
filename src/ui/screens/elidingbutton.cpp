#include "elidingbutton.h"

#include <QEvent>

namespace Kestrun {

ElidingButton::ElidingButton(const QIcon &icon, const QString &text, QWidget *parent)
    : QPushButton(icon, text, parent)
    , m_fullText(text)
{
    setAccessibleName(text);
    setSizePolicy(QSizePolicy::Preferred, sizePolicy().verticalPolicy());
}

int ElidingButton::chromeWidth() const
{
    return QPushButton::sizeHint().width() - fontMetrics().horizontalAdvance(text());
}

QSize ElidingButton::sizeHint() const
{
    QSize size = QPushButton::sizeHint();
    size.setWidth(chromeWidth() + fontMetrics().horizontalAdvance(m_fullText));
    return size;
}

QSize ElidingButton::minimumSizeHint() const
{
    QSize size = sizeHint();
    // A few letters and the ellipsis still say where the button leads.
    const QString shortest = m_fullText.left(3) + QChar(0x2026);
    size.setWidth(std::min(size.width(), chromeWidth() + fontMetrics().horizontalAdvance(shortest)));
    return size;
}

void ElidingButton::resizeEvent(QResizeEvent *event)
{
    QPushButton::resizeEvent(event);
    elide();
}

void ElidingButton::changeEvent(QEvent *event)
{
    QPushButton::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange)
        elide();
}

void ElidingButton::elide()
{
    const QString shown = fontMetrics().elidedText(m_fullText, Qt::ElideRight, width() - chromeWidth());
    if (shown != text())
        setText(shown);
}

} // namespace Kestrun
