"""The site is built without a warning, and shows every format and every route."""

import json
import os
import shutil
import subprocess
import sys
from pathlib import Path
from xml.etree import ElementTree

import pytest
from conftest import ROOT

TOOL = os.environ["KORVEX2_TOOL"]
SITE = Path(os.environ["KORVEX2_BUILD"]) / "docs-test"


def told(command):
    return json.loads(subprocess.run([TOOL, command, "--json"], capture_output=True, check=True).stdout)


@pytest.fixture(scope="module")
def site():
    for program in ("doxygen", "dot"):
        if shutil.which(program) is None:
            pytest.skip(f"{program} is missing: the site is not built")
    build = subprocess.run([sys.executable, "-B", ROOT / "docs/site/build_site.py", "--tool", TOOL, "--output", SITE],
                           capture_output=True, text=True, timeout=300)
    assert build.returncode == 0, build.stdout + build.stderr
    return SITE / "html"


def test_every_format_is_drawn(site):
    page = (site / "page-docs-formats.html").read_text()
    for row in told("formats"):
        if row["convertible"]:
            assert f"format-{row['name']}.svg" in page
            drawing = ElementTree.parse(site / f"format-{row['name']}.svg").getroot()
            boxes = [text.text for text in drawing.iter("{http://www.w3.org/2000/svg}text")]
            assert f"byte {row['bytesPerGroup'] - 1}" in boxes


def test_every_route_is_drawn(site):
    page = (site / "page-docs-routes.html").read_text()
    routes = told("routes")
    assert "routes.svg" in page
    for source in {route["from"] for route in routes}:
        assert f"routes-{source}.svg" in page
        drawing = (site / f"routes-{source}.svg").read_text()
        for route in routes:
            if route["from"] == source:
                assert all(f">{kernel['name']}<" in drawing for kernel in route["kernels"]), route


def test_the_methods_are_shown(site):
    page = (site / "page-docs-choosing-a-demosaic-method.html").read_text()
    for name in ("demosaic-star.png", "demosaic-colours.png"):
        assert name in page and (site / name).stat().st_size > 1000


def test_examples_have_a_page(site):
    assert (site / "opencv_mat_8cpp-example.html").is_file()
    assert (site / "python_2quickstart_8py-example.html").is_file()
