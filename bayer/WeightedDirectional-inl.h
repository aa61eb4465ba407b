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
#include "HalfRows-inl.h"
#include "WeightedDirectional.h"

KORVEX2_BAYER_BEGIN_TARGET_CODE

// Four times green minus colour along the row, negated where the middle is green. The sign of a
// place does not change from here to the arms, which know the places of their neighbours.
template <typename Sample, typename Int>
void fourfoldAlong(const Sample* __restrict m, Columns c, Int* __restrict out) {
  for (int x = c.begin; x < c.end; ++x) {
    out[x] = static_cast<Int>(2 * (m[x - 1] + m[x + 1]) - 2 * m[x] - (m[x - 2] + m[x + 2]));
  }
}

// The same along columns; m2 is the row itself.
template <typename Sample, typename Int>
void fourfoldAcross(const Sample* __restrict m0, const Sample* __restrict m1,
                    const Sample* __restrict m2, const Sample* __restrict m3,
                    const Sample* __restrict m4, Columns c, Int* __restrict out) {
  for (int x = c.begin; x < c.end; ++x) {
    out[x] = static_cast<Int>(2 * (m1[x] + m3[x]) - 2 * m2[x] - (m0[x] + m4[x]));
  }
}

template <typename Int>
Int step(Int from, Int to) {
  const auto difference = static_cast<Int>(to - from);
  return static_cast<Int>(difference < 0 ? -difference : difference);
}

// How much d changes about three places of the row.
template <typename Int>
void changesAlong(const Int* __restrict d, Columns c, Int* __restrict out) {
  for (int x = c.begin; x < c.end; ++x) {
    out[x] =
        static_cast<Int>(step(d[x - 2], d[x]) + step(d[x - 1], d[x + 1]) + step(d[x], d[x + 2]));
  }
}

template <typename Int>
void changeAcross(const Int* __restrict above, const Int* __restrict below, Columns c,
                  Int* __restrict out) {
  for (int x = c.begin; x < c.end; ++x) out[x] = step(above[x], below[x]);
}

template <typename Int>
void sumOf3(const Int* __restrict above, const Int* __restrict here, const Int* __restrict below,
            Columns c, Int* __restrict out) {
  for (int x = c.begin; x < c.end; ++x) out[x] = static_cast<Int>(above[x] + here[x] + below[x]);
}

template <typename Int>
void sum3(const Int* __restrict a, Columns c, Int* __restrict out) {
  for (int x = c.begin; x < c.end; ++x) out[x] = static_cast<Int>(a[x - 1] + a[x] + a[x + 1]);
}

// Weights of both directions, by one division.
inline void weigh(float alongSum, float acrossSum, float& along, float& across) {
  const float inverse = 1.0F / (alongSum * acrossSum);
  const float a = inverse * acrossSum;
  const float b = inverse * alongSum;
  along = a * a * a;
  across = b * b * b;
}

// At every place; the four sides of a pixel are those of its neighbours.
template <typename Int>
void weights(const Int* __restrict alongSums, const Int* __restrict acrossSums, float level,
             Columns c, Row alongEven, Row alongOdd, Row acrossEven, Row acrossOdd) {
  for (int i = c.begin / 2; i < c.end / 2; ++i) {
    weigh(level + floatAt<0>(alongSums, i), level + floatAt<0>(acrossSums, i), alongEven[i],
          acrossEven[i]);
    weigh(level + floatAt<1>(alongSums, i), level + floatAt<1>(acrossSums, i), alongOdd[i],
          acrossOdd[i]);
  }
}

// Forty times an arm. Beside a red or blue sample is a green one, whose d has the other sign.
template <typename Int>
Int arm(Int here, Int one, Int two) {
  return static_cast<Int>(5 * here - 4 * one + two);
}
constexpr float kPerArm = 1.0F / 40.0F;

template <typename Int>
void armsAlong(const Int* __restrict d, Columns c, Int* __restrict west, Int* __restrict east) {
  for (int x = c.begin; x < c.end; ++x) {
    west[x] = arm(d[x], d[x - 1], d[x - 2]);
    east[x] = arm(d[x], d[x + 1], d[x + 2]);
  }
}

