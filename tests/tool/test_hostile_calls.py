"""Calls as no user means them: streams that are closed, links that lead astray, names made to mislead,
numbers without end."""

import json
import os
import resource
import signal
import subprocess

import numpy as np
import pytest

from conftest import TOOL
from pictures import png_bytes, read_pnm

PICTURE = np.arange(4 * 6 * 3, dtype=np.uint8).reshape(4, 6, 3)
PIXELS = ["--from", "mono8", "--width", 1, "--height", 1]


@pytest.fixture
def png(tool):
    (tool.folder / "in.png").write_bytes(png_bytes(PICTURE))
    return tool


def piped(tool, data, *arguments, **options):
    return subprocess.run([TOOL, *map(str, arguments)], input=data, cwd=tool.folder, capture_output=True,
                          timeout=120, **options)


def in_shell(tool, command):
    """`command` may call the tool as "$1"."""
    return subprocess.run(["sh", "-c", command, "sh", TOOL], cwd=tool.folder, capture_output=True, text=True,
                          timeout=120)


def with_memory(size):
    return lambda: resource.setrlimit(resource.RLIMIT_AS, (size, size))


def skip_under_sanitizers(tool):
    if "sanitizer" in tool.succeeds("info"):
        pytest.skip("SKIPPED: sanitizers need more memory than the limit")


@pytest.fixture
def no_emulator():
    with open(TOOL, "rb") as file:
        if file.read(2) == b"#!":
            pytest.skip("SKIPPED: an emulator opens files of its own where streams are closed")


def names(folder):
    return sorted(path.name for path in folder.iterdir())


# --- Streams that are closed, broken or full. ---------------------------------------------------------

@pytest.mark.parametrize("closed, code", [("2>&-", 0), (">&-", 1), ("<&-", 0), ("<&- >&- 2>&-", 1), (">&- 2>&-", 1)])
def test_closed_streams_are_not_written_into_the_picture(no_emulator, png, closed, code):
    png.succeeds("convert", "in.png", "expected.pgm", "--to", "mono8")
    result = in_shell(png, f'"$1" convert in.png out.pgm --to mono8 {closed}')
    assert result.returncode == code
    result = in_shell(png, f'"$1" convert in.png "{{name}}-out.pgm" --to mono8 --json-progress {closed}')
    assert result.returncode == code
    expected = (png.folder / "expected.pgm").read_bytes()
    assert (png.folder / "out.pgm").read_bytes() == (png.folder / "in-out.pgm").read_bytes() == expected


def test_progress_without_a_stderr_is_not_written_among_the_pixels(no_emulator, tool):
    (tool.folder / "in.raw").write_bytes(bytes(range(24)))
    result = in_shell(tool, '(cat in.raw; sleep 0.7; cat in.raw) | "$1" convert - out.raw --from mono8 --width 6 '
                            '--height 4 --frames all --to mono8 --json-progress 2>&-')
    assert result.returncode == 0
    assert (tool.folder / "out.raw").read_bytes() == bytes(range(24)) * 2


@pytest.mark.parametrize("streams", ["- {png} <&-", "in.png - >&-", "in.png png:- >&-"])
def test_closed_streams_cannot_be_read_or_written(no_emulator, png, streams):
    arguments = streams.format(png="out.pgm --from mono8 --width 1 --height 1")
    names_before = names(png.folder)
    result = in_shell(png, f'"$1" convert --to mono8 {arguments}')
    assert result.returncode == 1 and "Bad file descriptor" in result.stderr and result.stderr.count("\n") == 1
    assert names(png.folder) == names_before


def test_messages_without_a_stderr_leave_the_exit_code(no_emulator, png):
    assert in_shell(png, '"$1" convert missing.png out.png --to mono8 2>&-').returncode == 1
    assert in_shell(png, '"$1" convert in.png out.png --to nothing 2>&-').returncode == 2


@pytest.mark.parametrize("stdin", ["</", "<&-"])
def test_frames_of_a_stream_that_cannot_be_read_end(no_emulator, tool, stdin):
    result = in_shell(tool, 'timeout 20 "$1" convert - "out/{index}.png" --from mono8 --width 1 --height 1 '
                            f'--frames all --to mono8 {stdin}')
    assert result.returncode == 1
    assert result.stderr.startswith("korvex2: cannot read standard input: ") and result.stderr.count("\n") == 1


