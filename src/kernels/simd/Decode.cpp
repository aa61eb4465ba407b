// Packed YUV into colour, grey, and packed YUV of another kind.

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels/simd/Decode.cpp"
#include "hwy/foreach_target.h"
// After foreach_target.h.
#include "kernels/simd/Arithmetic-inl.h"
#include "kernels/simd/Interleave-inl.h"
#include "kernels/simd/Simd.h"
#include "kernels/simd/StoreYuv-inl.h"
#include "simd/TargetTable.h"

HWY_BEFORE_NAMESPACE();
namespace Korvex2::kernels::HWY_NAMESPACE {

#if HWY_TARGET != HWY_SCALAR

struct LoadYuv444 {
  static constexpr std::size_t kBytes = 3;
  static HWY_INLINE void Get(const std::uint8_t* p, Vec8& r, Vec8& g, Vec8& b, Vec8& a) {
    Vec8 u, y, v;
    hn::LoadInterleaved3(Tag8(), p, u, y, v);
    VecI16 rv0, guv0, bu0, rv1, guv1, bu1;
    ChromaTerms(Even(u), Even(v), rv0, guv0, bu0);
    ChromaTerms(Odd(u), Odd(v), rv1, guv1, bu1);
    const VecI16 y0 = Signed(Even(y));
    const VecI16 y1 = Signed(Odd(y));
    r = Join(ClampToByte(hn::Add(y0, rv0)), ClampToByte(hn::Add(y1, rv1)));
    g = Join(ClampToByte(hn::Sub(y0, guv0)), ClampToByte(hn::Sub(y1, guv1)));
    b = Join(ClampToByte(hn::Add(y0, bu0)), ClampToByte(hn::Add(y1, bu1)));
    a = hn::Set(Tag8(), 0xFF);
  }
};

struct LoadYuv422 {
  static constexpr std::size_t kBytes = 2;
  static HWY_INLINE void Get(const std::uint8_t* p, Vec8& r, Vec8& g, Vec8& b, Vec8& a) {
    Vec16 uy, vy;
    hn::LoadInterleaved2(Tag16(), reinterpret_cast<const std::uint16_t*>(p), uy, vy);
    const Vec16 low = hn::Set(Tag16(), 0x00FF);
    VecI16 rv, guv, bu;
    ChromaTerms(hn::And(uy, low), hn::And(vy, low), rv, guv, bu);
    const VecI16 y0 = Signed(hn::ShiftRight<8>(uy));
    const VecI16 y1 = Signed(hn::ShiftRight<8>(vy));
    r = Join(ClampToByte(hn::Add(y0, rv)), ClampToByte(hn::Add(y1, rv)));
    g = Join(ClampToByte(hn::Sub(y0, guv)), ClampToByte(hn::Sub(y1, guv)));
    b = Join(ClampToByte(hn::Add(y0, bu)), ClampToByte(hn::Add(y1, bu)));
    a = hn::Set(Tag8(), 0xFF);
  }
};

// --- 4:1:1: U Y0 Y1 V Y2 Y3 as the words U|Y0, Y1|V, Y2|Y3; two vectors of pixels at a time ---

// Interleaves the pairs of pixels 0, 1 and 2, 3 of each group into one run of pixels.
HWY_INLINE void Weave(Vec8 first, Vec8 second, Vec8& low, Vec8& high) {
  HWY_ALIGN std::uint16_t run[2 * hn::MaxLanes(Tag16())];
  hn::StoreInterleaved2(hn::BitCast(Tag16(), first), hn::BitCast(Tag16(), second), Tag16(), run);
  low = hn::BitCast(Tag8(), hn::Load(Tag16(), run));
  high = hn::BitCast(Tag8(), hn::Load(Tag16(), run + hn::Lanes(Tag16())));
}

template <typename Store>
std::size_t DecodeYuv411(const std::uint8_t* HWY_RESTRICT src, std::uint8_t* HWY_RESTRICT dst,
                         std::size_t pixels) {
  const std::size_t n = 2 * hn::Lanes(Tag8());
  std::size_t done = 0;
  for (; done + n <= pixels; done += n) {
    Vec16 uy, yv, yy;
    hn::LoadInterleaved3(Tag16(), reinterpret_cast<const std::uint16_t*>(src + done / 2 * 3), uy,
                         yv, yy);
    const Vec16 byte = hn::Set(Tag16(), 0x00FF);
    VecI16 rv, guv, bu;
    ChromaTerms(hn::And(uy, byte), hn::ShiftRight<8>(yv), rv, guv, bu);
    const VecI16 y0 = Signed(hn::ShiftRight<8>(uy));
    const VecI16 y1 = Signed(hn::And(yv, byte));
    const VecI16 y2 = Signed(hn::And(yy, byte));
    const VecI16 y3 = Signed(hn::ShiftRight<8>(yy));
    Vec8 r0, g0, b0, r1, g1, b1;
    Weave(Join(ClampToByte(hn::Add(y0, rv)), ClampToByte(hn::Add(y1, rv))),
          Join(ClampToByte(hn::Add(y2, rv)), ClampToByte(hn::Add(y3, rv))), r0, r1);
    Weave(Join(ClampToByte(hn::Sub(y0, guv)), ClampToByte(hn::Sub(y1, guv))),
          Join(ClampToByte(hn::Sub(y2, guv)), ClampToByte(hn::Sub(y3, guv))), g0, g1);
    Weave(Join(ClampToByte(hn::Add(y0, bu)), ClampToByte(hn::Add(y1, bu))),
          Join(ClampToByte(hn::Add(y2, bu)), ClampToByte(hn::Add(y3, bu))), b0, b1);
    const Vec8 a = hn::Set(Tag8(), 0xFF);
    Store::Put(r0, g0, b0, a, dst + done * Store::kBytes);
    Store::Put(r1, g1, b1, a, dst + (done + n / 2) * Store::kBytes);
  }
  return done;
}

// A store of packed YUV as one of RGB pixels.
template <typename Yuv>
struct StoreAs {
  static constexpr std::size_t kBytes = Yuv::kBytesOfTwo / 2;
  static HWY_INLINE void Put(Vec8 r, Vec8 g, Vec8 b, Vec8, std::uint8_t* p) {
    Vec8 y, u, v;
    Encode(r, g, b, y, u, v);
    Yuv::Put(y, u, v, p);
  }
};

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
    case Routine::ConvertYUV444ToY8:     return MovePixels<LoadYuv444, StoreY8>;
    case Routine::ConvertYUV444ToY16:    return MovePixels<LoadYuv444, StoreY16>;
    case Routine::ConvertYUV444ToYUV422: return EncodeColour<LoadYuv444, Yuv422>;
    case Routine::ConvertYUV444ToYUV411: return EncodeColour<LoadYuv444, Yuv411>;

