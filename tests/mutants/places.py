# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""The places of a source where one thing can be changed, and what it is changed to.

This goes by the shape that the formatter gives to code: an operator stands between blanks.
"""
import collections
import re
from typing import NamedTuple


class Mutant(NamedTuple):
    """A source with one change. Its name stays the same while lines come and go around it."""
    name: str
    line: int
    text: str


OPERATORS = {
    "==": "!=", "!=": "==", "<": "<=", "<=": "<", ">": ">=", ">=": ">", "&&": "||", "||": "&&",
    "+": "-", "-": "+", "+=": "-=", "-=": "+=", "<<": ">>", ">>": "<<", "<<=": ">>=", "&": "|"}
NO_CODE = re.compile(
    r"""//[^\n]* | /\*.*?\*/ | ^\#[^\n]* | ^template[^\n]* | \b(static_)?assert\(.*?\);
    | (?P<literal>"(?:\\.|[^"\\])*" | (?<!\w)'(?:\\.|[^'\\])*')""",
    re.VERBOSE | re.DOTALL | re.MULTILINE)
# A call, an assignment or a step; neither a declaration nor a way out of the function.
STATEMENT = re.compile(
    r"(?!(if|for|while|switch|return|else)\b|.*= delete$)"
    r"(\(void\)|\[\[maybe_unused\]\] [^=]*= )?"
    r"([-+]{2}|(break|continue)$|[\w.:\[\]*>-]+(\(| \S*= ))")


def _mask(text):
    """The text with a blank for every character that is no code; the spans of the literals."""
    literals = []

    def hide(match):
        if match["literal"]:
            literals.append(match.span())
        return re.sub(r"[^\n]", " ", match[0])

    return NO_CODE.sub(hide, text), literals


def _operators(code):
    for match in re.finditer(r"(?<= )\S{1,3}(?=\s)", code):
        if match[0] in OPERATORS:
            yield *match.span(), OPERATORS[match[0]]
        elif match[0] == "?":
            yield *match.span(), "&& false ?"
            yield *match.span(), "|| true ?"
    for match in re.finditer(r"\+\+|--", code):
        yield *match.span(), {"++": "--", "--": "++"}[match[0]]
    for match in re.finditer(r"!(?=[\w(*])| \| [A-Z_]+\b", code):  # a flag
        yield *match.span(), ""


def _constants(text, code, literals):
    for match in re.finditer(r"(?<![\w.])(0x[0-9A-Fa-f]+|\d+)\b", code):
        compared = re.search("([<>]|[=!<>]=) $", code[:match.start()][-3:])
        if match[0] != "0" or not compared:  # else the change of the operator does the same
            base = 8 if re.match(r"0\d", match[0]) else 0
            yield *match.span(), str(int(match[0], base) + 1)
    for match in re.finditer(r"\b(true|false)\b", code):
        yield *match.span(), {"true": "false", "false": "true"}[match[0]]
    for start, end in literals:
        yield start, end, r"'\x01'" if text[start] == "'" else '"_' + text[start + 1:end]


def _conditions(text, code):
    for match in re.finditer(r"\b(if|while) \((?!const\b)", code):
        start = end = match.end()
        depth = 1
        while depth:
            depth += {"(": 1, ")": -1}.get(code[end], 0)
            end += 1
        condition = text[start:end - 1]
        if match[1] == "while":
            yield start, end - 1, f"false && ({condition})"
        elif re.search("&&|[|]{2}", condition) or not re.search("^!| [!=]= ", condition):
            yield start, end - 1, f"!({condition})"  # else an operator's change is the same


def _statements(code):
    """The spans of simple statements."""
    depths, start = [0], 0
    for position, char in enumerate(code):
        depths[-1] += {"(": 1, ")": -1}.get(char, 0)
        if char == "{":
            depths.append(0)
        elif char == "}":
            depths.pop()
        elif char != ";" or depths[-1]:
            continue
        begin = re.compile(r"\s*").match(code, start).end()
        start = position + 1
        if char == ";" and STATEMENT.match(code[begin:position]):
            yield begin, start


def _see_each_other(one, other):
    """Whether an order can matter: one uses what the other sets, or both ask the system."""
    def names(statement):
        return set(re.findall(r"[A-Za-z]\w+\b(?!\()", statement)) - {"void", "std"}

    assigned = [re.match(r"([\w.\[\]*>-]+) \S*= ", statement) for statement in (one, other)]
    if all(assigned):
        return assigned[0][1] in other or assigned[1][1] in one
    free_call = re.compile(r"(\(void\))?[\w:]+\(")
    return names(one) & names(other) or free_call.match(one) and free_call.match(other)


def _calls_and_order(text, code):
    previous = None
    for start, end in _statements(code):
        yield start, end, ";"
        if previous and code[previous[1]:start].isspace():
            first, second = text[slice(*previous)], text[start:end]
            if _see_each_other(first, second):
                yield previous[0], end, f"{second} {first}"
        previous = start, end


def _lines(text, start, end):
    """The lines that a span touches, as one with single blanks."""
    whole = text[text.rfind("\n", 0, start) + 1:(text + "\n").index("\n", end)]
    return " ".join(whole.split())


def mutants(path, text):
    """The mutants of a source."""
    code, literals = _mask(text)
    seen = collections.Counter()
    found = [*_operators(code), *_constants(text, code, literals), *_conditions(text, code),
             *_calls_and_order(text, code)]
    result = []
    for start, end, replacement in sorted(found):
        changed = text[:start] + replacement + text[end:]
        name = (f"{path}: {_lines(text, start, end)}  ->  "
                f"{_lines(changed, start, start + len(replacement))}")
        seen[name] += 1
        if seen[name] > 1:
            name += f"  ({seen[name]})"
        result.append(Mutant(name, text.count("\n", 0, start) + 1, changed))
    return result
