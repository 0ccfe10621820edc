#pragma once

// What the course and block targets check against the parsed JSON itself:
// a decoded block holds exactly what its object says, and a decoding error
// names a place in the document where the problem really is.
#include "fuzzing.h"

#include "course/block.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QJsonValue>
#include <QRegularExpression>

namespace Kestrun::Fuzzing {

inline QStringList stringsOf(const QJsonValue &value)
{
    QStringList list;
    for (const QJsonValue &element : value.toArray())
        list.append(element.toString());
    return list;
}

inline void checkBlocks(const QList<Block> &blocks, const QJsonValue &json);

// The block's case and payload follow from its object, and the fields of
// the other cases stay empty.
inline void checkBlock(const Block &block, const QJsonObject &object)
{
    const QString type = object.value(QStringLiteral("type")).toString();
    Block expected;  // every field empty, kind paragraph
    const auto field = [&](const char *key) { return object.value(QLatin1String(key)); };
    if (type == QLatin1String("heading")) {
        expected.kind = Block::Kind::heading;
        expected.level = field("level").toInteger();
        expected.text = field("text").toString();
    } else if (type == QLatin1String("code")) {
        expected.kind = Block::Kind::code;
        expected.language = field("lang").toString();
        expected.code = field("code").toString();
    } else if (type == QLatin1String("list")) {
        expected.kind = Block::Kind::list;
        expected.ordered = field("ordered").toBool();
        expected.items = stringsOf(field("items"));
    } else if (type == QLatin1String("note")) {
        expected.kind = Block::Kind::note;
        expected.noteKind = field("kind").toString();
        expected.blocks = block.blocks;  // compared element by element below
        checkBlocks(block.blocks, field("blocks"));
    } else if (type == QLatin1String("quote")) {
        expected.kind = Block::Kind::quote;
        expected.blocks = block.blocks;
        checkBlocks(block.blocks, field("blocks"));
    } else if (type == QLatin1String("table")) {
        expected.kind = Block::Kind::table;
        expected.head = stringsOf(field("head"));
        for (const QJsonValue &row : field("rows").toArray())
            expected.rows.append(stringsOf(row));
    } else if (type == QLatin1String("rule")) {
        expected.kind = Block::Kind::rule;
    } else {
        expected.text = field("text").toString();  // empty when absent or null
    }
    FUZZ_CHECK(block == expected, QStringLiteral("block of type \"%1\" differs from its object").arg(type));
}

inline void checkBlocks(const QList<Block> &blocks, const QJsonValue &json)
{
    const QJsonArray array = json.toArray();
    FUZZ_CHECK(json.isArray() && blocks.size() == array.size(), QStringLiteral("block count"));
    for (qsizetype i = 0; i < blocks.size(); ++i)
        checkBlock(blocks[i], array[i].toObject());
}

inline bool isInteger(const QJsonValue &value)
{
    // toInteger gives its default for anything that is not a whole number.
    return value.toInteger(1) == value.toInteger(2);
}

// Checks an error message "path: problem" (or a bare problem at the root)
// against the document: every step of the path exists, and what is found at
// its end, or missing there, is what the problem says.
inline void checkErrorPath(const QString &message, const QJsonValue &root)
{
    static const QRegularExpression shape(
        QStringLiteral("^(?:((?:[A-Za-z]+|\\[\\d+\\])(?:\\.[A-Za-z]+|\\[\\d+\\])*): )?(.*)$"),
        QRegularExpression::DotMatchesEverythingOption);
    static const QRegularExpression step(QStringLiteral("\\.?([A-Za-z]+)|\\[(\\d+)\\]"));
    const QRegularExpressionMatch m = shape.match(message);
    FUZZ_CHECK(m.hasMatch(), message);
    const QString path = m.captured(1);
    const QString problem = m.captured(2);
    FUZZ_CHECK(!problem.isEmpty(), message);

    QJsonValue at = root;
    bool missing = false;
    qsizetype consumed = 0;
    for (auto it = step.globalMatch(path); it.hasNext();) {
        const QRegularExpressionMatch s = it.next();
        FUZZ_CHECK(s.capturedStart() == consumed && !missing, QStringLiteral("path does not read: ") + message);
        consumed = s.capturedEnd();
        if (s.hasCaptured(1)) {
            FUZZ_CHECK(at.isObject(), QStringLiteral("path steps into a non-object: ") + message);
            const QJsonObject object = at.toObject();
            missing = !object.contains(s.captured(1));
            at = object.value(s.captured(1));
        } else {
            const QJsonArray array = at.toArray();
            const qsizetype index = s.captured(2).toLongLong();
            FUZZ_CHECK(at.isArray() && index < array.size(), QStringLiteral("path steps past an array: ") + message);
            at = array.at(index);
        }
    }
    FUZZ_CHECK(consumed == path.size(), message);

    const auto found = [&](const QJsonValue &v) {
        switch (v.type()) {
        case QJsonValue::Null: return QStringLiteral("null");
        case QJsonValue::Bool: return QStringLiteral("a boolean");
        case QJsonValue::Double: return QStringLiteral("a number");
        case QJsonValue::String: return QStringLiteral("a string");
        case QJsonValue::Array: return QStringLiteral("an array");
        case QJsonValue::Object: return QStringLiteral("an object");
        case QJsonValue::Undefined: break;
        }
        return QStringLiteral("nothing");
    };
    const auto says = [&](const char *text) { return problem.startsWith(QLatin1String(text)); };
    FUZZ_CHECK(missing == says("missing key"), QStringLiteral("a key missing, or reported missing: ") + message);
    if (missing)
        FUZZ_CHECK(problem == QLatin1String("missing key"), message);
    else if (says("null where"))
        FUZZ_CHECK(at.isNull(), message);
    else if (says("expected an integer, found a") || says("expected an integer, found n"))
        FUZZ_CHECK(problem.endsWith(found(at)) && !at.isDouble(), message);
    else if (says("expected an integer, found "))
        FUZZ_CHECK(at.isDouble() && !isInteger(at), message);  // a fraction, or beyond 64 bits
    else if (says("expected a string, found ") || says("expected an object, found ")
             || says("expected a boolean, found ") || says("expected an array, found "))
        FUZZ_CHECK(problem.endsWith(QStringLiteral(", found ") + found(at)), message);
    else if (says("unknown lesson type \"") || says("unknown check kind \""))
        FUZZ_CHECK(at.isString() && problem.endsWith(QLatin1Char('"') + at.toString() + QLatin1Char('"')), message);
    else
        FUZZ_CHECK(path.isEmpty() && says("not valid JSON at byte "), QStringLiteral("unexpected problem: ") + message);
}

} // namespace Kestrun::Fuzzing
