#pragma once

#include "runner/toolchain.h"

#include <QObject>

#include <functional>
#include <optional>

namespace Kestrun {

class AppModel;

// The start task: off the UI thread, removes the work directories of runs a
// killed process left behind and looks for the Swift toolchain; back on the
// model's thread, sets the model's runner and runner state once. Then it
// warms the runner up in the background, and when interpreting turns out not
// to work here, gives the model a runner that compiles instead.
class StartTask : public QObject {
    Q_OBJECT

public:
    using Search = std::function<std::optional<Toolchain>()>;

    // How long the warm-up run may take, in seconds.
    static constexpr double warmUpTimeout = 120;

    explicit StartTask(AppModel &model, Search search = &Toolchain::find, QObject *parent = nullptr);

    // Starts the search; a second call does nothing.
    void start();
    bool isFinished() const { return m_finished; }
    bool isWarmedUp() const { return m_warmedUp; }

    // Runs a small program that imports Foundation and prints 1, so that the
    // compiler's module cache and the system's file cache are warm for the
    // learner's first Run. True when the program printed 1.
    static bool warmUp(const Toolchain &toolchain);

Q_SIGNALS:
    // The model's runner state is no longer "looking".
    void finished();
    // The warm-up is over, or there was nothing to warm up.
    void warmedUp();

private:
    void setRunner(const std::optional<Toolchain> &toolchain);
    void warmUpInBackground(const Toolchain &toolchain);

    AppModel &m_model;
    Search m_search;
    bool m_started = false;
    bool m_finished = false;
    bool m_warmedUp = false;
};

} // namespace Kestrun
