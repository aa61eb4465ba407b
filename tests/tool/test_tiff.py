"""TIFF: as PIL writes it, in the variants that PIL does not write, and as PIL and libtiff read it."""

import io

import numpy as np
import pytest
from PIL import Image

from conftest import some
from pictures import MIN_IS_WHITE, SHORT, dng_bytes, mosaic, png_bytes, read_png, read_pnm, tiff_bytes

NAMES = {(1, 8): "mono8", (3, 8): "rgb8", (4, 8): "rgbu", (1, 16): "mono16", (3, 16): "rgb16", (4, 16): "bgru16"}
DTYPES = {8: np.uint8, 16: np.uint16}
LAYOUTS = {"strips": {}, "one strip": {"rows_per_strip": 1000}, "tiles": {"tile": (16, 16)},
           "tall tiles": {"tile": (48, 16)}, "planes": {"planar": True},
           "tiles of planes": {"planar": True, "tile": (16, 32)}}


def random(rng, channels, depth, shape=(23, 37)):
    shape = shape if channels == 1 else (*shape, channels)
    return rng.integers(0, 2 ** depth, shape, dtype=DTYPES[depth])


@pytest.mark.parametrize("compression", ["raw", "packbits", "tiff_lzw", "tiff_adobe_deflate"])
@pytest.mark.parametrize("mode, target", [("L", "mono8"), ("RGB", "rgb8"), ("RGBA", "rgbu")])
@pytest.mark.parametrize("extension", ["tif", "TIFF"])
def test_a_tiff_of_pil(tool, rng, mode, target, compression, extension):
    samples = random(rng, len(mode), 8)
    Image.fromarray(samples, mode).save(tool.folder / f"in.{extension}", format="TIFF", compression=compression)
    tool.succeeds("convert", f"in.{extension}", "out.png", "--to", target)
    assert np.array_equal(read_png(tool.folder / "out.png"), samples)


def test_a_16_bit_grey_tiff_of_pil(tool, rng):
    samples = random(rng, 1, 16)
    Image.fromarray(samples, "I;16").save(tool.folder / "in.tif")
    tool.succeeds("convert", "in.tif", "out.png", "--to", "mono16")
    assert np.array_equal(read_png(tool.folder / "out.png"), samples)


@pytest.mark.parametrize("layout", LAYOUTS)
@pytest.mark.parametrize("order", "<>")
@pytest.mark.parametrize("channels, depth", NAMES)
def test_every_layout_and_byte_order(tool, rng, channels, depth, order, layout):
    samples = random(rng, channels, depth)
    (tool.folder / "in.tif").write_bytes(tiff_bytes(samples, order=order, **LAYOUTS[layout]))
    with Image.open(tool.folder / "in.tif") if depth == 8 else Image.new("L", (37, 23)) as picture:
        assert picture.size == (37, 23)  # others can open it, too
    tool.succeeds("convert", "in.tif", "out.png", "--to", NAMES[channels, depth])
    assert np.array_equal(read_png(tool.folder / "out.png"), samples)


@pytest.mark.parametrize("depth", [8, 16])
def test_grey_with_white_as_zero_is_inverted(tool, rng, depth):
    samples = random(rng, 1, depth)
    (tool.folder / "in.tif").write_bytes(tiff_bytes(samples, photometric=MIN_IS_WHITE))
    tool.succeeds("convert", "in.tif", "out.pgm", "--to", NAMES[1, depth])
    assert np.array_equal(read_pnm(tool.folder / "out.pgm"), ~samples)


def test_opaque_grey_with_alpha_is_grey(tool, rng):
    samples = random(rng, 2, 8)
    samples[..., 1] = 255
    (tool.folder / "in.tif").write_bytes(tiff_bytes(samples))
    tool.succeeds("convert", "in.tif", "out.pgm", "--to", "mono8")
    assert np.array_equal(read_pnm(tool.folder / "out.pgm"), samples[..., 0])


@pytest.mark.parametrize("tile", ["rggb", "grbg", "gbrg", "bggr"])
@pytest.mark.parametrize("raw, depth, target", [("raw8", 8, "rgb8"), ("raw16", 16, "rgb16")])
def test_a_grey_tiff_can_be_a_mosaic(tool, tile, raw, depth, target):
    flat = np.broadcast_to(np.array([50, 90, 200], DTYPES[depth]) << (depth - 8), (12, 16, 3))
    (tool.folder / "in.tif").write_bytes(tiff_bytes(mosaic(flat, tile)))
    tool.succeeds("convert", "in.tif", "out.png", "--from", raw, "--tile", tile, "--to", target)
    assert np.array_equal(read_png(tool.folder / "out.png"), flat)


def test_the_first_picture_counts(tool, rng):
    first, second = (Image.fromarray(random(rng, 3, 8)) for _ in range(2))
    first.save(tool.folder / "in.tif", save_all=True, append_images=[second])
    tool.succeeds("convert", "in.tif", "out.png", "--to", "rgb8")
    assert np.array_equal(read_png(tool.folder / "out.png"), np.asarray(first))


