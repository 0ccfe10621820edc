#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace Kestrun {

// Apple's developer tools, replaceable so that tests can use stand-ins.
struct AppleTools {
    QString xcodeSelect = QStringLiteral("/usr/bin/xcode-select");
    QString xcrun = QStringLiteral("/usr/bin/xcrun");
};

// The installed Swift toolchain that compiles the learner's code, and the
// search for it. Each search runs short child processes: call it off the
// UI thread.
struct Toolchain {
    QString swiftc;                     // absolute path of the compiler driver
    QString sdk;                        // absolute path of the SDK; empty where none is needed
    QString version;                    // major.minor, such as "6.2"; "?" when unreadable
    std::optional<QString> interpreter; // swift-frontend, set only by the sandboxed macOS search

    // The oldest Swift the course can be run with.
    static inline const QString minimumVersion = QStringLiteral("6.2");

    // The search this platform uses.
    static std::optional<Toolchain> find();

    // True when running inside the macOS app sandbox.
    static bool inSandbox();

    // macOS: asks xcode-select and xcrun.
    static std::optional<Toolchain> findWithXcrun(const AppleTools &tools = {});
    // macOS sandbox: looks in the known layouts under the developer directory.
    // The start-up task warms the found interpreter up.
    static std::optional<Toolchain> findInSandbox(const AppleTools &tools = {});
    // Linux: the first swiftc in the given directories that is at least
    // minimumVersion, else the first found at all; with no SDK.
    static std::optional<Toolchain> findInDirectories(const QStringList &directories);
    // Where Swift is usually found on Linux: PATH, swift.org toolchains under
    // /opt and /usr/share, swiftly's toolchains, /usr/bin.
    static QStringList linuxSearchDirectories();

    // The major.minor version in a compiler's version banner, or "?".
    static QString versionIn(const QString &banner);

    friend bool operator==(const Toolchain &, const Toolchain &) = default;
};

} // namespace Kestrun
