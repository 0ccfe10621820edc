#include "lessonfooter.h"

#include "elidingbutton.h"

#include "app/appmodel.h"
#include "theme/icons.h"
#include "theme/theme.h"

#include <QHBoxLayout>

namespace Kestrun {

LessonFooter::LessonFooter(AppModel &model, const Lesson &lesson, QWidget *parent)
    : QWidget(parent)
{
    setObjectName(QStringLiteral("lessonFooter"));
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(0, 20, 0, 0);
    const Course::Neighbours around = model.course().neighbours(lesson.id);
    if (const std::optional<Lesson> previous = around.previous) {
        auto *back = new ElidingButton(Icons::icon(QStringLiteral("chevron.left"), Theme::vmSea()), previous->title, this);
        back->setObjectName(QStringLiteral("footerPrevious"));
        back->setFlat(true);
        back->setCursor(Qt::PointingHandCursor);
        back->setStyleSheet(QStringLiteral("QPushButton { border: none; padding: 6px 4px; color: %1; }")
                                .arg(Theme::vmSea().name()));
        connect(back, &QPushButton::clicked, this, [&model, id = previous->id] { model.open(model.course().lesson(id)); });
        row->addWidget(back);
    }
    row->addStretch(1);
    if (const std::optional<Lesson> next = around.next) {
        auto *on = new ElidingButton(Icons::icon(QStringLiteral("chevron.right"), Qt::white), next->title, this);
        on->setObjectName(QStringLiteral("footerNext"));
        Theme::makeProminent(on);
        // The chevron after the title.
        on->setLayoutDirection(Qt::RightToLeft);
        connect(on, &QPushButton::clicked, this, [&model, id = next->id] { model.open(model.course().lesson(id)); });
        row->addWidget(on);
    }
}

} // namespace Kestrun
