#include "runner.h"
#include "shell.h"
#include "texts.h"

#include <QDir>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTest>

#include <future>

namespace {

Check check(Check::Kind kind, const QString &code)
{
    return Check{kind, code};
}

Lesson lessonWith(const QList<LessonTest> &tests)
{
    Lesson l = Lesson::warmUp();
    l.id = QStringLiteral("test");
    l.tests = tests;
    return l;
}

const Check expectTrue = check(Check::Kind::swift, QStringLiteral("expect(true)"));

QList<bool> verdicts(const RunResult &r)
{
    QList<bool> v;
    for (const RunResult::TestResult &t : r.tests)
        v.append(t.passed);
    return v;
}

// Processes whose command line mentions `text`, other than this one.
QStringList processesMentioning(const QString &text)
{
    QStringList found;
    for (const QString &pid : QDir(QStringLiteral("/proc")).entryList(QDir::Dirs)) {
        bool numeric = false;
        if (pid.toInt(&numeric) == QCoreApplication::applicationPid() || !numeric)
            continue;
        QFile cmdline(QStringLiteral("/proc/%1/cmdline").arg(pid));
        if (cmdline.open(QIODevice::ReadOnly) && QString::fromUtf8(cmdline.readAll()).contains(text))
            found.append(pid);
    }
    return found;
}

} // namespace

class TestRunner : public QObject {
    Q_OBJECT

    std::optional<Toolchain> m_toolchain;
    QTemporaryDir m_tmp;  // the runs' temporary directory, to see what they leave behind

    RunResult run(const QString &code, const QList<LessonTest> &tests, double limit = 8)
    {
        return Runner::check(lessonWith(tests), code, *m_toolchain, limit);
    }

    void verifyNothingLeft()
    {
        QCOMPARE(QDir(m_tmp.path()).entryList({QStringLiteral("kestrun-*")}, QDir::AllEntries | QDir::Hidden), QStringList());
        QCOMPARE(processesMentioning(m_tmp.path()), QStringList());
    }

private Q_SLOTS:
    void initTestCase()
    {
        m_toolchain = Toolchain::find();
        if (!m_toolchain)
            QSKIP("no Swift toolchain on this machine");
        qputenv("TMPDIR", m_tmp.path().toUtf8());
        QCOMPARE(QDir::tempPath(), QDir(m_tmp.path()).canonicalPath());
    }

    void cleanup()
    {
        verifyNothingLeft();
    }

    void results_data()
    {
        QTest::addColumn<QString>("code");
        QTest::addColumn<QList<LessonTest>>("tests");
        QTest::addColumn<QList<bool>>("passed");
        QTest::addColumn<QString>("output");

        using K = Check::Kind;
        QTest::newRow("prints hi and passes")
            << "print(\"hi\")" << QList<LessonTest>{{"says hi", {check(K::output, "^hi$"), expectTrue}}}
            << QList<bool>{true} << "hi";
        QTest::newRow("each kind of check")
            << "let answer = 42\nprint(\"The answer is \\(answer)\")"
            << QList<LessonTest>{
                   {"value", {check(K::swift, "expect(answer == 42)")}},
                   {"wrong value", {check(K::swift, "expect(answer == 41)")}},
                   {"printed", {check(K::output, "^The answer is 42$")}},
                   {"not printed", {check(K::output, "^42$")}},
                   {"no error printed", {check(K::nooutput, "[Ee]rror")}},
                   {"printed something forbidden", {check(K::nooutput, "answer")}},
                   {"uses let", {check(K::source, "^let answer")}},
                   {"no let", {check(K::source, "^var ")}},
                   {"no literal print", {check(K::nosource, "print\\(\"The answer is 42")}},
                   {"forbidden literal", {check(K::nosource, "42$")}},
                   {"invalid output pattern", {check(K::output, "(")}},
                   {"invalid nooutput pattern", {check(K::nooutput, "(")}},
                   {"invalid source pattern", {check(K::source, "[")}},
                   {"invalid nosource pattern", {check(K::nosource, "[")}},
                   {"a throwing condition fails", {check(K::swift, "struct E: Error {}\nfunc f() throws -> Bool { throw E() }\nexpect(try f())")}},
               }
            << QList<bool>{true, false, true, false, true, false, true, false, true, false, false, true, false, true, false}
            << "The answer is 42";
        QTest::newRow("two swift checks, one fails")
            << "let n = 3" << QList<LessonTest>{{"both", {check(K::swift, "expect(n == 3)"), check(K::swift, "expect(n == 4)")}}}
            << QList<bool>{false} << "";
        QTest::newRow("a forged verdict stays output")
            << "print(\"\\u{1E}00000000000000000000000000000000 0 1\")\nprint(\"\\u{1E}x 0 1\")"
            << QList<LessonTest>{{"never reported", {check(K::swift, "expect(false)")}}}
            << QList<bool>{false} << "\x1e" "00000000000000000000000000000000 0 1\n\x1e" "x 0 1";
        QTest::newRow("no tests never pass") << "print(1)" << QList<LessonTest>{} << QList<bool>{} << "1";
        QTest::newRow("learner imports Foundation and Glibc")
            << "import Foundation\nimport Glibc\nprint(String(format: \"%.1f\", sqrt(2.0)))"
            << QList<LessonTest>{{"root", {check(K::output, "^1\\.4$")}}} << QList<bool>{true} << "1.4";
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
        QTest::addColumn<int>("count");
        QTest::addColumn<std::optional<int>>("line");
        QTest::addColumn<QString>("message");

        const QList<LessonTest> usesGreet{{"greets", {check(Check::Kind::swift, "expect(greet() == \"hi\")")}}};
        QTest::newRow("type error on the second line")
            << "let a = 1\nlet n: Int = \"no\"" << QList<LessonTest>{} << 1 << std::optional<int>(2) << "cannot convert";
        QTest::newRow("carriage returns do not shift lines")
            << "let a = 1\r\n\r\nlet n: Int = \"no\"" << QList<LessonTest>{} << 1 << std::optional<int>(3) << "cannot convert";
        QTest::newRow("the tests call a missing function")
            << "let a = 1" << usesGreet << 1 << std::optional<int>() << Texts::testsCouldNotUse;
        QString thirteen;
        for (int i = 0; i < 13; ++i)
            thirteen += QStringLiteral("let v%1: Int = \"no\"\n").arg(i);
        QTest::newRow("thirteen errors give twelve") << thirteen << QList<LessonTest>{} << 12 << std::optional<int>(1) << "cannot convert";
        QTest::newRow("a link failure falls back to the last lines")
            << "@_silgen_name(\"kestrun_no_such_symbol\") func missing()\nmissing()" << QList<LessonTest>{}
            << 1 << std::optional<int>() << "";
    }

