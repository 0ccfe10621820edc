#include "block.h"

#include "jsonreader.h"

namespace Kestrun {

Block Block::heading(qint64 level, const QString &text)
{
    Block b;
    b.kind = Kind::heading;
    b.level = level;
    b.text = text;
    return b;
}

Block Block::paragraph(const QString &text)
{
    Block b;
    b.text = text;
    return b;
}

Block Block::codeListing(const QString &language, const QString &code)
{
    Block b;
    b.kind = Kind::code;
    b.language = language;
    b.code = code;
    return b;
}

Block Block::list(bool ordered, const QStringList &items)
{
    Block b;
    b.kind = Kind::list;
    b.ordered = ordered;
    b.items = items;
    return b;
}

Block Block::note(const QString &kind, const QList<Block> &blocks)
{
    Block b;
    b.kind = Kind::note;
    b.noteKind = kind;
    b.blocks = blocks;
    return b;
}

Block Block::quote(const QList<Block> &blocks)
{
    Block b;
    b.kind = Kind::quote;
    b.blocks = blocks;
    return b;
}

Block Block::table(const QStringList &head, const QList<QStringList> &rows)
{
    Block b;
    b.kind = Kind::table;
    b.head = head;
    b.rows = rows;
    return b;
}

Block Block::rule()
{
    Block b;
    b.kind = Kind::rule;
    return b;
}

Block Block::decode(const JsonReader &json)
{
    const QString type = json.string(QStringLiteral("type"));
    if (type == QLatin1String("heading"))
        return heading(json.integer(QStringLiteral("level")), json.string(QStringLiteral("text")));
    if (type == QLatin1String("code"))
        return codeListing(json.string(QStringLiteral("lang")), json.string(QStringLiteral("code")));
    if (type == QLatin1String("list"))
        return list(json.boolean(QStringLiteral("ordered")), json.strings(QStringLiteral("items")));
    if (type == QLatin1String("note"))
        return note(json.string(QStringLiteral("kind")), decodeList(json.at(QStringLiteral("blocks"))));
    if (type == QLatin1String("quote"))
        return quote(decodeList(json.at(QStringLiteral("blocks"))));
    if (type == QLatin1String("table")) {
        QList<QStringList> rows;
        for (const JsonReader &row : json.array(QStringLiteral("rows"))) {
            QStringList cells;
            for (const JsonReader &cell : row.elements())
                cells.append(cell.toString());
            rows.append(cells);
        }
        return table(json.strings(QStringLiteral("head")), rows);
    }
    if (type == QLatin1String("rule"))
        return rule();
    // Any other type, "paragraph" among them, is a paragraph of its optional text.
    return paragraph(json.optionalString(QStringLiteral("text")).value_or(QString()));
}

QList<Block> Block::decodeList(const JsonReader &json)
{
    QList<Block> blocks;
    for (const JsonReader &element : json.elements())
        blocks.append(decode(element));
    return blocks;
}

} // namespace Kestrun