    case Routine::ConvertYUV422ToRGB:    return MovePixels<LoadYuv422, StoreRgb>;
    case Routine::ConvertYUV422ToRGBU:   return MovePixels<LoadYuv422, StoreRgbu>;
    case Routine::ConvertYUV422ToRGB16:  return MovePixels<LoadYuv422, StoreRgb16>;
    case Routine::ConvertYUV422ToBGR:    return MovePixels<LoadYuv422, StoreBgr>;
    case Routine::ConvertYUV422ToBGRU:   return MovePixels<LoadYuv422, StoreBgru>;
    case Routine::ConvertYUV422ToBGR16:  return MovePixels<LoadYuv422, StoreBgr16>;
    case Routine::ConvertYUV422ToBGRU16: return MovePixels<LoadYuv422, StoreBgru16>;
    case Routine::ConvertYUV422ToY8:     return MovePixels<LoadYuv422, StoreY8>;
    case Routine::ConvertYUV422ToY16:    return MovePixels<LoadYuv422, StoreY16>;
    case Routine::ConvertYUV422ToYUV444: return EncodeColour<LoadYuv422, Yuv444>;
    case Routine::ConvertYUV422ToYUV411: return EncodeColour<LoadYuv422, Yuv411>;

    case Routine::ConvertYUV411ToRGB:    return DecodeYuv411<StoreRgb>;
    case Routine::ConvertYUV411ToRGBU:   return DecodeYuv411<StoreRgbu>;
    case Routine::ConvertYUV411ToRGB16:  return DecodeYuv411<StoreRgb16>;
    case Routine::ConvertYUV411ToBGR:    return DecodeYuv411<StoreBgr>;
    case Routine::ConvertYUV411ToBGRU:   return DecodeYuv411<StoreBgru>;
    case Routine::ConvertYUV411ToBGR16:  return DecodeYuv411<StoreBgr16>;
    case Routine::ConvertYUV411ToBGRU16: return DecodeYuv411<StoreBgru16>;
    case Routine::ConvertYUV411ToY8:     return DecodeYuv411<StoreY8>;
    case Routine::ConvertYUV411ToY16:    return DecodeYuv411<StoreY16>;
    case Routine::ConvertYUV411ToYUV444: return DecodeYuv411<StoreAs<Yuv444>>;
    case Routine::ConvertYUV411ToYUV422: return DecodeYuv411<StoreAs<Yuv422>>;
    default: return nullptr;
  }
  // clang-format on
}

#else

FastKernel FindDecode(Routine) {
  return nullptr;
}

#endif

}  // namespace Korvex2::kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Korvex2::kernels::simd {

HWY_EXPORT(FindDecode);

FastKernel Decodes(Simd::Target target, Routine routine) {
  return KORVEX2_FOR_TARGET(FindDecode, target)(routine);
}

}  // namespace Korvex2::kernels::simd
#endif