def test_frames_too_large_for_the_memory_end(tool):
    skip_under_sanitizers(tool)
    result = in_shell(tool, 'ulimit -v 1000000; timeout 20 "$1" convert - - --from mono8 --width 60000 '
                            '--height 60000 --frames all --jobs 1 --to mono8 </dev/zero')
    assert result.returncode == 1 and result.stdout == ""
    lines = result.stderr.splitlines()
    assert len(lines) == 2 and "out of memory" in lines[0]


def test_a_full_stdout_is_trouble_for_diff(png):
    result = in_shell(png, '"$1" diff in.png in.png >/dev/full')
    assert result.returncode == 2 and result.stderr == "korvex2: cannot write to standard output\n"


def test_too_little_memory_is_trouble_for_diff(tool):
    skip_under_sanitizers(tool)
    (tool.folder / "in.pgm").write_bytes(b"P5 40000 40000 255\n")
    os.truncate(tool.folder / "in.pgm", 40000 * 40000)  # sparse
    result = tool.run("diff", "in.pgm", "in.pgm", preexec_fn=with_memory(1 << 30))
    assert result.returncode == 2 and result.stderr == "korvex2: out of memory\n"


def test_what_is_made_stays_where_stdout_is_full(png):
    result = in_shell(png, '"$1" convert in.png out.pgm --to mono8 >/dev/full')
    assert result.returncode == 1 and result.stderr == "korvex2: cannot write to standard output\n"
    assert read_pnm(png.folder / "out.pgm").shape == (4, 6)


# --- Numbers without end. -----------------------------------------------------------------------------

def test_frames_farther_than_numbers_reach_are_not_there(tool):
    arguments = ["convert", "-", "-", *PIXELS, "--to", "mono8"]
    for options in (["--skip", 549755813888, "--frame-bytes", 33554432],
                    ["--skip", 10**12, "--every", 10**12, "--frame-bytes", 10**12, "--header-bytes", 10**12]):
        result = piped(tool, b"A", *arguments, *options)
        assert (result.returncode, result.stdout) == (1, b""), options
        assert result.stderr == b"korvex2: standard input held no frame\n"


@pytest.mark.parametrize("frames", [[], ["--frames", "all"]])
def test_frames_larger_than_any_are_refused_before_reading(tool, frames):
    skip_under_sanitizers(tool)
    size = ["--from", "mono8", "--width", 4294967295, "--height", 4294967295]
    with open("/dev/zero", "rb") as endless:
        result = tool.run("convert", "-", "out.raw", *size, *frames, "--to", "mono8", stdin=endless,
                          preexec_fn=with_memory(1 << 30))
    assert result.returncode == 1 and "4 GiB" in result.stderr and result.stderr.count("\n") == 1
    assert names(tool.folder) == []


@pytest.mark.parametrize("output", ["out.pgm", "{name}.pgm"])
def test_a_frame_of_an_endless_stream_is_refused_at_once(tool, output):
    skip_under_sanitizers(tool)
    with open("/dev/zero", "rb") as endless:
        result = tool.run("convert", "-", output, *PIXELS, "--to", "mono8", "--jobs", 1, stdin=endless,
                          preexec_fn=with_memory(1 << 30))  # each thread takes some
    assert result.returncode == 1
    assert "standard input has more than the 1 bytes of 1 x 1 pixels of mono8" in result.stderr
    assert "--frames all" in result.stderr and names(tool.folder) == []


def test_a_frame_of_a_stream_of_its_size_or_less(tool):
    for count, code in [(0, 1), (1, 0), (2, 1)]:
        assert piped(tool, bytes(count), "convert", "-", "-", *PIXELS, "--to", "mono8").returncode == code
    result = piped(tool, bytes(5), "convert", "-", "-", "--from", "mono8", "--width", 6, "--height", 1, "--to", "mono8")
    assert result.returncode == 1 and b"has 5 bytes, and 6 x 1 pixels of mono8 have 6" in result.stderr


@pytest.mark.parametrize("value", ["nan", "-nan", "NaN", "nan(1)", "inf", "-inf"])
def test_numbers_are_numbers(png, value):
    message = png.fails(2, "convert", "in.png", "out.png", "--to", "rgb8", f"--gamma={value}")
    assert "--gamma" in message
    message = png.fails(2, "diff", "in.png", "in.png", "--picture", "out.png", f"--amplify={value}")
    assert "--amplify" in message
    png.fails(2, "convert", "in.png", "out.png", "--to", "rgb8", f"--white-balance=1,{value},1")
    png.fails(2, "convert", "in.png", "out.png", "--to", "rgb8", f"--stretch=1,{value}")


