#include "NearestNeighbor.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "NearestNeighborSimd.cpp"
#include "hwy/foreach_target.h"
// After foreach_target.h.
#include "PairLanes-inl.h"
#include "simd/TargetTable.h"

HWY_BEFORE_NAMESPACE();
namespace Korvex2::Bayer::HWY_NAMESPACE {

#if KORVEX2_BAYER_HAS_VECTORS

// Both samples of each pair become its first or its second.
template <bool kSecond, typename Sample>
HWY_INLINE void storeTwice(Samples<Sample> samples, Sample* to) {
  const auto value = half<Sample, kSecond>(samples);
  storeHalves<Sample>(value, value, to);
}

template <bool kColourFirst, typename Sample>
void nearestNeighborRow(const Sample* row, int cols, Sample* green, Sample* colour,
                        Sample* colourOfOtherRow) {
  const int step = static_cast<int>(hn::Lanes(SampleTag<Sample>()));
  for (int x = 0; x < cols; x += step) {
    const auto samples = loadSamples(row + x);
    storeTwice<!kColourFirst>(samples, colour + x);
    storeTwice<!kColourFirst>(samples, colourOfOtherRow + x);
    storeTwice<kColourFirst>(samples, green + x);
  }
}

// The two rows of a tile have one red and one blue, so each row of the mosaic fills its colour in
// both.
template <typename Sample>
void nearestNeighbor(const Block<Sample>& block) {
  for (int y = 0; y < block.rows; ++y) {
    const bool redRow = (y & 1) == block.redRow;
    const bool colourFirst = redRow == (block.redColumn == 0);
    const std::ptrdiff_t offset = y * block.stride;
    const std::ptrdiff_t otherOffset = (y ^ 1) * block.stride;
    Sample* const colour = redRow ? block.red : block.blue;
    (colourFirst ? nearestNeighborRow<true, Sample>
                 : nearestNeighborRow<false, Sample>)(block.mosaic[y], block.cols,
                                                      block.green + offset, colour + offset,
                                                      colour + otherOffset);
  }
}

BlockFunctions nearestNeighborFunctions() {
  return {nearestNeighbor<std::uint8_t>, nearestNeighbor<std::uint16_t>};
}

#else

BlockFunctions nearestNeighborFunctions() {
  return kNearestNeighbor.functions(Target::kPlain);
}

#endif

}  // namespace Korvex2::Bayer::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Korvex2::Bayer {

HWY_EXPORT(nearestNeighborFunctions);

BlockFunctions nearestNeighborSimd(Target target) {
  return KORVEX2_FOR_TARGET(nearestNeighborFunctions, target)();
}

}  // namespace Korvex2::Bayer
#endif
