#include "courseoutline.h"

#include "progress/progressstore.h"
#include "texts/texts.h"

namespace Kestrun {

CourseOutline::CourseOutline(const Course &course, const ProgressStore &progress, QObject *parent)
    : QAbstractItemModel(parent)
    , m_course(course)
    , m_progress(progress)
{
    for (int c = 0; c < course.chapters.size(); ++c) {
        const int chapterNode = int(m_nodes.size());
        m_nodes.push_back({RowKind::chapter, -1, c, c, -1, -1, {}});
        m_chapters.push_back(chapterNode);
        const Chapter &chapter = course.chapters[c];
        for (int m = 0; m < chapter.modules.size(); ++m) {
            const int moduleNode = int(m_nodes.size());
            m_nodes.push_back({RowKind::module, chapterNode, m, c, m, -1, {}});
            m_nodes[size_t(chapterNode)].children.push_back(moduleNode);
            for (int l = 0; l < chapter.modules[m].lessons.size(); ++l) {
                m_nodes[size_t(moduleNode)].children.push_back(int(m_nodes.size()));
                m_nodes.push_back({RowKind::lesson, moduleNode, l, c, m, l, {}});
            }
        }
    }
    // Counts, done marks and icons all follow the store.
    connect(&progress, &ProgressStore::savedChanged, this, [this] {
        const QList<int> roles{CountRole, DoneRole, SymbolRole, Qt::AccessibleDescriptionRole};
        const auto announce = [&](const std::vector<int> &siblings) {
            if (!siblings.empty())
                Q_EMIT dataChanged(createIndex(0, 0, quintptr(siblings.front())),
                                   createIndex(int(siblings.size()) - 1, 0, quintptr(siblings.back())), roles);
        };
        announce(m_chapters);
        for (const Node &n : m_nodes)
            announce(n.children);
    });
}

const CourseOutline::Node *CourseOutline::node(const QModelIndex &index) const
{
    if (!index.isValid() || index.model() != this || index.internalId() >= m_nodes.size())
        return nullptr;
    return &m_nodes[size_t(index.internalId())];
}

QModelIndex CourseOutline::index(int row, int column, const QModelIndex &parent) const
{
    if (column != 0 || row < 0)
        return {};
    const std::vector<int> &siblings = parent.isValid() ? node(parent)->children : m_chapters;
    if (row >= int(siblings.size()))
        return {};
    return createIndex(row, 0, quintptr(siblings[size_t(row)]));
}

QModelIndex CourseOutline::parent(const QModelIndex &child) const
{
    const Node *n = node(child);
    if (!n || n->parent < 0)
        return {};
    return createIndex(m_nodes[size_t(n->parent)].row, 0, quintptr(n->parent));
}

int CourseOutline::rowCount(const QModelIndex &parent) const
{
    if (parent.column() > 0)
        return 0;
    if (!parent.isValid())
        return int(m_chapters.size());
    const Node *n = node(parent);
    return n ? int(n->children.size()) : 0;
}

int CourseOutline::columnCount(const QModelIndex &) const
{
    return 1;
}

QString CourseOutline::count(const QList<Lesson> &lessons) const
{
    return Texts::get(Text::doneOfTotal).arg(m_progress.count(lessons)).arg(lessons.size());
}

QVariant CourseOutline::data(const QModelIndex &index, int role) const
{
    const Node *n = node(index);
    if (!n)
        return {};
    const Chapter &chapter = m_course.chapters[n->chapter];
    if (role == RowKindRole)
        return int(n->kind);

    switch (n->kind) {
    case RowKind::chapter: {
        QList<Lesson> lessons;
        for (const Module &module : chapter.modules)
            lessons.append(module.lessons);
        switch (role) {
        case Qt::DisplayRole: return Texts::get(Text::chapterHeading).arg(n->chapter + 1).arg(chapter.title);
        case IdRole: return chapter.title;
        case CountRole: return count(lessons);
        default: return {};
        }
    }
    case RowKind::module: {
        const Module &module = chapter.modules[n->module];
        switch (role) {
        case Qt::DisplayRole: return module.title;
        case IdRole: return module.id;
        case CountRole: return count(module.lessons);
        default: return {};
        }
    }
    case RowKind::lesson: {
        const Lesson &lesson = chapter.modules[n->module].lessons[n->lesson];
        const bool done = m_progress.isDone(lesson.id);
        switch (role) {
        case Qt::DisplayRole: return lesson.title;
        case IdRole: return lesson.id;
        case DoneRole: return done;
        case SymbolRole: return symbolFor(lesson, done);
        case Qt::AccessibleDescriptionRole: return done ? Texts::get(Text::done) : QString();
        default: return {};
        }
    }
    }
    return {};
}

Qt::ItemFlags CourseOutline::flags(const QModelIndex &index) const
{
    const Node *n = node(index);
    if (!n)
        return Qt::NoItemFlags;
    // Only lessons can be selected; chapters are headings, modules open and close.
    return n->kind == RowKind::lesson ? Qt::ItemIsEnabled | Qt::ItemIsSelectable : Qt::ItemIsEnabled;
}

QModelIndex CourseOutline::lessonIndex(const QString &lessonId) const
{
    for (size_t i = 0; i < m_nodes.size(); ++i) {
        const Node &n = m_nodes[i];
        if (n.kind == RowKind::lesson
            && m_course.chapters[n.chapter].modules[n.module].lessons[n.lesson].id == lessonId)
            return createIndex(n.row, 0, quintptr(i));
    }
    return {};
}

QModelIndex CourseOutline::moduleIndex(const QString &moduleId) const
{
    for (size_t i = 0; i < m_nodes.size(); ++i) {
        const Node &n = m_nodes[i];
        if (n.kind == RowKind::module && m_course.chapters[n.chapter].modules[n.module].id == moduleId)
            return createIndex(n.row, 0, quintptr(i));
    }
    return {};
}

QString CourseOutline::symbolFor(const Lesson &lesson, bool done)
{
    if (done)
        return QStringLiteral("checkmark.circle.fill");
    switch (lesson.type) {
    case Lesson::Kind::quiz: return QStringLiteral("questionmark.circle");
    case Lesson::Kind::xcode: return QStringLiteral("hammer");
    case Lesson::Kind::project: return QStringLiteral("star");
    case Lesson::Kind::workshop: return QStringLiteral("wrench.and.screwdriver");
    case Lesson::Kind::lab: return QStringLiteral("flask");
    case Lesson::Kind::lesson: break;
    }
    return lesson.tests.isEmpty() ? QStringLiteral("book") : QStringLiteral("chevron.left.forwardslash.chevron.right");
}

} // namespace Kestrun
