#pragma once

#include "course/block.h"

#include <QWidget>

namespace Kestrun {

class BlocksView;

// Quoted material: a bar in the secondary colour at 40 % beside the quoted
// blocks, whose text is all in the secondary colour.
class QuoteBlock : public QWidget {
    Q_OBJECT

public:
    explicit QuoteBlock(const QList<Block> &blocks, QWidget *parent = nullptr);

    BlocksView *content() const { return m_content; }
    // The bar's rectangle and colour, as drawn.
    QRect bar() const;
    QColor barColor() const;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    BlocksView *m_content;
};

} // namespace Kestrun
