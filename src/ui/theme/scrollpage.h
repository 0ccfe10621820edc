#pragma once

#include <QScrollArea>

namespace Kestrun {

// A vertically scrolling page whose wrapped text always gets the height it
// needs at the width it is shown at, also once the scroll bar takes room.
class ScrollPage : public QScrollArea {
    Q_OBJECT

public:
    explicit ScrollPage(QWidget *parent = nullptr);

    void setPage(QWidget *page);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void fitHeight();
};

} // namespace Kestrun
