#include "quizview.h"

#include "answerbutton.h"
#include "app/appmodel.h"
#include "progress/progressstore.h"
#include "texts/texts.h"
#include "text/blocksview.h"
#include "text/markdownlabel.h"
#include "theme/iconlabel.h"
#include "theme/theme.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace Kestrun {

QuizView::QuizView(AppModel &model, const Lesson &lesson, QWidget *parent)
    : RoundedPanel(Theme::withOpacity(Theme::label(Theme::Level::primary), 0.045), 18, parent)
    , m_model(model)
    , m_lesson(lesson)
    , m_check(new QPushButton(this))
    , m_allRight(new IconLabel(QStringLiteral("checkmark.seal.fill"), Texts::get(Text::allRight), Theme::vmPass(), this))
{
    setObjectName(QStringLiteral("quiz"));
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(20, 20, 20, 20);
    layout->setSpacing(22);

    auto *title = new QLabel(Texts::get(lesson.type == Lesson::Kind::quiz ? Text::questions : Text::checkYourUnderstanding), this);
    QFont titleFont = Theme::font(Theme::TextStyle::title3);
    titleFont.setWeight(QFont::DemiBold);
    title->setFont(titleFont);
    layout->addWidget(title);

    for (int q = 0; q < lesson.questions.size(); ++q) {
        const Question &question = lesson.questions[q];
        auto *block = new QVBoxLayout;
        block->setSpacing(8);
        auto *text = new MarkdownLabel(QStringLiteral("%1. %2").arg(q + 1).arg(question.question),
                                       Theme::TextStyle::headline, this);
        text->setObjectName(QStringLiteral("question%1").arg(q + 1));
        block->addWidget(text);
        if (!question.detail.isEmpty())
            block->addWidget(new BlocksView(question.detail, this));
        QuestionRow row;
        for (int a = 0; a < question.answers.size(); ++a) {
            auto *answer = new AnswerButton(question.answers[a].text, this);
            answer->setObjectName(QStringLiteral("answer%1.%2").arg(q + 1).arg(a + 1));
            connect(answer, &QAbstractButton::clicked, this, [this, q, a] { pick(q, a); });
            block->addWidget(answer);
            row.answers.append(answer);
        }
        row.feedback = new MarkdownLabel(QString(), Theme::TextStyle::callout, this);
        row.feedback->setObjectName(QStringLiteral("feedback%1").arg(q + 1));
        block->addWidget(row.feedback);
        m_rows.append(row);
        layout->addLayout(block);
    }

    auto *actions = new QHBoxLayout;
    actions->setSpacing(12);
    m_check->setObjectName(QStringLiteral("checkAnswers"));
    Theme::makeProminent(m_check);
    connect(m_check, &QPushButton::clicked, this, &QuizView::check);
    m_allRight->setObjectName(QStringLiteral("allRight"));
    m_allRight->setTextFont(Theme::font(Theme::TextStyle::headline));
    actions->addWidget(m_check);
    actions->addWidget(m_allRight);
    actions->addStretch(1);
    layout->addLayout(actions);

    connect(model.progress(), &ProgressStore::savedChanged, this, &QuizView::showState);
    showState();
}

bool QuizView::allRight() const
{
    for (int q = 0; q < m_lesson.questions.size(); ++q) {
        const auto picked = m_picks.constFind(q);
        if (picked == m_picks.cend() || !m_lesson.questions[q].answers.value(*picked).correct)
            return false;
    }
    return true;
}

void QuizView::pick(int question, int answer)
{
    m_picks.insert(question, answer);
    m_checked = false;
    showState();
}

void QuizView::check()
{
    m_checked = true;
    showState();
    ProgressStore &progress = *m_model.progress();
    if (!allRight()) {
        m_model.say(Texts::get(Text::haveAnotherLook));
        return;
    }
    const QList<int> ticks = progress.saved().ticks.value(m_lesson.id).values();
    const qsizetype ticked = std::count_if(ticks.cbegin(), ticks.cend(),
                                           [this](int i) { return i >= 0 && i < m_lesson.checklist.size(); });
    if (!m_lesson.checklist.isEmpty() && ticked < m_lesson.checklist.size() && !progress.isDone(m_lesson.id)) {
        m_model.say(Texts::get(Text::tickOffTheChecklist));
        return;
    }
    progress.complete(m_lesson.id);
    m_model.say(Texts::get(Text::lessonDone));
}

void QuizView::showState()
{
    for (int q = 0; q < m_rows.size(); ++q) {
        const Question &question = m_lesson.questions[q];
        const auto picked = m_picks.constFind(q);
        const bool hasPick = picked != m_picks.cend();
        for (int a = 0; a < m_rows[q].answers.size(); ++a) {
            AnswerButton *answer = m_rows[q].answers[a];
            const bool isPick = hasPick && *picked == a;
            answer->setPicked(isPick);
            answer->setVerdictColor(m_checked && isPick ? (question.answers[a].correct ? Theme::vmSea() : Theme::vmAlert())
                                                        : QColor());
        }
        MarkdownLabel *feedback = m_rows[q].feedback;
        const bool shown = m_checked && hasPick;
        feedback->setVisible(shown);
        if (shown) {
            const bool right = question.answers.value(*picked).correct;
            feedback->setMarkdown(Texts::get(right ? Text::right : Text::notQuite) + question.why);
            feedback->setColor(right ? Theme::vmSea() : Theme::vmAlert());
        }
    }
    m_check->setText(Texts::get(m_model.progress()->isDone(m_lesson.id) ? Text::checkAgain : Text::checkMyAnswers));
    m_check->setEnabled(m_picks.size() >= m_lesson.questions.size());
    m_allRight->setVisible(m_checked && allRight());
}

} // namespace Kestrun
