"""The results of a run as Markdown tables, which read well in a terminal too."""

MICROSECONDS = {"ns": 1e-3, "us": 1.0, "ms": 1e3}  # in google-benchmark's time units


def table(columns, rows):
    """Columns: names. Rows: tuples of texts; the first column is set left, the others right."""
    widths = [max(len(cell) for cell in cells) for cells in zip(columns, *rows)]
    rule = [f":{'-' * (widths[0] - 1)}"] + [f"{'-' * (width - 1)}:" for width in widths[1:]]
    lines = [columns, rule, *rows]
    return "\n".join(
        "| " + " | ".join(f"{cell:{'>' if i else '<'}{width}}" for i, (cell, width) in enumerate(zip(line, widths))) + " |"
        for line in lines)


def section(title, columns, rows):
    return f"## {title}\n\n{table(columns, rows)}\n" if rows else ""


def short_name(benchmark):
    """Its name without what google-benchmark appends."""
    parts = [part for part in benchmark["name"].split("/") if part != "manual_time"]
    return "/".join(part for part in parts if not part.startswith("iterations:"))


def machine(about):
    return "\n".join(f"- {name}: {value}" for name, value in about.items()) + "\n"


def bars(judged):
    rows = []
    for bar in judged:
        figure = "-" if bar.figure is None else f"{bar.figure:.4g} {bar.unit}".strip()
        rows.append((bar.what, bar.number, figure, f"{bar.sign} {bar.limit:g}", bar.verdict()))
    return section("Bars", ("what", "bar", "figure", "limit", "verdict"), rows)


def searches(results):
    rows = []
    for b in results.named("search/"):
        rows.append((short_name(b).removeprefix("search/"), f"{b['queries']:.0f}", f"{b['subject_us'] / 1e3:.2f}",
                     f"{b['reference_us'] / 1e3:.2f}", f"{1 / b['ratio']:.2f}",
                     f"{b['subject_us'] * 1e3 / b['expanded']:.1f}", f"{b['reference_us'] * 1e3 / b['expanded']:.1f}"))
    return section("Searches",
                   ("map", "queries", "AStar ms", "Boost ms", "times faster", "AStar ns/cell", "Boost ns/cell"), rows)


def pairs(results):
    rows = [(short_name(b), f"{b['subject_us']:.1f}", f"{b['reference_us']:.1f}", f"{b['ratio']:.3f}")
            for b in results.benchmarks if "ratio" in b and not b["name"].startswith("search/")]
    return section("In turn with what it is measured by", ("benchmark", "us", "against us", "ratio"), rows)


def memory(results):
    rows = [(short_name(b).removeprefix("memory/"), f"{b['bytes_per_cell']:.1f}", f"{b['constant_bytes'] / 1e3:.0f}",
             f"{b['largest_bytes'] / 1e3:.0f}") for b in results.named("memory/")]
    return section("Memory of a search", ("world", "bytes per cell of its tiles", "constant kB", "1600 cells away, kB"),
                   rows)


def singles(results):
    rows = [(short_name(b), f"{b['cpu_time'] * MICROSECONDS[b['time_unit']]:.3f}") for b in results.benchmarks
            if not {"ratio", "bytes_per_cell", "allocations"} & b.keys()]
    return section("Single calls, by their input", ("benchmark", "us"), rows)


def report(about, judged, results):
    return "\n".join([machine(about), searches(results), pairs(results), memory(results), singles(results), bars(judged)])
