#!/usr/bin/python3
"""Builds Resources/course.json and Resources/solutions.json from the lesson
sources in course/ and checks them. course/README.md describes the format."""

import argparse
import json
import re
import sys
from pathlib import Path

import yaml

sys.path.insert(0, str(Path(__file__).resolve().parent))
sys.dont_write_bytecode = True  # keep course/ free of __pycache__
import mutants  # noqa: E402  (beside this file)
from markdown_it import MarkdownIt
from markdown_it.rules_block.table import escapedSplit
from markdown_it.tree import SyntaxTreeNode
from mdit_py_plugins.front_matter import front_matter_plugin

LESSON_TYPES = ("lesson", "workshop", "lab", "quiz", "xcode", "project")
CHECK_KINDS = ("swift", "output", "nooutput", "source", "nosource")

# Section heading (lower case) -> key it fills.
SECTIONS = {
    "task": "instructions",
    "starting code": "seed",
    "solution": "solution",
    "tests": "tests",
    "hints": "hints",
    "checklist": "checklist",
    "questions": "questions",
    "answers": "answers",
    "equivalent mutants": "equivalent",
}
ANSWER_VERDICTS = {"passes:": "passes", "fails:": "fails"}
NO_ANSWERS = {"passes": [], "fails": []}

ID_PATTERN = re.compile(r"[a-z0-9]+(-[a-z0-9]+)*\Z")
# The app's own runner probe lesson; a course lesson must not take its id.
RESERVED_IDS = {"warm-up"}
# The self-test runs its runner probes with this lesson.
PROBE_LESSON = "values-constants"

NOTE_MARKER = re.compile(r"\[!([^\]\n]+)\]")
ANSWER_MARKER = re.compile(r"\[( |x|X)\](?: +|\Z)")


class Problems:
    """Collects authoring errors as "file:line: message" so that one run reports many."""

    def __init__(self):
        self.items = []

    def add(self, path, line, message):
        self.items.append((path, line, message))

    def __bool__(self):
        return bool(self.items)

    def lines(self):
        return [f"{shown(path)}:{line}: {message}" if line else f"{shown(path)}: {message}"
                for path, line, message in self.items]


def shown(path):
    """The path as a user would type it from the current directory."""
    try:
        return str(Path(path).resolve().relative_to(Path.cwd().resolve()))
    except ValueError:
        return str(path)


def natural_key(name):
    return [int(part) if part.isdigit() else part for part in re.split(r"(\d+)", name)]


def read_text(path, problems):
    """The file's text with plain line ends, or None after reporting."""
    try:
        text = path.read_text(encoding="utf-8")
    except UnicodeDecodeError as error:
        problems.add(path, 0, f"this is not UTF-8 text ({error.reason} at byte {error.start})")
        return None
    return text.lstrip("\ufeff").replace("\r\n", "\n").replace("\r", "\n")


def strip_final_line_end(text):
    return text[:-1] if text.endswith("\n") else text


# --- YAML ---------------------------------------------------------------------

def read_yaml(text, path, first_line, problems):
    """Parses a YAML mapping; returns (values, line of each key) or None after reporting."""
    loader = yaml.SafeLoader(text)
    try:
        node = loader.get_single_node()
        data = loader.construct_document(node) if node is not None else None
    except yaml.YAMLError as error:
        mark = getattr(error, "problem_mark", None) or getattr(error, "context_mark", None)
        what = getattr(error, "problem", None) or str(error)
        problems.add(path, first_line + (mark.line if mark else 0), f"this is not valid YAML: {what}")
        return None
    finally:
        loader.dispose()
    if not isinstance(data, dict):
        problems.add(path, first_line, "expected lines of the form key: value")
        return None
    lines = {}
    for key, _ in node.value:
        if key.value in lines:
            problems.add(path, first_line + key.start_mark.line, f"{key.value} is given twice")
        lines[key.value] = first_line + key.start_mark.line
    return data, lines


