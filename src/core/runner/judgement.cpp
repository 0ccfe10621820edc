#include "judgement.h"

#include "texts/texts.h"

#include <QRegularExpression>
#include <QStringList>

#include <algorithm>

namespace Kestrun {

namespace {

// Matches a course pattern the way lessons are written: ^ and $ at every
// line, nothing else. An invalid pattern matches nothing.
std::optional<bool> matches(const QString &pattern, const QString &text)
{
    const QRegularExpression re(pattern, QRegularExpression::MultilineOption);
    if (!re.isValid())
        return std::nullopt;
    return re.match(text).hasMatch();
}

// Applies one pattern check: `required` wants a match, otherwise none.
bool holds(const Check &check, const QString &text, bool required)
{
    const std::optional<bool> found = matches(check.code, text);
    if (!found)
        return !required;  // invalid: fails a required match, never a forbidden one
    return *found == required;
}

bool isLineEnd(QChar c)
{
    const char16_t u = c.unicode();
    return (u >= 0x0A && u <= 0x0D) || u == 0x85 || u == 0x2028 || u == 0x2029;
}

QString trimLineEnds(const QString &text)
{
    qsizetype begin = 0;
    qsizetype end = text.size();
    while (begin < end && isLineEnd(text[begin]))
        ++begin;
    while (end > begin && isLineEnd(text[end - 1]))
        --end;
    return text.mid(begin, end - begin);
}

} // namespace

Judgement::Judgement(const Lesson &lesson, const QString &code)
    : m_lesson(lesson)
{
    for (const LessonTest &test : lesson.tests) {
        bool passed = true;
        int swiftChecks = 0;
        for (const Check &check : test.checks) {
            if (check.kind == Check::Kind::swift)
                ++swiftChecks;
            else if (check.kind == Check::Kind::source)
                passed = passed && holds(check, code, true);
            else if (check.kind == Check::Kind::nosource)
                passed = passed && holds(check, code, false);
        }
        m_passed.append(passed);
        m_swiftLeft.append(swiftChecks);
    }
}

RunResult Judgement::writeFailure(const QString &description) const
{
    RunResult r;
    r.errors.append({std::nullopt, Texts::get(Text::couldNotWrite) + description});
    for (const LessonTest &test : m_lesson.tests)
        r.tests.append({test.text, false});
    return r;
}

RunResult Judgement::compileFailure(const QString &errorOutput, const Runner::Program &program, bool timedOut)
{
    for (qsizetype i = 0; i < m_lesson.tests.size(); ++i) {
        for (const Check &check : m_lesson.tests[i].checks) {
            if (check.kind == Check::Kind::swift || check.kind == Check::Kind::output
                || check.kind == Check::Kind::nooutput)
                m_passed[i] = false;
        }
    }
    RunResult r;
    r.errors = Runner::compilerErrors(errorOutput, program.firstLine, program.testStart);
    r.timedOut = timedOut;
    r.tests = testResults();
    return r;
}

RunResult Judgement::runOutcome(const std::optional<Shell::Output> &run, const QString &nonce)
{
    const QString marker = QChar(0x1E) + nonce + QLatin1Char(' ');
    const QString out = run ? run->standardOutput : QString();
    QStringList console;
    for (const QString &line : out.split(QLatin1Char('\n'))) {
        if (line.startsWith(marker))
            readVerdict(line);
        else
            console.append(line);
    }

    RunResult r;
    r.compiled = true;
    r.output = trimLineEnds(console.join(QLatin1Char('\n')));
    if (run) {
        r.timedOut = run->timedOut;
        r.crashed = !run->timedOut && run->status != 0;
        if (r.crashed)
            r.crashReason = Runner::crashReason(run->standardError);
    } else {
        r.crashed = true;
        r.crashReason = Runner::crashReason(QString());
    }

    for (qsizetype i = 0; i < m_lesson.tests.size(); ++i) {
        if (m_swiftLeft[i] > 0)
            m_passed[i] = false;
        for (const Check &check : m_lesson.tests[i].checks) {
            if (check.kind == Check::Kind::output)
                m_passed[i] = m_passed[i] && holds(check, r.output, true);
            else if (check.kind == Check::Kind::nooutput)
                m_passed[i] = m_passed[i] && holds(check, r.output, false);
        }
    }
    r.tests = testResults();
    return r;
}

// A verdict line reads "<marker><test> <0 or 1>"; any other marked line is dropped.
void Judgement::readVerdict(const QString &line)
{
    const QStringList parts = line.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    if (parts.size() != 3)
        return;
    // A decimal integer with an optional sign; toLongLong alone would accept spaces.
    const QString &number = parts[1];
    const qsizetype digits = number.startsWith(QLatin1Char('+')) || number.startsWith(QLatin1Char('-')) ? 1 : 0;
    if (number.size() == digits
        || !std::all_of(number.begin() + digits, number.end(), [](QChar c) { return c >= u'0' && c <= u'9'; }))
        return;
    bool ok = false;
    const qlonglong test = number.toLongLong(&ok);
    if (!ok || test < 0 || test >= m_lesson.tests.size())
        return;
    --m_swiftLeft[test];
    if (parts[2] != QLatin1String("1"))
        m_passed[test] = false;
}

QList<RunResult::TestResult> Judgement::testResults() const
{
    QList<RunResult::TestResult> results;
    for (qsizetype i = 0; i < m_lesson.tests.size(); ++i)
        results.append({m_lesson.tests[i].text, m_passed[i]});
    return results;
}

} // namespace Kestrun
