#include "selftest/selftest.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>

using namespace Kestrun;

namespace {

struct TestLesson {
    QString id;
    std::optional<QString> seed;
    QList<std::pair<QString, QJsonObject>> tests;  // text and one check
};

QJsonObject checkOf(const char *kind, const QString &code)
{
    return {{"kind", kind}, {"code", code}};
}

QByteArray courseJson(const QList<TestLesson> &lessons)
{
    QJsonArray list;
    for (const TestLesson &s : lessons) {
        QJsonArray tests;
        for (const auto &[text, check] : s.tests)
            tests.append(QJsonObject{{"text", text}, {"checks", QJsonArray{check}}});
        QJsonObject lesson{{"id", s.id}, {"title", s.id}, {"type", "lesson"}, {"minutes", 1}, {"tests", tests}};
        for (const char *key : {"description", "instructions", "hints", "checklist", "questions"})
            lesson.insert(QLatin1String(key), QJsonArray{});
        if (s.seed)
            lesson.insert("seed", *s.seed);
        list.append(lesson);
    }
    const QJsonObject module{{"id", "m"}, {"title", "M"}, {"lessons", list}};
    const QJsonObject chapter{{"title", "C"}, {"summary", ""}, {"modules", QJsonArray{module}}};
    return QJsonDocument(QJsonObject{{"id", "c"}, {"title", "C"}, {"subtitle", ""}, {"versions", ""}, {"summary", ""},
                                     {"chapters", QJsonArray{chapter}}})
        .toJson();
}

// The probes' lesson: its check compiles when the code declares `language`.
const TestLesson valuesConstants{"values-constants", "let language = \"\"",
                                 {{"language is Swift", checkOf("swift", "expect(language == \"Swift\")")}}};

} // namespace

class TestSelfTest : public QObject {
    Q_OBJECT

    QTemporaryDir m_dir;
    std::optional<Toolchain> m_toolchain;
    QStringList m_printed;

    QString write(const QString &name, const QByteArray &bytes)
    {
        QFile file(m_dir.filePath(name));
        if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
            qFatal("cannot write %s", qPrintable(file.fileName()));
        return file.fileName();
    }

    int selfTest(const QList<TestLesson> &lessons, const QJsonValue &solutions,
                 std::function<std::optional<Toolchain>()> find = {})
    {
        m_printed.clear();
        const QString course = write("course.json", courseJson(lessons));
        SelfTest::Options options;
        const QJsonDocument document = solutions.isArray() ? QJsonDocument(solutions.toArray()) : QJsonDocument(solutions.toObject());
        options.solutionsPath = write("solutions.json", document.toJson());
        options.loadCourse = [course] { return Course::load(course); };
        options.findToolchain = find ? find : [this] { return m_toolchain; };
        options.print = [this](const QString &line) { m_printed.append(line); };
        return SelfTest::run(options);
    }

private Q_SLOTS:
    void initTestCase()
    {
        m_toolchain = Toolchain::find();
    }

    void reportsEachKindOfProblem()
    {
        if (!m_toolchain)
            QSKIP("no Swift toolchain on this machine");
        const QList<TestLesson> lessons{
            valuesConstants,
            {"seed-is-solution", "let x = 1", {{"x is 1", checkOf("swift", "expect(x == 1)")}}},
            {"seed-passes", "print(\"hi\")", {{"says hi", checkOf("output", "^hi$")}}},
            {"one-test-fails", std::nullopt,
             {{"prints", checkOf("output", "^1$")}, {"uses a loop", checkOf("source", "\\bfor\\b")}}},
            {"unsolved", std::nullopt, {{"t", checkOf("swift", "expect(true)")}}},
        };
        const QJsonObject solutions{{"values-constants", "let language = \"Swift\""},
                                    {"seed-is-solution", "let x = 1"},
                                    {"seed-passes", "let greeting = \"hi\"\nprint(greeting)"},
                                    {"one-test-fails", "print(1)"}};

        QCOMPARE(selfTest(lessons, solutions), int(SelfTest::problemsFound));
        QCOMPARE(m_printed.first(), QStringLiteral("Swift %1 at %2").arg(m_toolchain->version, m_toolchain->swiftc));
        // The probes pass; the count comes first, then the lessons in the order they finished.
        QCOMPARE(m_printed.mid(1, 2), QStringList({"4 problem(s):", "  5 lessons with code, but 4 solutions"}));
        QCOMPARE(QSet<QString>(m_printed.begin() + 3, m_printed.end()),
                 (QSet<QString>{"  seed-passes: the starting code already passes",
                                "  one-test-fails: the solution fails [] [\"uses a loop\"]", "  unsolved: no solution"}));

        QCOMPARE(selfTest({valuesConstants}, QJsonObject{{"values-constants", "let language = \"Swift\""}}),
                 int(SelfTest::allGood));
        QCOMPARE(m_printed.last(), "All 1 lessons with code check out, and the runner reports crashes, loops and errors.");
    }

