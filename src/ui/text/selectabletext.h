#pragma once

#include "course/styledtext.h"
#include "theme/theme.h"

#include <QElapsedTimer>
#include <QVarLengthArray>
#include <QTextCursor>
#include <QWidget>

#include <optional>
#include <variant>

class QTextDocument;

namespace Kestrun {

// A piece of styled text that wraps at any width (or, for code, keeps its
// lines), tells the height it needs for a width, and can be selected with
// the mouse and the keyboard and copied; its links open in the desktop's
// browser. Every piece of lesson text is one.
//
// Keys it does not use (arrows without Shift, Page Down) go on to the
// enclosing scroll area, so that a click into the text does not stop the
// lesson from scrolling.
class SelectableText : public QWidget {
    Q_OBJECT

public:
    explicit SelectableText(QWidget *parent = nullptr);

    void setStyledText(const StyledText &text);
    // The text as shown, without its marks.
    QString text() const;

    // Off for code: lines never wrap, and the width is the longest line's.
    void setWrapping(bool wrap);
    bool wrapping() const { return m_wrapping; }

    // Extra space between the lines of a wrapped text, in points.
    void setLineSpacing(double points);

    // A fixed colour, or a strength of the palette's text colour that follows
    // light and dark appearance (primary until set). Links keep the accent.
    void setColor(const QColor &color);
    void setColor(Theme::Level level);
    QColor color() const;

    bool hasSelectedText() const { return m_cursor.hasSelection(); }
    QString selectedText() const;
    void select(int start, int end);
    void selectAll();
    void clearSelection();
    // Puts the selected text on the clipboard.
    void copy() const;

    // The target of the link under a point of this widget; empty when none.
    QString linkAt(const QPointF &point) const;

    // The text as laid out at the widget's width, to measure what is drawn.
    const QTextDocument *document() const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    bool hasHeightForWidth() const override { return m_wrapping; }
    int heightForWidth(int width) const override;

Q_SIGNALS:
    // A link was clicked and handed to the desktop to open.
    void linkActivated(const QString &target);

protected:
    bool event(QEvent *event) override;
    void changeEvent(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;

private:
    void layOut() const;
    void layOutAt(qreal textWidth) const;
    QSizeF naturalSize() const;
    qreal trailingSpacing() const;
    int positionAt(const QPointF &point) const;
    QPointF pointOf(int position) const;
    void applyLineSpacing();
    void contentChanged();
    void selectionChanged();
    void reveal(const QPointF &point);

    QTextDocument *m_document;
    QTextCursor m_cursor;
    std::variant<Theme::Level, QColor> m_color = Theme::Level::primary;
    bool m_wrapping = true;
    double m_lineSpacing = 0;
    bool m_hasLinks = false;

    mutable std::optional<QSizeF> m_natural;
    // Layouts ask a wrapped text its height at many widths, several times
    // each, while they settle: keep the last few answers.
    mutable QVarLengthArray<std::pair<int, int>, 8> m_heights;

    QString m_pressedLink;
    QPoint m_pressPoint;
    bool m_selecting = false;
    QElapsedTimer m_sinceDoubleClick;
};

} // namespace Kestrun
