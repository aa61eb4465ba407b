// Conversions that compute colour: luma, RGB to packed YUV, packed YUV to RGB.

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels/simd/Colour.cpp"
#include "hwy/foreach_target.h"
// After foreach_target.h.
#include "kernels/simd/Arithmetic-inl.h"
#include "kernels/simd/Interleave-inl.h"
#include "kernels/simd/Simd.h"
#include "simd/TargetTable.h"

HWY_BEFORE_NAMESPACE();
namespace Korvex2::kernels::HWY_NAMESPACE {

#if HWY_TARGET != HWY_SCALAR

// --- Stores of YUV, from pixels of RGB
// --------------------------------------------------------------

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

struct Yuv {
  static HWY_INLINE void Of(Vec8 r, Vec8 g, Vec8 b, Vec8& y, Vec8& u, Vec8& v) {
    const Vec16 r0 = Even(r), g0 = Even(g), b0 = Even(b);
    const Vec16 r1 = Odd(r), g1 = Odd(g), b1 = Odd(b);
    y = Join(Luma(r0, g0, b0), Luma(r1, g1, b1));
    u = Join(ChromaU(r0, g0, b0), ChromaU(r1, g1, b1));
    v = Join(VQuotient(r0, g0, b0), VQuotient(r1, g1, b1));
  }
};

struct StoreYuv444 {
  static constexpr std::size_t kBytes = 3;
  static HWY_INLINE void Put(Vec8 r, Vec8 g, Vec8 b, Vec8, std::uint8_t* p) {
    Vec8 y, u, v;
    Yuv::Of(r, g, b, y, u, v);
    hn::StoreInterleaved3(u, y, v, Tag8(), p);
  }
};

// The truncated mean of each two neighbours, as words.
HWY_INLINE Vec16 MeanOfTwo(Vec8 v) {
  return hn::ShiftRight<1>(hn::Add(Even(v), Odd(v)));
}

// U Y0 V Y1 as the words U|Y0, V|Y1.
struct StoreYuv422 {
  static constexpr std::size_t kBytes = 2;
  static HWY_INLINE void Put(Vec8 r, Vec8 g, Vec8 b, Vec8, std::uint8_t* p) {
    Vec8 y, u, v;
    Yuv::Of(r, g, b, y, u, v);
    const Vec16 ys = hn::BitCast(Tag16(), y);
    const Vec16 first = hn::Or(MeanOfTwo(u), hn::ShiftLeft<8>(ys));
    const Vec16 second = hn::Or(MeanOfTwo(v), hn::AndNot(hn::Set(Tag16(), 0x00FF), ys));
    hn::StoreInterleaved2(first, second, Tag16(), reinterpret_cast<std::uint16_t*>(p));
  }
};

using Tag32 = hn::ScalableTag<std::uint32_t>;
using Vec32 = hn::Vec<Tag32>;
using Half16 = hn::Half<Tag16>;

// The truncated mean of each four neighbours, as double words.
HWY_INLINE Vec32 MeanOfFour(Vec8 v) {
  const Vec32 pairs = hn::BitCast(Tag32(), hn::Add(Even(v), Odd(v)));
  const Vec32 low = hn::And(pairs, hn::Set(Tag32(), 0xFFFF));
  return hn::ShiftRight<2>(hn::Add(low, hn::ShiftRight<16>(pairs)));
}

HWY_INLINE hn::Vec<Half16> Words(Vec32 v) {
  return hn::DemoteTo(Half16(), hn::BitCast(hn::RebindToSigned<Tag32>(), v));
}

// --- Loads of YUV, to pixels of RGB
// -----------------------------------------------------------------

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

// --- 4:1:1: U Y0 Y1 V Y2 Y3 as the words U|Y0, Y1|V, Y2|Y3
// ------------------------------------------

template <typename Load>
std::size_t EncodeYuv411(const std::uint8_t* HWY_RESTRICT src, std::uint8_t* HWY_RESTRICT dst,
                         std::size_t pixels) {
  const std::size_t n = hn::Lanes(Tag8());
  std::size_t done = 0;
  for (; done + n <= pixels; done += n) {
    Vec8 r, g, b, a, y, u, v;
    Load::Get(src + done * Load::kBytes, r, g, b, a);
    Yuv::Of(r, g, b, y, u, v);
    const Vec32 ys = hn::BitCast(Tag32(), y);
    const Vec32 byte = hn::Set(Tag32(), 0xFF);
    const Vec32 first = hn::Or(MeanOfFour(u), hn::ShiftLeft<8>(hn::And(ys, byte)));
    const Vec32 second =
        hn::Or(hn::And(hn::ShiftRight<8>(ys), byte), hn::ShiftLeft<8>(MeanOfFour(v)));
    const Vec32 third = hn::ShiftRight<16>(ys);
    hn::StoreInterleaved3(Words(first), Words(second), Words(third), Half16(),
                          reinterpret_cast<std::uint16_t*>(dst + done / 2 * 3));
  }
  return done;
}

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

// --- 16-bit luma
// ------------------------------------------------------------------------------------

// In doubles throughout: the sums of 16-bit samples take 26 bits.
std::size_t LumaOfRgb16(const std::uint8_t* HWY_RESTRICT src, std::uint8_t* HWY_RESTRICT dst,
                        std::size_t pixels) {
  const Tag16 d;
  const std::size_t n = hn::Lanes(d);
  std::size_t done = 0;
  for (; done + n <= pixels; done += n) {
    Vec16 r, g, b;
    hn::LoadInterleaved3(d, reinterpret_cast<const std::uint16_t*>(src + 6 * done), r, g, b);
    hn::StoreU(InDoubles(LumaOfDoubles(), r, g, b), d,
               reinterpret_cast<std::uint16_t*>(dst + 2 * done));
  }
  return done / 4 * 4;
}

// --- Packed 12 bits
// ---------------------------------------------------------------------------------

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

FastKernel FindColour(Routine routine) {
  // clang-format off
  switch (routine) {
    case Routine::ConvertY8ToY12:       return Pack8To12;
    case Routine::ConvertY16ToY12:      return Pack16To12;
    case Routine::ConvertY12ToY8:       return Unpack12To8;
    case Routine::ConvertY12ToY16:      return Unpack12To16;

    case Routine::ConvertRGB16ToY16:    return LumaOfRgb16;
    case Routine::ConvertRGBToY8:       return Move<LoadRgb, StoreY8>;
    case Routine::ConvertRGBToY16:      return Move<LoadRgb, StoreY16>;
    case Routine::ConvertRGBUToY8:      return Move<LoadRgbu, StoreY8>;
    case Routine::ConvertRGBUToY16:     return Move<LoadRgbu, StoreY16>;
    case Routine::ConvertBGRToY8:       return Move<LoadBgr, StoreY8>;
    case Routine::ConvertBGRToY16:      return Move<LoadBgr, StoreY16>;
    case Routine::ConvertBGRUToY8:      return Move<LoadBgru, StoreY8>;
    case Routine::ConvertBGRUToY16:     return Move<LoadBgru, StoreY16>;

    case Routine::ConvertRGBToYUV444:   return Move<LoadRgb, StoreYuv444>;
    case Routine::ConvertRGBToYUV422:   return Move<LoadRgb, StoreYuv422>;
    case Routine::ConvertRGBToYUV411:   return EncodeYuv411<LoadRgb>;

    case Routine::ConvertYUV444ToRGB:   return Move<LoadYuv444, StoreRgb>;
    case Routine::ConvertYUV444ToRGBU:  return Move<LoadYuv444, StoreRgbu>;
    case Routine::ConvertYUV444ToBGR:   return Move<LoadYuv444, StoreBgr>;
    case Routine::ConvertYUV444ToBGRU:  return Move<LoadYuv444, StoreBgru>;
    case Routine::ConvertYUV422ToRGB:   return Move<LoadYuv422, StoreRgb>;
    case Routine::ConvertYUV422ToRGBU:  return Move<LoadYuv422, StoreRgbu>;
    case Routine::ConvertYUV422ToBGR:   return Move<LoadYuv422, StoreBgr>;
    case Routine::ConvertYUV422ToBGRU:  return Move<LoadYuv422, StoreBgru>;
    case Routine::ConvertYUV411ToRGB:   return DecodeYuv411<StoreRgb>;
    case Routine::ConvertYUV411ToRGBU:  return DecodeYuv411<StoreRgbu>;
    case Routine::ConvertYUV411ToBGR:   return DecodeYuv411<StoreBgr>;
    case Routine::ConvertYUV411ToBGRU:  return DecodeYuv411<StoreBgru>;
    default:                            return nullptr;
  }
  // clang-format on
}

#else

FastKernel FindColour(Routine) {
  return nullptr;
}

#endif

}  // namespace Korvex2::kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Korvex2::kernels::simd {

HWY_EXPORT(FindColour);

FastKernel Colour(Simd::Target target, Routine routine) {
  return KORVEX2_FOR_TARGET(FindColour, target)(routine);
}

}  // namespace Korvex2::kernels::simd
#endif
