"""Modules that do harm: tests/attack/evil_module.cpp, with every fault at every place."""

import json
import random
import re
import signal

import bench
import seeds
import writes

KIND, WEIGHT = "modules", 24

SOURCE = "tests/attack/faults.h"
CALL_LIMIT, CHECK_LIMIT = 1, 5  # seconds, for --call-limit and --check-limit
MODULE = "evil.p"
NAMED = (MODULE, 'node "It"', 'node "Evil"', 'server "Evil Node"')  # one of these is in the message of every failure
SILENCING = (": close errors @ ", ": close all @ ")  # no message can appear where standard error is closed
ENDS_ITSELF = ": end itself @ "  # SIGTERM, which ends both processes whoever sends it
HARMLESS_NOTE, NAMED_NOTE = "harmless", "named"

SCENE = {
    "cameras": {"Main": {"position": [0, 0, -3]}},
    "lights": {"Key": {"kind": "distant", "position": [1, 2, -3]}},
    "objects": {"Ball": {"box": {"size": [4, 4, 1]}, "surface": "Clay"}},
    "surfaces": {"Clay": {"nodes": {"It": {"server": "Evil Node", "settings": {"Amount": 3}}},
                          "connections": ["It.Color -> Clay.Color"]}},
}

# The commands, and the places at which the module is called by them.
LOADING = ("loading", "startup", "activate", "create", "destroy", "shutdown", "unloading")
COMMANDS = {
    "nodes": (["nodes"], LOADING),
    "show": (["show", "Evil Node"], ("activate panel", "get")),
    "render": (bench.render("scene.json"), ("create", "set", "init", "newTime", "evaluate", "cleanup", "destroy")),
    "pack": (["pack", "scene.json", "object.lwo", "-o", "picture.png"], ("create", "save", "unloading")),
    "unpack": (["unpack", "evil.lwo", "-o", "picture.png"], ("load",)),
    "check": (["check", MODULE, "--level", "2", "--seed", "1", "--check-limit", str(CHECK_LIMIT)],
              (*LOADING, "copy", "save", "load")),
}
CHECKED = 0.03  # the fraction of cases of `velm check`, which takes long, that is tried


def faults_in(source):
    """The names of the faults in the module's table."""
    return re.findall(r'^    \{"([^"]+)",', source, re.MULTILINE)


def cases_of(rng, source):
    """All combinations of a command, a fault and a place, in random order."""
    cases = [(command, fault, place) for command, (_, places) in COMMANDS.items() for place in places
             for fault in faults_in(source) if command != "check" or rng.random() < CHECKED]
    rng.shuffle(cases)
    return cases


def attack(frame, rng):
    """One command with one fault at one place."""
    cases = frame.once("cases", lambda: cases_of(random.Random(frame.seed), (seeds.ROOT / SOURCE).read_text()))
    command, fault, place = cases[frame.number % len(cases)]
    (frame.work / MODULE).symlink_to(frame.evil)
    frame.write("scene.json", json.dumps(SCENE))
    frame.write("object.lwo", frame.seeds.objects[0])
    frame.write("picture.png", "the old picture\n")
    if command == "unpack":
        frame.write("evil.lwo", frame.once("evil object", lambda: evil_object(frame)))
    before = writes.contents(frame)
    words = list(COMMANDS[command][0])
    if command != "check":
        words += ["--module", MODULE, "--call-limit", str(CALL_LIMIT)]
    outcome = frame.run(words, {"VELM_ATTACK": f"{fault} @ {place}"})
    frame.tally.inputs += 1
    what = f"{command}: {fault} @ {place}"
    judge(frame, outcome, what)
    check_files(frame, before, outcome, what)


def evil_object(frame):
    """An object whose surface has the module's node."""
    outcome = frame.run(["pack", "scene.json", "object.lwo", "-o", "evil.lwo", "--module", MODULE])
    if outcome.status != 0:
        raise RuntimeError(f"the module cannot be packed without a fault: {outcome.err}")
    return (frame.work / "evil.lwo").read_bytes()


def judge(frame, outcome, what):
    """The module or its node is named, or did no harm; nothing of it goes on."""
    if outcome.hung:
        frame.report("hang", f"no end after {bench.RUN_TIME} s; {what}", outcome)
        return
    if outcome.status < 0 and not (outcome.status == -signal.SIGTERM and ENDS_ITSELF in what):
        frame.report("death", f"ended by signal {-outcome.status}; {what}", outcome)
    elif outcome.status not in (0, 1, 3):
        frame.report("status", f"status {outcome.status}; {what}", outcome)
    elif outcome.status != 0 and not any(name in outcome.err + outcome.out for name in NAMED) \
            and not any(fault in what for fault in SILENCING):
        frame.report("untold", f"the module is not named: {outcome.err[-200:]!r}; {what}", outcome)
    frame.tally.notes[NAMED_NOTE if outcome.status else HARMLESS_NOTE] += 1
    if outcome.left:
        frame.report("process", f"{bench.left_text(outcome)}; {what}", outcome)


def check_files(frame, before, outcome, what):
    """The output is old, or whole; nothing else has changed."""
    now = writes.contents(frame)
    for name in sorted(before.keys() | now.keys()):
        found, old = now.get(name), before.get(name)
        if found == old:
            continue
        if name not in before:
            frame.report("left", f"left behind: {name}; {what}", outcome)
        elif found is None:
            frame.report("torn", f"lost: {name}; {what}", outcome)
        elif name != "work/picture.png" or not is_whole(found):
            frame.report("torn", f"torn: {name}, {len(found)} bytes; {what}", outcome)
    if outcome.status == 0 and "-o" in outcome.words and now.get("work/picture.png") == before["work/picture.png"]:
        frame.report("torn", f"status 0, but no output; {what}", outcome)


def is_whole(data):
    """Whether the data is a whole picture, object or scene."""
    if data[:1] == b"{":
        return data.endswith(b"\n}\n")
    if data[:4] == b"FORM":
        return int.from_bytes(data[4:8], "big") + 8 == len(data)
    return data[:4] == b"\x89PNG" and data[-8:-4] == b"IEND"
