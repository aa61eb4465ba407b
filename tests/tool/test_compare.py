"""demosaic-compare: its figures against numpy, its contact sheet, its refusals."""

import json

import numpy as np
import pytest
from PIL import Image

from pictures import png_bytes, read_png

METHODS = ["nearest", "edge", "hq_linear", "directional", "weighted", "rigorous"]
OF_THE_CONVERTER = [method for method in METHODS if method != "weighted"]
BORDER = 10


def scene(rng, height, width, depth):
    """Smooth colours, stripes and noise."""
    y, x = np.mgrid[0:height, 0:width]
    stripes = 40 * np.sin((x + 2 * y) / 4)
    rgb = np.stack([60 + x + stripes, 90 + y / 2 + stripes, 200 - x / 2 - y / 3 + stripes], axis=-1)
    rgb = (rgb + rng.normal(0, 4, rgb.shape)).clip(0, 255) / 255
    return np.round(rgb * (2 ** depth - 1)).astype(np.uint16 if depth == 16 else np.uint8)


def cpsnr(truth, picture):
    difference = (truth.astype(float) - picture)[BORDER:-BORDER, BORDER:-BORDER]
    return 10 * np.log10(np.iinfo(truth.dtype).max ** 2 / np.mean(difference ** 2))


def ssim(truth, picture):
    """Every window written out."""
    weights = np.exp(-(np.arange(11) - 5.0) ** 2 / (2 * 1.5 ** 2))
    weights = np.outer(weights, weights) / weights.sum() ** 2
    peak = np.iinfo(truth.dtype).max
    c1, c2 = (0.01 * peak) ** 2, (0.03 * peak) ** 2

    def mean(channel):
        windows = np.lib.stride_tricks.sliding_window_view(channel, (11, 11))
        return np.einsum("yxij,ij->yx", windows, weights)

    results = []
    for channel in range(3):
        a, b = (image[BORDER:-BORDER, BORDER:-BORDER, channel].astype(float) for image in (truth, picture))
        ma, mb = mean(a), mean(b)
        va, vb, cov = mean(a * a) - ma * ma, mean(b * b) - mb * mb, mean(a * b) - ma * mb
        results.append(((2 * ma * mb + c1) * (2 * cov + c2) / ((ma ** 2 + mb ** 2 + c1) * (va + vb + c2))).mean())
    return np.mean(results)


def compare(tool, name, *options):
    report = json.loads(tool.succeeds("demosaic-compare", name, "--json", *options))
    assert [method["name"] for method in report["methods"]] == METHODS
    assert all(method["mpxPerSecond"] > 0 for method in report["methods"])
    return report, {method["name"]: method for method in report["methods"]}


@pytest.mark.parametrize("depth, raw, colour", [(8, "raw8", "rgb8"), (16, "raw16", "rgb16")])
@pytest.mark.parametrize("tile", ["rggb", "grbg", "gbrg", "bggr"])
def test_figures_are_those_of_the_converted_mosaic(tool, rng, tile, depth, raw, colour):
    truth = scene(rng, 60, 84, depth)
    (tool.folder / "in.png").write_bytes(png_bytes(truth))
    report, methods = compare(tool, "in.png", "--tile", tile)
    assert (report["width"], report["height"], report["format"], report["tile"]) == (84, 60, colour, tile)
    tool.succeeds("mosaic", "in.png", "mosaic.png", "--tile", tile, "--to", raw)
    for method in OF_THE_CONVERTER:
        tool.succeeds("convert", "mosaic.png", "out.png", "--from", raw, "--tile", tile, "--method", method,
                      "--to", colour)
        picture = read_png(tool.folder / "out.png")
        assert methods[method]["cpsnr"] == pytest.approx(cpsnr(truth, picture), abs=1e-5)
        assert methods[method]["ssim"] == pytest.approx(ssim(truth, picture), abs=2e-6)
    assert methods["nearest"]["cpsnr"] < methods["hq_linear"]["cpsnr"]
    assert methods["nearest"]["cpsnr"] < methods["weighted"]["cpsnr"]


def test_the_tile_is_rggb_unless_told(tool, rng):
    (tool.folder / "in.png").write_bytes(png_bytes(scene(rng, 40, 40, 8)))
    default, told, other = (compare(tool, "in.png", *options)[1]["edge"]["cpsnr"]
                            for options in ([], ["--tile", "RGGB"], ["--tile", "bggr"]))
    assert default == told != other


def test_what_is_flat_comes_back_as_it_was(tool):
    (tool.folder / "in.png").write_bytes(png_bytes(np.full((48, 48, 3), [200, 90, 30], np.uint8)))
    _, methods = compare(tool, "in.png")
    for method in METHODS:
        assert methods[method]["cpsnr"] is None or methods[method]["cpsnr"] > 50
        assert methods[method]["ssim"] > 0.9999
    text = tool.succeeds("demosaic-compare", "in.png")
    rows = [line.split() for line in text.splitlines()]
    assert rows[0] == ["method", "CPSNR", "dB", "SSIM", "Mpx/s"]
    assert [row[0] for row in rows[1:]] == METHODS
    assert rows[1][1:3] == ["inf", "1.0000"]


def test_grey_and_alpha(tool, rng):
    colour = scene(rng, 40, 44, 8)
    (tool.folder / "colour.png").write_bytes(png_bytes(colour))
    (tool.folder / "alpha.png").write_bytes(png_bytes(np.dstack([colour, colour[..., 0]])))
    assert compare(tool, "colour.png")[1]["edge"]["cpsnr"] == compare(tool, "alpha.png")[1]["edge"]["cpsnr"]
    (tool.folder / "grey.png").write_bytes(png_bytes(colour[..., 0]))
    (tool.folder / "equal.png").write_bytes(png_bytes(np.dstack([colour[..., 0]] * 3)))
    assert compare(tool, "grey.png")[1]["edge"]["cpsnr"] == compare(tool, "equal.png")[1]["edge"]["cpsnr"]


