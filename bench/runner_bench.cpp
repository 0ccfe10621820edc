// What a learner waits for when pressing Run, measured side by side in one
// run (medians; these machines are noisy, so compare within a run only).
//
//   runner_bench lessons [RUNS]   Runner::check on three shipped lessons (a small
//                                 one, a lab, one that imports Foundation) against
//                                 the same program compiled and run by hand.
//                                 Goals: at most 0.55x by hand for the small one,
//                                 below 1x for all three.
//   runner_bench sandbox [RUNS]   the small lesson with and without the sandbox,
//                                 interpreting and compiling.
//   runner_bench loop             an endless loop with the app's 8 s limit, in
//                                 both ways. Goal: back within 9 s.
//   runner_bench first-run [RUNS] in a fresh process with an empty module cache
//                                 (a learner's very first start): the warm-up, the
//                                 first Run after it, later Runs. Goal: first at
//                                 most 1.2x later.
//   runner_bench memory           the largest process of one Run, each way.
//
// Processor times are for waited-for descendants only: the sandbox's first
// process is not waited for, so figures in [brackets] come from runs
// without the sandbox, or read about 3 ms where they cannot.

#include "app/starttask.h"
#include "course/course.h"
#include "course/resources.h"
#include "runner/coderunner.h"
#include "runner/runner.h"
#include "runner/shell.h"

#include "median.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <functional>

#include <sys/resource.h>

using namespace Kestrun;

