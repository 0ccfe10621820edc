#pragma once

#include "course/course.h"

#include <QByteArray>
#include <QDateTime>
#include <QElapsedTimer>
#include <QList>
#include <QMap>
#include <QObject>
#include <QSet>
#include <QString>
#include <QThreadPool>
#include <QTimer>

#include <chrono>
#include <optional>

namespace Kestrun {

// Everything the learner has done, kept by lesson id and saved as one small
// JSON file a short time after the last change. Belongs to the main thread;
// the file is encoded and written on a worker thread from a copy.
class ProgressStore : public QObject {
    Q_OBJECT

public:
    struct Saved {
        QMap<QString, QDateTime> done;     // lesson id -> moment it was first finished (UTC)
        QMap<QString, QString> code;       // lesson id -> the learner's code
        QMap<QString, QSet<int>> ticks;    // lesson id -> ticked checklist steps
        std::optional<QString> last;       // the lesson opened last

        friend bool operator==(const Saved &, const Saved &) = default;
    };

    // How long the store waits after a change before writing.
    static constexpr std::chrono::milliseconds writeDelay{400};

    // Reads `file`, or the default location when none is given. Where the
    // platform has no per-user data directory, progress stays in memory.
    explicit ProgressStore(std::optional<QString> file = std::nullopt, QObject *parent = nullptr);
    // Carries out a pending write and waits for it.
    ~ProgressStore() override;

    // ".../Swift Kestrun/progress.json" in the per-user data directory, if any.
    static std::optional<QString> defaultFile();

    std::optional<QString> file() const { return m_file; }
    const Saved &saved() const { return m_saved; }

    bool isDone(const QString &id) const;
    qsizetype count(const QList<Lesson> &lessons) const;
    // The saved code, else the lesson's seed, else nothing.
    QString code(const Lesson &lesson) const;

    void setCode(const QString &text, const QString &id);
    void resetCode(const QString &id);
    // Keeps the first date when the lesson was already done.
    void complete(const QString &id);
    // Records the last lesson opened; the same one again changes nothing.
    void visit(const QString &id);
    void toggle(int tick, const QString &id);
    // Forgets all progress at once.
    void reset();

    // True from a change until its write has been handed to the worker.
    bool writePending() const { return m_timer.isActive(); }
    // Writes a pending change now and waits for every write in flight.
    // Called at quit and on destruction, so that no change is lost.
    void flush();

    // The file format: keys sorted, compact, dates as UTC with whole seconds.
    // An empty result means the record cannot be encoded.
    static QByteArray encode(const Saved &saved);
    // Nothing for anything but a complete, well-formed record.
    static std::optional<Saved> decode(const QByteArray &json);
    // Writes the record atomically, creating the directory; false on failure.
    static bool write(const Saved &saved, const QString &path);

Q_SIGNALS:
    void savedChanged();
    // A write finished successfully (delivered on the store's thread).
    void written();
    // A write failed: the disk is full, or the file or its directory cannot
    // be written. The record stays in memory and the next change writes it
    // again; the file keeps its previous complete version.
    void writeFailed();

private:
    // Announces a real change of the record, then schedules a write.
    void save(bool changed);
    void startWrite();
    void writeWhenDue();

    std::optional<QString> m_file;
    Saved m_saved;
    QTimer m_timer;
    QElapsedTimer m_sinceChange;  // the timer alone may fire a millisecond early
    QThreadPool m_writer;  // one thread, so that writes land in order
};

} // namespace Kestrun
