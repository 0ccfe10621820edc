#include "selectabletext.h"

#include "styledformat.h"
#include "texts/texts.h"

#include <QAbstractTextDocumentLayout>
#include <QAccessible>
#include <QAccessibleWidget>
#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QDesktopServices>
#include <QMenu>
#include <QPainter>
#include <QScrollArea>
#include <QTextBlock>
#include <QTextDocument>
#include <QTextDocumentFragment>
#include <QTextLayout>
#include <QUrl>

#include <algorithm>
#include <cmath>
#include <utility>

namespace Kestrun {

namespace {

// Shift with a movement key extends the selection as in any text field.
struct Extension {
    QKeySequence::StandardKey key;
    QTextCursor::MoveOperation move;
};

constexpr Extension extensions[] = {
    {QKeySequence::SelectNextChar, QTextCursor::NextCharacter},
    {QKeySequence::SelectPreviousChar, QTextCursor::PreviousCharacter},
    {QKeySequence::SelectNextWord, QTextCursor::NextWord},
    {QKeySequence::SelectPreviousWord, QTextCursor::PreviousWord},
    {QKeySequence::SelectStartOfLine, QTextCursor::StartOfLine},
    {QKeySequence::SelectEndOfLine, QTextCursor::EndOfLine},
    {QKeySequence::SelectStartOfBlock, QTextCursor::StartOfBlock},
    {QKeySequence::SelectEndOfBlock, QTextCursor::EndOfBlock},
    {QKeySequence::SelectStartOfDocument, QTextCursor::Start},
    {QKeySequence::SelectEndOfDocument, QTextCursor::End},
    {QKeySequence::SelectNextLine, QTextCursor::Down},
    {QKeySequence::SelectPreviousLine, QTextCursor::Up},
};

// Screen readers read the text as static text.
class AccessibleText : public QAccessibleWidget {
public:
    explicit AccessibleText(SelectableText *text)
        : QAccessibleWidget(text, QAccessible::StaticText)
    {
    }

    QString text(QAccessible::Text kind) const override
    {
        if (kind == QAccessible::Name && widget()->accessibleName().isEmpty())
            return static_cast<const SelectableText *>(widget())->text();
        return QAccessibleWidget::text(kind);
    }
};

QAccessibleInterface *accessibleText(const QString &className, QObject *object)
{
    if (className == QLatin1String("Kestrun::SelectableText"))
        return new AccessibleText(static_cast<SelectableText *>(object));
    return nullptr;
}

const Extension *extensionFor(const QKeyEvent *event)
{
    for (const Extension &extension : extensions) {
        if (event->matches(extension.key))
            return &extension;
    }
    return nullptr;
}

} // namespace

SelectableText::SelectableText(QWidget *parent)
    : QWidget(parent)
    , m_document(new QTextDocument(this))
    , m_cursor(m_document)
{
    static const bool accessible = (QAccessible::installFactory(accessibleText), true);
    Q_UNUSED(accessible);
    m_document->setUndoRedoEnabled(false);
    m_document->setDocumentMargin(0);
    QTextOption option = m_document->defaultTextOption();
    // A word longer than the line breaks rather than running out of view.
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    m_document->setDefaultTextOption(option);
    m_document->setDefaultFont(font());

    QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Preferred);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
    setFocusPolicy(Qt::ClickFocus);
    setCursor(Qt::IBeamCursor);
}

void SelectableText::setStyledText(const StyledText &text)
{
    m_document->clear();
    QTextCursor cursor(m_document);
    StyledFormat::insert(cursor, text);
    applyLineSpacing();
    m_hasLinks = std::any_of(text.runs.cbegin(), text.runs.cend(),
                             [](const StyledRun &run) { return run.style.link.has_value(); });
    setMouseTracking(m_hasLinks);
    m_cursor = QTextCursor(m_document);
    contentChanged();
}

QString SelectableText::text() const
{
    return m_document->toPlainText();
}

