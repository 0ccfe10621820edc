#include "lessonview.h"

#include "app/appmodel.h"
#include "course/course.h"
#include "theme/theme.h"

#include <QLabel>
#include <QVBoxLayout>

namespace Kestrun::LessonView {

QWidget *create(AppModel &model, const Lesson &lesson, PublishedActions &actions, QWidget *parent)
{
    Q_UNUSED(model)
    Q_UNUSED(actions)
    // Until the lesson screens arrive: the lesson's title.
    auto *page = new QWidget(parent);
    auto *layout = new QVBoxLayout(page);
    layout->setContentsMargins(28, 28, 28, 28);
    auto *title = new QLabel(lesson.title, page);
    title->setFont(Theme::font(Theme::TextStyle::largeTitle));
    layout->addWidget(title);
    layout->addStretch(1);
    return page;
}

} // namespace Kestrun::LessonView
