#pragma once

#include <QObject>

#include <functional>

namespace Kestrun {

// The Run and Reset actions of the code lesson on screen, published for the
// menu; empty while no code lesson is shown.
class PublishedActions : public QObject {
    Q_OBJECT

public:
    using Action = std::function<void()>;

    explicit PublishedActions(QObject *parent = nullptr);

    // A screen publishes both while it is shown; `owner` going away
    // withdraws them.
    void publish(QObject *owner, Action run, Action reset);
    void withdraw(QObject *owner);

    bool hasRun() const { return bool(m_run); }
    bool hasReset() const { return bool(m_reset); }
    void run() const;
    void reset() const;

Q_SIGNALS:
    void changed();

private:
    QObject *m_owner = nullptr;
    QMetaObject::Connection m_ownerGone;
    Action m_run;
    Action m_reset;
};

} // namespace Kestrun
