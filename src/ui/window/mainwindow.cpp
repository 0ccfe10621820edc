#include "mainwindow.h"

#include "app/appmodel.h"
#include "progress/progressstore.h"

#include <QLabel>
#include <QListWidget>
#include <QStatusBar>
#include <QTimer>
#include <QVBoxLayout>

namespace Kestrun {

MainWindow::MainWindow(AppModel &model, QWidget *parent)
    : QMainWindow(parent)
    , m_model(model)
    , m_lessons(new QListWidget(this))
    , m_status(new QLabel(this))
{
    setWindowTitle(QStringLiteral("Kestrun"));
    setMinimumSize(900, 600);

    const Course &course = model.course();
    auto *content = new QWidget(this);
    auto *layout = new QVBoxLayout(content);
    auto *title = new QLabel(course.title, content);
    title->setObjectName(QStringLiteral("courseTitle"));
    QFont font = title->font();
    font.setPointSizeF(font.pointSizeF() * 2);
    font.setBold(true);
    title->setFont(font);
    auto *summary = new QLabel(course.subtitle + QLatin1Char('\n') + course.summary, content);
    summary->setWordWrap(true);
    layout->addWidget(title);
    layout->addWidget(summary);

    m_lessons->setObjectName(QStringLiteral("lessons"));
    for (const Chapter &chapter : course.chapters) {
        auto *heading = new QListWidgetItem(chapter.title, m_lessons);
        heading->setFlags(Qt::NoItemFlags);
        QFont bold = heading->font();
        bold.setBold(true);
        heading->setFont(bold);
        for (const Module &module : chapter.modules) {
            for (const Lesson &lesson : module.lessons) {
                auto *item = new QListWidgetItem(QStringLiteral("    ") + lesson.title, m_lessons);
                item->setData(Qt::UserRole, lesson.id);
            }
        }
    }
    layout->addWidget(m_lessons, 1);
    setCentralWidget(content);

    m_status->setObjectName(QStringLiteral("runnerState"));
    statusBar()->addWidget(m_status, 1);
    const auto showState = [this] {
        const RunnerState state = m_model.runnerState();
        m_status->setText(state.kind == RunnerState::Kind::looking ? tr("Looking for Swift…") : state.text);
    };
    showState();
    connect(&m_model, &AppModel::runnerStateChanged, this, showState);

    connect(m_lessons, &QListWidget::itemActivated, this, [this](QListWidgetItem *item) {
        m_model.open(m_model.course().lesson(item->data(Qt::UserRole).toString()));
    });
    connect(&m_model, &AppModel::selectionChanged, this, &MainWindow::showSelection);
    showSelection();
}

void MainWindow::showSelection()
{
    const std::optional<QString> id = m_model.selection();
    for (int row = 0; row < m_lessons->count(); ++row) {
        QListWidgetItem *item = m_lessons->item(row);
        if (id && item->data(Qt::UserRole).toString() == *id) {
            m_lessons->setCurrentItem(item);
            return;
        }
    }
    m_lessons->setCurrentItem(nullptr);
}

void MainWindow::showEvent(QShowEvent *event)
{
    QMainWindow::showEvent(event);
    if (!m_announced) {
        m_announced = true;
        QTimer::singleShot(0, this, &MainWindow::shown);
    }
}

} // namespace Kestrun
