"""bench: what it measures and prints; --cpu, there and of convert."""

import json

import numpy as np
import pytest

from pictures import png_bytes

SMALL = ["--size", "64x48"]


def bench(tool, *options):
    return json.loads(tool.succeeds("bench", "--json", *SMALL, *options))


def instruction_sets(tool):
    return json.loads(tool.succeeds("info", "--json"))["instructionSets"].split(", ")


def pairs(report):
    return [(conversion["from"], conversion["to"]) for conversion in report["conversions"]]


def test_figures_fit_together(tool):
    report = bench(tool, "--from", "rgb16", "--to", "bgru")
    assert (report["width"], report["height"]) == (64, 48)
    conversion, = report["conversions"]
    assert (conversion["from"], conversion["to"]) == ("rgb16", "bgru")
    ns = conversion["nsPerPx"]
    assert ns > 0 and conversion["timesMemcpy"] > 0
    rounded = {"rel": 1e-3, "abs": 1e-3}
    assert conversion["mpxPerSecond"] == pytest.approx(1000 / ns, **rounded)
    assert conversion["gbPerSecond"] == pytest.approx((6 + 4) / ns, **rounded)


def test_table(tool):
    lines = tool.succeeds("bench", "--from", "MONO8", "--to", "rgb8", *SMALL).splitlines()
    assert lines[0].split() == ["from", "to", "ns/px", "Mpx/s", "GB/s", "memcpy"]
    assert lines[1].split()[:2] == ["mono8", "rgb8"] and lines[1].endswith(" x")
    assert lines[3].startswith("64 x 48 pixels, ") and len(lines) == 4


def test_a_selection_without_formats(tool):
    measured = pairs(bench(tool, "--cpu", "plain"))
    assert ("yuv422", "rgb8") in measured and ("raw8", "bgru") in measured
    assert len(measured) == len(set(measured))


def test_all_conversions_of_one_side(tool):
    routes = json.loads(tool.succeeds("routes", "--json"))
    converted = [(route["from"], route["to"]) for route in routes if route["is"] == "converted"]
    assert pairs(bench(tool, "--to", "raw16")) == [pair for pair in converted if pair[1] == "raw16"]
    assert pairs(bench(tool, "--from", "raw8")) == [pair for pair in converted if pair[0] == "raw8"]


def test_cpu_chooses_the_instruction_set(tool):
    for name in instruction_sets(tool):
        for spelling in (name, name.lower()):
            assert bench(tool, "--from", "mono8", "--to", "mono16", "--cpu", spelling)["instructionSet"] == name


def test_cpu_never_changes_a_byte(tool, rng):
    (tool.folder / "in.png").write_bytes(png_bytes(rng.integers(0, 256, (37, 53, 3), dtype=np.uint8)))
    results = set()
    for name in instruction_sets(tool):
        tool.succeeds("convert", "in.png", "out.raw", "--to", "yuv422", "--cpu", name)
        results.add((tool.folder / "out.raw").read_bytes())
    assert len(results) == 1


@pytest.mark.parametrize("command", [["bench"], ["convert", "in.png", "out.raw", "--to", "yuv422"]])
@pytest.mark.parametrize("name", ["SSE9", "plain,", " "])
def test_an_unknown_instruction_set_is_refused_with_the_list(tool, command, name):
    (tool.folder / "in.png").write_bytes(png_bytes(np.zeros((2, 2, 3), dtype=np.uint8)))
    message = tool.fails(2, *command, "--cpu", name)
    assert f"'{name}'" in message and ", ".join(instruction_sets(tool)) in message


@pytest.mark.parametrize("size", ["", "64", "64x", "x48", "0x48", "64x0", "64x48x2", "-64x48", "64 x 48", "axb",
                                  "64x99999999999"])
def test_sizes_that_are_none(tool, size):
    assert "--size" in tool.fails(2, "bench", "--size", size)


@pytest.mark.parametrize("options, code, hint", [
    (["--from", "rgb8", "--to", "raw8"], 2, "routes"),
    (["--from", "rgb8", "--to", "rgb8"], 2, "routes"),
    (["--from", "s_mono16"], 2, "s_mono16"),
    (["--from", "rgb9"], 2, "rgb8"),
    (["--from", "raw8", "--to", "bgr", "--size", "5x5"], 1, "raw8"),
    (["--from", "mono8", "--to", "bgr", "--size", "4294967295x4294967295"], 1, "4 GiB"),
])
def test_what_cannot_be_measured(tool, options, code, hint):
    assert hint in tool.fails(code, "bench", *options)
