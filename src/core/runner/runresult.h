#pragma once

#include <QHashFunctions>
#include <QList>
#include <QString>

#include <optional>

namespace Kestrun {

// The outcome of one run of the learner's code against a lesson's tests.
struct RunResult {
    struct TestResult {
        QString text;
        bool passed = false;
        friend bool operator==(const TestResult &, const TestResult &) = default;
    };

    struct CompilerError {
        std::optional<int> line;  // 1-based line in the learner's own code; none outside it
        QString message;
        friend bool operator==(const CompilerError &, const CompilerError &) = default;
    };

    bool compiled = false;
    QList<CompilerError> errors;  // at most 12; empty when compiled
    QString output;               // console output without verdict lines
    bool crashed = false;
    QString crashReason;
    bool timedOut = false;
    QList<TestResult> tests;      // one per test of the lesson, in order

    // Compiled, in time, with at least one test, and every test passed.
    bool passed() const;

    friend bool operator==(const RunResult &, const RunResult &) = default;
};

inline size_t qHash(const RunResult::CompilerError &error, size_t seed = 0)
{
    return qHashMulti(seed, error.line.value_or(0), error.line.has_value(), error.message);
}

} // namespace Kestrun
