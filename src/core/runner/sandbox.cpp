#include "sandbox.h"

#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

#include <algorithm>
#include <csignal>

namespace Kestrun::Sandbox {

namespace {

constexpr double trialTimeout = 10;

QString bubblewrap()
{
#ifdef Q_OS_LINUX
    static const QString path = [] {
        const QString found = QStandardPaths::findExecutable(QStringLiteral("bwrap"));
        return found.isEmpty()
            ? QStandardPaths::findExecutable(QStringLiteral("bwrap"), {QStringLiteral("/usr/bin"), QStringLiteral("/usr/local/bin")})
            : found;
    }();
    return path;
#else
    return QString();
#endif
}

// Installed is not enough: user namespaces may be switched off, or an
// AppArmor policy may forbid them. One trial run, with the limits of a real
// one, tells.
bool works()
{
    static const bool result = [] {
        const QString bwrap = bubblewrap();
        if (bwrap.isEmpty())
            return false;
        const std::optional<Shell::Output> trial = Shell::tryRun(
            bwrap, arguments(QStringLiteral("/bin/true"), {}, QStringLiteral("/"), {}), std::nullopt, trialTimeout,
            Shell::Limits::learner);
        return trial && trial->status == 0 && !trial->timedOut;
    }();
    return result;
}

QString canonical(const QString &path)
{
    const QString resolved = QFileInfo(path).canonicalFilePath();
    return resolved.isEmpty() ? QDir::cleanPath(path) : resolved;
}

bool isWithin(const QString &path, const QString &directory)
{
    return path == directory || path.startsWith(directory + QLatin1Char('/'));
}

} // namespace

bool usable()
{
    return qgetenv("KESTRUN_SANDBOX") != "0" && works();
}

QStringList arguments(const QString &executable, const QStringList &programArguments, const QString &directory,
                      const QStringList &writable)
{
    const QString tmp = QStringLiteral("/tmp");
    QStringList args{QStringLiteral("--unshare-all"), QStringLiteral("--die-with-parent"),
                     QStringLiteral("--new-session"), QStringLiteral("--cap-drop"), QStringLiteral("ALL"),
                     QStringLiteral("--ro-bind"), QStringLiteral("/"), QStringLiteral("/"),
                     QStringLiteral("--dev"), QStringLiteral("/dev"),
                     QStringLiteral("--proc"), QStringLiteral("/proc"),
                     QStringLiteral("--size"), QString::number(privateTmpSize), QStringLiteral("--tmpfs"), tmp};

    QStringList binds;
    for (const QString &dir : writable)
        binds.append(canonical(dir));
    // A program kept under /tmp would vanish behind the private one.
    const QString programDirectory = canonical(QFileInfo(executable).absolutePath());
    if (isWithin(programDirectory, tmp)
        && std::none_of(binds.begin(), binds.end(), [&](const QString &b) { return isWithin(programDirectory, b); }))
        args << QStringLiteral("--ro-bind") << programDirectory << programDirectory;
    for (const QString &bind : binds)
        args << QStringLiteral("--bind") << bind << bind;

    // Remounted last, so that binds below /dev could still be made: no
    // shared memory files the private /tmp's size would not bound.
    args << QStringLiteral("--remount-ro") << QStringLiteral("/dev")
         << QStringLiteral("--setenv") << QStringLiteral("TMPDIR") << tmp
         << QStringLiteral("--chdir") << directory
         << QStringLiteral("--") << executable;
    return args + programArguments;
}

std::optional<Shell::Output> run(const QString &executable, const QStringList &arguments, const QString &directory,
                                 const QStringList &writable, double timeout)
{
    if (!usable())
        return Shell::tryRun(executable, arguments, directory, timeout, Shell::Limits::learner);
    std::optional<Shell::Output> out = Shell::tryRun(
        bubblewrap(), Sandbox::arguments(executable, arguments, directory, writable), directory, timeout,
        Shell::Limits::learner);
    // The sandbox's first process reports a program ended by a signal the
    // way shells do.
    if (out && !out->timedOut && out->status > 128 && out->status < 128 + NSIG)
        out->status -= 128;
    return out;
}

} // namespace Kestrun::Sandbox
