#include "screens/answerbutton.h"
#include "screens/checklistview.h"
#include "screens/codelessonview.h"
#include "screens/lessonview.h"
#include "screens/publishedactions.h"
#include "screens/quizview.h"
#include "screens/readinglessonview.h"
#include "screens/splittermemory.h"
#include "app/appmodel.h"
#include "progress/progressstore.h"
#include "text/markdownlabel.h"

#include <QCheckBox>
#include <QLabel>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>

using namespace Kestrun;

namespace {

Question question(int right)
{
    Question q{QStringLiteral("Pick %1").arg(right), {}, {}, QStringLiteral("because")};
    for (int a = 0; a < 3; ++a)
        q.answers.append({QStringLiteral("answer %1").arg(a), a == right});
    return q;
}

Lesson reading(const QString &id, int questions = 0, int steps = 0, Lesson::Kind kind = Lesson::Kind::lesson)
{
    Lesson l;
    l.id = id;
    l.title = id;
    l.type = kind;
    l.description = {Block::paragraph(QStringLiteral("Read me."))};
    for (int q = 0; q < questions; ++q)
        l.questions.append(question(q % 3));
    for (int i = 0; i < steps; ++i)
        l.checklist.append(QStringLiteral("step %1").arg(i + 1));
    return l;
}

} // namespace

class TestReadingLessonView : public QObject {
    Q_OBJECT

    QTemporaryDir m_dir;
    int m_files = 0;

    QString file() { return m_dir.filePath(QStringLiteral("p%1.json").arg(++m_files)); }

    static Course courseOf(const QList<Lesson> &lessons)
    {
        Course course;
        course.chapters = {Chapter{QStringLiteral("One"), {}, {Module{QStringLiteral("m"), QStringLiteral("M"), lessons}}}};
        return course;
    }

private Q_SLOTS:
    // The content decides the screen, not the kind; Mark as read only where
    // nothing else finishes the lesson, and only until it is done.
    void screenChoice()
    {
        Lesson withTest = reading(QStringLiteral("a"), 0, 0, Lesson::Kind::quiz);
        withTest.tests.append(LessonTest{QStringLiteral("t"), {}});
        const QList<Lesson> lessons{withTest, reading(QStringLiteral("b")), reading(QStringLiteral("c"), 1),
                                    reading(QStringLiteral("d"), 0, 2)};
        ProgressStore store(file());
        AppModel model(courseOf(lessons), &store);
        PublishedActions actions;
        SplitterMemory memory;
        std::unique_ptr<QWidget> code(LessonView::create(model, lessons[0], actions, memory));
        QVERIFY(qobject_cast<CodeLessonView *>(code.get()));
        for (const Lesson &lesson : lessons.mid(1)) {
            std::unique_ptr<QWidget> screen(LessonView::create(model, lesson, actions, memory));
            QVERIFY(qobject_cast<ReadingLessonView *>(screen.get()));
            auto *markAsRead = screen->findChild<QPushButton *>(QStringLiteral("markAsRead"));
            QCOMPARE(bool(markAsRead), lesson.questions.isEmpty() && lesson.checklist.isEmpty());
            if (!markAsRead)
                continue;
            screen->show();
            auto *done = screen->findChild<QLabel *>(QStringLiteral("doneMark"));
            QVERIFY(!done->isVisible());
            markAsRead->click();
            QVERIFY(store.isDone(lesson.id));
            QVERIFY(!markAsRead->isVisible());
            QVERIFY(done->isVisible());
        }
    }

    // Every pick made and checked: wrong picks explain themselves; all right
    // finishes the lesson and the button then reads "Check again".
    void quiz()
    {
        const Lesson lesson = reading(QStringLiteral("q"), 3, 0, Lesson::Kind::quiz);
        ProgressStore store(file());
        AppModel model(courseOf({lesson}), &store);
        QuizView quiz(model, lesson);
        quiz.show();
        auto *check = quiz.findChild<QPushButton *>(QStringLiteral("checkAnswers"));
        const QString unchecked = check->text();
        quiz.findChild<AnswerButton *>(QStringLiteral("answer1.1"))->click();
        quiz.findChild<AnswerButton *>(QStringLiteral("answer2.1"))->click();  // wrong: the second is right
        QVERIFY(!check->isEnabled());
        quiz.findChild<AnswerButton *>(QStringLiteral("answer3.3"))->click();
        QVERIFY(check->isEnabled());

        check->click();
        auto *feedback = quiz.findChild<MarkdownLabel *>(QStringLiteral("feedback2"));
        QVERIFY(feedback->isVisible());
        QCOMPARE(feedback->text(), QStringLiteral("Not quite. because"));
        QCOMPARE(quiz.findChild<MarkdownLabel *>(QStringLiteral("feedback1"))->text(), QStringLiteral("Right. because"));
        QCOMPARE(model.notice(), std::optional<QString>(QStringLiteral("Have another look at the ones marked.")));
        QVERIFY(!quiz.findChild<QWidget *>(QStringLiteral("allRight"))->isVisible());
        QVERIFY(!store.isDone(lesson.id));

        quiz.findChild<AnswerButton *>(QStringLiteral("answer2.2"))->click();
        QVERIFY(!feedback->isVisible());  // a new pick hides every verdict
        check->click();
        QVERIFY(store.isDone(lesson.id));
        QCOMPARE(model.notice(), std::optional<QString>(QStringLiteral("Lesson done")));
        QVERIFY(quiz.findChild<QWidget *>(QStringLiteral("allRight"))->isVisible());
        QVERIFY(check->text() != unchecked);  // "Check again"
    }

