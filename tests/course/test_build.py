#!/usr/bin/python3
"""Tests of course/build.py over small courses: the exact JSON it builds, the
authoring errors it reports with file and line, and its stale-file check."""

import contextlib
import importlib.util
import io
import shutil
import subprocess
import sys
import tempfile
import textwrap
import unittest
from pathlib import Path

HERE = Path(__file__).resolve().parent
TOOL = HERE.parent.parent / "course" / "build.py"
FIXTURE = HERE / "data" / "course"
EXPECTED = HERE / "data" / "expected"

sys.dont_write_bytecode = True  # keep course/ free of __pycache__
spec = importlib.util.spec_from_file_location("course_build", TOOL)
build = importlib.util.module_from_spec(spec)
spec.loader.exec_module(build)

HEADER = "---\nid: a-lesson\ntitle: A lesson\ntype: lesson\nminutes: 5\n---\n\n"  # body starts on line 8
SOLVED = "# Solution\n\n```swift\nlet language = \"Swift\"\n```\n\n"

# (what, lesson file text, line of the error, part of its message)
LESSON_ERRORS = [
    ("no header", "Text.\n", 1, "starts with a header"),
    ("header never closed", "---\nid: a\n\nText.\n", 1, "never closed"),
    ("header not YAML", "---\nid: a\ntitle: [oops\n---\n\nText.\n", 3, "not valid YAML"),
    ("type in wrong case", HEADER.replace("type: lesson", "type: Lesson") + "Text.\n", 4, "unknown type 'Lesson'"),
    ("minutes as words", HEADER.replace("minutes: 5", "minutes: five") + "Text.\n", 5, "whole number"),
    ("minutes missing", HEADER.replace("minutes: 5\n", "") + "Text.\n", 1, "minutes is missing"),
    ("misspelt key", HEADER.replace("minutes:", "minute:") + "Text.\n", 5, "unknown key 'minute'"),
    ("id with spaces", HEADER.replace("a-lesson", "A lesson") + "Text.\n", 2, "lower-case letters"),
    ("reserved id", HEADER.replace("a-lesson", "warm-up") + "Text.\n", 2, "reserved"),
    ("no description", HEADER + "# Task\n\nDo it.\n", 8, "no text before"),
    ("unknown section", HEADER + "Text.\n\n# Taks\n\nDo it.\n", 10, "unknown section # Taks"),
    ("section twice", HEADER + "Text.\n\n# Task\n\nA.\n\n# Task\n\nB.\n", 14, "appears twice"),
    ("level-1 heading in a quote", HEADER + "Text.\n\n> # Big\n", 10, "level-1 heading"),
    ("HTML", HEADER + "Some <b>bold</b> text.\n", 8, "HTML"),
    ("image", HEADER + "See ![a cat](cat.png).\n", 8, "images"),
    ("nested list", HEADER + "- one\n  - inner\n", 8, "one paragraph"),
    ("fence never closed", HEADER + "Text.\n\n```swift\nlet x = 1\n", 10, "never closed"),
    ("table row too wide", HEADER + "| a | b |\n|---|---|\n| 1 | 2 | 3 |\n", 10, "3 cells but the head only 2"),
    ("reference link", HEADER + "See [Swift][s].\n\n[s]: https://swift.org\n", 10, "[text](https://swift.org)"),
    ("empty note", HEADER + "Text.\n\n> [!tip]\n", 10, "note is empty"),
    ("note text beside marker", HEADER + "Text.\n\n> [!tip] Hello\n> more\n", 10, "lines after [!tip]"),
    ("tests without solution", HEADER + "Text.\n\n# Tests\n\n## T\n\n```swift\nexpect(true)\n```\n",
     10, "needs a # Solution"),
    ("solution without tests", HEADER + "Text.\n\n" + SOLVED, 10, "needs # Tests"),
    ("starting code without tests", HEADER + "Text.\n\n# Starting code\n\n```swift\n```\n", 10, "only shown in a lesson with # Tests"),
    ("hints without tests", HEADER + "Text.\n\n# Hints\n\n- Try.\n", 10, "hints are only shown"),
    ("checklist with tests", HEADER + "Text.\n\n" + SOLVED + "# Tests\n\n## T\n\n```source\nlet\n```\n\n"
     "# Checklist\n\n- Tick.\n", 24, "shows no checklist"),
    ("two solution fences", HEADER + "Text.\n\n# Solution\n\n```swift\na\n```\n\n```swift\nb\n```\n", 10, "exactly one fenced"),
    ("solution in another language", HEADER + "Text.\n\n# Solution\n\n```python\nx = 1\n```\n", 12, "```swift"),
]

