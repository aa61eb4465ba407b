"""Y4M, read by a few lines of NumPy."""

import shutil
import subprocess

import numpy as np
import pytest

from pictures import png_bytes

HEIGHT, WIDTH = 6, 8
SUBSAMPLING = {"mono8": 0, "yuv444": 1, "yuv422": 2, "yuv411": 4}
TAGS = {"mono8": "mono", "yuv444": "444", "yuv422": "422", "yuv411": "411"}
GROUPS = {"mono8": "Y", "yuv444": "UYV", "yuv422": "UYVY", "yuv411": "UYYVYY"}


def planes_of(dump, name):
    """Y, U and V of a packed frame."""
    groups = np.frombuffer(dump, np.uint8).reshape(HEIGHT, -1, len(GROUPS[name]))
    return b"".join(
        np.ascontiguousarray(groups[:, :, [i for i, c in enumerate(GROUPS[name]) if c == channel]]).tobytes()
        for channel in ("YUV" if SUBSAMPLING[name] else "Y"))


@pytest.mark.parametrize("name", TAGS)
@pytest.mark.parametrize("count", [1, 3])
def test_planes(tool, rng, name, count):
    size = HEIGHT * WIDTH // max(1, len([c for c in GROUPS[name] if c == "Y"])) * len(GROUPS[name])
    frames = [rng.bytes(size) for _ in range(count)]
    (tool.folder / "in.raw").write_bytes(b"".join(frames))
    tool.succeeds("convert", "in.raw", "out.y4m", "--from", name, "--width", WIDTH, "--height", HEIGHT,
                  "--frames", "all", "--to", name)
    header, rest = (tool.folder / "out.y4m").read_bytes().split(b"\n", 1)
    assert header == f"YUV4MPEG2 W8 H6 F25:1 Ip A1:1 C{TAGS[name]} XCOLORRANGE=FULL".encode()
    assert rest == b"".join(b"FRAME\n" + planes_of(frame, name) for frame in frames)


@pytest.mark.parametrize("fps, said", [("30", "30:1"), ("29.97", "2997:100"), ("30000/1001", "30000:1001"),
                                       ("0.5", "5:10")])
def test_frame_rate(tool, rng, fps, said):
    (tool.folder / "in.png").write_bytes(png_bytes(rng.integers(0, 256, (HEIGHT, WIDTH, 3), dtype=np.uint8)))
    tool.succeeds("convert", "in.png", "out.y4m", "--to", "yuv444", "--fps", fps)
    assert f" F{said} ".encode() in (tool.folder / "out.y4m").read_bytes().split(b"\n")[0]


@pytest.mark.parametrize("fps", ["0", "25/0", "abc", "1/2/3", "-1", "1.", ".5", "1.2345", "25 ", "99999999999"])
def test_no_frame_rate(tool, rng, fps):
    (tool.folder / "in.png").write_bytes(png_bytes(rng.integers(0, 256, (HEIGHT, WIDTH, 3), dtype=np.uint8)))
    message = tool.fails(2, "convert", "in.png", "out.y4m", "--to", "yuv444", f"--fps={fps}")
    assert "--fps" in message and "30000/1001" in message


def test_a_picture_has_no_frame_rate(tool, rng):
    (tool.folder / "in.png").write_bytes(png_bytes(rng.integers(0, 256, (HEIGHT, WIDTH, 3), dtype=np.uint8)))
    assert "--fps is for video" in tool.fails(2, "convert", "in.png", "out.png", "--to", "rgb8", "--fps", "25")


def test_to_standard_output(tool, rng):
    samples = rng.integers(0, 256, (HEIGHT, WIDTH, 3), dtype=np.uint8)
    (tool.folder / "in.png").write_bytes(png_bytes(samples))
    tool.succeeds("convert", "in.png", "out.y4m", "--to", "yuv444")
    result = subprocess.run(tool.command("convert", "in.png", "y4m:-", "--to", "yuv444"), cwd=tool.folder,
                            capture_output=True, timeout=120)
    assert result.returncode == 0 and result.stdout == (tool.folder / "out.y4m").read_bytes()


@pytest.mark.skipif(shutil.which("ffmpeg") is None, reason="needs ffmpeg")
@pytest.mark.parametrize("name, pixels", [("yuv444", "yuvj444p"), ("yuv422", "yuvj422p"), ("mono8", "gray")])
def test_ffmpeg_reads_the_same_planes(tool, rng, name, pixels):
    size = HEIGHT * WIDTH * {"yuv444": 3, "yuv422": 2, "mono8": 1}[name]
    (tool.folder / "in.raw").write_bytes(rng.bytes(4 * size))
    tool.succeeds("convert", "in.raw", "out.y4m", "--from", name, "--width", WIDTH, "--height", HEIGHT,
                  "--frames", "all", "--to", name)
    result = subprocess.run(["ffmpeg", "-v", "error", "-i", "out.y4m", "-f", "rawvideo", "-pix_fmt", pixels, "-"],
                            cwd=tool.folder, capture_output=True, timeout=120)
    data = (tool.folder / "in.raw").read_bytes()
    assert result.stdout == b"".join(planes_of(data[i * size:(i + 1) * size], name) for i in range(4))


def test_what_y4m_cannot_hold(tool, rng):
    (tool.folder / "in.png").write_bytes(png_bytes(rng.integers(0, 256, (4, 5), dtype=np.uint8)))
    assert "yuv444" in tool.fails(1, "convert", "in.png", "out.y4m", "--to", "rgb8")
    assert "multiple of 2" in tool.fails(1, "convert", "in.png", "out.y4m", "--to", "yuv422")
    (tool.folder / "in.y4m").write_bytes(b"YUV4MPEG2 W8 H6\n")
    assert "write only" in tool.fails(1, "convert", "in.y4m", "out.png", "--to", "mono8")
