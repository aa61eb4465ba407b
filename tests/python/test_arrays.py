"""Which arrays are read and written, where they lie, and what an array alone tells."""

import itertools
from pathlib import Path

import numpy as np
import pytest

import korvex2

RAW = ("raw8", "raw12", "raw16")
FORMATS = {info.name: info for info in korvex2.formats() if info.convertible}


def options_of(source, target):
    return {"tile": "rggb"} if source in RAW and target not in RAW else {}


def garbage(nbytes, seed=0):
    return np.random.default_rng(seed).integers(0, 256, nbytes, np.uint8)


# --- Every pair, at odd sizes too -----------------------------------------------------------------------------------

@pytest.mark.parametrize("source", FORMATS)
def test_results_depend_on_the_frame_alone(source):
    """Not on what was in the memory before; nothing but the result is written."""
    converted = 0
    for target, (rows, cols) in itertools.product(
            FORMATS, [(1, 1), (1, 2), (1, 3), (3, 5), (5, 7), (2, 2), (2, 6), (4, 4), (33, 65)]):
        options = options_of(source, target)
        route, = korvex2.routes(source, target)
        frame = garbage(FORMATS[source].nbytes(rows, cols))
        frame.flags.writeable = False
        before = frame.copy()
        if route.kind == "refused" or (options and (rows % 2 or cols % 2)):
            with pytest.raises(korvex2.Error):
                korvex2.convert(frame, target, source, shape=(rows, cols), **options)
            continue
        result = korvex2.convert(frame, target, source, shape=(rows, cols), **options)
        assert result.shape == FORMATS[target].array_shape(rows, cols) and result.dtype == FORMATS[target].dtype
        for filled in (0x00, 0xFF):
            memory = np.full(result.nbytes + 32, filled, np.uint8)
            out = memory[16:-16].view(result.dtype).reshape(result.shape)
            assert korvex2.convert(frame, target, source, shape=(rows, cols), out=out, **options) is out
            assert out.tobytes() == result.tobytes(), (target, rows, cols)
            assert (memory[:16] == filled).all() and (memory[-16:] == filled).all(), (target, rows, cols)
        assert np.array_equal(frame, before)
        converted += 1
    assert converted >= 9 * 3


def test_a_dump_may_end_with_its_last_pixel():
    whole = np.array([100, 1, 150, 2, 110, 3, 160, 0], np.uint8)  # U Y V Y, U Y V and nothing for a fourth pixel
    info = FORMATS["yuv422"]
    assert info.nbytes(1, 3) == 8
    expected = korvex2.convert(whole, "rgb8", "yuv422", shape=(1, 3))
    cut = whole[:6]  # the V of the last pixel reads as zero
    first_two = korvex2.convert(cut, "rgb8", "yuv422", shape=(1, 3))
    assert np.array_equal(first_two[:, :2], expected[:, :2])
    zeroed = whole.copy()
    zeroed[6:] = 0
    assert np.array_equal(first_two, korvex2.convert(zeroed, "rgb8", "yuv422", shape=(1, 3)))


@pytest.mark.parametrize("rows, cols", [(0, 0), (0, 4), (4, 0)])
def test_empty_frames(rows, cols):
    assert korvex2.convert(np.empty((rows, cols, 3), np.uint8), "bgra16", "rgb8").shape == (rows, cols, 4)
    assert korvex2.convert(np.empty((rows, cols), np.uint8), "bgr8", "raw8", "rggb").shape == (rows, cols, 3)
    out = np.empty((rows, cols), np.uint16)
    assert korvex2.convert(np.empty((rows, cols), np.uint8), "mono16", "mono8", out=out) is out


# --- Layouts of memory ----------------------------------------------------------------------------------------------

