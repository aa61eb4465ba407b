"""What the project's own build says: its version, its options, the packages that it asks for."""

import os
import re
import subprocess
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
PACKAGING = ROOT / "packaging"
BUILD = Path(os.environ["KORVEX2_BUILD_DIR"])
CMAKE = os.environ.get("CMAKE", "cmake")

# What each part of the build asks for, and what vcpkg and Conan call it.
PARTS = {"library": ["src"], "simd": ["."], "tools": ["io", "tools/korvex2"], "python": ["python"]}
PORTS = {"Boost": "boost-thread", "hwy": "highway", "CLI11": "cli11", "fmt": "fmt", "PNG": "libpng", "TIFF": "tiff",
         "TBB": "tbb", "raw_r": "libraw"}
RECIPES = {**PORTS, "Boost": "boost", "TIFF": "libtiff", "TBB": "onetbb", "pybind11": "pybind11"}
FROM_THE_SYSTEM = {"Python3"}


def lists(folder):
    return (ROOT / folder / "CMakeLists.txt").read_text()


def version():
    return re.search(r"project\(Korvex2\s+VERSION (\S+)", lists(".")).group(1)


def needs(part):
    """The names that the part's CMakeLists.txt hand to find_package and find_library."""
    text = "".join(lists(folder) for folder in PARTS[part])
    found = re.findall(r"\bfind_package\((\w+)", text) + re.findall(r"\bfind_library\(\w+ NAMES (\w+)", text)
    return set(found) - FROM_THE_SYSTEM


def options():
    """Every option that the build declares, with its default."""
    text = "".join(path.read_text() for path in
                   [ROOT / "CMakeLists.txt", *ROOT.glob("cmake/*.cmake"), *ROOT.glob("*/CMakeLists.txt")])
    return set(re.findall(r"\boption\((\w+)", text)) | set(re.findall(r"\bset\((\w+)[^()]* CACHE ", text))


def configure(source, build, variables):
    """Runs CMake for real; returns all that it said. A variable that nobody reads is an error."""
    done = subprocess.run(
        [CMAKE, "-S", source, "-B", build, "-DCMAKE_BUILD_TYPE=Release",
         *(f"-D{name}={value}" for name, value in variables.items())],
        stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, timeout=200)
    assert done.returncode == 0, done.stdout
    assert "Manually-specified variables were not used" not in done.stdout, done.stdout
    return done.stdout


def cache(build):
    """The entries of a build's cache."""
    lines = (Path(build) / "CMakeCache.txt").read_text().splitlines()
    entries = (re.match(r"([\w.]+):\w+=(.*)", line) for line in lines)
    return dict(entry.groups() for entry in entries if entry)
