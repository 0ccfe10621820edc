#include "starttask.h"

#include "appmodel.h"
#include "startup.h"
#include "runner/coderunner.h"
#include "runner/runner.h"
#include "runner/workdirectory.h"

#include <QDir>
#include <QtConcurrentRun>

namespace Kestrun {

StartTask::StartTask(AppModel &model, Search search, QObject *parent)
    : QObject(parent)
    , m_model(model)
    , m_search(std::move(search))
{
}

void StartTask::start()
{
    if (m_started)
        return;
    m_started = true;
    QtConcurrent::run([search = m_search] {
        WorkDirectory::removeAbandoned(QDir::tempPath());
        return search();
    }).then(this, [this](const std::optional<Toolchain> &toolchain) {
        // A search that ended before this was attached lands here at once,
        // inside start(); the model changes only from the event loop.
        QMetaObject::invokeMethod(this, [this, toolchain] { setRunner(toolchain); }, Qt::QueuedConnection);
    });
}

void StartTask::setRunner(const std::optional<Toolchain> &toolchain)
{
    const RunnerState state = StartUp::runnerState(toolchain);
    const bool ready = state.kind == RunnerState::Kind::ready;
    if (ready)
        m_model.setRunner(std::make_shared<LocalRunner>(*toolchain));
    m_model.setRunnerState(state);
    m_finished = true;
    Q_EMIT finished();

    if (ready) {
        warmUpInBackground(*toolchain);
    } else {
        m_warmedUp = true;
        Q_EMIT warmedUp();
    }
}

// The learner may Run meanwhile: the runner is already set, only slower
// until the caches are warm.
void StartTask::warmUpInBackground(const Toolchain &toolchain)
{
    QtConcurrent::run([toolchain] {
        if (warmUp(toolchain) || !toolchain.interpreter)
            return toolchain;
        const Toolchain compiling = toolchain.compiling();
        warmUp(compiling);
        return compiling;
    }).then(this, [this, toolchain](const Toolchain &works) {
        if (works != toolchain)
            m_model.setRunner(std::make_shared<LocalRunner>(works));
        m_warmedUp = true;
        Q_EMIT warmedUp();
    });
}

bool StartTask::warmUp(const Toolchain &toolchain)
{
    const RunResult result
        = Runner::check(Lesson::warmUp(), QStringLiteral("import Foundation\nprint(1)"), toolchain, warmUpTimeout);
    return result.compiled && !result.crashed && !result.timedOut && result.output == QLatin1String("1");
}

} // namespace Kestrun
