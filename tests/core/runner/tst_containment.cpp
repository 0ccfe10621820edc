#include "runner/runner.h"
#include "runner/sandbox.h"
#include "runner/shell.h"
#include "texts/texts.h"
#include "../processes.h"

#include <QDir>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTest>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

using namespace Kestrun;

namespace {

qsizetype openDescriptors()
{
    return QDir("/proc/self/fd").entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot).size();
}

} // namespace

// Programs that try to get out of their run, against the real toolchain, in
// the sandbox and in the fallback without it. Each must come back within its
// limit plus a second and leave no process, descriptor or work directory.
class TestContainment : public QObject {
    Q_OBJECT

    std::optional<Toolchain> m_toolchain;
    QTemporaryDir m_tmp;
    qint64 m_overheadMs = 0;  // compiling (or interpreting) a trivial program, the run aside
    qsizetype m_descriptors = 0;

    RunResult run(const QString &code, double limit, qint64 *elapsedMs)
    {
        QElapsedTimer timer;
        timer.start();
        const RunResult r = Runner::check(Lesson(), code, *m_toolchain, limit);
        *elapsedMs = timer.elapsed();
        return r;
    }

    // Each case twice: inside the sandbox and in the fallback.
    static void bothPaths(const char *name, const QString &code, double limit, bool timedOut, const QString &reason,
                          const QString &output, const QString &marker = {})
    {
        for (const bool sandbox : {true, false})
            QTest::addRow("%s (%s)", name, sandbox ? "sandbox" : "fallback")
                << sandbox << code << limit << timedOut << reason << output << marker;
    }

    void usePath(bool sandbox)
    {
        qputenv("KESTRUN_SANDBOX", sandbox ? "1" : "0");
        QCOMPARE(Sandbox::usable(), sandbox);
    }

private Q_SLOTS:
    void initTestCase()
    {
        m_toolchain = Toolchain::find();
        if (!m_toolchain)
            QSKIP("no Swift toolchain on this machine");
        qputenv("TMPDIR", m_tmp.path().toUtf8());
        // Bubblewrap is a dependency: without it this machine is not set up.
        QVERIFY2(Sandbox::usable(), "bwrap is missing or does not work here");
        for (const bool sandbox : {true, false}) {
            usePath(sandbox);
            qint64 elapsed = 0;
            QVERIFY(run("print(1)", 8, &elapsed).output == "1");
            m_overheadMs = std::max(m_overheadMs, elapsed);
        }
    }

    void init()
    {
        m_descriptors = openDescriptors();
    }

    void cleanup()
    {
        QCOMPARE(QDir(m_tmp.path()).entryList({"kestrun-*"}, QDir::AllEntries | QDir::Hidden), QStringList());
        QCOMPARE(processesLeft(m_tmp.path()), QStringList());
        QCOMPARE(openDescriptors(), m_descriptors);
    }

    void escapes_data()
    {
        QTest::addColumn<bool>("sandbox");
        QTest::addColumn<QString>("code");
        QTest::addColumn<double>("limit");
        QTest::addColumn<bool>("timedOut");
        QTest::addColumn<QString>("reason");   // a crash's reason begins so; empty: no crash
        QTest::addColumn<QString>("output");
        QTest::addColumn<QString>("marker");   // in the command line of what it leaves, if anything

        bothPaths("joins the app's process group",
                  "import Glibc\nsetpgid(0, getpgid(getppid()))\nprint(\"joined\")\nwhile true {}", 1, true, "", "joined");
        // The program's own timer stopped, the outer limit is what is left.
        bothPaths("stops its timer and joins the app's process group",
                  "import Glibc\n_ = alarm(0)\nsetpgid(0, getpgid(getppid()))\nprint(\"joined\")\nwhile true {}", 0.5, true, "", "joined");
        bothPaths("starts a new session in the background",
                  "import Glibc\n_ = system(\"setsid sleep 63.25 &\")\nprint(\"started\")", 8, false, "", "started",
                  "63.25");
        bothPaths("same, and loops",
                  "import Glibc\n_ = system(\"setsid sleep 63.5 &\")\nprint(\"started\")\nwhile true {}", 1, true, "",
                  "started", "63.5");
        bothPaths("forks a hundred sleeping processes",
                  "import Glibc\nfor _ in 0..<100 { if fork() == 0 { sleep(64); _exit(0) } }\nprint(\"forked\")", 8,
                  false, "", "forked");
        bothPaths("allocates without end",
                  "var chunks: [[UInt8]] = []\nprint(\"allocating\")\n"
                  "while true { chunks.append([UInt8](repeating: 1, count: 1 << 24)) }",
                  8, false, "failed to allocate", "allocating");
        bothPaths("writes a file without end",
                  "import Glibc\nlet file = fopen(\"big\", \"w\")\nvar block = [UInt8](repeating: 7, count: 1 << 20)\n"
                  "print(\"writing\")\nwhile true { fwrite(&block, 1, block.count, file) }",
                  8, false, Texts::get(Text::stoppedUnexpectedly), "writing");
    }

