"""Plots of a run as PNG, drawn by gnuplot over two logarithmic axes."""

import csv
import subprocess

from tables import MICROSECONDS

PREAMBLE = """
set terminal pngcairo size 800,600 font "sans,10"
set logscale xy
set grid
set key below maxrows 3 Left reverse
set ylabel "microseconds"
"""


def plot(title, x_label, style, series, plot_file):
    """Series: pairs of numbers by the name they have in the legend; those without any are left out."""
    series = {name: points for name, points in series.items() if points}
    if not series:
        return
    blocks = [f"${i} << END\n" + "".join(f"{x} {y}\n" for x, y in points) + "END\n"
              for i, points in enumerate(series.values(), start=1)]
    curves = ", ".join(f'${i} with {style} linetype {i} title "{name}"' for i, name in enumerate(series, start=1))
    script = (PREAMBLE + "".join(blocks) +
              f'set output "{plot_file}"\nset title "{title}"\nset xlabel "{x_label}"\nplot {curves}\n')
    subprocess.run(["gnuplot"], input=script.replace("$", "$data"), text=True, check=True)


SIZES = {"small maps (up to 100 000 cells)": 100_000, "medium maps (up to 400 000)": 400_000, "large maps": None}


def size_class(cells):
    return next(name for name, limit in SIZES.items() if limit is None or cells <= limit)


def plot_queries(queries_file, plot_file):
    """Time of each query against the cells that it expands."""
    series = {"Boost.Graph's A*, all maps": []} | {"AStar, " + name: [] for name in SIZES}
    with open(queries_file, encoding="utf-8") as lines:
        for query in csv.DictReader(lines):
            if float(query["expanded"]) > 0:
                series["Boost.Graph's A*, all maps"].append((query["expanded"], query["boost_us"]))
                series["AStar, " + size_class(int(query["map_cells"]))].append((query["expanded"], query["astar_us"]))
    plot("Time of a search", "cells that Boost.Graph's A* expands for it", "points pointtype 7 pointsize 0.25", series,
         plot_file)


def curve(results, prefix):
    """(input, microseconds) of the benchmarks `prefix`/INPUT."""
    return [(b["name"].split("/")[2], b["cpu_time"] * MICROSECONDS[b["time_unit"]]) for b in results.named(prefix + "/")]


def plot_curves(results, title, x_label, prefixes, plot_file):
    plot(title, x_label, "linespoints pointtype 7 pointsize 0.6",
         {prefix.split("/")[1]: curve(results, prefix) for prefix in prefixes}, plot_file)


def plot_all(results, queries_file, folder):
    plot_queries(queries_file, folder / "performance-search.png")
    plot_curves(results, "What a control cycle asks", "poses of the path, or cells of the line",
                ["cycle/UpdateIndex", "cycle/PathTransformToLocalMap", "cycle/IsBlockingPathInflateObstacle",
                 "cycle/IsBlockingPathLaserObstacle", "cycle/IsBilateralObstacle", "cycle/IsBlockingBetweenPoints",
                 "cycle/IsBlockingLaserBetweenPoints"], folder / "performance-cycle.png")
    plot_curves(results, "Corridor of a 5 m path", "side of the map, cells", ["corridor/prepare", "corridor/message"],
                folder / "performance-corridor.png")
