#include "text/markdownlabel.h"
#include "theme/theme.h"

#include <QAbstractTextDocumentLayout>
#include <QAccessible>
#include <QApplication>
#include <QClipboard>
#include <QDesktopServices>
#include <QGlyphRun>
#include <QRawFont>
#include <QSignalSpy>
#include <QTest>
#include <QTextBlock>
#include <QTextDocument>
#include <QTextLayout>
#include <QVBoxLayout>

using namespace Kestrun;

namespace {

// The point in the middle of a character of the label, as drawn.
QPoint pointOf(const MarkdownLabel &label, int position)
{
    const QTextBlock block = label.document()->findBlock(position);
    const QTextLine line = block.layout()->lineForTextPosition(position - block.position());
    const qreal x = (line.cursorToX(position - block.position()) + line.cursorToX(position - block.position() + 1)) / 2;
    return (block.layout()->position() + QPointF(x, line.y() + line.height() / 2)).toPoint()
        + label.contentsRect().topLeft();
}

QRawFont fontAt(const MarkdownLabel &label, int position)
{
    const QTextBlock block = label.document()->findBlock(position);
    return block.layout()->glyphRuns(position - block.position(), 1).first().rawFont();
}

QColor colourAt(const MarkdownLabel &label, int position)
{
    QTextCursor cursor(const_cast<QTextDocument *>(label.document()));
    cursor.setPosition(position + 1);
    const QTextCharFormat format = cursor.charFormat();
    return format.hasProperty(QTextFormat::ForegroundBrush) ? format.foreground().color() : label.color();
}

} // namespace

class UrlCatcher : public QObject {
    Q_OBJECT
public:
    QList<QUrl> opened;
public Q_SLOTS:
    void open(const QUrl &url) { opened.append(url); }
};

