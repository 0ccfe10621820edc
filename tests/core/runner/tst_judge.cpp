#include "runner/runner.h"
#include "texts/texts.h"

#include <QTest>

using namespace Kestrun;

namespace {

using K = Check::Kind;
const QString nonce = "0123456789abcdef0123456789abcdef";

// Test 0: one Swift check. Test 1: two. Test 2: prints "ok" on a line of its own.
Lesson lesson()
{
    Lesson l;
    l.tests = {{"one check", {Check{K::swift, ""}}},
               {"two checks", {Check{K::swift, ""}, Check{K::swift, ""}}},
               {"prints ok", {Check{K::output, "^ok$"}, Check{K::source, "print"}}}};
    return l;
}

QString verdict(const QString &rest)
{
    return QChar(0x1E) + nonce + ' ' + rest;
}

} // namespace

// What the run pipeline makes of a program's output, without running one.
class TestJudge : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void judge_data()
    {
        QTest::addColumn<QString>("code");
        QTest::addColumn<std::optional<Shell::Output>>("run");
        QTest::addColumn<QList<bool>>("passed");
        QTest::addColumn<QString>("output");
        QTest::addColumn<QString>("crashReason");  // empty: no crash

        const QString all = verdict("0 1") + '\n' + verdict("1 1") + '\n' + verdict("1 1") + '\n';
        QTest::newRow("every verdict in, line ends trimmed, spaces kept")
            << "print(x)" << std::optional(Shell::Output{0, "\r\n ok\t\n\nok\n" + all, {}, false})
            << QList<bool>{true, true, true} << " ok\t\n\nok" << "";
        QTest::newRow("a second check missing or failing")
            << "print(x)" << std::optional(Shell::Output{0, verdict("0 1") + '\n' + verdict("1 1") + "\nok", {}, false})
            << QList<bool>{true, false, true} << "ok" << "";
        QTest::newRow("zero, or anything but 1, fails")
            << "print(x)" << std::optional(Shell::Output{0, verdict("0 true") + '\n' + verdict("1 0") + '\n' + verdict("1 1"), {}, false})
            << QList<bool>{false, false, false} << "" << "";
        QTest::newRow("signs and extra spaces read, other shapes dropped")
            << "print(x)"
            << std::optional(Shell::Output{0, verdict("+0  1") + '\n' + verdict("3 1") + '\n' + verdict("-1 1") + '\n'
                                                  + verdict("1 1 1") + '\n' + verdict("1 x1") + '\n' + verdict(" 1") + "\nok", {}, false})
            << QList<bool>{true, false, true} << "ok" << "";
        QTest::newRow("another nonce is console output")
            << "print(x)" << std::optional(Shell::Output{0, QChar(0x1E) + QString("f").repeated(32) + " 0 1\nok", {}, false})
            << QList<bool>{false, false, true} << QChar(0x1E) + QString("f").repeated(32) + " 0 1\nok" << "";
        QTest::newRow("the source check decides too")
            << "debugPrint(x)" << std::optional(Shell::Output{0, "ok\n" + all, {}, false})
            << QList<bool>{true, true, false} << "ok" << "";
        QTest::newRow("crash: the fatal error's reason, verdicts so far")
            << "print(x)" << std::optional(Shell::Output{4, verdict("0 1") + "\nok", "x\nmain.swift:3: Fatal error: Index out of range\nmore", false})
            << QList<bool>{true, false, true} << "ok" << "Index out of range";
        QTest::newRow("crash without a fatal error")
            << "print(x)" << std::optional(Shell::Output{11, "ok", "Segmentation fault", false})
            << QList<bool>{false, false, true} << "ok" << Texts::get(Text::stoppedUnexpectedly);
        QTest::newRow("stopped at the limit is no crash")
            << "print(x)" << std::optional(Shell::Output{9, "ok\n" + all, "Fatal error: late", true})
            << QList<bool>{true, true, true} << "ok" << "";
        QTest::newRow("could not start")
            << "print(x)" << std::optional<Shell::Output>() << QList<bool>{false, false, false} << ""
            << Texts::get(Text::stoppedUnexpectedly);
    }

    void judge()
    {
        QFETCH(QString, code);
        QFETCH(std::optional<Shell::Output>, run);
        QFETCH(QList<bool>, passed);
        QFETCH(QString, output);
        QFETCH(QString, crashReason);
        const RunResult r = Runner::judge(lesson(), code, nonce, run);
        QList<bool> verdicts;
        for (const RunResult::TestResult &t : r.tests)
            verdicts.append(t.passed);
        QVERIFY(r.compiled && r.errors.isEmpty());
        QCOMPARE(verdicts, passed);
        QCOMPARE(r.output, output);
        QCOMPARE(r.crashed, !crashReason.isEmpty());
        QCOMPARE(r.crashReason, crashReason);
        QCOMPARE(r.timedOut, run && run->timedOut);
    }
};

QTEST_GUILESS_MAIN(TestJudge)
#include "tst_judge.moc"
