#pragma once

#include <QPointer>
#include <QWidget>

class QParallelAnimationGroup;

namespace Kestrun {

class AppModel;

// The model's notice, floating at the bottom centre of the window on a
// translucent rounded backdrop. It rises and fades in, leaves the same way,
// and takes a new text in place while it is shown.
class NoticeBanner : public QWidget {
    Q_OBJECT
    Q_PROPERTY(qreal opacity READ opacity WRITE setOpacity)
    Q_PROPERTY(qreal rise READ rise WRITE setRise)

public:
    // Over `area`, which it follows as it resizes.
    NoticeBanner(AppModel &model, QWidget *area);

    QString text() const { return m_text; }
    qreal opacity() const { return m_opacity; }
    void setOpacity(qreal opacity);
    // How far below its resting place the banner is, 0 to 1.
    qreal rise() const { return m_rise; }
    void setRise(qreal rise);

    QSize sizeHint() const override;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    void showNotice();
    void animate(bool in);
    void place();

    AppModel &m_model;
    QString m_text;
    qreal m_opacity = 0;
    qreal m_rise = 1;
    QParallelAnimationGroup *m_animation;
};

} // namespace Kestrun
