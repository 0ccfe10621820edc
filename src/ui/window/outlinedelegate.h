#pragma once

#include <QStyledItemDelegate>

namespace Kestrun {

class OutlineView;

// Draws the outline's rows: chapter headings, modules with their counts,
// lessons with an icon and a title of up to two lines.
class OutlineDelegate : public QStyledItemDelegate {
    Q_OBJECT

public:
    explicit OutlineDelegate(OutlineView *view);

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;

    static constexpr int iconWidth = 18;
    static constexpr int gap = 8;
    static constexpr int chapterGap = 14;  // above each chapter after the first

private:
    int textWidth(const QModelIndex &index) const;

    OutlineView *m_view;
};

} // namespace Kestrun
