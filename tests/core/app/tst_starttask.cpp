#include "app/appmodel.h"
#include "app/starttask.h"
#include "progress/progressstore.h"

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
        QTest::addColumn<QString>("text");
        QTest::newRow("none") << std::optional<Toolchain>() << false << "This computer has no Swift compiler yet.";
        QTest::newRow("too old") << std::optional<Toolchain>({"/x/swiftc", {}, "6.1", {}}) << false
                                 << "This computer has Swift 6.1.";
        QTest::newRow("ready") << std::optional<Toolchain>({"/x/swiftc", {}, "6.4", {}}) << true
                               << "Swift 6.4 on this computer, ready";
    }

    void setsTheStateOnce()
    {
        QFETCH(std::optional<Toolchain>, toolchain);
        QFETCH(bool, runner);
        QFETCH(QString, text);
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
        QCOMPARE(model.runnerState().kind, runner ? RunnerState::Kind::ready : RunnerState::Kind::unavailable);
        QVERIFY2(model.runnerState().text.startsWith(text), qPrintable(model.runnerState().text));
    }

    // A toolchain with an interpreter runs it once before the state is set.
    void warmsAnInterpreterUp()
    {
        const QString marker = m_dir.filePath(QStringLiteral("warmed"));
        const QString frontend = m_dir.filePath(QStringLiteral("swift-frontend"));
        QFile script(frontend);
        QVERIFY(script.open(QIODevice::WriteOnly));
        script.write("#!/bin/sh\ntouch '" + QFile::encodeName(marker) + "'\n");
        script.close();
        script.setPermissions(script.permissions() | QFile::ExeOwner);

        ProgressStore store(m_dir.filePath(QStringLiteral("unused.json")));
        AppModel model(Course{}, &store);
        StartTask task(model, [frontend] { return Toolchain{"/x/swiftc", {}, "6.2", frontend}; });
        task.start();
        QTRY_VERIFY(task.isFinished());
        QVERIFY(QFile::exists(marker));
        QCOMPARE(model.runnerState().kind, RunnerState::Kind::ready);
    }
};

QTEST_GUILESS_MAIN(TestStartTask)
#include "tst_starttask.moc"
