#include "course/markdown.h"

#include <QTest>

using namespace Kestrun;

namespace {

QString escaped(const QString &text)
{
    QString out = text;
    out.replace(u'&', QStringLiteral("&amp;")).replace(u'<', QStringLiteral("&lt;"));
    return out.replace(u'>', QStringLiteral("&gt;")).replace(u'"', QStringLiteral("&quot;"));
}

QStringList tagsOf(const TextStyle &style)
{
    QStringList tags;
    if (style.link)
        tags << QStringLiteral("a href=\"%1\"").arg(escaped(*style.link));
    for (const auto &[on, tag] : {std::pair(style.strikethrough, "del"), {style.emphasis, "em"},
                                  {style.strong, "strong"}, {style.monospace, "code"}})
        if (on)
            tags << QString::fromLatin1(tag);
    return tags;
}

// Renders styled text as HTML-like tags, keeping a tag open across adjacent
// runs that share it, so that "*a **b***" reads "<em>a <strong>b</strong></em>".
QString render(const StyledText &styled)
{
    QString out;
    QStringList open;
    qsizetype at = 0;
    const auto emit = [&](const QStringList &wanted, qsizetype end) {
        while (!open.isEmpty() && !std::all_of(open.cbegin(), open.cend(), [&](const QString &t) { return wanted.contains(t); }))
            out += QStringLiteral("</%1>").arg(open.takeLast().section(u' ', 0, 0));
        for (const QString &tag : wanted)
            if (!open.contains(tag))
                out += u'<' + (open << tag).last() + u'>';
        out += escaped(styled.text.mid(at, end - at));
        at = end;
    };
    for (const StyledRun &run : styled.runs) {
        if (run.start > at)
            emit({}, run.start);
        emit(tagsOf(run.style), run.start + run.length);
    }
    emit({}, styled.text.size());
    return out;
}

// What is wrong with the runs of a result, or an empty string.
QString runProblem(const StyledText &styled)
{
    qsizetype end = 0;
    const StyledRun *previous = nullptr;
    for (const StyledRun &run : styled.runs) {
        if (run.length <= 0 || run.start < end || run.start + run.length > styled.text.size())
            return QStringLiteral("run %1+%2 is empty, overlaps or is out of bounds").arg(run.start).arg(run.length);
        if (run.style == TextStyle())
            return QStringLiteral("run at %1 carries no style").arg(run.start);
        if (previous && previous->start + previous->length == run.start && previous->style == run.style)
            return QStringLiteral("runs at %1 and %2 should be merged").arg(previous->start).arg(run.start);
        end = run.start + run.length;
        previous = &run;
    }
    return {};
}

void row(const char *input, const char *expected)
{
    QTest::newRow(input) << QString::fromUtf8(input) << QString::fromUtf8(expected);
}

// Examples that come back as written, one paragraph each so that they
// cannot interact.
void unchanged(const char *name, std::initializer_list<const char *> inputs)
{
    QStringList paragraphs;
    for (const char *input : inputs)
        paragraphs << QString::fromUtf8(input);
    const QString text = paragraphs.join(QStringLiteral("\n\n"));
    QTest::newRow(name) << text << escaped(text);
}

} // namespace

class TestMarkdown : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void rendering_data();
    void rendering();
    void longAndDeepInput_data();
    void longAndDeepInput();
};

