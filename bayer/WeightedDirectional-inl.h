// The loops of the weighted directional filter; what they compute stands in
// WeightedDirectional.cpp.

#if defined(KORVEX2_BAYER_WEIGHTED_DIRECTIONAL_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KORVEX2_BAYER_WEIGHTED_DIRECTIONAL_INL_H_
#undef KORVEX2_BAYER_WEIGHTED_DIRECTIONAL_INL_H_
#else
#define KORVEX2_BAYER_WEIGHTED_DIRECTIONAL_INL_H_
#endif

#include "ColourDifferences-inl.h"
#include "FloatRows-inl.h"

KORVEX2_BAYER_BEGIN_TARGET_CODE

// Weights of both directions at every place, by one division; the four sides of a pixel are those
// of its neighbours. `down` holds the sums down the columns of the changes along columns.
inline void weights(In above, In here, In below, In down, float level, Columns c, Row along,
                    Row across) {
  for (int x = c.begin; x < c.end; ++x) {
    const float alongSum = level + ((above[x] + below[x]) + here[x]);
    const float acrossSum = level + ((down[x - 1] + down[x + 1]) + down[x]);
    const float inverse = 1.0F / (alongSum * acrossSum);
    const float a = inverse * acrossSum;
    const float b = inverse * alongSum;
    along[x] = a * a * a;
    across[x] = b * b * b;
  }
}

inline float arm(float here, float one, float two) {
  return 0.5F * here + 0.4F * one + 0.1F * two;
}

// Green minus colour where the mosaic holds the colour, green everywhere, and the inverse of the
// four sides' weights.
inline void ownDifference(In twoAbove, In above, In here, In below, In twoBelow, In along,
                          In weightAbove, In weightBelow, In weightHere, In m, In colour, Columns c,
                          Row out, Row green, Row perWeight) {
  for (int x = c.begin; x < c.end; ++x) {
    const Sides sides{weightAbove[x], weightBelow[x], weightHere[x - 1], weightHere[x + 1]};
    const float difference = sides.sum(
        arm(here[x], above[x], twoAbove[x]), arm(here[x], below[x], twoBelow[x]),
        arm(along[x], along[x - 1], along[x - 2]), arm(along[x], along[x + 1], along[x + 2]));
    const float inverse = 1.0F / sides.sum();
    perWeight[x] = inverse;
    out[x] = difference * inverse;
    green[x] = m[x] + colour[x] * (difference * inverse);
  }
}

// The row's own colour lies beside a green sample, the opposite colour above and below it.
template <typename Sample>
void weightedPixels(In ownAbove, In ownHere, In ownBelow, In oppositeAbove, In oppositeHere,
                    In oppositeBelow, In weightAbove, In weightBelow, In weightHere, In perWeight,
                    In m, In green, In colour, In greenPlaces, int end, Sample* __restrict ownOut,
                    Sample* __restrict greenOut, Sample* __restrict oppositeOut) {
  for (int x = 0; x < end; ++x) {
    const Sides sides{weightAbove[x], weightBelow[x], weightHere[x - 1], weightHere[x + 1]};
    const float ownDifference =
        sides.sum(oppositeAbove[x], oppositeBelow[x], ownHere[x - 1], ownHere[x + 1]) *
        perWeight[x];
    const float otherDifference =
        sides.sum(ownAbove[x], ownBelow[x], oppositeHere[x - 1], oppositeHere[x + 1]) *
        perWeight[x];
    ownOut[x] = rounded<Sample>(m[x] - greenPlaces[x] * ownDifference);
    greenOut[x] = rounded<Sample>(green[x]);
    oppositeOut[x] = rounded<Sample>(
        green[x] - (colour[x] * oppositeHere[x] + greenPlaces[x] * otherDifference));
  }
}

template <typename Sample>
void weightedDirectional(const Block<Sample>& block) {
  const int rows = block.rows;
  const int cols = block.cols;
  const Columns columns = columnsAround(cols, 7);
  const std::ptrdiff_t stride = floatStride(cols);
  constexpr float kLevel = levelOf<Sample>();
  float* scratch = static_cast<float*>(block.scratch);
  const Ring<8> mosaic(scratch, stride);
  const Ring<8> across(scratch, stride);
  const Ring<4> along(scratch, stride);
  const Ring<4> changesAcross(scratch, stride);
  const Ring<4> sumsAlong(scratch, stride);
  const Ring<8> weightsAcross(scratch, stride);
  const Ring<4> weightsAlong(scratch, stride);
  const Ring<4> own(scratch, stride);
  const Ring<4> green(scratch, stride);
  const Ring<4> opposite(scratch, stride);
  const Ring<4> perWeight(scratch, stride);
  const Ring<1> temporary(scratch, stride);
  const Places places(scratch, stride);
  // Each step runs as soon as the rows that it looks at are there, for the rows within its reach of
  // the block.
  const auto within = [rows](int y, int reach) { return -reach <= y && y < rows + reach; };
  for (int last = -7; last < rows + 7; ++last) {
    floatRow(block.mosaic[last], columns, mosaic[last]);
    if (const int y = last - 2; within(y, 5)) {
      const float* const colour = places.colour(colourParity(block, y));
      differenceAlong(mosaic[y], colour, columns, along[y]);
      differenceAcross(mosaic[y - 2], mosaic[y - 1], mosaic[y], mosaic[y + 1], mosaic[y + 2],
                       colour, columns, across[y]);
      changeAlong(along[y], columns, temporary[0]);
      sum3(temporary[0], columns, sumsAlong[y]);
    }
    if (const int y = last - 3; within(y, 4)) {
      changeAcross(across[y - 1], across[y + 1], columns, changesAcross[y]);
    }
    if (const int y = last - 4; within(y, 3)) {
      sumOf3(changesAcross[y - 1], changesAcross[y], changesAcross[y + 1], columns, temporary[0]);
      weights(sumsAlong[y - 1], sumsAlong[y], sumsAlong[y + 1], temporary[0], kLevel, columns,
              weightsAlong[y], weightsAcross[y]);
    }
    if (const int y = last - 5; within(y, 2)) {
      ownDifference(across[y - 2], across[y - 1], across[y], across[y + 1], across[y + 2], along[y],
                    weightsAcross[y - 1], weightsAcross[y + 1], weightsAlong[y], mosaic[y],
                    places.colour(colourParity(block, y)), columns, own[y], green[y], perWeight[y]);
    }
    if (const int y = last - 6; within(y, 1)) {
      oppositeDifference(own[y - 1], own[y + 1], green[y - 1], green[y], green[y + 1],
                         mosaic[y - 1], mosaic[y + 1], kLevel, columns, opposite[y]);
    }
    if (const int y = last - 7; within(y, 0)) {
      const bool redRow = (y & 1) == block.redRow;
      const int parity = colourParity(block, y);
      const std::ptrdiff_t offset = y * block.stride;
      weightedPixels(own[y - 1], own[y], own[y + 1], opposite[y - 1], opposite[y], opposite[y + 1],
                     weightsAcross[y - 1], weightsAcross[y + 1], weightsAlong[y], perWeight[y],
                     mosaic[y], green[y], places.colour(parity), places.green(parity),
                     roundedUp(cols), (redRow ? block.red : block.blue) + offset,
                     block.green + offset, (redRow ? block.blue : block.red) + offset);
    }
  }
}

inline BlockFunctions weightedDirectionalFunctions() {
  return {weightedDirectional<std::uint8_t>, weightedDirectional<std::uint16_t>};
}

KORVEX2_BAYER_END_TARGET_CODE

#endif
