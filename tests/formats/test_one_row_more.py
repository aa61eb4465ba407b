"""RGBA of 16 bits, which the library has no format for, added to a copy of the sources: a row of Formats.def, and its
routes in Dispatch.def and Routines.def, nothing else. It is then wherever formats are.

Only the library is built anew. The tool and the extension module are those of the build tree: they have the formats
from the library that they run with, and need not even be compiled again.
"""

import json
import os
import re
import shutil
import subprocess
import sys
from pathlib import Path

import pytest

SOURCE = Path(__file__).resolve().parents[2]
BUILD = Path(os.environ["KORVEX2_BUILD"])
WORK = Path(os.environ["KORVEX2_WORK"])
PARTS = ["CMakeLists.txt", "LICENSE", "bayer", "cmake", "include", "python", "sdk", "src"]

ROW = ('KORVEX2_FORMAT(RGBU16, 0x2000003, "rgbu16", RGBU16, Rgb, 16, Unsigned, Host, "RGBA", 64, 1, 8, 1, '
       '"R G B alpha, 16 bits each", "rgba64 RGBa16")\n')
CELLS = """
CELL(RGBU16, MONO8,  ConvertY8ToRGBU16)
CELL(RGBU16, MONO12, ConvertY12ToRGBU16)
CELL(RGBU16, MONO16, ConvertY16ToRGBU16)
CELL(RGBU16, RGB16,  AddAlphaChannel_16bit)
CELL(RGBU16, BGRU16, ConvertBGRU16ToRGBU16)
CELL(RGBU16, RGBU16, SameFormat)
CELL(RGB16,  RGBU16, DropAlphaChannel_16bit)
CELL(BGRU16, RGBU16, ConvertRGBU16ToBGRU16)
"""
ROUTINES = """
KORVEX2_CHAIN(ConvertRGBU16ToBGRU16, RGB16, DropAlphaChannel_16bit, ConvertRGB16ToBGRU16, Guarded, Success)
KORVEX2_CHAIN(ConvertBGRU16ToRGBU16, RGB16, ConvertBGRU16ToRGB16, AddAlphaChannel_16bit, Guarded, Success)
"""


def with_row(text):
    last_rgb = re.search(r"^KORVEX2_FORMAT\(RGB16,.*\n", text, re.MULTILINE).end()
    return text[:last_rgb] + ROW + text[last_rgb:]


def with_cells(text):
    after = "\n// Raw targets accept raw sources only."
    return text.replace(after, CELLS + after)


def with_routines(text):
    return text.replace("\n// From YUV411.", ROUTINES + "\n// From YUV411.")


EDITS = {"include/Formats.def": with_row, "src/routes/Dispatch.def": with_cells, "include/Routines.def": with_routines}


def copy_sources(folder):
    """Writes what differs only, so that a second run builds nothing again."""
    for part in PARTS:
        for file in [SOURCE / part] if (SOURCE / part).is_file() else (SOURCE / part).rglob("*"):
            if file.is_dir() or "__pycache__" in file.parts:
                continue
            name = file.relative_to(SOURCE)
            content = file.read_bytes()
            if str(name) in EDITS:
                content = EDITS[str(name)](content.decode()).encode()
                assert content != file.read_bytes(), name
            copy = folder / name
            if not copy.exists() or copy.read_bytes() != content:
                copy.parent.mkdir(parents=True, exist_ok=True)
                copy.write_bytes(content)
                shutil.copymode(file, copy)


def run(*command, **options):
    done = subprocess.run([str(part) for part in command], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                          **options)
    assert done.returncode == 0, done.stdout[-4000:]
    return done.stdout


@pytest.fixture(scope="module")
def build():
    sources, folder = WORK / "source", WORK / "build"
    copy_sources(sources)
    # The compiler's cache finds the same files in any folder.
    environment = {**os.environ, "CCACHE_BASEDIR": str(WORK), "CCACHE_NOHASHDIR": "1"}
    run("cmake", "-S", sources, "-B", folder, "-DCMAKE_BUILD_TYPE=", "-DCMAKE_CXX_FLAGS=-O0",
        "-DKORVEX2_WITH_HIGHWAY=OFF", "-DKORVEX2_BUILD_TOOL=OFF", "-DKORVEX2_BUILD_PYTHON=ON",
        "-DKORVEX2_BUILD_TESTS=OFF", f"-DPython3_EXECUTABLE={sys.executable}", env=environment)
    run("cmake", "--build", folder, "--parallel", "2", "--target", "Korvex2", env=environment)
    for extension in (BUILD / "python/korvex2").glob("_core.*.so"):
        link = folder / "python/korvex2" / extension.name
        link.unlink(missing_ok=True)
        link.symlink_to(extension)
    return folder