def views():
    base = garbage(20 * 30 * 3).reshape(20, 30, 3)
    unaligned = np.frombuffer(b"\0" + base.tobytes(), np.uint8, offset=1).reshape(base.shape)
    yield "slice", base[1:-1, 2:-2]
    yield "steps", base[::2, ::3]
    yield "backwards", base[::-1, ::-1]
    yield "channels backwards", base[..., ::-1]
    yield "columns first", np.asfortranarray(base)
    yield "transposed", base.transpose(1, 0, 2)
    yield "unaligned and read-only", unaligned
    yield "subclass", base.view(np.recarray)


@pytest.mark.parametrize("view", [pytest.param(view, id=name) for name, view in views()])
def test_any_layout_is_read(view):
    expected = np.concatenate([view[..., ::-1], np.full((*view.shape[:2], 1), 255, np.uint8)], axis=2)
    assert np.array_equal(korvex2.convert(view, "bgru", "rgb8"), expected)


def test_byte_orders_are_numbers():
    samples = np.arange(0, 65536, 1024, np.uint16).reshape(8, 8)
    for dtype in ("<u2", ">u2"):
        assert np.array_equal(korvex2.convert(samples.astype(dtype), "mono8", "mono16"), samples >> 8)
        flat = samples.astype(dtype).ravel()
        assert np.array_equal(korvex2.convert(flat, "mono8", "mono16", shape=(8, 8)), samples >> 8)


def test_flat_bytes_are_the_frame():
    deep = np.arange(48, dtype="<u2").reshape(6, 8) * 1000
    expected = (deep >> 8).astype(np.uint8)
    flat = np.frombuffer(deep.tobytes(), np.uint8)
    assert np.array_equal(korvex2.convert(flat, "mono8", "mono16", shape=(6, 8)), expected)
    assert np.array_equal(korvex2.convert(flat, "mono8", "mono16", shape=np.array([6, 8])), expected)
    assert np.array_equal(korvex2.convert(memoryview(deep.tobytes()), "mono8", "mono16", shape=[6, 8]), expected)
    assert np.array_equal(korvex2.convert(bytearray(deep.tobytes()), "mono8", "mono16", shape=(6, 8)), expected)
    assert np.array_equal(korvex2.convert(deep, "mono8", "mono16", shape=(6, 8)), expected)


def test_files_are_read_and_written_where_they_lie(tmp_path):
    frame = garbage(6 * 8).reshape(6, 8)
    (tmp_path / "in.raw").write_bytes(frame.tobytes())
    source = np.memmap(tmp_path / "in.raw", np.uint8, "r", shape=(6, 8))
    out = np.memmap(tmp_path / "out.raw", np.uint16, "w+", shape=(6, 8))
    assert korvex2.convert(source, "mono16", "mono8", out=out) is out
    out.flush()
    assert (tmp_path / "out.raw").read_bytes() == (frame.astype("<u2") * 257).tobytes()


def test_out_may_be_flat():
    frame = garbage(6 * 8).reshape(6, 8)
    out = np.zeros(6 * 8 * 3, np.uint8)
    assert korvex2.convert(frame, "rgb8", "mono8", out=out) is out
    assert np.array_equal(out.reshape(-1, 3)[:, 1], frame.ravel())


def test_out_may_overlap_the_source():
    rgb = garbage(6 * 8 * 3).reshape(6, 8, 3)
    expected = rgb[..., ::-1].copy()
    assert korvex2.convert(rgb, "bgr8", "rgb8", out=rgb) is rgb
    assert np.array_equal(rgb, expected)

    memory = garbage(1000)
    frame = memory[100:148].reshape(6, 8)
    expected = frame.astype(np.uint16) * 257
    for start in (60, 91, 100, 130):
        memory[100:148] = (expected >> 8).ravel()
        out = memory[start:start + 96].view(np.uint16).reshape(6, 8)
        korvex2.convert(frame, "mono16", "mono8", out=out)
        assert np.array_equal(out, expected)


def resident(field):
    for line in Path("/proc/self/status").read_text().splitlines():
        if line.startswith(field):
            return int(line.split()[1]) * 1024
    raise AssertionError(field)


