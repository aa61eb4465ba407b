#include "WeightedDirectional.h"

#include "FloatRows.h"
#include "WeightedDirectional-inl.h"

namespace Korvex2::Bayer {
namespace {

// d is green minus red or blue, whichever of them the pixel's row (or column) holds. All values are
// floats in the unit of the samples; `level` is one level of eight bits (1, or 257 for 16 bits).
//
// 1. Two planes of differences, along rows and along columns, at every pixel, from five samples:
//
//        along a row:  c  g  c  g  c        along a column: the same downwards
//                     -1  2 -2  2 -1  / 4   (negated where the middle is green)
//
// 2. How steady each plane is: |d(after) - d(before)| along its direction, summed over 3x3 pixels.
//    Its weight is w = 1 / (level + sum)^3.
//
// 3. d at a red or blue sample: the mean of four arms, each weighted with the w of the neighbour on
//    that side (w along rows for west and east, along columns for north and south):
//
//                       .1
//                       .4
//               .1  .4  .5  .4  .1          (each arm takes the middle with .5)
//                       .4
//                       .1
//
// 4. d of the opposite colour there: the mean of the four diagonal neighbours, each weighted by
//    1 / (level + |step of green to it| + |step of the opposite colour across|).
//
// 5. d of both colours at green samples: the mean of north, south, west and east with the weights
//    of 3.
//
// 6. Red or blue is green minus d; brought into range and rounded to the nearest, once.
//
// About 110 operations per pixel, 3 of them divisions.

constexpr int kRingRows = 8 + 8 + 4 + 4 + 4 + 8 + 4 + 4 + 4 + 4 + 4 + 1 + 1;

std::size_t scratchBytes(int, int cols, int) {
  return floatRowsBytes(kRingRows, cols);
}

BlockFunctions functions([[maybe_unused]] Target target) {
#if KORVEX2_WITH_HIGHWAY
  if (target != Target::kPlain) return weightedDirectionalSimd(target);
#endif
  return Plain::weightedDirectionalFunctions();
}

}  // namespace

const Method kWeightedDirectional = {.margin = 7,
                                     .blockRows = 256,
                                     .blockCols = 512,
                                     .scratchBytes = scratchBytes,
                                     .functions = functions};

}  // namespace Korvex2::Bayer
