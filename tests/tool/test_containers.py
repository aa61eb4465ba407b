"""Every file format: what other programs wrote is read, what is written others can read."""

import struct

import numpy as np
import pytest
from PIL import Image, PngImagePlugin

from pictures import chunk, in_memory, png_bytes, pnm_bytes, read_png, read_pnm

SHAPES = [(1, 1), (1, 7), (5, 3), (16, 16), (37, 53)]
READERS = {".png": read_png, ".pgm": read_pnm, ".ppm": read_pnm, ".pnm": read_pnm, ".pam": read_pnm}


def random(rng, shape, channels, depth):
    shape = shape if channels == 1 else (*shape, channels)
    return rng.integers(0, 2 ** depth, shape, dtype=np.uint16 if depth == 16 else np.uint8)


@pytest.mark.parametrize("depth", [8, 16])
@pytest.mark.parametrize("channels, extensions", [
    (1, [".png", ".pgm", ".pnm", ".pam"]), (3, [".png", ".ppm", ".pnm", ".pam"]), (4, [".png", ".pam"])])
@pytest.mark.parametrize("shape", SHAPES)
def test_every_container_into_every_other_keeps_the_samples(tool, rng, shape, channels, depth, extensions):
    samples = random(rng, shape, channels, depth)
    name = {(1, 8): "mono8", (1, 16): "mono16", (3, 8): "rgb8", (3, 16): "rgb16", (4, 8): "rgbu",
            (4, 16): "bgru16"}[channels, depth]
    for source in extensions:
        write = png_bytes if source == ".png" else pnm_bytes
        (tool.folder / f"in{source}").write_bytes(write(samples))
        for target in extensions:
            tool.succeeds("convert", f"in{source}", f"out{target}", "--to", name)
            assert np.array_equal(READERS[target](tool.folder / f"out{target}"), samples)


@pytest.mark.parametrize("mode, target", [("L", "mono8"), ("RGB", "rgb8"), ("RGBA", "rgbu")])
def test_a_png_of_pil_comes_back_to_pil(tool, rng, mode, target):
    samples = random(rng, (31, 45), len(mode), 8)
    Image.fromarray(samples, mode).save(tool.folder / "in.png", optimize=True)
    tool.succeeds("convert", "in.png", "out.png", "--to", target)
    with Image.open(tool.folder / "out.png") as picture:
        assert picture.mode == mode
        assert np.array_equal(np.asarray(picture), samples)


def test_a_16_bit_grey_png_of_pil(tool, rng):
    samples = random(rng, (9, 14), 1, 16)
    Image.fromarray(samples, "I;16").save(tool.folder / "in.png")
    tool.succeeds("convert", "in.png", "out.raw", "--to", "mono16")
    assert (tool.folder / "out.raw").read_bytes() == samples.astype("<u2").tobytes()
    tool.succeeds("convert", "in.png", "out.png", "--to", "mono16")
    with Image.open(tool.folder / "out.png") as picture:
        assert np.array_equal(np.asarray(picture), samples)


@pytest.mark.parametrize("mode", ["L", "RGB"])
def test_a_pnm_of_pil_comes_back_to_pil(tool, rng, mode):
    samples = random(rng, (12, 17), len(mode), 8)
    Image.fromarray(samples, mode).save(tool.folder / "in.ppm")
    tool.succeeds("convert", "in.ppm", "out.pnm", "--to", "mono8" if mode == "L" else "rgb8")
    with Image.open(tool.folder / "out.pnm") as picture:
        assert np.array_equal(np.asarray(picture), samples)


@pytest.mark.parametrize("colours", [2, 4, 16, 256])
def test_a_palette_png_is_read_as_rgb(tool, rng, colours):
    picture = Image.new("P", (21, 10))
    palette = random(rng, (colours,), 3, 8)
    picture.putpalette(palette.tobytes())
    indices = rng.integers(0, colours, (10, 21), dtype=np.uint8)
    picture.putdata(indices.ravel().tolist())
    picture.save(tool.folder / "in.png", bits={2: 1, 4: 2, 16: 4, 256: 8}[colours])
    tool.succeeds("convert", "in.png", "out.png", "--to", "rgb8")
    assert np.array_equal(read_png(tool.folder / "out.png"), palette[indices])


