#include "WeightedDirectional.h"

#include "WeightedDirectional-inl.h"
#include "WeightedDirectionalStages.h"

namespace Korvex2::Bayer {
namespace {

// d is green minus red or blue; `level` is one level of eight bits (1, or 257 for 16 bits). Steps
// 1, 2 up to the sums, and the arms of 3 are in integers, fourfold and fortyfold, and exact; the
// rest is in floats in the unit of the samples.
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
// About 110 operations per pixel, 45 of them on integers; five divisions for two pixels. Columns of
// blocks are wide, so that pictures are written in long runs, and a multiple of vectors with their
// surroundings.
//
// Sums are at most 9 * 8 * 255 in size for samples of 8 bits, and 257 times as much for 16 bits.

constexpr auto& kPlan = WeightedDirectionalStages::kPlan;

// A pixel depends on 15 x 15 samples.
constexpr int kMargin = 7;
static_assert(kPlan.margin == Reach{kMargin, kMargin, kMargin, kMargin});

std::size_t ScratchBytes(int, int cols, int sampleBytes) {
  return kPlan.ScratchBytes(cols, sampleBytes);
}

BlockFunctions Functions([[maybe_unused]] InstructionSet set) {
#if KORVEX2_WITH_HIGHWAY
  if (set != InstructionSet::Plain) return WeightedDirectionalSimd(set);
#endif
  return Plain::WeightedDirectionalFunctions();
}

}  // namespace

const Method kWeightedDirectional = {.margin = kMargin,
                                     .blockRows = 128,
                                     .blockCols = 992,
                                     .scratchBytes = ScratchBytes,
                                     .functions = Functions};

}  // namespace Korvex2::Bayer
