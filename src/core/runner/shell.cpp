#include "shell.h"

#include <QByteArray>
#include <QByteArrayList>
#include <QFile>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <memory>
#include <system_error>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#ifdef Q_OS_LINUX
#include <sys/syscall.h>
#endif

namespace Kestrun::Shell {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr const char *passedVariables[] = {"PATH", "HOME", "USER", "LANG", "TMPDIR", "DEVELOPER_DIR"};

constexpr qsizetype chunkSize = 65536;
// Once the child has ended, what the pipes still hold is taken whole; this only
// bounds a process that left the group and keeps writing. As large as the
// biggest pipe buffer an unprivileged process may set up by default.
constexpr qsizetype drainLimit = 1 << 20;
// Once the group is dead, a pipe that neither brings data nor ends for this
// long is held open by a process that escaped; stop waiting for it.
constexpr milliseconds drainQuiet{50};
constexpr milliseconds drainMax{250};
// Without a process descriptor to wake on, look for the child's end this often.
constexpr milliseconds exitPollInterval{10};

// Owns one file descriptor.
class Fd {
public:
    Fd() = default;
    explicit Fd(int fd) : m_fd(fd) {}
    Fd(const Fd &) = delete;
    Fd &operator=(const Fd &) = delete;
    Fd(Fd &&other) noexcept : m_fd(std::exchange(other.m_fd, -1)) {}
    Fd &operator=(Fd &&other) noexcept
    {
        reset(std::exchange(other.m_fd, -1));
        return *this;
    }
    ~Fd() { reset(); }

    int get() const { return m_fd; }
    bool isOpen() const { return m_fd >= 0; }
    void reset(int fd = -1)
    {
        if (m_fd >= 0)
            ::close(m_fd);
        m_fd = fd;
    }

private:
    int m_fd = -1;
};

[[noreturn]] void fail(const QString &executable, int error)
{
    throw LaunchError(executable, error);
}

// A pipe whose ends never reach other children; the read end does not block.
void makePipe(const QString &executable, Fd &readEnd, Fd &writeEnd)
{
    int fds[2];
#ifdef Q_OS_LINUX
    if (::pipe2(fds, O_CLOEXEC) != 0)
        fail(executable, errno);
    readEnd.reset(fds[0]);
    writeEnd.reset(fds[1]);
#else
    // Not atomic: another thread's spawn may still see these for a moment.
    if (::pipe(fds) != 0)
        fail(executable, errno);
    readEnd.reset(fds[0]);
    writeEnd.reset(fds[1]);
    ::fcntl(fds[0], F_SETFD, FD_CLOEXEC);
    ::fcntl(fds[1], F_SETFD, FD_CLOEXEC);
#endif
    ::fcntl(fds[0], F_SETFL, ::fcntl(fds[0], F_GETFL) | O_NONBLOCK);
}

QByteArrayList environmentBytes()
{
    QByteArrayList result;
    bool hasPath = false;
    for (const char *name : passedVariables) {
        const QByteArray value = qgetenv(name); // null when unset, empty when set empty
        if (value.isNull())
            continue;
        hasPath = hasPath || qstrcmp(name, "PATH") == 0;
        result.append(QByteArray(name) + '=' + value);
    }
    if (!hasPath)
        result.prepend(QByteArray("PATH=") + defaultPath);
#ifdef Q_OS_LINUX
    // The runtime's crash backtracer can symbolicate for tens of seconds and
    // turn every crash into a time-out.
    result.append("SWIFT_BACKTRACE=enable=no");
#endif
    return result;
}

// A NULL-terminated array of pointers into `list`, which must outlive it.
std::vector<char *> pointers(QByteArrayList &list)
{
    std::vector<char *> result;
    result.reserve(list.size() + 1);
    for (QByteArray &item : list)
        result.push_back(item.data());
    result.push_back(nullptr);
    return result;
}

// One started child, in a process group of its own. Whatever happens to the
// caller, the group is killed and the child reaped before this goes away.
class Child {
public:
    explicit Child(pid_t pid) : m_pid(pid)
    {
#if defined(Q_OS_LINUX) && defined(SYS_pidfd_open)
        // Readable once the child has ended, so the loop needs no timer for it.
        // Unavailable on old kernels; the loop then looks every few milliseconds.
        m_pidFd.reset(int(::syscall(SYS_pidfd_open, pid, 0)));
#endif
    }
    Child(const Child &) = delete;
    Child &operator=(const Child &) = delete;
    ~Child()
    {
        if (!m_reaped)
            finish();
    }

