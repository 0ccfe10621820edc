#include "runner/runner.h"

#include <QRegularExpression>
#include <QTest>

using namespace Kestrun;

namespace {

Check swift(const QString &code)
{
    return Check{Check::Kind::swift, code};
}

} // namespace

class TestProgram : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void layout_data()
    {
        QTest::addColumn<QString>("code");
        QTest::addColumn<double>("limit");  // 0: no timer
        QTest::newRow("one line") << "print(1)" << 0.0;
        QTest::newRow("empty") << "" << 0.0;
        QTest::newRow("trailing line feed") << "print(1)\n" << 0.0;
        QTest::newRow("carriage returns") << "let a = 1\r\nlet b = 2\r\nprint(a)" << 0.0;
        QTest::newRow("with a timer") << "let a = 1\nprint(a)" << 2.5;
    }

    // Compiler errors are mapped back through firstLine and testStart: the
    // learner's lines, without carriage returns, start at firstLine, and
    // testStart is the comment that starts the tests, timer or not.
    void layout()
    {
        QFETCH(QString, code);
        QFETCH(double, limit);
        const Runner::Program p = Runner::program(code, {}, "n", limit > 0 ? std::optional(limit) : std::nullopt);
        const QStringList all = p.source.split('\n');
        const QStringList learner = QString(code).remove('\r').split('\n');
        QVERIFY(!p.source.contains('\r'));
        QCOMPARE(all.mid(p.firstLine - 1, learner.size()), learner);
        QCOMPARE(all[p.testStart - 1], "// MARK: the lesson's tests");
        QCOMPARE(p.firstLine, Runner::program("", {}, "n").firstLine);
        if (limit > 0)  // whole seconds, rounded up
            QVERIFY(p.source.contains("alarm(3)"));
    }

    // One block per Swift check, each reporting its test's number; a test
    // without Swift checks adds none and the others keep their numbers.
    void blocks()
    {
        const QList<LessonTest> tests{
            {"printed", {Check{Check::Kind::output, "^hi$"}}},
            {"two checks", {swift("expect(a == 1)"), swift("let x = 2\nexpect(x > a)")}},
            {"trailing line feed", {swift("expect(true)\n")}},
        };
        const Runner::Program p = Runner::program("let a = 1", tests, "abc");
        const QRegularExpression verdict("print\\(\"\\\\u\\{1E\\}abc (\\d+) ");
        QStringList numbers;
        for (auto it = verdict.globalMatch(p.source); it.hasNext();)
            numbers << it.next().captured(1);
        QCOMPARE(numbers, QStringList({"1", "1", "2"}));
        QVERIFY(p.source.contains("\n    let x = 2\n    expect(x > a)\n"));
    }
};

QTEST_GUILESS_MAIN(TestProgram)
#include "tst_testprogram.moc"
