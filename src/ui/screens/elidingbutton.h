#pragma once

#include <QPushButton>

namespace Kestrun {

// A push button that shortens its text with an ellipsis rather than widen
// its column: a lesson's title can be longer than a narrow pane is wide.
// Assistive technology still reads the whole text.
class ElidingButton : public QPushButton {
    Q_OBJECT

public:
    ElidingButton(const QIcon &icon, const QString &text, QWidget *parent = nullptr);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    // The button's width without its text: icon, padding and frame.
    int chromeWidth() const;
    void elide();

    QString m_fullText;
};

} // namespace Kestrun
