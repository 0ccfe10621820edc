#include "course/course.h"
#include "course/jsonreader.h"
#include "course/resources.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>

using namespace Kestrun;

using namespace Qt::Literals::StringLiterals;

namespace {

// A course that holds every record and every kind of block once.
QByteArray richCourse()
{
    QFile file(QStringLiteral(KESTRUN_TEST_DATA "/rich-course.json"));
    if (!file.open(QIODevice::ReadOnly))
        qFatal("missing test data");
    return file.readAll();
}

// The first lesson of the rich course with one piece of its text replaced.
Lesson editedLesson(const char *from = "", const char *to = "")
{
    return Course::decode(richCourse().replace(from, to)).lessons().at(0);
}

QJsonValue wrongType(const QJsonValue &v)
{
    switch (v.type()) {
    case QJsonValue::String: return 7;
    case QJsonValue::Double: return u"7"_s;
    case QJsonValue::Bool: return u"true"_s;
    case QJsonValue::Array: return QJsonObject{};
    default: return QJsonArray{};
    }
}

struct Mutation {
    QString path;
    QString what;
    QJsonValue document;
};

// Every document that differs from `v` by one removed key, one null or one
// value of the wrong type, with the path of the change.
QList<Mutation> mutations(const QJsonValue &v, const QString &path = {})
{
    QList<Mutation> out;
    const auto wrap = [&](const QString &child, const QJsonValue &value, auto &&put) {
        QList<Mutation> inner{{child, u"wrong type"_s, wrongType(value)}};
        if (v.isObject())
            inner.append({child, u"null"_s, QJsonValue()});
        for (const Mutation &m : inner + mutations(value, child))
            out.append({m.path, m.what, put(m.document)});
    };
    if (v.isObject()) {
        const QJsonObject o = v.toObject();
        for (auto it = o.begin(); it != o.end(); ++it) {
            const QString child = path.isEmpty() ? it.key() : path + u'.' + it.key();
            QJsonObject removed = o;
            removed.remove(it.key());
            out.append({child, u"missing key"_s, removed});
            wrap(child, *it, [&](const QJsonValue &d) { QJsonObject c = o; c[it.key()] = d; return c; });
        }
    } else if (v.isArray()) {
        const QJsonArray a = v.toArray();
        for (qsizetype i = 0; i < a.size(); ++i)
            wrap(path + u"[%1]"_s.arg(i), a[i], [&](const QJsonValue &d) { QJsonArray c = a; c[i] = d; return c; });
    }
    return out;
}

// Lessons by chapter and module, e.g. {{{"a", "b"}, {}}, {}, {{"c"}}}.
Course courseOf(const QList<QList<QStringList>> &layout)
{
    Course c;
    for (const QList<QStringList> &modules : layout) {
        Chapter chapter{u"Chapter %1"_s.arg(c.chapters.size() + 1), {}, {}};
        for (const QStringList &ids : modules) {
            Module m{u"m%1"_s.arg(chapter.modules.size()), {}, {}};
            for (const QString &id : ids)
                m.lessons.append(Lesson{id, {}, {}, {}, {}, {}, {}, {}, {}, {}, {}});
            chapter.modules.append(m);
        }
        c.chapters.append(chapter);
    }
    return c;
}

} // namespace

