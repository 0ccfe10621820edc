#pragma once

#include "theme/scrollpage.h"

class QLabel;
class QProgressBar;
class QPushButton;

namespace Kestrun {

class AppModel;
class ChapterList;
class IconLabel;

// The course home: its title, the learner's progress, the way in, whether
// code can run here, and the chapters with their counts.
class HomeView : public ScrollPage {
    Q_OBJECT

public:
    explicit HomeView(AppModel &model, QWidget *parent = nullptr);

private:
    void showProgress();

    AppModel &m_model;
    QLabel *m_progressLabel;
    QProgressBar *m_progressBar;
    QPushButton *m_start;
    IconLabel *m_finished;
    ChapterList *m_chapters;
};

} // namespace Kestrun
