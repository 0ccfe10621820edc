#pragma once

#include <QColor>
#include <QFrame>

namespace Kestrun {

// A box on a rounded, filled rectangle, optionally outlined: the backdrop of
// task boxes, hints, notes, panels and the toolchain guidance.
class RoundedPanel : public QFrame {
    Q_OBJECT

public:
    explicit RoundedPanel(const QColor &fill, qreal radius = 12, QWidget *parent = nullptr);

    void setFill(const QColor &fill);
    QColor fill() const { return m_fill; }
    // A 1-point line of this colour inside the edge; none when invalid.
    void setBorder(const QColor &border);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QColor m_fill;
    QColor m_border;
    qreal m_radius;
};

} // namespace Kestrun
