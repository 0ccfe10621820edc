// Shows lesson text and the code editor in a real window, to look at them
// and to take the screenshots in docs/screenshots (see regenerate there).
//
//   text_gallery blocks [--dark] [--width N]     every block kind
//   text_gallery lesson ID [--dark] [--width N]  a lesson of the course: description, instructions
//   text_gallery editor [ID]                     the editor with a lesson's starting code, line 3 marked
//
// The window is titled "Kestrun gallery".

#include "course/course.h"
#include "editor/codeeditor.h"
#include "text/blocksview.h"
#include "theme/theme.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QPalette>
#include <QScrollArea>
#include <QTextBlock>

#include <cstdio>

using namespace Kestrun;

namespace {

QList<Block> everyKind()
{
    return {
        Block::heading(1, "Counting with *loops*"),
        Block::paragraph("A `for` loop runs its body once for every value of a range. The range `1...5` holds the "
                         "numbers **one to five**, so the loop below prints five lines. Read more in "
                         "[The Swift Programming Language](https://docs.swift.org/swift-book/)."),
        Block::codeListing("swift", "// Count to five\nfor number in 1...5 {\n    print(\"Number \\(number)\")\n}"),
        Block::paragraph("A listing wider than the page scrolls sideways instead of wrapping:"),
        Block::codeListing("swift", "let greeting = \"A very long line that does not fit beside the lesson text, so it "
                                    "scrolls sideways rather than wrapping\" // and a comment"),
        Block::heading(3, "What a loop needs"),
        Block::list(false, {"a *name* for the current value, such as `number`,",
                            "a range or a collection to walk through,",
                            "a body between braces, which may run many times and may itself be long enough to "
                            "wrap onto a second line."}),
        Block::list(true, {"Start", "Check", "Print", "Add one", "Repeat", "Stop", "Rest", "Review", "Rename",
                           "Refactor", "Run the tests", "Done"}),
        Block::note("tip", {Block::paragraph("Use `stride(from:to:by:)` to count in steps other than one.")}),
        Block::note("Warning", {Block::paragraph("A `while` loop whose condition never becomes false runs "
                                                 "forever. Kestrun stops it after a few seconds.")}),
        Block::note("Apple Developer Program",
                    {Block::paragraph("Publishing on the App Store needs a paid membership.")}),
        Block::note("Tip", {Block::paragraph("A kind is matched exactly: this \"Tip\" is an information note.")}),
        Block::quote({Block::paragraph("Programs must be written for people to read, and only incidentally for "
                                       "machines to execute."),
                      Block::note("Note", {Block::paragraph("Quoted notes keep their colours.")})}),
        Block::table({"Range", "Values", "Count"},
                     {{"`1...3`", "1, 2, 3", "3"}, {"`1..<3`", "1, 2", "2"}, {"`5...5`", "5"}}),
        Block::table({"Head only", "No rows"}, {}),
        Block::rule(),
        Block::paragraph("Line one of a paragraph\nand line two, kept as written."),
    };
}

void darken(QApplication &app)
{
    QPalette dark;
    dark.setColor(QPalette::Window, QColor(30, 30, 32));
    dark.setColor(QPalette::WindowText, QColor(235, 235, 240));
    dark.setColor(QPalette::Base, QColor(24, 24, 26));
    dark.setColor(QPalette::Text, QColor(235, 235, 240));
    dark.setColor(QPalette::Button, QColor(50, 50, 54));
    dark.setColor(QPalette::ButtonText, QColor(235, 235, 240));
    app.setPalette(dark);
}

QWidget *scrolling(QWidget *content)
{
    auto *area = new QScrollArea;
    area->setWidgetResizable(true);
    area->setFrameShape(QFrame::NoFrame);
    auto *page = new QWidget;
    auto *layout = new QVBoxLayout(page);
    const int margin = qRound(Theme::pixels(24));
    layout->setContentsMargins(margin, margin, margin, margin);
    layout->addWidget(content);
    area->setWidget(page);
    return area;
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    QApplication::setCursorFlashTime(0); // the caret always shows in a screenshot
    const QStringList args = app.arguments().mid(1);
    const QString mode = args.value(0, QStringLiteral("blocks"));
    if (args.contains(QStringLiteral("--dark")))
        darken(app);
    Theme::apply(app);

    QWidget *window = nullptr;
    if (mode == QLatin1String("blocks")) {
        window = scrolling(new BlocksView(everyKind()));
        window->resize(760, 1560);
    } else if (mode == QLatin1String("lesson") || mode == QLatin1String("editor")) {
        const Course course = Course::load();
        const std::optional<Lesson> lesson = course.lesson(args.value(1, QStringLiteral("lab-cafe-receipt")));
        if (!lesson) {
            std::fprintf(stderr, "no such lesson\n");
            return 2;
        }
        if (mode == QLatin1String("lesson")) {
            window = scrolling(new BlocksView(lesson->description + lesson->instructions));
            window->resize(760, 1000);
        } else {
            auto *editor = new CodeEditor;
            editor->setCode(lesson->seed.value_or(QString()));
            editor->setErrorLines({3});
            QTextCursor caret(editor->document()->findBlockByNumber(2));
            caret.movePosition(QTextCursor::EndOfBlock);
            editor->setTextCursor(caret);
            window = editor;
            window->resize(640, 520);
        }
    } else {
        std::fprintf(stderr, "usage: text_gallery blocks|lesson ID|editor [ID] [--dark]\n");
        return 2;
    }
    window->setWindowTitle(QStringLiteral("Kestrun gallery"));
    if (const int width = args.indexOf(QStringLiteral("--width")); width >= 0)
        window->resize(args.value(width + 1).toInt(), window->height());
    window->show();
    window->activateWindow();
    return QApplication::exec();
}
