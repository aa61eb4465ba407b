"""What the documentation shows is what happens: docstrings, docs/python.md, examples/python/."""

import doctest
import importlib
import pkgutil
import subprocess
import sys
from pathlib import Path

import pytest

import korvex2

ROOT = Path(__file__).parent.parent.parent
NEEDS = {"dask": "distributed", "opencv": "cv2", "cluster": "distributed"}
MODULES = ["korvex2", *(f"korvex2.{module.name}" for module in pkgutil.iter_modules(korvex2.__path__))]


def skip_without(name):
    if name in NEEDS:
        pytest.importorskip(NEEDS[name], reason=f"{NEEDS[name]} is missing: {name} is not tested")


@pytest.mark.parametrize("name", MODULES)
def test_docstrings(name):
    skip_without(name.rpartition(".")[2])
    assert doctest.testmod(importlib.import_module(name)).failed == 0


def test_the_main_functions_have_examples():
    finder = doctest.DocTestFinder(recurse=False)
    for public in (korvex2, korvex2.convert, korvex2.formats, korvex2.routes, korvex2.Error, korvex2.PixelFormat):
        assert finder.find(public)[0].examples, public


def test_public_names_are_documented():
    for name in korvex2.__all__:
        assert getattr(korvex2, name).__doc__, name


def test_guide(tmp_path, monkeypatch):
    skip_without("dask")
    monkeypatch.chdir(tmp_path)
    result = doctest.testfile(str(ROOT / "docs" / "python.md"), module_relative=False)
    assert result.attempted > 10 and result.failed == 0


@pytest.mark.parametrize("example", sorted((ROOT / "examples" / "python").glob("*.py")), ids=lambda path: path.stem)
def test_examples(example, tmp_path):
    skip_without(example.stem)
    result = subprocess.run([sys.executable, "-B", example], cwd=tmp_path, capture_output=True, text=True, timeout=120)
    assert result.returncode == 0, result.stderr
    assert result.stdout == (Path(__file__).parent / "examples" / f"{example.stem}.txt").read_text()
