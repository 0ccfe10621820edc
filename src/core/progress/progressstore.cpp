#include "progressstore.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>
#include <QRunnable>
#include <QStandardPaths>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>

#ifdef KESTRUN_TSAN
#include <sanitizer/tsan_interface.h>
#endif

#ifdef Q_OS_UNIX
#include <fcntl.h>
#include <unistd.h>
#endif

namespace Kestrun {

namespace {

const QString doneKey = QStringLiteral("done");
const QString codeKey = QStringLiteral("code");
const QString ticksKey = QStringLiteral("ticks");
const QString lastKey = QStringLiteral("last");

// "2026-11-16T20:20:12Z"; empty when the date has no such form.
QString dateText(const QDateTime &date)
{
    if (!date.isValid())
        return {};
    const QString text = date.toUTC().toString(Qt::ISODate);
    return text.size() == 20 ? text : QString();
}

// Only the exact form dateText writes: Qt would also take fractions,
// offsets and 24:00, which are not this file's dates.
std::optional<QDateTime> parseDate(const QJsonValue &value)
{
    if (!value.isString())
        return std::nullopt;
    const QString text = value.toString();
    const QDateTime date = QDateTime::fromString(text, Qt::ISODate);
    if (!date.isValid() || dateText(date) != text)
        return std::nullopt;
    return date.toUTC();
}

std::optional<int> parseTick(const QJsonValue &value)
{
    if (!value.isDouble())
        return std::nullopt;
    const double number = value.toDouble();
    if (number != std::floor(number) || number < std::numeric_limits<int>::min()
        || number > std::numeric_limits<int>::max())
        return std::nullopt;
    return static_cast<int>(number);
}

// A required member that must be an object.
std::optional<QJsonObject> objectAt(const QJsonObject &root, const QString &key)
{
    const QJsonValue value = root.value(key);
    if (!value.isObject())
        return std::nullopt;
    return value.toObject();
}

// Some file systems report a full disk only when the data is synced.
bool syncFile(int fd)
{
#ifdef Q_OS_UNIX
    return ::fsync(fd) == 0;
#else
    Q_UNUSED(fd)
    return true;
#endif
}

// One write, run by the writer thread. Qt's thread pool hands a task over
// through its own futex-based lock, which ThreadSanitizer cannot see in the
// uninstrumented Qt; the hand-off is declared to it, so that it knows the
// copies the task holds were made before the task runs.
class WriteTask : public QRunnable {
public:
    explicit WriteTask(std::function<void()> work)
        : m_work(std::move(work))
    {
    }

    // Called on the store's thread just before the task goes to the pool.
    void handOver()
    {
#ifdef KESTRUN_TSAN
        __tsan_release(this);
#endif
    }

    void run() override
    {
#ifdef KESTRUN_TSAN
        __tsan_acquire(this);
#endif
        m_work();
    }

private:
    std::function<void()> m_work;
};

// Makes the new directory entry survive a power cut, not only the bytes.
void syncDirectory(const QString &directory)
{
#ifdef Q_OS_UNIX
    const int fd = ::open(QFile::encodeName(directory).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0)
        return;
    ::fsync(fd);
    ::close(fd);
#else
    Q_UNUSED(directory)
#endif
}

} // namespace

ProgressStore::ProgressStore(std::optional<QString> file, QObject *parent)
    : QObject(parent)
    , m_file(file ? file : defaultFile())
    , m_timer(this)
{
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &ProgressStore::writeWhenDue);
    m_writer.setMaxThreadCount(1);

    // Learners expect nothing they did to be lost when they quit at once.
    if (QCoreApplication *app = QCoreApplication::instance())
        connect(app, &QCoreApplication::aboutToQuit, this, &ProgressStore::flush);

    if (!m_file)
        return;
    QFile stored(*m_file);
    if (!stored.open(QIODevice::ReadOnly))
        return;
    // A damaged file counts as no progress and the next change replaces it,
    // so keep a copy beside it: the learner's work may still be in there.
    if (std::optional<Saved> loaded = decode(stored.readAll())) {
        m_saved = std::move(*loaded);
    } else {
        const QString copy = *m_file + QStringLiteral(".damaged");
        QFile::remove(copy);
        if (!stored.copy(copy))
            qWarning("Could not keep a copy of the damaged progress file %s", qPrintable(*m_file));
    }
}

ProgressStore::~ProgressStore()
{
    flush();
}

std::optional<QString> ProgressStore::defaultFile()
{
    const QString base = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    if (base.isEmpty())
        return std::nullopt;
    return QDir(base).filePath(QStringLiteral("Swift Kestrun/progress.json"));
}

bool ProgressStore::isDone(const QString &id) const
{
    return m_saved.done.contains(id);
}

qsizetype ProgressStore::count(const QList<Lesson> &lessons) const
{
    return std::count_if(lessons.cbegin(), lessons.cend(),
                         [this](const Lesson &lesson) { return isDone(lesson.id); });
}

QString ProgressStore::code(const Lesson &lesson) const
{
    const auto it = m_saved.code.constFind(lesson.id);
    if (it != m_saved.code.cend())
        return *it;
    return lesson.seed.value_or(QString());
}

void ProgressStore::setCode(const QString &text, const QString &id)
{
    const auto it = m_saved.code.constFind(id);
    const bool changed = it == m_saved.code.cend() || *it != text;
    if (changed)
        m_saved.code.insert(id, text);
    save(changed);
}

void ProgressStore::resetCode(const QString &id)
{
    save(m_saved.code.remove(id) > 0);
}

