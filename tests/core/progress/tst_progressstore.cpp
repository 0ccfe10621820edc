#include "progress/progressstore.h"

#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

#include <functional>

using namespace Kestrun;

using Saved = ProgressStore::Saved;
using Operation = std::function<void(ProgressStore &)>;
Q_DECLARE_METATYPE(Operation)

namespace {

QByteArray readAll(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

std::optional<Saved> load(const QString &path)
{
    return ProgressStore::decode(readAll(path));
}

const QByteArray emptyJson = R"({"code":{},"done":{},"ticks":{}})";
const QByteArray sampleJson = R"({"code":{"a":"let x = 1\n"},"done":{"a":"2020-01-02T03:04:05Z"},"last":"a","ticks":{"c":[1]}})";

} // namespace

class TestProgressStore : public QObject {
    Q_OBJECT

    QTemporaryDir m_dir;
    QString file(const char *name) const { return m_dir.filePath(QString::fromLatin1(name)); }

private Q_SLOTS:
    void encode()
    {
        Saved saved;
        saved.code = {{"b", "let é = \"\\\t\n"}, {"a", ""}};
        saved.done = {{"z", QDateTime::fromString("2026-11-16T20:20:12.750Z", Qt::ISODate)},
                      {"a", QDateTime::fromString("1999-12-31T23:59:59+01:00", Qt::ISODate)}};
        saved.ticks = {{"list", {5, 3, 9, 1, 7, 0, 2}}, {"none", {}}};
        saved.last = "b";
        const QByteArray json = "{\"code\":{\"a\":\"\",\"b\":\"let é = \\\"\\\\\\t\\n\"},"
            R"("done":{"a":"1999-12-31T22:59:59Z","z":"2026-11-16T20:20:12Z"},"last":"b","ticks":{"list":[0,1,2,3,5,7,9],"none":[]}})";
        QCOMPARE(ProgressStore::encode(saved), json);
        QCOMPARE(ProgressStore::encode(ProgressStore::decode(json).value()), json);
        QVERIFY(ProgressStore::decode(R"({"code":{},"done":{},"last":null,"ticks":{},"unknown":1})"));  // not damaged
    }

    // A store on a file holding `initial`, after `operation`, has announced
    // `changes` changes, written `writes` times, and left `result` on disk.
    void operations_data()
    {
        QTest::addColumn<QByteArray>("initial");
        QTest::addColumn<Operation>("operation");
        QTest::addColumn<int>("changes");
        QTest::addColumn<int>("writes");
        QTest::addColumn<QByteArray>("result");

        const auto row = [](const char *name, QByteArray initial, Operation op, int changes, int writes, QByteArray result) {
            QTest::newRow(name) << initial << op << changes << writes << result;
        };
        // A damaged file counts as no progress at all; the next change replaces it
        // and a copy of it is kept aside.
        const auto damaged = [&](const char *name, const char *json) {
            row(name, json, [](auto &s) { s.visit("n"); }, 1, 1, R"({"code":{},"done":{},"last":"n","ticks":{}})");
        };
        row("complete twice keeps the first date", sampleJson, [](auto &s) { s.complete("a"); s.complete("a"); }, 0, 1, sampleJson);
        row("visit of the recorded lesson", sampleJson, [](auto &s) { s.visit("a"); }, 0, 0, sampleJson);
        row("tick toggled twice", emptyJson, [](auto &s) { s.toggle(2, "x"); s.toggle(2, "x"); }, 2, 1, R"({"code":{},"done":{},"ticks":{"x":[]}})");
        row("resetCode without code", sampleJson, [](auto &s) { s.resetCode("b"); }, 0, 1, sampleJson);
        row("reset", sampleJson, [](auto &s) { s.reset(); }, 1, 1, emptyJson);
        damaged("damaged: ticks missing", R"({"code":{"a":"x"},"done":{}})");
        damaged("damaged: fractional seconds", R"({"code":{"a":"x"},"done":{"a":"2026-11-16T20:20:12.5Z"},"ticks":{}})");
        damaged("damaged: offset", R"({"code":{"a":"x"},"done":{"a":"2026-11-16T20:20:12+01:00"},"ticks":{}})");
        damaged("damaged: tick a fraction", R"({"code":{"a":"x"},"done":{},"ticks":{"a":[1.5]}})");
        damaged("damaged: last a number", R"({"code":{"a":"x"},"done":{},"last":3,"ticks":{}})");
    }

