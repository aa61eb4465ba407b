"""Crop, white balance, stretch and gamma, against the same in NumPy."""

import math

import numpy as np
import pytest

from pictures import png_bytes, read_png, read_pnm

HEIGHT, WIDTH = 10, 16
DTYPES = {8: np.uint8, 16: np.uint16}
NAMES = {(1, 8): "mono8", (3, 8): "rgb8", (4, 8): "rgbu", (1, 16): "mono16", (3, 16): "rgb16", (4, 16): "bgru16"}


def percentile(values, percent):
    ordered = np.sort(values.ravel())
    return ordered[max(1, math.ceil(ordered.size * percent / 100)) - 1]


def graded(samples, gains=None, stretch=None, gamma=1, maximum=None):
    """`gains` may be "grey"."""
    top = np.iinfo(samples.dtype).max
    colours = samples[..., :3].astype(float) if samples.ndim == 3 else samples[..., None].astype(float)
    if gains == "grey":
        means = colours.reshape(-1, 3).mean(axis=0)
        gains = means[1] / means
    values = np.minimum(1, colours * (1 if gains is None else np.array(gains)) / top)
    low, high = (percentile(values, p) for p in stretch) if stretch else (0, 1)
    if high <= low:
        low, high = 0, 1
    values = np.clip((values - low) / (high - low), 0, 1) ** (1 / gamma)
    maximum = maximum or top
    result = np.floor(values * maximum + 0.5).astype(np.uint16 if maximum > 255 else np.uint8)
    if samples.ndim == 2:
        return result[..., 0]
    return np.concatenate([result, samples[..., 3:]], axis=2)


def dark(rng, channels, depth):
    shape = (HEIGHT, WIDTH) if channels == 1 else (HEIGHT, WIDTH, channels)
    samples = rng.integers(2 ** (depth - 4), 2 ** (depth - 2), shape, dtype=DTYPES[depth])
    if channels > 2:
        samples[..., 2] //= 2
    return samples


def assert_near(samples, expected):
    """Powers and quotients may differ in their last bit, which moves a sample that lies on an edge."""
    assert samples.dtype == expected.dtype and samples.shape == expected.shape
    assert np.abs(samples.astype(int) - expected).max() <= 1
    assert np.mean(samples != expected) < 0.01


@pytest.mark.parametrize("channels, depth", NAMES)
@pytest.mark.parametrize("options, grade", [
    (["--gamma", 2.2], {"gamma": 2.2}), (["--stretch", "0,100"], {"stretch": (0, 100)}),
    (["--stretch", "5,90"], {"stretch": (5, 90)}), (["--white-balance", "grey"], {"gains": "grey"}),
    (["--white-balance", "2,1.5,6"], {"gains": (2, 1.5, 6)}),
    (["--gamma", 1.8, "--stretch", "1,99", "--white-balance", "1.5,1,2.5"],
     {"gamma": 1.8, "stretch": (1, 99), "gains": (1.5, 1, 2.5)})])
def test_adjustments(tool, rng, channels, depth, options, grade):
    samples = dark(rng, channels, depth)
    (tool.folder / "in.png").write_bytes(png_bytes(samples))
    arguments = ["convert", "in.png", "out.png", "--to", NAMES[channels, depth], *options]
    if channels == 1 and "gains" in grade:
        assert "rgb8" in tool.fails(2, *arguments)
        return
    tool.succeeds(*arguments)
    result = read_png(tool.folder / "out.png")
    assert_near(result, graded(samples, **grade))
    assert not np.array_equal(result, samples)


def test_nothing_happens_unless_it_is_asked_for(tool, rng):
    samples = dark(rng, 3, 16)
    (tool.folder / "in.png").write_bytes(png_bytes(samples))
    tool.succeeds("convert", "in.png", "out.png", "--to", "rgb16", "--gamma", 1)
    assert np.array_equal(read_png(tool.folder / "out.png"), samples)


@pytest.mark.parametrize("target", ["mono8", "rgb8", "bgr", "bgru"])
def test_deep_sources_keep_their_values_until_the_end(tool, rng, target):
    samples = rng.integers(0, 600, (HEIGHT, WIDTH), dtype=np.uint16)  # three values in 8 bits
    (tool.folder / "in.png").write_bytes(png_bytes(samples))
    tool.succeeds("convert", "in.png", "out.png", "--to", target, "--stretch", "0,100")
    expected = graded(samples, stretch=(0, 100), maximum=255)
    assert len(np.unique(expected)) > 50
    result = read_png(tool.folder / "out.png")
    for channel in np.atleast_3d(result)[..., :3].transpose(2, 0, 1):
        assert_near(channel, expected)


def test_a_black_frame_stays_black(tool):
    (tool.folder / "in.png").write_bytes(png_bytes(np.zeros((4, 4, 3), np.uint8)))
    tool.succeeds("convert", "in.png", "out.png", "--to", "rgb8", "--stretch", "1,99", "--white-balance", "grey",
                  "--gamma", 2.2)
    assert not read_png(tool.folder / "out.png").any()


