"""Scenes in JSON: values of the right and the wrong kind at every place, other connections, saved data, broken text."""

import copy
import json

import bench
import mutation

KIND, WEIGHT = "scenes", 24

NUMBERS = (0, -1, 1, 0.5, 2, 3, 16, 17, 100, 1e-320, 1e308, -1e308, 2**31 - 1, 2**31, -2**31, 2**53, 2**64, 10**400,
           float("nan"), float("inf"))
TEXTS = ("", " ", "\0", "\x1b[31m", "a\nb", "é", "\ud800", "x" * 70000, ".", "..", "/", "/dev/zero", "/proc/self/mem",
         "%s%n", "A.Out -> B.In", " -> ", "Clay", "Clay.Color -> Clay.Color", "0" * 999, "ff" * 300)
KINDS = (None, True, False, 0, "", [], {}, [0], [[]], {"": 0}, [0, 0, 0, 0], {"keys": []})
DEEP = ("[" * 100000, '{"a":' * 50000, "[" * 500 + "]" * 500)


def places(value, path=()):
    """The paths of all values in a JSON value."""
    yield path
    if isinstance(value, dict):
        for key in value:
            yield from places(value[key], (*path, key))
    elif isinstance(value, list):
        for index, one in enumerate(value):
            yield from places(one, (*path, index))


def at(value, path):
    """The value at a path."""
    for key in path:
        value = value[key]
    return value


class Grammar:
    """What occurs in valid scenes: the values of each key, and all keys and server names."""

    def __init__(self, scenes):
        self.values = {}
        for scene in scenes:
            for path in places(scene):
                if path:
                    key = path[-1] if isinstance(path[-1], str) else "[]"
                    self.values.setdefault(key, []).append(at(scene, path))
        self.keys = sorted(self.values)

    def of_key(self, rng, key):
        """A value that this key has in a valid scene, or that another one has."""
        found = self.values.get(key)
        return copy.deepcopy(rng.choice(found or self.values[rng.choice(self.keys)]))


def mutate_number(rng, value):
    """Another number: extreme, or near."""
    if rng.random() < 0.6:
        return rng.choice(NUMBERS)
    return value * rng.choice((-1, 0.5, 2, 1000, 1e-6)) if isinstance(value, float) else value + rng.choice((-1, 1, 7))


