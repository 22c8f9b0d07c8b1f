#!/usr/bin/env python3
"""Makes examples/vase.lws, a scene in LightWave's format, and its objects, whose surfaces have networks of our nodes.

    tools/example_scene.py VELM

The objects are written here without networks; "velm pack" adds those of SURFACES. VELM is the program, build/velm.
"""

import json
import math
import os
import struct
import subprocess
import sys
import tempfile

EXAMPLES = os.path.join(os.path.dirname(os.path.dirname(os.path.abspath(__file__))), "examples")
FRAMES, RATE = 120, 30


def occlusion(surface, background, occluded):
    """The settings of the colours that the Ambient Occlusion node mixes."""
    return {"Mode": "Polar", "Polar Samples 1": 5, "Polar Samples 2": 10, "Cone Angle": 88, "Ranged": True, "Max": 1.5,
            "Offset": 0.001, "Srf Color": surface, "Bg Color": background, "Occ Color": occluded}


SURFACES = {
    "Glaze": {
        "settings": {"Luminosity": 0.35, "Diffuse": 0.7, "Specular": 0.6, "Glossiness": 0.5},
        "nodes": {"AO": {"server": "Velm Ambient Occlusion",
                         "settings": occlusion([0.1, 0.42, 0.5], [0.3, 0.75, 0.72], [0.02, 0.05, 0.12])}},
        "connections": ["AO.Color -> Glaze.Color"],
    },
    "Felt": {
        "settings": {"Diffuse": 0.95},
        "nodes": {"Grain": {"server": "Velm Random", "settings": {"Min": 0, "Max": 1}},
                  "Wool": {"server": "Mix Color", "settings": {"A": [0.85, 0.2, 0.1], "B": [1, 0.62, 0.2]}}},
        "connections": ["Grain.Out -> Wool.Mix", "Wool.Color -> Felt.Color"],
    },
    "Table": {
        "settings": {"Luminosity": 0.3, "Diffuse": 0.7},
        "nodes": {"AO": {"server": "Velm Ambient Occlusion",
                         "settings": occlusion([0.72, 0.66, 0.58], [0.86, 0.8, 0.72], [0.1, 0.06, 0.05])}},
        "connections": ["AO.Color -> Table.Color"],
    },
}

# The objects: the surface, and the radius and height of each ring about the upright axis, outside first.
VASE = [(0, 0), (0.45, 0), (0.52, 0.04), (0.7, 0.28), (0.8, 0.55), (0.79, 0.8), (0.66, 1.06), (0.46, 1.28),
        (0.35, 1.44), (0.36, 1.56), (0.48, 1.68), (0.44, 1.68), (0.32, 1.56), (0.31, 1.44), (0.42, 1.27), (0.62, 1.03),
        (0.72, 0.6), (0.6, 0.26), (0, 0.12)]
BALL = [(0.3 * math.sin(angle), -0.3 * math.cos(angle)) for angle in [math.pi * i / 12 for i in range(13)]]
TABLE = [(200, 0), (0, 0)]
OBJECTS = {"vase": ("Glaze", VASE), "ball": ("Felt", BALL), "table": ("Table", TABLE)}
COLUMNS = 24


def turned(rings):
    """The points and polygons of a profile that is turned about the Y axis. Radii below a micrometre are poles."""
    points, rows = [], []
    for radius, height in rings:
        count = COLUMNS if radius > 1e-6 else 1
        rows.append([len(points) + i % count for i in range(COLUMNS)])
        for i in range(count):
            angle = 2 * math.pi * i / COLUMNS
            points.append((radius * math.cos(angle), height, radius * math.sin(angle)))
    polygons = []
    for low, high in zip(rows, rows[1:]):
        for i in range(COLUMNS):
            after = (i + 1) % COLUMNS
            corners = [low[i], high[i], high[after], low[after]]
            polygons.append(sorted(set(corners), key=corners.index))
    return points, polygons


def chunk(name, contents, size=">I"):
    return name + struct.pack(size, len(contents)) + contents + b"\0" * (len(contents) % 2)


def text(words):
    return words.encode() + b"\0" * (2 - len(words) % 2)