def take_fields(parsed, fields, path, line, problems):
    """Checks a YAML mapping against fields (key -> "text" or "id" or "type" or "minutes")
    and returns the values in the order of fields, or None when something is wrong."""
    data, lines = parsed
    ok = True
    for key in data:
        if key not in fields:
            problems.add(path, lines.get(key, line),
                         f"unknown key {key!r}; expected {', '.join(fields)}")
            ok = False
    values = {}
    for key, kind in fields.items():
        if key not in data:
            problems.add(path, line, f"{key} is missing")
            ok = False
            continue
        value, at = data[key], lines[key]
        message = None
        if kind == "minutes":
            if isinstance(value, bool) or not isinstance(value, int) or value < 1:
                message = "minutes must be a whole number of at least 1"
        elif not isinstance(value, str):
            message = f"{key} must be text; put it in quotes"
        elif not value.strip():
            message = f"{key} is empty"
        elif kind == "id" and not ID_PATTERN.match(value):
            message = f"id {value!r} must be lower-case letters and digits joined by single hyphens"
        elif kind == "id" and value in RESERVED_IDS:
            message = f"the id {value!r} is reserved by the app"
        elif kind == "type" and value not in LESSON_TYPES:
            message = f"unknown type {value!r}; expected one of {', '.join(LESSON_TYPES)}"
        if message:
            problems.add(path, at, message)
            ok = False
        else:
            values[key] = value.strip() if isinstance(value, str) else value
    return values if ok else None


def read_yaml_file(path, fields, problems):
    if not path.is_file():
        problems.add(path, 0, "this file is missing")
        return None
    text = read_text(path, problems)
    parsed = text is not None and read_yaml(text, path, 1, problems)
    return parsed and take_fields(parsed, fields, path, 1, problems)


# --- Regular expressions --------------------------------------------------------

PY_ONLY_FLAGS = re.compile(r"\(\?[aiLmsux-]*[aLu]")
REGEX_PIECE = re.compile(r"""
      \\x\{[0-9A-Fa-f]{1,6}\}       # PCRE2 code point
    | \\Q.*?(?:\\E|\Z)              # PCRE2 quoted run
    | \\N\{[^}]*\}                  # Python character name
    | \\.                           # any other escape
    | \[\^?\]?                      # class opening; a ']' right after it is literal
    | .
    """, re.VERBOSE | re.DOTALL)


def regex_pieces(pattern):
    """Splits a pattern into escapes, class openings and single characters, each with
    whether it stands inside a character class."""
    in_class = False
    for piece in REGEX_PIECE.findall(pattern):
        if piece.startswith("[") and not in_class:
            yield piece, False
            in_class = True
            continue
        if piece == "]" and in_class:
            in_class = False
        yield piece, in_class


def python_only_syntax(pattern):
    """Names syntax that Python's re accepts but PCRE2 (the app's engine) does not."""
    pieces = list(regex_pieces(pattern))
    for i, (piece, in_class) in enumerate(pieces):
        if piece in ("\\u", "\\U") or piece.startswith("\\N{"):
            return f"{piece[:2]} escapes are Python-only; write \\x{{...}}"
        if in_class:
            continue
        rest = "".join(p for p, _ in pieces[i:i + 12])
        if piece == "{" and re.match(r"\{,\d+\}", rest):
            return "{,n} is Python-only; write {0,n}"
        if piece == "(" and PY_ONLY_FLAGS.match(rest):
            return "the flags a, L and u are Python-only"
    return None


def python_pattern(pattern):
    """The pattern with the PCRE2 escapes that Python's re spells differently rewritten,
    so that re can check and try it."""
    out = []
    for piece, in_class in regex_pieces(pattern):
        if piece == "\\z":
            piece = "\\Z"
        elif piece == "\\Z" and not in_class:
            piece = "(?=\\n?\\Z)"
        elif piece == "\\h":
            piece = " \\t" if in_class else "[ \\t]"
        elif piece.startswith("\\x{"):
            piece = f"\\U{int(piece[3:-1], 16):08x}"
        elif piece.startswith("\\Q"):
            piece = re.escape(piece[2:].removesuffix("\\E"))
        out.append(piece)
    return "".join(out)


