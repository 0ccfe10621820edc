#include "coderunner.h"

#include "runner.h"

#include <QtConcurrentRun>

namespace Kestrun {

LocalRunner::LocalRunner(Toolchain toolchain)
    : m_toolchain(std::move(toolchain))
{
}

QFuture<RunResult> LocalRunner::run(const Lesson &lesson, const QString &code) const
{
    return QtConcurrent::run([lesson, code, toolchain = m_toolchain] {
        return Runner::check(lesson, code, toolchain, runTimeout);
    });
}

} // namespace Kestrun
