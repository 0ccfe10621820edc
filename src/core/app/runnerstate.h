#pragma once

#include <QString>

namespace Kestrun {

// How the search for a Swift toolchain went, with the text to show.
struct RunnerState {
    enum class Kind {
        ready,        // a usable toolchain was found; the model has a runner
        unavailable,  // none, or too old; text says why
        looking,      // the search has not finished
    };

    Kind kind = Kind::looking;
    QString text;

    static RunnerState ready(const QString &text) { return {Kind::ready, text}; }
    static RunnerState unavailable(const QString &text) { return {Kind::unavailable, text}; }
    static RunnerState looking() { return {}; }

    friend bool operator==(const RunnerState &, const RunnerState &) = default;
};

} // namespace Kestrun
