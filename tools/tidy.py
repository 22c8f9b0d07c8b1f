#!/usr/bin/env python3
"""Runs clang-tidy over the sources of a build directory, many sources in one translation unit.

Most of clang-tidy's time goes into the headers of libraries, once for each translation unit. Sources whose options
agree are therefore included into one generated unit. Where two of them define the same internal name, one is renamed by
a macro around its source; where that is not possible, they go into different units. The names are found by patterns, so
a unit may still fail to compile: then the sources with errors and the others are checked apart.

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
# A unit includes its sources on purpose. The last check takes as long as all others together.
UNIT_CHECKS = "-clang-analyzer-*,-bugprone-suspicious-include,-performance-unnecessary-value-param"
TEST_CHECKS = ("-*,bugprone-infinite-loop,bugprone-sizeof-expression,misc-redundant-expression,"
               "modernize-use-nullptr,modernize-use-override,performance-for-range-copy,"
               "readability-container-size-empty,readability-else-after-return,readability-identifier-naming")
FINDING = re.compile(r"^(?=[^ :\n][^:\n]*:\d+:\d+: (?:warning|error): )", re.MULTILINE)

# Definitions begin in the first column, since the contents of namespaces are not indented.
INCLUDE = re.compile(r'^#include (?:"(.*)"|<.*>)$', re.MULTILINE)
MACRO = re.compile(r"^#define (\w+)", re.MULTILINE)
TYPE = re.compile(r"^(?:struct|class|union|enum class|enum) (?!class)(\w+)\b(?! *;)|^using (\w+) =", re.MULTILINE)
CONSTANT = re.compile(r"^(?:(?:inline|static|thread_local|constexpr|constinit|const) )+[^;]*;", re.MULTILINE)
CONSTANT_NAME = re.compile(r"\b(k[A-Z]\w*)(?:\[\w*\])* *(?=$|[={(;])", re.MULTILINE)
ENUMERATORS = re.compile(r"^enum\b[^;{]*\{([^}]*)\}", re.MULTILINE)
FUNCTION = re.compile(r"^[A-Za-z<\[][^=;(\n]*?(?<![:\w])(\w+)\((?:[^;\n]*$|[^;\n]*\{)", re.MULTILINE)
EXPORTED = re.compile(r'^extern "C" [^;(]*?(\w+)\([^;{]*\{', re.MULTILINE)
CALL = re.compile(r"\b(\w+)\(")
CONDITIONAL = re.compile(r"^#if.*?^#endif$", re.MULTILINE | re.DOTALL)
WORD = re.compile(r"\b[A-Za-z_]\w*")
COMMENT = re.compile(r"//[^\n]*|/\*.*?\*/", re.DOTALL)
MEMBER = re.compile(r"(?:\.|->|::)\s*(\w+)")
VARIABLE = re.compile(r"^(?!(?:using|return|static_assert|namespace)\b)[A-Za-z][\w:<>,*& ]*?[ *&](\w+)(?:\[\w*\])*"
                      r"(?: = [^\n]*|\{[^\n]*)?(?:;|\{)$", re.MULTILINE)
INTERNAL = re.compile(r"^namespace \{$.*?^\} // namespace$", re.MULTILINE | re.DOTALL)


@dataclasses.dataclass
class File:
    """What a source or header defines, and what it includes."""
    own: set         # types and constants
    functions: set   # internal functions and variables
    fixed: set       # macros, and names that cannot be renamed: members, or functions of our headers, have them too
    includes: list   # as they are written
    headers: dict    # types and constants of our headers among them, each with the header that defines it
    calls: set       # names before a parenthesis in our headers among them


@functools.lru_cache(maxsize=None)
def read(name):
    with open(os.path.join(ROOT, name), encoding="utf-8") as stream:
        text = stream.read()
    headers, calls = {}, set()
    includes = list(INCLUDE.finditer(text if name.endswith(".h") else CONDITIONAL.sub("", text)))
    for match in includes:
        if match[1] and os.path.exists(os.path.join(ROOT, match[1])):
            header = read(match[1])
            headers.update(header.headers | dict.fromkeys(header.own, match[1]))
            calls |= header.calls
    if name.endswith(".h"):
        calls.update(CALL.findall(COMMENT.sub("", text)))
    own = {match[1] or match[2] for match in TYPE.finditer(text)}
    own.update(name for line in CONSTANT.findall(text) for name in CONSTANT_NAME.findall(line))
    own.update(word for part in ENUMERATORS.findall(text) for word in WORD.findall(COMMENT.sub("", part)))
    own -= set(headers)
    functions = {name for part in INTERNAL.findall(text) for name in FUNCTION.findall(part) + VARIABLE.findall(part)}
    functions -= own
    functions.discard("PrintTo")  # found by its argument
    members = set(MEMBER.findall(COMMENT.sub("", text)))
    fixed = functions & (calls | members) | set(MACRO.findall(text))
    if not name.endswith(".h"):
        fixed |= own & members
    functions = functions - fixed | set(EXPORTED.findall(text))
    return File(own - fixed, functions, fixed, [match[0] for match in includes], headers, calls)


@dataclasses.dataclass(frozen=True)
class Options:
    """The compiler's options in a compile command: without the compiler, the source and the output."""
    macros: frozenset
    systems: frozenset  # directories of libraries' headers
    others: tuple

    @staticmethod
    def of(command):
        words = shlex.split(command)
        while not words[0].startswith("-"):
            words.pop(0)
        for flag in ("-o", "-c"):
            at = words.index(flag)
            del words[at:at + 2]
        macros = {word for word in words if word.startswith("-D")}
        systems = {words[at + 1] for at, word in enumerate(words) if word == "-isystem"}
        others = [word for word in words if word not in macros and word not in systems and word != "-isystem"]
        # A local name may be that of an internal one of another source; the compiler looks for shadowing in each by
        # itself.
        return Options(frozenset(macros), frozenset(systems), tuple(others + ["-Wno-shadow"]))

    def joined(self, other):
        """The options for sources with either; None if they contradict."""
        macros = self.macros | other.macros
        if self.others != other.others or len({word.split("=")[0] for word in macros}) != len(macros):
            return None
        return Options(macros, self.systems | other.systems, self.others)

    def words(self):
        return sorted(self.macros) + [word for path in sorted(self.systems) for word in ("-isystem", path)] + list(
            self.others)