def test_a_file_of_frames_without_end_is_begun_at_once(tool):
    """With names for all of them it would take hours, and the memory of a large machine."""
    skip_under_sanitizers(tool)
    (tool.folder / "in.raw").write_bytes(b"")
    os.truncate(tool.folder / "in.raw", 1 << 40)  # sparse
    for pattern in ("out/{index}.pgm", "out/{frame}.pgm"):
        process = subprocess.Popen(
            ["timeout", "60", TOOL, "convert", "in.raw", pattern, *map(str, PIXELS), "--frames", "all", "--to", "mono8",
             "--jobs", "1", "--json-progress"], cwd=tool.folder, stderr=subprocess.PIPE,
            text=True, preexec_fn=with_memory(1 << 30))
        reports = [json.loads(process.stderr.readline()) for _ in range(2)]
        process.send_signal(signal.SIGTERM)
        process.communicate(timeout=120)
        assert reports[0]["frames"] == 1 << 40 and reports[1]["converted"] > 0


def test_an_input_is_not_overwritten_by_any_of_many_frames(tool):
    (tool.folder / "16500.raw").write_bytes(bytes(20000))
    result = tool.run("convert", "16500.raw", "{index}.raw", *PIXELS, "--frames", 16502, "--skip", 1, "--to", "mono8")
    assert result.returncode == 1 and len(result.stderr.splitlines()) == 2
    assert "would be written over the input 16500.raw" in result.stderr
    assert (tool.folder / "16500.raw").stat().st_size == 20000
    assert len(names(tool.folder)) == 16502


# --- Links. -------------------------------------------------------------------------------------------

def test_an_input_is_not_overwritten_through_a_link(tool):
    for folder in ("in", "out"):
        (tool.folder / folder).mkdir()
    for name in ("b", "c"):
        (tool.folder / f"in/{name}.png").write_bytes(png_bytes(PICTURE))
    (tool.folder / "out/b.png").symlink_to("../in/c.png")
    message = tool.fails(2, "convert", "in", "out/{name}.png", "--to", "mono8")
    assert "in/b.png would be written over the input out/b.png" in message


def test_a_hard_link_to_an_input_is_a_file_of_its_own(tool):
    for folder in ("in", "out"):
        (tool.folder / folder).mkdir()
    (tool.folder / "in/a.png").write_bytes(png_bytes(PICTURE))
    os.link(tool.folder / "in/a.png", tool.folder / "out/a.png")
    tool.succeeds("convert", "in", "out/{name}.png", "--to", "mono8")
    assert (tool.folder / "in/a.png").read_bytes() == png_bytes(PICTURE) != (tool.folder / "out/a.png").read_bytes()


def test_bad_names_in_a_batch_are_failures_of_their_own(tool):
    (tool.folder / "in").mkdir()
    (tool.folder / "in/a.png").write_bytes(png_bytes(PICTURE))
    (tool.folder / "in/loop.png").symlink_to("loop.png")
    (tool.folder / "in/gone.png").symlink_to("nowhere.png")
    (tool.folder / "in/folder.png").mkdir()
    result = tool.run("convert", "in", "x" * 5000 + ".png", "out/{name}.pgm", "--to", "mono8")
    lines = result.stderr.splitlines()
    assert result.returncode == 1 and lines[-1] == "korvex2: 3 of 4 frames failed"
    assert sorted(line.rsplit(": ")[-1] for line in lines[:-1]) == [
        "File name too long", "No such file or directory", "Too many levels of symbolic links"]
    assert all("cannot read" in line for line in lines[:-1])
    assert names(tool.folder / "out") == ["a.pgm"]


@pytest.mark.parametrize("link", ["real.pgm", "sub/../real.pgm", "second.pgm", "{folder}/real.pgm"])
def test_a_link_to_a_file_that_is_not_there_yet_is_followed(png, link):
    (png.folder / "sub").mkdir()
    (png.folder / "second.pgm").symlink_to("sub/../real.pgm")
    (png.folder / "out.pgm").symlink_to(link.format(folder=png.folder))
    png.succeeds("convert", "in.png", "out.pgm", "--to", "mono8")
    assert os.path.islink(png.folder / "out.pgm") and os.path.islink(png.folder / "second.pgm")
    assert not os.path.islink(png.folder / "real.pgm") and read_pnm(png.folder / "real.pgm").shape == (4, 6)


