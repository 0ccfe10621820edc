#include "highlight/highlighter.h"

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
        const QStringList words = reference.split(u' ', Qt::SkipEmptyParts);
        QCOMPARE(Highlighter::keywords(), QSet<QString>(words.cbegin(), words.cend()));
        for (const QString &word : words) {
            QCOMPARE(render(word, Highlighter::tokens(word)), u"k:"_s + word);
            QCOMPARE(Highlighter::tokens(word + u'x').constFirst().kind, word == u"Self" ? Token::type : Token::plain);
        }
    }
};

QTEST_APPLESS_MAIN(TestHighlighter)
#include "tst_highlighter.moc"
