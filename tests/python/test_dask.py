"""korvex2.dask: in threads, and on a cluster of two worker processes of which one is killed."""

import contextlib
import itertools
import json
import os
import signal
import time

import numpy as np
import pytest

import korvex2

dask = pytest.importorskip("dask", reason="Dask is missing: its helper is not tested")
pytest.importorskip("distributed", reason="dask.distributed is missing: the Dask helper is not tested")
import dask.array
import dask.bag
import distributed
import korvex2.dask

COUNT, ROWS, COLS = 40, 6, 8
TO_COLOUR = dict(to="bgr8", from_="raw8", tile="rggb", method="edge")


def mosaics(count=COUNT):
    return np.random.default_rng(5).integers(0, 256, (count, ROWS, COLS), np.uint8)


def converted(frames, **options):
    return np.stack([korvex2.convert(frame, **options) for frame in frames])


def files(folder):
    return {path.name: path for path in folder.iterdir()}


@pytest.fixture(autouse=True)
def scheduler():
    with dask.config.set(scheduler="threads"):
        yield


# --- convert_blocks -------------------------------------------------------------------------------------------------

@pytest.mark.parametrize("chunks", [(7, ROWS, COLS), (COUNT, 2, COLS), (1, 3, 5)])
def test_arrays(chunks):
    frames = mosaics()
    pictures = korvex2.dask.convert_blocks(dask.array.from_array(frames, chunks=chunks), **TO_COLOUR)
    assert pictures.shape == (COUNT, ROWS, COLS, 3) and pictures.dtype == np.uint8
    assert pictures.chunks[0][0] == chunks[0] and pictures.chunksize[1:] == (ROWS, COLS, 3)
    assert np.array_equal(pictures.compute(), converted(frames, **TO_COLOUR))
    assert np.array_equal(pictures[3:5].compute(), converted(frames[3:5], **TO_COLOUR))


