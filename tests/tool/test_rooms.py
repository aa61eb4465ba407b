"""The rooms of the tool: includes run one way, and what reads files knows nothing of the tool."""

import re
from pathlib import Path

import pytest

ROOT = Path(__file__).parent.parent.parent
TOOL = ROOT / "tools/korvex2"

# What each room may include besides itself and io/.
ROOMS = {
    "terminal": set(),
    "cli": {"terminal"},
    "processing": {"terminal"},
    "analysis": {"terminal", "processing"},
    "drawing": {"terminal", "processing", "analysis"},
    "batch": {"terminal"},
    "commands": {"cli", "terminal", "processing", "analysis", "drawing", "batch"},
}


def includes(folder):
    """The folders that the sources of one include from, and the headers in angle brackets."""
    text = "".join(path.read_text() for path in sorted(folder.iterdir()) if path.suffix in (".h", ".cpp"))
    return set(re.findall(r'#include "(\w+)/', text)), set(re.findall(r"#include <([^>]+)>", text))


def test_every_room_is_listed():
    assert {path.name for path in TOOL.iterdir() if path.is_dir()} == set(ROOMS)


@pytest.mark.parametrize("room", ROOMS)
def test_includes_run_one_way(room):
    folders, _ = includes(TOOL / room)
    assert room in folders  # of its own headers: so there is something to see
    assert folders & set(ROOMS) <= ROOMS[room] | {room}


def test_one_file_knows_the_parser():
    found = {path.name for path in TOOL.rglob("*") if path.suffix in (".h", ".cpp") and "<CLI/" in path.read_text()}
    assert found == {"Parser.cpp"}


def test_files_are_read_without_the_tool():
    folders, headers = includes(ROOT / "io")
    assert folders == {"io"}
    assert "png.h" in headers and not any(header.startswith(("CLI", "tbb")) for header in headers)
