// The loops of the directional filter; what they compute stands in DirectionalFilter.cpp.

#if defined(KORVEX2_BAYER_DIRECTIONAL_FILTER_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KORVEX2_BAYER_DIRECTIONAL_FILTER_INL_H_
#undef KORVEX2_BAYER_DIRECTIONAL_FILTER_INL_H_
#else
#define KORVEX2_BAYER_DIRECTIONAL_FILTER_INL_H_
#endif

#include "ColourDifferences-inl.h"
#include "DirectionalFilter.h"
#include "FloatRows-inl.h"

KORVEX2_BAYER_BEGIN_TARGET_CODE

// Five changes along the row.
inline void Sum5Along(In a, Columns c, Row out) {
  for (int x = c.begin; x < c.end; ++x) {
    out[x] = ((a[x - 2] + a[x + 2]) + (a[x - 1] + a[x + 1])) + a[x];
  }
}

inline void Sum5Across(In a0, In a1, In a2, In a3, In a4, Columns c, Row out) {
  for (int x = c.begin; x < c.end; ++x) out[x] = ((a0[x] + a4[x]) + (a1[x] + a3[x])) + a2[x];
}

// How much the row's direction counts: 1 if the difference along the row changes less, 0 if it
// changes more, 1/2 if neither does.
inline void Decide(In alongSums, In acrossSums, Columns c, Row share) {
  for (int x = c.begin; x < c.end; ++x) {
    const float less = alongSums[x] < acrossSums[x] ? 0.5F : 0.0F;
    const float more = alongSums[x] > acrossSums[x] ? 0.5F : 0.0F;
    share[x] = (0.5F + less) - more;
  }
}

inline float Smoothed(float before2, float before, float here, float after, float after2) {
  constexpr float kAll = 1.3F;
  return (0.5F / kAll) * here +
         ((0.3F / kAll) * (before + after) + (0.1F / kAll) * (before2 + after2));
}

// Green minus colour where the mosaic holds the colour, and green everywhere.
inline void ChosenDifference(In twoAbove, In above, In here, In below, In twoBelow, In along,
                             In share, In m, In colour, Columns c, Row out, Row green) {
  for (int x = c.begin; x < c.end; ++x) {
    const float v = Smoothed(twoAbove[x], above[x], here[x], below[x], twoBelow[x]);
    const float h = Smoothed(along[x - 2], along[x - 1], along[x], along[x + 1], along[x + 2]);
    const float difference = share[x] * h + (1 - share[x]) * v;
    out[x] = difference;
    green[x] = m[x] + colour[x] * difference;
  }
}

// The row's own colour lies beside a green sample, the opposite colour above and below it.
template <typename Sample>
void ChosenPixels(In ownAbove, In ownHere, In ownBelow, In oppositeAbove, In oppositeHere,
                  In oppositeBelow, In share, In m, In green, In colour, In greenPlaces, int end,
                  Sample* __restrict ownOut, Sample* __restrict greenOut,
                  Sample* __restrict oppositeOut) {
  for (int x = 0; x < end; ++x) {
    const float h = 0.5F * share[x];
    const float v = 0.5F * (1 - share[x]);
    const float ownDifference =
        h * (ownHere[x - 1] + ownHere[x + 1]) + v * (oppositeAbove[x] + oppositeBelow[x]);
    const float otherDifference =
        h * (oppositeHere[x - 1] + oppositeHere[x + 1]) + v * (ownAbove[x] + ownBelow[x]);
    ownOut[x] = Rounded<Sample>(m[x] - greenPlaces[x] * ownDifference);
    greenOut[x] = Rounded<Sample>(green[x]);
    oppositeOut[x] = Rounded<Sample>(
        green[x] - (colour[x] * oppositeHere[x] + greenPlaces[x] * otherDifference));
  }
}

template <typename Sample>
void DirectionalFilter(const Block<Sample>& block) {
  const int rows = block.rows;
  const int cols = block.cols;
  const Columns columns = ColumnsAround(cols, kDirectionalFilterReach);
  const std::ptrdiff_t stride = FloatStride(cols);
  constexpr float kLevel = LevelOf<Sample>();
  auto* scratch = static_cast<float*>(block.scratch);
  const Ring<8> mosaic(scratch, stride);
  const Ring<8> across(scratch, stride);
  const Ring<8> along(scratch, stride);
  const Ring<8> changesAcross(scratch, stride);
  const Ring<8> sumsAlong(scratch, stride);
  const Ring<4> shares(scratch, stride);
  const Ring<4> own(scratch, stride);
  const Ring<4> green(scratch, stride);
  const Ring<4> opposite(scratch, stride);
  const Ring<4> t(scratch, stride);
  const Places places(scratch, stride);
  const auto colour = [&](int y) { return places.Colour(ColourParity(block, y)); };
  for (int last = -kDirectionalFilterReach; last < rows + kDirectionalFilterReach; ++last) {
    FloatRow(block.mosaic[last], columns, mosaic[last]);
    int y = last - 2;
    DifferenceAlong(mosaic[y], colour(y), columns, along[y]);
    DifferenceAcross(mosaic[y - 2], mosaic[y - 1], mosaic[y], mosaic[y + 1], mosaic[y + 2],
                     colour(y), columns, across[y]);
    ChangeAlong(along[y], columns, t[0]);
    Sum5Along(t[0], columns, sumsAlong[y]);
    ChangeAcross(across[y - 2], across[y], columns, changesAcross[y - 1]);
    y = last - 5;
    Sum5Across(sumsAlong[y - 2], sumsAlong[y - 1], sumsAlong[y], sumsAlong[y + 1], sumsAlong[y + 2],
               columns, t[0]);
    Sum5Across(changesAcross[y - 2], changesAcross[y - 1], changesAcross[y], changesAcross[y + 1],
               changesAcross[y + 2], columns, t[1]);
    Sum5Along(t[1], columns, t[2]);
    Decide(t[0], t[2], columns, shares[y]);
    ChosenDifference(across[y - 2], across[y - 1], across[y], across[y + 1], across[y + 2],
                     along[y], shares[y], mosaic[y], colour(y), columns, own[y], green[y]);
    y = last - 6;
    OppositeDifference(own[y - 1], own[y + 1], green[y - 1], green[y], green[y + 1], mosaic[y - 1],
                       mosaic[y + 1], kLevel, columns, opposite[y]);
    y = last - kDirectionalFilterReach;
    if (y < 0) continue;
    const bool redRow = (y & 1) == block.redRow;
    const std::ptrdiff_t offset = y * block.stride;
    ChosenPixels(own[y - 1], own[y], own[y + 1], opposite[y - 1], opposite[y], opposite[y + 1],
                 shares[y], mosaic[y], green[y], colour(y), places.Green(ColourParity(block, y)),
                 RoundedUp(cols), (redRow ? block.red : block.blue) + offset, block.green + offset,
                 (redRow ? block.blue : block.red) + offset);
  }
}

inline BlockFunctions DirectionalFilterFunctions() {
  return {DirectionalFilter<std::uint8_t>, DirectionalFilter<std::uint16_t>};
}

KORVEX2_BAYER_END_TARGET_CODE

#endif
