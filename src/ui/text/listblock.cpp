#include "listblock.h"

#include "listmarker.h"
#include "markdownlabel.h"

#include <QGridLayout>

namespace Kestrun {

ListBlock::ListBlock(bool ordered, const QStringList &items, Theme::Level level, QWidget *parent)
    : QWidget(parent)
    , m_grid(new QGridLayout(this))
{
    m_grid->setContentsMargins(0, 0, 0, 0);
    m_grid->setHorizontalSpacing(qRound(Theme::pixels(8)));
    m_grid->setVerticalSpacing(qRound(Theme::pixels(6)));
    m_grid->setColumnStretch(1, 1);
    for (int i = 0; i < items.size(); ++i) {
        const QString text = ordered ? QStringLiteral("%1.").arg(i + 1) : QStringLiteral("\u2022");
        // Marker and text share the font and the top edge, so their first
        // baselines meet.
        m_grid->addWidget(new ListMarker(text, this), i, 0, Qt::AlignRight | Qt::AlignTop);
        auto *label = new MarkdownLabel(items[i], Theme::TextStyle::body, this);
        label->setColor(level);
        m_grid->addWidget(label, i, 1);
    }
}

int ListBlock::count() const
{
    return m_grid->rowCount() == 1 && !m_grid->itemAtPosition(0, 0) ? 0 : m_grid->rowCount();
}

ListMarker *ListBlock::marker(int item) const
{
    QLayoutItem *cell = m_grid->itemAtPosition(item, 0);
    return cell ? qobject_cast<ListMarker *>(cell->widget()) : nullptr;
}

MarkdownLabel *ListBlock::item(int item) const
{
    QLayoutItem *cell = m_grid->itemAtPosition(item, 1);
    return cell ? qobject_cast<MarkdownLabel *>(cell->widget()) : nullptr;
}

} // namespace Kestrun
