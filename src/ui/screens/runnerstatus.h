#pragma once

#include <QWidget>

namespace Kestrun {

class AppModel;
class IconLabel;
class RoundedPanel;

// Whether code can run here: a grey line while looking or when ready, and
// a box with the reason and a way to install Swift when it cannot.
class RunnerStatus : public QWidget {
    Q_OBJECT

public:
    explicit RunnerStatus(AppModel &model, QWidget *parent = nullptr);

private:
    void showState();

    AppModel &m_model;
    IconLabel *m_line;
    RoundedPanel *m_guidance;
    IconLabel *m_reason;
};

} // namespace Kestrun
