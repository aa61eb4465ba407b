"""A long dump of packed 12-bit frames, read where it lies on the disk, through one buffer."""

import tempfile
from pathlib import Path

import numpy as np

import korvex2

ROWS, COLS, FRAMES = 480, 640, 5
FRAME_BYTES = ROWS * COLS * 3 // 2  # two samples in three bytes


def record(path):
    """Stands for the camera: frame after frame, each a little brighter."""
    with open(path, "wb") as file:
        for frame in range(FRAMES):
            samples = np.full((ROWS, COLS), frame * 4000, np.uint16)
            korvex2.convert(samples, to="mono12", from_="mono16").tofile(file)


with tempfile.TemporaryDirectory() as folder:
    path = Path(folder) / "capture.raw"
    record(path)

    dump = np.memmap(path, np.uint8, mode="r").reshape(FRAMES, FRAME_BYTES)
    picture = np.empty((ROWS, COLS), np.uint16)  # one for all frames
    for number, frame in enumerate(dump):
        korvex2.convert(frame, to="mono16", from_="Mono12Packed", shape=(ROWS, COLS), out=picture)
        print(number, picture.mean())
