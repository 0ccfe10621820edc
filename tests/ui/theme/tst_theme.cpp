#include "theme/fonts.h"
#include "theme/icons.h"
#include "theme/theme.h"

#include <QApplication>
#include <QFontDatabase>
#include <QFontInfo>
#include <QImage>
#include <QPainter>
#include <QTest>

using namespace Kestrun;

namespace {

// Counts the pixels of an icon that are clearly of `color`, and those that are white.
std::pair<int, int> colourCounts(const QImage &image, const QColor &color)
{
    int matching = 0;
    int white = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QColor pixel = image.pixelColor(x, y);
            if (pixel.alpha() < 250)
                continue;
            if (qAbs(pixel.red() - color.red()) + qAbs(pixel.green() - color.green()) + qAbs(pixel.blue() - color.blue()) < 12)
                ++matching;
            else if (pixel.red() > 245 && pixel.green() > 245 && pixel.blue() > 245)
                ++white;
        }
    }
    return {matching, white};
}

} // namespace

class TestTheme : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // Every symbol of the table is bundled and draws in the colour asked for.
    void iconsDrawInTheirColour()
    {
        for (const QString &symbol : Icons::symbols()) {
            const QImage image = Icons::pixmap(symbol, Theme::vmAlert(), 44).toImage();
            QVERIFY2(!image.isNull(), qPrintable(symbol));
            QVERIFY2(colourCounts(image, Theme::vmAlert()).first > 20, qPrintable(symbol));
        }
        QVERIFY(Icons::icon(QStringLiteral("no.such.symbol"), Qt::red).isNull());
    }

    // Recolouring a badge keeps the white mark inside it.
    void badgesKeepTheirMark()
    {
        const QImage image = Icons::pixmap(QStringLiteral("checkmark.circle.fill"), Theme::vmSea(), 44).toImage();
        const auto [sea, white] = colourCounts(image, Theme::vmSea());
        QVERIFY(sea > 200);
        QVERIFY(white > 20);
    }

    void textStylesFollowTheBaseFont()
    {
        const double base = QApplication::font().pointSizeF();
        QCOMPARE(Theme::font(Theme::TextStyle::body).pointSizeF(), base);
        QVERIFY(Theme::font(Theme::TextStyle::largeTitle).pointSizeF() > base);
        // A length of one body size is as many pixels as the body text is high.
        QCOMPARE(qRound(Theme::pixels(13)), QFontInfo(Theme::font(Theme::TextStyle::body)).pixelSize());
    }

    void pixelFontRegistersOnce()
    {
        QVERIFY(Fonts::registered());
        const int families = QFontDatabase::families().size();
        QVERIFY(Fonts::registered());
        QCOMPARE(QFontDatabase::families().size(), families);
    }
};

QTEST_MAIN(TestTheme)
#include "tst_theme.moc"
