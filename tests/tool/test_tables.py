"""formats, routes, info, help: what the tool tells about the library."""

import json
import os

from pictures import BYTE_ORDER

FORMATS = ["mono8", "mono12", "mono16", "rgb8", "rgbu", "rgb16", "bgr", "bgru", "bgr16", "bgru16",
           "yuv411", "yuv422", "yuv444", "raw8", "raw12", "raw16"]
RAW = ["raw8", "raw12", "raw16"]


def test_version(tool):
    name, version = tool.succeeds("--version").split()
    assert name == "korvex2" and all(part.isdigit() for part in version.split(".")) and version.count(".") == 2


def test_help_has_examples_and_the_subcommands(tool):
    text = tool.succeeds("--help")
    for word in ["Examples:", "Exit codes", "convert", "chart", "mosaic", "demosaic-compare", "formats", "routes",
                 "info", "bench"]:
        assert word in text
    for command in ["convert", "chart", "mosaic", "demosaic-compare", "bench"]:
        assert "Examples:" in tool.succeeds(command, "--help")


def test_formats_table(tool):
    lines = tool.succeeds("formats").splitlines()
    rows = {line.split()[0]: line for line in lines[1:lines.index("")]}
    assert list(rows)[:16] == FORMATS
    assert "12" in rows["mono12"].split() and "Mono12Packed" in rows["mono12"]
    assert "U Y0 V Y1" in rows["yuv422"] and "UYVY" in rows["yuv422"]


def test_formats_json(tool):
    formats = {entry["name"]: entry for entry in json.loads(tool.succeeds("formats", "--json"))}
    assert [name for name in formats if formats[name]["convertible"]] == FORMATS
    bits = dict(mono8=8, mono12=12, mono16=16, rgb8=24, rgbu=32, rgb16=48, bgr=24, bgru=32, bgr16=48, bgru16=64,
                yuv411=12, yuv422=16, yuv444=24, raw8=8, raw12=12, raw16=16)
    for name, expected in bits.items():
        entry = formats[name]
        assert entry["bitsPerPixel"] == expected
        assert entry["bytesPerGroup"] * 8 == expected * entry["pixelsPerGroup"]
        assert entry["layout"] and isinstance(entry["aliases"], list)
    assert formats["mono8"]["value"] == 0x80000000
    names = [name for entry in formats.values()
             for name in {name.lower() for name in [entry["name"], *entry["aliases"]]}]
    assert len(names) == len(set(names)), "a name stands for two formats"


def test_routes_matrix(tool):
    lines = tool.succeeds("routes").splitlines()
    assert lines[0].split()[3:] == FORMATS
    rows = {line.split()[0]: dict(zip(FORMATS, line.split()[1:])) for line in lines[1:17]}
    assert list(rows) == FORMATS
    for source in FORMATS:
        for target in FORMATS:
            cell = rows[source][target]
            assert (cell == "=") == (source == target)
            assert (cell == ".") == (target in RAW and source not in RAW)
            assert ("d" in cell) == (source in RAW and target not in RAW)
    assert rows["rgb8"]["mono8"] == "1" and rows["raw8"]["bgru"] == "2d"


def test_routes_json_chains_fit_together(tool):
    routes = json.loads(tool.succeeds("routes", "--json"))
    assert len(routes) == 256
    for route in routes:
        kernels = route["kernels"]
        assert bool(kernels) == (route["is"] == "converted") == bool(route["routine"])
        if kernels:
            assert kernels[0]["from"] == route["from"] and kernels[-1]["to"] == route["to"]
            assert all(a["to"] == b["from"] for a, b in zip(kernels, kernels[1:]))
    assert sum(route["is"] == "copied" for route in routes) == 16
    assert sum(route["is"] == "refused" for route in routes) == 39


def test_a_route_expanded(tool):
    text = tool.succeeds("routes", "--from", "raw12", "--to", "MONO16")
    names = [line.split()[0] for line in text.splitlines()[1:6]]
    assert names == ["ConvertRAW12ToY16", "ConvertRAW12ToRGB16", "ConvertY12ToY16", "ConvertBayerImageToBGR",
                     "ConvertRGB16ToY16"]
    assert text.splitlines()[-1] == "Kernels that run: ConvertY12ToY16, ConvertBayerImageToBGR, ConvertRGB16ToY16"
    route, = json.loads(tool.succeeds("routes", "--from", "raw8", "--to", "bgru", "--json"))
    assert route == {
        "from": "raw8", "to": "bgru", "is": "converted", "routine": "ConvertRAW8ToBGRU",
        "kernels": [{"name": "ConvertBayerImageToBGR", "from": "raw8", "to": "bgr"},
                    {"name": "AddAlphaChannel_8bit", "from": "bgr", "to": "bgru"}]}


def test_routes_of_one_source_or_target(tool):
    lines = tool.succeeds("routes", "--from", "yuv422").splitlines()
    assert len(lines) == 17 and all(line.startswith("yuv422") for line in lines[1:])
    assert lines[1].endswith("ConvertYUV422ToRGB, ConvertRGBToRGB16, ConvertRGB16ToRGB, ConvertRGBToY8")
    lines = tool.succeeds("routes", "--to", "raw16").splitlines()
    assert [line.split()[2] for line in lines[1:]] == ["refused"] * 13 + ["ConvertRAW8ToRAW16", "ConvertRAW12ToRAW16",
                                                                          "copied"]


def test_formats_that_do_not_convert_are_copied_only(tool):
    assert "copied" in tool.succeeds("routes", "--from", "s_mono16", "--to", "s_mono16")
    assert "refused" in tool.succeeds("routes", "--from", "s_mono16", "--to", "mono16")
    (tool.folder / "in.raw").write_bytes(b"abcd")
    tool.succeeds("convert", "in.raw", "out.raw", "--from", "s_mono16", "--to", "s_mono16", "--width", 2, "--height", 1)
    assert (tool.folder / "out.raw").read_bytes() == b"abcd"


def test_info(tool):
    facts = json.loads(tool.succeeds("info", "--json"))
    assert facts["byteOrder"] == f"{BYTE_ORDER}-endian"
    assert facts["version"] == tool.succeeds("--version").split()[1]
    assert facts["numCpuCores"] == os.cpu_count()
    assert facts["sysMemSize"] == os.sysconf("SC_PAGE_SIZE") * os.sysconf("SC_PHYS_PAGES")
    assert facts["formats"] == 16
    text = tool.succeeds("info")
    for value in (facts["version"], facts["byteOrder"], facts["cpuDescription"], facts["osDescription"]):
        assert value in text
