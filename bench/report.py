#!/usr/bin/env python3
"""Makes docs/performance.md and docs/performance.svg from a run of converter_bench.

    ./run bench && bench/report.py
"""

import argparse
import statistics
import sys
from pathlib import Path
from xml.sax.saxutils import escape

import results

ROOT = Path(__file__).resolve().parent.parent

HOT = ("1920x1080", "hot")
PEERS = {"opencv": "OpenCV", "libyuv": "libyuv", "swscale": "libswscale", "zimg": "zimg"}

# Conversions that cameras and their users ask for most, and that other libraries have too.
COMMON_PAIRS = [
    "yuv422_to_rgb8", "yuv422_to_bgru", "rgb8_to_yuv422", "yuv411_to_rgb8", "yuv444_to_rgb8",
    "rgb8_to_bgr", "rgb8_to_bgru", "bgru_to_bgr", "rgb8_to_mono8", "bgru_to_mono8",
    "mono8_to_rgb8", "mono8_to_bgru", "rgb16_to_rgb8", "rgb8_to_rgb16", "mono16_to_mono8",
    "mono8_to_mono16", "rgb16_to_mono16", "mono12_to_mono16", "mono12_to_mono8",
]

# (size, cache): the most that a conversion may take, in multiples of memcpy, where it moves bytes
# and where it computes colour.
BARS = {
    ("1920x1080", "hot"): (2.5, 4),
    ("1920x1080", "cold"): (1.5, 2),
    ("3840x2160", "hot"): (1.5, 2),
    ("3840x2160", "cold"): (1.5, 2),
    ("12000x12500", "hot"): (1.5, 2),
}

LARGEST_OVERHEAD_US = 1
LARGEST_SCALING = 1.3


# --- What the rows mean ----------------------------------------------------------------------------

def family(name):
    for prefix, kind in (("mono", "grey"), ("rgb", "colour"), ("bgr", "colour"), ("yuv", "yuv"), ("raw", "raw")):
        if name.startswith(prefix):
            return kind
    raise ValueError(f"{name} is no pixel format")


def kind_of(pair):
    source, target = (family(name) for name in pair.split("_to_"))
    if source == "raw" and target != "raw":
        return "demosaicing"
    moves = source == target != "yuv" or (source, target) == ("grey", "colour")
    return "moves" if moves else "arithmetic"


def arrow(pair):
    return pair.replace("_to_", " → ")


def where(size, cache):
    return f"{size.replace('x', ' × ')}, {cache}"


class Report:
    """The figures of a run, by one statistic: "median" or "least"."""

    def __init__(self, run, statistic="median"):
        self.run = run
        self.statistic = statistic
        self.pairs = list(dict.fromkeys(pair for pair, _, _ in run.contests))

    def time(self, pair, size, cache, contestant="ours"):
        row = self.run.row(pair, size, cache, contestant)
        return None if row is None else getattr(row, self.statistic)

    def times_memcpy(self, pair, size, cache):
        return ratio(self.time(pair, size, cache), self.time(pair, size, cache, "memcpy"))

    def best_peer(self, pair, size, cache):
        """(time, contestant) of the fastest other library, or None."""
        contest = self.run.contests.get((pair, size, cache), {})
        return min(((getattr(row, self.statistic), name) for name, row in contest.items() if name in PEERS),
                   default=None)

    def misses(self):
        """(pair, {(size, cache): multiple of memcpy}) for pairs above a bar somewhere."""
        for pair in self.pairs:
            kind = kind_of(pair)
            if kind == "demosaicing":
                continue
            above = {}
            for place, bars in BARS.items():
                multiple = self.times_memcpy(pair, *place)
                if multiple is not None and multiple > bars[kind == "arithmetic"]:
                    above[place] = multiple
            if above:
                yield pair, above

    def overhead_us(self, pair):
        """Microseconds of a call beside its pixels: a line through 32 x 32 and 64 x 64, at 0."""
        small = self.time(pair, "32x32", "hot")
        large = self.time(pair, "64x64", "hot")
        if small is None or large is None:
            return None
        return (4 * small * 32 * 32 - large * 64 * 64) / 3 / 1000


