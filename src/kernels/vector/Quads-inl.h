// The colour sums on x86: pixels of four bytes, weighed by products of bytes that add up by pixel.
//
// S = 8 K + L as in Arithmetic-inl.h, K and L each one such dot product. Four vectors of pixels
// make one vector of each of luma, U and V. Included once per instruction set.

#if defined(KORVEX2_QUADS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KORVEX2_QUADS_INL_H_
#undef KORVEX2_QUADS_INL_H_
#else
#define KORVEX2_QUADS_INL_H_
#endif

#include "kernels/vector/Arithmetic-inl.h"
#include "kernels/vector/Interleave-inl.h"

HWY_BEFORE_NAMESPACE();
namespace Korvex2::Kernels::HWY_NAMESPACE {

#if KORVEX2_X86

// --- Pixels in, four vectors of red, green, blue, any

// Quads are either in order, or in the order of JoinFour; Order() puts bytes made of them by two
// packings in order.
struct InOrder {
  static HWY_INLINE Vec8 Order(Vec8 packed) { return Permute(packed, kInverse); }
  static constexpr std::size_t Place(std::size_t pixel) { return 4 * pixel; }
};
struct InBlocks {
  static HWY_INLINE Vec8 Order(Vec8 packed) { return packed; }
  static constexpr std::size_t Place(std::size_t pixel) {
    return pixel % 16 / 4 * HWY_MAX_BYTES + pixel / 16 * 16 + pixel % 4 * 4;
  }
};

// Any planar load.
template <typename Load>
struct Quads : InBlocks {
  static constexpr bool kBlueFirst = false;
  static HWY_INLINE void Get(const std::uint8_t* p, Vec8 (&quads)[4]) {
    Vec8 r, g, b, a;
    Load::Get(p, r, g, b, a);
    JoinFour(r, g, b, hn::Zero(Tag8()), quads);
  }
};

template <bool BlueFirst>
struct QuadsOfFour : InOrder {
  static constexpr bool kBlueFirst = BlueFirst;
  static HWY_INLINE void Get(const std::uint8_t* p, Vec8 (&quads)[4]) {
    for (std::size_t k = 0; k < 4; ++k) {
      quads[k] = hn::LoadU(Tag8(), p + k * HWY_MAX_BYTES);
    }
  }
};
template <>
struct Quads<LoadRgbu> : QuadsOfFour<false> {};
template <>
struct Quads<LoadBgru> : QuadsOfFour<true> {};

// Three bytes a pixel: a quarter of the bytes that are loaded for a vector of quads is left over,
// at its end, for the last vector at its beginning.
template <bool BlueFirst>
struct QuadsOfThree : InOrder {
  static constexpr bool kBlueFirst = BlueFirst;
  static HWY_INLINE void Get(const std::uint8_t* p, Vec8 (&quads)[4]) {
    constexpr std::size_t kAdvance = HWY_MAX_BYTES / 4 * 3;
    for (std::size_t k = 0; k < 3; ++k) {
      quads[k] = Spread(hn::LoadU(Tag8(), p + k * kAdvance), 0);
    }
    quads[3] = Spread(hn::LoadU(Tag8(), p + 2 * HWY_MAX_BYTES), HWY_MAX_BYTES - kAdvance);
  }

