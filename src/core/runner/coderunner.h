#pragma once

#include "course/course.h"
#include "runresult.h"
#include "toolchain.h"

#include <QFuture>

namespace Kestrun {

// Runs the learner's code for a lesson, off the calling thread.
class CodeRunner {
public:
    // How long the learner's program may run once compiled, in seconds.
    static constexpr double runTimeout = 8;

    virtual ~CodeRunner() = default;
    virtual QFuture<RunResult> run(const Lesson &lesson, const QString &code) const = 0;
};

// Compiles and runs locally with one toolchain.
class LocalRunner final : public CodeRunner {
public:
    explicit LocalRunner(Toolchain toolchain);
    QFuture<RunResult> run(const Lesson &lesson, const QString &code) const override;
    const Toolchain &toolchain() const { return m_toolchain; }

private:
    Toolchain m_toolchain;
};

} // namespace Kestrun
