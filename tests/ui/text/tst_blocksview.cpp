#include "app/preferences.h"
#include "text/blocksview.h"
#include "text/codeblock.h"
#include "text/divider.h"
#include "text/listblock.h"
#include "text/listmarker.h"
#include "text/markdownlabel.h"
#include "text/noteview.h"
#include "text/quoteblock.h"
#include "text/tableview.h"
#include "theme/theme.h"

#include <QApplication>
#include <QFontInfo>
#include <QScrollArea>
#include <QScrollBar>
#include <QSettings>
#include <QStandardPaths>
#include <QTest>
#include <QTextBlock>
#include <QTextDocument>
#include <QTextLayout>

using namespace Kestrun;

namespace {

int px(double points)
{
    return qRound(Theme::pixels(points));
}

QList<Block> lesson()
{
    return {
        Block::heading(1, "Loops"),
        Block::paragraph("A `for` loop repeats its body once for every value of a range, which is **useful**."),
        Block::codeListing("swift", "for i in 1...3 {\n    print(i)\n}"),
        Block::list(false, {"one", "two items that are long enough to wrap when the page is narrow"}),
        Block::note("tip", {Block::paragraph("Ranges can be empty.")}),
        Block::quote({Block::paragraph("Quoted words.")}),
        Block::table({"Range", "Count"}, {{"`1...3`", "3"}}),
        Block::rule(),
        Block::heading(3, "Done"),
    };
}

} // namespace

class TestBlocksView : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        QSettings().clear();
    }

    // Each kind has its widget; the blocks are stacked in order,
    // 14 points apart, without overlap or blank space, at every width, with
    // the scroll area's spare height below them.
    void stacksEveryKind_data()
    {
        QTest::addColumn<int>("width");
        for (const int width : {160, 420, 900})
            QTest::addRow("%d wide", width) << width;
    }

    void stacksEveryKind()
    {
        QFETCH(int, width);
        QScrollArea area;
        area.setWidgetResizable(true);
        area.setFrameShape(QFrame::NoFrame);
        auto *view = new BlocksView(lesson());
        area.setWidget(view);
        area.setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
        area.resize(width + area.verticalScrollBar()->sizeHint().width(), 3000);
        area.show();
        QVERIFY(QTest::qWaitForWindowExposed(&area));
        QCOMPARE(view->width(), width);

        const QList<const QMetaObject *> kinds{
            &MarkdownLabel::staticMetaObject, &MarkdownLabel::staticMetaObject, &CodeBlock::staticMetaObject,
            &ListBlock::staticMetaObject, &NoteView::staticMetaObject, &QuoteBlock::staticMetaObject,
            &TableView::staticMetaObject, &Divider::staticMetaObject, &MarkdownLabel::staticMetaObject};
        for (int i = 0; i < kinds.size(); ++i)
            QVERIFY2(kinds[i]->cast(view->blockWidget(i)), kinds[i]->className());

        for (int i = 0; i < view->blocks().size(); ++i) {
            const QWidget *block = view->blockWidget(i);
            QVERIFY(block->geometry().left() >= 0 && block->geometry().right() < width);
            if (block->hasHeightForWidth())
                QCOMPARE(block->height(), block->heightForWidth(block->width()));
            if (i > 0)
                QCOMPARE(block->y(), view->blockWidget(i - 1)->geometry().bottom() + 1 + px(14));
        }
        // Every piece of wrapped text is as high as its lines, so none is cut.
        for (const SelectableText *text : view->findChildren<SelectableText *>()) {
            if (text->wrapping())
                QCOMPARE(text->height(), text->heightForWidth(text->width()));
        }
        QCOMPARE(view->blockWidget(8)->geometry().bottom() + 1, view->heightForWidth(width));
    }

    // A head without rows shows the head and its line; short rows leave cells empty.
    void tables()
    {
        TableView empty({"Name", "Type"}, {});
        empty.resize(empty.sizeHint());
        QVERIFY(!empty.cell(0, 0));
        empty.show();
        QVERIFY(QTest::qWaitForWindowExposed(&empty));
        QVERIFY(empty.divider()->isVisible());
        QCOMPARE(empty.divider()->width(), empty.headCell(1)->geometry().right() - empty.headCell(0)->x() + 1);
        QVERIFY(empty.divider()->y() > empty.headCell(0)->geometry().bottom());

        TableView shortRows({"A", "B", "C"}, {{"1", "2", "3"}, {"only"}});
        QCOMPARE(shortRows.columnCount(), 3);
        QCOMPARE(shortRows.cell(1, 0)->text(), "only");
        QVERIFY(!shortRows.cell(1, 1));
        QVERIFY(!shortRows.cell(1, 2));
    }

    // A listing wider than its place keeps its lines and scrolls sideways,
    // by wheel and by keyboard, with no bar in view.
    void wideListingScrolls()
    {
        QScrollArea lesson;
        auto *page = new BlocksView({Block::codeListing("swift", "let line = \"" + QString("x").repeated(200) + "\"\nprint(line)"),
                                     Block::paragraph(QString("Words. ").repeated(400))});
        lesson.setWidget(page);
        lesson.setWidgetResizable(true);
        lesson.resize(300, 200);
        lesson.show();
        QVERIFY(QTest::qWaitForWindowExposed(&lesson));
        CodeBlock &block = *qobject_cast<CodeBlock *>(page->blockWidget(0));
        QScrollBar *bar = block.scrollArea()->horizontalScrollBar();
        QVERIFY(!bar->isVisible());
        QVERIFY(!block.scrollArea()->verticalScrollBar()->isVisible());
        QCOMPARE(block.text()->document()->firstBlock().layout()->lineCount(), 1);
        QVERIFY(block.text()->width() > 300);
        QCOMPARE(block.height(), block.text()->height());

        QWheelEvent wheel(QPointF(50, 10), block.mapToGlobal(QPointF(50, 10)), QPoint(), QPoint(-120, 0), Qt::NoButton,
                          Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(block.scrollArea()->viewport(), &wheel);
        QVERIFY(block.text()->x() < 0);
        const int afterWheel = block.text()->x();
        block.text()->setFocus();
        QTest::keyClick(block.text(), Qt::Key_Right);
        QVERIFY(block.text()->x() < afterWheel);
        // Up and down belong to the lesson.
        QTest::keyClick(block.text(), Qt::Key_Down);
        QVERIFY(lesson.verticalScrollBar()->value() > 0);
    }

    // Code listings follow the code size setting at once.
    void listingFollowsCodeSize()
    {
        CodeBlock block("let a = 1");
        const int before = block.height();
        Preferences::shared().setEditorFontSize(20);
        QVERIFY(block.height() > before);
        Preferences::shared().setEditorFontSize(Preferences::defaultEditorFontSize);
        QCOMPARE(block.height(), before);
    }

};

QTEST_MAIN(TestBlocksView)
#include "tst_blocksview.moc"
