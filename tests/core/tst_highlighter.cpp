#include "highlighter.h"

#include <QRandomGenerator>
#include <QRegularExpression>
#include <QTest>

#include <string_view>

using namespace std::literals;
using namespace Qt::Literals::StringLiterals;
using Highlighter::Span;
using Highlighter::Token;

namespace {

QString str(std::u16string_view s)
{
    return QStringView(s).toString();
}

// "k:let|p: |s:\"a\"": each token as its kind's letter and its text.
QString render(const QString &text, const QList<Span> &spans)
{
    QStringList parts;
    for (const Span &span : spans)
        parts << QChar(u"ksnctfap"[int(span.kind)]) + u':' + text.mid(span.start, span.length);
    return parts.join(u'|');
}

// Empty when the spans cover the text in order, without gap, overlap or empty token.
QString coverageError(const QString &text, const QList<Span> &spans)
{
    qsizetype end = 0;
    for (const Span &span : spans) {
        if (span.start != end || span.length <= 0)
            return QStringLiteral("bad token at %1 (length %2), expected start %3")
                .arg(span.start).arg(span.length).arg(end);
        end += span.length;
    }
    return end == text.size() ? QString() : QStringLiteral("tokens end at %1 of %2").arg(end).arg(text.size());
}

// The rules as regular expressions, each matched at the cursor. PCRE2 rejects
// text with a lone surrogate; every rule treats one like any other character
// that is neither a newline nor an ASCII word character, so U+FFFD stands in.
QList<Span> referenceTokens(QString text)
{
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i].isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate())
            ++i;
        else if (text[i].isSurrogate())
            text[i] = QChar::ReplacementCharacter;
    }
    static const std::pair<QRegularExpression, Token> rules[] = {
        {QRegularExpression(QString::fromLatin1(R"re(\/\/[^\n]*)re")), Token::comment},
        {QRegularExpression(QString::fromLatin1(R"re(\/\*[\s\S]*?(?:\*\/|$))re")), Token::comment},
        {QRegularExpression(QString::fromLatin1(R"re("""[\s\S]*?(?:"""|$))re")), Token::string},
        {QRegularExpression(QString::fromLatin1(R"re("(?:[^"\\\n]|\\.)*"?)re")), Token::string},
        {QRegularExpression(QString::fromLatin1(
             R"re((?:0x[0-9a-fA-F_]+|0b[01_]+|\d[\d_]*(?:\.\d[\d_]*)?(?:e[+-]?\d+)?))re")), Token::number},
        {QRegularExpression(QString::fromLatin1(R"re([@#][A-Za-z_]\w*)re")), Token::attribute},
        {QRegularExpression(QString::fromLatin1(R"re([A-Za-z_]\w*)re")), Token::plain}, // a word
    };
    QList<Span> spans;
    for (qsizetype i = 0; i < text.size();) {
        Span span{i, 0, Token::plain};
        for (const auto &[pattern, kind] : rules) {
            const auto match = pattern.match(text, i, QRegularExpression::NormalMatch,
                QRegularExpression::AnchorAtOffsetMatchOption | QRegularExpression::DontCheckSubjectStringMatchOption);
            if (match.capturedLength() > 0) {
                span = {i, match.capturedLength(), kind};
                break;
            }
        }
        if (span.length == 0) {
            span.length = text[i].isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate() ? 2 : 1;
        } else if (span.kind == Token::plain) {
            const QStringView word = QStringView(text).sliced(i, span.length);
            QStringView after = QStringView(text).sliced(i + span.length);
            while (after.startsWith(u' '))
                after = after.sliced(1);
            span.kind = Highlighter::keywords().contains(word.toString()) ? Token::keyword
                : word.front().isUpper()                                  ? Token::type
                : after.startsWith(u'(')                                  ? Token::call
                                                                          : Token::plain;
        }
        spans.append(span);
        i += span.length;
    }
    return spans;
}

const QStringList swiftFragments = {
    u"import Foundation\n\n"_s,
    u"let greeting = \"Hello, world!\"\nprint(greeting)\n"_s,
    u"var count: Int = 0x1F_FF + 0b1010 - 1_000\n"_s,
    u"let pi = 3.14159, tiny = 6e-3, big = 1E5, odd = 1.e2\n"_s,
    u"func greet(_ name: String, times: Int = 2) -> String {\n\treturn \"Hi \\(name)!\"\n}\n"_s,
    u"// A line comment with \"quotes\" and /* an opener\n"_s,
    u"/* block /* not nested */ */\n"_s,
    u"/** Documentation\n * - Parameter x: the value\n */\n"_s,
    u"let poem = \"\"\"\n    Roses are \"red\",\n    \\(flower) is blue\n    \"\"\"\n"_s,
    u"let path = \"C:\\\\temp\\\\\" + \"a\\\"quoted\\\" word\"\n"_s,
    u"@MainActor final class ViewModel: ObservableObject {\n    @Published var items: [String] = []\n}\n"_s,
    u"#if DEBUG\nprint(#file, #line)\n#endif\n"_s,
    u"struct Point<T: Numeric>: Equatable { var x, y: T }\n"_s,
    u"enum Direction { case north, south\n    case east, west }\n"_s,
    u"switch value {\ncase .some(let v) where v > 10: break\ndefault: fallthrough\n}\n"_s,
    u"let doubled = numbers.map { $0 * 2 }.filter{ $0 % 3 == 0 }\n"_s,
    u"if (a && b) || !c { init (x: 1) }\nself.value = Self.zero\n"_s,
    u"guard let user = try? await fetch(id: 42) else { return nil }\n"_s,
    u"var set = Set<Int>(); set.insert(3); let get = set.count\n"_s,
    u"let café = \"naïve ☕️ 😀\"; let π = 3.14; let é1 = π2\n"_s,
    u"_ = _privateHelper ()\nlet x1y2 = x1 +y2\n"_s,
    u"extension Array where Element == Int {\n    mutating func bump() { self = map { $0 + 1 } }\n}\n"_s,
    u"let raw = #\"no \\(escape) here\"#\n"_s,
    u"protocol Shape { associatedtype Unit; func area() -> Double }\n"_s,
    u"let unterminated = \"oops\nlet after = 1\n"_s,
    u"do {\n    try risky()\n} catch let error as NSError {\n    print(error)\n}\r\n"_s,
    u"0x 0b2 0xG 1e 1e+ 1.5.2 12abc 0b_1 0x_\n"_s,
    u"@ # @1 #2 @_x #if\t(\n"_s,
    u"actor Counter { nonisolated var id: UUID { UUID() } }\n"_s,
    u"weak var delegate: (any Delegate)?\nunowned let owner: Owner\n"_s,
};

// Whole fragments, then cut or spliced so that comments, strings and numbers
// also end where no fragment ends them.
QString swiftSample(QRandomGenerator &rng)
{
    QString text;
    for (int parts = rng.bounded(1, 12); parts > 0; --parts)
        text += swiftFragments.at(rng.bounded(int(swiftFragments.size())));
    const qsizetype at = rng.bounded(text.size() + 1);
    switch (rng.bounded(4)) {
    case 1:
        text.truncate(at);
        break;
    case 2:
        text.remove(at, rng.bounded(40));
        break;
    case 3:
        text.insert(at, swiftFragments.at(rng.bounded(int(swiftFragments.size()))).left(rng.bounded(20)));
        break;
    }
    return text;
}

// Mostly characters that start or end a rule, with NUL, surrogates, and
// non-ASCII letters and digits that \w and \d must not take.
QString randomText(QRandomGenerator &rng)
{
    static const std::u16string_view alphabet =
        u"/*\"\\\n\r\t (@#0123xbeEf.+-_aZS\0\u00e9\u00aa\u0663\u00b2\U0001F600\xD800\xDC00"sv;
    QString text;
    for (int length = rng.bounded(300); length > 0; --length)
        text += rng.bounded(8) == 0 ? QChar(char16_t(rng.bounded(0x10000))) : QChar(alphabet[rng.bounded(int(alphabet.size()))]);
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
        auto row = [](const char *name, std::u16string_view text, std::u16string_view expected) {
            QTest::newRow(name) << str(text) << str(expected);
        };
        row("empty", u"", u"");
        row("slashes in a string", u"let url = \"http://x\"", u"k:let|p: |p:url|p: |p:=|p: |s:\"http://x\"");
        row("quote in a line comment", u"// say \"hi\"\nx", u"c:// say \"hi\"|p:\n|p:x");
        row("line comment keeps a CR", u"// a\r\nb", u"c:// a\r|p:\n|p:b");
        row("block comments do not nest", u"/* a /* b */ c */", u"c:/* a /* b */|p: |p:c|p: |p:*|p:/");
        row("star slash star", u"/*/", u"c:/*/");
        row("unterminated block comment", u"/* open\nstill", u"c:/* open\nstill");
        row("unterminated block comment before final newline", u"/* open\n", u"c:/* open|p:\n");
        row("unterminated multi-line string", u"\"\"\"\nabc\n\n", u"s:\"\"\"\nabc\n|p:\n");
        row("multi-line string", u"\"\"\"\nhi \"x\"\n\"\"\"y", u"s:\"\"\"\nhi \"x\"\n\"\"\"|p:y");
        row("four quotes", u"\"\"\"\"", u"s:\"\"\"\"");
        row("empty string", u"\"\"+", u"s:\"\"|p:+");
        row("unterminated string ends at the line", u"\"abc\nlet", u"s:\"abc|p:\n|k:let");
        row("escaped quotes", u"\"a \\\"b\\\" c\"d", u"s:\"a \\\"b\\\" c\"|p:d");
        row("interpolation", u"\"sum: \\(a + f(b))\"", u"s:\"sum: \\(a + f(b))\"");
        row("backslash before a newline", u"\"a\\\nb", u"s:\"a|p:\\|p:\n|p:b");
        row("backslash at the end", u"\"a\\", u"s:\"a|p:\\");
        row("numbers", u"0x1F_FF 0b1010 1_000 3.14 6e-3", u"n:0x1F_FF|p: |n:0b1010|p: |n:1_000|p: |n:3.14|p: |n:6e-3");
        row("point without a fraction", u"1.", u"n:1|p:.");
        row("capital exponent", u"1E5", u"n:1|t:E5");
        row("prefixes without digits", u"0xg 0b2 1e+", u"n:0|p:xg|p: |n:0|p:b2|p: |n:1|p:e|p:+");
        row("two points", u"1.5.2", u"n:1.5|p:.|n:2");
        row("attributes", u"@MainActor #if @ # @1", u"a:@MainActor|p: |a:#if|p: |p:@|p: |p:#|p: |p:@|n:1");
        row("types and calls", u"Foo(x) foo (1) if (a)", u"t:Foo|p:(|p:x|p:)|p: |f:foo|p: |p:(|n:1|p:)|p: |k:if|p: |p:(|p:a|p:)");
        row("no call across tab or newline", u"bar\t(b) baz\n(c) qux", u"p:bar|p:\t|p:(|p:b|p:)|p: |p:baz|p:\n|p:(|p:c|p:)|p: |p:qux");
        row("keywords", u"init(x) self Self SELF true nil set get some",
            u"k:init|p:(|p:x|p:)|p: |k:self|p: |k:Self|p: |t:SELF|p: |k:true|p: |k:nil|p: |k:set|p: |k:get|p: |k:some");
        row("underscores and digits", u"_Foo _bar() x1 x1y2", u"p:_Foo|p: |f:_bar|p:(|p:)|p: |p:x1|p: |p:x1y2");
        row("non-ASCII letters and digits", u"\u00e9crit x\u0663 \u00b2", u"p:\u00e9|p:crit|p: |p:x|p:\u0663|p: |p:\u00b2");
        row("surrogate pair", u"\U0001F600a", u"p:\U0001F600|p:a");
        row("lone surrogates", u"a\xD800" u"b\xDC00" u"c", u"p:a|p:\xD800" u"|p:b|p:\xDC00" u"|p:c");
        row("NUL", u"a\0b\"\0\""sv, u"p:a|p:\0|p:b|s:\"\0\""sv);
    }

    void tokens()
    {
        QFETCH(QString, text);
        QFETCH(QString, expected);
        const QList<Span> spans = Highlighter::tokens(text);
        QCOMPARE(render(text, spans), expected);
        QCOMPARE(spans, referenceTokens(text));
    }

    // Inputs far longer than any corpus sample: one token, or one per character.
    void longInput_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<qsizetype>("count");
        QTest::addColumn<Token>("first");
        const qsizetype n = 1'000'000;
        QTest::newRow("unterminated string") << u'"' + QString(n, u'a') << qsizetype(1) << Token::string;
        QTest::newRow("unterminated comment") << u"/*"_s + QString(n, u'/') << qsizetype(1) << Token::comment;
        QTest::newRow("one word") << QString(n, u'w') << qsizetype(1) << Token::plain;
        QTest::newRow("spaced call") << u'f' + QString(n, u' ') + u'(' << n + 2 << Token::call;
        QTest::newRow("NULs") << QString(n, QChar(0)) << n << Token::plain;
        QTest::newRow("lone surrogates") << QString(n, QChar(0xDC00)) << n << Token::plain;
        QTest::newRow("surrogate pairs") << str(u"\U0001F600").repeated(n / 2) << n / 2 << Token::plain;
    }

    void longInput()
    {
        QFETCH(QString, text);
        QFETCH(qsizetype, count);
        QFETCH(Token, first);
        const QList<Span> spans = Highlighter::tokens(text);
        QCOMPARE(coverageError(text, spans), QString());
        QCOMPARE(spans.size(), count);
        QCOMPARE(spans.first().kind, first);
    }

    // The scanner against the patterns themselves, with fixed seeds so that a
    // failure reproduces.
    void matchesReference_data()
    {
        QTest::addColumn<bool>("swift");
        QTest::addColumn<quint32>("seed");
        QTest::newRow("swift corpus") << true << 20240611u;
        QTest::newRow("random text") << false << 77u;
    }

    void matchesReference()
    {
        QFETCH(bool, swift);
        QFETCH(quint32, seed);
        QRandomGenerator rng(seed);
        for (int sample = 0; sample < 4000; ++sample) {
            const QString text = swift ? swiftSample(rng) : randomText(rng);
            const QList<Span> actual = Highlighter::tokens(text);
            const QString gap = coverageError(text, actual);
            QVERIFY2(gap.isEmpty(), qPrintable(gap));
            const QList<Span> expected = referenceTokens(text);
            if (actual != expected)
                QFAIL(qPrintable(QStringLiteral("sample %1:\n%2\nscanner:   %3\nreference: %4")
                                     .arg(sample).arg(text, render(text, actual), render(text, expected))));
        }
    }

    void keywords()
    {
        const QSet<QString> &words = Highlighter::keywords();
        QCOMPARE(words.size(), 83);
        for (const QString &word : words) {
            QCOMPARE(render(word, Highlighter::tokens(word)), u"k:"_s + word);
            const QString longer = word + u'x';
            QCOMPARE(Highlighter::tokens(longer).constFirst().kind, word == u"Self" ? Token::type : Token::plain);
        }
    }

    void attributed_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QList<StyledRun>>("runs");
        const auto run = [](qsizetype start, qsizetype length, quint32 rgb, bool keyword = false) {
            TextStyle style;
            style.color = Rgb{quint8(rgb >> 16), quint8(rgb >> 8), quint8(rgb)};
            style.monospace = style.semibold = keyword;
            return StyledRun{start, length, style};
        };
        QTest::newRow("empty") << QString() << QList<StyledRun>{};
        QTest::newRow("plain only") << u"a + b"_s << QList<StyledRun>{};
        QTest::newRow("every kind") << u"let s = \"x\" // c\n@objc T(1) f()"_s
                                    << QList<StyledRun>{run(0, 3, 0xFF7AB2, true), run(8, 3, 0xFF8170),
                                                        run(12, 4, 0x7F8C98), run(17, 5, 0xFD8F3F),
                                                        run(23, 1, 0x5DD8FF), run(25, 1, 0xD9C97C),
                                                        run(28, 1, 0x67B7A4)};
    }

    void attributed()
    {
        QFETCH(QString, text);
        QFETCH(QList<StyledRun>, runs);
        const StyledText styled = Highlighter::attributed(text);
        QCOMPARE(styled.text, text);
        QVERIFY(styled.runs == runs);
        QVERIFY(!Highlighter::color(Token::plain));
    }
};

QTEST_APPLESS_MAIN(TestHighlighter)
#include "tst_highlighter.moc"
