#pragma once

#include "course/course.h"
#include "theme/roundedpanel.h"

#include <QList>

class QCheckBox;
class QPushButton;

namespace Kestrun {

class AppModel;
class MarkdownLabel;

// Steps the learner does outside the app, ticked off one by one; the ticks
// live in the progress store. Without questions, "Mark as done" finishes
// the lesson once every step is ticked.
class ChecklistView : public RoundedPanel {
    Q_OBJECT

public:
    ChecklistView(AppModel &model, const Lesson &lesson, QWidget *parent = nullptr);

private:
    void showState();

    AppModel &m_model;
    Lesson m_lesson;
    QList<QCheckBox *> m_boxes;
    QPushButton *m_markDone = nullptr;
    MarkdownLabel *m_hint = nullptr;
};

} // namespace Kestrun
