#!/usr/bin/env python3
"""Makes docs/performance.png, and the tables in docs/performance.md, of what bench/report.py has measured; and of what
velm_bench_table and bench/with_blender.py have measured, where their files are there. Everything in the page that does
not stand between a "begin" and an "end" of a table is written by hand and left as it is."""

import argparse
import datetime
import json
import os
import re
import statistics

import matplotlib

matplotlib.use("Agg")
from matplotlib import pyplot  # noqa: E402, once it is said that there is no screen

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
PAGE, PLOT = os.path.join(ROOT, "docs", "performance.md"), os.path.join(ROOT, "docs", "performance.png")
OURS, IDEAL = "#b4452a", "#9a9a9a"  # colours


# ---- Figures ----


class Case:
    """One line of a table: medians of the rounds of one case."""

    def __init__(self, measured):
        self.rounds = len(measured["seconds"])
        self.triangles, self.threads, self.rays = (measured[name] for name in ("triangles", "threads", "rays"))
        self.seconds, self.start, self.peak = (
            statistics.median(measured[name]) for name in ("seconds", "start", "peak")
        )
        self.spread = (max(measured["seconds"]) - min(measured["seconds"])) / self.seconds
        self.acceleration = measured["acceleration"]
        self.nanoseconds = 1e9 * self.seconds / measured["rays a picture"]
        self.million_rays = 1e3 / self.nanoseconds


def of_three(value):
    """Three significant figures, and thousands apart."""
    if value == 0 or value >= 100:
        return f"{value:,.0f}"
    digits = 2
    while value >= 10 ** (3 - digits) or value < 10 ** (2 - digits):
        digits += -1 if value >= 10 ** (3 - digits) else 1
    return f"{value:.{digits}f}"


def percent(share):
    return f"{100 * share:.1f} %"


def table(heads, rows, texts=1):
    """In Markdown; the first columns, those of text, stand to the left, the others to the right."""
    lines = [heads, ["---"] * texts + ["---:"] * (len(heads) - texts), *rows]
    return "\n".join("| " + " | ".join(line) + " |" for line in lines)


# ---- Tables ----

PICTURE_HEADS = ["ms a picture", "ns a ray", "million rays/s", "spread"]


def picture_columns(case):
    return [of_three(value) for value in (1e3 * case.seconds, case.nanoseconds, case.million_rays)] + [
        percent(case.spread)
    ]


def triangles_table(cases):
    first, last = cases[0], cases[-1]

    def bytes_a_triangle(case):
        if case is first:
            return ""
        return of_three((case.peak - first.peak) * 2**20 / (case.triangles - first.triangles))

    heads = ["triangles", *PICTURE_HEADS, "start, s", "peak memory, MiB", "Embree's tree, MiB", "bytes a triangle"]
    rows = [
        [f"{case.triangles:,}", *picture_columns(case)]
        + [of_three(value) for value in (case.start, case.peak, case.acceleration)]
        + [bytes_a_triangle(case)]
        for case in cases
    ]
    more, dearer = last.triangles / first.triangles, last.nanoseconds / first.nanoseconds
    return f"{table(heads, rows)}\n\n{of_three(more)} times the triangles: {of_three(dearer)} times the time of a ray."


def threads_table(cases):
    one = cases[0].seconds
    rows = [[str(case.threads), *picture_columns(case), of_three(one / case.seconds)] for case in cases]
    return table(["threads", *PICTURE_HEADS, "times one thread"], rows)


def rays_table(cases):
    return table(["rays a place", *PICTURE_HEADS], [[f"{case.rays:,}", *picture_columns(case)] for case in cases])


def machine_table(report):
    machine = report["machine"]
    where = "of a virtual machine" if machine["virtual"] else ""
    rows = [
        ["processor", f"{machine['processor']}, {machine['cores']} cores {where}".strip()],
        ["memory", f"{machine['memory']} GiB"],
        ["kernel", machine["kernel"]],
        ["compiler", f"{machine['compiler']}, {machine['build']}"],
        ["Embree", machine["embree"]],
        ["version", machine["velm"]],
        ["date", report["date"]],
    ]
    return "\n".join(["| | |", "|---|---|"] + [f"| {name} | {value} |" for name, value in rows])


GOALS = {"ratio at least": "≥ {} times", "ratio at most": "≤ {} times", "difference at most": "≤ + {}"}


def comparison_table(rows):
    heads = ["what", "against", "ours", "reference", "unit", "ours to reference", "target", "held"]
    lines = []
    for row in rows:
        outcome = f"+ {row['difference']:.2f}" if row["goal"] == "difference at most" else f"{row['ratio']:.2f}"
        figures = [of_three(row["ours"]), of_three(row["reference"]), row["unit"], outcome]
        target = GOALS[row["goal"]].format(f"{row['target']:g}")
        lines.append([row["what"], row["against"], *figures, target, "yes" if row["held"] else "**no**"])
    return table(heads, lines, texts=2)


def blender_table(measured):
    mean = measured["mean occlusion"]
    width, height = measured["size"]
    return (
        f"{comparison_table(measured['rows'])}\n\n"
        f"{width} x {height} pixels, {measured['rays']} rays a pixel, {measured['rounds']} rounds in turn. "
        f"Mean occlusion: ours {mean['ours']:.4f}, Blender's {mean['reference']:.4f}: {mean['note']}."
    )


