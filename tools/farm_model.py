#!/usr/bin/env python3
"""Simulates how long a film takes on a render farm, and what it costs, by the number of cores and the frames of a task.

    tools/farm_model.py [--figures FILE] [--renew]

Prints the tables of docs/farm.md; with --renew, also writes them there, and draws docs/farm.png. All figures are in
tools/farm_figures.json: "measured" ones were measured with velm on one machine, "assumed" ones are those of a farm.

The model: machines take tasks from one queue, which hands out one after another. A task reads its scene from storage
that all share, builds the ray structure on one core, renders its frames on all cores of the machine, and writes each
frame. Machines fail at random; the frames that a task has written are kept, and the rest is queued again.
"""

import argparse
import heapq
import json
import math
import os
import random
import re

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
CORES = (10, 32, 96, 320, 992, 3200, 10000)
CHUNKS = (1, 4, 16)


def interpolated(xs, ys, x):
    """Between measured points, linear in both logarithms; beyond them, along the last segment."""
    points = list(zip(map(math.log, xs), map(math.log, ys)))
    segment = next((i for i in range(1, len(points) - 1) if math.log(x) < points[i][0]), len(points) - 1)
    (x0, y0), (x1, y1) = points[segment - 1], points[segment]
    return math.exp(y0 + (y1 - y0) * (math.log(x) - x0) / (x1 - x0))


class Film:
    """What one frame and one start cost, from the figures."""

    last = 0.0  # seconds of work after the last task

    def __init__(self, figures):
        measured, film, self.assumed = figures["measured"], figures["film"], figures["assumed"]
        triangles = film["triangles"]
        self.frames = film["frames"]
        self.start = interpolated(measured["start"]["triangles"], measured["start"]["seconds"], triangles)
        pixels = film["width"] * film["height"]
        rays = pixels * film["samples"] * film["rays a sample"]
        nanoseconds = interpolated(measured["rays"]["triangles"], measured["rays"]["nanoseconds"], triangles)
        self.core_seconds = rays * nanoseconds * 1e-9
        scaling = measured["scaling"]
        # What is lost with each doubling of the cores of a task.
        self.loss = (scaling["cores"] / scaling["gain"] - 1) / math.log2(scaling["cores"])
        self.scene_bytes = triangles * measured["mesh bytes a triangle"]
        self.picture_bytes = pixels * measured["picture bytes a pixel"]
        self.launch = measured["seconds a machine takes to launch a task"]

    def frame_seconds(self, cores):
        return self.core_seconds / cores * (1 + self.loss * math.log2(cores))


class Still:
    """One picture in parts, as rendered on two nodes to check the model. A part is what a frame is to a film."""

    def __init__(self, figures, parts):
        nodes = figures["two nodes"]
        self.frames, self.start = parts, nodes["start"]
        self.core_seconds = (nodes["whole"] - nodes["start"]) / parts
        self.scene_bytes = self.picture_bytes = 0  # what is local is part of the start
        self.launch = figures["measured"]["seconds a machine takes to launch a task"]
        self.last = nodes["start of a job"] + nodes["merge"]
        self.assumed = figures["assumed"] | {"cores of a machine": 1, "hours between failures of a machine": 1e9}

    def frame_seconds(self, _):
        return self.core_seconds


class Resource:
    """Serves one request after another: the scheduler, or storage, which is also no faster than its user."""

    def __init__(self):
        self.free = 0.0

    def serve(self, now, seconds, least=0.0):
        """The time at which a request is done that arrives now. Requests arrive in the order of time."""
        self.free = max(self.free, now) + seconds
        return max(self.free, now + least)


class Farm:
    """One run of a film. `machine_seconds` are paid for; `spent` says on what."""

    def __init__(self, film, cores, chunk, seed):
        self.film, self.random = film, random.Random(seed)
        per_machine = min(cores, film.assumed["cores of a machine"])
        self.machines = cores // per_machine
        self.cores = self.machines * per_machine
        self.frame_seconds = film.frame_seconds(per_machine)
        self.scheduler, self.storage = Resource(), Resource()
        self.queue = [min(chunk, film.frames - first) for first in range(0, film.frames, chunk)]
        self.spent = {"launching": 0.0, "reading": 0.0, "building": 0.0, "rendering": 0.0, "writing": 0.0,
                      "failures": 0.0}
        self.end = 0.0

    @property
    def machine_seconds(self):
        return sum(self.spent.values())

    def transfer(self, now, size):
        assumed = self.film.assumed
        return self.storage.serve(now, size / assumed["storage bytes a second"],
                                  size / assumed["storage bytes a second of a machine"])

    def launched(self, now):
        return self.scheduler.serve(now, self.film.assumed["scheduler seconds a task"]) + self.film.launch

    def steps(self, frames):
        """The steps of a task: what each is spent on, and a function from its start to its end."""
        yield "launching", lambda now: self.launched(now)
        yield "reading", lambda now: self.transfer(now, self.film.scene_bytes)
        yield "building", lambda now: now + self.film.start
        for _ in range(frames):
            yield "rendering", lambda now: now + self.frame_seconds
            yield "writing", lambda now: self.transfer(now, self.film.picture_bytes)

    def machine(self):
        """Works until the queue is empty; yields the time of the end of each step."""
        now = 0.0
        hours = self.film.assumed["hours between failures of a machine"]
        fails = self.random.expovariate(1 / (3600 * hours))
        while self.queue:
            frames = self.queue.pop(0)
            for name, step in self.steps(frames):
                done = step(now)
                if done > fails:
                    break
                self.spent[name] += done - now
                now = done
                frames -= name == "writing"
                yield now
            if frames > 0:
                self.queue.append(frames)
                again = fails + self.film.assumed["seconds until a failed task starts again"]
                self.spent["failures"] += again - now
                now, fails = again, again + self.random.expovariate(1 / (3600 * hours))
                yield now
        self.end = max(self.end, now + self.film.last)

    def run(self):
        machines = [(0.0, number, self.machine()) for number in range(self.machines)]
        while machines:
            _, number, machine = heapq.heappop(machines)
            now = next(machine, None)
            if now is not None:
                heapq.heappush(machines, (now, number, machine))
        return self


