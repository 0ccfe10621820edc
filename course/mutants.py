"""Small mutants of a Swift solution, for finding tests that accept wrong code.

Only code is changed, never comments or text literals, and nothing in the
demonstration lines at the end of a program that declares functions or types:
the top-level lines after its last declaration, which tests do not look at."""

import re

# Binary operators, changed only where they stand between spaces as Swift's
# binary operators do (so `Array<Int>` and `-1` stay as they are).
BINARY = {"<": "<=", "<=": "<", ">": ">=", ">=": ">", "==": "!=", "!=": "==",
          "&&": "||", "||": "&&", "+": "-", "-": "+", "+=": "-=", "-=": "+="}
RANGES = {"...": "..<", "..<": "..."}
WORDS = {"true": "false", "false": "true"}
OPERATOR_CHARS = set("/=-+!*%<>&|^~?")
DECLARATIONS = {"func", "struct", "class", "enum", "actor", "protocol", "extension", "typealias"}
MODIFIERS = {"private", "fileprivate", "internal", "public", "open", "final", "indirect",
             "nonisolated", "static", "mutating", "override", "required", "convenience"}

# The most mutants tried per lesson; beyond it, an even spread of them.
DEFAULT_LIMIT = 40


class Token:
    __slots__ = ("kind", "text", "start", "line", "depth")

    def __init__(self, kind, text, start, line, depth):
        self.kind, self.text, self.start, self.line, self.depth = kind, text, start, line, depth


def _skip_string(code, i):
    """Index just after the text literal that starts at i (a quote, or # of a raw string)."""
    hashes = 0
    while code.startswith("#", i + hashes):
        hashes += 1
    i += hashes
    multi = code.startswith('"""', i)
    quote = '"""' if multi else '"'
    i += len(quote)
    close = quote + "#" * hashes
    escape = "\\" + "#" * hashes
    while i < len(code):
        if code.startswith(close, i):
            return i + len(close)
        if code.startswith(escape, i):
            i += len(escape)
            if code.startswith("(", i):  # interpolation: code up to the matching bracket
                depth = 0
                while i < len(code):
                    c = code[i]
                    if c == '"':
                        i = _skip_string(code, i)
                        continue
                    depth += c == "("
                    depth -= c == ")"
                    i += 1
                    if depth == 0:
                        break
            else:
                i += 1
            continue
        if not multi and code[i] == "\n":
            return i  # unterminated; the compiler will say so
        i += 1
    return i


def tokens(code):
    """The code's tokens outside comments and text literals, with line (from 1) and brace depth."""
    out, i, line, depth = [], 0, 1, 0
    while i < len(code):
        c = code[i]
        if c == "\n":
            line += 1
            i += 1
        elif c.isspace():
            i += 1
        elif code.startswith("//", i):
            end = code.find("\n", i)
            i = len(code) if end < 0 else end
        elif code.startswith("/*", i):
            nesting, i = 1, i + 2
            while i < len(code) and nesting:
                if code.startswith("/*", i):
                    nesting, i = nesting + 1, i + 2
                elif code.startswith("*/", i):
                    nesting, i = nesting - 1, i + 2
                else:
                    line += code[i] == "\n"
                    i += 1
        elif c == '"' or (c == "#" and re.match(r'#+"', code[i:])):
            end = _skip_string(code, i)
            line += code.count("\n", i, end)
            i = end
        elif c.isalpha() or c == "_" or c == "$":
            m = re.compile(r"[$\w]+").match(code, i)
            out.append(Token("word", m.group(), i, line, depth))
            i = m.end()
        elif c.isdigit():
            m = re.compile(r"0[xob][0-9a-fA-F_]+|\d[\d_]*(\.\d[\d_]*)?([eE][-+]?\d+)?").match(code, i)
            kind = "int" if re.fullmatch(r"\d[\d_]*", m.group()) else "number"
            out.append(Token(kind, m.group(), i, line, depth))
            i = m.end()
        elif c == "." and code.startswith("..", i):
            m = re.compile(r"\.[.=\-+!*%<>&|^~?/]*").match(code, i)
            out.append(Token("op", m.group(), i, line, depth))
            i = m.end()
        elif c in OPERATOR_CHARS:
            j = i
            while j < len(code) and code[j] in OPERATOR_CHARS:
                if code.startswith("//", j) or code.startswith("/*", j):
                    break
                j += 1
            out.append(Token("op", code[i:j], i, line, depth))
            i = j
        else:
            if c == "{":
                depth += 1
            elif c == "}":
                depth = max(0, depth - 1)
            out.append(Token("punct", c, i, line, depth))
            i += 1
    return out


