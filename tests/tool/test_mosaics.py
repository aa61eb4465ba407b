"""Mosaics: made of pictures, and made into pictures."""

import numpy as np
import pytest

from pictures import mosaic, pack12, png_bytes, read_png, read_pnm

TILES = ["rggb", "grbg", "gbrg", "bggr"]
METHODS = ["nearest", "edge", "hq_linear", "directional", "rigorous"]
CAMERA_NAMES = {
    "rggb": ["BayerRG8", "RGGB", "bayer_rggb8"],
    "grbg": ["BayerGR8", "GRBG", "bayer_grbg8"],
    "gbrg": ["BayerGB8", "GBRG", "bayer_gbrg8"],
    "bggr": ["BayerBG8", "BA81", "bayer_bggr8"],
}


@pytest.fixture
def colours(rng):
    return rng.integers(0, 256, (10, 14, 3), dtype=np.uint8)


def flat(height, width, colour, dtype=np.uint8):
    return np.broadcast_to(np.array(colour, dtype), (height, width, 3)).copy()


@pytest.mark.parametrize("tile", TILES)
def test_a_mosaic_takes_the_colour_of_the_tile(tool, colours, tile):
    (tool.folder / "in.png").write_bytes(png_bytes(colours))
    expected = mosaic(colours, tile)
    tool.succeeds("mosaic", "in.png", "out.png", "--tile", tile)
    assert np.array_equal(read_png(tool.folder / "out.png"), expected)
    tool.succeeds("mosaic", "in.png", "out.raw", "--tile", tile, "--to", "raw16")
    assert (tool.folder / "out.raw").read_bytes() == (expected.astype("<u2") * 257).tobytes()
    tool.succeeds("mosaic", "in.png", "out.raw", "--tile", tile, "--to", "raw12")
    deep = expected.astype(int)
    assert (tool.folder / "out.raw").read_bytes() == pack12(deep * 16 + (deep & 15))


@pytest.mark.parametrize("tile", TILES)
def test_a_mosaic_of_a_deep_picture_is_deep(tool, rng, tile):
    deep = rng.integers(0, 65536, (4, 6, 3), dtype=np.uint16)
    (tool.folder / "in.png").write_bytes(png_bytes(deep))
    expected = mosaic(deep, tile)
    tool.succeeds("mosaic", "in.png", "out.png", "--tile", tile, "--to", "raw16")
    assert np.array_equal(read_png(tool.folder / "out.png"), expected)
    tool.succeeds("mosaic", "in.png", "out.png", "--tile", tile, "--to", "raw8")
    assert np.array_equal(read_png(tool.folder / "out.png"), expected >> 8)
    tool.succeeds("mosaic", "in.png", "out.raw", "--tile", tile, "--to", "raw12")
    assert (tool.folder / "out.raw").read_bytes() == pack12(expected >> 4)


def test_a_mosaic_of_grey_is_that_grey(tool, rng):
    grey = rng.integers(0, 256, (6, 4), dtype=np.uint8)
    (tool.folder / "in.png").write_bytes(png_bytes(grey))
    tool.succeeds("mosaic", "in.png", "out.png", "--tile", "gbrg")
    assert np.array_equal(read_png(tool.folder / "out.png"), grey)


def test_raw_depths_convert_without_a_tile(tool, rng):
    samples = rng.integers(0, 256, (3, 5), dtype=np.uint8)  # odd sides: nothing is demosaiced
    (tool.folder / "in.png").write_bytes(png_bytes(samples))
    tool.succeeds("convert", "in.png", "out.png", "--from", "raw8", "--to", "raw16")
    assert np.array_equal(read_png(tool.folder / "out.png"), samples.astype(np.uint16) * 257)


@pytest.mark.parametrize("tile", TILES)
@pytest.mark.parametrize("method", METHODS)
@pytest.mark.parametrize("raw", ["raw8", "raw12", "raw16"])
def test_a_flat_colour_survives_the_mosaic(tool, tile, method, raw):
    picture = flat(16, 20, [200, 90, 30])
    (tool.folder / "in.png").write_bytes(png_bytes(picture))
    tool.succeeds("mosaic", "in.png", "mosaic.raw", "--tile", tile, "--to", raw)
    tool.succeeds("convert", "mosaic.raw", "out.png", "--from", raw, "--width", 20, "--height", 16,
                  "--tile", tile, "--method", method, "--to", "bgru")
    expected = np.dstack([picture, np.full((16, 20), 255, np.uint8)])
    assert np.abs(read_png(tool.folder / "out.png").astype(int) - expected).max() <= (raw != "raw8")


@pytest.mark.parametrize("tile", TILES)
def test_the_camera_name_of_a_mosaic_says_its_tile(tool, colours, tile):
    (tool.folder / "in.png").write_bytes(png_bytes(colours))
    tool.succeeds("mosaic", "in.png", "mosaic.png", "--tile", tile)
    tool.succeeds("convert", "mosaic.png", "a.png", "--from", "raw8", "--tile", tile, "--to", "rgb8")
    other = "rggb" if tile == "bggr" else "bggr"
    for name in CAMERA_NAMES[tile]:
        tool.succeeds("convert", "mosaic.png", "b.png", "--from", name, "--to", "rgb8")
        assert (tool.folder / "a.png").read_bytes() == (tool.folder / "b.png").read_bytes()
        tool.succeeds("convert", "mosaic.png", "b.png", "--from", name, "--tile", "none", "--to", "rgb8")
        message = tool.fails(2, "convert", "mosaic.png", "c.png", "--from", name, "--tile", other, "--to", "rgb8")
        assert tile in message and other in message