class TestMarkdownLabel : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // The marks are gone and each run is drawn in its style.
    void drawsStyles()
    {
        MarkdownLabel label("Use `let`, **not** *var*, ~~never~~ [this](https://swift.org).");
        label.resize(600, 100);
        QCOMPARE(label.text(), "Use let, not var, never this.");
        QAccessibleInterface *reader = QAccessible::queryAccessibleInterface(&label);
        QCOMPARE(reader->role(), QAccessible::StaticText);
        QCOMPARE(reader->text(QAccessible::Name), label.text());
        const QString text = label.text();
        const QRawFont plain = fontAt(label, 0);
        QVERIFY(fontAt(label, int(text.indexOf("let"))).familyName() != plain.familyName());
        QVERIFY(fontAt(label, int(text.indexOf("not"))).weight() >= QFont::Bold);
        QVERIFY(fontAt(label, int(text.indexOf("var"))).style() != QFont::StyleNormal);
        QCOMPARE(colourAt(label, int(text.indexOf("this"))), Theme::vmSea());
        QCOMPARE(colourAt(label, 0), Theme::label(Theme::Level::primary, &label));
        label.setColor(Theme::Level::secondary);
        QCOMPARE(colourAt(label, 0), Theme::label(Theme::Level::secondary, &label));
        QCOMPARE(colourAt(label, int(text.indexOf("this"))), Theme::vmSea());
    }

    // At every width the lines fit, nothing is cut, and the label is exactly
    // as high as its lines, in a layout too.
    void wrapsAtEveryWidth_data()
    {
        QTest::addColumn<int>("width");
        QTest::addColumn<double>("spacing");
        for (const int width : {40, 90, 250, 600, 2000}) {
            QTest::addRow("%d wide", width) << width << 0.0;
            QTest::addRow("%d wide, spaced lines", width) << width << 3.0;
        }
    }

    void wrapsAtEveryWidth()
    {
        QFETCH(int, width);
        QFETCH(double, spacing);
        QWidget window;
        auto *layout = new QVBoxLayout(&window);
        layout->setContentsMargins(0, 0, 0, 0);
        auto *label = new MarkdownLabel(
            "A `veryLongIdentifierThatCannotBreakAnywhereNaturally` and **words**\nthat wrap.", Theme::TextStyle::body);
        label->setLineSpacing(spacing);
        layout->addWidget(label);
        layout->addStretch();
        window.resize(width, 1000);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));

        QCOMPARE(label->width(), width);
        QCOMPARE(label->height(), label->heightForWidth(width));
        qreal bottom = 0;
        int lines = 0;
        for (QTextBlock block = label->document()->begin(); block.isValid(); block = block.next()) {
            const QTextLayout *text = block.layout();
            for (int i = 0; i < text->lineCount(); ++i) {
                QVERIFY(text->lineAt(i).naturalTextWidth() <= width + 0.5);
                bottom = text->position().y() + text->lineAt(i).y() + text->lineAt(i).height();
                ++lines;
            }
        }
        QVERIFY(lines >= 2);
        QVERIFY(qAbs(label->height() - bottom) < 1);
        if (width >= 2000)
            QCOMPARE(lines, 2);
    }

    // Selection with the mouse and the keyboard, and copying it.
    void selectsAndCopies()
    {
        MarkdownLabel label("Swift is **fast** and safe.");
        label.resize(400, 40);
        label.show();
        QVERIFY(QTest::qWaitForWindowActive(&label));

        QTest::mousePress(&label, Qt::LeftButton, {}, pointOf(label, 0) - QPoint(2, 0));
        QTest::mouseMove(&label, pointOf(label, 2));
        QTest::mouseRelease(&label, Qt::LeftButton, {}, pointOf(label, 4) + QPoint(2, 0));
        QCOMPARE(label.selectedText(), "Swift");
        QVERIFY(label.hasFocus());
        const QImage image = label.grab().toImage();
        QCOMPARE(image.pixelColor(pointOf(label, 1).x(), label.contentsRect().top() + 1),
                 label.palette().color(QPalette::Highlight));

        QTest::keyClick(&label, Qt::Key_Right, Qt::ShiftModifier);
        QTest::keyClick(&label, Qt::Key_Right, Qt::ShiftModifier);
        QCOMPARE(label.selectedText(), "Swift i");
        QTest::keyClick(&label, Qt::Key_C, Qt::ControlModifier);
        QCOMPARE(QGuiApplication::clipboard()->text(), "Swift i");

        QTest::mouseDClick(&label, Qt::LeftButton, {}, pointOf(label, 10));
        QCOMPARE(label.selectedText(), "fast");
        QTest::keyClick(&label, Qt::Key_A, Qt::ControlModifier);
        QCOMPARE(label.selectedText(), "Swift is fast and safe.");
    }

    // Giving the focus to other text ends a selection.
    void oneSelectionAtATime()
    {
        QWidget window;
        auto *layout = new QVBoxLayout(&window);
        auto *first = new MarkdownLabel("First");
        auto *second = new MarkdownLabel("Second");
        layout->addWidget(first);
        layout->addWidget(second);
        window.show();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        first->setFocus();
        first->selectAll();
        QVERIFY(first->hasSelectedText());
        QTest::mouseClick(second, Qt::LeftButton, {}, QPoint(2, 2));
        QVERIFY(second->hasFocus());
        QVERIFY(!first->hasSelectedText());
    }

    // A click on a link opens it; a click beside it or a drag over it does not.
    void linksOpen()
    {
        UrlCatcher catcher;
        QDesktopServices::setUrlHandler("https", &catcher, "open");
        MarkdownLabel label("Read [the book](https://docs.swift.org/swift-book/) today.");
        label.resize(500, 40);
        label.show();
        QVERIFY(QTest::qWaitForWindowExposed(&label));
        QSignalSpy activated(&label, &MarkdownLabel::linkActivated);
        const int link = int(label.text().indexOf("book"));

        QTest::mouseClick(&label, Qt::LeftButton, {}, pointOf(label, 1));
        QCOMPARE(catcher.opened.size(), 0);
        QTest::mouseMove(&label, pointOf(label, link));
        QCOMPARE(label.cursor().shape(), Qt::PointingHandCursor);
        QTest::mouseClick(&label, Qt::LeftButton, {}, pointOf(label, link));
        QCOMPARE(catcher.opened, QList<QUrl>{QUrl("https://docs.swift.org/swift-book/")});
        QCOMPARE(activated.size(), 1);

        QTest::mousePress(&label, Qt::LeftButton, {}, pointOf(label, link));
        QTest::mouseMove(&label, pointOf(label, link + 3));
        QTest::mouseRelease(&label, Qt::LeftButton, {}, pointOf(label, link + 3));
        QCOMPARE(catcher.opened.size(), 1);
        QCOMPARE(label.selectedText(), "boo");
        QDesktopServices::unsetUrlHandler("https");
    }
};

QTEST_MAIN(TestMarkdownLabel)
#include "tst_markdownlabel.moc"