    void operations()
    {
        QFETCH(QByteArray, initial);
        QFETCH(Operation, operation);
        QFETCH(int, changes);
        QFETCH(int, writes);
        QFETCH(QByteArray, result);

        const QString path = file("operations.json");
        QFile::remove(path + ".damaged");
        QFile out(path);
        QVERIFY(out.open(QIODevice::WriteOnly) && out.write(initial) == initial.size());
        out.close();
        ProgressStore store(path);
        QSignalSpy changed(&store, &ProgressStore::savedChanged);
        QSignalSpy written(&store, &ProgressStore::written);
        operation(store);
        QCOMPARE(changed.size(), changes);
        QTest::qWait(600);
        QCOMPARE(written.size(), writes);
        QCOMPARE(readAll(path), result);
        const bool damaged = QByteArray(QTest::currentDataTag()).startsWith("damaged");
        QCOMPARE(readAll(path + ".damaged"), damaged ? initial : QByteArray());
    }

    // An emptied editor is not the seed; destroying the store writes what is pending.
    void codeAndDestruction()
    {
        const QString path = file("destroyed.json");
        {
            ProgressStore store(path);
            Lesson seeded;
            seeded.id = "s";
            seeded.seed = "seed";
            store.setCode(QString(), "s");
            QCOMPARE(store.code(seeded), QString());
            store.resetCode("s");
            QCOMPARE(store.code(seeded), "seed");
            store.complete("b");
        }
        QVERIFY(qAbs(load(path)->done.value("b").secsTo(QDateTime::currentDateTimeUtc())) <= 1);
    }

    // Ten edits 0.1 s apart give one write, 0.4 s after the last; a later
    // write never loses to a longer one started before it.
    void delayedWrites()
    {
        const QString path = file("delayed.json");
        ProgressStore store(path);
        QSignalSpy written(&store, &ProgressStore::written);
        QElapsedTimer sinceLast;
        for (int i = 1; i <= 10; ++i) {
            QTest::qWait(i == 1 ? 0 : 100);
            sinceLast.start();
            store.setCode(QStringLiteral("text %1").arg(i), "l");
        }
        QVERIFY(written.wait(2000));
        // Never early: the clock started before the change did.
        QVERIFY2(sinceLast.nsecsElapsed() >= 400'000'000, qPrintable(QString::number(sinceLast.nsecsElapsed())));
        QTest::qWait(300);
        QCOMPARE(written.size(), 1);
        QCOMPARE(load(path)->code.value("l"), "text 10");

        store.setCode(QString(8'000'000, u'x'), "l");
        QTRY_VERIFY(!store.writePending());  // the long write is on its way
        store.setCode("short", "l");
        store.flush();
        QCOMPARE(load(path)->code.value("l"), "short");
    }

    // A change made just before quitting reaches the default file.
    void quitWritesPendingChange()
    {
        qputenv("XDG_DATA_HOME", QFile::encodeName(m_dir.filePath("share")));
        QProcess child;
        child.start(PROGRESSWRITER, {"--quit", "typed just before quitting"});
        QVERIFY(child.waitForFinished(10000));
        const auto saved = load(m_dir.filePath("share/Swift Kestrun/progress.json"));
        QCOMPARE(saved.value_or(Saved{}).code.value("quit"), "typed just before quitting");
    }

    // A writer killed at random moments always leaves a complete record,
    // at least as new as the last write it reported.
    void survivesKill()
    {
        const QString path = file("killed.json");
        QVERIFY(ProgressStore::write(Saved{}, path));
        for (int round = 0; round < 50; ++round) {
            QProcess child;
            child.start(PROGRESSWRITER, {path});
            QVERIFY(child.waitForReadyRead(10000));
            QTest::qWait(QRandomGenerator::global()->bounded(40));
            child.kill();
            QVERIFY(child.waitForFinished());
            const int reported = child.readAllStandardOutput().trimmed().split('\n').last().mid(8).toInt();

            const std::optional<Saved> saved = load(path);
            QVERIFY2(saved, qPrintable(QStringLiteral("round %1").arg(round)));
            const int iteration = saved->code.value("iteration").toInt();
            QVERIFY(iteration == reported || iteration == reported + 1);
            const QString body(saved->code.value("length").toInt(), QChar(u'a' + iteration % 26));
            QVERIFY(saved->code.value("body") == body);
        }
    }

