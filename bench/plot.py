#!/usr/bin/python3
# SPDX-FileCopyrightText: 2026 The ZOR Network Manager developers
# SPDX-License-Identifier: MIT
"""Draws how the cost of an operation grows with its keyfile, one SVG for each kind of work.

usage: plot.py BENCH_JSON FOLDER
"""
import json
import math
import os
import sys
from xml.sax.saxutils import escape

WIDTH, HEIGHT = 720, 460
LEFT, RIGHT, TOP, BOTTOM = 70, 110, 44, 50
CURVES = {"read last": "Reading the last key", "write other": "Writing a value of another length"}
COLOURS = {"ours": "#c01c28", "raw": "#77767b", "stdio": "#3d3846", "inih": "#1a5fb4",
           "SimpleIni": "#26a269", "GKeyFile": "#813d9c", "iniparser": "#986a44",
           "Boost": "#e66100", "QSettings": "#00818a"}


class Axis:
    """A logarithmic axis from one position in the picture to another."""

    def __init__(self, values, begin, end):
        self.low, self.high = math.log10(min(values)), math.log10(max(values))
        self.begin, self.end = begin, end

    def __call__(self, value):
        share = (math.log10(value) - self.low) / (self.high - self.low)
        return self.begin + share * (self.end - self.begin)

    def decades(self):
        return [10.0 ** power for power in
                range(math.ceil(self.low), math.floor(self.high) + 1)]


def duration(nanoseconds):
    for unit, size in (("s", 1e9), ("ms", 1e6), ("µs", 1e3)):
        if nanoseconds >= size:
            return f"{nanoseconds / size:g} {unit}"
    return f"{nanoseconds:g} ns"


def text(x, y, words, anchor="middle", style=""):
    return f'<text x="{x:.0f}" y="{y:.0f}" text-anchor="{anchor}" {style}>{escape(words)}</text>'


def line(points, style):
    path = " ".join(f"{x:.1f},{y:.1f}" for x, y in points)
    return f'<polyline points="{path}" fill="none" {style}/>'


def spread(heights, distance=14):
    """Moves labels apart that would cover one another: {name: y} in, the same out."""
    result = {}
    last = -distance
    for name, y in sorted(heights.items(), key=lambda item: item[1]):
        last = max(y, last + distance)
        result[name] = last
    return result


def draw(title, curves):
    """curves: {contender: [(lines, nanoseconds)]}"""
    points = [point for curve in curves.values() for point in curve]
    across = Axis([lines for lines, _ in points], LEFT, WIDTH - RIGHT)
    up = Axis([cost for _, cost in points], HEIGHT - BOTTOM, TOP)
    grid = 'stroke="#deddda" stroke-width="1"'
    parts = [f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {WIDTH} {HEIGHT}" '
             'font-family="sans-serif" font-size="12">',
             f'<rect width="{WIDTH}" height="{HEIGHT}" fill="white"/>',
             text(LEFT, 22, title + ": CPU time", "start", 'font-size="15" font-weight="bold"'),
             text((LEFT + WIDTH - RIGHT) / 2, HEIGHT - 10, "lines of the keyfile")]
    for cost in up.decades():
        parts += [line([(LEFT, up(cost)), (WIDTH - RIGHT, up(cost))], grid),
                  text(LEFT - 8, up(cost) + 4, duration(cost), "end")]
    for lines in sorted({lines for lines, _ in points}):
        parts += [line([(across(lines), TOP), (across(lines), HEIGHT - BOTTOM)], grid),
                  text(across(lines), HEIGHT - BOTTOM + 18, f"{lines:,}".replace(",", " "))]
    # A curve that ends early has its name at its end, the others have theirs at the edge.
    longest = max(lines for lines, _ in points)
    labels = {name: up(curve[-1][1]) for name, curve in curves.items()}
    labels.update(spread({name: y for name, y in labels.items()
                          if curves[name][-1][0] == longest}))
    for name, curve in curves.items():
        colour = COLOURS.get(name, "black")
        bold = name == "ours"
        dashes = ' stroke-dasharray="5 4"' if name in ("raw", "stdio") else ""
        parts.append(line([(across(x), up(y)) for x, y in curve],
                          f'stroke="{colour}" stroke-width="{3 if bold else 1.5}"{dashes}'))
        parts.append(text(across(curve[-1][0]) + 8, labels[name] + 4, name, "start",
                          f'fill="{colour}"' + (' font-weight="bold"' if bold else "")))
    return "\n".join([*parts, "</svg>", ""])


def main(path, folder):
    with open(path, encoding="utf-8") as file:
        works = json.load(file)["works"]
    os.makedirs(folder, exist_ok=True)
    for work, title in CURVES.items():
        curves = {}
        for entry in sorted((entry for entry in works if entry["work"] == work),
                            key=lambda entry: entry["lines"]):
            for name, numbers in entry["contenders"].items():
                curves.setdefault(name, []).append((entry["lines"], numbers["ns"]))
        name = os.path.join(folder, work.replace(" ", "-") + ".svg")
        with open(name, "w", encoding="utf-8") as file:
            file.write(draw(title, curves))
        print(name)


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    main(*sys.argv[1:])
