// Pixels of 3 and 4 interleaved channels, as one vector a channel.
//
// A Load reads the pixels of one vector of bytes from a format, a Store writes them to another; a
// pixel is (red, green, blue, alpha), 8 bits each. Formats of 16 bits keep the high byte of what
// they load and repeat the byte in what they store. Included once per instruction set.

#if defined(KORVEX2_INTERLEAVE_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KORVEX2_INTERLEAVE_INL_H_
#undef KORVEX2_INTERLEAVE_INL_H_
#else
#define KORVEX2_INTERLEAVE_INL_H_
#endif

#include <cstddef>
#include <cstdint>

#include "hwy/highway.h"

HWY_BEFORE_NAMESPACE();
namespace Korvex2::kernels::HWY_NAMESPACE {

#if HWY_TARGET != HWY_SCALAR

namespace hn = hwy::HWY_NAMESPACE;

using Tag8 = hn::ScalableTag<std::uint8_t>;
using Tag16 = hn::ScalableTag<std::uint16_t>;
using Half8 = hn::Half<Tag8>;
using Vec8 = hn::Vec<Tag8>;
using Vec16 = hn::Vec<Tag16>;

// Words of which only the high byte is kept, two vectors of them into one of bytes, in order.
HWY_INLINE Vec8 HighBytes(Vec16 low, Vec16 high) {
  const hn::RebindToSigned<Tag16> d;
  const auto lower = hn::DemoteTo(Half8(), hn::BitCast(d, hn::ShiftRight<8>(low)));
  const auto upper = hn::DemoteTo(Half8(), hn::BitCast(d, hn::ShiftRight<8>(high)));
  return hn::Combine(Tag8(), upper, lower);
}

// v * 257 of the first and of the second half of a vector of bytes, in order.
HWY_INLINE Vec16 Repeat(hn::Vec<Half8> bytes) {
  const Vec16 words = hn::PromoteTo(Tag16(), bytes);
  return hn::Or(hn::ShiftLeft<8>(words), words);
}
HWY_INLINE Vec16 RepeatLower(Vec8 bytes) {
  return Repeat(hn::LowerHalf(bytes));
}
HWY_INLINE Vec16 RepeatUpper(Vec8 bytes) {
  return Repeat(hn::UpperHalf(Half8(), bytes));
}

struct LoadY8 {
  static constexpr std::size_t kBytes = 1;
  static HWY_INLINE void Get(const std::uint8_t* p, Vec8& r, Vec8& g, Vec8& b, Vec8& a) {
    r = g = b = hn::LoadU(Tag8(), p);
    a = hn::Set(Tag8(), 0xFF);
  }
};

struct LoadRgb {
  static constexpr std::size_t kBytes = 3;
  static HWY_INLINE void Get(const std::uint8_t* p, Vec8& r, Vec8& g, Vec8& b, Vec8& a) {
    hn::LoadInterleaved3(Tag8(), p, r, g, b);
    a = hn::Set(Tag8(), 0xFF);
  }
};

struct LoadRgbu {
  static constexpr std::size_t kBytes = 4;
  static HWY_INLINE void Get(const std::uint8_t* p, Vec8& r, Vec8& g, Vec8& b, Vec8& a) {
    hn::LoadInterleaved4(Tag8(), p, r, g, b, a);
  }
};

struct LoadY16 {
  static constexpr std::size_t kBytes = 2;
  static HWY_INLINE void Get(const std::uint8_t* p, Vec8& r, Vec8& g, Vec8& b, Vec8& a) {
    const auto* words = reinterpret_cast<const std::uint16_t*>(p);
    const std::size_t n = hn::Lanes(Tag16());
    r = g = b = HighBytes(hn::LoadU(Tag16(), words), hn::LoadU(Tag16(), words + n));
    a = hn::Set(Tag8(), 0xFF);
  }
};

struct LoadRgb16 {
  static constexpr std::size_t kBytes = 6;
  static HWY_INLINE void Get(const std::uint8_t* p, Vec8& r, Vec8& g, Vec8& b, Vec8& a) {
    const auto* words = reinterpret_cast<const std::uint16_t*>(p);
    const std::size_t n = hn::Lanes(Tag16());
    Vec16 r0, g0, b0, r1, g1, b1;
    hn::LoadInterleaved3(Tag16(), words, r0, g0, b0);
    hn::LoadInterleaved3(Tag16(), words + 3 * n, r1, g1, b1);
    r = HighBytes(r0, r1);
    g = HighBytes(g0, g1);
    b = HighBytes(b0, b1);
    a = hn::Set(Tag8(), 0xFF);
  }
};

struct LoadRgbu16 {
  static constexpr std::size_t kBytes = 8;
  static HWY_INLINE void Get(const std::uint8_t* p, Vec8& r, Vec8& g, Vec8& b, Vec8& a) {
    const auto* words = reinterpret_cast<const std::uint16_t*>(p);
    const std::size_t n = hn::Lanes(Tag16());
    Vec16 r0, g0, b0, a0, r1, g1, b1, a1;
    hn::LoadInterleaved4(Tag16(), words, r0, g0, b0, a0);
    hn::LoadInterleaved4(Tag16(), words + 4 * n, r1, g1, b1, a1);
    r = HighBytes(r0, r1);
    g = HighBytes(g0, g1);
    b = HighBytes(b0, b1);
    a = HighBytes(a0, a1);
  }
};

struct StoreRgb {
  static constexpr std::size_t kBytes = 3;
  static HWY_INLINE void Put(Vec8 r, Vec8 g, Vec8 b, Vec8, std::uint8_t* p) {
    hn::StoreInterleaved3(r, g, b, Tag8(), p);
  }
};

struct StoreRgbu {
  static constexpr std::size_t kBytes = 4;
  static HWY_INLINE void Put(Vec8 r, Vec8 g, Vec8 b, Vec8 a, std::uint8_t* p) {
    hn::StoreInterleaved4(r, g, b, a, Tag8(), p);
  }
};

struct StoreRgb16 {
  static constexpr std::size_t kBytes = 6;
  static HWY_INLINE void Put(Vec8 r, Vec8 g, Vec8 b, Vec8, std::uint8_t* p) {
    auto* words = reinterpret_cast<std::uint16_t*>(p);
    const std::size_t n = hn::Lanes(Tag16());
    hn::StoreInterleaved3(RepeatLower(r), RepeatLower(g), RepeatLower(b), Tag16(), words);
    hn::StoreInterleaved3(RepeatUpper(r), RepeatUpper(g), RepeatUpper(b), Tag16(), words + 3 * n);
  }
};

struct StoreRgbu16 {
  static constexpr std::size_t kBytes = 8;
  static HWY_INLINE void Put(Vec8 r, Vec8 g, Vec8 b, Vec8 a, std::uint8_t* p) {
    auto* words = reinterpret_cast<std::uint16_t*>(p);
    const std::size_t n = hn::Lanes(Tag16());
    hn::StoreInterleaved4(RepeatLower(r), RepeatLower(g), RepeatLower(b), RepeatLower(a), Tag16(),
                          words);
    hn::StoreInterleaved4(RepeatUpper(r), RepeatUpper(g), RepeatUpper(b), RepeatUpper(a), Tag16(),
                          words + 4 * n);
  }
};

// The same formats in the other order: red and blue change places.
template <typename Rgb>
struct LoadSwapped {
  static constexpr std::size_t kBytes = Rgb::kBytes;
  static HWY_INLINE void Get(const std::uint8_t* p, Vec8& r, Vec8& g, Vec8& b, Vec8& a) {
    Rgb::Get(p, b, g, r, a);
  }
};
using LoadBgr = LoadSwapped<LoadRgb>;
using LoadBgru = LoadSwapped<LoadRgbu>;
using LoadBgr16 = LoadSwapped<LoadRgb16>;
using LoadBgru16 = LoadSwapped<LoadRgbu16>;

template <typename Rgb>
struct StoreSwapped {
  static constexpr std::size_t kBytes = Rgb::kBytes;
  static HWY_INLINE void Put(Vec8 r, Vec8 g, Vec8 b, Vec8 a, std::uint8_t* p) {
    Rgb::Put(b, g, r, a, p);
  }
};
using StoreBgr = StoreSwapped<StoreRgb>;
using StoreBgru = StoreSwapped<StoreRgbu>;
using StoreBgr16 = StoreSwapped<StoreRgb16>;
using StoreBgru16 = StoreSwapped<StoreRgbu16>;

// Drops whatever alpha was loaded.
template <typename Store>
struct Opaque {
  static constexpr std::size_t kBytes = Store::kBytes;
  static HWY_INLINE void Put(Vec8 r, Vec8 g, Vec8 b, Vec8, std::uint8_t* p) {
    Store::Put(r, g, b, hn::Set(Tag8(), 0xFF), p);
  }
};

/// Moves whole vectors of pixels from one format to another; answers how many pixels it did.
template <typename Load, typename Store>
std::size_t Move(const std::uint8_t* HWY_RESTRICT src, std::uint8_t* HWY_RESTRICT dst,
                 std::size_t pixels) {
  const std::size_t n = hn::Lanes(Tag8());
  std::size_t done = 0;
  for (; done + n <= pixels; done += n) {
    Vec8 r, g, b, a;
    Load::Get(src + done * Load::kBytes, r, g, b, a);
    Store::Put(r, g, b, a, dst + done * Store::kBytes);
  }
  return done;
}

#endif  // HWY_TARGET != HWY_SCALAR

}  // namespace Korvex2::kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
