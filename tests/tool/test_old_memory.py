"""No file shows what memory held before: the allocator fills memory with one byte, then with another, and the
tool must write the same files."""

import os

import pytest

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