def test_a_link_that_leads_nowhere_is_no_output(png):
    (png.folder / "out.pgm").symlink_to("out.pgm")
    assert "Too many levels" in png.fails(1, "convert", "in.png", "out.pgm", "--to", "mono8")
    (png.folder / "far.pgm").symlink_to("missing/far.pgm")
    assert "far.pgm: No such file" in png.fails(1, "convert", "in.png", "far.pgm", "--to", "mono8")
    assert os.path.islink(png.folder / "out.pgm") and os.path.islink(png.folder / "far.pgm")


# --- Names. -------------------------------------------------------------------------------------------

HOSTILE = "a\n\x1b[31mb\x7f\u009b31m.png"


def test_names_in_what_is_said_of_a_success_do_not_steer_the_terminal(tool):
    (tool.folder / HOSTILE).write_bytes(png_bytes(PICTURE))
    for said in (tool.run("convert", HOSTILE, "out.pgm", "--to", "mono8"),
                 tool.run("convert", "out.pgm", HOSTILE + "{name}.png", "--to", "mono8"),
                 tool.run("mosaic", HOSTILE, "out.pgm", "--tile", "rggb")):
        assert said.returncode == 0 and said.stdout.count("\n") == 1
        assert not set(said.stdout[:-1]) & set("\n\x1b\x7f\u009b"), said.stdout
    raw = os.fsencode(tool.folder) + b"/\xff\xc2\x9b.raw"
    with open(raw, "wb") as file:
        file.write(bytes(64))
    said = piped(tool, None, "guess", os.fsdecode(b"\xff\xc2\x9b.raw"), "--sheet", "sheet.png")
    assert said.returncode == 0 and b"\n\n" in said.stdout and b"\xc2\x9b" not in said.stdout


@pytest.mark.parametrize("name, told", [
    (b"plain", "plain"), ("\u00fc\u20ac\U0001f600\x7f".encode(), "\u00fc\u20ac\U0001f600\x7f"), (b'"\\\n', '"\\\n'),
    (b"\xff", "\ufffd"), (b"a\xc3", "a\ufffd"), (b"\xc0\xaf", "\ufffd" * 2), (b"\xe0\x80\x80", "\ufffd" * 3),
    (b"\xed\xa0\x80", "\ufffd" * 3), (b"\xf4\x90\x80\x80", "\ufffd" * 4), (b"\xf0\x9f\x98x", "\ufffd" * 3 + "x"),
    (b"\xf4\x8f\xbf\xbf", "\U0010ffff"), (b"\xe2\x82\xac\x80", "\u20ac\ufffd"),
])
def test_json_is_json_whatever_the_name(tool, name, told):
    with open(os.fsencode(tool.folder) + b"/" + name + b".png", "wb") as file:
        file.write(png_bytes(PICTURE))
    argument = os.fsdecode(name + b".png")
    result = piped(tool, None, "diff", argument, argument, "--json")
    assert result.returncode == 0, result.stderr
    assert json.loads(result.stdout.decode())["files"] == [told + ".png"] * 2


@pytest.mark.parametrize("name", ["...png", "..png"])
def test_a_name_that_is_a_folder_leads_nowhere(tool, name):
    (tool.folder / "out/sub").mkdir(parents=True)
    (tool.folder / name).write_bytes(png_bytes(PICTURE))
    message = tool.fails(2, "convert", name, "out/sub/{name}/x.png", "--to", "mono8")
    assert "{index:06}" in message
    tool.succeeds("convert", name, "out/{index}-{name}/../x.png", "--to", "mono8")
    tool.succeeds("convert", name, "out/{name}.pgm", "--to", "mono8")
    assert {"x.png", name[:-4] + ".pgm"} <= set(names(tool.folder / "out"))


# --- What stood there before. -------------------------------------------------------------------------

@pytest.mark.parametrize("mode, kept", [(0o4755, 0o755), (0o2750, 0o750), (0o1640, 0o640), (0o600, 0o600)])
def test_a_new_file_does_not_run_as_its_owner(png, mode, kept):
    (png.folder / "out.pgm").write_bytes(b"old")
    (png.folder / "out.pgm").chmod(mode)
    png.succeeds("convert", "in.png", "out.pgm", "--to", "mono8")
    assert (png.folder / "out.pgm").stat().st_mode & 0o7777 == kept
