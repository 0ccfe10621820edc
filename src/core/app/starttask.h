#pragma once

#include "runner/toolchain.h"

#include <QObject>

#include <functional>
#include <optional>

namespace Kestrun {

class AppModel;

// The start task: looks for the Swift toolchain off the UI thread, warms an
// interpreter up, and then, back on the model's thread, sets the model's
// runner and runner state once.
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

    // Runs a one-line program once, so that the learner's first Run does not
    // pay for a cold compiler. The result does not matter.
    static void warmUp(const Toolchain &toolchain);

Q_SIGNALS:
    // The model's runner state is no longer "looking".
    void finished();

private:
    AppModel &m_model;
    Search m_search;
    bool m_started = false;
    bool m_finished = false;
};

} // namespace Kestrun
