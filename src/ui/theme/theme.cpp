#include "theme.h"

#include "course/resources.h"

#include <QApplication>
#include <QFontDatabase>
#include <QIcon>
#include <QScreen>
#include <QPalette>
#include <QPushButton>
#include <QWidget>

namespace Kestrun::Theme {

namespace {

// Apple's sizes for a 13-point body text; every size derives from these.
constexpr double macBody = 13;

struct StyleRow {
    TextStyle style;
    double points;
    QFont::Weight weight;
};

constexpr StyleRow styles[] = {
    {TextStyle::largeTitle, 26, QFont::Normal},
    {TextStyle::title2, 17, QFont::Normal},
    {TextStyle::title3, 15, QFont::Normal},
    {TextStyle::headline, 13, QFont::DemiBold},
    {TextStyle::body, 13, QFont::Normal},
    {TextStyle::callout, 12, QFont::Normal},
    {TextStyle::subheadline, 11, QFont::Normal},
    {TextStyle::footnote, 10, QFont::Normal},
    {TextStyle::caption, 10, QFont::Normal},
    {TextStyle::caption2, 10, QFont::Normal},
};

double basePoints()
{
    const double size = QApplication::font().pointSizeF();
    return size > 0 ? size : macBody;
}

QString css(const QColor &color)
{
    return color.name(QColor::HexArgb);
}

} // namespace

const QColor &vmSea()
{
    static const QColor color(28, 140, 158);
    return color;
}

const QColor &vmGold()
{
    static const QColor color(233, 176, 75);
    return color;
}

const QColor &vmAlert()
{
    static const QColor color(196, 67, 45);
    return color;
}

const QColor &vmPass()
{
    static const QColor color(76, 175, 122);
    return color;
}

const QColor &editorBackground()
{
    static const QColor color(14, 27, 32);
    return color;
}

const QColor &editorText()
{
    static const QColor color(223, 230, 234);
    return color;
}

QColor withOpacity(QColor color, double opacity)
{
    color.setAlphaF(float(color.alphaF() * opacity));
    return color;
}

QColor label(Level level, const QWidget *widget)
{
    const QColor text = (widget ? widget->palette() : QApplication::palette()).color(QPalette::WindowText);
    switch (level) {
    case Level::primary: return text;
    case Level::secondary: return withOpacity(text, 0.6);
    case Level::tertiary: return withOpacity(text, 0.4);
    case Level::quaternary: return withOpacity(text, 0.22);
    }
    return text;
}

void setTextColor(QWidget *widget, const QColor &color)
{
    QPalette palette = widget->palette();
    palette.setColor(QPalette::WindowText, color);
    palette.setColor(QPalette::Text, color);
    widget->setPalette(palette);
}

double scaled(double points)
{
    return points * basePoints() / macBody;
}

double pixels(double points)
{
    const QScreen *screen = QGuiApplication::primaryScreen();
    const double dpi = screen ? screen->logicalDotsPerInchY() : 96;
    return scaled(points) * dpi / 72;
}

QFont font(TextStyle style)
{
    QFont f = QApplication::font();
    for (const StyleRow &row : styles) {
        if (row.style == style) {
            f.setPointSizeF(scaled(row.points));
            f.setWeight(row.weight);
        }
    }
    return f;
}

QFont monospace(double points, QFont::Weight weight)
{
    QFont f = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    f.setPointSizeF(scaled(points));
    f.setWeight(weight);
    return f;
}

void apply(QApplication &app)
{
    QPalette palette = app.palette();
    for (const QPalette::ColorGroup group : {QPalette::Active, QPalette::Inactive}) {
        palette.setColor(group, QPalette::Highlight, vmSea());
        palette.setColor(group, QPalette::HighlightedText, Qt::white);
        palette.setColor(group, QPalette::Link, vmSea());
    }
    palette.setColor(QPalette::Inactive, QPalette::Highlight, withOpacity(vmSea(), 0.75));
    app.setPalette(palette);

    // The application's icon travels with the resources; the icon theme has
    // the same picture, but searching the theme costs start-up time.
    const std::optional<QString> icon = Resources::url(QGuiApplication::desktopFileName() + QStringLiteral(".svg"));
    if (icon)
        app.setWindowIcon(QIcon(*icon));
}

void makeProminent(QPushButton *button, const QColor &tint)
{
    button->setCursor(Qt::PointingHandCursor);
    button->setStyleSheet(QStringLiteral(
        "QPushButton { background: %1; color: white; border: none; border-radius: 7px; padding: 6px 14px; font-weight: 600; }"
        "QPushButton:hover { background: %2; }"
        "QPushButton:pressed { background: %3; }"
        "QPushButton:disabled { background: %4; color: %5; }")
                              .arg(css(tint), css(tint.lighter(110)), css(tint.darker(115)),
                                   css(withOpacity(tint, 0.35)), css(withOpacity(Qt::white, 0.8))));
}

void makeTranslucent(QPushButton *button, const QColor &textColor)
{
    const QColor text = button->palette().color(QPalette::ButtonText);
    const QColor ink = textColor.isValid() ? textColor : text;
    button->setCursor(Qt::PointingHandCursor);
    button->setStyleSheet(QStringLiteral(
        "QPushButton { background: %1; border: 1px solid %2; border-radius: 7px; padding: 5px 12px; color: %4; }"
        "QPushButton:hover { background: %3; }"
        "QPushButton:pressed { background: %2; }")
                              .arg(css(withOpacity(text, 0.06)), css(withOpacity(text, 0.16)),
                                   css(withOpacity(text, 0.10)), css(ink)));
}

} // namespace Kestrun::Theme