@pytest.mark.parametrize(("source", "target", "nbytes"), [
    ("mono8", "mono12", 15), ("mono8", "yuv422", 20), ("rgb8", "yuv411", 18), ("yuv411", "rgb8", 27),
    ("mono12", "mono8", 9)])
def test_frames_of_a_ring_are_read_and_written_alone(source, target, nbytes):
    """Nine pixels begin a group that is not complete; what follows the arrays is another frame."""
    size = {info.name: info.nbytes(3, 3) for info in korvex2.formats()}[source]
    ring = np.full(64, 77, np.uint8)
    frame = ring[:size]
    frame[:] = np.arange(size)
    alone = korvex2.convert(frame.copy(), target, source, shape=(3, 3))
    pictures = np.full(64, 99, np.uint8)
    assert korvex2.convert(frame, target, source, shape=(3, 3), out=pictures[:nbytes]).nbytes == nbytes
    assert pictures[:nbytes].tobytes() == alone.tobytes()
    assert (pictures[nbytes:] == 99).all()
    assert (ring[size:] == 77).all()


def test_no_frame_is_copied():
    """The peak of resident memory does not rise by a fraction of the frame while both arrays are there."""
    try:
        Path("/proc/self/clear_refs").write_text("5")  # the peak begins anew
    except OSError as error:
        pytest.skip(f"the peak of resident memory cannot be reset: {error}")
    frame = np.ones((4096, 4096, 3), np.uint8)
    out = np.ones((4096, 4096, 4), np.uint8)
    Path("/proc/self/clear_refs").write_text("5")
    before = resident("VmRSS")
    korvex2.convert(frame, "bgru", "rgb8", out=out)
    assert resident("VmHWM") - before < frame.nbytes // 8
    korvex2.convert(frame[:, :-1], "rgbu", "rgb8", out=out.ravel()[:4096 * 4095 * 4])  # this one must be
    assert resident("VmHWM") - before > frame.nbytes // 2


# --- What an array alone tells --------------------------------------------------------------------------------------

@pytest.mark.parametrize("array, options, same_as", [
    (np.zeros((4, 4), np.uint8), {"tile": "rggb"}, "raw8"),
    (np.zeros((4, 4), np.uint16), {"tile": "bggr"}, "raw16"),
    (np.zeros((4, 6), np.uint8), {"tile": "rggb"}, "raw8"),
    (np.zeros((4, 4, 4), np.uint16), {}, "bgru16"),
])
def test_inferred(array, options, same_as):
    array = array + np.arange(array.size, dtype=array.dtype).reshape(array.shape)
    assert np.array_equal(korvex2.convert(array, "rgb8", **options), korvex2.convert(array, "rgb8", same_as, **options))


@pytest.mark.parametrize("array, message", [
    (np.zeros((4, 4), np.uint8), r"uint8 of shape \(4, 4\) may be mono8 or yuv422 or raw8; say from_, and tile"),
    (np.zeros((4, 6), np.uint8), "may be mono8 or mono12 or yuv411 or raw8 or raw12; say from_, and tile"),
    (np.zeros((4, 4), np.uint16), "may be mono16 or raw16; say from_, and tile"),
    (np.zeros((4, 4, 3), np.uint8), r"may be rgb8 or bgr or yuv444; say from_$"),
    (np.zeros((4, 4, 4), np.uint8), r"may be rgbu or bgru; say from_$"),
    (np.zeros((4, 4, 3), np.uint16), r"may be rgb16 or bgr16; say from_$"),
    (np.zeros((4, 4, 2), np.uint8), r"may be yuv422; say from_$"),
    (np.zeros(48, np.uint8), r"no format is known by uint8 of shape \(48,\); say from_, and shape="),
    (np.zeros((4, 4), float), r"no format is known by float64 of shape \(4, 4\)"),
])
def test_not_inferred(array, message):
    with pytest.raises(ValueError, match=message):
        korvex2.convert(array)
