// What the run pipeline reads from a compiler's or a program's output, on any
// text. The input is that output, optionally after a first line "@@ F T"
// that gives the test program's first learner line and the line where its
// tests start (otherwise those of a typical program). Every parser below
// reads the same input; a parser of the verdict lines of standard output
// joins the list as one more function.
#include "fuzzing.h"

#include "runner/runner.h"
#include "runner/shell.h"
#include "texts/texts.h"

#include <QRegularExpression>

using namespace Kestrun;
using namespace Kestrun::Fuzzing;
using Error = RunResult::CompilerError;

namespace {

struct Input {
    QString text;
    int firstLine = 1;
    int testStart = 1;
};

Input read(const uint8_t *data, size_t size)
{
    static const Runner::Program typical = Runner::program(
        QStringLiteral("let x = 1\nprint(x)\n"),
        {LessonTest{QStringLiteral("x is 1"), {Check{Check::Kind::swift, QStringLiteral("x == 1")}}}},
        QStringLiteral("0123456789abcdef0123456789abcdef"));
    static const QRegularExpression header(QStringLiteral("^@@ (\\d{1,6}) (\\d{1,6})\\n"));
    // Decoded as the process layer decodes what a child wrote.
    Input input{QString::fromUtf8(bytes(data, size)), typical.firstLine, typical.testStart};
    const QRegularExpressionMatch m = header.match(input.text);
    if (m.hasMatch()) {
        // As the program assembles them: the learner's code starts at line 1
        // or later, and the tests start no earlier.
        input.firstLine = qMax(1, m.captured(1).toInt());
        input.testStart = qMax(input.firstLine, m.captured(2).toInt());
        input.text.remove(0, m.capturedLength());
    }
    return input;
}

QString describe(const QList<Error> &errors)
{
    QString out;
    for (const Error &e : errors)
        out += (e.line ? QString::number(*e.line) : QStringLiteral("-")) + QLatin1Char(' ') + e.message + QLatin1Char('\n');
    return out;
}

// Every error is on a learner's line, or blames the tests, or is the one
// fallback made of the last three lines; no message spans lines; lines
// move with the first learner line; and lines are read one by one.
void checkCompilerErrors(const Input &in)
{
    const QList<Error> errors = Runner::compilerErrors(in.text, in.firstLine, in.testStart);
    FUZZ_CHECK(errors.size() <= Runner::maxErrors, describe(errors));
    FUZZ_CHECK(errors.isEmpty() == in.text.trimmed().isEmpty(), describe(errors));

    const QStringList lines = in.text.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    const QString fallback = lines.mid(qMax<qsizetype>(0, lines.size() - 3)).join(QLatin1Char(' '));
    const QString blame = Texts::get(Text::testsCouldNotUse);
    for (const Error &e : errors) {
        FUZZ_CHECK(!e.message.contains(QLatin1Char('\n')), describe(errors));
        if (e.line)
            FUZZ_CHECK(*e.line <= in.testStart - in.firstLine, describe(errors));
        else
            FUZZ_CHECK(e.message.startsWith(blame) || (errors.size() == 1 && e.message == fallback), describe(errors));
    }
    if (!in.text.contains(QLatin1String("main.swift:")) && !in.text.trimmed().isEmpty())
        FUZZ_CHECK(errors.size() == 1 && !errors[0].line && errors[0].message == fallback, describe(errors));

    QList<Error> shifted = Runner::compilerErrors(in.text, in.firstLine + 1, in.testStart);
    for (Error &e : shifted) {
        if (e.line)
            ++*e.line;
    }
    FUZZ_CHECK(shifted == errors, describe(shifted) + QStringLiteral("\nversus\n") + describe(errors));

    // A line that always matches keeps both halves from falling back.
    const qsizetype middle = in.text.indexOf(QLatin1Char('\n'), in.text.size() / 2);
    if (middle >= 0) {
        const QString sure = QStringLiteral("\nmain.swift:1:1: error: sure\n");
        const QString first = in.text.first(middle) + sure;
        const QString second = in.text.sliced(middle + 1) + sure;
        const auto errorsOf = [&](const QString &t) { return Runner::compilerErrors(t, in.firstLine, in.testStart); };
        const QList<Error> whole = errorsOf(first + second);
        const QList<Error> parts = (errorsOf(first) + errorsOf(second)).mid(0, Runner::maxErrors);
        FUZZ_CHECK(whole == parts, describe(whole) + QStringLiteral("\nversus\n") + describe(parts));
    }

    // A diagnostic of our own making comes back with its line and the rest of its line.
    const QString message = in.text.section(QLatin1Char('\n'), 0, 0);
    const int line = in.firstLine + int(in.text.size() % 50);
    const QList<Error> made = Runner::compilerErrors(
        QStringLiteral("main.swift:%1:7: error: ").arg(line) + message, in.firstLine, in.testStart);
    const Error expected = line < in.testStart ? Error{line - in.firstLine + 1, message} : Error{std::nullopt, blame + message};
    FUZZ_CHECK(made.size() == 1 && made[0] == expected, describe(made));
}

// The rest of the first "Fatal error: " line, or the general sentence.
void checkCrashReason(const Input &in)
{
    const QString reason = Runner::crashReason(in.text);
    const qsizetype at = in.text.indexOf(QLatin1String("Fatal error: "));
    if (at < 0) {
        FUZZ_CHECK(reason == Texts::get(Text::stoppedUnexpectedly), reason);
        return;
    }
    const qsizetype from = at + 13;
    const qsizetype lineEnd = in.text.indexOf(QLatin1Char('\n'), from);
    FUZZ_CHECK(reason == in.text.sliced(from, (lineEnd < 0 ? in.text.size() : lineEnd) - from), reason);
}

// The verdict lines of standard output, read the way the run pipeline
// describes them: a line marked with this run's nonce is never shown, counts
// for its test when it reads "<marker><test> <flag>", and fails the test
// unless the flag is exactly 1; every Swift check must report.
void checkVerdicts(const Input &in)
{
    static const QString nonce = QStringLiteral("0123456789abcdef0123456789abcdef");
    static const Lesson lesson = [] {
        Lesson l;
        const Check swift{Check::Kind::swift, QStringLiteral("true")};
        l.tests = {LessonTest{QStringLiteral("one check"), {swift}},
                   LessonTest{QStringLiteral("two checks"), {swift, swift}},
                   LessonTest{QStringLiteral("prints hello"), {Check{Check::Kind::output, QStringLiteral("^hello$")}}},
                   LessonTest{QStringLiteral("no error"), {Check{Check::Kind::nooutput, QStringLiteral("error")}}}};
        return l;
    }();
    Shell::Output output;
    output.standardOutput = in.text;
    output.status = int(in.text.size() % 3 == 0);
    output.timedOut = in.text.size() % 7 == 0;
    const RunResult r = Runner::judge(lesson, QString(), nonce, output);

    const QString marker = QChar(0x1E) + nonce + QLatin1Char(' ');
    QStringList console;
    QList<int> reported(lesson.tests.size(), 0);
    QList<bool> failed(lesson.tests.size(), false);
    static const QRegularExpression number(QStringLiteral("^[+-]?[0-9]+$"));
    for (const QString &line : in.text.split(QLatin1Char('\n'))) {
        if (!line.startsWith(marker)) {
            console.append(line);
            continue;
        }
        const QStringList parts = line.split(QLatin1Char(' '), Qt::SkipEmptyParts);
        bool ok = false;
        const qlonglong test = parts.size() == 3 && number.match(parts[1]).hasMatch() ? parts[1].toLongLong(&ok) : -1;
        if (!ok || test < 0 || test >= lesson.tests.size())
            continue;
        ++reported[test];
        failed[test] = failed[test] || parts[2] != QLatin1String("1");
    }
    FUZZ_CHECK(r.compiled && r.tests.size() == lesson.tests.size(), r.output);
    FUZZ_CHECK(!r.output.contains(QLatin1Char('\n') + marker) && !r.output.startsWith(marker), r.output);
    FUZZ_CHECK(r.timedOut == output.timedOut && r.crashed == (!output.timedOut && output.status != 0), r.output);
    const QList<int> checks{1, 2, 0, 0};
    for (int i = 0; i < 2; ++i)
        FUZZ_CHECK(r.tests[i].passed == (reported[i] >= checks[i] && !failed[i]), r.tests[i].text);
    static const QRegularExpression hello(QStringLiteral("^hello$"), QRegularExpression::MultilineOption);
    static const QRegularExpression error(QStringLiteral("error"), QRegularExpression::MultilineOption);
    FUZZ_CHECK(r.tests[2].passed == hello.match(r.output).hasMatch(), r.output);
    FUZZ_CHECK(r.tests[3].passed == !error.match(r.output).hasMatch(), r.output);
    FUZZ_CHECK(console.join(QLatin1Char('\n')).contains(r.output), r.output);
}

using Parser = void (*)(const Input &);
const Parser parsers[] = {checkCompilerErrors, checkCrashReason, checkVerdicts};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const Input input = read(data, size);
    for (Parser parse : parsers)
        parse(input);
    return 0;
}