void SelectableText::setWrapping(bool wrap)
{
    if (wrap == m_wrapping)
        return;
    m_wrapping = wrap;
    QSizePolicy policy = sizePolicy();
    policy.setHeightForWidth(wrap);
    setSizePolicy(policy);
    contentChanged();
}

void SelectableText::setLineSpacing(double points)
{
    if (points == m_lineSpacing)
        return;
    m_lineSpacing = points;
    applyLineSpacing();
    contentChanged();
}

void SelectableText::applyLineSpacing()
{
    QTextBlockFormat format;
    if (m_lineSpacing > 0)
        format.setLineHeight(Theme::pixels(m_lineSpacing), QTextBlockFormat::LineDistanceHeight);
    else
        format.setLineHeight(0, QTextBlockFormat::SingleHeight);
    QTextCursor all(m_document);
    all.select(QTextCursor::Document);
    all.mergeBlockFormat(format);
}

void SelectableText::setColor(const QColor &color)
{
    m_color = color;
    update();
}

void SelectableText::setColor(Theme::Level level)
{
    m_color = level;
    update();
}

QColor SelectableText::color() const
{
    if (const QColor *fixed = std::get_if<QColor>(&m_color))
        return *fixed;
    return Theme::label(std::get<Theme::Level>(m_color), this);
}

QString SelectableText::selectedText() const
{
    return m_cursor.selection().toPlainText();
}

void SelectableText::select(int start, int end)
{
    const int last = m_document->characterCount() - 1;
    m_cursor.setPosition(std::clamp(start, 0, last));
    m_cursor.setPosition(std::clamp(end, 0, last), QTextCursor::KeepAnchor);
    update();
}

void SelectableText::selectAll()
{
    m_cursor.select(QTextCursor::Document);
    selectionChanged();
    update();
}

void SelectableText::clearSelection()
{
    if (!m_cursor.hasSelection())
        return;
    m_cursor.clearSelection();
    update();
}

void SelectableText::copy() const
{
    if (m_cursor.hasSelection())
        QGuiApplication::clipboard()->setText(selectedText());
}

QString SelectableText::linkAt(const QPointF &point) const
{
    if (!m_hasLinks)
        return {};
    layOut();
    return m_document->documentLayout()->anchorAt(point - contentsRect().topLeft());
}

const QTextDocument *SelectableText::document() const
{
    layOut();
    m_document->size(); // lays out every line, not just those in view
    return m_document;
}

void SelectableText::layOut() const
{
    layOutAt(m_wrapping ? qMax(1, contentsRect().width()) : -1);
}

void SelectableText::layOutAt(qreal textWidth) const
{
    if (m_document->textWidth() != textWidth)
        m_document->setTextWidth(textWidth);
}

// Qt adds the extra line distance below every line, the last one too; the
// space belongs between lines only.
qreal SelectableText::trailingSpacing() const
{
    return m_lineSpacing > 0 && !m_document->isEmpty() ? Theme::pixels(m_lineSpacing) : 0;
}

QSizeF SelectableText::naturalSize() const
{
    if (!m_natural) {
        layOutAt(-1);
        const QSizeF size = m_document->size();
        m_natural = QSizeF(size.width(), size.height() - trailingSpacing());
    }
    return *m_natural;
}

QSize SelectableText::sizeHint() const
{
    const QSizeF natural = naturalSize();
    const QMargins margins = contentsMargins();
    return QSize(int(std::ceil(natural.width())) + margins.left() + margins.right(),
                 int(std::ceil(natural.height())) + margins.top() + margins.bottom());
}

QSize SelectableText::minimumSizeHint() const
{
    if (!m_wrapping)
        return sizeHint();
    // Wrapping breaks anywhere, so any width works; a few characters keep a
    // table column from being squeezed to nothing.
    const QMargins margins = contentsMargins();
    const int width = qMin(sizeHint().width() - margins.left() - margins.right(), 6 * fontMetrics().averageCharWidth());
    return QSize(width + margins.left() + margins.right(), fontMetrics().height() + margins.top() + margins.bottom());
}

