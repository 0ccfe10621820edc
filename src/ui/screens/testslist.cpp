#include "testslist.h"

#include "texts/texts.h"
#include "text/markdownlabel.h"
#include "theme/icons.h"
#include "theme/theme.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

namespace Kestrun {

TestsList::TestsList(const QList<LessonTest> &tests, QWidget *parent)
    : QWidget(parent)
{
    setObjectName(QStringLiteral("tests"));
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(10);
    auto *title = new QLabel(Texts::get(Text::tests), this);
    QFont titleFont = Theme::font(Theme::TextStyle::title3);
    titleFont.setWeight(QFont::DemiBold);
    title->setFont(titleFont);
    layout->addWidget(title);

    for (int i = 0; i < tests.size(); ++i) {
        auto *row = new QWidget(this);
        row->setObjectName(QStringLiteral("test%1").arg(i + 1));
        auto *line = new QHBoxLayout(row);
        line->setContentsMargins(0, 0, 0, 0);
        line->setSpacing(10);
        auto *icon = new QLabel(row);
        auto *text = new MarkdownLabel(tests[i].text, Theme::TextStyle::body, row);
        const int size = text->fontMetrics().height();
        icon->setFixedSize(size, size);
        line->addWidget(icon, 0, Qt::AlignTop);
        line->addWidget(text, 1);
        // One element for assistive technology: the test, and how it went.
        row->setAccessibleName(text->text());
        m_rows.append({row, icon, text->text()});
        layout->addWidget(row);
    }
    setResults(std::nullopt);
}

TestsList::Status TestsList::status(int test, const std::optional<QList<RunResult::TestResult>> &results)
{
    if (!results)
        return Status::notRun;
    return test < results->size() && (*results)[test].passed ? Status::passed : Status::failed;
}

void TestsList::setResults(const std::optional<QList<RunResult::TestResult>> &results)
{
    m_results = results;
    for (int i = 0; i < m_rows.size(); ++i) {
        const Row &row = m_rows[i];
        QString symbol;
        QColor color;
        Text value = Text::notRunYet;
        switch (status(i)) {
        case Status::notRun:
            symbol = QStringLiteral("circle");
            color = Theme::label(Theme::Level::secondary, this);
            break;
        case Status::passed:
            symbol = QStringLiteral("checkmark.circle.fill");
            color = Theme::vmSea();
            value = Text::passed;
            break;
        case Status::failed:
            symbol = QStringLiteral("xmark.circle.fill");
            color = Theme::vmAlert();
            value = Text::failed;
            break;
        }
        row.icon->setPixmap(Icons::pixmap(symbol, color, row.icon->width(), devicePixelRatioF()));
        row.row->setAccessibleDescription(Texts::get(value));
    }
}

} // namespace Kestrun
