"""The interface of the libraries beside that of the last release, and the check that compares them."""

import os
import shutil
import subprocess
from pathlib import Path

import pytest

if not shutil.which("abidiff"):
    pytest.skip("abigail-tools is not installed", allow_module_level=True)
if os.environ["KORVEX2_MACHINE"] != "GNU-x86_64":
    pytest.skip("the interface is held still as g++ makes it on x86-64", allow_module_level=True)

ROOT = Path(__file__).resolve().parents[2]
COMPARE = ROOT / "abi/compare.sh"
DUMPS = {ROOT / f"abi/{Path(os.environ[name]).name}.abi": os.environ[name]
         for name in ("KORVEX2_LIBRARY", "VORBAYER_LIBRARY")}


def compare(*arguments):
    return subprocess.run([COMPARE, *arguments], stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                          timeout=200)


# In a file named as one of the public headers, whose types alone are compared.
RELEASED = """
struct Shape { int rows; int columns; };
int pixels(Shape shape) { return shape.rows * shape.columns; }
int bytes(Shape* shape) { return 3 * pixels(*shape); }
"""


def build(folder, source):
    folder.mkdir()
    (folder / "Image.h").write_text(source)
    (folder / "shape.cpp").write_text('#include "Image.h"\n')
    subprocess.run([os.environ["CXX"], "-shared", "-fPIC", "-g", "shape.cpp", "-o", "libshape.so"], cwd=folder,
                   check=True)
    return folder / "libshape.so"


CHANGES = [
    ("nothing", "", "", True),
    ("a function more", "int bytes", "int rows(Shape shape) { return shape.rows; }\nint bytes", True),
    ("a function less", "int pixels", "static int pixels", False),
    ("another result", "int bytes", "long bytes", False),
    ("another member", "int rows;", "long rows;", False),
]


@pytest.mark.parametrize("_,old,new,compatible", CHANGES, ids=[change[0] for change in CHANGES])
def test_what_is_gone_or_changed_is_refused(tmp_path, _, old, new, compatible):
    dump = tmp_path / "released.abi"
    done = compare("--update", build(tmp_path / "released", RELEASED), dump)
    assert done.returncode == 0, done.stdout
    done = compare(build(tmp_path / "changed", RELEASED.replace(old, new, 1)), dump)
    assert (done.returncode == 0) == compatible, done.stdout


@pytest.mark.skipif(os.environ["KORVEX2_BUILD_TYPE"] not in ("Debug", "RelWithDebInfo"),
                    reason="the build has no debug information")
@pytest.mark.parametrize("dump", DUMPS, ids=lambda path: path.name)
def test_the_interface_is_that_of_the_last_release(dump):
    done = compare(DUMPS[dump], dump)
    assert done.returncode == 0, f"{done.stdout}\nIf the change is meant: ./run abi --update"


@pytest.mark.parametrize("dump", DUMPS, ids=lambda path: path.name)
def test_the_dump_tells_nothing_of_the_machine_that_made_it(dump):
    text = dump.read_text()
    assert "<elf-symbol" in text and str(ROOT) not in text and "Korvex2::Simd" not in text
