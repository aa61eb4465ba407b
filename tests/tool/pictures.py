"""Picture files and packed frames, written and read without the library under test.

PIL does 8-bit PNG and most of PNM; the plain functions here do what PIL cannot: colour of 16 bits,
interlacing and PAM.
"""

import struct
import zlib

import numpy as np

GREY, RGB, PALETTE, GREY_ALPHA, RGBA = 0, 2, 3, 4, 6
CHANNELS = {GREY: 1, RGB: 3, PALETTE: 1, GREY_ALPHA: 2, RGBA: 4}
COLOUR_TYPES = {1: GREY, 2: GREY_ALPHA, 3: RGB, 4: RGBA}
ADAM7 = [(0, 0, 8, 8), (0, 4, 8, 8), (4, 0, 8, 4), (0, 2, 4, 4), (2, 0, 4, 2), (0, 1, 2, 2), (1, 0, 2, 1)]


def with_channels(array):
    return array[:, :, None] if array.ndim == 2 else array


def chunk(kind, data):
    return (struct.pack(">I", len(data)) + kind + data
            + struct.pack(">I", zlib.crc32(kind + data) & 0xffffffff))


def png_bytes(array, interlaced=False):
    """uint8 or uint16 samples, 1 to 4 channels."""
    array = with_channels(array)
    height, width, channels = array.shape
    big_endian = array.astype(array.dtype.newbyteorder(">"))
    passes = ADAM7 if interlaced else [(0, 0, 1, 1)]
    lines = bytearray()
    for y, x, down, across in passes:
        part = big_endian[y::down, x::across]
        if part.size:
            for row in part:
                lines += b"\0" + row.tobytes()
    header = struct.pack(">IIBBBBB", width, height, array.itemsize * 8, COLOUR_TYPES[channels], 0, 0,
                         int(interlaced))
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", zlib.compress(bytes(lines)))
            + chunk(b"IEND", b""))


def paeth(a, b, c):
    p = a + b - c
    distances = abs(p - a), abs(p - b), abs(p - c)
    return (a, b, c)[distances.index(min(distances))]


