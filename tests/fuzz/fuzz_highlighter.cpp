// The highlighter on any text: its tokens cover the text exactly, in order,
// with no gap, overlap or empty token, and never split a surrogate pair; they
// are the tokens of the seven documented regular expressions, tried in order
// at each position (an independent, slower reading of the same rules); and
// the styled text colours exactly the tokens that are not plain.
#include "fuzzing.h"

#include "highlight/highlighter.h"

#include <QRegularExpression>

using namespace Kestrun;
using namespace Kestrun::Fuzzing;
using Highlighter::Span;
using Highlighter::Token;

namespace {

// The seven rules as documented, as one alternation tried in order: none of
// them matches the empty text, so the first alternative that matches is the
// first rule with a non-empty match. \w and \d are ASCII, as in Qt's default
// mode; PCRE's $ (the end, or before a final newline) is one of the two
// documented readings of "the end of the text".
const QRegularExpression &rules()
{
    static const QRegularExpression all(QStringLiteral(
        "(?<comment>\\/\\/[^\\n]*|\\/\\*[\\s\\S]*?(?:\\*\\/|$))"
        "|(?<string>\"\"\"[\\s\\S]*?(?:\"\"\"|$)|\"(?:[^\"\\\\\\n]|\\\\.)*\"?)"
        "|(?<number>0x[0-9a-fA-F_]+|0b[01_]+|\\d[\\d_]*(?:\\.\\d[\\d_]*)?(?:e[+-]?\\d+)?)"
        "|(?<attribute>[@#][A-Za-z_]\\w*)"
        "|(?<word>[A-Za-z_]\\w*)"));
    return all;
}

Token wordKind(const QString &text, qsizetype start, qsizetype end)
{
    if (Highlighter::keywords().contains(text.sliced(start, end - start)))
        return Token::keyword;
    if (text[start] >= u'A' && text[start] <= u'Z')
        return Token::type;
    while (end < text.size() && text[end] == u' ')
        ++end;
    return end < text.size() && text[end] == u'(' ? Token::call : Token::plain;
}

QList<Span> reference(const QString &original)
{
    // The regular-expression engine refuses invalid UTF-16; a replacement
    // character takes the place of a lone surrogate, one code unit for one.
    QString text = original;
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i].isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate())
            ++i;
        else if (text[i].isSurrogate())
            text[i] = QChar::ReplacementCharacter;
    }
    QList<Span> spans;
    qsizetype i = 0;
    while (i < text.size()) {
        Span span{i, 0, Token::plain};
        // The text is valid UTF-16 by now, so it need not be checked again at every token.
        const QRegularExpressionMatch m = rules().match(
            text, i, QRegularExpression::NormalMatch,
            QRegularExpression::AnchorAtOffsetMatchOption | QRegularExpression::DontCheckSubjectStringMatchOption);
        if (m.hasMatch()) {
            span.length = m.capturedLength();
            if (m.hasCaptured(u"comment"))
                span.kind = Token::comment;
            else if (m.hasCaptured(u"string"))
                span.kind = Token::string;
            else if (m.hasCaptured(u"number"))
                span.kind = Token::number;
            else if (m.hasCaptured(u"attribute"))
                span.kind = Token::attribute;
            else
                span.kind = wordKind(text, i, i + span.length);
        } else {
            span.length = text[i].isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate() ? 2 : 1;
        }
        spans.append(span);
        i += span.length;
    }
    return spans;
}

QString describe(const QList<Span> &spans)
{
    QString out;
    for (const Span &s : spans)
        out += QStringLiteral("[%1+%2 %3]").arg(s.start).arg(s.length).arg(int(s.kind));
    return out;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString source = text(data, size);
    const QList<Span> spans = Highlighter::tokens(source);

    qsizetype end = 0;
    for (const Span &span : spans) {
        FUZZ_CHECK(span.start == end && span.length > 0, describe(spans));
        end = span.start + span.length;
        FUZZ_CHECK(end <= source.size(), describe(spans));
        FUZZ_CHECK(!(end < source.size() && source[end - 1].isHighSurrogate() && source[end].isLowSurrogate()),
                   QStringLiteral("a surrogate pair split at %1").arg(end));
    }
    FUZZ_CHECK(end == source.size(), describe(spans));

    const QList<Span> expected = reference(source);
    FUZZ_CHECK(spans == expected, describe(spans) + QStringLiteral("\nexpected ") + describe(expected));

    const StyledText styled = Highlighter::attributed(source);
    FUZZ_CHECK(styled.text == source, source);
    qsizetype run = 0;
    for (const Span &span : spans) {
        if (span.kind == Token::plain)
            continue;
        FUZZ_CHECK(run < styled.runs.size(), source);
        const StyledRun &r = styled.runs[run++];
        FUZZ_CHECK(r.start == span.start && r.length == span.length && r.style.color == Highlighter::color(span.kind)
                       && r.style.semibold == (span.kind == Token::keyword),
                   source);
    }
    FUZZ_CHECK(run == styled.runs.size(), source);
    return 0;
}
