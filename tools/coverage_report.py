#!/usr/bin/env python3
"""Prints the counts in gcovr's JSON (standard input) as a table, then every line that did not run in all branches."""

import json
import os
import sys

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))


def counted(counts):
    """How many of the counts are above zero, and how many counts there are."""
    return sum(count > 0 for count in counts), len(counts)


def figures(pair):
    run, total = pair
    return f"{run:5} of {total:5} {100 * run / total if total else 100:7.2f} %"


def main():
    files = {}
    for file in json.load(sys.stdin)["files"]:
        files[file["file"]] = [line for line in file["lines"] if not line["gcovr/noncode"]]
    print(f"{'':40}{'lines':^24}  {'branches':^24}")
    sums = [[], []]
    for name in sorted(files):
        lines = [line["count"] for line in files[name]]
        branches = [branch["count"] for line in files[name] for branch in line["branches"]]
        print(f"{name:40}{figures(counted(lines))}  {figures(counted(branches))}")
        sums[0] += lines
        sums[1] += branches
    print(f"{'all':40}{figures(counted(sums[0]))}  {figures(counted(sums[1]))}")
    for name in sorted(files):
        with open(os.path.join(ROOT, name), encoding="utf-8") as stream:
            text = stream.read().split("\n")
        for line in files[name]:
            run, total = counted([branch["count"] for branch in line["branches"]])
            what = "never run" if line["count"] == 0 else f"{run} of {total} branches" if run < total else ""
            if what:
                print(f"{name}:{line['line_number']}: {what}: {text[line['line_number'] - 1].strip()}")


if __name__ == "__main__":
    main()
