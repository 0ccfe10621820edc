#include "shell.h"

#include <QByteArray>
#include <QByteArrayList>
#include <QFile>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <memory>
#include <mutex>
#include <set>
#include <system_error>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#ifdef Q_OS_LINUX
#include <sched.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#endif

// The child shares this process's memory until its exec (see startChild), on
// Linux. ThreadSanitizer's clone handler would then mark this very process as
// a forked child and end it at its next new thread, so its builds fork.
#if defined(Q_OS_LINUX) && !defined(KESTRUN_TSAN)
#define KESTRUN_SHARED_MEMORY_CHILD 1
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
    // turn every crash into a time-out; the interpreter's own crash report
    // would look for llvm-symbolizer on PATH and spend a quarter second.
    result.append("SWIFT_BACKTRACE=enable=no");
    result.append("LLVM_DISABLE_SYMBOLIZATION=1");
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

// Every child that runs now, so that stopAll() can reach them.
struct Registry {
    std::mutex mutex;
    std::set<pid_t> running;
    bool stopped = false;
};

Registry &registry()
{
    static Registry r;
    return r;
}

void killWithGroup(pid_t pid)
{
    ::kill(-pid, SIGKILL);
    // A child that moved to another group is not reached by the first.
    ::kill(pid, SIGKILL);
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
        Registry &r = registry();
        std::lock_guard lock(r.mutex);
        r.running.insert(pid);
        // stopAll() came between the check before starting and here.
        if (r.stopped)
            killWithGroup(pid);
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

    // Kills the whole group and the child, if they still run, and reaps the
    // child. Returns its wait status; none when this process is set up to
    // have its children reaped by the system.
    std::optional<int> finish()
    {
        {
            // Unlisted before it is reaped: once reaped, its id may be reused.
            Registry &r = registry();
            std::lock_guard lock(r.mutex);
            r.running.erase(m_pid);
        }
        killWithGroup(m_pid);
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

// What the child does between its creation and exec, prepared in full
// beforehand: the child may only make system calls, since it shares (Linux)
// or copied (elsewhere) the memory of a process whose other threads may hold
// any lock.
struct Plan {
    char *const *argv;
    char *const *envp;
    const char *directory;   // none: stay
    int out;
    int err;
    int report;              // close-on-exec pipe that gets errno when exec fails
    pid_t parent;
    bool limited;
};

void setLimit(int resource, qint64 value)
{
    const rlimit limit{rlim_t(value), rlim_t(value)};
    ::setrlimit(resource, &limit);
}

[[noreturn]] void failInChild(const Plan &plan)
{
    const int error = errno;
    [[maybe_unused]] const ssize_t written = ::write(plan.report, &error, sizeof error);
    ::_exit(127);
}

// Async-signal-safe from here to exec.
[[noreturn]] void becomeChild(const Plan &plan)
{
    // Default handling for every signal: the parent's handlers must never run
    // here. Signals stay blocked, as the parent blocked them, until exec is near.
    struct sigaction defaults = {};
    defaults.sa_handler = SIG_DFL;
    for (int sig = 1; sig < NSIG; ++sig) {
        if (sig != SIGKILL && sig != SIGSTOP)
            ::sigaction(sig, &defaults, nullptr);
    }
    // A group of its own, so that everything the child starts can be killed with it.
    ::setpgid(0, 0);
#ifdef Q_OS_LINUX
    // Dies with the thread that started it; if that is gone already, at once.
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != plan.parent)
        ::_exit(127);
#endif
    const int input = ::open("/dev/null", O_RDONLY);
    if (input < 0 || ::dup2(input, STDIN_FILENO) < 0 || ::dup2(plan.out, STDOUT_FILENO) < 0
        || ::dup2(plan.err, STDERR_FILENO) < 0)
        failInChild(plan);
    if (plan.directory && ::chdir(plan.directory) != 0)
        failInChild(plan);
    // Descriptors other code opened without close-on-exec stay out of the
    // child; the report pipe closes on exec by itself.
    const int keep = std::max(STDERR_FILENO, plan.report);
    for (int fd = STDERR_FILENO + 1; fd < keep; ++fd)
        ::close(fd);
#if defined(Q_OS_LINUX) && defined(SYS_close_range)
    if (::syscall(SYS_close_range, keep + 1, ~0U, 0) != 0)
#endif
    {
        rlimit files{};
        ::getrlimit(RLIMIT_NOFILE, &files);
        const int top = files.rlim_cur == RLIM_INFINITY ? 65536 : int(std::min<rlim_t>(files.rlim_cur, 1 << 20));
        for (int fd = keep + 1; fd < top; ++fd)
            ::close(fd);
    }
    if (plan.limited) {
        setLimit(RLIMIT_DATA, memoryLimit);
        setLimit(RLIMIT_AS, addressSpaceLimit);
        setLimit(RLIMIT_FSIZE, fileSizeLimit);
        setLimit(RLIMIT_CORE, 0);
    }
    sigset_t none;
    sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
    ::execve(plan.argv[0], plan.argv, plan.envp);
    failInChild(plan);
}

#ifdef KESTRUN_SHARED_MEMORY_CHILD
int childEntry(void *plan)
{
    becomeChild(*static_cast<const Plan *>(plan));
}
#endif

// Starts the child; returns its id, or -1 with errno set.
pid_t startChild(const Plan &plan)
{
    // No signal may reach a handler of this process in the child before the
    // child has reset them.
    sigset_t all, previous;
    sigfillset(&all);
    ::pthread_sigmask(SIG_SETMASK, &all, &previous);
#ifdef KESTRUN_SHARED_MEMORY_CHILD
    // Shares memory and suspends this thread until the exec: unlike fork, no
    // copy of this process's page tables, whatever its size.
    constexpr std::size_t stackSize = 64 * 1024;
    std::unique_ptr<std::max_align_t[]> stack(new std::max_align_t[stackSize / sizeof(std::max_align_t)]);
    const pid_t pid = ::clone(childEntry, reinterpret_cast<char *>(stack.get()) + stackSize,
                              CLONE_VM | CLONE_VFORK | SIGCHLD, const_cast<Plan *>(&plan));
#else
    const pid_t pid = ::fork();
    if (pid == 0)
        becomeChild(plan);
#endif
    const int error = errno;
    ::pthread_sigmask(SIG_SETMASK, &previous, nullptr);
    errno = error;
    return pid;
}

// Step 1: starts the child with its pipes, environment, working directory,
// process group and limits. Throws LaunchError when it cannot be started.
Started start(const QString &executable, const QStringList &arguments,
              const std::optional<QString> &workingDirectory, Limits limits)
{
    if (stopped())
        fail(executable, ECANCELED);
    Started started;
    Fd outWrite, errWrite, reportRead, reportWrite;
    makePipe(executable, started.streams[0].fd, outWrite);
    makePipe(executable, started.streams[1].fd, errWrite);
    makePipe(executable, reportRead, reportWrite);
    ::fcntl(reportRead.get(), F_SETFL, ::fcntl(reportRead.get(), F_GETFL) & ~O_NONBLOCK);

    QByteArrayList argumentBytes{QFile::encodeName(executable)};
    for (const QString &argument : arguments)
        argumentBytes.append(argument.toLocal8Bit());
    QByteArrayList environmentList = environmentBytes();
    const std::vector<char *> argv = pointers(argumentBytes);
    const std::vector<char *> envp = pointers(environmentList);
    const QByteArray directory = workingDirectory ? QFile::encodeName(*workingDirectory) : QByteArray();

    const Plan plan{argv.data(), envp.data(), workingDirectory ? directory.constData() : nullptr,
                    outWrite.get(), errWrite.get(), reportWrite.get(), ::getpid(), limits == Limits::learner};
    const pid_t pid = startChild(plan);
    if (pid < 0)
        fail(executable, errno);
    // Only the child may hold the write ends, or the pipes never end.
    outWrite.reset();
    errWrite.reset();
    reportWrite.reset();

    // The report pipe ends at the exec, or brings the reason it failed.
    int error = 0;
    ssize_t n;
    do
        n = ::read(reportRead.get(), &error, sizeof error);
    while (n < 0 && errno == EINTR);
    if (n == sizeof error) {
        int status;
        while (::waitpid(pid, &status, 0) < 0 && errno == EINTR) {
        }
        fail(executable, error);
    }
    started.child = std::make_unique<Child>(pid);
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
           const std::optional<QString> &workingDirectory, double timeout, Limits limits)
{
    Started started = start(executable, arguments, workingDirectory, limits);
    QByteArray buffer(chunkSize, Qt::Uninitialized);
    const bool limitReached = readUntilEnd(started, timeout, buffer.data());
    const std::optional<int> ended = started.child->finish();
    drain(started.streams, buffer.data());
    return outcome(ended, limitReached, started.streams);
}

std::optional<Output> tryRun(const QString &executable, const QStringList &arguments,
                             const std::optional<QString> &workingDirectory, double timeout, Limits limits)
{
    try {
        return run(executable, arguments, workingDirectory, timeout, limits);
    } catch (const LaunchError &) {
        return std::nullopt;
    }
}

void stopAll()
{
    Registry &r = registry();
    std::lock_guard lock(r.mutex);
    r.stopped = true;
    for (const pid_t pid : r.running)
        killWithGroup(pid);
}

bool stopped()
{
    Registry &r = registry();
    std::lock_guard lock(r.mutex);
    return r.stopped;
}

} // namespace Kestrun::Shell
