"""What happens to a run from outside: a disk that is full, a folder that goes away, an input that shrinks,
signals at any moment. Never a part of a file under its final name, never a temporary file left, one line
that says what happened, and an exit code that is not 0."""

import os
import resource
import shutil
import signal
import subprocess
import time

import numpy as np
import pytest

from conftest import TOOL
from pictures import pnm_bytes

STOPPING = [signal.SIGINT, signal.SIGTERM, signal.SIGHUP, signal.SIGQUIT]
MOMENTS = 12


def names(folder):
    return sorted(path.name for path in folder.iterdir())


def start(folder, *arguments, ignored=()):
    def prepare():
        resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
        for number in ignored:
            signal.signal(number, signal.SIG_IGN)

    return subprocess.Popen([TOOL, *map(str, arguments)], cwd=folder, stdout=subprocess.DEVNULL,
                            stderr=subprocess.PIPE, text=True, preexec_fn=prepare)


def said(process):
    """The message, its exit code waited for."""
    _, message = process.communicate(timeout=120)
    assert message == "" or (message.startswith("korvex2: ") and message.count("\n") == 1), message
    return message


@pytest.fixture
def work(tool):
    """A conversion that takes a while to read, to convert and to write."""
    noise = np.random.default_rng(5).integers(0, 256, (600, 800), dtype=np.uint8)
    (tool.folder / "in.pgm").write_bytes(pnm_bytes(noise))
    tool.arguments = ["convert", "in.pgm", "out.png", "--from", "raw8", "--tile", "rggb", "--to", "rgb8"]
    begin = time.monotonic()
    tool.succeeds(*tool.arguments)
    tool.seconds = time.monotonic() - begin
    tool.whole = (tool.folder / "out.png").read_bytes()
    (tool.folder / "out.png").unlink()
    return tool


# --- Signals. ---------------------------------------------------------------------------------------

@pytest.mark.parametrize("number", STOPPING)
def test_a_signal_at_any_moment_leaves_the_whole_file_or_none(work, number):
    stopped = told = 0
    for moment in range(MOMENTS):
        process = start(work.folder, *work.arguments)
        time.sleep(work.seconds * moment / MOMENTS)
        process.send_signal(number)
        message = said(process)
        if process.returncode == 0:
            assert (work.folder / "out.png").read_bytes() == work.whole
            (work.folder / "out.png").unlink()
        else:
            stopped += 1
            assert process.returncode == -number  # a shell calls it 128 + number
            assert message in ("", f"korvex2: stopped by {number.name}; no unfinished file is left\n")
            told += message != ""  # the first ones come before main()
        assert names(work.folder) == ["in.pgm"]
    assert 0 < told <= stopped


def test_a_signal_leaves_the_old_output(work):
    (work.folder / "out.png").write_bytes(b"old")
    for moment in range(MOMENTS):
        process = start(work.folder, *work.arguments)
        time.sleep(work.seconds * moment / MOMENTS)
        process.send_signal(signal.SIGTERM)
        said(process)
        assert names(work.folder) == ["in.pgm", "out.png"]
        whole = (work.folder / "out.png").read_bytes() == work.whole
        assert whole == (process.returncode == 0) or whole
        if not whole:
            assert (work.folder / "out.png").read_bytes() == b"old"
        (work.folder / "out.png").write_bytes(b"old")


def test_two_signals_at_once(work):
    for moment in range(5):
        process = start(work.folder, *work.arguments)
        time.sleep(work.seconds * (moment + 3) / 10)
        process.send_signal(signal.SIGINT)
        process.send_signal(signal.SIGTERM)
        process.communicate(timeout=120)
        assert process.returncode in (0, -signal.SIGINT, -signal.SIGTERM)
        assert names(work.folder) == (["in.pgm", "out.png"] if process.returncode == 0 else ["in.pgm"])
        (work.folder / "out.png").unlink(missing_ok=True)


def test_ignored_signals_stay_ignored(work):
    process = start(work.folder, *work.arguments, ignored=[signal.SIGHUP])  # as nohup does
    for _ in range(20):
        time.sleep(work.seconds / 40)
        process.send_signal(signal.SIGHUP)
    assert said(process) == "" and process.returncode == 0
    assert (work.folder / "out.png").read_bytes() == work.whole


def test_a_killed_run_leaves_no_part_under_the_final_name(work):
    for moment in range(MOMENTS):
        process = start(work.folder, *work.arguments)
        time.sleep(work.seconds * moment / MOMENTS)
        process.kill()
        process.communicate(timeout=120)
        for path in work.folder.iterdir():
            if path.name == "out.png":
                assert path.read_bytes() == work.whole
            elif path.name != "in.pgm":
                assert path.name.startswith(".out.png.") and path.name.endswith(".tmp")
            if path.name != "in.pgm":
                path.unlink()


def test_what_a_killed_run_left_is_in_nobodys_way(work):
    """Even where every process has the same number, as the first one in a container has."""
    process = subprocess.Popen(
        ["sh", "-c", 'touch ".out.png.$$-0.tmp" ".out.png.$$-1.tmp"; exec "$@"', "sh", TOOL, *work.arguments],
        cwd=work.folder, stdout=subprocess.DEVNULL)
    assert process.wait(120) == 0
    assert (work.folder / "out.png").read_bytes() == work.whole


# --- Disks. -----------------------------------------------------------------------------------------

