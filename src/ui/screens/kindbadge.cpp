#include "kindbadge.h"

#include "texts/texts.h"
#include "theme/theme.h"

#include <QPainter>
#include <QPainterPath>

namespace Kestrun {

namespace {

constexpr int horizontalPadding = 8;
constexpr int verticalPadding = 3;

Text nameOf(Lesson::Kind kind)
{
    switch (kind) {
    case Lesson::Kind::lesson: return Text::kindLesson;
    case Lesson::Kind::workshop: return Text::kindWorkshop;
    case Lesson::Kind::lab: return Text::kindLab;
    case Lesson::Kind::quiz: return Text::kindQuiz;
    case Lesson::Kind::xcode: return Text::kindXcode;
    case Lesson::Kind::project: return Text::kindProject;
    }
    return Text::kindLesson;
}

} // namespace

KindBadge::KindBadge(Lesson::Kind kind, QWidget *parent)
    : QWidget(parent)
    , m_kind(kind)
    , m_text(Texts::get(nameOf(kind)))
{
    QFont f = Theme::font(Theme::TextStyle::caption2);
    f.setBold(true);
    f.setLetterSpacing(QFont::AbsoluteSpacing, 0.8);
    setFont(f);
    setAccessibleName(m_text);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

QColor KindBadge::tint(Lesson::Kind kind)
{
    switch (kind) {
    case Lesson::Kind::workshop:
    case Lesson::Kind::lab:
    case Lesson::Kind::project: return Theme::vmSea();
    case Lesson::Kind::quiz: return Theme::vmGold();
    case Lesson::Kind::lesson:
    case Lesson::Kind::xcode: break;
    }
    return {};
}

QSize KindBadge::sizeHint() const
{
    const QFontMetrics metrics = fontMetrics();
    return {metrics.horizontalAdvance(m_text) + 2 * horizontalPadding, metrics.height() + 2 * verticalPadding};
}

void KindBadge::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QColor tinted = tint(m_kind);
    const QColor fill = tinted.isValid() ? tinted : Theme::label(Theme::Level::secondary, this);
    const QColor ink = tinted.isValid() ? tinted : Theme::withOpacity(Theme::label(Theme::Level::primary, this), 0.7);
    QPainterPath capsule;
    capsule.addRoundedRect(QRectF(rect()), height() / 2.0, height() / 2.0);
    painter.fillPath(capsule, Theme::withOpacity(fill, 0.16));
    painter.setPen(ink);
    painter.drawText(rect(), Qt::AlignCenter, m_text);
}

} // namespace Kestrun
