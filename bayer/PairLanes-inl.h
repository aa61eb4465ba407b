/// Vectors that hold two neighbouring samples per lane. A mosaic row alternates between two
/// colours, so cutting each lane in two separates the colours and widens the samples in one step,
/// without any shuffle; joining the halves puts results back in place.

// Included once per instruction set, by files that are themselves.
#if defined(KORVEX2_BAYER_PAIR_LANES_INL) == defined(HWY_TARGET_TOGGLE)
#ifdef KORVEX2_BAYER_PAIR_LANES_INL
#undef KORVEX2_BAYER_PAIR_LANES_INL
#else
#define KORVEX2_BAYER_PAIR_LANES_INL
#endif

#include <bit>
#include <limits>

#include "Method.h"
#include "hwy/highway.h"

// True where the target has real vectors: Highway's portable targets are left to the plain loops.
#undef KORVEX2_BAYER_HAS_VECTORS
#define KORVEX2_BAYER_HAS_VECTORS (HWY_TARGET != HWY_SCALAR && HWY_TARGET != HWY_EMU128)

#if KORVEX2_BAYER_HAS_VECTORS

HWY_BEFORE_NAMESPACE();
namespace Korvex2::Bayer::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

/// Samples as they lie in memory: at most kVectorBytes of them.
template <typename Sample>
using SampleTag = hn::CappedTag<Sample, kVectorBytes / sizeof(Sample)>;

/// Lanes of twice the width, signed: room for the filters' sums.
template <typename Sample>
using WideTag = hn::RebindToSigned<hn::RepartitionToWide<SampleTag<Sample>>>;

template <typename Sample>
using Samples = hn::Vec<SampleTag<Sample>>;

template <typename Sample>
using Wide = hn::Vec<WideTag<Sample>>;

template <typename Sample>
using Lane = hn::TFromD<WideTag<Sample>>;

template <typename Sample>
HWY_INLINE Samples<Sample> LoadSamples(const Sample* from) {
  return hn::LoadU(SampleTag<Sample>(), from);
}

/// The samples in even places, if kSecond is false, or those in odd places.
template <typename Sample, bool kSecond>
HWY_INLINE Wide<Sample> Half(Samples<Sample> samples) {
  constexpr int kBits = 8 * sizeof(Sample);
  const hn::RepartitionToWide<SampleTag<Sample>> tag;
  const auto pairs = hn::BitCast(tag, samples);
  constexpr bool kUpper = kSecond == (std::endian::native == std::endian::little);
  if constexpr (kUpper) {
    return hn::BitCast(WideTag<Sample>(), hn::ShiftRight<kBits>(pairs));
  } else {
    return hn::BitCast(WideTag<Sample>(),
                       hn::And(pairs, hn::Set(tag, std::numeric_limits<Sample>::max())));
  }
}

/// The same of the samples at an address.
template <bool kSecond, typename Sample>
HWY_INLINE Wide<Sample> LoadHalf(const Sample* from) {
  return Half<Sample, kSecond>(LoadSamples(from));
}

/// Stores even and odd places, which must lie within the samples' range.
template <typename Sample>
HWY_INLINE void StoreHalves(Wide<Sample> first, Wide<Sample> second, Sample* to) {
  constexpr int kBits = 8 * sizeof(Sample);
  constexpr bool kLittle = std::endian::native == std::endian::little;
  const auto low = kLittle ? first : second;
  const auto high = kLittle ? second : first;
  const auto joined = hn::Or(low, hn::ShiftLeft<kBits>(high));
  hn::StoreU(hn::BitCast(SampleTag<Sample>(), joined), SampleTag<Sample>(), to);
}

/// Stores the vector for the colour's places and the one for green's, whichever comes first.
template <bool kColourFirst, typename Sample>
HWY_INLINE void StorePlaces(Wide<Sample> atColour, Wide<Sample> atGreen, Sample* to) {
  if constexpr (kColourFirst) {
    StoreHalves<Sample>(atColour, atGreen, to);
  } else {
    StoreHalves<Sample>(atGreen, atColour, to);
  }
}

/// Brings values into the samples' range.
template <typename Sample>
HWY_INLINE Wide<Sample> InRange(Wide<Sample> value) {
  const WideTag<Sample> tag;
  constexpr auto kMost = static_cast<Lane<Sample>>(std::numeric_limits<Sample>::max());
  return hn::Min(hn::Max(value, hn::Zero(tag)), hn::Set(tag, kMost));
}

/// The sum divided by 2^kShift, rounded to the nearest, halves upwards.
template <typename Sample, int kShift>
HWY_INLINE Wide<Sample> Mean(Wide<Sample> sum) {
  const WideTag<Sample> tag;
  if constexpr (sizeof(Sample) == 1) {
    // (sum * 2^(15 - kShift) + 2^14) >> 15, one instruction.
    return hn::MulFixedPoint15(sum, hn::Set(tag, 1 << (15 - kShift)));
  } else {
    return hn::ShiftRight<kShift>(hn::Add(sum, hn::Set(tag, 1 << (kShift - 1))));
  }
}

}  // namespace Korvex2::Bayer::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif  // KORVEX2_BAYER_HAS_VECTORS
#endif  // include guard
