#include "signalquit.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <cerrno>
#include <csignal>

#include <fcntl.h>
#include <unistd.h>

namespace Kestrun {

namespace {

constexpr int handled[] = {SIGTERM, SIGINT};

int pipeFds[2] = {-1, -1};
struct sigaction previous[std::size(handled)];

extern "C" void onSignal(int signal)
{
    const int saved = errno;
    const unsigned char number = static_cast<unsigned char>(signal);
    [[maybe_unused]] const ssize_t written = ::write(pipeFds[1], &number, 1);
    errno = saved;
}

void restore()
{
    for (std::size_t i = 0; i < std::size(handled); ++i)
        ::sigaction(handled[i], &previous[i], nullptr);
}

} // namespace

SignalQuit::SignalQuit(QObject *parent)
    : QObject(parent)
{
    Q_ASSERT(pipeFds[0] < 0);
    if (::pipe2(pipeFds, O_CLOEXEC | O_NONBLOCK) != 0)
        return;  // the default handling stays: the process ends on the signal
    m_notifier = new QSocketNotifier(pipeFds[0], QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &SignalQuit::readPipe);

    struct sigaction action = {};
    action.sa_handler = onSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    for (std::size_t i = 0; i < std::size(handled); ++i)
        ::sigaction(handled[i], &action, &previous[i]);
}

SignalQuit::~SignalQuit()
{
    if (!m_notifier)
        return;
    restore();
    delete m_notifier;
    ::close(pipeFds[0]);
    ::close(pipeFds[1]);
    pipeFds[0] = pipeFds[1] = -1;
}

void SignalQuit::readPipe()
{
    unsigned char number = 0;
    while (::read(pipeFds[0], &number, 1) == 1) {
        if (m_signal != 0)
            continue;
        m_signal = number;
        // Whoever presses Ctrl+C again does not want to wait.
        restore();
        Q_EMIT received(m_signal);
        QCoreApplication::quit();
    }
}

} // namespace Kestrun
