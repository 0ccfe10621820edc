#include "noticebanner.h"

#include "app/appmodel.h"
#include "theme/theme.h"

#include <QEvent>
#include <QPainter>
#include <QPainterPath>
#include <QParallelAnimationGroup>
#include <QPropertyAnimation>

namespace Kestrun {

namespace {

constexpr int horizontalPadding = 18;
constexpr int verticalPadding = 10;
constexpr int bottomMargin = 24;
constexpr int travel = 24;  // how far the banner rises as it comes in
constexpr int duration = 350;

} // namespace

NoticeBanner::NoticeBanner(AppModel &model, QWidget *area)
    : QWidget(area)
    , m_model(model)
    , m_animation(new QParallelAnimationGroup(this))
{
    setObjectName(QStringLiteral("noticeBanner"));
    setAttribute(Qt::WA_TransparentForMouseEvents);
    QFont bold = Theme::font(Theme::TextStyle::body);
    bold.setWeight(QFont::DemiBold);
    setFont(bold);
    for (const char *property : {"opacity", "rise"}) {
        auto *animation = new QPropertyAnimation(this, property, m_animation);
        animation->setDuration(duration);
        // Critically damped: it settles without overshooting.
        animation->setEasingCurve(QEasingCurve::OutCubic);
    }
    connect(m_animation, &QAbstractAnimation::finished, this, [this] {
        if (m_opacity == 0)
            hide();
    });
    area->installEventFilter(this);
    connect(&m_model, &AppModel::noticeChanged, this, &NoticeBanner::showNotice);
    hide();
    showNotice();
}

void NoticeBanner::setOpacity(qreal opacity)
{
    m_opacity = opacity;
    update();
}

void NoticeBanner::setRise(qreal rise)
{
    m_rise = rise;
    place();
}

QSize NoticeBanner::sizeHint() const
{
    const QSize text = fontMetrics().size(Qt::TextSingleLine, m_text);
    return {text.width() + 2 * horizontalPadding, text.height() + 2 * verticalPadding};
}

void NoticeBanner::showNotice()
{
    const auto *fade = static_cast<const QPropertyAnimation *>(m_animation->animationAt(0));
    const bool arriving = isVisible() && fade->endValue() == QVariant(1.0);
    if (const std::optional<QString> notice = m_model.notice()) {
        // A new text while shown replaces the old one in place.
        m_text = *notice;
        setAccessibleName(m_text);
        place();
        update();
        if (!arriving)
            animate(true);
    } else if (arriving) {
        animate(false);
    }
}

void NoticeBanner::animate(bool in)
{
    m_animation->stop();
    auto *fade = static_cast<QPropertyAnimation *>(m_animation->animationAt(0));
    auto *move = static_cast<QPropertyAnimation *>(m_animation->animationAt(1));
    fade->setStartValue(m_opacity);
    fade->setEndValue(in ? 1.0 : 0.0);
    move->setStartValue(m_rise);
    move->setEndValue(in ? 0.0 : 1.0);
    show();
    raise();
    m_animation->start();
}

void NoticeBanner::place()
{
    const QWidget *area = parentWidget();
    const QSize size = sizeHint().boundedTo(area->size() - QSize(2 * bottomMargin, 0));
    const int x = (area->width() - size.width()) / 2;
    const int y = area->height() - bottomMargin - size.height() + qRound(m_rise * travel);
    setGeometry(x, y, size.width(), size.height());
}

bool NoticeBanner::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == parentWidget() && event->type() == QEvent::Resize)
        place();
    return QWidget::eventFilter(watched, event);
}

void NoticeBanner::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setOpacity(m_opacity);
    const QRectF box = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    QPainterPath path;
    path.addRoundedRect(box, box.height() / 2, box.height() / 2);
    // A frosted backdrop: the window's colour, mostly opaque, with a fine edge.
    const QColor window = palette().color(QPalette::Window);
    painter.fillPath(path, Theme::withOpacity(window.lighter(104), 0.92));
    painter.setPen(QPen(Theme::label(Theme::Level::quaternary, this), 1));
    painter.drawPath(path);
    painter.setPen(palette().color(QPalette::WindowText));
    painter.drawText(rect(), Qt::AlignCenter, fontMetrics().elidedText(m_text, Qt::ElideRight, width() - 2 * horizontalPadding));
}

} // namespace Kestrun
