#!/usr/bin/env python3
"""Measures how the cost of the demonstration's bunny, shaded by Ambient Occlusion alone, grows with its triangles, the
threads and the rays: one of them at a time, each picture by `velm render` in a process of its own, as people run it.
Writes all rounds to a JSON file, which bench/report_page.py turns into docs/performance.md."""

import argparse
import datetime
import os
import platform
import re
import subprocess
import sys
import tempfile

import bunny

SIZE = (320, 180)
PARTS = (1, 4, 12)  # of every edge of the mesh: 70 thousand, 1.1 and 10 million triangles
THREADS = (1, 2, 4, 8, 16)
RAYS = (1, 4, 16, 64, 256, 1024, 4096)
USUAL_RAYS = 27  # the node's own default
ENOUGH_RAYS = 100  # of each place, in the frames of one round together: cheap pictures are rendered several times
MOST_FRAMES = 20
ROUNDS, ROUNDS_OF_LONG = 5, 3
LONG = 1000  # rays


def cases():
    """What is varied, and the three counts of each case."""
    for parts in PARTS:
        yield {"varied": "triangles", "parts": parts, "threads": 1, "rays": USUAL_RAYS}
    for threads in THREADS:
        yield {"varied": "threads", "parts": 1, "threads": threads, "rays": USUAL_RAYS}
    for rays in RAYS:
        yield {"varied": "rays", "parts": 1, "threads": 1, "rays": rays}


def first_line(*words):
    return subprocess.run(words, check=True, stdout=subprocess.PIPE, text=True).stdout.splitlines()[0]


def field(file, name):
    with open(file, encoding="utf-8") as stream:
        found = re.search(rf"^{name}\s*:\s*(.*)$", stream.read(), re.MULTILINE)
    return found[1] if found else "unknown"


def machine(velm):
    """What the figures were measured on."""
    compiler = field_of_cache(velm, "CMAKE_CXX_COMPILER")
    return {
        "processor": field("/proc/cpuinfo", "model name"),
        "virtual": "hypervisor" in field("/proc/cpuinfo", "flags").split(),
        "cores": len(os.sched_getaffinity(0)),
        "memory": round(os.sysconf("SC_PAGE_SIZE") * os.sysconf("SC_PHYS_PAGES") / 2**30, 1),
        "kernel": f"{platform.system()} {re.match('[0-9.]*', platform.release())[0]}",
        "compiler": re.sub(r"^\S+", os.path.basename(compiler), first_line(compiler, "--version")),
        "build": field_of_cache(velm, "CMAKE_BUILD_TYPE"),
        "embree": first_line("dpkg-query", "-W", "-f", "${Version}\n", "libembree-dev"),
        "velm": first_line(velm, "--version"),
    }


def field_of_cache(velm, name):
    """What the build of this program was configured with."""
    with open(os.path.join(os.path.dirname(velm), "CMakeCache.txt"), encoding="utf-8") as stream:
        return re.search(rf"^{name}:\w+=(.*)$", stream.read(), re.MULTILINE)[1]


class Studio:
    """The meshes and scenes, and the renders of them."""

    def __init__(self, velm, directory):
        self.velm = velm
        self.directory = directory
        self.meshes = {}

    def file(self, name):
        return os.path.join(self.directory, name)

    def make_meshes(self):
        # In processes of their own: the peak of memory that the system reports for a process is never below what its
        # parent held when it was started.
        program = os.path.join(bunny.ROOT, "bench", "dense_mesh.py")
        for parts in PARTS:
            self.meshes[parts] = self.file(f"bunny_{parts}.glb")
            subprocess.run([sys.executable, program, bunny.MESH, self.meshes[parts], str(parts)], check=True)

    def render(self, case, picture, frames):
        scene = self.file("scene.json")
        bunny.write_json(bunny.occlusion_scene(self.meshes[case["parts"]], case["rays"]), scene)
        return bunny.render(self.velm, scene, self.file(picture), SIZE, case["threads"], frames)

    def check_meshes(self):
        """All of them have to give the same picture, but for a few rays that pass an edge on the other side."""
        for parts in PARTS:
            self.render({"parts": parts, "threads": 1, "rays": USUAL_RAYS}, f"parts_{parts}.exr", 1)
            words = [self.velm, "compare", self.file(f"parts_{PARTS[0]}.exr"), self.file(f"parts_{parts}.exr")]
            words += ["--tolerance", "0.1", "--rms", "0.001", "--mean", "0.0001"]
            done = subprocess.run(words, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
            if done.returncode != 0:
                sys.exit(f"bench: the finer mesh does not give the same picture:\n{done.stdout}")

    def measure(self, case):
        """One round, added to what the case holds."""
        frames = max(1, min(MOST_FRAMES, ENOUGH_RAYS // case["rays"]))
        took = self.render(case, "picture_####.exr", frames)
        case["triangles"] = took["triangles"]
        case["acceleration"] = took["acceleration"]
        case["rays a picture"] = took["rays"] / frames
        for name, value in (("seconds", took["seconds"] / frames), ("start", took["start"]), ("peak", took["peak"])):
            case.setdefault(name, []).append(value)


def measure_all(studio, rounds):
    studio.make_meshes()
    studio.check_meshes()
    measured = list(cases())
    for number in range(rounds):
        for case in measured:
            if case["rays"] < LONG or number < ROUNDS_OF_LONG:
                studio.measure(case)
        print(f"round {number + 1} of {rounds} is done", file=sys.stderr)
    return measured


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("velm", help="the stand-alone host, in the directory of its build")
    parser.add_argument("json", help="the file to write")
    parser.add_argument("--rounds", type=int, default=ROUNDS, help="how often everything is measured")
    words = parser.parse_args()
    with tempfile.TemporaryDirectory(prefix="velm_bench_") as directory:
        try:
            measured = measure_all(Studio(words.velm, directory), words.rounds)
        except (OSError, subprocess.CalledProcessError) as error:
            sys.exit(f"bench: {error}")
    about = {"date": datetime.date.today().isoformat(), "machine": machine(words.velm), "size": SIZE}
    bunny.write_json(about | {"cases": measured}, words.json)


if __name__ == "__main__":
    main()
