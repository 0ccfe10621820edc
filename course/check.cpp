// course_check: tries lessons with the app's own runner while a course is
// being written. For each code lesson it runs the reference solution and the
// starting code, says what fails, and whether printing the solution's output
// word for word would pass the tests (it should not). With --answers it also
// runs the lesson's other answers and the mutants of its solution, which
// course/build.py --answers writes.
//
//   course_check COURSE.json SOLUTIONS.json [--answers FILE] [--jobs N] [LESSON-ID...]

#include "runner/coderunner.h"
#include "course/course.h"
#include "runner/runner.h"
#include "selftest/selftest.h"

#include <QCoreApplication>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <atomic>
#include <cstdio>
#include <mutex>
#include <thread>
#include <vector>

using namespace Kestrun;

namespace {

// A mutant stuck in a loop is caught by this shorter limit; it counts as killed.
constexpr double mutantLimit = 3;

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

QStringList describe(const RunResult &result)
{
    QStringList lines;
    for (const RunResult::CompilerError &e : result.errors)
        lines.append(QStringLiteral("    error%1: %2").arg(e.line ? QStringLiteral(" on line %1").arg(*e.line) : QString(), e.message));
    if (result.crashed)
        lines.append(QStringLiteral("    crashed: ") + result.crashReason);
    if (result.timedOut)
        lines.append(QStringLiteral("    timed out"));
    for (const RunResult::TestResult &t : result.tests)
        lines.append(QStringLiteral("    [%1] %2").arg(t.passed ? QStringLiteral("pass") : QStringLiteral("FAIL"), t.text));
    if (!result.output.isEmpty())
        lines.append(QStringLiteral("    output: ") + swiftLiteral(result.output));
    return lines;
}

enum class Kind { solution, seed, passes, fails, mutant };

struct Job {
    const Lesson *lesson = nullptr;
    Kind kind = Kind::solution;
    QString code;
    QString name;         // an answer's description, or a mutant's "line N: `a` → `b`"
    bool equivalent = false;
};

struct Outcome {
    QStringList lines;    // what to show under the lesson
    int problems = 0;
    enum class Mutant { none, notCompiled, killed, survived, equivalent } mutant = Mutant::none;
};

Outcome runSolution(const Job &job, const Toolchain &toolchain)
{
    Outcome out;
    const RunResult solved = Runner::check(*job.lesson, job.code, toolchain, CodeRunner::runTimeout);
    out.problems += solved.passed() ? 0 : 1;
    out.lines.append(solved.passed() ? QStringLiteral("  the solution passes") : QStringLiteral("  the solution FAILS:"));
    if (!solved.passed())
        out.lines.append(describe(solved));
    if (solved.output.isEmpty())
        return out;
    const QString hardCoded = QStringLiteral("print(") + swiftLiteral(solved.output) + QLatin1Char(')');
    const RunResult cheat = Runner::check(*job.lesson, hardCoded, toolchain, CodeRunner::runTimeout);
    if (cheat.passed()) {
        ++out.problems;
        out.lines.append(QStringLiteral("  a hard-coded print of the output PASSES"));
    }
    return out;
}

Outcome run(const Job &job, const Toolchain &toolchain)
{
    if (job.kind == Kind::solution)
        return runSolution(job, toolchain);
    const double limit = job.kind == Kind::mutant ? mutantLimit : CodeRunner::runTimeout;
    const RunResult result = Runner::check(*job.lesson, job.code, toolchain, limit);
    Outcome out;
    switch (job.kind) {
    case Kind::seed:
        if (result.passed()) {
            ++out.problems;
            out.lines.append(QStringLiteral("  the starting code PASSES already"));
        } else if (!result.compiled) {
            // Not wrong in itself (a lesson may ask to fix errors), but the first Run shows no output.
            out.lines.append(QStringLiteral("  note: the starting code does not compile"));
        }
        break;
    case Kind::passes:
        if (!result.passed()) {
            ++out.problems;
            out.lines.append(QStringLiteral("  the answer \"%1\" should pass but FAILS:").arg(job.name));
            out.lines.append(describe(result));
        }
        break;
    case Kind::fails:
        if (result.passed()) {
            ++out.problems;
            out.lines.append(QStringLiteral("  the answer \"%1\" should fail but PASSES").arg(job.name));
        }
        break;
    case Kind::mutant:
        if (!result.compiled) {
            out.mutant = Outcome::Mutant::notCompiled;
        } else if (!result.passed()) {
            out.mutant = Outcome::Mutant::killed;
        } else if (job.equivalent) {
            out.mutant = Outcome::Mutant::equivalent;
        } else {
            out.mutant = Outcome::Mutant::survived;
            ++out.problems;
            out.lines.append(QStringLiteral("  a mutant SURVIVES, ") + job.name);
        }
        break;
    case Kind::solution:
        break;
    }
    return out;
}

// Runs every job on `workers` threads; the outcomes come back in job order.
std::vector<Outcome> runAll(const std::vector<Job> &jobs, const Toolchain &toolchain, int workers)
{
    std::vector<Outcome> outcomes(jobs.size());
    std::atomic<size_t> next = 0;
    std::atomic<size_t> done = 0;
    std::mutex printing;
    {
        std::vector<std::jthread> threads;
        for (int i = 0; i < workers; ++i) {
            threads.emplace_back([&] {
                for (size_t index = next++; index < jobs.size(); index = next++) {
                    outcomes[index] = run(jobs[index], toolchain);
                    if (const size_t finished = ++done; finished % 100 == 0) {
                        std::lock_guard lock(printing);
                        say(QStringLiteral("%1 of %2 runs done").arg(finished).arg(jobs.size()));
                    }
                }
            });
        }
    }
    return outcomes;
}

// The other answers and mutants of each lesson, as course/build.py --answers writes them.
std::optional<QJsonObject> readAnswers(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    const QJsonDocument document = QJsonDocument::fromJson(file.readAll());
    if (!document.isObject() || !document.object().value(u"lessons").isObject())
        return std::nullopt;
    return document.object().value(u"lessons").toObject();
}

void addAnswerJobs(std::vector<Job> &jobs, const Lesson &lesson, const QJsonObject &answers)
{
    for (const auto &[key, kind] : {std::pair{u"passes", Kind::passes}, std::pair{u"fails", Kind::fails}}) {
        for (const QJsonValue &answer : answers.value(key).toArray()) {
            const QJsonObject a = answer.toObject();
            jobs.push_back({&lesson, kind, a.value(u"code").toString(), a.value(u"name").toString(), false});
        }
    }
    for (const QJsonValue &value : answers.value(u"mutants").toArray()) {
        const QJsonObject m = value.toObject();
        const QString name = QStringLiteral("line %1: `%2` → `%3`")
                                 .arg(m.value(u"line").toInt())
                                 .arg(m.value(u"before").toString(), m.value(u"after").toString());
        jobs.push_back({&lesson, Kind::mutant, m.value(u"code").toString(), name, m.value(u"equivalent").toBool()});
    }
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QStringList args = app.arguments().mid(1);
    std::optional<QString> answersPath;
    int workers = SelfTest::defaultParallelism();
    for (qsizetype i = 0; i + 1 < args.size();) {
        if (args[i] == u"--answers") {
            answersPath = args[i + 1];
        } else if (args[i] == u"--jobs") {
            workers = std::max(1, args[i + 1].toInt());
        } else {
            ++i;
            continue;
        }
        args.remove(i, 2);
    }
    if (args.size() < 2) {
        say(QStringLiteral("usage: course_check COURSE.json SOLUTIONS.json [--answers FILE] [--jobs N] [LESSON-ID...]"));
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
    std::optional<QJsonObject> answers;
    if (answersPath && !(answers = readAnswers(*answersPath))) {
        say(QStringLiteral("Could not read ") + *answersPath + QStringLiteral("; write it with course/build.py --answers"));
        return 2;
    }
    const std::optional<Toolchain> toolchain = Toolchain::find();
    if (!toolchain) {
        say(QStringLiteral("No Swift toolchain found."));
        return 2;
    }

    const QStringList only = args.mid(2);
    const QList<Lesson> lessons = course.lessons();
    std::vector<Job> jobs;
    int missingAnswers = 0;
    for (const Lesson &lesson : lessons) {
        if (lesson.tests.isEmpty() || (!only.isEmpty() && !only.contains(lesson.id)))
            continue;
        jobs.push_back({&lesson, Kind::solution, solutions->value(lesson.id), {}, false});
        if (lesson.seed)
            jobs.push_back({&lesson, Kind::seed, *lesson.seed, {}, false});
        if (answers && answers->contains(lesson.id))
            addAnswerJobs(jobs, lesson, answers->value(lesson.id).toObject());
        else if (answers)
            ++missingAnswers;
    }
    say(QStringLiteral("%1 runs on %2 threads").arg(jobs.size()).arg(workers));
    const std::vector<Outcome> outcomes = runAll(jobs, *toolchain, workers);

    int bad = missingAnswers;
    int made = 0, notCompiled = 0, killed = 0, survived = 0, equivalent = 0;
    QStringList weakLessons;
    const Lesson *shown = nullptr;
    for (size_t i = 0; i < jobs.size(); ++i) {
        const Outcome &out = outcomes[i];
        bad += out.problems;
        if (jobs[i].lesson != shown) {
            shown = jobs[i].lesson;
            say(shown->id);
        }
        for (const QString &line : out.lines)
            say(line);
        if (out.mutant == Outcome::Mutant::none)
            continue;
        ++made;
        notCompiled += out.mutant == Outcome::Mutant::notCompiled;
        killed += out.mutant == Outcome::Mutant::killed;
        equivalent += out.mutant == Outcome::Mutant::equivalent;
        if (out.mutant == Outcome::Mutant::survived) {
            ++survived;
            if (!weakLessons.contains(jobs[i].lesson->id))
                weakLessons.append(jobs[i].lesson->id);
        }
    }
    if (missingAnswers)
        say(QStringLiteral("%1 lesson(s) have no entry in the answers file; rebuild it").arg(missingAnswers));
    if (answers) {
        say(QStringLiteral("Mutants: %1 made, %2 did not compile, %3 killed, %4 survived, %5 listed as equivalent.")
                .arg(made).arg(notCompiled).arg(killed).arg(survived).arg(equivalent));
        if (!weakLessons.isEmpty())
            say(QStringLiteral("Lessons whose tests accept a mutant (%1): %2").arg(weakLessons.size()).arg(weakLessons.join(u", ")));
    }
    say(bad == 0 ? QStringLiteral("All good.") : QStringLiteral("%1 problem(s).").arg(bad));
    return bad == 0 ? 0 : 1;
}