int SelectableText::heightForWidth(int width) const
{
    if (!m_wrapping)
        return sizeHint().height();
    const QMargins margins = contentsMargins();
    const int textWidth = qMax(1, width - margins.left() - margins.right());
    for (const auto &[known, height] : m_heights) {
        if (known == textWidth)
            return height;
    }
    layOutAt(textWidth);
    const int height = int(std::ceil(m_document->size().height() - trailingSpacing())) + margins.top() + margins.bottom();
    if (m_heights.size() == m_heights.capacity())
        m_heights.remove(0);
    m_heights.append({textWidth, height});
    return height;
}

void SelectableText::contentChanged()
{
    m_natural.reset();
    m_heights.clear();
    updateGeometry();
    update();
}

bool SelectableText::event(QEvent *event)
{
    if (event->type() == QEvent::ShortcutOverride) {
        // Copying and selecting here win over the window's shortcuts.
        const auto *key = static_cast<QKeyEvent *>(event);
        if ((key->matches(QKeySequence::Copy) && hasSelectedText()) || key->matches(QKeySequence::SelectAll)
            || extensionFor(key)) {
            event->accept();
            return true;
        }
    }
    return QWidget::event(event);
}

void SelectableText::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::FontChange) {
        m_document->setDefaultFont(font());
        contentChanged();
    } else if (event->type() == QEvent::PaletteChange) {
        update();
    }
    QWidget::changeEvent(event);
}

void SelectableText::paintEvent(QPaintEvent *event)
{
    layOut();
    QPainter painter(this);
    const QPoint origin = contentsRect().topLeft();
    painter.translate(origin);

    QAbstractTextDocumentLayout::PaintContext context;
    context.palette = palette();
    context.palette.setColor(QPalette::Text, color());
    context.clip = QRectF(event->rect().translated(-origin));
    if (m_cursor.hasSelection()) {
        QAbstractTextDocumentLayout::Selection selection;
        selection.cursor = m_cursor;
        selection.format.setBackground(palette().brush(QPalette::Highlight));
        selection.format.setForeground(palette().brush(QPalette::HighlightedText));
        context.selections.append(selection);
    }
    m_document->documentLayout()->draw(&painter, context);
}

int SelectableText::positionAt(const QPointF &point) const
{
    layOut();
    return qMax(0, m_document->documentLayout()->hitTest(point - contentsRect().topLeft(), Qt::FuzzyHit));
}

QPointF SelectableText::pointOf(int position) const
{
    layOut();
    const QTextBlock block = m_document->findBlock(position);
    const QTextLayout *layout = block.layout();
    const int inBlock = position - block.position();
    const QTextLine line = layout->lineForTextPosition(inBlock);
    if (!line.isValid())
        return contentsRect().topLeft();
    return contentsRect().topLeft() + layout->position()
        + QPointF(line.cursorToX(inBlock), line.y() + line.height() / 2);
}

void SelectableText::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton) {
        event->ignore();
        return;
    }
    const int position = positionAt(event->position());
    if (m_sinceDoubleClick.isValid() && m_sinceDoubleClick.elapsed() < QApplication::doubleClickInterval()) {
        // A third click selects the paragraph.
        m_sinceDoubleClick.invalidate();
        m_cursor.setPosition(position);
        m_cursor.movePosition(QTextCursor::StartOfBlock);
        m_cursor.movePosition(QTextCursor::EndOfBlock, QTextCursor::KeepAnchor);
        m_selecting = false;
        selectionChanged();
        update();
        return;
    }
    m_cursor.setPosition(position,
                         event->modifiers() & Qt::ShiftModifier ? QTextCursor::KeepAnchor : QTextCursor::MoveAnchor);
    m_pressedLink = event->modifiers() & Qt::ShiftModifier ? QString() : linkAt(event->position());
    m_pressPoint = event->position().toPoint();
    m_selecting = true;
    update();
}

