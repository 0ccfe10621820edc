#pragma once

#include <QAbstractButton>
#include <QColor>

class QLabel;

namespace Kestrun {

class MarkdownLabel;

// One choice of a quiz question: a round mark, the answer's text, and a
// rounded backdrop that shows, once checked, whether the pick was right.
// The whole row takes the click.
class AnswerButton : public QAbstractButton {
    Q_OBJECT

public:
    AnswerButton(const QString &markdown, QWidget *parent = nullptr);

    void setPicked(bool picked);
    bool isPicked() const { return m_picked; }
    // The backdrop: invalid for the plain one.
    void setVerdictColor(const QColor &color);

    QSize sizeHint() const override;
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void updateMark();

    QLabel *m_mark;
    MarkdownLabel *m_text;
    bool m_picked = false;
    QColor m_verdict;
};

} // namespace Kestrun
