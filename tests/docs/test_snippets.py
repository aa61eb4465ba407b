"""What the pages show is what happens: their blocks of sh, python and cpp run, in the order of the page and in one
folder. A block of text right below one of sh is what it prints, where a line with … stands for any lines and an …
inside a line for any words. Blocks of c++ and cmake are quotations of examples. Those of console are not run, nor those
without a language, but for sessions of Python."""

import doctest
import os
import re
import subprocess
import sys
import textwrap

import pytest
from conftest import ROOT
from pages import blocks, pages

WITH_CODE = [page for page in pages()
             if any(block.language in ("sh", "python", "cpp") for block in blocks((ROOT / page).read_text()))]
# What blocks of C++ that are no whole programs have: the bodies of functions with these parameters.
PROGRAM = """#include <Korvex2.h>
#include <vorbayer.h>

#include <cassert>
#include <cstring>
#include <iostream>
#include <thread>
#include <vector>

using namespace Korvex2;
{functions}
int main() {{
{calls}
}}
"""
FUNCTION = """
static void Block{line}(ImageConverter& converter, Image& frame, Image& picture) {{
  (void)converter, (void)frame, (void)picture;
#line {line} "{page}"
{code}
}}
"""
CALL = """  {{
    ImageConverter converter;
    Image frame, picture;
    frame.SetDimensions(480, 640, 640, PIXEL_FORMAT_RAW8, RGGB);
    Block{line}(converter, frame, picture);
  }}"""


def matches(expected, printed):
    """Whether what was printed is what the page says."""
    pattern = "".join(r"(?:.*\n)*" if line.strip() == "…" else ".*".join(map(re.escape, line.split("…"))) + r" *\n"
                      for line in expected.splitlines())
    return re.fullmatch(pattern, printed if printed.endswith("\n") or not printed else printed + "\n")


def run_shell(block, expected, folder, environment):
    script = f"set -euo pipefail\n{block.code}"
    result = subprocess.run(["bash", "-c", script], cwd=folder, env=environment, capture_output=True, text=True,
                            timeout=120)
    assert result.returncode == 0, f"line {block.line}: {result.stdout}{result.stderr}"
    if expected is not None:
        assert matches(expected.code, result.stdout), f"line {block.line}: printed\n{result.stdout}"


def run_python(page, page_blocks, folder, environment):
    """All at once, since they share their variables; each keeps its line."""
    source = ""
    for block in page_blocks:
        source += "\n" * (block.line - 1 - source.count("\n")) + block.code
    (folder / "page.py").write_text(source)
    result = subprocess.run([sys.executable, "page.py"], cwd=folder, env=environment, capture_output=True, text=True,
                            timeout=120)
    assert result.returncode == 0, f"{page}: {result.stderr}"


def compile_and_run(source, name, folder, environment, prefix):
    (folder / f"{name}.cpp").write_text(source)
    library = next(path.parent for path in prefix.rglob("libkorvex2.so"))
    subprocess.run([os.environ["CXX"], "-std=c++17", "-Wall", "-Wextra", "-Werror", f"{name}.cpp", "-o", name,
                    f"-I{prefix}/include/korvex2", f"-I{prefix}/include", f"-L{library}", f"-Wl,-rpath,{library}",
                    "-lkorvex2", "-lvorbayer", "-pthread"],
                   cwd=folder, check=True)
    result = subprocess.run([folder / name], cwd=folder, env=environment, capture_output=True, text=True, timeout=120)
    assert result.returncode == 0, f"{name}: {result.stdout}{result.stderr}"


def run_cpp(page, page_blocks, folder, environment, prefix):
    programs = [block for block in page_blocks if "int main" in block.code]
    for block in programs:
        compile_and_run(block.code, f"program{block.line}", folder, environment, prefix)
    parts = [block for block in page_blocks if block not in programs]
    if parts:
        functions = "".join(FUNCTION.format(line=block.line, page=page, code=block.code) for block in parts)
        calls = "\n".join(CALL.format(line=block.line) for block in parts)
        compile_and_run(PROGRAM.format(functions=functions, calls=calls), "parts", folder, environment, prefix)


