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
    // swift-frontend: the sandboxed macOS search sets it, and the Linux one
    // when it stands beside swiftc (or beside the file swiftc links to).
    // With it, runs are interpreted; without, compiled and then run.
    std::optional<QString> interpreter;

    // The oldest Swift the course can be run with.
    static inline const QString minimumVersion = QStringLiteral("6.2");

    // The search this platform uses. With KESTRUN_COMPILE=1 in the
    // environment the toolchain found has no interpreter: runs compile.
    static std::optional<Toolchain> find();

    // This toolchain without its interpreter.
    Toolchain compiling() const;

    // True when running inside the macOS app sandbox.
    static bool inSandbox();

    // macOS: asks xcode-select and xcrun.
    static std::optional<Toolchain> findWithXcrun(const AppleTools &tools = {});
    // macOS sandbox: looks in the known layouts under the developer directory.
    // The start-up task warms the found interpreter up.
    static std::optional<Toolchain> findInSandbox(const AppleTools &tools = {});
    // Linux: the first swiftc in the given directories that is at least
    // minimumVersion, else the first found at all; with no SDK, and with
    // the swift-frontend beside it as the interpreter.
    static std::optional<Toolchain> findInDirectories(const QStringList &directories);
    // Where Swift is usually found on Linux: PATH, swift.org toolchains under
    // /opt and /usr/share, swiftly's toolchains, /usr/bin.
    static QStringList linuxSearchDirectories();

    // The major.minor version in a compiler's version banner, or "?".
    static QString versionIn(const QString &banner);

    friend bool operator==(const Toolchain &, const Toolchain &) = default;
};

} // namespace Kestrun