def pattern_problem(kind, pattern, solution):
    """Why a check's pattern is unusable, or None."""
    try:
        compiled = re.compile(python_pattern(pattern), re.MULTILINE)
    except re.error as error:
        return f"this is not a valid regular expression (as checked with Python's re): {error}"
    python_only = python_only_syntax(pattern)
    if python_only:
        return python_only
    if compiled.search("") and compiled.search("\x01"):
        verdict = "fail" if kind in ("output", "source") else "pass"
        return f"this pattern also matches empty text, so the check can never {verdict}"
    if solution is not None and kind in ("source", "nosource"):
        found = compiled.search(solution) is not None
        if kind == "source" and not found:
            return "the solution does not match this pattern"
        if kind == "nosource" and found:
            return "the solution matches this pattern, so its test fails"
    return None


# --- Lesson files ---------------------------------------------------------------

def markdown_parser():
    return (MarkdownIt("commonmark")
            .enable(["table", "strikethrough"])
            .use(front_matter_plugin))


def join_lines(lines):
    """Inline source lines as one text: soft breaks become a space, hard breaks a line end."""
    text = ""
    for i, line in enumerate(lines):
        line = line.lstrip(" \t")
        if i == len(lines) - 1:
            text += line
        elif re.search(r"(?<!\\)(\\\\)*\\\Z", line):
            text += line[:-1] + "\n"
        elif line.endswith("  "):
            text += line.rstrip(" ") + "\n"
        else:
            text += line.rstrip(" \t") + " "
    return text