@dataclasses.dataclass
class Unit:
    """Sources that are checked together."""
    options: Options
    directory: str
    names: list

    def __post_init__(self):
        files = [read(name) for name in self.names]
        self.functions = set().union(*(file.functions for file in files))
        self.fixed = set().union(*(file.fixed for file in files))
        self.headers = {name: header for file in files for name, header in file.headers.items()}

    def takes(self, name, options, directory):
        """Whether the source can join."""
        file = read(name)
        return (self.directory == directory and len(self.names) < LARGEST_UNIT and self.options.joined(options)
                and not file.fixed & (self.functions | self.fixed)
                and all(self.headers.get(known, header) == header for known, header in file.headers.items()))

    def add(self, name, options):
        file = read(name)
        self.options = self.options.joined(options)
        self.names.append(name)
        self.functions |= file.functions
        self.fixed |= file.fixed
        self.headers |= file.headers

    def text(self):
        """The unit: all headers before any renaming, then the sources."""
        lines = list(dict.fromkeys(include for name in self.names for include in read(name).includes))
        known = set(self.headers)
        for number, name in enumerate(self.names):
            renamed = sorted(read(name).own & known | read(name).functions)
            known |= read(name).own
            lines += [f"#define {each} {each}{number}" for each in renamed]
            lines.append(f'#include "{name}"')
            lines += [f"#undef {each}" for each in renamed]
        return "".join(line + "\n" for line in lines)


def sources_of(build, wanted):
    """The sources with their options, without those that the build makes; the first of several compilations counts."""
    with open(os.path.join(build, "compile_commands.json"), encoding="utf-8") as stream:
        commands = json.load(stream)
    sources = {}
    for command in commands:
        source = os.path.relpath(command["file"], ROOT)
        if os.path.relpath(command["file"], build).startswith("..") and (not wanted or source in wanted):
            sources.setdefault(source, Options.of(command["command"]))
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
            unit.add(source, options)
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
        result = subprocess.run(["clang++", "-fsyntax-only", "-ferror-limit=0", *unit.options.words(), path], cwd=ROOT,
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
        result = subprocess.run(["clang-tidy", "--quiet", *checks, self.source_of(unit), "--", *unit.options.words()],
                                cwd=ROOT, capture_output=True, text=True, check=False)
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
    findings = set()
    with concurrent.futures.ThreadPoolExecutor(options.jobs) as pool:
        for found in pool.map(checker.check, units):
            new = {text.replace(ROOT + os.sep, "") for text in found} - findings
            sys.stdout.writelines(sorted(new))
            sys.stdout.flush()
            findings |= new
    return 1 if findings else 0


if __name__ == "__main__":
    sys.exit(main())
