#include "runner/runner.h"
#include "runner/shell.h"
#include "texts/texts.h"
#include "../processes.h"

#include <QDir>
#include <QElapsedTimer>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <future>

using namespace Kestrun;

namespace {

using K = Check::Kind;

const Check expectTrue = Check{K::swift, QStringLiteral("expect(true)")};

QList<bool> verdicts(const RunResult &r)
{
    QList<bool> v;
    for (const RunResult::TestResult &t : r.tests)
        v.append(t.passed);
    return v;
}

} // namespace

class TestRunner : public QObject {
    Q_OBJECT

    std::optional<Toolchain> m_toolchain;
    QTemporaryDir m_tmp;  // the runs' temporary directory, to see what they leave behind

    RunResult run(const QString &code, const QList<LessonTest> &tests, double limit = 8)
    {
        Lesson lesson;
        lesson.tests = tests;
        return Runner::check(lesson, code, *m_toolchain, limit);
    }

private Q_SLOTS:
    void initTestCase()
    {
        m_toolchain = Toolchain::find();
        if (!m_toolchain)
            QSKIP("no Swift toolchain on this machine");
        // CTest runs this twice: interpreting, and with KESTRUN_COMPILE=1 compiling.
        QCOMPARE(m_toolchain->interpreter.has_value(), qgetenv("KESTRUN_COMPILE") != "1");
        qputenv("TMPDIR", m_tmp.path().toUtf8());
        QCOMPARE(QDir::tempPath(), QDir(m_tmp.path()).canonicalPath());
    }

    // After every run: no work directory and no process left.
    void cleanup()
    {
        QCOMPARE(QDir(m_tmp.path()).entryList({QStringLiteral("kestrun-*")}, QDir::AllEntries | QDir::Hidden), QStringList());
        QCOMPARE(processesLeft(m_tmp.path()), QStringList());
    }

    void results_data()
    {
        QTest::addColumn<QString>("code");
        QTest::addColumn<QList<LessonTest>>("tests");
        QTest::addColumn<QList<bool>>("passed");
        QTest::addColumn<QString>("output");

        QTest::newRow("prints hi and passes")
            << "print(\"hi\")" << QList<LessonTest>{{"says hi", {Check{K::output, "^hi$"}, expectTrue}}}
            << QList<bool>{true} << "hi";
        // Each kind passes and fails; an invalid pattern fails a required match, never a forbidden one.
        QTest::newRow("each kind of check")
            << "let answer = 42\nprint(\"The answer is \\(answer)\")"
            << QList<LessonTest>{
                   {"not printed", {Check{K::output, "^42$"}}}, {"no error printed", {Check{K::nooutput, "[Ee]rror"}}},
                   {"printed something forbidden", {Check{K::nooutput, "answer"}}},
                   {"uses let", {Check{K::source, "^let answer"}}}, {"no let", {Check{K::source, "^var "}}},
                   {"no literal print", {Check{K::nosource, "print\\(\"The answer is 42"}}},
                   {"forbidden literal at a line end", {Check{K::nosource, "42$"}}},
                   {"invalid output pattern", {Check{K::output, "("}}}, {"invalid nosource pattern", {Check{K::nosource, "["}}},
                   {"a throwing condition fails", {Check{K::swift, "struct E: Error {}\nfunc f() throws -> Bool { throw E() }\nexpect(try f())"}}},
               }
            << QList<bool>{false, true, false, true, false, true, false, false, true, false} << "The answer is 42";
        QTest::newRow("two swift checks, one fails")
            << "let n = 3" << QList<LessonTest>{{"both", {Check{K::swift, "expect(n == 3)"}, Check{K::swift, "expect(n == 4)"}}}}
            << QList<bool>{false} << "";
        QTest::newRow("a forged verdict stays output")
            << "print(\"\\u{1E}00000000000000000000000000000000 0 1\")\nprint(\"\\u{1E}x 0 1\")"
            << QList<LessonTest>{{"never reported", {Check{K::swift, "expect(false)"}}}}
            << QList<bool>{false} << "\x1e" "00000000000000000000000000000000 0 1\n\x1e" "x 0 1";
        QTest::newRow("no tests never pass") << "print(1)" << QList<LessonTest>{} << QList<bool>{} << "1";
        QTest::newRow("learner imports Foundation and Glibc")
            << "import Foundation\nimport Glibc\nprint(String(format: \"%.1f\", sqrt(2.0)))"
            << QList<LessonTest>{{"root", {Check{K::output, "^1\\.4$"}}}} << QList<bool>{true} << "1.4";
    }

