#include "codeeditor.h"

#include "linenumberruler.h"
#include "swifthighlighter.h"
#include "app/preferences.h"
#include "texts/texts.h"
#include "theme/theme.h"

#include <QPainter>
#include <QScopedValueRollback>
#include <QScrollBar>
#include <QTextBlock>

namespace Kestrun {

namespace {

const QString indentStep = QStringLiteral("    ");

bool opensBlock(const QString &text)
{
    const QString trimmed = text.trimmed();
    return !trimmed.isEmpty() && QStringView(u"{([").contains(trimmed.back());
}

} // namespace

CodeEditor::CodeEditor(QWidget *parent)
    : QPlainTextEdit(parent)
    , m_ruler(new LineNumberRuler(this))
    , m_highlighter(new SwiftHighlighter(document()))
{
    setAccessibleName(Texts::get(Text::yourSwiftCode));
    setFrameShape(QFrame::NoFrame);
    setLineWrapMode(QPlainTextEdit::WidgetWidth);
    setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setTabChangesFocus(false);
    // The caret is painted in gold over Qt's own, which is hidden.
    setCursorWidth(0);

    // Dark whatever the desktop's appearance: code colours are made for it.
    QPalette colours = palette();
    for (const QPalette::ColorRole role : {QPalette::Base, QPalette::Window})
        colours.setColor(role, Theme::editorBackground());
    for (const QPalette::ColorRole role : {QPalette::Text, QPalette::WindowText})
        colours.setColor(role, Theme::editorText());
    setPalette(colours);
    setAutoFillBackground(true);
    verticalScrollBar()->setStyleSheet(
        QStringLiteral("QScrollBar:vertical { background: %1; width: %2px; margin: 0; }"
                       "QScrollBar::handle:vertical { background: %3; border-radius: %4px; min-height: 24px; margin: 2px; }"
                       "QScrollBar::handle:vertical:hover { background: %5; }"
                       "QScrollBar::add-line:vertical, QScrollBar::sub-line:vertical { height: 0; }"
                       "QScrollBar::add-page:vertical, QScrollBar::sub-page:vertical { background: none; }")
            .arg(Theme::editorBackground().name())
            .arg(qRound(Theme::pixels(10)))
            .arg(Theme::withOpacity(Theme::editorText(), 0.25).name(QColor::HexArgb))
            .arg(qRound(Theme::pixels(10)) / 2 - 2)
            .arg(Theme::withOpacity(Theme::editorText(), 0.4).name(QColor::HexArgb)));

    // Text inset 8 points beside the ruler and 12 above and below.
    const int inset = qRound(Theme::pixels(8));
    document()->setDocumentMargin(inset);
    // A margin is a format change of the document, recorded as an undo step.
    document()->clearUndoRedoStacks();
    const int extraTop = qRound(Theme::pixels(12)) - inset;
    setViewportMargins(m_ruler->sizeHint().width(), extraTop, 0, extraTop);

    connect(this, &QPlainTextEdit::updateRequest, m_ruler, [this] { m_ruler->update(); });
    connect(document(), &QTextDocument::contentsChanged, this, &CodeEditor::documentChanged);

    setFontSize(Preferences::shared().editorFontSize());
    connect(&Preferences::shared(), &Preferences::editorFontSizeChanged, this, &CodeEditor::setFontSize);
}

void CodeEditor::setCode(const QString &code)
{
    if (code == m_code)
        return;
    const QScopedValueRollback<bool> setting(m_settingCode, true);
    setPlainText(code);
    m_code = toPlainText();
}

void CodeEditor::documentChanged()
{
    QString text = toPlainText();
    if (text == m_code)
        return;
    m_code = std::move(text);
    if (!m_settingCode)
        Q_EMIT codeEdited(m_code);
}

void CodeEditor::setErrorLines(const QSet<int> &lines)
{
    if (lines == m_errorLines)
        return;
    m_errorLines = lines;
    m_ruler->update();
}

void CodeEditor::setFontSize(double points)
{
    m_fontSize = points;
    setFont(Theme::monospace(points));
    setTabStopDistance(4 * QFontMetricsF(font()).horizontalAdvance(u' '));
    m_ruler->update();
}

void CodeEditor::keyPressEvent(QKeyEvent *event)
{
    if (isReadOnly()) {
        QPlainTextEdit::keyPressEvent(event);
        return;
    }
    const bool command = event->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier);
    if (event->matches(QKeySequence::InsertParagraphSeparator) || event->matches(QKeySequence::InsertLineSeparator)) {
        insertNewline();
    } else if (event->key() == Qt::Key_Tab && !command) {
        insertAsOneStep(indentStep);
    } else if (event->text() == QLatin1String("}")) {
        insertClosingBrace();
    } else {
        QPlainTextEdit::keyPressEvent(event);
        return;
    }
    event->accept();
    ensureCursorVisible();
}

void CodeEditor::insertAsOneStep(const QString &text)
{
    QTextCursor cursor = textCursor();
    cursor.beginEditBlock();
    cursor.insertText(text);
    cursor.endEditBlock();
    setTextCursor(cursor);
}

// The new line starts with the indentation of the text before the caret,
// one step deeper after an opening brace, parenthesis or bracket.
void CodeEditor::insertNewline()
{
    const int start = textCursor().selectionStart();
    const QTextBlock block = document()->findBlock(start);
    const QString before = block.text().left(start - block.position());
    qsizetype blanks = 0;
    while (blanks < before.size() && (before[blanks] == u' ' || before[blanks] == u'\t'))
        ++blanks;
    insertAsOneStep(u'\n' + before.left(blanks) + (opensBlock(before) ? indentStep : QString()));
}

// A closing brace typed after nothing but at least four spaces takes the
// place of the last four.
void CodeEditor::insertClosingBrace()
{
    QTextCursor cursor = textCursor();
    cursor.beginEditBlock();
    cursor.removeSelectedText();
    const QTextBlock block = cursor.block();
    const QString before = block.text().left(cursor.position() - block.position());
    if (before.size() >= indentStep.size() && before.count(u' ') == before.size()) {
        cursor.setPosition(block.position(), QTextCursor::KeepAnchor);
        cursor.insertText(before.chopped(indentStep.size()) + u'}');
    } else {
        cursor.insertText(QStringLiteral("}"));
    }
    cursor.endEditBlock();
    setTextCursor(cursor);
}

void CodeEditor::paintEvent(QPaintEvent *event)
{
    QPlainTextEdit::paintEvent(event);
    // The caret while it blinks on, as Qt would draw it, in gold.
    if (getPaintContext().cursorPosition < 0 || overwriteMode())
        return;
    const QRect caret = cursorRect();
    QPainter(viewport()).fillRect(QRect(caret.left(), caret.top(), qMax(1, qRound(Theme::pixels(2))), caret.height()),
                                  Theme::vmGold());
}

void CodeEditor::resizeEvent(QResizeEvent *event)
{
    QPlainTextEdit::resizeEvent(event);
    const QRect area = contentsRect();
    m_ruler->setGeometry(area.left(), area.top(), m_ruler->sizeHint().width(), area.height());
}

} // namespace Kestrun
