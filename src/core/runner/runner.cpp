#include "runner.h"

#include "judgement.h"
#include "sandbox.h"
#include "texts/texts.h"
#include "workdirectory.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QUuid>

#include <csignal>

namespace Kestrun::Runner {

namespace {

QStringList commonArguments(const Toolchain &toolchain, const QString &cache)
{
    QStringList args;
    if (!toolchain.sdk.isEmpty())
        args << QStringLiteral("-sdk") << toolchain.sdk;
    args << QStringLiteral("-swift-version") << QStringLiteral("6")
         << QStringLiteral("-default-isolation") << QStringLiteral("MainActor")
         << QStringLiteral("-enable-upcoming-feature") << QStringLiteral("NonisolatedNonsendingByDefault")
         << QStringLiteral("-Onone")
         << QStringLiteral("-module-name") << QStringLiteral("Lesson");
    if (!cache.isEmpty())
        args << QStringLiteral("-module-cache-path") << cache;
    return args;
}

// The prelude's timer ends the program with SIGALRM at the run limit: the
// run limit ran out, not a crash.
std::optional<Shell::Output> stoppedByTimer(std::optional<Shell::Output> run)
{
    if (run && !run->timedOut && run->status == SIGALRM)
        run->timedOut = true;
    return run;
}

} // namespace

QString moduleCache()
{
    const QString path = QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation)
        + QStringLiteral("/kestrun/module-cache");
    return QDir().mkpath(path) ? path : QString();
}

RunResult check(const Lesson &lesson, const QString &code, const Toolchain &toolchain, double runTimeout)
{
    Judgement judgement(lesson, code);
    const QString nonce = QUuid::createUuid().toString(QUuid::Id128);
    const Program assembled = program(code, lesson.tests, nonce, runTimeout);

    const WorkDirectory work;
    if (!work.isValid())
        return judgement.writeFailure(work.errorString());
    // Plain writing, no QSaveFile: nothing reads the fresh, private directory
    // before the compiler, and its sync to disk cost 5 to 12 ms a run.
    QFile source(work.file(QStringLiteral("main.swift")));
    const QByteArray bytes = assembled.source.toUtf8();
    if (!source.open(QIODevice::WriteOnly) || source.write(bytes) != bytes.size() || !source.flush())
        return judgement.writeFailure(source.errorString());
    source.close();

    const QString cache = moduleCache();
    const QStringList common = commonArguments(toolchain, cache);
    QStringList writable{work.path()};
    if (!cache.isEmpty())
        writable.append(cache);

    if (toolchain.interpreter) {
        const QStringList args = QStringList{QStringLiteral("-frontend"), QStringLiteral("-interpret"),
                                             QStringLiteral("main.swift")}
            + common;
        const std::optional<Shell::Output> run = stoppedByTimer(
            Sandbox::run(*toolchain.interpreter, args, work.path(), writable, runTimeout + interpretExtra));
        if (!Sandbox::usable())
            work.killProcessesInside();
        // The JIT's failure to link is what the linker reports when compiling.
        if (run && run->status != 0 && !run->timedOut
            && (run->standardError.contains(QLatin1String(": error: "))
                || run->standardError.contains(QLatin1String("JIT session error: "))))
            return judgement.compileFailure(run->standardError, assembled, false);
        return judgement.runOutcome(run, nonce);
    }

    const QStringList args = common + QStringList{QStringLiteral("-o"), QStringLiteral("program"),
                                                  QStringLiteral("main.swift")};
    const std::optional<Shell::Output> compile = Shell::tryRun(toolchain.swiftc, args, work.path(), compileTimeout);
    // The driver gives each compile job a process group of its own: killing
    // the driver's leaves them running.
    if (compile && (compile->timedOut || compile->status == SIGKILL))
        work.killProcessesInside();
    if (!compile)
        return judgement.compileFailure(Texts::get(Text::compilerNotStarted), assembled, false);
    const QString executable = work.file(QStringLiteral("program"));
    if (compile->status != 0 || !QFileInfo::exists(executable))
        return judgement.compileFailure(compile->standardError, assembled, compile->timedOut);

    const std::optional<Shell::Output> run
        = stoppedByTimer(Sandbox::run(executable, {}, work.path(), writable, runTimeout));
    // Without a PID namespace, what started a session of its own is out of
    // the run's group; it still works in the run's directory.
    if (!Sandbox::usable())
        work.killProcessesInside();
    return judgement.runOutcome(run, nonce);
}

RunResult judge(const Lesson &lesson, const QString &code, const QString &nonce, const std::optional<Shell::Output> &run)
{
    return Judgement(lesson, code).runOutcome(run, nonce);
}

QList<RunResult::CompilerError> compilerErrors(const QString &errorOutput, int firstLine, int testStart)
{
    const QRegularExpression pattern(QStringLiteral("main\\.swift:(\\d+):(\\d+): error: (.*)"));
    const QStringList lines = errorOutput.split(QLatin1Char('\n'), Qt::SkipEmptyParts);

    QList<RunResult::CompilerError> errors;
    for (const QString &line : lines) {
        const QRegularExpressionMatch m = pattern.match(line);
        if (!m.hasMatch())
            continue;
        bool ok = false;
        const int n = m.captured(1).toInt(&ok);
        if (!ok)
            continue;
        if (n < testStart)
            errors.append({n - firstLine + 1, m.captured(3)});
        else
            errors.append({std::nullopt, Texts::get(Text::testsCouldNotUse) + m.captured(3)});
    }

    if (errors.isEmpty() && !errorOutput.trimmed().isEmpty())
        errors.append({std::nullopt, lines.mid(qMax<qsizetype>(0, lines.size() - 3)).join(QLatin1Char(' '))});
    return errors.mid(0, maxErrors);
}

QString crashReason(const QString &errorOutput)
{
    const QRegularExpression pattern(QStringLiteral("Fatal error: ([^\\n]*)"));
    const QRegularExpressionMatch m = pattern.match(errorOutput);
    return m.hasMatch() ? m.captured(1) : Texts::get(Text::stoppedUnexpectedly);
}

} // namespace Kestrun::Runner
