#include "texts/texts.h"

#include <QTest>

using namespace Kestrun;

class TestTexts : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // Every name has a sentence on this platform, and no placeholder is left
    // (the machine's name, filled in, is checked where the texts are used).
    void everyTextIsWritten()
    {
        for (int i = 0; i <= int(Text::forgetProgress); ++i) {
            const QString sentence = Texts::get(Text(i));
            QVERIFY2(!sentence.isEmpty(), qPrintable(QString::number(i)));
            QVERIFY2(!sentence.contains(u'{'), qPrintable(sentence));
        }
    }
};

QTEST_APPLESS_MAIN(TestTexts)
#include "tst_texts.moc"
