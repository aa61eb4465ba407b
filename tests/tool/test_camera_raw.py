"""Raw files of cameras. Synthetic ones are always tested; a real one where KORVEX2_DATA, or the folder
shared/data beside the sources, has it."""

import os
import zlib
from pathlib import Path

import numpy as np
import pytest

from pictures import (ASCII, BYTE, CFA, LINEAR_RAW, SHORT, dng_bytes, lossless_jpeg, mosaic, png_bytes, read_png,
                      read_pnm, tiff_blocks, tiff_bytes)

DATA = Path(os.environ.get("KORVEX2_DATA", Path(__file__).parents[3] / "shared" / "data"))
REAL = DATA / "raw" / "tinydng_colorchart.dng"
UNPACKED = DATA / "raw" / "tinydng_colorchart_1734x1156_14in16_RGGB.raw"
PATTERNS = {"rggb": [0, 1, 1, 2], "grbg": [1, 0, 2, 1], "gbrg": [1, 2, 0, 1], "bggr": [2, 1, 1, 0]}
AREAS = {"all": None, "even margins": [4, 6, 36, 60], "odd margins": [3, 5, 37, 61], "odd sides": [3, 5, 36, 60]}


@pytest.fixture
def real():
    if not (REAL.exists() and UNPACKED.exists()):
        pytest.skip(f"SKIPPED: {REAL} is missing; set KORVEX2_DATA to the folder that holds raw/")
    return REAL


@pytest.fixture
def samples(rng):
    return rng.integers(0, 16384, (40, 64), dtype=np.uint16)


def test_the_active_area_of_a_real_file_is_what_another_reader_unpacked(tool, real):
    said = tool.succeeds("convert", real, "out.raw", "--to", "raw16")
    assert "1734 x 1156, raw16 rggb" in said
    assert (tool.folder / "out.raw").read_bytes() == UNPACKED.read_bytes()


def test_a_real_file_becomes_the_picture_of_its_mosaic(tool, real):
    tool.succeeds("convert", real, "a.png", "--method", "edge", "--to", "rgb16")
    tool.succeeds("convert", UNPACKED, "b.png", "--from", "raw16", "--width", 1734, "--height", 1156, "--tile", "rggb",
                  "--method", "edge", "--to", "rgb16")
    assert (tool.folder / "a.png").read_bytes() == (tool.folder / "b.png").read_bytes()


