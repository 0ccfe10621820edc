#include "resources.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

namespace Resources {

QStringList searchPath()
{
    QStringList dirs;
    // The application directory is only known once the application object exists.
    if (QCoreApplication::instance()) {
        const QString appDir = QCoreApplication::applicationDirPath();
#ifdef Q_OS_MACOS
        dirs.append(QDir::cleanPath(appDir + QStringLiteral("/../Resources")));
#else
        dirs.append(QDir::cleanPath(appDir + QStringLiteral("/../share/kestrun")));
#endif
    }
    dirs.append(QDir::cleanPath(QStringLiteral(KESTRUN_SOURCE_RESOURCES)));
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

} // namespace Resources
