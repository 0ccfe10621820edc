#include "course.h"
#include "jsonreader.h"
#include "resources.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

namespace {

// A course that holds every record and every kind of block once.
QByteArray richCourse()
{
    QFile file(QStringLiteral(KESTRUN_TEST_DATA "/rich-course.json"));
    if (!file.open(QIODevice::ReadOnly))
        qFatal("missing test data");
    return file.readAll();
}

Lesson firstLesson(const QByteArray &json)
{
    return Course::decode(json).lessons().at(0);
}

QJsonValue wrongType(const QJsonValue &v)
{
    switch (v.type()) {
    case QJsonValue::String: return 7;
    case QJsonValue::Double: return QStringLiteral("7");
    case QJsonValue::Bool: return QStringLiteral("true");
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
        QList<Mutation> inner{{child, QStringLiteral("wrong type"), wrongType(value)}};
        if (v.isObject())
            inner.append({child, QStringLiteral("null"), QJsonValue()});
        for (const Mutation &m : inner + mutations(value, child))
            out.append({m.path, m.what, put(m.document)});
    };
    if (v.isObject()) {
        const QJsonObject o = v.toObject();
        for (auto it = o.begin(); it != o.end(); ++it) {
            const QString child = path.isEmpty() ? it.key() : path + QLatin1Char('.') + it.key();
            QJsonObject removed = o;
            removed.remove(it.key());
            out.append({child, QStringLiteral("missing key"), removed});
            wrap(child, *it, [&](const QJsonValue &d) { QJsonObject c = o; c[it.key()] = d; return c; });
        }
    } else if (v.isArray()) {
        const QJsonArray a = v.toArray();
        for (qsizetype i = 0; i < a.size(); ++i)
            wrap(path + QStringLiteral("[%1]").arg(i), a[i], [&](const QJsonValue &d) { QJsonArray c = a; c[i] = d; return c; });
    }
    return out;
}

// Lessons by chapter and module, e.g. {{{"a", "b"}, {}}, {}, {{"c"}}}.
Course courseOf(const QList<QList<QStringList>> &layout)
{
    Course c;
    for (const QList<QStringList> &modules : layout) {
        Chapter chapter{QStringLiteral("Chapter %1").arg(c.chapters.size() + 1), {}, {}};
        for (const QStringList &ids : modules) {
            Module m{QStringLiteral("m%1").arg(chapter.modules.size()), {}, {}};
            for (const QString &id : ids)
                m.lessons.append(Lesson{id, {}, {}, {}, {}, {}, {}, {}, {}, {}, {}});
            chapter.modules.append(m);
        }
        c.chapters.append(chapter);
    }
    return c;
}

QStringList ids(const QList<Lesson> &lessons)
{
    QStringList result;
    for (const Lesson &l : lessons)
        result.append(l.id);
    return result;
}

} // namespace