@pytest.mark.parametrize("shape, options", [
    ((ROWS, COLS * 3 // 2), dict(to="mono16", from_="mono12")),
    ((ROWS, COLS, 3), dict(to="yuv411", from_="rgb8")),
    ((63,), dict(to="rgb8", from_="mono12", shape=(6, 7))),
    ((6, 7), dict(to="mono12", from_="mono8")),
])
def test_arrays_of_other_shapes(shape, options):
    frames = np.random.default_rng(6).integers(0, 256, (10, *shape), np.uint8)
    pictures = korvex2.dask.convert_blocks(dask.array.from_array(frames, chunks=3), **options)
    expected = converted(frames, **options)
    assert pictures.shape == expected.shape and pictures.dtype == expected.dtype
    assert np.array_equal(pictures.compute(), expected)


def test_bags():
    frames = mosaics()
    pictures = korvex2.dask.convert_blocks(dask.bag.from_sequence(list(frames), npartitions=3), **TO_COLOUR)
    assert np.array_equal(np.stack(pictures.compute()), converted(frames, **TO_COLOUR))


def test_wrong_frames():
    array = dask.array.from_array(mosaics())
    with pytest.raises(TypeError, match="must be a dask.array.Array or a dask.bag.Bag, not ndarray"):
        korvex2.dask.convert_blocks(mosaics(), **TO_COLOUR)
    with pytest.raises(ValueError, match="the first axis of an array counts its frames"):
        korvex2.dask.convert_blocks(array[0, 0], "rgb8", "mono8")
    with pytest.raises(ValueError, match="a raw8 source needs tile"):  # at once, not on a worker
        korvex2.dask.convert_blocks(array, "rgb8", "raw8")
    with pytest.raises(korvex2.Error, match="even number of rows; this one has 5"):
        korvex2.dask.convert_blocks(array[:, :5], **TO_COLOUR).compute()


# --- write_frames ---------------------------------------------------------------------------------------------------

class Counted:
    """Converts as TO_COLOUR says, and leaves a note of each frame that it was given."""

    def __init__(self, folder):
        self.folder = folder

    def __call__(self, block):
        (self.folder / f"{len(block)}-{time.monotonic_ns()}").touch()
        return converted(block, **TO_COLOUR)

    def frames(self):
        return sum(int(path.name.split("-")[0]) for path in self.folder.iterdir())


def test_arrays_are_written_and_resumed(tmp_path):
    counted = Counted(tmp_path / "notes")
    counted.folder.mkdir()
    array = dask.array.from_array(mosaics(), chunks=(6, ROWS, COLS))
    pictures = array.map_blocks(counted, dtype=np.uint8, chunks=(*array.chunks, (3,)), new_axis=3,
                                meta=np.empty((0, 0, 0, 0), np.uint8))
    out = tmp_path / "deep" / "out"
    names = [f"{index:06}.npy" for index in range(COUNT)]

    assert korvex2.dask.write_frames(pictures, out).compute() == (names, [])
    assert counted.frames() == COUNT
    expected = converted(mosaics(), **TO_COLOUR)

    def check():
        assert sorted(files(out)) == names
        assert all(np.array_equal(np.load(out / name), frame) for name, frame in zip(names, expected))

    check()
    assert korvex2.dask.write_frames(pictures, out).compute() == ([], names)
    assert counted.frames() == COUNT, "nothing is computed again"

    # Cut off, missing, of another shape, empty, no array: in blocks 0, 1, 1, 3 and 6.
    with open(out / "000003.npy", "r+b") as file:
        file.truncate(200)
    (out / "000007.npy").unlink()
    np.save(out / "000008.npy", np.zeros((2, 2)))
    (out / "000020.npy").write_bytes(b"")
    (out / "000039.npy").write_bytes(b"not an array, whatever its name")
    result = korvex2.dask.write_frames(pictures, out).compute()
    assert result.written == [names[i] for i in (3, 7, 8, 20, 39)]
    assert sorted(result.written + result.skipped) == names
    assert counted.frames() == COUNT + 6 + 6 + 6 + 4, "whole blocks are not computed again"
    check()


def test_bags_are_written_and_resumed(tmp_path):
    notes = tmp_path / "notes"
    notes.mkdir()

    def load(index):
        (notes / f"{index}-{time.monotonic_ns()}").touch()
        return mosaics()[index]

    bag = dask.bag.from_sequence(range(COUNT), npartitions=4).map(load)
    pictures = korvex2.dask.convert_blocks(bag, **TO_COLOUR)
    out = tmp_path / "out"
    names = [f"{index // 10:04}-{index % 10:06}.npy" for index in range(COUNT)]
    assert korvex2.dask.write_frames(pictures, out).compute() == (names, [])
    frames = converted(mosaics(), **TO_COLOUR)
    assert all(np.array_equal(np.load(out / name), frame) for name, frame in zip(names, frames))
    assert korvex2.dask.write_frames(pictures, out).compute() == ([], names)
    assert len(list(notes.iterdir())) == COUNT, "nothing is loaded again"

    (out / "0002-000004.npy").unlink()
    (out / ".0003.written").write_text("[")
    result = korvex2.dask.write_frames(pictures, out).compute()
    assert result.written == ["0002-000004.npy"] and len(result.skipped) == COUNT - 1
    assert len(list(notes.iterdir())) == COUNT + 10 + 10


def test_a_frame_that_fails_leaves_no_file_and_the_others(tmp_path):
    frames = mosaics()

    def fail_at_12(block, block_info=None):
        if block_info[0]["array-location"][0][0] == 12:
            raise RuntimeError("no light")
        return block

    array = dask.array.from_array(frames, chunks=(4, ROWS, COLS))
    broken = array.map_blocks(fail_at_12, dtype=np.uint8, meta=np.empty((0, 0, 0), np.uint8))
    with pytest.raises(RuntimeError, match="no light"):
        korvex2.dask.write_frames(broken, tmp_path, "frame-{index}.npy").compute(scheduler="sync")
    assert not {f"frame-{index}.npy" for index in range(12, 16)} & set(files(tmp_path))
    assert not [name for name in files(tmp_path) if name.endswith(".part")]
    result = korvex2.dask.write_frames(array, tmp_path, "frame-{index}.npy").compute()
    assert len(result.written) + len(result.skipped) == COUNT and len(files(tmp_path)) == COUNT


def npy(header):
    header = header.encode().ljust(117) + b"\n"
    return b"\x93NUMPY\x01\0" + len(header).to_bytes(2, "little") + header + bytes(ROWS * COLS)


@pytest.mark.parametrize("content", [
    b"PK\x03\x04abc", b"\x80\x04N.", npy("{" * 16), npy("("),
    npy("{'descr': 'O', 'fortran_order': False, 'shape': (6, 8), }"),
    npy("{'descr': '|u1', 'fortran_order': False, 'shape': (99999999999999999999999, 8), }"),
    npy("{'descr': '|u1', 'fortran_order': False, 'shape': (-6, 8), }"), npy("{'descr': 5}"), npy("\xff"),
    b"\x93NUMPY\x09\0\x10\0" + bytes(16), "zip"], ids=itertools.count())
def test_foreign_files_are_written_anew(tmp_path, content):
    frames = mosaics(2)
    array = dask.array.from_array(frames, chunks=(1, ROWS, COLS))
    if content == "zip":
        with open(tmp_path / "000000.npy", "wb") as file:
            np.savez(file, frames)
    else:
        (tmp_path / "000000.npy").write_bytes(content)
    result = korvex2.dask.write_frames(array, tmp_path).compute()
    assert result == (["000000.npy", "000001.npy"], [])
    assert np.array_equal(np.load(tmp_path / "000000.npy"), frames[0])


@pytest.mark.parametrize("receipt", [
    b"5", b"[1]", b"null", b"[null]", b'{"0000-000000.npy": 1}', b'["../other.npy"]', b'["0000-000001.npy"]', b"\xff",
    b"[" * 100000], ids=itertools.count())
def test_foreign_receipts_are_written_anew(tmp_path, receipt):
    out = tmp_path / "out"
    bag = dask.bag.from_sequence(list(mosaics(2)), npartitions=1)
    names = ["0000-000000.npy", "0000-000001.npy"]
    assert korvex2.dask.write_frames(bag, out).compute() == (names, [])
    np.save(tmp_path / "other.npy", mosaics(1))
    (out / ".0000.written").write_bytes(receipt)
    assert korvex2.dask.write_frames(bag, out).compute() == ([], names)
    assert json.loads((out / ".0000.written").read_text()) == names


@pytest.mark.parametrize("name", ["frame.npy", "{index}.png", "{frame}.npy", "sub/{index}.npy", "{index.npy", "{}.npy"])
def test_wrong_names(tmp_path, name):
    with pytest.raises(ValueError, match="is no name for these frames"):
        korvex2.dask.write_frames(dask.array.from_array(mosaics()), tmp_path / "out", name)
    assert not (tmp_path / "out").exists()


def test_a_block_that_is_not_as_long_as_it_says(tmp_path):
    array = dask.array.from_array(mosaics(), chunks=(4, ROWS, COLS))
    shorter = array.map_blocks(lambda block: block[1:], dtype=np.uint8, meta=np.empty((0, 0, 0), np.uint8))
    with pytest.raises(ValueError, match="a block has 3 frames where its array says 4"):
        korvex2.dask.write_frames(shorter, tmp_path).compute()


def test_wrong_frames_to_write(tmp_path):
    with pytest.raises(TypeError, match="not ndarray"):
        korvex2.dask.write_frames(mosaics(), tmp_path / "out")
    unknown = dask.array.from_array(mosaics())
    with pytest.raises(ValueError, match="does not know its shape"):
        korvex2.dask.write_frames(unknown[unknown[:, 0, 0] > 9], tmp_path / "out")
    with pytest.raises(ValueError, match="{block}"):
        korvex2.dask.write_frames(dask.bag.from_sequence([1]), tmp_path / "out", "{index}.npy")


# --- A cluster ------------------------------------------------------------------------------------------------------

@contextlib.contextmanager
def two_workers(folder):
    """A client of a cluster of its own, whose two processes are gone when it ends."""
    patient = {f"distributed.comm.timeouts.{kind}": "120s" for kind in ("connect", "tcp")}
    with dask.config.set({"temporary-directory": str(folder)} | patient), distributed.LocalCluster(
            n_workers=2, threads_per_worker=1, processes=True, dashboard_address=":0",
            silence_logs=50) as cluster, distributed.Client(cluster) as client:
        yield client


@pytest.fixture(scope="module")
def client(tmp_path_factory):
    with two_workers(tmp_path_factory.mktemp("dask")) as client:
        yield client


def wait_for(condition, what):
    deadline = time.monotonic() + 60
    while not condition():
        assert time.monotonic() < deadline, f"waited a minute for {what}"
        time.sleep(0.01)


def npy_files(folder):
    return sorted(path.name for path in folder.glob("*.npy"))


def held_back(out, go):
    """Pictures of mosaics() that are made for as long as `out` holds fewer than six, and then once `go` is there."""
    def hold(block):
        while len(npy_files(out)) >= 6 and not go.exists():
            time.sleep(0.01)
        return block

    array = dask.array.from_array(mosaics(), chunks=(2, ROWS, COLS))
    return korvex2.dask.convert_blocks(array.map_blocks(hold, dtype=np.uint8), **TO_COLOUR)


def test_a_killed_worker_loses_nothing(tmp_path):
    out, go = tmp_path / "out", tmp_path / "go"
    with two_workers(tmp_path) as client:
        workers = client.run(os.getpid)
        assert len(workers) == 2 and os.getpid() not in workers.values()

        future = client.compute(korvex2.dask.write_frames(held_back(out, go), out))
        wait_for(lambda: len(npy_files(out)) >= 6, "the first frames")
        os.kill(next(iter(workers.values())), signal.SIGKILL)
        assert not future.done() and len(npy_files(out)) < COUNT, "killed in the middle"
        go.touch()
        result = future.result(timeout=120)
        assert set(workers.values()) - set(client.run(os.getpid).values()), "the worker was killed indeed"

    names = [f"{index:06}.npy" for index in range(COUNT)]
    assert sorted({*result.written, *result.skipped}) == npy_files(out) == names
    expected = converted(mosaics(), **TO_COLOUR)
    assert all(np.array_equal(np.load(out / name), frame) for name, frame in zip(names, expected))


def test_a_stopped_run_is_resumed_on_another_cluster(client, tmp_path):
    out, go = tmp_path / "out", tmp_path / "go"
    pictures = held_back(out, go)
    with two_workers(tmp_path) as stopped:
        running = stopped.compute(korvex2.dask.write_frames(pictures, out))
        wait_for(lambda: len(npy_files(out)) >= 6, "the first frames")
        assert not running.done(), "stopped in the middle"
    done = npy_files(out)
    assert 6 <= len(done) < COUNT

    go.touch()
    result = korvex2.dask.write_frames(pictures, out).compute(scheduler=client)
    assert result.skipped == done and len(result.written) == COUNT - len(done)
    assert len(npy_files(out)) == COUNT


def test_errors_come_back_from_a_worker_as_they_are(client):
    odd = dask.array.from_array(mosaics()[:, :5], chunks=(2, 5, COLS))
    with pytest.raises(korvex2.Error) as caught:
        korvex2.dask.convert_blocks(odd, **TO_COLOUR).compute(scheduler=client)
    assert caught.value.code is korvex2.ErrorCode.IMAGE_CONVERSION_FAILED
    assert caught.value.message == "A mosaic has an even number of rows; this one has 5."
