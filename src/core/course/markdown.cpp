#include "markdown.h"

#include <QHash>
#include <QLatin1String>
#include <QStringView>

#include <algorithm>
#include <array>
#include <optional>
#include <vector>

namespace Kestrun {

// A single left-to-right pass over the source: code spans, autolinks and
// character references are resolved on the spot, emphasis marks go onto a
// delimiter stack and brackets onto a bracket stack. Emphasis is paired when
// a link closes (for its label) and at the end of each paragraph. The result
// is a list of pieces of output text; a pairing only records where a style
// begins and ends in that list, so nothing is ever moved or copied again.
// Every scan is bounded, so the whole is linear in the length of the source.

namespace {

// Deeper nesting of parentheses in a link target is rejected; this keeps a
// failed link attempt from rescanning the rest of the text.
constexpr int maxTargetParenDepth = 32;
constexpr qsizetype maxSchemeLength = 32;
constexpr qsizetype maxDomainLabelLength = 63;
constexpr qsizetype maxEntityNameLength = 32;

bool isLineEnding(char16_t c)
{
    return c == u'\n' || c == u'\r';
}

bool isSpaceOrTab(char16_t c)
{
    return c == u' ' || c == u'\t';
}

bool isAsciiPunctuation(char16_t c)
{
    return (c >= 0x21 && c <= 0x2F) || (c >= 0x3A && c <= 0x40) || (c >= 0x5B && c <= 0x60)
        || (c >= 0x7B && c <= 0x7E);
}

bool isAsciiDigit(char16_t c)
{
    return c >= u'0' && c <= u'9';
}

bool isAsciiAlpha(char16_t c)
{
    return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z');
}

bool isAsciiAlnum(char16_t c)
{
    return isAsciiAlpha(c) || isAsciiDigit(c);
}

bool isAsciiControl(char16_t c)
{
    return c < 0x20 || c == 0x7F;
}

int hexValue(char16_t c)
{
    if (isAsciiDigit(c))
        return c - u'0';
    if (c >= u'a' && c <= u'f')
        return c - u'a' + 10;
    if (c >= u'A' && c <= u'F')
        return c - u'A' + 10;
    return -1;
}

bool isUnicodeWhitespace(char32_t c)
{
    return c == u'\t' || c == u'\n' || c == u'\f' || c == u'\r'
        || QChar::category(c) == QChar::Separator_Space;
}

bool isUnicodePunctuation(char32_t c)
{
    switch (QChar::category(c)) {
    case QChar::Punctuation_Connector:
    case QChar::Punctuation_Dash:
    case QChar::Punctuation_Open:
    case QChar::Punctuation_Close:
    case QChar::Punctuation_InitialQuote:
    case QChar::Punctuation_FinalQuote:
    case QChar::Punctuation_Other:
    case QChar::Symbol_Math:
    case QChar::Symbol_Currency:
    case QChar::Symbol_Modifier:
    case QChar::Symbol_Other:
        return true;
    default:
        return false;
    }
}

bool isEmailLocalCharacter(char16_t c)
{
    return isAsciiAlnum(c) || QStringView(u".!#$%&'*+/=?^_`{|}~-").contains(QChar(c));
}

bool mayStartSyntax(char16_t c)
{
    switch (c) {
    case u'\\':
    case u'`':
    case u'*':
    case u'_':
    case u'~':
    case u'[':
    case u']':
    case u'!':
    case u'<':
    case u'&':
        return true;
    default:
        return false;
    }
}

struct NamedEntity {
    const char *name;
    char32_t codePoint;
};

// The named references an author is likely to type; others stay literal.
constexpr NamedEntity namedEntities[] = {
    {"amp", U'&'},       {"lt", U'<'},         {"gt", U'>'},         {"quot", U'"'},
    {"apos", U'\''},     {"nbsp", 0xA0},       {"shy", 0xAD},        {"copy", 0xA9},
    {"reg", 0xAE},       {"trade", 0x2122},    {"hellip", 0x2026},   {"mdash", 0x2014},
    {"ndash", 0x2013},   {"lsquo", 0x2018},    {"rsquo", 0x2019},    {"ldquo", 0x201C},
    {"rdquo", 0x201D},   {"laquo", 0xAB},      {"raquo", 0xBB},      {"times", 0xD7},
    {"divide", 0xF7},    {"minus", 0x2212},    {"plusmn", 0xB1},     {"middot", 0xB7},
    {"bull", 0x2022},    {"deg", 0xB0},        {"micro", 0xB5},      {"para", 0xB6},
    {"sect", 0xA7},      {"ne", 0x2260},       {"le", 0x2264},       {"ge", 0x2265},
    {"infin", 0x221E},   {"larr", 0x2190},     {"rarr", 0x2192},     {"uarr", 0x2191},
    {"darr", 0x2193},    {"harr", 0x2194},     {"lArr", 0x21D0},     {"rArr", 0x21D2},
    {"hArr", 0x21D4},    {"euro", 0x20AC},     {"pound", 0xA3},      {"yen", 0xA5},
    {"cent", 0xA2},      {"frac12", 0xBD},     {"frac14", 0xBC},     {"frac34", 0xBE},
    {"sup2", 0xB2},      {"sup3", 0xB3},       {"ensp", 0x2002},     {"emsp", 0x2003},
    {"thinsp", 0x2009},  {"zwnj", 0x200C},     {"zwj", 0x200D},      {"check", 0x2713},
};

// The length of the character reference that starts with the '&' at pos
// (numeric, or a name from the table above), or 0 when there is none.
qsizetype characterReference(QStringView text, qsizetype pos, QString *decoded)
{
    const qsizetype size = text.size();
    qsizetype i = pos + 1;
    if (i < size && text[i] == u'#') {
        ++i;
        const bool hex = i < size && (text[i] == u'x' || text[i] == u'X');
        if (hex)
            ++i;
        const qsizetype digitsStart = i;
        const qsizetype maxDigits = hex ? 6 : 7;
        char32_t value = 0;
        while (i < size && i - digitsStart < maxDigits) {
            const char16_t c = text[i].unicode();
            if (hex && hexValue(c) >= 0)
                value = value * 16 + char32_t(hexValue(c));
            else if (!hex && isAsciiDigit(c))
                value = value * 10 + char32_t(c - u'0');
            else
                break;
            ++i;
        }
        if (i == digitsStart || i >= size || text[i] != u';')
            return 0;
        if (value == 0 || value > 0x10FFFF || (value >= 0xD800 && value <= 0xDFFF))
            value = 0xFFFD;
        *decoded = QString::fromUcs4(&value, 1);
        return i + 1 - pos;
    }
    const qsizetype nameStart = i;
    while (i < size && i - nameStart < maxEntityNameLength && isAsciiAlnum(text[i].unicode()))
        ++i;
    if (i == nameStart || i >= size || text[i] != u';')
        return 0;
    const QStringView name = text.sliced(nameStart, i - nameStart);
    for (const NamedEntity &entity : namedEntities) {
        if (name == QLatin1String(entity.name)) {
            *decoded = QString::fromUcs4(&entity.codePoint, 1);
            return i + 1 - pos;
        }
    }
    return 0;
}

// A link target as written, with its backslash escapes and character
// references resolved.
QString resolvedTarget(QStringView text)
{
    QString out;
    out.reserve(text.size());
    for (qsizetype i = 0; i < text.size();) {
        const char16_t c = text[i].unicode();
        if (c == u'\\' && i + 1 < text.size() && isAsciiPunctuation(text[i + 1].unicode())) {
            out += text[i + 1];
            i += 2;
            continue;
        }
        if (c == u'&') {
            QString decoded;
            if (const qsizetype length = characterReference(text, i, &decoded)) {
                out += decoded;
                i += length;
                continue;
            }
        }
        out += text[i];
        ++i;
    }
    return out;
}

// One stretch of output text. Style depths change only where a piece
// begins; a piece is never split.
struct Piece {
    QString text;
    std::optional<QString> link;
    int delimiter = -1;  // >= 0: the text is what remains of that delimiter run
    bool code = false;
    bool extensible = false;  // plain text that following plain text may join
    int strongDelta = 0;
    int emphasisDelta = 0;
    int strikethroughDelta = 0;
};

// A run of *, _ or ~~ that may open or close a style. The stack is a linked
// list through the vector; indices grow in text order.
struct Delimiter {
    int piece = 0;
    char16_t mark = 0;
    qsizetype count = 0;   // marks not yet used by a pairing
    qsizetype length = 0;  // marks in the run as written
    bool canOpen = false;
    bool canClose = false;
    int previous = -1;
    int next = -1;
};

struct Bracket {
    int piece = 0;
    int delimiterBottom = -1;  // the last delimiter before the bracket
    bool image = false;
};

struct LinkTail {
    QString target;
    qsizetype end = 0;
};

// Starts of the backtick runs of one length, and how many of them lie
// behind the parse position (they can no longer close a code span).
struct BacktickRuns {
    QList<qsizetype> starts;
    qsizetype passed = 0;
};

class InlineParser {
public:
    explicit InlineParser(const QString &source);
    StyledText run();

private:
    void parseParagraph(qsizetype begin, qsizetype end);
    void finishParagraph();
    void parseCodeSpan(qsizetype &pos, qsizetype end);
    void parseDelimiterRun(qsizetype &pos);
    void openBracket(bool image);
    void closeBracket(qsizetype &pos, qsizetype end);
    bool parseAutolink(qsizetype &pos, qsizetype end);
    std::optional<LinkTail> parseLinkTail(qsizetype pos, qsizetype end) const;
    qsizetype skipSpacesAndOneLineEnding(qsizetype pos, qsizetype end) const;
    qsizetype closingBackticks(qsizetype from, qsizetype length, qsizetype end);
    void processEmphasis(int bottom);
    bool canPair(const Delimiter &opener, const Delimiter &closer) const;
    void unlink(int delimiter);
    void appendText(QStringView text);
    int addPiece(Piece piece);
    char32_t codePointBefore(qsizetype pos) const;
    char32_t codePointAt(qsizetype pos) const;
    StyledText assemble() const;

