#pragma once

#include <QMainWindow>

struct Course;

// The application's one window. For now it names the course; the lesson
// screens come later.
class MainWindow : public QMainWindow {
    Q_OBJECT
public:
    explicit MainWindow(const Course &course, QWidget *parent = nullptr);
};
