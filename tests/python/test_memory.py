"""Ten thousand calls leave nothing behind, whether they succeed or fail."""

import gc
import sys
import tracemalloc
from pathlib import Path

import numpy as np
import pytest

import korvex2

CALLS = 10_000
FRAME = np.ones((32, 64), np.uint8)  # 2 KiB: one of them a call would be 20 MiB
PACKED = np.ones((32, 96), np.uint8)
ODD = np.ones((31, 63), np.uint8)
OUT = np.empty((32, 64, 3), np.uint8)


def refused():
    try:
        korvex2.convert(ODD, "bgr8", "raw8", "rggb")
    except korvex2.Error as error:
        assert error.cause is not None


def resident():
    pages = int(Path("/proc/self/statm").read_text().split()[1])
    return pages * 4096


@pytest.mark.parametrize("call", [
    lambda: korvex2.convert(FRAME, "bgr8", "raw8", "rggb"),
    lambda: korvex2.convert(FRAME, "bgr8", "raw8", "rggb", out=OUT),
    lambda: korvex2.convert(PACKED, "bgr16", "raw12", "rggb", "edge"),
    lambda: korvex2.convert(ODD, "mono12", "mono8"),
    lambda: korvex2.convert(ODD[::-1], "rgb8", "mono8"),
    refused,
], ids=["new result", "out", "packed mosaic", "odd", "copied source", "refused"])
def test_nothing_is_kept(call):
    held = [FRAME, PACKED, ODD, OUT, korvex2.PixelFormat.RAW8]
    for _ in range(200):  # caches fill, the heap finds its size
        call()
    gc.collect()
    references = [sys.getrefcount(each) for each in held]
    tracemalloc.start()
    before = resident()
    traced = tracemalloc.get_traced_memory()[0]
    for _ in range(CALLS):
        call()
    gc.collect()
    grown = tracemalloc.get_traced_memory()[0] - traced
    tracemalloc.stop()
    assert [sys.getrefcount(each) for each in held] == references
    assert grown < 20_000  # two bytes a call
    assert resident() - before < 4 << 20