# ---- The plot ----


def settle(axes, title, across, up):
    axes.set_title(title, fontsize=10)
    axes.set_xlabel(across)
    axes.set_ylabel(up)
    axes.set_xscale("log")
    axes.set_yscale("log")
    axes.grid(True, which="major", color="#dddddd")
    axes.set_axisbelow(True)
    if axes.get_legend_handles_labels()[0]:
        axes.legend(fontsize=8)


def plain_ticks(axis, values):
    """Only these, as people write them."""
    axis.set_major_locator(matplotlib.ticker.FixedLocator(values))
    axis.set_minor_locator(matplotlib.ticker.NullLocator())
    axis.set_major_formatter(matplotlib.ticker.FuncFormatter(lambda value, _: f"{value:,.0f}"))


def plot_triangles(time, memory, cases):
    triangles = [case.triangles for case in cases]
    time.plot(triangles, [case.seconds for case in cases], "o-", color=OURS, label="a picture")
    time.plot(triangles, [case.start for case in cases], "s--", color="#2a6fb4", label="start: reading, building")
    settle(time, "Time by triangles (1 thread, 27 rays)", "triangles", "seconds")
    memory.plot(triangles, [case.peak for case in cases], "o-", color=OURS, label="peak of the process")
    memory.plot(triangles, [case.acceleration for case in cases], "s--", color="#2a6fb4", label="Embree's tree")
    settle(memory, "Memory by triangles", "triangles", "MiB")


def plot_threads(axes, cases, cores):
    threads = [case.threads for case in cases]
    rates = [case.million_rays for case in cases]
    best = [rates[0] * min(count, cores) for count in threads]
    axes.plot(threads, rates, "o-", color=OURS, label="measured")
    axes.plot(threads, best, ":", color=IDEAL, label=f"{cores} cores at best")
    settle(axes, "Rate by threads (70 thousand triangles, 27 rays)", "threads", "million rays a second")
    plain_ticks(axes.xaxis, threads)
    lowest, highest = min(rates) / 2, 2 * max(rates + best)
    axes.set_ylim(lowest, highest)
    round_ones = [value * 10**power for power in range(4) for value in (1, 2, 3, 4, 6, 8)]
    plain_ticks(axes.yaxis, [value for value in round_ones if lowest <= value <= highest])


def plot_rays(axes, cases):
    rays = [case.rays for case in cases]
    axes.plot(rays, [case.seconds for case in cases], "o-", color=OURS, label="measured")
    last = cases[-1]
    proportional = [last.seconds * count / last.rays for count in rays]
    axes.plot(rays, proportional, ":", color=IDEAL, label="as many times as rays")
    settle(axes, "Time by rays (70 thousand triangles, 1 thread)", "rays a place", "seconds a picture")
    plain_ticks(axes.xaxis, rays)


def plot(groups, cores):
    figure, axes = pyplot.subplots(2, 2, figsize=(10, 7.4), dpi=100)
    plot_triangles(axes[0][0], axes[0][1], groups["triangles"])
    plot_threads(axes[1][0], groups["threads"], cores)
    plot_rays(axes[1][1], groups["rays"])
    figure.tight_layout()
    figure.savefig(PLOT, metadata={"Software": None})


# ---- The page ----


def replaced(page, name, content):
    """The page with this between the marks of that name."""
    marks = f"<!-- begin {name} -->", f"<!-- end {name} -->"
    pattern = re.compile(f"({re.escape(marks[0])}\n).*?({re.escape(marks[1])})", re.DOTALL)
    page, count = pattern.subn(lambda found: f"{found[1]}\n{content}\n\n{found[2]}", page)
    if count != 1:
        raise SystemExit(f"bench: {os.path.relpath(PAGE, ROOT)} has to hold {marks[0]} and {marks[1]} once")
    return page


def read(file):
    with open(file, encoding="utf-8") as stream:
        return json.load(stream)


def dated(file, content):
    day = datetime.date.fromtimestamp(os.path.getmtime(file)).isoformat()
    return f"{content}\n\nMeasured on {day}."


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("out", help="the directory of report.json, bench.json and bench-blender.json")
    out = parser.parse_args().out
    report = read(os.path.join(out, "report.json"))
    groups = {}
    for measured in report["cases"]:
        groups.setdefault(measured["varied"], []).append(Case(measured))
    blocks = {
        "plot": f"![Time and memory by triangles, rate by threads, time by rays]({os.path.basename(PLOT)})",
        "machine": machine_table(report),
        "triangles": triangles_table(groups["triangles"]),
        "threads": threads_table(groups["threads"]),
        "rays": rays_table(groups["rays"]),
    }
    compared = {"comparison": ("bench.json", comparison_table), "blender": ("bench-blender.json", blender_table)}
    for name, (file, make) in compared.items():
        file = os.path.join(out, file)
        if os.path.exists(file):
            blocks[name] = dated(file, make(read(file)))
    with open(PAGE, encoding="utf-8") as stream:
        page = stream.read()
    for name, content in blocks.items():
        page = replaced(page, name, content)
    plot(groups, report["machine"]["cores"])
    with open(PAGE, "w", encoding="utf-8") as stream:
        stream.write(page)


if __name__ == "__main__":
    main()
