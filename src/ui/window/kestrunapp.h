#pragma once

#include "app/appmodel.h"
#include "app/starttask.h"
#include "progress/progressstore.h"

#include <QObject>

#include <functional>
#include <future>
#include <memory>

namespace Kestrun {

// The application object: registers the pixel font, then builds the course,
// the progress store and the one model, and keeps them for the life of the
// process.
class KestrunApp : public QObject {
    Q_OBJECT

public:
    // Throws Course::LoadError when the course cannot be loaded. With no
    // progress file the store uses its default location.
    explicit KestrunApp(std::optional<QString> progressFile = std::nullopt, QObject *parent = nullptr);
    // With the course already loaded, for example by loadCourse().
    explicit KestrunApp(Course course, std::optional<QString> progressFile = std::nullopt,
                        QObject *parent = nullptr);

    // Starts loading the shipped course on a thread of its own; get() gives
    // it, or throws Course::LoadError. Decoding takes about as long as the
    // windowing platform's start, so the two can overlap.
    static std::future<Course> loadCourse();

    AppModel &model() { return *m_model; }

    // Starts the start task (StartTask) once; later calls do nothing.
    void findCompiler(StartTask::Search search = &Toolchain::find);

private:
    std::unique_ptr<ProgressStore> m_progress;
    std::unique_ptr<AppModel> m_model;
    std::unique_ptr<StartTask> m_startTask;
};

} // namespace Kestrun
