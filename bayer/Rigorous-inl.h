// The loops of the rigorous method; what they compute stands in Rigorous.cpp.

#if defined(KORVEX2_BAYER_RIGOROUS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KORVEX2_BAYER_RIGOROUS_INL_H_
#undef KORVEX2_BAYER_RIGOROUS_INL_H_
#else
#define KORVEX2_BAYER_RIGOROUS_INL_H_
#endif

#include <cassert>

#include "ColourDifferences-inl.h"
#include "FloatRows-inl.h"
#include "Rigorous.h"

KORVEX2_BAYER_BEGIN_TARGET_CODE

// Sums of places two apart, outermost first: (1 + 2 * kHalf) of them.
template <int kHalf, typename Term>
[[gnu::always_inline]] inline float EveryOther(Term term, int x) {
  if constexpr (kHalf == 1) {
    return (term(x - 2) + term(x + 2)) + term(x);
  } else {
    return ((term(x - 4) + term(x + 4)) + (term(x - 2) + term(x + 2))) + term(x);
  }
}

template <int kHalf>
void EveryOtherAlong(In a, Columns c, Row out) {
  for (int x = c.begin; x < c.end; ++x) {
    out[x] = EveryOther<kHalf>([a](int i) { return a[i]; }, x);
  }
}

// The same of the products of two rows.
template <int kHalf>
void EveryOtherAlong(In a, In b, Columns c, Row out) {
  for (int x = c.begin; x < c.end; ++x) {
    out[x] = EveryOther<kHalf>([a, b](int i) { return a[i] * b[i]; }, x);
  }
}

inline void EveryOther3(In a, In b, In d, Columns c, Row out) {
  for (int x = c.begin; x < c.end; ++x) out[x] = (a[x] + d[x]) + b[x];
}

inline void EveryOther5(In a0, In a1, In a2, In a3, In a4, Columns c, Row out) {
  for (int x = c.begin; x < c.end; ++x) out[x] = ((a0[x] + a4[x]) + (a1[x] + a3[x])) + a2[x];
}

template <int kHalf, typename Rows>
void EveryOtherAcross(const Rows& rows, int y, Columns c, Row out) {
  if constexpr (kHalf == 1) {
    EveryOther3(rows[y - 2], rows[y], rows[y + 2], c, out);
  } else {
    EveryOther5(rows[y - 4], rows[y - 2], rows[y], rows[y + 2], rows[y + 4], c, out);
  }
}

// Sums of the places in between: one to either side, or one and three.
template <int kHalf>
void BetweenAlong(In a, Columns c, Row out) {
  for (int x = c.begin; x < c.end; ++x) {
    const float near = a[x - 1] + a[x + 1];
    out[x] = kHalf == 1 ? near : (a[x - 3] + a[x + 3]) + near;
  }
}

inline void SumOf2(In a, In b, Columns c, Row out) {
  for (int x = c.begin; x < c.end; ++x) out[x] = a[x] + b[x];
}

inline void SumOf2And2(In a, In b, In near0, In near1, Columns c, Row out) {
  for (int x = c.begin; x < c.end; ++x) out[x] = (a[x] + b[x]) + (near0[x] + near1[x]);
}

template <int kHalf, typename Rows>
void BetweenAcross(const Rows& rows, int y, Columns c, Row out) {
  if constexpr (kHalf == 1) {
    SumOf2(rows[y - 1], rows[y + 1], c, out);
  } else {
    SumOf2And2(rows[y - 3], rows[y + 3], rows[y - 1], rows[y + 1], c, out);
  }
}

inline void Product(In a, In b, Columns c, Row out) {
  for (int x = c.begin; x < c.end; ++x) out[x] = a[x] * b[x];
}

// The line mosaic = slope * other + offset through the samples of a window, from their sums.
inline void FitLine(In sumM, In sumO, In sumMO, In sumOO, float perSample, float noise, Columns c,
                    Row slope, Row offset) {
  for (int x = c.begin; x < c.end; ++x) {
    const float meanM = sumM[x] * perSample;
    const float meanO = sumO[x] * perSample;
    const float covariance = sumMO[x] * perSample - meanM * meanO;
    const float variance = sumOO[x] * perSample - meanO * meanO;
    const float a = covariance / (variance + noise);
    slope[x] = a;
    offset[x] = meanM - a * meanO;
  }
}

