"""Finds the mutants of a C++ source: small changes after which a test should fail.

Works on the text, not on a syntax tree. The sources are formatted by clang-format, so that binary operators have white
space on both sides, and the brackets of templates do not. Some changes do not compile; the campaign drops those.
"""

import dataclasses
import re

OPERATORS = {
    "<": ["<=", ">="], "<=": ["<", ">"], ">": [">=", "<="], ">=": [">", "<"], "==": ["!="], "!=": ["=="],
    "&&": ["||"], "||": ["&&"],
    "+": ["-"], "-": ["+"], "*": ["/"], "/": ["*"], "%": ["*"],
    "&": ["|"], "|": ["&"], "^": ["|"], "<<": [">>"], ">>": ["<<"],
    "+=": ["-="], "-=": ["+="], "*=": ["/="], "/=": ["*="], "|=": ["&="], "&=": ["|="], "^=": ["|="],
}
WORDS = {
    "true": "false", "false": "true", "std::sin": "std::cos", "std::cos": "std::sin", "std::floor": "std::ceil",
    "std::fabs": "", "std::sqrt": "", "std::exp": "std::exp2", "std::min": "std::max", "std::max": "std::min",
}
DECLARATION = re.compile(
    r"(?:const|constexpr|static|auto|using|struct|class|enum|return|extern|typedef|template|friend|public|private"
    r"|namespace|case|default|else|double|float|int|char|bool|void|unsigned|size_t|VELM_\w+)\b"
    r"|[\w:]+(?:<[^;]*>)?\s+[*&]?\w+\s*[=;{(\[]|\.|#|}")
NUMBER = re.compile(r"(?<![\w.'])(0[xX][0-9a-fA-F]+|\d+(?:\.\d*)?(?:[eE][-+]?\d+)?)([uUlLfF]*)(?![\w.'])")
SIMPLE = r"[\w:]+(?:[.\w\[\]]|->)*"


@dataclasses.dataclass(frozen=True)
class Mutant:
    file: str
    start: int  # the range of the text that is replaced
    end: int
    text: str  # the replacement
    kind: str
    line: int
    before: str  # the lines, without white space at either end, joined by " / " where there are two
    after: str

    def applied(self, source):
        return source[: self.start] + self.text + source[self.end :]


def masked(source):
    """The source with comments, literals and preprocessor lines blanked, and the ranges of its string literals."""
    text, strings = list(source), []
    pattern = re.compile(r'//[^\n]*|/\*.*?\*/|"(?:\\.|[^"\\])*"|\'(?:\\.|[^\'\\])\'|^[ \t]*#(?:\\\n|[^\n])*',
                         re.DOTALL | re.MULTILINE)
    for match in pattern.finditer(source):
        if match.group().startswith('"'):
            strings.append(match.span())
        for i in range(*match.span()):
            if text[i] != "\n":
                text[i] = " " if text[i].isspace() else "\x01"
    return "".join(text), strings


def line_bounds(source, start, end):
    first = source.rfind("\n", 0, start) + 1
    last = source.find("\n", max(start, end - 1))
    return first, len(source) if last < 0 else last


def shown(text):
    return " / ".join(line.strip() for line in text.split("\n"))


