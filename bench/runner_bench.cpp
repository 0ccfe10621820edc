// Times Runner::check on a small passing lesson against the same swiftc
// command and program run directly, in one run, and prints the medians:
// what the runner adds on top of compiling and running.
//
//   runner_bench [RUNS]

#include "runner/runner.h"
#include "runner/shell.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>

using namespace Kestrun;

namespace {

double median(QList<double> values)
{
    std::sort(values.begin(), values.end());
    const qsizetype n = values.size();
    return n % 2 ? values[n / 2] : (values[n / 2 - 1] + values[n / 2]) / 2;
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    const int runs = argc > 1 ? std::max(1, atoi(argv[1])) : 15;
    const std::optional<Toolchain> toolchain = Toolchain::find();
    if (!toolchain) {
        std::puts("runner: no Swift toolchain found, skipped");
        return 0;
    }

    Lesson lesson = Lesson::warmUp();
    lesson.tests = {{QStringLiteral("sums"), {{Check::Kind::swift, QStringLiteral("expect(sum(2, 3) == 5)")},
                                              {Check::Kind::output, QStringLiteral("^5$")}}}};
    const QString code = QStringLiteral("func sum(_ a: Int, _ b: Int) -> Int { a + b }\nprint(sum(2, 3))");
    const QStringList arguments{QStringLiteral("-swift-version"), QStringLiteral("6"),
                                QStringLiteral("-default-isolation"), QStringLiteral("MainActor"),
                                QStringLiteral("-enable-upcoming-feature"), QStringLiteral("NonisolatedNonsendingByDefault"),
                                QStringLiteral("-Onone"), QStringLiteral("-module-name"), QStringLiteral("Lesson"),
                                QStringLiteral("-o"), QStringLiteral("program"), QStringLiteral("main.swift")};

    QList<double> checks;
    QList<double> direct;
    for (int i = 0; i < runs; ++i) {
        QElapsedTimer timer;
        timer.start();
        const RunResult result = Runner::check(lesson, code, *toolchain, 8);
        checks.append(timer.nsecsElapsed() / 1e6);
        if (!result.passed()) {
            std::puts("runner: the lesson did not pass");
            return 1;
        }

        // The same program, compiled and run by hand.
        QTemporaryDir dir;
        QFile source(dir.filePath(QStringLiteral("main.swift")));
        source.open(QIODevice::WriteOnly);
        source.write(Runner::program(code, lesson.tests, QStringLiteral("0")).source.toUtf8());
        source.close();
        timer.restart();
        Shell::run(toolchain->swiftc, arguments, dir.path(), 60);
        Shell::run(dir.filePath(QStringLiteral("program")), {}, dir.path(), 8);
        direct.append(timer.nsecsElapsed() / 1e6);
    }
    std::printf("runner: Runner::check median %.0f ms, swiftc + program by hand median %.0f ms (%d runs each, Swift %s)\n",
                median(checks), median(direct), runs, qPrintable(toolchain->version));
    return 0;
}