// What the mean line of the window leaves of the sample itself.
inline void Residual(In m, In other, In slopes, In offsets, float perLine, Columns c, Row out) {
  for (int x = c.begin; x < c.end; ++x) {
    out[x] = m[x] - ((slopes[x] * perLine) * other[x] + offsets[x] * perLine);
  }
}

// What the mean line of the neighbours, which hold the other colour, makes of the sample.
inline void Tentative(In m, In slopes, In offsets, float perLine, Columns c, Row out) {
  for (int x = c.begin; x < c.end; ++x) {
    out[x] = (slopes[x] * perLine) * m[x] + offsets[x] * perLine;
  }
}

inline void AddMeanAlong(In a, In r, Columns c, Row out) {
  for (int x = c.begin; x < c.end; ++x) out[x] = a[x] + 0.5F * (r[x - 1] + r[x + 1]);
}

inline void AddMeanAcross(In a, In above, In below, Columns c, Row out) {
  for (int x = c.begin; x < c.end; ++x) out[x] = a[x] + 0.5F * (above[x] + below[x]);
}

inline void FirstEstimateAlong(In m, Columns c, Row out) {
  for (int x = c.begin; x < c.end; ++x) {
    out[x] = 0.5F * (m[x - 1] + m[x + 1]) + 0.25F * (2 * m[x] - (m[x - 2] + m[x + 2]));
  }
}

inline void FirstEstimateAcross(In m0, In m1, In m2, In m3, In m4, Columns c, Row out) {
  for (int x = c.begin; x < c.end; ++x) {
    out[x] = 0.5F * (m1[x] + m3[x]) + 0.25F * (2 * m2[x] - (m0[x] + m4[x]));
  }
}

// Green minus colour from the sample and the estimate of the other.
inline void SignedDifference(In m, In other, In colour, Columns c, Row out) {
  for (int x = c.begin; x < c.end; ++x) out[x] = (2 * colour[x] - 1) * (other[x] - m[x]);
}

// One round of residual interpolation along rows. Windows span 1 + 2 * kHalf samples along the row
// and five rows, two apart. Runs eight rows behind the estimate it improves.
template <int kHalf>
class RoundAlong {
 public:
  static constexpr int kLag = 8;
  RoundAlong(float*& scratch, std::ptrdiff_t stride)
      : m_sumM(scratch, stride),
        m_sumO(scratch, stride),
        m_sumMO(scratch, stride),
        m_sumOO(scratch, stride),
        m_slope(scratch, stride),
        m_offset(scratch, stride),
        m_slopeBetween(scratch, stride),
        m_offsetBetween(scratch, stride),
        m_t(scratch, stride) {}

  // `other` holds the rows up to y; writes row y - kLag of `improved`.
  template <typename Mosaic, typename Other, typename Out>
  void Step(const Mosaic& m, const Other& other, int y, float noise, Columns c,
            const Out& improved) {
    EveryOtherAlong<kHalf>(m[y], c, m_sumM[y]);
    EveryOtherAlong<kHalf>(other[y], c, m_sumO[y]);
    EveryOtherAlong<kHalf>(m[y], other[y], c, m_sumMO[y]);
    EveryOtherAlong<kHalf>(other[y], other[y], c, m_sumOO[y]);
    const int f = y - 4;
    EveryOtherAcross<2>(m_sumM, f, c, m_t[0]);
    EveryOtherAcross<2>(m_sumO, f, c, m_t[1]);
    EveryOtherAcross<2>(m_sumMO, f, c, m_t[2]);
    EveryOtherAcross<2>(m_sumOO, f, c, m_t[3]);
    FitLine(m_t[0], m_t[1], m_t[2], m_t[3], 1.0F / (5 * (1 + 2 * kHalf)), noise, c, m_t[4], m_t[5]);
    EveryOtherAlong<kHalf>(m_t[4], c, m_slope[f]);
    EveryOtherAlong<kHalf>(m_t[5], c, m_offset[f]);
    BetweenAlong<kHalf>(m_t[4], c, m_slopeBetween[f]);
    BetweenAlong<kHalf>(m_t[5], c, m_offsetBetween[f]);
    const int r = y - kLag;
    EveryOtherAcross<2>(m_slope, r, c, m_t[0]);
    EveryOtherAcross<2>(m_offset, r, c, m_t[1]);
    EveryOtherAcross<2>(m_slopeBetween, r, c, m_t[2]);
    EveryOtherAcross<2>(m_offsetBetween, r, c, m_t[3]);
    Residual(m[r], other[r], m_t[0], m_t[1], 1.0F / (5 * (1 + 2 * kHalf)), c, m_t[4]);
    Tentative(m[r], m_t[2], m_t[3], 1.0F / (5 * 2 * kHalf), c, m_t[5]);
    AddMeanAlong(m_t[5], m_t[4], c, improved[r]);
  }

