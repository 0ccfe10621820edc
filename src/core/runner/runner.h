#pragma once

#include "course/course.h"
#include "runresult.h"
#include "shell.h"
#include "toolchain.h"

#include <QString>

#include <optional>

// Judges the learner's code against a lesson: source checks, then one Swift
// program of the code and the lesson's checks, compiled and run under time
// limits, with verdicts read back from lines only this run can forge.
namespace Kestrun::Runner {

// The test program and the two lines that map compiler errors back.
struct Program {
    QString source;
    int firstLine = 0;  // the line of source holding the learner's first line
    int testStart = 0;  // the line of the comment that starts the tests
};

// Runs before the learner's code: makes standard output line-buffered, so
// that lines printed before a crash or a kill are not lost in a buffer, and
// with a run limit arms a timer that ends the program with SIGALRM when the
// limit (rounded up to whole seconds) is up. The interpreter compiles before it runs, under one outer
// limit; the timer counts from the moment the learner's code starts.
QString prelude(std::optional<double> runLimit = std::nullopt);

// Assembles the program: prelude, learner's code, one block per Swift check,
// each printing a verdict line marked with the nonce.
Program program(const QString &code, const QList<LessonTest> &tests, const QString &nonce,
                std::optional<double> runLimit = std::nullopt);

// Synchronous and safe to call from several threads at once; never throws.
// Interprets when the toolchain has an interpreter, else compiles and runs;
// the learner's code runs held in by Sandbox.
RunResult check(const Lesson &lesson, const QString &code, const Toolchain &toolchain, double runTimeout);

// Judges one run of the program assembled with `nonce`: the source checks on
// the code, then the program's standard output split into console lines and
// the verdict lines only this nonce marks, and the output checks on the
// console. `run` is none when the program could not be started. Pure.
RunResult judge(const Lesson &lesson, const QString &code, const QString &nonce,
                const std::optional<Shell::Output> &run);

// Compiler diagnostics mapped to the learner's lines; at most 12.
QList<RunResult::CompilerError> compilerErrors(const QString &errorOutput, int firstLine, int testStart);

// The runtime's fatal error message, or a general sentence when there is none.
QString crashReason(const QString &errorOutput);

// Where the compiler keeps the modules it built, shared by every run of the
// app, its self-test and warm-up: kept warm across runs, and writable
// inside the sandbox. Empty when it cannot be created.
QString moduleCache();

// How long compiling may take, in seconds.
inline constexpr double compileTimeout = 60;
// What interpreting may take beyond the run limit, in seconds.
inline constexpr double interpretExtra = 12;
inline constexpr int maxErrors = 12;

} // namespace Kestrun::Runner