    void results()
    {
        QFETCH(QString, code);
        QFETCH(QList<LessonTest>, tests);
        QFETCH(QList<bool>, passed);
        QFETCH(QString, output);
        const RunResult r = run(code, tests);
        QVERIFY2(r.compiled, qPrintable(r.errors.value(0).message));
        QVERIFY(!r.crashed && !r.timedOut);
        QCOMPARE(verdicts(r), passed);
        QCOMPARE(r.output, output);
        QCOMPARE(r.passed(), !passed.isEmpty() && !passed.contains(false));
    }

    void compilerErrors_data()
    {
        QTest::addColumn<QString>("code");
        QTest::addColumn<QList<LessonTest>>("tests");
        QTest::addColumn<QList<bool>>("passed");
        QTest::addColumn<int>("count");
        QTest::addColumn<std::optional<int>>("line");
        QTest::addColumn<QString>("message"); // a pattern

        // A source check keeps its verdict when the code does not compile.
        QTest::newRow("type error on the second line")
            << "let a = 1\nlet n: Int = \"no\"" << QList<LessonTest>{{"uses let", {Check{K::source, "^let n"}}}, {"value", {expectTrue}}}
            << QList<bool>{true, false} << 1 << std::optional<int>(2) << "^cannot convert";
        QTest::newRow("the tests call a missing function")
            << "let a = 1" << QList<LessonTest>{{"greets", {Check{K::swift, "expect(greet() == \"hi\")"}}}} << QList<bool>{false}
            << 1 << std::optional<int>() << "^" + QRegularExpression::escape(Texts::get(Text::testsCouldNotUse));
        QTest::newRow("thirteen errors give twelve")
            << QStringLiteral("let _: Int = \"no\"\n").repeated(13) << QList<LessonTest>{} << QList<bool>{} << 12
            << std::optional<int>(1) << "^cannot convert";
        QTest::newRow("a link failure falls back to the last lines")
            << "@_silgen_name(\"kestrun_no_such_symbol\") func missing()\nmissing()" << QList<LessonTest>{}
            << QList<bool>{} << 1 << std::optional<int>() << "kestrun_no_such_symbol";
    }

    void compilerErrors()
    {
        QFETCH(QString, code);
        QFETCH(QList<LessonTest>, tests);
        QFETCH(QList<bool>, passed);
        QFETCH(int, count);
        QFETCH(std::optional<int>, line);
        QFETCH(QString, message);
        const RunResult r = run(code, tests);
        QVERIFY(!r.compiled && r.output.isEmpty() && !r.crashed);
        QCOMPARE(verdicts(r), passed);
        QCOMPARE(r.errors.size(), count);
        QCOMPARE(r.errors[0].line, line);
        QVERIFY2(r.errors[0].message.contains(QRegularExpression(message)), qPrintable(r.errors[0].message));
    }

    // What the result says of programs that misbehave, each stopped within its
    // limit; what they printed is kept, and output checks still apply to it.
    void misbehaving_data()
    {
        QTest::addColumn<QString>("code");
        QTest::addColumn<double>("limit");
        QTest::addColumn<bool>("timedOut");
        QTest::addColumn<QString>("reason");
        QTest::addColumn<QString>("output");
        QTest::newRow("endless loop") << "print(\"start\")\nwhile true {}" << 1.0 << true << "" << "start";
        QTest::newRow("background process keeps the output open")
            << "import Glibc\nprint(\"started\")\n_ = system(\"sleep 30 &\")" << 5.0 << false << "" << "started";
        QTest::newRow("exit 3") << "import Glibc\nexit(3)" << 5.0 << false << Texts::get(Text::stoppedUnexpectedly) << "";
        // With the runtime's backtracer off, a crash is a crash, not a time-out.
        QTest::newRow("index out of range")
            << "print(\"before\")\nlet a: [Int] = []\nprint(a[1])" << 8.0 << false << "Index out of range" << "before";
    }

    void misbehaving()
    {
        QFETCH(QString, code);
        QFETCH(double, limit);
        QFETCH(bool, timedOut);
        QFETCH(QString, reason);
        QFETCH(QString, output);
        QElapsedTimer timer;
        timer.start();
        const RunResult r = run(code, {{"reported", {expectTrue}}, {"printed", {Check{K::output, "^" + output + "$"}}}}, limit);
        QVERIFY2(timer.elapsed() < 6000, qPrintable(QString::number(timer.elapsed())));
        QVERIFY2(r.compiled, qPrintable(r.errors.value(0).message));
        QCOMPARE(r.timedOut, timedOut);
        QCOMPARE(r.crashed, !reason.isEmpty());
        QCOMPARE(r.crashReason, reason);
        QCOMPARE(r.output, output);
        QCOMPARE(verdicts(r), (QList<bool>{reason.isEmpty() && !timedOut, true}));
    }

