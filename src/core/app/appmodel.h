#pragma once

#include "runner/coderunner.h"
#include "course/course.h"
#include "runnerstate.h"

#include <QObject>
#include <QString>

#include <chrono>
#include <memory>
#include <optional>

namespace Kestrun {

class ProgressStore;

// The one object every screen reads and drives: the course, the learner's
// progress, the selected lesson, the code runner with the state of its
// search, and a short-lived notice. It owns the navigation rules. When the
// store cannot write the progress, the notice says so once, and again only
// after a write has succeeded in between.
//
// The model does not own the store: whoever creates both keeps the store
// alive for as long as the model.
class AppModel : public QObject {
    Q_OBJECT

public:
    // How long a notice stays on screen.
    static constexpr std::chrono::seconds noticeDuration{3};

    // Selects the store's last lesson, without checking it or recording a visit.
    AppModel(Course course, ProgressStore *progress, QObject *parent = nullptr);

    const Course &course() const { return m_course; }
    ProgressStore *progress() const { return m_progress; }

    // The selected lesson's id; none means the home screen. It may name a
    // lesson the course no longer has, which counts as no selection.
    std::optional<QString> selection() const { return m_selection; }
    // Selects without recording a visit, as the sidebar's list does.
    void setSelection(const std::optional<QString> &selection);

    RunnerState runnerState() const { return m_runnerState; }
    void setRunnerState(const RunnerState &state);

    // Set once a usable toolchain was found; changes announce nothing.
    std::shared_ptr<const CodeRunner> runner() const { return m_runner; }
    void setRunner(std::shared_ptr<const CodeRunner> runner) { m_runner = std::move(runner); }

    std::optional<QString> notice() const { return m_notice; }

    std::optional<Lesson> selectedLesson() const;
    // The first lesson not yet done, whatever is selected.
    std::optional<Lesson> nextLesson() const;

    // Selects the lesson and records it as the last one opened, or shows
    // the home screen (leaving the recorded lesson as it is).
    void open(const std::optional<Lesson> &lesson);
    // Steps back for a negative offset, forward otherwise; from the home
    // screen it opens the lesson where the learner left off.
    void goBy(int offset);
    // Shows a notice until a later one replaces it or its time is up.
    void say(const QString &text);

Q_SIGNALS:
    void selectionChanged();
    void runnerStateChanged();
    void noticeChanged();

private:
    void setNotice(const std::optional<QString> &notice);
    void progressNotWritten();

    Course m_course;
    ProgressStore *m_progress;
    std::optional<QString> m_selection;
    RunnerState m_runnerState;
    std::shared_ptr<const CodeRunner> m_runner;
    std::optional<QString> m_notice;
    bool m_progressFailing = false;  // since the last successful write
};

} // namespace Kestrun
