#pragma once

#include <QWidget>

class QScrollArea;

namespace Kestrun {

class SelectableText;

// A code listing: Swift coloured by the highlighter, in the system's
// monospaced font at the learner's code size (following a change of the
// setting at once), on the editor's dark background. Lines never wrap: a
// long listing scrolls sideways by wheel, trackpad, keyboard or a dragged
// selection, without a visible bar.
class CodeBlock : public QWidget {
    Q_OBJECT

public:
    explicit CodeBlock(const QString &code, QWidget *parent = nullptr);

    QString code() const { return m_code; }
    SelectableText *text() const { return m_text; }
    QScrollArea *scrollArea() const { return m_scroll; }

    // Code sizes are in points, as the setting stores them.
    void setFontSize(double points);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    QString m_code;
    QScrollArea *m_scroll;
    SelectableText *m_text;
};

} // namespace Kestrun
