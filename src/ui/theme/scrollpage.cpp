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
    // The scroll area lays the page out as soon as it gets it, at whatever
    // width it has then; before it is shown that is a guess, and wrapping a
    // long page at a guessed width is most of the cost of opening a screen.
    m_page = page;
    if (isVisible()) {
        install();
        return;
    }
    page->setParent(this);
    page->hide();
}

void ScrollPage::install()
{
    if (!m_page || widget() == m_page)
        return;
    setWidget(m_page);
    m_page->installEventFilter(this);
    fitHeight();
}

void ScrollPage::showEvent(QShowEvent *event)
{
    install();
    QScrollArea::showEvent(event);
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
    // Before it is shown the width is a guess; laying text out for it is wasted.
    if (!page || !page->hasHeightForWidth() || !isVisible())
        return;
    const int height = page->heightForWidth(viewport()->width());
    if (height != page->minimumHeight())
        page->setMinimumHeight(height);
}

} // namespace Kestrun
