#include "jsonreader.h"

#include <QJsonDocument>

#include <cmath>

namespace Kestrun {

JsonError::JsonError(const QString &path, const QString &problem)
    : std::runtime_error((path.isEmpty() ? problem : path + QLatin1String(": ") + problem).toStdString())
    , m_path(path)
    , m_problem(problem)
{
}

QString JsonError::message() const
{
    return m_path.isEmpty() ? m_problem : m_path + QLatin1String(": ") + m_problem;
}

JsonReader::JsonReader(const QJsonValue &value, const QString &path)
    : m_value(value)
    , m_step(path.isEmpty() ? nullptr : std::make_shared<const Step>(Step{nullptr, path, -1}))
{
}

JsonReader::JsonReader(const QJsonValue &value, std::shared_ptr<const Step> step)
    : m_value(value)
    , m_step(std::move(step))
{
}

QJsonValue JsonReader::parse(const QByteArray &json)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(json, &error);
    if (error.error != QJsonParseError::NoError)
        throw JsonError({}, QStringLiteral("not valid JSON at byte %1: %2").arg(error.offset).arg(error.errorString()));
    if (document.isArray())
        return document.array();
    return document.object();
}

QString JsonReader::path() const
{
    QList<const Step *> steps;
    for (const Step *step = m_step.get(); step; step = step->parent.get())
        steps.prepend(step);
    QString path;
    for (const Step *step : std::as_const(steps)) {
        if (step->index >= 0)
            path += QStringLiteral("[%1]").arg(step->index);
        else
            path += (path.isEmpty() ? QString() : QStringLiteral(".")) + step->name;
    }
    return path;
}

QString JsonReader::describe(const QJsonValue &value)
{
    switch (value.type()) {
    case QJsonValue::Null: return QStringLiteral("null");
    case QJsonValue::Bool: return QStringLiteral("a boolean");
    case QJsonValue::Double: return QStringLiteral("a number");
    case QJsonValue::String: return QStringLiteral("a string");
    case QJsonValue::Array: return QStringLiteral("an array");
    case QJsonValue::Object: return QStringLiteral("an object");
    case QJsonValue::Undefined: break;
    }
    return QStringLiteral("nothing");
}

void JsonReader::fail(const QString &problem) const
{
    throw JsonError(path(), problem);
}

QJsonObject JsonReader::object() const
{
    if (!m_value.isObject())
        fail(QStringLiteral("expected an object, found ") + describe(m_value));
    return m_value.toObject();
}

bool JsonReader::has(const QString &key) const
{
    const QJsonValue v = object().value(key);
    return !v.isUndefined() && !v.isNull();
}

JsonReader JsonReader::at(const QString &key) const
{
    const QJsonObject o = object();
    const auto it = o.constFind(key);
    const JsonReader child(it == o.constEnd() ? QJsonValue(QJsonValue::Undefined) : *it,
                           std::make_shared<const Step>(Step{m_step, key, -1}));
    if (it == o.constEnd())
        child.fail(QStringLiteral("missing key"));
    if (it->isNull())
        child.fail(QStringLiteral("null where a value is required"));
    return child;
}

QString JsonReader::toString() const
{
    if (!m_value.isString())
        fail(QStringLiteral("expected a string, found ") + describe(m_value));
    return m_value.toString();
}

qint64 JsonReader::toInteger() const
{
    if (!m_value.isDouble())
        fail(QStringLiteral("expected an integer, found ") + describe(m_value));
    // Qt keeps integral numbers that fit 64 bits exactly; anything else is a double.
    const QVariant v = m_value.toVariant();
    if (v.typeId() == QMetaType::LongLong)
        return v.toLongLong();
    const double d = m_value.toDouble();
    if (std::trunc(d) != d || d < -9.2e18 || d > 9.2e18)
        fail(QStringLiteral("expected an integer, found %1").arg(d));
    return static_cast<qint64>(d);
}

QString JsonReader::string(const QString &key) const
{
    return at(key).toString();
}

std::optional<QString> JsonReader::optionalString(const QString &key) const
{
    if (!has(key))
        return std::nullopt;
    return at(key).toString();
}

qint64 JsonReader::integer(const QString &key) const
{
    return at(key).toInteger();
}

bool JsonReader::boolean(const QString &key) const
{
    const JsonReader v = at(key);
    if (!v.m_value.isBool())
        v.fail(QStringLiteral("expected a boolean, found ") + describe(v.m_value));
    return v.m_value.toBool();
}

QList<JsonReader> JsonReader::elements() const
{
    if (!m_value.isArray())
        fail(QStringLiteral("expected an array, found ") + describe(m_value));
    const QJsonArray a = m_value.toArray();
    QList<JsonReader> result;
    result.reserve(a.size());
    for (qsizetype i = 0; i < a.size(); ++i)
        result.append(JsonReader(a.at(i), std::make_shared<const Step>(Step{m_step, {}, i})));
    return result;
}

QList<JsonReader> JsonReader::array(const QString &key) const
{
    return at(key).elements();
}

QStringList JsonReader::strings(const QString &key) const
{
    QStringList result;
    for (const JsonReader &element : array(key))
        result.append(element.toString());
    return result;
}

} // namespace Kestrun
