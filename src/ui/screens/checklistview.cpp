#include "checklistview.h"

#include "app/appmodel.h"
#include "progress/progressstore.h"
#include "texts/texts.h"
#include "text/markdownlabel.h"
#include "theme/iconlabel.h"
#include "theme/theme.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QMouseEvent>
#include <QPushButton>
#include <QVBoxLayout>

namespace Kestrun {

namespace {

// A tick box beside a step written in inline Markdown; a click on the text
// ticks too.
class StepLabel : public MarkdownLabel {
public:
    StepLabel(const QString &markdown, QCheckBox *box, QWidget *parent)
        : MarkdownLabel(markdown, Theme::TextStyle::body, parent)
        , m_box(box)
    {
        setCursor(Qt::PointingHandCursor);
    }

protected:
    void mouseReleaseEvent(QMouseEvent *event) override
    {
        MarkdownLabel::mouseReleaseEvent(event);
        if (event->button() == Qt::LeftButton && !hasSelectedText() && linkAt(event->position()).isEmpty())
            m_box->click();
    }

private:
    QCheckBox *m_box;
};

} // namespace

ChecklistView::ChecklistView(AppModel &model, const Lesson &lesson, QWidget *parent)
    : RoundedPanel(Theme::withOpacity(Theme::label(Theme::Level::primary), 0.045), 18, parent)
    , m_model(model)
    , m_lesson(lesson)
{
    setObjectName(QStringLiteral("checklist"));
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(20, 20, 20, 20);
    layout->setSpacing(12);

    auto *title = new IconLabel(QStringLiteral("checklist"),
                                Texts::get(lesson.type == Lesson::Kind::project ? Text::yourProject : Text::onYourMachine),
                                Theme::label(Theme::Level::primary, this), this);
    QFont titleFont = Theme::font(Theme::TextStyle::title3);
    titleFont.setWeight(QFont::DemiBold);
    title->setTextFont(titleFont);
    title->setSymbol(QStringLiteral("checklist"), Theme::vmSea());
    layout->addWidget(title);

    for (int i = 0; i < lesson.checklist.size(); ++i) {
        auto *row = new QHBoxLayout;
        row->setSpacing(8);
        auto *box = new QCheckBox(this);
        box->setObjectName(QStringLiteral("step%1").arg(i + 1));
        auto *text = new StepLabel(lesson.checklist[i], box, this);
        box->setAccessibleName(text->text());
        // The box follows the store, whatever it showed before the click.
        connect(box, &QCheckBox::clicked, this, [this, i] { m_model.progress()->toggle(i, m_lesson.id); });
        row->addWidget(box, 0, Qt::AlignTop);
        row->addWidget(text, 1);
        layout->addLayout(row);
        m_boxes.append(box);
    }

    if (lesson.questions.isEmpty()) {
        m_markDone = new QPushButton(Texts::get(Text::markAsDone), this);
        m_markDone->setObjectName(QStringLiteral("markAsDone"));
        Theme::makeProminent(m_markDone);
        connect(m_markDone, &QPushButton::clicked, this, [this] {
            m_model.progress()->complete(m_lesson.id);
            m_model.say(Texts::get(Text::lessonDone));
        });
        layout->addWidget(m_markDone, 0, Qt::AlignLeft);
    } else {
        m_hint = new MarkdownLabel(Texts::get(Text::tickThenAnswer), Theme::TextStyle::callout, this);
        m_hint->setColor(Theme::Level::secondary);
        layout->addWidget(m_hint);
    }

    connect(model.progress(), &ProgressStore::savedChanged, this, &ChecklistView::showState);
    showState();
}

void ChecklistView::showState()
{
    const ProgressStore &progress = *m_model.progress();
    const bool done = progress.isDone(m_lesson.id);
    const QSet<int> ticks = progress.saved().ticks.value(m_lesson.id);
    int ticked = 0;
    for (int i = 0; i < m_boxes.size(); ++i) {
        const bool tick = ticks.contains(i);
        ticked += tick ? 1 : 0;
        m_boxes[i]->setChecked(tick || done);
    }
    if (m_markDone) {
        m_markDone->setVisible(!done);
        m_markDone->setEnabled(ticked == m_lesson.checklist.size());
    }
    if (m_hint)
        m_hint->setVisible(!done);
}

} // namespace Kestrun