 private:
  static HWY_INLINE Vec8 Spread(Vec8 v, std::size_t start) {
#if KORVEX2_VBMI
    static constexpr auto kPlaces = [] {
      ByteTable t = {};
      for (unsigned i = 0; i < 64; ++i) {
        t.at[i] = static_cast<std::uint8_t>(i / 4 * 3 + i % 4 % 3);
      }
      return t;
    }();
    const Vec8 places =
        hn::Add(hn::Load(Tag8(), kPlaces.at), hn::Set(Tag8(), static_cast<std::uint8_t>(start)));
    return Vec8{_mm512_permutexvar_epi8(places.raw, v.raw)};
#else
    alignas(64) std::int32_t places[16];
    for (std::size_t i = 0; i < 4 * kBlocks; ++i) {
      // 12 bytes for each block, and 4 that do not matter, from inside the vector.
      const std::size_t place = start / 4 + i / 4 * 3 + i % 4 % 3;
      places[i] = static_cast<std::int32_t>(place);
    }
    alignas(16) static constexpr std::uint8_t kInBlock[16] = {0, 1, 2, 0, 3, 4,  5,  3,
                                                              6, 7, 8, 6, 9, 10, 11, 9};
    const auto lanes = hn::SetTableIndices(Tag32(), places);
    const Vec8 blocks = AsBytes(hn::TableLookupLanes(AsDoubleWords(v), lanes));
    return hn::TableLookupBytes(blocks, hn::LoadDup128(Tag8(), kInBlock));
#endif
  }
};
template <>
struct Quads<LoadRgb> : QuadsOfThree<false> {};
template <>
struct Quads<LoadBgr> : QuadsOfThree<true> {};

// Three or four words a pixel, of which the high bytes are taken.
#if KORVEX2_VBMI
template <std::size_t Channels, bool BlueFirst>
struct QuadsOfWords : InOrder {
  static constexpr bool kBlueFirst = BlueFirst;
  static HWY_INLINE void Get(const std::uint8_t* p, Vec8 (&quads)[4]) {
    // Sixteen pixels reach over two vectors; the second is loaded so that it ends where they do.
    constexpr std::size_t kBytes = 2 * Channels;
    constexpr std::size_t kSecond = 16 * kBytes - 64;
    static constexpr auto kPlaces = [] {
      ByteTable t = {};
      for (unsigned i = 0; i < 64; ++i) {
        const unsigned at = i / 4 * kBytes + i % 4 % Channels * 2 + 1;
        t.at[i] = static_cast<std::uint8_t>(i < 32 ? at : at - kSecond);
      }
      return t;
    }();
    const __m512i places = _mm512_load_si512(kPlaces.at);
    for (std::size_t k = 0; k < 4; ++k, p += 16 * kBytes) {
      const __m512i low = _mm512_permutexvar_epi8(places, _mm512_loadu_si512(p));
      quads[k] = Vec8{_mm512_mask_permutexvar_epi8(low, 0xFFFFFFFF00000000, places,
                                                   _mm512_loadu_si512(p + kSecond))};
    }
  }
};
template <>
struct Quads<LoadRgb16> : QuadsOfWords<3, false> {};
template <>
struct Quads<LoadBgr16> : QuadsOfWords<3, true> {};
template <>
struct Quads<LoadBgru16> : QuadsOfWords<4, true> {};
#endif

// --- Sums

template <bool BlueFirst>
HWY_INLINE Vec8 WeightsOfQuads(Weights w) {
  const int first = BlueFirst ? w.blue : w.red;
  const int third = BlueFirst ? w.red : w.blue;
  const auto bytes =
      static_cast<std::uint32_t>((first & 0xFF) | (w.green & 0xFF) << 8 | (third & 0xFF) << 16);
  return AsBytes(hn::Set(Tag32(), bytes));
}

// The sum over each quad of a byte times a signed weight, plus an offset.
HWY_INLINE Vec32 Dot(Vec8 quads, Vec8 weights, int offset) {
  const Vec32 from = hn::Set(Tag32(), static_cast<std::uint32_t>(offset));
#if HWY_TARGET == HWY_AVX3_DL
  return Vec32{_mm512_dpbusd_epi32(from.raw, quads.raw, weights.raw)};
#else
  const auto pairs = KORVEX2_INTRINSIC(maddubs_epi16)(quads.raw, weights.raw);
  const auto ones = hn::Set(Tag16(), 1);
  return hn::Add(from, Vec32{KORVEX2_INTRINSIC(madd_epi16)(pairs, ones.raw)});
#endif
}

// Two vectors into one, block by block: of numbers of 16 bits, signed and unsigned, and of bytes.
HWY_INLINE Vec16 PackSigned(Vec32 a, Vec32 b) {
  return Vec16{KORVEX2_INTRINSIC(packs_epi32)(a.raw, b.raw)};
}
HWY_INLINE Vec16 PackWords(Vec32 a, Vec32 b) {
  return Vec16{KORVEX2_INTRINSIC(packus_epi32)(a.raw, b.raw)};
}
HWY_INLINE Vec8 PackBytes(Vec16 a, Vec16 b) {
  return Vec8{KORVEX2_INTRINSIC(packus_epi16)(a.raw, b.raw)};
}

// S of two vectors of quads.
struct SumsOfQuads {
  Vec16 k, l;