    int pidFd() const { return m_pidFd.get(); }

    // True once the child has ended; it stays unreaped, so its process group id
    // cannot be given to anyone else while the group is being killed.
    bool hasEnded() const
    {
        siginfo_t info = {};
        if (::waitid(P_PID, id_t(m_pid), &info, WEXITED | WNOHANG | WNOWAIT) != 0)
            return errno != EINTR;
        return info.si_pid == m_pid;
    }

    // Kills the whole group (the child too, if it still runs) and reaps the
    // child. Returns its wait status; none when this process is set up to
    // have its children reaped by the system.
    std::optional<int> finish()
    {
        ::kill(-m_pid, SIGKILL);
        int status = 0;
        pid_t reaped;
        do
            reaped = ::waitpid(m_pid, &status, 0);
        while (reaped < 0 && errno == EINTR);
        m_reaped = true;
        m_pidFd.reset();
        return reaped == m_pid ? std::optional(status) : std::nullopt;
    }

private:
    pid_t m_pid;
    Fd m_pidFd;
    bool m_reaped = false;
};

// One output stream of the child: its pipe and what came through it.
struct Stream {
    Fd fd;
    QByteArray data;

    // Reads one chunk, kept only while fewer than `limit` bytes are held.
    void read(char *buffer, qsizetype limit)
    {
        const ssize_t n = ::read(fd.get(), buffer, size_t(chunkSize));
        if (n > 0) {
            if (data.size() < limit)
                data.append(buffer, n);
        } else if (n == 0 || (errno != EINTR && errno != EAGAIN && errno != EWOULDBLOCK)) {
            fd.reset();
        }
    }
};

int millisecondsUntil(Clock::time_point until)
{
    const auto left = std::chrono::ceil<milliseconds>(until - Clock::now()).count();
    return int(std::clamp<decltype(left)>(left, 0, 1 << 30));
}

// Waits up to `timeoutMs` for either stream (or `extraFd`, when valid) to be
// ready, then reads one chunk from each ready stream. Returns false when
// nothing became ready.
bool transfer(Stream (&streams)[2], const qsizetype (&limits)[2], int extraFd, int timeoutMs, char *buffer)
{
    pollfd set[3] = {{streams[0].fd.get(), POLLIN, 0}, {streams[1].fd.get(), POLLIN, 0}, {extraFd, POLLIN, 0}};
    // Fails only on a signal or a transient lack of memory: both count as
    // nothing ready, and the caller's clock still runs.
    const int ready = ::poll(set, 3, timeoutMs);
    for (int i = 0; i < 2; ++i)
        if (ready > 0 && set[i].revents != 0)
            streams[i].read(buffer, limits[i]);
    return ready > 0;
}

} // namespace

LaunchError::LaunchError(const QString &executable, int error)
    : std::runtime_error(QStringLiteral("Cannot start %1: %2")
                             .arg(executable, QString::fromStdString(std::generic_category().message(error)))
                             .toStdString())
    , m_executable(executable)
    , m_error(error)
{
}

namespace {

// A started child with the read ends of its two pipes.
struct Started {
    std::unique_ptr<Child> child;
    Stream streams[2];
};

// Step 1: spawns the child with its pipes, environment, working directory and
// process group. Throws LaunchError when it cannot be started.
Started start(const QString &executable, const QStringList &arguments,
              const std::optional<QString> &workingDirectory)
{
    Started started;
    Fd outWrite, errWrite;
    makePipe(executable, started.streams[0].fd, outWrite);
    makePipe(executable, started.streams[1].fd, errWrite);

    QByteArrayList argumentBytes{QFile::encodeName(executable)};
    for (const QString &argument : arguments)
        argumentBytes.append(argument.toLocal8Bit());
    QByteArrayList environmentList = environmentBytes();
    const std::vector<char *> argv = pointers(argumentBytes);
    const std::vector<char *> envp = pointers(environmentList);
    const QByteArray directory = workingDirectory ? QFile::encodeName(*workingDirectory) : QByteArray();

    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attributes;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawnattr_init(&attributes);
    ::posix_spawn_file_actions_adddup2(&actions, outWrite.get(), STDOUT_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions, errWrite.get(), STDERR_FILENO);
    ::posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    if (workingDirectory)
        ::posix_spawn_file_actions_addchdir_np(&actions, directory.constData());
#if defined(__GLIBC__) && (__GLIBC__ > 2 || __GLIBC_MINOR__ >= 34)
    // Descriptors other code opened without close-on-exec stay out of the child too.
    ::posix_spawn_file_actions_addclosefrom_np(&actions, STDERR_FILENO + 1);
#endif

    // A group of its own, so that everything the child starts can be killed
    // with it; default signal handling and no blocked signals, whatever this
    // process has set up for itself.
    sigset_t defaults, mask;
    sigfillset(&defaults);
    sigdelset(&defaults, SIGKILL);
    sigdelset(&defaults, SIGSTOP);
    sigemptyset(&mask);
    ::posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);
    ::posix_spawnattr_setpgroup(&attributes, 0);
    ::posix_spawnattr_setsigdefault(&attributes, &defaults);
    ::posix_spawnattr_setsigmask(&attributes, &mask);

