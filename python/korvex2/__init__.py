"""Converts frames of machine-vision cameras between pixel formats, exactly.

>>> import numpy as np, korvex2
>>> mosaic = np.zeros((480, 640), np.uint8)
>>> korvex2.convert(mosaic, to="rgb8", from_="raw8", tile="rggb").shape
(480, 640, 3)

convert() does the work; formats() and routes() tell what there is. PixelFormat, BayerTile and Method are the names as
enumerations; wherever one is asked for, its name does as well. korvex2.dask converts many frames on many machines.
"""

from __future__ import annotations

from . import _core
from ._convert import convert
from ._errors import Error, ErrorCode
from ._formats import PixelFormat
from ._frames import FormatInfo, Route, formats, routes
from ._names import BayerTile, Method

__version__: str = _core.version()
__all__ = ["BayerTile", "Error", "ErrorCode", "FormatInfo", "Method", "PixelFormat", "Route", "convert", "formats",
           "routes"]
