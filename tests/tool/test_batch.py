"""Many frames: of files, folders, globs and long dumps; failures, going on, stopping."""

import json
import os
import pty
import re
import signal
import subprocess
import time

import numpy as np
import pytest

from conftest import TOOL
from pictures import png_bytes, pnm_bytes, read_png, read_pnm

WIDTH, HEIGHT = 8, 6
SHAPE = ["--width", WIDTH, "--height", HEIGHT]


def frames_of(rng, count, dtype=np.uint8):
    return rng.integers(0, 256, (count, HEIGHT, WIDTH), dtype=dtype)


@pytest.fixture
def dump(tool, rng):
    tool.frames = frames_of(rng, 23)
    (tool.folder / "dump.raw").write_bytes(tool.frames.tobytes())
    return tool


def written(tool, folder="out"):
    return {path.name: read_pnm(path) for path in sorted((tool.folder / folder).iterdir())}


def assert_same(files, expected):
    assert list(files) == list(expected)
    for name, samples in expected.items():
        assert np.array_equal(files[name], samples), name


# --- Which frames, and what they are called. --------------------------------------------------------

@pytest.mark.parametrize("jobs", [[], ["--jobs", 1], ["--jobs", 7]])
def test_a_dump_becomes_a_file_for_each_frame(dump, jobs):
    said = dump.succeeds("convert", "dump.raw", "out/{name}_{index:03}.pgm", "--from", "mono8", *SHAPE, "--frames",
                         "all", "--to", "mono8", *jobs)
    assert said == "23 frames -> out/{name}_{index:03}.pgm (mono8)\n"
    assert_same(written(dump), {f"dump_{i:03}.pgm": frame for i, frame in enumerate(dump.frames)})


@pytest.mark.parametrize("options, taken", [
    (["--frames", 4], range(4)), (["--frames", 99], range(23)), (["--skip", 20], range(20, 23)),
    (["--every", 5], range(0, 23, 5)), (["--skip", 2, "--every", 7, "--frames", 2], range(2, 16, 7)),
    (["--skip", 22, "--every", 1000000000], [22])])
def test_frames_are_picked(dump, options, taken):
    dump.succeeds("convert", "dump.raw", "out/{index:02}-{frame}.pgm", "--from", "mono8", *SHAPE, *options,
                  "--to", "mono8")
    assert_same(written(dump), {f"{i:02}-{frame}.pgm": dump.frames[frame] for i, frame in enumerate(taken)})


def test_header_and_bytes_between_frames(tool, rng):
    frames = frames_of(rng, 5)
    data = b"".join(frame.tobytes() + rng.bytes(11) for frame in frames)
    for end in (len(data), len(data) - 11):  # some writers leave out what follows the last frame
        (tool.folder / "dump.bin").write_bytes(rng.bytes(100) + data[:end])
        tool.succeeds("convert", "dump.bin", "out/{index}.pgm", "--from", "mono8", *SHAPE, "--header-bytes", 100,
                      "--frame-bytes", WIDTH * HEIGHT + 11, "--to", "mono8")
        assert_same(written(tool), {f"{i}.pgm": frame for i, frame in enumerate(frames)})


def test_frames_of_many_dumps_are_one_sequence(tool, rng):
    frames = frames_of(rng, 7)
    (tool.folder / "a.raw").write_bytes(frames[:3].tobytes())
    (tool.folder / "b.raw").write_bytes(frames[3:].tobytes())
    tool.succeeds("convert", "a.raw", "b.raw", "out/{index}-{name}{frame}.pgm", "--from", "mono8", *SHAPE,
                  "--skip", 2, "--every", 2, "--to", "mono8")
    assert_same(written(tool), {"0-a2.pgm": frames[2], "1-b1.pgm": frames[4], "2-b3.pgm": frames[6]})


@pytest.mark.parametrize("inputs", [["in"], ["in/*.pgm"], ["in/shot2.pgm", "in/shot10.pgm", "in/shot11.pgm"]])
def test_folders_globs_and_files(tool, rng, inputs):
    (tool.folder / "in").mkdir()
    frames = frames_of(rng, 3)
    for number, frame in zip([2, 10, 11], frames):
        (tool.folder / f"in/shot{number}.pgm").write_bytes(pnm_bytes(frame))
    (tool.folder / "in/notes.txt").write_text("no picture")
    (tool.folder / "in/.hidden.pgm").write_text("no picture")
    tool.succeeds("convert", *inputs, "out/{index}_{name}.pgm", "--to", "mono8")  # 2 comes before 10
    assert_same(written(tool), {"0_shot2.pgm": frames[0], "1_shot10.pgm": frames[1], "2_shot11.pgm": frames[2]})


