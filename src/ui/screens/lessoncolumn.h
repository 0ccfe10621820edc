#pragma once

#include <QWidget>

class QVBoxLayout;

namespace Kestrun {

// The column lesson text is read in: at most 760 points wide, 28 points of
// padding, its parts 18 points apart. Centred, or at the leading edge.
class LessonColumn : public QWidget {
    Q_OBJECT

public:
    explicit LessonColumn(bool centred, QWidget *parent = nullptr);

    void add(QWidget *part);
    QVBoxLayout *parts() const { return m_parts; }

private:
    QVBoxLayout *m_parts;
};

} // namespace Kestrun
