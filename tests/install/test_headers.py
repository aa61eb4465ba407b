"""The installed headers, as a client's compiler takes them. ctest sets KORVEX2_BUILD, the build tree, and CMAKE, CXX,
CC and CLANG, the programs; CLANG may be empty, LAUNCHER too, which is what the build starts its compilers with."""

import os
import re
import shlex
import subprocess
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

import pytest

ROOT = Path(__file__).parent.parent.parent
BUILD = Path(os.environ["KORVEX2_BUILD"])
COMPILERS = {"the build's": os.environ["CXX"], "clang": os.environ["CLANG"]}
STRICT = ["-Wall", "-Wextra", "-Wpedantic", "-Wconversion", "-Werror"]
# Names that clients have macros of; the first ones stand in the tables that the headers are made from.
CLIENTS_MACROS = ("KERNEL WRAPPER CHAIN DEMOSAIC MEMBER TARGET ROUTINE CELL ROW FORMAT FORMATS PIXEL_FORMAT ALIAS GREY "
                  "RGB YUV RAW TEXT TEXT_OF VERSION EXPORT API").split()


@pytest.fixture(scope="session")
def include():
    """The folder of the installed headers: the engine's, and korvex2/ with the others. It is the same at each run, for
    the cache of compilations."""
    prefix = BUILD / "tests/install/headers"
    subprocess.run([os.environ["CMAKE"], "-E", "rm", "-rf", prefix], check=True)
    for component in ("development", "engine_development"):
        subprocess.run([os.environ["CMAKE"], "--install", BUILD, "--prefix", prefix, "--component", component],
                       check=True, stdout=subprocess.DEVNULL)
    return prefix / "include"


@pytest.fixture(scope="session")
def headers(include):
    return sorted(path.name for path in include.rglob("*.h"))


def folders(include):
    return [f"-I{include}", f"-I{include / 'korvex2'}"]


def preprocess(include, text, *options):
    return subprocess.run([os.environ["CXX"], "-std=c++17", "-E", "-x", "c++", *folders(include), *options, "-"],
                          input=text, capture_output=True, text=True, check=True).stdout


def files_of(include, header):
    """The header and every other of ours that it brings."""
    text = preprocess(include, f"#include <{header}>\n")
    return {Path(name) for name in re.findall(r'^# \d+ "([^"]+)"', text, re.M) if name.startswith(str(include))}


def complaints(compiler, options, include, sources):
    """What the compiler says of each source, in the order in which the sources are given."""
    def compile_one(source):
        done = subprocess.run([*shlex.split(os.environ["LAUNCHER"]), compiler, *options, *STRICT,
                               *folders(include), "-c", source, "-o", source.with_suffix(".o")],
                              capture_output=True, text=True)
        return done.stderr if done.returncode else ""
    with ThreadPoolExecutor(len(os.sched_getaffinity(0))) as pool:
        return "".join(pool.map(compile_one, sources))


def sources_of_each(headers, folder, suffix):
    folder.mkdir(exist_ok=True)
    for header in headers:
        source = folder / f"{Path(header).stem}{suffix}"
        source.write_text(f"#include <{header}>\n#include <{header}>\n")
        yield source


def test_the_headers_are_those_of_the_tree(include):
    installed = {str(path.relative_to(include)) for path in include.rglob("*") if path.is_file()}
    written = {path.name for path in (ROOT / "include").iterdir()} - {"Korvex2Version.h.in", "vorbayer.h"}
    of_korvex2 = written | {"Korvex2Version.h", "ImageConverterARMStub.h", "Singleton.h"}
    assert installed == {"vorbayer.h"} | {f"korvex2/{name}" for name in of_korvex2}


@pytest.mark.parametrize("standard", ["c++17", "gnu++17", "c++20", "c++23"])
@pytest.mark.parametrize("compiler", COMPILERS)
def test_each_compiles_alone(include, headers, compiler, standard):
    if not COMPILERS[compiler]:
        pytest.skip("there is no clang-19")
    if standard.startswith("gnu"):  # what g++ 12 takes unless told otherwise: the one that brings the others is enough
        headers = ["Korvex2.h"]
    folder = include.parent / f"alone-{standard}-{'clang' if compiler == 'clang' else 'build'}"
    assert complaints(COMPILERS[compiler], [f"-std={standard}"], include,
                      list(sources_of_each(headers, folder, ".cpp"))) == ""


@pytest.mark.parametrize("compiler", ["the build's", "clang"])
def test_the_engines_header_compiles_as_c(include, tmp_path, compiler):
    if not COMPILERS[compiler]:
        pytest.skip("there is no clang-19")
    program = os.environ["CC"] if compiler == "the build's" else COMPILERS[compiler]
    assert complaints(program, ["-std=c11", "-x", "c"], include,
                      list(sources_of_each(["vorbayer.h"], tmp_path / "c", ".c"))) == ""


def test_the_umbrella_brings_everything_but_singletons_definitions(include, headers):
    brought = {path.name for path in files_of(include, "Korvex2.h")}
    assert {name for name in brought if name.endswith(".h")} == set(headers) - {"SingletonDefinitions.h"}


def test_boost_comes_with_singletons_definitions_alone(include, headers):
    for header in headers:
        text = preprocess(include, f"#include <{header}>\n")
        assert ("/boost/" in text) == (header == "SingletonDefinitions.h"), header


def test_neither_cmake_nor_pkg_config_ask_a_client_for_boost(include):
    asking = [path for pattern in ("*.cmake", "*.pc") for path in include.parent.rglob(pattern)]
    assert {path.name for path in asking} >= {"Korvex2Config.cmake", "Korvex2Targets.cmake", "korvex2.pc"}
    assert [path.name for path in asking if "boost" in path.read_text().lower()] == []


def macros_after(include, text):
    return set(re.findall(r"^#define (\w+)", preprocess(include, text, "-dM"), re.M))


def test_every_macro_that_a_header_leaves_has_our_prefix(include, headers):
    left = set()
    for header in headers:
        of_others = {line for path in files_of(include, header)
                     for line in re.findall(r"^#include <.*$", path.read_text(), re.M)}
        left |= macros_after(include, f"#include <{header}>\n") - macros_after(include, "\n".join(of_others))
    assert {name for name in left if not name.startswith(("KORVEX2_", "VORBAYER_"))} == set()
    assert {"KORVEX2_VERSION_MAJOR", "KORVEX2_API", "VORBAYER_API"} <= left  # so they were counted


def test_a_clients_own_macros_survive(include, headers):
    mine = "".join(f"#define {name} my_{name}\n" for name in CLIENTS_MACROS)
    after = preprocess(include, mine + "".join(f"#include <{header}>\n" for header in headers), "-dM")
    for name in CLIENTS_MACROS:
        assert f"#define {name} my_{name}\n" in after, name


def test_the_version_is_the_projects(include):
    project = re.search(r"^CMAKE_PROJECT_VERSION:\w+=(\S+)$", (BUILD / "CMakeCache.txt").read_text(), re.M).group(1)
    text = preprocess(include, "#include <Korvex2Version.h>\n"
                               "KORVEX2_VERSION_MAJOR KORVEX2_VERSION_MINOR KORVEX2_VERSION_PATCH\n")
    assert text.splitlines()[-1].split() == project.split(".")