    void cannotStart_data()
    {
        QTest::addColumn<QJsonValue>("solutions");
        QTest::addColumn<bool>("compiler");
        QTest::newRow("no compiler") << QJsonValue(QJsonObject()) << false;
        QTest::newRow("not a map of strings") << QJsonValue(QJsonObject{{"values-constants", 3}}) << true;
        QTest::newRow("a list") << QJsonValue(QJsonArray()) << true;
    }

    void cannotStart()
    {
        QFETCH(QJsonValue, solutions);
        QFETCH(bool, compiler);
        const Toolchain fake{"/nonexistent/swiftc", {}, "6.2", {}};
        const int status = selfTest({valuesConstants}, solutions, [&]() -> std::optional<Toolchain> {
            return compiler ? std::optional(fake) : std::nullopt;
        });
        QCOMPARE(status, int(SelfTest::couldNotStart));
        QCOMPARE(m_printed.last(), compiler ? "Could not read " + m_dir.filePath("solutions.json")
                                            : "No Swift compiler found. Install Swift 6.2 or later from swift.org.");
    }

    // With a stand-in compiler whose programs print nothing, only source checks
    // decide: 25 lessons give progress lines after the 10th and 20th.
    void progressLines()
    {
        const QString swiftc = write("swiftc", "#!/bin/sh\nprintf '#!/bin/sh\\nexit 0\\n' > program\nchmod +x program\n");
        QFile::setPermissions(swiftc, QFile::permissions(swiftc) | QFile::ExeOwner);
        const Toolchain standIn{swiftc, {}, "6.2", {}};

        QList<TestLesson> lessons{valuesConstants};
        QJsonObject solutions{{"values-constants", "let language = \"Swift\""}};
        for (int i = 1; i < 25; ++i) {
            const QString id = QStringLiteral("lesson-%1").arg(i);
            lessons.append({id, std::nullopt, {{"t", checkOf("source", "^ok$")}}});
            solutions.insert(id, "ok");
        }
        QCOMPARE(selfTest(lessons, solutions, [&] { return std::optional(standIn); }), int(SelfTest::problemsFound));
        QCOMPARE(m_printed.filter("lessons checked"),
                 QStringList({"10 of 25 lessons checked", "20 of 25 lessons checked"}));
        // The stand-in cannot crash, loop or fail to compile, and values-constants' Swift check never reports.
        QCOMPARE(m_printed.mid(m_printed.indexOf("4 problem(s):") + 1), QStringList({
            "  a crash was not reported", "  an endless loop was not stopped",
            "  a compiler error was not reported on line 2",
            "  values-constants: the solution fails [] [\"language is Swift\"]"}));
    }

    void quotedList()
    {
        QCOMPARE(SelfTest::quotedList({}), QStringLiteral("[]"));
        QCOMPARE(SelfTest::quotedList({QStringLiteral("a \"b\""), QStringLiteral("c\\\nd")}),
                 QStringLiteral("[\"a \\\"b\\\"\", \"c\\\\\\nd\"]"));
    }
};

QTEST_GUILESS_MAIN(TestSelfTest)
#include "tst_selftest.moc"
