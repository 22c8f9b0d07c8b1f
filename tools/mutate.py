#!/usr/bin/env python3
"""Changes the module's sources by one small fault at a time, and counts the faults that no test notices.

Each mutant is compiled and tested in a copy of the tree, build-mutate/tree; the tree itself is only read. A mutant that
does not compile does not count, and another is tried instead.
"""

import argparse
import glob
import json
import os
import random
import resource
import shutil
import subprocess
import sys
import time

from mutants import mutants_of

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
WORK = os.path.join(ROOT, "build-mutate")
TREE, BUILD, RESULT = (os.path.join(WORK, name) for name in ("tree", "build", "result.json"))
PAGE = os.path.join(ROOT, "docs", "mutation.md")
EQUIVALENT = os.path.join(ROOT, "tools", "equivalent_mutants.txt")

# The test programs that need no host: their ninja targets and directories.
PROGRAMS = {
    "test_module": "tests/module",
    "test_nodes": "tests/nodes",
    "test_share": "tests/share",
    "test_random": "tests/random",
    "test_shading": "tests/shading",
}
# The program most likely to notice a mutant of a file outside nodes/. If it does not, all others are run.
FILES = {
    "module/descriptor.cpp": "test_module",
    "module/inputs.h": "test_nodes",
    "module/node.cpp": "test_module",
    "module/node.h": "test_module",
    "module/panel.cpp": "test_module",
    "random/random.cpp": "test_random",
    "random/random.h": "test_random",
    "shading/compare.h": "test_nodes",
    "shading/directions.cpp": "test_nodes",
    "shading/directions.h": "test_nodes",
    "shading/glossy.h": "test_nodes",
    "shading/image_popup.cpp": "test_nodes",
    "shading/image_popup.h": "test_nodes",
    "shading/rays.h": "test_nodes",
    "shading/sincos.cpp": "test_shading",
    "shading/vectors.h": "test_nodes",
    "share/registry.cpp": "test_share",
}


def node_files():
    """The files of the nodes, each with the test program that contains the test of that node."""
    found = {}
    for path in sorted(glob.glob(os.path.join(ROOT, "nodes", "*", "*.cpp"))):
        test = os.path.basename(path).replace(".cpp", "_test.cpp")
        tested = os.path.exists(os.path.join(ROOT, "tests", "nodes", test))
        found[os.path.relpath(path, ROOT)] = "test_nodes" if tested else "test_module"
    return found


FILES.update(node_files())
FEWEST_PER_FILE = 4
MEMORY = 4 << 30  # bytes for a test program; a mutant may allocate endlessly


def say(text):
    print(text, file=sys.stderr, flush=True)


def read(path):
    with open(path, encoding="utf-8") as stream:
        return stream.read()


def write(path, text):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "w", encoding="utf-8") as stream:
        stream.write(text)


def copy_tree():
    """Updates the copy from the tree. Does not touch unchanged files, so that they are not built again."""
    listed = subprocess.run(["git", "ls-files", "-z", "--cached", "--others", "--exclude-standard"], cwd=ROOT,
                            check=True, capture_output=True).stdout.decode().split("\0")
    wanted = {name for name in listed if name and os.path.isfile(os.path.join(ROOT, name))}
    for directory, _, names in os.walk(TREE):
        for name in names:
            path = os.path.join(directory, name)
            if os.path.relpath(path, TREE) not in wanted:
                os.remove(path)
    for name in wanted:
        source, target = os.path.join(ROOT, name), os.path.join(TREE, name)
        with open(source, "rb") as one:
            data = one.read()
        if os.path.exists(target):
            with open(target, "rb") as other:
                if other.read() == data:
                    continue
        os.makedirs(os.path.dirname(target), exist_ok=True)
        shutil.copyfile(source, target)


