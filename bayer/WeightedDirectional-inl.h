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
#include "Stages-inl.h"
#include "WeightedDirectional.h"
#include "WeightedDirectionalStages.h"

KORVEX2_BAYER_BEGIN_TARGET_CODE

// How much a sum changes. Sums of `T` are sums once more.
template <typename T>
T ChangeOf(T from, T to) {
  const auto difference = static_cast<T>(to - from);
  return static_cast<T>(difference < 0 ? -difference : difference);
}

// Weights of both directions, by one division.
struct DirectionWeights {
  DirectionWeights(float alongSum, float acrossSum) {
    const float inverse = 1.0F / (alongSum * acrossSum);
    const float a = inverse * acrossSum;
    const float b = inverse * alongSum;
    along = a * a * a;
    across = b * b * b;
  }
  float along, across;
};

// Forty times an arm. Beside a red or blue sample is a green one, whose d has the other sign.
template <typename T>
T ArmOf(T here, T one, T two) {
  return static_cast<T>(5 * here - 4 * one + two);
}
constexpr float kPerArm = 1.0F / 40.0F;

// The half rows on the four sides of half a row's pixels.
template <typename Half>
struct SideRows {
  Half north, south;
  BesideRow beside;

  Sides operator[](int i) const { return {north[i], south[i], beside.Left(i), beside.Right(i)}; }
};

// Those across its corners.
struct DiagonalRows {
  BesideRow above, below;

  Diagonals operator[](int i) const {
    return {above.Left(i), above.Right(i), below.Left(i), below.Right(i)};
  }
};

// Each function computes a row of a stage.
template <typename Sample>
class WeightedDirectional : WeightedDirectionalStages {
 public:
  template <int kStage>
  using At = StageAt<WeightedDirectionalStages, kStage, Sample>;

  // Four times green minus colour along the row, negated where the middle is green. The sign of a
  // place does not change from here to the arms, which know the places of their neighbours.
  static void Compute(const At<kDifferAlong>& at) {
    const auto m = Reads<kMosaic>(at)[0];
    const auto difference = [m](int x, Out<kAlong> along) {
      along[x] = static_cast<Sum>(2 * (m(x, -1) + m(x, 1)) - 2 * m[x] - (m(x, -2) + m(x, 2)));
    };
    ForColumns(at.GetColumns(), difference, Writes<kAlong>(at));
  }

  // The same along columns.
  static void Compute(const At<kDifferAcross>& at) {
    const auto m = Reads<kMosaic>(at);
    const auto difference = [m](int x, Out<kAcross> across) {
      across[x] = static_cast<Sum>(2 * (m[-1][x] + m[1][x]) - 2 * m[0][x] - (m[-2][x] + m[2][x]));
    };
    ForColumns(at.GetColumns(), difference, Writes<kAcross>(at));
  }

  // About three places of the row.
  static void Compute(const At<kChangeAlong>& at) {
    const auto d = Reads<kAlong>(at)[0];
    const auto change = [d](int x, Out<kChangesAlong> changes) {
      changes[x] = static_cast<Sum>(ChangeOf(d(x, -2), d[x]) + ChangeOf(d(x, -1), d(x, 1)) +
                                    ChangeOf(d[x], d(x, 2)));
    };
    ForColumns(at.GetColumns(), change, Writes<kChangesAlong>(at));
  }

  // About one place.
  static void Compute(const At<kChangeAcross>& at) {
    const auto d = Reads<kAcross>(at);
    const auto change = [d](int x, Out<kChangesAcross> changes) {
      changes[x] = ChangeOf(d[-1][x], d[1][x]);
    };
    ForColumns(at.GetColumns(), change, Writes<kChangesAcross>(at));
  }

  static void Compute(const At<kSumAlong>& at) { SumRows<kChangesAlong, kSumsAlong>(at); }
  static void Compute(const At<kSumThrees>& at) { SumRows<kChangesAcross, kThrees>(at); }
  static void Compute(const At<kSumAcross>& at) {
    const auto threes = Reads<kThrees>(at)[0];
    const auto sum = [threes](int x, Out<kSumsAcross> sums) {
      sums[x] = static_cast<Sum>(threes(x, -1) + threes[x] + threes(x, 1));
    };
    ForColumns(at.GetColumns(), sum, Writes<kSumsAcross>(at));
  }

