#!/usr/bin/env python3
"""Runs clang-tidy over the sources of a build directory, many sources in one translation unit.

Most of clang-tidy's time goes into the headers of libraries, once for each translation unit. Sources with the same
options of the compiler are therefore included into one generated unit. What is internal to one source may have the
name of something in another; the unit then includes a copy of the source, in which a number is appended to such names.
Where that is not possible, or where headers contradict each other, the sources go into different units. Names are found
by patterns, so a unit may still fail to compile: then its sources with errors are checked apart from the others.

The static analyzer looks into a unit's own file only. It runs on the module, whose sources are checked one by one, as
they share the names of their callbacks and include little. With --deep, every source is checked by itself, with all
checks.
"""

import argparse
import concurrent.futures
import dataclasses
import functools
import json
import os
import re
import shlex
import shutil
import subprocess
import sys
import tempfile

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
LARGEST_UNIT = 300  # sources; clang-tidy needs a gigabyte or two for them
CHECKED_WITH_HOST = ("bench", "fuzz")
CHECKED_ALONE = ("module", "nodes", "random", "shading", "share")
# A unit includes its sources on purpose. The last check takes longer than all the others together.
UNIT_CHECKS = "-clang-analyzer-*,-bugprone-suspicious-include,-performance-unnecessary-value-param"
# The sizes and texts of tests are small, their macros make tables, the linker names what they replace, and several of
# them declare the descriptor.
TEST_CHECKS = UNIT_CHECKS + (
    ",-bugprone-implicit-widening-of-multiplication-result,-bugprone-macro-parentheses"
    ",-bugprone-misplaced-widening-cast,-bugprone-reserved-identifier,-bugprone-suspicious-missing-comma"
    ",-performance-inefficient-string-concatenation,-readability-redundant-declaration")
FINDING = re.compile(r"^(?=[^ :\n][^:\n]*:\d+:\d+: (?:warning|error): )", re.MULTILINE)

# Definitions begin in the first column, since the contents of namespaces are not indented.
INCLUDE = re.compile(r'^#include (?:"(.*)"|<.*>)$', re.MULTILINE)
MACRO = re.compile(r"^#define (\w+)", re.MULTILINE)
TYPE = re.compile(r"^(?:struct|class|union|enum class|enum) (?:alignas\(\w+\) )?(?!class\b|alignas\b)(\w+)\b(?! *;)"
                  r"|^using (\w+) =", re.MULTILINE)
CONSTANT = re.compile(r"^(?:(?:inline|static|thread_local|constexpr|constinit|const) )+"
                      r"(?![^;={]*\)(?: const| noexcept)* \{)[^;]*;", re.MULTILINE)
CONSTANT_NAME = re.compile(r"\b(k[A-Z]\w*)(?:\[\w*\])* *(?=$|[={(;])", re.MULTILINE)
ENUMERATORS = re.compile(r"^enum (?!class\b)[^;{]*\{([^}]*)\}", re.MULTILINE)
FUNCTION = re.compile(r"^[A-Za-z<\[][^=;(\n]*?(?<![:\w])(\w+)\((?:[^;\n]*$|[^;\n]*\{)", re.MULTILINE)
EXPORTED = re.compile(r'^(?:extern "C" |int (?=main\())[^;(]*?(\w+)\([^;{]*\{', re.MULTILINE)
CONDITIONAL = re.compile(r"^#if.*?^#endif$", re.MULTILINE | re.DOTALL)
WORD = re.compile(r"\b[A-Za-z_]\w*")
COMMENT = re.compile(r"//[^\n]*|/\*.*?\*/", re.DOTALL)
NAMESPACE = re.compile(r"^namespace ([\w:]+) \{|^\} // namespace \w", re.MULTILINE)
MEMBER_USE = re.compile(r"(?:[\w)\]]\.|->)(\w+)")
MEMBER = re.compile(r"(?:^ +[\w:<>,*& ]*[\w>][ *&]+|, [*&]?)(\w+)(?:\[\w*\])*(?:;|,| = |\{|\()", re.MULTILINE)
# Comments, texts, includes, members and names that are qualified, except by our namespaces, stay; all other words may
# be renamed.
RENAMED = re.compile(COMMENT.pattern + r'|^#include[^\n]*|"(?:\\.|[^"\\\n])*"|(?:\.|->|'
                     r"(?<!host)(?<!plugin)(?<!test)::)\s*\w+|\b([A-Za-z_]\w*)", re.MULTILINE | re.DOTALL)
