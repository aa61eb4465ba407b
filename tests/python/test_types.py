"""The annotations hold under mypy --strict, and tell clients what is wrong; the stub is that of the extension."""

import ast
import os
import shutil
import subprocess
import sys
from pathlib import Path

import pytest

import korvex2
from korvex2 import _core

PACKAGES = Path(korvex2.__file__).parent.parent
SETTINGS = Path(__file__).parent.parent.parent / "pyproject.toml"

CLIENT = '''
import numpy as np
import korvex2
import korvex2.dask

frame = np.zeros((4, 4), np.uint8)
picture = korvex2.convert(frame, "bgr8", korvex2.PixelFormat.RAW8, tile="rggb", method=korvex2.Method.EDGE)
picture = korvex2.convert(frame, to="mono16", from_="mono8", out=np.empty((4, 4), np.uint16), shape=[4, 4])
bits: int = korvex2.formats()[0].bits_per_pixel
rows, cols = korvex2.formats()[0].array_shape(4, 4)
kernels: tuple[str, ...] = korvex2.routes(to="bgr8")[0].kernels
method: korvex2.Method = korvex2.Method.of("hq_linear")
written: list[str] = korvex2.dask.write_frames(None, "folder").compute().written
try:
    korvex2.convert([[1]])
except korvex2.Error as error:
    code: korvex2.ErrorCode = error.code
    cause: korvex2.Error = error.cause  # wrong: there may be none
korvex2.convert(frame, "bgr8", "raw8", "rggb", "edge", None, (4, 4))  # wrong: shape has a name
korvex2.convert(frame, to=3.5)  # wrong
korvex2.PixelFormat.BGR8  # wrong: that is an alias
korvex2.routes()[0].source  # wrong
korvex2.convert(frame, out=bytearray(48))  # wrong
'''


def test_annotations(tmp_path):
    if not shutil.which("mypy"):
        pytest.skip("mypy is missing: the annotations are not checked")
    client = tmp_path / "client.py"
    client.write_text(CLIENT)
    # An installed package is found through its Python, one in the build tree through the path.
    path = {} if PACKAGES.name.endswith("-packages") else {"MYPYPATH": str(PACKAGES)}
    result = subprocess.run(
        ["mypy", "--strict", "--config-file", SETTINGS, "--cache-dir", tmp_path / "cache", "--no-error-summary",
         "--python-executable", sys.executable, client],
        env={**os.environ, **path}, capture_output=True, text=True, timeout=300)
    errors = [line for line in result.stdout.splitlines() if ": error: " in line]
    assert not [line for line in errors if not line.startswith(str(client))], result.stdout
    wrong = [number for number, line in enumerate(CLIENT.splitlines(), 1) if "# wrong" in line]
    assert sorted({int(line.split(":")[1]) for line in errors}) == wrong, result.stdout + result.stderr


def test_the_stub_has_what_the_extension_has():
    stub = ast.parse((PACKAGES / "korvex2" / "_core.pyi").read_text())
    functions = {node.name: len(node.args.args) for node in stub.body if isinstance(node, ast.FunctionDef)}
    extension = {name: function for name, function in vars(_core).items() if not name.startswith("_")}
    assert set(functions) == set(extension)
    for name, function in extension.items():
        signature = function.__doc__.split(") ->")[0]
        assert signature.count("arg") == functions[name], signature


def test_package_says_that_it_is_typed():
    for name in ("py.typed", "_core.pyi"):
        assert (PACKAGES / "korvex2" / name).is_file()