    // The run itself, timed apart from compiling: a Swift program that
    // crashes or exits comes back at once with its status (the shell's own
    // tests cover loops, output and input).
    void stoppedInTime_data()
    {
        QTest::addColumn<QString>("code");
        QTest::addColumn<int>("status");
        QTest::newRow("abort") << "import Glibc\nabort()" << 6;
        QTest::newRow("recursion") << "func f(_ n: Int) -> Int { f(n + 1) + 1 }\nprint(f(0))" << 11;
        QTest::newRow("signal 5") << "import Glibc\nraise(SIGTRAP)" << 5;
    }

    void stoppedInTime()
    {
        QFETCH(QString, code);
        QFETCH(int, status);
        QTemporaryDir dir(m_tmp.filePath(QStringLiteral("program-XXXXXX")));
        QFile source(dir.filePath(QStringLiteral("main.swift")));
        QVERIFY(source.open(QIODevice::WriteOnly) && source.write(Runner::program(code, {}, QStringLiteral("n")).source.toUtf8()) > 0);
        source.close();
        const Shell::Output compiled = Shell::run(m_toolchain->swiftc,
            QStringLiteral("-swift-version 6 -o program main.swift").split(QLatin1Char(' ')), dir.path(), 120);
        QVERIFY2(compiled.status == 0, qPrintable(compiled.standardError));

        QElapsedTimer timer;
        timer.start();
        const Shell::Output out = Shell::run(dir.filePath(QStringLiteral("program")), {}, dir.path(), 1);
        QVERIFY2(timer.elapsed() < 2000, qPrintable(QString::number(timer.elapsed())));
        QCOMPARE(out.status, status);
        QVERIFY(!out.timedOut);
    }

    // Whether a run interprets or compiles follows the record alone.
    void interpreterDecides()
    {
        const Lesson lesson;
        const QString code = "print(CommandLine.arguments[0].hasSuffix(\"/program\") ? \"compiled\" : \"interpreted\")";
        QCOMPARE(Runner::check(lesson, code, m_toolchain->compiling(), 8).output, "compiled");
        if (m_toolchain->interpreter)
            QCOMPARE(Runner::check(lesson, code, *m_toolchain, 8).output, "interpreted");
    }

    void writeFailureIsReported()
    {
        const QByteArray saved = qgetenv("TMPDIR");
        qputenv("TMPDIR", "/dev/null"); // not a directory
        const RunResult r = run(QStringLiteral("print(1)"), {{"source only", {Check{K::source, "print"}}}});
        qputenv("TMPDIR", saved);
        QVERIFY(!r.compiled && r.errors.size() == 1);
        QVERIFY(r.errors[0].message.startsWith(Texts::get(Text::couldNotWrite)));
        QCOMPARE(verdicts(r), QList<bool>{false});
    }

    // The toolchain removed while the app runs: a run says so at once.
    void toolchainRemoved()
    {
        QTemporaryDir gone;
        const QString missing = gone.filePath(QStringLiteral("bin/swiftc"));
        Toolchain removed = *m_toolchain;
        removed.swiftc = missing;
        removed.interpreter.reset();
        QElapsedTimer timer;
        timer.start();
        RunResult r = Runner::check(Lesson(), QStringLiteral("print(1)"), removed, 8);
        QVERIFY(!r.compiled && r.errors.size() == 1);
        QCOMPARE(r.errors[0].message, Texts::get(Text::compilerNotStarted));
        removed.interpreter = gone.filePath(QStringLiteral("bin/swift-frontend"));
        r = Runner::check(Lesson(), QStringLiteral("print(1)"), removed, 8);
        QVERIFY(r.compiled && r.crashed && !r.timedOut);
        QCOMPARE(r.crashReason, Texts::get(Text::stoppedUnexpectedly));
        QVERIFY2(timer.elapsed() < 5000, qPrintable(QString::number(timer.elapsed())));
    }

    void concurrentChecks()
    {
        std::vector<std::future<RunResult>> runs;
        for (int i = 0; i < 4; ++i)
            runs.push_back(std::async(std::launch::async, [this, i] {
                return run(QStringLiteral("let n = %1\nprint(n)").arg(i),
                           {{"n", {Check{K::swift, QStringLiteral("expect(n == %1)").arg(i % 2 ? 1 : i)}}}});
            }));
        for (int i = 0; i < 4; ++i) {
            const RunResult r = runs[i].get();
            QCOMPARE(r.output, QString::number(i));
            QCOMPARE(r.passed(), i % 2 == 0 || i == 1);
        }
    }
};

QTEST_GUILESS_MAIN(TestRunner)
#include "tst_runner.moc"
