"""Small documents such as Google Benchmark writes, and the scripts that read them."""

import json
import subprocess
import sys
from pathlib import Path

SCRIPTS = Path(__file__).resolve().parents[2] / "bench"

CONTEXT = {"date": "2031-02-03T04:05:06+00:00", "num_cpus": 8, "cpu": "Test Processor 9000", "system": "Linux 6",
           "korvex2": "2.0.0", "compiler": "GNU 12.2.0", "instruction_set": "AVX3", "libyuv": "1857",
           "opencv": "4.6.0"}


def row(name, ns_per_px, least=None, **more):
    return {"name": name, "run_name": name, "run_type": "iteration", "real_time": ns_per_px * 1000.0,
            "time_unit": "us", "ns_per_px": ns_per_px, "least_ns_per_px": ns_per_px if least is None else least,
            "bytes_in": 3.0, "bytes_out": 3.0, **more}


def document(rows):
    return {"context": CONTEXT, "benchmarks": rows}


def contest(name, **times):
    """Rows of one contest; others than ours, memcpy, literal and fresh are peers."""
    own = ("ours", "memcpy", "literal", "fresh")
    return [row(f"{name}/{who}", time, **({} if who in own else {"deviation": 2.0, "label": "Call"}))
            for who, time in times.items()]


def write(folder, name, rows):
    path = folder / name
    path.write_text(json.dumps(document(rows)))
    return path


def run(script, *arguments):
    return subprocess.run([sys.executable, "-B", SCRIPTS / script, *map(str, arguments)],
                          capture_output=True, text=True, timeout=60)
