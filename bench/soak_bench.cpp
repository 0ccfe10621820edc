// A soak: the real window opening lessons one after the other while the
// runner is kept busy with every kind of learner program (passing, failing,
// crashing, looping, flooding its output), two at a time. Every minute it
// samples what could pile up: child processes, file descriptors, threads,
// work directories and resident memory; at the end it says whether any grew.
//
//   soak_bench [MINUTES]        default 30; needs a display (bench/soak uses Xvfb)

#include "window/kestrunapp.h"
#include "window/mainwindow.h"
#include "runner/coderunner.h"
#include "runner/toolchain.h"
#include "theme/theme.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFutureWatcher>
#include <QTemporaryDir>
#include <QThreadPool>
#include <QTimer>

#include <cstdio>

using namespace Kestrun;

namespace {

struct Sample {
    double minute = 0;
    int children = 0;
    int descriptors = 0;
    int threads = 0;
    int workDirectories = 0;
    double residentMiB = 0;
    int runs = 0;
};

int countChildren()
{
    // Every process started by any thread of this one, and their descendants.
    QList<int> family{int(QCoreApplication::applicationPid())};
    int found = 0;
    for (qsizetype i = 0; i < family.size(); ++i) {
        const QString tasks = QStringLiteral("/proc/%1/task").arg(family[i]);
        for (const QString &task : QDir(tasks).entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
            QFile children(tasks + QLatin1Char('/') + task + QStringLiteral("/children"));
            if (!children.open(QIODevice::ReadOnly))
                continue;
            for (const QByteArray &pid : children.readAll().split(' ')) {
                if (!pid.trimmed().isEmpty()) {
                    family.append(pid.trimmed().toInt());
                    ++found;
                }
            }
        }
    }
    return found;
}

QString statusField(const char *name)
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return {};
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith(name))
            return QString::fromLatin1(line.mid(qstrlen(name)).trimmed());
    }
    return {};
}

Sample sample(double minute, int runs)
{
    Sample s;
    s.minute = minute;
    s.runs = runs;
    s.children = countChildren();
    s.descriptors = int(QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::NoDotAndDotDot | QDir::AllEntries).size());
    s.threads = statusField("Threads:").toInt();
    s.workDirectories = int(QDir(QDir::tempPath()).entryList({QStringLiteral("kestrun-*")}, QDir::Dirs | QDir::Hidden).size());
    s.residentMiB = statusField("VmRSS:").split(u' ').first().toDouble() / 1024;
    return s;
}

// The programs a learner's runs end in, one of each kind in turn.
const char *const programs[] = {
    "let language = \"Swift\"\nprint(language)",                       // passes
    "let language = \"swift\"\nprint(language)",                       // a test fails
    "let language = \"Swift\"\nlet a: [Int] = []\nprint(a[3])",        // crashes
    "let language = \"Swift\"\nwhile true {}",                          // loops until stopped
    "let language = \"Swift\"\nfor i in 0..<300_000 { print(i) }",      // floods its output
    "let language: Int = \"Swift\"",                                    // does not compile
};

} // namespace

int main(int argc, char *argv[])
{
    // Runs of this soak alone in the temporary directory it counts.
    QTemporaryDir temporary;
    qputenv("TMPDIR", QFile::encodeName(temporary.path()));
    QApplication application(argc, argv);
    const double minutes = argc > 1 ? std::max(0.1, atof(argv[1])) : 30;
    const std::optional<Toolchain> toolchain = Toolchain::find();
    if (!toolchain) {
        std::puts("soak: no Swift toolchain found, skipped");
        return 0;
    }
    QTemporaryDir home;
    Theme::apply(application);
    KestrunApp kestrun(home.filePath(QStringLiteral("progress.json")));
    MainWindow window(kestrun.model());
    window.resize(1440, 900);
    window.show();

    AppModel &model = kestrun.model();
    const LocalRunner runner(*toolchain);
    const Lesson lesson = *model.course().lesson(QStringLiteral("values-constants"));
    const QList<Lesson> lessons = model.course().lessons();

    // The interface: the next lesson every 400 ms, the course over and over.
    int opened = 0;
    QTimer browse;
    QObject::connect(&browse, &QTimer::timeout, [&] { model.open(lessons[opened++ % lessons.size()]); });
    browse.start(400);

    // The runner: two runs in flight, a new one as each ends.
    int started = 0;
    int finished = 0;
    QElapsedTimer clock;
    clock.start();
    const qint64 end = qint64(minutes * 60'000);
    std::function<void()> startRun = [&] {
        if (clock.elapsed() >= end)
            return;
        const QString code = QString::fromUtf8(programs[started++ % std::size(programs)]);
        auto *watcher = new QFutureWatcher<RunResult>;
        QObject::connect(watcher, &QFutureWatcher<RunResult>::finished, [&, watcher] {
            watcher->deleteLater();
            ++finished;
            startRun();
        });
        watcher->setFuture(runner.run(lesson, code));
    };

    QList<Sample> samples{sample(0, 0)};
    std::printf("minute  runs  children  descriptors  threads  work dirs  resident MiB\n");
    const auto print = [](const Sample &s) {
        std::printf("%6.1f %5d %9d %12d %8d %10d %13.1f\n", s.minute, s.runs, s.children, s.descriptors, s.threads,
                    s.workDirectories, s.residentMiB);
        std::fflush(stdout);
    };
    print(samples.first());
    QTimer every;
    QObject::connect(&every, &QTimer::timeout, [&] {
        samples.append(sample(clock.elapsed() / 60000.0, finished));
        print(samples.last());
    });
    every.start(60'000);
    startRun();
    startRun();

    // Ends once the last runs are back and the browsing has stopped.
    QTimer done;
    QObject::connect(&done, &QTimer::timeout, [&] {
        if (clock.elapsed() < end || finished < started)
            return;
        browse.stop();
        every.stop();
        done.stop();
        QTimer::singleShot(2000, [&] {
            samples.append(sample(clock.elapsed() / 60000.0, finished));
            print(samples.last());
            QCoreApplication::quit();
        });
    });
    done.start(500);
    application.exec();

    // After the first minute everything should hold steady.
    const Sample &first = samples.size() > 2 ? samples[1] : samples.first();
    const Sample &last = samples.last();
    std::printf("\n%d runs and %d lessons opened in %.1f minutes.\n", finished, opened, clock.elapsed() / 60000.0);
    std::printf("At the end against minute 1: children %d (%+d), descriptors %d (%+d), threads %d (%+d), "
                "work directories %d (%+d), resident %.1f MiB (%+.1f)\n",
                last.children, last.children - first.children, last.descriptors, last.descriptors - first.descriptors,
                last.threads, last.threads - first.threads, last.workDirectories,
                last.workDirectories - first.workDirectories, last.residentMiB, last.residentMiB - first.residentMiB);
    const bool steady = last.children == 0 && last.workDirectories == 0 && last.descriptors <= first.descriptors
        && last.threads <= first.threads && last.residentMiB - first.residentMiB < 8;
    std::printf("%s\n", steady ? "Nothing accumulated." : "SOMETHING ACCUMULATED.");
    return steady ? 0 : 1;
}
