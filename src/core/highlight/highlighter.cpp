#include "highlighter.h"

#include <array>

namespace Kestrun {

// A hand-written scanner: one forward pass with no allocation besides the
// result, because the editor re-tokenises its whole text on every keystroke.
// Each rule is the anchored match of a regular expression:
//   1  //[^\n]*                              comment
//   2  /\*[\s\S]*?(?:\*/|$)                  comment
//   3  """[\s\S]*?(?:"""|$)                  string
//   4  "(?:[^"\\\n]|\\.)*"?                  string
//   5  0x[0-9a-fA-F_]+ | 0b[01_]+ | \d[\d_]*(?:\.\d[\d_]*)?(?:e[+-]?\d+)?   number
//   6  [@#][A-Za-z_]\w*                      attribute
//   7  [A-Za-z_]\w*                          word: keyword, type, call or plain
// tried in this order; the first non-empty match wins, otherwise one character
// is plain. \w and \d are ASCII only, and $ is PCRE's: the end of the text or
// just before a newline that ends it. The rules start with distinct
// characters, so the first character picks the only rule that can match.

namespace Highlighter {

namespace {

constexpr char16_t keywordText[] =
    u"actor any associatedtype async await break case catch class consume continue "
    u"convenience default defer deinit didSet do dynamic else enum extension fallthrough "
    u"false fileprivate final for func get guard if import in indirect infix init inout "
    u"internal is isolated lazy let mutating nil nonisolated nonmutating open operator "
    u"optional override package postfix precedencegroup prefix private protocol public "
    u"repeat required rethrows return self Self set some static struct subscript super "
    u"switch throw throws true try typealias unowned var weak where while willSet "
    u"borrowing consuming sending";

QList<QStringView> keywordViews()
{
    return QStringView(keywordText).split(u' ', Qt::SkipEmptyParts);
}

// Open addressing over views into keywordText: a word is looked up without
// building a QString for it.
class KeywordTable
{
public:
    KeywordTable()
    {
        for (QStringView keyword : keywordViews()) {
            m_longest = std::max(m_longest, keyword.size());
            size_t slot = hash(keyword);
            while (!m_slots[slot].isNull() && m_slots[slot] != keyword)
                slot = (slot + 1) & mask;
            m_slots[slot] = keyword;
        }
    }

    bool contains(QStringView word) const
    {
        if (word.size() > m_longest)
            return false;
        for (size_t slot = hash(word);; slot = (slot + 1) & mask) {
            const QStringView entry = m_slots[slot];
            if (entry.isNull())
                return false;
            if (entry.size() == word.size() && entry.front() == word.front() && entry == word)
                return true;
        }
    }

private:
    static constexpr size_t mask = 255; // well above twice the 83 keywords

    static size_t hash(QStringView word)
    {
        size_t h = size_t(word.size());
        for (QChar c : word)
            h = h * 33 + c.unicode();
        return (h ^ (h >> 8)) & mask;
    }

