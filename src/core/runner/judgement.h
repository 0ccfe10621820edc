#pragma once

#include "course/course.h"
#include "runner.h"
#include "runresult.h"
#include "shell.h"

#include <QList>
#include <QString>

#include <optional>

namespace Kestrun {

// The verdicts of one run as they are worked out: the source checks first,
// then one of the three ways a run ends. The lesson must outlive it.
class Judgement {
public:
    Judgement(const Lesson &lesson, const QString &code);

    // The work directory or the source file could not be written.
    RunResult writeFailure(const QString &description) const;
    // The code did not compile (or the compiler could not start, or ran too long).
    RunResult compileFailure(const QString &errorOutput, const Runner::Program &program, bool timedOut);
    // The program ran, or could not be started (none).
    RunResult runOutcome(const std::optional<Shell::Output> &run, const QString &nonce);

private:
    void readVerdict(const QString &line);
    QList<RunResult::TestResult> testResults() const;

    const Lesson &m_lesson;
    QList<bool> m_passed;
    QList<int> m_swiftLeft;
};

} // namespace Kestrun
