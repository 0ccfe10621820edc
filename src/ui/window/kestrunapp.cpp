#include "kestrunapp.h"

#include "theme/fonts.h"


namespace Kestrun {

KestrunApp::KestrunApp(std::optional<QString> progressFile, QObject *parent)
    : QObject(parent)
{
    // Strictly in this order: the font before any screen, then the course,
    // the progress and the model that holds both.
    Fonts::registered();
    Course course = Course::load();
    m_progress = std::make_unique<ProgressStore>(std::move(progressFile));
    m_model = std::make_unique<AppModel>(std::move(course), m_progress.get());
}

void KestrunApp::findCompiler(StartTask::Search search)
{
    if (m_startTask)
        return;
    m_startTask = std::make_unique<StartTask>(*m_model, std::move(search));
    m_startTask->start();
}

} // namespace Kestrun