def lwo(surface, rings):
    """An LWO2 object of one layer and one surface, which is smoothed."""
    points, polygons = turned(rings)
    faces = b"".join(struct.pack(f">H{len(one)}H", len(one), *one) for one in polygons)
    tags = b"".join(struct.pack(">HH", i, 0) for i in range(len(polygons)))
    described = text(surface) + text("") + chunk(b"SMAN", struct.pack(">f", math.radians(60)), ">H")
    body = b"LWO2" + chunk(b"TAGS", text(surface)) + chunk(b"LAYR", struct.pack(">HHfff", 0, 0, 0, 0, 0) + text(""))
    body += chunk(b"PNTS", b"".join(struct.pack(">fff", *point) for point in points))
    body += chunk(b"POLS", b"FACE" + faces) + chunk(b"PTAG", b"SURF" + tags) + chunk(b"SURF", described)
    return chunk(b"FORM", body)


def pack(velm, directory):
    """Writes the objects with their networks."""
    for name, (surface, rings) in OBJECTS.items():
        plain, scene = os.path.join(directory, f"{name}.lwo"), os.path.join(directory, f"{name}.json")
        with open(plain, "wb") as file:
            file.write(lwo(surface, rings))
        with open(scene, "w", encoding="utf-8") as file:
            json.dump({"surfaces": {surface: SURFACES[surface]}}, file)
        packed = os.path.join(EXAMPLES, f"{name}.lwo")
        subprocess.run([velm, "pack", scene, plain, "-o", packed, "--strict"], check=True)


def motion(kind, **channels):
    """The motion of an item: by channel, a constant or the values of keys at even times."""
    lines = [f"{kind}Motion", "NumChannels 9"]
    for number, name in enumerate(("x", "y", "z", "heading", "pitch", "bank", "sx", "sy", "sz")):
        values = channels.get(name, 1 if number > 5 else 0)
        values = values if isinstance(values, (list, tuple)) else [values]
        lines += [f"Channel {number}", "{ Envelope", f"  {len(values)}"]
        for i, value in enumerate(values):
            time = FRAMES / RATE * i / max(1, len(values) - 1)
            lines.append(f"  Key {value:.6g} {time:.6g} 0 0 0 0 0 0 0")  # shape 0: a smooth curve
        lines += ["  Behaviors 1 1", "}"]
    return lines


def around(radius, steps, begin, turn, along):
    return [radius * along(math.radians(begin + turn * i / steps)) for i in range(steps + 1)]


def scene():
    """A camera that goes a third of the way around the vase, while a ball rolls past it and a lamp rises."""
    lines = ["LWSC", "5", "", "FirstFrame 1", f"LastFrame {FRAMES}", "FrameStep 1", f"FramesPerSecond {RATE}", ""]
    roll = 1.3 / 0.3  # radians, over the length of its way
    for number, (name, moves) in enumerate((("table", {}), ("vase", {}),
                                            ("ball", {"x": [-1.3, 0], "y": 0.3, "z": -1.1, "bank": [roll, 0]}))):
        lines += [f"LoadObjectLayer 1 {0x10000000 + number:08x} {name}.lwo", *motion("Object", **moves), ""]
    lines += ["AmbientColor 1 1 1", "AmbientIntensity 0.1", ""]
    lines += ["AddLight 20000000", "LightName Window",
              *motion("Light", x=-4, y=5, z=-3, heading=math.radians(53), pitch=math.radians(45)),
              "LightColor 1 0.95 0.85", "LightIntensity 0.7", "LightType 0", "ShadowType 1", ""]
    lines += ["AddLight 20000001", "LightName Lamp", *motion("Light", x=2.2, y=[0.6, 2.6], z=-1.6),
              "LightColor 1 0.7 0.4", "LightIntensity 0.45", "LightType 1", "ShadowType 1", ""]
    lines += ["AddCamera 30000000", "CameraName Main",
              *motion("Camera", x=around(6, 4, -130, 80, math.cos), y=[2.6, 1.9], z=around(6, 4, -130, 80, math.sin)),
              "TargetItem 10000003", "HController 1", "PController 1", "ZoomFactor 4", "FrameSize 640 360",
              "PixelAspect 1", "AASamples 4", ""]
    lines += ["AddNullObject 10000003 Middle", *motion("Object", y=0.8), ""]
    lines += ["SolidBackdrop 0", "ZenithColor 0.1 0.16 0.26", "SkyColor 0.5 0.58 0.66", "GroundColor 0.55 0.5 0.44",
              "NadirColor 0.2 0.18 0.16", "RayTraceEffects 7", "RayRecursionLimit 8", ""]
    return "\n".join(lines)


def main():
    if len(sys.argv) != 2:
        raise SystemExit(__doc__)
    with tempfile.TemporaryDirectory() as directory:
        pack(sys.argv[1], directory)
    with open(os.path.join(EXAMPLES, "vase.lws"), "w", encoding="ascii") as file:
        file.write(scene())


if __name__ == "__main__":
    main()
