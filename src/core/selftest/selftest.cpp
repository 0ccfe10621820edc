#include "selftest.h"

#include "runner/coderunner.h"
#include "course/resources.h"
#include "runner/runner.h"
#include "runner/shell.h"
#include "runner/workdirectory.h"
#include "texts/texts.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QThread>

#include <condition_variable>
#include <cstdio>
#include <deque>
#include <mutex>
#include <thread>

namespace Kestrun::SelfTest {

namespace {

constexpr double loopProbeLimit = 2;

void printToStandardOutput(const QString &line)
{
    std::fputs(qPrintable(line + QLatin1Char('\n')), stdout);
    std::fflush(stdout);
}

// The three probes show that the runner still reports what learners meet.
QStringList probe(const Course &course, const Toolchain &toolchain)
{
    const std::optional<Lesson> lesson = course.lesson(QStringLiteral("values-constants"));
    if (!lesson)
        return {QStringLiteral("the lesson \"values-constants\" the runner probes use is missing")};

    QStringList problems;
    const RunResult crash = Runner::check(*lesson,
        QStringLiteral("let language = \"Swift\"\nlet a: [Int] = []\nprint(a[1])"), toolchain, CodeRunner::runTimeout);
    if (!crash.crashed || !crash.crashReason.contains(QLatin1String("Index out of range")))
        problems.append(QStringLiteral("a crash was not reported"));

    const RunResult loop
        = Runner::check(*lesson, QStringLiteral("let language = \"Swift\"\nwhile true {}"), toolchain, loopProbeLimit);
    if (!loop.timedOut)
        problems.append(QStringLiteral("an endless loop was not stopped"));

    const RunResult error
        = Runner::check(*lesson, QStringLiteral("let language = \"Swift\"\nlet n: Int = \"no\""), toolchain, CodeRunner::runTimeout);
    if (error.compiled || error.errors.isEmpty() || error.errors.first().line != 2)
        problems.append(QStringLiteral("a compiler error was not reported on line 2"));
    return problems;
}

// Checks lessons on `workers` threads, lesson order first, and hands each
// lesson's problems to `finished` on the calling thread as checks complete.
// Once the runs are stopped (Shell::stopAll) no further lesson starts.
void checkAll(const QList<Lesson> &lessons, const QHash<QString, QString> &solutions, const Toolchain &toolchain,
              int workers, const std::function<void(const QStringList &)> &finished)
{
    std::mutex mutex;
    std::condition_variable ready;
    std::deque<QStringList> results;
    qsizetype next = 0;
    int running = int(std::min<qsizetype>(workers, lessons.size()));

    auto work = [&] {
        for (;;) {
            qsizetype index;
            {
                std::lock_guard lock(mutex);
                if (next >= lessons.size() || Shell::stopped()) {
                    --running;
                    ready.notify_one();
                    return;
                }
                index = next++;
            }
            QStringList problems = checkLesson(lessons[index], solutions, toolchain);
            {
                std::lock_guard lock(mutex);
                results.push_back(std::move(problems));
            }
            ready.notify_one();
        }
    };

    std::vector<std::jthread> threads;
    for (int i = running; i > 0; --i)
        threads.emplace_back(work);

    for (;;) {
        QStringList problems;
        {
            std::unique_lock lock(mutex);
            ready.wait(lock, [&] { return !results.empty() || running == 0; });
            if (results.empty())
                return;
            problems = std::move(results.front());
            results.pop_front();
        }
        finished(problems);
    }
}

QString quoted(const QString &text)
{
    QString q = QStringLiteral("\"");
    for (const QChar c : text) {
        switch (c.unicode()) {
        case u'"': q += QLatin1String("\\\""); break;
        case u'\\': q += QLatin1String("\\\\"); break;
        case u'\n': q += QLatin1String("\\n"); break;
        case u'\r': q += QLatin1String("\\r"); break;
        case u'\t': q += QLatin1String("\\t"); break;
        default: q += c;
        }
    }
    return q + QLatin1Char('"');
}

} // namespace

QString quotedList(const QStringList &items)
{
    QStringList parts;
    for (const QString &item : items)
        parts.append(quoted(item));
    return QLatin1Char('[') + parts.join(QLatin1String(", ")) + QLatin1Char(']');
}

int defaultParallelism()
{
    return std::max(2, QThread::idealThreadCount() - 1);
}

QString defaultSolutionsPath()
{
    const QString name = QStringLiteral("solutions.json");
    return Resources::url(name).value_or(name);
}

std::optional<QHash<QString, QString>> readSolutions(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(file.readAll(), &error);
    if (error.error != QJsonParseError::NoError || !document.isObject())
        return std::nullopt;
    QHash<QString, QString> solutions;
    const QJsonObject object = document.object();
    for (auto it = object.begin(); it != object.end(); ++it) {
        if (!it->isString())
            return std::nullopt;
        solutions.insert(it.key(), it->toString());
    }
    return solutions;
}

QStringList checkLesson(const Lesson &lesson, const QHash<QString, QString> &solutions, const Toolchain &toolchain)
{
    const auto solution = solutions.constFind(lesson.id);
    if (solution == solutions.constEnd())
        return {lesson.id + QStringLiteral(": no solution")};

    QStringList problems;
    const RunResult result = Runner::check(lesson, *solution, toolchain, CodeRunner::runTimeout);
    if (!result.passed()) {
        QStringList messages;
        for (const RunResult::CompilerError &e : result.errors)
            messages.append(e.message);
        QStringList failing;
        for (const RunResult::TestResult &t : result.tests) {
            if (!t.passed)
                failing.append(t.text);
        }
        problems.append(lesson.id + QStringLiteral(": the solution fails ") + quotedList(messages) + QLatin1Char(' ')
                        + quotedList(failing));
    }
    if (lesson.seed && *lesson.seed != *solution && Runner::check(lesson, *lesson.seed, toolchain, CodeRunner::runTimeout).passed())
        problems.append(lesson.id + QStringLiteral(": the starting code already passes"));
    return problems;
}

int run(const std::optional<QString> &solutionsPath)
{
    Options options;
    options.solutionsPath = solutionsPath;
    return run(std::move(options));
}

int run(Options options)
{
    const auto print = options.print ? options.print : printToStandardOutput;
    WorkDirectory::removeAbandoned(QDir::tempPath());

    const std::optional<Toolchain> toolchain = options.findToolchain();
    if (!toolchain) {
        print(Texts::get(Text::selfTestNoCompiler));
        return couldNotStart;
    }
    print(QStringLiteral("Swift ") + toolchain->version + QStringLiteral(" at ") + toolchain->swiftc);

    Course course;
    try {
        course = options.loadCourse();
    } catch (const Course::LoadError &error) {
        print(QStringLiteral("Could not load the course: ") + error.message());
        return couldNotStart;
    }

    const QString path = options.solutionsPath.value_or(defaultSolutionsPath());
    const std::optional<QHash<QString, QString>> solutions = readSolutions(path);
    if (!solutions) {
        print(QStringLiteral("Could not read ") + path);
        return couldNotStart;
    }

    QStringList problems = probe(course, *toolchain);
    if (Shell::stopped())
        return interrupted;

    QList<Lesson> withCode;
    for (const Lesson &lesson : course.lessons()) {
        if (!lesson.tests.isEmpty())
            withCode.append(lesson);
    }
    const qsizetype total = withCode.size();
    if (total != solutions->size())
        problems.append(QStringLiteral("%1 lessons with code, but %2 solutions").arg(total).arg(solutions->size()));

    qsizetype finished = 0;
    const int workers = options.parallelism > 0 ? options.parallelism : defaultParallelism();
    checkAll(withCode, *solutions, *toolchain, workers, [&](const QStringList &lessonProblems) {
        problems.append(lessonProblems);
        if (++finished % 10 == 0)
            print(QStringLiteral("%1 of %2 lessons checked").arg(finished).arg(total));
    });

    // What checks were cut short found says nothing about the course.
    if (Shell::stopped())
        return interrupted;
    if (problems.isEmpty()) {
        print(QStringLiteral("All %1 lessons with code check out, and the runner reports crashes, loops and errors.")
                  .arg(total));
        return allGood;
    }
    print(QStringLiteral("%1 problem(s):").arg(problems.size()));
    for (const QString &problem : problems)
        print(QStringLiteral("  ") + problem);
    return problemsFound;
}

} // namespace Kestrun::SelfTest
