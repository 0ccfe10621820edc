// The self-test of the shipped course: its wall time, checking lessons in
// parallel, beside the sum of its lessons' checks done one at a time.
//
//   selftest_bench

#include "selftest/selftest.h"

#include <QCoreApplication>
#include <QElapsedTimer>

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

    SelfTest::Options options;
    options.findToolchain = [&] { return toolchain; };
    options.print = [](const QString &) {};
    QElapsedTimer timer;
    timer.start();
    const int status = SelfTest::run(options);
    const double wall = timer.nsecsElapsed() / 1e9;

    const auto solutions = SelfTest::readSolutions(SelfTest::defaultSolutionsPath());
    double sum = 0;
    int lessons = 0;
    for (const Lesson &lesson : Course::load().lessons()) {
        if (lesson.tests.isEmpty() || !solutions)
            continue;
        timer.restart();
        SelfTest::checkLesson(lesson, *solutions, *toolchain);
        sum += timer.nsecsElapsed() / 1e9;
        ++lessons;
    }
    std::printf("self-test: status %d, wall %.1f s with %d lesson checks at once; "
                "its %d lesson checks one by one: %.1f s in all\n",
                status, wall, SelfTest::defaultParallelism(), lessons, sum);
    return status;
}
