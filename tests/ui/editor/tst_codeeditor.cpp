#include "app/preferences.h"
#include "editor/codeeditor.h"
#include "editor/linenumberruler.h"
#include "highlight/highlighter.h"
#include "theme/theme.h"

#include <QApplication>
#include <QFontInfo>
#include <QGlyphRun>
#include <QRawFont>
#include <QScrollBar>
#include <QSettings>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTest>
#include <QTextBlock>
#include <QTextLayout>

using namespace Kestrun;

namespace {

// The colour the editor draws a character in: the layout's format over it,
// or the editor's text colour.
QColor colourAt(const CodeEditor &editor, int position)
{
    const QTextBlock block = editor.document()->findBlock(position);
    const int inBlock = position - block.position();
    for (const QTextLayout::FormatRange &range : block.layout()->formats()) {
        if (inBlock >= range.start && inBlock < range.start + range.length && range.format.hasProperty(QTextFormat::ForegroundBrush))
            return range.format.foreground().color();
    }
    return editor.palette().color(QPalette::Text);
}

// Every character is in the colour the highlighter gives it over the whole text.
void verifyColours(const CodeEditor &editor)
{
    const QString text = editor.document()->toPlainText();
    for (const Highlighter::Span &span : Highlighter::tokens(text)) {
        const std::optional<Rgb> rgb = Highlighter::color(span.kind);
        const QColor expected = rgb ? QColor(rgb->red, rgb->green, rgb->blue) : Theme::editorText();
        for (qsizetype i = span.start; i < span.start + span.length; ++i) {
            if (text[i] == u'\n')
                continue;
            QVERIFY2(colourAt(editor, int(i)) == expected,
                     qPrintable(QStringLiteral("at %1 of %2").arg(i).arg(text.left(i + 1).right(20))));
        }
    }
}

// The caret placed where "|" is in the text, or a selection over "«...»";
// returns the text without the marks.
QString setCodeWithCaret(CodeEditor &editor, QString text)
{
    const qsizetype open = text.indexOf(u'«');
    const qsizetype caret = open >= 0 ? open : text.indexOf(u'|');
    text.remove(u'|').remove(u'«');
    const qsizetype end = open >= 0 ? text.indexOf(u'»') : caret;
    text.remove(u'»');
    editor.setCode(text);
    QTextCursor cursor = editor.textCursor();
    cursor.setPosition(int(caret));
    cursor.setPosition(int(end), QTextCursor::KeepAnchor);
    editor.setTextCursor(cursor);
    return text;
}

int countPixels(const QImage &image, const QColor &color)
{
    int count = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QColor pixel = image.pixelColor(x, y);
            count += qAbs(pixel.red() - color.red()) + qAbs(pixel.green() - color.green()) + qAbs(pixel.blue() - color.blue()) < 40;
        }
    }
    return count;
}

} // namespace

