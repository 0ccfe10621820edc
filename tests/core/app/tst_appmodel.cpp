#include "app/appmodel.h"
#include "progress/progressstore.h"
#include "texts/texts.h"

#include <QDir>
#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace Kestrun;

namespace {

Lesson lesson(const char *id)
{
    Lesson lesson;
    lesson.id = QString::fromLatin1(id);
    return lesson;
}

// Reading order a1 a2 b1 c1 c2, across an empty module and a chapter
// without modules.
Course fixture()
{
    Course course;
    course.chapters = {
        Chapter{"One", {}, {Module{"m1", {}, {lesson("a1"), lesson("a2")}}, Module{"empty", {}, {}},
                            Module{"m2", {}, {lesson("b1")}}}},
        Chapter{"Two", {}, {}},
        Chapter{"Three", {}, {Module{"m3", {}, {lesson("c1")}}, Module{"m4", {}, {lesson("c2")}}}},
    };
    return course;
}

} // namespace

class TestAppModel : public QObject {
    Q_OBJECT

    QTemporaryDir m_dir;

    // A store whose file records `done` and `last` (empty: none).
    QString storeFile(const QStringList &done = {}, const QString &last = {})
    {
        ProgressStore::Saved saved;
        for (const QString &id : done)
            saved.done.insert(id, QDateTime::currentDateTimeUtc());
        if (!last.isEmpty())
            saved.last = last;
        const QString path = m_dir.filePath(QStringLiteral("progress.json"));
        return ProgressStore::write(saved, path) ? path : QString();
    }

private Q_SLOTS:
    // The model starts on the store's last lesson (empty: the home screen);
    // after goBy(offset) it selects `expected`, which the store records.
    void goBy_data()
    {
        QTest::addColumn<QString>("last");
        QTest::addColumn<QStringList>("done");
        QTest::addColumn<int>("offset");
        QTest::addColumn<QString>("expected");

        QTest::newRow("forward over an empty module") << "a2" << QStringList() << 1 << "b1";
        QTest::newRow("back over a chapter without modules") << "c1" << QStringList() << -1 << "b1";
        QTest::newRow("large steps move one") << "a2" << QStringList() << -7 << "a1";
        QTest::newRow("zero is forward") << "a1" << QStringList() << 0 << "a2";
        QTest::newRow("back from the first") << "a1" << QStringList() << -1 << "a1";
        QTest::newRow("home, back, done out of order") << "" << QStringList{"a1", "b1"} << -1 << "a2";
        QTest::newRow("home, all done") << "" << QStringList{"a1", "a2", "b1", "c1", "c2"} << 1 << "a1";
        QTest::newRow("stale last") << "gone" << QStringList{"a1"} << 1 << "a2";
    }

    void goBy()
    {
        QFETCH(QString, last);
        QFETCH(QStringList, done);
        QFETCH(int, offset);
        QFETCH(QString, expected);

        ProgressStore store(storeFile(done, last));
        AppModel model(fixture(), &store);
        QCOMPARE(model.selection().value_or(QString()), last);

        QSignalSpy changed(&model, &AppModel::selectionChanged);
        model.goBy(offset);
        QCOMPARE(model.selection().value_or(QString()), expected);
        QCOMPARE(changed.size(), expected == last ? 0 : 1);
        QCOMPARE(store.saved().last.value_or(QString()), expected);
    }

    // open(nothing) and setSelection() keep the recorded lesson; only real
    // changes are announced; an empty course has nothing to go to.
    void openAndSelect()
    {
        ProgressStore store(storeFile({}, "a2"));
        AppModel model(fixture(), &store);
        QSignalSpy changed(&model, &AppModel::selectionChanged);
        QSignalSpy state(&model, &AppModel::runnerStateChanged);

        model.open(std::nullopt);
        model.open(std::nullopt);
        model.setSelection(QStringLiteral("c1"));
        model.setSelection(QStringLiteral("c1"));
        QCOMPARE(changed.size(), 2);
        QCOMPARE(store.saved().last, "a2");
        QVERIFY(!store.writePending());

        model.setRunnerState(RunnerState::ready("Swift 6.2"));
        model.setRunnerState(RunnerState::ready("Swift 6.2"));
        QCOMPARE(state.size(), 1);

        AppModel empty(Course{}, &store);  // starts on the stale "a2"
        empty.goBy(1);
        QVERIFY(!empty.selection());
    }

    // "A", then `second` one second later: each say() clears its own text
    // three seconds later, and only while that text is still shown.
    void notice_data()
    {
        QTest::addColumn<QString>("second");
        QTest::addColumn<QStringList>("shown");
        QTest::newRow("replaced") << "B" << QStringList{"A", "B", ""};
        QTest::newRow("repeated") << "A" << QStringList{"A", ""};
    }

    void notice()
    {
        QFETCH(QString, second);
        QFETCH(QStringList, shown);

        ProgressStore store(storeFile());
        AppModel model(fixture(), &store);
        QElapsedTimer clock;
        QStringList seen;
        qint64 clearedAt = -1;
        connect(&model, &AppModel::noticeChanged, this, [&] {
            seen.append(model.notice().value_or(QString()));
            if (!model.notice())
                clearedAt = clock.elapsed();
        });

        clock.start();
        model.say("A");
        QTest::qWait(1000);
        const qint64 due = 3000 + (second == "A" ? 0 : clock.elapsed());
        model.say(second);
        QTRY_VERIFY_WITH_TIMEOUT(clearedAt >= 0, 6000);
        QCOMPARE(seen, shown);
        QVERIFY2(clearedAt >= due - 5 && clearedAt <= due + 600,
                 qPrintable(QStringLiteral("cleared after %1 ms, due %2").arg(clearedAt).arg(due)));
    }

    // While a file stands where the data directory should be, saving fails
    // (for root too): the learner is told once, the progress stays in memory
    // and is saved with the next change that can be written; a failure after
    // that success is told again.
    void saveFailureToldOncePerRun()
    {
        const QString blocker = m_dir.filePath("blocked");
        const auto block = [&](bool blocked) {
            QDir(blocker).removeRecursively();
            QFile::remove(blocker);
            QFile file(blocker);
            QVERIFY(!blocked || file.open(QIODevice::WriteOnly));
        };
        block(true);
        ProgressStore store(blocker + "/progress.json");
        AppModel model(fixture(), &store);
        QStringList told;
        connect(&model, &AppModel::noticeChanged, this, [&] { told.append(model.notice().value_or(QString())); });
        QSignalSpy failed(&store, &ProgressStore::writeFailed);
        QSignalSpy written(&store, &ProgressStore::written);
        const QString cannot = Texts::get(Text::progressNotSaved);

        store.setCode("one", "a1");
        QVERIFY(failed.wait());
        store.complete("a2");
        QVERIFY(failed.wait());
        QCOMPARE(told, QStringList{cannot});

        model.say("Lesson done");
        block(false);
        store.setCode("two", "b1");
        QVERIFY(written.wait());
        QFile file(store.file().value());
        QVERIFY(file.open(QIODevice::ReadOnly));
        const std::optional<ProgressStore::Saved> saved = ProgressStore::decode(file.readAll());
        QVERIFY(saved && *saved == store.saved() && saved->done.contains("a2") && saved->code.size() == 2);

        block(true);
        store.setCode("three", "b1");
        QVERIFY(failed.wait());
        QCOMPARE(told, (QStringList{cannot, "Lesson done", cannot}));
        QCOMPARE(failed.size(), 3);
        QCOMPARE(written.size(), 1);
    }
};

QTEST_GUILESS_MAIN(TestAppModel)
#include "tst_appmodel.moc"
