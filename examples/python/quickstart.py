"""A Bayer mosaic becomes a colour picture."""

import numpy as np

import korvex2

# A frame as a camera sends it: red, green and blue samples in 2 x 2 tiles, here of a single orange.
mosaic = np.empty((480, 640), np.uint8)
mosaic[0::2, 0::2] = 230  # red
mosaic[0::2, 1::2] = 120  # green
mosaic[1::2, 0::2] = 120
mosaic[1::2, 1::2] = 20  # blue

picture = korvex2.convert(mosaic, to="rgb8", from_="raw8", tile="rggb", method="hq_linear")
print(picture.shape, picture.dtype, picture[100, 100])

grey = korvex2.convert(picture, to="mono16", from_="rgb8")
print(grey.shape, grey.dtype, grey[100, 100])

try:
    korvex2.convert(mosaic[:-1], to="rgb8", from_="raw8", tile="rggb")
except korvex2.Error as error:
    print(error.code.name, "-", error.message)
