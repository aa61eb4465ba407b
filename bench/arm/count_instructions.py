#!/usr/bin/env python3
"""Prints a Markdown table: instructions per pixel of conversions on 64-bit Arm, ours and libyuv's.

    count_instructions.py PROGRAM SYSROOT

PROGRAM is conversion_cost, built for aarch64; SYSROOT holds the libraries that it needs. Each
conversion runs once and then 41 times under qemu, whose plugin counts; the difference by 40 is
what a frame costs, start-up and look-ups left out. Counts repeat to within 0.01.
"""

import pathlib
import subprocess
import sys
import tempfile

# Heading, instruction set of ours, processor: vectors of 16, 16, 32 and 64 bytes.
SETS = [("NEON", "NEON", "cortex-a72"),
        ("SVE2, 128 bits", "SVE2_128", "max,sve-default-vector-length=16"),
        ("SVE, 256 bits", "SVE_256", "max,sve-default-vector-length=32"),
        ("SVE2, 512 bits", "SVE2", "max,sve-default-vector-length=64")]

REPEATS = 40


class Counter:
    def __init__(self, program, sysroot, folder):
        self.program, self.sysroot = program, sysroot
        self.plugin, self.count = folder / "count.so", folder / "count"
        source = pathlib.Path(__file__).with_name("count_instructions.c")
        subprocess.run(["cc", "-O2", "-fPIC", "-shared", "-o", self.plugin, source], check=True)

    def rows(self):
        output = subprocess.run(["qemu-aarch64", "-L", self.sysroot, self.program],
                                check=True, capture_output=True, text=True).stdout
        return [line.split("\t") for line in output.splitlines()]

    def instructions(self, whose, row, times, cpu, instruction_set):
        subprocess.run(["qemu-aarch64", "-L", self.sysroot, "-cpu", cpu,
                        "-E", f"KORVEX2_CPU={instruction_set}",
                        "-plugin", f"{self.plugin},out={self.count}",
                        self.program, whose, row, str(times)], check=True)
        return int(self.count.read_text())

    def per_pixel(self, whose, row, pixels, cpu, instruction_set):
        first, all_of_them = (self.instructions(whose, row, times, cpu, instruction_set)
                              for times in (1, 1 + REPEATS))
        return (all_of_them - first) / REPEATS / pixels


def main():
    program, sysroot = sys.argv[1:]
    with tempfile.TemporaryDirectory() as folder:
        counter = Counter(program, sysroot, pathlib.Path(folder))
        headings = ["conversion", *(heading for heading, _, _ in SETS), "libyuv, NEON", "libyuv's calls"]
        print("| " + " | ".join(headings) + " |")
        print("|---|" + "---:|" * (len(SETS) + 1) + "---|")
        for row, pixels, calls in counter.rows():
            ours = [f"{counter.per_pixel('ours', row, int(pixels), cpu, name):.2f}" for _, name, cpu in SETS]
            peer = f"{counter.per_pixel('libyuv', row, int(pixels), 'cortex-a72', 'plain'):.2f}" if calls else ""
            print("| " + " | ".join([row.replace("-", " to "), *ours, peer, calls]) + " |", flush=True)


if __name__ == "__main__":
    main()
