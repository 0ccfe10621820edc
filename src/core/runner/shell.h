#pragma once

#include <QString>
#include <QStringList>

#include <optional>
#include <stdexcept>

// Runs external programs as child processes: a fixed minimal environment, no
// input, both output streams captured, and a hard time limit.
namespace Kestrun::Shell {

// What one finished child did.
struct Output {
    int status = 0;              // exit code, or the number of the signal that ended the child
    QString standardOutput;      // decoded as UTF-8, invalid bytes replaced
    QString standardError;
    bool timedOut = false;       // the limit ran out and the child was killed

    friend bool operator==(const Output &, const Output &) = default;
};

// The child could not be started: the executable or the working directory is
// missing or unusable, or the system is out of processes or descriptors.
class LaunchError : public std::runtime_error {
public:
    LaunchError(const QString &executable, int error);

    QString executable() const { return m_executable; }
    int error() const { return m_error; } // errno

private:
    QString m_executable;
    int m_error;
};

// While a stream holds fewer bytes than this, each chunk read is kept whole;
// after that, chunks are read and dropped so the child never blocks.
inline constexpr qsizetype captureCap = 262144;

// Used when this process has no PATH.
inline constexpr char defaultPath[] = "/usr/bin:/bin:/usr/sbin:/sbin";

// What a child may use. Tools run free; a child that runs code the learner
// wrote gets the limits below, so that a runaway loop cannot take the
// machine's memory or fill its disk, and leaves no core file.
enum class Limits { none, learner };

// Writable memory (heap, anonymous mappings, thread stacks): the limit that
// stops a runaway allocation, with the runtime's own fatal error.
inline constexpr qint64 memoryLimit = qint64(1) << 30;
// Address space, generous because it also counts code and reserved but
// unused ranges (the interpreter alone maps about 570 MiB): a backstop for
// shared mappings the memory limit does not count.
inline constexpr qint64 addressSpaceLimit = qint64(4) << 30;
// Largest file a child may write; past it the child gets SIGXFSZ.
inline constexpr qint64 fileSizeLimit = qint64(128) << 20;

// Runs one program to its end, on the calling thread. The executable is a path
// taken as is (no shell, no PATH search); the arguments are passed unchanged.
// With no working directory the child inherits this process's. The limit is
// in seconds from the start; at the limit the child and everything it started
// in its process group are killed with SIGKILL, the child also by its own id
// (it may have left the group). On Linux the child is killed too when the
// thread that started it ends, so it cannot outlive this process. Synchronous,
// safe to call from several threads at once. Throws LaunchError only when it
// cannot start, and with ECANCELED once stopAll() was called.
Output run(const QString &executable, const QStringList &arguments,
           const std::optional<QString> &workingDirectory, double timeout, Limits limits = Limits::none);

// The same, for callers to whom a program that cannot start is only one more
// outcome: nothing instead of a LaunchError. The one place that catches it.
std::optional<Output> tryRun(const QString &executable, const QStringList &arguments,
                             const std::optional<QString> &workingDirectory, double timeout,
                             Limits limits = Limits::none);

// For quitting: kills every running child with its group, so that each run
// returns at once, and makes every later run fail with ECANCELED. For good.
void stopAll();
bool stopped();

} // namespace Kestrun::Shell