# Errors inside # Tests, whose first check fence opens on line 20.
TESTS_AT = HEADER + "Text.\n\n" + SOLVED + "# Tests\n\n## The test\n\n"
CHECK_ERRORS = [
    ("unknown check kind", "```regex\nlet\n```\n", "unknown check kind 'regex'"),
    ("empty check", "```output\n```\n", "check is empty"),
    ("invalid pattern", "```output\n(unclosed\n```\n", "not a valid regular expression"),
    ("Python-only quantifier", "```output\na{,3}b\n```\n", "{,n} is Python-only"),
    ("Python-only escape", "```source\n\\u00e9\n```\n", "Python-only"),
    ("pattern matching anything", "```output\n.*\n```\n", "can never fail"),
    ("negated pattern matching anything", "```nosource\n(let)?\n```\n", "can never pass"),
    ("solution misses a source check", "```source\n\\bvar\\b\n```\n", "solution does not match"),
    ("solution hits a nosource check", "```nosource\nlet\n```\n", "solution matches this pattern"),
    ("swift check without expect", "```swift\nprint(language)\n```\n", "never calls expect"),
    ("text where a check belongs", "Just words.\n", "only fenced checks"),
]

QUESTION_AT = HEADER + "Text.\n\n# Questions\n\n## Which?\n\n"  # question heading on line 12
QUESTION_ERRORS = [
    ("no explanation", "- [x] a\n- [ ] b\n", 12, "starts with Why:"),
    ("no right answer", "- [ ] a\n- [ ] b\n\nWhy: none.\n", 14, "no answer is marked right"),
    ("answer without marker", "- [x] a\n- b\n\nWhy: b.\n", 15, "starts with [x]"),
    ("a single answer", "- [x] a\n\nWhy: a.\n", 14, "at least two answers"),
    ("no answer list", "Some detail.\n\nWhy: a.\n", 12, "list of answers"),
    ("text after the explanation", "- [x] a\n- [ ] b\n\nWhy: a.\n\nMore.\n", 19, "nothing may follow"),
]


def write(root, relative, text):
    path = Path(root) / relative
    path.parent.mkdir(parents=True, exist_ok=True)
    path.write_text(textwrap.dedent(text) if text.startswith("\n") else text, encoding="utf-8")
    return path


def minimal_course(root):
    write(root, "course.yaml", "id: c\ntitle: C\nsubtitle: S\nversions: V\nsummary: Sum.\n")
    write(root, "01-one/chapter.yaml", "title: One\nsummary: First.\n")
    write(root, "01-one/01-mod/module.yaml", "id: mod\ntitle: Mod\n")


def run_tool(*args):
    """Runs main() in this process; returns (exit status, stdout, stderr)."""
    out, err = io.StringIO(), io.StringIO()
    with contextlib.redirect_stdout(out), contextlib.redirect_stderr(err):
        try:
            status = build.main([str(a) for a in args])
        except SystemExit as exit:
            status = exit.code
    return status, out.getvalue(), err.getvalue()


class OutputTest(unittest.TestCase):
    def test_fixture_builds_exactly_the_expected_files(self):
        with tempfile.TemporaryDirectory() as out:
            status, _, err = run_tool("--course", FIXTURE, "--out", out)
            self.assertEqual(status, 0, err)
            for name in ("course.json", "solutions.json"):
                with self.subTest(name):
                    self.assertEqual((Path(out) / name).read_text(encoding="utf-8"),
                                     (EXPECTED / name).read_text(encoding="utf-8"))

    def test_only_keeps_matching_chapters_and_needs_out(self):
        course, solutions, problems = build.build(FIXTURE, only="02")
        self.assertFalse(problems, problems.lines())
        self.assertEqual([c["title"] for c in course["chapters"]], ["More"])
        self.assertEqual(solutions, {})
        status, _, err = run_tool("--course", FIXTURE, "--only", "02")
        self.assertEqual(status, 2)
        self.assertIn("--out", err)

    def test_crlf_source_builds_like_lf(self):
        with tempfile.TemporaryDirectory() as root:
            shutil.copytree(FIXTURE, root, dirs_exist_ok=True)
            for lesson in Path(root).rglob("*.md"):
                lesson.write_bytes(lesson.read_bytes().replace(b"\n", b"\r\n"))
            self.assertEqual(build.build(root)[:2], build.build(FIXTURE)[:2])

    def test_runs_as_a_program(self):
        result = subprocess.run([TOOL, "--course", FIXTURE, "--check", "--out", EXPECTED],
                                capture_output=True, text=True)
        self.assertEqual(result.returncode, 0, result.stderr)