def ratio(a, b):
    return None if a is None or b is None else a / b


# --- Markdown --------------------------------------------------------------------------------------

def ns(value):
    return "–" if value is None else f"{value:.3f}"


def multiple(value):
    return "–" if value is None else f"{value:.1f} ×" if value >= 10 else f"{value:.2f} ×"


def timed(report, pair, place):
    """A time with its multiple of memcpy."""
    time = report.time(pair, *place)
    return "–" if time is None else f"{ns(time)} ({multiple(report.times_memcpy(pair, *place))})"


def table(head, rows, texts=1):
    """The first `texts` columns hold words, the others figures."""
    lines = [head, ["---"] * texts + ["---:"] * (len(head) - texts)] + rows
    return "\n".join("| " + " | ".join(line) + " |" for line in lines) + "\n"


def machine(context):
    libraries = ", ".join(f"{name} {context[key]}" for key, name in PEERS.items() if key in context)
    return (f"- Machine: {context.get('cpu', 'unknown')}, {context['num_cpus']} logical processors; "
            f"{context.get('system', 'unknown system')}\n"
            f"- Korvex2 {context.get('korvex2', '?')}, {context.get('compiler', 'unknown compiler')}, "
            f"instruction set {context.get('instruction_set', '?')}\n"
            f"- Beside it: {libraries or 'no other library'}\n"
            f"- Measured {context['date'][:10]}\n")


def common_table(report, size, cache):
    rows = []
    for pair in COMMON_PAIRS:
        ours = report.time(pair, size, cache)
        if ours is None:
            continue
        peer = report.best_peer(pair, size, cache)
        plain = report.time(pair, size, cache, "literal")
        found = report.run.row(pair, size, cache, peer[1]) if peer else None
        rows.append([arrow(pair), ns(ours), ns(report.time(pair, size, cache, "memcpy")),
                     multiple(report.times_memcpy(pair, size, cache)),
                     f"{PEERS[peer[1]]} {ns(peer[0])}" if peer else "none",
                     multiple(ratio(peer[0], ours) if peer else None),
                     str(found.deviation) if found and found.deviation is not None else "–",
                     multiple(ratio(plain, ours))])
    return table(["conversion", "ours, ns/px", "memcpy, ns/px", "ours / memcpy", "best other, ns/px", "other / ours",
                  "its largest deviation", "plain loops / ours"], rows)


def misses_section(report):
    misses = list(report.misses())
    if not misses:
        return "Every pair stays below these bars.\n"
    rows = [[arrow(pair), kind_of(pair)] + [multiple(above.get(place)) for place in BARS] for pair, above in misses]
    return (f"{len(misses)} pairs lie above a bar, where a figure stands:\n\n"
            + table(["conversion", "kind"] + [where(*place) for place in BARS], rows, texts=2))


def small_section(report):
    overheads = sorted(((report.overhead_us(pair), pair) for pair in report.pairs
                        if report.overhead_us(pair) is not None and kind_of(pair) != "demosaicing"), reverse=True)
    if not overheads:
        return "Not measured in this run.\n"
    above = sum(value > LARGEST_OVERHEAD_US for value, _ in overheads)
    median = statistics.median(value for value, _ in overheads)
    rows = [[arrow(pair), f"{value:.2f}", ns(report.time(pair, "64x64", "hot"))] for value, pair in overheads[:8]]
    return (f"The median over {len(overheads)} pairs is {median:.2f} µs; {above or 'none'} of them "
            f"above {LARGEST_OVERHEAD_US} µs. The longest:\n\n"
            + table(["conversion", "a call beside its pixels, µs", "64 × 64, ns/px"], rows))


