#include "highlight/highlighter.h"

#include <QRandomGenerator>
#include <QRegularExpression>
#include <QTest>

using namespace Kestrun;

using namespace Qt::Literals::StringLiterals;
using Highlighter::Span;
using Highlighter::Token;

namespace {

// "k:let|p: |s:\"a\"": each token as its kind's letter and its text.
QString render(const QString &text, const QList<Span> &spans)
{
    QStringList parts;
    for (const Span &span : spans)
        parts << QChar(u"ksnctfap"[int(span.kind)]) + u':' + text.mid(span.start, span.length);
    return parts.join(u'|');
}

// The seven patterns as one alternation in rule order, one group each, matched
// at the cursor: none matches empty text, so the group that matched is the first
// rule that matches. PCRE2 rejects a lone surrogate; every rule treats one like
// a character that is neither a newline nor an ASCII word character, so U+FFFD
// stands in. Each token starts where the last ended: the tokens cover the text.
QList<Span> referenceTokens(QString text)
{
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i].isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate())
            ++i;
        else if (text[i].isSurrogate())
            text[i] = QChar::ReplacementCharacter;
    }
    static const QRegularExpression rules(uR"re((\/\/[^\n]*))re"
                                          uR"re(|(\/\*[\s\S]*?(?:\*\/|$)))re"
                                          uR"re(|("""[\s\S]*?(?:"""|$)))re"
                                          uR"re(|("(?:[^"\\\n]|\\.)*"?))re"
                                          uR"re(|((?:0x[0-9a-fA-F_]+|0b[01_]+|\d[\d_]*(?:\.\d[\d_]*)?(?:e[+-]?\d+)?)))re"
                                          uR"re(|([@#][A-Za-z_]\w*))re"
                                          uR"re(|([A-Za-z_]\w*))re"_s);
    // No rule, then rules 1 to 7; rule 7 is a word, classified below.
    const Token kinds[] = {Token::plain, Token::comment, Token::comment, Token::string, Token::string,
                           Token::number, Token::attribute, Token::plain};
    QList<Span> spans;
    for (qsizetype i = 0; i < text.size(); i += spans.last().length) {
        const auto match = rules.match(text, i, QRegularExpression::NormalMatch,
            QRegularExpression::AnchorAtOffsetMatchOption | QRegularExpression::DontCheckSubjectStringMatchOption);
        const int rule = std::max(match.lastCapturedIndex(), 0);
        Span span{i, rule ? match.capturedLength() : text[i].isHighSurrogate() ? 2 : 1, kinds[rule]};
        if (rule == 7) {
            const QString word = match.captured();
            qsizetype after = match.capturedEnd();
            while (after < text.size() && text[after] == u' ')
                ++after;
            span.kind = Highlighter::keywords().contains(word) ? Token::keyword
                : word.front().isUpper()                     ? Token::type
                : after < text.size() && text[after] == u'(' ? Token::call
                                                             : Token::plain;
        }
        spans.append(span);
    }
    return spans;
}

const QStringList swiftFragments = {
    u"var count: Int = 0x1F_FF + 0b1010 - 1_000\n"_s,
    u"let pi = 3.14159, tiny = 6e-3, big = 1E5, odd = 1.e2\n"_s,
    u"func greet(_ name: String, times: Int = 2) -> String {\n\treturn \"Hi \\(name)!\"\n}\n"_s,
    u"// A line comment with \"quotes\" and /* an opener\n"_s,
    u"/* block /* not nested */ */\n/** Documentation\n * - Parameter x: the value\n */\n"_s,
    u"let poem = \"\"\"\n    Roses are \"red\",\n    \\(flower) is blue\n    \"\"\"\n"_s,
    u"let path = \"C:\\\\temp\\\\\" + \"a\\\"quoted\\\" word\"\n"_s,
    u"@MainActor final class ViewModel: ObservableObject {\n    @Published var items: [String] = []\n}\n"_s,
    u"#if DEBUG\nprint(#file, #line)\n#endif\n"_s,
    u"switch value {\ncase .some(let v) where v > 10: break\ndefault: fallthrough\n}\n"_s,
    u"if (a && b) || !c { init (x: 1) }\nself.value = Self.zero\n"_s,
    u"let café = \"naïve ☕️ 😀\"; let π = 3.14; let é1 = π2\n"_s,
    u"_ = _privateHelper ()\nlet x1y2 = x1 +y2\n"_s,
    u"let raw = #\"no \\(escape) here\"#\n"_s,
    u"let unterminated = \"oops\nlet after = 1\n"_s,
    u"do {\n    try risky()\n} catch let error as NSError {\n    print(error)\n}\r\n"_s,
    u"0x 0b2 0xG 1e 1e+ 1.5.2 12abc 0b_1 0x_\n"_s,
    u"@ # @1 #2 @_x #if\t(\n"_s,
};

// Whole fragments, then cut or spliced so that comments, strings and numbers
// also end where no fragment ends them.
QString swiftSample(QRandomGenerator &rng)
{
    const auto fragment = [&rng] { return swiftFragments.at(rng.bounded(int(swiftFragments.size()))); };
    QString text;
    for (int parts = rng.bounded(1, 12); parts > 0; --parts)
        text += fragment();
    const qsizetype at = rng.bounded(text.size() + 1);
    return rng.bounded(2) ? text.left(at) : text.insert(at, fragment().left(rng.bounded(20)));
}

// Mostly characters that start or end a rule, with NUL, surrogates, and
// non-ASCII letters and digits that \w and \d must not take.
QString randomText(QRandomGenerator &rng)
{
    static const QString alphabet = u"/*\"\\\n\r\t (@#0123xbeEf.+-_aZS\0\u00e9\u00aa\u0663\u00b2\U0001F600\xD800\xDC00"_s;
    QString text;
    for (int length = rng.bounded(300); length > 0; --length)
        text += rng.bounded(8) == 0 ? QChar(char16_t(rng.bounded(0x10000))) : alphabet.at(rng.bounded(int(alphabet.size())));
    return text;
}

} // namespace

class TestHighlighter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void tokens_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");
        const auto row = [](const char *name, const QString &text, const QString &expected) {
            QTest::newRow(name) << text << expected;
        };
        row("empty", u""_s, u""_s);
        row("slashes in a string", u"let url = \"http://x\""_s, u"k:let|p: |p:url|p: |p:=|p: |s:\"http://x\""_s);
        row("comments", u"// say \"hi\"\n/* a /* b */ c */"_s, u"c:// say \"hi\"|p:\n|c:/* a /* b */|p: |p:c|p: |p:*|p:/"_s);
        row("unterminated block comment", u"/* open\nstill"_s, u"c:/* open\nstill"_s);
        row("unterminated multi-line string", u"\"\"\"\nabc\n\n"_s, u"s:\"\"\"\nabc\n|p:\n"_s);
        row("unterminated string ends at the line", u"\"abc\nlet"_s, u"s:\"abc|p:\n|k:let"_s);
        row("escapes and interpolation", u"\"a \\\"b\\\" c\"d\"\\(f(b))\""_s, u"s:\"a \\\"b\\\" c\"|p:d|s:\"\\(f(b))\""_s);
        row("numbers", u"0x1F_FF 0b1010 1_000 3.14 6e-3 1. 1E5"_s,
            u"n:0x1F_FF|p: |n:0b1010|p: |n:1_000|p: |n:3.14|p: |n:6e-3|p: |n:1|p:.|p: |n:1|t:E5"_s);
        row("attributes", u"@MainActor #if @ # @1"_s, u"a:@MainActor|p: |a:#if|p: |p:@|p: |p:#|p: |p:@|n:1"_s);
        row("types and calls", u"Foo(x) foo (1) if (a) bar\t(b) baz\n(c) qux"_s,
            u"t:Foo|p:(|p:x|p:)|p: |f:foo|p: |p:(|n:1|p:)|p: |k:if|p: |p:(|p:a|p:)|p: "
            u"|p:bar|p:\t|p:(|p:b|p:)|p: |p:baz|p:\n|p:(|p:c|p:)|p: |p:qux"_s);
        row("keywords", u"init(x) self Self SELF true nil set get some"_s,
            u"k:init|p:(|p:x|p:)|p: |k:self|p: |k:Self|p: |t:SELF|p: |k:true|p: |k:nil|p: |k:set|p: |k:get|p: |k:some"_s);
        row("underscores and digits", u"_Foo _bar() x1 x1y2"_s, u"p:_Foo|p: |f:_bar|p:(|p:)|p: |p:x1|p: |p:x1y2"_s);
        row("non-ASCII letters and digits", u"\u00e9crit x\u0663 \u00b2"_s, u"p:\u00e9|p:crit|p: |p:x|p:\u0663|p: |p:\u00b2"_s);
        row("surrogates and NUL", u"\U0001F600a\xD800" u"b\xDC00" u"\0\"\0\""_s,
            u"p:\U0001F600|p:a|p:\xD800" u"|p:b|p:\xDC00" u"|p:\0|s:\"\0\""_s);
    }

    void tokens()
    {
        QFETCH(QString, text);
        QFETCH(QString, expected);
        const QList<Span> spans = Highlighter::tokens(text);
        QCOMPARE(render(text, spans), expected);
        QCOMPARE(spans, referenceTokens(text));
    }

    // Far longer than any corpus sample: a scanner that copies the rest of the
    // text per token does not finish, a regular expression may run out of stack.
    void longInput()
    {
        const qsizetype n = 1'000'000;
        QCOMPARE(Highlighter::tokens(u'"' + QString(n, u'a')), (QList<Span>{{0, n + 1, Token::string}}));
        QList<Span> singles(n + 2); // one plain token per character
        for (qsizetype i = 0; i < singles.size(); ++i)
            singles[i] = {i, 1, Token::plain};
        QCOMPARE(Highlighter::tokens(QString(n + 2, QChar(0))), singles);
        singles[0].kind = Token::call;
        QCOMPARE(Highlighter::tokens(u'f' + QString(n, u' ') + u'('), singles);
    }

    // The scanner against the patterns themselves, on Swift snippets and on
    // random text, with a fixed seed so that a failure reproduces.
    void matchesReference()
    {
        QRandomGenerator rng(20240611u);
        for (int sample = 0; sample < 8000; ++sample) {
            const QString text = sample % 2 ? randomText(rng) : swiftSample(rng);
            const QList<Span> actual = Highlighter::tokens(text), expected = referenceTokens(text);
            if (actual != expected)
                QFAIL(qPrintable(QStringLiteral("sample %1:\n%2\nscanner:   %3\nreference: %4")
                                     .arg(sample).arg(text, render(text, actual), render(text, expected))));
        }
    }

    // The keyword list as the language reference gives it, written out here
    // rather than taken from the code under test.
    void keywords()
    {
        const QString reference = u"actor any associatedtype async await break case catch class consume continue "
                                  u"convenience default defer deinit didSet do dynamic else enum extension fallthrough "
                                  u"false fileprivate final for func get guard if import in indirect infix init inout "
                                  u"internal is isolated lazy let mutating nil nonisolated nonmutating open operator "
                                  u"optional override package postfix precedencegroup prefix private protocol public "
                                  u"repeat required rethrows return self Self set some static struct subscript super "
                                  u"switch throw throws true try typealias unowned var weak where while willSet "
                                  u"borrowing consuming sending"_s;
        QCOMPARE(reference.size(), 588);
        const QStringList words = reference.split(u' ', Qt::SkipEmptyParts);
        QCOMPARE(words.size(), 83);
        QCOMPARE(Highlighter::keywords(), QSet<QString>(words.cbegin(), words.cend()));
        for (const QString &word : words) {
            QCOMPARE(render(word, Highlighter::tokens(word)), u"k:"_s + word);
            QCOMPARE(Highlighter::tokens(word + u'x').constFirst().kind, word == u"Self" ? Token::type : Token::plain);
        }
    }

    void attributed()
    {
        QVERIFY(Highlighter::attributed(QString()) == StyledText{});
        const auto run = [](qsizetype start, qsizetype length, quint32 rgb, bool keyword = false) {
            const Rgb color{quint8(rgb >> 16), quint8(rgb >> 8), quint8(rgb)};
            return StyledRun{start, length, TextStyle{.monospace = keyword, .semibold = keyword, .link = {}, .color = color}};
        };
        const QString text = u"let s = \"x\" // c\n@objc T(1) f()"_s;
        const QList<StyledRun> runs{run(0, 3, 0xFF7AB2, true), run(8, 3, 0xFF8170), run(12, 4, 0x7F8C98),
                                    run(17, 5, 0xFD8F3F), run(23, 1, 0x5DD8FF), run(25, 1, 0xD9C97C), run(28, 1, 0x67B7A4)};
        QVERIFY(Highlighter::attributed(text) == (StyledText{text, runs}));
        QVERIFY(!Highlighter::color(Token::plain));
    }
};

QTEST_APPLESS_MAIN(TestHighlighter)
#include "tst_highlighter.moc"
