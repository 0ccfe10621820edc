#include "runner/runner.h"

#include <QTest>

using namespace Kestrun;

namespace {

LessonTest test(const QString &text, const QList<Check> &checks)
{
    return LessonTest{text, checks};
}

Check swift(const QString &code)
{
    return Check{Check::Kind::swift, code};
}

QStringList lines(const QString &s)
{
    return s.split(QLatin1Char('\n'));
}

} // namespace

class TestProgram : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void layout_data()
    {
        QTest::addColumn<QString>("code");
        QTest::addColumn<int>("learnerLines");
        QTest::newRow("one line") << "print(1)" << 1;
        QTest::newRow("empty") << "" << 1;
        QTest::newRow("trailing line feed") << "print(1)\n" << 2;
        QTest::newRow("carriage returns") << "let a = 1\r\nlet b = 2\r\nprint(a)" << 3;
    }

    // The learner's lines start at firstLine, and testStart is the marker comment.
    void layout()
    {
        QFETCH(QString, code);
        QFETCH(int, learnerLines);
        const Runner::Program p = Runner::program(code, {}, QStringLiteral("n"));
        const QStringList all = lines(p.source);

        QCOMPARE(p.firstLine, int(lines(Runner::prelude()).size()));
        QCOMPARE(p.testStart, p.firstLine - 1 + learnerLines + 2);
        QVERIFY(!p.source.contains(QLatin1Char('\r')));
        QString cleaned = code;
        cleaned.remove(QLatin1Char('\r'));
        QCOMPARE(all.mid(p.firstLine - 1, learnerLines), lines(cleaned));
        QCOMPARE(all[p.testStart - 2], QString());
        QCOMPARE(all[p.testStart - 1], QStringLiteral("// MARK: the lesson's tests"));
        // No Swift checks: the text ends with the comment and an empty line.
        QVERIFY(p.source.endsWith(QStringLiteral("// MARK: the lesson's tests\n\n")));

        // The run limit's timer takes no line of its own.
        const Runner::Program timed = Runner::program(code, {}, QStringLiteral("n"), 2.5);
        QCOMPARE(timed.firstLine, p.firstLine);
        QCOMPARE(timed.testStart, p.testStart);
        QCOMPARE(lines(timed.source).mid(p.firstLine - 1), all.mid(p.firstLine - 1));
        QVERIFY(timed.source.contains(QStringLiteral("alarm(3)")));
    }

    void blocks()
    {
        const QList<LessonTest> tests{
            test(QStringLiteral("printed"), {Check{Check::Kind::output, QStringLiteral("^hi$")}}),
            test(QStringLiteral("two checks"), {swift(QStringLiteral("expect(a == 1)")), swift(QStringLiteral("let x = 2\nexpect(x > a)\nexpect(true)"))}),
            test(QStringLiteral("trailing line feed"), {swift(QStringLiteral("expect(true)\n"))}),
        };
        const Runner::Program p = Runner::program(QStringLiteral("let a = 1"), tests, QStringLiteral("abc"));
        const QStringList blocks = lines(p.source).mid(p.testStart);
        const QString expect = QStringLiteral(
            "    func expect(_ condition: @autoclosure () throws -> Bool) "
            "{ do { if try !condition() { __qvPass = false } } catch { __qvPass = false } }");

        // The output-only test adds nothing, and the others keep their numbers.
        QCOMPARE(blocks, QStringList({
            "do {", "    var __qvPass = true", expect, "    expect(a == 1)",
            "    print(\"\\u{1E}abc 1 \\(__qvPass ? 1 : 0)\")", "}",
            "do {", "    var __qvPass = true", expect, "    let x = 2", "    expect(x > a)", "    expect(true)",
            "    print(\"\\u{1E}abc 1 \\(__qvPass ? 1 : 0)\")", "}",
            "do {", "    var __qvPass = true", expect, "    expect(true)", "    ",
            "    print(\"\\u{1E}abc 2 \\(__qvPass ? 1 : 0)\")", "}",
            "",
        }));
    }
};

QTEST_GUILESS_MAIN(TestProgram)
#include "tst_testprogram.moc"
