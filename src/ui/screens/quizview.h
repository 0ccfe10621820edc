#pragma once

#include "course/course.h"
#include "theme/roundedpanel.h"

#include <QList>
#include <QMap>

class QPushButton;

namespace Kestrun {

class AnswerButton;
class AppModel;
class IconLabel;
class MarkdownLabel;

// The questions of a lesson with their choices. Checking shows, under each
// question, whether the pick was right and why; all right finishes the
// lesson (with its checklist, when it has one).
class QuizView : public RoundedPanel {
    Q_OBJECT

public:
    QuizView(AppModel &model, const Lesson &lesson, QWidget *parent = nullptr);

    // Every question has a pick and every pick is right.
    bool allRight() const;
    void pick(int question, int answer);
    void check();

private:
    struct QuestionRow {
        QList<AnswerButton *> answers;
        MarkdownLabel *feedback;
    };

    void showState();

    AppModel &m_model;
    Lesson m_lesson;
    QMap<int, int> m_picks;
    bool m_checked = false;
    QList<QuestionRow> m_rows;
    QPushButton *m_check;
    IconLabel *m_allRight;
};

} // namespace Kestrun