def limit_files(ignored):
    def limit():
        signal.signal(signal.SIGXFSZ, signal.SIG_IGN if ignored else signal.SIG_DFL)
        resource.setrlimit(resource.RLIMIT_FSIZE, (100000, 100000))
    return limit


@pytest.mark.parametrize("ignored", [True, False])
@pytest.mark.parametrize("output", ["out.png", "out.ppm", "out.raw"])
def test_a_limit_on_files(work, output, ignored):
    arguments = [output if argument == "out.png" else argument for argument in work.arguments]
    result = work.run(*arguments, preexec_fn=limit_files(ignored))
    assert result.returncode == 1
    assert result.stderr == f"korvex2: cannot write {output}: File too large\n"
    assert names(work.folder) == ["in.pgm"]


def in_a_small_disk(tool, size, command):
    """Runs in a mount namespace of its own, in which `disk` is a file system of that size."""
    (tool.folder / "disk").mkdir()
    result = subprocess.run(
        ["unshare", "--mount", "sh", "-c", f'mount -t tmpfs -o size={size} small disk || exit 99; {command}', "sh",
         TOOL], cwd=tool.folder, capture_output=True, text=True, timeout=120)
    if result.returncode in (1, 99) and "korvex2" not in result.stderr:
        pytest.skip("SKIPPED: may not mount a file system: " + result.stderr.strip())
    return result


@pytest.mark.parametrize("output", ["out.png", "out.ppm", "out.raw"])
def test_a_full_disk_is_empty_again_afterwards(work, output):
    result = in_a_small_disk(
        work, "64k",
        f'"$1" convert in.pgm disk/{output} --from raw8 --tile rggb --to rgb8; code=$?; ls -A disk; exit $code')
    assert result.returncode == 1
    assert result.stderr == f"korvex2: cannot write disk/{output}: No space left on device\n"
    assert result.stdout == ""  # nothing is in the folder


def test_a_full_disk_leaves_the_old_output(work):
    result = in_a_small_disk(
        work, "64k",
        'echo old >disk/out.ppm; "$1" convert in.pgm disk/out.ppm --from raw8 --tile rggb --to rgb8; code=$?; '
        'ls -A disk; cat disk/out.ppm; exit $code')
    assert result.returncode == 1 and "No space left" in result.stderr
    assert result.stdout == "out.ppm\nold\n"


def test_a_read_only_folder(work):
    result = in_a_small_disk(
        work, "1m,ro",
        '"$1" convert in.pgm disk/out.pgm --to mono8; code=$?; ls -A disk; exit $code')
    assert result.returncode == 1 and result.stdout == ""
    assert result.stderr == "korvex2: cannot write disk/out.pgm: Read-only file system\n"


def test_a_folder_without_inodes(work):
    result = in_a_small_disk(
        work, "1m,nr_inodes=1",
        '"$1" convert in.pgm disk/out.pgm --to mono8; code=$?; ls -A disk; exit $code')
    assert result.returncode == 1 and result.stdout == ""
    assert result.stderr == "korvex2: cannot write disk/out.pgm: No space left on device\n"


# --- Folders and inputs that change under the run. ----------------------------------------------------

def remove_while_written(folder, process):
    """Whether the folder went with the unfinished file in it."""
    deadline = time.monotonic() + 60
    while process.poll() is None and time.monotonic() < deadline:
        if any(name.endswith(".tmp") for name in names(folder)):
            shutil.rmtree(folder, ignore_errors=True)
            break
        time.sleep(0.0005)
    return not folder.exists()


@pytest.mark.parametrize("replaced", [False, True])
def test_an_output_folder_that_is_removed_meanwhile(work, replaced):
    removed = 0
    out = work.folder / "out"
    for _ in range(5):
        out.mkdir()
        process = start(work.folder, *[a.replace("out.png", "out/out.png") for a in work.arguments])
        gone = remove_while_written(out, process)
        if gone and replaced:
            out.mkdir()
        message = said(process)
        if gone:
            removed += 1
            assert process.returncode == 1
            assert message == "korvex2: cannot write out/out.png: No such file or directory\n"
            assert names(work.folder) == (["in.pgm", "out"] if replaced else ["in.pgm"])
            assert not replaced or names(out) == []
        shutil.rmtree(out, ignore_errors=True)
    assert removed > 0


def test_an_input_that_is_truncated_at_any_moment(work):
    whole = (work.folder / "in.pgm").read_bytes()
    for moment in range(MOMENTS):
        process = start(work.folder, *work.arguments)
        time.sleep(work.seconds / 2 * moment / MOMENTS)
        os.truncate(work.folder / "in.pgm", 1000)
        message = said(process)
        if process.returncode == 0:
            assert (work.folder / "out.png").read_bytes() == work.whole
            (work.folder / "out.png").unlink()
        else:
            assert process.returncode == 1 and "in.pgm" in message
            assert "became shorter" in message or "truncated" in message
        assert names(work.folder) == ["in.pgm"]
        (work.folder / "in.pgm").write_bytes(whole)


def test_an_input_that_is_removed_meanwhile_is_read_to_its_end(work):
    process = start(work.folder, *work.arguments)
    time.sleep(work.seconds / 2)
    whole = (work.folder / "in.pgm").read_bytes()
    (work.folder / "in.pgm").unlink()
    message = said(process)
    assert (process.returncode, message) == (0, "") and (work.folder / "out.png").read_bytes() == work.whole
    (work.folder / "in.pgm").write_bytes(whole)