 private:
  Ring<16> m_sumM, m_sumO, m_sumMO, m_sumOO, m_slope, m_offset, m_slopeBetween, m_offsetBetween;
  Ring<8> m_t;
};

// The same along columns, 4 * kHalf + 1 rows behind.
template <int kHalf>
class RoundAcross {
 public:
  static constexpr int kLag = 4 * kHalf + 1;
  RoundAcross(float*& scratch, std::ptrdiff_t stride)
      : m_mo(scratch, stride),
        m_oo(scratch, stride),
        m_slope(scratch, stride),
        m_offset(scratch, stride),
        m_residual(scratch, stride),
        m_tentative(scratch, stride),
        m_t(scratch, stride) {}

  template <typename Mosaic, typename Other, typename Out>
  void Step(const Mosaic& m, const Other& other, int y, float noise, Columns c,
            const Out& improved) {
    Product(m[y], other[y], c, m_mo[y]);
    Product(other[y], other[y], c, m_oo[y]);
    const int f = y - 2 * kHalf;
    Window(m, f, c, 0);
    Window(other, f, c, 1);
    Window(m_mo, f, c, 2);
    Window(m_oo, f, c, 3);
    FitLine(m_t[0], m_t[1], m_t[2], m_t[3], 1.0F / (5 * (1 + 2 * kHalf)), noise, c, m_slope[f],
            m_offset[f]);
    const int r = f - 2 * kHalf;
    Window(m_slope, r, c, 0);
    Window(m_offset, r, c, 1);
    Residual(m[r], other[r], m_t[0], m_t[1], 1.0F / (5 * (1 + 2 * kHalf)), c, m_residual[r]);
    WindowBetween(m_slope, r, c, 0);
    WindowBetween(m_offset, r, c, 1);
    Tentative(m[r], m_t[0], m_t[1], 1.0F / (5 * 2 * kHalf), c, m_tentative[r]);
    AddMeanAcross(m_tentative[r - 1], m_residual[r - 2], m_residual[r], c, improved[r - 1]);
  }

 private:
  template <typename Rows>
  void Window(const Rows& rows, int y, Columns c, int to) const {
    EveryOtherAcross<kHalf>(rows, y, c, m_t[4]);
    EveryOtherAlong<2>(m_t[4], c, m_t[to]);
  }
  template <typename Rows>
  void WindowBetween(const Rows& rows, int y, Columns c, int to) const {
    BetweenAcross<kHalf>(rows, y, c, m_t[4]);
    EveryOtherAlong<2>(m_t[4], c, m_t[to]);
  }

  Ring<16> m_mo, m_oo, m_slope, m_offset;
  Ring<4> m_residual, m_tentative;
  Ring<8> m_t;
};

// 1 / (level + sum)^2 over 3x3 and over 5x5 changes, the direction's own axis first.
inline void InverseSquares(In sums, float level, Columns c, Row out) {
  for (int x = c.begin; x < c.end; ++x) out[x] = 1.0F / Square(level + sums[x]);
}

inline void Sum5(In a, Columns c, Row out) {
  for (int x = c.begin; x < c.end; ++x) {
    out[x] = ((a[x - 2] + a[x + 2]) + (a[x - 1] + a[x + 1])) + a[x];
  }
}

inline void SquaredChangeAlong(In a, Columns c, Row out) {
  for (int x = c.begin; x < c.end; ++x) out[x] = Square(a[x + 1] - a[x - 1]);
}

inline void SquaredChangeAcross(In above, In below, Columns c, Row out) {
  for (int x = c.begin; x < c.end; ++x) out[x] = Square(below[x] - above[x]);
}

inline void Sum9(In a, Columns c, Row out) {
  for (int x = c.begin; x < c.end; ++x) {
    out[x] = (((a[x - 4] + a[x + 4]) + (a[x - 3] + a[x + 3])) +
              ((a[x - 2] + a[x + 2]) + (a[x - 1] + a[x + 1]))) +
             a[x];
  }
}

