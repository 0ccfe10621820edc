#include "runner/shell.h"

#include <QDir>
#include <QElapsedTimer>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

#include <csignal>
#include <future>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace Kestrun;

using Shell::Output;
Q_DECLARE_METATYPE(Shell::Output)
Q_DECLARE_METATYPE(Shell::Limits)

namespace {

Output script(const QString &code, double timeout = 10, const QStringList &extra = {})
{
    return Shell::run("/bin/sh", QStringList{"-c", code, "sh"} + extra, std::nullopt, timeout);
}

// Gone, or a zombie: either way no longer running. Killing is asynchronous, so allow a moment.
bool becomesDead(pid_t pid)
{
    for (int i = 0; i < 200; ++i, QThread::msleep(10)) {
        QFile stat(QStringLiteral("/proc/%1/stat").arg(pid));
        const QByteArray line = stat.open(QIODevice::ReadOnly) ? stat.readAll() : QByteArray();
        if (line.isEmpty() || line.mid(line.lastIndexOf(')') + 2, 1) == "Z")
            return true;
    }
    return false;
}

} // namespace

class TestShell : public QObject {
    Q_OBJECT
private Q_SLOTS:
    // This process gets a standard input with a line waiting that never ends:
    // a child that inherited it instead of the null device would read the line.
    // It also handles, ignores and blocks signals its children must not.
    void initTestCase()
    {
        int fds[2];
        QVERIFY(::pipe(fds) == 0 && ::write(fds[1], "input\n", 6) == 6 && ::dup2(fds[0], STDIN_FILENO) == 0);
        std::signal(SIGTERM, [](int) {});
        std::signal(SIGINT, SIG_IGN);
        sigset_t blocked;
        sigemptyset(&blocked);
        sigaddset(&blocked, SIGUSR1);
        QCOMPARE(::pthread_sigmask(SIG_BLOCK, &blocked, nullptr), 0);
    }

    void outcomes_data()
    {
        QTest::addColumn<QString>("code");
        QTest::addColumn<Output>("expected"); // a run expected to time out gets half a second
        QTest::newRow("both streams, exit code") << "printf out; printf err >&2; exit 3" << Output{3, "out", "err", false};
        QTest::newRow("arguments unchanged") << "printf '%s|' \"$@\"" << Output{0, "a b||*|$HOME|", {}, false};
        QTest::newRow("input at its end") << "read x || echo eof; cat" << Output{0, "eof\n", {}, false};
        QTest::newRow("signal, output kept") << "ulimit -c 0; echo before; kill -ABRT $$" << Output{6, "before\n", {}, false};
        QTest::newRow("a signal this process handles") << "kill -TERM $$" << Output{15, {}, {}, false};
        QTest::newRow("a signal this process ignores") << "kill -INT $$" << Output{2, {}, {}, false};
        QTest::newRow("a signal this thread blocks") << "kill -USR1 $$" << Output{10, {}, {}, false};
        QTest::newRow("past the limit") << "echo started; exec sleep 30" << Output{9, "started\n", {}, true};
        QTest::newRow("outputs closed, still running") << "exec >&- 2>&-; sleep 30" << Output{9, {}, {}, true};
    }
    void outcomes()
    {
        QFETCH(QString, code);
        QFETCH(Output, expected);
        const Output output = script(code, expected.timedOut ? 0.5 : 10, {"a b", "", "*", "$HOME"});
        QCOMPARE(output.standardOutput, expected.standardOutput);
        QCOMPARE(output.standardError, expected.standardError);
        QCOMPARE(output.status, expected.status);
        QCOMPARE(output.timedOut, expected.timedOut);
    }

    // A child that leaves its group to join this process's is still killed at the limit.
    void childThatLeftItsGroup()
    {
        QElapsedTimer timer;
        timer.start();
        const Output output = Shell::run("/usr/bin/python3", {"-c", "import os, time\n"
                                         "os.setpgid(0, os.getpgid(os.getppid()))\nprint('joined', flush=True)\ntime.sleep(30)"},
                                         std::nullopt, 1);
        QVERIFY2(timer.elapsed() < 3000, qPrintable(QString::number(timer.elapsed())));
        QCOMPARE(output.standardOutput, "joined\n");
        QVERIFY(output.timedOut);
    }

