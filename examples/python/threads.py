"""Frames of a camera converted by several threads: the GIL is released while a frame is converted."""

from concurrent.futures import ThreadPoolExecutor

import numpy as np

import korvex2

rng = np.random.default_rng(1)
frames = [rng.integers(0, 256, (480, 640), np.uint8) for _ in range(24)]


def picture_of(mosaic):
    return korvex2.convert(mosaic, to="bgr8", from_="BayerGB8", method="edge")


with ThreadPoolExecutor() as pool:
    pictures = list(pool.map(picture_of, frames))

print(len(pictures), pictures[0].shape)
print("kept where the mosaic has green:", all((mosaic[0::2, 0::2] == picture[0::2, 0::2, 1]).all()
                                              for mosaic, picture in zip(frames, pictures)))