void TestMarkdown::rendering_data()
{
    QTest::addColumn<QString>("input");
    QTest::addColumn<QString>("expected");

    // Code spans
    row("`` foo ` bar ``", "<code>foo ` bar</code>");
    row("`  ``  `", "<code> `` </code>");
    row("` a`", "<code> a</code>");
    row("` `\n`  `", "<code> </code>\n<code>  </code>");
    row("``\nfoo\nbar  \nbaz\n``", "<code>foo bar   baz</code>");
    row("`foo   bar \r\nbaz`", "<code>foo   bar  baz</code>");
    row(R"md(`foo\`bar`)md", R"md(<code>foo\</code>bar`)md");
    row("*foo`*`", "*foo<code>*</code>");
    row("[not a `link](/foo`)", "[not a <code>link](/foo</code>)");
    row("`foo``bar``", "`foo<code>bar</code>");
    row("`hi`lo`", "<code>hi</code>lo`");
    row("`f&amp;o`", "<code>f&amp;amp;o</code>");

    // Backslash escapes
    row(R"md(\!\"\#\$\%\&\'\(\)\*\+\,\-\.\/\:\;\<\=\>\?\@\[\\\]\^\_\`\{\|\}\~)md",
        R"md(!&quot;#$%&amp;'()*+,-./:;&lt;=&gt;?@[\]^_`{|}~)md");
    row(R"md(\\*emphasis*)md", R"md(\<em>emphasis</em>)md");
    row("foo\\\nbar", "foo\nbar");
    row(R"md([foo](/bar\* "ti\*tle"))md", R"md(<a href="/bar*">foo</a>)md");

    // Character references
    row("&nbsp;&amp; &copy; &mdash;", "\u00A0&amp; © —");
    row("&#35; &#1234; &#0; &#87654321; &#X22; &#xcab;", "# Ӓ \uFFFD &amp;#87654321; &quot; ಫ");
    row("&#42;foo&#42;", "*foo*");
    row("[a](/x?a=1&amp;b=2)", R"md(<a href="/x?a=1&amp;b=2">a</a>)md");

    // Emphasis and strong emphasis
    unchanged("emphasis that stays text",
              {"a * foo bar*", "a*\"foo\"*", "*\u00A0a\u00A0*", "_ foo bar_", "foo_bar_", "5_6_78",
               "пристаням_стремятся_", "aa_\"bb\"_cc", "_foo*", "*foo bar *", "*foo bar\n*", "*(*foo)",
               "** foo bar**", "__\nfoo bar__", "foo__bar__", "**(**foo)",
               "**** is not an empty strong emphasis"});
    row("foo-_(bar)_", "foo-<em>(bar)</em>");
    row("*(*foo*)*", "<em>(foo)</em>");
    row("_foo_bar_baz_", "<em>foo_bar_baz</em>");
    row("foo**bar**", "foo<strong>bar</strong>");
    row("__foo, __bar__, baz__", "<strong>foo, bar, baz</strong>");
    row("*foo [bar](/url)*", R"md(<em>foo <a href="/url">bar</a></em>)md");
    row("_foo __bar__ baz_", "<em>foo <strong>bar</strong> baz</em>");
    row("*foo**bar*", "<em>foo**bar</em>");
    row("***foo** bar*", "<em><strong>foo</strong> bar</em>");
    row("foo***bar***baz", "foo<em><strong>bar</strong></em>baz");
    row("foo******bar*********baz", "foo<strong>bar</strong>***baz");
    row("**foo *bar **baz**\nbim* bop**", "<strong>foo <em>bar baz\nbim</em> bop</strong>");
    row("foo **_**", "foo <strong>_</strong>");
    row("**foo*", "*<em>foo</em>");
    row("_foo____", "<em>foo</em>___");
    row("_____foo_____", "<em><strong>foo</strong></em>");
    row("*foo _bar* baz_", "<em>foo _bar</em> baz_");
    row("**foo **bar baz**", "**foo <strong>bar baz</strong>");
    row("_foo [bar_](/url)", R"md(_foo <a href="/url">bar_</a>)md");
    row("**a<http://foo.bar/?q=**>", R"md(**a<a href="http://foo.bar/?q=**">http://foo.bar/?q=**</a>)md");
    row("a***b* c*", "a*<em>b c</em>");
    row("—*(a)*—", "—<em>(a)</em>—");
    row("😀*(x)*😀", "😀<em>(x)</em>😀");

    // Strikethrough
    row("~~Hi~~ Hello, ~there~ world!", "<del>Hi</del> Hello, ~there~ world!");
    row("~~**bold** gone~~", "<del><strong>bold</strong> gone</del>");
    row("~~a ~~b~~", "~~a <del>b</del>");

    // Links
    unchanged("links that stay text",
              {"[link](/my uri)", "[link](foo\nbar)", "[link] (/uri)", "[link] bar](/uri)", "[foo][bar] [foo] [foo][]",
               "[link](/url (ti(tle))", R"md([link](/url "title "and" title"))md", R"md([a](<b>"t"))md",
               "<http://foo.bar/baz bim> <m:abc> <foo.bar.baz> <foo@bar-.com>"});
    row(R"md([link](/uri "title"))md", R"md(<a href="/uri">link</a>)md");
    row("[link]()", "<a href=\"\">link</a>");
    row("[link](</my uri>)", R"md(<a href="/my uri">link</a>)md");
    row("[link](foo(and(bar)))", R"md(<a href="foo(and(bar))">link</a>)md");
    row("[link](/url 'title') [link](/url (title))", R"md(<a href="/url">link</a> <a href="/url">link</a>)md");
    row("[link](   /uri\n  \"title\"  )", R"md(<a href="/uri">link</a>)md");
    row("[link [foo [bar]]](/uri)", R"md(<a href="/uri">link [foo [bar]]</a>)md");
    row("[link [bar](/uri)", R"md([link <a href="/uri">bar</a>)md");
    row("[link *foo **bar** `#`*](/uri)",
        R"md(<a href="/uri">link <em>foo <strong>bar</strong> <code>#</code></em></a>)md");
    row("[foo [bar](/uri)](/uri)", R"md([foo <a href="/uri">bar</a>](/uri))md");
    row("*[foo*](/uri)", R"md(*<a href="/uri">foo*</a>)md");
    row("[foo *bar](baz*)", R"md(<a href="baz*">foo *bar</a>)md");
    row("*foo [bar* baz]", "<em>foo [bar</em> baz]");
    row(R"md(![foo *bar*](/url "title"))md", "![foo <em>bar</em>](/url &quot;title&quot;)");
    row("[see <http://x.y> here](/u)",
        R"md(<a href="/u">see </a><a href="http://x.y">http://x.y</a><a href="/u"> here</a>)md");
    row("[![moon](moon.jpg)](/uri)", R"md(<a href="/uri">![moon](moon.jpg)</a>)md");

    // Autolinks
    row("<http://foo.bar.baz>", R"md(<a href="http://foo.bar.baz">http://foo.bar.baz</a>)md");
    row("<foo@bar.example.com>", R"md(<a href="mailto:foo@bar.example.com">foo@bar.example.com</a>)md");
    row(R"md(<http://example.com?find=\*>)md",
        R"md(<a href="http://example.com?find=\*">http://example.com?find=\*</a>)md");

    // Everything else stays exactly as written
    unchanged("everything else stays as written",
              {"# Not a heading", "- not\n> a\n1. list", "~~~\nlet x = 1\n~~~", "```foo``", "`foo", "a  b   c  \nd\t",
               "*one\n  \t\ntwo*", "This will ~~~not~~~ strike.", "<b>raw</b> Array<Int> snake_case_name 2 * 3 * 4 C:\\path",
               "&nbsp &x; &#; &#x; &MadeUpEntity; &hi?;", "\\\t\\A\\a\\ \\3\\φ\\«", "a backslash at the end \\"});
    row("Use `print` to show **bold** text.", "Use <code>print</code> to show <strong>bold</strong> text.");
    row("\r\n\r\n", "\r\n\r\n");
    row("", "");
}

void TestMarkdown::rendering()
{
    QFETCH(QString, input);
    QFETCH(QString, expected);
    const StyledText result = markdown(input);
    QVERIFY2(runProblem(result).isEmpty(), qPrintable(runProblem(result)));
    QCOMPARE(render(result), expected);
}

void TestMarkdown::longAndDeepInput_data()
{
    QTest::addColumn<QString>("input");
    QTest::addColumn<QString>("expected");

    const int n = 100000;
    const auto same = [](const char *name, const QString &text) { QTest::newRow(name) << text << text; };
    same("unclosed openers", QStringLiteral("*a _b ").repeated(n / 4));
    same("closers without openers", QStringLiteral("_a ").repeated(n / 6) + QStringLiteral("a* ").repeated(n / 6));
    same("failed links", QStringLiteral("[a](b(").repeated(n / 6));
    QString backticks;  // runs of 1, 2, 3... backticks: none can close another
    for (int length = 1; backticks.size() < n; ++length)
        backticks += QString(length, u'`') + u'a';
    same("backtick runs of growing length", backticks);
    QTest::newRow("leftover openers") << QStringLiteral("**a* ").repeated(n / 5)
                                      << QStringLiteral("*<em>a</em> ").repeated(n / 5);
    QTest::newRow("deep emphasis") << QString(n, u'*') + u'a' + QString(n, u'*')
                                   << QStringLiteral("<strong>a</strong>");
    QTest::newRow("deep brackets") << QString(n, u'[') + QStringLiteral("a](u)")
                                   << QString(n - 1, u'[') + QStringLiteral(R"md(<a href="u">a</a>)md");
    QTest::newRow("links after brackets")
        << QString(n / 2, u'[') + QStringLiteral("[a](b) ").repeated(n / 14)
        << QString(n / 2, u'[') + QStringLiteral(R"md(<a href="b">a</a> )md").repeated(n / 14);
}

// The same checks on long inputs, which a pass that is not linear would
// also make very slow.
void TestMarkdown::longAndDeepInput()
{
    rendering();
}

QTEST_GUILESS_MAIN(TestMarkdown)
#include "tst_markdown.moc"
