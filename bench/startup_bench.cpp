// Start-up of the windowed app against a bare Qt main window: from the
// moment the process is started to its window's first paint, each started
// afresh, interleaved, medians. Then the app's resident size once open,
// and after opening 50 lessons one after the other.
//
//   startup_bench [RUNS]          needs a display (bench/run uses Xvfb)

#include "window/kestrunapp.h"
#include "window/mainwindow.h"
#include "theme/theme.h"

#include "median.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QMainWindow>
#include <QProcess>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <ctime>

using namespace Kestrun;

namespace {

qint64 nowNs()
{
    timespec t{};
    clock_gettime(CLOCK_MONOTONIC, &t);
    return qint64(t.tv_sec) * 1'000'000'000 + t.tv_nsec;
}

double residentMiB()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith("VmRSS:"))
            return line.mid(6).trimmed().split(' ').first().toDouble() / 1024;
    }
    return 0;
}

// Prints the moment of the window's first paint, once it has been handed
// to the screen, and ends the event loop.
class FirstPaint : public QObject {
public:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::Paint && !m_seen) {
            m_seen = true;
            QTimer::singleShot(0, [] {
                std::printf("%lld\n", static_cast<long long>(nowNs()));
                std::fflush(stdout);
                QCoreApplication::quit();
            });
        }
        return QObject::eventFilter(watched, event);
    }

private:
    bool m_seen = false;
};

// The child: one start of the app (the same steps as main.cpp) or of a bare window.
int child(int argc, char *argv[], bool app, const QString &home)
{
    std::future<Course> course;
    if (app)
        course = KestrunApp::loadCourse();
    QApplication application(argc, argv);
    FirstPaint paint;
    if (!app) {
        QMainWindow window;
        window.resize(1200, 800);
        window.installEventFilter(&paint);
        window.show();
        return application.exec();
    }
    QCoreApplication::setOrganizationName(QStringLiteral("Kestrun"));
    QCoreApplication::setApplicationName(QStringLiteral("Kestrun"));
    Theme::apply(application);
    KestrunApp kestrun(course.get(), home + QStringLiteral("/progress.json"));
    MainWindow window(kestrun.model());
    window.installEventFilter(&paint);
    window.show();
    return application.exec();
}

double startUp(const QString &mode, const QString &home)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    const qint64 started = nowNs();
    process.start(QCoreApplication::applicationFilePath(), {mode, home});
    process.waitForFinished(60000);
    const qint64 painted = process.readAllStandardOutput().trimmed().toLongLong();
    return painted > started ? (painted - started) / 1e6 : -1;
}

// The app opened, then 50 lessons opened one after the other, as a learner
// stepping through the course would.
void memory(int argc, char *argv[], const QString &home)
{
    QApplication application(argc, argv);
    const double bare = residentMiB();
    Theme::apply(application);
    KestrunApp kestrun(home + QStringLiteral("/memory.json"));
    MainWindow window(kestrun.model());
    window.show();
    QCoreApplication::processEvents();
    const double open = residentMiB();
    const QList<Lesson> lessons = kestrun.model().course().lessons();
    double peak = open;
    for (int i = 0; i < 50 && i < lessons.size(); ++i) {
        kestrun.model().open(lessons[i]);
        QCoreApplication::processEvents();
        peak = std::max(peak, residentMiB());
    }
    std::printf("resident size: %.1f MiB with Qt started, %.1f MiB with the window open, %.1f MiB after "
                "opening 50 lessons (peak %.1f MiB)\n",
                bare, open, residentMiB(), peak);
}

} // namespace

int main(int argc, char *argv[])
{
    if (argc == 3 && (qstrcmp(argv[1], "app") == 0 || qstrcmp(argv[1], "bare") == 0))
        return child(argc, argv, qstrcmp(argv[1], "app") == 0, QString::fromLocal8Bit(argv[2]));
    if (argc == 3 && qstrcmp(argv[1], "memory") == 0) {
        memory(argc, argv, QString::fromLocal8Bit(argv[2]));
        return 0;
    }

    QCoreApplication application(argc, argv);
    const int runs = argc > 1 ? std::max(1, atoi(argv[1])) : 9;
    QTemporaryDir home;
    QList<double> app;
    QList<double> bare;
    for (int i = 0; i < runs; ++i) {
        bare.append(startUp(QStringLiteral("bare"), home.path()));
        app.append(startUp(QStringLiteral("app"), home.path()));
    }
    const double a = median(app);
    const double b = median(bare);
    std::printf("start-up to the first painted window, %d runs each: Kestrun %.0f ms, a bare Qt main window "
                "%.0f ms, ratio %.2f (goal: at most 1.5)\n",
                runs, a, b, a / b);

    std::fflush(stdout);
    QProcess measure;
    measure.setProcessChannelMode(QProcess::ForwardedChannels);
    measure.start(QCoreApplication::applicationFilePath(), {QStringLiteral("memory"), home.path()});
    measure.waitForFinished(120000);
    return 0;
}