inline void SumOf9(In a0, In a1, In a2, In a3, In a4, In a5, In a6, In a7, In a8, Columns c,
                   Row out) {
  for (int x = c.begin; x < c.end; ++x) {
    out[x] = (((a0[x] + a8[x]) + (a1[x] + a7[x])) + ((a2[x] + a6[x]) + (a3[x] + a5[x]))) + a4[x];
  }
}

template <typename Rows>
void Sum9Across(const Rows& a, int y, Columns c, Row out) {
  SumOf9(a[y - 4], a[y - 3], a[y - 2], a[y - 1], a[y], a[y + 1], a[y + 2], a[y + 3], a[y + 4], c,
         out);
}

// Squared changes of a plane, over 9x9 places. Runs five rows behind the plane.
class Activity {
 public:
  static constexpr int kLag = 5;
  Activity(float*& scratch, std::ptrdiff_t stride)
      : m_along(scratch, stride), m_across(scratch, stride), m_t(scratch, stride) {}

  template <typename Rows>
  void Step(const Rows& plane, int y, Columns c, Row out) {
    SquaredChangeAlong(plane[y], c, m_t[0]);
    Sum9(m_t[0], c, m_along[y]);
    SquaredChangeAcross(plane[y - 2], plane[y], c, m_across[y - 1]);
    Sum9Across(m_along, y - kLag, c, m_t[0]);
    Sum9Across(m_across, y - kLag, c, m_t[1]);
    Sum9(m_t[1], c, m_t[2]);
    SumOf2(m_t[0], m_t[2], c, out);
  }

 private:
  Ring<16> m_along, m_across;
  Ring<4> m_t;
};

// The square of how much a difference changes compared to green.
inline void SquaredRatio(In difference, In green, float level, Columns c, Row out) {
  for (int x = c.begin; x < c.end; ++x) {
    out[x] = Square(difference[x] / (green[x] + 1e-3F * level * level));
  }
}

// Green minus the row's own colour: the first estimate.
inline void FirstDifference(In above, In here, In below, In along, In weightAbove, In weightBelow,
                            In weightHere, In m, In colour, Columns c, Row out, Row green) {
  for (int x = c.begin; x < c.end; ++x) {
    const Sides sides{weightAbove[x], weightBelow[x], weightHere[x - 1], weightHere[x + 1]};
    const float v = 0.6F * here[x];
    const float h = 0.6F * along[x];
    const float sum = sides.Sum(v + 0.4F * above[x], v + 0.4F * below[x], h + 0.4F * along[x - 1],
                                h + 0.4F * along[x + 1]);
    const float difference = sum / sides.Sum();
    out[x] = difference;
    green[x] = m[x] + colour[x] * difference;
  }
}

// Both differences everywhere: at red and blue they are known, at green they are means of the four
// sides.
inline void FullDifferences(In ownAbove, In ownHere, In ownBelow, In oppositeAbove, In oppositeHere,
                            In oppositeBelow, In weightAbove, In weightBelow, In weightHere,
                            In colour, In green, Columns c, Row own, Row opposite) {
  for (int x = c.begin; x < c.end; ++x) {
    const Sides sides{weightAbove[x], weightBelow[x], weightHere[x - 1], weightHere[x + 1]};
    const float inverse = 1.0F / sides.Sum();
    const float o =
        sides.Sum(oppositeAbove[x], oppositeBelow[x], ownHere[x - 1], ownHere[x + 1]) * inverse;
    const float p =
        sides.Sum(ownAbove[x], ownBelow[x], oppositeHere[x - 1], oppositeHere[x + 1]) * inverse;
    own[x] = colour[x] * ownHere[x] + green[x] * o;
    opposite[x] = colour[x] * oppositeHere[x] + green[x] * p;
  }
}

// Draws the difference towards the mean of its four sides, the more the steadier it is.
inline void Refine(In own, In above, In here, In below, In weightAbove, In weightBelow,
                   In weightHere, In ratio, In m, In colour, Columns c, Row out, Row green) {
  for (int x = c.begin; x < c.end; ++x) {
    const Sides sides{weightAbove[x], weightBelow[x], weightHere[x - 1], weightHere[x + 1]};
    const float mean = sides.Sum(above[x], below[x], here[x - 1], here[x + 1]) / sides.Sum();
    const float difference = own[x] + (mean - own[x]) / (1.0F + 1000.0F * ratio[x]);
    out[x] = difference;
    green[x] = m[x] + colour[x] * difference;
  }
}