def unfilter(kind, line, above, step):
    line = bytearray(line)
    for i in range(len(line)):
        a = line[i - step] if i >= step else 0
        b = above[i]
        c = above[i - step] if i >= step else 0
        line[i] = (line[i] + (0, a, b, (a + b) // 2, paeth(a, b, c))[kind]) & 255
    return bytes(line)


def read_png(path):
    """Samples of a PNG without palette and interlacing; every checksum is verified."""
    data = path.read_bytes()
    assert data[:8] == b"\x89PNG\r\n\x1a\n"
    chunks, at = [], 8
    while at < len(data):
        length, = struct.unpack(">I", data[at:at + 4])
        kind, body = data[at + 4:at + 8], data[at + 8:at + 8 + length]
        assert data[at:at + 12 + length] == chunk(kind, body)
        chunks.append((kind, body))
        at += 12 + length
    assert chunks[-1][0] == b"IEND"
    width, height, depth, kind, *rest = struct.unpack(">IIBBBBB", chunks[0][1])
    assert rest == [0, 0, 0]
    channels = CHANNELS[kind]
    step = channels * depth // 8
    raw = zlib.decompress(b"".join(body for name, body in chunks if name == b"IDAT"))
    above, rows = bytes(width * step), []
    for y in range(height):
        line = raw[y * (width * step + 1):(y + 1) * (width * step + 1)]
        above = unfilter(line[0], line[1:], above, step)
        rows.append(above)
    samples = np.frombuffer(b"".join(rows), ">u2" if depth == 16 else "u1")
    return samples.astype("u2" if depth == 16 else "u1").reshape(height, width, channels).squeeze(axis=2) \
        if channels == 1 else samples.astype("u2" if depth == 16 else "u1").reshape(height, width, channels)


def pnm_bytes(array, maximum=None):
    """P5, P6 or, with alpha, P7."""
    array = with_channels(array)
    height, width, channels = array.shape
    maximum = maximum or (65535 if array.itemsize == 2 else 255)
    samples = array.astype(">u2" if maximum > 255 else "u1").tobytes()
    if channels in (1, 3):
        return b"P%d\n%d %d\n%d\n" % (5 if channels == 1 else 6, width, height, maximum) + samples
    kind = b"GRAYSCALE_ALPHA" if channels == 2 else b"RGB_ALPHA"
    return (b"P7\n# a comment\nWIDTH %d\nHEIGHT %d\nDEPTH %d\nMAXVAL %d\nTUPLTYPE %s\nENDHDR\n"
            % (width, height, channels, maximum, kind)) + samples


def read_pnm(path):
    """Samples of a P5, P6 or P7 file as the tool writes them."""
    data = path.read_bytes()
    if data.startswith(b"P7"):
        header, samples = data.split(b"ENDHDR\n", 1)
        fields = dict(line.split(b" ", 1) for line in header.splitlines()[1:])
        width, height, channels, maximum = (int(fields[k]) for k in (b"WIDTH", b"HEIGHT", b"DEPTH", b"MAXVAL"))
        assert fields[b"TUPLTYPE"] == {1: b"GRAYSCALE", 3: b"RGB", 4: b"RGB_ALPHA"}[channels]
    else:
        magic, size, top, samples = data.split(b"\n", 3)
        width, height = map(int, size.split())
        channels, maximum = {b"P5": 1, b"P6": 3}[magic], int(top)
    array = np.frombuffer(samples, ">u2" if maximum == 65535 else "u1")
    array = array.astype("u2" if maximum == 65535 else "u1").reshape(height, width, channels)
    return array[:, :, 0] if channels == 1 else array


# --- Arithmetic of the formats, in the double precision that they are defined in. -------------------

def luma(rgb):
    r, g, b = (rgb[..., i].astype(np.float64) for i in range(3))
    return ((r * 0.299 + g * 0.587) + b * 0.114).astype(rgb.dtype)


def chroma(rgb):
    r, g, b = (rgb[..., i].astype(np.float64) for i in range(3))
    u = ((r * -0.169 + g * -0.331) + b * 0.5) + 128.0
    v = ((r * 0.5 + g * -0.419) + b * -0.081) + 128.0
    return u.astype(np.uint8), v.astype(np.uint8)


def yuv444(rgb):
    u, v = chroma(rgb)
    return np.stack([u, luma(rgb), v], axis=-1).tobytes()


def yuv422(rgb):
    """An even number of pixels."""
    u, v = (c.reshape(-1, 2).astype(int).sum(axis=1) // 2 for c in chroma(rgb))
    y = luma(rgb).reshape(-1, 2)
    return np.stack([u, y[:, 0], v, y[:, 1]], axis=-1).astype(np.uint8).tobytes()


def yuv411(rgb):
    """A multiple of four pixels."""
    u, v = (c.reshape(-1, 4).astype(int).sum(axis=1) // 4 for c in chroma(rgb))
    y = luma(rgb).reshape(-1, 4)
    return np.stack([u, y[:, 0], y[:, 1], v, y[:, 2], y[:, 3]], axis=-1).astype(np.uint8).tobytes()


def pack12(samples):
    """12-bit samples, an even number: high byte, both low nibbles (the first one low), high byte."""
    pairs = samples.reshape(-1, 2).astype(int)
    low = (pairs[:, 1] & 15) << 4 | (pairs[:, 0] & 15)
    return np.stack([pairs[:, 0] >> 4, low, pairs[:, 1] >> 4], axis=-1).astype(np.uint8).tobytes()


# Row and column of the top-left red sample of each tile.
RED_AT = {"rggb": (0, 0), "grbg": (0, 1), "gbrg": (1, 0), "bggr": (1, 1)}


def mosaic(rgb, tile):
    y, x = RED_AT[tile]
    samples = rgb[:, :, 1].copy()
    samples[y::2, x::2] = rgb[y::2, x::2, 0]
    samples[1 - y::2, 1 - x::2] = rgb[1 - y::2, 1 - x::2, 2]
    return samples