class Bench:
    """The copy of the tree and its build, in which one mutant at a time is tried."""

    def __init__(self, jobs):
        self.jobs = jobs
        self.limits = {}  # seconds for each program

    def prepare(self):
        copy_tree()
        launcher = ["-DCMAKE_CXX_COMPILER_LAUNCHER=ccache"] if shutil.which("ccache") else []
        # No optimisation and no warnings, since all that matters is whether a test fails. An index outside of an array
        # ends the program, as it would under the sanitizers.
        subprocess.run(["cmake", "-G", "Ninja", "-S", TREE, "-B", BUILD, "-DCMAKE_BUILD_TYPE=Debug",
                        "-DCMAKE_CXX_FLAGS_DEBUG=-O0 -w -fsanitize=bounds-strict -fsanitize-undefined-trap-on-error",
                        "-DVELM_BENCH=OFF",
                        "-DCMAKE_GTEST_DISCOVER_TESTS_DISCOVERY_MODE=PRE_TEST", *launcher],
                       check=True, stdout=subprocess.DEVNULL)
        say("Building the test programs of the module")
        if not self.build(*PROGRAMS):
            sys.exit("mutate: the tree does not build as it is")
        for program in PROGRAMS:
            start = time.monotonic()
            if not self.passes(program, 600):
                sys.exit(f"mutate: {program} fails as the tree is")
            # Far more than needed, since the machine may be busy otherwise.
            self.limits[program] = 10 + 10 * (time.monotonic() - start)
        os.environ["CCACHE_READONLY"] = "1"  # no mutant is compiled twice, so that caching it is useless

    def build(self, *targets):
        return subprocess.run(["ninja", "-C", BUILD, "-j", str(self.jobs), *targets], stdout=subprocess.DEVNULL,
                              stderr=subprocess.DEVNULL).returncode == 0

    @staticmethod
    def passes(program, limit):
        try:
            return subprocess.run(
                [os.path.join(BUILD, PROGRAMS[program], program), "--gtest_brief=1", "--gtest_fail_fast"], cwd=BUILD,
                stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, timeout=limit,
                preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_AS, (MEMORY, MEMORY))).returncode == 0
        except subprocess.TimeoutExpired:
            return False

    def tried(self, mutant, source):
        """The name of the program that notices the mutant; "" if none does; None if the mutant does not compile."""
        first = FILES.get(mutant.file, "test_module")
        path = os.path.join(TREE, mutant.file)
        write(path, mutant.applied(source))
        try:
            if not self.build(first):
                return None
            if not self.passes(first, self.limits[first]):
                return first
            others = [program for program in PROGRAMS if program != first]
            if not self.build(*others):
                return None
            return next((program for program in others if not self.passes(program, self.limits[program])), "")
        finally:
            write(path, source)


def equivalents():
    """Mutants that no test can notice, by file and change. A block of the list holds the lines file, "- before",
    "+ after" and "because: why"."""
    known = {}
    text = "\n".join(line for line in read(EQUIVALENT).split("\n") if not line.startswith("#"))
    for block in filter(None, (block.strip() for block in text.split("\n\n"))):
        lines = block.split("\n")
        if len(lines) < 4 or lines[1][:4] != "  - " or lines[2][:4] != "  + " or lines[3][:11] != "  because: ":
            sys.exit(f"mutate: {EQUIVALENT} has a block that is not a file, -, + and because:\n{block}")
        known[lines[0], lines[1][4:], lines[2][4:]] = " ".join(line.strip() for line in lines[3:])[9:]
    return known


def drawn_mutants(files, count, seed):
    """For each file, its mutants in random order, and how many of them to try: in proportion to their number, but
    at least FEWEST_PER_FILE."""
    known = equivalents()
    found = {}
    for file in files:
        mutants = mutants_of(file, read(os.path.join(TREE, file)))
        found[file] = [mutant for mutant in mutants if (file, mutant.before, mutant.after) not in known]
        stale = [key for key in known if key[0] == file and not any(key[1:] == (m.before, m.after) for m in mutants)]
        for key in stale:
            sys.exit(f"mutate: {EQUIVALENT} lists a mutant that does not exist any more: {key[0]}: {key[1]}")
        random.Random(f"{seed} {file}").shuffle(found[file])
    total = sum(len(mutants) for mutants in found.values())
    counts = {file: min(len(found[file]), max(FEWEST_PER_FILE, round(count * len(found[file]) / total)))
              for file in files}
    return found, counts


