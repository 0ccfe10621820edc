#include "codelessonview.h"

#include "consoleview.h"
#include "lessoncolumn.h"
#include "lessonfooter.h"
#include "lessonheader.h"
#include "publishedactions.h"
#include "spinner.h"
#include "splittermemory.h"
#include "testslist.h"
#include "app/appmodel.h"
#include "app/screenshots.h"
#include "progress/progressstore.h"
#include "runner/coderunner.h"
#include "texts/texts.h"
#include "editor/codeeditor.h"
#include "text/blocksview.h"
#include "text/markdownlabel.h"
#include "theme/iconlabel.h"
#include "theme/icons.h"
#include "theme/roundedpanel.h"
#include "theme/scrollpage.h"
#include "theme/theme.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QStackedWidget>
#include <QTimer>
#include <QVBoxLayout>

namespace Kestrun {

namespace {

// A dark strip of the workspace: the toolbar and the success bar.
QWidget *darkStrip(QWidget *parent)
{
    auto *strip = new QWidget(parent);
    strip->setAutoFillBackground(true);
    strip->setBackgroundRole(QPalette::Window);
    QPalette palette = strip->palette();
    palette.setColor(QPalette::Window, Theme::editorBackground());
    palette.setColor(QPalette::Base, Theme::editorBackground());
    palette.setColor(QPalette::WindowText, Theme::editorText());
    palette.setColor(QPalette::ButtonText, Theme::editorText());
    strip->setPalette(palette);
    return strip;
}

QLabel *semibold(const QString &text, Theme::TextStyle style, QWidget *parent)
{
    auto *label = new QLabel(text, parent);
    QFont font = Theme::font(style);
    font.setWeight(QFont::DemiBold);
    label->setFont(font);
    return label;
}

} // namespace

CodeLessonView::CodeLessonView(AppModel &model, const Lesson &lesson, PublishedActions &actions,
                               SplitterMemory &memory, QWidget *parent)
    : QSplitter(Qt::Horizontal, parent)
    , m_model(model)
    , m_lesson(lesson)
    , m_actions(actions)
{
    setObjectName(QStringLiteral("codeLesson"));
    setChildrenCollapsible(false);
    setHandleWidth(1);
    addWidget(createInstructions());
    addWidget(createWorkspace());
    setStretchFactor(0, 0);
    setStretchFactor(1, 1);
    setSizes({460, 700});
    memory.attach(this, QStringLiteral("codeLesson"));

    // The code shown is the saved code, the starting code, or nothing; loading
    // it counts as a change, so a visited lesson keeps its code.
    setCode(model.progress()->code(lesson), false);
    actions.publish(this, [this] { run(); }, [this] { reset(); });
    showResult();

    if (Screenshots::on()) {
        // Results on screen without a click: run once a runner is there.
        auto *wait = new QTimer(this);
        connect(wait, &QTimer::timeout, this, [this, wait] {
            if (!m_model.runner())
                return;
            wait->stop();
            run();
        });
        wait->start(200);
    }
}

QWidget *CodeLessonView::createInstructions()
{
    auto *page = new ScrollPage(this);
    page->setObjectName(QStringLiteral("instructions"));
    page->setMinimumWidth(320);
    auto *column = new LessonColumn(false, page);
    column->add(new LessonHeader(m_model, m_lesson, column));
    column->add(new BlocksView(m_lesson.description, column));

    if (!m_lesson.instructions.isEmpty()) {
        auto *task = new RoundedPanel(Theme::withOpacity(Theme::vmSea(), 0.08), 14, column);
        task->setObjectName(QStringLiteral("taskBox"));
        auto *taskLayout = new QVBoxLayout(task);
        taskLayout->setContentsMargins(16, 16, 16, 16);
        taskLayout->setSpacing(10);
        taskLayout->addWidget(semibold(Texts::get(Text::yourTask), Theme::TextStyle::title3, task));
        taskLayout->addWidget(new BlocksView(m_lesson.instructions, task));
        column->add(task);
    }

    m_tests = new TestsList(m_lesson.tests, column);
    column->add(m_tests);

    if (!m_lesson.hints.isEmpty()) {
        auto *hints = new QWidget(column);
        hints->setObjectName(QStringLiteral("hints"));
        m_hints = new QVBoxLayout(hints);
        m_hints->setContentsMargins(0, 0, 0, 0);
        m_hints->setSpacing(8);
        m_hintButton = new QPushButton(Icons::icon(QStringLiteral("lightbulb"), Theme::vmGold()),
                                       Texts::get(Text::getAHint), hints);
        m_hintButton->setObjectName(QStringLiteral("getAHint"));
        m_hintButton->setFlat(true);
        m_hintButton->setCursor(Qt::PointingHandCursor);
        m_hintButton->setStyleSheet(QStringLiteral("QPushButton { border: none; padding: 4px 0; color: %1; }")
                                        .arg(Theme::vmSea().name()));
        connect(m_hintButton, &QPushButton::clicked, this, [this] {
            ++m_hintsShown;
            showHints();
        });
        m_hints->addWidget(m_hintButton, 0, Qt::AlignLeft);
        column->add(hints);
    }

    column->add(new LessonFooter(m_model, m_lesson, column));
    column->parts()->addStretch(1);
    page->setPage(column);
    return page;
}

QWidget *CodeLessonView::createWorkspace()
{
    auto *workspace = new QWidget(this);
    workspace->setObjectName(QStringLiteral("workspace"));
    workspace->setMinimumWidth(380);
    workspace->setAutoFillBackground(true);
    workspace->setBackgroundRole(QPalette::Window);
    QPalette dark = workspace->palette();
    dark.setColor(QPalette::Window, Theme::editorBackground());
    dark.setColor(QPalette::Base, Theme::editorBackground());
    workspace->setPalette(dark);
    auto *layout = new QVBoxLayout(workspace);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);

