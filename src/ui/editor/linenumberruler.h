#pragma once

#include <QColor>
#include <QList>
#include <QRectF>
#include <QWidget>

namespace Kestrun {

class CodeEditor;

// The line numbers beside the code editor: one number per line of code (a
// wrapped line keeps one number, on its first row), on the first baseline of
// the line, right-aligned 8 points inside the ruler's edge, in a weak colour
// or in the alert colour on a line with a compiler error.
class LineNumberRuler : public QWidget {
    Q_OBJECT

public:
    struct Label {
        int number = 0;
        QRectF rect;  // in ruler coordinates
        QColor color;
    };

    explicit LineNumberRuler(CodeEditor *editor);

    // The numbers as they are drawn now: the lines in view, top to bottom.
    QList<Label> labels() const;
    QFont labelFont() const;

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    CodeEditor *m_editor;
};

} // namespace Kestrun
