#pragma once

#include <QTreeView>
#include <QWidget>

class QPushButton;

namespace Kestrun {

class AppModel;
class CourseOutline;

// The course outline as a tree: chapters as headings, modules that open and
// close, lessons with their kind or done mark. Its selection is the model's.
class OutlineView : public QTreeView {
    Q_OBJECT

public:
    explicit OutlineView(QWidget *parent = nullptr);

protected:
    void drawBranches(QPainter *painter, const QRect &rect, const QModelIndex &index) const override;
    void resizeEvent(QResizeEvent *event) override;
};

// The sidebar: a home row, then the outline. Choosing a lesson selects it
// without recording it as the last one opened; a selection made elsewhere
// is shown, and its module opened.
class CourseSidebar : public QWidget {
    Q_OBJECT

public:
    explicit CourseSidebar(AppModel &model, QWidget *parent = nullptr);

    OutlineView *view() const { return m_view; }
    CourseOutline *outline() const { return m_outline; }

private:
    void showSelection();
    void chosen();

    AppModel &m_model;
    CourseOutline *m_outline;
    OutlineView *m_view;
    QPushButton *m_home;
    bool m_showing = false;
};

} // namespace Kestrun
