"""LightWave's objects: chunks, surfaces, networks and the saved data of nodes."""

import bench
import mutation

KIND, WEIGHT = "objects", 16

SCENE = """{
  "surfaces": {"from": "object.lwo"},
  "cameras": {"Main": {"position": [0, 0, -3]}},
  "lights": {"Key": {"kind": "distant", "position": [1, 2, -3]}},
  "objects": {"It": {"mesh": {"file": "object.lwo"}}}
}
"""


def attack(frame, rng):
    """One object: unpacked, rendered, or a target of pack."""
    data, other = rng.choice(frame.seeds.objects), rng.choice(frame.seeds.objects)
    mutate = mutation.mutate_iff(rng, data, other) if rng.random() < 0.9 else mutation.mutate_bytes(rng, data)
    frame.write("object.lwo", mutate)
    frame.write("scene.json", SCENE)
    frame.write("image0.png", frame.seeds.images[".png"][0])
    choice = rng.random()
    if choice < 0.5:
        words, outputs = ["unpack", "object.lwo", "-o", "unpacked.json", *bench.LIMITS], ["unpacked.json"]
    elif choice < 0.85:
        words, outputs = bench.render("scene.json"), ["picture.png"]
    else:
        words, outputs = ["pack", "scene.json", "object.lwo", "-o", "packed.lwo", *bench.LIMITS], ["packed.lwo"]
    before = frame.files()
    outcome = frame.run(words)
    frame.tally.inputs += 1
    frame.check(outcome, ["object.lwo", "scene.json"])
    frame.check_files(outcome, before, outputs)