class LessonFile:
    """Turns one lesson file into its lesson record and solution, reporting problems."""

    def __init__(self, path, problems, parser):
        self.path = path
        self.problems = problems
        self.parser = parser
        self.ok = True

    def fail(self, line, message):
        self.problems.add(self.path, line, message)
        self.ok = False

    @staticmethod
    def line_of(node):
        while node is not None and node.map is None:
            node = node.parent
        return node.map[0] + 1 if node is not None and node.map else 0

    # Inline text --------------------------------------------------------------

    def inline_lines(self, inline):
        """The raw source lines of an inline node, after checking for disallowed syntax."""
        for child in inline.walk():
            if child.type == "image":
                self.fail(self.line_of(inline), "images are not supported")
            elif child.type == "html_inline":
                self.fail(self.line_of(inline), "HTML is not supported; write Markdown")
        return inline.content.split("\n")

    def inline_text(self, node):
        """The text of a node that holds one inline child (paragraph, heading, cell)."""
        inline = node.children[0] if node.children else None
        return join_lines(self.inline_lines(inline)) if inline is not None else ""

    # Blocks ------------------------------------------------------------------------

    def blocks(self, nodes):
        result = []
        for node in nodes:
            block = self.block(node)
            if block is not None:
                result.append(block)
        return result

    def block(self, node):
        kind = node.type
        line = self.line_of(node)
        if kind == "paragraph":
            return {"type": "paragraph", "text": self.inline_text(node)}
        if kind == "heading":
            level = int(node.tag[1:])
            if level == 1:
                self.fail(line, "a level-1 heading starts a section and cannot stand here; use ## or lower")
                return None
            return {"type": "heading", "level": level, "text": self.inline_text(node)}
        if kind == "fence":
            return {"type": "code", "lang": self.fence_language(node), "code": self.fence_code(node)}
        if kind == "code_block":
            return {"type": "code", "lang": "", "code": strip_final_line_end(node.content)}
        if kind in ("bullet_list", "ordered_list"):
            return {"type": "list", "ordered": kind == "ordered_list", "items": self.list_items(node)}
        if kind == "blockquote":
            return self.quote(node)
        if kind == "table":
            return self.table(node)
        if kind == "hr":
            return {"type": "rule"}
        if kind == "html_block":
            self.fail(line, "HTML is not supported; write Markdown")
            return None
        self.fail(line, f"unsupported Markdown ({kind})")
        return None

    def fence_language(self, node):
        words = node.info.split()
        return words[0] if words else ""

    def fence_code(self, node):
        start, end = node.map
        closing = self.source_lines[end - 1].lstrip(" \t>") if end - 1 > start else ""
        fence_char = node.markup[0]
        if not (closing.startswith(node.markup) and closing.rstrip().strip(fence_char) == ""):
            self.fail(start + 1, f"this code block is never closed with {node.markup}")
        return strip_final_line_end(node.content)

    def list_items(self, node):
        items = []
        for item in node.children:
            line = self.line_of(item)
            if not item.children:
                self.fail(line, "this list item is empty")
            elif len(item.children) > 1 or item.children[0].type != "paragraph":
                self.fail(line, "a list item holds one paragraph of text; "
                                "nested lists, code and further paragraphs are not supported")
            else:
                items.append(self.inline_text(item.children[0]))
        return items

    def quote(self, node):
        children = list(node.children)
        first = children[0] if children else None
        if first is None or first.type != "paragraph":
            return {"type": "quote", "blocks": self.blocks(children)}
        lines = self.inline_lines(first.children[0])
        marker = NOTE_MARKER.match(lines[0])
        if not marker:
            return {"type": "quote", "blocks": self.blocks(children)}
        line = self.line_of(node)
        if lines[0][marker.end():].strip():
            self.fail(line, f"put the note's text on the lines after [!{marker.group(1)}]")
        blocks = []
        if len(lines) > 1:
            blocks.append({"type": "paragraph", "text": join_lines(lines[1:])})
        blocks += self.blocks(children[1:])
        if not blocks:
            self.fail(line, "this note is empty")
        return {"type": "note", "kind": marker.group(1).strip(), "blocks": blocks}

    def table(self, node):
        head, rows = [], []
        for part in node.children:
            for row in part.children:
                cells = [self.inline_text(cell) for cell in row.children]
                if part.type == "thead":
                    head = cells
                else:
                    rows.append(cells)
                    self.check_row_width(row, len(head))
        return {"type": "table", "head": head, "rows": rows}

    def check_row_width(self, row, width):
        # markdown-it drops cells beyond the head's width without a word.
        line = row.map[0]
        columns = escapedSplit(self.source_lines[line].lstrip(" \t>").rstrip())
        if columns and columns[0] == "":
            columns.pop(0)
        if columns and columns[-1] == "":
            columns.pop()
        if len(columns) > width:
            self.fail(line + 1, f"this row has {len(columns)} cells but the head only {width}")

    # Sections ---------------------------------------------------------------------

    def task(self, nodes, heading_line):
        blocks = self.blocks(nodes)
        if not blocks:
            self.fail(heading_line, "# Task is empty")
        return blocks

    def single_code(self, nodes, heading_line, name):
        fences = [node for node in nodes if node.type == "fence"]
        if len(fences) != 1 or len(nodes) != 1:
            self.fail(heading_line, f"# {name} holds exactly one fenced code block")
            return None
        fence = fences[0]
        if self.fence_language(fence) not in ("swift", ""):
            self.fail(self.line_of(fence), f"# {name} is Swift code: open the fence with ```swift")
        return self.fence_code(fence)

    def single_list(self, nodes, heading_line, name):
        if len(nodes) != 1 or nodes[0].type not in ("bullet_list", "ordered_list"):
            self.fail(heading_line, f"# {name} holds one bullet list")
            return []
        return self.list_items(nodes[0])

    @staticmethod
    def split_at_subheadings(nodes):
        """[(heading node or None, [nodes up to the next ## heading])]"""
        parts = []
        for node in nodes:
            if node.type == "heading" and node.tag == "h2":
                parts.append((node, []))
            elif parts:
                parts[-1][1].append(node)
            else:
                parts.append((None, [node]))
        return parts

    def tests(self, nodes, heading_line):
        tests = []
        for heading, body in self.split_at_subheadings(nodes):
            if heading is None:
                self.fail(self.line_of(body[0]), "each test starts with a ## heading, the sentence the learner sees")
                continue
            text = self.inline_text(heading)
            if not text.strip():
                self.fail(self.line_of(heading), "this test has no sentence")
            checks = []
            for node in body:
                if node.type != "fence":
                    self.fail(self.line_of(node), "a test holds only fenced checks (```swift, ```output, ...)")
                    continue
                kind = self.fence_language(node)
                code = self.fence_code(node)
                if kind not in CHECK_KINDS:
                    self.fail(self.line_of(node),
                              f"unknown check kind {kind!r}; expected one of {', '.join(CHECK_KINDS)}")
                elif not code.strip():
                    self.fail(self.line_of(node), "this check is empty")
                else:
                    checks.append(({"kind": kind, "code": code}, self.line_of(node)))
            if not checks and not body:
                self.fail(self.line_of(heading), "this test has no checks")
            tests.append((text, checks))
        if not tests:
            self.fail(heading_line, "# Tests holds no tests")
        return tests

    def check_problems(self, tests, solution):
        for _, checks in tests:
            for check, line in checks:
                if check["kind"] == "swift":
                    if not re.search(r"\bexpect\s*\(", check["code"]):
                        self.fail(line, "this check never calls expect(...), so it can never fail")
                else:
                    problem = pattern_problem(check["kind"], check["code"], solution)
                    if problem:
                        self.fail(line, problem)

    def answers(self, nodes, heading_line):
        """{"passes": [...], "fails": [...]}, each answer {"name", "code"}."""
        found = {verdict: [] for verdict in NO_ANSWERS}
        for heading, body in self.split_at_subheadings(nodes):
            if heading is None:
                self.fail(self.line_of(body[0]), "each answer starts with a ## heading: Passes: or Fails:, "
                                                 "then what the answer does")
                continue
            text = self.inline_text(heading).strip()
            verdict = next((v for prefix, v in ANSWER_VERDICTS.items() if text.lower().startswith(prefix)), None)
            name = text.split(":", 1)[1].strip() if verdict else ""
            if verdict is None or not name:
                self.fail(self.line_of(heading), "an answer's heading starts with Passes: or Fails:, "
                                                 "then says what the answer does")
                continue
            fences = [node for node in body if node.type == "fence"]
            if len(fences) != 1 or len(body) != 1 or self.fence_language(fences[0]) != "swift":
                self.fail(self.line_of(heading), "an answer holds exactly one ```swift block")
                continue
            found[verdict].append({"name": name, "code": self.fence_code(fences[0])})
        return found

    def equivalent(self, nodes, heading_line):
        pairs = []
        for item_line, item in zip((self.line_of(i) for i in nodes[0].children) if nodes else (),
                                   self.single_list(nodes, heading_line, "Equivalent mutants")):
            pair = mutants.parse_equivalent(item)
            if pair is None:
                self.fail(item_line, "an equivalent mutant is written `before` → `after`: why")
            else:
                pairs.append(pair)
        return pairs

    def questions(self, nodes, heading_line):
        questions = []
        for heading, body in self.split_at_subheadings(nodes):
            if heading is None:
                self.fail(self.line_of(body[0]), "each question starts with a ## heading, the question")
                continue
            question = self.question(heading, body)
            if question:
                questions.append(question)
        if not nodes:
            self.fail(heading_line, "# Questions holds no questions")
        return questions

    def question(self, heading, body):
        line = self.line_of(heading)
        text = self.inline_text(heading)
        if not text.strip():
            self.fail(line, "this question has no text")
        why_at = next((i for i, node in enumerate(body) if node.type == "paragraph"
                       and node.children[0].content.startswith("Why:")), None)
        if why_at is None:
            self.fail(line, "this question needs a last paragraph that starts with Why:, the explanation")
            return None
        for extra in body[why_at + 1:]:
            self.fail(self.line_of(extra), "nothing may follow the Why: paragraph of a question")
        why = self.inline_text(body[why_at])[len("Why:"):].strip()
        if not why:
            self.fail(self.line_of(body[why_at]), "the explanation after Why: is empty")
        answers_node = body[why_at - 1] if why_at > 0 else None
        if answers_node is None or answers_node.type not in ("bullet_list", "ordered_list"):
            self.fail(line, "this question needs a list of answers, each starting with [x] or [ ], "
                            "just before Why:")
            return None
        answers = []
        for item_line, item in zip((self.line_of(i) for i in answers_node.children),
                                   self.list_items(answers_node)):
            marker = ANSWER_MARKER.match(item)
            if not marker:
                self.fail(item_line, "an answer starts with [x] (right) or [ ] (wrong)")
                continue
            answer = item[marker.end():].strip()
            if not answer:
                self.fail(item_line, "this answer is empty")
            answers.append({"text": answer, "correct": marker.group(1) != " "})
        if len(answers) < 2:
            self.fail(self.line_of(answers_node), "a question needs at least two answers")
        elif not any(a["correct"] for a in answers):
            self.fail(self.line_of(answers_node), "no answer is marked right with [x]")
        return {"question": text, "detail": self.blocks(body[:why_at - 1]),
                "answers": answers, "why": why}

    # The whole file ---------------------------------------------------------------------

    def read(self):
        """Returns (lesson, solution, line of the id) or None when the file has problems."""
        text = read_text(self.path, self.problems)
        if text is None:
            return None
        self.source_lines = text.split("\n")
        env = {}
        nodes = SyntaxTreeNode(self.parser.parse(text, env)).children
        # The app sees only each text on its own, so a reference link's target would be lost.
        for reference in env.get("references", {}).values():
            self.fail(reference["map"][0] + 1, f"link reference definitions are not supported; "
                                                f"write the link as [text]({reference['href']})")

        header, id_line, title_line = None, 1, 1
        if nodes and nodes[0].type == "front_matter":
            parsed = read_yaml(nodes[0].content, self.path, 2, self.problems)
            header = parsed and take_fields(parsed, {"id": "id", "title": "text", "type": "type",
                                                     "minutes": "minutes"}, self.path, 1, self.problems)
            id_line = parsed[1].get("id", 1) if parsed else 1
            title_line = parsed[1].get("title", 1) if parsed else 1
            nodes = nodes[1:]
            if header is None:
                self.ok = False
        elif self.source_lines[0].rstrip() == "---":
            self.fail(1, "the header that starts here is never closed with a --- line")
        else:
            self.fail(1, "a lesson starts with a header between --- lines: id, title, type, minutes")

        sections = {"description": (0, [])}
        current = sections["description"][1]
        for node in nodes:
            if node.type == "heading" and node.tag == "h1":
                name = self.inline_text(node).strip()
                key = SECTIONS.get(name.lower())
                line = self.line_of(node)
                if key is None:
                    self.fail(line, f"unknown section # {name}; expected one of "
                                    + ", ".join(f"# {s.capitalize()}" for s in SECTIONS))
                    current = []
                elif key in sections:
                    self.fail(line, f"# {name} appears twice")
                    current = []
                else:
                    sections[key] = (line, [])
                    current = sections[key][1]
            else:
                current.append(node)

        description = self.blocks(sections["description"][1])
        if not description:
            self.fail(self.line_of(nodes[0]) if nodes else len(self.source_lines),
                      "the lesson has no text before its first # section")

        readers = {
            "instructions": self.task,
            "seed": lambda body, line: self.single_code(body, line, "Starting code"),
            "solution": lambda body, line: self.single_code(body, line, "Solution"),
            "tests": self.tests,
            "hints": lambda body, line: self.single_list(body, line, "Hints"),
            "checklist": lambda body, line: self.single_list(body, line, "Checklist"),
            "questions": self.questions,
            "answers": self.answers,
            "equivalent": self.equivalent,
        }
        at = {key: line for key, (line, _) in sections.items()}
        content = {key: readers[key](body, line) for key, (line, body) in sections.items() if key in readers}
        tests = content.get("tests", [])
        solution = content.get("solution")

        # A lesson with tests gets the code screen (starting code, hints), every
        # other lesson the reading screen (checklist, questions); anything else
        # would silently not appear.
        if tests:
            if "solution" not in sections:
                self.fail(at["tests"], "a lesson with tests needs a # Solution")
            for key in ("checklist", "questions"):
                if content.get(key):
                    self.fail(at[key], f"a lesson with tests shows no {key}")
            found = content.get("answers", NO_ANSWERS)
            for verdict, example in (("passes", "## Passes: with a comment"), ("fails", "## Fails: off by one")):
                if not found[verdict]:
                    self.fail(at.get("answers", at["tests"]),
                              f"a lesson with tests needs at least one answer that {verdict} "
                              f"under # Answers ({example})")
        elif "tests" not in sections:
            if "solution" in sections:
                self.fail(at["solution"], "a solution needs # Tests to check it against")
            if "seed" in sections:
                self.fail(at["seed"], "starting code is only shown in a lesson with # Tests")
            if content.get("hints"):
                self.fail(at["hints"], "hints are only shown in a lesson with # Tests")
            for key, name in (("answers", "# Answers"), ("equivalent", "# Equivalent mutants")):
                if key in sections:
                    self.fail(at[key], f"{name} only belongs in a lesson with # Tests")
        self.check_problems(tests, solution)

        if header and re.search(r"[`*~]|\]\(", header["title"]):
            self.fail(title_line, "a lesson title is shown as plain text (sidebar, buttons): "
                               "write it without Markdown such as `code` or *emphasis*")
        if not self.ok or header is None:
            return None
        lesson = dict(header)
        lesson["description"] = description
        lesson["instructions"] = content.get("instructions", [])
        if content.get("seed") is not None:
            lesson["seed"] = content["seed"]
        lesson["tests"] = [{"text": text, "checks": [check for check, _ in checks]}
                           for text, checks in tests]
        for key in ("hints", "checklist", "questions"):
            lesson[key] = content.get(key, [])
        self.other_answers = None
        if tests:
            self.other_answers = {**content.get("answers", NO_ANSWERS),
                                  "equivalent": content.get("equivalent", [])}
        return lesson, (solution if tests else None), id_line