def test_the_method_reaches_12_bit_mosaics(tool, rng):
    """raw12 itself hands no method on to the demosaicing, so the tool unpacks it first."""
    (tool.folder / "in.raw").write_bytes(rng.bytes(32 * 32 * 3 // 2))
    shape = ["--width", 32, "--height", 32]
    results = {}
    for method in METHODS:
        tool.succeeds("convert", "in.raw", "raw16.raw", "--from", "raw12", *shape, "--to", "raw16")
        tool.succeeds("convert", "raw16.raw", "a.png", "--from", "raw16", *shape, "--tile", "rggb",
                      "--method", method, "--to", "rgb16")
        tool.succeeds("convert", "in.raw", "b.png", "--from", "raw12", *shape, "--tile", "rggb",
                      "--method", method, "--to", "rgb16")
        results[method] = (tool.folder / "b.png").read_bytes()
        assert (tool.folder / "a.png").read_bytes() == results[method]
    assert len({results[method] for method in ["nearest", "edge", "hq_linear"]}) == 3


@pytest.mark.parametrize("how", [["--tile", "none"], ["--tile", "rggb", "--method", "none"]])
def test_without_colour_processing_the_samples_are_grey(tool, rng, how):
    samples = rng.integers(0, 256, (5, 7), dtype=np.uint8)  # odd sides are fine
    (tool.folder / "in.png").write_bytes(png_bytes(samples))
    tool.succeeds("convert", "in.png", "out.ppm", "--from", "raw8", *how, "--to", "rgb8")
    assert np.array_equal(read_pnm(tool.folder / "out.ppm"), np.dstack([samples] * 3))

    deep = rng.integers(0, 65536, (5, 7), dtype=np.uint16)
    (tool.folder / "in.png").write_bytes(png_bytes(deep))
    tool.succeeds("convert", "in.png", "out.ppm", "--from", "raw16", *how, "--to", "rgb16")
    assert np.array_equal(read_pnm(tool.folder / "out.ppm"), np.dstack([deep] * 3))

    (tool.folder / "in.raw").write_bytes(pack12(np.array([0x123, 0xabc])))
    tool.succeeds("convert", "in.raw", "out.pgm", "--from", "raw12", "--width", 2, "--height", 1, *how,
                  "--to", "mono8")
    assert read_pnm(tool.folder / "out.pgm").tolist() == [[0x12, 0xab]]


@pytest.mark.parametrize("width, height", [(3, 4), (4, 3), (3, 3), (1, 1)])
@pytest.mark.parametrize("raw", ["raw8", "raw12", "raw16"])
@pytest.mark.parametrize("target", ["rgb8", "bgru", "mono8", "yuv411"])
def test_odd_sides_are_refused_where_colour_is_made(tool, width, height, raw, target):
    size = {"raw8": width * height, "raw16": 2 * width * height, "raw12": (width * height + 1) // 2 * 3}[raw]
    (tool.folder / "in.raw").write_bytes(bytes(size))
    message = tool.fails(1, "convert", "in.raw", "out.raw", "--from", raw, "--width", width, "--height", height,
                         "--tile", "rggb", "--to", target)
    assert "even" in message and f"{width} x {height}" in message


def test_a_raw_source_must_say_its_tile(tool, colours):
    (tool.folder / "in.png").write_bytes(png_bytes(colours[..., 0]))
    message = tool.fails(2, "convert", "in.png", "out.png", "--from", "raw8", "--to", "rgb8")
    for tile in TILES + ["none"]:
        assert tile in message


def test_raw_options_are_refused_where_they_do_nothing(tool, colours):
    (tool.folder / "in.png").write_bytes(png_bytes(colours[..., 0]))
    assert "--from raw8" in tool.fails(2, "convert", "in.png", "out.png", "--tile", "rggb", "--to", "rgb8")
    assert "--method" in tool.fails(2, "convert", "in.png", "out.png", "--method", "edge", "--to", "rgb8")
    assert "--method" in tool.fails(2, "convert", "in.png", "out.png", "--from", "raw8", "--method", "edge",
                                    "--to", "raw16")


def test_wrong_mosaics(tool, colours):
    (tool.folder / "in.png").write_bytes(png_bytes(colours))
    assert "rggb, grbg, gbrg, bggr" in tool.fails(2, "mosaic", "in.png", "out.png", "--tile", "rgbg")
    assert "rggb" in tool.fails(2, "mosaic", "in.png", "out.png", "--tile", "none")
    assert "--tile" in tool.fails(2, "mosaic", "in.png", "out.png")
    assert "raw16" in tool.fails(2, "mosaic", "in.png", "out.png", "--tile", "rggb", "--to", "mono8")
    assert ".raw" in tool.fails(1, "mosaic", "in.png", "out.png", "--tile", "rggb", "--to", "raw12")
    assert "mosaic" in tool.fails(1, "convert", "in.png", "out.png", "--to", "raw8")
    assert "rgb8 or bgr" in tool.fails(1, "convert", "in.png", "out.png", "--from", "raw8", "--tile", "rggb",
                                       "--to", "rgb8")
