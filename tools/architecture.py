#!/usr/bin/env python3
"""Draws docs/architecture.svg from the code: who includes whom.

The rooms of the stand-alone host come from the velm_room lines of host/CMakeLists.txt, the parts of the module from the
rules of tests/tree/include_rules_test.cpp. An arrow leads from a part to one that it includes; arrows that follow from
others are left out. With --check, nothing is written: the exit status is 1 if the picture is not what the code gives,
or if docs/architecture.md does not mention one of the parts.
"""

import argparse
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
ROOMS = ROOT / "host/CMakeLists.txt"
RULES = ROOT / "tests/tree/include_rules_test.cpp"
PICTURE = ROOT / "docs/architecture.svg"
PAGE = ROOT / "docs/architecture.md"

INTERFACE = "interface"  # the plug-in interface, as one part
BOX_WIDTH, BOX_HEIGHT = 150, 30
COLUMN, LEVEL = 166, 62  # from one box to the next, and from one level to the next
LANE = 26  # between an arrow that passes a level and its neighbours there
MARGIN = 24
TITLE = 44  # of a side, above its boxes
SWEEPS = 24
TINTS = 4  # for rooms with rooms inside: .family0 and so on

STYLE = """
    text { font: 14px sans-serif; text-anchor: middle; fill: #1f2328; }
    .title { font-weight: bold; font-size: 15px; }
    .paper { fill: #ffffff; }
    .side { fill: #f6f8fa; stroke: #d0d7de; }
    .box { fill: #ffffff; stroke: #59636e; }
    .family0 { fill: #ddf4ff; } .family1 { fill: #fff1d6; } .family2 { fill: #dafbe1; } .family3 { fill: #fbe7f5; }
    .bar { fill: #e6e1f7; stroke: #59636e; }
    .arrow { fill: none; stroke: #59636e; stroke-width: 1.3; marker-end: url(#tip); }
    .tip { fill: #59636e; }
    @media (prefers-color-scheme: dark) {
      text { fill: #e6edf3; }
      .paper { fill: #0d1117; }
      .side { fill: #151b23; stroke: #3d444d; }
      .box { fill: #212830; stroke: #9198a1; }
      .family0 { fill: #0c2d4d; } .family1 { fill: #43320e; } .family2 { fill: #12391f; } .family3 { fill: #42203a; }
      .bar { fill: #332a57; stroke: #9198a1; }
      .arrow { stroke: #9198a1; }
      .tip { fill: #9198a1; }
    }
"""


def host_rooms(text):
    """The rooms of the host, each with those that it includes."""
    rooms = {}
    for line in re.finditer(r"^velm_room\(([^)]*)\)", text, re.MULTILINE):
        name, *words = line[1].split()
        rooms[name] = []
        keyword = None
        for word in words:
            if word in ("ROOMS", "PUBLIC", "PRIVATE"):
                keyword = word
            elif keyword == "ROOMS":
                rooms[name].append(word)
    return rooms


def module_parts(text):
    """The parts of the module, each with those that it includes; INTERFACE among them."""
    parts = {INTERFACE: []}
    for rule in re.finditer(r'\{"(\w+)/", \{([^}]*)\}\}', text):
        name = rule[1]
        if name == "host":
            continue
        allowed = re.findall(r'"([^"]+)"', rule[2])
        names = {INTERFACE if path.startswith(("module/host.h", "module/interface")) else path.split("/")[0]
                 for path in allowed}
        if name == "module":
            names.add(INTERFACE)
        parts[name] = sorted(names - {name})
    return parts


def reduced(parts):
    """The same without what follows from the rest: if a includes b and b includes c, a's own line to c goes."""
    below = {}

    def all_below(name):
        if name not in below:
            below[name] = set(parts[name]).union(*(all_below(other) for other in parts[name]))
        return below[name]

    return {name: [other for other in used if not any(other in all_below(third) for third in used)]
            for name, used in parts.items()}


def levels_of(parts):
    """The level of each part: 0 for those that include nothing, else one above the highest that it includes."""
    levels = {}

    def level(name):
        if name not in levels:
            levels[name] = 1 + max((level(other) for other in parts[name]), default=-1)
        return levels[name]

    for name in parts:
        level(name)
    return levels


