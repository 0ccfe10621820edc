#pragma once

#include <QDialog>

class QLabel;
class QSlider;

namespace Kestrun {

class AppModel;

// The settings: the code size, whether Swift is found, and starting the
// course again.
class SettingsWindow : public QDialog {
    Q_OBJECT

public:
    explicit SettingsWindow(AppModel &model, QWidget *parent = nullptr);

    // Asks before forgetting all progress; true when the learner agreed.
    bool confirmReset();

private:
    void showSize(double points);
    void showProgress();

    AppModel &m_model;
    QSlider *m_size;
    QLabel *m_sizeLabel;
    QLabel *m_progress;
};

} // namespace Kestrun
