#pragma once

#include <QWidget>

namespace Kestrun {

class AppModel;
struct Lesson;

// The way back and on at the end of a lesson: the previous lesson's title,
// and the next one's as the main button.
class LessonFooter : public QWidget {
    Q_OBJECT

public:
    LessonFooter(AppModel &model, const Lesson &lesson, QWidget *parent = nullptr);
};

} // namespace Kestrun
