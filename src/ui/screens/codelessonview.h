#pragma once

#include "course/course.h"
#include "runner/runresult.h"

#include <QSplitter>

#include <optional>

class QPushButton;
class QStackedWidget;
class QVBoxLayout;

namespace Kestrun {

class AppModel;
class CodeEditor;
class ConsoleView;
class PublishedActions;
class SplitterMemory;
class TestsList;

// A lesson with tests: its text, task, tests and hints on the left; on the
// right the learner's code, Run and Reset, and the console. A run that
// passes every test finishes the lesson.
class CodeLessonView : public QSplitter {
    Q_OBJECT

public:
    CodeLessonView(AppModel &model, const Lesson &lesson, PublishedActions &actions, SplitterMemory &memory,
                   QWidget *parent = nullptr);

    void run();
    void reset();

    QString code() const { return m_code; }
    const std::optional<RunResult> &result() const { return m_result; }
    bool isRunning() const { return m_running; }
    int hintsShown() const { return m_hintsShown; }

Q_SIGNALS:
    // A run ended and its result is on screen.
    void finished();

private:
    QWidget *createInstructions();
    QWidget *createWorkspace();
    void setCode(const QString &code, bool fromEditor);
    void showHints();
    void showResult();

    AppModel &m_model;
    Lesson m_lesson;
    PublishedActions &m_actions;

    QString m_code;
    std::optional<RunResult> m_result;
    bool m_running = false;
    std::optional<QString> m_problem;
    int m_hintsShown = 0;

    TestsList *m_tests = nullptr;
    QVBoxLayout *m_hints = nullptr;
    QPushButton *m_hintButton = nullptr;
    CodeEditor *m_editor = nullptr;
    ConsoleView *m_console = nullptr;
    QStackedWidget *m_runSlot = nullptr;
    QPushButton *m_run = nullptr;
    QWidget *m_successBar = nullptr;
    QPushButton *m_next = nullptr;
};

} // namespace Kestrun