// The Laplacian over places two away.
inline void Laplacian(In above, In here, In below, Columns c, Row out) {
  for (int x = c.begin; x < c.end; ++x) {
    out[x] = 4 * here[x] - ((above[x] + below[x]) + (here[x - 2] + here[x + 2]));
  }
}

// Sums over 5x5 places two apart, in an order that a transposition does not change.
inline void Sum25(In a0, In a1, In a2, In a3, In a4, Columns c, Row out) {
  for (int x = c.begin; x < c.end; ++x) {
    const float cross =
        ((a2[x - 2] + a2[x + 2]) + (a1[x] + a3[x])) + ((a2[x - 4] + a2[x + 4]) + (a0[x] + a4[x]));
    const float diagonal = ((a1[x - 2] + a3[x + 2]) + (a1[x + 2] + a3[x - 2])) +
                           ((a0[x - 4] + a4[x + 4]) + (a0[x + 4] + a4[x - 4]));
    const float steep = (a0[x - 2] + a4[x + 2]) + (a0[x + 2] + a4[x - 2]);
    const float flat = (a1[x - 4] + a3[x + 4]) + (a1[x + 4] + a3[x - 4]);
    out[x] = ((cross + diagonal) + (steep + flat)) + a2[x];
  }
}

template <typename Rows>
void Window25(const Rows& a, int y, Columns c, Row out) {
  Sum25(a[y - 4], a[y - 2], a[y], a[y + 2], a[y + 4], c, out);
}

// The mean of two lines through the window that give the colour from green: that of least squares
// and that of the least Laplacian of what is left over.
inline void FitColour(In sumM, In sumG, In sumMG, In sumGG, In sumLL, In sumKK, float noise,
                      Columns c, Row slope, Row offset) {
  constexpr float kPer = 1.0F / 25;
  for (int x = c.begin; x < c.end; ++x) {
    const float meanM = sumM[x] * kPer;
    const float meanG = sumG[x] * kPer;
    const float covariance = sumMG[x] * kPer - meanM * meanG;
    const float variance = sumGG[x] * kPer - meanG * meanG;
    const float a =
        0.5F * (covariance / (variance + noise) + (sumLL[x] * kPer) / (sumKK[x] * kPer + noise));
    slope[x] = a;
    offset[x] = meanM - a * meanG;
  }
}

// What the mean line makes of green, less the sample itself.
inline void GuidedResidual(In m, In green, In slopes, In offsets, Columns c, Row slope, Row offset,
                           Row out) {
  constexpr float kPer = 1.0F / 25;
  for (int x = c.begin; x < c.end; ++x) {
    const float a = slopes[x] * kPer;
    const float b = offsets[x] * kPer;
    slope[x] = a;
    offset[x] = b;
    out[x] = (a * green[x] + b) - m[x];
  }
}

inline float FourMean(In above, In below, int x) {
  return 0.25F * ((above[x - 1] + below[x + 1]) + (above[x + 1] + below[x - 1]));
}

// The colours that the guided lines and their residuals give, everywhere: own and opposite.
inline void GuidedColours(In residualAbove, In residualHere, In residualBelow, In oppositeAbove,
                          In oppositeHere, In oppositeBelow, In weightAbove, In weightBelow,
                          In weightHere, In slopeAbove, In slope, In slopeBelow, In offsetAbove,
                          In offset, In offsetBelow, In green, In m, In along, In across, Columns c,
                          Row own, Row opposite) {
  for (int x = c.begin; x < c.end; ++x) {
    const Sides sides{weightAbove[x], weightBelow[x], weightHere[x - 1], weightHere[x + 1]};
    const float inverse = 1.0F / sides.Sum();
    const float r =
        sides.Sum(oppositeAbove[x], oppositeBelow[x], residualHere[x - 1], residualHere[x + 1]) *
        inverse;
    const float s =
        sides.Sum(residualAbove[x], residualBelow[x], oppositeHere[x - 1], oppositeHere[x + 1]) *
        inverse;
    const float g = green[x];
    // Beside green: the row's colour left and right, the opposite colour above and below.
    const float beside =
        (0.5F * (slope[x - 1] + slope[x + 1]) * g + 0.5F * (offset[x - 1] + offset[x + 1])) - r;
    const float upright =
        (0.5F * (slopeAbove[x] + slopeBelow[x]) * g + 0.5F * (offsetAbove[x] + offsetBelow[x])) - s;
    const float rowShare = (sides.west + sides.east) * inverse;
    const float columnShare = (sides.north + sides.south) * inverse;
    own[x] = beside + 0.4F * rowShare * ((m[x] - along[x]) - beside);
    opposite[x] = upright + 0.4F * columnShare * ((m[x] - across[x]) - upright);
  }
}

