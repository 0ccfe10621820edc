#pragma once

#include "course/course.h"

#include <QColor>
#include <QWidget>

namespace Kestrun {

// The lesson's kind in capitals on a small tinted capsule.
class KindBadge : public QWidget {
    Q_OBJECT

public:
    explicit KindBadge(Lesson::Kind kind, QWidget *parent = nullptr);

    QString text() const { return m_text; }
    // The kind's colour; invalid where the kind uses the secondary text colour.
    static QColor tint(Lesson::Kind kind);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    Lesson::Kind m_kind;
    QString m_text;
};

} // namespace Kestrun