    QStringView m_source;
    std::vector<Piece> m_pieces;
    std::vector<Delimiter> m_delimiters;
    int m_lastDelimiter = -1;
    std::vector<Bracket> m_brackets;
    // Link openers below this index of m_brackets are inactive: a link may
    // not contain another link.
    size_t m_firstActiveLinkOpener = 0;
    QHash<qsizetype, BacktickRuns> m_backtickRuns;
};

InlineParser::InlineParser(const QString &source)
    : m_source(source)
{
    for (qsizetype i = 0; i < m_source.size();) {
        if (m_source[i] != u'`') {
            ++i;
            continue;
        }
        const qsizetype start = i;
        while (i < m_source.size() && m_source[i] == u'`')
            ++i;
        m_backtickRuns[i - start].starts.append(start);
    }
}

StyledText InlineParser::run()
{
    // A blank line closes everything still open, as a paragraph break does;
    // the blank line itself is kept as text.
    const qsizetype size = m_source.size();
    qsizetype paragraphStart = 0;
    qsizetype lineStart = 0;
    while (lineStart < size) {
        qsizetype lineEnd = lineStart;
        bool blank = true;
        while (lineEnd < size && !isLineEnding(m_source[lineEnd].unicode())) {
            blank = blank && isSpaceOrTab(m_source[lineEnd].unicode());
            ++lineEnd;
        }
        qsizetype next = lineEnd;
        if (next < size)
            next += m_source[next] == u'\r' && next + 1 < size && m_source[next + 1] == u'\n' ? 2 : 1;
        if (blank) {
            parseParagraph(paragraphStart, lineStart);
            appendText(m_source.sliced(lineStart, next - lineStart));
            paragraphStart = next;
        }
        lineStart = next;
    }
    parseParagraph(paragraphStart, size);
    return assemble();
}

void InlineParser::parseParagraph(qsizetype begin, qsizetype end)
{
    const QStringView source = m_source.first(end);
    qsizetype pos = begin;
    while (pos < end) {
        const char16_t c = source[pos].unicode();
        switch (c) {
        case u'\\':
            if (pos + 1 < end && isAsciiPunctuation(source[pos + 1].unicode())) {
                appendText(source.sliced(pos + 1, 1));
                pos += 2;
            } else if (pos + 1 < end && isLineEnding(source[pos + 1].unicode())) {
                ++pos;  // a hard line break: the line ending that follows is the break
            } else {
                appendText(source.sliced(pos, 1));
                ++pos;
            }
            break;
        case u'`':
            parseCodeSpan(pos, end);
            break;
        case u'*':
        case u'_':
        case u'~':
            parseDelimiterRun(pos);
            break;
        case u'[':
            openBracket(false);
            ++pos;
            break;
        case u'!':
            if (pos + 1 < end && source[pos + 1] == u'[') {
                openBracket(true);
                pos += 2;
            } else {
                appendText(source.sliced(pos, 1));
                ++pos;
            }
            break;
        case u']':
            closeBracket(pos, end);
            break;
        case u'<':
            if (!parseAutolink(pos, end)) {
                appendText(source.sliced(pos, 1));
                ++pos;
            }
            break;
        case u'&': {
            QString decoded;
            if (const qsizetype length = characterReference(source, pos, &decoded)) {
                appendText(decoded);
                pos += length;
            } else {
                appendText(source.sliced(pos, 1));
                ++pos;
            }
            break;
        }
        default: {
            qsizetype stop = pos + 1;
            while (stop < end && !mayStartSyntax(source[stop].unicode()))
                ++stop;
            appendText(source.sliced(pos, stop - pos));
            pos = stop;
            break;
        }
        }
    }
    finishParagraph();
}

void InlineParser::finishParagraph()
{
    processEmphasis(-1);
    m_brackets.clear();
    m_firstActiveLinkOpener = 0;
}

void InlineParser::parseCodeSpan(qsizetype &pos, qsizetype end)
{
    qsizetype runEnd = pos;
    while (runEnd < end && m_source[runEnd] == u'`')
        ++runEnd;
    const qsizetype length = runEnd - pos;
    const qsizetype closer = closingBackticks(runEnd, length, end);
    if (closer < 0) {
        appendText(m_source.sliced(pos, length));
        pos = runEnd;
        return;
    }
    QString content = m_source.sliced(runEnd, closer - runEnd).toString();
    content.replace(QStringLiteral("\r\n"), QStringLiteral(" "));
    content.replace(u'\r', u' ');
    content.replace(u'\n', u' ');
    const bool allSpaces = std::all_of(content.cbegin(), content.cend(), [](QChar c) { return c == u' '; });
    if (!allSpaces && content.startsWith(u' ') && content.endsWith(u' '))
        content = content.sliced(1, content.size() - 2);
    Piece piece;
    piece.text = content;
    piece.code = true;
    addPiece(std::move(piece));
    pos = closer + length;
}

qsizetype InlineParser::closingBackticks(qsizetype from, qsizetype length, qsizetype end)
{
    const auto found = m_backtickRuns.find(length);
    if (found == m_backtickRuns.end())
        return -1;
    BacktickRuns &runs = *found;
    while (runs.passed < runs.starts.size() && runs.starts[runs.passed] < from)
        ++runs.passed;
    if (runs.passed < runs.starts.size() && runs.starts[runs.passed] < end)
        return runs.starts[runs.passed];
    return -1;
}

void InlineParser::parseDelimiterRun(qsizetype &pos)
{
    const char16_t mark = m_source[pos].unicode();
    const qsizetype start = pos;
    qsizetype runEnd = pos;
    while (runEnd < m_source.size() && m_source[runEnd] == mark)
        ++runEnd;
    const qsizetype length = runEnd - start;
    const QStringView run = m_source.sliced(start, length);
    pos = runEnd;
    if (mark == u'~' && length != 2) {
        appendText(run);
        return;
    }

    // The start and end of the text count as whitespace.
    const char32_t before = start > 0 ? codePointBefore(start) : U'\n';
    const char32_t after = runEnd < m_source.size() ? codePointAt(runEnd) : U'\n';
    const bool spaceBefore = isUnicodeWhitespace(before);
    const bool spaceAfter = isUnicodeWhitespace(after);
    const bool punctuationBefore = isUnicodePunctuation(before);
    const bool punctuationAfter = isUnicodePunctuation(after);
    const bool leftFlanking = !spaceAfter && (!punctuationAfter || spaceBefore || punctuationBefore);
    const bool rightFlanking = !spaceBefore && (!punctuationBefore || spaceAfter || punctuationAfter);

    Delimiter delimiter;
    delimiter.mark = mark;
    delimiter.count = length;
    delimiter.length = length;
    if (mark == u'_') {
        // An underscore inside a word neither opens nor closes.
        delimiter.canOpen = leftFlanking && (!rightFlanking || punctuationBefore);
        delimiter.canClose = rightFlanking && (!leftFlanking || punctuationAfter);
    } else {
        delimiter.canOpen = leftFlanking;
        delimiter.canClose = rightFlanking;
    }
    if (!delimiter.canOpen && !delimiter.canClose) {
        appendText(run);
        return;
    }
    const int index = int(m_delimiters.size());
    Piece piece;
    piece.delimiter = index;
    delimiter.piece = addPiece(std::move(piece));
    delimiter.previous = m_lastDelimiter;
    if (m_lastDelimiter >= 0)
        m_delimiters[m_lastDelimiter].next = index;
    m_lastDelimiter = index;
    m_delimiters.push_back(delimiter);
}

void InlineParser::openBracket(bool image)
{
    Piece piece;
    piece.text = image ? QStringLiteral("![") : QStringLiteral("[");
    const int index = addPiece(std::move(piece));
    m_brackets.push_back({index, m_lastDelimiter, image});
}

void InlineParser::closeBracket(qsizetype &pos, qsizetype end)
{
    if (m_brackets.empty()) {
        appendText(u"]");
        ++pos;
        return;
    }
    const Bracket opener = m_brackets.back();
    const bool active = opener.image || m_brackets.size() - 1 >= m_firstActiveLinkOpener;
    m_brackets.pop_back();
    m_firstActiveLinkOpener = qMin(m_firstActiveLinkOpener, m_brackets.size());
    const std::optional<LinkTail> tail = active ? parseLinkTail(pos + 1, end) : std::nullopt;
    if (!tail) {
        appendText(u"]");
        ++pos;
        return;
    }
    if (opener.image) {
        // Images are not shown; the whole image stays as written.
        appendText(m_source.sliced(pos, tail->end - pos));
        pos = tail->end;
        return;
    }
    processEmphasis(opener.delimiterBottom);
    m_pieces[opener.piece].text.clear();
    for (size_t i = opener.piece + 1; i < m_pieces.size(); ++i) {
        if (!m_pieces[i].link)  // an autolink in the label keeps its own target
            m_pieces[i].link = tail->target;
    }
    m_pieces.back().extensible = false;
    m_firstActiveLinkOpener = m_brackets.size();
    pos = tail->end;
}

qsizetype InlineParser::skipSpacesAndOneLineEnding(qsizetype pos, qsizetype end) const
{
    while (pos < end && isSpaceOrTab(m_source[pos].unicode()))
        ++pos;
    if (pos < end && isLineEnding(m_source[pos].unicode())) {
        pos += m_source[pos] == u'\r' && pos + 1 < end && m_source[pos + 1] == u'\n' ? 2 : 1;
        while (pos < end && isSpaceOrTab(m_source[pos].unicode()))
            ++pos;
    }
    return pos;
}

// Parses "(target "title")" right after a closing bracket.
std::optional<LinkTail> InlineParser::parseLinkTail(qsizetype pos, qsizetype end) const
{
    const QStringView s = m_source;
    if (pos >= end || s[pos] != u'(')
        return std::nullopt;
    qsizetype i = skipSpacesAndOneLineEnding(pos + 1, end);
    LinkTail tail;
    if (i < end && s[i] == u'<') {
        qsizetype j = i + 1;
        while (j < end && s[j] != u'>') {
            const char16_t c = s[j].unicode();
            if (isLineEnding(c) || c == u'<')
                return std::nullopt;
            j += c == u'\\' && j + 1 < end && isAsciiPunctuation(s[j + 1].unicode()) ? 2 : 1;
        }
        if (j >= end)
            return std::nullopt;
        tail.target = resolvedTarget(s.sliced(i + 1, j - i - 1));
        i = j + 1;
    } else {
        qsizetype j = i;
        int depth = 0;
        while (j < end) {
            const char16_t c = s[j].unicode();
            if (c == u'\\' && j + 1 < end && isAsciiPunctuation(s[j + 1].unicode())) {
                j += 2;
                continue;
            }
            if (c == u' ' || isAsciiControl(c))
                break;
            if (c == u'(' && ++depth > maxTargetParenDepth)
                return std::nullopt;
            if (c == u')') {
                if (depth == 0)
                    break;
                --depth;
            }
            ++j;
        }
        if (depth != 0)
            return std::nullopt;
        tail.target = resolvedTarget(s.sliced(i, j - i));
        i = j;
    }

    const qsizetype afterTarget = i;
    i = skipSpacesAndOneLineEnding(i, end);
    if (i > afterTarget && i < end && (s[i] == u'"' || s[i] == u'\'' || s[i] == u'(')) {
        // The title is checked but not kept: styled text has nowhere to show it.
        const QChar closing = s[i] == u'(' ? QChar(u')') : s[i];
        const bool parenthesised = s[i] == u'(';
        qsizetype j = i + 1;
        while (j < end && s[j] != closing) {
            if (parenthesised && s[j] == u'(')
                return std::nullopt;
            j += s[j] == u'\\' && j + 1 < end && isAsciiPunctuation(s[j + 1].unicode()) ? 2 : 1;
        }
        if (j >= end)
            return std::nullopt;
        i = skipSpacesAndOneLineEnding(j + 1, end);
    }
    if (i >= end || s[i] != u')')
        return std::nullopt;
    tail.end = i + 1;
    return tail;
}

bool InlineParser::parseAutolink(qsizetype &pos, qsizetype end)
{
    const QStringView s = m_source;
    const qsizetype start = pos + 1;
    QString target;
    qsizetype close = -1;

    // <scheme:anything-but-spaces-and-angle-brackets>
    if (start < end && isAsciiAlpha(s[start].unicode())) {
        qsizetype i = start + 1;
        while (i < end && i - start <= maxSchemeLength) {
            const char16_t c = s[i].unicode();
            if (!isAsciiAlnum(c) && c != u'+' && c != u'.' && c != u'-')
                break;
            ++i;
        }
        if (i - start >= 2 && i - start <= maxSchemeLength && i < end && s[i] == u':') {
            ++i;
            while (i < end && s[i] != u'>' && s[i] != u'<' && s[i] != u' ' && !isAsciiControl(s[i].unicode()))
                ++i;
            if (i < end && s[i] == u'>') {
                close = i;
                target = s.sliced(start, i - start).toString();
            }
        }
    }

    // <local@domain.labels>
    if (close < 0) {
        qsizetype i = start;
        while (i < end && isEmailLocalCharacter(s[i].unicode()))
            ++i;
        if (i == start || i >= end || s[i] != u'@')
            return false;
        ++i;
        for (;;) {
            const qsizetype labelStart = i;
            if (i >= end || !isAsciiAlnum(s[i].unicode()))
                return false;
            while (i < end && i - labelStart < maxDomainLabelLength
                   && (isAsciiAlnum(s[i].unicode()) || s[i] == u'-'))
                ++i;
            if (s[i - 1] == u'-')
                return false;
            if (i < end && s[i] == u'.') {
                ++i;
                continue;
            }
            break;
        }
        if (i >= end || s[i] != u'>')
            return false;
        close = i;
        target = QStringLiteral("mailto:") + s.sliced(start, i - start).toString();
    }

    Piece piece;
    piece.text = s.sliced(start, close - start).toString();
    piece.link = target;
    addPiece(std::move(piece));
    pos = close + 1;
    return true;
}

bool InlineParser::canPair(const Delimiter &opener, const Delimiter &closer) const
{
    if (opener.mark != closer.mark || !opener.canOpen)
        return false;
    if (closer.mark == u'~')
        return true;
    // A run that can both open and close pairs only when the lengths do
    // not add up to a multiple of 3, unless both are multiples of 3.
    const bool eitherBoth = opener.canClose || closer.canOpen;
    return !(eitherBoth && (opener.length + closer.length) % 3 == 0
             && !(opener.length % 3 == 0 && closer.length % 3 == 0));
}

// Pairs the delimiters above `bottom` and removes them from the stack.
void InlineParser::processEmphasis(int bottom)
{
    int current = -1;
    for (int d = m_lastDelimiter; d > bottom; d = m_delimiters[size_t(d)].previous)
        current = d;

    // Per kind of closer (mark, can it open, length mod 3): the delimiter at
    // or below which no opener for it exists. Keeps the pairing linear.
    std::array<int, 18> openersBottom;
    openersBottom.fill(bottom);

    while (current >= 0) {
        Delimiter &closer = m_delimiters[size_t(current)];
        if (!closer.canClose) {
            current = closer.next;
            continue;
        }
        const int markIndex = closer.mark == u'*' ? 0 : closer.mark == u'_' ? 1 : 2;
        int &floor = openersBottom[size_t(markIndex * 6 + (closer.canOpen ? 3 : 0) + closer.length % 3)];
        int opener = closer.previous;
        while (opener > bottom && opener > floor && !canPair(m_delimiters[size_t(opener)], closer))
            opener = m_delimiters[size_t(opener)].previous;

        if (opener <= bottom || opener <= floor) {
            floor = closer.previous;
            const int next = closer.next;
            if (!closer.canOpen)
                unlink(current);
            current = next;
            continue;
        }

        Delimiter &open = m_delimiters[size_t(opener)];
        const int used = closer.mark == u'~' || (open.count >= 2 && closer.count >= 2) ? 2 : 1;
        Piece &first = m_pieces[size_t(open.piece + 1)];
        Piece &last = m_pieces[size_t(closer.piece)];
        if (closer.mark == u'~') {
            ++first.strikethroughDelta;
            --last.strikethroughDelta;
        } else if (used == 2) {
            ++first.strongDelta;
            --last.strongDelta;
        } else {
            ++first.emphasisDelta;
            --last.emphasisDelta;
        }
        for (int d = closer.previous; d != opener;) {
            const int previous = m_delimiters[size_t(d)].previous;
            unlink(d);
            d = previous;
        }
        open.count -= used;
        closer.count -= used;
        if (open.count == 0)
            unlink(opener);
        if (closer.count == 0) {
            const int next = closer.next;
            unlink(current);
            current = next;
        }
    }
    while (m_lastDelimiter > bottom)
        unlink(m_lastDelimiter);
}

void InlineParser::unlink(int delimiter)
{
    const Delimiter &d = m_delimiters[size_t(delimiter)];
    if (d.previous >= 0)
        m_delimiters[size_t(d.previous)].next = d.next;
    if (d.next >= 0)
        m_delimiters[size_t(d.next)].previous = d.previous;
    else
        m_lastDelimiter = d.previous;
}

void InlineParser::appendText(QStringView text)
{
    if (text.isEmpty())
        return;
    if (!m_pieces.empty() && m_pieces.back().extensible) {
        m_pieces.back().text += text;
        return;
    }
    Piece piece;
    piece.text = text.toString();
    piece.extensible = true;
    addPiece(std::move(piece));
}

int InlineParser::addPiece(Piece piece)
{
    m_pieces.push_back(std::move(piece));
    return int(m_pieces.size() - 1);
}

char32_t InlineParser::codePointBefore(qsizetype pos) const
{
    const QChar c = m_source[pos - 1];
    if (c.isLowSurrogate() && pos >= 2 && m_source[pos - 2].isHighSurrogate())
        return QChar::surrogateToUcs4(m_source[pos - 2], c);
    return c.unicode();
}

char32_t InlineParser::codePointAt(qsizetype pos) const
{
    const QChar c = m_source[pos];
    if (c.isHighSurrogate() && pos + 1 < m_source.size() && m_source[pos + 1].isLowSurrogate())
        return QChar::surrogateToUcs4(c, m_source[pos + 1]);
    return c.unicode();
}

StyledText InlineParser::assemble() const
{
    StyledText out;
    int strong = 0;
    int emphasis = 0;
    int strikethrough = 0;
    for (const Piece &piece : m_pieces) {
        strong += piece.strongDelta;
        emphasis += piece.emphasisDelta;
        strikethrough += piece.strikethroughDelta;
        const QString text = piece.delimiter >= 0
            ? QString(m_delimiters[size_t(piece.delimiter)].count, QChar(m_delimiters[size_t(piece.delimiter)].mark))
            : piece.text;
        if (text.isEmpty())
            continue;
        TextStyle style;
        style.strong = strong > 0;
        style.emphasis = emphasis > 0;
        style.strikethrough = strikethrough > 0;
        style.monospace = piece.code;
        style.link = piece.link;
        if (style != TextStyle()) {
            if (!out.runs.isEmpty() && out.runs.last().style == style
                && out.runs.last().start + out.runs.last().length == out.text.size())
                out.runs.last().length += text.size();
            else
                out.runs.append({out.text.size(), text.size(), style});
        }
        out.text += text;
    }
    return out;
}

} // namespace

StyledText markdown(const QString &text)
{
    return InlineParser(text).run();
}

} // namespace Kestrun