  // At every place; the four sides of a pixel are those of its neighbours.
  static void Compute(const At<kWeigh>& at) {
    const auto alongSums = Reads<kSumsAlong>(at)[0];
    const auto acrossSums = Reads<kSumsAcross>(at)[0];
    const auto weigh = [alongSums, acrossSums](int i, OutHalf<kWeightsAlong, 0> alongEven,
                                               OutHalf<kWeightsAlong, 1> alongOdd,
                                               OutHalf<kWeightsAcross, 0> acrossEven,
                                               OutHalf<kWeightsAcross, 1> acrossOdd) {
      constexpr float kLevel = 4 * LevelOf<Sample>();
      const DirectionWeights even(kLevel + FloatAt<0>(alongSums, i),
                                  kLevel + FloatAt<0>(acrossSums, i));
      const DirectionWeights odd(kLevel + FloatAt<1>(alongSums, i),
                                 kLevel + FloatAt<1>(acrossSums, i));
      alongEven[i] = even.along;
      acrossEven[i] = even.across;
      alongOdd[i] = odd.along;
      acrossOdd[i] = odd.across;
    };
    const auto along = Writes<kWeightsAlong>(at);
    const auto across = Writes<kWeightsAcross>(at);
    ForColumns(at.GetPlaces(), weigh, along.even, along.odd, across.even, across.odd);
  }

  static void Compute(const At<kReachAlong>& at) {
    const auto d = Reads<kAlong>(at)[0];
    const auto reach = [d](int x, Out<kWest> west, Out<kEast> east) {
      west[x] = ArmOf(d[x], d(x, -1), d(x, -2));
      east[x] = ArmOf(d[x], d(x, 1), d(x, 2));
    };
    ForColumns(at.GetColumns(), reach, Writes<kWest>(at), Writes<kEast>(at));
  }

  static void Compute(const At<kReachAcross>& at) {
    const auto d = Reads<kAcross>(at);
    const auto reach = [d](int x, Out<kNorth> north, Out<kSouth> south) {
      north[x] = ArmOf(d[0][x], d[-1][x], d[-2][x]);
      south[x] = ArmOf(d[0][x], d[1][x], d[2][x]);
    };
    ForColumns(at.GetColumns(), reach, Writes<kNorth>(at), Writes<kSouth>(at));
  }

  static void Compute(const At<kBlendOwn>& at) {
    ColourParity(at.GetBlock(), at.y) == 0 ? BlendOwn<0>(at) : BlendOwn<1>(at);
  }

  static void Compute(const At<kBlendOpposite>& at) {
    const int parity = ColourParity(at.GetBlock(), at.y);
    const auto green = Reads<kGreen>(at);
    const auto blend = [owns = DiagonalsOf(Reads<kOwn>(at), parity),
                        greens = DiagonalsOf(green, parity), green = green[0],
                        colours = DiagonalsOf(Reads<kColour>(at), parity)](
                           int i, Out<kOpposite> opposite) {
      opposite[i] =
          OppositeDifferenceAt(owns[i], greens[i], green[i], colours[i], LevelOf<Sample>());
    };
    ForColumns(at.GetPlaces(), blend, Writes<kOpposite>(at));
  }

  static void Compute(const At<kWritePixels>& at) {
    ColourParity(at.GetBlock(), at.y) == 0 ? WritePixels<0>(at) : WritePixels<1>(at);
  }

 private:
  using Sum = SumOf<Sample>;
  template <int kPlane>
  using Out =
      OutRow<kPlane, std::conditional_t<kPlan.ElementsOf(kPlane) == Elements::kSums, Sum, float>>;
  template <int kPlane, int kParity>
  using OutHalf = OutRow<HalfName{kPlane, kParity}, float>;

  template <int kFrom, int kTo, typename AnyAt>
  static void SumRows(const AnyAt& at) {
    const auto rows = Reads<kFrom>(at);
    const auto sum = [rows](int x, Out<kTo> sums) {
      sums[x] = static_cast<Sum>(rows[-1][x] + rows[0][x] + rows[1][x]);
    };
    ForColumns(at.GetColumns(), sum, Writes<kTo>(at));
  }

  // The weights of the sides of the columns of a parity.
  template <typename AnyAt>
  static auto WeightsOf(const AnyAt& at, int parity) {
    const auto across = Reads<kWeightsAcross>(at);
    return SideRows{across[-1].Of(parity), across[1].Of(parity),
                    Reads<kWeightsAlong>(at)[0].Beside(parity)};
  }

