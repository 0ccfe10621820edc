#pragma once

#include "course/block.h"
#include "theme/theme.h"

#include <QWidget>

class QVBoxLayout;

namespace Kestrun {

// Lesson text: its blocks one under another, 14 points apart, each drawn
// in its kind's look. Every piece of text can be selected and copied; the
// stack reports the height it needs for a width (heightForWidth), so it sits
// in a scroll area or a layout without clipping or blank space.
//
//   auto *text = new BlocksView(lesson.description, this);
class BlocksView : public QWidget {
    Q_OBJECT

public:
    explicit BlocksView(const QList<Block> &blocks = {}, QWidget *parent = nullptr);
    // A stack whose text is in a weaker colour, as inside a quote.
    BlocksView(const QList<Block> &blocks, Theme::Level level, QWidget *parent = nullptr);

    // Rebuilds the stack.
    void setBlocks(const QList<Block> &blocks);
    QList<Block> blocks() const { return m_blocks; }

    // The widget that draws the block at an index of blocks().
    QWidget *blockWidget(int index) const;

private:
    QWidget *blockView(const Block &block);

    QList<Block> m_blocks;
    Theme::Level m_level;
    QVBoxLayout *m_stack;
};

} // namespace Kestrun