def test_a_truncated_real_file(tool, real):
    whole = real.read_bytes()
    for length in (100, 1000, 20000, len(whole) // 2, len(whole) - 1000):
        (tool.folder / "in.dng").write_bytes(whole[:length])
        assert "in.dng" in tool.fails(1, "convert", "in.dng", "out.png", "--to", "rgb8")


@pytest.mark.parametrize("area", AREAS)
@pytest.mark.parametrize("tile", PATTERNS)
@pytest.mark.parametrize("order", "<>")
def test_samples_tile_and_active_area(tool, samples, tile, area, order):
    (tool.folder / "in.dng").write_bytes(dng_bytes(samples, PATTERNS[tile], AREAS[area], order=order))
    top, left, bottom, right = AREAS[area] or [0, 0, 40, 64]
    if top % 2 == 1:  # LibRaw begins at even places of the sensor: one later, in row and column
        top, left, tile = top + 1, left + 1, tile[::-1]
    said = tool.succeeds("convert", "in.dng", "out.raw", "--to", "raw16")
    assert f"({right - left} x {bottom - top}, raw16 {tile})" in said
    assert (tool.folder / "out.raw").read_bytes() == samples[top:bottom, left:right].astype("<u2").tobytes()


@pytest.mark.parametrize("tile", PATTERNS)
def test_the_tile_of_the_file_makes_the_colours(tool, tile):
    flat = np.broadcast_to(np.array([5000, 9000, 12000], np.uint16), (32, 48, 3))
    (tool.folder / "in.dng").write_bytes(dng_bytes(mosaic(flat, tile), PATTERNS[tile]))
    tool.succeeds("convert", "in.dng", "out.png", "--to", "rgb16")
    assert np.array_equal(read_png(tool.folder / "out.png"), flat)
    tool.succeeds("convert", "in.dng", "same.png", "--tile", tile, "--to", "rgb16")
    assert (tool.folder / "same.png").read_bytes() == (tool.folder / "out.png").read_bytes()


def test_another_tile_is_refused_and_none_is_grey(tool, samples):
    (tool.folder / "in.dng").write_bytes(dng_bytes(samples, PATTERNS["grbg"]))
    message = tool.fails(1, "convert", "in.dng", "out.png", "--tile", "bggr", "--to", "rgb16")
    assert "grbg" in message and "bggr" in message
    tool.succeeds("convert", "in.dng", "out.pgm", "--tile", "none", "--to", "mono16")
    assert np.array_equal(read_pnm(tool.folder / "out.pgm"), samples)
    assert "raw16" in tool.fails(1, "convert", "in.dng", "out.png", "--from", "raw8", "--to", "rgb8")
    assert "mosaic already" in tool.fails(1, "mosaic", "in.dng", "out.png", "--tile", "rggb")


def test_an_odd_active_area_is_refused_where_colour_is_made(tool, samples):
    (tool.folder / "in.dng").write_bytes(dng_bytes(samples, PATTERNS["rggb"], [0, 0, 39, 63]))
    message = tool.fails(1, "convert", "in.dng", "out.png", "--to", "rgb8")
    assert "63 x 39" in message and "even number of rows" in message and "even number of columns" in message


def test_truncated_at_many_lengths(tool, samples):
    whole = dng_bytes(samples, PATTERNS["rggb"])
    for length in [*range(0, 64), *range(64, len(whole), 97), *range(len(whole) - 300, len(whole), 7)]:
        (tool.folder / "in.dng").write_bytes(whole[:length])
        assert "in.dng" in tool.fails(1, "convert", "in.dng", "out.png", "--to", "rgb8")


LOSSLESS = 7
TILES = {"one strip": None, "one tile": (40, 64), "tiles": (16, 32), "a column of tiles": (16, 64)}


def compressed(samples, tile=None, claim=None, end=b"\xff\xd9", cut=None, order="<", components=1):
    """A DNG of lossless JPEG. `cut` is the shape that is left of each tile."""
    parts = [part[:, :, 0] for part in tiff_blocks(samples[:, :, None], tile, len(samples))]
    rows, columns = cut or (None, None)
    blocks = [lossless_jpeg(part[:rows, :columns], claim, end, components) for part in parts]
    return dng_bytes(samples, PATTERNS["rggb"], order=order, compression=LOSSLESS, tile=tile, blocks=blocks)


@pytest.mark.parametrize("order", "<>")
@pytest.mark.parametrize("tile", TILES)
def test_lossless_jpeg(tool, samples, tile, order):
    (tool.folder / "in.dng").write_bytes(compressed(samples, TILES[tile], order=order))
    tool.succeeds("convert", "in.dng", "out.raw", "--to", "raw16")
    assert (tool.folder / "out.raw").read_bytes() == samples.astype("<u2").tobytes()


@pytest.mark.parametrize("lie", [
    {"cut": (8, 32)}, {"cut": (16, 8)}, {"cut": (1, 1)},  # less than a tile
    {"claim": (1 << 15, 64)}, {"claim": (65535, 65535)}, {"claim": (0, 32)},  # more than was compressed
    {"end": b""}, {"end": b"\xff"}, {"end": b"\xff\xd8"}])  # and no end
@pytest.mark.parametrize("tile", ["one strip", "tiles"])
def test_lossless_jpeg_of_another_size_than_its_tile(tool, samples, tile, lie):
    (tool.folder / "in.dng").write_bytes(compressed(samples, TILES[tile], **lie))
    message = tool.fails(1, "convert", "in.dng", "out.raw", "--to", "raw16")
    assert "in.dng is a damaged raw file" in message


@pytest.mark.parametrize("tile, components", [
    (None, 2), (None, 4), ((40, 72), 2), ((16, 24), 2), ((16, 36), 4), ((16, 48), 2), ((16, 48), 1), ((48, 72), 1),
    ((96, 72), 1), ((96, 72), 2), ((48, 24), 1)])
def test_components_and_tiles_beyond_the_picture(tool, rng, tile, components):
    samples = rng.integers(0, 16384, (40, 72), dtype=np.uint16)
    (tool.folder / "in.dng").write_bytes(compressed(samples, tile, components=components))
    tool.succeeds("convert", "in.dng", "out.raw", "--to", "raw16")
    assert (tool.folder / "out.raw").read_bytes() == samples.astype("<u2").tobytes()


@pytest.mark.parametrize("tile, components", [
    ((16, 36), 2), ((40, 36), 2), ((16, 24), 3),  # as many columns of tiles as components
    ((40, 80), 1), ((16, 80), 1), ((40, 144), 1), ((16, 144), 2), ((40, 256), 1)])  # wider than the picture
def test_tiles_that_libraw_misplaces_are_refused(tool, rng, tile, components):
    samples = rng.integers(0, 16384, (40, 72), dtype=np.uint16)
    (tool.folder / "in.dng").write_bytes(compressed(samples, tile, components=components))
    message = tool.fails(1, "convert", "in.dng", "out.raw", "--to", "raw16")
    assert "LibRaw puts samples" in message and "in wrong places" in message and "damaged" not in message


@pytest.mark.parametrize("width", [80, 144])
def test_a_strip_of_longer_lines_is_refused(tool, rng, width):
    samples = rng.integers(0, 16384, (40, width), dtype=np.uint16)
    data = dng_bytes(samples[:, :72], PATTERNS["rggb"], compression=LOSSLESS, blocks=[lossless_jpeg(samples)])
    (tool.folder / "in.dng").write_bytes(data)
    assert "in wrong places" in tool.fails(1, "convert", "in.dng", "out.raw", "--to", "raw16")


def test_tiles_that_claim_longer_lines_are_refused(tool, samples):
    (tool.folder / "in.dng").write_bytes(compressed(samples, (16, 32), claim=(16, 64)))
    assert "in wrong places" in tool.fails(1, "convert", "in.dng", "out.raw", "--to", "raw16")


@pytest.mark.parametrize("tile", [None, (16, 32)])
def test_several_rows_in_a_line(tool, samples, tile):
    parts = [part[:, :, 0] for part in tiff_blocks(samples[:, :, None], tile, len(samples))]
    blocks = [lossless_jpeg(part.reshape(len(part) // 2, -1)) for part in parts]
    data = dng_bytes(samples, PATTERNS["rggb"], compression=LOSSLESS, tile=tile, blocks=blocks)
    (tool.folder / "in.dng").write_bytes(data)
    tool.succeeds("convert", "in.dng", "out.raw", "--to", "raw16")
    assert (tool.folder / "out.raw").read_bytes() == samples.astype("<u2").tobytes()


@pytest.mark.parametrize("tile", TILES)
@pytest.mark.parametrize("end", [b"\xff\xff\xd9", b"\xff\xff\xff\xd9"])
def test_bytes_that_fill_up_before_the_end(tool, samples, tile, end):
    (tool.folder / "in.dng").write_bytes(compressed(samples, TILES[tile], end=end))
    tool.succeeds("convert", "in.dng", "out.raw", "--to", "raw16")
    assert (tool.folder / "out.raw").read_bytes() == samples.astype("<u2").tobytes()


CANON = [(271, ASCII, b"Canon"), (272, ASCII, b"Canon EOS 5D"), (33421, SHORT, [2, 2]), (33422, BYTE, [0, 1, 1, 2])]


def not_dng(stream, shape, fields=CANON):
    return tiff_bytes(np.zeros(shape, np.uint16), CFA, rows_per_strip=shape[0], extra=fields, compression=LOSSLESS,
                      blocks=[stream])


@pytest.mark.parametrize("options", [{"components": 2}, {"components": 4}, {"gap": b"\0"}, {"gap": b"\x55"}])
def test_lossless_jpeg_outside_dng(tool, samples, options):
    (tool.folder / "in.cr2").write_bytes(not_dng(lossless_jpeg(samples, **options), samples.shape))
    tool.succeeds("convert", "in.cr2", "out.raw", "--to", "raw16")
    assert (tool.folder / "out.raw").read_bytes() == samples.astype("<u2").tobytes()


@pytest.mark.parametrize("rows, options", [
    (8, {"components": 2}), (39, {"components": 2}), (1, {"gap": b"\0"}), (40, {})])
def test_lossless_jpeg_outside_dng_of_which_libraw_decodes_too_little(tool, samples, rows, options):
    stream = lossless_jpeg(samples[:rows], **options)
    (tool.folder / "in.cr2").write_bytes(not_dng(stream, samples.shape) + bytes(4000))
    assert "in.cr2 is a damaged raw file" in tool.fails(1, "convert", "in.cr2", "out.raw", "--to", "raw16")


@pytest.mark.parametrize("maker", [b"Canon", b"Hasselblad"])
def test_lossless_jpeg_outside_dng_that_has_no_samples(tool, rng, samples, maker):
    stream = lossless_jpeg(samples, components=2)
    header = stream[:stream.index(b"\xff\xda")]
    for block in (rng.bytes(4000), header + bytes(4000)):
        (tool.folder / "in.cr2").write_bytes(not_dng(block, samples.shape, [(271, ASCII, maker), *CANON[1:]]))
        assert "in.cr2 is a damaged raw file" in tool.fails(1, "convert", "in.cr2", "out.raw", "--to", "raw16")


def test_codes_without_their_table(tool, rng, samples):
    """LibRaw would decode with what its memory held before."""
    data = tiff_bytes(samples, CFA, rows_per_strip=40, extra=CANON, compression=65535, blocks=[rng.bytes(8000)])
    (tool.folder / "in.nef").write_bytes(data)
    assert "table of its codes is missing" in tool.fails(1, "convert", "in.nef", "out.raw", "--to", "raw16")


@pytest.mark.parametrize("tile", TILES)
def test_truncated_lossless_jpeg(tool, samples, tile):
    whole = compressed(samples, TILES[tile])
    for length in range(0, len(whole), len(whole) // 23):
        (tool.folder / "in.dng").write_bytes(whole[:length])
        assert "in.dng" in tool.fails(1, "convert", "in.dng", "out.raw", "--to", "raw16")


def test_lossless_jpeg_whose_samples_end_early(tool, samples):
    stream = lossless_jpeg(samples)
    for length in (60, len(stream) // 2, len(stream) - 20):
        for end in (b"", b"\xff\xd9"):
            data = dng_bytes(samples, PATTERNS["rggb"], compression=LOSSLESS, blocks=[stream[:length] + end])
            (tool.folder / "in.dng").write_bytes(data)
            assert "in.dng is a damaged raw file" in tool.fails(1, "convert", "in.dng", "out.raw", "--to", "raw16")


def test_tiles_that_share_a_stream(tool, samples):
    """Else a small file could ask for any number of them."""
    data = compressed(samples, (16, 32))
    offset = (8).to_bytes(4, "little")
    at = data.rindex(offset)  # of the first tile
    (tool.folder / "in.dng").write_bytes(data[:at] + 6 * offset + data[at + 24:])
    assert "in.dng is a damaged raw file" in tool.fails(1, "convert", "in.dng", "out.raw", "--to", "raw16")


@pytest.mark.parametrize("compression, tile", [(1, None), (LOSSLESS, None), (LOSSLESS, (256, 256)), (8, (256, 256))])
def test_a_small_file_that_claims_to_be_large_takes_no_memory(tool, compression, tile):
    if "sanitizer" in tool.succeeds("info"):
        pytest.skip("SKIPPED: sanitizers need memory of their own")
    stream = lossless_jpeg(np.zeros((16, 64), np.uint16))
    data = dng_bytes(np.broadcast_to(np.uint16(0), (15000, 30000)), PATTERNS["rggb"], compression=compression,
                     tile=tile, blocks=[stream])
    (tool.folder / "in.dng").write_bytes(data)
    code, memory = tool.takes("convert", "in.dng", "out.raw", "--to", "raw16")
    assert code == 1 and memory < 500 << 20


@pytest.mark.parametrize("compression", [1, 8])
def test_floating_point_samples_are_refused(tool, samples, compression):
    block = zlib.compress(samples.tobytes()) if compression == 8 else samples.tobytes()
    data = dng_bytes(samples, PATTERNS["rggb"], compression=compression, tile=(40, 64), blocks=[block],
                     fields=[(339, SHORT, [3])])
    (tool.folder / "in.dng").write_bytes(data)
    assert "floating-point" in tool.fails(1, "convert", "in.dng", "out.raw", "--to", "raw16")


def test_files_that_are_no_raw_files(tool, rng):
    picture = png_bytes(np.zeros((40, 40, 3), np.uint8))
    for data in (b"", b"II*\0", picture, b"P5 1 1 255\n1", bytes(100000), rng.bytes(100000)):
        for name in ("in.dng", "in.NEF", "in.cr2", "in.arw"):
            (tool.folder / name).write_bytes(data)
            assert name in tool.fails(1, "convert", name, "out.png", "--to", "rgb8")


def test_sensors_without_a_bayer_mosaic_are_refused(tool, samples, rng):
    six_by_six = [1, 1, 0, 1, 1, 2,
                  1, 1, 2, 1, 1, 0,
                  2, 0, 1, 0, 2, 1,
                  1, 1, 2, 1, 1, 0,
                  1, 1, 0, 1, 1, 2,
                  0, 2, 1, 2, 0, 1]
    linear = rng.integers(0, 16384, (40, 64, 3), dtype=np.uint16)
    for data in (dng_bytes(samples, six_by_six, repeat=(6, 6)), dng_bytes(linear, None, photometric=LINEAR_RAW)):
        (tool.folder / "in.dng").write_bytes(data)
        assert "no Bayer mosaic" in tool.fails(1, "convert", "in.dng", "out.png", "--to", "rgb8")


def test_help_says_that_nothing_is_developed(tool):
    assert "look dark" in tool.succeeds("convert", "--help")
