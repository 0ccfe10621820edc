#include "runner.h"

#include "shell.h"
#include "texts/texts.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSaveFile>
#include <QUuid>

#include <algorithm>

namespace Kestrun::Runner {

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

QStringList commonArguments(const Toolchain &toolchain)
{
    QStringList args;
    if (!toolchain.sdk.isEmpty())
        args << QStringLiteral("-sdk") << toolchain.sdk;
    args << QStringLiteral("-swift-version") << QStringLiteral("6")
         << QStringLiteral("-default-isolation") << QStringLiteral("MainActor")
         << QStringLiteral("-enable-upcoming-feature") << QStringLiteral("NonisolatedNonsendingByDefault")
         << QStringLiteral("-Onone")
         << QStringLiteral("-module-name") << QStringLiteral("Lesson");
    return args;
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

// Removes the work directory whatever way check() leaves.
class WorkDirectory {
public:
    WorkDirectory()
        : m_path(QDir::tempPath() + QStringLiteral("/kestrun-")
                 + QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper())
    {
    }
    ~WorkDirectory() { QDir(m_path).removeRecursively(); }
    WorkDirectory(const WorkDirectory &) = delete;
    WorkDirectory &operator=(const WorkDirectory &) = delete;

    QString path() const { return m_path; }
    QString file(const QString &name) const { return m_path + QLatin1Char('/') + name; }

private:
    QString m_path;
};

// The state of one call of check().
class Judgement {
public:
    Judgement(const Lesson &lesson, const QString &code)
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

    RunResult writeFailure(const QString &description) const
    {
        RunResult r;
        r.errors.append({std::nullopt, Texts::get(Text::couldNotWrite) + description});
        for (const LessonTest &test : m_lesson.tests)
            r.tests.append({test.text, false});
        return r;
    }

    RunResult compileFailure(const QString &errorOutput, const Program &program, bool timedOut)
    {
        for (qsizetype i = 0; i < m_lesson.tests.size(); ++i) {
            for (const Check &check : m_lesson.tests[i].checks) {
                if (check.kind == Check::Kind::swift || check.kind == Check::Kind::output
                    || check.kind == Check::Kind::nooutput)
                    m_passed[i] = false;
            }
        }
        RunResult r;
        r.errors = compilerErrors(errorOutput, program.firstLine, program.testStart);
        r.timedOut = timedOut;
        r.tests = testResults();
        return r;
    }

    RunResult runOutcome(const std::optional<Shell::Output> &run, const QString &nonce)
    {
        const QString marker = QChar(0x1E) + nonce + QLatin1Char(' ');
        const QString out = run ? run->standardOutput : QString();
        QStringList console;
        for (const QString &line : out.split(QLatin1Char('\n'))) {
            if (!line.startsWith(marker)) {
                console.append(line);
                continue;
            }
            readVerdict(line);
        }

        RunResult r;
        r.compiled = true;
        r.output = trimLineEnds(console.join(QLatin1Char('\n')));
        if (run) {
            r.timedOut = run->timedOut;
            r.crashed = !run->timedOut && run->status != 0;
            if (r.crashed)
                r.crashReason = crashReason(run->standardError);
        } else {
            r.crashed = true;
            r.crashReason = crashReason(QString());
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

private:
    // A verdict line reads "<marker><test> <0 or 1>"; any other marked line is dropped.
    void readVerdict(const QString &line)
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

    QList<RunResult::TestResult> testResults() const
    {
        QList<RunResult::TestResult> results;
        for (qsizetype i = 0; i < m_lesson.tests.size(); ++i)
            results.append({m_lesson.tests[i].text, m_passed[i]});
        return results;
    }

    const Lesson &m_lesson;
    QList<bool> m_passed;
    QList<int> m_swiftLeft;
};

} // namespace

RunResult check(const Lesson &lesson, const QString &code, const Toolchain &toolchain, double runTimeout)
{
    Judgement judgement(lesson, code);
    const QString nonce = QUuid::createUuid().toString(QUuid::Id128);
    const Program assembled = program(code, lesson.tests, nonce);

    const WorkDirectory work;
    if (!QDir().mkpath(work.path()))
        return judgement.writeFailure(QStringLiteral("cannot create the directory %1").arg(work.path()));
    QSaveFile source(work.file(QStringLiteral("main.swift")));
    if (!source.open(QIODevice::WriteOnly) || source.write(assembled.source.toUtf8()) < 0 || !source.commit())
        return judgement.writeFailure(source.errorString());

    const QStringList common = commonArguments(toolchain);

    if (toolchain.interpreter) {
        const QStringList args = QStringList{QStringLiteral("-frontend"), QStringLiteral("-interpret"),
                                             QStringLiteral("main.swift")}
            + common;
        const std::optional<Shell::Output> run
            = Shell::tryRun(*toolchain.interpreter, args, work.path(), runTimeout + interpretExtra);
        if (run && run->status != 0 && !run->timedOut && run->standardError.contains(QLatin1String(": error: ")))
            return judgement.compileFailure(run->standardError, assembled, false);
        return judgement.runOutcome(run, nonce);
    }

    const QStringList args = common + QStringList{QStringLiteral("-o"), QStringLiteral("program"),
                                                  QStringLiteral("main.swift")};
    const std::optional<Shell::Output> compile = Shell::tryRun(toolchain.swiftc, args, work.path(), compileTimeout);
    if (!compile)
        return judgement.compileFailure(Texts::get(Text::compilerNotStarted), assembled, false);
    const QString executable = work.file(QStringLiteral("program"));
    if (compile->status != 0 || !QFileInfo::exists(executable))
        return judgement.compileFailure(compile->standardError, assembled, compile->timedOut);

    return judgement.runOutcome(Shell::tryRun(executable, {}, work.path(), runTimeout), nonce);
}

QList<RunResult::CompilerError> compilerErrors(const QString &errorOutput, int firstLine, int testStart)
{
    const QRegularExpression pattern(QStringLiteral("main\\.swift:(\\d+):(\\d+): error: (.*)"));
    const QStringList lines = errorOutput.split(QLatin1Char('\n'), Qt::SkipEmptyParts);

    QList<RunResult::CompilerError> errors;
    for (const QString &line : lines) {
        const QRegularExpressionMatch m = pattern.match(line);
        if (!m.hasMatch())
            continue;
        bool ok = false;
        const int n = m.captured(1).toInt(&ok);
        if (!ok)
            continue;
        if (n < testStart)
            errors.append({n - firstLine + 1, m.captured(3)});
        else
            errors.append({std::nullopt, Texts::get(Text::testsCouldNotUse) + m.captured(3)});
    }

    if (errors.isEmpty() && !errorOutput.trimmed().isEmpty())
        errors.append({std::nullopt, lines.mid(qMax<qsizetype>(0, lines.size() - 3)).join(QLatin1Char(' '))});
    return errors.mid(0, maxErrors);
}

QString crashReason(const QString &errorOutput)
{
    const QRegularExpression pattern(QStringLiteral("Fatal error: ([^\\n]*)"));
    const QRegularExpressionMatch m = pattern.match(errorOutput);
    return m.hasMatch() ? m.captured(1) : Texts::get(Text::stoppedUnexpectedly);
}

} // namespace Kestrun::Runner
