#include "course.h"

#include "jsonreader.h"
#include "resources.h"

#include <QFile>
#include <QStringDecoder>

#include <array>
#include <utility>

namespace Kestrun {

namespace {

const std::array<std::pair<const char *, Lesson::Kind>, 6> lessonKinds{{
    {"lesson", Lesson::Kind::lesson},
    {"workshop", Lesson::Kind::workshop},
    {"lab", Lesson::Kind::lab},
    {"quiz", Lesson::Kind::quiz},
    {"xcode", Lesson::Kind::xcode},
    {"project", Lesson::Kind::project},
}};

const std::array<std::pair<const char *, Check::Kind>, 5> checkKinds{{
    {"swift", Check::Kind::swift},
    {"output", Check::Kind::output},
    {"nooutput", Check::Kind::nooutput},
    {"source", Check::Kind::source},
    {"nosource", Check::Kind::nosource},
}};

Check decodeCheck(const JsonReader &json)
{
    const JsonReader kind = json.at(QStringLiteral("kind"));
    const QString name = kind.toString();
    for (const auto &[text, value] : checkKinds) {
        if (name == QLatin1String(text))
            return Check{value, json.string(QStringLiteral("code"))};
    }
    kind.fail(QStringLiteral("unknown check kind \"%1\"").arg(name));
}

Question decodeQuestion(const JsonReader &json)
{
    Question q;
    q.question = json.string(QStringLiteral("question"));
    q.detail = Block::decodeList(json.at(QStringLiteral("detail")));
    for (const JsonReader &answer : json.array(QStringLiteral("answers")))
        q.answers.append(Answer{answer.string(QStringLiteral("text")), answer.boolean(QStringLiteral("correct"))});
    q.why = json.string(QStringLiteral("why"));
    return q;
}

Lesson decodeLesson(const JsonReader &json)
{
    Lesson l;
    l.id = json.string(QStringLiteral("id"));
    l.title = json.string(QStringLiteral("title"));
    const JsonReader type = json.at(QStringLiteral("type"));
    const std::optional<Lesson::Kind> kind = Lesson::kindNamed(type.toString());
    if (!kind)
        type.fail(QStringLiteral("unknown lesson type \"%1\"").arg(type.toString()));
    l.type = *kind;
    l.minutes = json.integer(QStringLiteral("minutes"));
    l.description = Block::decodeList(json.at(QStringLiteral("description")));
    l.instructions = Block::decodeList(json.at(QStringLiteral("instructions")));
    l.seed = json.optionalString(QStringLiteral("seed"));
    for (const JsonReader &test : json.array(QStringLiteral("tests"))) {
        LessonTest t;
        t.text = test.string(QStringLiteral("text"));
        for (const JsonReader &check : test.array(QStringLiteral("checks")))
            t.checks.append(decodeCheck(check));
        l.tests.append(t);
    }
    l.hints = json.strings(QStringLiteral("hints"));
    l.checklist = json.strings(QStringLiteral("checklist"));
    for (const JsonReader &question : json.array(QStringLiteral("questions")))
        l.questions.append(decodeQuestion(question));
    return l;
}

Module decodeModule(const JsonReader &json)
{
    Module m;
    m.id = json.string(QStringLiteral("id"));
    m.title = json.string(QStringLiteral("title"));
    for (const JsonReader &lesson : json.array(QStringLiteral("lessons")))
        m.lessons.append(decodeLesson(lesson));
    return m;
}

Chapter decodeChapter(const JsonReader &json)
{
    Chapter c;
    c.title = json.string(QStringLiteral("title"));
    c.summary = json.string(QStringLiteral("summary"));
    for (const JsonReader &module : json.array(QStringLiteral("modules")))
        c.modules.append(decodeModule(module));
    return c;
}

} // namespace

Lesson Lesson::warmUp()
{
    Lesson l;
    l.id = QStringLiteral("warm-up");
    return l;
}

QString Lesson::kindName(Kind kind)
{
    for (const auto &[text, value] : lessonKinds) {
        if (value == kind)
            return QLatin1String(text);
    }
    return {};
}

std::optional<Lesson::Kind> Lesson::kindNamed(const QString &name)
{
    for (const auto &[text, value] : lessonKinds) {
        if (name == QLatin1String(text))
            return value;
    }
    return std::nullopt;
}

Course::LoadError::LoadError(Kind kind, const QString &message)
    : std::runtime_error(message.toStdString())
    , m_kind(kind)
    , m_message(message)
{
}

Course Course::load()
{
    const std::optional<QString> path = Resources::url(QStringLiteral("course.json"));
    if (!path)
        throw LoadError(LoadError::Kind::missing, QStringLiteral("course.json is missing from the app's resources"));
    return load(*path);
}

Course Course::load(const QString &path)
{
    QFile file(path);
    if (!file.exists())
        throw LoadError(LoadError::Kind::missing, QStringLiteral("%1 does not exist").arg(path));
    if (!file.open(QIODevice::ReadOnly))
        throw LoadError(LoadError::Kind::unreadable, QStringLiteral("%1: %2").arg(path, file.errorString()));
    const QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError)
        throw LoadError(LoadError::Kind::unreadable, QStringLiteral("%1: %2").arg(path, file.errorString()));

    QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = utf8.decode(bytes);
    if (utf8.hasError())
        throw LoadError(LoadError::Kind::notUtf8, QStringLiteral("%1 is not valid UTF-8 text").arg(path));

    return decode(substituteWording(text).toUtf8());
}

Course Course::decode(const QByteArray &json)
{
    try {
        const JsonReader root(JsonReader::parse(json));
        Course c;
        c.id = root.string(QStringLiteral("id"));
        c.title = root.string(QStringLiteral("title"));
        c.subtitle = root.string(QStringLiteral("subtitle"));
        c.versions = root.string(QStringLiteral("versions"));
        c.summary = root.string(QStringLiteral("summary"));
        for (const JsonReader &chapter : root.array(QStringLiteral("chapters")))
            c.chapters.append(decodeChapter(chapter));
        return c;
    } catch (const JsonError &error) {
        throw LoadError(LoadError::Kind::malformed, error.message());
    }
}

QString Course::substituteWording(QString text)
{
    static const std::array<std::pair<QLatin1String, QLatin1String>, 5> substitutions{{
        {QLatin1String("right here in your browser"), QLatin1String("right here in the app")},
        {QLatin1String("this site's exercises"), QLatin1String("this app's exercises")},
        {QLatin1String("the editor on this site"), QLatin1String("the editor in this app")},
        {QLatin1String("the exercises on this site"), QLatin1String("the exercises in this app")},
        {QLatin1String("Every lesson on this site"), QLatin1String("Every lesson in this app")},
    }};
    for (const auto &[phrase, replacement] : substitutions)
        text.replace(phrase, replacement);
    return text;
}

QList<Lesson> Course::lessons() const
{
    QList<Lesson> all;
    for (const Chapter &chapter : chapters) {
        for (const Module &module : chapter.modules)
            all.append(module.lessons);
    }
    return all;
}

std::optional<Lesson> Course::lesson(const QString &lessonId) const
{
    for (const Lesson &l : lessons()) {
        if (l.id == lessonId)
            return l;
    }
    return std::nullopt;
}

Course::Neighbours Course::neighbours(const QString &lessonId) const
{
    const QList<Lesson> all = lessons();
    for (qsizetype i = 0; i < all.size(); ++i) {
        if (all[i].id != lessonId)
            continue;
        Neighbours n;
        if (i > 0)
            n.previous = all[i - 1];
        if (i + 1 < all.size())
            n.next = all[i + 1];
        return n;
    }
    return {};
}

std::optional<Course::Place> Course::module(const QString &lessonId) const
{
    for (const Chapter &chapter : chapters) {
        for (const Module &m : chapter.modules) {
            for (const Lesson &l : m.lessons) {
                if (l.id == lessonId)
                    return Place{chapter, m};
            }
        }
    }
    return std::nullopt;
}

} // namespace Kestrun