# --- The course --------------------------------------------------------------------------

def entries(folder):
    """A folder's entries in reading order, without hidden files and editor backups."""
    return sorted((p for p in folder.iterdir()
                   if not p.name.startswith(".") and not p.name.endswith("~")
                   and p.name != "__pycache__"),
                  key=lambda p: natural_key(p.name))


def build(course_dir, only=None, answers=None):
    """Builds (course, solutions, problems) from the sources in course_dir; fills
    `answers`, when given, with each code lesson's other answers and equivalent mutants."""
    course_dir = Path(course_dir)
    problems = Problems()
    parser = markdown_parser()
    course = read_yaml_file(course_dir / "course.yaml",
                            {"id": "text", "title": "text", "subtitle": "text",
                             "versions": "text", "summary": "text"}, problems) or {}
    course["chapters"] = []
    solutions = {}
    lesson_at, module_at, chapter_at = {}, {}, {}

    def once(seen, key, what, path, line):
        if key in seen:
            first_path, first_line = seen[key]
            problems.add(path, line, f"{what} is also used by {shown(first_path)}:{first_line}")
        else:
            seen[key] = (path, line)

    for chapter_dir in entries(course_dir):
        if not chapter_dir.is_dir() or (only and not chapter_dir.name.startswith(only)):
            continue
        chapter = read_yaml_file(chapter_dir / "chapter.yaml",
                                 {"title": "text", "summary": "text"}, problems)
        if chapter:
            once(chapter_at, chapter["title"], f"the chapter title {chapter['title']!r}",
                 chapter_dir / "chapter.yaml", 1)
        modules = []
        for module_dir in entries(chapter_dir):
            if not module_dir.is_dir():
                if module_dir.name != "chapter.yaml":
                    problems.add(module_dir, 0, "a chapter folder holds chapter.yaml and module folders only")
                continue
            module = read_yaml_file(module_dir / "module.yaml", {"id": "id", "title": "text"}, problems)
            if module:
                once(module_at, module["id"], f"the module id {module['id']!r}", module_dir / "module.yaml", 1)
            lessons = []
            for lesson_path in entries(module_dir):
                if lesson_path.suffix != ".md" or not lesson_path.is_file():
                    if lesson_path.name != "module.yaml":
                        problems.add(lesson_path, 0, "a module folder holds module.yaml and lesson .md files only")
                    continue
                reader = LessonFile(lesson_path, problems, parser)
                result = reader.read()
                if result is None:
                    continue
                lesson, solution, id_line = result
                once(lesson_at, lesson["id"], f"the lesson id {lesson['id']!r}", lesson_path, id_line)
                lessons.append(lesson)
                if solution is not None:
                    solutions[lesson["id"]] = solution
                    if answers is not None:
                        answers[lesson["id"]] = reader.other_answers
            if module:
                modules.append({**module, "lessons": lessons})
        if chapter:
            course["chapters"].append({**chapter, "modules": modules})

    if not only and not problems and PROBE_LESSON not in lesson_at:
        problems.add(course_dir, 0, f"no lesson has the id {PROBE_LESSON!r}, "
                                    "which the app's self-test runs its probes with")
    return course, solutions, problems


