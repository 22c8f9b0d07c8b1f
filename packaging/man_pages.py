#!/usr/bin/env python3
"""Writes the manual pages of velm and of each of its commands, from what --help prints.

    packaging/man_pages.py VELM DIRECTORY

VELM is the program; the pages are DIRECTORY/velm.1, velm-render.1 and so on. Their date is that of SOURCE_DATE_EPOCH.
"""

import datetime
import os
import re
import subprocess
import sys

COLUMN = 30  # where descriptions begin
LIMITS = r"(?P<type>:[A-Z]+)?(?P<limits> in \[[^\]]*\])?(?P<default>=\S+)?(?P<flag>\{[^}]*\})?"
NAME = (r"(?P<names>-\w|(?:-\w,)?--[\w-]+|[A-Z]+)"
        r"(?: (?P<value>(?!REQUIRED|Needs:|Excludes:|\.\.\.)[^\s:={]+(?::DIR|=[A-Z]+)?))?")
HEAD = re.compile(NAME + LIMITS + r"(?P<more>(?: \.\.\.)?)(?P<rest>(?: REQUIRED| (?:Needs|Excludes):(?: --[\w-]+)+)*)$")

ENDING = {
    "EXIT STATUS": "0 if all went well; 1 if the input is wrong; 2 if the command line is wrong; 3 if the machine or "
                   "the module fails; 130 after an interrupt. velm compare has statuses of its own: 0 if the pictures "
                   "are the same, 1 if they differ, 2 if their sizes differ, 3 if they cannot be compared.",
    "ENVIRONMENT": "VELM_DATA: directories to look for meshes and images in, separated by colons.",
    "FILES": "/usr/share/doc/velm has the manual of the commands, the formats of files, and examples.",
}


def sections_of(text):
    """The parts of a help text: its description and usage, then {title: [(head, description), ...]}."""
    lines = text.rstrip().split("\n")
    usage = next(i for i, line in enumerate(lines) if line.startswith("Usage: "))
    sections, entries = {}, None
    for line in lines[usage + 1:]:
        title = re.fullmatch(r"(\w[\w ]*):", line)
        if title:
            entries = sections.setdefault(title[1], [])
        elif re.match(r" {2}\S", line):
            entries.append(entry_of(line))
        elif line.strip():
            if not line.startswith(" " * COLUMN) or not entries:
                raise ValueError(f"a line of the help text belongs to nothing: {line}")
            head, description = entries[-1]
            entries[-1] = (head, (description + " " + line.strip()).strip())
    return " ".join(lines[:usage]), lines[usage].removeprefix("Usage: "), sections


def entry_of(line):
    """A line of names, and of the description if it is beside them. Names that are too long stand alone."""
    if HEAD.match(line[2:]) and len(line[2:]) >= COLUMN - 2:
        return line[2:], ""
    return line[2:COLUMN].rstrip(), line[COLUMN:]


def escaped(text):
    return text.replace("\\", "\\e").replace("-", "\\-").replace("'", "\\(aq")


def paragraph(text):
    text = escaped(text)
    return "\\&" + text if text.startswith(".") else text


def option_lines(head, description):
    """An option as roff, with its limits and its conditions in words."""
    match = HEAD.match(head)
    if not match:
        raise ValueError(f"the help text has an option of an unknown form: {head}")
    names = ", ".join(f"\\fB{escaped(name)}\\fR" for name in match["names"].split(","))
    value = f" \\fI{escaped(match['value'].split(':')[0])}\\fR" if match["value"] else ""
    facts = []
    if match["limits"]:
        low, high = re.fullmatch(r" in \[(\S+) - (\S+)\]", match["limits"]).groups()
        facts.append(f"at least {low}" if "e+" in high else f"{low} to {high}")
    if match["default"]:
        facts.append(f"default {match['default'][1:]}")
    sentences = [description.rstrip(".") + (f" ({', '.join(facts)})" if facts else "") + "."]
    if " REQUIRED" in match["rest"] and names.startswith("\\fB\\-"):
        sentences.append("Required.")
    for word, phrase in (("Needs", "Only with"), ("Excludes", "Not with")):
        others = re.search(word + r":((?: --[\w-]+)+)", match["rest"])
        if others:
            sentences.append(f"{phrase} {', '.join(others[1].split())}.")
    return [".TP", names + value + match["more"], paragraph(" ".join(sentences))]


def page(name, text, version, date, commands):
    description, usage, sections = sections_of(text)
    short = description.split(". ")[0].rstrip(".")
    title = name.replace(" ", "-")
    lines = [f'.TH {escaped(title.upper())} 1 "{date}" "velm {version}" "User Commands"',
             ".SH NAME", f"{escaped(title)} \\- {escaped(short[0].lower() + short[1:])}",
             ".SH SYNOPSIS", f"\\fB{escaped(name)}\\fR{escaped(usage.removeprefix(name))}",
             ".SH DESCRIPTION", paragraph(description.rstrip(".") + ".")]
    for heading, entries in sections.items():
        if heading == "Subcommands":
            lines.append(".SH COMMANDS")
            for command, what in entries:
                lines += [".TP", f"\\fBvelm\\-{escaped(command)}\\fR(1)", paragraph(what + ".")]
            continue
        if heading != "Positionals":
            lines.append(f".SH {heading.upper()}")
        for head, what in entries:
            lines += option_lines(head, what)
    for heading, what in ENDING.items():
        lines += [f".SH {heading}", paragraph(what)]
    others = [other for other in ["velm"] + [f"velm-{command}" for command in commands] if other != title]
    lines += [".SH SEE ALSO", ",\n".join(f"\\fB{escaped(other)}\\fR(1)" for other in others)]
    return "\n".join(lines) + "\n"


def main():
    program, directory = sys.argv[1:]

    def output(*arguments):
        return subprocess.run([program, *arguments], capture_output=True, text=True, check=True).stdout

    epoch = int(os.environ.get("SOURCE_DATE_EPOCH", "0"))
    date = datetime.datetime.fromtimestamp(epoch, datetime.timezone.utc).strftime("%Y-%m-%d")
    version = output("--version").split()[-1]
    whole = output("--help")
    commands = [command for command, _ in sections_of(whole)[2]["Subcommands"]]
    os.makedirs(directory, exist_ok=True)
    for command in [""] + commands:
        text = output(command, "--help") if command else whole
        name = f"velm {command}".strip()
        with open(os.path.join(directory, name.replace(" ", "-") + ".1"), "w", encoding="utf-8") as file:
            file.write(page(name, text, version, date, commands))


if __name__ == "__main__":
    main()