def test_odd_sides_are_cut_off_with_a_note(tool, rng):
    truth = scene(rng, 41, 43, 8)
    (tool.folder / "odd.png").write_bytes(png_bytes(truth))
    (tool.folder / "even.png").write_bytes(png_bytes(truth[:40, :42]))
    result = tool.run("demosaic-compare", "odd.png", "--json")
    assert result.returncode == 0
    assert result.stderr == ("korvex2: warning: odd.png was cropped to 42 x 40 pixels, since mosaics have even "
                             "sides\n")
    odd, even = json.loads(result.stdout), compare(tool, "even.png")[0]
    assert (odd["width"], odd["height"]) == (42, 40)
    assert [m["cpsnr"] for m in odd["methods"]] == [m["cpsnr"] for m in even["methods"]]


def magnified(sheet, detail):
    """Whether the sheet shows the detail enlarged, and by how much."""
    for scale in range(1, 200):
        big = detail.repeat(scale, axis=0).repeat(scale, axis=1)
        if big.shape[0] > sheet.shape[0] or big.shape[1] > sheet.shape[1]:
            return None
        corners = np.argwhere((sheet[:, :, :] == big[0, 0]).all(axis=-1))
        for y, x in corners[:20]:
            if np.array_equal(sheet[y:y + big.shape[0], x:x + big.shape[1]], big):
                return scale
    return None


def test_the_sheet_shows_the_detail_of_original_and_results(tool, rng):
    truth = scene(rng, 120, 160, 8)
    truth[64:80, 96:112] = rng.integers(0, 256, (16, 16, 3))  # nothing is worse than noise
    (tool.folder / "in.png").write_bytes(png_bytes(truth))
    report, _ = compare(tool, "in.png", "--out", "sheet.png")
    place = report["detail"]
    assert (place["width"], place["height"]) == (64, 64)
    assert place["x"] <= 96 and place["x"] + 64 >= 112 and place["y"] <= 64 and place["y"] + 64 >= 80

    with Image.open(tool.folder / "sheet.png") as picture:
        assert picture.mode == "RGB"
        sheet = np.asarray(picture)
    inside = np.s_[place["y"]:place["y"] + 64, place["x"]:place["x"] + 64]
    assert magnified(sheet, truth[inside]) == 6
    tool.succeeds("mosaic", "in.png", "mosaic.png", "--tile", "rggb")
    for method in OF_THE_CONVERTER:
        tool.succeeds("convert", "mosaic.png", "out.png", "--from", "raw8", "--tile", "rggb", "--method", method,
                      "--to", "rgb8")
        assert magnified(sheet, read_png(tool.folder / "out.png")[inside]) == 6


@pytest.mark.parametrize("crop, scale", [((0, 0, 32, 40), 9), ((7, 9, 1, 1), None), ((120, 80, 40, 40), 9),
                                         ((0, 0, 160, 120), 2)])
def test_a_chosen_detail(tool, rng, crop, scale):
    truth = scene(rng, 120, 160, 16)
    (tool.folder / "in.png").write_bytes(png_bytes(truth))
    x, y, width, height = crop
    said = tool.succeeds("demosaic-compare", "in.png", "--crop", f"{x},{y},{width},{height}", "--out", "sheet.ppm")
    assert f"{width} x {height} pixels at {x}, {y} -> sheet.ppm" in said
    with Image.open(tool.folder / "sheet.ppm") as picture:
        sheet = np.asarray(picture)
    if scale:
        assert magnified(sheet, (truth[y:y + height, x:x + width] >> 8).astype(np.uint8)) == scale


def test_quiet_leaves_the_figures(tool, rng):
    (tool.folder / "in.png").write_bytes(png_bytes(scene(rng, 40, 40, 8)))
    lines = tool.succeeds("demosaic-compare", "in.png", "--out", "sheet.png", "--quiet").splitlines()
    assert len(lines) == 1 + len(METHODS)


def test_wrong_use(tool, rng):
    (tool.folder / "in.png").write_bytes(png_bytes(scene(rng, 40, 50, 8)))
    (tool.folder / "small.png").write_bytes(png_bytes(scene(rng, 31, 50, 8)))
    assert "32 x 32" in tool.fails(1, "demosaic-compare", "small.png")
    assert "rggb" in tool.fails(2, "demosaic-compare", "in.png", "--tile", "none")
    assert "rggb" in tool.fails(2, "demosaic-compare", "in.png", "--tile", "rgbg")
    assert "No such file" in tool.fails(1, "demosaic-compare", "missing.png")
    assert "PGM holds" in tool.fails(1, "demosaic-compare", "missing.png", "--out", "sheet.pgm")
    assert "No such file" in tool.fails(1, "demosaic-compare", "in.png", "--out", "missing/sheet.png")
    for crop in ("0,0,51,40", "0,1,50,40", "49,0,2,2", "4294967295,0,2,2", "0,0,0,4"):
        assert "50 x 40" in tool.fails(2, "demosaic-compare", "in.png", "--crop", crop, "--out", "sheet.png")
    for crop in ("1,2,3", "a,b,c,d", "-1,0,4,4", "1,2,3,4,5"):
        tool.fails(2, "demosaic-compare", "in.png", "--crop", crop)
