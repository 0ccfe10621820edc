#include "tableview.h"

#include "divider.h"
#include "markdownlabel.h"

#include <QGridLayout>
#include <QPainter>
#include <QPainterPath>

namespace Kestrun {

namespace {

constexpr int firstRow = 2; // below the head and its line

} // namespace

TableView::TableView(const QStringList &head, const QList<QStringList> &rows, Theme::Level level, QWidget *parent)
    : QWidget(parent)
    , m_grid(new QGridLayout(this))
    , m_divider(new Divider(this))
{
    m_columns = int(head.size());
    for (const QStringList &row : rows)
        m_columns = qMax(m_columns, int(row.size()));

    const int padding = qRound(Theme::pixels(14));
    m_grid->setContentsMargins(padding, padding, padding, padding);
    m_grid->setHorizontalSpacing(qRound(Theme::pixels(16)));
    m_grid->setVerticalSpacing(qRound(Theme::pixels(8)));

    QFont headFont = Theme::font(Theme::TextStyle::body);
    headFont.setWeight(QFont::DemiBold);
    const auto add = [&](const QString &text, int gridRow, int column) {
        auto *label = new MarkdownLabel(text, Theme::TextStyle::body, this);
        if (gridRow == 0)
            label->setFont(headFont);
        label->setColor(level);
        m_grid->addWidget(label, gridRow, column);
    };
    for (int column = 0; column < head.size(); ++column)
        add(head[column], 0, column);
    m_grid->addWidget(m_divider, 1, 0, 1, qMax(1, m_columns));
    for (int row = 0; row < rows.size(); ++row) {
        for (int column = 0; column < rows[row].size(); ++column)
            add(rows[row][column], firstRow + row, column);
    }
}

MarkdownLabel *TableView::labelAt(int gridRow, int column) const
{
    QLayoutItem *item = m_grid->itemAtPosition(gridRow, column);
    return item ? qobject_cast<MarkdownLabel *>(item->widget()) : nullptr;
}

MarkdownLabel *TableView::headCell(int column) const
{
    return labelAt(0, column);
}

MarkdownLabel *TableView::cell(int row, int column) const
{
    return labelAt(firstRow + row, column);
}

void TableView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const qreal radius = Theme::pixels(12);
    QPainterPath box;
    box.addRoundedRect(QRectF(rect()), radius, radius);
    painter.fillPath(box, Theme::withOpacity(Theme::label(Theme::Level::quaternary, this), 0.5));
}

} // namespace Kestrun
