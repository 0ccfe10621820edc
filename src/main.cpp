#include "window/kestrunapp.h"
#include "window/mainwindow.h"
#include "selftest/selftest.h"
#include "app/signalquit.h"
#include "app/startup.h"
#include "runner/shell.h"
#include "texts/texts.h"
#include "theme/theme.h"

#include <QApplication>
#include <QFutureWatcher>
#include <QThreadPool>
#include <QtConcurrentRun>

#include <cstdio>

using namespace Kestrun;

namespace {

// However the event loop ended (Quit, SIGTERM, Ctrl+C, the self-test done):
// children still running are killed, so every run returns and removes its
// work directory, and the process waits for that before it ends.
void stopRuns()
{
    Shell::stopAll();
    QThreadPool::globalInstance()->waitForDone();
}

} // namespace

int main(int argc, char *argv[])
{
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));

    const StartUp::LaunchMode mode = StartUp::launchMode(arguments);
    if (mode.selfTest) {
        // No GUI platform: the self-test runs over SSH and in CI.
        QCoreApplication app(argc, argv);
        const SignalQuit signalQuit;
        QObject::connect(&app, &QCoreApplication::aboutToQuit, &Shell::stopAll);
        // Off the main thread, so that the event loop is there to take a signal.
        // A watcher rather than then(): its result is read under the future's
        // own lock, which the thread sanitizer can see.
        QFutureWatcher<int> selfTest;
        QObject::connect(&selfTest, &QFutureWatcher<int>::finished, &app,
                         [&selfTest] { QCoreApplication::exit(selfTest.result()); });
        selfTest.setFuture(QtConcurrent::run([path = mode.solutionsPath] { return SelfTest::run(path); }));
        const int status = app.exec();
        stopRuns();
        return signalQuit.signal() ? 128 + signalQuit.signal() : status;
    }

    std::future<Course> course = KestrunApp::loadCourse();
    QApplication app(argc, argv);
    QCoreApplication::setOrganizationName(QStringLiteral("Kestrun"));
    QCoreApplication::setApplicationName(QStringLiteral("Kestrun"));
    // The desktop matches the window to its entry, and so to its icon, by this name.
    QGuiApplication::setDesktopFileName(QStringLiteral("org.kestrun.Kestrun"));
    Theme::apply(app);
    const SignalQuit signalQuit;

    std::unique_ptr<KestrunApp> kestrun;
    try {
        kestrun = std::make_unique<KestrunApp>(course.get());
    } catch (const Course::LoadError &error) {
        // The sentence for the learner, then what exactly failed for whoever helps them.
        std::fputs(qPrintable(Texts::get(Text::courseMissing) + QLatin1Char('\n')), stderr);
        std::fputs(qPrintable(error.message() + QLatin1Char('\n')), stderr);
        return EXIT_FAILURE;
    }

    MainWindow window(kestrun->model());
    QObject::connect(&window, &MainWindow::shown, kestrun.get(), [&] { kestrun->findCompiler(); });
    QObject::connect(&app, &QCoreApplication::aboutToQuit, &Shell::stopAll);
    window.show();
    const int status = app.exec();
    stopRuns();
    return status;
}
