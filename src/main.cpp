#include "window/kestrunapp.h"
#include "window/mainwindow.h"
#include "selftest/selftest.h"
#include "app/startup.h"
#include "texts/texts.h"
#include "theme/theme.h"

#include <QApplication>

#include <cstdio>

using namespace Kestrun;

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
    QCoreApplication::setOrganizationName(QStringLiteral("Kestrun"));
    QCoreApplication::setApplicationName(QStringLiteral("Kestrun"));
    Theme::apply(app);

    std::unique_ptr<KestrunApp> kestrun;
    try {
        kestrun = std::make_unique<KestrunApp>();
    } catch (const Course::LoadError &error) {
        // The sentence for the learner, then what exactly failed for whoever helps them.
        std::fputs(qPrintable(Texts::get(Text::courseMissing) + QLatin1Char('\n')), stderr);
        std::fputs(qPrintable(error.message() + QLatin1Char('\n')), stderr);
        return EXIT_FAILURE;
    }

    MainWindow window(kestrun->model());
    QObject::connect(&window, &MainWindow::shown, kestrun.get(), [&] { kestrun->findCompiler(); });
    window.show();
    return app.exec();
}
