#include "shell.h"

#include <QDir>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

#include <csignal>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

using Shell::Output;
Q_DECLARE_METATYPE(Shell::Output)

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
        if (!stat.open(QIODevice::ReadOnly))
            return true;
        const QByteArray line = stat.readAll();
        if (line.mid(line.lastIndexOf(')') + 2, 1) == "Z")
            return true;
    }
    return false;
}

// Gives this process a standard input with a line waiting that never ends: a
// child that inherited it instead of the null device would read the line.
struct InputWaiting {
    int saved = ::dup(STDIN_FILENO);
    int fds[2] = {-1, -1};
    bool ready = ::pipe(fds) == 0 && ::write(fds[1], "input\n", 6) == 6 && ::dup2(fds[0], STDIN_FILENO) == 0;
    ~InputWaiting()
    {
        ::dup2(saved, STDIN_FILENO);
        for (int fd : {saved, fds[0], fds[1]})
            ::close(fd);
    }
};

} // namespace

class TestShell : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void outcomes_data()
    {
        QTest::addColumn<QString>("code");
        QTest::addColumn<double>("timeout");
        QTest::addColumn<Output>("expected");
        QTest::newRow("exit code, no output") << "exit 3" << 10.0 << Output{3, {}, {}, false};
        QTest::newRow("both streams") << "printf out; printf err >&2" << 10.0 << Output{0, "out", "err", false};
        QTest::newRow("arguments unchanged") << "printf '%s|' \"$@\"" << 10.0 << Output{0, "a b||*|$HOME|", {}, false};
        QTest::newRow("input at its end") << "read x || echo eof; cat" << 10.0 << Output{0, "eof\n", {}, false};
        QTest::newRow("invalid UTF-8") << "printf 'a\\377b'" << 10.0 << Output{0, "a\uFFFDb", {}, false};
        QTest::newRow("abort") << "ulimit -c 0; echo before; kill -ABRT $$" << 10.0 << Output{6, "before\n", {}, false};
        QTest::newRow("other signal") << "ulimit -c 0; kill -5 $$" << 10.0 << Output{5, {}, {}, false};
        QTest::newRow("past the limit") << "echo started; exec sleep 30" << 0.5 << Output{9, "started\n", {}, true};
        QTest::newRow("outputs closed, still running") << "exec >&- 2>&-; sleep 30" << 0.5 << Output{9, {}, {}, true};
        QTest::newRow("background keeps stdout open") << "sleep 30 & echo hi" << 20.0 << Output{0, "hi\n", {}, false};
    }
    void outcomes()
    {
        QFETCH(QString, code);
        QFETCH(double, timeout);
        QFETCH(Output, expected);
        InputWaiting input;
        QVERIFY(input.ready);
        const Output output = script(code, timeout, {"a b", "", "*", "$HOME"});
        QCOMPARE(output.standardOutput, expected.standardOutput);
        QCOMPARE(output.standardError, expected.standardError);
        QCOMPARE(output.status, expected.status);
        QCOMPARE(output.timedOut, expected.timedOut);
    }

    void endlessOutput()
    {
        QElapsedTimer timer;
        timer.start();
        const Output output = script("exec yes", 1);
        QVERIFY(timer.elapsed() >= 1000);
        QCOMPARE(output.status, SIGKILL);
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
                           "SWIFT_BACKTRACE=enable=no"};
        QTest::newRow("absent left out, empty kept, default PATH")
            << QByteArrayList{"PATH", "HOME", "USER", "LANG=", "TMPDIR", "DEVELOPER_DIR="}
            << QStringList{QString("PATH=") + Shell::defaultPath, "LANG=", "DEVELOPER_DIR=", "SWIFT_BACKTRACE=enable=no"};
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
        const QStringList own = Shell::environment();
        const Output output = Shell::run("/usr/bin/env", {}, std::nullopt, 10);
        for (const auto &[name, value] : saved)
            value.isNull() ? qunsetenv(name.constData()) : qputenv(name.constData(), value);
        QCOMPARE(own, expected);
        QCOMPARE(output.standardOutput.split('\n', Qt::SkipEmptyParts), expected);
    }

    void launchErrors_data()
    {
        QTest::addColumn<QString>("executable");
        QTest::addColumn<QString>("directory"); // empty: none given
        QTest::addColumn<int>("error");
        QTest::newRow("missing program") << "/nonexistent/program" << QString() << ENOENT;
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
        QCOMPARE(Shell::run("/bin/pwd", {"-P"}, std::nullopt, 10).standardOutput, QDir::current().canonicalPath() + '\n');
    }

    // Each run gets its own output, and children hold only their three standard
    // descriptors, whatever other threads spawn at the same moment.
    void concurrentRuns()
    {
        const int stray = ::open("/dev/null", O_RDONLY); // deliberately without close-on-exec
        QList<Output> outputs(6);
        QList<QThread *> threads;
        for (int i = 0; i < outputs.size(); ++i) {
            threads.append(QThread::create([&outputs, i] {
                outputs[i] = script("for n in 1 2 3 4 5 6 7 8; do echo \"$1\"; done;"
                                    "ls -l /proc/self/fd | grep -c -e pipe: -e /dev/null", 20, {QString::number(i)});
            }));
            threads.last()->start();
        }
        for (QThread *thread : threads)
            thread->wait();
        qDeleteAll(threads);
        ::close(stray);
        for (int i = 0; i < outputs.size(); ++i)
            QCOMPARE(outputs[i].standardOutput, QString(QString::number(i) + '\n').repeated(8) + "3\n");
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
};

QTEST_GUILESS_MAIN(TestShell)
#include "tst_shell.moc"
