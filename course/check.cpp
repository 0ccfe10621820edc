// course_check: tries lessons with the app's own runner while a course is
// being written. For each code lesson it runs the reference solution and the
// starting code, says what fails, and whether printing the solution's output
// word for word would pass the tests (it should not).
//
//   course_check COURSE.json SOLUTIONS.json [LESSON-ID...]

#include "runner/coderunner.h"
#include "course/course.h"
#include "runner/runner.h"
#include "selftest/selftest.h"

#include <QCoreApplication>

#include <cstdio>

using namespace Kestrun;

namespace {

void say(const QString &line)
{
    std::fputs(qPrintable(line + QLatin1Char('\n')), stdout);
    std::fflush(stdout);
}

QString swiftLiteral(const QString &text)
{
    QString literal = QStringLiteral("\"");
    for (const QChar c : text) {
        if (c == u'\\' || c == u'"')
            literal += QLatin1Char('\\');
        if (c == u'\n') {
            literal += QLatin1String("\\n");
            continue;
        }
        literal += c;
    }
    return literal + QLatin1Char('"');
}

void describe(const RunResult &result)
{
    for (const RunResult::CompilerError &e : result.errors)
        say(QStringLiteral("    error%1: %2").arg(e.line ? QStringLiteral(" on line %1").arg(*e.line) : QString(), e.message));
    if (result.crashed)
        say(QStringLiteral("    crashed: ") + result.crashReason);
    if (result.timedOut)
        say(QStringLiteral("    timed out"));
    for (const RunResult::TestResult &t : result.tests)
        say(QStringLiteral("    [%1] %2").arg(t.passed ? QStringLiteral("pass") : QStringLiteral("FAIL"), t.text));
    if (!result.output.isEmpty())
        say(QStringLiteral("    output: ") + swiftLiteral(result.output));
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    const QStringList args = app.arguments().mid(1);
    if (args.size() < 2) {
        say(QStringLiteral("usage: course_check COURSE.json SOLUTIONS.json [LESSON-ID...]"));
        return 2;
    }

    Course course;
    try {
        course = Course::load(args[0]);
    } catch (const Course::LoadError &error) {
        say(error.message());
        return 2;
    }
    const auto solutions = SelfTest::readSolutions(args[1]);
    if (!solutions) {
        say(QStringLiteral("Could not read ") + args[1]);
        return 2;
    }
    const std::optional<Toolchain> toolchain = Toolchain::find();
    if (!toolchain) {
        say(QStringLiteral("No Swift toolchain found."));
        return 2;
    }

    const QStringList only = args.mid(2);
    int bad = 0;
    for (const Lesson &lesson : course.lessons()) {
        if (lesson.tests.isEmpty() || (!only.isEmpty() && !only.contains(lesson.id)))
            continue;
        say(lesson.id);
        const QString solution = solutions->value(lesson.id);
        const RunResult solved = Runner::check(lesson, solution, *toolchain, CodeRunner::runTimeout);
        if (!solved.passed()) {
            ++bad;
            say(QStringLiteral("  the solution FAILS:"));
        } else {
            say(QStringLiteral("  the solution passes"));
        }
        describe(solved);

        if (lesson.seed) {
            const RunResult seeded = Runner::check(lesson, *lesson.seed, *toolchain, CodeRunner::runTimeout);
            say(seeded.passed() ? QStringLiteral("  the starting code PASSES already") : QStringLiteral("  the starting code fails"));
            bad += seeded.passed() ? 1 : 0;
            describe(seeded);
        }

        if (!solved.output.isEmpty()) {
            const QString hardCoded = QStringLiteral("print(") + swiftLiteral(solved.output) + QLatin1Char(')');
            const RunResult cheat = Runner::check(lesson, hardCoded, *toolchain, CodeRunner::runTimeout);
            qsizetype rejecting = 0;
            for (const RunResult::TestResult &t : cheat.tests)
                rejecting += t.passed ? 0 : 1;
            say(cheat.passed() ? QStringLiteral("  a hard-coded print of the output PASSES")
                               : QStringLiteral("  a hard-coded print of the output is rejected by %1 of %2 tests")
                                     .arg(rejecting).arg(cheat.tests.size()));
            bad += cheat.passed() ? 1 : 0;
        }
    }
    say(bad == 0 ? QStringLiteral("All good.") : QStringLiteral("%1 problem(s).").arg(bad));
    return bad == 0 ? 0 : 1;
}
