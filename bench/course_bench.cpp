// Loads a course of at least 2 MB, made of the shipped course's chapters
// repeated under fresh ids, with Course::load, and the same file with
// Python's json module as the peer (its parse only, not Python's start).
// Medians of several runs. Goal: under 50 ms.
//
//   course_bench [RUNS]

#include "course/course.h"
#include "course/resources.h"

#include "median.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>

using namespace Kestrun;

namespace {

// The shipped chapters again and again, every id made unique, until 2 MB.
QByteArray bigCourse()
{
    QFile file(Resources::url(QStringLiteral("course.json")).value_or(QString()));
    file.open(QIODevice::ReadOnly);
    QJsonObject course = QJsonDocument::fromJson(file.readAll()).object();
    const QJsonArray shipped = course.value(QStringLiteral("chapters")).toArray();
    QJsonArray chapters;
    QByteArray json;
    for (int copy = 0; json.size() < 2 * 1024 * 1024; ++copy) {
        for (const QJsonValue &chapterValue : shipped) {
            QJsonObject chapter = chapterValue.toObject();
            QJsonArray modules;
            for (const QJsonValue &moduleValue : chapter.value(QStringLiteral("modules")).toArray()) {
                QJsonObject module = moduleValue.toObject();
                const QString suffix = QStringLiteral("-%1").arg(copy);
                module.insert(QStringLiteral("id"), module.value(QStringLiteral("id")).toString() + suffix);
                QJsonArray lessons;
                for (const QJsonValue &lessonValue : module.value(QStringLiteral("lessons")).toArray()) {
                    QJsonObject lesson = lessonValue.toObject();
                    lesson.insert(QStringLiteral("id"), lesson.value(QStringLiteral("id")).toString() + suffix);
                    lessons.append(lesson);
                }
                module.insert(QStringLiteral("lessons"), lessons);
                modules.append(module);
            }
            chapter.insert(QStringLiteral("modules"), modules);
            chapters.append(chapter);
        }
        course.insert(QStringLiteral("chapters"), chapters);
        json = QJsonDocument(course).toJson(QJsonDocument::Indented);
    }
    return json;
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    const int runs = argc > 1 ? std::max(1, atoi(argv[1])) : 15;
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("course.json"));
    QFile out(path);
    const QByteArray json = bigCourse();
    out.open(QIODevice::WriteOnly);
    out.write(json);
    out.close();

    QList<double> times;
    qsizetype lessons = 0;
    for (int i = 0; i < runs; ++i) {
        QElapsedTimer timer;
        timer.start();
        const Course course = Course::load(path);
        times.append(timer.nsecsElapsed() / 1e6);
        lessons = course.lessons().size();
    }

    QProcess python;
    python.start(QStringLiteral("python3"),
                 {QStringLiteral("-c"),
                  QStringLiteral("import json, statistics, sys, time\n"
                                 "t = []\n"
                                 "for _ in range(%1):\n"
                                 "    s = time.perf_counter()\n"
                                 "    with open(sys.argv[1], 'rb') as f: json.load(f)\n"
                                 "    t.append((time.perf_counter() - s) * 1000)\n"
                                 "print(statistics.median(t))")
                      .arg(runs),
                  path});
    python.waitForFinished(-1);
    const double peer = python.readAllStandardOutput().trimmed().toDouble();

    std::printf("Course loading: %.1f MB, %lld lessons, %d runs\n  Course::load %.1f ms (goal: under 50 ms)"
                "  Python's json.load %.1f ms  ratio %.2f\n",
                json.size() / 1048576.0, qlonglong(lessons), runs, median(times), peer, median(times) / peer);
    return median(times) < 50 ? 0 : 1;
}