def large_section(report):
    rows = []
    worst = 0
    for pair in report.pairs:
        large = report.time(pair, "12000x12500", "hot")
        cold = report.time(pair, "3840x2160", "cold")
        if large is None or cold is None:
            continue
        copies = [report.time(pair, *place, "memcpy") for place in (("12000x12500", "hot"), ("3840x2160", "cold"))]
        worst = max(worst, large / cold)
        rows.append([arrow(pair), ns(report.time(pair, "3840x2160", "hot")), ns(cold), ns(large),
                     multiple(large / cold), multiple(ratio(*copies))])
    if not rows:
        return "Not measured in this run.\n"
    return (f"From 8 megapixels in cold buffers to 150 megapixels the time of a pixel grows by {multiple(worst)} at "
            f"most (the bar: {multiple(LARGEST_SCALING)}).\n\n"
            + table(["conversion", "8 Mpx hot, ns/px", "8 Mpx cold, ns/px", "150 Mpx, ns/px", "150 / 8 cold",
                     "memcpy: 150 / 8 cold"], rows))


def full_table(report, kind):
    places = [("640x480", "hot"), *list(BARS)[:4]]
    rows = []
    for pair in report.pairs:
        if kind_of(pair) != kind:
            continue
        ours = report.time(pair, *HOT)
        peer = report.best_peer(pair, *HOT)
        rows.append([arrow(pair)] + [timed(report, pair, place) for place in places] + [
            multiple(ratio(report.time(pair, *HOT, "fresh"), ours)),
            multiple(ratio(report.time(pair, *HOT, "literal"), ours)),
            f"{PEERS[peer[1]]} {multiple(ratio(peer[0], ours))}" if peer and ours else "none"])
    return table(["conversion"] + [where(*place) for place in places] + ["fresh", "plain loops", "best other"], rows)


def markdown(report, chart):
    moves, arithmetic = BARS[HOT]
    far_moves, far_arithmetic = BARS[("3840x2160", "cold")]
    return f"""# Performance

<!-- Made by bench/report.py from out/bench/converter.json; do not edit. -->

{machine(report.run.context)}
![Time per pixel of common conversions]({chart})

One thread. Figures are nanoseconds of processor time per pixel, the {report.statistic} of several rounds in which
everyone takes turns; before, our bytes are compared with those of the plain loops.

- **memcpy** is one call that moves half of input plus output, so that it reads and writes as many bytes in
  all as the conversion does.
- **hot**: the same two buffers every time, which the processor's caches may hold. **cold**: each call takes the
  next pair of buffers out of 768 MiB. On a virtual machine the last-level cache is shared with others.
- **fresh**: into a new `Image` each time, which has to be allotted and touched, as a multiple of the time
  into a reused one.
- **plain loops**: the literal way, one plain loop after the other over the whole frame, as a multiple of ours.
- **others**: the nearest thing that the library does, in as many calls as it takes, rows in strips where it takes
  several. Its largest deviation is that of a sample (of 255, or of 65535) from ours.

`./run bench && bench/report.py` makes this page for another machine; `korvex2 bench` is the short form, and
`bench/compare.py before.json after.json` names the rows that moved.

## Common conversions

{where(*HOT)}:

{common_table(report, *HOT)}
3840 × 2160, cold:

{common_table(report, "3840x2160", "cold")}
## Beside memcpy

The bars: where bytes only move, {moves:g} times memcpy at 1920 × 1080 in hot buffers and {far_moves:g} times in larger
or cold ones; where colour is computed, {arithmetic:g} and {far_arithmetic:g} times. Demosaicing has no bar.

{misses_section(report)}
## Small and large frames

What a call costs beside its pixels:

{small_section(report)}
{large_section(report)}
## All pairs

Times of ours in ns/px, in brackets as multiples of memcpy; the last three columns at 1920 × 1080, hot, as multiples of
ours.

### Bytes only move

{full_table(report, "moves")}
### Colour is computed

{full_table(report, "arithmetic")}
### Mosaics are demosaiced

By nearest neighbour; [demosaicing.md](demosaicing.md) compares the methods.

{full_table(report, "demosaicing")}"""


