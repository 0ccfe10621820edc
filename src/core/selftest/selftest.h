#pragma once

#include "course/course.h"
#include "runner/toolchain.h"

#include <QHash>
#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

// Checks the whole course without a window: the runner reports a crash, an
// endless loop and a compiler error, every reference solution passes, and no
// starting code passes already. Prints a report; returns the exit status.
namespace Kestrun::SelfTest {

// interrupted: the runs were stopped (Shell::stopAll) before the end; no report.
enum Status { allGood = 0, problemsFound = 1, couldNotStart = 2, interrupted = 3 };

// What a run depends on, replaceable for tests.
struct Options {
    std::optional<QString> solutionsPath;  // default: solutions.json among the resources
    std::function<std::optional<Toolchain>()> findToolchain = &Toolchain::find;
    std::function<Course()> loadCourse = [] { return Course::load(); };
    std::function<void(const QString &line)> print;  // default: standard output
    int parallelism = 0;                              // lessons checked at once; 0: the default
};

int run(const std::optional<QString> &solutionsPath);
int run(Options options);

// One fewer than the active cores, but at least two.
int defaultParallelism();

QString defaultSolutionsPath();

// A JSON object of strings, or nothing when the file is unreadable or of another shape.
std::optional<QHash<QString, QString>> readSolutions(const QString &path);

// The problems of one lesson with code: its solution must pass, its starting code must not.
QStringList checkLesson(const Lesson &lesson, const QHash<QString, QString> &solutions, const Toolchain &toolchain);

// ["a", "b"], each element a quoted literal.
QString quotedList(const QStringList &items);

} // namespace Kestrun::SelfTest
