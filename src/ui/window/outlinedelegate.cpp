#include "outlinedelegate.h"

#include "coursesidebar.h"
#include "app/courseoutline.h"
#include "theme/icons.h"
#include "theme/theme.h"

#include <QPainter>
#include <QPainterPath>
#include <QTextLayout>

namespace Kestrun {

namespace {

constexpr int verticalPadding = 5;
constexpr int horizontalPadding = 6;
constexpr int maxTitleLines = 2;

CourseOutline::RowKind kindOf(const QModelIndex &index)
{
    return CourseOutline::RowKind(index.data(CourseOutline::RowKindRole).toInt());
}

QFont chapterFont()
{
    QFont font = Theme::font(Theme::TextStyle::subheadline);
    font.setWeight(QFont::DemiBold);
    return font;
}

// The title broken into at most two lines, the second elided.
QStringList titleLines(const QString &title, const QFont &font, int width)
{
    QTextLayout layout(title, font);
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout.setTextOption(option);
    layout.beginLayout();
    QStringList lines;
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        line.setLineWidth(width);
        if (lines.size() == maxTitleLines - 1) {
            lines.append(QFontMetrics(font).elidedText(title.mid(line.textStart()), Qt::ElideRight, width));
            break;
        }
        lines.append(title.mid(line.textStart(), line.textLength()).trimmed());
    }
    layout.endLayout();
    return lines;
}

} // namespace

OutlineDelegate::OutlineDelegate(OutlineView *view)
    : QStyledItemDelegate(view)
    , m_view(view)
{
}

int OutlineDelegate::textWidth(const QModelIndex &index) const
{
    int depth = 0;
    for (QModelIndex up = index.parent(); up.isValid(); up = up.parent())
        ++depth;
    return qMax(40, m_view->viewport()->width() - depth * m_view->indentation() - 2 * horizontalPadding - iconWidth - gap);
}

QSize OutlineDelegate::sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    const QFontMetrics body(option.font);
    switch (kindOf(index)) {
    case CourseOutline::RowKind::chapter: {
        const int top = index.row() == 0 ? 4 : chapterGap;
        return {0, top + QFontMetrics(chapterFont()).height() + 2 * verticalPadding};
    }
    case CourseOutline::RowKind::module:
        return {0, body.height() + 2 * verticalPadding + 2};
    case CourseOutline::RowKind::lesson: {
        const qsizetype lines = titleLines(index.data().toString(), option.font, textWidth(index)).size();
        return {0, int(lines) * body.lineSpacing() + 2 * verticalPadding};
    }
    }
    return {};
}

void OutlineDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    const QRect row = option.rect;
    const QColor text = option.palette.color(QPalette::WindowText);
    const QColor secondary = Theme::withOpacity(text, 0.6);
    const bool selected = option.state & QStyle::State_Selected;

    switch (kindOf(index)) {
    case CourseOutline::RowKind::chapter: {
        painter->setFont(chapterFont());
        painter->setPen(secondary);
        const QRect area = row.adjusted(horizontalPadding, 0, -horizontalPadding, -verticalPadding);
        painter->drawText(area, Qt::AlignLeft | Qt::AlignBottom | Qt::TextSingleLine,
                          QFontMetrics(chapterFont()).elidedText(index.data().toString(), Qt::ElideRight, area.width()));
        break;
    }
    case CourseOutline::RowKind::module: {
        const QString count = index.data(CourseOutline::CountRole).toString();
        QFont small = Theme::font(Theme::TextStyle::caption);
        const int countWidth = QFontMetrics(small).horizontalAdvance(count);
        const QRect area = row.adjusted(2, 0, -horizontalPadding, 0);
        painter->setFont(small);
        painter->setPen(secondary);
        painter->drawText(area, Qt::AlignRight | Qt::AlignVCenter, count);
        painter->setFont(option.font);
        painter->setPen(text);
        const QRect titleArea = area.adjusted(0, 0, -countWidth - gap, 0);
        painter->drawText(titleArea, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
                          option.fontMetrics.elidedText(index.data().toString(), Qt::ElideRight, titleArea.width()));
        break;
    }
    case CourseOutline::RowKind::lesson: {
        const bool done = index.data(CourseOutline::DoneRole).toBool();
        if (selected) {
            QPainterPath path;
            path.addRoundedRect(QRectF(row).adjusted(0, 1, -2, -1), 6, 6);
            painter->fillPath(path, option.palette.color(QPalette::Highlight));
        }
        const QColor ink = selected ? option.palette.color(QPalette::HighlightedText) : text;
        const QColor iconColor = selected ? ink : done ? Theme::vmSea() : secondary;
        const QRect inner = row.adjusted(horizontalPadding, verticalPadding, -horizontalPadding, -verticalPadding);
        const int lineHeight = option.fontMetrics.lineSpacing();
        // On the selection's colour the badge's own white mark would vanish:
        // the mark alone stands for it there.
        const QString symbol = selected && done ? QStringLiteral("checkmark.circle")
                                                : index.data(CourseOutline::SymbolRole).toString();
        const QPixmap icon = Icons::pixmap(symbol, iconColor, iconWidth - 2, painter->device()->devicePixelRatioF());
        const QStringList lines = titleLines(index.data().toString(), option.font, textWidth(index));
        // The icon is centred on the row, as the lines are.
        const int iconTop = inner.top() + (inner.height() - (iconWidth - 2)) / 2;
        painter->drawPixmap(inner.left() + 1, iconTop, icon);
        painter->setFont(option.font);
        painter->setPen(ink);
        int y = inner.top();
        for (const QString &line : lines) {
            painter->drawText(QRect(inner.left() + iconWidth + gap, y, inner.width() - iconWidth - gap, lineHeight),
                              Qt::AlignLeft | Qt::AlignVCenter, line);
            y += lineHeight;
        }
        break;
    }
    }
    if (option.state & QStyle::State_HasFocus && m_view->hasFocus() && !selected
        && kindOf(index) != CourseOutline::RowKind::chapter) {
        painter->setPen(QPen(Theme::withOpacity(Theme::vmSea(), 0.6), 1));
        painter->drawRoundedRect(QRectF(row).adjusted(0.5, 1.5, -2.5, -1.5), 6, 6);
    }
    painter->restore();
}

} // namespace Kestrun
