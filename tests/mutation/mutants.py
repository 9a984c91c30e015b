# Makes single mutations of a C++ source that clang-format has formatted.
# SPDX-License-Identifier: MIT
"""The operators, each applied once at each place:

  comparison  < <= > >= each become their neighbours (< to <= and >=, ...), == and != each other
  logic       && and || each other; ! is dropped; a condition of if, while or ?: is made true, made false
  sum         + and -, * and /, += and -=, ++ and --, wrapAdd() and wrapSubtract() each other; % becomes /
  bits        & and |, << and >> each other; ~ is dropped
  number      an integer becomes one more and one less
  truth       true and false each other
  text        a string literal gets one letter more
  cast        static_cast<T>() keeps the type that it had
  statement   an expression, return, break or continue statement is left out
"""
import collections
import re

# A change of text[start:end]; `before` and `after` are the lines that it touches, in one line each.
Mutant = collections.namedtuple("Mutant", "path operator start end replacement line before after number")

SPACED = {
    "comparison": {"<": ["<=", ">="], "<=": ["<", ">"], ">": [">=", "<="], ">=": [">", "<"], "==": ["!="], "!=": ["=="]},
    "logic": {"&&": ["||"], "||": ["&&"]},
    "sum": {"+": ["-"], "-": ["+"], "*": ["/"], "/": ["*"], "%": ["/"], "+=": ["-="], "-=": ["+="]},
    "bits": {"&": ["|"], "|": ["&"], "<<": [">>"], ">>": ["<<"]},
}
WORDS = {
    "sum": {"wrapAdd": "wrapSubtract", "wrapSubtract": "wrapAdd"},
    "truth": {"true": "false", "false": "true"},
}
# An expression statement: its first blank comes after a call or before an assignment.
EXPRESSION = re.compile(r"(\+\+|--|\*|delete )?[\w.:>\[\]()*-]+?(\+\+|--|\(| [-+|&]?= |$)|std::sort\(|(return|break|continue)$")


def without_comments(text):
    """The text with comments, contents of literals and preprocessor lines blanked out, and the places of the literals."""
    literals = []

    def blank(match):
        part = match.group(0)
        if part[0] in "\"'":
            if part[0] == '"':
                literals.append((match.start(), match.end()))
            return part[0] + " " * (len(part) - 2) + part[0]
        return re.sub(r"[^\n]", " ", part)

    pattern = r"//[^\n]*|/\*.*?\*/|^[ \t]*#[^\n]*|\"(?:\\.|[^\"\\])*\"|'(?:\\.|[^'\\])*'"
    return re.sub(pattern, blank, text, flags=re.S | re.M), literals


def closing(code, opening):
    """The place of the bracket that closes the one at `opening`."""
    depth = 0
    for at in range(opening, len(code)):
        depth += (code[at] in "([{") - (code[at] in ")]}")
        if depth == 0:
            return at
    raise ValueError("brackets do not match")


def statement_before(code, semicolon):
    """The beginning of the statement that ends with this semicolon, after `else`, `if (...)` and the like."""
    depth = 0
    at = semicolon - 1
    while at >= 0:
        if depth == 0 and code[at] in ";{}([":
            if code[at] in "([":
                return None  # a clause of `for`
            break
        depth += (code[at] in ")]}") - (code[at] in "([{")
        at -= 1
    at += 1
    while True:
        at += len(code[at:]) - len(code[at:].lstrip())
        clause = re.match(r"(if|for|while) (?=\()|else\b", code[at:])
        if not clause:
            return at
        at += clause.end()
        if clause.group(1):
            at = closing(code, at) + 1


def edits(text):
    """Every (operator, start, end, replacement)."""
    code, literals = without_comments(text)
    for operator, table in SPACED.items():
        for match in re.finditer(r"(?<= )(\S{1,2})(?=\s)", code):
            for replacement in table.get(match.group(1), []):
                yield operator, match.start(), match.end(), replacement
    for operator, table in WORDS.items():
        for match in re.finditer(r"\b(" + "|".join(table) + r")\b", code):
            yield operator, match.start(), match.end(), table[match.group(1)]
    for match in re.finditer(r"(?<!operator)!(?=[\w(])|~(?=[\w(])(?!poweroff_protect)", code):
        yield ("logic" if match.group(0) == "!" else "bits"), match.start(), match.end(), ""
    for match in re.finditer(r"\+\+|--", code):
        yield "sum", match.start(), match.end(), "--" if match.group(0) == "++" else "++"
    for match in re.finditer(r"(?<![\w.])-?(?<!\w)\d+\b(?![.\w])", code):
        for change in (1, -1):
            yield "number", match.start(), match.end(), str(int(match.group(0)) + change)
    for match in re.finditer(r"\b(?:if|while) \(", code):
        for truth in ("true", "false"):
            yield "logic", match.end(), closing(code, match.end() - 1), truth
    for match in re.finditer(r"(?<= )\?(?= )", code):
        yield "logic", match.start(), match.end(), "|| true ?"
        yield "logic", match.start(), match.end(), "&& false ?"
    for match in re.finditer(r"\bstatic_cast<[^()]*>(?=\()", code):
        yield "cast", match.start(), match.end(), ""
    for start, end in literals:
        yield "text", end - 1, end - 1, "x"
    for match in re.finditer(";", code):
        start = statement_before(code, match.start())
        if start is not None and start < match.start() and EXPRESSION.match(code[start : match.start()]):
            yield "statement", start, match.start(), ""


def mutants(path, text):
    """Every mutant of the file, in the order of its lines. Equal ones are distinguished by number."""
    seen = collections.Counter()
    result = []
    for operator, start, end, replacement in sorted(set(edits(text)), key=lambda edit: (edit[1], edit[2], edit[3])):
        first = text.rfind("\n", 0, start) + 1
        last = (text.find("\n", end) + len(text)) % len(text)
        before = " ".join(text[first:last].split())
        after = " ".join((text[first:start] + replacement + text[end:last]).split())
        seen[before, after] += 1
        line = text.count("\n", 0, start) + 1
        result.append(Mutant(path, operator, start, end, replacement, line, before, after, seen[before, after]))
    return result
