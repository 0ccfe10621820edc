#include "kestrunapp.h"

#include "course/resources.h"
#include "theme/fonts.h"

#include <QThread>


namespace Kestrun {

KestrunApp::KestrunApp(std::optional<QString> progressFile, QObject *parent)
    : KestrunApp(Course::load(), std::move(progressFile), parent)
{
}

KestrunApp::KestrunApp(Course course, std::optional<QString> progressFile, QObject *parent)
    : QObject(parent)
{
    // Strictly in this order: the font before any screen, then the progress
    // and the model that holds it and the course.
    Fonts::registered();
    m_progress = std::make_unique<ProgressStore>(std::move(progressFile));
    m_model = std::make_unique<AppModel>(std::move(course), m_progress.get());
}

std::future<Course> KestrunApp::loadCourse()
{
    // Qt takes the first thread that uses it for the main thread: the caller
    // claims it before the loader's first QObject can.
    QThread::currentThread();
    // Found here: where the program's folder comes from Qt, only the main
    // thread may ask for it, since Qt caches it without a lock.
    if (const std::optional<QString> path = Resources::url(QStringLiteral("course.json")))
        return std::async(std::launch::async, [path = *path] { return Course::load(path); });
    // Some platforms know the folder only once the application object exists.
    return std::async(std::launch::deferred, [] { return Course::load(); });
}

void KestrunApp::findCompiler(StartTask::Search search)
{
    if (m_startTask)
        return;
    m_startTask = std::make_unique<StartTask>(*m_model, std::move(search));
    m_startTask->start();
}

} // namespace Kestrun