    // With a checklist to finish too, all right answers are not enough.
    void quizWithChecklist()
    {
        const Lesson lesson = reading(QStringLiteral("both"), 1, 4);
        ProgressStore store(file());
        AppModel model(courseOf({lesson}), &store);
        ReadingLessonView screen(model, lesson);
        screen.show();
        auto *checklist = screen.findChild<ChecklistView *>();
        QVERIFY(!checklist->findChild<QPushButton *>(QStringLiteral("markAsDone")));
        auto *quiz = screen.findChild<QuizView *>();
        store.toggle(0, lesson.id);
        store.toggle(1, lesson.id);
        quiz->pick(0, 0);
        quiz->check();
        QCOMPARE(model.notice(), std::optional<QString>(QStringLiteral("All right. Tick off the checklist too.")));
        QVERIFY(!store.isDone(lesson.id));
        checklist->findChild<QCheckBox *>(QStringLiteral("step3"))->click();
        checklist->findChild<QCheckBox *>(QStringLiteral("step4"))->click();
        QVERIFY(!store.isDone(lesson.id));  // ticking the last step does not finish it
        quiz->check();
        QVERIFY(store.isDone(lesson.id));
    }

    // Mark as done waits for every tick; once done every box shows ticked.
    void checklist()
    {
        const Lesson lesson = reading(QStringLiteral("steps"), 0, 3, Lesson::Kind::project);
        ProgressStore store(file());
        AppModel model(courseOf({lesson}), &store);
        ChecklistView view(model, lesson);
        view.show();
        auto *markDone = view.findChild<QPushButton *>(QStringLiteral("markAsDone"));
        const QList<QCheckBox *> boxes = view.findChildren<QCheckBox *>();
        QCOMPARE(boxes.size(), 3);
        boxes[0]->click();
        boxes[2]->click();
        QVERIFY(!markDone->isEnabled());
        QCOMPARE(store.saved().ticks.value(lesson.id), (QSet<int>{0, 2}));
        boxes[1]->click();
        QVERIFY(markDone->isEnabled());
        boxes[1]->click();
        QVERIFY(!markDone->isEnabled());
        boxes[1]->click();
        markDone->click();
        QVERIFY(store.isDone(lesson.id));
        QVERIFY(!markDone->isVisible());
        store.toggle(0, lesson.id);  // untick: the box still shows ticked, the lesson being done
        QVERIFY(boxes[0]->isChecked());
    }

    // The first lesson has no way back, the last none on; an unknown lesson
    // has no breadcrumb but its title and minutes.
    void frame()
    {
        const QList<Lesson> lessons{reading(QStringLiteral("first")), reading(QStringLiteral("last"))};
        ProgressStore store(file());
        AppModel model(courseOf(lessons), &store);
        ReadingLessonView first(model, lessons[0]);
        QVERIFY(!first.findChild<QPushButton *>(QStringLiteral("footerPrevious")));
        QCOMPARE(first.findChild<QPushButton *>(QStringLiteral("footerNext"))->text(), QStringLiteral("last"));
        QVERIFY(first.findChild<QWidget *>(QStringLiteral("breadcrumb")));
        ReadingLessonView last(model, lessons[1]);
        QVERIFY(last.findChild<QPushButton *>(QStringLiteral("footerPrevious")));
        QVERIFY(!last.findChild<QPushButton *>(QStringLiteral("footerNext")));
        last.findChild<QPushButton *>(QStringLiteral("footerPrevious"))->click();
        QCOMPARE(model.selection(), std::optional<QString>(QStringLiteral("first")));

        Lesson stray = reading(QStringLiteral("stray"));
        stray.minutes = 7;
        ReadingLessonView alone(model, stray);
        QVERIFY(!alone.findChild<QWidget *>(QStringLiteral("breadcrumb")));
        QCOMPARE(alone.findChild<MarkdownLabel *>(QStringLiteral("lessonMinutes"))->text(), QStringLiteral("About 7 minutes"));
    }

    // Long neighbouring titles shorten in a narrow pane instead of widening
    // the lesson past it, which would clip every paragraph at its edge.
    void longTitlesFitANarrowPane()
    {
        QList<Lesson> lessons{reading(QStringLiteral("before")), reading(QStringLiteral("here")), reading(QStringLiteral("after"))};
        lessons[0].title = QStringLiteral("Protocols, extensions and the standard library's own protocols");
        lessons[2].title = QStringLiteral("`where` clauses and constrained extensions of generic types");
        ProgressStore store(file());
        AppModel model(courseOf(lessons), &store);
        ReadingLessonView view(model, lessons[1]);
        view.resize(360, 600);
        view.show();
        QVERIFY(QTest::qWaitForWindowExposed(&view));
        auto *footer = view.findChild<QWidget *>(QStringLiteral("lessonFooter"));
        QVERIFY(footer->width() <= 360);
        for (const char *name : {"footerPrevious", "footerNext"}) {
            auto *button = view.findChild<QPushButton *>(QLatin1String(name));
            QVERIFY(button->geometry().right() <= footer->width());
            QVERIFY2(button->text().endsWith(QChar(0x2026)), qPrintable(button->text()));
        }
        QCOMPARE(view.findChild<QPushButton *>(QStringLiteral("footerNext"))->accessibleName(), lessons[2].title);
    }
};

QTEST_MAIN(TestReadingLessonView)
#include "tst_readinglessonview.moc"