class Finder:
    def __init__(self, file, source):
        self.file, self.source = file, source
        self.code, self.strings = masked(source)
        self.found = []

    def add(self, start, end, text, kind):
        if self.source[start:end] == text:
            return
        first, last = line_bounds(self.source, start, end)
        before = self.source[first:last]
        after = self.source[first:start] + text + self.source[end:last]
        line = self.source.count("\n", 0, start) + 1
        self.found.append(Mutant(self.file, start, end, text, kind, line, shown(before), shown(after)))

    def operators(self):
        for match in re.finditer(r"(?<=\s)(<=|>=|==|!=|&&|\|\||<<|>>|[-+*/|&^]=|[-+*/%<>&|^])(?=\s)", self.code):
            for other in OPERATORS[match.group()]:
                self.add(*match.span(), other, "operator")
        for match in re.finditer(r"\+\+|--", self.code):
            self.add(*match.span(), "--" if match.group() == "++" else "++", "operator")

    def signs(self):
        for match in re.finditer(r"(?:(?<=[(,=?:] )|(?<=return )|(?<=\())-(?=[\w(])|!(?=[\w(])", self.code):
            self.add(*match.span(), "", "sign")

    def words(self):
        for word, other in WORDS.items():
            for match in re.finditer(rf"(?<![\w:]){word}\b", self.code):
                self.add(*match.span(), other, "word")

    def numbers(self):
        for match in NUMBER.finditer(self.code):
            first, _ = line_bounds(self.code, *match.span())
            ahead = self.code[first : match.start()]
            if re.search(r"\b(?:double|float|int|char|const \w+ \*)\b.*\w\[$", ahead):
                continue  # an array's length: too short does not compile or overruns, too long changes nothing
            digits, suffix = match.groups()
            for value in self.other_numbers(digits):
                self.add(*match.span(), value + suffix, "number")

    @staticmethod
    def other_numbers(digits):
        if digits[:2] in ("0x", "0X"):
            return [hex(int(digits, 16) + 1)]
        if digits.isdigit():
            return [str(int(digits) + 1)] + ([str(int(digits) - 1)] if int(digits) > 0 else [])
        value = float(digits)
        return ["1.0"] if value == 0 else [repr(value * 1.001), repr(value + 1)]

    def conditions(self):
        for match in re.finditer(r"\b(?:if|while) \(", self.code):
            depth, i = 1, match.end()
            while depth > 0 and i < len(self.code):
                depth += {"(": 1, ")": -1}.get(self.code[i], 0)
                i += 1
            if "\n" not in self.code[match.end() : i] and ";" not in self.code[match.end() : i]:
                self.add(match.end(), i - 1, "!(" + self.source[match.end() : i - 1] + ")", "condition")

    def arguments(self):
        for match in re.finditer(rf"\(({SIMPLE}), ({SIMPLE})(?=[,)])", self.code):
            one, other = match.group(1), match.group(2)
            if "\x01" not in one + other:
                self.add(match.start(1), match.end(2), f"{other}, {one}", "arguments")

    def texts(self):
        for start, end in self.strings:
            self.add(end - 1, end, '~"', "text")

    def lines(self):
        """Statements and rows of tables on a line of their own: removed, and swapped with the next line."""
        lines, offset, ahead = [], 0, "{"
        for text in self.code.split("\n"):
            stripped = text.strip()
            alone = ahead[-1:] in ";{},:)" and stripped.count("(") == stripped.count(")")
            alone = alone and stripped.count("{") == stripped.count("}")
            what = None
            if alone and stripped.endswith(";") and not DECLARATION.match(stripped) and ahead[-1:] not in ",":
                what = "statement"
            elif alone and stripped.endswith(",") and not stripped.startswith(".") and ahead[-1:] in "{,":
                what = "row"
            lines.append((what, offset, text))
            offset += len(text) + 1
            ahead = stripped or ahead
        for i, (what, start, text) in enumerate(lines):
            inner = start + len(text) - len(text.lstrip())
            if what == "statement":
                self.add(inner, start + len(text.rstrip()), ";", "statement left out")
            after = lines[i + 1] if i + 1 < len(lines) else (None, 0, "")
            if what and after[0] == what and self.order_matters(text, after[2]):
                end = after[1] + len(after[2])
                one, other = self.source[start : start + len(text)], self.source[after[1] : end]
                self.add(start, end, other + "\n" + one, f"{what}s swapped")

    @staticmethod
    def order_matters(one, other):
        if len(one) - len(one.lstrip()) != len(other) - len(other.lstrip()):
            return False
        targets = [re.match(r"\s*([^\s=(]+) [-+*/|&^]?= ", text) for text in (one, other)]
        if None in targets:
            return True  # calls or rows
        return targets[0].group(1) in other or targets[1].group(1) in one

    def all(self):
        for find in (self.operators, self.signs, self.words, self.numbers, self.conditions, self.arguments, self.texts,
                     self.lines):
            find()
        return sorted(self.found, key=lambda mutant: (mutant.start, mutant.end, mutant.text))


def mutants_of(file, source):
    return Finder(file, source).all()
