#include "lessoncolumn.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

namespace Kestrun {

LessonColumn::LessonColumn(bool centred, QWidget *parent)
    : QWidget(parent)
{
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    auto *column = new QWidget(this);
    column->setMaximumWidth(760 + 2 * 28);
    m_parts = new QVBoxLayout(column);
    m_parts->setContentsMargins(28, 28, 28, 28);
    m_parts->setSpacing(18);
    // A box layout gives the column its width before asking its height,
    // which keeps wrapped text from being cut at any width.
    if (centred)
        row->addStretch(0);
    row->addWidget(column, 1);
    row->addStretch(0);
}

void LessonColumn::add(QWidget *part)
{
    m_parts->addWidget(part);
}

} // namespace Kestrun
