"""bench/report.py: the figures that it puts into the page and the chart."""

import xml.etree.ElementTree as ElementTree

import pytest

from documents import contest, run, write

ROWS = [
    *contest("rgb8_to_bgr/1920x1080/hot", ours=0.1, memcpy=0.05, literal=1.0, fresh=0.15, libyuv=0.2, opencv=0.3),
    *contest("rgb8_to_bgr/3840x2160/cold", ours=0.36, memcpy=0.2, libyuv=0.3),
    *contest("rgb8_to_bgr/3840x2160/hot", ours=0.25, memcpy=0.2),
    *contest("rgb8_to_bgr/12000x12500/hot", ours=0.45, memcpy=0.4),
    *contest("rgb8_to_bgr/32x32/hot", ours=1.0, memcpy=0.01),
    *contest("rgb8_to_bgr/64x64/hot", ours=0.5, memcpy=0.01),
    *contest("mono8_to_yuv422/1920x1080/hot", ours=0.21, memcpy=0.05),
    *contest("raw8_to_bgr/1920x1080/hot", ours=9.0, memcpy=0.05),
]


def report(tmp_path, rows, *options):
    result = run("report.py", write(tmp_path, "run.json", rows), "--out", tmp_path, *options)
    assert result.returncode == 0, result.stderr
    return (tmp_path / "performance.md").read_text(), (tmp_path / "performance.svg").read_text()


def section(page, title):
    return page.split(f"# {title}\n", 1)[1].split("\n#", 1)[0]


def cells(text, conversion):
    """The cells of the conversion's first row in a text."""
    line = next(line for line in text.splitlines() if line.startswith(f"| {conversion} |"))
    return [cell.strip() for cell in line.strip("|").split("|")]


def test_machine_and_date_are_named(tmp_path):
    page, _ = report(tmp_path, ROWS)
    for words in ["Test Processor 9000", "8 logical processors", "AVX3", "GNU 12.2.0", "2031-02-03",
                  "OpenCV 4.6.0, libyuv 1857"]:
        assert words in page


def test_common_conversions_name_the_best_other_library(tmp_path):
    page, _ = report(tmp_path, ROWS)
    assert cells(section(page, "Common conversions"), "rgb8 → bgr") == [
        "rgb8 → bgr", "0.100", "0.050", "2.00 ×", "libyuv 0.200", "2.00 ×", "2", "10.0 ×"]


def test_pairs_above_a_bar_are_listed_with_the_place(tmp_path):
    page, _ = report(tmp_path, ROWS)
    text = section(page, "Beside memcpy")
    assert "2 pairs lie above a bar" in text
    # 2.0 and 1.25 and 1.125 times memcpy are below the bars of moves; 1.8 is not.
    assert cells(text, "rgb8 → bgr") == ["rgb8 → bgr", "moves", "–", "–", "–", "1.80 ×", "–"]
    # Grey to YUV computes luma: 4.2 is above 4.
    assert cells(text, "mono8 → yuv422") == ["mono8 → yuv422", "arithmetic", "4.20 ×", "–", "–", "–", "–"]
    assert "raw8" not in text


def test_nothing_above_a_bar(tmp_path):
    page, _ = report(tmp_path, contest("rgb8_to_bgr/1920x1080/hot", ours=0.1, memcpy=0.1))
    assert "Every pair stays below these bars." in page
    assert page.count("Not measured in this run.") == 2


def test_small_and_large_frames(tmp_path):
    page, _ = report(tmp_path, ROWS)
    text = section(page, "Small and large frames")
    # 1024 px take 1.024 us and 4096 px 2.048 us: 0.683 us are left at no pixel.
    assert cells(text, "rgb8 → bgr") == ["rgb8 → bgr", "0.68", "0.500"]
    assert "none of them above 1 µs" in text
    assert "grows by 1.25 × at most" in text
    assert "| rgb8 → bgr | 0.250 | 0.360 | 0.450 | 1.25 × | 2.00 × |" in text


def test_every_pair_stands_in_the_table_of_its_kind(tmp_path):
    page, _ = report(tmp_path, ROWS)
    assert cells(section(page, "Bytes only move"), "rgb8 → bgr") == [
        "rgb8 → bgr", "–", "0.100 (2.00 ×)", "–", "0.250 (1.25 ×)", "0.360 (1.80 ×)", "1.50 ×", "10.0 ×",
        "libyuv 2.00 ×"]
    assert cells(section(page, "Colour is computed"), "mono8 → yuv422")[-1] == "none"
    assert cells(section(page, "Mosaics are demosaiced"), "raw8 → bgr")[2] == "9.000 (180.0 ×)"


@pytest.mark.parametrize("pair, kind", [
    ("rgb8_to_bgr16", "moves"), ("mono12_to_bgru", "moves"), ("mono16_to_mono12", "moves"), ("raw8_to_raw12", "moves"),
    ("rgb8_to_mono8", "arithmetic"), ("yuv411_to_mono8", "arithmetic"), ("yuv422_to_yuv444", "arithmetic"),
    ("mono8_to_yuv411", "arithmetic"), ("bgru16_to_yuv422", "arithmetic"), ("raw12_to_bgr", "demosaicing")])
def test_kinds(tmp_path, pair, kind):
    page, _ = report(tmp_path, contest(f"{pair}/1920x1080/hot", ours=0.1, memcpy=0.1))
    title = {"moves": "Bytes only move", "arithmetic": "Colour is computed", "demosaicing": "Mosaics are demosaiced"}
    assert cells(section(page, title[kind]), pair.replace("_to_", " → "))


def test_least_instead_of_median(tmp_path):
    rows = contest("rgb8_to_bgr/1920x1080/hot", ours=0.4, memcpy=0.2)
    for row in rows:
        row["least_ns_per_px"] = row["ns_per_px"] / 4
    page, _ = report(tmp_path, rows, "--statistic", "least")
    assert cells(section(page, "Common conversions"), "rgb8 → bgr")[1:4] == ["0.100", "0.050", "2.00 ×"]
    assert "the least of several rounds" in page


def test_chart_is_to_scale(tmp_path):
    _, chart = report(tmp_path, ROWS)
    root = ElementTree.fromstring(chart)
    bars = [rect for rect in root.findall("{*}rect") if rect.get("height") == "9"]
    widths = [float(bar.get("width")) for bar in bars]
    assert widths[1] == pytest.approx(2 * widths[0], abs=0.2) and widths[2] == pytest.approx(4 * widths[0], abs=0.2)
    assert "rgb8 → bgr" in chart and "libyuv" in chart


def test_failed_rows_are_left_out(tmp_path):
    rows = contest("rgb8_to_bgr/1920x1080/hot", ours=0.1, memcpy=0.1, libyuv=0.01)
    rows[2].update(error_occurred=True, error_message="has no way")
    page, _ = report(tmp_path, rows)
    assert cells(section(page, "Common conversions"), "rgb8 → bgr")[4] == "none"


def test_files_that_are_no_run(tmp_path):
    result = run("report.py", tmp_path / "missing.json")
    assert result.returncode == 1 and "missing.json" in result.stderr
    result = run("report.py", write(tmp_path, "empty.json", []), "--out", tmp_path)
    assert result.returncode == 1 and "no rows" in result.stderr
    other = [{"name": "memcpy/RAW8_BGR8", "run_name": "memcpy/RAW8_BGR8", "real_time": 1, "time_unit": "ms"}]
    result = run("report.py", write(tmp_path, "other.json", other), "--out", tmp_path)
    assert result.returncode == 1 and "no rows of converter_bench" in result.stderr
    assert not (tmp_path / "performance.md").exists()
