#include "runner.h"

#include <algorithm>
#include <cmath>

namespace Kestrun::Runner {

namespace {

// One statement on the line of setvbuf, so that the prelude has as many
// lines with a timer as without. Whole seconds, rounded up: setitimer would
// be exact, but its few lines cost the compiler 55 ms of processor time on
// every run, alarm() about 1 ms.
QString timer(std::optional<double> runLimit)
{
    if (!runLimit)
        return QString();
    const int seconds = int(std::ceil(std::clamp(*runLimit, 1.0, 1e6)));
    return QStringLiteral("; _ = alarm(%1)").arg(seconds);
}

} // namespace

QString prelude(std::optional<double> runLimit)
{
#if defined(Q_OS_MACOS)
    return QStringLiteral("#if canImport(Darwin)\n"
                          "import Darwin\n"
                          "setvbuf(stdout, nil, _IOLBF, 0)")
        + timer(runLimit) + QStringLiteral("\n#endif\n");
#else
    // Pipes are fully buffered by default. Glibc's stdout is a mutable
    // global, which Swift 6's strict concurrency rejects unless imported
    // with @preconcurrency; that also holds when the learner imports
    // Foundation or Glibc again.
    return QStringLiteral("#if canImport(Glibc)\n"
                          "@preconcurrency import Glibc\n"
                          "setvbuf(stdout, nil, _IOLBF, 0)")
        + timer(runLimit) + QStringLiteral("\n#endif\n");
#endif
}

namespace {

QString testBlock(int test, const QString &checkCode, const QString &nonce)
{
    QStringList lines = checkCode.split(QLatin1Char('\n'));
    for (QString &line : lines)
        line.prepend(QLatin1String("    "));
    return QStringLiteral("do {\n"
                          "    var __qvPass = true\n"
                          "    func expect(_ condition: @autoclosure () throws -> Bool) "
                          "{ do { if try !condition() { __qvPass = false } } catch { __qvPass = false } }\n")
        + lines.join(QLatin1Char('\n'))
        + QStringLiteral("\n    print(\"\\u{1E}") + nonce + QLatin1Char(' ') + QString::number(test)
        + QStringLiteral(" \\(__qvPass ? 1 : 0)\")\n}");
}

} // namespace

Program program(const QString &code, const QList<LessonTest> &tests, const QString &nonce, std::optional<double> runLimit)
{
    QString cleaned = code;
    cleaned.remove(QLatin1Char('\r'));

    QStringList blocks;
    for (qsizetype i = 0; i < tests.size(); ++i) {
        for (const Check &check : tests[i].checks) {
            if (check.kind == Check::Kind::swift)
                blocks.append(testBlock(int(i), check.code, nonce));
        }
    }

    const QString head = prelude(runLimit);
    Program p;
    p.source = head + cleaned + QStringLiteral("\n\n// MARK: the lesson's tests\n") + blocks.join(QLatin1Char('\n'))
        + QLatin1Char('\n');
    p.firstLine = int(head.count(QLatin1Char('\n'))) + 1;
    const int learnerLines = int(cleaned.count(QLatin1Char('\n'))) + 1;
    p.testStart = (p.firstLine - 1) + learnerLines + 2;
    return p;
}

} // namespace Kestrun::Runner
