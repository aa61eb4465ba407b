#include "EdgeSensing.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "EdgeSensingSimd.cpp"
#include "hwy/foreach_target.h"
// After foreach_target.h.
#include "PairLanes-inl.h"
#include "simd/DispatchTable.h"

HWY_BEFORE_NAMESPACE();
namespace Korvex2::Bayer::HWY_NAMESPACE {

#if KORVEX2_BAYER_HAS_VECTORS

// Green of one row, and the difference of the row's colour to it, one lane per pair of columns.
// The differences of the pairs before and after the block are needed as well. `green` is null for
// the rows above and below the block.
template <bool kColourFirst, typename Sample>
void GreenRow(const Sample* const* mosaic, int cols, Sample* green, Lane<Sample>* difference) {
  constexpr bool kC = !kColourFirst;
  constexpr bool kG = kColourFirst;
  using hn::Add;
  using hn::ShiftLeft;
  using hn::Sub;
  const int step = static_cast<int>(hn::Lanes(SampleTag<Sample>()));
  for (int x = -step; x < cols + 2; x += step) {
    const Sample* const row = mosaic[0] + x;
    const auto samples = LoadSamples(row);
    const auto colour = Half<Sample, kC>(samples);
    const auto greenHere = Half<Sample, kG>(samples);
    const auto twice = ShiftLeft<1>(colour);

    // The green on the other side of the colour lies in the neighbouring pair.
    const auto greenBeyond = LoadHalf<kG>(row + (kColourFirst ? -2 : 2));
    const auto curveAlong = Sub(twice, Add(LoadHalf<kC>(row - 2), LoadHalf<kC>(row + 2)));
    const auto along = Add(ShiftLeft<1>(Add(greenHere, greenBeyond)), curveAlong);
    const auto changeAlong = Add(hn::Abs(Sub(greenHere, greenBeyond)), hn::Abs(curveAlong));

    const auto greenAbove = LoadHalf<kC>(mosaic[-1] + x);
    const auto greenBelow = LoadHalf<kC>(mosaic[1] + x);
    const auto curveAcross =
        Sub(twice, Add(LoadHalf<kC>(mosaic[-2] + x), LoadHalf<kC>(mosaic[2] + x)));
    const auto across = Add(ShiftLeft<1>(Add(greenAbove, greenBelow)), curveAcross);
    const auto changeAcross = Add(hn::Abs(Sub(greenAbove, greenBelow)), hn::Abs(curveAcross));

    // Twice the better estimate, or the sum of both where neither is better.
    const auto eighths = Add(hn::IfThenElse(hn::Lt(changeAcross, changeAlong), across, along),
                             hn::IfThenElse(hn::Lt(changeAlong, changeAcross), along, across));
    const auto greenAtColour = InRange<Sample>(Mean<Sample, 3>(eighths));

    hn::StoreU(Sub(colour, greenAtColour), WideTag<Sample>(), difference + x / 2);
    if (green != nullptr && x >= 0) {
      StorePlaces<kColourFirst>(greenAtColour, greenHere, green + x);
    }
  }
}

// Red and blue of one row, given the differences of the row, of the one above and the one below.
template <bool kColourFirst, typename Sample>
void ColourRow(const Sample* mosaic, const Lane<Sample>* above, const Lane<Sample>* here,
               const Lane<Sample>* below, int cols, const Sample* green, Sample* own,
               Sample* opposite) {
  using hn::Add;
  const WideTag<Sample> tag;
  const int step = static_cast<int>(hn::Lanes(SampleTag<Sample>()));
  for (int x = 0; x < cols; x += step) {
    const auto samples = LoadSamples(mosaic + x);
    const auto colour = Half<Sample, !kColourFirst>(samples);
    const auto greenHere = Half<Sample, kColourFirst>(samples);
    const auto greenAtColour = LoadHalf<!kColourFirst>(green + x);

    // The colour's other neighbour of a green, and the column of the opposite colour on the other
    // side of a colour, lie in the neighbouring pairs.
    const int pair = x / 2;
    const int pairOfColour = pair + (kColourFirst ? 1 : -1);
    const int pairOfOpposite = pair + (kColourFirst ? -1 : 1);
    const auto beside = Add(hn::LoadU(tag, here + pair), hn::LoadU(tag, here + pairOfColour));
    const auto aboveBelow = Add(hn::LoadU(tag, above + pair), hn::LoadU(tag, below + pair));
    const auto diagonal = Add(aboveBelow, Add(hn::LoadU(tag, above + pairOfOpposite),
                                              hn::LoadU(tag, below + pairOfOpposite)));

    StorePlaces<kColourFirst>(colour, InRange<Sample>(Add(greenHere, Mean<Sample, 1>(beside))),
                              own + x);
    StorePlaces<kColourFirst>(InRange<Sample>(Add(greenAtColour, Mean<Sample, 2>(diagonal))),
                              InRange<Sample>(Add(greenHere, Mean<Sample, 1>(aboveBelow))),
                              opposite + x);
  }
}

template <typename Sample>
void EdgeSensing(const Block<Sample>& block) {
  const std::ptrdiff_t bytesPerRow =
      EdgeSensingScratchStride(block.cols, sizeof(Sample)) * int{sizeof(Sample)};
  const auto difference = [&](int y) {
    auto* const start = static_cast<unsigned char*>(block.scratch) +
                        (y + kEdgeSensingScratchMargin) * bytesPerRow + kVectorBytes;
    return reinterpret_cast<Lane<Sample>*>(start);
  };
  const auto redRow = [&](int y) { return (y & 1) == block.redRow; };
  const auto colourFirst = [&](int y) { return redRow(y) == (block.redColumn == 0); };

  for (int y = -1; y < block.rows + 1; ++y) {
    Sample* const green = y >= 0 && y < block.rows ? block.green + y * block.stride : nullptr;
    (colourFirst(y) ? GreenRow<true, Sample>
                    : GreenRow<false, Sample>)(block.mosaic + y, block.cols, green, difference(y));
  }
  for (int y = 0; y < block.rows; ++y) {
    const std::ptrdiff_t offset = y * block.stride;
    Sample* const own = (redRow(y) ? block.red : block.blue) + offset;
    Sample* const opposite = (redRow(y) ? block.blue : block.red) + offset;
    (colourFirst(y) ? ColourRow<true, Sample>
                    : ColourRow<false, Sample>)(block.mosaic[y], difference(y - 1), difference(y),
                                                difference(y + 1), block.cols, block.green + offset,
                                                own, opposite);
  }
}

BlockFunctions EdgeSensingFunctions() {
  return {EdgeSensing<std::uint8_t>, EdgeSensing<std::uint16_t>};
}

#else

BlockFunctions EdgeSensingFunctions() {
  return kEdgeSensing.functions(InstructionSet::Plain);
}

#endif

}  // namespace Korvex2::Bayer::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Korvex2::Bayer {

HWY_EXPORT(EdgeSensingFunctions);

BlockFunctions EdgeSensingSimd(InstructionSet set) {
  return KORVEX2_FOR_INSTRUCTION_SET(EdgeSensingFunctions, set)();
}

}  // namespace Korvex2::Bayer
#endif
