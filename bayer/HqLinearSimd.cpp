#include "HqLinear.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "HqLinearSimd.cpp"
#include "hwy/foreach_target.h"
// After foreach_target.h.
#include "PairLanes-inl.h"
#include "simd/TargetTable.h"

HWY_BEFORE_NAMESPACE();
namespace Korvex2::Bayer::HWY_NAMESPACE {

#if KORVEX2_BAYER_HAS_VECTORS

// One row of the picture. The vectors are named after what they hold: `colour` and `green` of the
// row itself, `aboveBelow...` sums of the two adjacent rows (green at the colour's columns, the
// opposite colour at green's), `two...` sums of the rows or columns two away. `Before` and `After`
// are the neighbours among the samples of the same column parity.
template <bool kColourFirst, typename Sample>
void hqLinearRow(const Sample* const* mosaic, int cols, Sample* own, Sample* green,
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
    const auto samplesBefore = loadSamples(row - 2);
    const auto samples = loadSamples(row);
    const auto samplesAfter = loadSamples(row + 2);
    const auto twoAbove = loadSamples(mosaic[-2] + x);
    const auto twoBelow = loadSamples(mosaic[2] + x);
    const auto samplesAbove = loadSamples(above);
    const auto samplesBelow = loadSamples(below);

    const auto colourBefore = half<Sample, kC>(samplesBefore);
    const auto colour = half<Sample, kC>(samples);
    const auto colourAfter = half<Sample, kC>(samplesAfter);
    const auto greenBefore = half<Sample, kG>(samplesBefore);
    const auto greenHere = half<Sample, kG>(samples);
    const auto greenAfter = half<Sample, kG>(samplesAfter);
    const auto adjacentGreen = Add(half<Sample, kC>(samplesAbove), half<Sample, kC>(samplesBelow));
    const auto adjacentOpposite =
        Add(half<Sample, kG>(samplesAbove), half<Sample, kG>(samplesBelow));
    const auto twoColour = Add(half<Sample, kC>(twoAbove), half<Sample, kC>(twoBelow));
    const auto twoGreen = Add(half<Sample, kG>(twoAbove), half<Sample, kG>(twoBelow));

    // On the side where a pair's partner lies in the neighbouring pair.
    constexpr int kOutward = kColourFirst ? -2 : 2;
    const auto outwardOpposite =
        Add(loadHalf<kG>(above + kOutward), loadHalf<kG>(below + kOutward));
    const auto inwardGreen = Add(loadHalf<kC>(above - kOutward), loadHalf<kC>(below - kOutward));

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

    storePlaces<kColourFirst>(colour, inRange<Sample>(mean<Sample, 4>(ownSum)), own + x);
    storePlaces<kColourFirst>(inRange<Sample>(mean<Sample, 3>(greenSum)), greenHere, green + x);
    storePlaces<kColourFirst>(inRange<Sample>(mean<Sample, 4>(oppositeSum)),
                              inRange<Sample>(mean<Sample, 4>(otherSum)), opposite + x);
  }
}

template <typename Sample>
void hqLinear(const Block<Sample>& block) {
  for (int y = 0; y < block.rows; ++y) {
    const bool redRow = (y & 1) == block.redRow;
    const bool colourFirst = redRow == (block.redColumn == 0);
    const std::ptrdiff_t offset = y * block.stride;
    Sample* const own = (redRow ? block.red : block.blue) + offset;
    Sample* const opposite = (redRow ? block.blue : block.red) + offset;
    (colourFirst ? hqLinearRow<true, Sample>
                 : hqLinearRow<false, Sample>)(block.mosaic + y, block.cols, own,
                                               block.green + offset, opposite);
  }
}

BlockFunctions hqLinearFunctions() {
  return {hqLinear<std::uint8_t>, hqLinear<std::uint16_t>};
}

#else

BlockFunctions hqLinearFunctions() {
  return kHqLinear.functions(Target::kPlain);
}

#endif

}  // namespace Korvex2::Bayer::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Korvex2::Bayer {

HWY_EXPORT(hqLinearFunctions);

BlockFunctions hqLinearSimd(Target target) {
  return KORVEX2_FOR_TARGET(hqLinearFunctions, target)();
}

}  // namespace Korvex2::Bayer
#endif
