"""What the benchmarks must show: each bar, its figure in a run, and whether it holds."""

import operator

SIGNS = {"<=": operator.le, "<": operator.lt, ">=": operator.ge}
CYCLE_SHARE_US = 500.0  # 1 % of a 50 ms cycle
MEGABYTE = 1e6


class Bar:
    """A limit on a figure; `figure` is None when the run did not measure it."""

    def __init__(self, number, what, figure, sign, limit, unit="x"):
        self.number, self.what, self.figure = number, what, figure
        self.sign, self.limit, self.unit = sign, limit, unit

    def verdict(self):
        if self.figure is None:
            return "not measured"
        return "holds" if SIGNS[self.sign](self.figure, self.limit) else "DOES NOT HOLD"

    def as_dict(self):
        return {"bar": self.number, "what": self.what, "figure": self.figure, "sign": self.sign, "limit": self.limit,
                "unit": self.unit, "verdict": self.verdict()}


class Results:
    """The benchmarks of a run by name, as google-benchmark's JSON has them."""

    def __init__(self, benchmarks):
        self.benchmarks = benchmarks

    def named(self, prefix):
        return [b for b in self.benchmarks if b["name"].startswith(prefix)]

    def over_all(self, reduce, prefix, counter):
        figures = [b[counter] for b in self.named(prefix)]
        return reduce(figures) if figures else None

    def total_ratio(self, prefix, above, below):
        """Sum of one counter over the sum of another."""
        chosen = self.named(prefix)
        return sum(b[above] for b in chosen) / sum(b[below] for b in chosen) if chosen else None


def inverse(figure):
    return None if figure is None else 1 / figure


def bars_of(results, yardstick):
    """All bars. `yardstick`: time over the external yardstick's by kind of map, empty where it was not run."""
    worst_excess = results.over_all(max, "search/", "worst_excess")
    return [
        Bar("1", "search on the local maps, against the external yardstick", yardstick.get("local"), "<=", 1.5),
        Bar("1", "search on the octile maps, against the external yardstick", yardstick.get("octile"), "<=", 1.7),
        Bar("1", "search on the local maps, times faster than Boost.Graph's A*",
            results.total_ratio("search/local/", "reference_us", "subject_us"), ">=", 2.5),
        Bar("1", "search on the octile maps, times faster than Boost.Graph's A*",
            results.total_ratio("search/octile/", "reference_us", "subject_us"), ">=", 4.5),
        Bar("1", "lengths above the published optimum (and each callback at most once per cell: checked)",
            None if worst_excess is None else 100 * worst_excess, "<=", 0.01, "%"),
        Bar("2", "search 300 cells away on 65535 x 65535 cells, against 600 x 600",
            results.over_all(max, "scale/", "ratio"), "<=", 1.2),
        Bar("2", "memory of that search",
            None if not results.named("scale/") else results.over_all(max, "scale/", "bytes") / MEGABYTE, "<", 4, "MB"),
        Bar("2", "memory per cell of the touched tiles, over a constant",
            results.over_all(max, "memory/", "bytes_per_cell"), "<=", 16, "B"),
        Bar("3", "CreatePlan with corridor, 10 boxes and smoothing, against the bare search",
            results.total_ratio("plan/10 boxes/", "subject_us", "reference_us"), "<=", 1.5),
        Bar("3", "CreatePlan with corridor, 100 boxes and smoothing, against the bare search",
            results.total_ratio("plan/100 boxes/", "subject_us", "reference_us"), "<=", 3),
        Bar("4", "smoother on a comb, times faster than the plain rule (same result: checked)",
            inverse(results.over_all(max, "smoother/comb/", "ratio")), ">=", 20),
        Bar("4", "smoother on open ground, against one line test", results.over_all(max, "smoother/open/", "ratio"),
            "<=", 2),
        Bar("5", "corridor of a 5 m path on 4000 x 4000 cells, against 200 x 200 (each cell as OpenCV's: checked)",
            results.over_all(max, "corridor/map/", "ratio"), "<=", 2),
        Bar("6", "UpdateIndex on 10^6 poses, against 10^3", results.over_all(max, "cycle/UpdateIndex long/", "ratio"),
            "<=", 1.1),
        Bar("6", "allocations of the per-cycle calls", results.over_all(sum, "cycle/allocations/", "allocations"), "<=",
            0, ""),
        Bar("6", "one whole cycle on 120 x 120 cells", results.over_all(max, "cycle/whole/", "cpu_time"), "<",
            CYCLE_SHARE_US, "us"),
        Bar("7", "resampling to 10^5 poses, against copying the result once (both into fresh memory)",
            results.over_all(max, "resampling/LinearInterpolation/", "ratio"), "<=", 2),
        Bar("7", "InitializePath of that path, against copying the result once (likewise)",
            results.over_all(max, "resampling/InitializePath/", "ratio"), "<=", 2.5),
        Bar("8", "one whole cycle of the follower on 120 x 120 cells, against one distance transform of them",
            results.over_all(max, "follower/cycle/", "ratio"), "<=", 1.5),
        Bar("8", "growth of what such a cycle allocates, over 500 cycles",
            results.over_all(max, "follower/memory", "growth"), "<=", 0, "B"),
    ]

