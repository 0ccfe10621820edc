#pragma once

#include "block.h"

#include <QHashFunctions>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>
#include <stdexcept>

namespace Kestrun {

class JsonReader;

struct Check {
    enum class Kind { swift, output, nooutput, source, nosource };
    Kind kind = Kind::swift;
    QString code;  // a Swift condition for swift, a regular expression otherwise
    friend bool operator==(const Check &, const Check &) = default;
};

struct LessonTest {
    QString text;  // the sentence shown to the learner
    QList<Check> checks;
    friend bool operator==(const LessonTest &, const LessonTest &) = default;
};

struct Answer {
    QString text;
    bool correct = false;
    friend bool operator==(const Answer &, const Answer &) = default;
};

struct Question {
    QString question;
    QList<Block> detail;
    QList<Answer> answers;
    QString why;
    friend bool operator==(const Question &, const Question &) = default;
};

struct Lesson {
    enum class Kind { lesson, workshop, lab, quiz, xcode, project };

    QString id;
    QString title;
    Kind type = Kind::lesson;
    qint64 minutes = 0;
    QList<Block> description;
    QList<Block> instructions;
    std::optional<QString> seed;  // absent: no starting code (not the same as empty)
    QList<LessonTest> tests;
    QStringList hints;
    QStringList checklist;
    QList<Question> questions;

    // A lesson with no tests, used to exercise the runner.
    static Lesson warmUp();

    static QString kindName(Kind kind);
    static std::optional<Kind> kindNamed(const QString &name);

    // Lessons are identified by id alone.
    friend bool operator==(const Lesson &a, const Lesson &b) { return a.id == b.id; }
};

inline size_t qHash(const Lesson &lesson, size_t seed = 0)
{
    return qHash(lesson.id, seed);
}

struct Module {
    QString id;
    QString title;
    QList<Lesson> lessons;
};

struct Chapter {
    QString title;  // also the chapter's identity
    QString summary;
    QList<Module> modules;
};

struct Course {
    // Why a course could not be loaded.
    class LoadError : public std::runtime_error {
    public:
        enum class Kind {
            missing,     // no course.json among the resources
            unreadable,  // the file could not be read
            notUtf8,
            malformed,   // not JSON, or not the shape of a course
        };
        LoadError(Kind kind, const QString &message);
        Kind kind() const { return m_kind; }
        // The whole text; what() stops at a NUL character that the file may hold.
        QString message() const { return m_message; }

    private:
        Kind m_kind;
        QString m_message;
    };

    struct Neighbours {
        std::optional<Lesson> previous;
        std::optional<Lesson> next;
    };

    struct Place {
        Chapter chapter;
        Module module;
    };

    QString id;
    QString title;
    QString subtitle;
    QString versions;
    QString summary;
    QList<Chapter> chapters;

    // Loads the resource "course.json". Throws LoadError.
    static Course load();
    // Loads a course file from a path, with the wording substitutions. Throws LoadError.
    static Course load(const QString &path);
    // Decodes course JSON as it is, without substitutions. Throws LoadError.
    static Course decode(const QByteArray &json);
    // Turns phrases about a web site into phrases about the app.
    static QString substituteWording(QString text);

    // Every lesson in reading order, rebuilt on each call.
    QList<Lesson> lessons() const;
    std::optional<Lesson> lesson(const QString &lessonId) const;
    Neighbours neighbours(const QString &lessonId) const;
    std::optional<Place> module(const QString &lessonId) const;
};

} // namespace Kestrun
