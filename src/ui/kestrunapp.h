#pragma once

#include "appmodel.h"
#include "progressstore.h"
#include "toolchain.h"

#include <QObject>

#include <functional>
#include <memory>

// The application object: builds, in order, the course, the progress store
// and the one model, and keeps them for the life of the process.
class KestrunApp : public QObject {
    Q_OBJECT

public:
    using ToolchainSearch = std::function<std::optional<Toolchain>()>;

    // Throws Course::LoadError when the course cannot be loaded. With no
    // progress file the store uses its default location.
    explicit KestrunApp(std::optional<QString> progressFile = std::nullopt, QObject *parent = nullptr);

    AppModel &model() { return *m_model; }

    // The start task: searches for the toolchain off the UI thread, then
    // sets the model's runner and runner state once, back on this thread.
    void findCompiler(ToolchainSearch search = &Toolchain::find);

private:
    std::unique_ptr<ProgressStore> m_progress;
    std::unique_ptr<AppModel> m_model;
};
