"""Wrong input of every kind: one line that says what was wrong and what would be right, the exit
code, and not a file more or less than before."""

import os
import signal
import subprocess
import time

import numpy as np
import pytest

from conftest import TOOL, some
from pictures import png_bytes, pnm_bytes

PICTURE = np.arange(4 * 6 * 3, dtype=np.uint8).reshape(4, 6, 3)


@pytest.fixture
def png(tool):
    (tool.folder / "in.png").write_bytes(png_bytes(PICTURE))
    return tool


# --- The command line. ------------------------------------------------------------------------------

@pytest.mark.parametrize("arguments, hint", [
    ([], "subcommand"),
    (["frobnicate"], "frobnicate"),
    (["convert"], "required"),
    (["convert", "in.png"], "output"),
    (["convert", "in.png", "out.png"], "--to"),
    (["convert", "in.png", "out.png", "--to"], "--to"),
    (["convert", "in.png", "out.png", "--to", "rgb8", "--nonsense"], "--nonsense"),
    (["convert", "in.png", "out.png", "more.png", "--to", "rgb8"], "more.png"),
    (["convert", "in.png", "out.png", "--to", "rgb8", "--width", "0"], "--width"),
    (["convert", "in.png", "out.png", "--to", "rgb8", "--height", "-4"], "--height"),
    (["convert", "in.png", "out.png", "--to", "rgb8", "--width", "4294967296"], "--width"),
    (["convert", "in.png", "out.png", "--to", "rgb8", "--width", "wide"], "--width"),
    (["convert", "in.png", "out.png", "--to", "rgb8", "--tile", "rgbg"], "rggb, grbg, gbrg, bggr, none"),
    (["convert", "in.png", "out.png", "--to", "rgb8", "--method", "magic"], "nearest, edge, hq_linear"),
    (["chart"], "output"),
    (["routes", "--from", "nothing"], "nothing"),
])
def test_usage(png, arguments, hint):
    assert hint in png.fails(2, *arguments)


@pytest.mark.parametrize("name, meant", [
    ("rgb9", "rgb8"), ("bgur", "bgru"), ("mno8", "mono8"), ("yuv442", "yuv422"), ("Mono12Pakced", "mono12"),
    ("raw 8", "raw8"), ("UYVI", "yuv422"), ("", ""), ("completely else", "formats"), ("x" * 10000, "formats"),
    ("MONO8\nMONO16", "formats")])
@pytest.mark.parametrize("option", ["--to", "--from"])
def test_unknown_formats_suggest_the_nearest(png, name, meant, option):
    formats = {"--to": "rgb8", "--from": "rgb8", option: name}
    message = png.fails(2, "convert", "in.png", "out.png", *(part for pair in formats.items() for part in pair))
    assert meant in message and option in message


# --- Inputs. ----------------------------------------------------------------------------------------

def test_missing_file(tool):
    message = tool.fails(1, "convert", "missing.png", "out.png", "--to", "mono8")
    assert "missing.png" in message and "No such file" in message


def test_folder_pipe_and_device_as_input(tool):
    (tool.folder / "folder.png").mkdir()
    assert "folder" in tool.fails(1, "convert", "folder.png", "out.png", "--to", "mono8")
    os.mkfifo(tool.folder / "pipe.png")
    assert "not a regular file" in tool.fails(1, "convert", "pipe.png", "out.png", "--to", "mono8")
    (tool.folder / "device.png").symlink_to("/dev/zero")
    assert "not a regular file" in tool.run("convert", "device.png", "out.png", "--to", "mono8").stderr


@pytest.mark.skipif(os.geteuid() == 0, reason="root may read everything")
def test_unreadable_file(png):
    (png.folder / "in.png").chmod(0)
    assert "Permission denied" in png.run("convert", "in.png", "out.png", "--to", "mono8").stderr


@pytest.mark.parametrize("name", ["in", "in.jpg", "in.", ".png", "in.png.txt"])
def test_unknown_extensions(tool, name):
    (tool.folder / name).write_bytes(png_bytes(PICTURE))
    message = tool.fails(1, "convert", name, "out.png", "--to", "mono8")
    assert ".png" in message and ".pgm" in message and ".raw" in message


def test_truncated_png_at_every_length(tool):
    whole = png_bytes(PICTURE)
    for length in some(range(len(whole))):
        (tool.folder / "in.png").write_bytes(whole[:length])
        message = tool.fails(1, "convert", "in.png", "out.png", "--to", "mono8")
        assert "in.png" in message and ("not a PNG" in message or "damaged" in message)


