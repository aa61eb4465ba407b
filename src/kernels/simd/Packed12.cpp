// Packed 12-bit samples.

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels/simd/Packed12.cpp"
#include "hwy/foreach_target.h"
// After foreach_target.h.
#include "kernels/simd/Interleave-inl.h"
#include "kernels/simd/Simd.h"
#include "simd/TargetTable.h"

HWY_BEFORE_NAMESPACE();
namespace Korvex2::kernels::HWY_NAMESPACE {

#if HWY_TARGET != HWY_SCALAR

HWY_INLINE Vec8 HighNibble(Vec8 v) {
  return hn::And(v, hn::Set(Tag8(), 0xF0));
}
HWY_INLINE Vec8 LowNibbleUp(Vec8 v) {
  return HighNibble(hn::BitCast(Tag8(), hn::ShiftLeft<4>(hn::BitCast(Tag16(), v))));
}
HWY_INLINE Vec8 HighNibbleDown(Vec8 v) {
  return hn::BitCast(Tag8(), hn::ShiftRight<4>(hn::BitCast(Tag16(), HighNibble(v))));
}

std::size_t Pack8To12(const std::uint8_t* HWY_RESTRICT src, std::uint8_t* HWY_RESTRICT dst,
                      std::size_t pixels) {
  const std::size_t n = 2 * hn::Lanes(Tag8());
  std::size_t done = 0;
  for (; done + n <= pixels; done += n) {
    Vec8 a, b;
    hn::LoadInterleaved2(Tag8(), src + done, a, b);
    const Vec8 nibbles = hn::Or(LowNibbleUp(b), hn::And(a, hn::Set(Tag8(), 0x0F)));
    hn::StoreInterleaved3(a, nibbles, b, Tag8(), dst + done / 2 * 3);
  }
  return done;
}

std::size_t Pack16To12(const std::uint8_t* HWY_RESTRICT src, std::uint8_t* HWY_RESTRICT dst,
                       std::size_t pixels) {
  const std::size_t n = 2 * hn::Lanes(Tag8());
  std::size_t done = 0;
  for (; done + n <= pixels; done += n) {
    Vec8 low0, high0, low1, high1;
    hn::LoadInterleaved4(Tag8(), src + 2 * done, low0, high0, low1, high1);
    const Vec8 nibbles = hn::Or(HighNibbleDown(low0), HighNibble(low1));
    hn::StoreInterleaved3(high0, nibbles, high1, Tag8(), dst + done / 2 * 3);
  }
  return done;
}

std::size_t Unpack12To8(const std::uint8_t* HWY_RESTRICT src, std::uint8_t* HWY_RESTRICT dst,
                        std::size_t pixels) {
  const std::size_t n = 2 * hn::Lanes(Tag8());
  std::size_t done = 0;
  for (; done + n <= pixels; done += n) {
    Vec8 first, nibbles, second;
    hn::LoadInterleaved3(Tag8(), src + done / 2 * 3, first, nibbles, second);
    hn::StoreInterleaved2(first, second, Tag8(), dst + done);
  }
  return done;
}

std::size_t Unpack12To16(const std::uint8_t* HWY_RESTRICT src, std::uint8_t* HWY_RESTRICT dst,
                         std::size_t pixels) {
  const std::size_t n = 2 * hn::Lanes(Tag8());
  std::size_t done = 0;
  for (; done + n <= pixels; done += n) {
    Vec8 first, nibbles, second;
    hn::LoadInterleaved3(Tag8(), src + done / 2 * 3, first, nibbles, second);
    hn::StoreInterleaved4(HighNibble(nibbles), first, LowNibbleUp(nibbles), second, Tag8(),
                          dst + 2 * done);
  }
  return done;
}

FastKernel FindPacked12(Routine routine) {
  // clang-format off
  switch (routine) {
    case Routine::ConvertY8ToY12:  return Pack8To12;
    case Routine::ConvertY16ToY12: return Pack16To12;
    case Routine::ConvertY12ToY8:  return Unpack12To8;
    case Routine::ConvertY12ToY16: return Unpack12To16;
    default: return nullptr;
  }
  // clang-format on
}

#else

FastKernel FindPacked12(Routine) {
  return nullptr;
}

#endif

}  // namespace Korvex2::kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Korvex2::kernels::simd {

HWY_EXPORT(FindPacked12);

FastKernel Packed12(Simd::Target target, Routine routine) {
  return KORVEX2_FOR_TARGET(FindPacked12, target)(routine);
}

}  // namespace Korvex2::kernels::simd
#endif
