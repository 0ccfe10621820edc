#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QJsonValue>
#include <QList>
#include <QString>
#include <QStringList>

#include <memory>
#include <optional>
#include <stdexcept>

namespace Kestrun {

// A decoding failure that names where in the document it happened,
// for example "chapters[1].modules[0].lessons[3].hints: missing key".
class JsonError : public std::runtime_error {
public:
    JsonError(const QString &path, const QString &problem);
    QString path() const { return m_path; }
    QString problem() const { return m_problem; }
    // The whole text; what() stops at a NUL character that the document may hold.
    QString message() const;

private:
    QString m_path;
    QString m_problem;
};

// Strict, path-tracking access to a parsed JSON value. Every accessor throws
// JsonError when a required key is missing, null or of the wrong JSON type.
class JsonReader {
public:
    explicit JsonReader(const QJsonValue &value, const QString &path = {});

    // Parses a whole document; invalid JSON throws a JsonError at the root.
    static QJsonValue parse(const QByteArray &json);

    QString path() const;
    const QJsonValue &value() const { return m_value; }

    JsonReader at(const QString &key) const;  // the value must be present and not null
    bool has(const QString &key) const;       // present and not null

    QString string(const QString &key) const;
    std::optional<QString> optionalString(const QString &key) const;
    qint64 integer(const QString &key) const;
    bool boolean(const QString &key) const;
    QStringList strings(const QString &key) const;
    QList<JsonReader> array(const QString &key) const;
    QList<JsonReader> elements() const;  // this value must be an array
    QJsonObject object() const;          // this value must be an object

    QString toString() const;  // this value must be a string
    qint64 toInteger() const;  // this value must be an integral number

    [[noreturn]] void fail(const QString &problem) const;

private:
    // One step of the way from the document's root, kept so that the path,
    // which only an error needs, is written out only then.
    struct Step {
        std::shared_ptr<const Step> parent;
        QString name;          // a key, or the whole path given for a root
        qsizetype index = -1;  // an array element's index; -1 for a key
    };

    JsonReader(const QJsonValue &value, std::shared_ptr<const Step> step);
    static QString describe(const QJsonValue &value);

    QJsonValue m_value;
    std::shared_ptr<const Step> m_step;  // null for a root without a path
};

} // namespace Kestrun
