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

// Runs one program to its end, on the calling thread. The executable is a path
// taken as is (no shell, no PATH search); the arguments are passed unchanged.
// With no working directory the child inherits this process's. The limit is
// in seconds from the start; at the limit the child and everything it started
// in its process group are killed with SIGKILL. Synchronous, safe to call from
// several threads at once. Throws LaunchError only when it cannot start.
Output run(const QString &executable, const QStringList &arguments,
           const std::optional<QString> &workingDirectory, double timeout);

// The same, for callers to whom a program that cannot start is only one more
// outcome: nothing instead of a LaunchError. The one place that catches it.
std::optional<Output> tryRun(const QString &executable, const QStringList &arguments,
                             const std::optional<QString> &workingDirectory, double timeout);

} // namespace Kestrun::Shell
