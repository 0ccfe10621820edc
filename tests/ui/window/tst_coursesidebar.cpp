#include "window/coursesidebar.h"
#include "app/appmodel.h"
#include "app/courseoutline.h"
#include "progress/progressstore.h"
#include "theme/icons.h"

#include <QTemporaryDir>
#include <QTest>

using namespace Kestrun;

class TestCourseSidebar : public QObject {
    Q_OBJECT

    QTemporaryDir m_dir;
    Course m_course = Course::load();

private Q_SLOTS:
    // Chapters are numbered headings; modules count their done lessons and
    // lessons show their done mark as soon as the store changes.
    void followsProgress()
    {
        ProgressStore store(m_dir.filePath(QStringLiteral("a.json")));
        AppModel model(m_course, &store);
        CourseSidebar sidebar(model);
        const CourseOutline &outline = *sidebar.outline();
        QCOMPARE(outline.rowCount(), m_course.chapters.size());
        QCOMPARE(outline.index(2, 0).data().toString(), QStringLiteral("3. ") + m_course.chapters[2].title);

        const Module &first = m_course.chapters[0].modules[0];
        const QModelIndex module = outline.moduleIndex(first.id);
        QCOMPARE(module.data(CourseOutline::CountRole).toString(), QStringLiteral("0/%1").arg(first.lessons.size()));
        const QModelIndex lesson = outline.lessonIndex(first.lessons[1].id);
        QCOMPARE(lesson.data(CourseOutline::SymbolRole).toString(),
                 CourseOutline::symbolFor(first.lessons[1], false));
        QCOMPARE(lesson.data(Qt::AccessibleDescriptionRole).toString(), QString());

        store.complete(first.lessons[1].id);
        store.complete(first.lessons[3].id);
        QCOMPARE(module.data(CourseOutline::CountRole).toString(), QStringLiteral("2/%1").arg(first.lessons.size()));
        QCOMPARE(outline.index(0, 0).data(CourseOutline::CountRole).toString().section(u'/', 0, 0), QStringLiteral("2"));
        QCOMPARE(lesson.data(CourseOutline::SymbolRole).toString(), QStringLiteral("checkmark.circle.fill"));
        QCOMPARE(lesson.data(Qt::AccessibleDescriptionRole).toString(), QStringLiteral("Done"));
    }

    // Each kind of lesson, done or not, has a bundled icon, and no two kinds share one.
    void rowSymbols()
    {
        QSet<QString> symbols;
        for (int kind = int(Lesson::Kind::lesson); kind <= int(Lesson::Kind::project); ++kind) {
            Lesson lesson;
            lesson.type = Lesson::Kind(kind);
            for (const bool done : {false, true})
                symbols << CourseOutline::symbolFor(lesson, done);
            lesson.tests.append(LessonTest{QStringLiteral("t"), {}});
            symbols << CourseOutline::symbolFor(lesson, false);
        }
        for (const QString &symbol : symbols)
            QVERIFY2(Icons::symbols().contains(symbol), qPrintable(symbol));
        QCOMPARE(symbols.size(), 8);  // six kinds, code lessons apart from reading, and done
    }

    // A selection made elsewhere opens its module and shows the row; a
    // lesson clicked in the list is selected but not recorded as the last.
    void selection()
    {
        ProgressStore store(m_dir.filePath(QStringLiteral("b.json")));
        AppModel model(m_course, &store);
        CourseSidebar sidebar(model);
        sidebar.resize(300, 800);
        sidebar.show();
        OutlineView *view = sidebar.view();
        const Module &later = m_course.chapters[1].modules[1];
        const QModelIndex module = sidebar.outline()->moduleIndex(later.id);
        QVERIFY(!view->isExpanded(module));

        model.open(later.lessons[2]);
        QVERIFY(view->isExpanded(module));
        QCOMPARE(view->currentIndex(), sidebar.outline()->lessonIndex(later.lessons[2].id));

        const QModelIndex clicked = sidebar.outline()->lessonIndex(later.lessons[0].id);
        view->scrollTo(clicked);
        QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, view->visualRect(clicked).center());
        QCOMPARE(model.selection(), std::optional(later.lessons[0].id));
        QCOMPARE(store.saved().last, std::optional(later.lessons[2].id));

        // A module opens and closes on a click on its title; chapters stay open.
        const QModelIndex other = sidebar.outline()->moduleIndex(m_course.chapters[0].modules[1].id);
        QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, view->visualRect(other).center());
        QVERIFY(view->isExpanded(other));
        QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, view->visualRect(other).center());
        QVERIFY(!view->isExpanded(other));
        view->collapse(sidebar.outline()->index(0, 0));
        QVERIFY(view->isExpanded(sidebar.outline()->index(0, 0)));
    }
};

QTEST_MAIN(TestCourseSidebar)
#include "tst_coursesidebar.moc"
