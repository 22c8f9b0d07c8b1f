#!/usr/bin/env python3
"""Runs clang-tidy over the sources of a build directory, many sources in one translation unit.

Most of clang-tidy's time goes into the headers of libraries, once for each translation unit. Sources that are compiled
with the same options are therefore included into one generated unit. Where two of them define the same internal type or
constant, one is renamed by a macro around its source; sources that define the same internal function go into different
units. The names are found by patterns, so a unit may still fail to compile: then the sources with errors and the others
are checked apart.

The static analyzer looks into a unit's own file only. It runs on the module, whose sources are checked one by one, as
they share the names of their callbacks and include little. Tests are checked for less, as they would take half of the
time. With --deep, every source is checked by itself, with all checks.
"""

import argparse
import concurrent.futures
import dataclasses
import functools
import hashlib
import json
import os
import re
import shlex
import subprocess
import sys

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
LARGEST_UNIT = 40
CHECKED_ALONE = ("module", "nodes", "random", "shading", "share")
# A unit includes its sources on purpose.
UNIT_CHECKS = "-clang-analyzer-*,-bugprone-suspicious-include"
TEST_CHECKS = ("-*,bugprone-infinite-loop,bugprone-sizeof-expression,bugprone-use-after-move,misc-redundant-expression,"
               "modernize-use-nullptr,modernize-use-override,performance-for-range-copy,"
               "readability-container-size-empty,readability-else-after-return,readability-identifier-naming")
FINDING = re.compile(r"^(?=[^ :\n][^:\n]*:\d+:\d+: (?:warning|error): )", re.MULTILINE)

# Definitions begin in the first column, since the contents of namespaces are not indented.
INCLUDE = re.compile(r'^#include (?:"(.*)"|<.*>)$', re.MULTILINE)
MACRO = re.compile(r"^#define (\w+)", re.MULTILINE)
TYPE = re.compile(r"^(?:struct|class|union|enum class|enum) (?!class)(\w+)\b(?! *;)|^using (\w+) =", re.MULTILINE)
CONSTANT = re.compile(r"^(?:(?:inline|static|thread_local|constexpr|const) )+.*", re.MULTILINE)
CONSTANT_NAME = re.compile(r"\b(k[A-Z]\w*)(?:\[\w*\])* *(?=$|[={(;])")
FUNCTION = re.compile(r"^[A-Za-z<][^=;(\n]*?(?<![:\w])(\w+)\([^;]*$", re.MULTILINE)
INTERNAL = re.compile(r"^namespace \{$.*?^\} // namespace$", re.MULTILINE | re.DOTALL)


@dataclasses.dataclass
class File:
    """What a source or header defines, and what it includes."""
    own: set         # types and constants
    functions: set   # internal functions, and macros
    includes: list   # as they are written
    headers: dict    # types and constants of our headers among them, each with the header that defines it


@functools.lru_cache(maxsize=None)
def read(name):
    with open(os.path.join(ROOT, name), encoding="utf-8") as stream:
        text = stream.read()
    functions = set(MACRO.findall(text))
    for part in INTERNAL.findall(text):
        functions.update(FUNCTION.findall(part))
    headers = {}
    for match in INCLUDE.finditer(text):
        if match[1] and os.path.exists(os.path.join(ROOT, match[1])):
            header = read(match[1])
            headers.update(header.headers | dict.fromkeys(header.own, match[1]))
    own = {match[1] or match[2] for match in TYPE.finditer(text)}
    own.update(name for line in CONSTANT.findall(text) for name in CONSTANT_NAME.findall(line))
    own -= set(headers)
    return File(own, functions, [match[0] for match in INCLUDE.finditer(text)], headers)


@dataclasses.dataclass
class Unit:
    """Sources that are checked together."""
    options: tuple
    directory: str
    names: list

    def __post_init__(self):
        files = [read(name) for name in self.names]
        self.functions = set().union(*(file.functions for file in files))
        self.headers = {name: header for file in files for name, header in file.headers.items()}

    def takes(self, name, options, directory):
        """Whether the source can join."""
        file = read(name)
        return (self.options == options and self.directory == directory and len(self.names) < LARGEST_UNIT
                and not self.functions & file.functions
                and all(self.headers.get(known, header) == header for known, header in file.headers.items()))

    def add(self, name):
        file = read(name)
        self.names.append(name)
        self.functions |= file.functions
        self.headers |= file.headers

    def text(self):
        """The unit: all headers before any renaming, then the sources."""
        lines = list(dict.fromkeys(include for name in self.names for include in read(name).includes))
        known = set(self.headers)
        for number, name in enumerate(self.names):
            renamed = sorted(read(name).own & known)
            known |= read(name).own
            lines += [f"#define {each} {each}{number}" for each in renamed]
            lines.append(f'#include "{name}"')
            lines += [f"#undef {each}" for each in renamed]
        return "".join(line + "\n" for line in lines)


