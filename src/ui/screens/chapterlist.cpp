#include "chapterlist.h"

#include "theme/fonts.h"
#include "theme/theme.h"

#include <QEvent>
#include <QPainter>
#include <QTextOption>

#include <cmath>

namespace Kestrun {

namespace {

constexpr int columnGap = 28;
constexpr int rowGap = 14;
constexpr int lineGap = 2;

QFont titleFont()
{
    return Theme::font(Theme::TextStyle::headline);
}

QFont summaryFont()
{
    return Theme::font(Theme::TextStyle::callout);
}

QFont countFont()
{
    return Theme::font(Theme::TextStyle::body);
}

std::unique_ptr<QTextLayout> wrapped(const QString &text, const QFont &font, int width, int *height)
{
    auto layout = std::make_unique<QTextLayout>(text, font);
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout->setTextOption(option);
    layout->beginLayout();
    qreal y = 0;
    for (QTextLine line = layout->createLine(); line.isValid(); line = layout->createLine()) {
        line.setLineWidth(width);
        line.setPosition(QPointF(0, y));
        y += line.height();
    }
    layout->endLayout();
    *height = int(std::ceil(y));
    return layout;
}

} // namespace

ChapterList::ChapterList(QWidget *parent)
    : QWidget(parent)
{
    setObjectName(QStringLiteral("chapterList"));
    QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Preferred);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
}

void ChapterList::setRows(const QList<Row> &rows)
{
    m_rows = rows;
    QStringList described;
    for (const Row &row : rows)
        described << row.number + QLatin1Char(' ') + row.title + QLatin1String(", ") + row.count;
    setAccessibleName(described.join(QLatin1String("; ")));
    m_laidWidth = -1;
    m_heights.clear();
    updateGeometry();
    update();
}

void ChapterList::setCounts(const QStringList &counts)
{
    for (int i = 0; i < m_rows.size() && i < counts.size(); ++i)
        m_rows[i].count = counts[i];
    update();
}

int ChapterList::textLeft() const
{
    return QFontMetrics(Fonts::pixel(22)).horizontalAdvance(QStringLiteral("00")) + columnGap;
}

int ChapterList::textWidth(int width) const
{
    const int countWidth = QFontMetrics(countFont()).horizontalAdvance(QStringLiteral("00/00"));
    return qMax(40, width - textLeft() - columnGap - countWidth);
}

void ChapterList::layOut(int width) const
{
    if (width == m_laidWidth)
        return;
    m_laid.clear();
    const int text = textWidth(width);
    const int numberHeight = QFontMetrics(Fonts::pixel(22)).height();
    for (const Row &row : m_rows) {
        Laid laid;
        int titleHeight = 0;
        int summaryHeight = 0;
        laid.title = wrapped(row.title, titleFont(), text, &titleHeight);
        laid.summary = wrapped(row.summary, summaryFont(), text, &summaryHeight);
        laid.height = qMax(numberHeight, titleHeight + lineGap + summaryHeight);
        m_laid.push_back(std::move(laid));
    }
    m_laidWidth = width;
}

int ChapterList::heightForWidth(int width) const
{
    for (const auto &[known, height] : m_heights) {
        if (known == width)
            return height;
    }
    layOut(width);
    int height = 0;
    for (const Laid &laid : m_laid)
        height += laid.height;
    height += rowGap * int(qMax<qsizetype>(0, m_rows.size() - 1));
    if (m_heights.size() == 8)
        m_heights.removeFirst();
    m_heights.append({width, height});
    return height;
}

QSize ChapterList::sizeHint() const
{
    // A guess that lays nothing out: layouts ask heightForWidth for the real one.
    const int line = QFontMetrics(summaryFont()).lineSpacing();
    return {480, int(m_rows.size()) * (4 * line + rowGap)};
}

QSize ChapterList::minimumSizeHint() const
{
    return {textLeft() + 40 + columnGap, 0};
}

void ChapterList::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::PaletteChange) {
        m_laidWidth = -1;
        m_heights.clear();
        updateGeometry();
    }
}

void ChapterList::paintEvent(QPaintEvent *)
{
    layOut(width());
    QPainter painter(this);
    const QColor primary = Theme::label(Theme::Level::primary, this);
    const QColor secondary = Theme::label(Theme::Level::secondary, this);
    const int left = textLeft();
    int y = 0;
    for (int i = 0; i < m_rows.size(); ++i) {
        const Row &row = m_rows[i];
        const Laid &laid = m_laid[size_t(i)];
        painter.setFont(Fonts::pixel(22));
        painter.setPen(Theme::vmGold());
        painter.drawText(QRect(0, y, left, laid.height), Qt::AlignLeft | Qt::AlignTop, row.number);
        painter.setPen(primary);
        laid.title->draw(&painter, QPointF(left, y));
        painter.setPen(secondary);
        laid.summary->draw(&painter, QPointF(left, y + laid.title->boundingRect().height() + lineGap));
        painter.setFont(countFont());
        painter.drawText(QRect(0, y, width(), laid.height), Qt::AlignRight | Qt::AlignTop, row.count);
        y += laid.height + rowGap;
    }
}

} // namespace Kestrun
