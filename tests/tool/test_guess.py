"""guess: what a headerless file is. Dumps of the test chart are always tested; real pictures where KORVEX2_DATA, or
the folder shared/data beside the sources, has them."""

import json
import os
from pathlib import Path

import pytest
from PIL import Image

from conftest import some

DATA = Path(os.environ.get("KORVEX2_DATA", Path(__file__).parents[3] / "shared" / "data"))
PLAIN = ["mono8", "mono12", "mono16", "rgb8", "rgbu", "rgb16", "bgr", "bgru", "bgr16", "bgru16", "yuv411", "yuv422",
         "yuv444"]
RAW = ["raw8", "raw12", "raw16"]
SIZES = [(320, 240), (322, 246), (501, 333), (97, 61)]
# Samples do not tell red from blue.
SWAPPED = {"rgb8": "bgr", "rgbu": "bgru", "rgb16": "bgr16", "rggb": "bggr", "grbg": "gbrg"}
SWAPPED.update({value: key for key, value in SWAPPED.items()})


def readings(tool, *arguments):
    result = json.loads(tool.succeeds("guess", *arguments, "--json"))
    return [(r["width"], r["height"], r["format"], r["tile"]) for r in result["readings"]]


def swapped(reading):
    return (*reading[:2], *(SWAPPED.get(name, name) for name in reading[2:]))


def check(tool, path, truths):
    """Every truth is among the first six, and most are first but for the order of red and blue. `path` makes it."""
    truths = some(truths)
    first = 0
    for truth in truths:
        found = readings(tool, path(truth), "--best", 6)
        assert truth in found, (truth, found)
        first += found[0] in (truth, swapped(truth))
    assert first >= 0.9 * len(truths), (first, len(truths))


@pytest.mark.parametrize("width, height", SIZES)
def test_dumps_of_the_chart_in_every_format(tool, width, height):
    def chart(truth):
        tile = ["--tile", truth[3]] if truth[3] else []
        tool.succeeds("chart", "chart.raw", "--to", truth[2], "--width", width, "--height", height, *tile)
        return "chart.raw"

    check(tool, chart, [(width, height, name, None) for name in PLAIN]
          + [(width, height, name, tile) for name in RAW for tile in ("bggr", "grbg")])


def test_dumps_of_a_photo_in_every_format(tool):
    photo = DATA / "kodak" / "kodim05.png"
    if not photo.exists():
        pytest.skip(f"SKIPPED: {photo} is missing; set KORVEX2_DATA to the folder that holds kodak/")
    with Image.open(photo) as picture:
        picture.crop((40, 60, 40 + 314, 60 + 250)).save(tool.folder / "photo.png")

    def dump(truth):
        command = ["mosaic", "--tile", truth[3]] if truth[3] else ["convert"]
        tool.succeeds(*command, "photo.png", "photo.raw", "--to", truth[2])
        return "photo.raw"

    check(tool, dump, [(314, 250, name, None) for name in PLAIN] + [(314, 250, name, "gbrg") for name in RAW])


def test_real_mosaics(tool):
    files = sorted((DATA / "raw").glob("*_*in16_*.raw"))
    if not files:
        pytest.skip(f"SKIPPED: {DATA / 'raw'} has no mosaics; set KORVEX2_DATA to the folder that holds raw/")
    truths = {}
    for path in files:
        size, _, tile = path.stem.split("_")[-3:]
        truths[(*map(int, size.split("x")), "raw16", tile.lower(), path.name)] = path
    for truth, path in truths.items():
        found = readings(tool, path, "--best", 6)
        assert truth[:4] in found and found[0][:3] == truth[:3]


def test_what_is_known_is_kept(tool):
    tool.succeeds("chart", "chart.raw", "--to", "raw12", "--width", 100, "--height", 60)
    assert {reading[2] for reading in readings(tool, "chart.raw", "--format", "BayerRG12Packed")} == {"raw12"}
    assert {reading[0] for reading in readings(tool, "chart.raw", "--width", 120)} == {120}
    assert {reading[1] for reading in readings(tool, "chart.raw", "--height", 50)} == {50}
    assert readings(tool, "chart.raw", "--format", "raw12", "--width", 100, "--best", 1)[0] in [
        (100, 60, "raw12", "rggb"), (100, 60, "raw12", "bggr")]


def test_the_table_and_the_sheet(tool):
    tool.succeeds("chart", "chart.raw", "--to", "rgb8", "--width", 320, "--height", 240)
    (tool.folder / "chart.raw").rename(tool.folder / "mystery")
    lines = tool.succeeds("guess", "mystery", "--best", 3, "--sheet", "sheet.png").splitlines()
    assert len(lines) == 6 and lines[-1].endswith("-> sheet.png")
    assert lines[1].split()[:4] == ["1", "320", "240", "rgb8"] and lines[1].endswith("a common size")
    with Image.open(tool.folder / "sheet.png") as sheet:
        assert sheet.size == (3 * 416 + 16, 16 + 28 + 2 * (300 + 28 + 16))
        # The chart's white frame at the corners of the first picture.
        assert sheet.getpixel((16, 44))[0] > 200 and sheet.getpixel((415, 343))[0] > 200
    tool.succeeds("guess", "mystery", "--format", "yuv411", "--width", 3, "--sheet", "strip.png")


@pytest.mark.parametrize("value", [0, 7])
def test_a_flat_file_may_be_anything_of_its_size(tool, value):
    (tool.folder / "flat.bin").write_bytes(bytes([value]) * 640 * 480)
    found = readings(tool, "flat.bin")
    assert found[0][:2] in [(640, 480), (320, 240)]


@pytest.mark.parametrize("size", [1, 2, 3, 5, 7])
def test_a_few_bytes(tool, rng, size):
    (tool.folder / "few.bin").write_bytes(rng.bytes(size))
    assert (size, 1, "mono8", None) in readings(tool, "few.bin", "--best", 1000)


def test_wrong_use(tool, rng):
    (tool.folder / "empty.bin").write_bytes(b"")
    (tool.folder / "odd.bin").write_bytes(rng.bytes(1001))
    assert "0 bytes" in tool.fails(1, "guess", "empty.bin")
    assert "1001 bytes" in tool.fails(1, "guess", "odd.bin", "--format", "mono16")
    assert "that width" in tool.fails(1, "guess", "odd.bin", "--width", 17)
    assert "No such file" in tool.fails(1, "guess", "missing.bin")
    assert "mono8" in tool.fails(2, "guess", "odd.bin", "--format", "mno8")
    assert "PGM holds" in tool.fails(1, "guess", "odd.bin", "--sheet", "sheet.pgm")
    tool.fails(2, "guess", "odd.bin", "--width", 0)
    tool.fails(2, "guess", "odd.bin", "--best", 0)
