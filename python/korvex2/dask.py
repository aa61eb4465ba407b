"""Many frames on many machines: convert() over Dask arrays and bags, and files that a run may be resumed from.

>>> import dask.array, numpy as np, korvex2.dask
>>> mosaics = dask.array.zeros((100, 480, 640), dtype=np.uint8, chunks=(10, 480, 640))
>>> pictures = korvex2.dask.convert_blocks(mosaics, to="rgb8", from_="raw8", tile="rggb")
>>> pictures.shape, pictures.dtype, pictures.numblocks
((100, 480, 640, 3), dtype('uint8'), (10, 1, 1, 1))

Nothing has been converted yet; pictures.compute(), or write_frames(pictures, folder).compute(), does so on whatever
scheduler or cluster is in use. The workers need korvex2, and write_frames() a folder that all of them see.
"""

from __future__ import annotations

import contextlib
import json
import os
import uuid
from pathlib import Path
from typing import Any, BinaryIO, Iterable, Iterator, NamedTuple, SupportsIndex

import numpy as np
import numpy.typing as npt
from dask.array.core import Array
from dask.bag.core import Bag
from dask.delayed import delayed

from ._convert import convert
from ._frames import plan
from ._formats import PixelFormat
from ._names import BayerTile, Method

__all__ = ["Written", "convert_blocks", "write_frames"]


# --- Converting -----------------------------------------------------------------------------------------------------

def convert_blocks(frames: Any, to: PixelFormat | str = "bgr8", from_: PixelFormat | str | None = None,
                   tile: BayerTile | str | None = None, method: Method | str | None = None, *,
                   shape: Iterable[SupportsIndex] | None = None) -> Any:
    """Frames in another pixel format, converted when and where they are computed.

    Parameters:
        frames: a dask.array.Array of frames along its first axis, or a dask.bag.Bag of arrays. Frames of an array
            that are cut into several chunks are put together first.
        The others are those of convert().

    Returns an array or a bag, as `frames` is one.

    Raises what convert() raises for arguments that do not describe a frame: at once for an array, while computing
    for a bag. Error comes while computing.
    """
    options: dict[str, Any] = dict(
        to=to, from_=from_, tile=tile, method=method, shape=None if shape is None else tuple(shape))
    if isinstance(frames, Bag):
        bag: Any = frames
        return bag.map(convert, **options)
    if not isinstance(frames, Array):
        raise _not_frames(frames)
    if frames.ndim < 2:
        raise ValueError("the first axis of an array counts its frames; there must be others")
    asked = plan(frames.shape[1:], frames.dtype, **options)
    return _with_whole_frames(frames).map_blocks(
        _convert_block, picture_shape=asked.out_shape, picture_dtype=asked.target.dtype, options=options,
        dtype=asked.target.dtype, chunks=(frames.chunks[0], *((side,) for side in asked.out_shape)),
        drop_axis=list(range(1, frames.ndim)), new_axis=list(range(1, 1 + len(asked.out_shape))),
        meta=np.empty((0,) * (1 + len(asked.out_shape)), asked.target.dtype))


def _convert_block(block: npt.NDArray[Any], picture_shape: tuple[int, ...], picture_dtype: np.dtype[Any],
                   options: dict[str, Any]) -> npt.NDArray[Any]:
    pictures = np.empty((len(block), *picture_shape), picture_dtype)
    for frame, picture in zip(block, pictures):
        convert(frame, out=picture, **options)
    return pictures


def _with_whole_frames(frames: Any) -> Any:
    return frames.rechunk({axis: -1 for axis in range(1, frames.ndim)})


def _not_frames(frames: object) -> TypeError:
    return TypeError(f"frames must be a dask.array.Array or a dask.bag.Bag, not {type(frames).__name__}")


# --- Writing --------------------------------------------------------------------------------------------------------

class Written(NamedTuple):
    """What write_frames() did: names of files in its folder, in the order of the frames."""

    written: list[str]
    skipped: list[str]


def write_frames(frames: Any, folder: str | os.PathLike[str], name: str | None = None) -> Any:
    """Writes each frame into a .npy file of its own, and leaves alone those that are there and whole.

    A file has its name only once it is complete, so a run that was stopped, or lost workers, is resumed by the same
    call: blocks whose frames are all there are not computed again. Use one folder for one job: a file of the right
    shape and dtype is taken for the frame, whatever made it. Workers that were killed may leave `.part` files.

    Parameters:
        frames: a dask.array.Array of frames along its first axis, or a dask.bag.Bag of arrays.
        folder: made if it is not there. On a cluster, one that all workers see under this name.
        name: of the files. In an array, {index} counts the frames: "{index:06}.npy", if nothing is said. In a bag,
            whose partitions do not tell their length, {block} counts the partitions, which must be the same ones
            when a run is resumed, and {index} the frames in one: "{block:04}-{index:06}.npy".

    Returns a dask.delayed.Delayed that computes to Written.
    """
    folder = Path(folder).absolute()
    if isinstance(frames, Array):
        parts = _array_parts(frames, folder, name or "{index:06}.npy")
    elif isinstance(frames, Bag):
        parts = _bag_parts(frames, folder, name or "{block:04}-{index:06}.npy")
    else:
        raise _not_frames(frames)
    folder.mkdir(parents=True, exist_ok=True)
    return delayed(_join)(parts)


