#!/usr/bin/python3
"""Tests of course/build.py over small courses: the exact JSON it builds, the
authoring errors it reports with file and line, and its stale-file check."""

import contextlib
import importlib.util
import io
import json
import shutil
import subprocess
import sys
import tempfile
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

# The smallest course around one lesson; its id is the one the self-test needs.
MINIMAL = {"course.yaml": "id: c\ntitle: C\nsubtitle: S\nversions: V\nsummary: Sum.\n",
           "01-one/chapter.yaml": "title: One\nsummary: First.\n",
           "01-one/01-mod/module.yaml": "id: mod\ntitle: Mod\n"}
LESSON = "01-one/01-mod/01-a.md"
HEADER = "---\nid: values-constants\ntitle: A lesson\ntype: lesson\nminutes: 5\n---\n\n"  # body starts on line 8
SOLVED = "# Solution\n\n```swift\nlet language = \"Swift\"\n```\n\n"
TESTS_AT = HEADER + "Text.\n\n" + SOLVED + "# Tests\n\n## The test\n\n"  # first check fence on line 20
ANSWERS = ("# Answers\n\n## Passes: commented\n\n```swift\nlet language = \"Swift\" // yes\n```\n\n"
           "## Fails: lower case\n\n```swift\nlet language = \"swift\"\n```\n\n")
QUESTION_AT = HEADER + "Text.\n\n# Questions\n\n## Which?\n\n"  # question heading on line 12

# (what, lesson file text, line of the error, part of its message)
LESSON_ERRORS = [
    ("header not YAML", "---\nid: a\ntitle: [oops\n---\n\nText.\n", 3, "not valid YAML"),
    ("title with Markdown", HEADER.replace("A lesson", "'Some `where` clauses'") + "Text.\n", 3, "plain text"),
    ("minutes as words", HEADER.replace("minutes: 5", "minutes: five") + "Text.\n", 5, "whole number"),
    ("id with spaces", HEADER.replace("values-constants", "A lesson") + "Text.\n", 2, "lower-case letters"),
    ("no description", HEADER + "# Task\n\nDo it.\n", 8, "no text before"),
    ("unknown section", HEADER + "Text.\n\n# Taks\n\nDo it.\n", 10, "unknown section # Taks"),
    ("section twice", HEADER + "Text.\n\n# Task\n\nA.\n\n# Task\n\nB.\n", 14, "appears twice"),
    ("image", HEADER + "See ![a cat](cat.png).\n", 8, "images"),
    ("nested list", HEADER + "- one\n  - inner\n", 8, "one paragraph"),
    ("fence never closed", HEADER + "Text.\n\n```swift\nlet x = 1\n", 10, "never closed"),
    ("table row too wide", HEADER + "| a | b |\n|---|---|\n| 1 | 2 | 3 |\n", 10, "3 cells but the head only 2"),
    ("reference link", HEADER + "See [Swift][s].\n\n[s]: https://swift.org\n", 10, "[text](https://swift.org)"),
    ("note text beside marker", HEADER + "Text.\n\n> [!tip] Hello\n> more\n", 10, "lines after [!tip]"),
    ("tests without solution", HEADER + "Text.\n\n# Tests\n\n## T\n\n```swift\nexpect(true)\n```\n", 10, "needs a # Solution"),
    ("checklist with tests", TESTS_AT + "```source\nlet\n```\n\n# Checklist\n\n- Tick.\n", 24, "shows no checklist"),
    ("two solution fences", HEADER + "Text.\n\n# Solution\n\n```swift\na\n```\n\n```swift\nb\n```\n", 10, "exactly one fenced"),
    ("unknown check kind", TESTS_AT + "```regex\nlet\n```\n", 20, "unknown check kind 'regex'"),
    ("invalid pattern", TESTS_AT + "```output\n(unclosed\n```\n", 20, "not a valid regular expression"),
    ("Python-only quantifier", TESTS_AT + "```output\na{,3}b\n```\n", 20, "{,n} is Python-only"),
    ("Python-only escape", TESTS_AT + "```source\n\\u00e9\n```\n", 20, "Python-only"),
    ("pattern matching anything", TESTS_AT + "```output\n.*\n```\n", 20, "can never fail"),
    ("solution hits a nosource check", TESTS_AT + "```nosource\nlet\n```\n", 20, "solution matches this pattern"),
    ("swift check without expect", TESTS_AT + "```swift\nprint(language)\n```\n", 20, "never calls expect"),
    # The app matches with PCRE2: \z is the very end and \Q...\E quotes a dot.
    ("PCRE2 \\z", TESTS_AT + "```source\nlet\\z\n```\n", 20, "solution does not match"),
    ("PCRE2 \\Q", TESTS_AT + "```source\n\\Qlanguage.\\E\n```\n", 20, "solution does not match"),
    ("answer without verdict", TESTS_AT + "```source\nlet\n```\n\n# Answers\n\n## Maybe: x\n\n```swift\na\n```\n",
     26, "starts with Passes: or Fails:"),
    ("answer of two blocks", TESTS_AT + "```source\nlet\n```\n\n# Answers\n\n## Fails: x\n\n```swift\na\n```\n\n"
     "```swift\nb\n```\n", 26, "exactly one ```swift block"),
    ("no failing answer", TESTS_AT + "```source\nlet\n```\n\n" + ANSWERS.split("## Fails")[0], 24,
     "at least one answer that fails"),
    ("answers without tests", HEADER + "Text.\n\n" + ANSWERS, 10, "only belongs in a lesson with # Tests"),
    ("equivalent mutant without reason", TESTS_AT + "```source\nlet\n```\n\n" + ANSWERS
     + "# Equivalent mutants\n\n- `a` → `b`\n", 40, "`before` → `after`: why"),
    ("no right answer", QUESTION_AT + "- [ ] a\n- [ ] b\n\nWhy: none.\n", 14, "no answer is marked right"),
    ("a single answer", QUESTION_AT + "- [x] a\n\nWhy: a.\n", 14, "at least two answers"),
    ("text after the explanation", QUESTION_AT + "- [x] a\n- [ ] b\n\nWhy: a.\n\nMore.\n", 19, "nothing may follow"),
]

