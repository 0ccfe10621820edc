// Test helper. "progresswriter FILE" keeps changing and saving the progress
// in FILE until it is killed, printing "written N" after each finished write.
// "progresswriter --quit TEXT" saves TEXT as code in the default progress
// file and quits at once, ending the process without destroying the store.
#include "progress/progressstore.h"

#include <QCoreApplication>
#include <QRandomGenerator>
#include <QTimer>

#include <cstdio>
#include <cstdlib>

using namespace Kestrun;

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    const QStringList args = app.arguments();

    if (args.size() == 3 && args.at(1) == QLatin1String("--quit")) {
        auto *store = new ProgressStore();
        store->setCode(args.at(2), QStringLiteral("quit"));
        QTimer::singleShot(0, &app, &QCoreApplication::quit);
        app.exec();
        std::_Exit(0);
    }
    if (args.size() != 2)
        return 2;

    ProgressStore store(args.at(1));
    int iteration = store.saved().code.value(QStringLiteral("iteration")).toInt();
    for (;;) {
        ++iteration;
        // Three entries that only a complete record holds consistently.
        const int length = QRandomGenerator::global()->bounded(1, 400'000);
        store.setCode(QString(length, QChar(u'a' + iteration % 26)), QStringLiteral("body"));
        store.setCode(QString::number(length), QStringLiteral("length"));
        store.setCode(QString::number(iteration), QStringLiteral("iteration"));
        store.complete(QStringLiteral("lesson-%1").arg(iteration % 40));
        store.toggle(iteration % 7, QStringLiteral("steps"));
        store.flush();
        std::printf("written %d\n", iteration);
        std::fflush(stdout);
        app.processEvents();
    }
}
