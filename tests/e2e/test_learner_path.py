#!/usr/bin/env python3
"""A learner's whole path through the real app, with the real Swift
toolchain: reading lessons, a code lesson run wrong, right and broken, a
quiz, a checklist, quitting, and coming back to the code they typed.

    test_learner_path.py PROGRAM [--screenshots DIR]

Exits 77 (skipped) when no Swift toolchain is installed."""
import argparse
import json
import pathlib
import subprocess
import sys
import time

from desktop import ROOT, Session, Timeout, toolchain_present, wait_for

SKIPPED = 77
VM_ALERT = (196, 67, 45)
COURSE = json.loads((ROOT / "Resources" / "course.json").read_text(encoding="utf-8"))
LESSONS = [l for c in COURSE["chapters"] for m in c["modules"] for l in m["lessons"]]


def lesson(lesson_id):
    return next(l for l in LESSONS if l["id"] == lesson_id)


def plain(markdown):
    """Inline Markdown as the screen shows it."""
    return markdown.replace("`", "").replace("**", "").replace("*", "")


class LearnerPath:
    def __init__(self, program, shots):
        self.s = Session(program)
        self.shots = pathlib.Path(shots) if shots else None
        self.step = 0

    def shot(self, name):
        self.step += 1
        if self.shots:
            time.sleep(0.8)  # let animations and repaints settle
            self.s.screenshot(self.shots / f"path-{self.step:02d}-{name}.png")

    # What the learner sees.
    def button(self, name, timeout=10):
        return self.reveal(lambda: self.s.all(role="push button", name=name, showing=False), timeout)

    def label(self, name=None, contains=None, timeout=10):
        return self.s.wait(role="label", name=name, contains=contains, timeout=timeout)

    def within_window(self, node):
        x, y, w, h = self.s.extents(node)
        wx, wy, ww, wh = self.s.extents(self.s.window)
        return w > 0 and h > 0 and wy + 60 <= y and y + h <= wy + wh - 10 and wx <= x and x + w <= wx + ww

    def reveal(self, candidates, timeout=10):
        """The first candidate, scrolled into the window with the wheel if it is not."""
        node = wait_for("it on screen", lambda: next(iter(candidates()), None), timeout)
        for direction in ("5", "4"):
            for _ in range(40):
                if self.within_window(node):
                    return node
                x, y, w, h = self.s.extents(self.s.window)
                subprocess.run(["xdotool", "mousemove", str(x + w // 2), str(y + h // 2), "click", direction], check=True)
                time.sleep(0.05)
                node = next(iter(candidates()), node)
        raise Timeout("could not scroll it into view")

    def test_rows(self):
        self.s.wait(role="label", name="Tests")
        rows = [n for n in self.s.all(role="filler") if n.description in ("Not run yet", "Passed", "Failed")]
        assert rows, "the tests list shows no tests"
        return {row.name: row.description for row in rows}

    def console(self):
        node = self.s.wait(role="text", name="CONSOLE")
        text = node.queryText()
        return text.getText(0, text.characterCount)

    def open_in_sidebar(self, module, title):
        row = self.s.find(role="table cell", name=title)
        if row is None:
            self.s.click(self.s.wait(role="table cell", name=module))
            row = self.s.wait(role="table cell", name=title)
        self.s.click(row)
        self.label(name=title)

    def editor(self):
        return self.s.wait(role="text", name="Your Swift code")

    def replace_code(self, code):
        self.s.click(self.editor())
        self.s.key("ctrl+a")
        self.s.key("Delete")
        self.s.type(code)

    def run(self):
        """Ctrl+Return from the editor, then wait for the result."""
        self.s.click(self.editor())
        self.s.key("ctrl+Return")
        wait_for("the run to end", lambda: not any(m in self.console() for m in ("Compiling and running", "Press Run")), 120)

    def ruler_in_alert(self):
        """Whether a line number beside the code is drawn in the alert colour:
        some pixels of the numbers' strip, at the editor's left, close to it."""
        x, y, _, h = self.s.extents(self.editor())
        pixels = subprocess.run(["import", "-window", "root", "-crop", f"40x{h}+{x}+{y}", "+repage", "-depth", "8",
                                 "txt:-"], capture_output=True, text=True, check=True).stdout
        close = 0
        for line in pixels.splitlines()[1:]:
            try:
                r, g, b = (int(float(v)) for v in line.rsplit("(", 1)[1].split(")", 1)[0].split(",")[:3])
            except (IndexError, ValueError):
                continue
            if abs(r - VM_ALERT[0]) + abs(g - VM_ALERT[1]) + abs(b - VM_ALERT[2]) < 60:
                close += 1
        return close >= 3

    def answer(self, text):
        """Picks a quiz answer, one of the question's radio buttons."""
        name = plain(text)
        self.s.click(self.reveal(lambda: self.s.all(role="radio button", name=name, showing=False)))

    def main(self):
        s = self.s
        s.start()
        s.resize(1440, 900)
        self.label(contains="on this computer", timeout=120)  # the toolchain was found
        self.shot("home")

        # Start the course; mark the reading lessons as read, one after the other.
        s.click(self.button("Start the course"))
        for title in ("How this course works", "What happens when you press Run"):
            self.label(name=title)
            mark = self.button("Mark as read")
            self.shot("reading")
            s.click(mark)
            wait_for("the done mark", lambda: s.find(role="image", name="Done"))
            assert s.find(role="push button", name="Mark as read") is None, "Mark as read stays after marking"
            s.key("ctrl+bracketright")  # Next Lesson

        # A code lesson: every test not run yet.
        self.open_in_sidebar("Values and variables", "Values and constants")
        rows = self.test_rows()
        assert set(rows.values()) == {"Not run yet"}, rows
        assert "Press Run (Ctrl+Return) to check your code." in self.console(), self.console()
        self.shot("code-lesson")

        # A wrong answer: a test fails, the console shows what was printed.
        self.replace_code('let language = "swift"\nprint("It is \\(language)")')
        self.run()
        assert "Failed" in self.test_rows().values(), self.test_rows()
        assert "It is swift" in self.console(), self.console()
        self.shot("wrong-answer")

        # The solution: every test passes and the lesson is done.
        self.replace_code('let language = "Swift"\nprint(language)')
        self.run()
        assert set(self.test_rows().values()) == {"Passed"}, self.test_rows()
        assert "Every test passes." in self.console(), self.console()
        wait_for("the notice", lambda: s.find(name="Lesson done"), 5)
        self.button("Next: Variables")
        assert s.wait(role="table cell", name="Values and constants").description == "Done"
        self.shot("passed")

        # A compile error, marked on its line.
        self.replace_code('let language = "Swift"\nlet n: Int = "no"')
        self.run()
        console = self.console()
        assert "Your code did not compile:" in console and "line 2: " in console, console
        wait_for("a line number drawn in the alert colour", self.ruler_in_alert, 5)
        self.shot("compile-error")

        # A quiz, answered wrongly, then rightly.
        self.open_in_sidebar("Hello, Swift", "Quiz: Hello, Swift")
        quiz = lesson("quiz-hello-swift")
        assert not s.is_enabled(self.button("Check my answers"))
        for question in quiz["questions"]:
            wrong = next(a for a in question["answers"] if not a["correct"])
            self.answer(wrong["text"])
        s.click(self.button("Check my answers"))
        wait_for("the feedback", lambda: s.find(role="label", contains="Not quite."))
        wait_for("the notice", lambda: s.find(name="Have another look at the ones marked."), 5)
        self.shot("quiz-wrong")
        for question in quiz["questions"]:
            right = next(a for a in question["answers"] if a["correct"])
            self.answer(right["text"])
        s.click(self.button("Check my answers"))
        self.button("Check again")
        self.label(name="All right.")
        self.shot("quiz-right")

        # A checklist, ticked to the end.
        self.open_in_sidebar("Swift outside the app", "Swift on your own computer")
        steps = lesson("swift-on-your-computer")["checklist"]
        assert not s.is_enabled(self.button("Mark as done"))
        for step in steps:
            box = self.reveal(lambda: s.all(role="check box", name=plain(step), showing=False))
            s.click(box)
        wait_for("Mark as done enabled", lambda: s.is_enabled(self.button("Mark as done")))
        self.shot("checklist")
        s.click(self.button("Mark as done"))
        wait_for("the lesson done", lambda: s.find(role="push button", name="Mark as done") is None)

        # Back to the code lesson, on through its Next button, some code typed, quit.
        self.open_in_sidebar("Values and variables", "Values and constants")
        self.replace_code('let language = "Swift"')
        self.run()
        s.click(self.button("Next: Variables"))
        self.label(name="Variables")
        typed = "var count = 1"
        self.replace_code(typed)
        s.key("ctrl+q")
        assert s.process.wait(20) == 0, "the app did not quit cleanly"

        progress = s.progress()
        for done in ("how-this-course-works", "what-happens-when-you-run", "values-constants",
                     "quiz-hello-swift", "swift-on-your-computer"):
            assert done in progress["done"], (done, sorted(progress["done"]))
        assert sorted(progress["ticks"]["swift-on-your-computer"]) == list(range(len(steps))), progress["ticks"]
        variables = next(l["id"] for l in LESSONS if l["title"] == "Variables")
        assert progress["code"][variables] == typed, progress["code"]
        assert progress["last"] == variables, progress.get("last")

        # Back again: the last lesson opened, with the code typed.
        s.start()
        s.resize(1440, 900)
        self.label(name="Variables")
        code = self.editor().queryText()
        assert code.getText(0, code.characterCount) == typed, code.getText(0, code.characterCount)
        self.shot("restart")

        # Ended by SIGTERM a moment after typing: it quits as on Ctrl+Q, the change saved.
        self.replace_code("var count = 2")
        assert s.stop("TERM") == 0, "the app did not quit cleanly on SIGTERM"
        assert s.progress()["code"][variables] == "var count = 2", s.progress()["code"]


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("program")
    parser.add_argument("--screenshots")
    args = parser.parse_args()
    if not toolchain_present():
        print("SKIPPED: no Swift toolchain on this machine")
        return SKIPPED
    path = LearnerPath(args.program, args.screenshots)
    try:
        path.main()
    except (AssertionError, Timeout):
        path.s.screenshot(pathlib.Path(args.screenshots or "/tmp") / "learner-path-failure.png")
        raise
    finally:
        path.s.close()
    print("The learner's path works, step by step.")
    return 0


if __name__ == "__main__":
    sys.exit(main())
