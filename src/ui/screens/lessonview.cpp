#include "lessonview.h"

#include "codelessonview.h"
#include "readinglessonview.h"
#include "course/course.h"

namespace Kestrun::LessonView {

QWidget *create(AppModel &model, const Lesson &lesson, PublishedActions &actions, SplitterMemory &memory, QWidget *parent)
{
    // The lesson's content decides, not its kind.
    if (!lesson.tests.isEmpty())
        return new CodeLessonView(model, lesson, actions, memory, parent);
    return new ReadingLessonView(model, lesson, parent);
}

} // namespace Kestrun::LessonView
