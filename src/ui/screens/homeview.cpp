#include "homeview.h"

#include "chapterlist.h"
#include "runnerstatus.h"
#include "app/appmodel.h"
#include "progress/progressstore.h"
#include "texts/texts.h"
#include "text/markdownlabel.h"
#include "theme/fonts.h"
#include "theme/iconlabel.h"
#include "theme/theme.h"

#include <QFrame>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

namespace Kestrun {

namespace {

QLabel *label(const QString &text, const QFont &font, const QColor &color, QWidget *parent)
{
    auto *l = new QLabel(text, parent);
    l->setFont(font);
    l->setWordWrap(true);
    Theme::setTextColor(l, color);
    return l;
}

QList<Lesson> lessonsOf(const Chapter &chapter)
{
    QList<Lesson> lessons;
    for (const Module &module : chapter.modules)
        lessons.append(module.lessons);
    return lessons;
}

// Wrapped text: the lesson text's own widget, which lays a paragraph out
// once per width where a word-wrapped QLabel does it again and again.
MarkdownLabel *paragraph(const QString &text, const QFont &font, const QColor &color, QWidget *parent)
{
    auto *p = new MarkdownLabel(parent);
    p->setStyledText(StyledText{text, {}});
    p->setFont(font);
    p->setColor(color);
    return p;
}

} // namespace

HomeView::HomeView(AppModel &model, QWidget *parent)
    : ScrollPage(parent)
    , m_model(model)
{
    setObjectName(QStringLiteral("homeView"));
    const Course &course = model.course();
    const QColor secondary = Theme::label(Theme::Level::secondary, this);

    auto *page = new QWidget(this);
    auto *centre = new QHBoxLayout(page);
    centre->setContentsMargins(40, 40, 40, 40);
    auto *column = new QWidget(page);
    column->setMaximumWidth(900);
    centre->addStretch(0);
    centre->addWidget(column, 1);
    centre->addStretch(0);
    auto *items = new QVBoxLayout(column);
    items->setContentsMargins(0, 0, 0, 0);
    items->setSpacing(22);

    QFont versionsFont = Theme::font(Theme::TextStyle::caption);
    versionsFont.setBold(true);
    versionsFont.setLetterSpacing(QFont::AbsoluteSpacing, 1.2);
    items->addWidget(label(course.versions.toUpper(), versionsFont, Theme::vmGold(), column));

    QLabel *title = label(Texts::get(Text::appTitle), Fonts::pixel(56), Theme::label(Theme::Level::primary, this), column);
    title->setObjectName(QStringLiteral("homeTitle"));
    title->setWordWrap(false);
    // The title and its subtitle read as one block.
    auto *heading = new QVBoxLayout;
    heading->setSpacing(8);
    heading->addWidget(title);
    heading->addWidget(paragraph(course.subtitle, Theme::font(Theme::TextStyle::title3), secondary, column));
    items->addLayout(heading);

    auto *progress = new QWidget(column);
    progress->setMaximumWidth(420);
    auto *progressLayout = new QVBoxLayout(progress);
    progressLayout->setContentsMargins(0, 0, 0, 0);
    progressLayout->setSpacing(6);
    m_progressLabel = label({}, Theme::font(Theme::TextStyle::body), Theme::label(Theme::Level::primary, this), progress);
    m_progressLabel->setObjectName(QStringLiteral("progressLabel"));
    m_progressBar = new QProgressBar(progress);
    m_progressBar->setObjectName(QStringLiteral("courseProgress"));
    m_progressBar->setTextVisible(false);
    m_progressBar->setFixedHeight(6);
    m_progressBar->setStyleSheet(QStringLiteral("QProgressBar { background: %1; border: none; border-radius: 3px; }"
                                                "QProgressBar::chunk { background: %2; border-radius: 3px; }")
                                     .arg(Theme::label(Theme::Level::quaternary, this).name(QColor::HexArgb),
                                          Theme::vmSea().name()));
    progressLayout->addWidget(m_progressLabel);
    progressLayout->addWidget(m_progressBar);
    items->addWidget(progress);

    auto *action = new QWidget(column);
    auto *actionLayout = new QHBoxLayout(action);
    actionLayout->setContentsMargins(0, 0, 0, 0);
    actionLayout->setSpacing(12);
    m_start = new QPushButton(action);
    m_start->setObjectName(QStringLiteral("startButton"));
    Theme::makeProminent(m_start);
    QFont large = Theme::font(Theme::TextStyle::body);
    large.setPointSizeF(Theme::scaled(15));
    m_start->setFont(large);
    m_start->setMinimumHeight(qRound(Theme::scaled(15) * 2.6));
    connect(m_start, &QPushButton::clicked, this, [this] { m_model.open(m_model.nextLesson()); });
    m_finished = new IconLabel(QStringLiteral("star.fill"), Texts::get(Text::courseFinished), Theme::vmGold(), action);
    m_finished->setObjectName(QStringLiteral("courseFinished"));
    m_finished->setTextFont(Theme::font(Theme::TextStyle::headline));
    actionLayout->addWidget(m_start);
    actionLayout->addWidget(m_finished);
    actionLayout->addStretch(1);
    items->addWidget(action);

    items->addWidget(new RunnerStatus(model, column));

    auto *divider = new QFrame(column);
    divider->setFrameShape(QFrame::HLine);
    divider->setFrameShadow(QFrame::Plain);
    divider->setStyleSheet(QStringLiteral("color: %1;").arg(Theme::label(Theme::Level::quaternary, this).name(QColor::HexArgb)));
    auto *dividerSpace = new QVBoxLayout;
    dividerSpace->setContentsMargins(0, 6, 0, 6);
    dividerSpace->addWidget(divider);
    items->addLayout(dividerSpace);

    // Narrower than the column: a box layout gives it that width before it
    // asks for its height, which a maximum width alone would not.
    auto *summary = new MarkdownLabel(course.summary, Theme::TextStyle::body, column);
    summary->setColor(secondary);
    summary->setMaximumWidth(640);
    auto *summaryRow = new QHBoxLayout;
    summaryRow->addWidget(summary, 1);
    summaryRow->addStretch(0);
    items->addLayout(summaryRow);

    m_chapters = new ChapterList(column);
    QList<ChapterList::Row> rows;
    for (int i = 0; i < course.chapters.size(); ++i) {
        const Chapter &chapter = course.chapters[i];
        rows.append({QStringLiteral("%1").arg(i + 1, 2, 10, QLatin1Char('0')), chapter.title, chapter.summary, {}});
    }
    m_chapters->setRows(rows);
    items->addWidget(m_chapters);

    items->addSpacing(12);
    items->addWidget(paragraph(Texts::get(Text::madeBy), Theme::font(Theme::TextStyle::footnote),
                               Theme::label(Theme::Level::tertiary, this), column));
    items->addStretch(1);
    setPage(page);

    connect(model.progress(), &ProgressStore::savedChanged, this, &HomeView::showProgress);
    showProgress();
}

void HomeView::showProgress()
{
    const Course &course = m_model.course();
    const ProgressStore &progress = *m_model.progress();
    const qsizetype total = course.lessons().size();
    const qsizetype done = progress.count(course.lessons());
    m_progressLabel->setText(done == 0 ? Texts::get(Text::lessonsInNineChapters).arg(total)
                                       : Texts::get(Text::lessonsDone).arg(done).arg(total));
    m_progressBar->setRange(0, int(qMax<qsizetype>(total, 1)));
    m_progressBar->setValue(int(done));

    const std::optional<Lesson> next = m_model.nextLesson();
    m_start->setVisible(bool(next));
    m_finished->setVisible(!next);
    if (next)
        m_start->setText(done == 0 ? Texts::get(Text::startTheCourse) : Texts::get(Text::continueWith).arg(next->title));

    QStringList counts;
    for (const Chapter &chapter : course.chapters) {
        const QList<Lesson> lessons = lessonsOf(chapter);
        counts.append(Texts::get(Text::doneOfTotal).arg(progress.count(lessons)).arg(lessons.size()));
    }
    m_chapters->setCounts(counts);
}

} // namespace Kestrun
