// The course decoder on any bytes: it either fails with a malformed-course
// error that names a real place in the document, or yields exactly what the
// document says, and the course lookups agree with the lesson list. The
// wording substitutions leave none of their phrases behind.
#include "fuzzing.h"
#include "jsoncheck.h"

#include "course/course.h"

#include <QJsonDocument>
#include <QSet>

using namespace Kestrun;
using namespace Kestrun::Fuzzing;

namespace {

const char *const phrases[] = {
    "right here in your browser", "this site's exercises", "the editor on this site",
    "the exercises on this site", "Every lesson on this site",
};

void checkWording(const QString &text)
{
    const QString once = Course::substituteWording(text);
    for (const char *phrase : phrases)
        FUZZ_CHECK(!once.contains(QLatin1String(phrase)), QLatin1String(phrase));
    FUZZ_CHECK(Course::substituteWording(once) == once, QStringLiteral("substituting twice changes more"));
}

QString text(const QJsonObject &object, const char *key)
{
    return object.value(QLatin1String(key)).toString();
}

QJsonArray array(const QJsonObject &object, const char *key)
{
    return object.value(QLatin1String(key)).toArray();
}

void checkLesson(const Lesson &lesson, const QJsonObject &json)
{
    FUZZ_CHECK(lesson.id == text(json, "id") && lesson.title == text(json, "title"), lesson.id);
    FUZZ_CHECK(Lesson::kindName(lesson.type) == text(json, "type"), lesson.id);
    FUZZ_CHECK(lesson.minutes == json.value(QLatin1String("minutes")).toInteger(), lesson.id);
    const QJsonValue seed = json.value(QLatin1String("seed"));
    FUZZ_CHECK(lesson.seed.has_value() == seed.isString() && lesson.seed.value_or(QString()) == seed.toString(),
               QStringLiteral("seed of ") + lesson.id);
    checkBlocks(lesson.description, json.value(QLatin1String("description")));
    checkBlocks(lesson.instructions, json.value(QLatin1String("instructions")));
    FUZZ_CHECK(lesson.hints == stringsOf(json.value(QLatin1String("hints"))), lesson.id);
    FUZZ_CHECK(lesson.checklist == stringsOf(json.value(QLatin1String("checklist"))), lesson.id);

    const QJsonArray tests = array(json, "tests");
    FUZZ_CHECK(lesson.tests.size() == tests.size(), lesson.id);
    for (qsizetype t = 0; t < tests.size(); ++t) {
        const QJsonObject test = tests[t].toObject();
        const QJsonArray checks = array(test, "checks");
        FUZZ_CHECK(lesson.tests[t].text == text(test, "text") && lesson.tests[t].checks.size() == checks.size(), lesson.id);
        for (qsizetype c = 0; c < checks.size(); ++c) {
            static const char *const kinds[] = {"swift", "output", "nooutput", "source", "nosource"};
            const Check &check = lesson.tests[t].checks[c];
            FUZZ_CHECK(QLatin1String(kinds[int(check.kind)]) == text(checks[c].toObject(), "kind")
                           && check.code == text(checks[c].toObject(), "code"),
                       lesson.id);
        }
    }

    const QJsonArray questions = array(json, "questions");
    FUZZ_CHECK(lesson.questions.size() == questions.size(), lesson.id);
    for (qsizetype q = 0; q < questions.size(); ++q) {
        const Question &question = lesson.questions[q];
        const QJsonObject object = questions[q].toObject();
        FUZZ_CHECK(question.question == text(object, "question") && question.why == text(object, "why"), lesson.id);
        checkBlocks(question.detail, object.value(QLatin1String("detail")));
        const QJsonArray answers = array(object, "answers");
        FUZZ_CHECK(question.answers.size() == answers.size(), lesson.id);
        for (qsizetype a = 0; a < answers.size(); ++a) {
            const QJsonObject answer = answers[a].toObject();
            FUZZ_CHECK(question.answers[a].text == text(answer, "text")
                           && question.answers[a].correct == answer.value(QLatin1String("correct")).toBool(),
                       lesson.id);
        }
    }
}

void checkCourse(const Course &course, const QJsonObject &json)
{
    FUZZ_CHECK(course.id == text(json, "id") && course.title == text(json, "title")
                   && course.subtitle == text(json, "subtitle") && course.versions == text(json, "versions")
                   && course.summary == text(json, "summary"),
               course.id);
    const QJsonArray chapters = array(json, "chapters");
    FUZZ_CHECK(course.chapters.size() == chapters.size(), course.id);
    for (qsizetype c = 0; c < chapters.size(); ++c) {
        const Chapter &chapter = course.chapters[c];
        const QJsonObject chapterJson = chapters[c].toObject();
        const QJsonArray modules = array(chapterJson, "modules");
        FUZZ_CHECK(chapter.title == text(chapterJson, "title") && chapter.summary == text(chapterJson, "summary")
                       && chapter.modules.size() == modules.size(),
                   chapter.title);
        for (qsizetype m = 0; m < modules.size(); ++m) {
            const Module &module = chapter.modules[m];
            const QJsonObject moduleJson = modules[m].toObject();
            const QJsonArray lessons = array(moduleJson, "lessons");
            FUZZ_CHECK(module.id == text(moduleJson, "id") && module.title == text(moduleJson, "title")
                           && module.lessons.size() == lessons.size(),
                       module.id);
            for (qsizetype l = 0; l < lessons.size(); ++l)
                checkLesson(module.lessons[l], lessons[l].toObject());
        }
    }
}

// Lessons with the same id are told apart by where they sit.
struct Where {
    qsizetype chapter = -1;
    qsizetype module = -1;
    qsizetype index = -1;  // in reading order
};

bool same(const std::optional<Lesson> &found, const QList<Lesson> &all, qsizetype index)
{
    if (index < 0 || index >= all.size())
        return !found;
    return found && found->id == all[index].id && found->title == all[index].title
        && found->description == all[index].description && found->tests == all[index].tests;
}

void checkLookups(const Course &course)
{
    QList<Lesson> expected;
    QList<Where> places;
    for (qsizetype c = 0; c < course.chapters.size(); ++c) {
        for (qsizetype m = 0; m < course.chapters[c].modules.size(); ++m) {
            for (const Lesson &lesson : course.chapters[c].modules[m].lessons) {
                places.append({c, m, expected.size()});
                expected.append(lesson);
            }
        }
    }
    const QList<Lesson> all = course.lessons();
    FUZZ_CHECK(all.size() == expected.size(), QStringLiteral("lessons() count"));

    QSet<QString> seen;
    for (qsizetype i = 0; i < all.size(); ++i) {
        FUZZ_CHECK(same(all[i], expected, i), all[i].id);
        const QString id = all[i].id;
        if (seen.contains(id))
            continue;  // the lookups answer for the first lesson with an id
        seen.insert(id);
        FUZZ_CHECK(same(course.lesson(id), all, i), id);
        const Course::Neighbours around = course.neighbours(id);
        FUZZ_CHECK(same(around.previous, all, i - 1) && same(around.next, all, i + 1), id);
        const std::optional<Course::Place> place = course.module(id);
        const Chapter &chapter = course.chapters[places[i].chapter];
        const Module &module = chapter.modules[places[i].module];
        FUZZ_CHECK(place && place->chapter.title == chapter.title && place->module.id == module.id
                       && place->module.title == module.title && place->module.lessons.size() == module.lessons.size(),
                   id);
    }

    QString unknown = QStringLiteral("unknown");
    while (seen.contains(unknown))
        unknown += QLatin1Char('!');
    const Course::Neighbours none = course.neighbours(unknown);
    FUZZ_CHECK(!course.lesson(unknown) && !none.previous && !none.next && !course.module(unknown), unknown);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray json = bytes(data, size);
    checkWording(QString::fromUtf8(json));

    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(json, &parseError);
    try {
        const Course course = Course::decode(json);
        FUZZ_CHECK(parseError.error == QJsonParseError::NoError && document.isObject(),
                   QStringLiteral("decoded a course from what is no JSON object"));
        checkCourse(course, document.object());
        checkLookups(course);
    } catch (const Course::LoadError &error) {
        FUZZ_CHECK(error.kind() == Course::LoadError::Kind::malformed, error.message());
        checkErrorPath(error.message(), document.isArray() ? QJsonValue(document.array()) : QJsonValue(document.object()));
    }
    return 0;
}
