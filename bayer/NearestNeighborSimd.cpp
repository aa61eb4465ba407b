#include "NearestNeighbor.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "NearestNeighborSimd.cpp"
#include "hwy/foreach_target.h"
// After foreach_target.h.
#include "PairLanes-inl.h"
#include "simd/DispatchTable.h"

HWY_BEFORE_NAMESPACE();
namespace Korvex2::Bayer::HWY_NAMESPACE {

#if KORVEX2_BAYER_HAS_VECTORS

// Both samples of each pair become its first or its second.
template <bool kSecond, typename Sample>
HWY_INLINE void StoreTwice(Samples<Sample> samples, Sample* to) {
  const auto value = Half<Sample, kSecond>(samples);
  StoreHalves<Sample>(value, value, to);
}

template <bool kColourFirst, typename Sample>
void NearestNeighborRow(const Sample* row, int cols, Sample* green, Sample* colour,
                        Sample* colourOfOtherRow) {
  const int step = static_cast<int>(hn::Lanes(SampleTag<Sample>()));
  for (int x = 0; x < cols; x += step) {
    const auto samples = LoadSamples(row + x);
    StoreTwice<!kColourFirst>(samples, colour + x);
    StoreTwice<!kColourFirst>(samples, colourOfOtherRow + x);
    StoreTwice<kColourFirst>(samples, green + x);
  }
}

// The two rows of a tile have one red and one blue, so each row of the mosaic fills its colour in
// both.
template <typename Sample>
void NearestNeighbor(const Block<Sample>& block) {
  for (int y = 0; y < block.rows; ++y) {
    const bool redRow = (y & 1) == block.redRow;
    const bool colourFirst = redRow == (block.redColumn == 0);
    const std::ptrdiff_t offset = y * block.stride;
    const std::ptrdiff_t otherOffset = (y ^ 1) * block.stride;
    Sample* const colour = redRow ? block.red : block.blue;
    (colourFirst ? NearestNeighborRow<true, Sample>
                 : NearestNeighborRow<false, Sample>)(block.mosaic[y], block.cols,
                                                      block.green + offset, colour + offset,
                                                      colour + otherOffset);
  }
}

BlockFunctions NearestNeighborFunctions() {
  return {NearestNeighbor<std::uint8_t>, NearestNeighbor<std::uint16_t>};
}

#else

BlockFunctions NearestNeighborFunctions() {
  return kNearestNeighbor.functions(InstructionSet::Plain);
}

#endif

}  // namespace Korvex2::Bayer::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Korvex2::Bayer {

HWY_EXPORT(NearestNeighborFunctions);

BlockFunctions NearestNeighborSimd(InstructionSet set) {
  return KORVEX2_FOR_INSTRUCTION_SET(NearestNeighborFunctions, set)();
}

}  // namespace Korvex2::Bayer
#endif
