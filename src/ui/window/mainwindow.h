#pragma once

#include <QMainWindow>

class QLabel;
class QListWidget;

namespace Kestrun {

class AppModel;

// The application's one window. For now: the course's title, its lessons,
// and whether code can run; the lesson screens come later.
class MainWindow : public QMainWindow {
    Q_OBJECT
public:
    explicit MainWindow(AppModel &model, QWidget *parent = nullptr);

Q_SIGNALS:
    // The window's content is on screen: time to look for the compiler.
    void shown();

protected:
    void showEvent(QShowEvent *event) override;

private:
    void showSelection();

    AppModel &m_model;
    QListWidget *m_lessons;
    QLabel *m_status;
    bool m_announced = false;
};

} // namespace Kestrun
