// Packed YUV into colour, grey, and packed YUV of another kind.

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels/vector/Decode.cpp"
#include "hwy/foreach_target.h"
// After foreach_target.h.
#include "kernels/vector/Arithmetic-inl.h"
#include "kernels/vector/Interleave-inl.h"
#include "kernels/vector/StoreYuv-inl.h"
#include "kernels/vector/Vector.h"
#include "simd/DispatchTable.h"

HWY_BEFORE_NAMESPACE();
namespace Korvex2::Kernels::HWY_NAMESPACE {

#if HWY_TARGET != HWY_SCALAR

// --- Luma and chroma out of their groups; chroma as words U | V << 8, one for two pixels

#if KORVEX2_VBMI

template <std::size_t Second>
HWY_INLINE void PickLumaAndChroma(const std::uint8_t* p, const Picks& luma, const Picks& chroma,
                                  Vec8& y, Vec16& uv) {
  const Vec8 first = hn::LoadU(Tag8(), p);
  const Vec8 second = hn::LoadU(Tag8(), p + Second);
  y = Pick(luma, first, second);
  uv = AsWords(Pick(chroma, first, second));
}

// U Y0 V Y1.
HWY_INLINE void Split422(const std::uint8_t* p, Vec8& y, Vec16& uv) {
  static constexpr Picks kLuma = MakePicks(64, [](std::size_t i) { return 2 * i + 1; });
  static constexpr Picks kChroma = MakePicks(64, [](std::size_t i) { return 2 * i; });
  PickLumaAndChroma<64>(p, kLuma, kChroma, y, uv);
}

// U Y0 Y1 V Y2 Y3.
HWY_INLINE void Split411(const std::uint8_t* p, Vec8& y, Vec16& uv) {
  static constexpr Picks kLuma =
      MakePicks(32, [](std::size_t i) { return i / 4 * 6 + i % 4 + 1 + i % 4 / 2; });
  static constexpr Picks kChroma =
      MakePicks(32, [](std::size_t i) { return i / 4 * 6 + i % 2 * 3; });
  PickLumaAndChroma<32>(p, kLuma, kChroma, y, uv);
}

#else

// U Y0 V Y1, as the words U | Y0, V | Y1.
HWY_INLINE void Split422(const std::uint8_t* p, Vec8& y, Vec16& uv) {
  Vec16 first, second;
  hn::LoadInterleaved2(Tag16(), reinterpret_cast<const std::uint16_t*>(p), first, second);
  y = HighBytesOf(first, second);
  uv = AsWords(LowBytes(first, second));
}

// Each word of half a vector, and of another, in turn.
HWY_INLINE Vec8 Weave(hn::Vec<Half16> first, hn::Vec<Half16> second) {
  return AsBytes(
      hn::Or(hn::PromoteTo(Tag32(), first), hn::ShiftLeft<16>(hn::PromoteTo(Tag32(), second))));
}

// U Y0 Y1 V Y2 Y3, as the words U | Y0, Y1 | V, Y2 | Y3.
HWY_INLINE void Split411(const std::uint8_t* p, Vec8& y, Vec16& uv) {
  const Half16 d;
  hn::Vec<Half16> first, second, third;
  hn::LoadInterleaved3(d, reinterpret_cast<const std::uint16_t*>(p), first, second, third);
  const auto low = hn::Set(d, 0x00FF);
  const auto y01 = hn::Or(hn::ShiftRight<8>(first), hn::ShiftLeft<8>(second));
  const auto chroma = hn::Or(hn::And(first, low), hn::AndNot(low, second));
  y = Weave(y01, third);
  uv = AsWords(Weave(chroma, chroma));
}

#endif

// --- As loads of RGB pixels

struct LoadYuv444 {
  static constexpr std::size_t kBytesOfTwo = 6;
  static HWY_INLINE void Get(const std::uint8_t* p, Vec8& r, Vec8& g, Vec8& b, Vec8& a) {
    Vec8 u, y, v;
    LoadThree(p, u, y, v);
    DecodeEach(y, AsWords(LowBytes(AsWords(u), AsWords(v))),
               AsWords(HighBytesOf(AsWords(u), AsWords(v))), r, g, b);
    a = hn::Set(Tag8(), 0xFF);
  }
};

template <std::size_t BytesOfTwo, void Split(const std::uint8_t*, Vec8&, Vec16&)>
struct LoadPairs {
  static constexpr std::size_t kBytesOfTwo = BytesOfTwo;
  static HWY_INLINE void Get(const std::uint8_t* p, Vec8& r, Vec8& g, Vec8& b, Vec8& a) {
    Vec8 y;
    Vec16 uv;
    Split(p, y, uv);
    DecodePairs(y, uv, r, g, b);
    a = hn::Set(Tag8(), 0xFF);
  }
};
using LoadYuv422 = LoadPairs<4, Split422>;
using LoadYuv411 = LoadPairs<3, Split411>;

#if KORVEX2_X86

// 4:1:1 alone becomes mono12 by way of 16-bit colours.
std::size_t Yuv411ToY12(const std::uint8_t* HWY_RESTRICT src, std::uint8_t* HWY_RESTRICT dst,
                        std::size_t pixels) {
  const std::size_t n = hn::Lanes(Tag8());
  std::size_t done = 0;
  for (; done + n <= pixels; done += n) {
    PrefetchAhead<3, 3>(src + done / 2 * 3, dst + done / 2 * 3);
    Vec8 rgb[3], alpha, high, low;
    LoadYuv411::Get(src + done / 2 * 3, rgb[0], rgb[1], rgb[2], alpha);
    WidenedLuma12(rgb, high, low);
    StorePacked12(high, low, dst + done / 2 * 3);
  }
  return done;
}

#else

constexpr FastKernel Yuv411ToY12 = nullptr;

#endif

FastKernel FindDecode(Routine routine) {
  // clang-format off
  switch (routine) {
    case Routine::ConvertYUV444ToRGB:    return MovePixels<LoadYuv444, StoreRgb>;
    case Routine::ConvertYUV444ToRGBU:   return MovePixels<LoadYuv444, StoreRgbu>;
    case Routine::ConvertYUV444ToRGB16:  return MovePixels<LoadYuv444, StoreRgb16>;
    case Routine::ConvertYUV444ToBGR:    return MovePixels<LoadYuv444, StoreBgr>;
    case Routine::ConvertYUV444ToBGRU:   return MovePixels<LoadYuv444, StoreBgru>;
    case Routine::ConvertYUV444ToBGR16:  return MovePixels<LoadYuv444, StoreBgr16>;
    case Routine::ConvertYUV444ToBGRU16: return MovePixels<LoadYuv444, StoreBgru16>;
    case Routine::ConvertYUV444ToY8:     return EncodeLuma<LoadYuv444, StoreY8>;
    case Routine::ConvertYUV444ToY16:    return EncodeLuma<LoadYuv444, StoreY16>;
    case Routine::ConvertYUV444ToY12:    return EncodeLuma<LoadYuv444, StoreY12>;
    case Routine::ConvertYUV444ToYUV422: return EncodeColour<LoadYuv444, Yuv422>;
    case Routine::ConvertYUV444ToYUV411: return EncodeColour<LoadYuv444, Yuv411>;

    case Routine::ConvertYUV422ToRGB:    return MovePixels<LoadYuv422, StoreRgb>;
    case Routine::ConvertYUV422ToRGBU:   return MovePixels<LoadYuv422, StoreRgbu>;
    case Routine::ConvertYUV422ToRGB16:  return MovePixels<LoadYuv422, StoreRgb16>;
    case Routine::ConvertYUV422ToBGR:    return MovePixels<LoadYuv422, StoreBgr>;
    case Routine::ConvertYUV422ToBGRU:   return MovePixels<LoadYuv422, StoreBgru>;
    case Routine::ConvertYUV422ToBGR16:  return MovePixels<LoadYuv422, StoreBgr16>;
    case Routine::ConvertYUV422ToBGRU16: return MovePixels<LoadYuv422, StoreBgru16>;
    case Routine::ConvertYUV422ToY8:     return EncodeLuma<LoadYuv422, StoreY8>;
    case Routine::ConvertYUV422ToY16:    return EncodeLuma<LoadYuv422, StoreY16>;
    case Routine::ConvertYUV422ToY12:    return EncodeLuma<LoadYuv422, StoreY12>;
    case Routine::ConvertYUV422ToYUV444: return EncodeColour<LoadYuv422, Yuv444>;
    case Routine::ConvertYUV422ToYUV411: return EncodeColour<LoadYuv422, Yuv411>;

    case Routine::ConvertYUV411ToRGB:    return MovePixels<LoadYuv411, StoreRgb>;
    case Routine::ConvertYUV411ToRGBU:   return MovePixels<LoadYuv411, StoreRgbu>;
    case Routine::ConvertYUV411ToRGB16:  return MovePixels<LoadYuv411, StoreRgb16>;
    case Routine::ConvertYUV411ToBGR:    return MovePixels<LoadYuv411, StoreBgr>;
    case Routine::ConvertYUV411ToBGRU:   return MovePixels<LoadYuv411, StoreBgru>;
    case Routine::ConvertYUV411ToBGR16:  return MovePixels<LoadYuv411, StoreBgr16>;
    case Routine::ConvertYUV411ToBGRU16: return MovePixels<LoadYuv411, StoreBgru16>;
    case Routine::ConvertYUV411ToY8:     return EncodeLuma<LoadYuv411, StoreY8>;
    case Routine::ConvertYUV411ToY16:    return EncodeLuma<LoadYuv411, StoreY16>;
    case Routine::ConvertYUV411ToY12:    return Yuv411ToY12;
    case Routine::ConvertYUV411ToYUV444: return EncodeColour<LoadYuv411, Yuv444>;
    case Routine::ConvertYUV411ToYUV422: return EncodeColour<LoadYuv411, Yuv422>;
    default: return nullptr;
  }
  // clang-format on
}

#else

FastKernel FindDecode(Routine) {
  return nullptr;
}

#endif

}  // namespace Korvex2::Kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Korvex2::Kernels::Vector {

HWY_EXPORT(FindDecode);

FastKernel Decodes(Simd::InstructionSet set, Routine routine) {
  return KORVEX2_FOR_INSTRUCTION_SET(FindDecode, set)(routine);
}

}  // namespace Korvex2::Kernels::Vector
#endif
