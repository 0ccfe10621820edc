#pragma once

#include <QList>
#include <QString>

#include <optional>

namespace Kestrun {

// An sRGB colour with 8-bit components; the core library has no QColor.
struct Rgb {
    quint8 red = 0;
    quint8 green = 0;
    quint8 blue = 0;
    friend bool operator==(const Rgb &, const Rgb &) = default;
};

// How one run of text is drawn. Plain text has a default TextStyle.
struct TextStyle {
    bool strong = false;
    bool emphasis = false;
    bool monospace = false;  // inline code, or a keyword in a code listing
    bool strikethrough = false;
    bool semibold = false;
    std::optional<QString> link;  // the target of a link, which may be empty; none when not a link
    std::optional<Rgb> color;
    friend bool operator==(const TextStyle &, const TextStyle &) = default;
};

// A run of styled text, in UTF-16 offsets of StyledText::text.
struct StyledRun {
    qsizetype start = 0;
    qsizetype length = 0;
    TextStyle style;
    friend bool operator==(const StyledRun &, const StyledRun &) = default;
};

// Text with inline style runs, independent of any display toolkit.
// Runs are in text order and never overlap; text outside every run is plain.
struct StyledText {
    QString text;
    QList<StyledRun> runs;
    friend bool operator==(const StyledText &, const StyledText &) = default;
};

} // namespace Kestrun
