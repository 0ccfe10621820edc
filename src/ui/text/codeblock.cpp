#include "codeblock.h"

#include "selectabletext.h"
#include "app/preferences.h"
#include "highlight/highlighter.h"
#include "theme/theme.h"

#include <QKeyEvent>
#include <QPainter>
#include <QPainterPath>
#include <QScrollArea>
#include <QScrollBar>
#include <QScroller>

namespace Kestrun {

CodeBlock::CodeBlock(const QString &code, QWidget *parent)
    : QWidget(parent)
    , m_code(code)
    , m_scroll(new QScrollArea(this))
    , m_text(new SelectableText)
{
    const int padding = qRound(Theme::pixels(14));
    m_text->setContentsMargins(padding, padding, padding, padding);
    m_text->setWrapping(false);
    m_text->setColor(Theme::editorText());
    m_text->setStyledText(Highlighter::attributed(code));

    m_scroll->setFrameShape(QFrame::NoFrame);
    m_scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_scroll->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_scroll->setWidgetResizable(true);
    m_scroll->setFocusPolicy(Qt::NoFocus);
    m_scroll->setAutoFillBackground(false);
    m_scroll->viewport()->setAutoFillBackground(false);
    m_scroll->setWidget(m_text);
    m_text->setAutoFillBackground(false); // setWidget() turned it on
    QScroller::grabGesture(m_scroll->viewport(), QScroller::TouchGesture);
    m_scroll->installEventFilter(this);

    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    setFontSize(Preferences::shared().editorFontSize());
    connect(&Preferences::shared(), &Preferences::editorFontSizeChanged, this, &CodeBlock::setFontSize);
}

void CodeBlock::setFontSize(double points)
{
    m_text->setFont(Theme::monospace(points));
    m_scroll->horizontalScrollBar()->setSingleStep(m_text->fontMetrics().averageCharWidth() * 3);
    setFixedHeight(m_text->sizeHint().height());
    updateGeometry();
}

QSize CodeBlock::sizeHint() const
{
    return m_text->sizeHint();
}

QSize CodeBlock::minimumSizeHint() const
{
    // Any width will do: what does not fit scrolls.
    return QSize(qRound(Theme::pixels(28)), m_text->sizeHint().height());
}

// The listing only scrolls sideways: keys that scroll up and down pass on
// to the lesson around it instead of moving a scroll bar that has no range.
bool CodeBlock::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_scroll && event->type() == QEvent::KeyPress) {
        const auto *key = static_cast<QKeyEvent *>(event);
        if (key->key() == Qt::Key_Up || key->key() == Qt::Key_Down || key->matches(QKeySequence::MoveToPreviousPage)
            || key->matches(QKeySequence::MoveToNextPage)) {
            event->ignore();
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

void CodeBlock::resizeEvent(QResizeEvent *)
{
    m_scroll->setGeometry(rect());
}

void CodeBlock::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const qreal radius = Theme::pixels(12);
    QPainterPath box;
    box.addRoundedRect(QRectF(rect()), radius, radius);
    painter.fillPath(box, Theme::editorBackground());
}

} // namespace Kestrun
