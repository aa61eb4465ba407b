"""Wrong input: what is said about it, and that nothing is written."""

import copy
import pickle
import traceback

import numpy as np
import pytest

import korvex2

GREY = np.zeros((4, 6), np.uint8)
COLOUR = np.zeros((4, 6, 3), np.uint8)


@pytest.mark.parametrize("arguments, message", [
    ((GREY.astype(float), "rgb8", "mono8"), "a mono8 frame is uint8 of rows x columns, not float64"),
    ((GREY.astype(np.int8), "rgb8", "mono8"), "not int8"),
    ((GREY > 0, "rgb8", "mono8"), "not bool"),
    ((GREY, "rgb8", "mono16"), "a mono16 frame is uint16 of rows x columns, not uint8"),
    ((GREY.astype(np.uint16), "rgb8", "yuv422"),
     "a yuv422 frame is uint8 of rows x 4 bytes for every 2 columns, not uint16"),
    (([[1, 2], [3, 4]], "rgb8", "mono8"), "not int64"),
    (("frame.png", "rgb8", "mono8"), "not <U9"),
    ((None, "rgb8", "mono8"), "not object"),
])
def test_wrong_types(arguments, message):
    with pytest.raises(TypeError, match=message):
        korvex2.convert(*arguments)


@pytest.mark.parametrize("arguments, options, message", [
    ((COLOUR, "rgb8", "mono8"), {}, r"a mono8 frame is uint8 of rows x columns, not of shape \(4, 6, 3\)"),
    ((GREY, "mono8", "rgb8"), {}, r"a rgb8 frame is uint8 of rows x columns x 3, not of shape \(4, 6\)"),
    ((GREY[:, :5], "rgb8", "mono12"), {}, r"not of shape \(4, 5\); other frames are flat bytes with shape="),
    ((GREY.ravel(), "rgb8", "mono8"), {}, r"not of shape \(24,\)"),
    ((np.zeros((), np.uint8), "rgb8", "mono8"), {}, r"not of shape \(\)"),
    ((GREY.ravel(), "rgb8", "mono8"), {"shape": (5, 5)}, "5 x 5 pixels of mono8 are 25 bytes, not 24"),
    ((GREY.ravel(), "rgb8", "mono12"), {"shape": (4, 5)}, "4 x 5 pixels of mono12 are 30 bytes, not 24"),
    ((GREY, "rgb8", "mono8"), {"shape": (6, 4)},
     r"an array of shape \(4, 6\) is 4 x 6 pixels of mono8, and shape says 6 x 4"),
    ((GREY, "rgb8", "mono8"), {"shape": (4, -6)}, "must not be negative"),
    ((GREY, "bgr9", "mono8"), {},
     r"'bgr9' is no PixelFormat; did you mean bgr\w*( or bgr\w*)*\? formats\(\) lists all"),
    ((GREY, "rgb8", "qqqqqqq"), {}, r"'qqqqqqq' is no PixelFormat; formats\(\) lists all"),
    ((GREY, 42, "mono8"), {}, "42 is not a valid PixelFormat"),
    ((GREY, "rgb8", "raw8"), {}, "a raw8 source needs tile, .*: rggb, grbg, gbrg, bggr, none"),
    ((GREY, "rgb8", "raw8", "rgbg"), {}, "'rgbg' is no BayerTile; it is one of rggb, grbg, gbrg, bggr, none"),
    ((GREY, "rgb8", "raw8", "rggb", "best"), {}, "'best' is no Method; it is one of nearest, edge, hq_linear, "),
    ((GREY, "rgb8", "raw8", "rggb", "weighted"), {}, "'weighted' is no Method"),
    ((GREY, "rgb8", "BayerRG8", "bggr"), {},
     "from_='BayerRG8' is tile rggb, and tile says bggr; leave one of them out"),
    ((COLOUR, "mono8", "rgb8", "rggb"), {}, "tile is for mosaics, and rgb8 is none"),
    ((COLOUR, "mono8", "rgb8", None, "edge"), {},
     "method is for turning mosaics into pictures; rgb8 to mono8 does not"),
    ((GREY, "raw16", "raw8", "rggb", "edge"), {}, "method is for .*; raw8 to raw16 does not"),
    ((np.zeros((2**33, 0), np.uint8), "rgb8", "mono8"), {}, "4294967295 rows and columns at most"),
])
def test_wrong_values(arguments, options, message):
    with pytest.raises(ValueError, match=message):
        korvex2.convert(*arguments, **options)


@pytest.mark.parametrize("shape", [5, (4,), (4, 6, 1), (4.0, 6), "46", ("4", "6")])
def test_wrong_shapes_said(shape):
    for _ in range(2):
        korvex2.convert(GREY.ravel(), "rgb8", "mono8", shape=(4, 6))  # a plan that must not serve the next call
        with pytest.raises(TypeError, match="shape must be two integers, rows and columns"):
            korvex2.convert(GREY.ravel(), "rgb8", "mono8", shape=shape)


