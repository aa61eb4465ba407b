#include "DirectionalFilter.h"

#include "DirectionalFilter-inl.h"
#include "FloatRows.h"

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
// 2. The direction: that of the plane whose |d(after) - d(before)| along it, summed over 5x5
// pixels,
//    is the smaller; both by halves if they are equal.
//
// 3. d at a red or blue sample: the plane of that direction, smoothed along it with
//    (.1 .3 .5 .3 .1) / 1.3.
//
// 4. d of the opposite colour there: the mean of the four diagonal neighbours, each weighted by
//    1 / (level + |step of green to it| + |step of the opposite colour across|).
//
// 5. d of both colours at green samples: the mean of the two neighbours in the pixel's direction.
//
// 6. Red or blue is green minus d; brought into range and rounded to the nearest, once.
//
// About 85 operations per pixel, one of them a division.

constexpr int kRingRows = 5 * 8 + 5 * 4 + 1;

std::size_t ScratchBytes(int, int cols, int) {
  return FloatRowsBytes(kRingRows, cols);
}

BlockFunctions Functions([[maybe_unused]] InstructionSet set) {
#if KORVEX2_WITH_HIGHWAY
  if (set != InstructionSet::Plain) return DirectionalFilterSimd(set);
#endif
  return Plain::DirectionalFilterFunctions();
}

}  // namespace

const Method kDirectionalFilter = {.margin = kDirectionalFilterReach,
                                   .blockRows = 256,
                                   .blockCols = 512,
                                   .scratchBytes = ScratchBytes,
                                   .functions = Functions};

}  // namespace Korvex2::Bayer
