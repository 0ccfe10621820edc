#include "blocksview.h"

#include "codeblock.h"
#include "divider.h"
#include "listblock.h"
#include "markdownlabel.h"
#include "noteview.h"
#include "quoteblock.h"
#include "tableview.h"

#include <QVBoxLayout>

namespace Kestrun {

BlocksView::BlocksView(const QList<Block> &blocks, QWidget *parent)
    : BlocksView(blocks, Theme::Level::primary, parent)
{
}

BlocksView::BlocksView(const QList<Block> &blocks, Theme::Level level, QWidget *parent)
    : QWidget(parent)
    , m_level(level)
    , m_stack(new QVBoxLayout)
{
    // Height beyond what the blocks need stays below them, not between them.
    auto *outer = new QVBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    outer->setSpacing(0);
    outer->addLayout(m_stack);
    outer->addStretch(1);
    m_stack->setContentsMargins(0, 0, 0, 0);
    m_stack->setSpacing(qRound(Theme::pixels(14)));
    setBlocks(blocks);
}

void BlocksView::setBlocks(const QList<Block> &blocks)
{
    while (QLayoutItem *item = m_stack->takeAt(0)) {
        delete item->widget();
        delete item;
    }
    m_blocks = blocks;
    for (const Block &block : blocks) {
        QWidget *widget = blockView(block);
        // Tables are as wide as their content; everything else takes the width.
        m_stack->addWidget(widget, 0, block.kind == Block::Kind::table ? Qt::AlignLeft : Qt::Alignment());
    }
}

QWidget *BlocksView::blockWidget(int index) const
{
    QLayoutItem *item = m_stack->itemAt(index);
    return item ? item->widget() : nullptr;
}

QWidget *BlocksView::blockView(const Block &block)
{
    switch (block.kind) {
    case Block::Kind::heading: {
        auto *label = new MarkdownLabel(block.text, block.level < 3 ? Theme::TextStyle::title2 : Theme::TextStyle::title3,
                                        this);
        QFont font = label->font();
        font.setWeight(QFont::DemiBold);
        label->setFont(font);
        label->setContentsMargins(0, qRound(Theme::pixels(8)), 0, 0);
        label->setColor(m_level);
        return label;
    }
    case Block::Kind::paragraph: {
        auto *label = new MarkdownLabel(block.text, Theme::TextStyle::body, this);
        label->setLineSpacing(3);
        label->setColor(m_level);
        return label;
    }
    case Block::Kind::code:
        return new CodeBlock(block.code, this);
    case Block::Kind::list:
        return new ListBlock(block.ordered, block.items, m_level, this);
    case Block::Kind::note:
        return new NoteView(block.noteKind, block.blocks, m_level, this);
    case Block::Kind::quote:
        return new QuoteBlock(block.blocks, this);
    case Block::Kind::table:
        return new TableView(block.head, block.rows, m_level, this);
    case Block::Kind::rule:
        return new Divider(this);
    }
    return new QWidget(this);
}

} // namespace Kestrun
