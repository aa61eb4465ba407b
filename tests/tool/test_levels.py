"""Black level and white level of mosaics, against the same in NumPy."""

import numpy as np
import pytest

from pictures import dng_bytes, png_bytes, read_png

RGGB = [0, 1, 1, 2]
BLACK, WHITE = 100, 16383  # what dng_bytes writes


def levelled(samples, black, white=None):
    values = samples.astype(int) - np.minimum(samples, black)
    if white is not None:
        values = np.minimum(65535, (values * 65535 + (white - black) // 2) // (white - black))
    return values.astype(np.uint16)


@pytest.fixture
def capture(tool, rng):
    tool.samples = rng.integers(0, WHITE + 200, (32, 48), dtype=np.uint16)
    (tool.folder / "in.dng").write_bytes(dng_bytes(tool.samples, RGGB))
    (tool.folder / "in.png").write_bytes(png_bytes(tool.samples))
    (tool.folder / "in.raw").write_bytes(tool.samples.astype("<u2").tobytes())
    return tool


@pytest.mark.parametrize("options, black, white", [
    ([], 0, None), (["--black-level", "file"], BLACK, None), (["--black-level", 1000], 1000, None),
    (["--scale", "file"], 0, WHITE), (["--black-level", "file", "--scale", "file"], BLACK, WHITE),
    (["--black-level", 64, "--scale", 1023], 64, 1023)])
def test_a_camera_file(capture, options, black, white):
    capture.succeeds("convert", "in.dng", "out.png", "--to", "raw16", *options)
    assert np.array_equal(read_png(capture.folder / "out.png"), levelled(capture.samples, black, white))


@pytest.mark.parametrize("source", [["in.png"], ["in.raw", "--width", 48, "--height", 32]])
def test_any_other_mosaic_of_16_bits(capture, source):
    arguments = ["convert", source[0], "out.png", *source[1:], "--from", "raw16", "--tile", "rggb", "--to", "raw16"]
    capture.succeeds(*arguments, "--black-level", 256, "--scale", 16383)
    assert np.array_equal(read_png(capture.folder / "out.png"), levelled(capture.samples, 256, 16383))
    (capture.folder / "out.png").unlink()
    assert "does not say" in capture.fails(1, *arguments, "--black-level", "file")


def test_levels_come_before_the_demosaicing(capture):
    capture.succeeds("convert", "in.dng", "levels.png", "--to", "raw16", "--black-level", "file", "--scale", "file")
    capture.succeeds("convert", "levels.png", "a.png", "--from", "raw16", "--tile", "rggb", "--to", "rgb16")
    capture.succeeds("convert", "in.dng", "b.png", "--to", "rgb16", "--black-level", "file", "--scale", "file")
    assert np.array_equal(read_png(capture.folder / "a.png"), read_png(capture.folder / "b.png"))


@pytest.mark.parametrize("options, code, hint", [
    (["--black-level", "dark"], 2, "--black-level"), (["--scale", "-1"], 2, "--scale"),
    (["--scale", "65536"], 2, "65535"), (["--black-level", "9", "--scale", "9"], 1, "not above"),
    (["--scale", "0"], 1, "not above")])
def test_wrong_levels(capture, options, code, hint):
    assert hint in capture.fails(code, "convert", "in.dng", "out.png", "--to", "rgb8", *options)


def test_pictures_have_no_levels(capture):
    assert "raw16" in capture.fails(1, "convert", "in.png", "out.png", "--to", "mono8", "--black-level", 5)
