#include "coderunner.h"

#include "runner.h"

#include <QPromise>
#include <QThreadPool>

#include <memory>

LocalRunner::LocalRunner(Toolchain toolchain)
    : m_toolchain(std::move(toolchain))
{
}

QFuture<RunResult> LocalRunner::run(const Lesson &lesson, const QString &code) const
{
    auto promise = std::make_shared<QPromise<RunResult>>();
    QFuture<RunResult> future = promise->future();
    promise->start();
    QThreadPool::globalInstance()->start([promise, lesson, code, toolchain = m_toolchain] {
        promise->addResult(Runner::check(lesson, code, toolchain, runTimeout));
        promise->finish();
    });
    return future;
}