    // Limits only for the learner's code; what this process has, tools keep.
    void limits_data()
    {
        QTest::addColumn<Shell::Limits>("limits");
        QTest::addColumn<QStringList>("expected");
        const auto bytes = [](qint64 n) { return QString::number(n); };
        QTest::newRow("learner") << Shell::Limits::learner
                                 << QStringList{"Max file size " + bytes(Shell::fileSizeLimit),
                                                "Max data size " + bytes(Shell::memoryLimit),
                                                "Max core file size 0", "Max address space " + bytes(Shell::addressSpaceLimit)};
        QTest::newRow("tool") << Shell::Limits::none
                              << QStringList{"Max file size unlimited", "Max data size unlimited",
                                             "Max address space unlimited"};
    }
    void limits()
    {
        QFETCH(Shell::Limits, limits);
        QFETCH(QStringList, expected);
        const Output output = Shell::run("/bin/cat", {"/proc/self/limits"}, std::nullopt, 10, limits);
        QStringList soft;  // name and soft limit of each line
        for (QString line : output.standardOutput.split('\n')) {
            const QStringList parts = line.replace(QRegularExpression(" {2,}"), "|").split('|');
            if (parts.size() >= 2)
                soft.append(parts[0] + ' ' + parts[1]);
        }
        for (const QString &limit : expected)
            QVERIFY2(soft.contains(limit), qPrintable(limit + " not in " + soft.join(", ")));
    }

    void endlessOutput()
    {
        const Output output = script("exec yes", 1);
        QVERIFY(output.timedOut);
        // Kept whole up to the cap, then at most one more chunk and what the pipe held.
        const qsizetype size = output.standardOutput.size();
        QVERIFY2(size >= Shell::captureCap && size <= Shell::captureCap + 2 * 65536, qPrintable(QString::number(size)));
        QVERIFY(output.standardOutput.startsWith("y\ny\n"));
    }

    // A process that left the group keeps the pipes open and outlives the run.
    void escapedProcessDoesNotHold()
    {
        QTemporaryDir dir;
        const QString pidFile = dir.filePath("pid");
        QElapsedTimer timer;
        timer.start();
        const Output output = script("setsid sh -c 'echo $$ > \"$1\"; exec sleep 30' sh \"$1\" &"
                                     "while [ ! -s \"$1\" ]; do sleep 0.01; done; echo done", 20, {pidFile});
        const qint64 elapsed = timer.elapsed();
        QFile file(pidFile);
        QVERIFY(file.open(QIODevice::ReadOnly) && ::kill(file.readAll().trimmed().toInt(), SIGKILL) == 0);
        QCOMPARE(output.standardOutput, "done\n");
        QVERIFY2(elapsed < 10000, qPrintable(QString::number(elapsed)));
    }

    void environment_data()
    {
        QTest::addColumn<QByteArrayList>("settings"); // a name without '=' is unset
        QTest::addColumn<QStringList>("expected");
        QTest::newRow("passed in order, others never")
            << QByteArrayList{"SHELL=/bin/sh", "DEVELOPER_DIR=/d y", "TMPDIR=/t", "LANG=C.UTF-8", "USER=u", "HOME=/h", "PATH=/p"}
            << QStringList{"PATH=/p", "HOME=/h", "USER=u", "LANG=C.UTF-8", "TMPDIR=/t", "DEVELOPER_DIR=/d y",
                           "SWIFT_BACKTRACE=enable=no", "LLVM_DISABLE_SYMBOLIZATION=1"};
        QTest::newRow("absent left out, empty kept, default PATH")
            << QByteArrayList{"PATH", "HOME", "USER", "LANG=", "TMPDIR", "DEVELOPER_DIR="}
            << QStringList{QString("PATH=") + Shell::defaultPath, "LANG=", "DEVELOPER_DIR=", "SWIFT_BACKTRACE=enable=no",
                           "LLVM_DISABLE_SYMBOLIZATION=1"};
    }
    void environment()
    {
        QFETCH(QByteArrayList, settings);
        QFETCH(QStringList, expected);
        QList<std::pair<QByteArray, QByteArray>> saved;
        for (const QByteArray &setting : settings) {
            const QByteArray name = setting.split('=').first();
            saved.append({name, qgetenv(name.constData())});
            setting.contains('=') ? qputenv(name.constData(), setting.mid(name.size() + 1)) : qunsetenv(name.constData());
        }
        const Output output = Shell::run("/usr/bin/env", {}, std::nullopt, 10);
        for (const auto &[name, value] : saved)
            value.isNull() ? qunsetenv(name.constData()) : qputenv(name.constData(), value);
        QCOMPARE(output.standardOutput.split('\n', Qt::SkipEmptyParts), expected);
    }

