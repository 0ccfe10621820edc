#pragma once

#include <QColor>
#include <QFont>
#include <QWidget>

class QLabel;

namespace Kestrun {

// A symbol followed by a text that wraps, the symbol centred on the text's
// first line: the look of every "icon and sentence" line of the screens.
class IconLabel : public QWidget {
    Q_OBJECT

public:
    IconLabel(const QString &symbol, const QString &text, const QColor &color, QWidget *parent = nullptr);

    void setSymbol(const QString &symbol, const QColor &color);
    void setText(const QString &text);
    QString text() const;
    void setTextFont(const QFont &font);
    void setTextColor(const QColor &color);
    // The text's own colour may differ from the symbol's.
    QLabel *textLabel() const { return m_text; }

protected:
    void changeEvent(QEvent *event) override;

private:
    void updateIcon();

    QLabel *m_icon;
    QLabel *m_text;
    QString m_symbol;
    QColor m_color;
};

} // namespace Kestrun
