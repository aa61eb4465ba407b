#include "Rigorous.h"

#include "FloatRows.h"
#include "Rigorous-inl.h"

namespace Korvex2::Bayer {
namespace {

// d is green minus red or blue; m is the mosaic. All values are floats in the unit of the samples;
// `level` is one level of eight bits (1, or 257 for 16 bits), `noise` is 0.1 level^2.
//
// 1. At every pixel the row's other colour is estimated from the row, and the column's other colour
//    from the column. The first estimate is
//
//        (-1  2  2  2 -1) / 4    over five samples of the row or column.
//
//    Two rounds of residual interpolation improve it. In windows of samples two apart
//
//        round 1:  3 along the direction x 5 across        round 2:  5 x 5
//
//    the line m = a * other + b is fitted (least squares, variance + noise below the stroke). Means
//    of the lines over the same window give each sample a residual; means of the lines of the
//    places in between, which hold the other colour, give a new estimate there, to which the mean
//    of the two adjacent residuals is added.
//
// 2. |d(after) - d(before)| along each direction, summed over 3x3 (narrow) and 5x5 (wide) pixels;
//    weights 1 / (level + sum)^2.
//
// 3. d at red and blue samples: four arms, .6 of the pixel and .4 of the neighbour, each with the
//    narrow weight of that neighbour. The opposite colour's d there from the four diagonal
//    neighbours, each weighted by 1 / (level + |step of green| + |step of the colour across|). Both
//    at green samples: means of the four sides.
//
// 4. r: the squared changes of d over 9x9 pixels, divided by those of green. Where colours follow
//    green it is small.
//
// 5. Twice: d moves towards the mean of its four sides (wide weights) by 1 / (1 + 1000 r^2), and
//    the rest of 3 is done again.
//
// 6. Red and blue twice over: green minus d as in 3 (narrow weights); and guided by green: a line
//    through 5x5 samples of the colour, the mean of least squares and of least Laplacian of the
//    remainder, averaged over 5x5 such lines, plus the residuals interpolated as d is; at green
//    samples this moves by up to .4 towards the directional estimate of 1. The former counts
//    1 / (1 + 2000 r^2), the latter the rest. Brought into range and rounded to the nearest, once.
//
//    A pixel depends on 42 rows and columns around it.
//
// About 900 operations per pixel, 15 of them divisions.

std::size_t ScratchBytes(int, int cols, int) {
  return FloatRowsBytes(kRigorousRows, cols);
}

BlockFunctions Functions([[maybe_unused]] InstructionSet set) {
#if KORVEX2_WITH_HIGHWAY
  if (set != InstructionSet::Plain) return RigorousSimd(set);
#endif
  return Plain::RigorousFunctions();
}

}  // namespace

const Method kRigorous = {.margin = kRigorousReach,
                          .blockRows = 512,
                          .blockCols = 256,
                          .scratchBytes = ScratchBytes,
                          .functions = Functions};

}  // namespace Korvex2::Bayer
