#include "workdirectory.h"

#include <QDir>
#include <QFile>
#include <QUuid>

#include <cerrno>
#include <csignal>
#include <system_error>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Kestrun {

namespace {

constexpr char lockName[] = ".lock";

QString describe(const QString &path, int error)
{
    return path + QStringLiteral(": ") + QString::fromStdString(std::generic_category().message(error));
}

// A program may take the permissions from its own directories; give them back.
void makeRemovable(const QString &directory)
{
    ::chmod(QFile::encodeName(directory).constData(), S_IRWXU);
    const QDir dir(directory);
    for (const QString &name : dir.entryList(QDir::Dirs | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System | QDir::NoSymLinks))
        makeRemovable(dir.filePath(name));
}

void removeTree(const QString &path)
{
    if (QDir(path).removeRecursively() || !QFileInfo::exists(path))
        return;
    makeRemovable(path);
    QDir(path).removeRecursively();
}

} // namespace

WorkDirectory::WorkDirectory()
{
    const QString temporary = QDir::tempPath();
    const QString name = prefix + QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
    m_path = temporary + QLatin1Char('/') + name;
    if (!QDir().mkpath(temporary)) {
        m_error = describe(temporary, QFileInfo(temporary).exists() ? ENOTDIR : EACCES);
        return;
    }
    // Made under a name removeAbandoned() passes over, locked, and only then
    // named: a directory with the work directories' name is locked from its
    // first moment for as long as its run lives. The lock is a file in it,
    // so that directories of programs that take no lock are never touched.
    const QByteArray staging = QFile::encodeName(temporary + QStringLiteral("/.") + name);
    if (::mkdir(staging.constData(), S_IRWXU) != 0) {
        m_error = describe(temporary, errno);
        return;
    }
    m_lock = ::open((staging + '/' + lockName).constData(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR);
    if (m_lock < 0 || ::flock(m_lock, LOCK_EX) != 0 || ::rename(staging.constData(), QFile::encodeName(m_path).constData()) != 0) {
        m_error = describe(m_path, errno);
        ::unlink((staging + '/' + lockName).constData());
        ::rmdir(staging.constData());
    }
}

WorkDirectory::~WorkDirectory()
{
    if (isValid())
        removeTree(m_path);
    // Held until the directory is gone, so that no one else removes it meanwhile.
    if (m_lock >= 0)
        ::close(m_lock);
}

void WorkDirectory::killProcessesInside() const
{
#ifdef Q_OS_LINUX
    if (!isValid())
        return;
    // As the kernel shows working directories: with links resolved.
    const QString canonical = QFileInfo(m_path).canonicalFilePath();
    const QString inside = canonical.isEmpty() ? m_path : canonical;
    const QString self = QString::number(::getpid());
    for (int round = 0; round < 20; ++round) {
        int found = 0;
        for (const QString &pid : QDir(QStringLiteral("/proc")).entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
            if (!pid.front().isDigit() || pid == self)
                continue;
            const QString process = QStringLiteral("/proc/") + pid;
            struct stat info;
            if (::stat(QFile::encodeName(process).constData(), &info) != 0 || info.st_uid != ::getuid())
                continue;
            const QString cwd = QFile::symLinkTarget(process + QStringLiteral("/cwd"));
            if ((cwd == inside || cwd.startsWith(inside + QLatin1Char('/'))) && ::kill(pid.toInt(), SIGKILL) == 0)
                ++found;
        }
        if (found == 0)
            return;
        ::usleep(2000);
    }
#endif
}

QString WorkDirectory::file(const QString &name) const
{
    return m_path + QLatin1Char('/') + name;
}

int WorkDirectory::removeAbandoned(const QString &temporaryDirectory)
{
    const QDir dir(temporaryDirectory);
    int removed = 0;
    for (const QString &name : dir.entryList({prefix + QLatin1Char('*')}, QDir::Dirs | QDir::NoSymLinks)) {
        const QString path = dir.filePath(name);
        const int fd = ::open(QFile::encodeName(path + QLatin1Char('/') + QLatin1String(lockName)).constData(),
                              O_RDONLY | O_NOFOLLOW | O_CLOEXEC);
        if (fd < 0)
            continue;  // another user's, gone meanwhile, or not made with a lock
        // The lock is free only when the process that made the directory has ended.
        if (::flock(fd, LOCK_EX | LOCK_NB) == 0) {
            removeTree(path);
            ++removed;
        }
        ::close(fd);
    }
    return removed;
}

} // namespace Kestrun
