#pragma once

#include <QMainWindow>
#include <QPointer>

class QAction;
class QSplitter;

namespace Kestrun {

class AppModel;
class CourseSidebar;
class HomeView;
class NoticeBanner;
class PublishedActions;
class SettingsWindow;
class SplitterMemory;

// The one window: the course outline beside the home screen or the selected
// lesson, the previous and next buttons, the notice banner, and the menus.
class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    explicit MainWindow(AppModel &model, QWidget *parent = nullptr);
    ~MainWindow() override;

    CourseSidebar *sidebar() const { return m_sidebar; }
    QWidget *detail() const { return m_detail; }
    PublishedActions &actions() const { return *m_actions; }
    SettingsWindow *settings();

Q_SIGNALS:
    // The window's content is on screen for the first time.
    void shown();

protected:
    void showEvent(QShowEvent *event) override;

private:
    void createMenus();
    void showSelection();
    void updateNavigation();

    AppModel &m_model;
    PublishedActions *m_actions;
    SplitterMemory *m_splitters;
    CourseSidebar *m_sidebar;
    QSplitter *m_splitter;
    QWidget *m_detailArea;
    QWidget *m_detail = nullptr;
    std::optional<QString> m_detailLesson;
    NoticeBanner *m_banner;
    QAction *m_previous;
    QAction *m_next;
    QAction *m_run = nullptr;
    QAction *m_reset = nullptr;
    QPointer<SettingsWindow> m_settings;
    bool m_announced = false;
};

} // namespace Kestrun
