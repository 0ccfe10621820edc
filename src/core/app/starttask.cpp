#include "starttask.h"

#include "appmodel.h"
#include "startup.h"
#include "runner/coderunner.h"
#include "runner/runner.h"

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
        std::optional<Toolchain> toolchain = search();
        // The first run through an interpreter is the slow one.
        if (toolchain && toolchain->interpreter)
            warmUp(*toolchain);
        return toolchain;
    }).then(this, [this](const std::optional<Toolchain> &toolchain) {
        // When the search is over before then() attaches, Qt runs this at once,
        // inside start(); the state still changes only after start() returns.
        QMetaObject::invokeMethod(this, [this, toolchain] {
            const RunnerState state = StartUp::runnerState(toolchain);
            if (state.kind == RunnerState::Kind::ready)
                m_model.setRunner(std::make_shared<LocalRunner>(*toolchain));
            m_model.setRunnerState(state);
            m_finished = true;
            Q_EMIT finished();
        }, Qt::QueuedConnection);
    });
}

void StartTask::warmUp(const Toolchain &toolchain)
{
    Runner::check(Lesson::warmUp(), QStringLiteral("print(1)"), toolchain, warmUpTimeout);
}

} // namespace Kestrun
