#include "kestrunapp.h"
#include "mainwindow.h"

#include <QFile>
#include <QLabel>
#include <QListWidget>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

class TestMainWindow : public QObject {
    Q_OBJECT

    QTemporaryDir m_dir;

private Q_SLOTS:
    // What the learner does just before quitting is on disk afterwards,
    // although the delayed write had no time to happen.
    void progressSurvivesAnImmediateQuit()
    {
        const QString file = m_dir.filePath(QStringLiteral("progress.json"));
        KestrunApp app(file);
        MainWindow window(app.model());
        window.show();
        auto *lessons = window.findChild<QListWidget *>(QStringLiteral("lessons"));
        QListWidgetItem *second = lessons->item(2);  // row 0 is a chapter heading
        const QString id = second->data(Qt::UserRole).toString();
        QVERIFY(!id.isEmpty());

        Q_EMIT lessons->itemActivated(second);
        QCOMPARE(app.model().selection(), std::optional<QString>(id));
        QVERIFY(!QFile::exists(file));
        QTimer::singleShot(0, qApp, &QCoreApplication::quit);
        QCoreApplication::exec();

        QFile saved(file);
        QVERIFY(saved.open(QIODevice::ReadOnly));
        const std::optional<ProgressStore::Saved> record = ProgressStore::decode(saved.readAll());
        QVERIFY(record);
        QCOMPARE(record->last, std::optional<QString>(id));
    }

    void findCompilerSetsTheState_data()
    {
        QTest::addColumn<std::optional<Toolchain>>("toolchain");
        QTest::addColumn<bool>("runner");
        QTest::addColumn<QString>("text");
        QTest::newRow("none") << std::optional<Toolchain>() << false << "This computer has no Swift compiler yet.";
        QTest::newRow("too old") << std::optional<Toolchain>({"/x/swiftc", {}, "6.1", {}}) << false << "This computer has Swift 6.1.";
        QTest::newRow("ready") << std::optional<Toolchain>({"/x/swiftc", {}, "6.4", {}}) << true << "Swift 6.4 on this computer, ready";
    }

    void findCompilerSetsTheState()
    {
        QFETCH(std::optional<Toolchain>, toolchain);
        QFETCH(bool, runner);
        QFETCH(QString, text);
        KestrunApp app(m_dir.filePath(QStringLiteral("unused.json")));
        MainWindow window(app.model());
        QSignalSpy changed(&app.model(), &AppModel::runnerStateChanged);
        app.findCompiler([toolchain] { return toolchain; });
        QTRY_COMPARE(changed.size(), 1);
        QCOMPARE(bool(app.model().runner()), runner);
        QCOMPARE(app.model().runnerState().kind, runner ? RunnerState::Kind::ready : RunnerState::Kind::unavailable);
        QVERIFY(window.findChild<QLabel *>(QStringLiteral("runnerState"))->text().startsWith(text));
    }
};

QTEST_MAIN(TestMainWindow)
#include "tst_mainwindow.moc"