def read_only(array):
    array.flags.writeable = False
    return array


@pytest.mark.parametrize("out, error, message", [
    (bytearray(72), TypeError, "out must be a numpy.ndarray, not bytearray"),
    (np.zeros((4, 6, 4), np.uint8), ValueError,
     r"out must be uint8 of shape \(4, 6, 3\) for 4 x 6 pixels of rgb8, not uint8 of shape \(4, 6, 4\)"),
    (np.zeros((4, 6, 3), np.uint16), ValueError, "not uint16"),
    (np.zeros((4, 6, 3), np.int8), ValueError, "not int8"),
    (np.zeros((6, 4, 3), np.uint8), ValueError, r"not uint8 of shape \(6, 4, 3\)"),
    (np.zeros(71, np.uint8), ValueError, r"not uint8 of shape \(71,\)"),
    (np.zeros((8, 6, 3), np.uint8)[::2], ValueError, "out must be C-contiguous and writeable"),
    (np.asfortranarray(np.zeros((4, 6, 3), np.uint8)), ValueError, "C-contiguous and writeable"),
    (read_only(np.zeros((4, 6, 3), np.uint8)), ValueError, "C-contiguous and writeable"),
])
def test_wrong_out(out, error, message):
    before = bytes(out)
    with pytest.raises(error, match=message):
        korvex2.convert(GREY + 9, "rgb8", "mono8", out=out)
    assert bytes(out) == before


# --- What the library refuses ---------------------------------------------------------------------------------------

def refusal(*arguments, **options):
    with pytest.raises(korvex2.Error) as caught:
        korvex2.convert(*arguments, **options)
    return caught.value


def test_refused_pair():
    error = refusal(COLOUR, "raw8", "rgb8")
    assert error.code is korvex2.ErrorCode.INVALID_PARAMETER and error.code == 7
    assert error.message == "rgb8 cannot be converted to raw8."
    assert error.cause is None
    assert str(error) == "INVALID_PARAMETER: rgb8 cannot be converted to raw8."


def test_every_reason_is_told():
    error = refusal(np.zeros((3, 5), np.uint8), "yuv422", "raw8", "rggb")
    assert error.code is korvex2.ErrorCode.IMAGE_CONVERSION_FAILED  # the library itself would answer success
    assert error.message == "A mosaic has an even number of rows; this one has 3."
    assert isinstance(error.cause, korvex2.Error) and error.__cause__ is error.cause
    assert error.cause.message == "A mosaic has an even number of columns; this one has 5."
    assert error.cause.cause is None
    text = "".join(traceback.format_exception(error))
    assert "3." in text and "5." in text and "korvex2.Error" in text


@pytest.mark.parametrize("from_, shape", [("raw8", (3, 4)), ("raw16", (4, 3)), ("raw12", (3, 4))])
@pytest.mark.parametrize("to", ["bgr8", "rgb16", "mono8", "yuv411"])
def test_odd_mosaics_leave_out_alone(from_, shape, to):
    formats = {info.name: info for info in korvex2.formats()}
    source = formats[from_]
    target = formats[str(korvex2.PixelFormat.of(to))]
    frame = np.full(source.nbytes(*shape), 7, np.uint8)
    out = np.full(target.nbytes(*shape) // target.dtype.itemsize, 0x5A, target.dtype)
    error = refusal(frame, to, from_, "rggb", shape=shape, out=out)
    assert "even number" in error.message
    assert (out == 0x5A).all()


def test_pictures_over_4_gib_are_refused_before_memory_is_taken():
    error = refusal(np.zeros((2**15, 2**15), np.uint8), "bgru16", "mono8")  # a gibibyte that no one touches
    assert error.code is korvex2.ErrorCode.FAILED
    assert error.message == "As bgru16, 32768 x 32768 pixels exceed 4 GiB - 1."


def test_formats_that_are_only_copied():
    signed = np.arange(-12, 12, dtype=np.int16).reshape(4, 6)
    assert np.array_equal(korvex2.convert(signed, "s_mono16", "s_mono16"), signed)
    assert refusal(signed, "mono16", "s_mono16").code is korvex2.ErrorCode.INVALID_PARAMETER


def test_errors_travel_between_processes():
    error = refusal(np.zeros((3, 5), np.uint8), "rgb8", "raw8", "rggb")
    for other in (pickle.loads(pickle.dumps(error)), copy.copy(error)):
        assert isinstance(other, korvex2.Error)
        assert (other.code, other.message, other.cause.message) == (error.code, error.message, error.cause.message)