    std::array<QStringView, mask + 1> m_slots{};
    qsizetype m_longest = 0;
};

const KeywordTable &keywordTable()
{
    static const KeywordTable table;
    return table;
}

enum CharClass : quint8 {
    wordStart = 1,  // [A-Za-z_]
    wordChar = 2,   // \w
    digit = 4,      // \d
    digitRun = 8,   // [\d_]
    hexRun = 16,    // [0-9a-fA-F_]
    binaryRun = 32, // [01_]
};

constexpr std::array<quint8, 128> makeClasses()
{
    std::array<quint8, 128> classes{};
    for (char16_t c = 0; c < 128; ++c) {
        const bool upper = c >= 'A' && c <= 'Z';
        const bool lower = c >= 'a' && c <= 'z';
        const bool dec = c >= '0' && c <= '9';
        const bool under = c == '_';
        quint8 k = 0;
        if (upper || lower || under)
            k |= wordStart;
        if (upper || lower || under || dec)
            k |= wordChar;
        if (dec)
            k |= digit;
        if (dec || under)
            k |= digitRun;
        if (dec || under || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F'))
            k |= hexRun;
        if (c == '0' || c == '1' || under)
            k |= binaryRun;
        classes[c] = k;
    }
    return classes;
}

constexpr std::array<quint8, 128> charClasses = makeClasses();

inline bool isA(char16_t c, CharClass cls)
{
    return c < 128 && (charClasses[c] & cls);
}

class Scanner
{
public:
    explicit Scanner(QStringView text) : m_text(text), m_s(text.utf16()), m_n(text.size()) {}

    QList<Span> run() const
    {
        QList<Span> spans;
        // Swift source averages a few code units per token; growth covers the rest.
        spans.reserve(m_n / 3 + 1);
        qsizetype i = 0;
        while (i < m_n) {
            Token kind = Token::plain;
            qsizetype end = i;
            const char16_t c = m_s[i];
            if (c == u'/') {
                end = comment(i);
                kind = Token::comment;
            } else if (c == u'"') {
                end = stringLiteral(i);
                kind = Token::string;
            } else if (isA(c, digit)) {
                end = number(i);
                kind = Token::number;
            } else if (c == u'@' || c == u'#') {
                if (i + 1 < m_n && isA(m_s[i + 1], wordStart))
                    end = wordEnd(i + 1);
                kind = Token::attribute;
            } else if (isA(c, wordStart)) {
                end = wordEnd(i);
                kind = wordKind(i, end);
            }
            if (end == i) {
                kind = Token::plain;
                end = i + plainLength(i);
            }
            spans.append(Span{i, end - i, kind});
            i = end;
        }
        return spans;
    }

private:
    bool at(qsizetype i, char16_t c) const { return i < m_n && m_s[i] == c; }

    // Where an unterminated construct stops: PCRE's $ also matches before
    // a newline that ends the text.
    qsizetype endOfText(qsizetype from) const
    {
        return m_n > from && m_s[m_n - 1] == u'\n' ? m_n - 1 : m_n;
    }

    qsizetype comment(qsizetype i) const
    {
        if (at(i + 1, u'/')) {
            const qsizetype newline = m_text.indexOf(u'\n', i + 2);
            return newline < 0 ? m_n : newline;
        }
        if (!at(i + 1, u'*'))
            return i;
        for (qsizetype star = m_text.indexOf(u'*', i + 2); star >= 0;
             star = m_text.indexOf(u'*', star + 1)) {
            if (at(star + 1, u'/'))
                return star + 2;
        }
        return endOfText(i + 2);
    }

    qsizetype stringLiteral(qsizetype i) const
    {
        if (at(i + 1, u'"') && at(i + 2, u'"')) {
            for (qsizetype quote = m_text.indexOf(u'"', i + 3); quote >= 0;
                 quote = m_text.indexOf(u'"', quote + 1)) {
                if (at(quote + 1, u'"') && at(quote + 2, u'"'))
                    return quote + 3;
            }
            return endOfText(i + 3);
        }
        qsizetype j = i + 1;
        while (j < m_n) {
            const char16_t c = m_s[j];
            if (c == u'"')
                return j + 1;
            if (c == u'\n')
                break;
            if (c == u'\\') {
                // A backslash escapes anything but a newline; otherwise the
                // literal ends before it.
                if (j + 1 >= m_n || m_s[j + 1] == u'\n')
                    break;
                j += 2;
            } else {
                ++j;
            }
        }
        return j;
    }

    qsizetype number(qsizetype i) const
    {
        if (m_s[i] == u'0' && i + 2 < m_n) {
            if (m_s[i + 1] == u'x' && isA(m_s[i + 2], hexRun))
                return runEnd(i + 3, hexRun);
            if (m_s[i + 1] == u'b' && isA(m_s[i + 2], binaryRun))
                return runEnd(i + 3, binaryRun);
        }
        qsizetype j = runEnd(i + 1, digitRun);
        if (at(j, u'.') && j + 1 < m_n && isA(m_s[j + 1], digit))
            j = runEnd(j + 2, digitRun);
        if (at(j, u'e')) {
            qsizetype k = j + 1;
            if (at(k, u'+') || at(k, u'-'))
                ++k;
            if (k < m_n && isA(m_s[k], digit))
                j = runEnd(k + 1, digit);
        }
        return j;
    }

    qsizetype runEnd(qsizetype j, CharClass cls) const
    {
        while (j < m_n && isA(m_s[j], cls))
            ++j;
        return j;
    }

    qsizetype wordEnd(qsizetype i) const { return runEnd(i + 1, wordChar); }

    Token wordKind(qsizetype start, qsizetype end) const
    {
        if (keywordTable().contains(m_text.sliced(start, end - start)))
            return Token::keyword;
        if (m_s[start] >= u'A' && m_s[start] <= u'Z')
            return Token::type;
        // Only spaces may stand between a called name and its parenthesis.
        while (end < m_n && m_s[end] == u' ')
            ++end;
        return at(end, u'(') ? Token::call : Token::plain;
    }

    qsizetype plainLength(qsizetype i) const
    {
        return QChar::isHighSurrogate(m_s[i]) && i + 1 < m_n && QChar::isLowSurrogate(m_s[i + 1])
            ? 2
            : 1;
    }

    QStringView m_text;
    const char16_t *m_s;
    qsizetype m_n;
};

} // namespace

QList<Span> tokens(const QString &text)
{
    return Scanner(text).run();
}

std::optional<Rgb> color(Token kind)
{
    switch (kind) {
    case Token::keyword:
        return Rgb{255, 122, 178};
    case Token::string:
        return Rgb{255, 129, 112};
    case Token::number:
        return Rgb{217, 201, 124};
    case Token::comment:
        return Rgb{127, 140, 152};
    case Token::type:
        return Rgb{93, 216, 255};
    case Token::call:
        return Rgb{103, 183, 164};
    case Token::attribute:
        return Rgb{253, 143, 63};
    case Token::plain:
        break;
    }
    return std::nullopt;
}

StyledText attributed(const QString &text)
{
    StyledText styled;
    styled.text = text;
    for (const Span &span : tokens(text)) {
        if (span.kind == Token::plain)
            continue;
        StyledRun run{span.start, span.length, {}};
        run.style.color = color(span.kind);
        if (span.kind == Token::keyword) {
            run.style.monospace = true;
            run.style.semibold = true;
        }
        styled.runs.append(run);
    }
    return styled;
}

const QSet<QString> &keywords()
{
    static const QSet<QString> set = [] {
        QSet<QString> words;
        for (QStringView keyword : keywordViews())
            words.insert(keyword.toString());
        return words;
    }();
    return set;
}

} // namespace Highlighter

} // namespace Kestrun