TEXT = HEADER + "Text.\n"
# (what, files besides MINIMAL, file and line of the error, part of its message)
COURSE_ERRORS = [
    ("lesson id used twice", {LESSON: TEXT, "01-one/01-mod/02-b.md": TEXT}, "01-one/01-mod/02-b.md", 2, "also used by"),
    ("module id used twice", {"01-one/2-b/module.yaml": "id: mod\ntitle: B\n"}, "01-one/2-b/module.yaml", 1, "id 'mod'"),
    ("module without module.yaml", {"01-one/2-b/01-a.md": TEXT}, "01-one/2-b/module.yaml", 0, "missing"),
    ("lesson outside a module", {"01-one/01-a.md": TEXT}, "01-one/01-a.md", 0, "module folders only"),
    ("chapter title empty", {"01-one/chapter.yaml": "title: ''\nsummary: S.\n"}, "01-one/chapter.yaml", 1, "title is empty"),
    ("no probe lesson", {LESSON: TEXT.replace("values-constants", "other")}, ".", 0, "values-constants"),
]


def write_course(root, files):
    for relative, text in {**MINIMAL, **files}.items():
        path = Path(root, relative)
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text, encoding="utf-8")


def problems(files):
    """The problems of MINIMAL plus files, as (path relative to the course, line, message)."""
    with tempfile.TemporaryDirectory() as root:
        write_course(root, files)
        return [(str(Path(p).relative_to(root)), n, m) for p, n, m in build.build(root)[2].items]


def run_tool(*args):
    """Runs main() in this process; returns (exit status, stdout, stderr)."""
    out, err = io.StringIO(), io.StringIO()
    with contextlib.redirect_stdout(out), contextlib.redirect_stderr(err):
        try:
            status = build.main([str(a) for a in args])
        except SystemExit as exit:
            status = exit.code
    return status, out.getvalue(), err.getvalue()


class ToolTest(unittest.TestCase):
    def test_fixture_builds_exactly_the_expected_files(self):
        with tempfile.TemporaryDirectory() as out:
            status, _, err = run_tool("--course", FIXTURE, "--out", out)
            self.assertEqual(status, 0, err)
            for name in ("course.json", "solutions.json"):
                self.assertEqual(Path(out, name).read_text(encoding="utf-8"),
                                 (EXPECTED / name).read_text(encoding="utf-8"), name)

    def test_only_keeps_matching_chapters_and_needs_out(self):
        course, solutions, found = build.build(FIXTURE, only="02")
        self.assertEqual((found.items, [c["title"] for c in course["chapters"]], solutions), ([], ["More"], {}))
        status, _, err = run_tool("--course", FIXTURE, "--only", "02")
        self.assertEqual((status, "--out" in err), (2, True))

    def test_check_detects_each_stale_file_and_errors_write_nothing(self):
        with tempfile.TemporaryDirectory() as root, tempfile.TemporaryDirectory() as out:
            shutil.copytree(FIXTURE, root, dirs_exist_ok=True)
            self.assertEqual(run_tool("--course", root, "--out", out)[0], 0)
            self.assertEqual(run_tool("--course", root, "--out", out, "--check")[0], 0)
            lesson = Path(root) / "02-more/01-setup/01-xcode.md"
            lesson.write_text(lesson.read_text().replace("Install it.", "Install it now."))
            # As a program, as CTest runs it: the exit status must reach the shell.
            result = subprocess.run([TOOL, "--course", root, "--out", out, "--check"], capture_output=True, text=True)
            status, err = result.returncode, result.stderr
            self.assertEqual((status, "course.json differs" in err, "solutions.json" in err), (1, True, False))
            self.assertEqual(run_tool("--course", root, "--out", out)[0], 0)
            (Path(out) / "solutions.json").unlink()
            status, _, err = run_tool("--course", root, "--out", out, "--check")
            self.assertEqual((status, "solutions.json differs" in err, "course.json" in err), (1, True, False))
            lesson.write_text("No header.\n")
            status, _, err = run_tool("--course", root, "--out", out)
            self.assertEqual((status, "01-xcode.md:1: a lesson starts with a header" in err), (1, True), err)
            self.assertFalse((Path(out) / "solutions.json").exists())