def test_a_png_with_any_damaged_byte_fails_or_is_read_whole(tool):
    whole = png_bytes(PICTURE)
    for at in some(range(len(whole))):
        (tool.folder / "in.png").write_bytes(whole[:at] + bytes([whole[at] ^ 0x20]) + whole[at + 1:])
        result = tool.run("convert", "in.png", "out.pgm", "--to", "mono8")
        assert result.returncode in (0, 1) and result.stderr.count("\n") == result.returncode, result.stderr
        assert (tool.folder / "out.pgm").exists() == (result.returncode == 0)
        (tool.folder / "out.pgm").unlink(missing_ok=True)


def test_a_png_that_claims_to_be_huge(tool):
    import struct
    from pictures import chunk
    for width, height in [(100000, 100000), (60000, 60000), (0x7fffffff, 0x7fffffff), (0, 1)]:
        header = struct.pack(">IIBBBBB", width, height, 8, 0, 0, 0, 0)
        (tool.folder / "in.png").write_bytes(b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", b"")
                                             + chunk(b"IEND", b""))
        assert "in.png" in tool.fails(1, "convert", "in.png", "out.png", "--to", "mono8") or width > 65535


def test_a_png_that_claims_to_be_wide_takes_no_memory(tool):
    import resource
    import struct
    from pictures import chunk
    if "sanitizer" in tool.succeeds("info"):
        pytest.skip("SKIPPED: sanitizers need more memory than the limit")
    header = struct.pack(">IIBBBBB", 0x6a000009, 7, 16, 0, 0, 0, 1)
    (tool.folder / "in.png").write_bytes(
        b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"tRNS", b"\0\1") + chunk(b"IDAT", b"x\x9c")
        + chunk(b"IEND", b""))
    result = tool.run("convert", "in.png", "out.png", "--to", "mono8",
                      preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_AS, (1 << 30, 1 << 30)))
    assert result.returncode == 1 and "in.png is truncated" in result.stderr


@pytest.mark.parametrize("kind, head", [(b"zTXt", b"a\0\0"), (b"iTXt", b"a\0\1\0\0\0")])
def test_texts_of_a_png_take_no_memory(tool, kind, head):
    if "sanitizer" in tool.succeeds("info"):
        pytest.skip("SKIPPED: sanitizers need memory of their own")
    import zlib
    from pictures import chunk
    whole = png_bytes(PICTURE)
    text = chunk(kind, head + zlib.compress(b"x" * 7_900_000, 9))
    end = whole.index(b"IDAT") - 4
    (tool.folder / "in.png").write_bytes(whole[:end] + 100 * text + whole[end:])
    code, memory = tool.takes("convert", "in.png", "out.raw", "--to", "rgb8")
    assert code == 0 and memory < 300 << 20
    assert (tool.folder / "out.raw").read_bytes() == PICTURE.tobytes()
    (tool.folder / "after.png").write_bytes(whole[:-12] + 100 * text + whole[-12:])
    code, memory = tool.takes("convert", "after.png", "out.raw", "--to", "rgb8")
    assert code == 0 and memory < 300 << 20


@pytest.mark.parametrize("name, data", [("in.pgm", b"P5 0 0 255\n"), ("in.pgm", b"P2 0 5 255\n"),
                                        ("in.pam", b"P7\nWIDTH 0\nHEIGHT 1\nDEPTH 1\nMAXVAL 255\nENDHDR\n")])
def test_an_empty_picture_is_named(tool, name, data):
    (tool.folder / name).write_bytes(data)
    (tool.folder / "b.png").write_bytes(png_bytes(PICTURE))
    assert tool.fails(2, "diff", name, "b.png").startswith(f"{name} cannot be read: a picture of 0 x ")


@pytest.mark.parametrize("data", [
    b"", b"P", b"P5", b"P5\n", b"P5 2", b"P5 2 2", b"P5 2 2 255", b"P5 2 2 255\n\1\2\3", b"P5 2 2 256\n1234567",
    b"P5 0 2 255\n", b"P5 2 0 255\n", b"P5 2 2 0\n1234", b"P5 2 2 65536\n12345678", b"P5 -2 2 255\n1234",
    b"P5 99999999999 2 255\n1234", b"P5 4294967295 4294967295 255\n1234", b"P5 two 2 255\n1234",
    b"P2 2 1 255\n1", b"P2 2 1 255\n1 256", b"P2 2 1 255\n1 x", b"P2 2 1 255\n1 -1", b"P5 2 2 40\n1234",
    b"P1 1 1 1", b"P4 1 1\n1", b"P8 1 1 1\n1", b"PX", b"P7\nWIDTH 1\n",
    b"P7\nWIDTH 1\nHEIGHT 1\nDEPTH 5\nMAXVAL 255\nENDHDR\n12345",
    b"P7\nWIDTH 1\nHEIGHT 1\nDEPTH 1\nMAXVAL 255\nTUPLTYPE RGB\nENDHDR\n1",
    b"P7\nHEIGHT 1\nDEPTH 1\nMAXVAL 255\nENDHDR\n1",
    b"P7\nSOMETHING 1\nENDHDR\n1", b"\x89PNG\r\n\x1a\n", b"P5 1 1 255#1"])
