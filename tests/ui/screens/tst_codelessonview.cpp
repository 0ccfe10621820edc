#include "screens/codelessonview.h"
#include "screens/consoleview.h"
#include "screens/publishedactions.h"
#include "screens/splittermemory.h"
#include "screens/testslist.h"
#include "app/appmodel.h"
#include "editor/codeeditor.h"
#include "progress/progressstore.h"
#include "runner/coderunner.h"

#include <QPromise>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>

using namespace Kestrun;

namespace {

// A runner whose runs end when the test says so, with the result it gives.
class HeldRunner : public CodeRunner {
public:
    mutable QList<QString> codes;
    mutable std::vector<std::shared_ptr<QPromise<RunResult>>> pending;

    QFuture<RunResult> run(const Lesson &, const QString &code) const override
    {
        codes.append(code);
        auto promise = std::make_shared<QPromise<RunResult>>();
        promise->start();
        pending.push_back(promise);
        return promise->future();
    }

    void finish(const RunResult &result)
    {
        pending.back()->addResult(result);
        pending.back()->finish();
    }
};

Lesson lesson(int tests, int hints, bool instructions)
{
    Lesson l;
    l.id = QStringLiteral("code");
    l.title = QStringLiteral("Code");
    l.seed = QStringLiteral("let x = 1");
    for (int i = 0; i < tests; ++i)
        l.tests.append(LessonTest{QStringLiteral("test %1").arg(i + 1), {Check{Check::Kind::swift, QStringLiteral("expect(true)")}}});
    for (int i = 0; i < hints; ++i)
        l.hints.append(QStringLiteral("hint %1").arg(i + 1));
    if (instructions)
        l.instructions.append(Block::paragraph(QStringLiteral("Do it.")));
    return l;
}

Course courseOf(const QList<Lesson> &lessons)
{
    Course course;
    course.chapters = {Chapter{QStringLiteral("One"), {}, {Module{QStringLiteral("m"), QStringLiteral("M"), lessons}}}};
    return course;
}

RunResult result(QList<bool> passed)
{
    RunResult r;
    r.compiled = true;
    for (int i = 0; i < passed.size(); ++i)
        r.tests.append({QStringLiteral("test %1").arg(i + 1), passed[i]});
    return r;
}

} // namespace

class TestCodeLessonView : public QObject {
    Q_OBJECT

    QTemporaryDir m_dir;
    PublishedActions m_actions;
    SplitterMemory m_memory;

    struct Screen {
        ProgressStore store;
        AppModel model;
        std::shared_ptr<HeldRunner> runner = std::make_shared<HeldRunner>();
        CodeLessonView view;

        Screen(const QString &file, const QList<Lesson> &lessons, PublishedActions &actions, SplitterMemory &memory)
            : store(file)
            , model(courseOf(lessons), &store)
            , view(model, lessons.first(), actions, memory)
        {
        }
        QString console() const { return view.findChild<ConsoleView *>()->plainText(); }
        TestsList *tests() const { return view.findChild<TestsList *>(); }
        CodeEditor *editor() const { return view.findChild<CodeEditor *>(); }
    };

    std::unique_ptr<Screen> screen(const QList<Lesson> &lessons)
    {
        static int files = 0;
        return std::make_unique<Screen>(m_dir.filePath(QStringLiteral("p%1.json").arg(++files)), lessons, m_actions, m_memory);
    }

private Q_SLOTS:
    // No task box without instructions; three hints come one by one and the
    // button goes with the last.
    void taskAndHints()
    {
        auto plain = screen({lesson(1, 0, false)});
        QVERIFY(!plain->view.findChild<QWidget *>(QStringLiteral("taskBox")));
        QVERIFY(!plain->view.findChild<QWidget *>(QStringLiteral("getAHint")));

        auto hinted = screen({lesson(1, 3, true)});
        QVERIFY(hinted->view.findChild<QWidget *>(QStringLiteral("taskBox")));
        auto *button = hinted->view.findChild<QPushButton *>(QStringLiteral("getAHint"));
        hinted->view.show();
        for (int shown = 1; shown <= 3; ++shown) {
            QVERIFY(button->isVisible());
            button->click();
            QCOMPARE(hinted->view.hintsShown(), shown);
            QVERIFY(hinted->view.findChild<QWidget *>(QStringLiteral("hint%1").arg(shown)));
            QVERIFY(!hinted->view.findChild<QWidget *>(QStringLiteral("hint%1").arg(shown + 1)));
        }
        QVERIFY(!button->isVisible());
    }

