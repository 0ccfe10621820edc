// Test helper.
// "progresswriter FILE" keeps changing and saving the progress in FILE until
// it is killed, printing "written N" after each finished write.
// "progresswriter --quit TEXT" saves TEXT as code in the default progress
// file and quits at once, ending the process without destroying the store.
// "progresswriter --commands FILE" keeps a store on FILE and obeys one
// command per line of standard input, answering each with one line:
//   code ID TEXT   sets the code of lesson ID and writes: "written" or "failed"
//   fill BYTES     fills the file's disk up to BYTES free: "filled"
//   free           removes that filling: "freed"
//   show           "ID=start/length" for each code in the file, or "torn" or "missing"
//   files          the names in the file's directory
#include "progress/progressstore.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QTextStream>
#include <QTimer>

#include <cstdio>
#include <cstdlib>

using namespace Kestrun;

namespace {

void answer(const QString &line)
{
    std::printf("%s\n", line.toUtf8().constData());
    std::fflush(stdout);
}

// Writes zeros until the disk is full, then gives back `free` bytes.
void fill(const QString &path, qint64 free)
{
    QFile filler(path);
    if (!filler.open(QIODevice::WriteOnly))
        return;
    const QByteArray block(4096, '\0');
    while (filler.write(block) == block.size() && filler.flush()) {
    }
    filler.close();
    filler.resize(qMax<qint64>(0, filler.size() - free));
}

int obey(const QString &file)
{
    ProgressStore store(file);
    QString outcome;
    QObject::connect(&store, &ProgressStore::written, [&] { outcome = QStringLiteral("written"); });
    QObject::connect(&store, &ProgressStore::writeFailed, [&] { outcome = QStringLiteral("failed"); });
    const QString filler = QFileInfo(file).dir().filePath(QStringLiteral("filler"));

    QTextStream in(stdin);
    QString line;
    while (in.readLineInto(&line)) {
        const QStringList words = line.split(QLatin1Char(' '));
        const QString &command = words.first();
        if (command == QLatin1String("code") && words.size() >= 3) {
            outcome.clear();
            store.setCode(words.mid(2).join(QLatin1Char(' ')), words[1]);
            store.flush();
            QCoreApplication::processEvents();  // delivers the write's outcome
            answer(outcome);
        } else if (command == QLatin1String("fill") && words.size() == 2) {
            fill(filler, words[1].toLongLong());
            answer(QStringLiteral("filled"));
        } else if (command == QLatin1String("free")) {
            QFile::remove(filler);
            answer(QStringLiteral("freed"));
        } else if (command == QLatin1String("show")) {
            QFile stored(file);
            if (!stored.open(QIODevice::ReadOnly)) {
                answer(QStringLiteral("missing"));
                continue;
            }
            const std::optional<ProgressStore::Saved> saved = ProgressStore::decode(stored.readAll());
            if (!saved) {
                answer(QStringLiteral("torn"));
                continue;
            }
            QStringList codes;
            for (auto it = saved->code.cbegin(); it != saved->code.cend(); ++it)
                codes.append(it.key() + QLatin1Char('=') + it.value().left(12) + QLatin1Char('/') + QString::number(it.value().size()));
            answer(codes.join(QLatin1Char(' ')));
        } else if (command == QLatin1String("files")) {
            answer(QFileInfo(file).dir().entryList(QDir::Files | QDir::Hidden, QDir::Name).join(QLatin1Char(' ')));
        } else {
            answer(QStringLiteral("unknown command: ") + line);
        }
    }
    return 0;
}

} // namespace

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
    if (args.size() == 3 && args.at(1) == QLatin1String("--commands"))
        return obey(args.at(2));
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
