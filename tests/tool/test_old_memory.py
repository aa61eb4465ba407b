"""No file shows what memory held before: the allocator fills memory with one byte, then with another, and the
tool must write the same files."""

import os

import numpy as np
import pytest

from pictures import ASCII, BYTE, CFA, SHORT, lossless_jpeg, tiff_bytes

EXTENSIONS = {"mono8": ["raw", "png", "pgm", "tif", "npy", "y4m"], "mono12": ["raw"],
              "mono16": ["raw", "png", "pam", "tif", "npy"], "rgb8": ["raw", "png", "ppm", "tif", "npy"],
              "rgbu": ["raw", "png", "pam", "tif", "npy"], "rgb16": ["raw", "png", "ppm", "tif", "npy"],
              "bgr": ["raw", "png", "tif", "npy"], "bgru": ["raw", "png", "tif", "npy"],
              "bgr16": ["raw", "png", "tif", "npy"], "bgru16": ["raw", "pam", "tif", "npy"],
              "yuv411": ["raw"], "yuv422": ["raw"], "yuv444": ["raw", "npy", "y4m"]}
WHOLE_GROUPS = {"mono12": ["npy"], "yuv411": ["npy", "y4m"], "yuv422": ["npy", "y4m"]}  # in each row


def environment(byte):
    """For malloc of the C library, and for the one of a sanitizer."""
    return {**os.environ, "GLIBC_TUNABLES": f"glibc.malloc.perturb={byte}",
            "ASAN_OPTIONS": f"max_malloc_fill_size=1073741824:malloc_fill_byte={byte}"}


def written(tool, byte, *arguments):
    result = tool.run("convert", *arguments, env=environment(byte))
    assert result.returncode == 0, result.stderr
    return (tool.folder / arguments[1]).read_bytes()


@pytest.mark.parametrize("size", [(1, 1), (3, 5), (7, 33), (5, 36)])
@pytest.mark.parametrize("target", EXTENSIONS)
def test_files_do_not_depend_on_old_memory(tool, rng, target, size):
    rows, cols = size
    (tool.folder / "in.raw").write_bytes(rng.integers(0, 256, rows * cols * 3, dtype="uint8").tobytes())
    for extension in EXTENSIONS[target] + (WHOLE_GROUPS.get(target, []) if cols % 4 == 0 else []):
        arguments = ("in.raw", f"out.{extension}", "--from", "rgb8", "--width", cols, "--height", rows, "--to", target)
        assert written(tool, 0xA5, *arguments) == written(tool, 0x5A, *arguments), extension


@pytest.mark.parametrize("method", ["nearest", "edge", "hq_linear", "rigorous"])
def test_pictures_of_mosaics_do_not_depend_on_old_memory(tool, rng, method):
    (tool.folder / "in.raw").write_bytes(rng.integers(0, 256, 6 * 38, dtype="uint8").tobytes())
    arguments = ("in.raw", "out.png", "--from", "raw8", "--tile", "gbrg", "--width", 38, "--height", 6,
                 "--method", method, "--to", "bgr")
    assert written(tool, 0xA5, *arguments) == written(tool, 0x5A, *arguments)


def seen(tool, name):
    results = []
    for byte in (0xA5, 0x5A):
        result = tool.run("convert", name, "out.raw", "--to", "raw16", env=environment(byte))
        assert result.returncode in (0, 1)
        results.append((tool.folder / "out.raw").read_bytes() if result.returncode == 0 else result.stderr)
    return results


def test_samples_that_slices_leave_out_are_zero(tool, rng):
    """The stream has all samples, but a slice twice as wide as the picture takes only half of its rows."""
    samples = rng.integers(1, 16384, (24, 32), dtype=np.uint16)
    fields = [(271, ASCII, b"Canon"), (272, ASCII, b"Canon EOS 5D"), (33421, SHORT, [2, 2]),
              (33422, BYTE, [0, 1, 1, 2]), (50752, SHORT, [1, 4, 64])]
    data = tiff_bytes(samples, CFA, rows_per_strip=24, extra=fields, compression=7,
                      blocks=[lossless_jpeg(samples, components=2)])
    (tool.folder / "in.cr2").write_bytes(data)
    first, second = seen(tool, "in.cr2")
    assert isinstance(first, bytes) and first == second
    picture = np.frombuffer(first, "<u2").reshape(24, 32)
    assert np.all(picture[0, :4] == samples[0, :4]) and np.all(picture[12:, 4:] == 0)


CAMERAS = {"Nobody": "Nothing", "NIKON CORPORATION": "NIKON D70", "Canon": "Canon EOS 5D", "SONY": "DSLR-A100",
           "Hasselblad": "H3D", "PENTAX": "PENTAX K10D"}


@pytest.mark.parametrize("compression", [6, 7, 32767, 34713, 65535])
@pytest.mark.parametrize("maker", CAMERAS)
@pytest.mark.parametrize("dng", [False, True])
def test_raw_files_whose_samples_cannot_be_decoded_show_no_old_memory(tool, rng, maker, compression, dng):
    """Noise in the place of compressed samples; a reader may refuse it."""
    fields = [(271, ASCII, maker.encode()), (272, ASCII, CAMERAS[maker].encode()),
              (33421, SHORT, [2, 2]), (33422, BYTE, [0, 1, 1, 2])]
    if dng:
        fields += [(50706, BYTE, [1, 4, 0, 0]), (50708, ASCII, b"Nobody Nothing")]
    noise = rng.bytes(1536)
    accepted = 0
    for block in (noise, noise[:700]):
        data = tiff_bytes(np.zeros((24, 32), np.uint16), CFA, rows_per_strip=24, extra=fields, compression=compression,
                          blocks=[block])
        (tool.folder / "in.nef").write_bytes(data)
        first, second = seen(tool, "in.nef")
        assert first == second
        accepted += isinstance(first, bytes)
    assert accepted > 0 or (maker, compression, dng) != ("Nobody", 32767, False)  # some are read