    // What the console says before, during and after runs of every kind.
    void console_data()
    {
        QTest::addColumn<RunResult>("result");
        QTest::addColumn<QStringList>("lines");
        RunResult compileError;
        compileError.errors = {{4, "cannot find 'y' in scope"}, {std::nullopt, "The tests could not use your code: x"}};
        compileError.tests = {{"t", false}};
        RunResult slowCompile;
        slowCompile.timedOut = true;
        RunResult loop = result({false});
        loop.output = "1\n2";
        loop.timedOut = true;
        RunResult crash = result({false});
        crash.crashed = true;
        crash.crashReason = "Index out of range";
        RunResult quiet = result({true});
        QTest::newRow("compile error") << compileError
            << QStringList{"Your code did not compile:", "line 4: cannot find 'y' in scope", "The tests could not use your code: x"};
        QTest::newRow("compile time-out") << slowCompile << QStringList{"Compiling took too long."};
        QTest::newRow("time-out") << loop
            << QStringList{"1", "2", "Your program ran for too long and was stopped. Is there a loop that never ends?"};
        QTest::newRow("crash") << crash << QStringList{"Your program crashed: Index out of range"};
        QTest::newRow("quiet pass") << quiet << QStringList{"(Nothing was printed.)", "Every test passes."};
    }

    void console()
    {
        QFETCH(RunResult, result);
        QFETCH(QStringList, lines);
        QCOMPARE(ConsoleView::lines(std::nullopt, false, std::nullopt).first().text,
                 QStringLiteral("Press Run (Ctrl+Return) to check your code."));
        QCOMPARE(ConsoleView::lines(result, true, std::nullopt).first().text, QStringLiteral("Compiling and running your code…"));
        QCOMPARE(ConsoleView::lines(result, false, QStringLiteral("why")).first().text, QStringLiteral("why"));
        QStringList shown;
        for (const ConsoleView::Line &line : ConsoleView::lines(result, false, std::nullopt))
            shown += line.text.split(u'\n');
        QCOMPARE(shown, lines);
    }

    // A run: tests, console and ruler follow its result; while the next one
    // runs only the console changes; a second Run is ignored; Reset clears.
    void runAndReset()
    {
        auto s = screen({lesson(3, 0, false), lesson(1, 0, false)});
        s->model.setRunner(s->runner);
        s->editor()->setFocus();
        QCOMPARE(s->tests()->status(0), TestsList::Status::notRun);

        s->view.run();
        QCOMPARE(s->runner->codes, QStringList{"let x = 1"});
        QCOMPARE(s->console(), QStringLiteral("Compiling and running your code…"));
        RunResult twoOfThree = result({true, true});
        twoOfThree.compiled = false;
        twoOfThree.errors = {{2, "oops"}};
        s->runner->finish(twoOfThree);
        QTRY_VERIFY(!s->view.isRunning());
        QCOMPARE(s->tests()->status(0), TestsList::Status::passed);
        QCOMPARE(s->tests()->status(2), TestsList::Status::failed);  // no result for it
        QCOMPARE(s->editor()->errorLines(), QSet<int>{2});
        QVERIFY(s->console().contains(QStringLiteral("line 2: oops")));

        s->view.run();
        s->view.run();
        QCOMPARE(s->runner->codes.size(), 2);
        QCOMPARE(s->tests()->status(0), TestsList::Status::passed);
        QCOMPARE(s->editor()->errorLines(), QSet<int>{2});
        QCOMPARE(s->console(), QStringLiteral("Compiling and running your code…"));
        s->runner->finish(result({true, true, true}));
        QTRY_VERIFY(!s->view.isRunning());
        QVERIFY(s->store.isDone(QStringLiteral("code")));
        QCOMPARE(s->model.notice(), std::optional<QString>(QStringLiteral("Lesson done")));
        QVERIFY(s->editor()->errorLines().isEmpty());

        s->store.setCode(QStringLiteral("print(2)"), QStringLiteral("code"));
        s->view.reset();
        QCOMPARE(s->tests()->status(0), TestsList::Status::notRun);
        QCOMPARE(s->editor()->code(), QStringLiteral("let x = 1"));
        QCOMPARE(s->console(), QStringLiteral("Press Run (Ctrl+Return) to check your code."));
    }

    // The screen publishes Run and Reset while it is there, and its code is
    // saved from the moment it opens; without a runner Run says why instead.
    void publishesAndSaves()
    {
        {
            auto s = screen({lesson(1, 0, false)});
            QVERIFY(m_actions.hasRun() && m_actions.hasReset());
            QCOMPARE(s->store.saved().code.value(QStringLiteral("code")), QStringLiteral("let x = 1"));
            m_actions.run();
            QCOMPARE(s->console(), QStringLiteral("Still looking for the Swift compiler. Try again in a moment."));
            s->model.setRunnerState(RunnerState::unavailable(QStringLiteral("No Swift here.")));
            m_actions.run();
            QCOMPARE(s->console(), QStringLiteral("No Swift here."));
            QVERIFY(!s->view.isRunning());
            s->model.setRunner(s->runner);
            m_actions.run();
            QCOMPARE(s->runner->codes.size(), 1);
            s->runner->finish(result({false}));
        }
        QVERIFY(!m_actions.hasRun());
    }
};

QTEST_MAIN(TestCodeLessonView)
#include "tst_codelessonview.moc"
