#pragma once

#include <QColor>
#include <QFont>

class QApplication;
class QPushButton;
class QWidget;

namespace Kestrun::Theme {

// The six named colours, sRGB, created once on first use.
const QColor &vmSea();             // #1C8C9E: the accent; done marks, progress
const QColor &vmGold();            // #E9B04B: hints, chapter numbers, the caret
const QColor &vmAlert();           // #C4432D: warnings and failures
const QColor &vmPass();            // #4CAF7A: success marks
const QColor &editorBackground();  // #0E1B20: behind all code
const QColor &editorText();        // #DFE6EA: the base colour of code

// The colour at a fraction of its opacity, such as vmSea at 8 %.
QColor withOpacity(QColor color, double opacity);

// The platform's text colour at decreasing strength.
enum class Level { primary, secondary, tertiary, quaternary };
QColor label(Level level, const QWidget *widget = nullptr);

// Draws a widget's text in a colour, whichever background it sits on (text
// on a Base background uses the Text role, elsewhere WindowText).
void setTextColor(QWidget *widget, const QColor &color);

// The text styles the screens name, as sizes relative to the platform's
// base font, so that the whole app follows the desktop's font setting.
enum class TextStyle { largeTitle, title2, title3, headline, body, callout, subheadline, footnote, caption, caption2 };
QFont font(TextStyle style);
// A size given for a 13-point body text, scaled to this platform's base font.
double scaled(double points);
// A length given in points beside a 13-point body text (a padding, a corner
// radius), in this platform's device-independent pixels, so that spacing
// keeps its proportion to the text.
double pixels(double points);

// The system's monospaced font at a size in points (scaled like the rest).
QFont monospace(double points, QFont::Weight weight = QFont::Normal);

// Sets the accent colour, the base palette and the window icon for the whole
// application; the icon is looked up by QGuiApplication::desktopFileName().
void apply(QApplication &app);

// Button looks: a filled accent button for the main action of a screen, and
// a translucent one for secondary actions.
void makeProminent(QPushButton *button, const QColor &tint = vmSea());
void makeTranslucent(QPushButton *button, const QColor &textColor = {});

} // namespace Kestrun::Theme