class CheckTest(unittest.TestCase):
    def test_check_detects_each_stale_file(self):
        with tempfile.TemporaryDirectory() as root, tempfile.TemporaryDirectory() as out:
            shutil.copytree(FIXTURE, root, dirs_exist_ok=True)
            self.assertEqual(run_tool("--course", root, "--out", out)[0], 0)
            self.assertEqual(run_tool("--course", root, "--out", out, "--check")[0], 0)

            lesson = Path(root) / "02-more/01-setup/01-xcode.md"
            lesson.write_text(lesson.read_text().replace("Install it.", "Install it now."))
            status, _, err = run_tool("--course", root, "--out", out, "--check")
            self.assertEqual(status, 1)
            self.assertIn("course.json differs", err)
            self.assertNotIn("solutions.json", err)

            self.assertEqual(run_tool("--course", root, "--out", out)[0], 0)
            (Path(out) / "solutions.json").unlink()
            status, _, err = run_tool("--course", root, "--out", out, "--check")
            self.assertEqual(status, 1)
            self.assertIn("solutions.json differs", err)
            self.assertNotIn("course.json", err)

    def test_errors_fail_and_write_nothing(self):
        with tempfile.TemporaryDirectory() as root, tempfile.TemporaryDirectory() as out:
            minimal_course(root)
            write(root, "01-one/01-mod/01-a.md", "No header.\n")
            status, _, err = run_tool("--course", root, "--out", out)
            self.assertEqual(status, 1)
            self.assertIn("01-a.md:1:", err)
            self.assertEqual(list(Path(out).iterdir()), [])


class LessonErrorTest(unittest.TestCase):
    def assertReports(self, text, line, fragment):
        with tempfile.TemporaryDirectory() as root:
            minimal_course(root)
            path = write(root, "01-one/01-mod/01-a.md", text)
            _, _, problems = build.build(root, only="01")
            found = [(p, n, m) for p, n, m in problems.items if fragment in m]
            self.assertTrue(found, f"no error containing {fragment!r} in {problems.lines()}")
            self.assertEqual((found[0][0], found[0][1]), (path, line), problems.lines())

    def test_lesson_errors(self):
        for what, text, line, fragment in LESSON_ERRORS:
            with self.subTest(what):
                self.assertReports(text, line, fragment)

    def test_check_errors(self):
        for what, fence, fragment in CHECK_ERRORS:
            with self.subTest(what):
                self.assertReports(TESTS_AT + fence, 20, fragment)

    def test_pcre2_spellings_are_checked_against_the_solution(self):
        # The app matches with PCRE2; these are its spellings, not Python's.
        for pattern, problem in [(r'"Swift"\z', None), (r"let\h+language", None),
                                 (r"\Qlanguage = \E", None), (r"\x{6C}et", None),
                                 (r"let\z", "solution does not match"),
                                 (r"\Qlanguage.\E", "solution does not match")]:
            with self.subTest(pattern), tempfile.TemporaryDirectory() as root:
                minimal_course(root)
                write(root, "01-one/01-mod/01-a.md", TESTS_AT + f"```source\n{pattern}\n```\n")
                messages = [m for _, _, m in build.build(root, only="01")[2].items]
                if problem:
                    self.assertEqual(len(messages), 1, messages)
                    self.assertIn(problem, messages[0])
                else:
                    self.assertEqual(messages, [])

    def test_question_errors(self):
        for what, body, line, fragment in QUESTION_ERRORS:
            with self.subTest(what):
                self.assertReports(QUESTION_AT + body, line, fragment)

    def test_several_errors_in_one_file_are_all_reported(self):
        with tempfile.TemporaryDirectory() as root:
            minimal_course(root)
            write(root, "01-one/01-mod/01-a.md",
                  HEADER.replace("type: lesson", "type: essay") + "Text <br>\n\n# Hints\n\n- Try.\n")
            _, _, problems = build.build(root, only="01")
            self.assertEqual([n for _, n, _ in problems.items], [4, 8, 10], problems.lines())


class CourseErrorTest(unittest.TestCase):
    def test_course_errors(self):
        lesson = HEADER + "Text.\n"
        cases = [
            ("lesson id used twice", {"01-one/01-mod/01-a.md": lesson, "01-one/01-mod/02-b.md": lesson},
             "01-one/01-mod/02-b.md", 2, "also used by"),
            ("module id used twice", {"01-one/02-other/module.yaml": "id: mod\ntitle: Other\n"},
             "01-one/02-other/module.yaml", 1, "module id 'mod' is also used"),
            ("module without module.yaml", {"01-one/02-other/01-a.md": lesson},
             "01-one/02-other/module.yaml", 0, "missing"),
            ("lesson outside a module", {"01-one/01-a.md": lesson}, "01-one/01-a.md", 0, "module folders only"),
            ("chapter title empty", {"01-one/chapter.yaml": "title: ''\nsummary: S.\n"},
             "01-one/chapter.yaml", 1, "title is empty"),
            ("no probe lesson", {"01-one/01-mod/01-a.md": lesson}, ".", 0, "values-constants"),
        ]
        for what, files, path, line, fragment in cases:
            with self.subTest(what), tempfile.TemporaryDirectory() as root:
                minimal_course(root)
                for relative, text in files.items():
                    write(root, relative, text)
                _, _, problems = build.build(root)
                found = [(p, n) for p, n, m in problems.items if fragment in m]
                self.assertEqual(found, [(Path(root) / path, line)], problems.lines())


if __name__ == "__main__":
    unittest.main()
