#include "mainwindow.h"

#include "coursesidebar.h"
#include "noticebanner.h"
#include "screenshots.h"
#include "settingswindow.h"
#include "app/appmodel.h"
#include "screens/homeview.h"
#include "screens/lessonview.h"
#include "screens/publishedactions.h"
#include "screens/splittermemory.h"
#include "texts/texts.h"
#include "theme/icons.h"
#include "theme/theme.h"

#include <QApplication>
#include <QMenuBar>
#include <QSplitter>
#include <QTimer>
#include <QToolBar>
#include <QVBoxLayout>

namespace Kestrun {

MainWindow::MainWindow(AppModel &model, QWidget *parent)
    : QMainWindow(parent)
    , m_model(model)
    , m_actions(new PublishedActions(this))
    , m_splitters(new SplitterMemory(this))
    , m_sidebar(new CourseSidebar(model, this))
    , m_splitter(new QSplitter(Qt::Horizontal, this))
    , m_detailArea(new QWidget(this))
    , m_banner(nullptr)
    , m_previous(new QAction(this))
    , m_next(new QAction(this))
{
    setWindowTitle(Texts::get(Text::appTitle));
    setMinimumSize(980, 640);
    resize(1200, 800);

    m_sidebar->setMinimumWidth(240);
    m_sidebar->setMaximumWidth(380);
    m_detailArea->setObjectName(QStringLiteral("detailArea"));
    m_detailArea->setAutoFillBackground(true);
    m_detailArea->setBackgroundRole(QPalette::Base);
    auto *detailLayout = new QVBoxLayout(m_detailArea);
    detailLayout->setContentsMargins(0, 0, 0, 0);
    m_splitter->addWidget(m_sidebar);
    m_splitter->addWidget(m_detailArea);
    m_splitter->setStretchFactor(1, 1);
    m_splitter->setCollapsible(0, false);
    m_splitter->setCollapsible(1, false);
    m_splitter->setSizes({290, 910});
    m_splitter->setHandleWidth(1);
    // The banner floats over both columns; a child of the splitter itself
    // would become a third column.
    auto *content = new QWidget(this);
    auto *contentLayout = new QVBoxLayout(content);
    contentLayout->setContentsMargins(0, 0, 0, 0);
    contentLayout->addWidget(m_splitter);
    setCentralWidget(content);
    m_banner = new NoticeBanner(model, content);

    auto *toolbar = addToolBar(QStringLiteral("navigation"));
    toolbar->setObjectName(QStringLiteral("navigation"));
    toolbar->setMovable(false);
    toolbar->setFloatable(false);
    toolbar->setIconSize(QSize(18, 18));
    toolbar->toggleViewAction()->setEnabled(false);
    const QColor ink = palette().color(QPalette::WindowText);
    m_previous->setObjectName(QStringLiteral("previousLesson"));
    m_previous->setText(Texts::get(Text::previousLesson));
    m_previous->setIcon(Icons::icon(QStringLiteral("chevron.left"), ink));
    m_next->setObjectName(QStringLiteral("nextLesson"));
    m_next->setText(Texts::get(Text::nextLesson));
    m_next->setIcon(Icons::icon(QStringLiteral("chevron.right"), ink));
    toolbar->addAction(m_previous);
    toolbar->addAction(m_next);
    connect(m_previous, &QAction::triggered, this, [this] { m_model.goBy(-1); });
    connect(m_next, &QAction::triggered, this, [this] { m_model.goBy(1); });

    createMenus();
    connect(&m_model, &AppModel::selectionChanged, this, &MainWindow::showSelection);
    showSelection();
}

MainWindow::~MainWindow()
{
    delete m_settings;
}

void MainWindow::createMenus()
{
    QMenu *app = menuBar()->addMenu(Texts::get(Text::appMenu));
    QAction *settings = app->addAction(Texts::get(Text::openSettings));
    settings->setObjectName(QStringLiteral("openSettings"));
    settings->setMenuRole(QAction::PreferencesRole);
    settings->setShortcuts({QKeySequence::Preferences, QKeySequence(Qt::CTRL | Qt::Key_Comma)});
    connect(settings, &QAction::triggered, this, [this] {
        SettingsWindow *window = this->settings();
        window->show();
        window->raise();
        window->activateWindow();
    });
    app->addSeparator();
    QAction *quit = app->addAction(Texts::get(Text::quit));
    quit->setObjectName(QStringLiteral("quit"));
    quit->setMenuRole(QAction::QuitRole);
    quit->setShortcut(QKeySequence::Quit);
    connect(quit, &QAction::triggered, qApp, &QApplication::quit, Qt::QueuedConnection);

    QMenu *lesson = menuBar()->addMenu(Texts::get(Text::lessonMenu));
    lesson->setObjectName(QStringLiteral("lessonMenu"));
    m_run = lesson->addAction(Texts::get(Text::menuRun));
    m_run->setObjectName(QStringLiteral("menuRun"));
    m_run->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Return));
    m_run->setShortcutContext(Qt::WindowShortcut);
    m_reset = lesson->addAction(Texts::get(Text::menuResetCode));
    m_reset->setObjectName(QStringLiteral("menuResetCode"));
    lesson->addSeparator();
    const auto add = [&](Text text, const char *name, const QKeySequence &keys, auto action) {
        QAction *item = lesson->addAction(Texts::get(text));
        item->setObjectName(QLatin1String(name));
        item->setShortcut(keys);
        connect(item, &QAction::triggered, this, action);
    };
    add(Text::menuPreviousLesson, "menuPreviousLesson", QKeySequence(Qt::CTRL | Qt::Key_BracketLeft),
        [this] { m_model.goBy(-1); });
    add(Text::menuNextLesson, "menuNextLesson", QKeySequence(Qt::CTRL | Qt::Key_BracketRight),
        [this] { m_model.goBy(1); });
    add(Text::menuContinue, "menuContinue", QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_L),
        [this] { m_model.open(m_model.nextLesson()); });
    add(Text::menuCourseHome, "menuCourseHome", QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_H),
        [this] { m_model.open(std::nullopt); });

    connect(m_run, &QAction::triggered, m_actions, &PublishedActions::run);
    connect(m_reset, &QAction::triggered, m_actions, &PublishedActions::reset);
    const auto enable = [this] {
        m_run->setEnabled(m_actions->hasRun());
        m_reset->setEnabled(m_actions->hasReset());
    };
    connect(m_actions, &PublishedActions::changed, this, enable);
    enable();
}

