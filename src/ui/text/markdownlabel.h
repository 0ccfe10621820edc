#pragma once

#include "selectabletext.h"
#include "theme/theme.h"

namespace Kestrun {

// One short text written in inline Markdown (emphasis, code, links), as the
// course writes its paragraphs, list items, hints, quiz answers and test
// names: wrapped at any width, selectable and copyable, its links in the
// accent colour opening in the desktop's browser.
//
//   auto *hint = new MarkdownLabel(lesson.hints[0], Theme::TextStyle::callout, this);
//   hint->setColor(Theme::Level::secondary);
class MarkdownLabel : public SelectableText {
    Q_OBJECT

public:
    explicit MarkdownLabel(QWidget *parent = nullptr);
    explicit MarkdownLabel(const QString &markdown, Theme::TextStyle style = Theme::TextStyle::body,
                           QWidget *parent = nullptr);

    void setMarkdown(const QString &markdown);
    // The source as given, marks included.
    QString markdown() const { return m_markdown; }

    // The font of one of the theme's text styles; setFont() for any other.
    void setTextStyle(Theme::TextStyle style);

private:
    QString m_markdown;
};

} // namespace Kestrun
