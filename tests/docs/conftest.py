"""Tests of the pages. ctest sets what they need: KORVEX2_TOOL, the program; KORVEX2_BUILD, the build tree; CXX and
CMAKE; PYTHONPATH, where the package is."""

import os
import subprocess
import sys
from pathlib import Path

import pytest

ROOT = Path(__file__).parent.parent.parent
sys.path.append(str(ROOT / "docs" / "site"))


@pytest.fixture(scope="session")
def prefix(tmp_path_factory):
    """Where the library is installed, as a reader of the pages has it."""
    folder = tmp_path_factory.mktemp("prefix")
    subprocess.run([os.environ["CMAKE"], "--install", os.environ["KORVEX2_BUILD"], "--prefix", folder],
                   check=True, stdout=subprocess.DEVNULL)
    return folder


@pytest.fixture
def environment(tmp_path):
    """Of a shell that has the tool and the Python package, and nothing of the user's."""
    tools = Path(os.environ["KORVEX2_TOOL"]).parent
    return {"PATH": f"{tools}:{Path(sys.executable).parent}:/usr/bin:/bin", "HOME": str(tmp_path), "LANG": "C.UTF-8",
            "PYTHONPATH": os.environ["PYTHONPATH"], "PYTHONDONTWRITEBYTECODE": "1"}