SettingsWindow *MainWindow::settings()
{
    if (!m_settings)
        m_settings = new SettingsWindow(m_model);
    return m_settings;
}

void MainWindow::showSelection()
{
    const std::optional<Lesson> lesson = m_model.selectedLesson();
    const std::optional<QString> id = lesson ? std::optional(lesson->id) : std::nullopt;
    // A fresh screen for every lesson, so nothing carries over from the last one.
    if (!m_detail || id != m_detailLesson) {
        delete m_detail;
        m_detail = lesson ? LessonView::create(m_model, *lesson, *m_actions, *m_splitters, m_detailArea)
                          : static_cast<QWidget *>(new HomeView(m_model, m_detailArea));
        m_detailLesson = id;
        m_detailArea->layout()->addWidget(m_detail);
    }
    updateNavigation();
}

void MainWindow::updateNavigation()
{
    const std::optional<Lesson> lesson = m_model.selectedLesson();
    m_previous->setEnabled(lesson && m_model.course().neighbours(lesson->id).previous);
}

void MainWindow::showEvent(QShowEvent *event)
{
    QMainWindow::showEvent(event);
    if (m_announced)
        return;
    m_announced = true;
    Screenshots::sizeWindow();
    QTimer::singleShot(0, this, &MainWindow::shown);
}

} // namespace Kestrun
