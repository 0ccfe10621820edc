#include "app/appmodel.h"
#include "app/starttask.h"
#include "app/startup.h"
#include "progress/progressstore.h"
#include "runner/coderunner.h"

#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace Kestrun;

class TestStartTask : public QObject {
    Q_OBJECT

    QTemporaryDir m_dir;

private Q_SLOTS:
    void setsTheStateOnce_data()
    {
        QTest::addColumn<std::optional<Toolchain>>("toolchain");
        QTest::addColumn<bool>("runner");
        QTest::newRow("none") << std::optional<Toolchain>() << false;
        QTest::newRow("too old") << std::optional<Toolchain>({"/x/swiftc", {}, "6.1", {}}) << false;
        QTest::newRow("ready") << std::optional<Toolchain>({"/x/swiftc", {}, "6.4", {}}) << true;
    }

    void setsTheStateOnce()
    {
        QFETCH(std::optional<Toolchain>, toolchain);
        QFETCH(bool, runner);
        ProgressStore store(m_dir.filePath(QStringLiteral("unused.json")));
        AppModel model(Course{}, &store);
        QSignalSpy changed(&model, &AppModel::runnerStateChanged);
        int searches = 0;
        StartTask task(model, [&searches, toolchain] {
            ++searches;
            return toolchain;
        });
        task.start();
        task.start();
        QCOMPARE(model.runnerState().kind, RunnerState::Kind::looking);
        QTRY_VERIFY(task.isFinished());
        QCOMPARE(changed.size(), 1);
        QCOMPARE(searches, 1);
        QCOMPARE(bool(model.runner()), runner);
        QCOMPARE(model.runnerState(), StartUp::runnerState(toolchain));
    }

    // The state is set first; the warm-up follows, and when interpreting
    // does not work, the model gets a runner that compiles.
    void warmsUpAfterwards_data()
    {
        QTest::addColumn<QString>("interpreter");  // a script's body; empty: none
        QTest::addColumn<bool>("interprets");
        QTest::newRow("interpreting works") << "sleep 0.5; echo 1" << true;
        QTest::newRow("interpreting fails") << "sleep 0.5; echo 'JIT session error' >&2; exit 1" << false;
        QTest::newRow("prints something else") << "sleep 0.5; echo 2" << false;
        QTest::newRow("no interpreter") << "" << false;
    }

    void warmsUpAfterwards()
    {
        QFETCH(QString, interpreter);
        QFETCH(bool, interprets);
        Toolchain toolchain{"/nonexistent/swiftc", {}, "6.2", {}};
        if (!interpreter.isEmpty()) {
            toolchain.interpreter = m_dir.filePath(QStringLiteral("swift-frontend-%1").arg(QTest::currentDataTag()).replace(' ', '-'));
            QFile script(*toolchain.interpreter);
            QVERIFY(script.open(QIODevice::WriteOnly));
            script.write("#!/bin/sh\n" + interpreter.toUtf8() + "\n");
            script.close();
            script.setPermissions(script.permissions() | QFile::ExeOwner);
        }

        ProgressStore store(m_dir.filePath(QStringLiteral("unused.json")));
        AppModel model(Course{}, &store);
        StartTask task(model, [toolchain] { return toolchain; });
        QSignalSpy warmedUp(&task, &StartTask::warmedUp);
        task.start();
        QTRY_VERIFY(task.isFinished());
        QCOMPARE(model.runnerState().kind, RunnerState::Kind::ready);
        QVERIFY(model.runner());
        if (!interpreter.isEmpty())
            QVERIFY(!task.isWarmedUp());
        QTRY_VERIFY_WITH_TIMEOUT(task.isWarmedUp(), 20000);
        QCOMPARE(warmedUp.size(), 1);
        const auto *runner = dynamic_cast<const LocalRunner *>(model.runner().get());
        QVERIFY(runner);
        QCOMPARE(runner->toolchain().interpreter.has_value(), interprets);
        QCOMPARE(runner->toolchain().swiftc, toolchain.swiftc);
    }
};

QTEST_GUILESS_MAIN(TestStartTask)
#include "tst_starttask.moc"