def test_damaged_pnm(tool, data):
    (tool.folder / "in.pnm").write_bytes(data)
    message = tool.fails(1, "convert", "in.pnm", "out.png", "--to", "mono8")
    assert "in.pnm" in message


def test_a_picture_under_the_wrong_extension(tool):
    (tool.folder / "in.png").write_bytes(pnm_bytes(PICTURE))
    assert "not a PNG file" in tool.fails(1, "convert", "in.png", "out.png", "--to", "mono8")
    (tool.folder / "in.ppm").write_bytes(png_bytes(PICTURE))
    assert "not a PNM file" in tool.fails(1, "convert", "in.ppm", "out.png", "--to", "mono8")


def test_a_dump_needs_its_shape(tool):
    (tool.folder / "in.raw").write_bytes(bytes(640 * 480))
    message = tool.fails(2, "convert", "in.raw", "out.png", "--to", "mono8")
    assert "--from" in message and "--width" in message and "--height" in message
    message = tool.fails(2, "convert", "in.raw", "out.png", "--from", "mono8", "--to", "mono8")
    assert "640 x 480" in message
    tool.fails(2, "convert", "in.raw", "out.png", "--from", "mono8", "--width", 640, "--to", "mono8")


def test_a_dump_of_the_wrong_size_says_what_would_fit(tool):
    (tool.folder / "in.raw").write_bytes(bytes(640 * 480 * 2))
    message = tool.fails(1, "convert", "in.raw", "out.png", "--from", "mono8", "--width", 640, "--height", 480,
                         "--to", "mono8")
    assert "614400" in message and "307200" in message  # what it has, what was expected
    assert "mono16" in message and "yuv422" in message  # formats of 640 x 480 that have that size
    message = tool.fails(1, "convert", "in.raw", "out.png", "--from", "mono16", "--width", 641, "--height", 480,
                         "--to", "mono8")
    assert "640 x 480" in message
    for size in (0, 1, 307199, 307201):
        (tool.folder / "in.raw").write_bytes(bytes(size))
        message = tool.fails(1, "convert", "in.raw", "out.png", "--from", "mono8", "--width", 640, "--height", 480,
                             "--to", "mono8")
        assert f"{size} bytes" in message and "307200" in message


def test_a_dump_too_large_for_a_frame(tool):
    (tool.folder / "in.raw").write_bytes(b"")
    os.truncate(tool.folder / "in.raw", 70000 * 70000)  # sparse
    result = tool.run("convert", "in.raw", "out.raw", "--from", "mono8", "--width", 70000, "--height", 70000,
                      "--to", "mono8")
    assert result.returncode == 1 and "4 GiB" in result.stderr and result.stderr.count("\n") == 1
    assert not (tool.folder / "out.raw").exists()


def test_a_file_too_large_to_read(tool):
    (tool.folder / "in.png").write_bytes(b"")
    os.truncate(tool.folder / "in.png", 100 << 30)  # sparse
    result = tool.run("convert", "in.png", "out.raw", "--to", "mono8")
    assert result.returncode == 1 and "107374182400 bytes" in result.stderr
    assert not (tool.folder / "out.raw").exists()


def test_a_picture_of_another_size_than_told(png):
    assert "6 x 4" in png.fails(1, "convert", "in.png", "out.png", "--width", 5, "--to", "mono8")
    png.succeeds("convert", "in.png", "out.png", "--width", 6, "--height", 4, "--to", "mono8")


def test_a_picture_in_another_format_than_told(png):
    assert "rgb8" in png.fails(1, "convert", "in.png", "out.png", "--from", "mono8", "--to", "mono8")
    assert "rgb8" in png.fails(1, "convert", "in.png", "out.png", "--from", "yuv444", "--to", "mono8")


# --- Outputs. ---------------------------------------------------------------------------------------