def test_the_bytes_are_those_of_single_conversions(dump):
    arguments = ["--from", "raw8", "--tile", "grbg", *SHAPE, "--method", "edge", "--to", "bgr"]
    dump.succeeds("convert", "dump.raw", "out/{index}.raw", *arguments, "--frames", 3)
    dump.succeeds("convert", "dump.raw", "all.raw", *arguments, "--frames", 3)
    together = b""
    for i in range(3):
        (dump.folder / "one.raw").write_bytes(dump.frames[i].tobytes())
        dump.succeeds("convert", "one.raw", "one-out.raw", *arguments)
        assert (dump.folder / f"out/{i}.raw").read_bytes() == (dump.folder / "one-out.raw").read_bytes()
        together += (dump.folder / "one-out.raw").read_bytes()
    assert (dump.folder / "all.raw").read_bytes() == together


def test_a_pattern_converts_a_single_picture(tool, rng):
    samples = frames_of(rng, 1)[0]
    (tool.folder / "a.b.png").write_bytes(png_bytes(samples))
    tool.succeeds("convert", "a.b.png", "{name}{{x}}.pgm", "--to", "mono8")
    assert np.array_equal(read_pnm(tool.folder / "a.b{x}.pgm"), samples)


# --- Standard input and output. ---------------------------------------------------------------------

def piped(tool, data, *arguments):
    result = subprocess.run([TOOL, *map(str, arguments)], input=data, cwd=tool.folder, capture_output=True,
                            timeout=120)
    assert result.returncode == 0, result.stderr
    assert result.stderr == b""
    return result.stdout


def test_a_picture_through_pipes(tool, rng):
    samples = frames_of(rng, 1)[0]
    assert piped(tool, png_bytes(samples), "convert", "png:-", "-", "--to", "mono8") == samples.tobytes()
    output = piped(tool, samples.tobytes(), "convert", "-", "png:-", "--from", "mono8", *SHAPE, "--to", "mono8")
    (tool.folder / "out.png").write_bytes(output)
    assert np.array_equal(read_png(tool.folder / "out.png"), samples)


def test_frames_through_pipes(dump):
    data = b"head" + dump.frames.tobytes()
    arguments = ["--from", "mono8", *SHAPE, "--header-bytes", 4, "--to", "mono16"]
    output = piped(dump, data, "convert", "-", "-", *arguments)
    assert len(output) == 2 * dump.frames.size
    assert np.array_equal(np.frombuffer(output, "<u2") >> 8, dump.frames.ravel())
    assert piped(dump, data, "convert", "-", "-", *arguments, "--skip", 3, "--every", 6, "--frames", 2) == (
        output.__class__().join(output[i * 96:(i + 1) * 96] for i in (3, 9)))
    assert piped(dump, data, "convert", "-", "out/{name}{index}.raw", *arguments) \
        == b"23 frames -> out/{name}{index}.raw (mono16)\n"
    assert (dump.folder / "out/stdin22.raw").read_bytes() == output[22 * 96:]


def test_standard_input_that_ends_within_a_frame(dump):
    result = subprocess.run([TOOL, "convert", "-", "-", "--from", "mono8", *map(str, SHAPE), "--frames", "all", "--to",
                             "mono8"], input=dump.frames.tobytes()[:100], cwd=dump.folder, capture_output=True)
    assert result.returncode == 1
    assert result.stdout == dump.frames.tobytes()[:96]
    assert b"frame 2 of standard input has 4 bytes" in result.stderr and b"1 of 3 frames failed" in result.stderr
    empty = subprocess.run([TOOL, "convert", "-", "-", "--from", "mono8", *map(str, SHAPE), "--frames", "all", "--to",
                            "mono8"], input=b"", cwd=dump.folder, capture_output=True)
    assert empty.returncode == 1 and b"no frame" in empty.stderr


# --- Failures. --------------------------------------------------------------------------------------