def test_a_palette_png_with_transparency_is_read_as_rgbu(tool):
    picture = Image.new("P", (2, 1))
    picture.putpalette([10, 20, 30, 40, 50, 60])
    picture.putdata([0, 1])
    picture.save(tool.folder / "in.png", transparency=b"\x80\xff")
    tool.succeeds("convert", "in.png", "out.raw", "--to", "rgbu")
    assert (tool.folder / "out.raw").read_bytes() == bytes([10, 20, 30, 128, 40, 50, 60, 255])


@pytest.mark.parametrize("bits", [1, 2, 4])
def test_a_low_bit_grey_png_is_expanded_to_the_full_range(tool, bits):
    levels = 2 ** bits
    line = 0
    for value in range(8 // bits):
        line = line << bits | value % levels
    header = struct.pack(">IIBBBBB", 8 // bits, 1, bits, 0, 0, 0, 0)
    import zlib
    (tool.folder / "in.png").write_bytes(
        b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header)
        + chunk(b"IDAT", zlib.compress(bytes([0, line]))) + chunk(b"IEND", b""))
    tool.succeeds("convert", "in.png", "out.pgm", "--to", "mono8")
    expected = [value % levels * 255 // (levels - 1) for value in range(8 // bits)]
    assert read_pnm(tool.folder / "out.pgm").ravel().tolist() == expected


@pytest.mark.parametrize("depth, target", [(8, "mono8"), (16, "mono16")])
def test_opaque_grey_with_alpha_is_grey(tool, rng, depth, target):
    samples = random(rng, (6, 5), 2, depth)
    samples[..., 1] = 2 ** depth - 1
    for name, data in [("in.png", png_bytes(samples)), ("in.pam", pnm_bytes(samples))]:
        (tool.folder / name).write_bytes(data)
        assert f"{target})" in tool.succeeds("convert", name, "out.png", "--to", target)
        assert np.array_equal(read_png(tool.folder / "out.png"), samples[..., 0])


@pytest.mark.parametrize("depth, target", [(8, "rgbu"), (16, "bgru16")])
def test_transparent_grey_keeps_its_alpha(tool, rng, depth, target):
    samples = random(rng, (6, 5), 2, depth)
    samples[5, 4, 1] = 0
    for name, data in [("in.png", png_bytes(samples)), ("in.pam", pnm_bytes(samples))]:
        (tool.folder / name).write_bytes(data)
        tool.succeeds("convert", name, "out.png", "--to", target)
        assert np.array_equal(read_png(tool.folder / "out.png"), samples[..., [0, 0, 0, 1]])


@pytest.mark.parametrize("channels, depth, target", [
    (1, 8, "mono8"), (1, 16, "mono16"), (3, 8, "rgb8"), (3, 16, "rgb16"), (4, 8, "rgbu"), (4, 16, "bgru16")])
@pytest.mark.parametrize("shape", SHAPES)
def test_interlaced_png(tool, rng, shape, channels, depth, target):
    samples = random(rng, shape, channels, depth)
    (tool.folder / "in.png").write_bytes(png_bytes(samples, interlaced=True))
    tool.succeeds("convert", "in.png", "out.png", "--to", target)
    assert np.array_equal(read_png(tool.folder / "out.png"), samples)


def test_png_metadata_does_not_change_samples(tool, rng):
    samples = random(rng, (8, 8), 3, 8)
    notes = PngImagePlugin.PngInfo()
    notes.add_text("Title", "a" * 1000)
    notes.add(b"gAMA", struct.pack(">I", 100000))
    Image.fromarray(samples).save(tool.folder / "in.png", pnginfo=notes)
    tool.succeeds("convert", "in.png", "out.png", "--to", "rgb8")
    assert np.array_equal(read_png(tool.folder / "out.png"), samples)


def test_text_pnm(tool):
    (tool.folder / "in.pgm").write_text("P2 # grey\n# of two rows\n3 2\n255\n0 1 2\n253 254 255\n")
    tool.succeeds("convert", "in.pgm", "out.pgm", "--to", "mono8")
    assert read_pnm(tool.folder / "out.pgm").tolist() == [[0, 1, 2], [253, 254, 255]]
    (tool.folder / "in.ppm").write_text("P3\n1 2\n65535\n1 2 3\n65535 0 258")
    tool.succeeds("convert", "in.ppm", "out.ppm", "--to", "rgb16")
    assert read_pnm(tool.folder / "out.ppm").tolist() == [[[1, 2, 3]], [[65535, 0, 258]]]


@pytest.mark.parametrize("maximum, target", [(1, "mono8"), (100, "mono8"), (1023, "mono16"), (4095, "mono16")])
def test_other_maxima_are_scaled_to_the_full_range(tool, rng, maximum, target):
    samples = rng.integers(0, maximum + 1, (7, 11))
    samples[0, :2] = 0, maximum
    (tool.folder / "in.pgm").write_bytes(pnm_bytes(samples, maximum))
    tool.succeeds("convert", "in.pgm", "out.pgm", "--to", target)
    full = 255 if target == "mono8" else 65535
    assert np.array_equal(read_pnm(tool.folder / "out.pgm"), (samples * full + maximum // 2) // maximum)


def test_blue_first_formats_are_stored_as_rgb_and_taken_back_when_asked(tool, rng):
    for depth, formats in [(8, {"bgr": 3, "bgru": 4}), (16, {"bgr16": 3, "bgru16": 4})]:
        for name, channels in formats.items():
            samples = random(rng, (6, 9), channels, depth)
            dump = in_memory(samples[..., [2, 1, 0, 3][:channels]]).tobytes()
            (tool.folder / "in.raw").write_bytes(dump)
            tool.succeeds("convert", "in.raw", "out.png", "--from", name, "--width", 9, "--height", 6,
                          "--to", name)
            assert np.array_equal(read_png(tool.folder / "out.png"), samples)
            tool.succeeds("convert", "out.png", "out.raw", "--from", name, "--to", name)
            assert (tool.folder / "out.raw").read_bytes() == dump


@pytest.mark.parametrize("name, bits, group", [
    ("mono8", 8, 1), ("mono12", 12, 2), ("mono16", 16, 1), ("rgb8", 24, 1), ("rgbu", 32, 1), ("rgb16", 48, 1),
    ("bgr", 24, 1), ("bgru", 32, 1), ("bgr16", 48, 1), ("bgru16", 64, 1), ("yuv411", 12, 4),
    ("yuv422", 16, 2), ("yuv444", 24, 1), ("raw8", 8, 1), ("raw12", 12, 2), ("raw16", 16, 1)])
@pytest.mark.parametrize("width, height", [(1, 1), (3, 5), (8, 6)])
def test_a_dump_of_any_format_comes_back_byte_for_byte(tool, rng, name, bits, group, width, height):
    groups = -(-width * height // group)
    data = rng.bytes(groups * group * bits // 8)
    (tool.folder / "in.bin").write_bytes(data)
    tool.succeeds("convert", "in.bin", "OUT.RAW", "--from", name, "--width", width, "--height", height, "--to", name)
    assert (tool.folder / "OUT.RAW").read_bytes() == data


def test_a_dump_that_ends_within_its_last_group_is_read(tool):
    (tool.folder / "in.raw").write_bytes(bytes([0x12, 0x03, 0xab, 0x45, 0x06]))  # 3 pixels of 12 bits
    tool.succeeds("convert", "in.raw", "out.pgm", "--from", "mono12", "--width", 3, "--height", 1, "--to", "mono8")
    assert read_pnm(tool.folder / "out.pgm").tolist() == [[0x12, 0xab, 0x45]]


def test_output_replaces_what_was_there_and_keeps_its_permissions(tool):
    (tool.folder / "in.pgm").write_bytes(b"P5\n1 1\n255\n\x07")
    target = tool.folder / "out.pgm"
    target.write_bytes(b"old")
    target.chmod(0o640)
    tool.succeeds("convert", "in.pgm", "out.pgm", "--to", "mono8")
    assert target.read_bytes() == b"P5\n1 1\n255\n\x07"
    assert target.stat().st_mode & 0o777 == 0o640
    assert sorted(path.name for path in tool.folder.iterdir()) == ["in.pgm", "out.pgm"]


def test_a_file_can_be_converted_onto_itself(tool):
    (tool.folder / "a.png").write_bytes(png_bytes(np.array([[0, 200]], np.uint8)))
    tool.succeeds("convert", "a.png", "a.png", "--to", "rgb8")
    assert read_png(tool.folder / "a.png").tolist() == [[[0, 0, 0], [200, 200, 200]]]


def test_a_symbolic_link_is_followed(tool):
    (tool.folder / "in.pgm").write_bytes(b"P5\n1 1\n255\n\x07")
    (tool.folder / "real.pgm").write_bytes(b"old")
    (tool.folder / "link.pgm").symlink_to("real.pgm")
    tool.succeeds("convert", "in.pgm", "link.pgm", "--to", "mono8")
    assert (tool.folder / "link.pgm").is_symlink()
    assert (tool.folder / "real.pgm").read_bytes() == b"P5\n1 1\n255\n\x07"
