#include "readinglessonview.h"

#include "checklistview.h"
#include "lessoncolumn.h"
#include "lessonfooter.h"
#include "lessonheader.h"
#include "quizview.h"
#include "app/appmodel.h"
#include "progress/progressstore.h"
#include "texts/texts.h"
#include "text/blocksview.h"
#include "theme/theme.h"

#include <QPushButton>
#include <QVBoxLayout>

namespace Kestrun {

ReadingLessonView::ReadingLessonView(AppModel &model, const Lesson &lesson, QWidget *parent)
    : ScrollPage(parent)
    , m_model(model)
    , m_lesson(lesson)
{
    setObjectName(QStringLiteral("readingLesson"));
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    auto *column = new LessonColumn(true, this);
    column->add(new LessonHeader(model, lesson, column));
    column->add(new BlocksView(lesson.description, column));
    if (!lesson.instructions.isEmpty())
        column->add(new BlocksView(lesson.instructions, column));
    if (!lesson.checklist.isEmpty())
        column->add(new ChecklistView(model, lesson, column));
    if (!lesson.questions.isEmpty())
        column->add(new QuizView(model, lesson, column));
    if (lesson.checklist.isEmpty() && lesson.questions.isEmpty()) {
        m_markAsRead = new QPushButton(Texts::get(Text::markAsRead), column);
        m_markAsRead->setObjectName(QStringLiteral("markAsRead"));
        Theme::makeProminent(m_markAsRead);
        connect(m_markAsRead, &QPushButton::clicked, this, [this] { m_model.progress()->complete(m_lesson.id); });
        column->parts()->addWidget(m_markAsRead, 0, Qt::AlignLeft);
    }
    column->add(new LessonFooter(model, lesson, column));
    column->parts()->addStretch(1);
    setPage(column);

    connect(model.progress(), &ProgressStore::savedChanged, this, &ReadingLessonView::showDone);
    showDone();
}

void ReadingLessonView::showDone()
{
    if (m_markAsRead)
        m_markAsRead->setVisible(!m_model.progress()->isDone(m_lesson.id));
}

} // namespace Kestrun
