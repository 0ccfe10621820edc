#pragma once

// What a run may leave behind, found through /proc.
#include <QDir>
#include <QFile>
#include <QThread>

#include <unistd.h>

// Processes that work in, or name, something below `directory`, or whose
// command line holds `marker`.
inline QStringList processesOf(const QString &directory, const QString &marker = {})
{
    QStringList found;
    for (const QString &pid : QDir("/proc").entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        if (!pid[0].isDigit() || pid.toInt() == ::getpid())
            continue;
        QFile cmdline("/proc/" + pid + "/cmdline");
        QString command = cmdline.open(QIODevice::ReadOnly) ? QString::fromUtf8(cmdline.readAll()) : QString();
        const QString cwd = QFile::symLinkTarget("/proc/" + pid + "/cwd");
        if (command.contains(directory) || cwd.startsWith(directory) || (!marker.isEmpty() && command.contains(marker)))
            found.append(pid + ' ' + command.replace(QChar(0), ' ').left(100));
    }
    return found;
}

// Killing is asynchronous: what a killed run started may take a moment to go.
inline QStringList processesLeft(const QString &directory, const QString &marker = {})
{
    QStringList left;
    for (int i = 0; i < 50 && !(left = processesOf(directory, marker)).isEmpty(); ++i)
        QThread::msleep(20);
    return left;
}
