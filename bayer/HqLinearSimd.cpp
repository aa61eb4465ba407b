#include "HqLinear.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "HqLinearSimd.cpp"
#include "hwy/foreach_target.h"
// After foreach_target.h.
#include "PairLanes-inl.h"
#include "simd/DispatchTable.h"

HWY_BEFORE_NAMESPACE();
namespace Korvex2::Bayer::HWY_NAMESPACE {

#if KORVEX2_BAYER_HAS_VECTORS

// One row of the picture. The vectors are named after what they hold: `colour` and `green` of the
// row itself, `aboveBelow...` sums of the two adjacent rows (green at the colour's columns, the
// opposite colour at green's), `two...` sums of the rows or columns two away. `Before` and `After`
// are the neighbours among the samples of the same column parity.
template <bool kColourFirst, typename Sample>
void HqLinearRow(const Sample* const* mosaic, int cols, Sample* own, Sample* green,
                 Sample* opposite) {
  constexpr bool kC = !kColourFirst;
  constexpr bool kG = kColourFirst;
  using hn::Add;
  using hn::ShiftLeft;
  using hn::Sub;
  const int step = static_cast<int>(hn::Lanes(SampleTag<Sample>()));
  for (int x = 0; x < cols; x += step) {
    const Sample* const row = mosaic[0] + x;
    const Sample* const above = mosaic[-1] + x;
    const Sample* const below = mosaic[1] + x;
    const auto samplesBefore = LoadSamples(row - 2);
    const auto samples = LoadSamples(row);
    const auto samplesAfter = LoadSamples(row + 2);
    const auto twoAbove = LoadSamples(mosaic[-2] + x);
    const auto twoBelow = LoadSamples(mosaic[2] + x);
    const auto samplesAbove = LoadSamples(above);
    const auto samplesBelow = LoadSamples(below);

    const auto colourBefore = Half<Sample, kC>(samplesBefore);
    const auto colour = Half<Sample, kC>(samples);
    const auto colourAfter = Half<Sample, kC>(samplesAfter);
    const auto greenBefore = Half<Sample, kG>(samplesBefore);
    const auto greenHere = Half<Sample, kG>(samples);
    const auto greenAfter = Half<Sample, kG>(samplesAfter);
    const auto adjacentGreen = Add(Half<Sample, kC>(samplesAbove), Half<Sample, kC>(samplesBelow));
    const auto adjacentOpposite =
        Add(Half<Sample, kG>(samplesAbove), Half<Sample, kG>(samplesBelow));
    const auto twoColour = Add(Half<Sample, kC>(twoAbove), Half<Sample, kC>(twoBelow));
    const auto twoGreen = Add(Half<Sample, kG>(twoAbove), Half<Sample, kG>(twoBelow));

    // On the side where a pair's partner lies in the neighbouring pair.
    constexpr int kOutward = kColourFirst ? -2 : 2;
    const auto outwardOpposite =
        Add(LoadHalf<kG>(above + kOutward), LoadHalf<kG>(below + kOutward));
    const auto inwardGreen = Add(LoadHalf<kC>(above - kOutward), LoadHalf<kC>(below - kOutward));

    const auto besideGreen = Add(greenHere, kColourFirst ? greenBefore : greenAfter);
    const auto diagonalOpposite = Add(adjacentOpposite, outwardOpposite);
    const auto besideColour = Add(colour, kColourFirst ? colourAfter : colourBefore);
    const auto diagonalGreen = Add(adjacentGreen, inwardGreen);

    // At the colour: green in eighths, the opposite colour in sixteenths.
    const auto curve = Sub(ShiftLeft<2>(colour), Add(Add(colourBefore, colourAfter), twoColour));
    const auto greenSum = Add(curve, ShiftLeft<1>(Add(besideGreen, adjacentGreen)));
    const auto oppositeSum = Add(Add(curve, ShiftLeft<1>(curve)), ShiftLeft<2>(diagonalOpposite));

    // At green, both in sixteenths.
    const auto twoBeside = Add(greenBefore, greenAfter);
    const auto five = Add(ShiftLeft<2>(greenHere), greenHere);
    const auto base = ShiftLeft<1>(Sub(five, Add(diagonalGreen, Add(twoBeside, twoGreen))));
    const auto ownSum =
        Add(Add(base, Add(twoGreen, ShiftLeft<1>(twoGreen))), ShiftLeft<3>(besideColour));
    const auto otherSum =
        Add(Add(base, Add(twoBeside, ShiftLeft<1>(twoBeside))), ShiftLeft<3>(adjacentOpposite));

    StorePlaces<kColourFirst>(colour, InRange<Sample>(Mean<Sample, 4>(ownSum)), own + x);
    StorePlaces<kColourFirst>(InRange<Sample>(Mean<Sample, 3>(greenSum)), greenHere, green + x);
    StorePlaces<kColourFirst>(InRange<Sample>(Mean<Sample, 4>(oppositeSum)),
                              InRange<Sample>(Mean<Sample, 4>(otherSum)), opposite + x);
  }
}

template <typename Sample>
void HqLinear(const Block<Sample>& block) {
  for (int y = 0; y < block.rows; ++y) {
    const bool redRow = (y & 1) == block.redRow;
    const bool colourFirst = redRow == (block.redColumn == 0);
    const std::ptrdiff_t offset = y * block.stride;
    Sample* const own = (redRow ? block.red : block.blue) + offset;
    Sample* const opposite = (redRow ? block.blue : block.red) + offset;
    (colourFirst ? HqLinearRow<true, Sample>
                 : HqLinearRow<false, Sample>)(block.mosaic + y, block.cols, own,
                                               block.green + offset, opposite);
  }
}

BlockFunctions HqLinearFunctions() {
  return {HqLinear<std::uint8_t>, HqLinear<std::uint16_t>};
}

#else

BlockFunctions HqLinearFunctions() {
  return kHqLinear.functions(InstructionSet::Plain);
}

#endif

}  // namespace Korvex2::Bayer::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Korvex2::Bayer {

HWY_EXPORT(HqLinearFunctions);

BlockFunctions HqLinearSimd(InstructionSet set) {
  return KORVEX2_FOR_INSTRUCTION_SET(HqLinearFunctions, set)();
}

}  // namespace Korvex2::Bayer
#endif