    void escapes()
    {
        QFETCH(bool, sandbox);
        QFETCH(QString, code);
        QFETCH(double, limit);
        QFETCH(bool, timedOut);
        QFETCH(QString, reason);
        QFETCH(QString, output);
        QFETCH(QString, marker);
        usePath(sandbox);

        qint64 elapsed = 0;
        const RunResult r = run(code, limit, &elapsed);
        QVERIFY2(r.compiled, qPrintable(r.errors.value(0).message));
        QCOMPARE(r.output, output);
        QCOMPARE(r.timedOut, timedOut);
        QCOMPARE(r.crashed, !reason.isEmpty());
        QVERIFY2(reason.isEmpty() ? r.crashReason.isEmpty() : r.crashReason.startsWith(reason), qPrintable(r.crashReason));
        // Interpreting, the outer limit has room for compiling; it only
        // counts when the program stopped the timer that keeps the run limit.
        const double outer = code.contains("alarm(0)") && m_toolchain->interpreter ? limit + Runner::interpretExtra : limit;
        QVERIFY2(elapsed < qint64(outer * 1000) + m_overheadMs + 1000, qPrintable(QString::number(elapsed)));
        QCOMPARE(processesLeft(m_tmp.path(), marker), QStringList());
    }

    // Endless allocation ended at the memory limit, not by the machine
    // running out: no child of this test ever grew much past it.
    void memoryStayedWithinTheLimit()
    {
        rusage usage{};
        QCOMPARE(::getrusage(RUSAGE_CHILDREN, &usage), 0);
        QVERIFY2(qint64(usage.ru_maxrss) * 1024 < Shell::memoryLimit + (qint64(512) << 20),
                 qPrintable(QString::number(usage.ru_maxrss)));
    }

    // What only the sandbox holds back: the fallback is a process group,
    // which can neither make files read-only nor take the network away.
    void sandboxHoldsBack_data()
    {
        QTest::addColumn<QString>("code");
        const QString home = QDir::homePath() + "/kestrun-was-here";
        QTest::newRow("writes into the home directory")
            << "import Glibc\nlet file = fopen(\"" + home + "\", \"w\")\nprint(file == nil ? \"refused\" : \"done\")";
        QTest::newRow("connects to a listener on 127.0.0.1")
            << "import Glibc\nlet fd = socket(AF_INET, Int32(SOCK_STREAM.rawValue), 0)\n"
               "var address = sockaddr_in()\naddress.sin_family = sa_family_t(AF_INET)\n"
               "address.sin_port = in_port_t(PORT).bigEndian\naddress.sin_addr.s_addr = in_addr_t(0x7f000001).bigEndian\n"
               "let result = withUnsafePointer(to: &address) {\n"
               "    $0.withMemoryRebound(to: sockaddr.self, capacity: 1) { connect(fd, $0, socklen_t(MemoryLayout<sockaddr_in>.size)) }\n"
               "}\nprint(result == 0 ? \"done\" : \"refused\")";
    }

    void sandboxHoldsBack()
    {
        QFETCH(QString, code);
        usePath(true);
        const QString home = QDir::homePath() + "/kestrun-was-here";

        const int listener = ::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof address;
        QVERIFY(::bind(listener, reinterpret_cast<sockaddr *>(&address), sizeof address) == 0
                && ::listen(listener, 4) == 0
                && ::getsockname(listener, reinterpret_cast<sockaddr *>(&address), &length) == 0);
        code.replace("PORT", QString::number(ntohs(address.sin_port)));

        qint64 elapsed = 0;
        const RunResult r = run(code, 8, &elapsed);
        const int accepted = ::accept(listener, nullptr, nullptr);
        ::close(listener);
        if (accepted >= 0)
            ::close(accepted);
        const bool written = QFile::exists(home);
        QFile::remove(home);

        QVERIFY2(r.compiled, qPrintable(r.errors.value(0).message));
        QCOMPARE(r.output, "refused");
        QVERIFY(!written);
        QCOMPARE(accepted, -1);
    }
};

QTEST_GUILESS_MAIN(TestContainment)
#include "tst_containment.moc"
