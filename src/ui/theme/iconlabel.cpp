#include "iconlabel.h"

#include "icons.h"
#include "theme.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>

namespace Kestrun {

IconLabel::IconLabel(const QString &symbol, const QString &text, const QColor &color, QWidget *parent)
    : QWidget(parent)
    , m_icon(new QLabel(this))
    , m_text(new QLabel(text, this))
{
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(8);
    m_text->setWordWrap(true);
    m_icon->setAlignment(Qt::AlignCenter);
    layout->addWidget(m_icon, 0, Qt::AlignTop);
    layout->addWidget(m_text, 1);
    setSymbol(symbol, color);
    setTextColor(color);
}

void IconLabel::setSymbol(const QString &symbol, const QColor &color)
{
    m_symbol = symbol;
    m_color = color;
    updateIcon();
}

void IconLabel::setText(const QString &text)
{
    m_text->setText(text);
}

QString IconLabel::text() const
{
    return m_text->text();
}

void IconLabel::setTextFont(const QFont &font)
{
    m_text->setFont(font);
    updateIcon();
}

void IconLabel::setTextColor(const QColor &color)
{
    Theme::setTextColor(m_text, color);
}

void IconLabel::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange)
        updateIcon();
}

void IconLabel::updateIcon()
{
    // The symbol as tall as a line of the text, so it sits on the first line.
    const int line = m_text->fontMetrics().height();
    const int size = qRound(line * 1.05);
    m_icon->setFixedSize(size, line);
    m_icon->setPixmap(Icons::pixmap(m_symbol, m_color, size, devicePixelRatioF()));
}

} // namespace Kestrun
