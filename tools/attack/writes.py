"""The commands that write files, as kills and full disks interrupt them: what they write, and what it has to be."""

import dataclasses
import json

import bench

SCENE = {
    "render": {"lastFrame": 3},
    "cameras": {"Main": {"position": [0, 0, -3]}},
    "lights": {"Key": {"kind": "distant", "position": [1, 2, -3]}},
    "objects": {"Ball": {"mesh": {"file": "ball.ply"}, "surface": "Clay"}},
    "surfaces": {"Clay": {
        "nodes": {"AO": {"server": "Velm Ambient Occlusion", "settings": {"Samples": 4}}},
        "connections": ["AO.Color -> Clay.Color"]}},
}
RENDER = ["render", "scene.json", "--threads", "1", "--quiet", *bench.LIMITS]
SMALL = ["--size", "48x48", "--samples", "1", "--frames", "1"]


@dataclasses.dataclass
class Writing:
    """A command, the files that it writes, and which of them exist before."""

    words: list
    outputs: list


WRITINGS = (
    Writing([*RENDER, *SMALL, "-o", "new.png"], ["new.png"]),
    Writing([*RENDER, *SMALL, "-o", "old.png"], ["old.png"]),
    Writing([*RENDER, *SMALL, "-o", "old.exr"], ["old.exr"]),
    Writing([*RENDER, *SMALL, "-o", "deep/new.tif"], ["deep/new.tif"]),
    Writing([*RENDER, "--size", "32x32", "--samples", "1", "-o", "walk_####.png"],
            [f"walk_{number:04}.png" for number in (1, 2, 3)]),
    Writing(["pack", "scene.json", "object.lwo", "-o", "packed.lwo"], ["packed.lwo"]),
    Writing(["pack", "scene.json", "object.lwo", "-o", "old.lwo"], ["old.lwo"]),
    Writing(["unpack", "object.lwo", "-o", "old.json"], ["old.json"]),
    Writing(["archive", "scene.json", "archive"], ["archive/scene.json", "archive/meshes/ball.ply"]),
    Writing(["compare", "old.png", "other.png", "--differences", "differences.png"], ["differences.png"]),
)
OLD = ("old.png", "old.exr", "old.lwo", "old.json")
INPUTS = ("scene.json", "ball.ply", "object.lwo", "other.png")


def prepare(frame):
    """Writes the inputs, and an older file under the name of some outputs."""
    frame.write("scene.json", json.dumps(SCENE))
    frame.write("ball.ply", frame.seeds.meshes[".ply"][0])
    frame.write("object.lwo", frame.seeds.objects[0])
    frame.write("other.png", frame.seeds.images[".png"][0])
    for name in OLD:
        frame.write(name, frame.seeds.images[".png"][0] if name == "old.png" else f"the old {name}\n")


def contents(frame):
    """The contents of all files, by their names."""
    return {name: (frame.scratch / name).read_bytes() for name in frame.files()}


def whole(frame, writing):
    """How long the command takes undisturbed, and what it writes: the same bytes every time."""
    prepare(frame)
    outcome = frame.run(writing.words)
    written = {name: data for name, data in contents(frame).items() if name[len("work/"):] in writing.outputs}
    if len(written) != len(writing.outputs):
        frame.report("status", f"status {outcome.status} without any disturbance", outcome)
    return outcome.seconds, written


def compare(frame, writing, written, before, outcome, leftover=None):
    """Every output is as it was, absent if it was absent, or whole; everything else is as it was, and nothing more.

    A file whose name `leftover` matches may remain.
    """
    now = contents(frame)
    for name in sorted(before.keys() | now.keys()):
        found, old = now.get(name), before.get(name)
        if found == old or (found is not None and found == written.get(name)):
            continue
        if found is None:
            frame.report("torn", f"lost: {name}", outcome)
        elif name in before or name in written:
            frame.report("torn", f"torn: {name}, {len(found)} bytes", outcome)
        elif leftover and leftover.search(name):
            frame.tally.notes["unfinished files after SIGKILL of the first process, as documented"] += 1
        else:
            frame.report("left", f"left behind: {name}", outcome)
    if outcome.status == 0:
        for name in sorted(written):
            if now.get(name) != written[name]:
                frame.report("torn", f"status 0, but not written: {name}", outcome)