  HWY_INLINE Vec16 Eighth() const { return hn::Add(k, hn::ShiftRight<3>(l)); }
};

template <Weights Sum, bool BlueFirst>
HWY_INLINE SumsOfQuads SumUp(Vec8 quads0, Vec8 quads1) {
  constexpr Weights kK = Sum.K();
  const Vec8 k = WeightsOfQuads<BlueFirst>(kK);
  const Vec8 l = WeightsOfQuads<BlueFirst>(Sum.L());
  // K alone can be a little below zero.
  return {PackSigned(Dot(quads0, k, kK.offset), Dot(quads1, k, kK.offset)),
          PackSigned(Dot(quads0, l, 0), Dot(quads1, l, 0))};
}

// x / 125 in 128ths, a little more, for x < 2^15: the product of 2 x and 33555 / 2^16. The seven
// bits of its fraction are zero for multiples of 125 alone.
HWY_INLINE Vec16 Times128By125(Vec16 x) {
  return hn::MulHigh(hn::Add(x, x), hn::Set(Tag16(), 33555));
}

// floor(S / 1000) of two vectors of quads. `rest` is zero where S is a multiple of 1000, and only
// there.
template <Weights Sum, bool BlueFirst>
HWY_INLINE Vec16 Quotient(Vec8 quads0, Vec8 quads1, Vec16& rest) {
  const SumsOfQuads sums = SumUp<Sum, BlueFirst>(quads0, quads1);
  const Vec16 in128ths = Times128By125(sums.Eighth());
  rest = hn::Or(hn::And(in128ths, hn::Set(Tag16(), 127)), hn::And(sums.l, hn::Set(Tag16(), 7)));
  return hn::ShiftRight<7>(in128ths);
}

// Something of each quad, in order.
template <typename Source, typename Function>
HWY_INLINE Vec8 OfEach(const Vec8 (&quads)[4], Function function) {
  return Source::Order(
      PackBytes(PackWords(function(AsDoubleWords(quads[0])), function(AsDoubleWords(quads[1]))),
                PackWords(function(AsDoubleWords(quads[2])), function(AsDoubleWords(quads[3])))));
}

template <typename Source, int Byte>
HWY_INLINE Vec8 Channel(const Vec8 (&quads)[4]) {
  return OfEach<Source>(quads, [](Vec32 v) HWY_ATTR {
    return hn::And(hn::ShiftRight<8 * Byte>(v), hn::Set(Tag32(), 0xFF));
  });
}

// The bytes of a vector whose sums a mask names, computed one by one in doubles.
template <typename Source>
HWY_NOINLINE Vec8 MendPixels(Vec8 lumas, hn::Mask<Tag8> which, const Vec8 (&quads)[4]) {
  const Tag8 d;
  constexpr std::size_t kBytes = HWY_MAX_BYTES;
  HWY_ALIGN std::uint8_t mended[kBytes];
  HWY_ALIGN std::uint8_t pixels[4 * kBytes];
  hn::Store(lumas, d, mended);
  for (std::size_t k = 0; k < 4; ++k) {
    hn::Store(quads[k], d, pixels + k * kBytes);
  }
  ForEachLane(d, which, [&](std::size_t i) HWY_ATTR {
    const std::uint8_t* p = pixels + Source::Place(i);
    const double red = p[Source::kBlueFirst ? 2 : 0];
    const double blue = p[Source::kBlueFirst ? 0 : 2];
    mended[i] = static_cast<std::uint8_t>(Scalar::Luma(red, p[1], blue));
  });
  return hn::Load(d, mended);
}

// Lumas of which some are exact multiples: greys by their table, the few others in doubles.
template <typename Source>
HWY_INLINE Vec8 MendLumas(Vec8 lumas, Vec16 rest0, Vec16 rest1, const Vec8 (&quads)[4]) {
  const Tag8 d;
  const auto difference = [](Vec32 v) HWY_ATTR {
    const Vec32 rest = hn::And(hn::Xor(v, hn::ShiftRight<8>(v)), hn::Set(Tag32(), 0xFFFF));
    return hn::Min(rest, hn::Set(Tag32(), 1));
  };
  const auto greys = hn::Eq(OfEach<Source>(quads, difference), hn::Zero(d));
  const auto exact = hn::Eq(Source::Order(PackBytes(rest0, rest1)), hn::Zero(d));
  const Vec8 mended = hn::Sub(lumas, hn::IfThenElseZero(greys, Drop(lumas, kLumaDrops)));
  const auto others = hn::AndNot(greys, exact);
  return HWY_UNLIKELY(!hn::AllFalse(d, others)) ? MendPixels<Source>(mended, others, quads)
                                                : mended;
}

// floor(S / 1000) of four vectors of quads, in order.
template <Weights Sum, typename Source>
HWY_INLINE Vec8 QuotientsOf(const Vec8 (&quads)[4], Vec16& rest0, Vec16& rest1) {
  const Vec16 low = Quotient<Sum, Source::kBlueFirst>(quads[0], quads[1], rest0);
  const Vec16 high = Quotient<Sum, Source::kBlueFirst>(quads[2], quads[3], rest1);
  return Source::Order(PackBytes(low, high));
}
HWY_INLINE bool NoneIsExact(Vec16 rest0, Vec16 rest1) {
  return hn::AllFalse(Tag16(), hn::Eq(hn::Min(rest0, rest1), hn::Zero(Tag16())));
}

template <typename Source>
HWY_INLINE Vec8 LumaOfQuads(const Vec8 (&quads)[4]) {
  Vec16 rest0, rest1;
  const Vec8 lumas = QuotientsOf<kSumY, Source>(quads, rest0, rest1);
  return HWY_LIKELY(NoneIsExact(rest0, rest1)) ? lumas
                                               : MendLumas<Source>(lumas, rest0, rest1, quads);
}

template <typename Source>
HWY_INLINE Vec8 ChromaUOfQuads(const Vec8 (&quads)[4]) {
  Vec16 rest0, rest1;
  const Vec8 chroma = QuotientsOf<kSumU, Source>(quads, rest0, rest1);
  if (HWY_LIKELY(NoneIsExact(rest0, rest1))) {
    return chroma;
  }
  constexpr int kRed = Source::kBlueFirst ? 2 : 0;
  return hn::Sub(chroma, DropsOfU(Channel<Source, kRed>(quads), Channel<Source, 1>(quads),
                                  Channel<Source, 2 - kRed>(quads)));
}

// No exact multiple of V comes out lower in doubles.
template <typename Source>
HWY_INLINE Vec8 ChromaVOfQuads(const Vec8 (&quads)[4]) {
  Vec16 rest0, rest1;
  return QuotientsOf<kSumV, Source>(quads, rest0, rest1);
}

// --- Luma of bytes that were widened to 16 bits, v * 257, of which 12 are kept

// Greys whose double sum is below 257 v.
constexpr DropsOfGreys kWidenedDrops =
    DropsOf([](int r, int g, int b) { return Scalar::Luma(257 * r, 257 * g, 257 * b); },
            [](int v) { return 257 * v; });

// The upper 12 bits of floor(257 S / 1000) are 16 q + low, in words of their own. With
// S = 1000 q + rest, low = floor((S + 256 rest) / 16000), and 128 divides 256 rest.
struct WidenedLuma {
  Vec16 q, low, rest;
};
HWY_INLINE WidenedLuma WidenedQuotient(Vec8 quads0, Vec8 quads1) {
  const SumsOfQuads sums = SumUp<kSumY, false>(quads0, quads1);
  const Vec16 eighth = sums.Eighth();
  const Vec16 q = hn::ShiftRight<7>(Times128By125(eighth));
  // Five shifts and sums in place of the product take longer.
  auto thousand = hn::Set(Tag16(), 1000).raw;
  asm("" : "+v"(thousand));
  const Vec16 s = hn::Add(hn::ShiftLeft<3>(sums.k), sums.l);
  const Vec16 rest = hn::Sub(s, hn::Mul(q, Vec16{thousand}));
  const Vec16 of16000 = hn::Add(hn::Add(rest, rest), hn::ShiftRight<4>(eighth));
  return {q, hn::ShiftRight<7>(Times128By125(of16000)), rest};
}

// Exact multiples: greys by their table, the few others in doubles.
inline HWY_NOINLINE void MendWidened(hn::Mask<Tag8> exact, const Vec8 (&rgb)[3], Vec8& high,
                                     Vec8& low) {
  const Tag8 d;
  const auto grey = hn::And(hn::Eq(rgb[0], rgb[1]), hn::Eq(rgb[1], rgb[2]));
  low = hn::IfThenElse(grey, hn::Sub(rgb[0], Drop(rgb[0], kWidenedDrops)), low);
  const auto others = hn::AndNot(grey, exact);
  if (hn::AllFalse(d, others)) return;

  HWY_ALIGN std::uint8_t bytes[5][HWY_MAX_BYTES];
  const Vec8 vectors[] = {rgb[0], rgb[1], rgb[2], high, low};
  for (std::size_t k = 0; k < 5; ++k) hn::Store(vectors[k], d, bytes[k]);
  ForEachLane(d, others, [&](std::size_t i) HWY_ATTR {
    const std::uint32_t luma =
        Scalar::Luma(257 * bytes[0][i], 257 * bytes[1][i], 257 * bytes[2][i]);
    bytes[3][i] = static_cast<std::uint8_t>(luma >> 8);
    bytes[4][i] = static_cast<std::uint8_t>(luma);
  });
  high = hn::Load(d, bytes[3]);
  low = hn::Load(d, bytes[4]);
}

// Red, green and blue to the high and the low bytes of words of which the upper 12 bits count.
HWY_INLINE void WidenedLuma12(const Vec8 (&rgb)[3], Vec8& high, Vec8& low) {
  const Tag8 d;
  Vec8 quads[4];
  JoinFour(rgb[0], rgb[1], rgb[2], hn::Zero(d), quads);
  const WidenedLuma first = WidenedQuotient(quads[0], quads[1]);
  const WidenedLuma second = WidenedQuotient(quads[2], quads[3]);
  low = PackBytes(first.low, second.low);
  const auto carries = hn::Gt(low, hn::Set(d, 15));
  high = hn::Add(PackBytes(first.q, second.q), hn::IfThenElseZero(carries, hn::Set(d, 1)));
  low = hn::And(AsBytes(hn::ShiftLeft<4>(AsWords(low))), hn::Set(d, 0xF0));
  if (HWY_UNLIKELY(!NoneIsExact(first.rest, second.rest))) {
    MendWidened(hn::Eq(PackBytes(first.rest, second.rest), hn::Zero(d)), rgb, high, low);
  }
}

#endif  // KORVEX2_X86

}  // namespace Korvex2::Kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
