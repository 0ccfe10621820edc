#pragma once

#include "course/course.h"
#include "theme/scrollpage.h"

class QPushButton;

namespace Kestrun {

class AppModel;

// A lesson that is read: its text, then its checklist or quiz, or else
// "Mark as read", between the lesson's header and footer.
class ReadingLessonView : public ScrollPage {
    Q_OBJECT

public:
    ReadingLessonView(AppModel &model, const Lesson &lesson, QWidget *parent = nullptr);

private:
    void showDone();

    AppModel &m_model;
    Lesson m_lesson;
    QPushButton *m_markAsRead = nullptr;
};

} // namespace Kestrun
