#include "markdownlabel.h"

#include "course/markdown.h"

namespace Kestrun {

MarkdownLabel::MarkdownLabel(QWidget *parent)
    : SelectableText(parent)
{
}

MarkdownLabel::MarkdownLabel(const QString &markdown, Theme::TextStyle style, QWidget *parent)
    : SelectableText(parent)
{
    setTextStyle(style);
    setMarkdown(markdown);
}

void MarkdownLabel::setMarkdown(const QString &markdown)
{
    m_markdown = markdown;
    setStyledText(Kestrun::markdown(markdown));
}

void MarkdownLabel::setTextStyle(Theme::TextStyle style)
{
    setFont(Theme::font(style));
}

} // namespace Kestrun