def demonstration_start(code, toks=None):
    """The first line of the demonstration calls, or None when every line counts."""
    toks = tokens(code) if toks is None else toks
    last_end = None
    for index, t in enumerate(toks):
        if t.depth != 0 or (index > 0 and toks[index - 1].line == t.line):
            continue  # only the first token of a top-level line starts a declaration
        j = index
        while j < len(toks) and (toks[j].text in MODIFIERS or toks[j].text == "@"
                                 or (j > 0 and toks[j - 1].text == "@")):
            j += 1
        if j < len(toks) and toks[j].kind == "word" and toks[j].text in DECLARATIONS:
            last_end = _declaration_end(toks, j)
    return None if last_end is None else last_end + 1


def _declaration_end(toks, at):
    """The line on which the declaration starting at toks[at] ends."""
    opened = False
    for t in toks[at:]:
        if t.kind == "punct" and t.text == "{" and t.depth == 1 and not opened:
            opened = True
        elif opened and t.kind == "punct" and t.text == "}" and t.depth == 0:
            return t.line
        elif not opened and t.line != toks[at].line and toks[at].text == "typealias":
            return toks[at].line
    return toks[at].line if not opened else toks[-1].line


def _line_text(code, line):
    return code.split("\n")[line - 1].strip()


def mutants(code, limit=DEFAULT_LIMIT):
    """[{line, before, after, code}], at most `limit` of them, evenly spread."""
    toks = tokens(code)
    demo = demonstration_start(code, toks)
    found, seen = [], set()
    for t in toks:
        if demo is not None and t.line >= demo:
            continue
        replacements = []
        if t.kind == "op" and t.text in BINARY:
            before = code[t.start - 1] if t.start > 0 else ""
            after = code[t.start + len(t.text)] if t.start + len(t.text) < len(code) else ""
            if before in " \t" and after in " \t\n":
                replacements.append(BINARY[t.text])
        elif t.kind == "op" and t.text in RANGES:
            replacements.append(RANGES[t.text])
        elif t.kind == "word" and t.text in WORDS:
            replacements.append(WORDS[t.text])
        elif t.kind == "int" and not code[:t.start].endswith("."):
            value = int(t.text.replace("_", ""))
            replacements.extend(str(v) for v in (value + 1, value - 1) if v >= 0)
        for replacement in replacements:
            mutated = code[:t.start] + replacement + code[t.start + len(t.text):]
            if mutated in seen:
                continue
            seen.add(mutated)
            found.append({"line": t.line, "before": _line_text(code, t.line),
                          "after": _line_text(mutated, t.line), "code": mutated})
    if limit and len(found) > limit:
        step = len(found) / limit
        found = [found[int(k * step)] for k in range(limit)]
    return found


EQUIVALENT_ITEM = re.compile(r"`(?P<before>.+?)` → `(?P<after>.+?)`\s*:\s*(?P<why>\S.*)\Z")


def parse_equivalent(item):
    """(before, after) from a "`before` → `after`: why" item, or None when it has another shape."""
    m = EQUIVALENT_ITEM.match(item.strip())
    return (m.group("before").strip(), m.group("after").strip()) if m else None
