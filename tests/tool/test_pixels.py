"""Conversions of real files against numpy."""

import numpy as np
import pytest
from PIL import Image

from pictures import (luma, mono16_of, pack12, png_bytes, read_png, read_pnm, yuv411, yuv422, yuv444)


@pytest.fixture
def photo(tool, rng):
    """A PNG with gradients and noise, greys and extremes among them."""
    y, x = np.mgrid[0:48, 0:64]
    rgb = np.stack([x * 4, y * 5, (x + y) * 2], axis=-1) + rng.integers(0, 16, (48, 64, 3))
    rgb[:4] = np.arange(64)[None, :, None] * 4
    rgb[4, :8] = [[0, 0, 0], [255, 255, 255], [255, 0, 0], [0, 255, 0], [0, 0, 255], [128, 128, 128], [1, 1, 1],
                  [254, 254, 254]]
    rgb = rgb.clip(0, 255).astype(np.uint8)
    Image.fromarray(rgb).save(tool.folder / "photo.png")
    return rgb


def test_rgb_to_mono8_truncates(tool, photo):
    tool.succeeds("convert", "photo.png", "out.pgm", "--to", "mono8")
    grey = read_pnm(tool.folder / "out.pgm")
    assert np.array_equal(grey, luma(photo))
    assert grey[4, 5:7].tolist() == [127, 0]


def test_rgb_to_mono16_and_mono12(tool, photo):
    grey = luma(photo).astype(np.uint16)
    tool.succeeds("convert", "photo.png", "out.png", "--to", "mono16")
    assert np.array_equal(read_png(tool.folder / "out.png"), grey * 257)
    tool.succeeds("convert", "photo.png", "out.raw", "--to", "mono12")
    assert (tool.folder / "out.raw").read_bytes() == pack12(grey * 16 + (grey & 15))


def test_rgb_to_wider_colour(tool, photo):
    tool.succeeds("convert", "photo.png", "out.png", "--to", "rgb16")
    assert np.array_equal(read_png(tool.folder / "out.png"), photo.astype(np.uint16) * 257)
    tool.succeeds("convert", "photo.png", "out.png", "--to", "bgru")
    assert np.array_equal(read_png(tool.folder / "out.png"), np.dstack([photo, np.full((48, 64), 255, np.uint8)]))
    tool.succeeds("convert", "photo.png", "out.raw", "--to", "bgru")
    opaque = np.full((48, 64), 255, np.uint8)
    assert (tool.folder / "out.raw").read_bytes() == np.dstack([photo[..., ::-1], opaque]).tobytes()


@pytest.mark.parametrize("name, encode", [("yuv444", yuv444), ("yuv422", yuv422), ("yuv411", yuv411)])
def test_rgb_to_yuv(tool, photo, name, encode):
    tool.succeeds("convert", "photo.png", "out.raw", "--to", name)
    assert (tool.folder / "out.raw").read_bytes() == encode(photo)


def test_yuv_to_rgb(tool):
    (tool.folder / "in.raw").write_bytes(bytes([84, 76, 255, 43, 149, 21, 255, 29, 107, 128, 77, 128]))
    tool.succeeds("convert", "in.raw", "out.png", "--from", "yuv444", "--width", 2, "--height", 2, "--to", "rgb8")
    assert read_png(tool.folder / "out.png").reshape(-1, 3).tolist() == [
        [254, 1, 0], [0, 254, 0], [0, 1, 254], [77, 77, 77]]


def test_narrowing_keeps_the_high_byte(tool, rng):
    samples = rng.integers(0, 65536, (12, 10, 3), dtype=np.uint16)
    (tool.folder / "in.png").write_bytes(png_bytes(samples))
    tool.succeeds("convert", "in.png", "out.png", "--to", "rgb8")
    assert np.array_equal(read_png(tool.folder / "out.png"), samples >> 8)
    tool.succeeds("convert", "in.png", "out.png", "--to", "mono16")
    assert np.array_equal(read_png(tool.folder / "out.png"), mono16_of(samples))


def test_mono16_to_mono12_drops_the_low_nibble(tool, rng):
    samples = rng.integers(0, 65536, (6, 8), dtype=np.uint16)
    (tool.folder / "in.png").write_bytes(png_bytes(samples))
    tool.succeeds("convert", "in.png", "out.raw", "--to", "mono12")
    assert (tool.folder / "out.raw").read_bytes() == pack12(samples >> 4)


def test_grey_to_colour_is_grey(tool, rng):
    samples = rng.integers(0, 256, (5, 7), dtype=np.uint8)
    (tool.folder / "in.png").write_bytes(png_bytes(samples))
    tool.succeeds("convert", "in.png", "out.png", "--to", "bgr")
    assert np.array_equal(read_png(tool.folder / "out.png"), np.dstack([samples] * 3))


@pytest.mark.parametrize("alias", ["UYVY", "uyvy", "YUV422_8_UYVY", "PIXEL_FORMAT_422YUV8", "Yuv422"])
def test_formats_answer_to_their_aliases_in_any_case(tool, photo, alias):
    tool.succeeds("convert", "photo.png", "out.raw", "--to", alias)
    assert (tool.folder / "out.raw").read_bytes() == yuv422(photo)
    tool.succeeds("convert", "out.raw", "out.png", "--from", alias, "--width", 64, "--height", 48, "--to", "RGB8")


def test_the_names_that_cameras_use(tool):
    (tool.folder / "in.raw").write_bytes(bytes([0x12, 0x00, 0xab]))
    tool.succeeds("convert", "in.raw", "out.pgm", "--from", "Mono12Packed", "--width", 2, "--height", 1,
                  "--to", "Mono8")
    assert read_pnm(tool.folder / "out.pgm").tolist() == [[0x12, 0xab]]
    tool.succeeds("convert", "out.pgm", "out.raw", "--to", "BGRa8")
    assert (tool.folder / "out.raw").read_bytes() == bytes([0x12] * 3 + [255] + [0xab] * 3 + [255])


def test_says_what_it_did_unless_told_to_be_quiet(tool, photo):
    assert tool.succeeds("convert", "photo.png", "out.pgm", "--to", "mono8") == (
        "photo.png (64 x 48, rgb8) -> out.pgm (mono8)\n")
    assert tool.succeeds("convert", "photo.png", "out.pgm", "--to", "mono8", "--quiet") == ""
    assert tool.succeeds("--quiet", "convert", "photo.png", "out.pgm", "--to", "mono8") == ""


def test_a_picture_wider_than_a_mebibyte(tool):
    width = (1 << 20) + 4
    ramp = (np.arange(width * 3) % 251).astype(np.uint8).reshape(1, width, 3)
    (tool.folder / "in.ppm").write_bytes(b"P6\n%d 1\n255\n" % width + ramp.tobytes())
    tool.succeeds("convert", "in.ppm", "out.png", "--to", "mono8")
    Image.MAX_IMAGE_PIXELS = None
    with Image.open(tool.folder / "out.png") as picture:
        assert np.array_equal(np.asarray(picture), luma(ramp))