template <typename Int>
void armsAcross(const Int* __restrict d0, const Int* __restrict d1, const Int* __restrict d2,
                const Int* __restrict d3, const Int* __restrict d4, Columns c,
                Int* __restrict north, Int* __restrict south) {
  for (int x = c.begin; x < c.end; ++x) {
    north[x] = arm(d2[x], d1[x], d0[x]);
    south[x] = arm(d2[x], d3[x], d4[x]);
  }
}

// The weights of the four sides of half a row's pixels.
struct SideRows {
  const float* north;
  const float* south;
  Beside beside;

  Sides operator[](int i) const { return {north[i], south[i], beside.left[i], beside.right[i]}; }
};

// Green minus colour where the mosaic holds the colour; that colour and green there as floats.
template <int kColour, typename Sample, typename Int>
void ownDifference(const Int* __restrict north, const Int* __restrict south,
                   const Int* __restrict west, const Int* __restrict east, SideRows weights,
                   const Sample* __restrict m, Columns c, Row out, Row colour, Row green) {
  for (int i = c.begin / 2; i < c.end / 2; ++i) {
    const Sides sides = weights[i];
    const float sum = sides.sum(floatAt<kColour>(north, i), floatAt<kColour>(south, i),
                                floatAt<kColour>(west, i), floatAt<kColour>(east, i));
    const float difference = sum * (kPerArm / sides.sum());
    const float sample = floatAt<kColour>(m, i);
    out[i] = difference;
    colour[i] = sample;
    green[i] = sample + difference;
  }
}

// The row's own colour lies beside a green sample, the opposite colour above and below it.
template <int kColour, typename Sample>
void weightedPixels(In ownAbove, Beside ownHere, In ownBelow, In oppositeAbove,
                    Beside oppositeBeside, In oppositeHere, In oppositeBelow, In green,
                    SideRows weights, const Sample* __restrict m, int cols,
                    Sample* __restrict ownOut, Sample* __restrict greenOut,
                    Sample* __restrict oppositeOut) {
  for (int i = 0; i < cols / 2; ++i) {
    const Sides sides = weights[i];
    const float perWeight = 1.0F / sides.sum();
    const float ownDifference =
        sides.sum(oppositeAbove[i], oppositeBelow[i], ownHere.left[i], ownHere.right[i]) *
        perWeight;
    const float oppositeDifference =
        sides.sum(ownAbove[i], ownBelow[i], oppositeBeside.left[i], oppositeBeside.right[i]) *
        perWeight;
    const float sample = floatAt<1 - kColour>(m, i);
    put<kColour>(ownOut, i, intAt<kColour>(m, i), roundedInt<Sample>(sample - ownDifference));
    put<kColour>(greenOut, i, roundedInt<Sample>(green[i]), intAt<1 - kColour>(m, i));
    put<kColour>(oppositeOut, i, roundedInt<Sample>(green[i] - oppositeHere[i]),
                 roundedInt<Sample>(sample - oppositeDifference));
  }
}

template <typename Sample>
class WeightedDirectional {
 public:
  explicit WeightedDirectional(const Block<Sample>& block)
      : block_(block), columns_(columnsAround(block.cols, kWeightedDirectionalReach)) {}

  // Each step runs as soon as the rows that it looks at are there, for the rows within its reach
  // of the block.
  void run() const {
    constexpr int kReach = kWeightedDirectionalReach;
    for (int last = -kReach; last < block_.rows + kReach; ++last) {
      if (const int y = last - 2; within(y, 5)) differences(y);
      if (const int y = last - 3; within(y, 4)) {
        changeAcross(across_[y - 1], across_[y + 1], columns_, changesAcross_[y]);
      }
      if (const int y = last - 4; within(y, 3)) weightsOf(y);
      if (const int y = last - 5; within(y, 2)) {
        parity(y) == 0 ? own<0>(y) : own<1>(y);
      }
      if (const int y = last - 6; within(y, 1)) opposite(y);
      if (const int y = last - 7; within(y, 0)) {
        parity(y) == 0 ? pixels<0>(y) : pixels<1>(y);
      }
    }
  }

 private:
  using Int = WeightedDirectionalInt<Sample>;

  bool within(int y, int reach) const { return -reach <= y && y < block_.rows + reach; }
  int parity(int y) const { return colourParity(block_, y); }

