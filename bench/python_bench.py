"""korvex2.convert beside cv2.cvtColor, from Python, on one thread, into arrays that are there already.

The two do the same kind of work, not the same bytes: OpenCV rounds where Korvex2 truncates, its YUV is of video range,
and of its demosaicing methods the nearest relative is taken.
"""

import argparse
import statistics
import time

import cv2
import numpy as np

import korvex2

# What it is, from, to, options, OpenCV's conversion and the shape that it reads.
PAIRS = [
    ("swap red and blue", "rgb8", "bgr8", {}, cv2.COLOR_RGB2BGR, (3,)),
    ("add alpha", "bgr8", "bgra8", {}, cv2.COLOR_BGR2BGRA, (3,)),
    ("drop alpha, swap", "bgra8", "rgb8", {}, cv2.COLOR_BGRA2RGB, (4,)),
    ("colour to grey", "bgr8", "mono8", {}, cv2.COLOR_BGR2GRAY, (3,)),
    ("grey to colour", "mono8", "bgr8", {}, cv2.COLOR_GRAY2BGR, ()),
    ("4:2:2 to colour", "uyvy", "bgr8", {}, cv2.COLOR_YUV2BGR_UYVY, (2,)),
    ("4:4:4 to colour", "yuv444", "bgr8", {}, cv2.COLOR_YUV2BGR, (3,)),
    ("colour to 4:4:4", "bgr8", "yuv444", {}, cv2.COLOR_BGR2YUV, (3,)),
    ("mosaic, HQ linear; bilinear", "raw8", "bgr8", {"tile": "rggb", "method": "hq_linear"}, cv2.COLOR_BayerBG2BGR, ()),
    ("mosaic, edge sensing; edge aware", "raw8", "bgr8", {"tile": "rggb", "method": "edge"},
     cv2.COLOR_BayerBG2BGR_EA, ()),
    ("mosaic, directional; VNG", "raw8", "bgr8", {"tile": "rggb", "method": "directional"},
     cv2.COLOR_BayerBG2BGR_VNG, ()),
]


def medians(calls, repetitions):
    """Milliseconds of each call, by turns, so that what else the machine does meets them alike."""
    times = [[] for _ in calls]
    for call in calls:
        call()
    for _ in range(repetitions):
        for call, taken in zip(calls, times):
            begin = time.perf_counter()
            call()
            taken.append((time.perf_counter() - begin) * 1e3)
    return map(statistics.median, times)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--rows", type=int, default=1080)
    parser.add_argument("--cols", type=int, default=1920)
    parser.add_argument("--repetitions", type=int, default=100)
    options = parser.parse_args()
    cv2.setNumThreads(1)
    rng = np.random.default_rng(1)
    print(f"{options.cols} x {options.rows}, korvex2 {korvex2.__version__}, OpenCV {cv2.__version__}, "
          f"median of {options.repetitions}")
    print(f"{'':34} {'korvex2':>9} {'OpenCV':>9}  OpenCV / korvex2")
    for what, source, target, named, code, channels in PAIRS:
        frame = rng.integers(0, 256, (options.rows, options.cols, *channels), np.uint8)
        out = korvex2.convert(frame, target, source, **named)
        theirs = cv2.cvtColor(frame, code)
        ours, opencv = medians([lambda: korvex2.convert(frame, target, source, out=out, **named),
                                lambda: cv2.cvtColor(frame, code, dst=theirs)], options.repetitions)
        print(f"{what:34} {ours:6.2f} ms {opencv:6.2f} ms  {opencv / ours:6.2f}")
    tiny = np.zeros((2, 2, 3), np.uint8)
    out, theirs = tiny.copy(), tiny.copy()
    ours, opencv = medians([lambda: korvex2.convert(tiny, "bgr8", "rgb8", out=out),
                            lambda: cv2.cvtColor(tiny, cv2.COLOR_RGB2BGR, dst=theirs)], 2000)
    print(f"{'the call itself (4 pixels)':34} {ours * 1e3:6.2f} us {opencv * 1e3:6.2f} us  {opencv / ours:6.2f}")


if __name__ == "__main__":
    main()
