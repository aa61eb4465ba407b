"""diff: how far two pictures are apart, against the definitions written in NumPy."""

import json

import numpy as np
import pytest

from pictures import png_bytes, read_png, yuv422


def similarity(a, b, peak):
    """Mean SSIM with a Gaussian window of 11 x 11, sigma 1.5, wherever it lies inside."""
    line = np.exp(-(np.arange(11) - 5.0) ** 2 / (2 * 1.5 ** 2))
    window = np.outer(line, line) / line.sum() ** 2
    shown = np.lib.stride_tricks.sliding_window_view

    def mean(x):
        return (shown(x, (11, 11)) * window).sum(axis=(2, 3))

    a, b = a.astype(np.float64), b.astype(np.float64)
    ma, mb = mean(a), mean(b)
    va, vb, vab = mean(a * a) - ma * ma, mean(b * b) - mb * mb, mean(a * b) - ma * mb
    c1, c2 = (0.01 * peak) ** 2, (0.03 * peak) ** 2
    return ((2 * ma * mb + c1) * (2 * vab + c2) / ((ma * ma + mb * mb + c1) * (va + vb + c2))).mean()


def noise_ratio(a, b, peak):
    return 10 * np.log10(peak ** 2 / ((a.astype(np.float64) - b) ** 2).mean())


def measured(tool, code, *arguments):
    result = tool.run("diff", *arguments, "--json")
    assert result.returncode == code, result.stderr
    return json.loads(result.stdout)


@pytest.mark.parametrize("dtype, channels", [("u1", 1), ("u2", 1), ("u1", 3), ("u2", 3), ("u1", 4)])
def test_figures(tool, rng, dtype, channels):
    peak = np.iinfo(dtype).max
    a = rng.integers(0, peak + 1, (23, 31, channels), dtype=dtype)
    b = np.where(rng.random(a.shape) < 0.4, rng.integers(0, peak + 1, a.shape, dtype=dtype), a)
    b[:3] = a[:3]
    b[3, 5, 0] = a[3, 5, 0] ^ 1
    (tool.folder / "a.png").write_bytes(png_bytes(a))
    (tool.folder / "b.png").write_bytes(png_bytes(b))
    result = measured(tool, 1, "a.png", "b.png")
    assert (result["width"], result["height"], result["same"]) == (31, 23, False)
    assert result["psnr"] == pytest.approx(noise_ratio(a, b, peak), rel=1e-8)
    assert [c["channel"] for c in result["channels"]] == list({1: "Y", 3: "RGB", 4: "RGBA"}[channels])
    for i, channel in enumerate(result["channels"]):
        x, y = a[:, :, i], b[:, :, i]
        assert channel["psnr"] == pytest.approx(noise_ratio(x, y, peak), rel=1e-8)
        assert channel["ssim"] == pytest.approx(similarity(x, y, peak), abs=1e-9)
        assert channel["largest"] == np.abs(x.astype(int) - y).max()
        assert channel["differing"] == (x != y).sum()
    assert result["differing"] == (a != b).any(axis=2).sum()
    y, x = np.argwhere((a != b).any(axis=2))[0]
    assert result["first"] == {"x": x, "y": y, "values": [a[y, x].tolist(), b[y, x].tolist()]}


def test_the_same(tool, rng):
    (tool.folder / "a.png").write_bytes(png_bytes(rng.integers(0, 256, (20, 20, 3), dtype=np.uint8)))
    assert tool.succeeds("diff", "a.png", "a.png").endswith("The same.\n")
    result = measured(tool, 0, "a.png", "a.png")
    assert result["same"] and result["psnr"] is None and result["ssim"] == 1 and result["first"] is None
    assert tool.succeeds("diff", "a.png", "a.png", "--quiet") == ""


def test_dumps_and_small_pictures(tool, rng):
    a = rng.integers(0, 256, (6, 10, 3), dtype=np.uint8)
    data = bytearray(yuv422(a))
    (tool.folder / "a.raw").write_bytes(data)
    data[4 * (10 * 2 + 4) // 2] ^= 0xff  # the U of pixels 4 and 5 of row 2
    (tool.folder / "b.raw").write_bytes(data)
    shape = ["--from", "UYVY", "--width", 10, "--height", 6]
    result = measured(tool, 1, "a.raw", "b.raw", *shape)
    assert {c["channel"]: c["differing"] for c in result["channels"]} == {"U": 2, "Y": 0, "V": 0}
    assert result["ssim"] is None and (result["first"]["x"], result["first"]["y"]) == (4, 2)
    (tool.folder / "a.raw").write_bytes(bytes([0x12, 0x43, 0x56]))  # 0x123 and 0x564
    (tool.folder / "b.raw").write_bytes(bytes([0x12, 0x73, 0x56]))
    result = measured(tool, 1, "a.raw", "b.raw", "--from", "raw12", "--width", 2, "--height", 1)
    assert result["first"] == {"x": 1, "y": 0, "values": [[0x564], [0x567]]}


def test_the_picture_shows_where_and_how_far(tool, rng):
    a = rng.integers(0, 200, (12, 14, 3), dtype=np.uint8)
    b = a.copy()
    b[3, 4] += np.array([1, 0, 50], np.uint8)
    (tool.folder / "a.png").write_bytes(png_bytes(a))
    (tool.folder / "b.png").write_bytes(png_bytes(b))
    assert tool.run("diff", "a.png", "b.png", "--picture", "d.png", "--amplify", 7).returncode == 1
    expected = np.zeros_like(a)
    expected[3, 4] = [7, 0, 255]
    assert np.array_equal(read_png(tool.folder / "d.png"), expected)
    deep = a.astype(np.uint16) * 257
    near = deep.copy()
    near[0, 0, 1] += 1  # vanishes in 8 bits unless it is rounded up
    (tool.folder / "a.png").write_bytes(png_bytes(deep))
    (tool.folder / "b.png").write_bytes(png_bytes(near))
    assert tool.run("diff", "a.png", "b.png", "--picture", "d.png", "--amplify", 1).returncode == 1
    shown = read_png(tool.folder / "d.png")
    assert shown[0, 0].tolist() == [0, 1, 0] and shown.sum() == 1


def test_trouble_is_not_a_difference(tool, rng):
    (tool.folder / "a.png").write_bytes(png_bytes(rng.integers(0, 256, (4, 5, 3), dtype=np.uint8)))
    (tool.folder / "b.png").write_bytes(png_bytes(rng.integers(0, 256, (5, 4, 3), dtype=np.uint8)))
    (tool.folder / "c.png").write_bytes(png_bytes(rng.integers(0, 256, (4, 5), dtype=np.uint8)))
    (tool.folder / "d.raw").write_bytes(bytes(61))
    message = tool.fails(2, "diff", "a.png", "b.png")
    assert "5 x 4 rgb8" in message and "4 x 5 rgb8" in message
    assert "korvex2 convert" in tool.fails(2, "diff", "a.png", "c.png")
    assert "No such file" in tool.fails(2, "diff", "a.png", "missing.png")
    assert "61 bytes" in tool.fails(2, "diff", "a.png", "d.raw", "--from", "rgb8", "--width", 5, "--height", 4)
    assert "PGM holds" in tool.fails(2, "diff", "a.png", "a.png", "--picture", "d.pgm")
    tool.fails(2, "diff", "a.png")
    tool.fails(2, "diff", "a.png", "a.png", "--amplify", 0)
