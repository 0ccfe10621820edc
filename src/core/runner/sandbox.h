#pragma once

#include "shell.h"

#include <QString>
#include <QStringList>

#include <optional>

// Runs code the learner wrote, held in: on Linux inside bubblewrap when it is
// installed and works here (own PID namespace, so that everything the program
// started ends with the run; no network; the whole file system read-only but
// for the given directories and a private /tmp; a new session), otherwise as
// a process group of its own (what leaves that group the caller finds with
// WorkDirectory::killProcessesInside). Either way with Shell's learner
// limits, and killed when this process dies.
namespace Kestrun::Sandbox {

// Size of the private /tmp inside the sandbox.
inline constexpr qint64 privateTmpSize = qint64(128) << 20;

// True when runs go through bubblewrap: it is installed and a first trial
// run worked (tried once per process), and KESTRUN_SANDBOX is not "0".
bool usable();

// The bubblewrap command line that runs the program inside the sandbox, with
// `writable` (absolute directories) writable and the working directory
// `directory`. The program keeps the environment bubblewrap is given, except
// TMPDIR, which names the private /tmp.
QStringList arguments(const QString &executable, const QStringList &programArguments, const QString &directory,
                      const QStringList &writable);

// Runs the program as described at the top; nothing when it cannot be
// started. The status is the program's own: bubblewrap's 128 + n for a
// program ended by signal n becomes n.
std::optional<Shell::Output> run(const QString &executable, const QStringList &arguments, const QString &directory,
                                 const QStringList &writable, double timeout);

} // namespace Kestrun::Sandbox
