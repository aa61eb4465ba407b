"""What the shared libraries show to the programs that link them."""

import os
import re
import subprocess
from pathlib import Path

import pytest

KORVEX2, VORBAYER = (Path(os.environ[name]) for name in ("KORVEX2_LIBRARY", "VORBAYER_LIBRARY"))
MAPS = {"korvex2": KORVEX2.parent / "korvex2.map", "vorbayer": VORBAYER.parent / "vorbayer.map"}
MAJOR = KORVEX2.resolve().name.split(".so.")[1].split(".")[0]
RELEASE = KORVEX2.resolve().name.split(".so.")[1]

# Namespaces of ours that no header for clients declares anything of.
INTERNAL = "Simd|Bayer|kernels|Kernels|Plain"
API = {
    KORVEX2: {f"KORVEX2_{MAJOR}": rf"((vtable|VTT|typeinfo|typeinfo name) for )?Korvex2::(?!({INTERNAL})::).*"},
    VORBAYER: {f"VORBAYER_{MAJOR}": "bayerToColor", f"VORBAYER_PRIVATE_{RELEASE}": "Korvex2::Simd::.*"},
}


def symbols(library, *options):
    """(kind, name, version) of each symbol that the library defines for others, names of C++ in full."""
    listing = subprocess.run([os.environ["NM"], "--dynamic", "--demangle", *options, library], check=True,
                             capture_output=True, text=True).stdout
    found = [re.fullmatch(r"\s*[0-9a-f]* (\w) (.*?)(?:@@?([\w.]+))?", line) for line in listing.splitlines()]
    return [match.groups() for match in found if match.group(1) != "A"]  # A: the versions themselves


def strangers(library, api):
    """The exported symbols that are no part of the API, and those that keep a library from being unloaded."""
    return [(kind, name, version) for kind, name, version in symbols(library, "--defined-only")
            if kind == "u" or not re.fullmatch(api.get(version, "(?!)"), name)]


@pytest.mark.parametrize("library", API, ids=lambda path: path.name)
def test_only_the_api_is_exported(library):
    assert symbols(library, "--defined-only")
    assert strangers(library, API[library]) == []


def test_the_engine_has_one_function():
    public = [name for _, name, version in symbols(VORBAYER, "--defined-only") if version == f"VORBAYER_{MAJOR}"]
    assert public == ["bayerToColor"]


@pytest.mark.parametrize("name", ["Image", "ImageConverter", "Singleton<Korvex2::ImageConverter>"])
def test_clients_can_derive_and_ask_for_the_type(name):
    exported = {symbol for _, symbol, _ in symbols(KORVEX2, "--defined-only")}
    assert {f"vtable for Korvex2::{name}", f"typeinfo for Korvex2::{name}"} <= exported


def test_the_choice_of_instructions_is_one_for_both_libraries():
    taken = {name: version for _, name, version in symbols(KORVEX2, "--undefined-only")}
    assert taken["Korvex2::Simd::ActiveInstructionSet()"] == f"VORBAYER_PRIVATE_{RELEASE}"
    everything = subprocess.run([os.environ["NM"], "--demangle", "--defined-only", KORVEX2], check=True,
                                capture_output=True, text=True).stdout
    assert "Korvex2::" in everything and "Korvex2::Simd::ActiveInstructionSet" not in everything


def test_the_engine_is_called_through_its_symbol():
    """So that a program's own bayerToColor takes its place."""
    assert ("U", "bayerToColor", f"VORBAYER_{MAJOR}") in symbols(KORVEX2, "--undefined-only")


# A library with a function of the API, one outside of it, and a template of the C++ library.
SOURCE = """
#include <vector>
namespace Korvex2 {
__attribute__((visibility("default"))) int Version() { return 2; }
template <typename T> struct __attribute__((visibility("default"))) Shared { static T value; };
template <typename T> T Shared<T>::value = 0;
template struct Shared<int>;
}
__attribute__((visibility("default"))) int korvex2Helper(std::vector<int>& v) { v.resize(100); return v.at(7); }
template class __attribute__((visibility("default"))) std::vector<long>;
"""


def build(folder, *options):
    (folder / "library.cpp").write_text(SOURCE)
    library = folder / "library.so"
    subprocess.run([os.environ["CXX"], "-std=c++20", "-shared", "-fPIC", "-fvisibility=hidden", "library.cpp", "-o",
                    library, *options], cwd=folder, check=True)
    return library


def test_a_library_without_version_script_is_refused(tmp_path):
    found = {name.partition("(")[0] for _, name, _ in strangers(build(tmp_path), API[KORVEX2])}
    assert {"korvex2Helper", "Korvex2::Version"} <= found and any(name.startswith("std::vector") for name in found)


def test_the_version_script_keeps_strangers_in(tmp_path):
    library = build(tmp_path, f"-Wl,--version-script={MAPS['korvex2']}")
    assert "Korvex2::Version()" in {name for _, name, _ in symbols(library, "--defined-only")}
    assert [name for kind, name, _ in strangers(library, API[KORVEX2]) if kind != "u"] == []