def _array_parts(frames: Any, folder: Path, name: str) -> list[Any]:
    _check_name(name, {"index": 0}, {"index": 1})
    if np.isnan(frames.shape).any():
        raise ValueError("the array does not know its shape; call its compute_chunk_sizes() first")
    frames = _with_whole_frames(frames)
    begins = np.cumsum((0, *frames.chunks[0]))
    parts = []
    for block, begin, end in zip(frames.to_delayed().ravel(), begins, begins[1:]):
        names = [name.format(index=index) for index in range(begin, end)]
        done = all(_is_whole(folder / each, frames.shape[1:], frames.dtype) for each in names)
        parts.append(Written([], names) if done else delayed(_write_block)(block, folder, names))
    return parts


def _write_block(block: npt.NDArray[Any], folder: Path, names: list[str]) -> Written:
    if len(block) != len(names):
        raise ValueError(f"a block has {len(block)} frames where its array says {len(names)}")
    return _join([_write_frame(frame, folder, name) for frame, name in zip(block, names)])


def _bag_parts(frames: Any, folder: Path, name: str) -> list[Any]:
    _check_name(name, {"block": 0, "index": 0}, {"block": 0, "index": 1}, {"block": 1, "index": 0})
    parts = []
    for block, partition in enumerate(frames.to_delayed()):
        names = _read_receipt(folder, name, block)
        if names is not None and all(_is_whole(folder / each) for each in names):
            parts.append(Written([], names))
        else:
            parts.append(delayed(_write_partition)(partition, folder, name, block))
    return parts


def _write_partition(partition: Iterable[npt.NDArray[Any]], folder: Path, name: str, block: int) -> Written:
    names = []
    results = []
    for index, frame in enumerate(partition):
        names.append(name.format(block=block, index=index))
        results.append(_write_frame(frame, folder, names[-1]))
    _write_receipt(folder, block, names)
    return _join(results)


# The names of a partition's frames, written once all of them are: only then is it known how many there are.
def _receipt(folder: Path, block: int) -> Path:
    return folder / f".{block:04}.written"


def _write_receipt(folder: Path, block: int, names: list[str]) -> None:
    with _complete(_receipt(folder, block)) as file:
        file.write(json.dumps(names).encode())


def _read_receipt(folder: Path, name: str, block: int) -> list[str] | None:
    try:
        names = json.loads(_receipt(folder, block).read_bytes())
    except (OSError, ValueError, RecursionError):
        return None
    if not isinstance(names, list) or names != [name.format(block=block, index=index) for index in range(len(names))]:
        return None  # of other names, or no receipt at all
    return names


def _write_frame(frame: npt.NDArray[Any], folder: Path, name: str) -> Written:
    if _is_whole(folder / name, frame.shape, frame.dtype):
        return Written([], [name])
    with _complete(folder / name) as file:
        np.save(file, frame)
    return Written([name], [])


def _is_whole(path: Path, shape: tuple[int, ...] | None = None, dtype: np.dtype[Any] | None = None) -> bool:
    try:
        array = np.lib.format.open_memmap(path, mode="r")
    except Exception:  # not there, cut off, or something else: NumPy lets out whatever its parsers raise
        return False
    return shape is None or (array.shape == shape and array.dtype == dtype)


@contextlib.contextmanager
def _complete(path: Path) -> Iterator[BinaryIO]:
    """A file that appears under its name when it is complete. Two workers may write the same one."""
    part = path.with_name(f".{path.name}.{uuid.uuid4().hex}.part")
    try:
        with open(part, "xb") as file:
            yield file
        os.replace(part, path)
    finally:
        part.unlink(missing_ok=True)


def _check_name(name: str, *fields: dict[str, int]) -> None:
    """Raises where different frames would have one name."""
    try:
        names = {name.format(**each) for each in fields}
    except (LookupError, ValueError) as error:
        raise ValueError(f"{name!r} is no name for these frames: {error!r}") from None
    if len(names) < len(fields) or not name.endswith(".npy") or os.path.basename(name) != name:
        needed = " and ".join(f"{{{field}}}" for field in fields[0])
        raise ValueError(
            f"{name!r} is no name for these frames: it must have {needed}, end with .npy and name no folder")


def _join(parts: Iterable[Written]) -> Written:
    parts = list(parts)
    return Written([name for part in parts for name in part.written], [name for part in parts for name in part.skipped])