    QWidget *toolbar = darkStrip(workspace);
    toolbar->setObjectName(QStringLiteral("workspaceToolbar"));
    auto *tools = new QHBoxLayout(toolbar);
    tools->setContentsMargins(14, 10, 14, 10);
    tools->setSpacing(12);
    auto *file = new QLabel(QStringLiteral("main.swift"), toolbar);
    file->setFont(Theme::monospace(12));
    Theme::setTextColor(file, Theme::withOpacity(Theme::editorText(), 0.6));
    tools->addWidget(file);
    tools->addStretch(1);
    auto *reset = new QPushButton(Texts::get(Text::reset), toolbar);
    reset->setObjectName(QStringLiteral("reset"));
    reset->setFlat(true);
    reset->setCursor(Qt::PointingHandCursor);
    reset->setStyleSheet(QStringLiteral("QPushButton { border: none; padding: 5px 6px; color: %1; }"
                                        "QPushButton:hover { color: white; }")
                             .arg(Theme::editorText().name()));
    connect(reset, &QPushButton::clicked, this, &CodeLessonView::reset);
    tools->addWidget(reset);

    m_runSlot = new QStackedWidget(toolbar);
    m_run = new QPushButton(Icons::icon(QStringLiteral("play.fill"), Qt::white), Texts::get(Text::run), m_runSlot);
    m_run->setObjectName(QStringLiteral("run"));
    m_run->setToolTip(Texts::get(Text::runHelp).arg(ConsoleView::runShortcut()));
    Theme::makeProminent(m_run);
    connect(m_run, &QPushButton::clicked, this, &CodeLessonView::run);
    auto *busy = new QWidget(m_runSlot);
    auto *busyLayout = new QHBoxLayout(busy);
    busyLayout->setContentsMargins(0, 0, 0, 0);
    busyLayout->addStretch(1);
    busyLayout->addWidget(new Spinner(Theme::editorText(), busy));
    busyLayout->addStretch(1);
    m_runSlot->addWidget(m_run);
    m_runSlot->addWidget(busy);
    m_runSlot->setFixedSize(m_run->sizeHint());
    tools->addWidget(m_runSlot);
    layout->addWidget(toolbar);

    auto *split = new QSplitter(Qt::Vertical, workspace);
    split->setObjectName(QStringLiteral("editorAndConsole"));
    split->setChildrenCollapsible(false);
    split->setHandleWidth(1);
    m_editor = new CodeEditor(split);
    m_editor->setObjectName(QStringLiteral("editor"));
    connect(m_editor, &CodeEditor::codeEdited, this, [this](const QString &code) { setCode(code, true); });
    m_console = new ConsoleView(split);
    m_console->setMinimumHeight(140);
    split->addWidget(m_editor);
    split->addWidget(m_console);
    split->setStretchFactor(0, 1);
    split->setStretchFactor(1, 0);
    split->setSizes({480, 220});
    layout->addWidget(split, 1);

