"""How frames of each format lie in NumPy arrays, and what a call of convert() asks for."""

from __future__ import annotations

import dataclasses
import functools
import operator
from typing import Any, Iterable, NamedTuple, SupportsIndex

import numpy as np
import numpy.typing as npt

from . import _core
from ._formats import PixelFormat
from ._names import BayerTile, Method

_BYTE = np.dtype("u1")
_MAX_SIDE = 2**32 - 1

Shape = tuple[int, ...]


@dataclasses.dataclass(frozen=True)
class FormatInfo:
    """One pixel format: a row of the library's table, and how its frames lie in arrays.

    `raw` says whether it is a Bayer mosaic. `dtype` is that of the arrays. `channels` is the shape of a pixel in them,
    `()` for H x W; it is None for the formats that pack several pixels into a group of bytes.
    """

    format: PixelFormat
    name: str
    enumerator: str
    aliases: tuple[str, ...]
    bits_per_pixel: int
    pixels_per_group: int
    bytes_per_group: int
    convertible: bool
    layout: str
    raw: bool
    dtype: np.dtype[Any]
    channels: Shape | None

    def nbytes(self, rows: int, cols: int) -> int:
        """Bytes of a frame, its last group whole.

        >>> {info.name: info.nbytes(1, 5) for info in formats()}["yuv422"]
        12
        """
        return -(-rows * cols // self.pixels_per_group) * self.bytes_per_group

    def array_shape(self, rows: int, cols: int) -> Shape:
        """The shape of an array that holds a frame.

        H x W or H x W x C; H x bytes for packed formats, and one flat run of bytes where a row does not end with
        a group.
        """
        if self.channels is not None:
            return (rows, cols, *self.channels)
        if cols % self.pixels_per_group == 0:
            return (rows, cols // self.pixels_per_group * self.bytes_per_group)
        return (self.nbytes(rows, cols),)

    def accepts_shape(self, array_shape: Shape, rows: int, cols: int) -> bool:
        """Whether an array of this shape can hold a frame: array_shape(), or H x W x 2 for 4:2:2."""
        return array_shape == self.array_shape(rows, cols) or self.size_of(array_shape) == (rows, cols)

    def size_of(self, array_shape: Shape) -> tuple[int, int] | None:
        """Rows and columns of the frame in an array of this shape; None where the shape does not tell."""
        if self.channels is not None:
            frame, pixel = array_shape[:2], array_shape[2:]
            return (frame[0], frame[1]) if len(frame) == 2 and pixel == self.channels else None
        if len(array_shape) == 3 and array_shape[2] * self.pixels_per_group == self.bytes_per_group:
            array_shape = (array_shape[0], array_shape[1] * array_shape[2])
        if len(array_shape) != 2 or array_shape[1] % self.bytes_per_group:
            return None
        return array_shape[0], array_shape[1] // self.bytes_per_group * self.pixels_per_group

    def describe_arrays(self) -> str:
        """What arrays of this format look like, for messages."""
        if self.channels is None:
            return f"uint8 of rows x {self.bytes_per_group} bytes for every {self.pixels_per_group} columns"
        return f"{self.dtype} of " + " x ".join(["rows", "columns", *map(str, self.channels)])


def _shape_of(channels: int) -> Shape:
    return () if channels == 1 else (channels,)


def _format_info(row: _core._FormatRow) -> FormatInfo:
    format_ = PixelFormat(row["value"])
    # Formats whose pixels share bytes are arrays of these.
    dtype, channels = (row["dtype"], _shape_of(row["channels"])) if row["channels"] else ("u1", None)
    return FormatInfo(
        format_, row["name"], row["enumerator"], row["aliases"], row["bits_per_pixel"], row["pixels_per_group"],
        row["bytes_per_group"], row["convertible"], row["layout"], row["raw"], np.dtype(dtype), channels)


_FORMATS = {info.format: info for info in map(_format_info, _core.formats())}


def formats() -> list[FormatInfo]:
    """Every pixel format with its names, layout and arrays, convertible ones first.

    >>> [info.name for info in formats() if info.dtype == "uint16"]
    ['mono16', 'rgb16', 'bgr16', 'bgru16', 'raw16']
    """
    return list(_FORMATS.values())


class Route(NamedTuple):
    """What runs for a pair of formats: `kind` is "converted", "copied" or "refused"."""

    from_: PixelFormat
    to: PixelFormat
    kind: str
    routine: str | None
    kernels: tuple[str, ...]


def routes(from_: PixelFormat | str | None = None, to: PixelFormat | str | None = None) -> list[Route]:
    """What the converter runs for each pair of formats that convert, or for those that are asked for.

    >>> route, = routes("rgb8", "bgru")
    >>> route.kernels
    ('Swap_C1C3_3Channel_8bit', 'AddAlphaChannel_8bit')
    >>> [str(route.to) for route in routes("mono8") if route.kind == "refused"]
    ['raw8', 'raw12', 'raw16']
    """
    return [_route(source, target) for source in _formats_named(from_) for target in _formats_named(to)]


def _formats_named(name: PixelFormat | str | None) -> list[PixelFormat]:
    return [info.format for info in formats() if info.convertible] if name is None else [PixelFormat.of(name)]


def _route(source: PixelFormat, target: PixelFormat) -> Route:
    kind, routine, kernels = _core.route(source, target)
    return Route(source, target, kind, routine, tuple(kernels))


class Plan(NamedTuple):
    """A conversion that was asked for in terms that make sense; whether it can be made, the library tells."""

    rows: int
    cols: int
    source: FormatInfo
    target: FormatInfo
    tile: BayerTile
    method: Method

    @property
    def out_shape(self) -> Shape:
        return self.target.array_shape(self.rows, self.cols)

    def source_bytes(self, array: npt.NDArray[Any]) -> npt.NDArray[Any]:
        """The frame as C-contiguous bytes in the order of its format: the array itself wherever it is that."""
        if array.dtype != _BYTE:
            array = array.astype(self.source.dtype, copy=False)
        return np.ascontiguousarray(array)

    def check_out(self, out: object) -> None:
        """Raises where `out` cannot take the picture."""
        if not isinstance(out, np.ndarray):
            raise TypeError(f"out must be a numpy.ndarray, not {type(out).__name__}")
        dtype = self.target.dtype
        flat = (self.target.nbytes(self.rows, self.cols) // dtype.itemsize,)
        fits = self.target.accepts_shape(out.shape, self.rows, self.cols) or out.shape == flat
        if out.dtype != dtype or not fits:
            raise ValueError(f"out must be {dtype} of shape {self.out_shape} for {self.rows} x {self.cols} pixels of "
                             f"{self.target.name}, not {out.dtype} of shape {out.shape}")
        if not out.flags.c_contiguous or not out.flags.writeable:
            raise ValueError("out must be C-contiguous and writeable")


def plan(array_shape: Shape, dtype: np.dtype[Any], to: PixelFormat | str, from_: PixelFormat | str | None,
         tile: BayerTile | str | None, method: Method | str | None, shape: Iterable[SupportsIndex] | None) -> Plan:
    """The Plan of converting an array; TypeError or ValueError where none can be made."""
    return _plan(array_shape, dtype, to, from_, tile, method, None if shape is None else _sides(shape))


@functools.lru_cache(256)  # frames come in series
def _plan(array_shape: Shape, dtype: np.dtype[Any], to: PixelFormat | str, from_: PixelFormat | str | None,
          tile: BayerTile | str | None, method: Method | str | None, shape: tuple[int, int] | None) -> Plan:
    target = _FORMATS[PixelFormat.of(to)]
    tile = _choose_tile(from_, tile)
    source = _FORMATS[_infer(array_shape, dtype, tile) if from_ is None else PixelFormat.of(from_)]
    rows, cols = _size(source, array_shape, dtype, shape)
    method = _choose_method(source, target, tile, method)
    if tile is None:
        tile = BayerTile.NONE
    if tile is BayerTile.NONE or method is Method.NONE:
        source = _as_grey(source, target)
    return Plan(rows, cols, source, target, tile, method)


def _sides(shape: Iterable[SupportsIndex]) -> tuple[int, int]:
    try:
        rows, cols = map(operator.index, shape)
    except (TypeError, ValueError):
        raise TypeError(f"shape must be two integers, rows and columns, not {shape!r}") from None
    if min(rows, cols) < 0:
        raise ValueError(f"shape must not be negative, and is {shape!r}")
    return rows, cols


def _choose_tile(from_: PixelFormat | str | None, tile: BayerTile | str | None) -> BayerTile | None:
    value = _core.tile_in_format_name(from_) if isinstance(from_, str) else None
    named = None if value is None else BayerTile(value)
    if tile is None:
        return named
    tile = BayerTile.of(tile)
    if named is not None and tile not in (named, BayerTile.NONE):
        raise ValueError(f"from_={from_!r} is tile {named}, and tile says {tile}; leave one of them out")
    return tile


def _choose_method(source: FormatInfo, target: FormatInfo, tile: BayerTile | None,
                   method: Method | str | None) -> Method:
    """Raw sources need a tile, others take none; a method is for making pictures of mosaics."""
    raw = source.raw
    demosaics = raw and not target.raw
    if demosaics and tile is None:
        raise ValueError(f"a {source.name} source needs tile, the colours of its top-left 2 x 2: "
                         + ", ".join(map(str, BayerTile)))
    if not raw and tile is not None:
        raise ValueError(f"tile is for mosaics, and {source.name} is none; say from_='raw8', 'raw12' or 'raw16'")
    if not demosaics and method is not None:
        raise ValueError(f"method is for turning mosaics into pictures; {source.name} to {target.name} does not")
    if not demosaics:
        return Method.DEFAULT
    return Method.HQ_LINEAR if method is None else Method.of(method)


def _as_grey(source: FormatInfo, target: FormatInfo) -> FormatInfo:
    """Deep mosaics that are shown without colour are grey samples; the converter would take each byte for one."""
    if target.raw:
        return source
    grey = {PixelFormat.RAW12: PixelFormat.MONO12, PixelFormat.RAW16: PixelFormat.MONO16}
    return _FORMATS[grey.get(source.format, source.format)]


def _infer(array_shape: Shape, dtype: np.dtype[Any], tile: BayerTile | None) -> PixelFormat:
    """The format of an array that can be of one only. A tile says that its elements are samples of a mosaic."""
    candidates = [info for info in formats()
                  if info.convertible and _same_numbers(dtype, info.dtype) and info.size_of(array_shape) is not None
                  and (tile is None or info.raw)]
    sampled = [info for info in candidates if info.channels is not None]
    if len(sampled) == 1 and (tile is not None or len(candidates) == 1):
        return sampled[0].format
    what = f"{dtype} of shape {array_shape}"
    if not candidates:
        raise ValueError(f"no format is known by {what}; say from_, and shape=(rows, columns) for flat bytes")
    raise ValueError(f"{what} may be {' or '.join(info.name for info in candidates)}; say from_"
                     + (", and tile for a mosaic" if any(info.raw for info in candidates) else ""))


def _same_numbers(dtype: np.dtype[Any], wanted: np.dtype[Any]) -> bool:
    """Whether the dtypes are the same but for the order of bytes."""
    return dtype.kind == wanted.kind and dtype.itemsize == wanted.itemsize


def _size(source: FormatInfo, array_shape: Shape, dtype: np.dtype[Any],
          shape: tuple[int, int] | None) -> tuple[int, int]:
    """Rows and columns, as the array shows or the caller says."""
    flat = len(array_shape) == 1
    if not (_same_numbers(dtype, source.dtype) or (flat and dtype == _BYTE)):
        raise TypeError(f"a {source.name} frame is {source.describe_arrays()}, not {dtype}")
    if shape is not None and flat:
        _check_flat(source, array_shape[0] * dtype.itemsize, shape)
        size = shape
    else:
        size = _shown_size(source, array_shape, shape)
    if max(size) > _MAX_SIDE:
        raise ValueError(f"a frame has {_MAX_SIDE} rows and columns at most, not {size[0]} x {size[1]}")
    return size


def _check_flat(source: FormatInfo, nbytes: int, shape: tuple[int, int]) -> None:
    rows, cols = shape
    whole = source.nbytes(rows, cols)
    cut = -(-rows * cols * source.bits_per_pixel // 8)  # headerless files may end with the last pixel
    if nbytes not in (whole, cut):
        raise ValueError(f"{rows} x {cols} pixels of {source.name} are {whole} bytes, not {nbytes}")


def _shown_size(source: FormatInfo, array_shape: Shape, shape: tuple[int, int] | None) -> tuple[int, int]:
    size = source.size_of(array_shape)
    if size is None:
        raise ValueError(f"a {source.name} frame is {source.describe_arrays()}, not of shape {array_shape}; "
                         "other frames are flat bytes with shape=(rows, columns)")
    if shape is not None and size != shape:
        raise ValueError(f"an array of shape {array_shape} is {size[0]} x {size[1]} pixels of {source.name}, and shape "
                         f"says {shape[0]} x {shape[1]}")
    return size
