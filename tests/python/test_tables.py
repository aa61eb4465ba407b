"""formats(), routes() and the enumerations against the library's tables and the layouts that they stand for."""

import pickle

import numpy as np
import pytest

import korvex2
from korvex2 import BayerTile, ErrorCode, Method, PixelFormat, _core

# Samples of a pixel and their bytes; for packed formats, bytes of so many pixels.
ARRAYS = {"mono8": ("uint8", ()), "mono16": ("uint16", ()), "rgb8": ("uint8", (3,)), "rgbu": ("uint8", (4,)),
          "rgb16": ("uint16", (3,)), "bgr": ("uint8", (3,)), "bgru": ("uint8", (4,)), "bgr16": ("uint16", (3,)),
          "bgru16": ("uint16", (4,)), "yuv444": ("uint8", (3,)), "raw8": ("uint8", ()), "raw16": ("uint16", ())}
PACKED = {"mono12": (3, 2), "raw12": (3, 2), "yuv411": (6, 4), "yuv422": (4, 2)}


def test_version():
    assert [part.isdigit() for part in korvex2.__version__.split(".")] == [True] * 3


@pytest.mark.parametrize("enumeration, rows", [
    (PixelFormat, [(row["name"], row["value"]) for row in _core.formats()]),
    (BayerTile, _core.tiles()),
    (Method, _core.methods()),
])
def test_enumerations_are_the_librarys(enumeration, rows):
    assert [(str(member), member.value) for member in enumeration] == rows
    for name, value in rows:
        assert enumeration.of(name) is enumeration(name.upper()) is enumeration(value)


def test_error_codes_are_the_librarys():
    assert [(f"VORERROR_{code.name}", code.value) for code in ErrorCode] == _core.error_codes()


def test_every_alias_is_found():
    for info in korvex2.formats():
        for name in (info.name, info.enumerator, *info.aliases):
            assert PixelFormat(name) is PixelFormat.of(name.lower()) is info.format


def test_members_are_written_as_names():
    assert f"{PixelFormat.BGRU16} {BayerTile.RGGB:>6} {Method.HQ_LINEAR}" == "bgru16   rggb hq_linear"
    assert repr([PixelFormat.RAW8, Method.NONE]) == "[PixelFormat.RAW8, Method.NONE]"
    assert pickle.loads(pickle.dumps(PixelFormat.BGR)) is PixelFormat.BGR


def test_formats():
    infos = {info.name: info for info in korvex2.formats() if info.convertible}
    assert len(infos) == 16 and set(infos) == set(ARRAYS) | set(PACKED)
    for name, (dtype, channels) in ARRAYS.items():
        info = infos[name]
        assert info.dtype == dtype and info.channels == channels
        assert info.array_shape(5, 7) == (5, 7, *channels)
        assert info.size_of((5, 7, *channels)) == (5, 7) and info.size_of((5, 7, 9)) is None
        assert info.nbytes(5, 7) == np.empty((5, 7, *channels), dtype).nbytes
    for name, (nbytes, pixels) in PACKED.items():
        info = infos[name]
        assert info.dtype == np.uint8 and info.channels is None
        assert info.array_shape(5, 8) == (5, 8 // pixels * nbytes)
        assert info.size_of((5, 8 // pixels * nbytes)) == (5, 8) and info.size_of((5, 7)) is None
        assert info.array_shape(5, 7) == (-(-35 // pixels) * nbytes,) == (info.nbytes(5, 7),)
    assert infos["yuv422"].size_of((5, 8, 2)) == (5, 8)
    assert infos["yuv422"].size_of((5, 7, 2)) is None


def test_routes():
    pairs = {(str(route.from_), str(route.to)): route for route in korvex2.routes()}
    assert len(pairs) == 16 * 16
    assert sum(route.kind == "copied" for route in pairs.values()) == 16
    assert sum(route.kind == "converted" for route in pairs.values()) == 201
    for (source, target), route in pairs.items():
        refused = target.startswith("raw") and not source.startswith("raw")
        assert (route.kind == "refused") == refused, (source, target)
        assert bool(route.kernels) == (route.routine is not None) == (route.kind == "converted")
    assert pairs["bgr", "rgb8"].kernels == ("Swap_C1C3_3Channel_8bit",)
    assert "ConvertBayerImageToBGR" in pairs["raw8", "mono8"].kernels
    assert [route.to for route in korvex2.routes("bgr8")] == [route.to for route in pairs.values()][:16]
    assert korvex2.routes(to=PixelFormat.MONO8)[0] == pairs["mono8", "mono8"]
    with pytest.raises(ValueError, match="'bgr9' is no PixelFormat"):
        korvex2.routes("bgr9")