namespace {

double cpuMilliseconds()
{
    double total = 0;
    for (const int who : {RUSAGE_SELF, RUSAGE_CHILDREN}) {
        rusage usage{};
        getrusage(who, &usage);
        total += (usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) * 1e3
            + (usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e3;
    }
    return total;
}

// Wall time, and processor time of this process and its children: on a
// shared machine the second moves far less with the load.
struct Cost {
    QList<double> wall;
    QList<double> cpu;

    void measure(const std::function<void()> &work)
    {
        const double cpuBefore = cpuMilliseconds();
        QElapsedTimer timer;
        timer.start();
        work();
        wall.append(timer.nsecsElapsed() / 1e6);
        cpu.append(cpuMilliseconds() - cpuBefore);
    }
    double medianWall() const { return median(wall); }
    double medianCpu() const { return median(cpu); }
};

double millisecondsOf(const std::function<void()> &work)
{
    QElapsedTimer timer;
    timer.start();
    work();
    return timer.nsecsElapsed() / 1e6;
}

struct Case {
    const char *name;
    Lesson lesson;
    QString code;
};

// The shipped lessons with their reference solutions; the third gets an
// import of Foundation, which no early lesson needs yet.
QList<Case> shippedCases()
{
    const Course course = Course::load();
    QFile file(Resources::url(QStringLiteral("solutions.json")).value_or(QString()));
    file.open(QIODevice::ReadOnly);
    const QJsonObject solutions = QJsonDocument::fromJson(file.readAll()).object();
    const auto make = [&](const char *name, const char *id, const QString &prefix) {
        const QString key = QLatin1String(id);
        return Case{name, *course.lesson(key), prefix + solutions.value(key).toString()};
    };
    return {make("small (welcome-to-swift)", "welcome-to-swift", QString()),
            make("lab (lab-word-report)", "lab-word-report", QString()),
            make("Foundation (numbers-and-arithmetic + import)", "numbers-and-arithmetic",
                 QStringLiteral("import Foundation\n"))};
}

// swiftc and the program, as someone would type them, with their default
// module cache (warm: the by-hand runs before have filled it).
void byHand(const Toolchain &toolchain, const Case &c, Cost &cost)
{
    QTemporaryDir dir;
    QFile source(dir.filePath(QStringLiteral("main.swift")));
    source.open(QIODevice::WriteOnly);
    source.write(Runner::program(c.code, c.lesson.tests, QStringLiteral("0")).source.toUtf8());
    source.close();
    const QStringList arguments{QStringLiteral("-swift-version"), QStringLiteral("6"),
                                QStringLiteral("-default-isolation"), QStringLiteral("MainActor"),
                                QStringLiteral("-enable-upcoming-feature"), QStringLiteral("NonisolatedNonsendingByDefault"),
                                QStringLiteral("-Onone"), QStringLiteral("-module-name"), QStringLiteral("Lesson"),
                                QStringLiteral("-o"), QStringLiteral("program"), QStringLiteral("main.swift")};
    cost.measure([&] {
        Shell::run(toolchain.swiftc, arguments, dir.path(), 60);
        Shell::run(dir.filePath(QStringLiteral("program")), {}, dir.path(), 8);
    });
}

bool check(const Case &c, const Toolchain &toolchain, Cost &cost)
{
    RunResult result;
    cost.measure([&] { result = Runner::check(c.lesson, c.code, toolchain, CodeRunner::runTimeout); });
    if (!result.passed())
        std::printf("  %s did not pass\n", c.name);
    return result.passed();
}

bool check(const Case &c, const Toolchain &toolchain, double *ms)
{
    Cost cost;
    const bool passed = check(c, toolchain, cost);
    *ms = cost.wall.first();
    return passed;
}

// Processor time is counted for waited-for descendants only, and the
// sandbox's first process is not waited for: runs without it give that figure.
Cost checked(const Case &c, const Toolchain &toolchain, int runs, int &status, Cost &hand)
{
    Cost wall, cpu;
    for (int i = 0; i < runs; ++i) {
        qputenv("KESTRUN_SANDBOX", "1");
        status |= check(c, toolchain, wall) ? 0 : 1;
        qputenv("KESTRUN_SANDBOX", "0");
        status |= check(c, toolchain, cpu) ? 0 : 1;
        byHand(toolchain, c, hand);
    }
    qunsetenv("KESTRUN_SANDBOX");
    return Cost{wall.wall, cpu.cpu};
}

int lessons(const Toolchain &toolchain, int runs)
{
    std::printf("Runner::check against swiftc + program by hand, %d runs each, medians of wall time\n"
                "(sandboxed) and [processor time] (the same without the sandbox, which hides it):\n", runs);
    int status = 0;
    for (const Case &c : shippedCases()) {
        Cost hand;
        const Cost interpreting = checked(c, toolchain, runs, status, hand);
        const Cost compiling = checked(c, toolchain.compiling(), runs, status, hand);
        std::printf("  %s: by hand %4.0f ms [%4.0f]\n"
                    "    interpreting %4.0f ms [%4.0f], ratio %.2f [%.2f]   compiling %4.0f ms [%4.0f], ratio %.2f [%.2f]\n",
                    c.name, hand.medianWall(), hand.medianCpu(), interpreting.medianWall(), interpreting.medianCpu(),
                    interpreting.medianWall() / hand.medianWall(), interpreting.medianCpu() / hand.medianCpu(),
                    compiling.medianWall(), compiling.medianCpu(), compiling.medianWall() / hand.medianWall(),
                    compiling.medianCpu() / hand.medianCpu());
    }
    return status;
}

int sandbox(const Toolchain &toolchain, int runs)
{
    const Case small = shippedCases().first();
    std::printf("A Run of the small lesson with and without the sandbox, %d runs each, wall time:\n", runs);
    int status = 0;
    for (const Toolchain &way : {toolchain, toolchain.compiling()}) {
        Cost inside, outside;
        for (int i = 0; i < runs; ++i) {
            qputenv("KESTRUN_SANDBOX", "1");
            status |= check(small, way, inside) ? 0 : 1;
            qputenv("KESTRUN_SANDBOX", "0");
            status |= check(small, way, outside) ? 0 : 1;
        }
        std::printf("  %-12s sandbox %4.0f ms  without %4.0f ms  difference %+.0f ms (%.2fx)\n",
                    way.interpreter ? "interpreting" : "compiling", inside.medianWall(), outside.medianWall(),
                    inside.medianWall() - outside.medianWall(), inside.medianWall() / outside.medianWall());
    }
    qunsetenv("KESTRUN_SANDBOX");
    return status;
}

int loop(const Toolchain &toolchain)
{
    Lesson lesson = Lesson::warmUp();
    std::printf("An endless loop under the app's %.0f s limit (goal: back within 9 s):\n", CodeRunner::runTimeout);
    int status = 0;
    for (const Toolchain &way : {toolchain, toolchain.compiling()}) {
        RunResult result;
        const double ms = millisecondsOf(
            [&] { result = Runner::check(lesson, QStringLiteral("while true {}"), way, CodeRunner::runTimeout); });
        std::printf("  %-12s back after %.2f s, timed out: %s\n", way.interpreter ? "interpreting" : "compiling",
                    ms / 1000, result.timedOut ? "yes" : "NO");
        status |= result.timedOut && ms <= 9000 ? 0 : 1;
    }
    return status;
}

int firstRun(const Toolchain &toolchain, int runs)
{
    // A learner's very first start: nothing in the module cache yet.
    QTemporaryDir cache;
    qputenv("XDG_CACHE_HOME", cache.path().toUtf8());
    const Case small = shippedCases().first();
    int status = 0;
    std::printf("In a fresh process with an empty module cache, then %d later Runs, wall [processor]:\n", runs);
    for (const Toolchain &way : {toolchain, toolchain.compiling()}) {
        const double warm = millisecondsOf([&] { StartTask::warmUp(way); });
        Cost first, later;
        status |= check(small, way, first) ? 0 : 1;
        for (int i = 0; i < runs; ++i)
            status |= check(small, way, later) ? 0 : 1;
        std::printf("  %-12s warm-up %5.0f ms  first Run %4.0f ms [%4.0f]  later Runs %4.0f ms [%4.0f]  ratio %.2f [%.2f]\n",
                    way.interpreter ? "interpreting" : "compiling", warm, first.medianWall(), first.medianCpu(),
                    later.medianWall(), later.medianCpu(), first.medianWall() / later.medianWall(),
                    first.medianCpu() / later.medianCpu());
    }
    return status;
}

// One Run of the small lesson in this process: the largest child's peak.
int memoryOfOne(const Toolchain &toolchain)
{
    const Case small = shippedCases().first();
    double ms = 0;
    const bool passed = check(small, toolchain, &ms);
    rusage usage{};
    getrusage(RUSAGE_CHILDREN, &usage);
    std::printf("  %-12s largest process of the Run: %.0f MiB resident at its peak\n",
                toolchain.interpreter ? "interpreting" : "compiling", usage.ru_maxrss / 1024.0);
    return passed ? 0 : 1;
}

int memory(const Toolchain &toolchain)
{
    // Peaks of children add up over a process's life, the toolchain search's
    // included: one fresh process per way, given the toolchain. Without the
    // sandbox, whose processes this count cannot see; it adds bubblewrap's
    // own few MiB beside them.
    std::printf("Memory of one Run:\n");
    std::fflush(stdout);
    int status = 0;
    for (const Toolchain &way : {toolchain, toolchain.compiling()}) {
        QProcess one;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("KESTRUN_SANDBOX"), QStringLiteral("0"));
        one.setProcessEnvironment(environment);
        one.setProcessChannelMode(QProcess::ForwardedChannels);
        one.start(QCoreApplication::applicationFilePath(),
                  {QStringLiteral("memory-of-one"), way.swiftc, way.interpreter.value_or(QString())});
        one.waitForFinished(-1);
        status |= one.exitCode();
    }
    return status;
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    const QString what = argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral("lessons");
    const int runs = argc > 2 ? std::max(1, atoi(argv[2])) : 7;
    if (what == QLatin1String("memory-of-one") && argc > 3) {
        const QString interpreter = QString::fromLocal8Bit(argv[3]);
        return memoryOfOne(Toolchain{QString::fromLocal8Bit(argv[2]), QString(), QStringLiteral("?"),
                                     interpreter.isEmpty() ? std::nullopt : std::optional(interpreter)});
    }
    const std::optional<Toolchain> toolchain = Toolchain::find();
    if (!toolchain) {
        std::puts("runner: no Swift toolchain found, skipped");
        return 0;
    }
    if (!toolchain->interpreter) {
        std::puts("runner: the toolchain has no interpreter (KESTRUN_COMPILE=1?), skipped");
        return 0;
    }
    if (what == QLatin1String("lessons"))
        return lessons(*toolchain, runs);
    if (what == QLatin1String("sandbox"))
        return sandbox(*toolchain, runs);
    if (what == QLatin1String("loop"))
        return loop(*toolchain);
    if (what == QLatin1String("first-run"))
        return firstRun(*toolchain, runs);
    if (what == QLatin1String("memory"))
        return memory(*toolchain);
    std::fprintf(stderr, "runner_bench: no benchmark named %s\n", qPrintable(what));
    return 2;
}