VARIABLE = re.compile(r"^(?!(?:using|return|static_assert|namespace)\b)[A-Za-z][\w:<>,*& ]*?[ *&](\w+)(?:\[\w*\])*"
                      r"(?: = [^\n]*|\{[^\n]*)?(?:;|\{)$", re.MULTILINE)
INTERNAL = re.compile(r"^namespace \{$.*?^\} // namespace$", re.MULTILINE | re.DOTALL)


@dataclasses.dataclass
class File:
    """What a source or header defines, and what it includes."""
    own: set         # types and constants, each as a pair of its namespace and its name
    functions: set   # internal functions and variables, and functions with C linkage
    fixed: set       # internal functions and variables that cannot be renamed, since a member has the same name
    macros: set
    includes: list   # as they are written
    headers: dict    # what our headers among them own, each with the header that defines it


def parts_of(text):
    """The parts of a text between the beginnings and ends of namespaces, each with its namespace."""
    namespace, start = "", 0
    for match in NAMESPACE.finditer(text):
        yield namespace, text[start:match.start()]
        namespace, start = match[1] or "", match.end()
    yield namespace, text[start:]


def defined_in(text):
    """The types, constants and enumerators that a part defines."""
    yield from (match[1] or match[2] for match in TYPE.finditer(text))
    yield from (name for line in CONSTANT.findall(text) for name in CONSTANT_NAME.findall(line))
    yield from (word for part in ENUMERATORS.findall(text) for word in WORD.findall(COMMENT.sub("", part)))


@functools.lru_cache(maxsize=None)
def read(name):
    with open(os.path.join(ROOT, name), encoding="utf-8") as stream:
        text = stream.read()
    headers = {}
    includes = list(INCLUDE.finditer(text if name.endswith(".h") else CONDITIONAL.sub("", text)))
    for match in includes:
        if match[1] and os.path.exists(os.path.join(ROOT, match[1])):
            header = read(match[1])
            headers.update(header.headers | dict.fromkeys(header.own, match[1]))
    own = {(namespace, each) for namespace, part in parts_of(text) for each in defined_in(part)}
    own = {(namespace, each) for namespace, each in own if each not in {known for _, known in headers}}
    functions = {name for part in INTERNAL.findall(text) for name in FUNCTION.findall(part) + VARIABLE.findall(part)}
    functions -= {each for _, each in own}
    functions -= {"PrintTo", "ElfW"}  # found by its argument; a macro for types
    fixed = functions & set(MEMBER_USE.findall(text)) & set(MEMBER.findall(text))
    functions = functions - fixed | set(EXPORTED.findall(text))
    return File(own, functions, fixed, set(MACRO.findall(text)), [match[0] for match in includes], headers)


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
    group: str
    names: list

    def __post_init__(self):
        files = [read(name) for name in self.names]
        self.fixed = set().union(*(file.fixed for file in files))
        self.named = {}  # what the headers define: the namespaces of each name, and the headers
        for file in files:
            self.note_headers(file)

    def note_headers(self, file):
        for (namespace, name), header in file.headers.items():
            self.named.setdefault(name, set()).add((namespace, header))

    def takes(self, name, options, group):
        """Whether the source can join."""
        file = read(name)
        return (self.group == group and len(self.names) < LARGEST_UNIT and self.options.joined(options)
                and not file.fixed & self.fixed
                and not any(self.contradicts(*known, header) for known, header in file.headers.items()))

    def contradicts(self, namespace, name, header):
        """Whether another header defines the name, in the namespace or in one around or inside it."""
        return any(f"{namespace}::".startswith(f"{each}::") or f"{each}::".startswith(f"{namespace}::")
                   for each, other in self.named.get(name, ()) if other != header)

    def add(self, name, options):
        file = read(name)
        self.options = self.options.joined(options)
        self.names.append(name)
        self.fixed |= file.fixed
        self.note_headers(file)

    def write(self, directory):
        """Writes the file that includes all headers and then the sources, or copies of those of which something is
        renamed. Gives its name, and the source included at each of its lines."""
        lines = list(dict.fromkeys(include for name in self.names for include in read(name).includes))
        sources = [""] * len(lines)
        known = set(self.named)
        for number, name in enumerate(self.names):
            file = read(name)
            own = {each for _, each in file.own}
            renamed = own & known | file.functions
            known |= own
            written = [f'#include "{renamed_copy(name, renamed, number, directory) if renamed else name}"']
            written += [f"#undef {macro}" for macro in sorted(file.macros)]
            lines += written
            sources += [name] * len(written)
        path = os.path.join(directory, "unit.cpp")
        with open(path, "w", encoding="utf-8") as stream:
            stream.write("".join(line + "\n" for line in lines))
        return path, sources


