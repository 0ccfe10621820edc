#pragma once

#include <QString>

#include <optional>

// The installed Swift toolchain that compiles the learner's code.
struct Toolchain {
    QString swiftc;                     // absolute path of the compiler driver
    QString sdk;                        // absolute path of the SDK; empty where none is needed (Linux)
    QString version;                    // major.minor, such as "6.2"; "?" when unreadable
    std::optional<QString> interpreter; // swift-frontend, set only by the sandboxed macOS search

    friend bool operator==(const Toolchain &, const Toolchain &) = default;
};
