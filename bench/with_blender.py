#!/usr/bin/env python3
"""Renders the bunny with our Ambient Occlusion and with that of Blender's Cycles, in turn, and compares the times that
both report of themselves. Prints rows as velm_bench_table does, and writes them to a JSON file."""

import argparse
import json
import os
import re
import statistics
import subprocess
import sys
import tempfile

import bunny

SIZE, RAYS, ROUNDS = (480, 270), 27, 7
ENDLESS = 1e5  # metres; farther than anything in the scene, so that every hit counts, however far it lies
MOST_TIME = 0.65  # of Blender's
LINE = "{:<54} {:<42} {:>9} {:>9}  {:<12} {:>6}  {:<8} {}"
NOTE = "its rays are weighted by the cosine, ours uniform in the angle"


class Trouble(Exception):
    """The comparison cannot be made; the text says why."""


class Blender:
    """Renders the scene with Blender, headless and on the CPU."""

    def __init__(self, program, directory):
        self.program = program
        self.directory = directory
        self.picture = os.path.join(directory, "blender.exr")
        said = subprocess.run([program, "--version"], check=True, stdout=subprocess.PIPE, text=True).stdout
        self.version = said.splitlines()[0]

    def render(self, threads):
        """Seconds that Cycles gives for the rendering alone, without start, reading and building."""
        if os.path.exists(self.picture):
            os.remove(self.picture)
        words = [self.program, "-b", "--factory-startup", "--debug-cycles", "--python-exit-code", "1"]
        words += ["-P", os.path.join(bunny.ROOT, "bench", "blender_scene.py"), "--", self.write_job(threads)]
        done = subprocess.run(words, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, errors="replace")
        found = re.search(r"Render time \(without synchronization\): ([\d.]+)", done.stdout)
        if done.returncode != 0 or found is None or not os.path.exists(self.picture):
            last = "\n".join(done.stdout.splitlines()[-15:])
            raise Trouble(f"Blender does not render with Cycles, or does not tell its time. Its last words:\n{last}")
        return float(found[1])

    def write_job(self, threads):
        with open(bunny.DEMONSTRATION, encoding="utf-8") as stream:
            scene = json.load(stream)
        thing = scene["objects"]["Bunny"]
        heading, *others = thing["rotation"]
        if any(others):
            raise Trouble("the demonstration's bunny is pitched or banked, which bench/blender_scene.py does not do")
        file = os.path.join(self.directory, "job.json")
        bunny.write_json(
            {
                "mesh": bunny.MESH,
                "position": thing["position"],
                "heading": heading,
                "ground": scene["objects"]["Ground"]["plane"],
                "camera": scene["cameras"]["Main"],
                "width": SIZE[0],
                "height": SIZE[1],
                "rays": RAYS,
                "distance": ENDLESS,
                "threads": threads,
                "picture": self.picture,
            },
            file,
        )
        return file


class Ours:
    def __init__(self, velm, directory):
        self.velm = velm
        self.scene = os.path.join(directory, "scene.json")
        self.picture = os.path.join(directory, "ours.exr")
        bunny.write_json(bunny.occlusion_scene(bunny.MESH, RAYS, Ranged=False), self.scene)

    def render(self, threads):
        return bunny.render(self.velm, self.scene, self.picture, SIZE, threads)["seconds"]


def means(picture):
    """The mean openness where the picture shows the scene, and the fraction of it that does."""
    words = ["oiiotool", picture, "--ch", "R,A", "--printstats"]
    text = subprocess.run(words, check=True, stdout=subprocess.PIPE, text=True).stdout
    openness, coverage = (float(number) for number in re.search(r"Stats Avg: ([\d.]+) ([\d.]+)", text).groups())
    return openness / coverage, coverage


def compare_times(ours, blender, threads):
    mine, theirs = [], []
    for _ in range(ROUNDS + 1):
        mine.append(ours.render(threads))
        theirs.append(blender.render(threads))
    del mine[0], theirs[0]  # to warm up
    ratio = statistics.median(a / b for a, b in zip(mine, theirs))
    return {
        "what": f"bunny, occlusion by {RAYS} rays, {threads} thread{'s' if threads > 1 else ''}",
        "against": f"{blender.version}, Cycles on the CPU",
        "unit": "s",
        "goal": "ratio at most",
        "target": MOST_TIME,
        "ours": statistics.median(mine),
        "reference": statistics.median(theirs),
        "ratio": ratio,
        "held": ratio <= MOST_TIME,
    }


def print_row(row):
    figures = [f"{row[name]:.3f}" for name in ("ours", "reference")]
    held = "yes" if row["held"] else "NO"
    limit = f"<= {row['target']:.2f}"
    print(LINE.format(row["what"], row["against"], *figures, row["unit"], f"{row['ratio']:.2f}", limit, held))


def compare(velm, program):
    """All that is measured, as it is written to the JSON file."""
    with tempfile.TemporaryDirectory(prefix="velm_bench_") as directory:
        ours, blender = Ours(velm, directory), Blender(program, directory)
        print(LINE.format("what", "against", "ours", "Blender's", "unit", "ratio", "target", "held"))
        rows = []
        for threads in (1, 2):
            rows.append(compare_times(ours, blender, threads))
            print_row(rows[-1])
        (my_mean, my_part), (their_mean, their_part) = means(ours.picture), means(blender.picture)
    if abs(my_part - their_part) > 0.005:
        raise Trouble(f"the pictures do not show the same: {my_part:.4f} and {their_part:.4f} of them are covered")
    print(f"\nmean occlusion: ours {1 - my_mean:.4f}, Blender's {1 - their_mean:.4f} ({NOTE})")
    return {
        "size": SIZE,
        "rays": RAYS,
        "rounds": ROUNDS,
        "rows": rows,
        "mean occlusion": {"ours": 1 - my_mean, "reference": 1 - their_mean, "note": NOTE},
    }


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("velm", help="the stand-alone host, with the module beside it")
    parser.add_argument("json", help="the file to write")
    words = parser.parse_args()
    try:
        bunny.write_json(compare(words.velm, "blender"), words.json)
    except (Trouble, OSError, subprocess.CalledProcessError) as error:
        sys.exit(f"bench: {error}")


if __name__ == "__main__":
    main()