  template <typename Rows>
  static DiagonalRows DiagonalsOf(const Rows& rows, int parity) {
    return {rows[-1].Beside(parity), rows[1].Beside(parity)};
  }

  // Green minus colour where the mosaic holds the colour; that colour and green there as floats.
  template <int kColourParity>
  static void BlendOwn(const At<kBlendOwn>& at) {
    const auto blend = [north = Reads<kNorth>(at)[0], south = Reads<kSouth>(at)[0],
                        west = Reads<kWest>(at)[0], east = Reads<kEast>(at)[0],
                        weights = WeightsOf(at, kColourParity), m = Reads<kMosaic>(at)[0]](
                           int i, Out<kOwn> own, Out<kColour> colour, Out<kGreen> green) {
      const Sides sides = weights[i];
      const float sum =
          sides.Sum(FloatAt<kColourParity>(north, i), FloatAt<kColourParity>(south, i),
                    FloatAt<kColourParity>(west, i), FloatAt<kColourParity>(east, i));
      const float difference = sum * (kPerArm / sides.Sum());
      const float sample = FloatAt<kColourParity>(m, i);
      own[i] = difference;
      colour[i] = sample;
      green[i] = sample + difference;
    };
    ForColumns(at.GetPlaces(), blend, Writes<kOwn>(at), Writes<kColour>(at), Writes<kGreen>(at));
  }

  // What the pixels of a row are written to.
  enum class Picture { kOwnColour, kGreen, kOppositeColour };
  template <Picture kColourName>
  using Pixels = OutRow<kColourName, Sample>;
  using OwnPixels = Pixels<Picture::kOwnColour>;
  using GreenPixels = Pixels<Picture::kGreen>;
  using OppositePixels = Pixels<Picture::kOppositeColour>;

  // The row's own colour lies beside a green sample, the opposite colour above and below it.
  template <int kColourParity>
  static void WritePixels(const At<kWritePixels>& at) {
    constexpr int kGreenParity = 1 - kColourParity;
    const auto own = Reads<kOwn>(at);
    const auto opposite = Reads<kOpposite>(at);
    // What the differences are means of.
    const SideRows ownSides{opposite[-1], opposite[1], own[0].Beside(kGreenParity)};
    const SideRows oppositeSides{own[-1], own[1], opposite[0].Beside(kGreenParity)};
    const auto write = [=, weights = WeightsOf(at, kGreenParity), atColour = opposite[0],
                        green = Reads<kGreen>(at)[0],
                        m = Reads<kMosaic>(at)[0]](int i, OwnPixels ownOut, GreenPixels greenOut,
                                                   OppositePixels oppositeOut) {
      const Sides sides = weights[i];
      const float perWeight = 1.0F / sides.Sum();
      const float ownDifference = sides.Sum(ownSides[i]) * perWeight;
      const float oppositeDifference = sides.Sum(oppositeSides[i]) * perWeight;
      const float sample = FloatAt<kGreenParity>(m, i);
      const float greenHere = green[i];
      const std::int32_t ownSample = IntAt<kColourParity>(m, i);
      const std::int32_t greenSample = IntAt<kGreenParity>(m, i);
      const std::int32_t opposite = RoundedInt<Sample>(greenHere - atColour[i]);
      Put<kColourParity>(ownOut, i, ownSample, RoundedInt<Sample>(sample - ownDifference));
      Put<kColourParity>(greenOut, i, RoundedInt<Sample>(greenHere), greenSample);
      Put<kColourParity>(oppositeOut, i, opposite, RoundedInt<Sample>(sample - oppositeDifference));
    };
    const Block<Sample>& block = at.GetBlock();
    const bool redRow = (at.y & 1) == block.redRow;
    const std::ptrdiff_t offset = at.y * block.stride;
    ForColumns(at.GetPlaces(), write, OwnPixels((redRow ? block.red : block.blue) + offset),
               GreenPixels(block.green + offset),
               OppositePixels((redRow ? block.blue : block.red) + offset));
  }
};

template <typename Sample>
void WeightedDirectionalFilter(const Block<Sample>& block) {
  RunStages<WeightedDirectional<Sample>, WeightedDirectionalStages>(block);
}

inline BlockFunctions WeightedDirectionalFunctions() {
  return {WeightedDirectionalFilter<std::uint8_t>, WeightedDirectionalFilter<std::uint16_t>};
}

KORVEX2_BAYER_END_TARGET_CODE

#endif
