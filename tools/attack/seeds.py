"""The valid files that the attacks change: small ones of every format that velm reads."""

import base64
import concurrent.futures
import dataclasses
import json
import pathlib
import re
import struct
import subprocess

import bench

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent
MODELS = pathlib.Path("/usr/share/assimp/models")
IMAGES = (".png", ".jpg", ".tif", ".exr", ".hdr", ".bmp", ".gif", ".psd", ".tga")
MESHES = (".lwo", ".fbx", ".glb", ".gltf", ".ply", ".dae", ".3ds", ".off", ".stl", ".obj")
MOST_IMAGE, MOST_MESH = 4000, 40000  # bytes
PER_FORMAT = 6  # meshes of each format

BALL = {"sphere": {"radius": 0.7, "segments": 8}}
SQUARE = ((-1, -1, 0), (1, -1, 0), (1, 1, 0), (-1, 1, 0))


@dataclasses.dataclass
class Seeds:
    """Valid files, by what they are."""

    scenes: list  # JSON values
    objects: list  # the bytes of LightWave objects, all with networks of nodes
    images: dict  # ending: list of bytes
    meshes: dict  # ending: list of bytes
    shots: list  # the bytes of LightWave scenes, all of the object "object.lwo"


def small(scene):
    """A scene of the examples with small shapes in place of its meshes, and fewer samples."""
    text = json.dumps(scene)
    text = re.sub(r'"(samples|Samples)": [0-9]+', r'"\1": 2', text)
    scene = json.loads(text)
    for shape in scene.get("objects", {}).values():
        if "mesh" in shape:
            del shape["mesh"]
            shape.update(BALL)
            shape.setdefault("surface", next(iter(scene["surfaces"])))
        elif "sphere" in shape:
            shape["sphere"]["segments"] = 8
    for number, image in enumerate(scene.get("images", {}).values()):
        image["file"] = f"image{number}.png"
    return scene


def run(velm, directory, *words):
    """Runs velm, which has to succeed; gives its output."""
    return subprocess.run([velm, *words], cwd=directory, check=True, capture_output=True, text=True, timeout=300).stdout


def make_gltf():
    """The square as glTF, as text with its points inside, and in binary form."""
    data = struct.pack("<12f6H", *(number for point in SQUARE for number in point), 0, 1, 2, 0, 2, 3)
    value = {
        "asset": {"version": "2.0"}, "scene": 0, "scenes": [{"nodes": [0]}], "nodes": [{"mesh": 0}],
        "meshes": [{"primitives": [{"attributes": {"POSITION": 0}, "indices": 1}]}],
        "buffers": [{"byteLength": len(data)}],
        "bufferViews": [{"buffer": 0, "byteOffset": 0, "byteLength": 48},
                        {"buffer": 0, "byteOffset": 48, "byteLength": 12}],
        "accessors": [{"bufferView": 0, "componentType": 5126, "count": 4, "type": "VEC3",
                       "min": [-1, -1, 0], "max": [1, 1, 0]},
                      {"bufferView": 1, "componentType": 5123, "count": 6, "type": "SCALAR"}],
    }
    text = json.dumps(value).encode()
    text += b" " * (-len(text) % 4)
    chunks = struct.pack("<II", len(text), 0x4E4F534A) + text + struct.pack("<II", len(data), 0x004E4942) + data
    value["buffers"][0]["uri"] = "data:application/octet-stream;base64," + base64.b64encode(data).decode()
    return json.dumps(value).encode(), struct.pack("<4sII", b"glTF", 2, 12 + len(chunks)) + chunks


def make_meshes():
    """A square in the formats that are simplest to write."""
    points = "".join(f"{x} {y} {z}\n" for x, y, z in SQUARE)
    head = "ply\nformat ascii 1.0\nelement vertex 4\nproperty float x\nproperty float y\nproperty float z\n" \
           "element face 1\nproperty list uchar int vertex_indices\nend_header\n"
    facet = "facet normal 0 0 -1\nouter loop\nvertex -1 -1 0\nvertex 1 -1 0\nvertex 1 1 0\nendloop\nendfacet\n"
    gltf, glb = make_gltf()
    return {
        ".gltf": [gltf],
        ".glb": [glb],
        ".ply": [f"{head}{points}4 0 1 2 3\n".encode()],
        ".off": [f"OFF\n4 1 0\n{points}4 0 1 2 3\n".encode()],
        ".obj": [("".join(f"v {line}\n" for line in points.splitlines()) + "usemtl m\nf 1 2 3 4\n").encode()],
        ".stl": [f"solid s\n{facet}endsolid s\n".encode()],
    }


