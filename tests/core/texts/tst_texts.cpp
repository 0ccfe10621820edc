#include "texts/texts.h"

#include <QTest>

using namespace Kestrun;

class TestTexts : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // Every name has a sentence on this platform, and no placeholder is left.
    void everyTextIsWritten()
    {
        for (int i = 0; i <= int(Text::forgetProgress); ++i) {
            const QString sentence = Texts::get(Text(i));
            QVERIFY2(!sentence.isEmpty(), qPrintable(QString::number(i)));
            QVERIFY2(!sentence.contains(u'{'), qPrintable(sentence));
        }
    }

    void machineName()
    {
#ifdef Q_OS_MACOS
        QCOMPARE(Texts::get(Text::onYourMachine), QStringLiteral("On your Mac"));
        QCOMPARE(Texts::get(Text::compilerReady).arg(QStringLiteral("6.2")),
                 QStringLiteral("Swift 6.2 on this Mac, ready to run your code."));
#else
        QCOMPARE(Texts::get(Text::onYourMachine), QStringLiteral("On your computer"));
        QCOMPARE(Texts::get(Text::compilerReady).arg(QStringLiteral("6.2")),
                 QStringLiteral("Swift 6.2 on this computer, ready to run your code."));
#endif
    }
};

QTEST_APPLESS_MAIN(TestTexts)
#include "tst_texts.moc"
