#include "screens/runnerstatus.h"
#include "app/appmodel.h"
#include "progress/progressstore.h"
#include "theme/iconlabel.h"

#include <QLabel>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>

using namespace Kestrun;

class TestRunnerStatus : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // Looking and ready are one grey line; unavailable is the guidance box
    // with the reason, the way to install Swift and what to do after.
    void states_data()
    {
        QTest::addColumn<RunnerState>("state");
        QTest::addColumn<QString>("line");  // empty: the guidance box instead
        QTest::newRow("looking") << RunnerState::looking() << "Looking for the Swift compiler…";
        const QString update = "Swift 6.3 on this computer. The Swift 6.4 lessons need Swift 6.4: update when you can.";
        QTest::newRow("ready, older") << RunnerState::ready(update) << update;
        QTest::newRow("unavailable") << RunnerState::unavailable("This computer has no Swift compiler yet.") << QString();
    }

    void states()
    {
        QFETCH(RunnerState, state);
        QFETCH(QString, line);
        QTemporaryDir dir;
        ProgressStore store(dir.filePath(QStringLiteral("p.json")));
        AppModel model(Course{}, &store);
        RunnerStatus status(model);
        status.show();
        model.setRunnerState(state);
        auto *shownLine = status.findChild<IconLabel *>(QStringLiteral("runnerStatusLine"));
        auto *guidance = status.findChild<QWidget *>(QStringLiteral("toolchainGuidance"));
        QCOMPARE(shownLine->isVisible(), !line.isEmpty());
        QCOMPARE(guidance->isVisible(), line.isEmpty());
        if (!line.isEmpty()) {
            QCOMPARE(shownLine->text(), line);
            return;
        }
        QStringList texts;
        for (const QLabel *label : guidance->findChildren<QLabel *>())
            texts << label->text();
        QVERIFY(texts.contains(state.text));
        QVERIFY(guidance->findChild<QPushButton *>(QStringLiteral("installButton"))->isEnabled());
    }
};

QTEST_MAIN(TestRunnerStatus)
#include "tst_runnerstatus.moc"