  void differences(int y) const {
    const Sample* const* const m = block_.mosaic + y;
    fourfoldAlong(m[0], columns_, along_[y]);
    fourfoldAcross(m[-2], m[-1], m[0], m[1], m[2], columns_, across_[y]);
    changesAlong(along_[y], columns_, changesAlong_[y]);
  }

  void weightsOf(int y) const {
    sumOf3(changesAlong_[y - 1], changesAlong_[y], changesAlong_[y + 1], columns_, temporary_[0]);
    sumOf3(changesAcross_[y - 1], changesAcross_[y], changesAcross_[y + 1], columns_,
           temporary_[1]);
    sum3(temporary_[1], columns_, temporary_[2]);
    weights(temporary_[0], temporary_[2], 4 * levelOf<Sample>(), columns_, weightsAlong_(y, 0),
            weightsAlong_(y, 1), weightsAcross_(y, 0), weightsAcross_(y, 1));
  }

  // The sides of the columns of a parity.
  SideRows sides(int y, int parity) const {
    return {weightsAcross_(y - 1, parity), weightsAcross_(y + 1, parity),
            besideColumns(parity, weightsAlong_(y, 1 - parity))};
  }

  template <int kColour>
  void own(int y) const {
    armsAcross(across_[y - 2], across_[y - 1], across_[y], across_[y + 1], across_[y + 2], columns_,
               temporary_[0], temporary_[1]);
    armsAlong(along_[y], columns_, temporary_[2], temporary_[3]);
    ownDifference<kColour>(temporary_[0], temporary_[1], temporary_[2], temporary_[3],
                           sides(y, kColour), block_.mosaic[y], columns_, own_[y], colour_[y],
                           green_[y]);
  }

  void opposite(int y) const {
    const auto diagonal = [p = parity(y)](const float* half) { return besideColumns(p, half); };
    oppositeDifference(diagonal(own_[y - 1]), diagonal(own_[y + 1]), diagonal(green_[y - 1]),
                       green_[y], diagonal(green_[y + 1]), diagonal(colour_[y - 1]),
                       diagonal(colour_[y + 1]), levelOf<Sample>(),
                       {columns_.begin / 2, columns_.end / 2}, opposite_[y]);
  }

  template <int kColour>
  void pixels(int y) const {
    constexpr int kGreen = 1 - kColour;
    const bool redRow = (y & 1) == block_.redRow;
    const std::ptrdiff_t offset = y * block_.stride;
    weightedPixels<kColour>(own_[y - 1], besideColumns(kGreen, own_[y]), own_[y + 1],
                            opposite_[y - 1], besideColumns(kGreen, opposite_[y]), opposite_[y],
                            opposite_[y + 1], green_[y], sides(y, kGreen), block_.mosaic[y],
                            roundedUp(block_.cols), (redRow ? block_.red : block_.blue) + offset,
                            block_.green + offset, (redRow ? block_.blue : block_.red) + offset);
  }

  const Block<Sample>& block_;
  const Columns columns_;
  unsigned char* scratch_ = static_cast<unsigned char*>(block_.scratch);
  const WholeRing<Int, 8> across_{scratch_, block_.cols};
  const WholeRing<Int, 4> along_{scratch_, block_.cols};
  const WholeRing<Int, 4> changesAcross_{scratch_, block_.cols};
  const WholeRing<Int, 4> changesAlong_{scratch_, block_.cols};
  const WholeRing<Int, 4> temporary_{scratch_, block_.cols};
  const HalvesRing<8> weightsAcross_{scratch_, block_.cols};
  const HalvesRing<4> weightsAlong_{scratch_, block_.cols};
  // At red and blue.
  const HalfRing<4> own_{scratch_, block_.cols};
  const HalfRing<4> colour_{scratch_, block_.cols};
  const HalfRing<4> green_{scratch_, block_.cols};
  const HalfRing<4> opposite_{scratch_, block_.cols};
};

template <typename Sample>
void weightedDirectional(const Block<Sample>& block) {
  WeightedDirectional<Sample>(block).run();
}

inline BlockFunctions weightedDirectionalFunctions() {
  return {weightedDirectional<std::uint8_t>, weightedDirectional<std::uint16_t>};
}

KORVEX2_BAYER_END_TARGET_CODE

#endif
