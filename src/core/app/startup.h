#pragma once

#include "runnerstate.h"
#include "runner/toolchain.h"

#include <QStringList>

#include <optional>

// The decisions the program makes as it starts, kept free of any window.
namespace Kestrun::StartUp {

struct LaunchMode {
    bool selfTest = false;
    std::optional<QString> solutionsPath;  // the argument after --self-test, if any
};

// The first argument equal to "--self-test" selects the self-test, with the
// argument after it as the solutions path. arguments[0] is the program.
LaunchMode launchMode(const QStringList &arguments);

// What the toolchain search's result means for running code: ready (from
// Swift 6.2 on, when a runner is due), or unavailable with the reason.
RunnerState runnerState(const std::optional<Toolchain> &toolchain);

} // namespace Kestrun::StartUp
