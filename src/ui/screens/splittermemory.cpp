#include "splittermemory.h"

#include <QSplitter>

namespace Kestrun {

SplitterMemory::SplitterMemory(QObject *parent)
    : QObject(parent)
{
}

void SplitterMemory::attach(QSplitter *splitter, const QString &key)
{
    const auto kept = m_states.constFind(key);
    if (kept != m_states.cend())
        splitter->restoreState(*kept);
    connect(splitter, &QSplitter::splitterMoved, this, [this, splitter, key] { m_states.insert(key, splitter->saveState()); });
}

} // namespace Kestrun