@pytest.mark.parametrize("output, target, held", [
    ("out.png", "yuv422", "PNG holds mono8, mono16, rgb8, rgbu, rgb16"),
    ("out.png", "mono12", "PNG holds"),
    ("out.png", "raw12", "PNG holds"),
    ("out.pgm", "rgb8", "PGM holds mono8, mono16"),
    ("out.ppm", "mono8", "PPM holds rgb8"),
    ("out.pnm", "rgbu", "PNM holds"),
    ("out.pam", "yuv411", "PAM holds"),
])
def test_what_a_container_cannot_hold_is_refused_before_reading(tool, output, target, held):
    message = tool.fails(1, "convert", "missing.png", output, "--to", target)
    assert target in message and held in message and ".raw" in message and "--to" in message


@pytest.mark.parametrize("target", ["s_mono16", "s_rgb16", "yuv422_jpeg", "raw8", "raw12", "raw16"])
def test_refused_pairs_name_the_possible_targets(png, target):
    message = png.fails(1, "convert", "in.png", "out.raw", "--to", target)
    assert target in message and "rgb8" in message and "mono8" in message and "yuv422" in message


def test_missing_folder_and_file_as_folder(png):
    assert "No such file" in png.fails(1, "convert", "in.png", "missing/out.png", "--to", "mono8")
    assert "Not a directory" in png.fails(1, "convert", "in.png", "in.png/out.png", "--to", "mono8")


def test_unwritable_folder(png):
    message = png.fails(1, "convert", "in.png", "/proc/out.png", "--to", "mono8")  # not even for root
    assert "/proc/out.png" in message
    if os.geteuid() != 0:
        (png.folder / "locked").mkdir(mode=0o500)
        assert "Permission denied" in png.fails(1, "convert", "in.png", "locked/out.png", "--to", "mono8")


def test_folder_and_device_as_output(png):
    (png.folder / "out.png").mkdir()
    assert "folder" in png.fails(1, "convert", "in.png", "out.png", "--to", "mono8")
    (png.folder / "null.png").symlink_to("/dev/null")
    result = png.run("convert", "in.png", "null.png", "--to", "mono8")
    assert result.returncode == 1 and "not a regular file" in result.stderr
    assert os.path.islink(png.folder / "null.png") and not os.path.isfile("/dev/null")


def test_a_failure_leaves_the_old_output(tool):
    (tool.folder / "in.png").write_bytes(png_bytes(PICTURE)[:-20])
    (tool.folder / "out.png").write_bytes(b"old")
    tool.fails(1, "convert", "in.png", "out.png", "--to", "mono8")  # checks that nothing changed


@pytest.mark.parametrize("output", ["out.png", "out.pgm", "out.raw"])
def test_a_full_disk(tool, output):
    """A limit on the size of files stands for it."""
    import resource
    (tool.folder / "in.pgm").write_bytes(
        pnm_bytes(np.random.default_rng(1).integers(0, 256, (200, 200), dtype=np.uint8)))

    def limit():
        signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
        resource.setrlimit(resource.RLIMIT_FSIZE, (5000, 5000))

    result = tool.run("convert", "in.pgm", output, "--to", "mono8", preexec_fn=limit)
    assert result.returncode == 1 and result.stderr.startswith(f"korvex2: cannot write {output}")
    assert [path.name for path in tool.folder.iterdir()] == ["in.pgm"]


@pytest.mark.parametrize("number", [signal.SIGINT, signal.SIGTERM])
def test_an_interrupted_run_leaves_nothing(tool, number):
    process = subprocess.Popen([TOOL, "chart", "out.png", "--width", "6000", "--height", "4000"], cwd=tool.folder)
    deadline = time.monotonic() + 60
    while not list(tool.folder.iterdir()) and process.poll() is None and time.monotonic() < deadline:
        time.sleep(0.002)
    process.send_signal(number)
    code = process.wait(60)
    names = [path.name for path in tool.folder.iterdir()]
    assert (code, names) in [(-number, []), (0, ["out.png"])]


def test_a_full_stdout():
    with open("/dev/full", "w") as full:
        result = subprocess.run([TOOL, "formats"], stdout=full, stderr=subprocess.PIPE, text=True)
    assert result.returncode == 1 and result.stderr.count("\n") == 1


def test_strange_file_names(tool):
    name = "a b\n\x1b[31m{}%s.png"
    message = tool.run("convert", name, "out.png", "--to", "mono8")
    assert message.returncode == 1 and message.stderr.count("\n") == 1 and "\x1b" not in message.stderr
    (tool.folder / name).write_bytes(png_bytes(PICTURE))
    tool.succeeds("convert", name, "out {}%n.png", "--to", "mono8")
    assert (tool.folder / "out {}%n.png").exists()
