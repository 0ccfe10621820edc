#include "scrollpage.h"

#include <QEvent>
#include <QLayout>
#include <QScrollBar>

namespace Kestrun {

ScrollPage::ScrollPage(QWidget *parent)
    : QScrollArea(parent)
{
    setWidgetResizable(true);
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    viewport()->installEventFilter(this);
}

void ScrollPage::setPage(QWidget *page)
{
    setWidget(page);
    page->installEventFilter(this);
    fitHeight();
}

bool ScrollPage::eventFilter(QObject *watched, QEvent *event)
{
    // The scroll area sizes its page for the width it had before the scroll
    // bar appeared; size it again for the width it really has.
    if ((watched == viewport() && event->type() == QEvent::Resize)
        || (watched == widget() && event->type() == QEvent::LayoutRequest))
        fitHeight();
    return QScrollArea::eventFilter(watched, event);
}

void ScrollPage::fitHeight()
{
    QWidget *page = widget();
    if (!page || !page->hasHeightForWidth())
        return;
    const int height = page->heightForWidth(viewport()->width());
    if (height != page->minimumHeight())
        page->setMinimumHeight(height);
}

} // namespace Kestrun
