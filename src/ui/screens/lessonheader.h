#pragma once

#include <QWidget>

class QLabel;

namespace Kestrun {

class AppModel;
class MarkdownLabel;
struct Lesson;

// A lesson's place in the course, its kind, title and done mark, and how
// long it takes. The done mark follows the progress store.
class LessonHeader : public QWidget {
    Q_OBJECT

public:
    LessonHeader(AppModel &model, const Lesson &lesson, QWidget *parent = nullptr);

private:
    void showDone();

    AppModel &m_model;
    QString m_lessonId;
    QLabel *m_done;
};

} // namespace Kestrun