inline void GuidedOpposite(In slopeAbove, In slopeBelow, In offsetAbove, In offsetBelow,
                           In residual, In green, Columns c, Row out) {
  for (int x = c.begin; x < c.end; ++x) {
    out[x] =
        (FourMean(slopeAbove, slopeBelow, x) * green[x] + FourMean(offsetAbove, offsetBelow, x)) -
        residual[x];
  }
}

// Where colours follow green, green minus the interpolated difference is the better estimate; where
// they do not, the guided one.
template <typename Sample>
void RigorousPixels(In ownDifference, In otherDifference, In ownGuided, In oppositeGuided,
                    In oppositeGuidedAtColour, In ownRatio, In oppositeRatio, In green, In m,
                    In colour, In greenPlaces, int end, Sample* __restrict ownOut,
                    Sample* __restrict greenOut, Sample* __restrict oppositeOut) {
  for (int x = 0; x < end; ++x) {
    const float g = green[x];
    const float guided = colour[x] * oppositeGuidedAtColour[x] + greenPlaces[x] * oppositeGuided[x];
    const float own =
        ownGuided[x] + ((g - ownDifference[x]) - ownGuided[x]) / (1.0F + 2000.0F * ownRatio[x]);
    const float opposite =
        guided + ((g - otherDifference[x]) - guided) / (1.0F + 2000.0F * oppositeRatio[x]);
    ownOut[x] = Rounded<Sample>(colour[x] * m[x] + greenPlaces[x] * own);
    greenOut[x] = Rounded<Sample>(g);
    oppositeOut[x] = Rounded<Sample>(opposite);
  }
}

