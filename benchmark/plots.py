"""Plots of a run as SVG: points and lines over two logarithmic axes."""

import csv
import html
import math

from tables import MICROSECONDS

WIDTH, HEIGHT = 860, 520
LEFT, RIGHT, TOP, BOTTOM = 80, 240, 50, 60  # margins, the legend being at the right
COLORS = ["#0b6e99", "#c4570b", "#3a7d34", "#7a3b8f", "#a11d33", "#5c5c5c", "#8a6d00", "#1f3a93"]


class LogAxes:
    """Draws into the rectangle that `points`, pairs of positive numbers, span."""

    def __init__(self, title, x_label, y_label, points):
        xs, ys = [x for x, _ in points], [y for _, y in points]
        self.x_range, self.y_range = self.decades(xs), self.decades(ys)
        self.legend = 0
        self.parts = [
            f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {WIDTH} {HEIGHT}" font-family="sans-serif" font-size="13">',
            f'<rect width="{WIDTH}" height="{HEIGHT}" fill="white"/>',
            self.text(LEFT, TOP - 20, title, size=16),
            self.text((LEFT + WIDTH - RIGHT) / 2, HEIGHT - 15, x_label, anchor="middle"),
            f'<g transform="translate(20 {(TOP + HEIGHT - BOTTOM) / 2}) rotate(-90)">{self.text(0, 0, y_label, anchor="middle")}</g>',
        ]
        self.grid()

    @staticmethod
    def decades(values):
        low, high = math.floor(math.log10(min(values))), math.ceil(math.log10(max(values)))
        return low, max(high, low + 1)

    @staticmethod
    def text(x, y, words, size=13, anchor="start"):
        return f'<text x="{x:.1f}" y="{y:.1f}" font-size="{size}" text-anchor="{anchor}">{html.escape(words)}</text>'

    def place(self, x, y):
        def along(value, span):
            return (math.log10(value) - span[0]) / (span[1] - span[0])
        return (LEFT + along(x, self.x_range) * (WIDTH - LEFT - RIGHT),
                HEIGHT - BOTTOM - along(y, self.y_range) * (HEIGHT - TOP - BOTTOM))

    @staticmethod
    def label(decade):
        return f"{10.0 ** decade:g}"

    def grid(self):
        for decade in range(self.x_range[0], self.x_range[1] + 1):
            x, _ = self.place(10.0 ** decade, 10.0 ** self.y_range[0])
            self.parts.append(f'<path d="M{x:.1f} {TOP}V{HEIGHT - BOTTOM}" stroke="#ddd"/>')
            self.parts.append(self.text(x, HEIGHT - BOTTOM + 20, self.label(decade), anchor="middle"))
        for decade in range(self.y_range[0], self.y_range[1] + 1):
            _, y = self.place(10.0 ** self.x_range[0], 10.0 ** decade)
            self.parts.append(f'<path d="M{LEFT} {y:.1f}H{WIDTH - RIGHT}" stroke="#ddd"/>')
            self.parts.append(self.text(LEFT - 8, y + 4, self.label(decade), anchor="end"))

    def legend_entry(self, name, color):
        y = TOP + 10 + 22 * self.legend
        self.legend += 1
        self.parts.append(f'<circle cx="{WIDTH - RIGHT + 20}" cy="{y}" r="5" fill="{color}"/>')
        self.parts.append(self.text(WIDTH - RIGHT + 32, y + 4, name, size=12))

    def scatter(self, name, points, color, opacity):
        self.legend_entry(name, color)
        dots = sorted({tuple(round(at) for at in self.place(x, y)) for x, y in points})
        path = "".join(f"M{x} {y}h0" for x, y in dots)
        self.parts.append(f'<path d="{path}" stroke="{color}" stroke-opacity="{opacity}" stroke-width="4" '
                          'stroke-linecap="round"/>')

    def line(self, name, points, color):
        self.legend_entry(name, color)
        placed = [self.place(x, y) for x, y in sorted(points)]
        path = "M" + "L".join(f"{x:.1f} {y:.1f}" for x, y in placed)
        self.parts.append(f'<path d="{path}" fill="none" stroke="{color}" stroke-width="2"/>')
        self.parts.extend(f'<circle cx="{x:.1f}" cy="{y:.1f}" r="3" fill="{color}"/>' for x, y in placed)

    def write(self, file):
        file.write_text("\n".join([*self.parts, "</svg>"]) + "\n", encoding="utf-8")


def size_class(cells):
    if cells <= 100_000:
        return "small"
    return "medium" if cells <= 400_000 else "large"


SIZES = {"small": "small maps (up to 100 000 cells)", "medium": "medium maps (up to 400 000)",
         "large": "large maps (up to 1 050 000)"}


def plot_queries(queries_file, plot_file):
    """Time of each query against the cells that it expands."""
    with open(queries_file, encoding="utf-8") as lines:
        queries = [q for q in csv.DictReader(lines) if float(q["expanded"]) > 0]
    if not queries:
        return
    ours = [(float(q["expanded"]), float(q["astar_us"])) for q in queries]
    boost = [(float(q["expanded"]), float(q["boost_us"])) for q in queries]
    axes = LogAxes("Time of a search", "cells that Boost.Graph's A* expands for it", "microseconds", ours + boost)
    axes.scatter("Boost.Graph's A*, all maps", boost, "#c8c8c8", 0.5)
    for (size, name), color in zip(SIZES.items(), COLORS):
        chosen = [point for q, point in zip(queries, ours) if size_class(int(q["map_cells"])) == size]
        if chosen:
            axes.scatter("AStar, " + name, chosen, color, 0.6)
    axes.write(plot_file)


def curve(results, prefix):
    """(input, microseconds) of the benchmarks `prefix`/INPUT."""
    return [(float(b["name"].split("/")[2]), b["cpu_time"] * MICROSECONDS[b["time_unit"]])
            for b in results.named(prefix + "/")]


def plot_curves(results, title, x_label, prefixes, plot_file):
    curves = {prefix: curve(results, prefix) for prefix in prefixes}
    curves = {prefix: points for prefix, points in curves.items() if points}
    if not curves:
        return
    axes = LogAxes(title, x_label, "microseconds", [point for points in curves.values() for point in points])
    for (prefix, points), color in zip(curves.items(), COLORS):
        axes.line(prefix.split("/")[1], points, color)
    axes.write(plot_file)


def plot_all(results, queries_file, folder):
    plot_queries(queries_file, folder / "performance-search.svg")
    plot_curves(results, "What a control cycle asks", "poses of the path, or cells of the line",
                ["cycle/UpdateIndex", "cycle/PathTransformToLocalMap", "cycle/IsBlockingPathInflateObstacle",
                 "cycle/IsBlockingPathLaserObstacle", "cycle/IsBilateralObstacle", "cycle/IsBlockingBetweenPoints",
                 "cycle/IsBlockingLaserBetweenPoints"], folder / "performance-cycle.svg")
    plot_curves(results, "Corridor of a 5 m path", "side of the map, cells", ["corridor/prepare", "corridor/message"],
                folder / "performance-corridor.svg")