    void launchErrors_data()
    {
        QTest::addColumn<QString>("executable");
        QTest::addColumn<QString>("directory"); // empty: none given
        QTest::addColumn<int>("error");
        QTest::newRow("not executable") << "/etc/passwd" << QString() << EACCES;
        QTest::newRow("no PATH search") << "sh" << QString() << ENOENT;
        QTest::newRow("missing directory") << "/bin/sh" << "/nonexistent/directory" << ENOENT;
    }
    void launchErrors()
    {
        QFETCH(QString, executable);
        QFETCH(QString, directory);
        QFETCH(int, error);
        try {
            Shell::run(executable, {"-c", "true"}, directory.isEmpty() ? std::nullopt : std::optional(directory), 10);
            QFAIL("started");
        } catch (const Shell::LaunchError &e) {
            QCOMPARE(e.error(), error);
            QVERIFY(QString::fromLocal8Bit(e.what()).contains(executable));
        }
    }

    void workingDirectory()
    {
        QTemporaryDir dir;
        QCOMPARE(Shell::run("/bin/pwd", {"-P"}, dir.path(), 10).standardOutput, QDir(dir.path()).canonicalPath() + '\n');
    }

    // Each run gets its own output, and children hold only their three standard
    // descriptors, whatever other threads spawn at the same moment.
    void concurrentRuns()
    {
        const int stray = ::open("/dev/null", O_RDONLY); // deliberately without close-on-exec
        std::vector<std::future<Output>> runs;
        for (int i = 0; i < 6; ++i)
            runs.push_back(std::async(std::launch::async, [i] {
                return script("for n in 1 2 3 4 5 6 7 8; do echo \"$1\"; done;"
                              "ls -l /proc/self/fd | grep -c -e pipe: -e /dev/null", 20, {QString::number(i)});
            }));
        for (int i = 0; i < 6; ++i)
            QCOMPARE(runs[i].get().standardOutput, QString(QString::number(i) + '\n').repeated(8) + "3\n");
        ::close(stray);
    }

    // Also what the child started in the background, whether it exits or is killed.
    void nothingLeftBehind()
    {
        const auto descriptors = [] { return QDir("/proc/self/fd").entryList(QDir::AllEntries | QDir::System).size(); };
        const qsizetype before = descriptors();
        QList<pid_t> background;
        for (int i = 0; i < 10; ++i) {
            background.append(script("echo err >&2; sleep 30 & echo $!").standardOutput.toInt());
            background.append(script("sleep 30 & echo $!; exec sleep 30", 0.1).standardOutput.toInt());
            QVERIFY_THROWS_EXCEPTION(Shell::LaunchError, Shell::run("/nonexistent", {}, std::nullopt, 1));
        }
        QCOMPARE(descriptors(), before);
        QCOMPARE(::waitpid(-1, nullptr, WNOHANG), -1);
        QCOMPARE(errno, ECHILD);
        for (pid_t pid : background)
            QVERIFY(pid > 0 && becomesDead(pid));
    }

    // Last: for good. A running child is killed at once, and nothing starts after.
    void stopAll()
    {
        auto running = std::async(std::launch::async, [] { return script("echo started; exec sleep 30", 20); });
        QThread::msleep(300);
        QElapsedTimer timer;
        timer.start();
        Shell::stopAll();
        const Output output = running.get();
        QVERIFY2(timer.elapsed() < 1000, qPrintable(QString::number(timer.elapsed())));
        QCOMPARE(output.standardOutput, "started\n");
        QCOMPARE(output.status, 9);
        try {
            script("true");
            QFAIL("started");
        } catch (const Shell::LaunchError &e) {
            QCOMPARE(e.error(), ECANCELED);
        }
    }
};

QTEST_GUILESS_MAIN(TestShell)
#include "tst_shell.moc"
