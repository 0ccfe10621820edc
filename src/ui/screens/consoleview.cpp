#include "consoleview.h"

#include "texts/texts.h"
#include "theme/theme.h"

#include <QKeySequence>
#include <QLabel>
#include <QTextBlock>
#include <QTextEdit>
#include <QVBoxLayout>

namespace Kestrun {

namespace {

const QColor background(10, 20, 24);

} // namespace

QColor ConsoleView::errorColor()
{
    return {255, 155, 133};
}

QString ConsoleView::runShortcut()
{
    return QKeySequence(Qt::CTRL | Qt::Key_Return).toString(QKeySequence::NativeText);
}

ConsoleView::ConsoleView(QWidget *parent)
    : QWidget(parent)
    , m_text(new QTextEdit(this))
{
    setObjectName(QStringLiteral("console"));
    setAutoFillBackground(true);
    QPalette palette = this->palette();
    palette.setColor(QPalette::Window, background);
    palette.setColor(QPalette::Base, background);
    palette.setColor(QPalette::Text, Theme::editorText());
    palette.setColor(QPalette::WindowText, Theme::editorText());
    setPalette(palette);

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    auto *caption = new QLabel(Texts::get(Text::console), this);
    QFont captionFont = Theme::font(Theme::TextStyle::caption2);
    captionFont.setBold(true);
    captionFont.setLetterSpacing(QFont::AbsoluteSpacing, 1);
    caption->setFont(captionFont);
    caption->setContentsMargins(14, 8, 14, 0);
    Theme::setTextColor(caption, Theme::withOpacity(Theme::editorText(), 0.6));
    layout->addWidget(caption);

    m_text->setObjectName(QStringLiteral("consoleText"));
    m_text->setReadOnly(true);
    m_text->setFrameShape(QFrame::NoFrame);
    m_text->setAccessibleName(Texts::get(Text::console));
    m_text->setFont(Theme::monospace(12));
    m_text->document()->setDocumentMargin(14);
    m_text->setLineWrapMode(QTextEdit::WidgetWidth);
    m_text->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    layout->addWidget(m_text, 1);
    show(std::nullopt, false, std::nullopt);
}

QList<ConsoleView::Line> ConsoleView::lines(const std::optional<RunResult> &result, bool running,
                                            const std::optional<QString> &problem)
{
    using Kind = Line::Kind;
    if (problem)
        return {{*problem, Kind::error}};
    if (running)
        return {{Texts::get(Text::compilingAndRunning), Kind::secondary}};
    if (!result)
        return {{Texts::get(Text::pressRun).arg(runShortcut()), Kind::secondary}};

    QList<Line> shown;
    if (!result->compiled) {
        shown.append({Texts::get(result->timedOut ? Text::compilingTooLong : Text::didNotCompile), Kind::error});
        for (const RunResult::CompilerError &error : result->errors) {
            shown.append({error.line ? Texts::get(Text::errorOnLine).arg(QString::number(*error.line), error.message) : error.message,
                          Kind::error});
        }
        return shown;
    }
    if (!result->output.isEmpty())
        shown.append({result->output, Kind::output});
    if (result->timedOut)
        shown.append({Texts::get(Text::ranTooLong), Kind::error});
    else if (result->crashed)
        shown.append({Texts::get(Text::crashed) + result->crashReason, Kind::error});
    else if (result->output.isEmpty())
        shown.append({Texts::get(Text::nothingPrinted), Kind::secondary});
    if (result->passed())
        shown.append({Texts::get(Text::everyTestPasses), Kind::pass, true});
    return shown;
}

void ConsoleView::show(const std::optional<RunResult> &result, bool running, const std::optional<QString> &problem)
{
    QTextDocument *document = m_text->document();
    document->clear();
    QTextCursor cursor(document);
    bool first = true;
    for (const Line &line : lines(result, running, problem)) {
        QTextBlockFormat block;
        block.setTopMargin(first ? 0 : (line.spaceAbove ? 12 : 6));
        QTextCharFormat characters;
        switch (line.kind) {
        case Line::Kind::output: characters.setForeground(Theme::editorText()); break;
        case Line::Kind::error: characters.setForeground(errorColor()); break;
        case Line::Kind::secondary: characters.setForeground(Theme::withOpacity(Theme::editorText(), 0.6)); break;
        case Line::Kind::pass: characters.setForeground(Theme::vmPass()); break;
        }
        if (first)
            cursor.setBlockFormat(block);
        else
            cursor.insertBlock(block);
        cursor.insertText(line.text, characters);
        first = false;
    }
}

QString ConsoleView::plainText() const
{
    return m_text->toPlainText();
}

} // namespace Kestrun
