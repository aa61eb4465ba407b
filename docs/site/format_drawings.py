"""Drawings of the formats' bytes, made from the table that `korvex2 formats --json` prints."""

import re
from dataclasses import dataclass
from xml.sax.saxutils import escape

BYTE, HEIGHT, LEFT, TOP = 96, 46, 20, 40
FILL = {"R": "#f4b6b0", "G": "#b9e0b4", "B": "#b3cdf2", "Y": "#e3e3e3", "U": "#d5c3ec", "V": "#f3cfa3", "A": "#ffffff"}
INK, FAINT = "#222222", "#777777"


@dataclass
class Field:
    """Some bits of one byte."""
    channel: str
    pixel: int  # the first that it belongs to
    bits: str  # which of the sample's bits, "" for all 8
    width: int  # in bits


def parse(layout):
    """The bytes of one group, each a list of fields with the highest bits first. "Y0[11:4] Y1[3:0]Y0[3:0] Y1[11:4]"
    are three bytes, "B(16)" two."""
    result = []
    for word in layout.removesuffix(", mosaic").replace("mosaic", "P").split(" "):
        fields = re.findall(r"([A-Z])(\d?)(?:\[(\d+):(\d+)\])?(\(16\))?", word)
        assert fields, f"a layout that cannot be drawn: {layout}"
        channel, pixel, _, _, deep = fields[0]
        if deep:
            result += [[Field(channel, 0, "7…0", 8)], [Field(channel, 0, "15…8", 8)]]
            continue
        result.append([
            Field(channel, int(pixel or 0), f"{high}…{low}" if high else "", int(high) - int(low) + 1 if high else 8)
            for channel, pixel, high, low, _ in fields])
    return result


def groups_shown(row):
    """So many that there are about six bytes."""
    return max(1, 6 // row["bytesPerGroup"]) if row["bytesPerGroup"] != 4 else 2


class Svg:
    def __init__(self, width, height, title):
        self.size, self.title, self.parts = (width, height), title, []

    def box(self, x, y, width, height, fill, stroke=INK):
        self.parts.append(f'<rect x="{x}" y="{y}" width="{width}" height="{height}" fill="{fill}" stroke="{stroke}"/>')

    def line(self, x1, y1, x2, y2, stroke=INK, width=1):
        self.parts.append(f'<path d="M{x1} {y1}L{x2} {y2}" stroke="{stroke}" stroke-width="{width}"/>')

    def text(self, x, y, text, size=14, fill=INK, anchor="middle", sub=""):
        small = f'<tspan font-size="{size * .7:.0f}" dy="{size * .25:.0f}">{escape(sub)}</tspan>' if sub else ""
        self.parts.append(f'<text x="{x}" y="{y}" font-size="{size}" fill="{fill}" text-anchor="{anchor}">'
                          f'{escape(text)}{small}</text>')

    def __str__(self):
        width, height = self.size
        body = "\n".join(self.parts)
        return (f'<svg xmlns="http://www.w3.org/2000/svg" width="{width}" height="{height}" '
                f'viewBox="0 0 {width} {height}" font-family="DejaVu Sans, Verdana, sans-serif" role="img">\n'
                f'<title>{escape(self.title)}</title>\n<rect width="{width}" height="{height}" fill="#ffffff"/>\n'
                f'{body}\n</svg>\n')


def shown_bytes(row):
    """The bytes of the drawn groups; pixels counted through."""
    result = []
    for group in range(groups_shown(row)):
        for fields in parse(row["layout"]):
            result.append([Field(f.channel, f.pixel + group * row["pixelsPerGroup"], f.bits, f.width) for f in fields])
    return result


def colour_of(field):
    """A mosaic's sample has the colour of its place: the first row of an rggb one."""
    return "RG"[field.pixel % 2] if field.channel == "P" else field.channel


def belongs(field, pixel, row):
    """Chroma belongs to all pixels of its group."""
    size = row["pixelsPerGroup"]
    return field.pixel == pixel or (field.channel in "UV" and field.pixel // size == pixel // size)


def draw_format(row):
    data = shown_bytes(row)
    pixels = min(4, groups_shown(row) * row["pixelsPerGroup"])
    bars_top = TOP + HEIGHT + 16
    svg = Svg(2 * LEFT + 70 + BYTE * len(data), bars_top + 18 * pixels + 12, f"The bytes of {row['name']}")
    origin = LEFT + 70
    for index, fields in enumerate(data):
        x = origin + index * BYTE
        svg.text(x + BYTE / 2, 16, f"byte {index}", 12, FAINT)
        svg.text(x + 8, TOP - 6, "7", 10, FAINT)
        svg.text(x + BYTE - 8, TOP - 6, "0", 10, FAINT)
        for field in fields:
            width = BYTE * field.width // 8
            svg.box(x, TOP, width, HEIGHT, FILL[colour_of(field)])
            number = str(field.pixel) if row["pixelsPerGroup"] > 1 or groups_shown(row) > 1 else ""
            shared = field.channel in "UV" and row["pixelsPerGroup"] > 1
            last = field.pixel - field.pixel % row["pixelsPerGroup"] + row["pixelsPerGroup"] - 1
            sub = f"{field.pixel - field.pixel % row['pixelsPerGroup']}…{last}" if shared else number
            svg.text(x + width / 2, TOP + (20 if field.bits else 28), colour_of(field), 16, sub=sub)
            if field.bits:
                svg.text(x + width / 2, TOP + HEIGHT - 7, field.bits, 10, FAINT)
            x += width
        for bit in range(1, 8):
            tick = origin + index * BYTE + bit * BYTE // 8
            svg.line(tick, TOP, tick, TOP + 4, FAINT)
    for pixel in range(pixels):
        y = bars_top + 18 * pixel
        svg.text(origin - 10, y + 9, f"pixel {pixel}", 11, FAINT, "end")
        for index, fields in enumerate(data):
            x = origin + index * BYTE
            for field in fields:
                width = BYTE * field.width // 8
                if belongs(field, pixel, row):
                    svg.box(x + 3, y, width - 6, 10, FILL[colour_of(field)], FAINT)
                x += width
    return str(svg)


def draw_tiles():
    """The four tiles, on the top-left corner of a mosaic each."""
    side, gap, cells = 34, 46, 4
    svg = Svg(2 * LEFT + 4 * cells * side + 3 * gap, 44 + cells * side + 16, "The four Bayer tiles")
    for index, tile in enumerate(("RGGB", "GRBG", "GBRG", "BGGR")):
        x0 = LEFT + index * (cells * side + gap)
        svg.text(x0 + cells * side / 2, 24, tile.lower(), 16)
        for y in range(cells):
            for x in range(cells):
                colour = tile[y % 2 * 2 + x % 2]
                svg.box(x0 + x * side, 38 + y * side, side, side, FILL[colour], "#999999")
                svg.text(x0 + x * side + side / 2, 38 + y * side + side / 2 + 5, colour, 14)
        svg.parts.append(f'<rect x="{x0}" y="38" width="{2 * side}" height="{2 * side}" fill="none" stroke="{INK}" '
                         'stroke-width="3"/>')
    return str(svg)


def drawings(formats):
    """File name: drawing, of every format that converts."""
    result = {f"format-{row['name']}.svg": draw_format(row) for row in formats if row["convertible"]}
    result["tiles.svg"] = draw_tiles()
    return result
