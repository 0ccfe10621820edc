#include "lessonheader.h"

#include "kindbadge.h"
#include "app/appmodel.h"
#include "progress/progressstore.h"
#include "texts/texts.h"
#include "text/markdownlabel.h"
#include "theme/icons.h"
#include "theme/theme.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

namespace Kestrun {

LessonHeader::LessonHeader(AppModel &model, const Lesson &lesson, QWidget *parent)
    : QWidget(parent)
    , m_model(model)
    , m_lessonId(lesson.id)
    , m_done(new QLabel(this))
{
    setObjectName(QStringLiteral("lessonHeader"));
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(8);

    if (const std::optional<Course::Place> place = model.course().module(lesson.id)) {
        auto *crumb = new MarkdownLabel(this);
        crumb->setObjectName(QStringLiteral("breadcrumb"));
        crumb->setStyledText(StyledText{place->chapter.title + Texts::get(Text::breadcrumbSeparator) + place->module.title, {}});
        crumb->setTextStyle(Theme::TextStyle::caption);
        crumb->setColor(Theme::Level::secondary);
        layout->addWidget(crumb);
    }

    auto *titleRow = new QHBoxLayout;
    titleRow->setSpacing(10);
    auto *badge = new KindBadge(lesson.type, this);
    auto *title = new MarkdownLabel(this);
    title->setObjectName(QStringLiteral("lessonTitle"));
    title->setStyledText(StyledText{lesson.title, {}});
    QFont titleFont = Theme::font(Theme::TextStyle::largeTitle);
    titleFont.setBold(true);
    title->setFont(titleFont);
    // The badge and the mark sit on the title's first line.
    const int firstLine = QFontMetrics(titleFont).height();
    auto *badgeBox = new QVBoxLayout;
    badgeBox->setContentsMargins(0, (firstLine - badge->sizeHint().height()) / 2, 0, 0);
    badgeBox->addWidget(badge);
    badgeBox->addStretch(1);
    titleRow->addLayout(badgeBox);
    titleRow->addWidget(title, 1);
    const int markSize = QFontMetrics(Theme::font(Theme::TextStyle::title2)).height();
    m_done->setObjectName(QStringLiteral("doneMark"));
    m_done->setAccessibleName(Texts::get(Text::done));
    m_done->setPixmap(Icons::pixmap(QStringLiteral("checkmark.circle.fill"), Theme::vmSea(), markSize, devicePixelRatioF()));
    m_done->setFixedSize(markSize, firstLine);
    m_done->setAlignment(Qt::AlignCenter);
    titleRow->addWidget(m_done, 0, Qt::AlignTop);
    layout->addLayout(titleRow);

    auto *minutes = new MarkdownLabel(this);
    minutes->setObjectName(QStringLiteral("lessonMinutes"));
    minutes->setStyledText(StyledText{Texts::get(Text::aboutMinutes).arg(lesson.minutes), {}});
    minutes->setTextStyle(Theme::TextStyle::caption);
    minutes->setColor(Theme::Level::secondary);
    layout->addWidget(minutes);

    connect(model.progress(), &ProgressStore::savedChanged, this, &LessonHeader::showDone);
    showDone();
}

void LessonHeader::showDone()
{
    m_done->setVisible(m_model.progress()->isDone(m_lessonId));
}

} // namespace Kestrun
