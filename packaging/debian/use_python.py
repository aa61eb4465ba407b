"""Uses the installed Python package: one conversion, one refusal."""

import korvex2
import numpy

picture = korvex2.convert(numpy.full((4, 6), 42, numpy.uint8), to="bgru", from_="mono8")
assert picture.shape == (4, 6, 4) and (picture[..., :3] == 42).all() and (picture[..., 3] == 255).all()
try:
    korvex2.convert(numpy.zeros((4, 6), numpy.uint8), to="raw8", from_="mono8")
except korvex2.Error as error:
    print("refused:", error)
else:
    raise SystemExit("a mosaic was made of grey")
print(korvex2.__file__, korvex2.__version__, picture[0, 0])
