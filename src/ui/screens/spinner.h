#pragma once

#include <QColor>
#include <QWidget>

namespace Kestrun {

// A small turning arc: work is under way.
class Spinner : public QWidget {
    Q_OBJECT

public:
    Spinner(const QColor &color, QWidget *parent = nullptr);

    QSize sizeHint() const override { return {18, 18}; }

protected:
    void paintEvent(QPaintEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void timerEvent(QTimerEvent *event) override;

private:
    QColor m_color;
    int m_angle = 0;
    int m_timer = 0;
};

} // namespace Kestrun
