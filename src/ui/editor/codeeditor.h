#pragma once

#include <QPlainTextEdit>
#include <QSet>

namespace Kestrun {

class LineNumberRuler;
class SwiftHighlighter;

// The learner's Swift editor: dark, soft-wrapping, with line numbers beside
// it, colours from the highlighter after every change, compiler errors
// marked on their line numbers, and three typing aids: Return keeps the
// line's indentation (and adds a step after an opening bracket), Tab inserts
// four spaces, and a closing brace on a blank indented line steps back. Each
// aid is one undo step.
//
// The code size follows the learner's setting (Preferences) by itself;
// setFontSize() overrides it until the setting next changes.
//
//   auto *editor = new CodeEditor(this);
//   editor->setCode(progress.code(lesson.id).value_or(*lesson.seed));
//   connect(editor, &CodeEditor::codeEdited, this, [&](const QString &code) { progress.setCode(code, lesson.id); });
class CodeEditor : public QPlainTextEdit {
    Q_OBJECT

public:
    explicit CodeEditor(QWidget *parent = nullptr);

    // Replaces the code from outside (another lesson, Reset) and colours it;
    // not reported as an edit. The same code again changes nothing.
    void setCode(const QString &code);
    QString code() const { return m_code; }

    // The 1-based lines of the code that carry a compiler error.
    void setErrorLines(const QSet<int> &lines);
    QSet<int> errorLines() const { return m_errorLines; }

    // The code size in points, as the setting stores it.
    void setFontSize(double points);
    double fontSize() const { return m_fontSize; }

    LineNumberRuler *ruler() const { return m_ruler; }

Q_SIGNALS:
    // Every change the learner makes (typing, pasting, undo), with the whole code.
    void codeEdited(const QString &code);

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    friend class LineNumberRuler;

    void insertNewline();
    void insertClosingBrace();
    void insertAsOneStep(const QString &text);
    void documentChanged();

    LineNumberRuler *m_ruler;
    SwiftHighlighter *m_highlighter;
    QString m_code;
    QSet<int> m_errorLines;
    double m_fontSize = 0;
    bool m_settingCode = false;
};

} // namespace Kestrun
