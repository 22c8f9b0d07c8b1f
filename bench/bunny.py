"""The scene that the reports render: the demonstration's bunny and ground, shaded by Ambient Occlusion alone."""

import json
import os
import re
import subprocess

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
DEMONSTRATION = os.path.join(ROOT, "examples", "occlusion.json")
MESH = "/usr/share/glmark2/models/bunny.obj"  # of Debian's glmark2-data


def occlusion_scene(mesh, rays, **settings):
    """A scene as docs/scene.md has it: the geometry and the camera of the demonstration, one node on every surface that
    gives the whole colour, and nothing else that casts rays. `settings` of the node go beside its defaults."""
    with open(DEMONSTRATION, encoding="utf-8") as stream:
        scene = json.load(stream)
    del scene["$schema"], scene["lights"]
    scene["backdrop"] = {"kind": "plain", "colour": [0, 0, 0]}
    scene["render"] |= {"samples": 1, "recursionDepth": 0}
    scene["objects"]["Bunny"]["mesh"]["file"] = mesh
    for name, surface in scene["surfaces"].items():
        surface["settings"] = {"Luminosity": 1, "Diffuse": 0}
        surface["nodes"] = {
            "AO": {"server": "Velm Ambient Occlusion", "settings": {"Mode": "Random", "Samples": rays} | settings}
        }
        surface["connections"] = [f"AO.Scalar -> {name}.Color"]
    return scene


def write_json(content, file):
    with open(file, "w", encoding="utf-8") as stream:
        json.dump(content, stream, indent=2)
        stream.write("\n")


def render(velm, scene, picture, size, threads, frames=1):
    """Renders a scene file with the stand-alone host. Gives what it took: seconds (of all frames, without reading and
    building), rays, start (seconds), peak (MiB), acceleration (MiB), triangles."""
    words = [velm, "render", scene, "-o", picture, "--size", f"{size[0]}x{size[1]}", "--threads", str(threads)]
    words += ["--frames", f"1-{frames}", "--strict", "--quiet", "--stats"]
    text = subprocess.run(words, check=True, stdout=subprocess.PIPE, text=True).stdout
    found = {line[:20].strip(): re.findall(r"[\d.]+", line[20:]) for line in text.splitlines()}
    rays, millions_a_second = (float(number) for number in found["all rays"])
    return {
        "seconds": rays / (1e6 * millions_a_second),  # four figures, where "rendering" has milliseconds
        "rays": rays,
        "start": float(found["preparation"][0]),
        "peak": float(found["peak memory"][0]),
        "acceleration": float(found["ray acceleration"][0]),
        "triangles": int(found["triangles"][0]),
    }
