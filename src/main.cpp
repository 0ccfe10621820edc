#include "kestrunapp.h"
#include "mainwindow.h"
#include "selftest.h"
#include "startup.h"
#include "texts.h"

#include <QApplication>

#include <cstdio>

int main(int argc, char *argv[])
{
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));

    const StartUp::LaunchMode mode = StartUp::launchMode(arguments);
    if (mode.selfTest) {
        // No GUI platform: the self-test runs over SSH and in CI.
        QCoreApplication app(argc, argv);
        return SelfTest::run(mode.solutionsPath);
    }

    QApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("Kestrun"));

    std::unique_ptr<KestrunApp> kestrun;
    try {
        kestrun = std::make_unique<KestrunApp>();
    } catch (const Course::LoadError &) {
        std::fputs(qPrintable(Texts::courseMissing + QLatin1Char('\n')), stderr);
        return EXIT_FAILURE;
    }

    MainWindow window(kestrun->model());
    QObject::connect(&window, &MainWindow::shown, kestrun.get(), [&] { kestrun->findCompiler(); });
    window.show();
    return app.exec();
}
