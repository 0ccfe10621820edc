#include "window/kestrunapp.h"
#include "window/mainwindow.h"

#include <QFile>
#include <QLabel>
#include <QListWidget>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace Kestrun;

class TestMainWindow : public QObject {
    Q_OBJECT

    QTemporaryDir m_dir;

private Q_SLOTS:
    // What the learner does just before quitting is on disk afterwards,
    // although the delayed write had no time to happen.
    void progressSurvivesAnImmediateQuit()
    {
        const QString file = m_dir.filePath(QStringLiteral("progress.json"));
        KestrunApp app(file);
        MainWindow window(app.model());
        window.show();
        auto *lessons = window.findChild<QListWidget *>(QStringLiteral("lessons"));
        QListWidgetItem *second = lessons->item(2);  // row 0 is a chapter heading
        const QString id = second->data(Qt::UserRole).toString();
        QVERIFY(!id.isEmpty());

        Q_EMIT lessons->itemActivated(second);
        QCOMPARE(app.model().selection(), std::optional<QString>(id));
        QVERIFY(!QFile::exists(file));
        QTimer::singleShot(0, qApp, &QCoreApplication::quit);
        QCoreApplication::exec();

        QFile saved(file);
        QVERIFY(saved.open(QIODevice::ReadOnly));
        const std::optional<ProgressStore::Saved> record = ProgressStore::decode(saved.readAll());
        QVERIFY(record);
        QCOMPARE(record->last, std::optional<QString>(id));
    }
};

QTEST_MAIN(TestMainWindow)
#include "tst_mainwindow.moc"