def make_shot():
    """A LightWave scene with a hierarchy of moving items, a spot light and a camera."""
    keys = "".join(f"Channel {channel}\n{{ Envelope\n  2\n  Key 0 0 {channel % 6} 0 0 0 0 0 0\n"
                   f"  Key {0.5 if channel < 6 else 1} 0.4 {channel % 6} 0 0 0 0.1 0.2 0\n"
                   f"  Behaviors {channel % 6} 1\n}}\n" for channel in range(9))
    return ("LWSC\n5\n\nFirstFrame 0\nLastFrame 10\nFrameStep 1\nFramesPerSecond 25\n"
            f"LoadObjectLayer 1 10000000 object.lwo\nObjectMotion\nNumChannels 9\n{keys}"
            "UnseenByRays 1\nShadowOptions 7\nAddNullObject 10000001 Null\nParentItem 10000000\n"
            "AmbientColor 1 1 1\nAmbientIntensity 0.1\nAddLight 20000000\nLightName Key\nLightColor 1 1 1\n"
            "LightIntensity 0.8\nLightType 2\nLightFalloffType 3\nLightRange 2\nLightConeAngle 30\n"
            "LightEdgeAngle 5\nParentItem 10000001\nAddCamera 30000000\nCameraName Main\nZoomFactor 3.2\n"
            "FrameSize 320 240\nPixelAspect 1\nTargetItem 10000000\nSolidBackdrop 0\nZenithColor 0 0 0.4\n"
            "FogType 1\nRayRecursionLimit 4\n").encode()


def make_shots():
    """LightWave scenes of several versions: one of ours, and the mesh library's samples."""
    samples = [path.read_bytes() for path in bench.seed_files(MODELS, (".lws",), MOST_MESH)]
    return [make_shot(), *(re.sub(rb"[^ \r\n]*\.lwo", b"object.lwo", sample) for sample in samples)]


def make_object(velm, directory, number, scene):
    """A LightWave object with the networks of a scene, and the scene that it gives back."""
    (directory / f"{number}.json").write_text(json.dumps(scene))
    run(velm, directory, "pack", f"{number}.json", ROOT / "tests/golden/object.lwo", "-o", f"{number}.lwo")
    unpacked = json.loads(run(velm, directory, "unpack", f"{number}.lwo"))
    return (directory / f"{number}.lwo").read_bytes(), unpacked


def make_picture(velm, directory, ending):
    """A picture of a format that velm writes."""
    name = f"picture{ending}"
    run(velm, directory, "render", "0.json", "-o", name, "--size", "8x8", "--samples", "1", "--frames", "1", "--quiet")
    return (directory / name).read_bytes()


def make_images(pool, velm, directory):
    """A picture of each format that velm writes, and the small files of the tests."""
    endings = (".png", ".jpg", ".tif", ".exr", ".hdr")
    pictures = pool.map(lambda ending: make_picture(velm, directory, ending), endings)
    images = {ending: [picture] for ending, picture in zip(endings, pictures)}
    for path in bench.seed_files(ROOT / "tests/image/formats", IMAGES, MOST_IMAGE):
        images.setdefault(path.suffix, []).append(path.read_bytes())
    return images


def model_files(ending):
    """A few of the mesh library's sample files, small and large. Those that need other files are left out."""
    files = [path for path in bench.seed_files(MODELS, (ending,), MOST_MESH)
             if "invalid" not in str(path) and "Primitive" not in str(path) and b'.bin"' not in path.read_bytes()]
    files.sort(key=lambda path: path.stat().st_size)
    return files[:: max(len(files) // PER_FORMAT, 1)][:PER_FORMAT]


def make(velm, directory, jobs):
    """All seeds, made in the directory, with that many commands at a time."""
    directory.mkdir(parents=True)
    scenes = [small(json.loads(path.read_text())) for path in sorted((ROOT / "examples").glob("*.json"))]
    picture = (ROOT / "tests/golden/picture.png").read_bytes()
    for number in range(4):
        (directory / f"image{number}.png").write_bytes(picture)
    with concurrent.futures.ThreadPoolExecutor(jobs) as pool:
        packed = list(pool.map(lambda number: make_object(velm, directory, number, scenes[number]),
                               range(len(scenes))))
        images = make_images(pool, velm, directory)
    objects = [(ROOT / "tests/golden/object.lwo").read_bytes(), *(data for data, _ in packed)]
    meshes = make_meshes()
    for ending in MESHES:
        meshes.setdefault(ending, []).extend(path.read_bytes() for path in model_files(ending))
    meshes[".lwo"] += objects[:2]
    return Seeds(scenes=scenes + [scene for _, scene in packed], objects=objects, images=images, meshes=meshes,
                 shots=make_shots())