@pytest.mark.parametrize("layout", LAYOUTS)
def test_truncated_at_every_length(tool, rng, layout):
    whole = tiff_bytes(random(rng, 3, 8, (5, 4)), **LAYOUTS[layout])
    for length in some(range(0, len(whole), 1 if len(whole) < 400 else 13)):
        (tool.folder / "in.tif").write_bytes(whole[:length])
        message = tool.fails(1, "convert", "in.tif", "out.png", "--to", "mono8")
        assert "in.tif" in message and "TIFF" in message


@pytest.mark.parametrize("compression", ["raw", "tiff_lzw", "tiff_adobe_deflate"])
def test_truncated_samples(tool, rng, compression):
    Image.fromarray(random(rng, 3, 8)).save(tool.folder / "in.tif", compression=compression)
    whole = (tool.folder / "in.tif").read_bytes()
    for length in (len(whole) // 2, len(whole) - 100, len(whole) - 1):
        (tool.folder / "in.tif").write_bytes(whole[:length])
        result = tool.run("convert", "in.tif", "out.png", "--to", "rgb8")
        if result.returncode == 0:  # nothing that counts was at the end
            assert length == len(whole) - 1
        else:
            assert result.stderr.count("\n") == 1 and not (tool.folder / "out.png").exists()


def test_any_damaged_byte_fails_or_is_read_whole(tool, rng):
    whole = tiff_bytes(random(rng, 3, 8, (5, 4)))
    for at in some(range(len(whole))):
        for flip in (0x01, 0x80, 0xff):
            (tool.folder / "in.tif").write_bytes(whole[:at] + bytes([whole[at] ^ flip]) + whole[at + 1:])
            result = tool.run("convert", "in.tif", "out.pgm", "--to", "mono8")
            assert result.returncode in (0, 1) and result.stderr.count("\n") == result.returncode, result.stderr
            assert (tool.folder / "out.pgm").exists() == (result.returncode == 0)
            (tool.folder / "out.pgm").unlink(missing_ok=True)


@pytest.mark.parametrize("mode, hint", [("1", "1 bits"), ("P", "palette"), ("CMYK", "inks"), ("F", "floating-point"),
                                        ("I", "signed"), ("LAB", "L*a*b*")])
def test_other_kinds_are_refused_by_name(tool, mode, hint):
    Image.new(mode, (8, 6)).save(tool.folder / "in.tif")
    message = tool.fails(1, "convert", "in.tif", "out.png", "--to", "rgb8")
    assert hint in message and "8 and 16 bits" in message


def test_wrong_files(tool, rng):
    for data in (b"", b"II", b"II*\0", b"MM\0*\0\0\0\x08", b"II*\0\xff\xff\xff\xff", b"P5 1 1 255\n1"):
        (tool.folder / "in.tif").write_bytes(data)
        assert "not a TIFF file" in tool.fails(1, "convert", "in.tif", "out.png", "--to", "rgb8")
    (tool.folder / "in.tif").write_bytes(tiff_bytes(random(rng, 3, 8), extra=[(65000, SHORT, [1, 2, 3])]))
    tool.succeeds("convert", "in.tif", "out.png", "--to", "rgb8")  # tags that nobody knows are no fault
    (tool.folder / "raw.tif").write_bytes(dng_bytes(random(rng, 1, 16, (32, 32)), [0, 1, 1, 2]))
    assert ".dng" in tool.fails(1, "convert", "raw.tif", "out.png", "--to", "rgb8")


@pytest.mark.parametrize("output", ["out.dng", "out.nef"])
def test_read_only(tool, output):
    message = tool.fails(1, "convert", "missing.png", output, "--to", "rgb8")
    assert "read only" in message and ".png" in message and ".dng" not in message.split("end in")[1]


@pytest.mark.parametrize("channels, depth", NAMES)
@pytest.mark.parametrize("shape", [(1, 1), (23, 37), (300, 401)])
def test_what_is_written(tool, rng, channels, depth, shape):
    samples = random(rng, channels, depth, shape)
    (tool.folder / "in.png").write_bytes(png_bytes(samples))
    tool.succeeds("convert", "in.png", "out.tif", "--to", NAMES[channels, depth])
    tool.succeeds("convert", "out.tif", "back.png", "--to", NAMES[channels, depth])
    assert np.array_equal(read_png(tool.folder / "back.png"), samples)
    with Image.open(tool.folder / "out.tif") as picture:
        assert picture.size == shape[::-1] and picture.tag_v2[258] == (depth,) * channels
        if depth == 8 or channels == 1:  # PIL knows no 16-bit colour
            assert np.array_equal(np.asarray(picture), samples)


@pytest.mark.parametrize("name, channels", [("bgr", 3), ("bgru", 4)])
def test_blue_first_formats_are_written_as_rgb(tool, rng, name, channels):
    samples = random(rng, channels, 8)
    (tool.folder / "in.png").write_bytes(png_bytes(samples))
    tool.succeeds("convert", "in.png", "out.tiff", "--to", name)
    with Image.open(tool.folder / "out.tiff") as picture:
        assert np.array_equal(np.asarray(picture), samples)


JPEG = 7


def jpeg(samples):
    stream = io.BytesIO()
    Image.fromarray(samples).save(stream, "JPEG", quality=100)
    return stream.getvalue()


@pytest.mark.parametrize("layout", [{"tile": (64, 64)}, {"rows_per_strip": 64}])
def test_jpeg_is_read_as_it_stands(tool, layout):
    flat = np.full((64, 64), 77, np.uint8)
    (tool.folder / "in.tif").write_bytes(tiff_bytes(flat, compression=JPEG, blocks=[jpeg(flat)], **layout))
    tool.succeeds("convert", "in.tif", "out.png", "--to", "mono8")
    assert np.array_equal(read_png(tool.folder / "out.png"), flat)


@pytest.mark.parametrize("layout", [{"tile": (64, 64)}, {"rows_per_strip": 64}])
@pytest.mark.parametrize("shape", [(16, 64), (64, 40), (8, 8)])
def test_a_jpeg_smaller_than_its_block_is_damage(tool, layout, shape):
    picture = np.zeros((64, 64), np.uint8)
    data = tiff_bytes(picture, compression=JPEG, blocks=[jpeg(picture[:shape[0], :shape[1]])], **layout)
    (tool.folder / "in.tif").write_bytes(data)
    message = tool.fails(1, "convert", "in.tif", "out.png", "--to", "mono8")
    assert message.startswith("in.tif is a damaged TIFF file: ") and "64x64" in message


@pytest.mark.parametrize("layout", [{"tile": (64, 64)}, {"rows_per_strip": 64}])
@pytest.mark.parametrize("part", [0.5, 0.9])
def test_a_jpeg_cut_short_is_damage(tool, rng, layout, part):
    noise = random(rng, 1, 8, (64, 64))
    stream = jpeg(noise)
    data = tiff_bytes(noise, compression=JPEG, blocks=[stream[:int(len(stream) * part)]], **layout)
    (tool.folder / "in.tif").write_bytes(data)
    assert "in.tif is a damaged TIFF file: " in tool.fails(1, "convert", "in.tif", "out.png", "--to", "mono8")


@pytest.mark.parametrize("layout", [{"tile": (64, 64)}, {"rows_per_strip": 64}])
@pytest.mark.parametrize("surplus", [b"\0\0\0\0", b"\x11\x22" * 4])
def test_more_bytes_than_a_jpeg_needs_are_no_damage(tool, rng, layout, surplus):
    noise = random(rng, 1, 8, (64, 64))
    seen = []
    for more in (b"", surplus):
        stream = jpeg(noise)
        data = tiff_bytes(noise, compression=JPEG, blocks=[stream[:-2] + more + stream[-2:]], **layout)
        (tool.folder / "in.tif").write_bytes(data)
        tool.succeeds("convert", "in.tif", "out.png", "--to", "mono8")
        seen.append(read_png(tool.folder / "out.png"))
    assert np.array_equal(*seen)


@pytest.mark.parametrize("side", [1 << 16, 1 << 20, 1 << 31])
@pytest.mark.parametrize("compression", [1, 8])
def test_tiles_that_no_file_could_fill_are_named(tool, side, compression):
    data = tiff_bytes(np.zeros((4, 4), np.uint8), tile=(side, side), blocks=[b"abc"], compression=compression)
    (tool.folder / "in.tif").write_bytes(data)
    message = tool.fails(1, "convert", "in.tif", "out.png", "--to", "mono8")
    assert message.startswith("in.tif is a damaged TIFF file: ")
    assert message.endswith(f"{len(data)} bytes cannot hold tiles of {side} x {side} pixels")
    assert "in.tif" in tool.fails(2, "diff", "in.tif", "in.tif")


def test_a_picture_too_large_for_a_frame_is_named(tool):
    data = tiff_bytes(np.zeros((4, 4), np.uint8), blocks=[b"abc"])
    size = (4).to_bytes(4, "little")
    for tag in (256, 257):  # both sides
        field = tag.to_bytes(2, "little") + b"\4\0\1\0\0\0"
        data = data.replace(field + size, field + (1 << 20).to_bytes(4, "little"))
    (tool.folder / "in.tif").write_bytes(data)
    assert "in.tif" in tool.fails(2, "diff", "in.tif", "in.tif")
    message = tool.fails(1, "convert", "in.tif", "out.png", "--to", "mono8")
    assert "in.tif" in message and "1048576 x 1048576" in message