def with_library(build):
    return {**os.environ, "LD_LIBRARY_PATH": f"{build}/src:{build}/bayer", "PYTHONPATH": str(build / "python")}


@pytest.fixture
def tool(build, tmp_path):
    def call(*arguments, code=0):
        done = subprocess.run([str(BUILD / "tools/korvex2/korvex2"), *map(str, arguments)], cwd=tmp_path,
                              env=with_library(build), capture_output=True, text=True)
        assert done.returncode == code, done.stdout + done.stderr
        return done.stdout + done.stderr
    call.folder = tmp_path
    return call


PIXELS = bytes(range(1, 4 * 4 * 8 + 1))  # 4 x 4 of them


@pytest.fixture
def frame(tool):
    (tool.folder / "frame.raw").write_bytes(PIXELS)
    return ["frame.raw", "--from", "rgbu16", "--width", "4", "--height", "4"]


def test_the_tool_lists_it(tool):
    rows = {row["name"]: row for row in json.loads(tool("formats", "--json"))}
    row = rows["rgbu16"]
    assert row["convertible"] and row["value"] == 0x2000003
    assert row["layout"] == "R(16) G(16) B(16) A(16)" and row["bitsPerPixel"] == 64
    assert list(rows).index("rgbu16") == list(rows).index("rgb16") + 1
    assert "rgbu16" in tool("formats")
    assert "rgbu16" in tool("routes").splitlines()[0].split()


def test_the_tool_converts_it(tool, frame):
    tool("convert", *frame, "out.raw", "--to", "bgru16")
    swapped = b"".join(PIXELS[i + 4:i + 6] + PIXELS[i + 2:i + 4] + PIXELS[i:i + 2] + b"\xff\xff"
                       for i in range(0, len(PIXELS), 8))
    assert (tool.folder / "out.raw").read_bytes() == swapped
    tool("convert", "out.raw", "back.raw", "--from", "bgru16", "--width", 4, "--height", 4, "--to", "RGBa16")
    opaque = b"".join(PIXELS[i:i + 6] + b"\xff\xff" for i in range(0, len(PIXELS), 8))
    assert (tool.folder / "back.raw").read_bytes() == opaque


def test_refusals_name_it(tool, frame):
    refusal = tool("convert", *frame, "out.raw", "--to", "mono8", code=1)
    assert "rgbu16 cannot be converted to mono8" in refusal and "bgru16" in refusal
    assert "rgbu16" in tool("convert", *frame[:1], "out.raw", "--from", "rgbu61", "--to", "mono8", code=2)


def test_its_planes_are_compared(tool, frame):
    other = bytearray(PIXELS)
    other[8] ^= 1  # red of the second pixel
    (tool.folder / "other.raw").write_bytes(other)
    said = json.loads(tool("diff", "frame.raw", "other.raw", *frame[1:], "--json", code=1))
    assert [channel["channel"] for channel in said["channels"]] == ["R", "G", "B", "A"]


def test_arrays_and_pictures_hold_it(tool, frame):
    for file in ("frame.npy", "frame.png"):
        tool("convert", *frame, file, "--to", "rgbu16")
        tool("convert", file, "back.raw", "--to", "rgbu16")
        assert (tool.folder / "back.raw").read_bytes() == PIXELS


PYTHON = """
import numpy, korvex2
info = {info.name: info for info in korvex2.formats()}["rgbu16"]
assert info.format is korvex2.PixelFormat.RGBU16 is korvex2.PixelFormat("RGBa16")
assert info.dtype == "uint16" and info.channels == (4,) and not info.raw
frame = numpy.arange(64, dtype="uint16").reshape(4, 4, 4)
assert (korvex2.convert(frame, "bgru16", "rgbu16")[:, :, :3] == frame[:, :, [2, 1, 0]]).all()
assert [str(route.to) for route in korvex2.routes("rgbu16") if route.kind == "converted"] == ["rgb16", "bgru16"]
try:
    korvex2.convert(frame, "mono8", "rgbu16")
except korvex2.Error as error:
    assert "rgbu16 cannot be converted to mono8" in str(error), error
else:
    raise AssertionError("mono8 was not refused")
"""


def test_python_has_it(build):
    run(sys.executable, "-B", "-c", PYTHON, env=with_library(build))