def spread(wanted, gaps):
    """Positions as near to the wanted ones as they can be, in the same order and with at least these gaps between."""
    offsets = [0.0]
    for gap in gaps:
        offsets.append(offsets[-1] + gap)
    blocks = []  # mean of the wanted positions less the offsets, and how many
    for want, offset in zip(wanted, offsets):
        blocks.append((want - offset, 1))
        while len(blocks) > 1 and blocks[-2][0] > blocks[-1][0]:
            (low, many), (high, more) = blocks[-2:]
            blocks[-2:] = [((low * many + high * more) / (many + more), many + more)]
    means = [mean for mean, count in blocks for _ in range(count)]
    return [mean + offset for mean, offset in zip(means, offsets)]


class Side:
    """One side of the picture: boxes in levels. An arrow that passes a level has a point there, like a thin box."""

    def __init__(self, parts):
        self.levels = levels_of(parts)
        self.rows = [[] for _ in range(1 + max(self.levels.values()))]
        self.links = []  # pairs of neighbours: the upper one, the lower one
        self.arrows = []  # lists of boxes and points, from the upper box to the lower one
        for name in parts:
            self.rows[self.levels[name]].append(name)
        for name, used in reduced(parts).items():
            for other in used:
                self._add_arrow(name, other)
        self.x = {}
        self._arrange()

    def _add_arrow(self, upper, lower):
        way = [upper]
        for level in range(self.levels[upper] - 1, self.levels[lower], -1):
            way.append((upper, lower, level))
            self.rows[level].append(way[-1])
        way.append(lower)
        self.links += zip(way, way[1:])
        self.arrows.append(way)

    def _arrange(self):
        """Orders each level by its neighbours above and below in turn, and draws everything towards its neighbours."""
        for row in self.rows:
            self._place(row, [COLUMN * index for index in range(len(row))])
        for sweep in range(SWEEPS):
            downwards = sweep % 2 == 0
            for row in reversed(self.rows) if downwards else self.rows:
                means = {item: self._mean(item, downwards) for item in row}
                row.sort(key=lambda item: means[item])
                self._place(row, [means[item] for item in row])
        left = min(x - self.half_width(item) for item, x in self.x.items())
        self.x = {item: x - left for item, x in self.x.items()}
        self.width = max(x + self.half_width(item) for item, x in self.x.items())

    def _mean(self, item, upwards):
        """The mean position of the neighbours on one side; of all of them where that side has none."""
        above = [self.x[upper] for upper, lower in self.links if lower == item]
        below = [self.x[lower] for upper, lower in self.links if upper == item]
        near = (above or below) if upwards else (below or above)
        return sum(near) / len(near) if near else self.x[item]

    def _place(self, row, wanted):
        gaps = [self.half_width(a) + self.half_width(b) + COLUMN - BOX_WIDTH for a, b in zip(row, row[1:])]
        self.x.update(zip(row, spread(wanted, gaps)))

    @staticmethod
    def half_width(item):
        return (BOX_WIDTH if isinstance(item, str) else LANE - COLUMN + BOX_WIDTH) / 2

    @property
    def height(self):
        return LEVEL * (len(self.rows) - 1) + BOX_HEIGHT


def number(value):
    return f"{value:.1f}".removesuffix(".0")


def curve(points):
    """A path through points, vertical at each of them."""
    text = f"M{number(points[0][0])} {number(points[0][1])}"
    for (x0, y0), (x1, y1) in zip(points, points[1:]):
        middle = (y0 + y1) / 2
        text += f" C{number(x0)} {number(middle)} {number(x1)} {number(middle)} {number(x1)} {number(y1)}"
    return f'<path class="arrow" d="{text}"/>'


def box(x, y, width, height, css, label):
    return (f'<rect class="{css}" x="{number(x)}" y="{number(y)}" width="{number(width)}" height="{number(height)}"'
            f' rx="5"/>\n<text x="{number(x + width / 2)}" y="{number(y + height / 2 + 5)}">{label}</text>')


