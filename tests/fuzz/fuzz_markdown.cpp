// Inline Markdown on any text: it never fails; its runs are in order, inside
// the text, non-empty, styled and never overlapping; markup only ever takes
// characters away; text without markup comes back unchanged; every escaped
// character comes back as itself; and a code span shows its content.
#include "fuzzing.h"

#include "course/markdown.h"

#include <algorithm>

using namespace Kestrun;
using namespace Kestrun::Fuzzing;

namespace {

bool isMarkupCharacter(QChar c)
{
    return QStringView(u"\\`*_~[]!<&").contains(c);
}

bool isAsciiPunctuation(QChar c)
{
    const char16_t u = c.unicode();
    return (u >= 0x21 && u <= 0x2F) || (u >= 0x3A && u <= 0x40) || (u >= 0x5B && u <= 0x60) || (u >= 0x7B && u <= 0x7E);
}

QString plain(const StyledText &styled)
{
    return styled.runs.isEmpty() ? styled.text : QString();
}

void checkRuns(const QString &source, const StyledText &styled)
{
    FUZZ_CHECK(styled.text.size() <= source.size(), source);
    qsizetype end = 0;
    for (const StyledRun &run : styled.runs) {
        FUZZ_CHECK(run.start >= end && run.length > 0 && run.start + run.length <= styled.text.size(), source);
        FUZZ_CHECK(run.style != TextStyle(), QStringLiteral("a plain run in ") + source);
        end = run.start + run.length;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString source = text(data, size);
    const StyledText styled = markdown(source);
    checkRuns(source, styled);

    if (std::none_of(source.cbegin(), source.cend(), isMarkupCharacter))
        FUZZ_CHECK(plain(styled) == source, source);

    // Backslash-escaping every ASCII punctuation character turns any text
    // into its own literal, line breaks and spaces included.
    QString escaped;
    for (QChar c : source) {
        if (isAsciiPunctuation(c))
            escaped += QLatin1Char('\\');
        escaped += c;
    }
    FUZZ_CHECK(plain(markdown(escaped)) == source, source);

    // One code span: its content in code style, line ends read as spaces,
    // one space stripped from each end when both ends have one.
    QString content = source;
    content.remove(QLatin1Char('`'));
    content.replace(QStringLiteral("\r\n"), QStringLiteral(" ")).replace(u'\r', u' ').replace(u'\n', u' ');
    if (!content.isEmpty() && !std::all_of(content.cbegin(), content.cend(), [](QChar c) { return c == u' '; })) {
        const StyledText span = markdown(QLatin1Char('`') + content + QLatin1Char('`'));
        if (content.startsWith(u' ') && content.endsWith(u' '))
            content = content.sliced(1, content.size() - 2);
        TextStyle code;
        code.monospace = true;
        const QList<StyledRun> whole{{0, content.size(), code}};
        FUZZ_CHECK(span.text == content && span.runs == whole, source);
    }
    return 0;
}