template <typename Sample>
void Rigorous(const Block<Sample>& block) {
  const int rows = block.rows;
  const int cols = block.cols;
  const Columns c = ColumnsAround(cols, kRigorousReach);
  const std::ptrdiff_t stride = FloatStride(cols);
  constexpr float kLevel = LevelOf<Sample>();
  constexpr float kNoise = 0.1F * kLevel * kLevel;
  auto* scratch = static_cast<float*>(block.scratch);
  const Ring<64> mosaic(scratch, stride);
  const Ring<16> along0(scratch, stride), along1(scratch, stride), along2(scratch, stride);
  const Ring<16> across0(scratch, stride), across1(scratch, stride), across2(scratch, stride);
  RoundAlong<1> roundAlong1(scratch, stride);
  RoundAlong<2> roundAlong2(scratch, stride);
  RoundAcross<1> roundAcross1(scratch, stride);
  RoundAcross<2> roundAcross2(scratch, stride);
  const Ring<32> alongDifference(scratch, stride), acrossDifference(scratch, stride);
  const Ring<8> narrowAlong(scratch, stride), wideAlong(scratch, stride);
  const Ring<8> changesAcross(scratch, stride);
  const Ring<32> narrowWeightAlong(scratch, stride), narrowWeightAcross(scratch, stride);
  const Ring<16> wideWeightAlong(scratch, stride), wideWeightAcross(scratch, stride);
  const Ring<16> own1(scratch, stride), green1(scratch, stride), opposite1(scratch, stride);
  const Ring<16> red1(scratch, stride), blue1(scratch, stride);
  Activity redActivity(scratch, stride), greenActivity(scratch, stride),
      blueActivity(scratch, stride);
  const Ring<16> redRatio(scratch, stride), blueRatio(scratch, stride);
  const Ring<4> own2(scratch, stride), green2(scratch, stride), opposite2(scratch, stride);
  const Ring<4> red2(scratch, stride), blue2(scratch, stride);
  const Ring<16> own3(scratch, stride), green3(scratch, stride), opposite3(scratch, stride);
  const Ring<16> mg(scratch, stride), gg(scratch, stride), mk(scratch, stride), kk(scratch, stride);
  const Ring<16> slope(scratch, stride), offset(scratch, stride);
  const Ring<4> meanSlope(scratch, stride), meanOffset(scratch, stride);
  const Ring<4> guided(scratch, stride), guidedOpp(scratch, stride);
  const Ring<8> t(scratch, stride);
  const Places places(scratch, stride);
  assert(scratch - static_cast<float*>(block.scratch) == kRigorousRows * stride);

  const auto colour = [&](int y) { return places.Colour(ColourParity(block, y)); };
  const auto greens = [&](int y) { return places.Green(ColourParity(block, y)); };
  const auto isRed = [&](int y) { return (y & 1) == block.redRow; };

  for (int last = -kRigorousReach; last < rows + kRigorousReach; ++last) {
    FloatRow(block.mosaic[last], c, mosaic[last]);

    FirstEstimateAlong(mosaic[last], c, along0[last]);
    roundAlong1.Step(mosaic, along0, last, kNoise, c, along1);
    roundAlong2.Step(mosaic, along1, last - 8, kNoise, c, along2);

    int y = last - 2;
    FirstEstimateAcross(mosaic[y - 2], mosaic[y - 1], mosaic[y], mosaic[y + 1], mosaic[y + 2], c,
                        across0[y]);
    roundAcross1.Step(mosaic, across0, y, kNoise, c, across1);
    roundAcross2.Step(mosaic, across1, y - 5, kNoise, c, across2);

    y = last - 16;
    SignedDifference(mosaic[y], along2[y], colour(y), c, alongDifference[y]);
    SignedDifference(mosaic[y], across2[y], colour(y), c, acrossDifference[y]);
    ChangeAlong(alongDifference[y], c, t[0]);
    Sum3(t[0], c, narrowAlong[y]);
    Sum5(t[0], c, wideAlong[y]);
    ChangeAcross(acrossDifference[y - 2], acrossDifference[y], c, changesAcross[y - 1]);

    y = last - 19;
    SumOf3(narrowAlong[y - 1], narrowAlong[y], narrowAlong[y + 1], c, t[0]);
    InverseSquares(t[0], kLevel, c, narrowWeightAlong[y]);
    EveryOther5(wideAlong[y - 2], wideAlong[y - 1], wideAlong[y], wideAlong[y + 1],
                wideAlong[y + 2], c, t[0]);
    InverseSquares(t[0], kLevel, c, wideWeightAlong[y]);
    SumOf3(changesAcross[y - 1], changesAcross[y], changesAcross[y + 1], c, t[0]);
    Sum3(t[0], c, t[1]);
    InverseSquares(t[1], kLevel, c, narrowWeightAcross[y]);
    EveryOther5(changesAcross[y - 2], changesAcross[y - 1], changesAcross[y], changesAcross[y + 1],
                changesAcross[y + 2], c, t[0]);
    Sum5(t[0], c, t[1]);
    InverseSquares(t[1], kLevel, c, wideWeightAcross[y]);

    y = last - 20;
    FirstDifference(acrossDifference[y - 1], acrossDifference[y], acrossDifference[y + 1],
                    alongDifference[y], narrowWeightAcross[y - 1], narrowWeightAcross[y + 1],
                    narrowWeightAlong[y], mosaic[y], colour(y), c, own1[y], green1[y]);
    y = last - 21;
    OppositeDifference(own1[y - 1], own1[y + 1], green1[y - 1], green1[y], green1[y + 1],
                       mosaic[y - 1], mosaic[y + 1], kLevel, c, opposite1[y]);
    y = last - 22;
    FullDifferences(own1[y - 1], own1[y], own1[y + 1], opposite1[y - 1], opposite1[y],
                    opposite1[y + 1], wideWeightAcross[y - 1], wideWeightAcross[y + 1],
                    wideWeightAlong[y], colour(y), greens(y), c, (isRed(y) ? red1 : blue1)[y],
                    (isRed(y) ? blue1 : red1)[y]);
    redActivity.Step(red1, y, c, t[0]);
    greenActivity.Step(green1, y, c, t[1]);
    blueActivity.Step(blue1, y, c, t[2]);
    y = last - 27;
    SquaredRatio(t[0], t[1], kLevel, c, redRatio[y]);
    SquaredRatio(t[2], t[1], kLevel, c, blueRatio[y]);
    const Ring<16>& full1 = isRed(y) ? red1 : blue1;
    Refine(own1[y], full1[y - 1], full1[y], full1[y + 1], wideWeightAcross[y - 1],
           wideWeightAcross[y + 1], wideWeightAlong[y], (isRed(y) ? redRatio : blueRatio)[y],
           mosaic[y], colour(y), c, own2[y], green2[y]);
    y = last - 28;
    OppositeDifference(own2[y - 1], own2[y + 1], green2[y - 1], green2[y], green2[y + 1],
                       mosaic[y - 1], mosaic[y + 1], kLevel, c, opposite2[y]);
    y = last - 29;
    FullDifferences(own2[y - 1], own2[y], own2[y + 1], opposite2[y - 1], opposite2[y],
                    opposite2[y + 1], wideWeightAcross[y - 1], wideWeightAcross[y + 1],
                    wideWeightAlong[y], colour(y), greens(y), c, (isRed(y) ? red2 : blue2)[y],
                    (isRed(y) ? blue2 : red2)[y]);
    y = last - 30;
    const Ring<4>& full2 = isRed(y) ? red2 : blue2;
    Refine(own2[y], full2[y - 1], full2[y], full2[y + 1], wideWeightAcross[y - 1],
           wideWeightAcross[y + 1], wideWeightAlong[y], (isRed(y) ? redRatio : blueRatio)[y],
           mosaic[y], colour(y), c, own3[y], green3[y]);
    Product(mosaic[y], green3[y], c, mg[y]);
    Product(green3[y], green3[y], c, gg[y]);
    y = last - 31;
    OppositeDifference(own3[y - 1], own3[y + 1], green3[y - 1], green3[y], green3[y + 1],
                       mosaic[y - 1], mosaic[y + 1], kLevel, c, opposite3[y]);

    y = last - 32;
    Laplacian(mosaic[y - 2], mosaic[y], mosaic[y + 2], c, t[0]);
    Laplacian(green3[y - 2], green3[y], green3[y + 2], c, t[1]);
    Product(t[0], t[1], c, mk[y]);
    Product(t[1], t[1], c, kk[y]);
    y = last - 36;
    Window25(mosaic, y, c, t[0]);
    Window25(green3, y, c, t[1]);
    Window25(mg, y, c, t[2]);
    Window25(gg, y, c, t[3]);
    Window25(mk, y, c, t[4]);
    Window25(kk, y, c, t[5]);
    FitColour(t[0], t[1], t[2], t[3], t[4], t[5], kNoise, c, slope[y], offset[y]);
    y = last - 40;
    Window25(slope, y, c, t[0]);
    Window25(offset, y, c, t[1]);
    GuidedResidual(mosaic[y], green3[y], t[0], t[1], c, meanSlope[y], meanOffset[y], guided[y]);
    y = last - 41;
    OppositeDifference(guided[y - 1], guided[y + 1], green3[y - 1], green3[y], green3[y + 1],
                       mosaic[y - 1], mosaic[y + 1], kLevel, c, guidedOpp[y]);

    y = last - kRigorousReach;
    if (y < 0) continue;
    FullDifferences(own3[y - 1], own3[y], own3[y + 1], opposite3[y - 1], opposite3[y],
                    opposite3[y + 1], narrowWeightAcross[y - 1], narrowWeightAcross[y + 1],
                    narrowWeightAlong[y], colour(y), greens(y), c, t[0], t[1]);
    GuidedColours(guided[y - 1], guided[y], guided[y + 1], guidedOpp[y - 1], guidedOpp[y],
                  guidedOpp[y + 1], narrowWeightAcross[y - 1], narrowWeightAcross[y + 1],
                  narrowWeightAlong[y], meanSlope[y - 1], meanSlope[y], meanSlope[y + 1],
                  meanOffset[y - 1], meanOffset[y], meanOffset[y + 1], green3[y], mosaic[y],
                  alongDifference[y], acrossDifference[y], c, t[2], t[3]);
    GuidedOpposite(meanSlope[y - 1], meanSlope[y + 1], meanOffset[y - 1], meanOffset[y + 1],
                   guidedOpp[y], green3[y], c, t[4]);
    const std::ptrdiff_t at = y * block.stride;
    RigorousPixels(t[0], t[1], t[2], t[3], t[4], (isRed(y) ? redRatio : blueRatio)[y],
                   (isRed(y) ? blueRatio : redRatio)[y], green3[y], mosaic[y], colour(y), greens(y),
                   RoundedUp(cols), (isRed(y) ? block.red : block.blue) + at, block.green + at,
                   (isRed(y) ? block.blue : block.red) + at);
  }
}

inline BlockFunctions RigorousFunctions() {
  return {Rigorous<std::uint8_t>, Rigorous<std::uint16_t>};
}

KORVEX2_BAYER_END_TARGET_CODE

#endif
