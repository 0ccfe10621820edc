#pragma once

#include "course/course.h"
#include "runresult.h"
#include "toolchain.h"

#include <QString>

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
// that lines printed before a crash or a kill are not lost in a buffer.
QString prelude();

// Assembles the program: prelude, learner's code, one block per Swift check,
// each printing a verdict line marked with the nonce.
Program program(const QString &code, const QList<LessonTest> &tests, const QString &nonce);

// Synchronous and safe to call from several threads at once; never throws.
RunResult check(const Lesson &lesson, const QString &code, const Toolchain &toolchain, double runTimeout);

// Compiler diagnostics mapped to the learner's lines; at most 12.
QList<RunResult::CompilerError> compilerErrors(const QString &errorOutput, int firstLine, int testStart);

// The runtime's fatal error message, or a general sentence when there is none.
QString crashReason(const QString &errorOutput);

// How long compiling may take, in seconds.
inline constexpr double compileTimeout = 60;
// What interpreting may take beyond the run limit, in seconds.
inline constexpr double interpretExtra = 12;
inline constexpr int maxErrors = 12;

} // namespace Kestrun::Runner