    m_successBar = darkStrip(workspace);
    m_successBar->setObjectName(QStringLiteral("successBar"));
    auto *bar = new QHBoxLayout(m_successBar);
    bar->setContentsMargins(12, 12, 12, 12);
    auto *passed = new IconLabel(QStringLiteral("checkmark.seal.fill"), Texts::get(Text::lessonPassed), Theme::vmPass(),
                                 m_successBar);
    QFont passedFont = Theme::font(Theme::TextStyle::body);
    passedFont.setWeight(QFont::DemiBold);
    passed->setTextFont(passedFont);
    // The sentence takes the room the button leaves, on one line where it fits.
    bar->addWidget(passed, 1);
    if (const std::optional<Lesson> next = m_model.course().neighbours(m_lesson.id).next) {
        m_next = new QPushButton(Texts::get(Text::nextWith).arg(next->title), m_successBar);
        m_next->setObjectName(QStringLiteral("nextLessonButton"));
        Theme::makeProminent(m_next);
        connect(m_next, &QPushButton::clicked, this, [this, id = next->id] { m_model.open(m_model.course().lesson(id)); });
        bar->addWidget(m_next);
    }
    layout->addWidget(m_successBar);
    return workspace;
}

void CodeLessonView::setCode(const QString &code, bool fromEditor)
{
    m_code = code;
    if (!fromEditor)
        m_editor->setCode(code);
    m_model.progress()->setCode(code, m_lesson.id);
}

void CodeLessonView::run()
{
    if (m_running)
        return;
    const std::shared_ptr<const CodeRunner> runner = m_model.runner();
    if (!runner) {
        const RunnerState state = m_model.runnerState();
        m_problem = state.kind == RunnerState::Kind::unavailable ? state.text : Texts::get(Text::stillLooking);
        showResult();
        return;
    }
    m_running = true;
    m_problem.reset();
    showResult();
    runner->run(m_lesson, m_code).then(this, [this](const RunResult &result) {
        m_result = result;
        if (result.passed()) {
            m_model.progress()->complete(m_lesson.id);
            m_model.say(Texts::get(Text::lessonDone));
        }
        m_running = false;
        showResult();
        Q_EMIT finished();
    });
}

void CodeLessonView::reset()
{
    setCode(m_lesson.seed.value_or(QString()), false);
    m_model.progress()->resetCode(m_lesson.id);
    m_result.reset();
    showResult();
}

void CodeLessonView::showHints()
{
    // Hints come in order, each on a gold backdrop above the button.
    while (m_hints->count() - 1 < m_hintsShown && m_hints->count() - 1 < m_lesson.hints.size()) {
        const int index = m_hints->count() - 1;
        auto *box = new RoundedPanel(Theme::withOpacity(Theme::vmGold(), 0.12), 12, m_hints->parentWidget());
        box->setObjectName(QStringLiteral("hint%1").arg(index + 1));
        auto *row = new QHBoxLayout(box);
        row->setContentsMargins(12, 12, 12, 12);
        row->setSpacing(8);
        auto *text = new MarkdownLabel(m_lesson.hints[index], Theme::TextStyle::body, box);
        auto *icon = new QLabel(box);
        const int size = text->fontMetrics().height();
        icon->setPixmap(Icons::pixmap(QStringLiteral("lightbulb"), Theme::vmGold(), size, devicePixelRatioF()));
        icon->setFixedSize(size, size);
        row->addWidget(icon, 0, Qt::AlignTop);
        row->addWidget(text, 1);
        m_hints->insertWidget(index, box);
    }
    m_hintButton->setVisible(m_hintsShown < m_lesson.hints.size());
}

void CodeLessonView::showResult()
{
    m_tests->setResults(m_result ? std::optional(m_result->tests) : std::nullopt);
    QSet<int> lines;
    if (m_result) {
        for (const RunResult::CompilerError &error : m_result->errors) {
            if (error.line)
                lines.insert(*error.line);
        }
    }
    m_editor->setErrorLines(lines);
    m_console->show(m_result, m_running, m_problem);
    m_runSlot->setCurrentIndex(m_running ? 1 : 0);
    m_run->setEnabled(!m_running);
    m_successBar->setVisible(m_result && m_result->passed() && m_next);
}

} // namespace Kestrun
