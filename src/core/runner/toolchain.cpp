#include "toolchain.h"

#include "shell.h"
#include "versioncompare.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>

namespace Kestrun {

namespace {

constexpr double queryTimeout = 10;
constexpr double toolTimeout = 20;

std::optional<Shell::Output> query(const QString &executable, const QStringList &arguments, double timeout)
{
    return Shell::tryRun(executable, arguments, std::nullopt, timeout);
}

// The trimmed standard output of a query that succeeded.
std::optional<QString> answer(const QString &executable, const QStringList &arguments, double timeout)
{
    const std::optional<Shell::Output> out = query(executable, arguments, timeout);
    if (!out || out->status != 0)
        return std::nullopt;
    return out->standardOutput.trimmed();
}

// The version of a compiler, or nothing when it cannot be started.
// The status is not looked at: a banner printed with an error still counts.
std::optional<QString> versionOf(const QString &swiftc)
{
    const std::optional<Shell::Output> out = query(swiftc, {QStringLiteral("--version")}, toolTimeout);
    if (!out)
        return std::nullopt;
    return Toolchain::versionIn(out->standardOutput + out->standardError);
}

bool isExecutableFile(const QString &path)
{
    const QFileInfo info(path);
    return info.isFile() && info.isExecutable();
}

// swiftc is often a link (to swift-driver, or from /usr/bin into a toolchain).
std::optional<QString> frontendBeside(const QString &swiftc)
{
    const QFileInfo info(swiftc);
    for (const QString &directory : {info.absolutePath(), QFileInfo(info.canonicalFilePath()).absolutePath()}) {
        const QString frontend = directory + QStringLiteral("/swift-frontend");
        if (isExecutableFile(frontend))
            return frontend;
    }
    return std::nullopt;
}

} // namespace

std::optional<Toolchain> Toolchain::find()
{
#if defined(Q_OS_MACOS)
    std::optional<Toolchain> found = inSandbox() ? findInSandbox() : findWithXcrun();
#else
    std::optional<Toolchain> found = findInDirectories(linuxSearchDirectories());
#endif
    // For tests of both ways, and for learners whose interpreter misbehaves.
    if (found && qgetenv("KESTRUN_COMPILE") == "1")
        return found->compiling();
    return found;
}

Toolchain Toolchain::compiling() const
{
    Toolchain copy = *this;
    copy.interpreter.reset();
    return copy;
}

bool Toolchain::inSandbox()
{
    return qEnvironmentVariableIsSet("APP_SANDBOX_CONTAINER_ID");
}

std::optional<Toolchain> Toolchain::findWithXcrun(const AppleTools &tools)
{
    if (!answer(tools.xcodeSelect, {QStringLiteral("-p")}, queryTimeout))
        return std::nullopt;
    const std::optional<QString> swiftc
        = answer(tools.xcrun, {QStringLiteral("--find"), QStringLiteral("swiftc")}, toolTimeout);
    if (!swiftc)
        return std::nullopt;
    const std::optional<QString> sdk = answer(
        tools.xcrun, {QStringLiteral("--sdk"), QStringLiteral("macosx"), QStringLiteral("--show-sdk-path")}, toolTimeout);
    if (!sdk)
        return std::nullopt;
    const std::optional<QString> version = versionOf(*swiftc);
    if (!version)
        return std::nullopt;
    return Toolchain{*swiftc, *sdk, *version, std::nullopt};
}

std::optional<Toolchain> Toolchain::findInSandbox(const AppleTools &tools)
{
    const std::optional<QString> developer = answer(tools.xcodeSelect, {QStringLiteral("-p")}, queryTimeout);
    if (!developer)
        return std::nullopt;

    struct Layout {
        const char *tools;
        const char *sdk;
    };
    static constexpr Layout layouts[] = {
        {"/Toolchains/XcodeDefault.xctoolchain/usr/bin", "/Platforms/MacOSX.platform/Developer/SDKs/MacOSX.sdk"},
        {"/usr/bin", "/SDKs/MacOSX.sdk"},
    };
    for (const Layout &layout : layouts) {
        const QString bin = *developer + QLatin1String(layout.tools);
        const QString sdk = *developer + QLatin1String(layout.sdk);
        if (!isExecutableFile(bin + QStringLiteral("/swift-frontend")) || !QFileInfo::exists(sdk))
            continue;
        const std::optional<QString> version = versionOf(bin + QStringLiteral("/swiftc"));
        if (!version)
            return std::nullopt;
        return Toolchain{bin + QStringLiteral("/swiftc"), sdk, *version, bin + QStringLiteral("/swift-frontend")};
    }
    return std::nullopt;
}

std::optional<Toolchain> Toolchain::findInDirectories(const QStringList &directories)
{
    // An old distribution swiftc in /usr/bin must not hide a newer toolchain
    // further down the list: the first one the course can use wins.
    std::optional<Toolchain> first;
    QStringList seen;
    for (const QString &directory : directories) {
        if (!QDir::isAbsolutePath(directory))
            continue;
        const QString swiftc = QDir::cleanPath(directory + QStringLiteral("/swiftc"));
        if (!isExecutableFile(swiftc))
            continue;
        const QString file = QFileInfo(swiftc).canonicalFilePath();
        if (seen.contains(file))
            continue;
        seen.append(file);
        const std::optional<QString> version = versionOf(swiftc);
        if (!version)
            continue;
        const Toolchain found{swiftc, QString(), *version, frontendBeside(swiftc)};
        if (compareVersions(found.version, minimumVersion) >= 0)
            return found;
        if (!first)
            first = found;
    }
    return first;
}

QStringList Toolchain::linuxSearchDirectories()
{
    QStringList dirs = qEnvironmentVariable("PATH").split(QLatin1Char(':'), Qt::SkipEmptyParts);

    // Unpacked swift.org toolchains: /opt/swift/usr/bin, /opt/swift-6.2-RELEASE-ubuntu24.04/usr/bin, ...
    // Newest name first, so that of several the latest release wins.
    for (const QString &root : {QStringLiteral("/opt"), QStringLiteral("/usr/share")}) {
        QStringList names = QDir(root).entryList({QStringLiteral("swift*")}, QDir::Dirs | QDir::NoDotAndDotDot);
        std::sort(names.begin(), names.end(), [](const QString &a, const QString &b) { return compareVersions(a, b) > 0; });
        for (const QString &name : names)
            dirs.append(root + QLatin1Char('/') + name + QStringLiteral("/usr/bin"));
    }

    // swiftly keeps its proxies in a bin directory and the toolchains beside it.
    const QString home = QDir::homePath();
    const QString swiftlyHome = qEnvironmentVariableIsEmpty("SWIFTLY_HOME_DIR")
        ? home + QStringLiteral("/.local/share/swiftly")
        : qEnvironmentVariable("SWIFTLY_HOME_DIR");
    if (!qEnvironmentVariableIsEmpty("SWIFTLY_BIN_DIR"))
        dirs.append(qEnvironmentVariable("SWIFTLY_BIN_DIR"));
    dirs.append(swiftlyHome + QStringLiteral("/bin"));
    dirs.append(home + QStringLiteral("/.local/bin"));
    const QString toolchains = swiftlyHome + QStringLiteral("/toolchains");
    QStringList installed = QDir(toolchains).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    std::sort(installed.begin(), installed.end(), [](const QString &a, const QString &b) { return compareVersions(a, b) > 0; });
    for (const QString &name : installed)
        dirs.append(toolchains + QLatin1Char('/') + name + QStringLiteral("/usr/bin"));

    dirs.append(QStringLiteral("/usr/bin"));
    dirs.removeDuplicates();
    return dirs;
}

QString Toolchain::versionIn(const QString &banner)
{
    const QRegularExpression pattern(QStringLiteral("Swift version (\\d+\\.\\d+)"));
    const QRegularExpressionMatch m = pattern.match(banner);
    return m.hasMatch() ? m.captured(1) : QStringLiteral("?");
}

} // namespace Kestrun