@pytest.mark.parametrize("x, y, width, height", [(0, 0, 16, 10), (3, 1, 5, 7), (15, 9, 1, 1), (0, 4, 16, 1)])
def test_crop(tool, rng, x, y, width, height):
    samples = dark(rng, 3, 8)
    (tool.folder / "in.png").write_bytes(png_bytes(samples))
    tool.succeeds("convert", "in.png", "out.png", "--to", "rgb8", "--crop", f"{x},{y},{width},{height}")
    part = samples[y:y + height, x:x + width]
    assert np.array_equal(read_png(tool.folder / "out.png"), part)
    tool.succeeds("convert", "in.png", "out.png", "--to", "rgb8", "--crop", f"{x},{y},{width},{height}",
                  "--stretch", "0,100")  # of the part
    assert_near(read_png(tool.folder / "out.png"), graded(part, stretch=(0, 100)))


@pytest.mark.parametrize("name, group, size", [("mono12", 2, 3), ("yuv422", 2, 4), ("yuv411", 4, 6), ("raw12", 2, 3)])
def test_crop_of_packed_formats(tool, rng, name, group, size):
    data = rng.integers(0, 256, (HEIGHT, WIDTH // group, size), dtype=np.uint8)
    (tool.folder / "in.raw").write_bytes(data.tobytes())
    arguments = ["convert", "in.raw", "out.raw", "--from", name, "--width", WIDTH, "--height", HEIGHT, "--to", name]
    tool.succeeds(*arguments, "--crop", "4,2,8,5")
    assert (tool.folder / "out.raw").read_bytes() == data[2:7, 4 // group:12 // group].tobytes()
    (tool.folder / "out.raw").unlink()
    assert f"multiples of {group}" in tool.fails(1, *arguments, "--crop", "1,2,8,5")


def test_a_demosaiced_part_is_a_part_of_the_demosaiced(tool, rng):
    samples = dark(rng, 1, 8)
    (tool.folder / "in.png").write_bytes(png_bytes(samples))
    arguments = ["--from", "raw8", "--tile", "gbrg", "--method", "edge", "--to", "rgb8"]
    tool.succeeds("convert", "in.png", "whole.png", *arguments)
    tool.succeeds("convert", "in.png", "part.png", *arguments, "--crop", "3,3,5,5")
    assert np.array_equal(read_png(tool.folder / "part.png"), read_png(tool.folder / "whole.png")[3:8, 3:8])


def test_many_frames(tool, rng):
    frames = rng.integers(0, 60, (5, HEIGHT, WIDTH), dtype=np.uint8)
    (tool.folder / "in.raw").write_bytes(frames.tobytes())
    tool.succeeds("convert", "in.raw", "{index}.pgm", "--from", "mono8", "--width", WIDTH, "--height", HEIGHT,
                  "--frames", "all", "--to", "mono8", "--stretch", "0,100", "--crop", "0,0,8,8")
    for i, frame in enumerate(frames):
        assert_near(read_pnm(tool.folder / f"{i}.pgm"), graded(frame[:8, :8], stretch=(0, 100)))


@pytest.mark.parametrize("options, code, hint", [
    (["--crop", "1,2,3"], 2, "x,y,width,height"), (["--crop", "0,0,0,1"], 2, "--crop"),
    (["--crop", "a,b,c,d"], 2, "--crop"), (["--crop", "-1,0,2,2"], 2, "--crop"),
    (["--crop", "0,0,17,1"], 1, "16 x 10"), (["--crop", "4294967295,0,2,1"], 1, "16 x 10"),
    (["--stretch", "5"], 2, "low,high"), (["--stretch", "99,1"], 2, "--stretch"),
    (["--stretch", "-1,99"], 2, "--stretch"), (["--stretch", "1,101"], 2, "--stretch"),
    (["--stretch", "nan,99"], 2, "--stretch"), (["--white-balance", "blue"], 2, "grey"),
    (["--white-balance", "1,1"], 2, "grey"), (["--white-balance", "0,1,1"], 2, "grey"),
    (["--white-balance", "inf,1,1"], 2, "grey"), (["--gamma", "0"], 2, "--gamma"), (["--gamma", "dark"], 2, "--gamma"),
])
def test_wrong_requests(tool, rng, options, code, hint):
    (tool.folder / "in.png").write_bytes(png_bytes(dark(rng, 3, 8)))
    assert hint in tool.fails(code, "convert", "in.png", "out.png", "--to", "rgb8", *options)


@pytest.mark.parametrize("target", ["yuv422", "mono12"])
def test_packed_results_are_not_adjusted(tool, rng, target):
    (tool.folder / "in.png").write_bytes(png_bytes(dark(rng, 3, 8)))
    assert "rgb8" in tool.fails(2, "convert", "in.png", "out.raw", "--to", target, "--gamma", "2")
