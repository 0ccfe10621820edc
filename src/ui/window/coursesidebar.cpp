#include "coursesidebar.h"

#include "outlinedelegate.h"
#include "app/appmodel.h"
#include "app/courseoutline.h"
#include "texts/texts.h"
#include "theme/icons.h"
#include "theme/theme.h"

#include <QHeaderView>
#include <QMouseEvent>
#include <QProxyStyle>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

namespace Kestrun {

namespace {

bool isChapter(const QModelIndex &index)
{
    return index.isValid() && !index.parent().isValid();
}

bool isModule(const QModelIndex &index)
{
    return index.isValid() && isChapter(index.parent());
}

// The delegate draws the selected lesson as a rounded row of its own; the
// platform style would also fill the row's indentation.
class OutlineStyle : public QProxyStyle {
public:
    using QProxyStyle::QProxyStyle;

    void drawPrimitive(PrimitiveElement element, const QStyleOption *option, QPainter *painter,
                       const QWidget *widget) const override
    {
        if (element == PE_PanelItemViewRow || element == PE_PanelItemViewItem)
            return;
        QProxyStyle::drawPrimitive(element, option, painter, widget);
    }

    int styleHint(StyleHint hint, const QStyleOption *option, const QWidget *widget,
                  QStyleHintReturn *returnData) const override
    {
        if (hint == SH_ItemView_ShowDecorationSelected)
            return 0;
        return QProxyStyle::styleHint(hint, option, widget, returnData);
    }
};

} // namespace

OutlineView::OutlineView(QWidget *parent)
    : QTreeView(parent)
{
    auto *style = new OutlineStyle;
    style->setParent(this);
    setStyle(style);
    setHeaderHidden(true);
    setRootIsDecorated(false);
    setUniformRowHeights(false);
    setIndentation(14);
    setExpandsOnDoubleClick(false);
    setFrameShape(QFrame::NoFrame);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    setItemDelegate(new OutlineDelegate(this));
}

void OutlineView::drawBranches(QPainter *painter, const QRect &rect, const QModelIndex &index) const
{
    // Chapters are headings and always open; only modules show a disclosure arrow.
    if (isModule(index))
        QTreeView::drawBranches(painter, rect, index);
}

void OutlineView::resizeEvent(QResizeEvent *event)
{
    QTreeView::resizeEvent(event);
    // Lesson titles wrap to the width, so row heights change with it.
    scheduleDelayedItemsLayout();
}

CourseSidebar::CourseSidebar(AppModel &model, QWidget *parent)
    : QWidget(parent)
    , m_model(model)
    , m_outline(new CourseOutline(model.course(), *model.progress(), this))
    , m_view(new OutlineView(this))
    , m_home(new QPushButton(Texts::get(Text::appTitle), this))
{
    setObjectName(QStringLiteral("courseSidebar"));
    setAutoFillBackground(true);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(8, 10, 4, 0);
    layout->setSpacing(4);

    m_home->setObjectName(QStringLiteral("homeRow"));
    m_home->setFlat(true);
    m_home->setCursor(Qt::PointingHandCursor);
    m_home->setIcon(Icons::icon(QStringLiteral("house"), Theme::vmSea()));
    m_home->setStyleSheet(QStringLiteral("QPushButton { text-align: left; padding: 5px 6px; border: none; }"
                                         "QPushButton:hover { background: %1; border-radius: 6px; }")
                              .arg(Theme::label(Theme::Level::quaternary, this).name(QColor::HexArgb)));
    connect(m_home, &QPushButton::clicked, this, [this] { m_model.open(std::nullopt); });
    layout->addWidget(m_home);

    m_view->setObjectName(QStringLiteral("courseOutline"));
    QPalette palette = m_view->palette();
    palette.setColor(QPalette::Base, palette.color(QPalette::Window));
    m_view->setPalette(palette);
    m_view->setModel(m_outline);
    layout->addWidget(m_view, 1);

    for (int c = 0; c < m_outline->rowCount(); ++c)
        m_view->expand(m_outline->index(c, 0));
    connect(m_view, &QTreeView::collapsed, this, [this](const QModelIndex &index) {
        if (isChapter(index))
            m_view->expand(index);
    });
    connect(m_view, &QTreeView::clicked, this, [this](const QModelIndex &index) {
        if (isModule(index))
            m_view->setExpanded(index, !m_view->isExpanded(index));
    });
    connect(m_view->selectionModel(), &QItemSelectionModel::selectionChanged, this, &CourseSidebar::chosen);
    connect(&m_model, &AppModel::selectionChanged, this, &CourseSidebar::showSelection);
    showSelection();
}

void CourseSidebar::chosen()
{
    if (m_showing)
        return;
    const QModelIndexList selected = m_view->selectionModel()->selectedIndexes();
    if (selected.size() == 1 && !isChapter(selected.first()) && !isModule(selected.first()))
        m_model.setSelection(selected.first().data(CourseOutline::IdRole).toString());
}

void CourseSidebar::showSelection()
{
    m_showing = true;
    const std::optional<QString> selection = m_model.selection();
    const QModelIndex row = selection ? m_outline->lessonIndex(*selection) : QModelIndex();
    if (row.isValid()) {
        // Modules open for the selected lesson and are never closed for it.
        m_view->expand(row.parent());
        m_view->setCurrentIndex(row);
        // Once laid out: a row brought into view from elsewhere shows in the
        // middle, with its module above it.
        QTimer::singleShot(0, m_view, [view = m_view, row = QPersistentModelIndex(row)] {
            if (row.isValid() && !view->viewport()->rect().contains(view->visualRect(row)))
                view->scrollTo(row, QAbstractItemView::PositionAtCenter);
        });
    } else {
        m_view->selectionModel()->clearSelection();
    }
    m_showing = false;
}

} // namespace Kestrun
