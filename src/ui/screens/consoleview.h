#pragma once

#include "runner/runresult.h"

#include <QColor>
#include <QWidget>

#include <optional>

class QTextEdit;

namespace Kestrun {

// What a run printed and how it ended, or why it could not start, on a dark
// console under the editor.
class ConsoleView : public QWidget {
    Q_OBJECT

public:
    // One line of the console, and what it says.
    struct Line {
        enum class Kind { output, error, secondary, pass };
        QString text;
        Kind kind = Kind::output;
        bool spaceAbove = false;  // set apart from what comes before
        friend bool operator==(const Line &, const Line &) = default;
    };

    explicit ConsoleView(QWidget *parent = nullptr);

    void show(const std::optional<RunResult> &result, bool running, const std::optional<QString> &problem);
    // What the console shows for a state, first match wins.
    static QList<Line> lines(const std::optional<RunResult> &result, bool running, const std::optional<QString> &problem);
    // The shortcut of Run as this platform writes it ("Ctrl+Return").
    static QString runShortcut();

    // The console's text, one entry per line, for reading it back.
    QString plainText() const;

    static QColor errorColor();

private:
    QTextEdit *m_text;
};

} // namespace Kestrun
