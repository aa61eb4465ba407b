// Stores of luma and of packed YUV, from pixels of RGB. Included once per instruction set.

#if defined(KORVEX2_STOREYUV_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KORVEX2_STOREYUV_INL_H_
#undef KORVEX2_STOREYUV_INL_H_
#else
#define KORVEX2_STOREYUV_INL_H_
#endif

#include "kernels/simd/Arithmetic-inl.h"
#include "kernels/simd/Interleave-inl.h"

HWY_BEFORE_NAMESPACE();
namespace Korvex2::kernels::HWY_NAMESPACE {

#if HWY_TARGET != HWY_SCALAR

struct StoreY8 {
  static constexpr std::size_t kBytes = 1;
  static HWY_INLINE void Put(Vec8 r, Vec8 g, Vec8 b, Vec8, std::uint8_t* p) {
    hn::StoreU(LumaOfBytes(r, g, b), Tag8(), p);
  }
};

struct StoreY16 {
  static constexpr std::size_t kBytes = 2;
  static HWY_INLINE void Put(Vec8 r, Vec8 g, Vec8 b, Vec8, std::uint8_t* p) {
    const Vec8 y = LumaOfBytes(r, g, b);
    auto* words = reinterpret_cast<std::uint16_t*>(p);
    hn::StoreU(RepeatLower(y), Tag16(), words);
    hn::StoreU(RepeatUpper(y), Tag16(), words + hn::Lanes(Tag16()));
  }
};

// The truncated mean of each two neighbours, as words.
HWY_INLINE Vec16 MeanOfTwo(Vec8 v) {
  return hn::ShiftRight<1>(hn::Add(Even(v), Odd(v)));
}

// The truncated mean of each four neighbours, as double words.
HWY_INLINE Vec32 MeanOfFour(Vec8 v) {
  const Vec32 pairs = hn::BitCast(Tag32(), hn::Add(Even(v), Odd(v)));
  const Vec32 low = hn::And(pairs, hn::Set(Tag32(), 0xFFFF));
  return hn::ShiftRight<2>(hn::Add(low, hn::ShiftRight<16>(pairs)));
}

HWY_INLINE hn::Vec<Half16> Words(Vec32 v) {
  return hn::DemoteTo(Half16(), hn::BitCast(hn::RebindToSigned<Tag32>(), v));
}

// A Yuv store takes a vector of pixels as (luma, U, V). kBytesOfTwo: of two pixels.

// U Y V.
struct Yuv444 {
  static constexpr std::size_t kBytesOfTwo = 6;
  static HWY_INLINE void Put(Vec8 y, Vec8 u, Vec8 v, std::uint8_t* p) {
    StoreThree(u, y, v, p);
  }
};

// U Y0 V Y1, as the words U|Y0, V|Y1.
struct Yuv422 {
  static constexpr std::size_t kBytesOfTwo = 4;
  static HWY_INLINE void Put(Vec8 y, Vec8 u, Vec8 v, std::uint8_t* p) {
    const Vec16 ys = hn::BitCast(Tag16(), y);
    const Vec16 first = hn::Or(MeanOfTwo(u), hn::ShiftLeft<8>(ys));
    const Vec16 second = hn::Or(MeanOfTwo(v), hn::AndNot(hn::Set(Tag16(), 0x00FF), ys));
    hn::StoreInterleaved2(first, second, Tag16(), reinterpret_cast<std::uint16_t*>(p));
  }
};

// U Y0 Y1 V Y2 Y3, as the words U|Y0, Y1|V, Y2|Y3.
struct Yuv411 {
  static constexpr std::size_t kBytesOfTwo = 3;
  static HWY_INLINE void Put(Vec8 y, Vec8 u, Vec8 v, std::uint8_t* p) {
    const Vec32 ys = hn::BitCast(Tag32(), y);
    const Vec32 byte = hn::Set(Tag32(), 0xFF);
    const Vec32 first = hn::Or(MeanOfFour(u), hn::ShiftLeft<8>(hn::And(ys, byte)));
    const Vec32 second =
        hn::Or(hn::And(hn::ShiftRight<8>(ys), byte), hn::ShiftLeft<8>(MeanOfFour(v)));
    const Vec32 third = hn::ShiftRight<16>(ys);
    hn::StoreInterleaved3(Words(first), Words(second), Words(third), Half16(),
                          reinterpret_cast<std::uint16_t*>(p));
  }
};

/// Encodes whole vectors of pixels; answers how many pixels it did.
template <typename Load, typename Yuv>
std::size_t EncodeColour(const std::uint8_t* HWY_RESTRICT src, std::uint8_t* HWY_RESTRICT dst,
                         std::size_t pixels) {
  const std::size_t n = hn::Lanes(Tag8());
  std::size_t done = 0;
  for (; done + n <= pixels; done += n) {
    Vec8 r, g, b, a, y, u, v;
    Load::Get(src + done * Load::kBytes, r, g, b, a);
    Encode(r, g, b, y, u, v);
    Yuv::Put(y, u, v, dst + done / 2 * Yuv::kBytesOfTwo);
  }
  return done;
}

#endif  // HWY_TARGET != HWY_SCALAR

}  // namespace Korvex2::kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