@pytest.fixture
def partly_broken(tool, rng):
    (tool.folder / "in").mkdir()
    tool.frames = frames_of(rng, 9)
    for i, frame in enumerate(tool.frames):
        (tool.folder / f"in/{i}.png").write_bytes(png_bytes(frame))
    (tool.folder / "in/3.png").write_bytes(b"no PNG")
    (tool.folder / "in/5.png").write_bytes(png_bytes(tool.frames[5])[:-20])
    return tool


def test_failed_frames_are_named_and_the_others_go_on(partly_broken):
    tool = partly_broken
    result = tool.run("convert", "in", "missing.png", "out/{name}.pgm", "--to", "mono8")
    assert result.returncode == 1 and result.stdout == ""
    lines = sorted(result.stderr.splitlines())
    assert len(lines) == 4 and all(line.startswith("korvex2: ") for line in lines)
    assert lines[0] == "korvex2: 3 of 10 frames failed"
    assert "missing.png" in lines[1] and "in/3.png is not a PNG" in lines[2] and "in/5.png" in lines[3]
    assert_same(written(tool), {f"{i}.pgm": tool.frames[i] for i in (0, 1, 2, 4, 6, 7, 8)})


def test_fail_fast(partly_broken):
    result = partly_broken.run("convert", "in", "out/{name}.pgm", "--to", "mono8", "--fail-fast", "--jobs", 1)
    assert result.returncode == 1 and "in/3.png" in result.stderr and "--fail-fast" in result.stderr
    assert "8.pgm" not in written(partly_broken)


def test_a_dump_that_ends_within_a_frame(dump):
    (dump.folder / "dump.raw").write_bytes(dump.frames.tobytes()[:-1])
    result = dump.run("convert", "dump.raw", "out/{index}.pgm", "--from", "mono8", *SHAPE, "--frames", "all",
                      "--to", "mono8")
    assert result.returncode == 1
    assert "frame 22 of dump.raw has 47 bytes" in result.stderr and "1 of 23 frames failed" in result.stderr
    assert len(written(dump)) == 22


@pytest.mark.parametrize("arguments, code, hint", [
    (["dump.raw", "out.pgm", "--from", "mono8", *SHAPE, "--frames", "all"], 2, "{index:06}"),
    (["dump.raw", "{name}.pgm", "--from", "mono8", *SHAPE, "--frames", "all"], 2, "both"),
    (["dump.raw", "{index:x}{nonsense}.pgm", "--from", "mono8", *SHAPE], 2, "pattern"),
    (["dump.raw", "{index.pgm", "--from", "mono8", *SHAPE], 2, "pattern"),
    (["dump.raw", "{index}.pgm", "--frames", "all"], 2, "--width"),
    (["dump.raw", "{index}.pgm", "--from", "mono8", *SHAPE, "--frames", "0"], 2, "--frames"),
    (["dump.raw", "{index}.pgm", "--from", "mono8", *SHAPE, "--frames", "some"], 2, "--frames"),
    (["dump.raw", "{index}.pgm", "--from", "mono8", *SHAPE, "--every", "0"], 2, "--every"),
    (["dump.raw", "{index}.pgm", "--from", "mono8", *SHAPE, "--jobs", "0"], 2, "--jobs"),
    (["dump.raw", "{index}.pgm", "--from", "mono8", *SHAPE, "--jobs", "65"], 2, "--jobs"),
    (["dump.raw", "{index}.pgm", "--from", "mono8", *SHAPE, "--frame-bytes", "47"], 2, "have 48"),
    (["dump.raw", "{index}.pgm", "--from", "raw8", *SHAPE, "--frames", "all"], 2, "--tile"),
    (["dump.raw", "{index}.pgm", "--from", "mono8", *SHAPE, "--skip", "23"], 1, "--skip"),
    (["dump.raw", "out.raw", "--from", "mono8", *SHAPE, "--frames", "all", "--resume"], 2, "--resume"),
    (["dump.raw", "dump.raw", "--from", "mono8", *SHAPE, "--frames", "all"], 2, "both input and output"),
    (["dump.raw", "{name}.raw", "--from", "mono8", *SHAPE, "--frames", "1"], 2, "over the input"),
    (["dump.raw", "{index}:-", "--from", "mono8", *SHAPE, "--frames", "all"], 1, "name"),
    (["dump.raw", "{index}", "--from", "mono8", *SHAPE, "--frames", "all"], 1, "let it end in"),
    (["a.png", "b.png", "out.png"], 2, "{name}"),
    (["a.png", "{name}.pgm", "--header-bytes", "3"], 2, "--header-bytes"),
    (["nothing*.png", "{name}.pgm"], 1, "nothing*.png"),
    (["empty", "{name}.pgm"], 1, "empty"),
    (["-", "dump.raw", "{index}.pgm", "--from", "mono8", *SHAPE], 2, "standard input"),
    (["-", "{name}.pgm", "--from", "mono8", *SHAPE, "--frames", "all"], 2, "{index:06}"),
])
def test_wrong_requests_touch_nothing(dump, arguments, code, hint):
    (dump.folder / "empty").mkdir()
    message = dump.fails(code, "convert", *arguments, "--to", "mono8")
    assert hint in message


