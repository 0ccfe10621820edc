#pragma once

#include "course/course.h"
#include "runner/runresult.h"

#include <QList>
#include <QWidget>

#include <optional>

class QLabel;

namespace Kestrun {

// The lesson's tests, each with whether it passed in the last run: not run
// yet before any run, failed when the run has no result for it.
class TestsList : public QWidget {
    Q_OBJECT

public:
    enum class Status { notRun, passed, failed };

    TestsList(const QList<LessonTest> &tests, QWidget *parent = nullptr);

    void setResults(const std::optional<QList<RunResult::TestResult>> &results);
    static Status status(int test, const std::optional<QList<RunResult::TestResult>> &results);
    Status status(int test) const { return status(test, m_results); }

private:
    struct Row {
        QWidget *row;
        QLabel *icon;
        QString text;
    };

    QList<Row> m_rows;
    std::optional<QList<RunResult::TestResult>> m_results;
};

} // namespace Kestrun
