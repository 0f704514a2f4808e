"""Which changes a source allows, and the source with a switch at each of them."""

import re
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent.parent

# What stands between spaces is a binary operator; templates and pointers are written without.
# With each: what it becomes, and the switch that stands for both, between the operators that have
# the precedence of the two. What may not look at its right side has no switch.
OPERATORS = {
    " < ": (" <= ", " < {}Less{} > "), " <= ": (" < ", " < {}LessOrEqual{} > "),
    " > ": (" >= ", " < {}Greater{} > "), " >= ": (" > ", " < {}GreaterOrEqual{} > "),
    " == ": (" != ", " == {}Equal{} == "), " != ": (" == ", " == {}Unequal{} == "),
    " && ": (" || ", None), " || ": (" && ", None),
    " + ": (" - ", " + {}Plus{} + "), " - ": (" + ", " + {}Minus{} + "),
    " * ": (" / ", " * {}Times{} * "), " / ": (" * ", " * {}Over{} * "),
    " % ": (" + ", " * {}Modulo{} * "),
    " += ": (" -= ", " += {}Add{} <<= "), " -= ": (" += ", " += {}Subtract{} <<= "),
    " *= ": (" /= ", " += {}Multiply{} <<= "),
}
WORDS = {
    "true": ("false", None), "false": ("true", None),
    "std::min": ("std::max", "{}Min{}"), "std::max": ("std::min", "{}Max{}"),
    "std::floor": ("std::ceil", "{}Floor{}"), "std::ceil": ("std::floor", "{}Ceil{}"),
    "any_of": ("all_of", None), "all_of": ("any_of", None), "none_of": ("any_of", None),
}
# A size that stands in a type may grow without a difference.
NUMBER = re.compile(r"(?<![\w.\"'])(\d+\.\d+F?|\d+)(?![\w.'\">])")
STATEMENT = re.compile(r"^\s+(?!return|const |auto |using |else|case |break|continue|static |\})"
                       r"[\w:.>\[\]()*&-]+(\(.*\)| [-+*/|]?= .*);$")

# What says something to the compiler alone, or makes room that would be made anyway.
WITHOUT_EFFECT = re.compile(r"^\s*(static_assert|template |using |namespace )|\.reserve\(")


def blanked(text):
    """The text with comments, strings and preprocessor lines as spaces, place for place."""
    pattern = re.compile(r'//[^\n]*|/\*.*?\*/|"(?:\\.|[^"\\\n])*"|\'(?:\\.|[^\'\\\n])\'|^\s*#[^\n]*',
                         re.S | re.M)
    return pattern.sub(lambda match: re.sub(r"[^\n]", " ", match.group()), text)


def changed_number(number):
    if "." in number:
        return f"{float(number.rstrip('F')) + 1.0}{'F' if number.endswith('F') else ''}"
    return str(int(number) + 1)


class Mutant:
    """One change: `old` at `offset` becomes `new`, or, while it is off, `switched`, where {} stand
    before and behind the name of a switch."""

    def __init__(self, source, text, offset, old, new, switched):
        self.source = source
        self.offset = offset
        self.old = old
        self.new = new
        self.switched = switched
        self.text = text[:offset] + new + text[offset + len(old):]
        self.line = text.count("\n", 0, offset) + 1
        self.before = text.split("\n")[self.line - 1].strip()
        self.after = self.text.split("\n")[self.line - 1].strip()

    def __str__(self):
        return f"{self.source.relative_to(ROOT)}:{self.line}: {self.before}  ->  {self.after}"

    def key(self):
        return f"{self.source.relative_to(ROOT)}: {self.before}  ->  {self.after}"


def mutants_of(source):
    """Every change of a source."""
    text = source.read_text()
    code = blanked(text)
    lines = code.split("\n")
    found = []

    def add(offset, old, new, switched):
        if not WITHOUT_EFFECT.search(lines[code.count("\n", 0, offset)]):
            found.append(Mutant(source, text, offset, old, new, switched))

    for old, (new, switched) in OPERATORS.items():
        for match in re.finditer(re.escape(old), code):
            add(match.start(), old, new, switched)
    for old, (new, switched) in WORDS.items():
        for match in re.finditer(rf"(?<![\w]){re.escape(old)}\b", code):
            either = f"{{}}either{{}}, {old}, {new})"
            add(match.start(), old, new, either if old in ("true", "false") else switched)
    for match in NUMBER.finditer(code):
        new = changed_number(match.group())
        add(match.start(), match.group(), new, f"{{}}either{{}}, {match.group()}, {new})")
    for match in re.finditer(r"(?<=[( ])!(?=[\w(])", code):
        add(match.start(), "!", "", "{}Not{} ->* ")
    start = 0
    for number, line in enumerate(lines):
        before = lines[number - 1].rstrip() if number else ""
        # A line that goes on from the one before is no statement of its own.
        if STATEMENT.match(line) and (not before or before[-1] in ";{})"):
            indent = len(line) - len(line.lstrip())
            add(start + indent, text[start + indent:start + len(line)], "{}", "")
        start += len(line) + 1
    return found


def switched_piece(mutant, number):
    """What stands at the place of a change that is no whole statement."""
    closing = "" if "either" in mutant.switched else ")"
    return mutant.switched.format("Switch::", f"({number}{closing}")


def with_switches(text, mutants):
    """The text with a switch for each change, given with its number; lines stay where they are."""
    pieces = []
    for number, mutant in mutants.items():
        end = mutant.offset + len(mutant.old)
        if mutant.new == "{}":
            pieces.append((mutant.offset, 0, 0, f"{{if (!Switch::isOn({number})) "))
            pieces.append((end, 1, 0, "}"))
        else:
            pieces.append((mutant.offset, 1, len(mutant.old), switched_piece(mutant, number)))
    # What may change while the program runs is known to no compiler.
    code = blanked(text)
    for match in re.finditer(r"\bconstexpr\b", code):
        end = min(place for place in (code.find(";", match.end()), code.find("\n{", match.end()))
                  if place >= 0)
        function = re.match(r"constexpr [^=;]*\)\n?$", code[match.start():end])
        inside = code.find("\n}", end) if function else end
        if any(match.end() <= mutant.offset < inside for mutant in mutants.values()):
            pieces.append((match.start(), 0, len("constexpr"), "inline" if function else "const"))
    for offset, _, length, piece in sorted(pieces, reverse=True):
        text = text[:offset] + piece + text[offset + length:]
    return text
