#include "Output.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "OutputSimd.cpp"
#include "hwy/foreach_target.h"
// After foreach_target.h.
#include "PairLanes-inl.h"
#include "simd/DispatchTable.h"

HWY_BEFORE_NAMESPACE();
namespace Korvex2::Bayer::HWY_NAMESPACE {

#if KORVEX2_BAYER_HAS_VECTORS

using Tag8 = SampleTag<std::uint8_t>;
using Tag16 = SampleTag<std::uint16_t>;

// How one vector of each plane becomes pixels. `out` is a multiple of the channel's size.

struct Three8 {
  using Sample = std::uint8_t;
  static constexpr int kPixelBytes = 3;
  static HWY_INLINE void StorePixels(const Sample* first, const Sample* second, const Sample* third,
                                     unsigned char* out) {
    const Tag8 tag;
    hn::StoreInterleaved3(hn::LoadU(tag, first), hn::LoadU(tag, second), hn::LoadU(tag, third), tag,
                          out);
  }
};

struct Four8 {
  using Sample = std::uint8_t;
  static constexpr int kPixelBytes = 4;
  static HWY_INLINE void StorePixels(const Sample* first, const Sample* second, const Sample* third,
                                     unsigned char* out) {
    const Tag8 tag;
    hn::StoreInterleaved4(hn::LoadU(tag, first), hn::LoadU(tag, second), hn::LoadU(tag, third),
                          hn::Set(tag, 0xFF), tag, out);
  }
};

struct Three8Narrowed {
  using Sample = std::uint16_t;
  static constexpr int kPixelBytes = 3;
  using Narrow = hn::Rebind<std::uint8_t, Tag16>;
  static HWY_INLINE hn::Vec<Narrow> Narrowed(const Sample* from) {
    const hn::RebindToSigned<Tag16> tag;
    return hn::DemoteTo(Narrow(), hn::BitCast(tag, hn::ShiftRight<8>(hn::LoadU(Tag16(), from))));
  }
  static HWY_INLINE void StorePixels(const Sample* first, const Sample* second, const Sample* third,
                                     unsigned char* out) {
    hn::StoreInterleaved3(Narrowed(first), Narrowed(second), Narrowed(third), Narrow(), out);
  }
};

struct Four8Narrowed {
  using Sample = std::uint16_t;
  static constexpr int kPixelBytes = 4;
  using Narrow = hn::Rebind<std::uint8_t, Tag16>;
  static HWY_INLINE void StorePixels(const Sample* first, const Sample* second, const Sample* third,
                                     unsigned char* out) {
    hn::StoreInterleaved4(Three8Narrowed::Narrowed(first), Three8Narrowed::Narrowed(second),
                          Three8Narrowed::Narrowed(third), hn::Set(Narrow(), 0xFF), Narrow(), out);
  }
};

struct Three16 {
  using Sample = std::uint16_t;
  static constexpr int kPixelBytes = 6;
  static HWY_INLINE void StorePixels(const Sample* first, const Sample* second, const Sample* third,
                                     unsigned char* out) {
    const Tag16 tag;
    hn::StoreInterleaved3(hn::LoadU(tag, first), hn::LoadU(tag, second), hn::LoadU(tag, third), tag,
                          reinterpret_cast<Sample*>(out));
  }
};

struct Four16 {
  using Sample = std::uint16_t;
  static constexpr int kPixelBytes = 8;
  static HWY_INLINE void StorePixels(const Sample* first, const Sample* second, const Sample* third,
                                     unsigned char* out) {
    const Tag16 tag;
    hn::StoreInterleaved4(hn::LoadU(tag, first), hn::LoadU(tag, second), hn::LoadU(tag, third),
                          hn::Set(tag, 0xFFFF), tag, reinterpret_cast<Sample*>(out));
  }
};

// A row in whole vectors. The last one overlaps the one before it, as nothing may be written beyond
// the row; rows of less than a vector are left to `plain`.
template <typename Store, RowWriter<typename Store::Sample> RowWriters::*plain>
void WriteRow(const typename Store::Sample* first, const typename Store::Sample* second,
              const typename Store::Sample* third, int cols, unsigned char* out) {
  const int step = static_cast<int>(hn::Lanes(SampleTag<typename Store::Sample>()));
  if (cols < step) return (PlainRowWriters().*plain)(first, second, third, cols, out);
  const auto at = [&](int x) HWY_ATTR {
    unsigned char* const pixels = out + std::ptrdiff_t{x} * Store::kPixelBytes;
    for (int i = 0; i < step * Store::kPixelBytes; i += 64) {
      __builtin_prefetch(pixels + i + 2048);
    }
    Store::StorePixels(first + x, second + x, third + x, pixels);
  };
  int x = 0;
  for (; x <= cols - step; x += step) at(x);
  if (x < cols) at(cols - step);
}

RowWriters VectorRowWriters() {
  return {.three8 = WriteRow<Three8, &RowWriters::three8>,
          .four8 = WriteRow<Four8, &RowWriters::four8>,
          .three8Narrowed = WriteRow<Three8Narrowed, &RowWriters::three8Narrowed>,
          .four8Narrowed = WriteRow<Four8Narrowed, &RowWriters::four8Narrowed>,
          .three16 = WriteRow<Three16, &RowWriters::three16>,
          .four16 = WriteRow<Four16, &RowWriters::four16>};
}

#else

RowWriters VectorRowWriters() {
  return PlainRowWriters();
}

#endif

}  // namespace Korvex2::Bayer::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Korvex2::Bayer {

HWY_EXPORT(VectorRowWriters);

RowWriters SimdRowWriters(InstructionSet set) {
  return KORVEX2_FOR_INSTRUCTION_SET(VectorRowWriters, set)();
}

}  // namespace Korvex2::Bayer
#endif