class TestCourse : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // Every way of breaking every value of a complete course, one at a time.
    void everyMalformedShapeNamesItsPath()
    {
        const QList<Mutation> all = mutations(QJsonDocument::fromJson(richCourse()).object());
        QVERIFY(all.size() > 150);
        int failures = 0;
        for (const Mutation &m : all) {
            // Only the seed and a paragraph's text may be absent or null.
            const bool tolerated = m.what != QLatin1String("wrong type")
                && (m.path.endsWith(QLatin1String(".seed")) || m.path.endsWith(QLatin1String("description[1].text")));
            try {
                Course::decode(QJsonDocument(m.document.toObject()).toJson());
                if (!tolerated)
                    qWarning() << "accepted" << m.what << "at" << m.path;
                failures += tolerated ? 0 : 1;
            } catch (const Course::LoadError &e) {
                const bool named = e.message().startsWith(m.path + QLatin1String(": "));
                if (tolerated || !named)
                    qWarning() << m.what << "at" << m.path << "gave" << e.message();
                failures += tolerated || !named ? 1 : 0;
            }
        }
        QCOMPARE(failures, 0);
    }

    void edits_data()
    {
        QTest::addColumn<QByteArray>("from");
        QTest::addColumn<QByteArray>("to");
        QTest::addColumn<QString>("error");  // empty: the course loads
        const QString lesson = QStringLiteral("chapters[0].modules[0].lessons[0].");
        QTest::newRow("fractional minutes") << QByteArray("\"minutes\": 5") << QByteArray("\"minutes\": 2.5") << lesson + "minutes: expected an integer";
        QTest::newRow("whole minutes as a decimal") << QByteArray("\"minutes\": 5") << QByteArray("\"minutes\": 5.0") << "";
        QTest::newRow("lesson type in capitals") << QByteArray("\"type\": \"lesson\"") << QByteArray("\"type\": \"Lesson\"") << lesson + "type: unknown lesson type";
        QTest::newRow("check kind in capitals") << QByteArray("\"kind\": \"swift\"") << QByteArray("\"kind\": \"Swift\"") << lesson + "tests[0].checks[0].kind: unknown check kind";
        QTest::newRow("not JSON") << QByteArray("\"id\": \"c\",") << QByteArray("\"id\": \"c\"") << "not valid JSON";
    }

    void edits()
    {
        QFETCH(QByteArray, from);
        QFETCH(QByteArray, to);
        QFETCH(QString, error);
        QByteArray json = richCourse();
        QVERIFY(json.contains(from));
        json.replace(from, to);
        try {
            firstLesson(json);
            QVERIFY2(error.isEmpty(), "accepted");
        } catch (const Course::LoadError &e) {
            QVERIFY2(!error.isEmpty() && e.message().startsWith(error), qPrintable(e.message()));
        }
    }

    void optionalShapes()
    {
        const Lesson full = firstLesson(richCourse());
        QCOMPARE(full.seed, std::optional<QString>(QStringLiteral("let x = 1")));
        QCOMPARE(full.description[4], Block::note(QStringLiteral("tip"), {Block::rule()}));
        QCOMPARE(full.description[6], Block::table({QStringLiteral("h")}, {{QStringLiteral("c")}}));
        const auto edited = [](const char *from, const char *to) { return firstLesson(richCourse().replace(from, to)); };
        QCOMPARE(edited("\"seed\": \"let x = 1\",", "").seed, std::nullopt);
        QCOMPARE(edited("\"let x = 1\"", "null").seed, std::nullopt);
        QCOMPARE(edited("\"let x = 1\"", "\"\"").seed, std::optional<QString>(QString()));
        QCOMPARE(edited("\"text\": \"P\"", "\"text\": null").description[1], Block::paragraph({}));
        // An unknown type is a paragraph of its text; keys a type does not read are ignored.
        QCOMPARE(edited("\"heading\"", "\"Heading\"").description[0], Block::paragraph(QStringLiteral("H")));
        QCOMPARE(edited("\"type\": \"paragraph\"", "\"type\": \"rule\"").description[1], Block::rule());

        const QByteArray nested = R"([{"type":"note","kind":"Note","blocks":[{"type":"quote","blocks":[
            {"type":"note","kind":"Warning","blocks":[]}]}]}])";
        QCOMPARE(Block::decodeList(JsonReader(JsonReader::parse(nested))),
                 QList<Block>{Block::note(QStringLiteral("Note"), {Block::quote({Block::note(QStringLiteral("Warning"), {})})})});
    }

    // Whatever the bytes, loading either gives a course or throws LoadError.
    void randomBytesNeverCrash()
    {
        QRandomGenerator random(1234);
        const QByteArray valid = richCourse();
        for (int i = 0; i < 3000; ++i) {
            QByteArray input = valid;
            for (int k = 0, n = 1 + random.bounded(4); k < n; ++k) {
                const int at = random.bounded(input.size());
                switch (random.bounded(3)) {
                case 0: input[at] = char(random.bounded(256)); break;
                case 1: input.remove(at, random.bounded(1, 20)); break;
                default: input.insert(at, valid.mid(random.bounded(valid.size()), random.bounded(1, 30)));
                }
            }
            try {
                Course::decode(input);
            } catch (const Course::LoadError &e) {
                QVERIFY(!e.message().isEmpty());
            }
        }
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
        QCOMPARE(kindOf(dir.filePath(QStringLiteral("nothing.json"))), Course::LoadError::Kind::missing);
        QCOMPARE(kindOf(dir.path()), Course::LoadError::Kind::unreadable);

        QFile file(dir.filePath(QStringLiteral("course.json")));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(richCourse().replace("\"Y\"", "\"caf\xe9\""));
        file.close();
        QCOMPARE(kindOf(file.fileName()), Course::LoadError::Kind::notUtf8);

        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(richCourse().replace("\"Y\"", "\"Code right here in your browser\""));
        file.close();
        QCOMPARE(Course::load(file.fileName()).summary, QStringLiteral("Code right here in the app"));
    }

    void wordingSubstitutions_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");
        QTest::newRow("browser") << "Try it right here in your browser." << "Try it right here in the app.";
        QTest::newRow("capital B kept") << "right here in your Browser" << "right here in your Browser";
        QTest::newRow("apostrophe") << "this site's exercises" << "this app's exercises";
        QTest::newRow("escaped apostrophe kept") << "this site\\u0027s exercises" << "this site\\u0027s exercises";
        QTest::newRow("editor") << "the editor on this site" << "the editor in this app";
        QTest::newRow("exercises") << "all the exercises on this site" << "all the exercises in this app";
        QTest::newRow("every lesson, twice") << "Every lesson on this site. Every lesson on this site."
                                             << "Every lesson in this app. Every lesson in this app.";
        QTest::newRow("lower-case every kept") << "every lesson on this site" << "every lesson on this site";
    }

    void wordingSubstitutions()
    {
        QFETCH(QString, text);
        QFETCH(QString, expected);
        QCOMPARE(Course::substituteWording(text), expected);
    }

    void lookups()
    {
        const Course c = courseOf({{{QStringLiteral("a"), QStringLiteral("b")}, {}, {QStringLiteral("c")}},
                                   {},
                                   {{QStringLiteral("d")}, {QStringLiteral("e"), QStringLiteral("a")}}});
        QCOMPARE(ids(c.lessons()), QStringList({"a", "b", "c", "d", "e", "a"}));
        // Across an empty module, then across an empty chapter.
        QCOMPARE(c.neighbours(QStringLiteral("b")).next->id, QStringLiteral("c"));
        QCOMPARE(c.neighbours(QStringLiteral("c")).next->id, QStringLiteral("d"));
        QCOMPARE(c.neighbours(QStringLiteral("d")).previous->id, QStringLiteral("c"));
        // The first of two lessons with one id wins.
        QVERIFY(!c.neighbours(QStringLiteral("a")).previous);
        QCOMPARE(c.neighbours(QStringLiteral("a")).next->id, QStringLiteral("b"));
        QVERIFY(!c.neighbours(QStringLiteral("zzz")).previous && !c.neighbours(QStringLiteral("zzz")).next);
        QCOMPARE(c.module(QStringLiteral("e"))->module.id, QStringLiteral("m1"));
        QCOMPARE(c.module(QStringLiteral("e"))->chapter.title, QStringLiteral("Chapter 3"));
        QVERIFY(!c.module(QStringLiteral("zzz")) && !c.lesson(QStringLiteral("zzz")));

        // Lessons are identified by id alone.
        Lesson other = c.lessons().at(0);
        other.title = QStringLiteral("Other");
        QCOMPARE(other, c.chapters[2].modules[1].lessons[1]);
        QCOMPARE(qHash(other), qHash(QStringLiteral("a")));
    }

    void shippedCourse()
    {
        QVERIFY(!Resources::url(QStringLiteral("no-such-file.json")));
        QVERIFY(Resources::url(QStringLiteral("course.json")));
        const Course course = Course::load();
        QCOMPARE(course.chapters.size(), 9);  // the home screen says "nine chapters"
        QVERIFY(course.lesson(QStringLiteral("values-constants")));
    }
};

QTEST_GUILESS_MAIN(TestCourse)
#include "tst_course.moc"
