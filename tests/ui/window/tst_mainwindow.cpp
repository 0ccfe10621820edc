#include "window/coursesidebar.h"
#include "window/kestrunapp.h"
#include "window/mainwindow.h"
#include "window/noticebanner.h"
#include "app/courseoutline.h"
#include "screens/homeview.h"
#include "screens/publishedactions.h"

#include <QAction>
#include <QFile>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

using namespace Kestrun;

namespace {

QAction *action(const QWidget &window, const char *name)
{
    return window.findChild<QAction *>(QLatin1String(name));
}

} // namespace

class TestMainWindow : public QObject {
    Q_OBJECT

    QTemporaryDir m_dir;
    int m_files = 0;

    QString freshFile() { return m_dir.filePath(QStringLiteral("progress%1.json").arg(++m_files)); }

private Q_SLOTS:
    void initTestCase() { QStandardPaths::setTestModeEnabled(true); }

    // What the learner does just before quitting is on disk afterwards,
    // although the delayed write had no time to happen.
    void progressSurvivesAnImmediateQuit()
    {
        const QString file = freshFile();
        KestrunApp app(file);
        MainWindow window(app.model());
        window.show();
        window.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        QTest::keyClick(&window, Qt::Key_BracketRight, Qt::ControlModifier);  // Next Lesson
        const std::optional<QString> opened = app.model().selection();
        QVERIFY(opened);
        QVERIFY(!QFile::exists(file));
        QTimer::singleShot(0, qApp, &QCoreApplication::quit);
        QCoreApplication::exec();

        QFile saved(file);
        QVERIFY(saved.open(QIODevice::ReadOnly));
        const std::optional<ProgressStore::Saved> record = ProgressStore::decode(saved.readAll());
        QVERIFY(record);
        QCOMPARE(record->last, opened);
    }

    // The home screen has no previous lesson; the first lesson neither; Next
    // always works, and a lesson gets its own screen in place of the home.
    void navigation()
    {
        KestrunApp app(freshFile());
        MainWindow window(app.model());
        window.show();
        window.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        QAction *previous = action(window, "previousLesson");
        QAction *next = action(window, "nextLesson");
        QVERIFY(qobject_cast<HomeView *>(window.detail()));
        QVERIFY(!previous->isEnabled());
        QVERIFY(next->isEnabled());

        next->trigger();
        const QList<Lesson> lessons = app.model().course().lessons();
        QCOMPARE(app.model().selection(), std::optional(lessons[0].id));
        QVERIFY(!qobject_cast<HomeView *>(window.detail()));
        QVERIFY(!previous->isEnabled());
        next->trigger();
        QVERIFY(previous->isEnabled());

        QTest::keyClick(&window, Qt::Key_H, Qt::ControlModifier | Qt::ShiftModifier);  // Course Home
        QVERIFY(!app.model().selection());
        QVERIFY(qobject_cast<HomeView *>(window.detail()));
        QCOMPARE(app.model().progress()->saved().last, std::optional(lessons[1].id));
    }

    // Run and Reset Code follow what the screen on show publishes.
    void menuEnablement()
    {
        KestrunApp app(freshFile());
        MainWindow window(app.model());
        QAction *run = action(window, "menuRun");
        QAction *reset = action(window, "menuResetCode");
        QVERIFY(!run->isEnabled() && !reset->isEnabled());

        int runs = 0;
        auto *screen = new QObject;
        window.actions().publish(screen, [&runs] { ++runs; }, [] {});
        QVERIFY(run->isEnabled() && reset->isEnabled());
        run->trigger();
        QCOMPARE(runs, 1);
        delete screen;
        QVERIFY(!run->isEnabled() && !reset->isEnabled());
        run->trigger();
        QCOMPARE(runs, 1);
    }

    // The banner floats over the lesson; a second notice replaces the text in
    // place; the banner leaves when the model clears the notice (its timing
    // is the model's own test).
    void noticeBanner()
    {
        KestrunApp app(freshFile());
        MainWindow window(app.model());
        window.show();
        auto *banner = window.findChild<NoticeBanner *>();
        QVERIFY(banner && !banner->isVisible());
        const int detailWidth = window.detail()->width();
        app.model().say(QStringLiteral("Lesson done"));
        QVERIFY(banner->isVisible());
        QTest::qWait(50);
        QCOMPARE(window.detail()->width(), detailWidth);  // it floats; it takes no room
        QTest::qWait(1500);
        const QPoint placed = banner->pos();
        app.model().say(QStringLiteral("Have another look at the ones marked."));
        QCOMPARE(banner->text(), QStringLiteral("Have another look at the ones marked."));
        QCOMPARE(banner->y(), placed.y());
        QTRY_VERIFY_WITH_TIMEOUT(!app.model().notice(), 3500);
        QTRY_VERIFY_WITH_TIMEOUT(!banner->isVisible(), 1000);
    }
};

QTEST_MAIN(TestMainWindow)
#include "tst_mainwindow.moc"
