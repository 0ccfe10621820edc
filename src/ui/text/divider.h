#pragma once

#include <QWidget>

namespace Kestrun {

// A thin horizontal line across the available width: a rule between blocks,
// or the line under a table's head.
class Divider : public QWidget {
    Q_OBJECT

public:
    explicit Divider(QWidget *parent = nullptr);

    QSize sizeHint() const override;
    QColor color() const;

protected:
    void paintEvent(QPaintEvent *event) override;
};

} // namespace Kestrun
