#pragma once

#include "course/styledtext.h"

#include <QHashFunctions>
#include <QTypeInfo>
#include <QList>
#include <QSet>
#include <QString>

#include <optional>

namespace Kestrun {

// Lexical Swift highlighting for the code editor and for code listings in
// lesson text. It knows nothing of scopes or the compiler and never fails:
// whatever it does not recognise is plain.
namespace Highlighter {

enum class Token { keyword, string, number, comment, type, call, attribute, plain };

inline size_t qHash(Token kind, size_t seed = 0) noexcept
{
    return ::qHash(int(kind), seed);
}

// A token's range in UTF-16 offsets of the tokenised QString, so editors and
// text layouts can apply it directly.
struct Span {
    qsizetype start = 0;
    qsizetype length = 0;
    Token kind = Token::plain;
    friend bool operator==(const Span &, const Span &) = default;
};

// The tokens of the text in order, never empty, without gap or overlap: they
// cover every code unit exactly once. A character that no rule recognises is
// a plain token of its own (a surrogate pair stays together).
QList<Span> tokens(const QString &text);

// The kind's colour on the editor's dark background; nothing for plain.
std::optional<Rgb> color(Token kind);

// The text with one run per non-plain token: its colour, and for keywords a
// semibold monospaced face. Plain text carries no run.
StyledText attributed(const QString &text);

// The 83 Swift keywords, matched exactly and case-sensitively.
const QSet<QString> &keywords();

} // namespace Highlighter

} // namespace Kestrun

// Lets the token list grow by realloc instead of copying span by span.
Q_DECLARE_TYPEINFO(Kestrun::Highlighter::Span, Q_RELOCATABLE_TYPE);
