"""Images of every format: many in one scene, each of which may be damaged without costing the others."""

import json

import bench
import mutation

KIND, WEIGHT = "images", 16

PER_SCENE = 64
COMPARED = 0.1  # the fraction of attacks that compare two images instead


def mutated(rng, files):
    """The bytes of a changed image of a random format, with the format's ending."""
    ending = rng.choice(sorted(files))
    data = rng.choice(files[ending])
    if ending == ".png" and rng.random() < 0.7:
        return ending, mutation.mutate_png(rng, data, rng.choice(files[ending]))
    if ending == ".hdr" and rng.random() < 0.5:
        return ending, mutation.mutate_text(rng, data)
    return ending, mutation.mutate_bytes(rng, data)


def scene_of(names):
    """A scene that reads all of these images, and shows the first two."""
    images = {f"Image {number}": {"file": name} for number, name in enumerate(names)}
    node = {"server": "Velm Pixel Image", "settings": {"Image": "Image 1"}}
    return json.dumps({
        "images": images,
        "cameras": {"Main": {"position": [0, 0, -3]}},
        "backdrop": {"kind": "image", "image": "Image 0"},
        "objects": {"Ball": {"sphere": {"radius": 1, "segments": 8}, "surface": "Skin"}},
        "surfaces": {"Skin": {"nodes": {"Picture": node}, "connections": ["Picture.Color -> Skin.Color"]}},
    })


def attack(frame, rng):
    """Changed images in one scene, or two that are compared."""
    files = frame.seeds.images
    if rng.random() < COMPARED:
        attack_compare(frame, rng, files)
        return
    names = []
    for number in range(PER_SCENE):
        ending, data = mutated(rng, files)
        names.append(frame.write(f"image{number}{rng.choice((ending, '.png'))}", data))
    frame.write("scene.json", scene_of(names))
    before = frame.files()
    outcome = frame.run(bench.render("scene.json"), seconds=bench.RUN_TIME + PER_SCENE * bench.READ_TIME / 4)
    frame.tally.inputs += PER_SCENE
    # A damaged image causes a warning and is left out. All images of a scene are in memory at once.
    frame.check(outcome, names, statuses=(0,), memory=bench.READ_MEMORY * PER_SCENE + bench.OWN_MEMORY)
    frame.check_files(outcome, before, ["picture.png"])
    for line in outcome.err.splitlines():
        is_warning = line.startswith("velm: warning: ")
        # A warning of a pixel that is NaN names the backdrop's image ("Image ...") or the node instead of the file.
        if is_warning and not any(name in line for name in (*names, "Image ", 'the node "Picture"')):
            frame.report("untold", f"a warning that names no image: {line[:200]}", outcome)


def attack_compare(frame, rng, files):
    """velm compare with a changed image; its statuses are its own."""
    _, data = mutated(rng, files)
    frame.write("a.image", data)
    frame.write("b.image", rng.choice(files[rng.choice(sorted(files))]))
    words = ["compare", *rng.sample(["a.image", "b.image"], 2), "--differences", "differences.png", *bench.LIMITS]
    before = frame.files()
    outcome = frame.run(words)
    frame.tally.inputs += 1
    named = ["a.image", "b.image"] if outcome.status == 3 else None
    frame.check(outcome, named, statuses=(0, 1, 2, 3), memory=2 * bench.READ_MEMORY + bench.OWN_MEMORY)
    frame.check_files(outcome, before, ["differences.png"])
