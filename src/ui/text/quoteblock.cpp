#include "quoteblock.h"

#include "blocksview.h"
#include "theme/theme.h"

#include <QPainter>
#include <QVBoxLayout>

namespace Kestrun {

QuoteBlock::QuoteBlock(const QList<Block> &blocks, QWidget *parent)
    : QWidget(parent)
    , m_content(new BlocksView(blocks, Theme::Level::secondary, this))
{
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(qRound(Theme::pixels(3)) + qRound(Theme::pixels(12)), 0, 0, 0);
    layout->addWidget(m_content);
}

QRect QuoteBlock::bar() const
{
    return QRect(0, 0, qRound(Theme::pixels(3)), m_content->height());
}

QColor QuoteBlock::barColor() const
{
    return Theme::withOpacity(Theme::label(Theme::Level::secondary, this), 0.4);
}

void QuoteBlock::paintEvent(QPaintEvent *)
{
    QPainter(this).fillRect(bar(), barColor());
}

} // namespace Kestrun
