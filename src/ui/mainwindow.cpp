#include "mainwindow.h"

#include "course.h"

#include <QLabel>
#include <QVBoxLayout>

MainWindow::MainWindow(const Course &course, QWidget *parent)
    : QMainWindow(parent)
{
    setWindowTitle(QStringLiteral("Kestrun"));
    setMinimumSize(900, 600);

    auto *content = new QWidget(this);
    auto *layout = new QVBoxLayout(content);
    auto *title = new QLabel(course.title, content);
    title->setObjectName(QStringLiteral("courseTitle"));
    QFont font = title->font();
    font.setPointSizeF(font.pointSizeF() * 2);
    font.setBold(true);
    title->setFont(font);
    auto *subtitle = new QLabel(course.subtitle, content);
    auto *summary = new QLabel(course.summary, content);
    summary->setWordWrap(true);
    layout->addStretch();
    for (QLabel *label : {title, subtitle, summary}) {
        label->setAlignment(Qt::AlignCenter);
        layout->addWidget(label);
    }
    layout->addStretch();
    setCentralWidget(content);
}