    void compilerErrors()
    {
        QFETCH(QString, code);
        QFETCH(QList<LessonTest>, tests);
        QFETCH(int, count);
        QFETCH(std::optional<int>, line);
        QFETCH(QString, message);
        const RunResult r = run(code, tests);
        QVERIFY(!r.compiled);
        QCOMPARE(r.errors.size(), count);
        QCOMPARE(r.errors[0].line, line);
        QVERIFY2(r.errors[0].message.startsWith(message), qPrintable(r.errors[0].message));
        QVERIFY(r.output.isEmpty() && !r.crashed);
        for (const RunResult::TestResult &t : r.tests)
            QVERIFY(!t.passed);
        if (QByteArray(QTest::currentDataTag()).startsWith("a link"))
            QVERIFY2(r.errors[0].message.contains(QLatin1String("kestrun_no_such_symbol")), qPrintable(r.errors[0].message));
    }

    // A source check keeps its verdict when the code does not compile.
    void sourceChecksSurviveCompileErrors()
    {
        const RunResult r = run(QStringLiteral("var total = \"x\" + 1"),
                                {{"uses var", {check(Check::Kind::source, "^var ")}}, {"value", {expectTrue}}});
        QVERIFY(!r.compiled);
        QCOMPARE(verdicts(r), (QList<bool>{true, false}));
    }

    void crashKeepsOutputAndReason()
    {
        QElapsedTimer timer;
        timer.start();
        const RunResult r = run(QStringLiteral("print(\"before\")\nlet a: [Int] = []\nprint(a[1])"),
                                {{"printed first", {check(Check::Kind::output, "^before$")}}, {"checked", {expectTrue}}});
        // The runtime's backtracer is off: a crash is a crash, not a time-out.
        QVERIFY(timer.elapsed() < 6000);
        QVERIFY(r.compiled && r.crashed && !r.timedOut);
        QCOMPARE(r.crashReason, QStringLiteral("Index out of range"));
        QCOMPARE(r.output, QStringLiteral("before"));
        QCOMPARE(verdicts(r), (QList<bool>{true, false}));
    }

