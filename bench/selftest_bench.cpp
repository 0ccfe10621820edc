// The self-test of the whole shipped course: its wall time with 1, 2 and 4
// lesson checks in flight, and how that scales (the app's default is one
// fewer than the cores, at least two). Each includes the three runner probes
// before the lessons, about 3 s one after another. Interprets unless
// KESTRUN_COMPILE=1.
//
//   selftest_bench [IN_FLIGHT...]

#include "selftest/selftest.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QThread>

#include <cstdio>

using namespace Kestrun;

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    const std::optional<Toolchain> toolchain = Toolchain::find();
    if (!toolchain) {
        std::puts("self-test: no Swift toolchain found, skipped");
        return 0;
    }
    QList<int> widths;
    for (int i = 1; i < argc; ++i)
        widths.append(std::max(1, atoi(argv[i])));
    if (widths.isEmpty())
        widths = {1, 2, 4};

    std::printf("Self-test of the shipped course (%s, default %d in flight on %d cores):\n",
                toolchain->interpreter ? "interpreting" : "compiling", SelfTest::defaultParallelism(),
                QThread::idealThreadCount());
    int status = 0;
    double single = 0;
    for (const int width : widths) {
        SelfTest::Options options;
        options.findToolchain = [&] { return toolchain; };
        QString last;
        options.print = [&](const QString &line) { last = line; };
        options.parallelism = width;
        QElapsedTimer timer;
        timer.start();
        const int result = SelfTest::run(options);
        const double wall = timer.nsecsElapsed() / 1e9;
        if (width == widths.first())
            single = wall;
        std::printf("  %d in flight: %5.1f s, %.2fx as fast as %d in flight  (%s)\n", width, wall, single / wall,
                    widths.first(), qPrintable(last.left(48)));
        status |= result;
    }
    return status;
}
