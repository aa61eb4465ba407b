/// Differences of green and red or blue, as the directional methods share them. See
/// FloatRows-inl.h.

#if defined(KORVEX2_BAYER_COLOUR_DIFFERENCES_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KORVEX2_BAYER_COLOUR_DIFFERENCES_INL_H_
#undef KORVEX2_BAYER_COLOUR_DIFFERENCES_INL_H_
#else
#define KORVEX2_BAYER_COLOUR_DIFFERENCES_INL_H_
#endif

#include "FloatRows-inl.h"

KORVEX2_BAYER_BEGIN_TARGET_CODE

// Green minus red or blue at every place, the missing one of both estimated from five samples of
// the row: (-c + 2g - 2c + 2g - c) / 4 where the middle is red or blue, the
// negative of it where the middle is green.
inline void DifferenceAlong(In m, In colour, Columns c, Row out) {
  for (int x = c.begin; x < c.end; ++x) {
    const float other = 2 * (m[x - 1] + m[x + 1]) - 2 * m[x] - (m[x - 2] + m[x + 2]);
    out[x] = (0.5F * colour[x] - 0.25F) * other;
  }
}

// The same along columns; m2 is the row itself.
inline void DifferenceAcross(In m0, In m1, In m2, In m3, In m4, In colour, Columns c, Row out) {
  for (int x = c.begin; x < c.end; ++x) {
    const float other = 2 * (m1[x] + m3[x]) - 2 * m2[x] - (m0[x] + m4[x]);
    out[x] = (0.5F * colour[x] - 0.25F) * other;
  }
}

inline void ChangeAlong(In d, Columns c, Row out) {
  for (int x = c.begin; x < c.end; ++x) out[x] = Magnitude(d[x + 1] - d[x - 1]);
}

inline void ChangeAcross(In above, In below, Columns c, Row out) {
  for (int x = c.begin; x < c.end; ++x) out[x] = Magnitude(below[x] - above[x]);
}

inline void Sum3(In a, Columns c, Row out) {
  for (int x = c.begin; x < c.end; ++x) out[x] = (a[x - 1] + a[x + 1]) + a[x];
}

inline void SumOf3(In above, In here, In below, Columns c, Row out) {
  for (int x = c.begin; x < c.end; ++x) out[x] = (above[x] + below[x]) + here[x];
}

// How much the four sides count; sums with these weights.
struct Sides {
  float north, south, west, east;

  float Sum() const { return (north + south) + (west + east); }
  float Sum(float n, float s, float w, float e) const {
    return (north * n + south * s) + (west * w + east * e);
  }
  float Sum(Sides of) const { return Sum(of.north, of.south, of.west, of.east); }
};

// What the four diagonal neighbours of a place hold.
struct Diagonals {
  float nw, ne, sw, se;
};

// Green minus the opposite colour where the mosaic holds red or blue: the mean over the diagonal
// neighbours, weighted by 1 / (level + |step of green| + |step of the opposite colour|). The
// weights are brought to a common denominator, which takes one division instead of five.
inline float OppositeDifferenceAt(Diagonals own, Diagonals green, float greenHere, Diagonals colour,
                                  float level) {
  const float down = level + Magnitude(colour.nw - colour.se);
  const float up = level + Magnitude(colour.ne - colour.sw);
  const float nw = down + Magnitude(greenHere - green.nw);
  const float se = down + Magnitude(greenHere - green.se);
  const float ne = up + Magnitude(greenHere - green.ne);
  const float sw = up + Magnitude(greenHere - green.sw);
  const float downProduct = nw * se;
  const float upProduct = ne * sw;
  const float downSum = own.nw * se + own.se * nw;
  const float upSum = own.ne * sw + own.sw * ne;
  return (downSum * upProduct + upSum * downProduct) /
         ((nw + se) * upProduct + (ne + sw) * downProduct);
}

// The same on whole rows.
inline void OppositeDifference(In ownAbove, In ownBelow, In greenAbove, In greenHere, In greenBelow,
                               In above, In below, float level, Columns c, Row out) {
  const auto diagonals = [](const float* rowAbove, const float* rowBelow, int x) {
    return Diagonals{rowAbove[x - 1], rowAbove[x + 1], rowBelow[x - 1], rowBelow[x + 1]};
  };
  for (int x = c.begin; x < c.end; ++x) {
    out[x] =
        OppositeDifferenceAt(diagonals(ownAbove, ownBelow, x), diagonals(greenAbove, greenBelow, x),
                             greenHere[x], diagonals(above, below, x), level);
  }
}

KORVEX2_BAYER_END_TARGET_CODE

#endif
