#include "linenumberruler.h"

#include "codeeditor.h"
#include "theme/theme.h"

#include <QPainter>
#include <QTextBlock>
#include <QTextLayout>

namespace Kestrun {

namespace {

constexpr double rulerWidth = 40;  // points
constexpr double rightInset = 8;   // points
constexpr double labelScale = 0.85; // of the code size

} // namespace

LineNumberRuler::LineNumberRuler(CodeEditor *editor)
    : QWidget(editor)
    , m_editor(editor)
{
    setAttribute(Qt::WA_OpaquePaintEvent);
}

QSize LineNumberRuler::sizeHint() const
{
    return QSize(qRound(Theme::pixels(rulerWidth)), 0);
}

QFont LineNumberRuler::labelFont() const
{
    return Theme::monospace(labelScale * m_editor->fontSize());
}

QList<LineNumberRuler::Label> LineNumberRuler::labels() const
{
    QList<Label> labels;
    const QFontMetricsF metrics(labelFont());
    const QColor plain = Theme::withOpacity(Theme::label(Theme::Level::secondary, this), 0.6);
    const QSet<int> errors = m_editor->errorLines();
    // Editor coordinates: the ruler and the viewport are both its children.
    const qreal viewportTop = m_editor->viewport()->geometry().top() - geometry().top();
    const qreal viewportHeight = m_editor->viewport()->height();
    const qreal right = width() - Theme::pixels(rightInset);

    QTextBlock block = m_editor->firstVisibleBlock();
    qreal top = m_editor->blockBoundingGeometry(block).translated(m_editor->contentOffset()).top();
    while (block.isValid() && top < viewportHeight) {
        const qreal height = m_editor->blockBoundingRect(block).height();
        const QTextLayout *layout = block.layout();
        if (block.isVisible() && top + height > 0 && layout->lineCount() > 0) {
            const QTextLine first = layout->lineAt(0);
            const qreal baseline = viewportTop + top + first.y() + first.ascent();
            const int number = block.blockNumber() + 1;
            const QString text = QString::number(number);
            const qreal width = metrics.horizontalAdvance(text);
            labels.append({number, QRectF(right - width, baseline - metrics.ascent(), width, metrics.height()),
                           errors.contains(number) ? Theme::vmAlert() : plain});
        }
        top += height;
        block = block.next();
    }
    return labels;
}

void LineNumberRuler::paintEvent(QPaintEvent *event)
{
    QPainter painter(this);
    painter.fillRect(event->rect(), Theme::editorBackground());
    // Numbers of lines partly scrolled away are cut where the code is.
    const QRect viewport = m_editor->viewport()->geometry().translated(-geometry().topLeft());
    painter.setClipRect(QRect(0, viewport.top(), width(), viewport.height()));
    const QFontMetricsF metrics(labelFont());
    QFont error = labelFont();
    // Red alone is faint on the dark ground; weight makes the mark easy to find.
    error.setWeight(QFont::DemiBold);
    for (const Label &label : labels()) {
        const bool alert = label.color == Theme::vmAlert();
        painter.setFont(alert ? error : labelFont());
        painter.setPen(label.color);
        const qreal width = alert ? QFontMetricsF(error).horizontalAdvance(QString::number(label.number)) : label.rect.width();
        painter.drawText(QPointF(label.rect.right() - width, label.rect.top() + metrics.ascent()), QString::number(label.number));
    }
}

} // namespace Kestrun
