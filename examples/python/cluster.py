"""A folder of mosaics becomes a folder of pictures, on a Dask cluster; run again, it makes only what is missing."""

import sys
import tempfile
from pathlib import Path

import dask.bag
import numpy as np
from dask.distributed import Client, LocalCluster

import korvex2.dask

ROWS, COLS = 480, 640


def record(folder):
    """Stands for the camera: 24 files."""
    rng = np.random.default_rng(1)
    for number in range(24):
        rng.integers(0, 256, (ROWS, COLS), np.uint8).tofile(folder / f"{number:03}.raw")


def load(path):
    return np.fromfile(path, np.uint8).reshape(ROWS, COLS)


def main(folder):
    mosaics, pictures = folder / "mosaics", folder / "pictures"
    mosaics.mkdir()
    record(mosaics)

    frames = dask.bag.from_sequence(sorted(mosaics.glob("*.raw")), npartitions=8).map(load)
    frames = korvex2.dask.convert_blocks(frames, to="rgb8", from_="raw8", tile="rggb", method="edge")
    for _ in range(2):
        result = korvex2.dask.write_frames(frames, pictures).compute()
        print(len(result.written), "written,", len(result.skipped), "there already")
        next(pictures.glob("0003-*.npy")).unlink()  # as if it had been lost


if __name__ == "__main__":
    with tempfile.TemporaryDirectory() as folder:
        if len(sys.argv) > 1:  # the address of a cluster's scheduler
            client = Client(sys.argv[1])
        else:
            client = Client(LocalCluster(n_workers=2, threads_per_worker=1, dashboard_address=None))
        with client:
            main(Path(folder))