# --- The chart -------------------------------------------------------------------------------------

LEFT, WIDTH, BAR, GAP, TOP = 150, 720, 11, 10, 64
COLOURS = {"memcpy": "#b5b5b5", "ours": "#2463a8", "other": "#d9822b"}


def bar(y, length, colour, text):
    return (f'<rect x="{LEFT}" y="{y}" width="{length:.1f}" height="{BAR - 2}" fill="{colour}"/>'
            f'<text x="{LEFT + length + 5:.1f}" y="{y + BAR - 3}">{escape(text)}</text>')


def chart_rows(report):
    """(pair, [(colour, ns per pixel, text)]) for the common conversions."""
    for pair in COMMON_PAIRS:
        ours = report.time(pair, *HOT)
        if ours is None:
            continue
        copy = report.time(pair, *HOT, "memcpy")
        peer = report.best_peer(pair, *HOT)
        bars = [] if copy is None else [(COLOURS["memcpy"], copy, ns(copy))]
        bars.append((COLOURS["ours"], ours, ns(ours)))
        if peer:
            bars.append((COLOURS["other"], peer[0], f"{ns(peer[0])} {PEERS[peer[1]]}"))
        yield pair, bars


def svg(report):
    rows = list(chart_rows(report))
    longest = max((value for _, bars in rows for _, value, _ in bars), default=1)
    scale = (WIDTH - LEFT - 130) / longest
    y = TOP
    body = []
    for pair, bars in rows:
        body.append(f'<text x="{LEFT - 8}" y="{y + 3 * BAR / 2 + 3}" text-anchor="end">{escape(arrow(pair))}</text>')
        for i, (colour, value, text) in enumerate(bars):
            body.append(bar(y + i * BAR, value * scale, colour, text))
        y += 3 * BAR + GAP
    legend = "".join(
        f'<rect x="{LEFT + 130 * i}" y="36" width="10" height="10" fill="{COLOURS[key]}"/>'
        f'<text x="{LEFT + 130 * i + 15}" y="45">{text}</text>'
        for i, (key, text) in enumerate([("memcpy", "memcpy"), ("ours", "Korvex2"), ("other", "fastest other")]))
    return (f'<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 {WIDTH} {y}" font-family="sans-serif" '
            f'font-size="11" fill="#333">\n<rect width="{WIDTH}" height="{y}" fill="#fff"/>\n'
            f'<text x="{LEFT}" y="22" font-size="14">Nanoseconds per pixel, one thread, '
            f'{escape(where(*HOT))}; less is better</text>\n{legend}\n' + "\n".join(body) + "\n</svg>\n")


# --- The command line ------------------------------------------------------------------------------

def main():
    parser = argparse.ArgumentParser(
        description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("json", nargs="?", type=Path, default=ROOT / "out/bench/converter.json",
                        help="what converter_bench wrote (default: out/bench/converter.json)")
    parser.add_argument("--out", type=Path, default=ROOT / "docs", metavar="FOLDER",
                        help="where performance.md and performance.svg go (default: docs)")
    parser.add_argument("--statistic", choices=["median", "least"], default="median",
                        help="of the rounds (default: %(default)s)")
    options = parser.parse_args()

    report = Report(results.converter_results(results.read(options.json)), options.statistic)
    if not report.pairs:
        raise ValueError(f"{options.json} has no rows of converter_bench")
    (options.out / "performance.md").write_text(markdown(report, "performance.svg"), encoding="utf-8")
    (options.out / "performance.svg").write_text(svg(report), encoding="utf-8")


if __name__ == "__main__":
    try:
        main()
    except (OSError, ValueError) as failure:
        sys.exit(f"report.py: {failure}")