    // Saving where the disk is full or the directory read-only, which root
    // meets too, inside a bubblewrap sandbox (%1: the data directory). Each
    // failed write says so and leaves the previous complete file and no
    // temporary file; the next write that succeeds holds every change
    // kept in memory meanwhile.
    void writeFailures_data()
    {
        QTest::addColumn<QStringList>("sandbox");
        QTest::addColumn<QString>("file");
        QTest::addColumn<QStringList>("dialogue");  // a command, then its answer

        const QStringList tmpfs{"--size", "1048576", "--tmpfs", "%1"};
        const QString big(60'000, u'x');
        QTest::newRow("disk full") << tmpfs << "progress.json" << QStringList{
            "code a one", "written", "fill 0", "filled", "code b two", "failed", "show", "a=one/3",
            "code a three", "failed", "files", "filler progress.json", "free", "freed",
            "code c four", "written", "show", "a=three/5 b=two/3 c=four/4"};
        QTest::newRow("disk nearly full") << tmpfs << "progress.json" << QStringList{
            "code a one", "written", "fill 16384", "filled", "code b " + big, "failed", "show", "a=one/3",
            "files", "filler progress.json", "free", "freed", "code a two", "written",
            "show", "a=two/3 b=xxxxxxxxxxxx/60000"};
        QTest::newRow("read-only directory") << QStringList{"--ro-bind", "%1", "%1"} << "progress.json"
            << QStringList{"show", "a=before/6", "code a after", "failed", "code b again", "failed",
                           "show", "a=before/6", "files", "progress.json"};
        QTest::newRow("read-only, no directory yet") << QStringList{"--ro-bind", "%1", "%1"} << "new/progress.json"
            << QStringList{"code a after", "failed", "show", "missing"};
    }

    void writeFailures()
    {
        QFETCH(QStringList, sandbox);
        QFETCH(QString, file);
        QFETCH(QStringList, dialogue);

        const QString bwrap = QStandardPaths::findExecutable("bwrap");
        if (bwrap.isEmpty())
            QSKIP("bwrap (Debian's bubblewrap) is not installed");
        if (QProcess::execute(bwrap, {"--dev-bind", "/", "/", "true"}) != 0)
            QSKIP("bwrap cannot make a sandbox on this machine");

        QTemporaryDir data;
        const QString before = R"({"code":{"a":"before"},"done":{},"ticks":{}})";
        QVERIFY(ProgressStore::write(ProgressStore::decode(before.toUtf8()).value(), data.filePath("progress.json")));
        QStringList arguments{"--dev-bind", "/", "/"};
        for (const QString &argument : sandbox)
            arguments.append(QString(argument).replace("%1", data.path()));
        QProcess child;
        child.start(bwrap, arguments + QStringList{"--", PROGRESSWRITER, "--commands", data.filePath(file)});
        QVERIFY2(child.waitForStarted(), qPrintable(child.errorString()));
        for (qsizetype i = 0; i + 1 < dialogue.size(); i += 2) {
            child.write((dialogue[i] + '\n').toUtf8());
            while (!child.canReadLine())
                QVERIFY2(child.waitForReadyRead(10000), qPrintable(dialogue[i] + ": " + child.readAllStandardError()));
            QCOMPARE(QString::fromUtf8(child.readLine()).trimmed(), dialogue[i + 1]);
        }
        child.closeWriteChannel();
        QVERIFY(child.waitForFinished(10000));
        QCOMPARE(child.exitCode(), 0);
        if (sandbox.contains("--ro-bind"))
            QCOMPARE(readAll(data.filePath("progress.json")), before.toUtf8());
    }
};

QTEST_GUILESS_MAIN(TestProgressStore)
#include "tst_progressstore.moc"