def simulated(film, cores, chunk, runs=5):
    """The farm of the run whose time is in the middle."""
    farms = sorted((Farm(film, cores, chunk, seed).run() for seed in range(runs)), key=lambda farm: farm.end)
    return farms[runs // 2]


def most_of_rest(farm, film):
    """What most of the time goes to that is not rendering on one core of as many."""
    scaling = farm.spent["rendering"] * (1 - film.core_seconds * farm.machines / farm.cores / farm.frame_seconds)
    rest = farm.spent | {"rendering": 0, "uneven use of cores": scaling,
                         "idle at the end": farm.end * farm.machines - farm.machine_seconds}
    return max(rest, key=rest.get)


def row(farm, film):
    spent = farm.machine_seconds * farm.cores / farm.machines / 3600
    useful = film.frames * film.core_seconds / 3600
    return [f"{farm.cores:,}", f"{farm.end / 3600:.2f}", f"{spent:,.0f}", f"{100 * useful / spent:.0f} %",
            most_of_rest(farm, film)]


def table(film):
    lines = ["| cores | frames a task | hours | core hours | rendering alone | most of the rest |",
             "| ---: | ---: | ---: | ---: | ---: | --- |"]
    for cores in CORES:
        for chunk in CHUNKS:
            cells = row(simulated(film, cores, chunk), film)
            lines.append("| " + " | ".join([cells[0], str(chunk), *cells[1:]]) + " |")
    return "\n".join(lines)


def costs(film):
    return "\n".join(["| | |", "|---|---|",
                      f"| start of a task: read, build | {film.start:.1f} s on one core |",
                      f"| a frame | {film.core_seconds:,.0f} core seconds |",
                      f"| the scene's files, a picture | {film.scene_bytes / 1e6:,.0f} MB, "
                      f"{film.picture_bytes / 1e6:,.0f} MB |",
                      f"| lost with each doubling of a task's cores | {100 * film.loss:.1f} % |",
                      f"| launching a task on a machine | {film.launch:.2f} s |"])


def check_table(figures):
    lines = ["| parts | measured, s | simulated, s |", "| ---: | ---: | ---: |"]
    for run in figures["two nodes"]["runs"]:
        still = Farm(Still(figures, run["parts"]), 2, 1, 0).run()
        lines.append(f"| {run['parts']} | {run['seconds']:.1f} | {still.end:.1f} |")
    return "\n".join(lines)


def plot(film, file):
    import matplotlib

    matplotlib.use("Agg")
    from matplotlib import pyplot

    figure, (time, cost) = pyplot.subplots(1, 2, figsize=(10, 3.9), dpi=100)
    for chunk, colour in zip(CHUNKS, ("#b4452a", "#2a6fb4", "#4a8a3a")):
        farms = [simulated(film, cores, chunk) for cores in CORES]
        used = [farm.cores for farm in farms]
        label = f"{chunk} frame{'s' if chunk > 1 else ''} a task"
        time.plot(used, [farm.end / 3600 for farm in farms], "o-", color=colour, label=label)
        hours = [farm.machine_seconds * farm.cores / farm.machines / 3600 for farm in farms]
        cost.plot(used, hours, "o-", color=colour, label=label)
    useful = film.frames * film.core_seconds / 3600
    time.plot(CORES, [useful / cores for cores in CORES], ":", color="#9a9a9a", label="rendering alone")
    cost.plot(CORES, [useful] * len(CORES), ":", color="#9a9a9a", label="rendering alone")
    for axes, title, unit in ((time, "Time by cores", "hours"), (cost, "Cost by cores", "core hours")):
        axes.set_xscale("log")
        axes.set_title(title)
        axes.set_xlabel("cores")
        axes.set_ylabel(unit)
        axes.grid(True, alpha=0.3)
        axes.legend()
    time.set_yscale("log")
    cost.set_ylim(bottom=0)
    figure.tight_layout()
    figure.savefig(file, metadata={"Software": None})


def renew(blocks):
    page = os.path.join(ROOT, "docs", "farm.md")
    with open(page, encoding="utf-8") as file:
        text = file.read()
    for name, content in blocks.items():
        marks = f"<!-- begin {name} -->", f"<!-- end {name} -->"
        pattern = re.compile(f"({re.escape(marks[0])}\n).*?({re.escape(marks[1])})", re.DOTALL)
        text, count = pattern.subn(lambda found: f"{found[1]}\n{content}\n\n{found[2]}", text)
        if count != 1:
            raise SystemExit(f"farm_model.py: docs/farm.md has to hold {marks[0]} and {marks[1]} once")
    with open(page, "w", encoding="utf-8") as file:
        file.write(text)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--figures", default=os.path.join(ROOT, "tools", "farm_figures.json"))
    parser.add_argument("--renew", action="store_true", help="write docs/farm.md and docs/farm.png")
    options = parser.parse_args()
    with open(options.figures, encoding="utf-8") as file:
        figures = json.load(file)
    film = Film(figures)
    blocks = {"costs": costs(film), "film": table(film), "still": check_table(figures)}
    print("\n\n".join(blocks.values()))
    if options.renew:
        renew(blocks)
        plot(film, os.path.join(ROOT, "docs", "farm.png"))


if __name__ == "__main__":
    main()