class TestCourse : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // Every way of breaking every value of a complete course, one at a time:
    // each fails with an error that starts with the path of the change, except
    // that the seed and a paragraph's text may be absent or null.
    void everyMalformedShapeNamesItsPath()
    {
        const QList<Mutation> all = mutations(QJsonDocument::fromJson(richCourse()).object());
        QVERIFY(all.size() > 150);
        QStringList problems;
        for (const Mutation &m : all) {
            const bool tolerated = m.what != "wrong type"_L1
                && (m.path.endsWith(".seed"_L1) || m.path.endsWith("description[1].text"_L1));
            QString outcome = u"accepted"_s;
            try {
                Course::decode(QJsonDocument(m.document.toObject()).toJson());
            } catch (const Course::LoadError &e) {
                outcome = e.message();
            }
            if (tolerated != (outcome == "accepted"_L1) || (!tolerated && !outcome.startsWith(m.path + ": "_L1)))
                problems << m.what + u" at "_s + m.path + u" gave "_s + outcome;
        }
        QVERIFY2(problems.isEmpty(), qPrintable(problems.join(u'\n')));
    }

    void edits_data()
    {
        QTest::addColumn<QByteArray>("from");
        QTest::addColumn<QByteArray>("to");
        QTest::addColumn<QString>("error");  // empty: the course loads
        const QString lesson = u"chapters[0].modules[0].lessons[0]."_s;
        QTest::newRow("fractional minutes") << "\"minutes\": 5"_ba << "\"minutes\": 2.5"_ba << lesson + "minutes: expected an integer";
        QTest::newRow("whole minutes as a decimal") << "\"minutes\": 5"_ba << "\"minutes\": 5.0"_ba << "";
        QTest::newRow("lesson type in capitals") << "\"type\": \"lesson\""_ba << "\"type\": \"Lesson\""_ba << lesson + "type: unknown lesson type";
        QTest::newRow("check kind in capitals") << "\"kind\": \"swift\""_ba << "\"kind\": \"Swift\""_ba << lesson + "tests[0].checks[0].kind: unknown check kind";
        // The message keeps what follows a NUL character in the document.
        QTest::newRow("check kind with a NUL") << "\"kind\": \"swift\""_ba << "\"kind\": \"sw\\u0000ift\""_ba
                                               << lesson + u"tests[0].checks[0].kind: unknown check kind \"sw\0ift\""_s;
        QTest::newRow("not JSON") << "\"id\": \"c\","_ba << "\"id\": \"c\""_ba << "not valid JSON";
    }

    void edits()
    {
        QFETCH(QByteArray, from);
        QFETCH(QByteArray, to);
        QFETCH(QString, error);
        QVERIFY(richCourse().contains(from));
        try {
            editedLesson(from, to);
            QVERIFY2(error.isEmpty(), "accepted");
        } catch (const Course::LoadError &e) {
            QVERIFY2(!error.isEmpty() && e.message().startsWith(error), qPrintable(e.message()));
        }
    }

    void decodedValues()
    {
        QCOMPARE(editedLesson().description, (QList<Block>{Block::heading(2, u"H"_s), Block::paragraph(u"P"_s),
            Block::codeListing(u"swift"_s, u"x"_s), Block::list(true, {u"i"_s}), Block::note(u"tip"_s, {Block::rule()}),
            Block::quote({}), Block::table({u"h"_s}, {{u"c"_s}})}));
        // A null seed is no seed, which differs from an empty one.
        QCOMPARE(editedLesson("\"let x = 1\"", "null").seed, std::nullopt);
        QCOMPARE(editedLesson("\"let x = 1\"", "\"\"").seed, std::optional<QString>(QString()));
        // An unknown type is a paragraph of its text; keys a type does not read are ignored.
        QCOMPARE(editedLesson("\"heading\"", "\"Heading\"").description[0], Block::paragraph(u"H"_s));
        QCOMPARE(editedLesson("\"type\": \"paragraph\"", "\"type\": \"rule\"").description[1], Block::rule());

        const QByteArray nested = R"([{"type":"note","kind":"Note","blocks":[{"type":"quote","blocks":[
            {"type":"note","kind":"Warning","blocks":[]}]}]}])";
        QCOMPARE(Block::decodeList(JsonReader(JsonReader::parse(nested))),
                 QList<Block>{Block::note(u"Note"_s, {Block::quote({Block::note(u"Warning"_s, {})})})});
    }

    void fileProblems()
    {
        QTemporaryDir dir;
        const auto kindOf = [](const QString &path) -> std::optional<Course::LoadError::Kind> {
            try {
                Course::load(path);
                return std::nullopt;
            } catch (const Course::LoadError &e) {
                return e.kind();
            }
        };
        const auto written = [&](const char *summary) {
            QFile file(dir.filePath(u"course.json"_s));
            if (!file.open(QIODevice::WriteOnly) || file.write(richCourse().replace("\"Y\"", summary)) < 0)
                qFatal("cannot write a test file");
            return file.fileName();
        };
        QCOMPARE(kindOf(dir.filePath(u"nothing.json"_s)), Course::LoadError::Kind::missing);
        QCOMPARE(kindOf(dir.path()), Course::LoadError::Kind::unreadable);
        QCOMPARE(kindOf(written("\"caf\xe9\"")), Course::LoadError::Kind::notUtf8);
        // Loading a file applies the wording substitutions.
        QCOMPARE(Course::load(written("\"Code right here in your browser\"")).summary, u"Code right here in the app"_s);
    }

    void wordingSubstitutions_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");
        QTest::newRow("every phrase") << "Try it right here in your browser: this site's exercises, the editor on this site, "
                                         "all the exercises on this site. Every lesson on this site. Every lesson on this site."
                                      << "Try it right here in the app: this app's exercises, the editor in this app, "
                                         "all the exercises in this app. Every lesson in this app. Every lesson in this app.";
        QTest::newRow("capital B kept") << "right here in your Browser" << "right here in your Browser";
        QTest::newRow("escaped apostrophe kept") << "this site\\u0027s exercises" << "this site\\u0027s exercises";
    }

    void wordingSubstitutions()
    {
        QFETCH(QString, text);
        QFETCH(QString, expected);
        QCOMPARE(Course::substituteWording(text), expected);
    }

    void lookups()
    {
        const Course c = courseOf({{{u"a"_s, u"b"_s}, {}, {u"c"_s}}, {}, {{u"d"_s}, {u"e"_s, u"a"_s}}});
        const auto around = [&](const QString &id) {
            const Course::Neighbours n = c.neighbours(id);
            return (n.previous ? n.previous->id : u"-"_s) + u' ' + (n.next ? n.next->id : u"-"_s);
        };
        QCOMPARE(around(u"c"_s), u"b d"_s);  // across an empty module, then across an empty chapter
        QCOMPARE(around(u"d"_s), u"c e"_s);
        QCOMPARE(around(u"a"_s), u"- b"_s);  // the first of two lessons with one id wins
        QCOMPARE(around(u"zzz"_s), u"- -"_s);
        QCOMPARE(c.module(u"e"_s)->module.id, u"m1"_s);
        QCOMPARE(c.module(u"e"_s)->chapter.title, u"Chapter 3"_s);
        QVERIFY(!c.module(u"zzz"_s) && !c.lesson(u"zzz"_s));
        // Lessons are identified by id alone.
        Lesson other = *c.lesson(u"a"_s);
        other.title = u"Other"_s;
        QCOMPARE(other, c.chapters[2].modules[1].lessons[1]);
        QCOMPARE(qHash(other), qHash(u"a"_s));
    }

    void shippedCourse()
    {
        QVERIFY(!Resources::url(u"no-such-file.json"_s));
        const Course course = Course::load();
        QCOMPARE(course.chapters.size(), 9);  // the home screen says "nine chapters"
        QVERIFY(course.lesson(u"values-constants"_s));
    }
};

QTEST_GUILESS_MAIN(TestCourse)
#include "tst_course.moc"
