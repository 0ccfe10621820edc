#include "kestrunapp.h"

#include "startup.h"

#include <QtConcurrentRun>

KestrunApp::KestrunApp(std::optional<QString> progressFile, QObject *parent)
    : QObject(parent)
{
    Course course = Course::load();
    m_progress = std::make_unique<ProgressStore>(std::move(progressFile));
    m_model = std::make_unique<AppModel>(std::move(course), m_progress.get());
}

void KestrunApp::findCompiler(ToolchainSearch search)
{
    QtConcurrent::run(std::move(search)).then(this, [this](const std::optional<Toolchain> &toolchain) {
        const RunnerState state = StartUp::runnerState(toolchain);
        if (state.kind == RunnerState::Kind::ready)
            m_model->setRunner(std::make_shared<LocalRunner>(*toolchain));
        m_model->setRunnerState(state);
    });
}
