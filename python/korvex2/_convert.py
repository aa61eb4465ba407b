"""convert()."""

from __future__ import annotations

from typing import Any, Iterable, SupportsIndex

import numpy as np
import numpy.typing as npt

from . import _core
from ._frames import plan
from ._formats import PixelFormat
from ._names import BayerTile, Method


def convert(array: npt.ArrayLike, to: PixelFormat | str = "bgr8", from_: PixelFormat | str | None = None,
            tile: BayerTile | str | None = None, method: Method | str | None = None,
            out: npt.NDArray[Any] | None = None, *, shape: Iterable[SupportsIndex] | None = None) -> npt.NDArray[Any]:
    """Converts a frame into another pixel format and returns it as an array.

    Arrays look as NumPy users expect: H x W for grey and mosaics, H x W x C for colour, uint8 or uint16. Packed
    formats (mono12, raw12, yuv411, yuv422) are uint8, H x bytes of a row; 4:2:2 may be H x W x 2.

    Parameters:
        array: the frame. C-contiguous arrays are read where they lie; others are copied first. Never written to.
        to: the format to convert into, a PixelFormat or any name or alias of one.
        from_: the format of the array. It may be left out where the array can be of one format only: samples with
            a tile (raw8, raw16) and H x W x 4 of uint16 (bgru16).
        tile: the colours of a mosaic's top-left 2 x 2: "rggb", "grbg", "gbrg", "bggr"; "none" for grey samples.
            Names such as "BayerRG8" for from_ say it as well.
        method: how a mosaic becomes colour: "nearest", "edge", "hq_linear" (taken if none is said),
            "directional", "rigorous"; "none" shows the mosaic as grey, "default" is the library's default.
        out: an array for the result: C-contiguous, of the result's dtype, and of its shape or flat. Written where
            it lies, and returned. It may overlap `array`.
        shape: (rows, columns), for one-dimensional arrays, whose bytes are the frame's.

    Returns `out`, or a new array.

    Raises TypeError and ValueError where the arguments do not describe a frame; Error, with the library's code,
    message and cause, where the conversion is refused or would not make the picture. A conversion that returns has
    converted. The GIL is released meanwhile; threads may share `array`.

    >>> import numpy as np
    >>> mosaic = np.full((480, 640), 200, np.uint8)
    >>> picture = convert(mosaic, to="bgr8", from_="raw8", tile="rggb", method="hq_linear")
    >>> picture.shape, picture.dtype, picture[0, 0].tolist()
    ((480, 640, 3), dtype('uint8'), [200, 200, 200])

    Sixteen bits from two pixels packed in three bytes, and into an array that is there already:

    >>> packed = np.array([0xAB, 0x3C, 0x12], np.uint8)
    >>> samples = np.zeros((1, 2), np.uint16)
    >>> convert(packed, to="mono16", from_="mono12", shape=(1, 2), out=samples) is samples
    True
    >>> [hex(sample) for sample in samples[0]]
    ['0xab30', '0x12c0']

    What cannot be done is not done:

    >>> convert(mosaic[:, :-1], to="bgr8", from_="raw8", tile="rggb")
    Traceback (most recent call last):
    korvex2.Error: IMAGE_CONVERSION_FAILED: A mosaic has an even number of columns; this one has 639.
    """
    array = np.asarray(array)
    asked = plan(array.shape, array.dtype, to, from_, tile, method, shape)
    source = asked.source_bytes(array)
    if out is not None:
        asked.check_out(out)
        if np.may_share_memory(source, out):
            source = source.copy()
    result = _core.convert(source, asked.rows, asked.cols, asked.source.format, asked.tile, asked.method,
                           asked.target.format, out)
    return out if out is not None else result.view(asked.target.dtype).reshape(asked.out_shape)
