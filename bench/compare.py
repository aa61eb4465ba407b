#!/usr/bin/env python3
"""Names the rows of two benchmark runs that moved.

    compare.py before.json after.json
    compare.py --per-memcpy before.json after.json     multiples of memcpy: on a noisy machine

Of converter_bench's rows the library's own are compared, ours and fresh; of other benchmarks all.
Exit code: 0, 1 when a compared row got slower by more than the threshold, 2 when the files do not
compare.
"""

import argparse
import sys

import results

OWN = ("ours", "fresh")


def contestant(name):
    return name.rpartition("/")[2]


def compared_names(before, after, everyone):
    names = [name for name in before if name in after]
    if everyone or not any(contestant(name) == "ours" for name in names):
        return names
    return [name for name in names if contestant(name) in OWN]


def per_memcpy(times):
    """Each time as a multiple of the memcpy of its contest; rows without one are left out."""
    copies = {name.rpartition("/")[0]: time for name, time in times.items() if contestant(name) == "memcpy"}
    return {name: time / copies[name.rpartition("/")[0]] for name, time in times.items()
            if name.rpartition("/")[0] in copies}


def moved_rows(before, after, names, threshold):
    """(change, name) of the rows that moved by more than the threshold, the worst first."""
    changes = [(after[name] / before[name] - 1, name) for name in names]
    return sorted(((change, name) for change, name in changes if abs(change) > threshold), reverse=True)


def main():
    parser = argparse.ArgumentParser(
        description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("before")
    parser.add_argument("after")
    parser.add_argument("--threshold", type=float, default=10, metavar="PERCENT",
                        help="changes up to this are noise (default: %(default)s)")
    parser.add_argument("--all", action="store_true", help="memcpy, literal and the peers as well")
    parser.add_argument("--per-memcpy", action="store_true",
                        help="compare multiples of memcpy of the same contest instead of times")
    options = parser.parse_args()

    before, after = (results.times(results.read(path)) for path in (options.before, options.after))
    if options.per_memcpy:
        before, after = per_memcpy(before), per_memcpy(after)
    names = compared_names(before, after, options.all)
    if not names:
        print("compare.py: the two files have no row in common that could be compared", file=sys.stderr)
        return 2

    moved = moved_rows(before, after, names, options.threshold / 100)
    for change, name in moved:
        print(f"{'slower' if change > 0 else 'faster'} {change:+7.1%}  {name}")
    slower = sum(change > 0 for change, _ in moved)
    alone = len(before.keys() ^ after.keys())
    print(f"{len(names)} rows compared: {slower} slower, {len(moved) - slower} faster by more than "
          f"{options.threshold:g} %" + (f"; {alone} in one file only" if alone else ""))
    return 1 if slower else 0


if __name__ == "__main__":
    try:
        sys.exit(main())
    except (OSError, ValueError) as failure:
        print(f"compare.py: {failure}", file=sys.stderr)
        sys.exit(2)
