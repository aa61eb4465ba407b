"""The test chart."""

import numpy as np
import pytest
from PIL import Image

from pictures import RED_AT, mono16_of, mosaic, read_pnm, yuv422

BACKGROUND = [0x15, 0x18, 0x1d]


def chart(tool, *options, name="chart.png"):
    tool.succeeds("chart", name, *options)
    if not name.endswith(".png"):
        return read_pnm(tool.folder / name)
    with Image.open(tool.folder / name) as picture:
        return np.asarray(picture)


def test_the_chart_is_a_picture_that_others_open(tool):
    tool.succeeds("chart", "chart.png")
    with Image.open(tool.folder / "chart.png") as picture:
        picture.load()
        assert (picture.mode, picture.size) == ("RGB", (960, 640))


def test_the_chart_has_what_one_looks_for(tool):
    samples = chart(tool)
    assert (samples[[0, -1]] == 255).all() and (samples[:, [0, -1]] == 255).all()  # the frame
    assert samples[2, 2].tolist() == BACKGROUND
    colours = {tuple(colour) for colour in samples.reshape(-1, 3).tolist()}
    for pure in [(255, 0, 0), (0, 255, 0), (0, 0, 255), (0, 255, 255), (255, 0, 255), (255, 255, 0), (0, 0, 0),
                 (255, 255, 255)]:
        assert pure in colours
    assert {(v, v, v) for v in range(256)} <= colours  # the grey ramp has every level
    zones = samples[:380, 600:920, 0].astype(int)
    assert (np.abs(np.diff(zones, axis=1)) > 200).any()  # rings as fine as pixels


def test_deep_charts_have_deep_ramps(tool):
    greys = chart(tool, "--to", "rgb16", "--width", 2000, "--height", 1000, name="chart.ppm")
    ramp = {tuple(colour) for colour in greys.reshape(-1, 3).tolist() if len(set(colour)) == 1}
    assert len(ramp) > 1000


@pytest.mark.parametrize("width, height", [(1, 1), (2, 1), (1, 9), (7, 3), (33, 17), (64, 48), (641, 3), (100, 900),
                                           (1501, 64)])
def test_any_size(tool, width, height):
    samples = chart(tool, "--width", width, "--height", height)
    assert samples.shape == (height, width, 3)
    assert (samples[[0, -1]] == 255).all() and (samples[:, [0, -1]] == 255).all()


def test_other_formats_are_conversions_of_the_same_chart(tool):
    size = ["--width", 200, "--height", 120]
    deep = chart(tool, *size, "--to", "rgb16", name="c.ppm")
    eight = (deep >> 8).astype(np.uint8)
    assert np.array_equal(chart(tool, *size), eight)
    assert np.array_equal(chart(tool, *size, "--to", "mono16", name="c.pgm"), mono16_of(deep))
    assert np.array_equal(chart(tool, *size, "--to", "bgr"), eight)
    tool.succeeds("chart", "c.raw", *size, "--to", "yuv422")
    assert (tool.folder / "c.raw").read_bytes() == yuv422(eight)


@pytest.mark.parametrize("tile", RED_AT)
def test_raw_charts_are_mosaics(tool, tile):
    size = ["--width", 200, "--height", 120]
    deep = chart(tool, *size, "--to", "rgb16", name="c.ppm")
    assert np.array_equal(chart(tool, *size, "--to", "raw16", "--tile", tile, name="c.pgm"), mosaic(deep, tile))
    assert np.array_equal(chart(tool, *size, "--to", "raw8", "--tile", tile), mosaic(deep, tile) >> 8)


def test_raw_charts_are_rggb_unless_told(tool):
    told = chart(tool, "--to", "raw8", "--tile", "rggb")
    assert np.array_equal(chart(tool, "--to", "raw8"), told)


def test_wrong_charts(tool):
    assert "--tile" in tool.fails(2, "chart", "c.png", "--tile", "rggb")
    assert "--width" in tool.fails(2, "chart", "c.png", "--width", 0)
    assert "4 GiB" in tool.fails(1, "chart", "c.png", "--width", 100000, "--height", 100000)
    assert "PNG holds" in tool.fails(1, "chart", "c.png", "--to", "yuv411")
    assert "rggb" in tool.fails(2, "chart", "c.png", "--to", "raw8", "--tile", "none")
    assert "No such file" in tool.fails(1, "chart", "missing/c.png")