def save_result(result):
    write(RESULT + ".new", json.dumps(result, indent=1))
    os.replace(RESULT + ".new", RESULT)


def saved_result():
    if not os.path.exists(RESULT):
        sys.exit("mutate: there is no result yet")
    return json.loads(read(RESULT))


def entry(mutant, noticed):
    return {"file": mutant.file, "line": mutant.line, "kind": mutant.kind, "before": mutant.before,
            "after": mutant.after, "noticed": noticed}


def campaign(options):
    files = options.files or list(FILES)
    bench = Bench(options.jobs)
    bench.prepare()
    found, counts = drawn_mutants(files, options.count, options.seed)
    # Results for other files are kept.
    last = saved_result()["mutants"] if os.path.exists(RESULT) else []
    results = [old for old in last if old["file"] in FILES and old["file"] not in files]
    for file in files:
        source, viable = read(os.path.join(TREE, file)), 0
        for mutant in found[file]:
            if viable == counts[file]:
                break
            noticed = bench.tried(mutant, source)
            if noticed is None:
                continue
            viable += 1
            results.append(entry(mutant, noticed))
            save_result({"seed": options.seed, "date": time.strftime("%Y-%m-%d"), "mutants": results})
            if not noticed:
                say(f"{file}:{mutant.line}: survives: {mutant.before}  ->  {mutant.after}")
        say(f"{file}: {viable} of {len(found[file])} tried")
    report()


def again(options):
    """Tries the survivors of the last run once more, after tests were added."""
    last = saved_result()
    bench = Bench(options.jobs)
    bench.prepare()
    known = equivalents()
    for old in [old for old in last["mutants"] if not old["noticed"]]:
        source = read(os.path.join(TREE, old["file"]))
        same = [mutant for mutant in mutants_of(old["file"], source)
                if (mutant.before, mutant.after) == (old["before"], old["after"])]
        if not same or (old["file"], old["before"], old["after"]) in known:
            last["mutants"].remove(old)
            continue
        nearest = min(same, key=lambda mutant: abs(mutant.line - old["line"]))  # the same line may occur twice
        old["line"], old["noticed"] = nearest.line, bench.tried(nearest, source)
        save_result(last)
    save_result(last)
    report()


def report():
    last = saved_result()
    mutants = last["mutants"]
    survivors = [mutant for mutant in mutants if not mutant["noticed"]]
    print(f"{last['date']}, seed {last['seed']}: {len(mutants)} mutants, {len(survivors)} survive "
          f"({100 * len(survivors) / max(1, len(mutants)):.1f} %); {len(equivalents())} known as equivalent")
    for file in dict.fromkeys(mutant["file"] for mutant in mutants):
        here = [mutant for mutant in mutants if mutant["file"] == file]
        print(f"  {sum(not mutant['noticed'] for mutant in here):3} of {len(here):3}  {file}")
    for mutant in survivors:
        print(f"\n{mutant['file']}:{mutant['line']}  ({mutant['kind']})\n  - {mutant['before']}\n  + {mutant['after']}")


def main():
    parser = argparse.ArgumentParser(prog="run mutate", description=__doc__.split("\n")[0])
    parser.add_argument("files", nargs="*", metavar="FILE", help="mutate these only; else " + ", ".join(FILES))
    parser.add_argument("--count", type=int, default=400, help="how many mutants, over all files (default: 400)")
    parser.add_argument("--seed", type=int, default=1, help="another number draws other mutants")
    parser.add_argument("--jobs", type=int, default=1, help="how many compilers at once")
    parser.add_argument("--report", action="store_true",
                        help="only print the last result, or docs/mutation.md where there is none yet")
    parser.add_argument("--again", action="store_true", help="try the survivors of the last run once more")
    options = parser.parse_args()
    for file in options.files:
        if not os.path.isfile(os.path.join(ROOT, file)):
            parser.error(f"there is no file {file}")
    if options.report:
        # Where nothing has been run yet, the result that was committed with the sources.
        report() if os.path.exists(RESULT) else print(read(PAGE), end="")
    elif options.again:
        again(options)
    else:
        campaign(options)


if __name__ == "__main__":
    main()