def drawn(side, left, bottom, families):
    """The boxes and arrows of one side; `bottom` is where its level 0 ends."""

    def top_of(level):
        return bottom - BOX_HEIGHT - LEVEL * level

    lines = []
    for way in side.arrows:
        points = [(left + side.x[way[0]], top_of(side.levels[way[0]]) + BOX_HEIGHT)]
        for point in way[1:-1]:
            points += [(left + side.x[point], top_of(point[2])), (left + side.x[point], top_of(point[2]) + BOX_HEIGHT)]
        points.append((left + side.x[way[-1]], top_of(side.levels[way[-1]]) - 2))
        lines.append(curve(points))
    for name, level in side.levels.items():
        family = name.split("/")[0]
        css = f"box family{families.index(family) % TINTS}" if family in families else "box"
        lines.append(box(left + side.x[name] - BOX_WIDTH / 2, top_of(level), BOX_WIDTH, BOX_HEIGHT, css, name + "/"))
    return lines


def frame(x, y, width, height, title):
    return [f'<rect class="side" x="{number(x)}" y="{number(y)}" width="{number(width)}" height="{number(height)}"'
            ' rx="9"/>',
            f'<text class="title" x="{number(x + width / 2)}" y="{number(y + 27)}">{title}</text>']


def picture(rooms, parts):
    """The SVG file's text."""
    families = sorted({name.split("/")[0] for name in rooms if "/" in name})
    host = Side(rooms)
    module = Side({name: [other for other in used if other != INTERFACE]
                   for name, used in parts.items() if name != INTERFACE})
    widths = [max(side.width + 2 * MARGIN, 2 * COLUMN) for side in (module, host)]
    heights = [side.height + TITLE + MARGIN for side in (module, host)]
    bottom = MARGIN + max(heights)
    bar = bottom + MARGIN + 8
    width, height = sum(widths) + 3 * MARGIN, bar + 44 + MARGIN
    lefts = [MARGIN, 2 * MARGIN + widths[0]]
    titles = ["the module (build/velm.p)", "host/, the stand-alone host (build/velm)"]
    lines = [f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {number(width)} {number(height)}"'
             f' width="{number(width)}" height="{number(height)}">',
             "<!-- Written by tools/architecture.py; changes go there. -->",
             f"<title>Who includes whom</title>\n<style>{STYLE}</style>",
             '<defs><marker id="tip" viewBox="0 0 8 8" refX="6.5" refY="4" markerWidth="7" markerHeight="7"'
             ' orient="auto"><path class="tip" d="M0 0.5 L8 4 L0 7.5 Z"/></marker></defs>',
             f'<rect class="paper" width="{number(width)}" height="{number(height)}"/>']
    for side, left, wide, high, title in zip((module, host), lefts, widths, heights, titles):
        lines += frame(left, bottom - high, wide, high, title)
        lines += drawn(side, left + (wide - side.width) / 2, bottom - MARGIN, families if side is host else [])
        lines.append(curve([(left + wide / 2, bottom), (left + wide / 2, bar - 2)]))
    lines.append(box(MARGIN, bar, width - 2 * MARGIN, 44, "bar",
                     "the plug-in interface: module/host.h and module/interface/"))
    return "\n".join(lines) + "\n</svg>\n"


def faults(rooms, parts, text):
    """What --check finds, as lines."""
    found = []
    if not PICTURE.exists() or PICTURE.read_text(encoding="utf-8") != text:
        found.append("docs/architecture.svg is not what the code gives: run tools/architecture.py")
    page = PAGE.read_text(encoding="utf-8")
    for name in [f"host/{room}/" for room in rooms] + [f"{part}/" for part in parts if part != INTERFACE]:
        if f"`{name}`" not in page:
            found.append(f"docs/architecture.md does not mention `{name}`")
    return found


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n", maxsplit=1)[0])
    parser.add_argument("--check", action="store_true", help="write nothing; status 1 if the picture is out of date")
    check = parser.parse_args().check
    rooms = host_rooms(ROOMS.read_text(encoding="utf-8"))
    parts = module_parts(RULES.read_text(encoding="utf-8"))
    if not rooms or len(parts) < 2:
        sys.exit("tools/architecture.py: no rooms in host/CMakeLists.txt, or no rules in include_rules_test.cpp")
    text = picture(rooms, parts)
    if not check:
        PICTURE.write_text(text, encoding="utf-8")
        return
    found = faults(rooms, parts, text)
    for fault in found:
        print(fault, file=sys.stderr)
    sys.exit(1 if found else 0)


if __name__ == "__main__":
    main()
