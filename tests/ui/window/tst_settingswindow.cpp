#include "window/settingswindow.h"
#include "app/appmodel.h"
#include "app/preferences.h"
#include "progress/progressstore.h"

#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QSlider>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

using namespace Kestrun;

namespace {

// Answers the confirmation that is about to open with the button of that
// text, or with its cancel button.
void answerConfirmation(const QString &button)
{
    QTimer::singleShot(0, [button] {
        for (QWidget *window : QApplication::topLevelWidgets()) {
            auto *box = qobject_cast<QMessageBox *>(window);
            if (!box || !box->isVisible())
                continue;
            for (QAbstractButton *candidate : box->buttons()) {
                if (candidate->text() == button || (button.isEmpty() && box->buttonRole(candidate) == QMessageBox::RejectRole))
                    candidate->click();
            }
        }
    });
}

} // namespace

class TestSettingsWindow : public QObject {
    Q_OBJECT

    QTemporaryDir m_dir;

private Q_SLOTS:
    void initTestCase() { QStandardPaths::setTestModeEnabled(true); }

    void codeSize()
    {
        ProgressStore store(m_dir.filePath(QStringLiteral("a.json")));
        AppModel model(Course::load(), &store);
        SettingsWindow settings(model);
        auto *slider = settings.findChild<QSlider *>(QStringLiteral("codeSize"));
        auto *label = settings.findChild<QLabel *>(QStringLiteral("codeSizeLabel"));
        QCOMPARE(slider->value(), int(Preferences::shared().editorFontSize()));
        slider->setValue(17);
        QCOMPARE(label->text(), QStringLiteral("Code size: 17 pt"));
        QCOMPARE(Preferences::shared().editorFontSize(), 17.0);
        Preferences::shared().setEditorFontSize(14);
        QCOMPARE(slider->value(), 14);
    }

    // Cancelling changes nothing; forgetting empties the store but keeps the
    // lesson on screen.
    void startAgain()
    {
        ProgressStore store(m_dir.filePath(QStringLiteral("b.json")));
        const Course course = Course::load();
        AppModel model(course, &store);
        const QList<Lesson> lessons = course.lessons();
        store.complete(lessons[0].id);
        store.setCode(QStringLiteral("print(1)"), lessons[0].id);
        model.open(lessons[1]);
        SettingsWindow settings(model);
        auto *line = settings.findChild<QLabel *>(QStringLiteral("progressLine"));
        auto *again = settings.findChild<QPushButton *>(QStringLiteral("startAgain"));
        QCOMPARE(line->text(), QStringLiteral("1 of %1 lessons done").arg(lessons.size()));

        answerConfirmation(QString());
        again->click();
        QCOMPARE(store.count(lessons), 1);

        answerConfirmation(QStringLiteral("Forget my progress and code"));
        again->click();
        QCOMPARE(store.saved(), ProgressStore::Saved{});
        QCOMPARE(line->text(), QStringLiteral("0 of %1 lessons done").arg(lessons.size()));
        QCOMPARE(model.selection(), std::optional(lessons[1].id));
    }
};

QTEST_MAIN(TestSettingsWindow)
#include "tst_settingswindow.moc"
