#!/usr/bin/env python3
"""Attacks the built velm from outside, with damaged files, kills, full disks and modules that do harm.

The kinds of attack are the modules beside this one. All of them run in every worker process, one after the other, each
for its part of the time. An input that breaks a bar is saved with the command that repeats it. The exit status is 1
if a bar was broken.
"""

import argparse
import os
import pathlib
import pickle
import random
import resource
import shutil
import signal
import sys
import tempfile
import time

import bench
import disks
import images
import kills
import meshes
import modules
import objects
import processes
import report
import scenes
import seeds
import shots

KINDS = (scenes, shots, objects, images, meshes, kills, modules, disks)
SAVED = seeds.ROOT / "out/attack"
ADDRESS_SPACE = 16 << 30  # bytes that a command may map, so that the machine survives what has no limit
SHOWN = 30  # broken bars that are printed


def arguments():
    """The command line."""
    parser = argparse.ArgumentParser(prog="./run attack", description=__doc__.splitlines()[0])
    parser.add_argument("minutes", nargs="?", type=float, default=5, help="how long all attacks take together (5)")
    parser.add_argument("--seed", type=int, default=random.SystemRandom().randrange(10**6),
                        help="the seed of all random choices; by default another one each time")
    parser.add_argument("--only", metavar="KIND", action="append", choices=[kind.KIND for kind in KINDS],
                        help=f"only this kind of attack: {', '.join(kind.KIND for kind in KINDS)}")
    parser.add_argument("--jobs", type=int, default=os.cpu_count(), help="commands at a time")
    parser.add_argument("--velm", type=pathlib.Path, default=seeds.ROOT / "build/velm", help="the program to attack")
    parser.add_argument("--evil", type=pathlib.Path, default=seeds.ROOT / "build/tests/attack/evil.p",
                        help="the module that does harm")
    parser.add_argument("--report", action="store_true", help="write the results to docs/attack.md")
    return parser.parse_args()


def work(frame, kinds, options, worker, deadline):
    """Runs all kinds of attack until the deadline: what one worker process does."""
    processes.become_subreaper()
    if not options.sanitized:  # sanitizers map far more than they use
        resource.setrlimit(resource.RLIMIT_AS, (ADDRESS_SPACE, ADDRESS_SPACE))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
    weights = [kind.WEIGHT for kind in kinds]
    for index, kind in enumerate(kinds):
        began = time.monotonic()
        until = began + (deadline - began) * weights[index] / sum(weights[index:])
        number = worker
        while number == worker or time.monotonic() < until:  # each kind at least once, on a slow machine too
            frame.begin(kind.KIND, number)
            kind.attack(frame, random.Random(f"{options.seed} {kind.KIND} {number}"))
            number += options.jobs
        frame.tallies[kind.KIND].seconds += time.monotonic() - began


def start_worker(scratch, found, kinds, options, worker, deadline):
    """Starts a worker process; gives its process id. It leaves its results in its directory."""
    process = os.fork()
    if process != 0:
        return process
    status = 1
    try:
        signal.signal(signal.SIGTERM, signal.default_int_handler)
        frame = bench.Bench(options, scratch / f"worker{worker}", SAVED, found)
        work(frame, kinds, options, worker, deadline)
        with open(frame.scratch / "results", "wb") as file:
            pickle.dump((dict(frame.tallies), frame.failures), file)
        status = 0
    except KeyboardInterrupt:
        processes.end_strays(0)
    except Exception:
        sys.excepthook(*sys.exc_info())
        processes.end_strays(0)
    finally:
        os._exit(status)


def run_workers(scratch, found, kinds, options, deadline):
    """Runs all workers to their ends; gives their results added up."""
    workers = [start_worker(scratch, found, kinds, options, number, deadline) for number in range(options.jobs)]
    try:
        failed = [status for status in (os.waitpid(worker, 0)[1] for worker in workers) if status]
    except KeyboardInterrupt:
        for worker in workers:
            processes.send(worker, signal.SIGTERM)
        processes.wait_for_all()
        raise
    if failed:
        sys.exit("attack: a worker process failed; see above")
    tallies, failures = {kind.KIND: bench.Tally() for kind in kinds}, []
    for number in range(options.jobs):
        with open(scratch / f"worker{number}/results", "rb") as file:
            counted, found_here = pickle.load(file)
        for kind, tally in counted.items():
            tallies[kind].add(tally)
        failures += found_here
    return tallies, failures


def tell(failures):
    """Prints the broken bars: each kind of failure once, with its count."""
    for failure in failures[:SHOWN]:
        print(f"{failure.kind}: {bench.BARS[failure.bar]}: {failure.text}")
        if failure.saved:
            print(f"    {pathlib.Path(failure.saved).relative_to(seeds.ROOT)}/repeat.sh")
    if len(failures) > SHOWN:
        print(f"... and {len(failures) - SHOWN} more")


def main():
    """Attacks, prints the table, and gives the exit status."""
    signal.signal(signal.SIGTERM, signal.default_int_handler)
    options = arguments()
    options.velm, options.evil = options.velm.resolve(), options.evil.resolve()
    options.sanitized = b"__asan_init" in options.velm.read_bytes()
    if options.sanitized and options.report:
        sys.exit("attack: --report is for builds without sanitizers")
    if options.sanitized:
        os.environ["ASAN_OPTIONS"] = "detect_leaks=0"  # for the commands that make the seeds
    deadline = time.monotonic() + 60 * options.minutes
    kinds = [kind for kind in KINDS if not options.only or kind.KIND in options.only]
    shutil.rmtree(SAVED, ignore_errors=True)
    scratch = pathlib.Path(tempfile.mkdtemp(prefix="velm-attack-"))
    try:
        print(f"attack: seed {options.seed}, {options.minutes:g} minutes", file=sys.stderr, flush=True)
        found = seeds.make(options.velm, scratch / "seeds", options.jobs)
        tallies, failures = run_workers(scratch, found, kinds, options, deadline)
    finally:
        shutil.rmtree(scratch, ignore_errors=True)
    tell(failures)
    print(report.as_text(tallies, options.sanitized))
    if options.report:
        (seeds.ROOT / "docs/attack.md").write_text(report.page(options, tallies), encoding="utf-8")
    return 1 if failures else 0


if __name__ == "__main__":
    try:
        sys.exit(main())
    except KeyboardInterrupt:
        sys.exit(130)
