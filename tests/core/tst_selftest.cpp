#include "selftest.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>

namespace {

struct Spec {
    QString id;
    std::optional<QString> seed;
    QList<std::pair<QString, QJsonObject>> tests;  // text and one check
};

QJsonObject checkOf(const char *kind, const QString &code)
{
    return {{QStringLiteral("kind"), QLatin1String(kind)}, {QStringLiteral("code"), code}};
}

QJsonObject lessonJson(const Spec &s)
{
    QJsonArray tests;
    for (const auto &[text, check] : s.tests)
        tests.append(QJsonObject{{QStringLiteral("text"), text}, {QStringLiteral("checks"), QJsonArray{check}}});
    QJsonObject l{{QStringLiteral("id"), s.id}, {QStringLiteral("title"), s.id}, {QStringLiteral("type"), QStringLiteral("lesson")},
                  {QStringLiteral("minutes"), 1}, {QStringLiteral("description"), QJsonArray{}},
                  {QStringLiteral("instructions"), QJsonArray{}}, {QStringLiteral("tests"), tests},
                  {QStringLiteral("hints"), QJsonArray{}}, {QStringLiteral("checklist"), QJsonArray{}},
                  {QStringLiteral("questions"), QJsonArray{}}};
    if (s.seed)
        l.insert(QStringLiteral("seed"), *s.seed);
    return l;
}

QByteArray courseJson(const QList<Spec> &lessons)
{
    QJsonArray list;
    for (const Spec &s : lessons)
        list.append(lessonJson(s));
    const QJsonObject module{{QStringLiteral("id"), QStringLiteral("m")}, {QStringLiteral("title"), QStringLiteral("M")},
                             {QStringLiteral("lessons"), list}};
    const QJsonObject chapter{{QStringLiteral("title"), QStringLiteral("C")}, {QStringLiteral("summary"), QString()},
                              {QStringLiteral("modules"), QJsonArray{module}}};
    return QJsonDocument(QJsonObject{{QStringLiteral("id"), QStringLiteral("c")}, {QStringLiteral("title"), QStringLiteral("C")},
                                     {QStringLiteral("subtitle"), QString()}, {QStringLiteral("versions"), QString()},
                                     {QStringLiteral("summary"), QString()}, {QStringLiteral("chapters"), QJsonArray{chapter}}})
        .toJson();
}

// The probes' lesson: its check compiles when the code declares `language`.
const Spec valuesConstants{QStringLiteral("values-constants"), QStringLiteral("let language = \"\""),
                           {{QStringLiteral("language is Swift"), checkOf("swift", QStringLiteral("expect(language == \"Swift\")"))}}};

} // namespace

class TestSelfTest : public QObject {
    Q_OBJECT

    QTemporaryDir m_dir;
    std::optional<Toolchain> m_toolchain;
    QStringList m_printed;

    QString write(const QString &name, const QByteArray &bytes)
    {
        QFile file(m_dir.filePath(name));
        if (!file.open(QIODevice::WriteOnly))
            qFatal("cannot write %s", qPrintable(file.fileName()));
        file.write(bytes);
        return file.fileName();
    }

    int selfTest(const QList<Spec> &lessons, const QByteArray &solutions,
                 std::function<std::optional<Toolchain>()> find = {})
    {
        m_printed.clear();
        const QString course = write(QStringLiteral("course.json"), courseJson(lessons));
        SelfTest::Options options;
        options.solutionsPath = write(QStringLiteral("solutions.json"), solutions);
        options.loadCourse = [course] { return Course::load(course); };
        options.findToolchain = find ? find : [this] { return m_toolchain; };
        options.print = [this](const QString &line) { m_printed.append(line); };
        return SelfTest::run(options);
    }

    void requireToolchain()
    {
        if (!m_toolchain)
            QSKIP("no Swift toolchain on this machine");
    }

private Q_SLOTS:
    void initTestCase()
    {
        m_toolchain = Toolchain::find();
    }