@pytest.mark.parametrize("page", WITH_CODE, ids=str)
def test_page(page, tmp_path, environment, request):
    page_blocks = list(blocks((ROOT / page).read_text()))
    for block, following in zip(page_blocks, [*page_blocks[1:], None]):
        if block.language == "sh":
            tells = following is not None and following.language == "text" and following.after <= 1
            run_shell(block, following if tells else None, tmp_path, environment)
    of = {language: [block for block in page_blocks if block.language == language] for language in ("python", "cpp")}
    if of["python"]:
        run_python(page, of["python"], tmp_path, environment)
    if of["cpp"]:
        run_cpp(page, of["cpp"], tmp_path, environment, request.getfixturevalue("prefix"))


@pytest.mark.parametrize("page", [page for page in pages() if page.parts[0] == "docs"], ids=str)
def test_sessions_of_python(page, tmp_path, monkeypatch):
    monkeypatch.chdir(tmp_path)
    if str(page) != "docs/python.md":  # tests/python has that one
        assert doctest.testfile(str(ROOT / page), module_relative=False).failed == 0


@pytest.mark.parametrize("script", sorted((ROOT / "examples/shell").glob("*.sh")), ids=lambda path: path.stem)
def test_examples_of_the_shell(script, tmp_path, environment):
    result = subprocess.run(["bash", script], cwd=tmp_path, env=environment, capture_output=True, text=True,
                            timeout=120)
    assert result.returncode == 0, result.stderr
    assert matches((ROOT / "tests/docs/examples" / f"{script.stem}.txt").read_text(), result.stdout), result.stdout


def test_example_of_cmake(tmp_path, environment, prefix):
    cmake = os.environ["CMAKE"]
    subprocess.run([cmake, "-S", ROOT / "examples/cmake", "-B", tmp_path, f"-DCMAKE_PREFIX_PATH={prefix}",
                    f"-DCMAKE_CXX_COMPILER={os.environ['CXX']}"], check=True, stdout=subprocess.DEVNULL)
    subprocess.run([cmake, "--build", tmp_path], check=True, stdout=subprocess.DEVNULL)
    printed = subprocess.run([tmp_path / "picture"], env=environment, cwd=tmp_path, check=True, capture_output=True,
                             text=True).stdout
    assert re.fullmatch(r"Korvex2 \d+\.\d+\.\d+: VORERROR_OK, 640 x 480 pixels\n", printed)
    assert (tmp_path / "picture.ppm").read_bytes().startswith(b"P6\n640 480\n255\n")


@pytest.mark.parametrize("page", pages(), ids=str)
def test_quotations(page):
    """Blocks of c++ and cmake stand in an example, perhaps indented."""
    sources = [path.read_text() for path in (ROOT / "examples").rglob("*") if path.suffix in (".cpp", ".txt")]
    for block in blocks((ROOT / page).read_text()):
        if block.language in ("c++", "cmake"):
            indented = [textwrap.indent(block.code, " " * width) for width in (0, 2, 4)]
            assert any(code in source for code in indented for source in sources), f"{page}:{block.line}"


def test_names_of_formats():
    """Every name in the table of formats.md is known, as a name of the format of its row."""
    import korvex2
    page = (ROOT / "docs/formats.md").read_text()
    rows = re.findall(r"^\| `(\w+)` \| (`Mono|`RGB|`BGR|`YUV|`Bayer)(.*) \|$", page, re.M)
    assert len(rows) == 16
    for name, first, rest in rows:
        for alias in re.findall(r"`(\w+)`", first + rest):
            assert korvex2.PixelFormat(alias) == korvex2.PixelFormat(name), alias
