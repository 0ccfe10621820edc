#include "resources.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

namespace Kestrun::Resources {

namespace {

// The program's folder. Linux knows it before the application object exists,
// which lets the course load while the platform starts. It is read once and
// not from QCoreApplication there: Qt caches the program's path without a
// lock, and two threads asking at once leak one copy and race on the other.
std::optional<QString> programDirectory()
{
#ifdef Q_OS_LINUX
    static const std::optional<QString> directory = []() -> std::optional<QString> {
        const QFileInfo program(QStringLiteral("/proc/self/exe"));
        if (!program.exists())
            return std::nullopt;
        return program.canonicalFilePath().section(QLatin1Char('/'), 0, -2);
    }();
    return directory;
#else
    if (QCoreApplication::instance())
        return QCoreApplication::applicationDirPath();
    return std::nullopt;
#endif
}

} // namespace

QStringList searchPath()
{
    const std::optional<QString> program = programDirectory();
    if (!program)
        return {};
    QStringList dirs;
    QDir dir(*program);
#ifdef Q_OS_MACOS
    dirs.append(QDir::cleanPath(dir.absoluteFilePath(QStringLiteral("../Resources"))));
#endif
    // Installed as <prefix>/bin and <prefix>/share/kestrun. A build tree links
    // its share/kestrun to the source tree's Resources/, and its programs sit
    // one or more folders below the build tree's top.
    for (int up = 0; up < 4 && dir.cdUp(); ++up)
        dirs.append(dir.absoluteFilePath(QStringLiteral("share/kestrun")));
    return dirs;
}

std::optional<QString> url(const QString &name)
{
    if (name.isEmpty())
        return std::nullopt;
    for (const QString &dir : searchPath()) {
        const QFileInfo file(dir + QLatin1Char('/') + name);
        if (file.isFile())
            return file.absoluteFilePath();
    }
    return std::nullopt;
}

} // namespace Kestrun::Resources
