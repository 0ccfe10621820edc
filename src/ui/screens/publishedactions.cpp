#include "publishedactions.h"

namespace Kestrun {

PublishedActions::PublishedActions(QObject *parent)
    : QObject(parent)
{
}

void PublishedActions::publish(QObject *owner, Action run, Action reset)
{
    disconnect(m_ownerGone);
    m_owner = owner;
    m_run = std::move(run);
    m_reset = std::move(reset);
    m_ownerGone = connect(owner, &QObject::destroyed, this, [this, owner] { withdraw(owner); });
    Q_EMIT changed();
}

void PublishedActions::withdraw(QObject *owner)
{
    if (owner != m_owner)
        return;
    disconnect(m_ownerGone);
    m_owner = nullptr;
    m_run = nullptr;
    m_reset = nullptr;
    Q_EMIT changed();
}

void PublishedActions::run() const
{
    if (m_run)
        m_run();
}

void PublishedActions::reset() const
{
    if (m_reset)
        m_reset();
}

} // namespace Kestrun
