#include "noteview.h"

#include "blocksview.h"
#include "selectabletext.h"
#include "theme/icons.h"

#include <QHBoxLayout>
#include <QPainter>
#include <QPainterPath>
#include <QVBoxLayout>

namespace Kestrun {

NoteView::Look NoteView::look(const QString &kind)
{
    if (kind == QLatin1String("tip"))
        return {QStringLiteral("lightbulb"), Theme::vmGold()};
    if (kind == QLatin1String("Warning"))
        return {QStringLiteral("exclamationmark.triangle"), Theme::vmAlert()};
    if (kind == QLatin1String("Apple Developer Program"))
        return {QStringLiteral("apple.logo"), Theme::vmSea()};
    return {QStringLiteral("info.circle"), Theme::vmSea()};
}

NoteView::NoteView(const QString &kind, const QList<Block> &blocks, Theme::Level level, QWidget *parent)
    : QWidget(parent)
    , m_kind(kind)
    , m_symbol(Icons::icon(look(kind).symbol, look(kind).color))
    , m_iconArea(new QWidget(this))
    , m_title(new SelectableText(this))
    , m_content(new BlocksView(blocks, level, this))
{
    m_title->setFont(Theme::font(Theme::TextStyle::headline));
    m_title->setStyledText({kind, {}});
    m_title->setColor(level);
    // The icon's place: as wide as the icon, as high as the title's line.
    m_iconArea->setFixedSize(iconSize(), m_title->fontMetrics().height());

    auto *row = new QHBoxLayout(this);
    const int padding = qRound(Theme::pixels(14));
    row->setContentsMargins(padding, padding, padding, padding);
    row->setSpacing(qRound(Theme::pixels(12)));
    row->addWidget(m_iconArea, 0, Qt::AlignTop);
    auto *column = new QVBoxLayout;
    column->setSpacing(qRound(Theme::pixels(6)));
    column->addWidget(m_title);
    column->addWidget(m_content);
    row->addLayout(column, 1);
}

// The symbols fill 16 of their 22 units; this makes the drawn symbol about
// as high as a title 3 letter box.
int NoteView::iconSize()
{
    return qRound(Theme::pixels(20));
}

// Centred on the title's first line, painted by the box itself so that it is
// as sharp as the screen allows.
QRect NoteView::iconRect() const
{
    QRect square(0, 0, iconSize(), iconSize());
    square.moveCenter(m_iconArea->geometry().center());
    return square;
}

void NoteView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const qreal radius = Theme::pixels(12);
    QPainterPath box;
    // A one-pixel line centred half a pixel inside the edge stays inside it.
    box.addRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), radius, radius);
    const QColor color = look().color;
    painter.fillPath(box, Theme::withOpacity(color, 0.1));
    painter.setPen(QPen(Theme::withOpacity(color, 0.3), 1));
    painter.drawPath(box);
    m_symbol.paint(&painter, iconRect());
}

} // namespace Kestrun
