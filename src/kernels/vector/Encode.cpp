// Luma, and RGB and grey into packed YUV.

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels/vector/Encode.cpp"
#include "hwy/foreach_target.h"
// After foreach_target.h.
#include "kernels/vector/Arithmetic-inl.h"
#include "kernels/vector/Interleave-inl.h"
#include "kernels/vector/Luma16-inl.h"
#include "kernels/vector/StoreYuv-inl.h"
#include "kernels/vector/Vector.h"
#include "simd/DispatchTable.h"

HWY_BEFORE_NAMESPACE();
namespace Korvex2::Kernels::HWY_NAMESPACE {

#if HWY_TARGET != HWY_SCALAR

// Greys have no chroma but what truncation makes of it, and need no sums.
template <typename Load, typename Yuv>
std::size_t EncodeGrey(const std::uint8_t* HWY_RESTRICT src, std::uint8_t* HWY_RESTRICT dst,
                       std::size_t pixels) {
  const std::size_t n = hn::Lanes(Tag8());
  std::size_t done = 0;
  for (; done + n <= pixels; done += n) {
    PrefetchAhead<Load::kBytesOfTwo, Yuv::kBytesOfTwo>(src, dst);
    Vec8 grey, g, b, a;
    Load::Get(src, grey, g, b, a);
    Yuv::Put(LumaOfGrey(grey), UOfGrey(grey), hn::Set(Tag8(), 128), dst);
    src += n / 2 * Load::kBytesOfTwo;
    dst += n / 2 * Yuv::kBytesOfTwo;
  }
  return done;
}

// --- 16-bit luma

#if KORVEX2_VBMI

// Words of luma of a vector of pixels, in two vectors, into mono16 or mono12.
struct Store16 {
  static constexpr std::size_t kBytesOfTwo = 4;
  static HWY_INLINE void Put(Vec16 first, Vec16 second, std::uint8_t* p) {
    hn::StoreU(AsBytes(first), Tag8(), p);
    hn::StoreU(AsBytes(second), Tag8(), p + 64);
  }
};
struct Store12 {
  static constexpr std::size_t kBytesOfTwo = 3;
  static HWY_INLINE void Put(Vec16 first, Vec16 second, std::uint8_t* p) {
    StorePacked12(first, second, p);
  }
};

template <typename Sums, typename Store>
std::size_t EncodeLuma16(const std::uint8_t* HWY_RESTRICT src, std::uint8_t* HWY_RESTRICT dst,
                         std::size_t pixels) {
  std::size_t done = 0;
  for (; done + 64 <= pixels; done += 64) {
    PrefetchAhead<Sums::kBytesOfTwo, Store::kBytesOfTwo>(src, dst);
    Store::Put(GetLuma16<Sums>(src), GetLuma16<Sums>(src + 16 * Sums::kBytesOfTwo), dst);
    src += 32 * Sums::kBytesOfTwo;
    dst += 32 * Store::kBytesOfTwo;
  }
  return done;
}

FastKernel FindLuma16(Routine routine) {
  // clang-format off
  switch (routine) {
    case Routine::ConvertRGB16ToY16:  return EncodeLuma16<SumsOfWords<3, false>, Store16>;
    case Routine::ConvertRGB16ToY12:  return EncodeLuma16<SumsOfWords<3, false>, Store12>;
    case Routine::ConvertBGRU16ToY16: return EncodeLuma16<SumsOfWords<4, true>, Store16>;
    case Routine::ConvertBGRU16ToY12: return EncodeLuma16<SumsOfWords<4, true>, Store12>;
    default: return nullptr;
  }
  // clang-format on
}

#else

// S = 299 R + 587 G + 114 B of half a vector of samples.
HWY_INLINE Vec32 SumOf(hn::Vec<Half16> r, hn::Vec<Half16> g, hn::Vec<Half16> b) {
  const Tag32 d;
  const Vec32 red = hn::Mul(hn::PromoteTo(d, r), hn::Set(d, 299));
  const Vec32 green = hn::Mul(hn::PromoteTo(d, g), hn::Set(d, 587));
  return hn::Add(hn::Add(red, green), hn::Mul(hn::PromoteTo(d, b), hn::Set(d, 114)));
}

// floor(S / 1000) and what is left; in floats first, which may be off by one.
HWY_INLINE Vec32 LumaOfSum(Vec32 sum, Vec32& rest) {
  const hn::RebindToSigned<Tag32> d;
  const hn::RebindToFloat<Tag32> f;
  const auto thousand = hn::Set(d, 1000);
  const auto signedSum = hn::BitCast(d, sum);
  auto luma = hn::ConvertTo(d, hn::Mul(hn::ConvertTo(f, signedSum), hn::Set(f, 0.001F)));
  auto left = hn::Sub(signedSum, hn::Mul(luma, thousand));
  const auto below = hn::BroadcastSignBit(left);
  luma = hn::Add(luma, below);
  left = hn::Add(left, hn::And(below, thousand));
  const auto above = hn::VecFromMask(d, hn::Gt(left, hn::Set(d, 999)));
  rest = hn::BitCast(Tag32(), hn::Sub(left, hn::And(above, thousand)));
  return hn::BitCast(Tag32(), hn::Sub(luma, above));
}

HWY_INLINE hn::Vec<Half16> ToHalfWords(Vec32 v) {
  return hn::DemoteTo(Half16(), hn::BitCast(hn::RebindToSigned<Tag32>(), v));
}

std::size_t LumaOfRgb16(const std::uint8_t* HWY_RESTRICT src, std::uint8_t* HWY_RESTRICT dst,
                        std::size_t pixels) {
  const Tag16 d;
  const Half16 half;
  const std::size_t n = hn::Lanes(d);
  std::size_t done = 0;
  for (; done + n <= pixels; done += n) {
    Vec16 r, g, b;
    Vec32 rest0, rest1;
    hn::LoadInterleaved3(d, reinterpret_cast<const std::uint16_t*>(src + 6 * done), r, g, b);
    const Vec32 low = LumaOfSum(SumOf(hn::LowerHalf(r), hn::LowerHalf(g), hn::LowerHalf(b)), rest0);
    const Vec32 high = LumaOfSum(
        SumOf(hn::UpperHalf(half, r), hn::UpperHalf(half, g), hn::UpperHalf(half, b)), rest1);
    Vec16 luma = hn::Combine(d, ToHalfWords(high), ToHalfWords(low));
    const auto exact = hn::Eq(hn::Min(rest0, rest1), hn::Zero(Tag32()));
    if (HWY_UNLIKELY(!hn::AllFalse(Tag32(), exact))) {
      luma = InDoubles(LumaOfDoubles(), r, g, b);
    }
    hn::StoreU(luma, d, reinterpret_cast<std::uint16_t*>(dst + 2 * done));
  }
  return done / 4 * 4;
}

// SSE4 mends its exact multiples in vectors of two doubles, slower than the plain loop throughout.
FastKernel FindLuma16(Routine routine) {
  constexpr bool kPays = HWY_TARGET != HWY_SSE4;
  return kPays && routine == Routine::ConvertRGB16ToY16 ? LumaOfRgb16 : nullptr;
}

#endif

FastKernel FindEncode(Routine routine) {
  // clang-format off
  switch (routine) {
    case Routine::ConvertRGBToY8:    return EncodeLuma<LoadRgb, StoreY8>;
    case Routine::ConvertRGBUToY8:   return EncodeLuma<LoadRgbu, StoreY8>;
    case Routine::ConvertBGRToY8:    return EncodeLuma<LoadBgr, StoreY8>;
    case Routine::ConvertBGRUToY8:   return EncodeLuma<LoadBgru, StoreY8>;
    case Routine::ConvertRGB16ToY8:  return EncodeLuma<LoadRgb16, StoreY8>;
    case Routine::ConvertBGR16ToY8:  return EncodeLuma<LoadBgr16, StoreY8>;
    case Routine::ConvertBGRU16ToY8: return EncodeLuma<LoadBgru16, StoreY8>;
    case Routine::ConvertRGBToY12:   return EncodeLuma<LoadRgb, StoreY12>;
    case Routine::ConvertRGBUToY12:  return EncodeLuma<LoadRgbu, StoreY12>;
    case Routine::ConvertBGRToY12:   return EncodeLuma<LoadBgr, StoreY12>;
    case Routine::ConvertBGRUToY12:  return EncodeLuma<LoadBgru, StoreY12>;
    case Routine::ConvertBGR16ToY12: return EncodeLuma<LoadBgr16, StoreY12>;
    case Routine::ConvertRGBToY16:   return EncodeLuma<LoadRgb, StoreY16>;
    case Routine::ConvertRGBUToY16:  return EncodeLuma<LoadRgbu, StoreY16>;
    case Routine::ConvertBGRToY16:   return EncodeLuma<LoadBgr, StoreY16>;
    case Routine::ConvertBGRUToY16:  return EncodeLuma<LoadBgru, StoreY16>;
    case Routine::ConvertBGR16ToY16: return EncodeLuma<LoadBgr16, StoreY16>;

    case Routine::ConvertRGBToYUV444:    return EncodeColour<LoadRgb, Yuv444>;
    case Routine::ConvertRGBUToYUV444:   return EncodeColour<LoadRgbu, Yuv444>;
    case Routine::ConvertBGRToYUV444:    return EncodeColour<LoadBgr, Yuv444>;
    case Routine::ConvertBGRUToYUV444:   return EncodeColour<LoadBgru, Yuv444>;
    case Routine::ConvertRGB16ToYUV444:  return EncodeColour<LoadRgb16, Yuv444>;
    case Routine::ConvertBGR16ToYUV444:  return EncodeColour<LoadBgr16, Yuv444>;
    case Routine::ConvertBGRU16ToYUV444: return EncodeColour<LoadBgru16, Yuv444>;
    case Routine::ConvertY8ToYUV444:     return EncodeGrey<LoadY8, Yuv444>;
    case Routine::ConvertY16ToYUV444:    return EncodeGrey<LoadY16, Yuv444>;

    case Routine::ConvertRGBToYUV422:    return EncodeColour<LoadRgb, Yuv422>;
    case Routine::ConvertRGBUToYUV422:   return EncodeColour<LoadRgbu, Yuv422>;
    case Routine::ConvertBGRToYUV422:    return EncodeColour<LoadBgr, Yuv422>;
    case Routine::ConvertBGRUToYUV422:   return EncodeColour<LoadBgru, Yuv422>;
    case Routine::ConvertRGB16ToYUV422:  return EncodeColour<LoadRgb16, Yuv422>;
    case Routine::ConvertBGR16ToYUV422:  return EncodeColour<LoadBgr16, Yuv422>;
    case Routine::ConvertBGRU16ToYUV422: return EncodeColour<LoadBgru16, Yuv422>;
    case Routine::ConvertY8ToYUV422:     return EncodeGrey<LoadY8, Yuv422>;
    case Routine::ConvertY16ToYUV422:    return EncodeGrey<LoadY16, Yuv422>;

    case Routine::ConvertRGBToYUV411:    return EncodeColour<LoadRgb, Yuv411>;
    case Routine::ConvertRGBUToYUV411:   return EncodeColour<LoadRgbu, Yuv411>;
    case Routine::ConvertBGRToYUV411:    return EncodeColour<LoadBgr, Yuv411>;
    case Routine::ConvertBGRUToYUV411:   return EncodeColour<LoadBgru, Yuv411>;
    case Routine::ConvertRGB16ToYUV411:  return EncodeColour<LoadRgb16, Yuv411>;
    case Routine::ConvertBGR16ToYUV411:  return EncodeColour<LoadBgr16, Yuv411>;
    case Routine::ConvertBGRU16ToYUV411: return EncodeColour<LoadBgru16, Yuv411>;
    case Routine::ConvertY8ToYUV411:     return EncodeGrey<LoadY8, Yuv411>;
    case Routine::ConvertY16ToYUV411:    return EncodeGrey<LoadY16, Yuv411>;
    default: return FindLuma16(routine);
  }
  // clang-format on
}

#else

FastKernel FindEncode(Routine) {
  return nullptr;
}

#endif

}  // namespace Korvex2::Kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Korvex2::Kernels::Vector {

HWY_EXPORT(FindEncode);

FastKernel Encodes(Simd::InstructionSet set, Routine routine) {
  return KORVEX2_FOR_INSTRUCTION_SET(FindEncode, set)(routine);
}

}  // namespace Korvex2::Kernels::Vector
#endif
