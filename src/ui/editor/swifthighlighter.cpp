#include "swifthighlighter.h"

#include <QTextDocument>

#include <algorithm>

namespace Kestrun {

namespace {

// What a line's end is inside: the state that decides whether the next line
// must be coloured again.
enum LineEnd { open = 0, inComment = 1, inString = 2 };

} // namespace

SwiftHighlighter::SwiftHighlighter(QTextDocument *document)
    : QSyntaxHighlighter(static_cast<QObject *>(document))
{
    for (int kind = 0; kind < int(m_formats.size()); ++kind) {
        const auto token = Highlighter::Token(kind);
        if (const std::optional<Rgb> rgb = Highlighter::color(token))
            m_formats[kind].setForeground(QColor(rgb->red, rgb->green, rgb->blue));
        if (token == Highlighter::Token::keyword)
            m_formats[kind].setFontWeight(QFont::DemiBold);
    }
    // Connected before the base class connects, so the tokens are marked
    // stale before any line of a change is coloured.
    connect(document, &QTextDocument::contentsChange, this, [this] { m_stale = true; });
    setDocument(document);
    if (!document->isEmpty())
        rehighlight();
}

void SwiftHighlighter::highlightBlock(const QString &text)
{
    if (m_stale) {
        m_spans = Highlighter::tokens(document()->toPlainText());
        m_stale = false;
    }
    const qsizetype start = currentBlock().position();
    const qsizetype end = start + text.size();
    auto span = std::partition_point(m_spans.cbegin(), m_spans.cend(),
                                     [start](const Highlighter::Span &s) { return s.start + s.length <= start; });
    for (; span != m_spans.cend() && span->start < end; ++span) {
        if (span->kind == Highlighter::Token::plain)
            continue;
        const qsizetype from = qMax(span->start, start);
        const qsizetype to = qMin(span->start + span->length, end);
        setFormat(int(from - start), int(to - from), m_formats[size_t(span->kind)]);
    }

    // The token that holds this line's end, if it goes on into the next line.
    LineEnd state = open;
    const auto last = std::partition_point(m_spans.cbegin(), m_spans.cend(),
                                           [end](const Highlighter::Span &s) { return s.start + s.length <= end; });
    if (last != m_spans.cend() && last->start <= end && last->start + last->length > end + 1) {
        if (last->kind == Highlighter::Token::comment)
            state = inComment;
        else if (last->kind == Highlighter::Token::string)
            state = inString;
    }
    setCurrentBlockState(state);
}

} // namespace Kestrun
