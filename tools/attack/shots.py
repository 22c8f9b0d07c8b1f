"""LightWave's scenes: their lines, values and blocks."""

import bench
import mutation

KIND, WEIGHT = "shots", 12


def attack(frame, rng):
    """Changes one LightWave scene, and runs velm render, convert or info with it."""
    data = rng.choice(frame.seeds.shots)
    frame.write("shot.lws", mutation.mutate_text(rng, data) if rng.random() < 0.9 else mutation.mutate_bytes(rng, data))
    frame.write("object.lwo", frame.seeds.objects[0])
    frame.write("image0.png", frame.seeds.images[".png"][0])
    choice = rng.random()
    if choice < 0.7:
        words, outputs = bench.render("shot.lws"), ["picture.png"]
    elif choice < 0.85:
        words, outputs = ["convert", "shot.lws", "converted.json", *bench.LIMITS], ["converted.json"]
    else:
        words, outputs = ["info", "shot.lws", *bench.LIMITS], []
    before = frame.files()
    outcome = frame.run(words)
    frame.tally.inputs += 1
    frame.check(outcome, ["shot.lws", "object.lwo"])
    frame.check_files(outcome, before, outputs)