void ProgressStore::complete(const QString &id)
{
    const bool changed = !isDone(id);
    // Whole seconds, as the file keeps them, so a reload gives the same record.
    if (changed)
        m_saved.done.insert(id, QDateTime::fromSecsSinceEpoch(QDateTime::currentSecsSinceEpoch(), Qt::UTC));
    save(changed);
}

void ProgressStore::visit(const QString &id)
{
    if (m_saved.last == id)
        return;
    m_saved.last = id;
    save(true);
}

void ProgressStore::toggle(int tick, const QString &id)
{
    QSet<int> &ticks = m_saved.ticks[id];
    if (!ticks.remove(tick))
        ticks.insert(tick);
    save(true);
}

void ProgressStore::reset()
{
    const bool changed = m_saved != Saved{};
    m_saved = Saved{};
    save(changed);
}

void ProgressStore::save(bool changed)
{
    if (changed)
        Q_EMIT savedChanged();
    if (m_file) {
        m_sinceChange.start();
        m_timer.start(writeDelay);
    }
}

void ProgressStore::writeWhenDue()
{
    // Timers count whole milliseconds from a rounded start; wait out the rest.
    const qint64 leftNs = std::chrono::nanoseconds(writeDelay).count() - m_sinceChange.nsecsElapsed();
    if (leftNs > 0) {
        m_timer.start(std::chrono::milliseconds((leftNs + 999'999) / 1'000'000));
        return;
    }
    startWrite();
}

void ProgressStore::startWrite()
{
    if (!m_file)
        return;
    // The worker gets its own copies and never touches the store itself,
    // except to announce how the write went, back on the store's thread.
    // The outcome goes back by name, not through a functor: a functor's slot
    // object would be shared between the threads through Qt's uninstrumented
    // reference count, which ThreadSanitizer takes for a race.
    auto *task = new WriteTask([this, saved = m_saved, path = *m_file] {
        const char *outcome = write(saved, path) ? "written" : "writeFailed";
        QMetaObject::invokeMethod(this, outcome, Qt::QueuedConnection);
    });
    task->handOver();
    m_writer.start(task);
}

void ProgressStore::flush()
{
    if (m_timer.isActive()) {
        m_timer.stop();
        startWrite();
    }
    m_writer.waitForDone();
}

QByteArray ProgressStore::encode(const Saved &saved)
{
    QJsonObject done;
    for (auto it = saved.done.cbegin(); it != saved.done.cend(); ++it) {
        const QString text = dateText(it.value());
        if (text.isEmpty())
            return {};
        done.insert(it.key(), text);
    }

    QJsonObject code;
    for (auto it = saved.code.cbegin(); it != saved.code.cend(); ++it)
        code.insert(it.key(), it.value());

    QJsonObject ticks;
    for (auto it = saved.ticks.cbegin(); it != saved.ticks.cend(); ++it) {
        QList<int> sorted = it.value().values();
        std::sort(sorted.begin(), sorted.end());
        QJsonArray array;
        for (int tick : sorted)
            array.append(tick);
        ticks.insert(it.key(), array);
    }

    // QJsonObject keeps its keys sorted, which the format asks for.
    QJsonObject root{{codeKey, code}, {doneKey, done}, {ticksKey, ticks}};
    if (saved.last)
        root.insert(lastKey, *saved.last);
    return QJsonDocument(root).toJson(QJsonDocument::Compact);
}

std::optional<ProgressStore::Saved> ProgressStore::decode(const QByteArray &json)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(json, &error);
    if (error.error != QJsonParseError::NoError || !document.isObject())
        return std::nullopt;
    const QJsonObject root = document.object();

    const std::optional<QJsonObject> done = objectAt(root, doneKey);
    const std::optional<QJsonObject> code = objectAt(root, codeKey);
    const std::optional<QJsonObject> ticks = objectAt(root, ticksKey);
    if (!done || !code || !ticks)
        return std::nullopt;

    Saved saved;
    for (auto it = done->constBegin(); it != done->constEnd(); ++it) {
        const std::optional<QDateTime> date = parseDate(it.value());
        if (!date)
            return std::nullopt;
        saved.done.insert(it.key(), *date);
    }
    for (auto it = code->constBegin(); it != code->constEnd(); ++it) {
        if (!it.value().isString())
            return std::nullopt;
        saved.code.insert(it.key(), it.value().toString());
    }
    for (auto it = ticks->constBegin(); it != ticks->constEnd(); ++it) {
        if (!it.value().isArray())
            return std::nullopt;
        QSet<int> &set = saved.ticks[it.key()];
        for (const QJsonValue &element : it.value().toArray()) {
            const std::optional<int> tick = parseTick(element);
            if (!tick)
                return std::nullopt;
            set.insert(*tick);
        }
    }

    const QJsonValue last = root.value(lastKey);
    if (last.isString())
        saved.last = last.toString();
    else if (!last.isUndefined() && !last.isNull())
        return std::nullopt;
    return saved;
}

bool ProgressStore::write(const Saved &saved, const QString &path)
{
    const QString directory = QFileInfo(path).absolutePath();
    QDir().mkpath(directory);  // a failure shows when the file is opened
    const QByteArray bytes = encode(saved);
    if (bytes.isEmpty())
        return false;
    // A complete new file or the previous one, never a torn one. The bytes
    // must reach the disk before commit(): Qt's commit ignores a failure to
    // flush its buffer, and a full disk would leave an empty file in place.
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.flush()
        || !syncFile(file.handle()) || !file.commit())
        return false;
    syncDirectory(directory);
    return true;
}

} // namespace Kestrun