    void reportsEachKindOfProblem()
    {
        requireToolchain();
        const QList<Spec> lessons{
            valuesConstants,
            {QStringLiteral("seed-is-solution"), QStringLiteral("let x = 1"),
             {{QStringLiteral("x is 1"), checkOf("swift", QStringLiteral("expect(x == 1)"))}}},
            {QStringLiteral("seed-passes"), QStringLiteral("print(\"hi\")"),
             {{QStringLiteral("says hi"), checkOf("output", QStringLiteral("^hi$"))}}},
            {QStringLiteral("one-test-fails"), std::nullopt,
             {{QStringLiteral("prints"), checkOf("output", QStringLiteral("^1$"))},
              {QStringLiteral("uses a loop"), checkOf("source", QStringLiteral("\\bfor\\b"))}}},
            {QStringLiteral("unsolved"), std::nullopt, {{QStringLiteral("t"), checkOf("swift", QStringLiteral("expect(true)"))}}},
        };
        const QByteArray solutions = QJsonDocument(QJsonObject{
            {QStringLiteral("values-constants"), QStringLiteral("let language = \"Swift\"")},
            {QStringLiteral("seed-is-solution"), QStringLiteral("let x = 1")},
            {QStringLiteral("seed-passes"), QStringLiteral("let greeting = \"hi\"\nprint(greeting)")},
            {QStringLiteral("one-test-fails"), QStringLiteral("print(1)")},
        }).toJson();

        QCOMPARE(selfTest(lessons, solutions), int(SelfTest::problemsFound));
        QCOMPARE(m_printed.first(), QStringLiteral("Swift %1 at %2").arg(m_toolchain->version, m_toolchain->swiftc));
        QCOMPARE(m_printed[1], QStringLiteral("4 problem(s):"));
        // The probes pass; the count comes first, then the lessons in the order they finished.
        QCOMPARE(m_printed[2], QStringLiteral("  5 lessons with code, but 4 solutions"));
        QCOMPARE(QSet<QString>(m_printed.begin() + 3, m_printed.end()), (QSet<QString>{
            QStringLiteral("  seed-passes: the starting code already passes"),
            QStringLiteral("  one-test-fails: the solution fails [] [\"uses a loop\"]"),
            QStringLiteral("  unsolved: no solution"),
        }));
    }

    void allGood()
    {
        requireToolchain();
        QCOMPARE(selfTest({valuesConstants}, "{\"values-constants\": \"let language = \\\"Swift\\\"\"}"), int(SelfTest::allGood));
        QCOMPARE(m_printed.last(),
                 QStringLiteral("All 1 lessons with code check out, and the runner reports crashes, loops and errors."));
    }

    void cannotStart_data()
    {
        QTest::addColumn<QByteArray>("solutions");
        QTest::addColumn<bool>("compiler");
        QTest::addColumn<QString>("line");
        QTest::newRow("no compiler") << QByteArray("{}") << false << "No Swift compiler found. Install Swift 6.2 or later from swift.org.";
        QTest::newRow("not a map of strings") << QByteArray(R"({"values-constants": 3})") << true << "Could not read ";
        QTest::newRow("a list") << QByteArray("[]") << true << "Could not read ";
        QTest::newRow("not JSON") << QByteArray("{") << true << "Could not read ";
    }

    void cannotStart()
    {
        QFETCH(QByteArray, solutions);
        QFETCH(bool, compiler);
        QFETCH(QString, line);
        const Toolchain fake{QStringLiteral("/nonexistent/swiftc"), {}, QStringLiteral("6.2"), {}};
        const int status = selfTest({valuesConstants}, solutions, [&]() -> std::optional<Toolchain> {
            return compiler ? std::optional(fake) : std::nullopt;
        });
        QCOMPARE(status, int(SelfTest::couldNotStart));
        QVERIFY2(m_printed.last().startsWith(line), qPrintable(m_printed.last()));
        if (compiler)
            QCOMPARE(m_printed.last(), line + m_dir.filePath(QStringLiteral("solutions.json")));
    }

    // With a stand-in compiler whose programs print nothing, only source checks
    // decide: 25 lessons give progress lines after the 10th and 20th.
    void progressLines()
    {
        QFile fake(m_dir.filePath(QStringLiteral("swiftc")));
        QVERIFY(fake.open(QIODevice::WriteOnly));
        fake.write("#!/bin/sh\nprintf '#!/bin/sh\\nexit 0\\n' > program\nchmod +x program\n");
        fake.close();
        fake.setPermissions(fake.permissions() | QFile::ExeOwner);
        const Toolchain standIn{fake.fileName(), {}, QStringLiteral("6.2"), {}};

        QList<Spec> lessons{valuesConstants};
        QJsonObject solutions{{QStringLiteral("values-constants"), QStringLiteral("let language = \"Swift\"")}};
        for (int i = 1; i < 25; ++i) {
            const QString id = QStringLiteral("lesson-%1").arg(i);
            lessons.append({id, std::nullopt, {{QStringLiteral("t"), checkOf("source", QStringLiteral("^ok$"))}}});
            solutions.insert(id, QStringLiteral("ok"));
        }
        QCOMPARE(selfTest(lessons, QJsonDocument(solutions).toJson(), [&] { return std::optional(standIn); }),
                 int(SelfTest::problemsFound));
        QCOMPARE(m_printed.filter(QStringLiteral("lessons checked")),
                 QStringList({"10 of 25 lessons checked", "20 of 25 lessons checked"}));
        // The stand-in cannot crash, loop or fail to compile, and values-constants' Swift check never reports.
        QCOMPARE(m_printed.mid(m_printed.indexOf(QStringLiteral("4 problem(s):")) + 1), QStringList({
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
