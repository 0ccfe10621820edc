#pragma once

#include <QWidget>

namespace Kestrun {

// The marker of a list item ("12." or "•") in the secondary colour, right-
// aligned, with every digit in a cell of the widest digit's width so that
// numbers line up whatever the font's own digits are.
class ListMarker : public QWidget {
    Q_OBJECT

public:
    explicit ListMarker(const QString &marker, QWidget *parent = nullptr);

    QString marker() const { return m_marker; }
    // The width of the cell each digit is drawn in.
    qreal digitWidth() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void changeEvent(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    qreal advance(QChar c) const;

    QString m_marker;
};

} // namespace Kestrun
