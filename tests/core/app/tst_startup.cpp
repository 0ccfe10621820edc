#include "app/startup.h"
#include "runner/versioncompare.h"

#include <QTest>

using namespace Kestrun;

class TestStartUp : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void launchMode_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<bool>("selfTest");
        QTest::addColumn<std::optional<QString>>("path");
        const std::optional<QString> none;
        QTest::newRow("no arguments") << QStringList{"kestrun"} << false << none;
        QTest::newRow("alone") << QStringList{"kestrun", "--self-test"} << true << none;
        QTest::newRow("with a path") << QStringList{"kestrun", "--self-test", "s.json"} << true << std::optional<QString>("s.json");
        QTest::newRow("later in the list") << QStringList{"kestrun", "-v", "--self-test", "x", "y"} << true << std::optional<QString>("x");
        QTest::newRow("other case") << QStringList{"kestrun", "--Self-Test"} << false << none;
        QTest::newRow("with a value") << QStringList{"kestrun", "--self-test=s.json"} << false << none;
    }

    void launchMode()
    {
        QFETCH(QStringList, arguments);
        QFETCH(bool, selfTest);
        QFETCH(std::optional<QString>, path);
        const StartUp::LaunchMode mode = StartUp::launchMode(arguments);
        QCOMPARE(mode.selfTest, selfTest);
        QCOMPARE(mode.solutionsPath, path);
    }

    void compareVersions_data()
    {
        QTest::addColumn<QString>("a");
        QTest::addColumn<QString>("b");
        QTest::addColumn<int>("order");
        QTest::newRow("equal") << "6.2" << "6.2" << 0;
        QTest::newRow("minor") << "6.1" << "6.2" << -1;
        QTest::newRow("two digits") << "6.10" << "6.4" << 1;
        QTest::newRow("major") << "5.10" << "6.2" << -1;
        QTest::newRow("leading zero") << "6.02" << "6.2" << 0;
        QTest::newRow("longer") << "6.2.1" << "6.2" << 1;
        QTest::newRow("question mark after digits") << "?" << "6.4" << 1;
    }

    void compareVersions()
    {
        QFETCH(QString, a);
        QFETCH(QString, b);
        QFETCH(int, order);
        QCOMPARE(qBound(-1, ::compareVersions(a, b), 1), order);
        QCOMPARE(qBound(-1, ::compareVersions(b, a), 1), -order);
    }

    void runnerState_data()
    {
        QTest::addColumn<std::optional<QString>>("version");  // none: no toolchain found
        QTest::addColumn<RunnerState>("state");
        const auto row = [](const char *name, std::optional<QString> version, const RunnerState &state) {
            QTest::newRow(name) << version << state;
        };
        row("none", std::nullopt, RunnerState::unavailable(
            "This computer has no Swift compiler yet. The exercises need Swift 6.2 or later from swift.org."));
        row("5.10", "5.10", RunnerState::unavailable(
            "This computer has Swift 5.10. The exercises need Swift 6.2 or later: install a newer toolchain from swift.org."));
        row("6.1", "6.1", RunnerState::unavailable(
            "This computer has Swift 6.1. The exercises need Swift 6.2 or later: install a newer toolchain from swift.org."));
        row("6.2", "6.2", RunnerState::ready("Swift 6.2 on this computer. The Swift 6.4 lessons need Swift 6.4: update when you can."));
        row("6.4", "6.4", RunnerState::ready("Swift 6.4 on this computer, ready to run your code."));
        row("6.10", "6.10", RunnerState::ready("Swift 6.10 on this computer, ready to run your code."));
        row("?", "?", RunnerState::ready("Swift ? on this computer, ready to run your code."));
    }

    void runnerState()
    {
        QFETCH(std::optional<QString>, version);
        QFETCH(RunnerState, state);
        std::optional<Toolchain> toolchain;
        if (version)
            toolchain = Toolchain{"/x/swiftc", {}, *version, {}};
        QCOMPARE(StartUp::runnerState(toolchain), state);
    }
};

QTEST_GUILESS_MAIN(TestStartUp)
#include "tst_startup.moc"
