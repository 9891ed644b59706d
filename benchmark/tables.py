"""The results of a run as tables for people."""


def print_table(title, columns, rows):
    """Columns: names. Rows: tuples of texts; the first column is set left, the others right."""
    if not rows:
        return
    widths = [max(len(cell) for cell in cells) for cells in zip(columns, *rows)]
    print(f"\n{title}")
    for row in [columns, *rows]:
        first, *rest = (f"{cell:{'<' if i == 0 else '>'}{width}}" for i, (cell, width) in enumerate(zip(row, widths)))
        print("  " + "  ".join([first, *rest]))


def short_name(benchmark):
    """Its name without what google-benchmark appends."""
    parts = [part for part in benchmark["name"].split("/") if part != "manual_time"]
    return "/".join(part for part in parts if not part.startswith("iterations:"))


def print_searches(results):
    rows = []
    for b in results.named("search/"):
        rows.append((short_name(b), f"{b['queries']:.0f}", f"{b['subject_us'] / 1e3:.2f}", f"{b['reference_us'] / 1e3:.2f}",
                     f"{1 / b['ratio']:.2f}", f"{b['subject_us'] * 1e3 / b['expanded']:.1f}",
                     f"{b['reference_us'] * 1e3 / b['expanded']:.1f}"))
    print_table("Searches: all queries of a map; cells as Boost.Graph's A* expands them",
                ("map", "queries", "AStar ms", "Boost ms", "times faster", "AStar ns/cell", "Boost ns/cell"), rows)


def print_pairs(results):
    rows = []
    for b in results.benchmarks:
        if "ratio" in b and not b["name"].startswith("search/"):
            rows.append((short_name(b), f"{b['subject_us']:.1f}", f"{b['reference_us']:.1f}", f"{b['ratio']:.3f}"))
    print_table("Pairs: each against what it is measured by", ("benchmark", "us", "against us", "ratio"), rows)


def print_singles(results):
    to_microseconds = {"ns": 1e-3, "us": 1.0, "ms": 1e3}
    rows = []
    for b in results.benchmarks:
        if "ratio" not in b and "bytes_per_cell" not in b and "allocations" not in b:
            rows.append((short_name(b), f"{b['cpu_time'] * to_microseconds[b['time_unit']]:.3f}"))
    print_table("Single calls, by their input", ("benchmark", "us"), rows)


def print_all(results):
    print_searches(results)
    print_pairs(results)
    print_singles(results)
