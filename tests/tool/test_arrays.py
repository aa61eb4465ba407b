"""NPY: what NumPy saves is read, what is written NumPy loads."""

import io

import numpy as np
import pytest

from conftest import some
from pictures import in_memory, png_bytes, read_pnm

DTYPES = {1: np.uint8, 2: np.uint16}
SAMPLES = [("mono8", 1, 1), ("raw8", 1, 1), ("mono16", 1, 2), ("raw16", 1, 2), ("rgb8", 3, 1), ("bgr", 3, 1),
           ("yuv444", 3, 1), ("rgb16", 3, 2), ("bgr16", 3, 2), ("rgbu", 4, 1), ("bgru", 4, 1), ("bgru16", 4, 2)]
PACKED = [("mono12", 12), ("raw12", 12), ("yuv411", 12), ("yuv422", 16)]
SUGGESTED = {"mono8", "mono16", "rgb8", "rgb16", "rgbu"}
HEIGHT, WIDTH = 5, 8


def random(rng, channels, size):
    shape = (HEIGHT, WIDTH) if channels == 1 else (HEIGHT, WIDTH, channels)
    return rng.integers(0, 256 ** size, shape, dtype=DTYPES[size])


@pytest.mark.parametrize("name, channels, size", SAMPLES)
def test_samples_keep_their_shape_and_order(tool, rng, name, channels, size):
    samples = in_memory(random(rng, channels, size))
    (tool.folder / "in.raw").write_bytes(samples.tobytes())
    tool.succeeds("convert", "in.raw", "a.npy", "--from", name, "--width", WIDTH, "--height", HEIGHT, "--to", name)
    loaded = np.load(tool.folder / "a.npy")
    assert loaded.dtype == samples.dtype and loaded.flags.c_contiguous
    assert np.array_equal(loaded, samples)
    for order in "<>":
        np.save(tool.folder / "b.npy", samples.astype(samples.dtype.newbyteorder(order)))
        source = [] if name in SUGGESTED else ["--from", name]
        tool.succeeds("convert", "b.npy", "out.raw", *source, "--to", name)
        assert (tool.folder / "out.raw").read_bytes() == samples.tobytes()


@pytest.mark.parametrize("name, bits", PACKED)
def test_packed_formats_are_rows_of_bytes(tool, rng, name, bits):
    rows = rng.integers(0, 256, (HEIGHT, WIDTH * bits // 8), dtype=np.uint8)
    (tool.folder / "in.raw").write_bytes(rows.tobytes())
    tool.succeeds("convert", "in.raw", "a.npy", "--from", name, "--width", WIDTH, "--height", HEIGHT, "--to", name)
    assert np.array_equal(np.load(tool.folder / "a.npy"), rows)
    tool.succeeds("convert", "a.npy", "out.raw", "--from", name, "--to", name, "--width", WIDTH)
    assert (tool.folder / "out.raw").read_bytes() == rows.tobytes()


@pytest.mark.parametrize("version", [(1, 0), (2, 0), (3, 0)])
def test_versions(tool, rng, version):
    samples = random(rng, 1, 1)
    with open(tool.folder / "in.npy", "wb") as file:
        np.lib.format.write_array(file, samples, version=version)
    tool.succeeds("convert", "in.npy", "out.pgm", "--to", "mono8")
    assert np.array_equal(read_pnm(tool.folder / "out.pgm"), samples)


def test_the_header_is_what_numpy_writes(tool, rng):
    for samples, name in [(random(rng, 1, 1), "mono8"), (random(rng, 3, 2), "rgb16")]:
        np.save(tool.folder / "in.npy", samples)
        tool.succeeds("convert", "in.npy", "out.npy", "--to", name)
        assert (tool.folder / "out.npy").read_bytes()[:10] == (tool.folder / "in.npy").read_bytes()[:10]
        assert len((tool.folder / "out.npy").read_bytes()) == len((tool.folder / "in.npy").read_bytes())


@pytest.mark.parametrize("array, arguments, hint", [
    (np.zeros((4, 4), np.float32), [], "f4"), (np.zeros((4, 4), np.int16), [], "i2"),
    (np.zeros((4, 4), np.uint32), [], "u4"), (np.zeros((4, 4), [("a", "u1")]), [], "no plain array"),
    (np.zeros((4, 6), np.uint8, order="F"), [], "ascontiguousarray"), (np.zeros(16, np.uint8), [], "16 of uint8"),
    (np.zeros((2, 4, 4, 3), np.uint8), [], "2 x 4 x 4 x 3"), (np.zeros((4, 4, 2), np.uint8), [], "4 x 4 x 2"),
    (np.zeros((4, 4, 4), np.uint16), [], "--from"), (np.zeros((4, 4), np.uint8), ["--from", "rgb8"], "rgb8"),
    (np.zeros((4, 4), np.uint8), ["--from", "mono16"], "mono16"), (np.zeros((0, 4), np.uint8), [], "0 pixels"),
    (np.zeros((4, 4), np.uint8), ["--from", "mono12"], "multiples of 3"), (np.zeros((), np.uint8), [], "uint8"),
    (np.zeros((4, 4), np.uint8), ["--width", "5"], "4 x 4"), (np.zeros((4, 4), object), [], "no plain array"),
])
def test_other_arrays_are_refused(tool, array, arguments, hint):
    np.save(tool.folder / "in.npy", array, allow_pickle=True)
    assert hint in tool.fails(1, "convert", "in.npy", "out.raw", *arguments, "--to", "mono8")


def test_damaged_files(tool, rng):
    buffer = io.BytesIO()
    np.save(buffer, random(rng, 1, 1))
    whole = buffer.getvalue()
    for length in some(range(len(whole))):
        (tool.folder / "in.npy").write_bytes(whole[:length])
        assert "in.npy" in tool.fails(1, "convert", "in.npy", "out.raw", "--to", "mono8")
    (tool.folder / "in.npy").write_bytes(whole + b"\0")
    assert "damaged" in tool.fails(1, "convert", "in.npy", "out.raw", "--to", "mono8")
    huge = whole.replace(b"(5, 8)", b"(99999999999999999999, 8)")
    (tool.folder / "in.npy").write_bytes(huge)
    assert "in.npy" in tool.fails(1, "convert", "in.npy", "out.raw", "--to", "mono8")
    (tool.folder / "in.npy").write_bytes(whole.replace(b"(5, 8)", b"(4000000000, 4000000000)"))
    assert "in.npy" in tool.fails(1, "convert", "in.npy", "out.raw", "--to", "mono8")


def test_rows_that_share_bytes_are_no_array(tool, rng):
    (tool.folder / "in.png").write_bytes(png_bytes(rng.integers(0, 256, (4, 5), dtype=np.uint8)))
    assert "multiple of 2" in tool.fails(1, "convert", "in.png", "out.npy", "--to", "mono12")