class AnswersTest(unittest.TestCase):
    def test_answers_file_holds_answers_and_marks_listed_mutants(self):
        with tempfile.TemporaryDirectory() as out:
            status, _, err = run_tool("--course", FIXTURE, "--out", out, "--answers", Path(out, "a.json"))
            self.assertEqual(status, 0, err)
            lesson = json.loads(Path(out, "a.json").read_text())["lessons"]["values-constants"]
        self.assertEqual(([a["name"] for a in lesson["passes"]], [a["name"] for a in lesson["fails"]]),
                         (["with a type annotation and a comment"], ["a variable"]))
        self.assertEqual([m["equivalent"] for m in lesson["mutants"]], [])  # nothing to mutate in the fixture

    def test_mutants_change_code_only(self):
        code = ('func band(_ n: Int) -> String {\n'
                '    let xs: Array<Int> = [-n, pair.0] // n < 2\n'
                '    if n >= 10 && n < 20 { return "teen \\(n + 1)" }\n'
                '    return n == 0 ? "zero" : "x"\n'
                '}\n'
                'for i in 1...3 { print(band(i)) }\n')
        made = {(m["line"], m["after"]) for m in build.mutants.mutants(code, 0)}
        lines = {line for line, _ in made}
        # Not the generic brackets, the unary minus, the tuple index, the comment,
        # the interpolation inside text, nor the demonstration loop after the function.
        self.assertEqual(lines, {3, 4}, made)
        for after in ('if n > 10 && n < 20 { return "teen \\(n + 1)" }', 'if n >= 11 && n < 20 { return "teen \\(n + 1)" }',
                      'if n >= 10 || n < 20 { return "teen \\(n + 1)" }', 'return n != 0 ? "zero" : "x"',
                      'return n == 1 ? "zero" : "x"'):
            self.assertIn(after, {a for _, a in made})
        without_functions = build.mutants.mutants("for i in 1..<3 {\n    print(i * 2)\n}", 0)
        self.assertEqual({m["after"] for m in without_functions},
                         {"for i in 1...3 {", "for i in 2..<3 {", "for i in 0..<3 {", "for i in 1..<4 {",
                          "for i in 1..<2 {", "print(i * 3)", "print(i * 1)"})

    def test_limit_spreads_over_the_whole_solution(self):
        code = "\n".join(f"let v{i} = {i + 5}" for i in range(30))
        made = build.mutants.mutants(code, 10)
        self.assertEqual((len(made), made[0]["line"], made[-1]["line"] > 25), (10, 1, True))


class ErrorTest(unittest.TestCase):
    def test_each_error_is_reported_once_at_its_line(self):
        lessons = [(what, {LESSON: text}, LESSON, line, fragment) for what, text, line, fragment in LESSON_ERRORS]
        for what, files, path, line, fragment in lessons + COURSE_ERRORS:
            with self.subTest(what):
                found = problems(files)
                self.assertEqual([(p, n) for p, n, m in found if fragment in m], [(path, line)], found)

    def test_pcre2_spellings_that_the_solution_matches_pass(self):
        patterns = (r'"Swift"\z', r"let\h+language", r"\Qlanguage = \E", r"\x{6C}et")
        self.assertEqual(problems({LESSON: TESTS_AT + "".join(f"```source\n{p}\n```\n\n" for p in patterns)
                                   + ANSWERS}), [])

    def test_every_error_of_a_file_is_reported(self):
        # Header errors, HTML, and three sections that only a lesson with tests shows.
        header = HEADER.replace("values-constants", "warm-up").replace("type: lesson", "type: Lesson")
        text = header.replace("minutes:", "minute:") + "Text <br>\n\n# Starting code\n\n```swift\n```\n\n" \
            + SOLVED + "# Hints\n\n- Try.\n"
        found = problems({LESSON: text})
        self.assertEqual(sorted(n for _, n, _ in found), [1, 2, 4, 5, 8, 10, 15, 21], found)


if __name__ == "__main__":
    unittest.main()
