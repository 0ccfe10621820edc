#pragma once

#include <QPointer>
#include <QScrollArea>

namespace Kestrun {

// A vertically scrolling page whose wrapped text always gets the height it
// needs at the width it is shown at, also once the scroll bar takes room.
class ScrollPage : public QScrollArea {
    Q_OBJECT

public:
    explicit ScrollPage(QWidget *parent = nullptr);

    // The page to scroll; it is laid out once the area is first shown.
    void setPage(QWidget *page);
    QWidget *page() const { return m_page; }

protected:
    void showEvent(QShowEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void install();
    void fitHeight();

    QPointer<QWidget> m_page;
};

} // namespace Kestrun
