"""Reads what the benchmarks write: Google Benchmark's JSON."""

import json
import statistics
from dataclasses import dataclass, field


@dataclass(frozen=True)
class Row:
    """One contestant of converter_bench at one pair, size and cache state. Times are ns per pixel."""

    median: float
    least: float
    label: str = ""
    deviation: int | None = None


@dataclass
class Results:
    context: dict
    contests: dict = field(default_factory=dict)  # (pair, "1920x1080", "hot") -> {contestant: Row}

    def row(self, pair, size, cache, contestant):
        return self.contests.get((pair, size, cache), {}).get(contestant)


def read(path):
    with open(path, encoding="utf-8") as file:
        try:
            document = json.load(file)
        except ValueError as failure:
            raise ValueError(f"{path} is no JSON: {failure}") from failure
    if not isinstance(document, dict) or "benchmarks" not in document:
        raise ValueError(f"{path} was not written by Google Benchmark")
    return document


def measured(document):
    """The rows that have a time: no aggregates, no failures."""
    return [row for row in document["benchmarks"]
            if row.get("run_type", "iteration") == "iteration" and not row.get("error_occurred")]


def times(document):
    """Median time of each row by its name, in nanoseconds."""
    units = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}
    samples = {}
    for row in measured(document):
        samples.setdefault(row["run_name"], []).append(row["real_time"] * units[row["time_unit"]])
    return {name: statistics.median(values) for name, values in samples.items()}


def converter_results(document):
    results = Results(document["context"])
    for row in measured(document):
        if "ns_per_px" not in row:
            continue
        pair, size, cache, contestant = row["name"].split("/")
        deviation = row.get("deviation")
        results.contests.setdefault((pair, size, cache), {})[contestant] = Row(
            median=row["ns_per_px"], least=row["least_ns_per_px"], label=row.get("label", ""),
            deviation=None if deviation is None else round(deviation))
    return results