def test_a_dump_of_many_frames_taken_for_one_says_how(dump):
    message = dump.fails(1, "convert", "dump.raw", "out.pgm", "--from", "mono8", *SHAPE, "--to", "mono8")
    assert "--frames all" in message and "23 frames" in message


def test_frames_of_other_sizes_do_not_follow_each_other_in_one_file(tool, rng):
    (tool.folder / "a.png").write_bytes(png_bytes(rng.integers(0, 256, (4, 4), dtype=np.uint8)))
    (tool.folder / "b.png").write_bytes(png_bytes(rng.integers(0, 256, (4, 5), dtype=np.uint8)))
    result = tool.run("convert", "a.png", "b.png", "out.raw", "--to", "mono8")
    assert result.returncode == 1 and "b.png: 5 x 4 pixels cannot follow" in result.stderr
    assert not (tool.folder / "out.raw").exists()


@pytest.mark.parametrize("options", [["--jobs", 2], ["--jobs", 1, "--fail-fast"]])
def test_one_file_of_all_frames_is_not_written_without_one(partly_broken, options):
    tool = partly_broken
    (tool.folder / "all.y4m").write_bytes(b"old")
    result = tool.run("convert", "in", "all.y4m", "--to", "mono8", *options)
    assert result.returncode == 1 and result.stdout == ""
    last = result.stderr.splitlines()[-1]
    assert "frames failed" in last and "all.y4m is not written" in last and "{index:06}" in last
    assert ("2 of 9 frames" in last) == ("--fail-fast" not in options)
    assert (tool.folder / "all.y4m").read_bytes() == b"old"
    assert sorted(path.name for path in tool.folder.iterdir()) == ["all.y4m", "in"]


@pytest.mark.parametrize("several", ["in", "in/*.pgm"])
def test_a_folder_or_a_glob_is_a_batch_without_any_option(tool, rng, several):
    frames = frames_of(rng, 3)
    (tool.folder / "in").mkdir()
    for number, frame in enumerate(frames):
        (tool.folder / "in" / f"{number}.pgm").write_bytes(pnm_bytes(frame))
    assert tool.succeeds("convert", several, "all.raw", "--to", "mono8") == "3 frames -> all.raw (mono8)\n"
    assert (tool.folder / "all.raw").read_bytes() == frames.tobytes()
    assert (tool.fails(2, "convert", several, "all.pgm", "--to", "mono8")
            == "3 inputs or frames do not fit into all.pgm; put {name} or {index:06} into its name")
    assert tool.fails(1, "convert", "none/*.pgm", "all.raw", "--to", "mono8") == "no file is like none/*.pgm"
    for number in (1, 2):
        (tool.folder / "in" / f"{number}.pgm").unlink()
    assert tool.succeeds("convert", several, "one.pgm", "--to", "mono8") == "1 frame -> one.pgm (mono8)\n"


def test_standard_input_that_cannot_be_read_fails_once(dump):
    folder = os.open(dump.folder, os.O_RDONLY)
    result = subprocess.run([TOOL, "convert", "-", "{index}.raw", "--from", "mono8", *map(str, SHAPE), "--to", "mono8",
                             "--frames", "all"], cwd=dump.folder, stdin=folder, capture_output=True, text=True,
                            timeout=120)
    os.close(folder)
    assert (result.returncode, result.stdout) == (1, "")
    assert result.stderr == "korvex2: cannot read standard input: Is a directory\n"


