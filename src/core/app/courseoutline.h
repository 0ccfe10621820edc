#pragma once

#include "course/course.h"

#include <QAbstractItemModel>

#include <vector>

namespace Kestrun {

class ProgressStore;

// The course as a tree for the sidebar: chapters, their modules, and the
// modules' lessons, with the learner's progress. Follows the store.
class CourseOutline : public QAbstractItemModel {
    Q_OBJECT

public:
    enum class RowKind { chapter, module, lesson };

    enum Role {
        RowKindRole = Qt::UserRole + 1,  // RowKind as int
        IdRole,                          // a module's or lesson's id; a chapter's title
        CountRole,                       // "done/total" for chapters and modules
        DoneRole,                        // a lesson is done
        SymbolRole,                      // the icon a lesson row shows, by symbol name
    };

    CourseOutline(const Course &course, const ProgressStore &progress, QObject *parent = nullptr);

    QModelIndex index(int row, int column, const QModelIndex &parent = {}) const override;
    QModelIndex parent(const QModelIndex &child) const override;
    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;

    // The row of a lesson or of a module; invalid for an unknown id.
    QModelIndex lessonIndex(const QString &lessonId) const;
    QModelIndex moduleIndex(const QString &moduleId) const;

    // The symbol a lesson row shows: the done mark, else one for its kind.
    static QString symbolFor(const Lesson &lesson, bool done);

private:
    struct Node {
        RowKind kind;
        int parent;  // index into m_nodes; -1 for chapters
        int row;
        int chapter;
        int module;
        int lesson;
        std::vector<int> children;
    };

    const Node *node(const QModelIndex &index) const;
    QString count(const QList<Lesson> &lessons) const;

    const Course &m_course;
    const ProgressStore &m_progress;
    std::vector<Node> m_nodes;
    std::vector<int> m_chapters;
};

} // namespace Kestrun
