"""Conversions of arrays against NumPy, format by format."""

import numpy as np
import pytest

import korvex2
from pictures import RED_AT, luma, mosaic, pack12, yuv411, yuv422, yuv444

ROWS, COLS = 6, 8
METHODS = ["nearest", "edge", "hq_linear", "directional", "rigorous"]
TILES = list(RED_AT)


def bytes_of(data, shape):
    return np.frombuffer(data, np.uint8).reshape(shape)


def with_alpha(colour, alpha):
    return np.concatenate([colour, np.full((*colour.shape[:2], 1), alpha, colour.dtype)], axis=2)


def widened(samples):
    return samples.astype(np.uint16) * 257


def unpacked(packed):
    """12 bits at the top of 16. The two low nibbles of a pair come back the other way round."""
    triples = packed.reshape(-1, 3).astype(np.uint16)
    first = triples[:, 0] << 8 | triples[:, 1] & 0xF0
    second = triples[:, 2] << 8 | (triples[:, 1] & 0x0F) << 4
    return np.stack([first, second], axis=-1).reshape(ROWS, COLS)


def decoded(yuv):
    """R G B of U Y V, truncated toward zero and clamped."""
    u, y, v = (yuv[..., i].astype(np.float64) for i in range(3))
    red = np.trunc(1.402 * (v - 128))
    green = np.trunc(0.344 * (u - 128) + 0.714 * (v - 128))
    blue = np.trunc(1.772 * (u - 128))
    return np.stack([y + red, y - green, y + blue], axis=-1).clip(0, 255).astype(np.uint8)


def spread(u, y, v):
    return np.stack([u, y, v], axis=-1).reshape(ROWS, COLS, 3)


def from_422(packed):
    groups = packed.reshape(-1, 4)
    return spread(np.repeat(groups[:, 0], 2), groups[:, [1, 3]].ravel(), np.repeat(groups[:, 2], 2))


def from_411(packed):
    groups = packed.reshape(-1, 6)
    return spread(np.repeat(groups[:, 0], 4), groups[:, [1, 2, 4, 5]].ravel(), np.repeat(groups[:, 3], 4))


