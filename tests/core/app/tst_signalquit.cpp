#include "runner/toolchain.h"
#include "runner/workdirectory.h"
#include "../processes.h"

#include <QDir>
#include <QElapsedTimer>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

#include <csignal>
#include <unistd.h>

using namespace Kestrun;

namespace {

QStringList workDirectories(const QString &tmp)
{
    return QDir(tmp).entryList({"kestrun-*"}, QDir::Dirs);
}

// Waits until a run whose source holds `code` has started in `tmp`.
bool runStarted(const QString &tmp, const QString &code)
{
    for (int i = 0; i < 1500; ++i, QThread::msleep(20)) {
        for (const QString &dir : workDirectories(tmp)) {
            QFile source(tmp + '/' + dir + "/main.swift");
            if (source.open(QIODevice::ReadOnly) && source.readAll().contains(code.toUtf8()))
                return true;
        }
    }
    return false;
}

} // namespace

// The app and its self-test, ended by a signal while the learner's code runs.
class TestSignalQuit : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        if (!Toolchain::find())
            QSKIP("no Swift toolchain on this machine");
    }

    void endedDuringARun_data()
    {
        QTest::addColumn<bool>("sandbox");
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("code");       // what the run to interrupt runs
        QTest::addColumn<int>("signal");
        QTest::addColumn<bool>("wholeGroup");    // as Ctrl+C in a terminal sends it
        QTest::addColumn<int>("status");         // -1: killed
        for (const bool sandbox : {true, false}) {
            const auto row = [&](const char *name) -> QTestData & {
                return QTest::addRow("%s (%s)", name, sandbox ? "sandbox" : "fallback") << sandbox;
            };
            const QStringList selfTest{"--self-test"};
            const QString loop = "while true {}";
            row("self-test, SIGTERM") << selfTest << loop << SIGTERM << false << 128 + SIGTERM;
            row("self-test, Ctrl+C") << selfTest << loop << SIGINT << true << 128 + SIGINT;
            row("self-test, SIGKILL") << selfTest << loop << SIGKILL << false << -1;
            // The warm-up, with a cold module cache of its own, takes a while.
            row("window, SIGTERM") << QStringList() << "print(1)" << SIGTERM << false << 0;
            row("window, SIGKILL") << QStringList() << "print(1)" << SIGKILL << false << -1;
        }
    }

    void endedDuringARun()
    {
        QFETCH(bool, sandbox);
        QFETCH(QStringList, arguments);
        QFETCH(QString, code);
        QFETCH(int, signal);
        QFETCH(bool, wholeGroup);
        QFETCH(int, status);

        QTemporaryDir tmp;
        QTemporaryDir home;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("TMPDIR", tmp.path());
        environment.insert("KESTRUN_SANDBOX", sandbox ? "1" : "0");
        for (const char *variable : {"XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME"})
            environment.insert(variable, home.filePath(variable));
        environment.insert("QT_QPA_PLATFORM", "offscreen");

        QProcess app;
        app.setProcessEnvironment(environment);
        app.setChildProcessModifier([] { ::setpgid(0, 0); });
        app.start(KESTRUN_BINARY, arguments);
        QVERIFY(app.waitForStarted());
        QVERIFY2(runStarted(tmp.path(), code), "no run started");
        QThread::msleep(500);
        QVERIFY(!processesOf(tmp.path()).isEmpty());

        QElapsedTimer timer;
        timer.start();
        ::kill(wholeGroup ? -pid_t(app.processId()) : pid_t(app.processId()), signal);
        QVERIFY(app.waitForFinished(5000));
        const qint64 elapsed = timer.elapsed();
        if (status < 0) {
            QCOMPARE(app.exitStatus(), QProcess::CrashExit);
        } else {
            QCOMPARE(app.exitStatus(), QProcess::NormalExit);
            QCOMPARE(app.exitCode(), status);
            QVERIFY2(elapsed < 2000, qPrintable(QString::number(elapsed)));
            QCOMPARE(workDirectories(tmp.path()), QStringList());
        }
        // What was killed with its parent may take a moment to go. Killed
        // outright, the app cannot stop a compile job the compiler started
        // in a process group of its own: that one ends when it has compiled.
        QStringList left = processesLeft(tmp.path());
        if (status < 0)
            left = left.filter(QRegularExpression("^(?!.* -frontend -c )"));
        QVERIFY2(left.isEmpty(), qPrintable(left.join('\n')));

        if (status < 0) {
            // The next start removes what the killed run left behind, not what a live run holds.
            QCOMPARE(workDirectories(tmp.path()).size(), 1);
            const QByteArray saved = qgetenv("TMPDIR");
            qputenv("TMPDIR", tmp.path().toUtf8());
            const WorkDirectory live;
            saved.isNull() ? qunsetenv("TMPDIR") : qputenv("TMPDIR", saved);
            QVERIFY(live.isValid());
            QProcess next;
            next.setProcessEnvironment(environment);
            next.start(KESTRUN_BINARY, {"--self-test", tmp.filePath("no-solutions.json")});
            QVERIFY(next.waitForFinished(60000));
            QCOMPARE(next.exitCode(), 2);
            QCOMPARE(workDirectories(tmp.path()), QStringList{QFileInfo(live.path()).fileName()});
        }
    }
};

QTEST_GUILESS_MAIN(TestSignalQuit)
#include "tst_signalquit.moc"