def options_of(command):
    """The compiler's options in a compile command: without the compiler, the source and the output."""
    words = shlex.split(command)
    while not words[0].startswith("-"):
        words.pop(0)
    for flag in ("-o", "-c"):
        at = words.index(flag)
        del words[at:at + 2]
    # A local name may be that of an internal one of another source; the compiler looks for shadowing in each by itself.
    return tuple(words + ["-Wno-shadow"])


def sources_of(build, wanted):
    """The sources with their options, without those that the build makes; the first of several compilations counts."""
    with open(os.path.join(build, "compile_commands.json"), encoding="utf-8") as stream:
        commands = json.load(stream)
    sources = {}
    for command in commands:
        source = os.path.relpath(command["file"], ROOT)
        if os.path.relpath(command["file"], build).startswith("..") and (not wanted or source in wanted):
            sources.setdefault(source, options_of(command["command"]))
    return sources


def units_of(sources, deep):
    """Distributes the sources over as few units as their names allow."""
    units = []
    for source, options in sorted(sources.items()):
        directory = source.split(os.sep)[0]
        alone = deep or directory in CHECKED_ALONE or source.endswith(".c")
        unit = None if alone else next((each for each in units if each.takes(source, options, directory)), None)
        if not unit:
            units.append(Unit(options, directory, [source]))
        else:
            unit.add(source)
    return sorted(units, key=lambda unit: -len(unit.names))


class Checker:
    """Checks units, with a directory for the generated ones."""

    def __init__(self, build, deep):
        self.deep = deep
        self.scratch = os.path.join(os.path.abspath(build), "tidy")
        os.makedirs(self.scratch, exist_ok=True)

    def source_of(self, unit):
        """The file to check: the source, or one that includes all sources of the unit."""
        if len(unit.names) == 1:
            return unit.names[0]
        text = unit.text()
        path = os.path.join(self.scratch, hashlib.sha256(text.encode()).hexdigest()[:16] + ".cpp")
        with open(path, "w", encoding="utf-8") as stream:
            stream.write(text)
        return path

    def failing(self, unit):
        """The sources of a unit that do not compile within it."""
        path = self.source_of(unit)
        result = subprocess.run(["clang++", "-fsyntax-only", "-ferror-limit=0", *unit.options, path], cwd=ROOT,
                                capture_output=True, text=True, check=False)
        lines = unit.text().splitlines()
        failing, source = [], ""
        for line in result.stderr.splitlines():
            if line.startswith("In file included from " + path + ":"):
                included = INCLUDE.match(lines[int(line.split(":")[1]) - 1])
                source = included[1] if included else ""
            elif " error: " in line and source in unit.names and source not in failing:
                failing.append(source)
        return failing

    def check(self, unit):
        """What clang-tidy finds in the unit's sources, each finding with its notes."""
        checks = []
        if not self.deep and unit.directory not in CHECKED_ALONE:
            checks = ["--checks=" + (TEST_CHECKS if unit.directory == "tests" else UNIT_CHECKS)]
        result = subprocess.run(["clang-tidy", "--quiet", *checks, self.source_of(unit), "--", *unit.options], cwd=ROOT,
                                capture_output=True, text=True, check=False)
        if "[clang-diagnostic-" in result.stdout and len(unit.names) > 1:
            return self.check_apart(unit)
        findings = [text for text in FINDING.split(result.stdout) if FINDING.match(text)]
        if result.returncode != 0 and not findings:
            findings.append(result.stdout + result.stderr)
        return findings

    def check_apart(self, unit):
        """Checks the sources that fail in the unit one by one, and the rest together."""
        failing = self.failing(unit)
        rest = [name for name in unit.names if name not in failing]
        if not failing or not rest:
            parts = [[name] for name in unit.names]
        else:
            parts = [rest, failing]
        return [finding for part in parts for finding in self.check(Unit(unit.options, unit.directory, part))]


def main():
    parser = argparse.ArgumentParser(description="Runs clang-tidy over the sources of a build directory.")
    parser.add_argument("build", help="the build directory, which holds compile_commands.json")
    parser.add_argument("files", nargs="*", help="sources to check; all, if none is given")
    parser.add_argument("--deep", action="store_true", help="check every source by itself, with all checks")
    parser.add_argument("--jobs", type=int, default=os.cpu_count(), help="how many to check at once")
    options = parser.parse_args()
    checker = Checker(options.build, options.deep)
    units = units_of(sources_of(options.build, set(options.files)), options.deep)
    with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        findings = {text.replace(ROOT + os.sep, "") for found in pool.map(checker.check, units) for text in found}
    sys.stdout.writelines(sorted(findings))
    return 1 if findings else 0


if __name__ == "__main__":
    sys.exit(main())
