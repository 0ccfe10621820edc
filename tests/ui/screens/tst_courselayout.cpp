// Every lesson of the shipped course fits a narrow lesson pane: no text,
// table, button or title of its own makes the column wider than the pane,
// which would clip every paragraph at the pane's edge.

#include "app/appmodel.h"
#include "course/course.h"
#include "progress/progressstore.h"
#include "screens/lessoncolumn.h"
#include "screens/lessonview.h"
#include "screens/publishedactions.h"
#include "screens/splittermemory.h"
#include "theme/theme.h"

#include <QApplication>
#include <QTemporaryDir>
#include <QtTest>

using namespace Kestrun;

class TestCourseLayout : public QObject {
    Q_OBJECT

    // The narrowest a lesson pane gets beside the editor in a small window.
    static constexpr int narrowPane = 380;

private Q_SLOTS:
    void everyLessonFitsANarrowPane()
    {
        Theme::apply(*qApp);
        QTemporaryDir dir;
        ProgressStore store(dir.filePath(QStringLiteral("progress.json")));
        AppModel model(Course::load(), &store);
        PublishedActions actions;
        SplitterMemory memory;
        QStringList tooWide;
        for (const Lesson &lesson : model.course().lessons()) {
            std::unique_ptr<QWidget> screen(LessonView::create(model, lesson, actions, memory));
            const auto *column = screen->findChild<LessonColumn *>();
            QVERIFY(column);
            const int needed = column->minimumSizeHint().width();
            if (needed > narrowPane)
                tooWide.append(QStringLiteral("%1 needs %2 px").arg(lesson.id).arg(needed));
        }
        QVERIFY2(tooWide.isEmpty(), qPrintable(tooWide.join(QStringLiteral(", "))));
    }
};

QTEST_MAIN(TestCourseLayout)
#include "tst_courselayout.moc"
