#include "screens/homeview.h"
#include "app/appmodel.h"
#include "progress/progressstore.h"
#include "theme/fonts.h"

#include <QFontInfo>
#include <QLabel>
#include <QProcess>
#include <QProgressBar>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>

using namespace Kestrun;

class TestHomeView : public QObject {
    Q_OBJECT

    QTemporaryDir m_dir;
    Course m_course;

    static bool isCopy() { return qEnvironmentVariableIsSet("HOMEVIEW_COPY"); }

private Q_SLOTS:
    void initTestCase()
    {
        if (!isCopy())
            m_course = Course::load();
    }

    // The progress label, the bar and the way in, before, during and after the course.
    void progress_data()
    {
        QTest::addColumn<int>("done");  // lessons done from the start; -1: all but the third
        QTest::addColumn<QString>("label");
        QTest::addColumn<QString>("button");  // empty: the finished label instead
        const QList<Lesson> lessons = Course::load().lessons();
        const QString total = QString::number(lessons.size());
        QTest::newRow("none") << 0 << total + " lessons in nine chapters" << "Start the course";
        QTest::newRow("a gap") << -1 << QString::number(lessons.size() - 1) + " of " + total + " lessons done"
                               << "Continue: " + lessons[2].title;
        QTest::newRow("all") << int(lessons.size()) << total + " of " + total + " lessons done" << QString();
    }

    void progress()
    {
        QFETCH(int, done);
        QFETCH(QString, label);
        QFETCH(QString, button);
        ProgressStore store(m_dir.filePath(QStringLiteral("%1.json").arg(QTest::currentDataTag())));
        AppModel model(m_course, &store);
        HomeView home(model);
        home.show();
        const QList<Lesson> lessons = m_course.lessons();
        for (int i = 0; i < lessons.size(); ++i) {
            if (done < 0 ? i != 2 : i < done)
                store.complete(lessons[i].id);
        }
        QCOMPARE(home.findChild<QLabel *>(QStringLiteral("progressLabel"))->text(), label);
        const auto *bar = home.findChild<QProgressBar *>(QStringLiteral("courseProgress"));
        QCOMPARE(bar->value(), int(store.count(lessons)));
        QCOMPARE(bar->maximum(), int(lessons.size()));
        auto *start = home.findChild<QPushButton *>(QStringLiteral("startButton"));
        QCOMPARE(start->isVisible(), !button.isEmpty());
        QCOMPARE(home.findChild<QWidget *>(QStringLiteral("courseFinished"))->isVisible(), button.isEmpty());
        if (button.isEmpty())
            return;
        QCOMPARE(start->text(), button);
        start->click();
        const std::optional<Lesson> next = model.nextLesson();
        QCOMPARE(model.selection(), std::optional(next->id));
        QCOMPARE(store.saved().last, std::optional(next->id));
    }

    // Without the font file the title is drawn in the bold monospaced system
    // font at the same size. The font is registered once per process, so a
    // copy of this test runs where no resources are found.
    void titleWithoutThePixelFont()
    {
        if (isCopy()) {
            QVERIFY(!Fonts::registered());
            ProgressStore store(m_dir.filePath(QStringLiteral("f.json")));
            AppModel model(Course{}, &store);
            HomeView home(model);
            const QFont font = home.findChild<QLabel *>(QStringLiteral("homeTitle"))->font();
            QVERIFY(font.bold());
            QVERIFY(QFontInfo(font).fixedPitch());
            QCOMPARE(font.pointSizeF(), Fonts::pixel(56).pointSizeF());
            return;
        }
        QVERIFY(Fonts::registered());
        QCOMPARE(QFontInfo(Fonts::pixel(56)).family(), QStringLiteral("Velmora Pixel"));
        const QString copy = m_dir.filePath(QStringLiteral("alone/tst_homeview"));
        QVERIFY(QDir().mkpath(QFileInfo(copy).path()));
        QVERIFY(QFile::copy(QCoreApplication::applicationFilePath(), copy));
        QProcess child;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("HOMEVIEW_COPY"), QStringLiteral("1"));
        child.setProcessEnvironment(environment);
        child.setProcessChannelMode(QProcess::MergedChannels);
        child.start(copy, {QStringLiteral("titleWithoutThePixelFont")});
        QVERIFY(child.waitForFinished(30000));
        QVERIFY2(child.exitCode() == 0, child.readAllStandardOutput().constData());
    }
};

QTEST_MAIN(TestHomeView)
#include "tst_homeview.moc"
