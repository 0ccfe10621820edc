// Opens the longest lesson of the course (the most text in its blocks) as
// lesson text, offscreen: builds the block stack and lays all of it out at
// 900 points wide. Goal: under 30 ms. Also prints the first paint of the
// whole stack, and every lesson's time, slowest first.
//
// Times are CPU time of the thread, the median of several runs.

#include "course/course.h"
#include "text/blocksview.h"
#include "theme/theme.h"

#include <QApplication>
#include <QImage>
#include <QLayout>
#include <QPainter>

#include <algorithm>
#include <cstdio>
#include <ctime>

using namespace Kestrun;

namespace {

double cpuSeconds()
{
    timespec t{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return double(t.tv_sec) + t.tv_nsec / 1e9;
}

qsizetype textSize(const QList<Block> &blocks)
{
    qsizetype size = 0;
    for (const Block &block : blocks) {
        size += block.text.size() + block.code.size() + block.noteKind.size() + textSize(block.blocks);
        for (const QString &item : block.items + block.head)
            size += item.size();
        for (const QStringList &row : block.rows) {
            for (const QString &cell : row)
                size += cell.size();
        }
    }
    return size;
}

struct Timing {
    double layout = 0; // build and lay out
    double paint = 0;  // the first paint of all of it
    int height = 0;
};

Timing open(const QList<Block> &blocks, int width)
{
    const double start = cpuSeconds();
    BlocksView view(blocks);
    const int height = view.heightForWidth(width);
    view.resize(width, height);
    view.layout()->activate();
    const double laidOut = cpuSeconds();
    QImage image(width, height, QImage::Format_ARGB32_Premultiplied);
    QPainter painter(&image);
    view.render(&painter);
    painter.end();
    return {laidOut - start, cpuSeconds() - laidOut, height};
}

Timing median(const QList<Block> &blocks, int width, int runs)
{
    QList<Timing> timings;
    for (int run = 0; run < runs; ++run)
        timings.append(open(blocks, width));
    std::sort(timings.begin(), timings.end(), [](const Timing &a, const Timing &b) { return a.layout < b.layout; });
    Timing result = timings[timings.size() / 2];
    std::sort(timings.begin(), timings.end(), [](const Timing &a, const Timing &b) { return a.paint < b.paint; });
    result.paint = timings[timings.size() / 2].paint;
    return result;
}

} // namespace

int main(int argc, char *argv[])
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    const Course course = Course::load();
    const int width = qRound(Theme::pixels(900));

    struct Entry {
        QString id;
        QList<Block> blocks;
        Timing timing;
    };
    QList<Entry> entries;
    for (const Lesson &lesson : course.lessons()) {
        QList<Block> blocks = lesson.description + lesson.instructions;
        for (const Question &question : lesson.questions)
            blocks += question.detail;
        entries.append({lesson.id, blocks, {}});
    }
    const auto longest = std::max_element(entries.cbegin(), entries.cend(), [](const Entry &a, const Entry &b) {
        return textSize(a.blocks) < textSize(b.blocks);
    });

    open(longest->blocks, width); // warm up fonts and caches
    const Timing timing = median(longest->blocks, width, 21);
    std::printf("lesson: longest is %s, %lld blocks, %lld characters, %d px high at %d px (900 pt)\n",
                qPrintable(longest->id), static_cast<long long>(longest->blocks.size()),
                static_cast<long long>(textSize(longest->blocks)), timing.height, width);
    std::printf("lesson open (build and lay out): %.2f ms (goal: under 30 ms); first paint %.2f ms\n",
                timing.layout * 1e3, timing.paint * 1e3);

    for (Entry &entry : entries)
        entry.timing = median(entry.blocks, width, 3);
    std::sort(entries.begin(), entries.end(),
              [](const Entry &a, const Entry &b) { return a.timing.layout > b.timing.layout; });
    std::printf("slowest lessons to open:");
    for (qsizetype i = 0; i < std::min<qsizetype>(3, entries.size()); ++i)
        std::printf(" %s %.2f ms;", qPrintable(entries[i].id), entries[i].timing.layout * 1e3);
    std::printf("\n");
    return 0;
}