def test_a_folder_that_cannot_be_made(dump):
    (dump.folder / "file").write_bytes(b"")
    result = dump.run("convert", "dump.raw", "file/{index}.raw", "--from", "mono8", *SHAPE, "--frames", 2, "--to",
                      "mono8")
    assert result.returncode == 1
    assert sorted(result.stderr.splitlines()) == [
        "korvex2: 2 of 2 frames failed",
        *(f"korvex2: frame {i} of dump.raw: cannot make the folder file: Not a directory" for i in range(2))]


# --- Going on, stopping, progress. ------------------------------------------------------------------

@pytest.mark.parametrize("extension", ["pgm", "png", "raw", "y4m"])
def test_resume_leaves_whole_files_and_makes_the_others(dump, extension):
    arguments = ["convert", "dump.raw", f"out/{{index}}.{extension}", "--from", "mono8", *SHAPE, "--frames", "all",
                 "--to", "mono8"]
    dump.succeeds(*arguments)
    whole = dump.contents()
    for i in (3, 7):
        (dump.folder / f"out/{i}.{extension}").unlink()
    path = dump.folder / f"out/5.{extension}"
    path.write_bytes(path.read_bytes()[:-5])
    times = {path: path.stat().st_mtime_ns for path in (dump.folder / "out").iterdir()}
    said = dump.succeeds(*arguments, "--resume")
    assert said.startswith("3 frames") and "20 were there already" in said
    assert dump.contents() == whole
    for path, before in times.items():
        assert (path.stat().st_mtime_ns == before) == (path.name != f"5.{extension}")


def test_resume_while_outputs_come_and_go(tool, rng):
    """What was there at a first look may be gone at the next; then it is made."""
    (tool.folder / "dump.raw").write_bytes(frames_of(rng, 12).tobytes())
    arguments = ["dump.raw", "out/{index}.raw", "--from", "mono8", *SHAPE, "--frames", "all", "--to", "mono8"]
    tool.succeeds("convert", *arguments)
    outputs = {path: path.read_bytes() for path in (tool.folder / "out").iterdir()}
    for _ in range(10):
        process = subprocess.Popen([TOOL, "convert", *map(str, arguments), "--resume", "--jobs", "1", "--quiet"],
                                   cwd=tool.folder, stderr=subprocess.PIPE)
        while process.poll() is None:
            for path, content in outputs.items():
                path.unlink(missing_ok=True)
                path.write_bytes(content)
        assert (process.communicate(timeout=120)[1], process.returncode) == (b"", 0)


def test_resume_knows_the_size_of_headerless_outputs_of_pictures(tool, rng):
    for name in ("a", "b"):
        (tool.folder / f"{name}.png").write_bytes(png_bytes(rng.integers(0, 256, (4, 6, 3), dtype=np.uint8)))
    arguments = ["convert", "a.png", "b.png", "{name}.raw", "--to", "yuv422", "--crop", "2,0,4,4"]
    tool.succeeds(*arguments)
    whole = tool.contents()
    (tool.folder / "b.raw").write_bytes((tool.folder / "b.raw").read_bytes() + b"x")
    assert "1 were there already" in tool.succeeds(*arguments, "--resume")
    assert tool.contents() == whole
    assert "0 were there already" not in tool.succeeds(*arguments[:-2], "--resume")
    assert (tool.folder / "a.raw").stat().st_size == 4 * 6 * 2