def cases():
    rng = np.random.default_rng(7)
    rgb = rng.integers(0, 256, (ROWS, COLS, 3), np.uint8)
    rgba = rng.integers(0, 256, (ROWS, COLS, 4), np.uint8)
    deep = rng.integers(0, 65536, (ROWS, COLS, 3), np.uint16)
    deep_alpha = rng.integers(0, 65536, (ROWS, COLS, 4), np.uint16)
    grey = rng.integers(0, 256, (ROWS, COLS), np.uint8)
    deep_grey = rng.integers(0, 65536, (ROWS, COLS), np.uint16)
    packed = rng.integers(0, 256, (ROWS, COLS * 3 // 2), np.uint8)
    uyvy = rng.integers(0, 256, (ROWS, COLS * 2), np.uint8)
    uyyvyy = rng.integers(0, 256, (ROWS, COLS * 3 // 2), np.uint8)
    y = luma(rgb)

    yield "rgb8", "bgr", rgb, rgb[..., ::-1]
    yield "rgb8", "rgbu", rgb, with_alpha(rgb, 255)
    yield "rgb8", "bgru", rgb, with_alpha(rgb[..., ::-1], 255)
    yield "rgb8", "rgb16", rgb, widened(rgb)
    yield "rgb8", "bgr16", rgb, widened(rgb[..., ::-1])
    yield "rgb8", "bgru16", rgb, with_alpha(widened(rgb[..., ::-1]), 65535)
    yield "rgb8", "mono8", rgb, y
    yield "rgb8", "mono12", rgb, bytes_of(pack12(y.astype(int) * 16 + (y & 15)), packed.shape)
    yield "rgb8", "mono16", rgb, widened(y)
    yield "rgb8", "yuv444", rgb, bytes_of(yuv444(rgb), rgb.shape)
    yield "rgb8", "yuv422", rgb, bytes_of(yuv422(rgb), uyvy.shape)
    yield "rgb8", "yuv411", rgb, bytes_of(yuv411(rgb), uyyvyy.shape)
    yield "bgr", "rgb8", rgb, rgb[..., ::-1]
    yield "bgr", "yuv444", rgb, bytes_of(yuv444(rgb[..., ::-1]), rgb.shape)
    yield "rgbu", "rgb8", rgba, rgba[..., :3]
    yield "rgbu", "bgr", rgba, rgba[..., 2::-1]
    yield "bgru", "rgb8", rgba, rgba[..., 2::-1]
    yield "rgb16", "rgb8", deep, (deep >> 8).astype(np.uint8)
    yield "rgb16", "bgru16", deep, with_alpha(deep[..., ::-1], 65535)
    yield "bgr16", "rgb16", deep, deep[..., ::-1]
    yield "bgru16", "bgr", deep_alpha, (deep_alpha[..., :3] >> 8).astype(np.uint8)
    yield "mono8", "rgb8", grey, np.repeat(grey[..., None], 3, axis=2)
    yield "mono8", "bgru", grey, with_alpha(np.repeat(grey[..., None], 3, axis=2), 255)
    yield "mono8", "mono16", grey, widened(grey)
    yield "mono8", "yuv444", grey, bytes_of(yuv444(np.repeat(grey[..., None], 3, axis=2)), rgb.shape)
    yield "mono16", "mono8", deep_grey, (deep_grey >> 8).astype(np.uint8)
    yield "mono16", "rgb16", deep_grey, np.repeat(deep_grey[..., None], 3, axis=2)
    yield "mono12", "mono16", packed, unpacked(packed)
    yield "mono12", "mono8", packed, packed.reshape(-1, 3)[:, [0, 2]].reshape(ROWS, COLS)
    yield "yuv444", "rgb8", rgb, decoded(rgb)
    yield "yuv444", "bgr16", rgb, widened(decoded(rgb)[..., ::-1])
    yield "yuv444", "mono8", rgb, luma(decoded(rgb))  # by way of colour
    yield "yuv422", "rgb8", uyvy, decoded(from_422(uyvy))
    yield "yuv422", "bgru", uyvy, with_alpha(decoded(from_422(uyvy))[..., ::-1], 255)
    yield "yuv422", "mono8", uyvy, luma(decoded(from_422(uyvy)))
    yield "yuv411", "rgb8", uyyvyy, decoded(from_411(uyyvyy))
    yield "raw8", "raw16", grey, widened(grey)
    yield "raw16", "raw8", deep_grey, (deep_grey >> 8).astype(np.uint8)
    yield "raw12", "raw16", packed, unpacked(packed)
    yield "rgb8", "rgb8", rgb, rgb
    yield "raw12", "raw12", packed, packed


@pytest.mark.parametrize("from_, to, source, expected", [pytest.param(*case, id=f"{case[0]}-{case[1]}")
                                                         for case in cases()])
def test_against_numpy(from_, to, source, expected):
    result = korvex2.convert(source, to=to, from_=from_)
    assert result.dtype == expected.dtype and result.flags.c_contiguous and result.flags.writeable
    assert np.array_equal(result, expected)
    assert not np.may_share_memory(result, source)

    out = np.full_like(expected, 0xA5, order="C")
    assert korvex2.convert(source, to=to, from_=from_, out=out) is out
    assert np.array_equal(out, expected)

    by_member = korvex2.convert(source, korvex2.PixelFormat.of(to), korvex2.PixelFormat.of(from_))
    assert np.array_equal(by_member, expected)


def test_422_as_rows_by_columns_by_2(rng):
    pairs = rng.integers(0, 256, (ROWS, COLS, 2), np.uint8)
    rgb = korvex2.convert(pairs, "rgb8", "uyvy")
    assert np.array_equal(rgb, decoded(from_422(pairs)))
    back = np.empty_like(pairs)
    assert korvex2.convert(rgb, "uyvy", "rgb8", out=back) is back
    assert back.tobytes() == yuv422(rgb)


# --- Mosaics --------------------------------------------------------------------------------------------------------

@pytest.mark.parametrize("tile", TILES)
def test_nearest_takes_the_colours_of_its_tile(tile, rng):
    samples = rng.integers(0, 256, (ROWS, COLS), np.uint8)
    y, x = RED_AT[tile]
    red, blue = samples[y::2, x::2], samples[1 - y::2, 1 - x::2]
    expected = np.empty((ROWS, COLS, 3), np.uint8)
    for row in (0, 1):
        green = samples[row::2, 1 - x::2] if row == y else samples[row::2, x::2]
        for col in (0, 1):
            expected[row::2, col::2] = np.stack([red, green, blue], axis=-1)
    assert np.array_equal(korvex2.convert(samples, "rgb8", "raw8", tile, "nearest"), expected)
    assert np.array_equal(korvex2.convert(samples, "bgr8", "raw8", tile, "default"), expected[..., ::-1])


@pytest.mark.parametrize("method", METHODS)
@pytest.mark.parametrize("tile", TILES)
def test_methods_keep_samples_and_constants(tile, method, rng):
    noise = rng.integers(0, 65536, (ROWS, COLS), np.uint16)
    picture = korvex2.convert(noise, "rgb16", "raw16", tile, method)
    assert np.array_equal(mosaic(picture, tile), noise)
    flat = np.broadcast_to(np.array([10, 100, 200], np.uint8), (ROWS, COLS, 3))
    assert np.array_equal(korvex2.convert(mosaic(flat, tile), "rgb8", "raw8", tile, method), flat)


def test_methods_differ(rng):
    noise = rng.integers(0, 256, (16, 16), np.uint8)
    pictures = {korvex2.convert(noise, "rgb8", "raw8", "rggb", method).tobytes() for method in METHODS}
    assert len(pictures) == len(METHODS)


@pytest.mark.parametrize("method", METHODS)
def test_packed_mosaics_heed_the_method(method, rng):
    packed = rng.integers(0, 256, (ROWS, COLS * 3 // 2), np.uint8)
    expected = korvex2.convert(unpacked(packed), "bgr16", "raw16", "grbg", method)
    assert np.array_equal(korvex2.convert(packed, "bgr16", "raw12", "grbg", method), expected)


def test_hq_linear_is_taken_if_no_method_is_said(rng):
    samples = rng.integers(0, 256, (ROWS, COLS), np.uint8)
    assert np.array_equal(korvex2.convert(samples, "bgr8", "raw8", "gbrg"),
                          korvex2.convert(samples, "bgr8", "raw8", "gbrg", "hq_linear"))


@pytest.mark.parametrize("how", [{"tile": "none"}, {"tile": "rggb", "method": "none"}])
def test_mosaics_as_grey(how, rng):
    samples = rng.integers(0, 256, (ROWS, COLS), np.uint8)
    deep = rng.integers(0, 65536, (ROWS, COLS), np.uint16)
    packed = rng.integers(0, 256, (ROWS, COLS * 3 // 2), np.uint8)
    grey = np.repeat(samples[..., None], 3, axis=2)
    assert np.array_equal(korvex2.convert(samples, "rgb8", "raw8", **how), grey)
    assert np.array_equal(korvex2.convert(samples, "mono8", "raw8", **how), luma(grey))  # by way of colour
    assert np.array_equal(korvex2.convert(deep, "mono16", "raw16", **how), deep)
    assert np.array_equal(korvex2.convert(deep, "rgb16", "raw16", **how), np.repeat(deep[..., None], 3, axis=2))
    assert np.array_equal(korvex2.convert(packed, "mono16", "raw12", **how), unpacked(packed))


def test_names_say_the_tile(rng):
    samples = rng.integers(0, 256, (ROWS, COLS), np.uint8)
    assert np.array_equal(korvex2.convert(samples, "bgr8", "BayerGB8"),
                          korvex2.convert(samples, "bgr8", "raw8", "gbrg"))
    assert np.array_equal(korvex2.convert(samples, "bgr8", "BayerGB8", "GBRG"),
                          korvex2.convert(samples, "bgr8", "raw8", "gbrg"))
    assert np.array_equal(korvex2.convert(samples, "rgb8", "BayerGB8", "none"),
                          np.repeat(samples[..., None], 3, axis=2))