class TestCodeEditor : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        QSettings().clear();
        QApplication::setCursorFlashTime(0); // a caret that does not blink
    }

    // Return, Tab and a closing brace, each from a caret ("|") or a selection
    // ("«...»"), and one undo step back to the text before. Code set from
    // outside replaces what was there, coloured, without being an edit.
    void typingAids_data()
    {
        QTest::addColumn<QString>("before");
        QTest::addColumn<int>("key");
        QTest::addColumn<QString>("after");
        const int ret = Qt::Key_Return;
        const int brace = Qt::Key_BraceRight;
        const int tab = Qt::Key_Tab;
        QTest::newRow("return after a brace") << "    if ok {|" << ret << "    if ok {\n        |";
        QTest::newRow("return after a parenthesis") << "print(|" << ret << "print(\n    |";
        QTest::newRow("return after a bracket and blanks") << "let a = [  |" << ret << "let a = [  \n    |";
        QTest::newRow("return keeps a tab") << "    \tx|" << ret << "    \tx\n    \t|";
        QTest::newRow("return mid-line after a brace") << "    f { |g }" << ret << "    f { \n        |g }";
        QTest::newRow("return mid-line") << "    let| a = 1" << ret << "    let\n    | a = 1";
        QTest::newRow("return over a selection") << "a«bc»d" << ret << "a\n|d";
        QTest::newRow("brace on 8 spaces") << "x {\n        |" << brace << "x {\n    }|";
        QTest::newRow("brace on 4 spaces") << "    |" << brace << "}|";
        QTest::newRow("brace on 3 spaces") << "   |" << brace << "   }|";
        QTest::newRow("brace with a tab among the blanks") << "  \t  |" << brace << "  \t  }|";
        QTest::newRow("brace after text") << "    x|" << brace << "    x}|";
        QTest::newRow("brace before text") << "        |y" << brace << "    }|y";
        QTest::newRow("tab") << "a|b" << tab << "a    |b";
        QTest::newRow("tab over a selection") << "a«bc»d" << tab << "a    |d";
        QTest::newRow("tab over lines") << "«a\nb»" << tab << "    |";
    }

    void typingAids()
    {
        QFETCH(QString, before);
        QFETCH(int, key);
        QFETCH(QString, after);
        CodeEditor editor;
        QSignalSpy edited(&editor, &CodeEditor::codeEdited);
        editor.setCode("let replaced = 1");
        const QString text = setCodeWithCaret(editor, before);
        QVERIFY(!editor.document()->isModified());
        verifyColours(editor);
        QTest::keyClick(&editor, Qt::Key(key), Qt::NoModifier);

        QString expected = after;
        const int caret = int(expected.indexOf(u'|'));
        expected.remove(caret, 1);
        QCOMPARE(editor.code(), expected);
        QCOMPARE(editor.textCursor().position(), caret);
        QCOMPARE(edited.size(), 1);
        QCOMPARE(edited.first().first().toString(), expected);
        editor.undo();
        QCOMPARE(editor.code(), text);
    }

    // Typing a function step by step, then undoing: each step comes back
    // exactly, every change is reported, and colouring adds no undo step.
    void undoAfterTyping()
    {
        CodeEditor editor;
        QSignalSpy edited(&editor, &CodeEditor::codeEdited);
        QStringList states{QString()};
        const auto step = [&](const auto &type) {
            type();
            states.append(editor.code());
        };
        step([&] { QTest::keyClicks(&editor, "func f() {"); });
        step([&] { QTest::keyClick(&editor, Qt::Key_Return); });
        step([&] { QTest::keyClicks(&editor, "return 1"); });
        step([&] { QTest::keyClick(&editor, Qt::Key_Return); });
        step([&] { QTest::keyClick(&editor, Qt::Key_BraceRight); });
        QCOMPARE(editor.code(), "func f() {\n    return 1\n}");
        QCOMPARE(edited.last().first().toString(), editor.code());
        verifyColours(editor);

        editor.setFontSize(19); // colours again
        for (qsizetype i = states.size() - 2; i >= 0; --i) {
            QVERIFY(editor.document()->isUndoAvailable());
            editor.undo();
            QCOMPARE(editor.code(), states[i]);
        }
        QVERIFY(!editor.document()->isUndoAvailable());
        QVERIFY(!editor.document()->isModified());
    }

    // Colours follow the whole text: comments and strings over several lines,
    // opened and closed by edits anywhere.
    void coloursFollowEdits_data()
    {
        QTest::addColumn<QString>("code");
        QTest::addColumn<QString>("insert"); // at the caret, "|" in code
        QTest::newRow("open a comment") << "let a = 1\n|let b = 2\nvar c = \"s\"\nfunc f() {}" << "/*";
        QTest::newRow("close a comment") << "/* a\nlet b = 2\n|let c = 3\nfunc f() {}" << "*/";
        QTest::newRow("open a long string") << "|let a = 1\nlet b = 2 // x" << "\"\"\"";
        QTest::newRow("string in a comment") << "// |\nlet a = 1" << "\"\"\"";
        QTest::newRow("close a long string") << "let s = \"\"\"\nlet a\n|\nfunc g() {}" << "\"\"\"";
        QTest::newRow("type into a keyword") << "le| a = 1" << "t";
    }

    void coloursFollowEdits()
    {
        QFETCH(QString, code);
        QFETCH(QString, insert);
        CodeEditor editor;
        setCodeWithCaret(editor, code);
        verifyColours(editor);
        QTest::keyClicks(&editor, insert);
        verifyColours(editor);
        editor.undo();
        verifyColours(editor);
    }

    // A change of the setting reaches the editor at once: the code is drawn
    // at the new size, still coloured, keywords semibold, adding no undo step.
    void fontSizeFollowsTheSetting()
    {
        CodeEditor editor;
        editor.setCode("let a = 1");
        editor.resize(400, 300);
        const auto drawnSize = [&] {
            return editor.document()->firstBlock().layout()->glyphRuns(0, 3).first().rawFont().pixelSize();
        };
        const qreal before = drawnSize();
        Preferences::shared().setEditorFontSize(22);
        QCOMPARE(drawnSize(), QFontInfo(Theme::monospace(22)).pixelSize());
        QVERIFY(drawnSize() > before);
        QVERIFY(editor.document()->firstBlock().layout()->glyphRuns(0, 3).first().rawFont().weight() >= QFont::DemiBold);
        verifyColours(editor);
        QVERIFY(!editor.document()->isUndoAvailable());
        Preferences::shared().setEditorFontSize(Preferences::defaultEditorFontSize);
    }

    // One number per line, the empty last line included, on the line's
    // baseline and right-aligned inside the ruler.
    void rulerNumbers_data()
    {
        QTest::addColumn<QString>("code");
        QTest::addColumn<QList<int>>("numbers");
        QTest::newRow("empty") << "" << QList<int>{1};
        QTest::newRow("ending in a newline") << "let a = 1\n" << QList<int>{1, 2};
        QTest::newRow("three lines") << "a\nb\nc" << QList<int>{1, 2, 3};
        QTest::newRow("a wrapped line") << QString("let long = 1 + ").repeated(30) + "\nb" << QList<int>{1, 2};
    }

    void rulerNumbers()
    {
        QFETCH(QString, code);
        QFETCH(QList<int>, numbers);
        CodeEditor editor;
        editor.resize(400, 300);
        editor.setCode(code);
        editor.show();
        QVERIFY(QTest::qWaitForWindowExposed(&editor));

        const QList<LineNumberRuler::Label> labels = editor.ruler()->labels();
        QCOMPARE(labels.size(), numbers.size());
        const QFontMetricsF metrics(editor.ruler()->labelFont());
        const qreal viewportTop = editor.viewport()->geometry().top() - editor.ruler()->geometry().top();
        for (int i = 0; i < labels.size(); ++i) {
            QCOMPARE(labels[i].number, numbers[i]);
            QCOMPARE(labels[i].rect.right(), labels[0].rect.right());
            QTextCursor line(editor.document()->findBlockByNumber(i));
            const qreal codeBaseline = editor.cursorRect(line).top() + line.block().layout()->lineAt(0).ascent();
            QCOMPARE(labels[i].rect.top() + metrics.ascent(), viewportTop + codeBaseline);
        }
        QVERIFY(labels[0].rect.left() > 0 && labels[0].rect.right() < editor.ruler()->width());
    }

    // An error line draws nothing while scrolled away and its number in the
    // alert colour when it is back, until the errors are cleared.
    void errorLineScrolledOutAndBack()
    {
        CodeEditor editor;
        QStringList lines;
        for (int i = 1; i <= 150; ++i)
            lines.append(QStringLiteral("let value%1 = %1").arg(i));
        editor.setCode(lines.join(u'\n'));
        editor.resize(400, 200);
        editor.show();
        QVERIFY(QTest::qWaitForWindowExposed(&editor));
        editor.setErrorLines({2});

        const auto alertShown = [&] {
            return countPixels(editor.ruler()->grab().toImage(), Theme::vmAlert()) > 0;
        };
        const auto labelOf = [&](int number) -> std::optional<LineNumberRuler::Label> {
            for (const LineNumberRuler::Label &label : editor.ruler()->labels()) {
                if (label.number == number)
                    return label;
            }
            return std::nullopt;
        };
        QCOMPARE(labelOf(2)->color, Theme::vmAlert());
        QCOMPARE(labelOf(3)->color.rgb(), Theme::editorText().rgb());
        QVERIFY(alertShown());

        editor.verticalScrollBar()->setValue(editor.verticalScrollBar()->maximum());
        QVERIFY(!labelOf(2));
        QVERIFY(labelOf(150));
        QVERIFY(!alertShown());

        editor.verticalScrollBar()->setValue(0);
        QCOMPARE(labelOf(2)->color, Theme::vmAlert());
        QVERIFY(alertShown());

        editor.setErrorLines({});
        QCoreApplication::processEvents();
        QVERIFY(!alertShown());
    }
};

QTEST_MAIN(TestCodeEditor)
#include "tst_codeeditor.moc"