def test_an_interrupt_finishes_what_is_begun_and_resume_goes_on(tool, rng):
    frames = rng.integers(0, 256, (60, 300, 400), dtype=np.uint8)
    (tool.folder / "dump.raw").write_bytes(frames.tobytes())
    arguments = [TOOL, "convert", "dump.raw", "out/{index:02}.png", "--from", "raw8", "--tile", "rggb", "--width",
                 "400", "--height", "300", "--frames", "all", "--to", "rgb8"]
    process = subprocess.Popen(arguments, cwd=tool.folder, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
    deadline = time.monotonic() + 60
    while not list(tool.folder.glob("out/*.png")) and time.monotonic() < deadline:
        time.sleep(0.002)
    process.send_signal(signal.SIGINT)
    said, message = process.communicate(timeout=120)
    assert process.returncode == -signal.SIGINT and said == ""
    assert message.count("\n") == 1 and "--resume" in message, message
    begun = int(message.split("the ")[1].split()[0])
    names = sorted(path.name for path in (tool.folder / "out").iterdir())
    assert names == [f"{i:02}.png" for i in range(begun)] and 0 < begun < 60
    result = subprocess.run([*arguments, "--resume"], cwd=tool.folder, capture_output=True, text=True)
    assert result.returncode == 0 and f"{60 - begun} frames" in result.stdout
    resumed = tool.contents()
    for path in (tool.folder / "out").iterdir():
        path.unlink()
    assert subprocess.run(arguments, cwd=tool.folder, capture_output=True).returncode == 0
    assert tool.contents() == resumed


@pytest.mark.parametrize("extension", ["raw", "y4m"])
def test_an_interrupt_leaves_no_part_of_one_file(tool, rng, extension):
    output = tool.folder / f"all.{extension}"
    output.write_bytes(b"old")
    process = subprocess.Popen(
        [TOOL, "convert", "-", output.name, "--from", "mono8", *map(str, SHAPE), "--frames", "all", "--to", "mono8"],
        cwd=tool.folder, stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
    while not list(tool.folder.glob(".all.*.tmp")) and process.poll() is None:
        time.sleep(0.002)
    process.send_signal(signal.SIGINT)
    said, message = process.communicate(frames_of(rng, 3).tobytes(), timeout=120)  # it waits for these, and looks up
    assert process.returncode == -signal.SIGINT and said == b""
    assert message.startswith(b"korvex2: stopped by SIGINT after ") and message.count(b"\n") == 1
    assert f"{output.name} is not written" in message.decode() and b"--resume" in message
    assert tool.contents() == {output: b"old"}


def test_an_interrupt_ends_a_pipe_after_a_whole_frame(tool, rng):
    frames = rng.integers(0, 256, (60, 300, 400), dtype=np.uint8)
    (tool.folder / "dump.raw").write_bytes(frames.tobytes())
    process = subprocess.Popen(
        [TOOL, "convert", "dump.raw", "-", "--from", "mono8", "--width", "400", "--height", "300", "--frames", "all",
         "--to", "mono8", "--jobs", "2"], cwd=tool.folder, stdout=subprocess.PIPE, stderr=subprocess.PIPE, bufsize=0)
    first = process.stdout.read(1)  # the rest is more than a pipe holds
    process.send_signal(signal.SIGINT)
    rest, message = process.communicate(timeout=120)
    count = int(re.search(rb"the (\d+) frames of 60 .*--skip \1 and another output", message)[1])
    assert process.returncode == -signal.SIGINT
    assert first + rest == frames[:count].tobytes() and 0 < count < 60


def test_json_progress(dump):
    result = dump.run("convert", "dump.raw", "out/{index}.pgm", "--from", "mono8", *SHAPE, "--frames", "all",
                      "--to", "mono8", "--json-progress", "--quiet")
    assert result.returncode == 0 and result.stdout == ""
    reports = [json.loads(line) for line in result.stderr.splitlines()]
    assert len(reports) >= 2
    assert reports[0]["converted"] == 0 and not reports[0]["finished"]
    last = reports[-1]
    assert last["finished"] and last["frames"] == last["converted"] == 23
    assert last["failed"] == last["skipped"] == 0 and last["eta_seconds"] == 0
    assert last["frames_per_second"] > 0 and last["megabytes_per_second"] > 0


@pytest.mark.parametrize("quiet", [False, True])
def test_a_terminal_shows_progress_unless_quiet(dump, quiet):
    master, slave = pty.openpty()
    result = subprocess.run(
        [TOOL, "convert", "dump.raw", "out/{index}.pgm", "--from", "mono8", *map(str, SHAPE), "--frames", "all", "--to",
         "mono8", *(["-q"] if quiet else [])], cwd=dump.folder, stdout=subprocess.PIPE, stderr=slave, timeout=120)
    os.close(slave)
    try:
        shown = os.read(master, 100000)
    except OSError:  # nothing was written
        shown = b""
    os.close(master)
    assert result.returncode == 0
    assert (b"0/23 frames" in shown) == (b"frames/s" in shown) == (not quiet)
    assert quiet or shown.endswith(b"\r\x1b[K")  # and leaves the line empty
