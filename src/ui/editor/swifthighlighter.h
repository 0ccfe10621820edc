#pragma once

#include "highlight/highlighter.h"

#include <QSyntaxHighlighter>
#include <QTextCharFormat>

#include <array>

namespace Kestrun {

// Colours a document with the Swift highlighter. The text is tokenised whole
// after each change, so comments and strings that span lines come out as the
// highlighter sees them; the colours go into the layout of each line, never
// into the document, so they touch neither its undo steps nor its modified
// state. Only lines whose text changed are coloured again, and the lines
// after them while a change of comment or string reaches them.
class SwiftHighlighter : public QSyntaxHighlighter {
    Q_OBJECT

public:
    explicit SwiftHighlighter(QTextDocument *document);

protected:
    void highlightBlock(const QString &text) override;

private:
    std::array<QTextCharFormat, 8> m_formats;
    QList<Highlighter::Span> m_spans;
    bool m_stale = true;
};

} // namespace Kestrun