    pid_t pid = 0;
    const int spawnError = ::posix_spawn(&pid, argv[0], &actions, &attributes, argv.data(), envp.data());
    ::posix_spawn_file_actions_destroy(&actions);
    ::posix_spawnattr_destroy(&attributes);
    if (spawnError != 0)
        fail(executable, spawnError);
    started.child = std::make_unique<Child>(pid);
    // The write ends close here: only the child may hold them, or the pipes never end.
    return started;
}

// Step 2: collects output while the child runs. Returns true when the limit
// ran out first.
bool readUntilEnd(Started &started, double timeout, char *buffer)
{
    const double seconds = std::isnan(timeout) ? 0.0 : std::clamp(timeout, 0.0, 1e9);
    const Clock::time_point deadline =
        Clock::now() + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
    const qsizetype streamingLimits[2] = {captureCap, captureCap};
    const int pidFd = started.child->pidFd();
    for (;;) {
        if (started.child->hasEnded())
            return false;
        if (Clock::now() >= deadline)
            return true;
        int waitMs = millisecondsUntil(deadline);
        if (pidFd < 0)
            waitMs = std::min(waitMs, int(exitPollInterval.count()));
        transfer(started.streams, streamingLimits, pidFd, waitMs, buffer);
    }
}

// Step 3: once the child is reaped and its group killed, takes what is left
// in the pipes whole; but a pipe held open by a process outside the group
// must not keep this waiting.
void drain(Stream (&streams)[2], char *buffer)
{
    const Clock::time_point drainEnd = Clock::now() + drainMax;
    const qsizetype drainLimits[2] = {streams[0].data.size() + drainLimit, streams[1].data.size() + drainLimit};
    while (streams[0].fd.isOpen() || streams[1].fd.isOpen()) {
        const int waitMs = std::min(millisecondsUntil(drainEnd), int(drainQuiet.count()));
        if (waitMs <= 0 || !transfer(streams, drainLimits, -1, waitMs, buffer))
            break;
    }
}

// Step 4: the record of what happened.
Output outcome(const std::optional<int> &ended, bool limitReached, const Stream (&streams)[2])
{
    Output output;
    const int status = ended.value_or(0);
    if (ended && WIFEXITED(status))
        output.status = WEXITSTATUS(status);
    else if (ended && WIFSIGNALED(status))
        output.status = WTERMSIG(status);
    else
        output.status = -1;
    // A child that ended on its own just before the limit was not stopped by it.
    output.timedOut = limitReached && (!ended || (WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL));
    output.standardOutput = QString::fromUtf8(streams[0].data);
    output.standardError = QString::fromUtf8(streams[1].data);
    return output;
}

} // namespace

Output run(const QString &executable, const QStringList &arguments,
           const std::optional<QString> &workingDirectory, double timeout)
{
    Started started = start(executable, arguments, workingDirectory);
    QByteArray buffer(chunkSize, Qt::Uninitialized);
    const bool limitReached = readUntilEnd(started, timeout, buffer.data());
    const std::optional<int> ended = started.child->finish();
    drain(started.streams, buffer.data());
    return outcome(ended, limitReached, started.streams);
}

std::optional<Output> tryRun(const QString &executable, const QStringList &arguments,
                             const std::optional<QString> &workingDirectory, double timeout)
{
    try {
        return run(executable, arguments, workingDirectory, timeout);
    } catch (const LaunchError &) {
        return std::nullopt;
    }
}

} // namespace Kestrun::Shell
