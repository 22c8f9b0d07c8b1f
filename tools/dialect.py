#!/usr/bin/env python3
"""Checks two rules of style that clang-format and clang-tidy have no check for. With --fix, rewrites what breaks them.

- A body of one line has no braces, unless an else follows it.
- A pointer is tested without a comparison: `if (pointer)`, `!pointer && ...`. It is compared with nullptr only where
  the result of the comparison is what is returned, passed or stored: `return pointer != nullptr;`.

The sources must be formatted by clang-format.
"""

import re
import sys

BODY = re.compile(r"^(?P<indent> *)(?P<head>(?:if|for|while)\b.*\)|else) \{\n(?P<body> +[^ \n].*;\n)(?P=indent)\}$",
                  re.MULTILINE)
CONDITION = re.compile(r"\b(?:if(?: constexpr)?|while|for) \(")
COMPARISON = re.compile(r" (?P<operator>[!=])= nullptr\b")
TEXT = re.compile(r'//[^\n]*|/\*.*?\*/|"(?:\\.|[^"\\\n])*"|\'(?:\\.|[^\'\\\n])+\'', re.DOTALL)
LONGEST_CONDITION = 400  # characters
OPENING = {")": "(", "]": "[", ">": "<"}


def blanked(text):
    """The text with comments and literals made blank, so that only code matches."""
    return TEXT.sub(lambda match: re.sub(r"[^\n]", " ", match[0]), text)


def operand_start(code, end):
    """Where the operand that ends here begins: names, members, calls, indices, casts and a leading `*`."""
    at = end
    while at > 0:
        if code[at - 1] in OPENING and not code.endswith("->", 0, at):
            depth, closing, opening = 0, code[at - 1], OPENING[code[at - 1]]
            while at > 0:
                at -= 1
                depth += (code[at] == closing) - (code[at] == opening)
                if depth == 0:
                    break
        elif code.endswith("->", 0, at):
            at -= 2
        elif re.match(r"[\w.:]", code[at - 1]):
            at -= 1
        else:
            break
    while at > 0 and code[at - 1] == "*" and not re.match(r"[\w)\]]", code[at - 2]):
        at -= 1
    return at


def is_condition(code, start, end):
    """Whether the comparison is tested: by if, while, for or ?:, or as an operand of && or ||."""
    if re.match(r"\s*(&&|\|\||\?)", code[end:]) or re.search(r"(&&|\|\|)\s*$", code[:start]):
        return True
    before = code[max(0, start - LONGEST_CONDITION):start]
    heads = list(CONDITION.finditer(before))
    if not heads:
        return False
    inside = before[heads[-1].end():]
    if heads[-1][0].startswith("for"):
        return inside.count(";") == 1 and inside.count("(") == inside.count(")") and code[end] == ";"
    return re.fullmatch(r"\s*(?:[^;]*;\s*)?", inside) is not None and code[end] == ")"


def comparisons(text):
    """The comparisons with nullptr that are tested: begin of the operand, its end, end of all, and `!` or `=`."""
    code = blanked(text)
    for match in COMPARISON.finditer(code):
        start = operand_start(code, match.start())
        if start < match.start() and is_condition(code, start, match.end()):
            yield start, match.start(), match.end(), match["operator"]


def without_comparisons(text):
    for start, middle, end, operator in reversed(list(comparisons(text))):
        text = text[:start] + ("!" if operator == "=" else "") + text[start:middle] + text[end:]
    return text


def needs_braces(match):
    """Whether an else follows, which could go to an if in the body, or the body has a comment or a GoogleTest macro,
    which ends in an if of its own."""
    return (re.match(r"\s*else\b", match.string[match.end():]) is not None or "//" in match["body"]
            or re.match(r"\s*(EXPECT_|ASSERT_|FAIL\b|ADD_FAILURE)", match["body"]) is not None)


def without_braces(text):
    def unbraced(match):
        if needs_braces(match):
            return match[0]
        return f"{match['indent']}{match['head']}\n{match['body'].rstrip()}"
    return BODY.sub(unbraced, text)


def complaints(text):
    for match in BODY.finditer(text):
        if not needs_braces(match):
            yield match.start(), "a body of one line needs no braces"
    for start, _, _, operator in comparisons(text):
        yield start, f"a condition tests a pointer by its name, without `{operator}= nullptr`"


def main():
    fix = sys.argv[1:2] == ["--fix"]
    count = 0
    for name in sys.argv[1 + fix:]:
        with open(name, encoding="utf-8") as stream:
            text = stream.read()
        if fix:
            rewritten = without_braces(without_comparisons(text))
            if rewritten != text:
                with open(name, "w", encoding="utf-8") as stream:
                    stream.write(rewritten)
            continue
        for position, complaint in sorted(complaints(text)):
            print(f"{name}:{text.count(chr(10), 0, position) + 1}: {complaint}")
            count += 1
    return 1 if count else 0


if __name__ == "__main__":
    sys.exit(main())
