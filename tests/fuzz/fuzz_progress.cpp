// The progress decoder on any bytes: it accepts only a JSON object with the
// three maps; what it accepts encodes in the file's form (sorted compact
// keys, dates as whole UTC seconds) and decodes back to the same record,
// and encoding that again gives the same bytes.
#include "fuzzing.h"

#include "progress/progressstore.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>

using namespace Kestrun;
using namespace Kestrun::Fuzzing;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray json = bytes(data, size);
    const std::optional<ProgressStore::Saved> saved = ProgressStore::decode(json);
    if (!saved)
        return 0;

    const QJsonObject root = QJsonDocument::fromJson(json).object();
    for (const char *key : {"code", "done", "ticks"})
        FUZZ_CHECK(root.value(QLatin1String(key)).isObject(), QString::fromUtf8(json));
    FUZZ_CHECK(saved->last.has_value() == root.value(QLatin1String("last")).isString(), QString::fromUtf8(json));

    const QByteArray encoded = ProgressStore::encode(*saved);
    FUZZ_CHECK(!encoded.isEmpty(), QString::fromUtf8(json));
    const QJsonObject written = QJsonDocument::fromJson(encoded).object();
    FUZZ_CHECK(QJsonDocument(written).toJson(QJsonDocument::Compact) == encoded, QString::fromUtf8(encoded));
    static const QRegularExpression date(QStringLiteral("^[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9]{2}:[0-9]{2}:[0-9]{2}Z$"));
    const QJsonObject done = written.value(QLatin1String("done")).toObject();
    for (auto it = done.constBegin(); it != done.constEnd(); ++it)
        FUZZ_CHECK(date.match(it.value().toString()).hasMatch(), QString::fromUtf8(encoded));

    const std::optional<ProgressStore::Saved> again = ProgressStore::decode(encoded);
    FUZZ_CHECK(again && *again == *saved, QString::fromUtf8(json) + QStringLiteral("\nencoded ") + QString::fromUtf8(encoded));
    FUZZ_CHECK(ProgressStore::encode(*again) == encoded, QString::fromUtf8(encoded));
    return 0;
}
