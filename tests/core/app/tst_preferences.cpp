#include "app/preferences.h"

#include <QSettings>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTest>

using namespace Kestrun;

class TestPreferences : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        QSettings().clear();
    }

    // The default, the range and whole points; only real changes are stored and announced.
    void editorFontSize()
    {
        Preferences &preferences = Preferences::shared();
        QCOMPARE(preferences.editorFontSize(), 14.0);
        QSignalSpy changed(&preferences, &Preferences::editorFontSizeChanged);
        preferences.setEditorFontSize(14.2);
        QCOMPARE(changed.size(), 0);
        preferences.setEditorFontSize(30);
        QCOMPARE(preferences.editorFontSize(), 24.0);
        preferences.setEditorFontSize(3);
        QCOMPARE(preferences.editorFontSize(), 11.0);
        preferences.setEditorFontSize(17.6);
        QCOMPARE(changed.size(), 3);
        QCOMPARE(changed.last().first().toDouble(), 18.0);
        QCOMPARE(QSettings().value(QStringLiteral("editorFontSize")).toDouble(), 18.0);
    }
};

QTEST_GUILESS_MAIN(TestPreferences)
#include "tst_preferences.moc"
