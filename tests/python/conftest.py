"""Tests of the Python package. PYTHONPATH says where it is; ctest sets it."""

import sys
from pathlib import Path

import numpy as np
import pytest

sys.path.append(str(Path(__file__).parent.parent / "tool"))  # pictures.py, the arithmetic of the formats


@pytest.fixture
def rng():
    return np.random.default_rng(20240229)
