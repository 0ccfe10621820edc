#include "appmodel.h"

#include "progress/progressstore.h"
#include "texts/texts.h"

#include <QTimer>

namespace Kestrun {

AppModel::AppModel(Course course, ProgressStore *progress, QObject *parent)
    : QObject(parent)
    , m_course(std::move(course))
    , m_progress(progress)
    , m_selection(progress->saved().last)
{
    connect(progress, &ProgressStore::writeFailed, this, &AppModel::progressNotWritten);
    connect(progress, &ProgressStore::written, this, [this] { m_progressFailing = false; });
}

void AppModel::setSelection(const std::optional<QString> &selection)
{
    if (m_selection == selection)
        return;
    m_selection = selection;
    Q_EMIT selectionChanged();
}

void AppModel::setRunnerState(const RunnerState &state)
{
    if (m_runnerState == state)
        return;
    m_runnerState = state;
    Q_EMIT runnerStateChanged();
}

std::optional<Lesson> AppModel::selectedLesson() const
{
    if (!m_selection)
        return std::nullopt;
    return m_course.lesson(*m_selection);
}

std::optional<Lesson> AppModel::nextLesson() const
{
    for (const Lesson &lesson : m_course.lessons()) {
        if (!m_progress->isDone(lesson.id))
            return lesson;
    }
    return std::nullopt;
}

void AppModel::open(const std::optional<Lesson> &lesson)
{
    setSelection(lesson ? std::optional(lesson->id) : std::nullopt);
    if (lesson)
        m_progress->visit(lesson->id);
}

void AppModel::goBy(int offset)
{
    if (const std::optional<Lesson> current = selectedLesson()) {
        const Course::Neighbours around = m_course.neighbours(current->id);
        const std::optional<Lesson> &target = offset < 0 ? around.previous : around.next;
        if (target)
            open(target);
        return;
    }
    // From the home screen either direction leads to where the learner left off.
    if (std::optional<Lesson> next = nextLesson()) {
        open(next);
        return;
    }
    const QList<Lesson> lessons = m_course.lessons();
    open(lessons.isEmpty() ? std::nullopt : std::optional(lessons.first()));
}

void AppModel::say(const QString &text)
{
    setNotice(text);
    // Each notice has its own timer; a later notice outlives an earlier timer.
    QTimer::singleShot(noticeDuration, Qt::PreciseTimer, this, [this, text] {
        if (m_notice == text)
            setNotice(std::nullopt);
    });
}

void AppModel::setNotice(const std::optional<QString> &notice)
{
    if (m_notice == notice)
        return;
    m_notice = notice;
    Q_EMIT noticeChanged();
}

void AppModel::progressNotWritten()
{
    // Every change retries the write; one notice per run of failures is enough.
    if (m_progressFailing)
        return;
    m_progressFailing = true;
    say(Texts::get(Text::progressNotSaved));
}

} // namespace Kestrun