void SelectableText::mouseMoveEvent(QMouseEvent *event)
{
    if (m_selecting && (event->buttons() & Qt::LeftButton)) {
        if ((event->position().toPoint() - m_pressPoint).manhattanLength() >= QApplication::startDragDistance())
            m_pressedLink.clear();
        if (m_pressedLink.isEmpty()) {
            m_cursor.setPosition(positionAt(event->position()), QTextCursor::KeepAnchor);
            reveal(event->position());
            update();
        }
        return;
    }
    if (m_hasLinks)
        setCursor(linkAt(event->position()).isEmpty() ? Qt::IBeamCursor : Qt::PointingHandCursor);
}

void SelectableText::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton || !m_selecting) {
        event->ignore();
        return;
    }
    m_selecting = false;
    const QString link = std::exchange(m_pressedLink, QString());
    if (link.isEmpty()) {
        m_cursor.setPosition(positionAt(event->position()), QTextCursor::KeepAnchor);
        update();
    } else if (!m_cursor.hasSelection() && linkAt(event->position()) == link) {
        QDesktopServices::openUrl(QUrl(link));
        Q_EMIT linkActivated(link);
        return;
    }
    selectionChanged();
}

void SelectableText::mouseDoubleClickEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton) {
        event->ignore();
        return;
    }
    m_cursor.setPosition(positionAt(event->position()));
    m_cursor.select(QTextCursor::WordUnderCursor);
    m_pressedLink.clear();
    m_selecting = false;
    m_sinceDoubleClick.start();
    selectionChanged();
    update();
}

void SelectableText::keyPressEvent(QKeyEvent *event)
{
    if (event->matches(QKeySequence::Copy)) {
        copy();
    } else if (event->matches(QKeySequence::SelectAll)) {
        selectAll();
    } else if (const Extension *extension = extensionFor(event)) {
        layOut();
        m_cursor.movePosition(extension->move, QTextCursor::KeepAnchor);
        reveal(pointOf(m_cursor.position()));
        selectionChanged();
        update();
    } else {
        event->ignore();
    }
}

void SelectableText::focusOutEvent(QFocusEvent *event)
{
    // One selection at a time across the lesson; a context menu or another
    // window taking focus keeps it.
    if (event->reason() != Qt::PopupFocusReason && event->reason() != Qt::ActiveWindowFocusReason)
        clearSelection();
    QWidget::focusOutEvent(event);
}

void SelectableText::contextMenuEvent(QContextMenuEvent *event)
{
    auto *menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    QAction *copyAction = menu->addAction(Texts::get(Text::copyText), this, &SelectableText::copy);
    copyAction->setShortcut(QKeySequence::Copy);
    copyAction->setEnabled(hasSelectedText());
    const QString link = linkAt(event->pos());
    if (!link.isEmpty()) {
        menu->addAction(Texts::get(Text::copyLink), this, [link] { QGuiApplication::clipboard()->setText(link); });
    }
    menu->addSeparator();
    QAction *all = menu->addAction(Texts::get(Text::selectAllText), this, &SelectableText::selectAll);
    all->setShortcut(QKeySequence::SelectAll);
    menu->popup(event->globalPos());
}

void SelectableText::selectionChanged()
{
    QClipboard *clipboard = QGuiApplication::clipboard();
    if (m_cursor.hasSelection() && clipboard->supportsSelection())
        clipboard->setText(selectedText(), QClipboard::Selection);
}

// Keeps a point in view while a selection is dragged or extended, in every
// scroll area around the text: sideways in a code listing, down the lesson.
void SelectableText::reveal(const QPointF &point)
{
    const int margin = fontMetrics().height() / 2;
    for (QWidget *widget = parentWidget(); widget; widget = widget->parentWidget()) {
        auto *area = qobject_cast<QScrollArea *>(widget);
        QWidget *content = area ? area->widget() : nullptr;
        if (!content || (content != this && !content->isAncestorOf(this)))
            continue;
        const QPoint at = content == this ? point.toPoint() : mapTo(content, point.toPoint());
        area->ensureVisible(at.x(), at.y(), margin, margin);
    }
}

} // namespace Kestrun