def mutate_string(rng, value):
    """Another text: strange, or cut, or with one letter changed. Saved data stays hexadecimal now and then."""
    if rng.random() < 0.4:
        return rng.choice(TEXTS)
    if not value:
        return "x"
    index = rng.randrange(len(value))
    if len(value) > 20 and all(digit in "0123456789abcdef" for digit in value):
        return mutation.mutate_bytes(rng, bytes.fromhex(value[: len(value) // 2 * 2])).hex()
    return rng.choice((value[:index], value[:index] + "x" + value[index + 1 :], value * 2, value.upper(), value + "."))


def mutate_leaf(rng, value):
    """Another value of the same kind."""
    if isinstance(value, bool) or value is None:
        return not value
    if isinstance(value, (int, float)):
        return mutate_number(rng, value)
    return mutate_string(rng, value)


def connect(rng, network):
    """Adds connections between nodes of the network, in circles too, with names of sockets that may exist."""
    nodes = list(network.get("nodes") or {})
    links = network.get("connections")
    if not nodes or not isinstance(links, list):
        return
    sockets = [end for link in links if isinstance(link, str) for end in link.split(" -> ")]
    names = [end.rsplit(".", 1)[-1] for end in sockets] or ["Out"]
    for _ in range(rng.choice((1, 1, 3, 40))):
        links.append(f"{rng.choice(nodes)}.{rng.choice(names)} -> {rng.choice(nodes)}.{rng.choice(names)}")


def nest(rng, network, depth):
    """Puts the network into group nodes."""
    for number in range(depth):
        inner = {key: network[key] for key in ("nodes", "connections") if key in network}
        network.clear()
        network.update({"nodes": {f"Group {number}": {"server": "Velm Group Node", "network": inner}},
                        "connections": []})


def may_repeat(value, times):
    """Whether the scene stays small enough if it has the value that often."""
    return len(json.dumps(value)) * times <= mutation.MOST_TEXT


def multiply(rng, value):
    """Repeats entries of an object under other names."""
    times = rng.choice((1, 5, 300))
    if not may_repeat(value, times):
        return
    for number in range(times):
        key = rng.choice(list(value))
        value[f"{key} {number}"] = copy.deepcopy(value[key]) if number < 20 else value[key]


def change(rng, grammar, scene):
    """Changes the scene in one place, and gives it."""
    path = rng.choice([one for one in places(scene) if one] or [()])
    if not path:
        return rng.choice(KINDS)
    owner, key = at(scene, path[:-1]), path[-1]
    action = rng.random()
    if action < 0.35 and not isinstance(owner[key], (dict, list)):
        owner[key] = mutate_leaf(rng, owner[key])
    elif action < 0.55:
        owner[key] = grammar.of_key(rng, key if isinstance(key, str) else "[]")
    elif action < 0.65:
        owner[key] = rng.choice(KINDS)
    elif action < 0.72:
        del owner[key]
    elif action < 0.8 and isinstance(owner, dict):
        new = rng.choice(grammar.keys)
        owner[new] = grammar.of_key(rng, new)
    elif action < 0.85 and isinstance(owner, dict):
        multiply(rng, owner)
    elif action < 0.97:
        change_network(rng, scene)
    elif isinstance(owner, list):
        times = rng.choice((0, 2, 50))
        if may_repeat(owner, times):
            owner[:] = owner * times
    return scene


def change_network(rng, scene):
    """Changes the shape of a network of the scene."""
    found = [at(scene, one) for one in places(scene)]
    networks = [value for value in found if isinstance(value, dict) and isinstance(value.get("nodes"), dict)]
    if not networks:
        return
    network = rng.choice(networks)
    if rng.random() < 0.8:
        connect(rng, network)
    else:
        nest(rng, network, rng.choice((1, 3, 15, 16, 17, 60)))


def write_text(rng, scene):
    """The text of a scene; now and then broken in ways that no value has."""
    text = json.dumps(scene, indent=rng.choice((None, 1)), ensure_ascii=rng.random() < 0.5)
    data = text.encode("utf-8", "surrogatepass")
    choice = rng.random()
    if choice < 0.1:
        return mutation.mutate_text(rng, data)
    if choice < 0.12:
        return data.replace(b"{", b'{"render": {}, ', 2)
    if choice < 0.13:
        middle = rng.randrange(len(data))
        return data[:middle] + rng.choice(DEEP).encode() + data[middle:]
    if choice < 0.14:
        return rng.choice((b"\xef\xbb\xbf" + data, text.encode("utf-16", "surrogatepass"), b"", data + data))
    return data


def mutated(rng, seeds, grammar):
    """The bytes of a changed scene."""
    scene = copy.deepcopy(rng.choice(seeds.scenes))
    for _ in range(rng.choice((0, 1, 1, 1, 2, 3, 8))):
        scene = change(rng, grammar, scene)
        if not isinstance(scene, (dict, list)):
            break
    return write_text(rng, scene)


def attack(frame, rng):
    """One scene, mostly rendered."""
    grammar = frame.once("grammar", lambda: Grammar(frame.seeds.scenes))
    frame.write("scene.json", mutated(rng, frame.seeds, grammar))
    for number in range(2):
        frame.write(f"image{number}.png", frame.seeds.images[".png"][0])
    choice = rng.random()
    if choice < 0.85:
        words, outputs = bench.render("scene.json"), ["picture.png"]
    elif choice < 0.95:
        frame.write("base.lwo", frame.seeds.objects[0])
        words, outputs = ["pack", "scene.json", "base.lwo", "-o", "packed.lwo"], ["packed.lwo"]
    else:
        words, outputs = ["files", "scene.json"], []
    before = frame.files()
    outcome = frame.run(words)
    frame.tally.inputs += 1
    frame.check(outcome, ["scene.json"])
    frame.check_files(outcome, before, outputs)
