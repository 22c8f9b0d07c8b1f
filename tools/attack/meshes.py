"""Meshes of every format."""

import json
import struct

import bench
import mutation
import scenes

KIND, WEIGHT = "meshes", 16

TEXTS = (".ply", ".off", ".obj", ".dae", ".stl", ".gltf")
MESH_COST = 4  # a mesh and its ray structure take at most that many times the memory of reading it

PER_SCENE = 4  # meshes in a scene; the first one that cannot be read ends the command


def scene_of(names):
    """A scene of these meshes."""
    return json.dumps({
        "cameras": {"Main": {"position": [0, 0, -3]}},
        "lights": {"Key": {"kind": "distant", "position": [1, 2, -3]}},
        "objects": {f"Object {number}": {"mesh": {"file": name}, "surface": "Clay"}
                    for number, name in enumerate(names)},
        "surfaces": {"Clay": {}},
    })


def mutate_json(rng, data):
    """Changes a JSON text by its values."""
    try:
        value = json.loads(data)
    except ValueError:
        return mutation.mutate_text(rng, data)
    grammar = scenes.Grammar([value])
    for _ in range(rng.choice((1, 1, 2, 4))):
        value = scenes.change(rng, grammar, value)
        if not isinstance(value, (dict, list)):
            break
    return json.dumps(value).encode("utf-8", "surrogatepass")


def mutate_glb(rng, data):
    """Changes the JSON of a binary glTF file, with right sizes, or its other bytes."""
    size = int.from_bytes(data[12:16], "little")
    if rng.random() < 0.4:
        return mutation.mutate_bytes(rng, data)
    text = mutate_json(rng, data[20 : 20 + size])
    text += b" " * (-len(text) % 4)
    rest = data[20 + size :]
    return data[:8] + struct.pack("<III", 20 + len(text) + len(rest), len(text), 0x4E4F534A) + text + rest


def mutate_3ds(rng, data):
    """Changes a chunk of a 3DS file: its identifier, its size or a number at its start."""
    data = bytearray(data)
    starts = list(chunks_3ds(data, 0, len(data), 0))
    if not starts or rng.random() < 0.3:
        return mutation.mutate_bytes(rng, bytes(data))
    for _ in range(rng.choice((1, 2, 3))):
        at = rng.choice(starts)
        offset, size = rng.choice(((0, 2), (2, 4), (6, 2), (8, 4)))
        value = rng.choice(mutation.NUMBERS) & ((1 << 8 * size) - 1)
        data[at + offset : at + offset + size] = value.to_bytes(size, "little")
    return bytes(data)


NESTED_3DS = (0x4D4D, 0x3D3D, 0x4000, 0x4100, 0xAFFF, 0xB000)


def chunks_3ds(data, at, end, depth):
    """Where the chunks of a 3DS file start."""
    while at + 6 <= end and depth < 8:
        kind, size = struct.unpack_from("<HI", data, at)
        if size < 6 or at + size > end:
            return
        yield at
        if kind in NESTED_3DS:
            inner = at + 6
            if kind == 0x4000:  # an object's name comes first
                inner = data.find(b"\0", inner) + 1
            yield from chunks_3ds(data, inner, at + size, depth + 1)
        at += size


def mutated(rng, ending, files):
    """The bytes of a changed mesh."""
    data = rng.choice(files)
    if ending == ".gltf" and rng.random() < 0.8:
        return mutate_json(rng, data)
    if ending == ".glb" and data[:4] == b"glTF":
        return mutate_glb(rng, data)
    if ending == ".3ds":
        return mutate_3ds(rng, data)
    if ending == ".lwo" and rng.random() < 0.8:
        return mutation.mutate_iff(rng, data, rng.choice(files))
    if ending in TEXTS and rng.random() < 0.9:
        return mutation.mutate_text(rng, data)
    return mutation.mutate_bytes(rng, data)


def attack(frame, rng):
    """A few meshes in one scene, rendered."""
    files = frame.seeds.meshes
    names = []
    for number in range(PER_SCENE):
        ending = rng.choice(sorted(files))
        shown = ending if rng.random() < 0.9 else rng.choice(sorted(files))
        names.append(frame.write(f"mesh{number}{shown}", mutated(rng, ending, files[ending])))
    frame.write("scene.json", scene_of(names))
    before = frame.files()
    outcome = frame.run(bench.render("scene.json"))
    refused = [number for number, name in enumerate(names) if name in outcome.err]
    frame.tally.inputs += min(refused, default=PER_SCENE - 1) + 1
    frame.check(outcome, names, memory=PER_SCENE * MESH_COST * bench.READ_MEMORY + bench.OWN_MEMORY)
    frame.check_files(outcome, before, ["picture.png"])
