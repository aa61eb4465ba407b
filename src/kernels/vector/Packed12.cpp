// Packed 12-bit samples.

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels/vector/Packed12.cpp"
#include "hwy/foreach_target.h"
// After foreach_target.h.
#include "kernels/vector/Interleave-inl.h"
#include "kernels/vector/Packed12-inl.h"
#include "kernels/vector/Vector.h"
#include "simd/DispatchTable.h"

HWY_BEFORE_NAMESPACE();
namespace Korvex2::Kernels::HWY_NAMESPACE {

#if HWY_TARGET != HWY_SCALAR

std::size_t Pack8To12(const std::uint8_t* HWY_RESTRICT src, std::uint8_t* HWY_RESTRICT dst,
                      std::size_t pixels) {
  const std::size_t n = hn::Lanes(Tag8());
  std::size_t done = 0;
  for (; done + n <= pixels; done += n) {
    PrefetchAhead<2, 3>(src + done, dst + done / 2 * 3);
    StorePacked12(hn::LoadU(Tag8(), src + done), dst + done / 2 * 3);
  }
  return done;
}

std::size_t Pack16To12(const std::uint8_t* HWY_RESTRICT src, std::uint8_t* HWY_RESTRICT dst,
                       std::size_t pixels) {
  const std::size_t n = hn::Lanes(Tag8());
  std::size_t done = 0;
  for (; done + n <= pixels; done += n) {
    PrefetchAhead<4, 3>(src + 2 * done, dst + done / 2 * 3);
    const auto* words = reinterpret_cast<const std::uint16_t*>(src + 2 * done);
    StorePacked12(hn::LoadU(Tag16(), words), hn::LoadU(Tag16(), words + n / 2), dst + done / 2 * 3);
  }
  return done;
}

#if KORVEX2_VBMI

std::size_t Unpack12To8(const std::uint8_t* HWY_RESTRICT src, std::uint8_t* HWY_RESTRICT dst,
                        std::size_t pixels) {
  static constexpr Picks kHigh = MakePicks(32, [](std::size_t i) { return i / 2 * 3 + i % 2 * 2; });
  std::size_t done = 0;
  for (; done + 64 <= pixels; done += 64) {
    const std::uint8_t* p = src + done / 2 * 3;
    PrefetchAhead<3, 2>(p, dst + done);
    const Vec8 first = hn::LoadU(Tag8(), p);
    hn::StoreU(Pick(kHigh, first, hn::LoadU(Tag8(), p + 32)), Tag8(), dst + done);
  }
  return done;
}

// Words of nibbles | high byte; the nibble of A is the upper one, that of B the lower one.
HWY_INLINE Vec16 UnpackWords(const Picks& picks, Vec8 groups) {
  const Vec16 words{_mm512_permutexvar_epi8(_mm512_load_si512(picks.place.at), groups.raw)};
  const Vec32 kept = hn::Set(Tag32(), 0xFF00FFF0);
  const Vec32 raised = hn::Set(Tag32(), 0x00F00000);
  const Vec32 ofA = hn::And(AsDoubleWords(AsBytes(words)), kept);
  const Vec32 ofB = hn::And(AsDoubleWords(AsBytes(hn::ShiftLeft<4>(words))), raised);
  return AsWords(AsBytes(hn::Or(ofA, ofB)));
}

std::size_t Unpack12To16(const std::uint8_t* HWY_RESTRICT src, std::uint8_t* HWY_RESTRICT dst,
                         std::size_t pixels) {
  constexpr auto kPlace = [](std::size_t i) {
    return i / 4 * 3 + (i % 2 == 0 ? 1 : i % 4 / 2 * 2);
  };
  static constexpr Picks kFirst = MakePicks(0, kPlace);
  static constexpr Picks kLast = MakePicks(0, [kPlace](std::size_t i) { return 16 + kPlace(i); });
  std::size_t done = 0;
  for (; done + 64 <= pixels; done += 64) {
    const std::uint8_t* p = src + done / 2 * 3;
    PrefetchAhead<3, 4>(p, dst + 2 * done);
    auto* words = reinterpret_cast<std::uint16_t*>(dst + 2 * done);
    hn::StoreU(UnpackWords(kFirst, hn::LoadU(Tag8(), p)), Tag16(), words);
    hn::StoreU(UnpackWords(kLast, hn::LoadU(Tag8(), p + 32)), Tag16(), words + 32);
  }
  return done;
}

#else

HWY_INLINE Vec8 HighNibble(Vec8 v) {
  return hn::And(v, hn::Set(Tag8(), 0xF0));
}
HWY_INLINE Vec8 LowNibbleUp(Vec8 v) {
  return HighNibble(hn::BitCast(Tag8(), hn::ShiftLeft<4>(hn::BitCast(Tag16(), v))));
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
    StoreFour(HighNibble(nibbles), first, LowNibbleUp(nibbles), second, dst + 2 * done);
  }
  return done;
}

#endif

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

}  // namespace Korvex2::Kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Korvex2::Kernels::Vector {

HWY_EXPORT(FindPacked12);

FastKernel Packed12(Simd::InstructionSet set, Routine routine) {
  return KORVEX2_FOR_INSTRUCTION_SET(FindPacked12, set)(routine);
}

}  // namespace Korvex2::Kernels::Vector
#endif
