"""The GIL is released, and threads do not disturb each other."""

import sys
import threading
from concurrent.futures import ThreadPoolExecutor

import numpy as np
import pytest

import korvex2


@pytest.fixture
def patient_interpreter():
    """Takes the GIL from no thread that does not give it up."""
    interval = sys.getswitchinterval()
    sys.setswitchinterval(1000)
    yield
    sys.setswitchinterval(interval)


def ran_during(conversion):
    """Whether this thread ran while another one was in `conversion`, which must be its only wait."""
    begun, finished = threading.Event(), []

    def convert():
        begun.set()
        conversion()
        finished.append(True)

    thread = threading.Thread(target=convert)
    thread.start()
    begun.wait()
    seen = not finished
    thread.join()
    return seen


def test_other_threads_run_meanwhile(patient_interpreter, rng):
    mosaic = rng.integers(0, 256, (768, 1024), np.uint8)
    out = np.empty((768, 1024, 3), np.uint8)
    # A busy machine may let the conversion finish first now and then, but not always.
    assert any(ran_during(lambda: korvex2.convert(mosaic, "rgb8", "raw8", "rggb", "rigorous", out)) for _ in range(50))
    assert not any(ran_during(lambda: sum(range(100_000))) for _ in range(5)), "and this is seen only then"


def test_a_pool_converts_as_one_thread_does(rng):
    frames = [rng.integers(0, 256, (48, 64), np.uint8) for _ in range(64)]
    jobs = [(frame, to, "raw8", tile, method) for frame in frames
            for to, tile, method in [("bgr8", "rggb", "hq_linear"), ("yuv422", "gbrg", "edge"),
                                     ("mono16", "bggr", None)]]
    expected = [korvex2.convert(*job) for job in jobs]
    with ThreadPoolExecutor(8) as pool:
        for _ in range(3):
            results = list(pool.map(lambda job: korvex2.convert(*job), jobs))
            assert all(map(np.array_equal, results, expected))


def test_threads_may_share_a_source_and_fail_apart(rng):
    frame = rng.integers(0, 256, (47, 64), np.uint8)  # odd
    expected = korvex2.convert(frame, "rgb16", "mono8")

    def job(number):
        if number % 2:
            return np.array_equal(korvex2.convert(frame, "rgb16", "mono8"), expected)
        try:
            korvex2.convert(frame, "rgb16", "raw8", "rggb")
        except korvex2.Error as error:
            return error.message == "A mosaic has an even number of rows; this one has 47."

    with ThreadPoolExecutor(8) as pool:
        assert all(pool.map(job, range(400)))
