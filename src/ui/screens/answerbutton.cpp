#include "answerbutton.h"

#include "text/markdownlabel.h"
#include "theme/icons.h"
#include "theme/theme.h"

#include <QAccessibleWidget>
#include <QLabel>
#include <QPainter>
#include <QPainterPath>

namespace Kestrun {

namespace {

constexpr int padding = 10;
constexpr int spacing = 10;

// To assistive technology an answer is one of a question's choices: a radio
// button, checked and selected once picked.
class AccessibleAnswer : public QAccessibleWidget {
public:
    explicit AccessibleAnswer(AnswerButton *answer)
        : QAccessibleWidget(answer, QAccessible::RadioButton)
    {
        addControllingSignal(QStringLiteral("clicked(bool)"));
    }

    QString text(QAccessible::Text t) const override
    {
        return t == QAccessible::Name ? answer()->text() : QAccessibleWidget::text(t);
    }

    QAccessible::State state() const override
    {
        QAccessible::State state = QAccessibleWidget::state();
        state.checkable = true;
        state.checked = answer()->isPicked();
        state.selected = answer()->isPicked();
        return state;
    }

    QStringList actionNames() const override { return {pressAction()}; }

    void doAction(const QString &name) override
    {
        if (name == pressAction())
            answer()->click();
    }

private:
    AnswerButton *answer() const { return static_cast<AnswerButton *>(widget()); }
};

QAccessibleInterface *accessibleAnswer(const QString &className, QObject *object)
{
    if (className == QLatin1String("Kestrun::AnswerButton") && object->isWidgetType())
        return new AccessibleAnswer(static_cast<AnswerButton *>(object));
    return nullptr;
}

} // namespace

AnswerButton::AnswerButton(const QString &markdown, QWidget *parent)
    : QAbstractButton(parent)
    , m_mark(new QLabel(this))
    , m_text(new MarkdownLabel(markdown, Theme::TextStyle::body, this))
{
    static const bool factoryInstalled = [] {
        QAccessible::installFactory(accessibleAnswer);
        return true;
    }();
    Q_UNUSED(factoryInstalled)
    setCursor(Qt::PointingHandCursor);
    setText(m_text->text());
    setAccessibleName(m_text->text());
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Preferred);
    // The row is the button: its text must not take the click for a selection.
    m_text->setAttribute(Qt::WA_TransparentForMouseEvents);
    m_text->setFocusPolicy(Qt::NoFocus);
    updateMark();
}

void AnswerButton::setPicked(bool picked)
{
    m_picked = picked;
    setCheckable(true);
    setChecked(picked);
    updateMark();
}

void AnswerButton::setVerdictColor(const QColor &color)
{
    m_verdict = color;
    update();
}

void AnswerButton::updateMark()
{
    const int size = m_text->fontMetrics().height();
    const QColor color = m_picked ? Theme::vmSea() : Theme::label(Theme::Level::secondary, this);
    m_mark->setPixmap(Icons::pixmap(m_picked ? QStringLiteral("largecircle.fill.circle") : QStringLiteral("circle"),
                                    color, size, devicePixelRatioF()));
    m_mark->setFixedSize(size, size);
}

int AnswerButton::heightForWidth(int width) const
{
    const int textWidth = width - 2 * padding - m_mark->width() - spacing;
    return qMax(m_mark->height(), m_text->heightForWidth(textWidth)) + 2 * padding;
}

QSize AnswerButton::sizeHint() const
{
    const QSize text = m_text->sizeHint();
    return {text.width() + 2 * padding + m_mark->width() + spacing, qMax(text.height(), m_mark->height()) + 2 * padding};
}

void AnswerButton::resizeEvent(QResizeEvent *event)
{
    QAbstractButton::resizeEvent(event);
    const int textLeft = padding + m_mark->width() + spacing;
    const int textWidth = width() - textLeft - padding;
    const int textHeight = m_text->heightForWidth(textWidth);
    m_text->setGeometry(textLeft, padding, textWidth, textHeight);
    // The mark is centred on the first line of the text.
    m_mark->move(padding, padding);
}

void AnswerButton::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QPainterPath path;
    path.addRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 10, 10);
    const QColor fill = m_verdict.isValid() ? Theme::withOpacity(m_verdict, 0.15)
                                            : Theme::withOpacity(Theme::label(Theme::Level::primary, this), 0.04);
    painter.fillPath(path, fill);
    if (hasFocus()) {
        painter.setPen(QPen(Theme::withOpacity(Theme::vmSea(), 0.7), 1.5));
        painter.drawPath(path);
    }
}

} // namespace Kestrun