def renamed_copy(name, renamed, number, directory):
    """Copies a source to the same name below the directory, with the number appended to some words."""
    with open(os.path.join(ROOT, name), encoding="utf-8") as stream:
        text = RENAMED.sub(lambda match: f"{match[0]}{number}" if match[1] in renamed else match[0], stream.read())
    path = os.path.join(directory, name)
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "w", encoding="utf-8") as stream:
        stream.write(text)
    return path


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
        group = source.split(os.sep)[0]
        alone = deep or group in CHECKED_ALONE or source.endswith(".c")
        if not deep and group in CHECKED_WITH_HOST:
            group = "host"
        unit = None if alone else next((each for each in units if each.takes(source, options, group)), None)
        if not unit:
            units.append(Unit(options, group, [source]))
        else:
            unit.add(source, options)
    return sorted(units, key=lambda unit: -len(unit.names))


class Checker:
    """Checks units, each generated one in a directory of its own."""

    def __init__(self, build, deep):
        self.deep = deep
        self.scratch = os.path.join(os.path.abspath(build), "tidy")
        shutil.rmtree(self.scratch, ignore_errors=True)
        os.makedirs(self.scratch)

    def written(self, unit):
        """The file to check, the source, or one that includes all sources of the unit; and the source at each line."""
        if len(unit.names) == 1:
            return unit.names[0], []
        return unit.write(tempfile.mkdtemp(dir=self.scratch))

    def failing(self, unit):
        """The sources of a unit that do not compile within it."""
        path, sources = self.written(unit)
        result = subprocess.run(["clang++", "-fsyntax-only", "-ferror-limit=0", *unit.options.words(), path], cwd=ROOT,
                                capture_output=True, text=True, check=False)
        failing, source = [], ""
        for line in result.stderr.splitlines():
            if line.startswith("In file included from " + path + ":"):
                source = sources[int(line.split(":")[1]) - 1]
            elif " error: " in line and source and source not in failing:
                failing.append(source)
        return failing

    def check(self, unit):
        """What clang-tidy finds in the unit's sources, each finding with its notes."""
        checks = []
        if not self.deep and unit.group not in CHECKED_ALONE:
            checks = ["--checks=" + (TEST_CHECKS if unit.group == "tests" else UNIT_CHECKS)]
        path, _ = self.written(unit)
        result = subprocess.run(["clang-tidy", "--quiet", *checks, path, "--", *unit.options.words()], cwd=ROOT,
                                capture_output=True, text=True, check=False)
        if "[clang-diagnostic-" in result.stdout and len(unit.names) > 1:
            return self.check_apart(unit)
        output = result.stdout.replace(os.path.dirname(path) + os.sep, "") if len(unit.names) > 1 else result.stdout
        findings = [text for text in FINDING.split(output) if FINDING.match(text)]
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
        return [finding for part in parts for finding in self.check(Unit(unit.options, unit.group, part))]


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