def answers_file(answers, solutions, limit):
    """What course_check runs besides the lessons: each code lesson's other
    answers and the mutants of its solution, the equivalent ones marked."""
    lessons = {}
    for lesson_id, found in answers.items():
        equivalent = set(found["equivalent"])
        made = mutants.mutants(solutions[lesson_id], limit)
        for mutant in made:
            mutant["equivalent"] = (mutant["before"], mutant["after"]) in equivalent
        lessons[lesson_id] = {"passes": found["passes"], "fails": found["fails"], "mutants": made}
    return {"lessons": lessons}


def as_json(value):
    return json.dumps(value, indent=1, ensure_ascii=False) + "\n"


def main(argv=None):
    here = Path(__file__).resolve().parent
    options = argparse.ArgumentParser(
        description="Build Resources/course.json and Resources/solutions.json from the lessons in course/.")
    options.add_argument("--check", action="store_true",
                         help="only build and compare with the files on disk; exit 1 when they differ")
    options.add_argument("--out", metavar="DIR", type=Path,
                         help="write (or compare) the two files in DIR instead of Resources/")
    options.add_argument("--only", metavar="PREFIX",
                         help="keep only the chapters whose folder name starts with PREFIX (needs --out)")
    options.add_argument("--answers", metavar="FILE", type=Path,
                         help="also write each code lesson's other answers and mutants to FILE, for course_check")
    options.add_argument("--mutants", metavar="N", type=int, default=mutants.DEFAULT_LIMIT,
                         help=f"the most mutants per lesson, evenly spread (default {mutants.DEFAULT_LIMIT}; 0: all)")
    options.add_argument("--course", metavar="DIR", type=Path, default=here,
                         help="the course sources (default: the folder of this script)")
    args = options.parse_args(argv)
    if args.only and not args.out:
        options.error("--only builds part of the course: give --out DIR so that Resources/ keeps the whole")
    out = args.out or here.parent / "Resources"

    answers = {}
    course, solutions, problems = build(args.course, args.only, answers)
    if problems:
        for line in problems.lines():
            print(line, file=sys.stderr)
        count = len(problems.items)
        print(f"{count} error{'s' if count != 1 else ''}; nothing written", file=sys.stderr)
        return 1

    if args.answers:
        args.answers.parent.mkdir(parents=True, exist_ok=True)
        args.answers.write_text(as_json(answers_file(answers, solutions, args.mutants)), encoding="utf-8")
    files = {out / "course.json": as_json(course), out / "solutions.json": as_json(solutions)}
    lessons = sum(len(m["lessons"]) for c in course["chapters"] for m in c["modules"])
    if args.check:
        stale = [path for path, text in files.items()
                 if not path.is_file() or path.read_text(encoding="utf-8") != text]
        for path in stale:
            print(f"{shown(path)} differs from what course/build.py builds now; run course/build.py",
                  file=sys.stderr)
        if not stale:
            print(f"{lessons} lessons; {', '.join(shown(p) for p in files)} up to date")
        return 1 if stale else 0
    out.mkdir(parents=True, exist_ok=True)
    for path, text in files.items():
        path.write_text(text, encoding="utf-8")
    print(f"{lessons} lessons, {len(solutions)} with code: wrote {', '.join(shown(p) for p in files)}")
    return 0


if __name__ == "__main__":
    sys.exit(main())
