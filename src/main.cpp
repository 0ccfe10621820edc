#include "course.h"
#include "mainwindow.h"

#include <QApplication>

#include <cstdio>

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("Kestrun"));

    Course course;
    try {
        course = Course::load();
    } catch (const Course::LoadError &) {
        std::fputs("The course is missing from the app.\n", stderr);
        return 1;
    }
    MainWindow window(course);
    window.show();
    return app.exec();
}