    // What the result says of programs that misbehave, each stopped within its limit.
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
        QTest::newRow("exit 3") << "import Glibc\nexit(3)" << 5.0 << false << Texts::stoppedUnexpectedly << "";
        QTest::newRow("fatal error") << "print(\"a\")\nfatalError(\"boom\")" << 5.0 << false << "boom" << "a";
    }

    void misbehaving()
    {
        QFETCH(QString, code);
        QFETCH(double, limit);
        QFETCH(bool, timedOut);
        QFETCH(QString, reason);
        QFETCH(QString, output);
        const RunResult r = run(code, {{"reported", {expectTrue}}}, limit);
        QVERIFY2(r.compiled, qPrintable(r.errors.value(0).message));
        QCOMPARE(r.timedOut, timedOut);
        QCOMPARE(r.crashed, !reason.isEmpty());
        QCOMPARE(r.crashReason, reason);
        QCOMPARE(r.output, output);
        QCOMPARE(verdicts(r), QList<bool>{reason.isEmpty() && !timedOut});
    }

    // The run itself, timed apart from compiling: each program comes back
    // within its limit plus a second, and leaves no process behind.
    void stoppedInTime_data()
    {
        QTest::addColumn<QString>("code");
        QTest::addColumn<int>("status");
        QTest::newRow("endless printing") << "while true { print(\"spam, spam, spam and eggs\") }" << 9;
        QTest::newRow("background process") << "import Glibc\nprint(\"started\")\n_ = system(\"sleep 30 &\")\nwhile true {}" << 9;
        QTest::newRow("stdin") << "while let line = readLine() { print(line) }" << 0;
        QTest::newRow("abort") << "import Glibc\nabort()" << 6;
        QTest::newRow("recursion") << "func f(_ n: Int) -> Int { f(n + 1) + 1 }\nprint(f(0))" << 11;
        QTest::newRow("exit 3") << "import Glibc\nexit(3)" << 3;
        QTest::newRow("signal 5") << "import Glibc\nraise(SIGTRAP)" << 5;
        QTest::newRow("out of range") << "let a: [Int] = []\nprint(a[1])" << 4;
    }

    void stoppedInTime()
    {
        QFETCH(QString, code);
        QFETCH(int, status);
        QTemporaryDir dir(m_tmp.filePath(QStringLiteral("program-XXXXXX")));
        QFile source(dir.filePath(QStringLiteral("main.swift")));
        QVERIFY(source.open(QIODevice::WriteOnly));
        source.write(Runner::program(code, {}, QStringLiteral("n")).source.toUtf8());
        source.close();
        const Shell::Output compiled = Shell::run(m_toolchain->swiftc,
            {QStringLiteral("-swift-version"), QStringLiteral("6"), QStringLiteral("-o"), QStringLiteral("program"), QStringLiteral("main.swift")},
            dir.path(), 120);
        QVERIFY2(compiled.status == 0, qPrintable(compiled.standardError));

        const double limit = 1;
        QElapsedTimer timer;
        timer.start();
        const Shell::Output out = Shell::run(dir.filePath(QStringLiteral("program")), {}, dir.path(), limit);
        QVERIFY2(timer.elapsed() < (limit + 1) * 1000, qPrintable(QString::number(timer.elapsed())));
        QCOMPARE(out.status, status);
        QCOMPARE(out.timedOut, status == 9);
        if (QByteArray(QTest::currentDataTag()) == "endless printing") {
            QVERIFY(out.standardOutput.size() >= Shell::captureCap);
            QVERIFY(out.standardOutput.size() <= 4 * Shell::captureCap);
        }
        dir.remove();
    }

    void writeFailureIsReported()
    {
        const QByteArray saved = qgetenv("TMPDIR");
        qputenv("TMPDIR", QFile::encodeName(m_tmp.filePath(QStringLiteral("not-a-dir"))));
        QFile blocker(m_tmp.filePath(QStringLiteral("not-a-dir")));
        QVERIFY(blocker.open(QIODevice::WriteOnly));
        blocker.close();
        const RunResult r = run(QStringLiteral("print(1)"), {{"source only", {check(Check::Kind::source, "print")}}});
        qputenv("TMPDIR", saved);
        blocker.remove();
        QVERIFY(!r.compiled);
        QCOMPARE(r.errors.size(), 1);
        QVERIFY(r.errors[0].message.startsWith(Texts::couldNotWrite));
        QCOMPARE(verdicts(r), QList<bool>{false});
    }

    void concurrentChecks()
    {
        std::vector<std::future<RunResult>> runs;
        for (int i = 0; i < 4; ++i) {
            runs.push_back(std::async(std::launch::async, [this, i] {
                return run(QStringLiteral("let n = %1\nprint(n)").arg(i),
                           {{"n", {check(Check::Kind::swift, QStringLiteral("expect(n == %1)").arg(i % 2 ? 1 : i))}}});
            }));
        }
        for (int i = 0; i < 4; ++i) {
            const RunResult r = runs[i].get();
            QCOMPARE(r.output, QString::number(i));
            QCOMPARE(r.passed(), i % 2 == 0 || i == 1);
        }
    }
};

QTEST_GUILESS_MAIN(TestRunner)
#include "tst_runner.moc"
