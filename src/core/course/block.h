#pragma once

#include <QList>
#include <QString>
#include <QStringList>

namespace Kestrun {

class JsonReader;

// One block of lesson text. Blocks are authored as structured JSON; only
// the short texts inside them carry (inline) Markdown.
struct Block {
    enum class Kind { heading, paragraph, code, list, note, quote, table, rule };

    Kind kind = Kind::paragraph;
    qint64 level = 0;           // heading: smaller is more important
    QString text;               // heading, paragraph
    QString language;           // code
    QString code;               // code
    bool ordered = false;       // list
    QStringList items;          // list
    QString noteKind;           // note: its title, which also picks icon and colour
    QList<Block> blocks;        // note, quote
    QStringList head;           // table
    QList<QStringList> rows;    // table: rows need not match the head's length

    static Block heading(qint64 level, const QString &text);
    static Block paragraph(const QString &text);
    static Block codeListing(const QString &language, const QString &code);
    static Block list(bool ordered, const QStringList &items);
    static Block note(const QString &kind, const QList<Block> &blocks);
    static Block quote(const QList<Block> &blocks);
    static Block table(const QStringList &head, const QList<QStringList> &rows);
    static Block rule();

    // Throws JsonError naming the key path when the object is malformed.
    static Block decode(const JsonReader &json);
    static QList<Block> decodeList(const JsonReader &json);

    friend bool operator==(const Block &, const Block &) = default;
};

} // namespace Kestrun
