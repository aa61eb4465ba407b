"""Picture files and packed frames, written and read without the library under test.

PIL does 8-bit PNG and most of PNM; the plain functions here do what PIL cannot: colour of 16 bits,
interlacing and PAM.
"""

import os
import struct
import sys
import zlib

import numpy as np

# Of the machine that the tool is built for; an emulator runs it on another.
BYTE_ORDER = os.environ.get("KORVEX2_BYTE_ORDER", sys.byteorder)

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


def in_memory(samples):
    """Words of grey are low byte first, those of colours in the machine's order."""
    big = BYTE_ORDER == "big" and samples.ndim == 3
    return samples.astype(samples.dtype.newbyteorder(">" if big else "<"))


# --- Arithmetic of the formats, in the double precision that they are defined in. -------------------

def luma(rgb):
    r, g, b = (rgb[..., i].astype(np.float64) for i in range(3))
    return ((r * 0.299 + g * 0.587) + b * 0.114).astype(rgb.dtype)


def mono16_of(rgb):
    """Made of words in the machine's order, and left in it; those of any other grey are low byte first."""
    return luma(rgb).byteswap() if BYTE_ORDER == "big" else luma(rgb)


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


# --- TIFF, in the variants that PIL does not write, and DNG, which is one of them. ---------------------

BYTE, ASCII, SHORT, LONG, RATIONAL = 1, 2, 3, 4, 5
FIELD_TYPES = {BYTE: "B", ASCII: "s", SHORT: "H", LONG: "I", RATIONAL: "I"}
MIN_IS_WHITE, MIN_IS_BLACK, TIFF_RGB, CFA, LINEAR_RAW = 0, 1, 2, 32803, 34892


def tiff_blocks(array, tile, rows_per_strip):
    """Strips, or tiles filled up with noise that must not show."""
    height, width = array.shape[:2]
    if tile is None:
        return [array[y:y + rows_per_strip] for y in range(0, height, rows_per_strip)]
    down, across = tile
    padded = np.full((-(-height // down) * down, -(-width // across) * across, array.shape[2]), 0xa5, array.dtype)
    padded[:height, :width] = array
    return [padded[y:y + down, x:x + across] for y in range(0, height, down) for x in range(0, width, across)]


def tiff_field(order, kind, values):
    if kind == ASCII:
        return values + b"\0", len(values) + 1
    packed = struct.pack(order + str(len(values)) + FIELD_TYPES[kind], *values)
    return packed, len(values) // (2 if kind == RATIONAL else 1)


def tiff_bytes(array, photometric=None, order="<", tile=None, rows_per_strip=5, planar=False, extra=(),
               compression=1, blocks=None):
    """`extra` are (tag, type, values) on top; `blocks` are strips or tiles that were compressed elsewhere."""
    array = with_channels(array)
    height, width, channels = array.shape
    parts = [array[:, :, i:i + 1] for i in range(channels)] if planar else [array]
    if blocks is None:
        blocks = [block.astype(block.dtype.newbyteorder(order)).tobytes()
                  for part in parts for block in tiff_blocks(part, tile, rows_per_strip)]
    offsets = [8 + sum(map(len, blocks[:i])) for i in range(len(blocks))]
    sizes = [len(block) for block in blocks]
    if photometric is None:
        photometric = MIN_IS_BLACK if channels < 3 else TIFF_RGB
    fields = [(256, LONG, [width]), (257, LONG, [height]), (258, SHORT, [array.itemsize * 8] * channels),
              (259, SHORT, [compression]), (262, SHORT, [photometric]), (277, SHORT, [channels]),
              (284, SHORT, [2 if planar else 1]), *extra]
    if channels in (2, 4):
        fields.append((338, SHORT, [2]))
    if tile is None:
        fields += [(273, LONG, offsets), (278, SHORT, [rows_per_strip]), (279, LONG, sizes)]
    else:
        fields += [(322, LONG, [tile[1]]), (323, LONG, [tile[0]]), (324, LONG, offsets), (325, LONG, sizes)]
    data = b"".join(blocks)
    data += bytes(len(data) % 2)
    directory, tail = struct.pack(order + "H", len(fields)), b""
    end = 8 + len(data) + 2 + 12 * len(fields) + 4
    for tag, kind, values in sorted(fields):
        packed, count = tiff_field(order, kind, values)
        if len(packed) > 4:
            tail += bytes(len(tail) % 2)
            packed, tail = struct.pack(order + "I", end + len(tail)), tail + packed
        directory += struct.pack(order + "HHI", tag, kind, count) + packed.ljust(4, b"\0")
    mark = b"II" if order == "<" else b"MM"
    return (mark + struct.pack(order + "HI", 42, 8 + len(data)) + data + directory + struct.pack(order + "I", 0)
            + tail)


def dng_bytes(samples, pattern, area=None, repeat=(2, 2), order="<", photometric=CFA, fields=(), **options):
    """A mosaic of 16 bits; `pattern` has the filters of the active area, 0 1 2 for red green blue."""
    height, width = samples.shape[:2]
    extra = [(271, ASCII, b"Nobody"), (272, ASCII, b"Nothing"), (50706, BYTE, [1, 4, 0, 0]),
             (50708, ASCII, b"Nobody Nothing"), (50829, LONG, area or [0, 0, height, width]),
             (50714, LONG, [100]), (50717, LONG, [16383]), *fields]
    if photometric == CFA:
        extra += [(33421, SHORT, repeat), (33422, BYTE, pattern)]
    return tiff_bytes(samples, photometric, order, **{"rows_per_strip": height, "extra": extra, **options})


# --- Lossless JPEG, which is how DNG compresses. -------------------------------------------------------

def jpeg_segment(marker, data):
    return struct.pack(">BBH", 0xff, marker, len(data) + 2) + data


def lossless_jpeg(samples, claim=None, end=b"\xff\xd9", components=1, gap=b""):
    """Of 16 bits, each sample the difference from its neighbour on the left, codes of 5 bits. Neighbours in a row
    are `components`. `claim` is the height and width that the frame says instead of its own, `gap` follows it."""
    pixels = samples.reshape(len(samples), -1, components).astype(int)
    left = np.concatenate([pixels[:, :1], pixels[:, :-1]], axis=1)
    left[1:, 0] = pixels[:-1, 0]
    left[0, 0] = 1 << 15
    bits = []
    for difference in (pixels - left).ravel().tolist():
        length = abs(difference).bit_length()
        bits.append(f"{length:05b}")
        if 0 < length < 16:
            bits.append(f"{difference if difference > 0 else difference + (1 << length) - 1:0{length}b}")
    text = "".join(bits)
    text += "1" * (-len(text) % 8)
    entropy = int(text, 2).to_bytes(len(text) // 8, "big").replace(b"\xff", b"\xff\0")
    return (b"\xff\xd8" + jpeg_segment(0xc4, bytes([0] + [0] * 4 + [17] + [0] * 11) + bytes(range(17)))
            + jpeg_segment(0xc3, struct.pack(">BHHB", 16, *(claim or pixels.shape[:2]), components)
                           + b"".join(bytes([i + 1, 0x11, 0]) for i in range(components))) + gap
            + jpeg_segment(0xda, bytes([components]) + b"".join(bytes([i + 1, 0]) for i in range(components))
                           + b"\1\0\0") + entropy + end)
