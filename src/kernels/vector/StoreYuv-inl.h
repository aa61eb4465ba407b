// Stores of luma and of packed YUV, from pixels of RGB. Included once per instruction set.

#if defined(KORVEX2_STOREYUV_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KORVEX2_STOREYUV_INL_H_
#undef KORVEX2_STOREYUV_INL_H_
#else
#define KORVEX2_STOREYUV_INL_H_
#endif

#include "kernels/vector/Arithmetic-inl.h"
#include "kernels/vector/Interleave-inl.h"
#include "kernels/vector/Packed12-inl.h"
#include "kernels/vector/Quads-inl.h"

HWY_BEFORE_NAMESPACE();
namespace Korvex2::Kernels::HWY_NAMESPACE {

#if HWY_TARGET != HWY_SCALAR

// --- Luma and chroma of a vector of pixels

#if KORVEX2_X86

template <typename Load>
HWY_INLINE Vec8 GetLuma(const std::uint8_t* p) {
  Vec8 quads[4];
  Quads<Load>::Get(p, quads);
  return LumaOfQuads<Quads<Load>>(quads);
}

template <typename Load>
HWY_INLINE void GetYuv(const std::uint8_t* p, Vec8& y, Vec8& u, Vec8& v) {
  Vec8 quads[4];
  Quads<Load>::Get(p, quads);
  y = LumaOfQuads<Quads<Load>>(quads);
  u = ChromaUOfQuads<Quads<Load>>(quads);
  v = ChromaVOfQuads<Quads<Load>>(quads);
}

#else

template <typename Load>
HWY_INLINE Vec8 GetLuma(const std::uint8_t* p) {
  Vec8 r, g, b, a;
  Load::Get(p, r, g, b, a);
  return LumaOfBytes(r, g, b);
}

template <typename Load>
HWY_INLINE void GetYuv(const std::uint8_t* p, Vec8& y, Vec8& u, Vec8& v) {
  Vec8 r, g, b, a;
  Load::Get(p, r, g, b, a);
  Encode(r, g, b, y, u, v);
}

#endif

// --- Stores of luma

struct StoreY8 {
  static constexpr std::size_t kBytesOfTwo = 2;
  static HWY_INLINE void Put(Vec8 y, std::uint8_t* p) { hn::StoreU(y, Tag8(), p); }
};

struct StoreY16 {
  static constexpr std::size_t kBytesOfTwo = 4;
  static HWY_INLINE void Put(Vec8 y, std::uint8_t* p) { StoreRepeated(y, p); }
};

struct StoreY12 {
  static constexpr std::size_t kBytesOfTwo = 3;
  static HWY_INLINE void Put(Vec8 y, std::uint8_t* p) { StorePacked12(y, p); }
};

// --- Stores of packed YUV, of a vector of pixels as (luma, U, V)

// The truncated mean of each two, and of each four, neighbours: as words, and as double words.
#if KORVEX2_X86

HWY_INLINE Vec16 MeanOfTwo(Vec8 v) {
  const Vec8 ones = hn::Set(Tag8(), 1);
  return hn::ShiftRight<1>(Vec16{KORVEX2_INTRINSIC(maddubs_epi16)(v.raw, ones.raw)});
}
HWY_INLINE Vec32 MeanOfFour(Vec8 v) {
  return hn::ShiftRight<2>(Dot(v, hn::Set(Tag8(), 1), 0));
}

#else

HWY_INLINE Vec16 MeanOfTwo(Vec8 v) {
  return hn::ShiftRight<1>(hn::Add(Even(v), Odd(v)));
}
HWY_INLINE Vec32 MeanOfFour(Vec8 v) {
  const Vec32 pairs = AsDoubleWords(AsBytes(hn::Add(Even(v), Odd(v))));
  const Vec32 low = hn::And(pairs, hn::Set(Tag32(), 0xFFFF));
  return hn::ShiftRight<2>(hn::Add(low, hn::ShiftRight<16>(pairs)));
}

#endif

// U Y V.
struct Yuv444 {
  static constexpr std::size_t kBytesOfTwo = 6;
  static HWY_INLINE void Put(Vec8 y, Vec8 u, Vec8 v, std::uint8_t* p) { StoreThree(u, y, v, p); }
};

#if KORVEX2_VBMI

// U Y0 V Y1.
struct Yuv422 {
  static constexpr std::size_t kBytesOfTwo = 4;
  static HWY_INLINE void Put(Vec8 y, Vec8 u, Vec8 v, std::uint8_t* p) {
    constexpr auto kPlace = [](std::size_t i) { return i % 2 * 64 + i / 2; };
    static constexpr Picks kFirst = MakePicks(64, kPlace);
    static constexpr Picks kRest =
        MakePicks(64, [kPlace](std::size_t i) { return kPlace(64 + i); });
    const Vec8 chroma = AsBytes(hn::Or(MeanOfTwo(u), hn::ShiftLeft<8>(MeanOfTwo(v))));
    hn::StoreU(Pick(kFirst, chroma, y), Tag8(), p);
    hn::StoreU(Pick(kRest, chroma, y), Tag8(), p + 64);
  }
};

// U Y0 Y1 V Y2 Y3.
struct Yuv411 {
  static constexpr std::size_t kBytesOfTwo = 3;
  static HWY_INLINE void Put(Vec8 y, Vec8 u, Vec8 v, std::uint8_t* p) {
    constexpr auto kPlace = [](std::size_t i) {
      constexpr std::size_t kInGroup[6] = {0, 64, 65, 1, 66, 67};
      return i / 6 * 4 + kInGroup[i % 6];
    };
    static constexpr Picks kFirst = MakePicks(64, kPlace);
    static constexpr Picks kRest =
        MakePicks(64, [kPlace](std::size_t i) { return kPlace(64 + i % 32); });
    const Vec8 chroma = AsBytes(hn::Or(MeanOfFour(u), hn::ShiftLeft<8>(MeanOfFour(v))));
    hn::StoreU(Pick(kFirst, chroma, y), Tag8(), p);
    hn::StoreU(hn::LowerHalf(Pick(kRest, chroma, y)), Half8(), p + 64);
  }
};

#else

// U Y0 V Y1, as the words U|Y0, V|Y1.
struct Yuv422 {
  static constexpr std::size_t kBytesOfTwo = 4;
  static HWY_INLINE void Put(Vec8 y, Vec8 u, Vec8 v, std::uint8_t* p) {
    const Vec16 first = hn::Or(MeanOfTwo(u), hn::ShiftLeft<8>(AsWords(y)));
    const Vec16 second = hn::Or(MeanOfTwo(v), hn::AndNot(hn::Set(Tag16(), 0x00FF), AsWords(y)));
    hn::StoreInterleaved2(first, second, Tag16(), reinterpret_cast<std::uint16_t*>(p));
  }
};

HWY_INLINE hn::Vec<Half16> ToWords(Vec32 v) {
  return hn::DemoteTo(Half16(), hn::BitCast(hn::RebindToSigned<Tag32>(), v));
}

// U Y0 Y1 V Y2 Y3, as the words U|Y0, Y1|V, Y2|Y3.
struct Yuv411 {
  static constexpr std::size_t kBytesOfTwo = 3;
  static HWY_INLINE void Put(Vec8 y, Vec8 u, Vec8 v, std::uint8_t* p) {
    const Vec32 ys = AsDoubleWords(y);
    const Vec32 byte = hn::Set(Tag32(), 0xFF);
    const Vec32 first = hn::Or(MeanOfFour(u), hn::ShiftLeft<8>(hn::And(ys, byte)));
    const Vec32 second =
        hn::Or(hn::And(hn::ShiftRight<8>(ys), byte), hn::ShiftLeft<8>(MeanOfFour(v)));
    const Vec32 third = hn::ShiftRight<16>(ys);
    hn::StoreInterleaved3(ToWords(first), ToWords(second), ToWords(third), Half16(),
                          reinterpret_cast<std::uint16_t*>(p));
  }
};

#endif

/// Luma of whole vectors of pixels; answers how many pixels it did.
template <typename Load, typename Store>
std::size_t EncodeLuma(const std::uint8_t* HWY_RESTRICT src, std::uint8_t* HWY_RESTRICT dst,
                       std::size_t pixels) {
  const std::size_t n = hn::Lanes(Tag8());
  std::size_t done = 0;
  for (; done + n <= pixels; done += n) {
    PrefetchAhead<Load::kBytesOfTwo, Store::kBytesOfTwo>(src, dst);
    Store::Put(GetLuma<Load>(src), dst);
    src += n / 2 * Load::kBytesOfTwo;
    dst += n / 2 * Store::kBytesOfTwo;
  }
  return done;
}

/// Encodes whole vectors of pixels; answers how many pixels it did.
template <typename Load, typename Yuv>
std::size_t EncodeColour(const std::uint8_t* HWY_RESTRICT src, std::uint8_t* HWY_RESTRICT dst,
                         std::size_t pixels) {
  const std::size_t n = hn::Lanes(Tag8());
  std::size_t done = 0;
  for (; done + n <= pixels; done += n) {
    PrefetchAhead<Load::kBytesOfTwo, Yuv::kBytesOfTwo>(src, dst);
    Vec8 y, u, v;
    GetYuv<Load>(src, y, u, v);
    Yuv::Put(y, u, v, dst);
    src += n / 2 * Load::kBytesOfTwo;
    dst += n / 2 * Yuv::kBytesOfTwo;
  }
  return done;
}

#endif  // HWY_TARGET != HWY_SCALAR

}  // namespace Korvex2::Kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
