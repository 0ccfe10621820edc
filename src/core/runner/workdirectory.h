#pragma once

#include <QString>

// The directory of one run under the temporary directory: "kestrun-" and a
// UUID, readable only by its owner, holding a lock file locked for as long
// as this object lives, so that a later start can tell the directories of
// runs that were killed with their process from those of live ones.
namespace Kestrun {

class WorkDirectory {
public:
    static inline const QString prefix = QStringLiteral("kestrun-");

    // Creates the directory (and any missing parents); see isValid().
    WorkDirectory();
    // Removes it with everything in it; a failure is ignored.
    ~WorkDirectory();
    WorkDirectory(const WorkDirectory &) = delete;
    WorkDirectory &operator=(const WorkDirectory &) = delete;

    bool isValid() const { return m_error.isEmpty(); }
    // Why it could not be created.
    QString errorString() const { return m_error; }

    QString path() const { return m_path; }
    QString file(const QString &name) const;

    // Kills this user's processes that work in this directory or below it,
    // again while any are found, so that what they start meanwhile goes
    // too: what escaped a run's process group, unless it left the directory.
    // Linux only; elsewhere it does nothing.
    void killProcessesInside() const;

    // Removes the work directories in `temporaryDirectory` whose lock no
    // live run holds, as a process that was killed leaves them. Returns how
    // many.
    static int removeAbandoned(const QString &temporaryDirectory);

private:
    QString m_path;
    QString m_error;
    int m_lock = -1;
};

} // namespace Kestrun
