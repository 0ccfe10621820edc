#pragma once

#include <QObject>

class QSocketNotifier;

namespace Kestrun {

// Turns SIGTERM and SIGINT into the same orderly quit as the Quit command:
// the handler only writes the signal's number into a pipe, and a notifier
// on this object's thread reads it, emits received() and quits the
// application's event loop. A second signal ends the process at once, the
// usual way. One instance per process.
class SignalQuit : public QObject {
    Q_OBJECT

public:
    explicit SignalQuit(QObject *parent = nullptr);
    // Puts the previous handlers back.
    ~SignalQuit() override;

    // The signal that asked to quit; 0 while none did.
    int signal() const { return m_signal; }

Q_SIGNALS:
    void received(int signal);

private:
    void readPipe();

    QSocketNotifier *m_notifier = nullptr;
    int m_signal = 0;
};

} // namespace Kestrun
