// The colour arithmetic of the converter on 16-bit lanes.
//
// The sums are defined in double precision and truncated: Y = trunc(0.299 R + 0.587 G + 0.114 B)
// and so on. With three decimals a sum is a whole number of thousandths, S / 1000, and the double
// result equals the integer quotient unless S is an exact multiple of 1000; only then may rounding
// inside the double sum leave it just below. So the quotient is taken in integers, and a vector
// that holds an exact multiple is computed once more in doubles. The tests go through all inputs.
//
// Quotients. S needs 18 bits, S / 8 only 15, and floor(S / 1000) = floor(floor(S / 8) / 125). Every
// weight is split as w = 8 k + l, so that floor(S / 8) = K + floor(L / 8) with K and L the sums
// over k and l, both within 16 bits. Included once per instruction set.

#if defined(KORVEX2_ARITHMETIC_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KORVEX2_ARITHMETIC_INL_H_
#undef KORVEX2_ARITHMETIC_INL_H_
#else
#define KORVEX2_ARITHMETIC_INL_H_
#endif

#include <bit>
#include <cstdlib>

#include "hwy/highway.h"
#include "kernels/scalar/ColourSums.h"
#include "kernels/vector/Interleave-inl.h"

HWY_BEFORE_NAMESPACE();
namespace Korvex2::Kernels::HWY_NAMESPACE {

#if HWY_TARGET != HWY_SCALAR

using TagI16 = hn::ScalableTag<std::int16_t>;
using VecI16 = hn::Vec<TagI16>;
using Mask16 = hn::Mask<Tag16>;

// --- Bytes as words: the even and the odd pixels of a vector

HWY_INLINE Vec16 Even(Vec8 bytes) {
  return hn::And(hn::BitCast(Tag16(), bytes), hn::Set(Tag16(), 0x00FF));
}
HWY_INLINE Vec16 Odd(Vec8 bytes) {
  return hn::ShiftRight<8>(hn::BitCast(Tag16(), bytes));
}
HWY_INLINE Vec8 Join(Vec16 even, Vec16 odd) {
  return hn::BitCast(Tag8(), hn::Or(even, hn::ShiftLeft<8>(odd)));
}

HWY_INLINE VecI16 Signed(Vec16 v) {
  return hn::BitCast(TagI16(), v);
}
HWY_INLINE Vec16 Unsigned(VecI16 v) {
  return hn::BitCast(Tag16(), v);
}
HWY_INLINE Vec16 Times(Vec16 v, int factor) {
  return hn::Mul(v, hn::Set(Tag16(), static_cast<std::uint16_t>(factor)));
}

// --- Quotients

struct Weights {
  int red, green, blue;
  int offset;  // a multiple of 8

  // w = 8 k + l.
  constexpr Weights K() const { return {red >> 3, green >> 3, blue >> 3, offset >> 3}; }
  constexpr Weights L() const { return {red & 7, green & 7, blue & 7, 0}; }
};

constexpr Weights kSumY = {299, 587, 114, 0};
constexpr Weights kSumU = {-169, -331, 500, 128000};
constexpr Weights kSumV = {500, -419, -81, 128000};

// floor(x / 125) for x < 2^15.
HWY_INLINE Vec16 By125(Vec16 x) {
  return hn::ShiftRight<6>(hn::MulHigh(x, hn::Set(Tag16(), 33555)));
}

HWY_INLINE Vec16 LowThree(Vec16 v) {
  return hn::And(v, hn::Set(Tag16(), 7));
}

// Where S = 8 x + (l mod 8) is a multiple of 1000.
HWY_INLINE Mask16 IsExact(Vec16 x, Vec16 quotient, Vec16 l) {
  const Vec16 rest = hn::Or(hn::Sub(x, Times(quotient, 125)), LowThree(l));
  return hn::Eq(rest, hn::Zero(Tag16()));
}

// S = 299 R + 587 G + 114 B.
HWY_INLINE Vec16 LumaQuotient(Vec16 r, Vec16 g, Vec16 b, Mask16& exact) {
  const Vec16 k = hn::Add(hn::Add(Times(r, 37), Times(g, 73)), Times(b, 14));
  const Vec16 rg = hn::Add(r, g);
  const Vec16 rgb = hn::Add(rg, b);
  const Vec16 l = hn::Add(hn::Add(rgb, rgb), rg);
  const Vec16 x = hn::Add(k, hn::ShiftRight<3>(l));
  const Vec16 quotient = By125(x);
  exact = IsExact(x, quotient, l);
  return quotient;
}

// S = -169 R - 331 G + 500 B + 128000. Of exact multiples see DropsOfU.
HWY_INLINE Vec16 UQuotient(Vec16 r, Vec16 g, Vec16 b) {
  const Vec16 negative = hn::Add(Times(r, 22), Times(g, 42));
  const Vec16 k = hn::Sub(hn::Add(Times(b, 62), hn::Set(Tag16(), 16000)), negative);
  const Vec16 l = hn::Add(hn::Add(Times(r, 7), Times(g, 5)), hn::ShiftLeft<2>(b));
  return By125(hn::Add(k, hn::ShiftRight<3>(l)));
}

// S = 500 R - 419 G - 81 B + 128000. No exact multiple comes out lower in doubles.
HWY_INLINE Vec16 VQuotient(Vec16 r, Vec16 g, Vec16 b) {
  const Vec16 negative = hn::Add(Times(g, 53), Times(b, 11));
  const Vec16 k = hn::Sub(hn::Add(Times(r, 62), hn::Set(Tag16(), 16000)), negative);
  const Vec16 l = hn::Add(hn::Add(hn::ShiftLeft<2>(r), Times(g, 5)), Times(b, 7));
  return By125(hn::Add(k, hn::ShiftRight<3>(l)));
}

// --- The same in doubles

using TagD = hn::ScalableTag<double>;
using VecD = hn::Vec<TagD>;
using TagOfD16 = hn::Rebind<std::uint16_t, TagD>;
using TagOfD32 = hn::Rebind<std::int32_t, TagD>;

HWY_INLINE VecD LoadDoubles(const std::uint16_t* words) {
  const auto small = hn::PromoteTo(TagOfD32(), hn::LoadU(TagOfD16(), words));
  return hn::PromoteTo(TagD(), small);
}

HWY_INLINE void StoreTruncated(VecD value, std::uint16_t* words) {
  hn::StoreU(hn::DemoteTo(TagOfD16(), hn::DemoteTo(TagOfD32(), value)), TagOfD16(), words);
}

// Applies a function of doubles to the lanes of three vectors of unsigned words.
template <typename Function>
HWY_NOINLINE Vec16 InDoubles(Function function, Vec16 a, Vec16 b, Vec16 c) {
  const Tag16 d;
  HWY_ALIGN std::uint16_t as[hn::MaxLanes(Tag16())];
  HWY_ALIGN std::uint16_t bs[hn::MaxLanes(Tag16())];
  HWY_ALIGN std::uint16_t cs[hn::MaxLanes(Tag16())];
  hn::Store(a, d, as);
  hn::Store(b, d, bs);
  hn::Store(c, d, cs);
  for (std::size_t i = 0; i < hn::Lanes(d); i += hn::Lanes(TagD())) {
    StoreTruncated(function(LoadDoubles(as + i), LoadDoubles(bs + i), LoadDoubles(cs + i)), as + i);
  }
  return hn::Load(d, as);
}

HWY_INLINE VecD Weigh(VecD v, double weight) {
  return hn::Mul(v, hn::Set(TagD(), weight));
}

struct LumaOfDoubles {
  HWY_INLINE VecD operator()(VecD r, VecD g, VecD b) const {
    return hn::Add(hn::Add(Weigh(r, 0.299), Weigh(g, 0.587)), Weigh(b, 0.114));
  }
};

// --- Greys

// For R = G = B every sum is an exact multiple of 1000, so greys go by a table: whether the double
// sum comes out one below the multiple, a bit for each byte.
struct DropsOfGreys {
  std::uint8_t bits[32] = {};
};

template <typename Sum>
constexpr DropsOfGreys DropsOf(Sum sum, int multiple(int)) {
  DropsOfGreys drops;
  for (int v = 0; v < 256; ++v) {
    const bool below = static_cast<int>(sum(v, v, v)) < multiple(v);
    drops.bits[v / 8] = static_cast<std::uint8_t>(drops.bits[v / 8] | (below << (v % 8)));
  }
  return drops;
}

constexpr DropsOfGreys kLumaDrops = DropsOf(Scalar::Luma, [](int v) { return v; });
constexpr DropsOfGreys kUDrops = DropsOf(Scalar::ChromaU, [](int) { return 128; });
constexpr std::uint8_t kBitOfByte[16] = {1, 2, 4, 8, 16, 32, 64, 128, 1, 2, 4, 8, 16, 32, 64, 128};

// 1 where the table has the bit of a grey, else 0.
HWY_INLINE Vec8 Drop(Vec8 grey, const DropsOfGreys& drops) {
  const Tag8 d;
  const Vec8 byte =
      hn::And(hn::BitCast(d, hn::ShiftRight<3>(hn::BitCast(Tag16(), grey))), hn::Set(d, 0x1F));
  const Vec8 nibble = hn::And(byte, hn::Set(d, 0x0F));
  const Vec8 low = hn::TableLookupBytes(hn::LoadDup128(d, drops.bits), nibble);
  const Vec8 high = hn::TableLookupBytes(hn::LoadDup128(d, drops.bits + 16), nibble);
  const Vec8 bits = hn::IfThenElse(hn::Eq(byte, nibble), low, high);
  const Vec8 bit =
      hn::TableLookupBytes(hn::LoadDup128(d, kBitOfByte), hn::And(grey, hn::Set(d, 7)));
  return hn::IfThenElseZero(hn::Eq(hn::And(bits, bit), bit), hn::Set(d, 1));
}

HWY_INLINE Vec8 LumaOfGrey(Vec8 grey) {
  return hn::Sub(grey, Drop(grey, kLumaDrops));
}
HWY_INLINE Vec8 UOfGrey(Vec8 grey) {
  return hn::Sub(hn::Set(Tag8(), 128), Drop(grey, kUDrops));
}

// 1 where the double sum of U is below the quotient of its S. S is a multiple of 1000 where R = G
// and B - R is even, nowhere else, and the double sum then falls short for twelve values of R = G,
// the ones that it falls short for in greys, with all B up to R.
HWY_INLINE Vec8 DropsOfU(Vec8 r, Vec8 g, Vec8 b) {
  const auto multiple = hn::And(hn::Eq(r, g), hn::Eq(hn::Min(r, b), b));
  const Vec8 odd = hn::Xor(r, b);
  return hn::IfThenElseZero(multiple, hn::AndNot(odd, Drop(r, kUDrops)));
}

// --- RGB to YUV

// What luma becomes where some lanes are exact multiples: greys by the table, and if there are
// others the whole vector in doubles.
inline HWY_NOINLINE Vec16 MendLuma(Vec16 quotient, Mask16 exact, Vec16 r, Vec16 g, Vec16 b) {
  const Mask16 grey = hn::And(hn::Eq(r, g), hn::Eq(g, b));
  if (HWY_UNLIKELY(!hn::AllFalse(Tag16(), hn::AndNot(grey, exact)))) {
    return InDoubles(LumaOfDoubles(), r, g, b);
  }
  const Vec16 drop = AsWords(Drop(AsBytes(r), kLumaDrops));
  return hn::Sub(quotient, hn::IfThenElseZero(grey, drop));
}

HWY_INLINE Vec16 Luma(Vec16 r, Vec16 g, Vec16 b) {
  Mask16 exact;
  const Vec16 quotient = LumaQuotient(r, g, b, exact);
  if (HWY_LIKELY(hn::AllFalse(Tag16(), exact))) {
    return quotient;
  }
  return MendLuma(quotient, exact, r, g, b);
}

HWY_INLINE Vec8 LumaByWords(Vec8 r, Vec8 g, Vec8 b) {
  return Join(Luma(Even(r), Even(g), Even(b)), Luma(Odd(r), Odd(g), Odd(b)));
}

#if KORVEX2_NEON

// Widening products of bytes add up in eight words: the sum S of each half of a vector, as
// S / 8 + 1 and what the eighth leaves.
struct HalfSum {
  uint16x8_t next;
  uint16x8_t l;

  // floor(S / 1000) in 64ths. The factor is a little below 64 / 125 of 2^15, which the 1 makes up
  // for: with x < 2^15 it is off by less than 0.0035, and x + 1 by 1 / 125 = 0.008 ahead.
  HWY_INLINE uint16x8_t In64ths() const {
    return vreinterpretq_u16_s16(vqdmulhq_n_s16(vreinterpretq_s16_u16(next), 16777));
  }
};

enum class HalfOf { Low, High };

template <HalfOf Half, int Weight>
HWY_INLINE uint16x8_t AddProduct(uint16x8_t sum, Vec8 v) {
  const uint8x16_t weight = vdupq_n_u8(Weight < 0 ? -Weight : Weight);
  if constexpr (Half == HalfOf::High) {
    return Weight < 0 ? vmlsl_high_u8(sum, v.raw, weight) : vmlal_high_u8(sum, v.raw, weight);
  }
  const uint8x8_t low = vget_low_u8(v.raw);
  return Weight < 0 ? vmlsl_u8(sum, low, vget_low_u8(weight))
                    : vmlal_u8(sum, low, vget_low_u8(weight));
}

template <HalfOf Half, Weights W>
HWY_INLINE uint16x8_t Weigh(std::uint16_t from, Vec8 r, Vec8 g, Vec8 b) {
  const uint16x8_t red = AddProduct<Half, W.red>(vdupq_n_u16(from), r);
  return AddProduct<Half, W.blue>(AddProduct<Half, W.green>(red, g), b);
}

template <HalfOf Half, Weights Sum>
HWY_INLINE HalfSum SumUp(Vec8 r, Vec8 g, Vec8 b) {
  constexpr Weights kK = Sum.K();
  const uint16x8_t k = Weigh<Half, kK>(kK.offset + 1, r, g, b);
  const uint16x8_t l = Weigh<Half, Sum.L()>(0, r, g, b);
  return {vsraq_n_u16(k, l, 3), l};
}

template <Weights Sum>
HWY_INLINE Vec8 QuotientsOf(Vec8 r, Vec8 g, Vec8 b) {
  const uint16x8_t low = SumUp<HalfOf::Low, Sum>(r, g, b).In64ths();
  const uint16x8_t high = SumUp<HalfOf::High, Sum>(r, g, b).In64ths();
  return Vec8{vshrn_high_n_u16(vshrn_n_u16(low, 6), high, 6)};
}

HWY_INLINE uint16x8_t LumaOfHalf(const HalfSum& sum, uint16x8_t& rest) {
  const uint16x8_t quotient = vshrq_n_u16(sum.In64ths(), 6);
  const uint16x8_t left = vmlsq_n_u16(sum.next, quotient, 125);
  rest = vorrq_u16(veorq_u16(left, vdupq_n_u16(1)), vandq_u16(sum.l, vdupq_n_u16(7)));
  return quotient;
}

HWY_INLINE Vec8 LumaOfBytes(Vec8 r, Vec8 g, Vec8 b) {
  uint16x8_t rest0, rest1;
  const uint16x8_t low = LumaOfHalf(SumUp<HalfOf::Low, kSumY>(r, g, b), rest0);
  const uint16x8_t high = LumaOfHalf(SumUp<HalfOf::High, kSumY>(r, g, b), rest1);
  const bool anyExact = vminvq_u16(vminq_u16(rest0, rest1)) == 0;
  return HWY_UNLIKELY(anyExact)
             ? LumaByWords(r, g, b)
             : Vec8{vuzp1q_u8(vreinterpretq_u8_u16(low), vreinterpretq_u8_u16(high))};
}
HWY_INLINE Vec8 UQuotients(Vec8 r, Vec8 g, Vec8 b) {
  return QuotientsOf<kSumU>(r, g, b);
}
HWY_INLINE Vec8 VQuotients(Vec8 r, Vec8 g, Vec8 b) {
  return QuotientsOf<kSumV>(r, g, b);
}

#else

HWY_INLINE Vec8 LumaOfBytes(Vec8 r, Vec8 g, Vec8 b) {
  return LumaByWords(r, g, b);
}
HWY_INLINE Vec8 UQuotients(Vec8 r, Vec8 g, Vec8 b) {
  return Join(UQuotient(Even(r), Even(g), Even(b)), UQuotient(Odd(r), Odd(g), Odd(b)));
}
HWY_INLINE Vec8 VQuotients(Vec8 r, Vec8 g, Vec8 b) {
  return Join(VQuotient(Even(r), Even(g), Even(b)), VQuotient(Odd(r), Odd(g), Odd(b)));
}

#endif

HWY_INLINE void Encode(Vec8 r, Vec8 g, Vec8 b, Vec8& y, Vec8& u, Vec8& v) {
  y = LumaOfBytes(r, g, b);
  u = UQuotients(r, g, b);
  if (!hn::AllFalse(Tag8(), hn::Eq(r, g))) {
    u = hn::Sub(u, DropsOfU(r, g, b));
  }
  v = VQuotients(r, g, b);
}

// --- YUV to RGB
//
// A chroma term is added to luma and clamped to a byte: which is a saturating addition of what is
// positive of the term, then a saturating subtraction of what is negative. Chroma comes as words
// U | V << 8.

using TagI8 = hn::ScalableTag<std::int8_t>;

// |trunc((344 dU + 714 dV) / 1000)| as doubles have it.
inline int GreenOf(std::uint16_t uv) {
  const int du = (uv & 0xFF) - 128;
  const int dv = (uv >> 8) - 128;
  return std::abs(static_cast<int>(du * 0.344 + dv * 0.714));
}

// Calls a function with the number of each lane that a mask names.
template <class Tag, typename Function>
HWY_INLINE void ForEachLane(Tag d, hn::Mask<Tag> mask, Function function) {
  std::uint8_t bits[(hn::MaxLanes(Tag()) + 7) / 8 + 8];
  const std::size_t bytes = hn::StoreMaskBits(d, mask, bits);
  for (std::size_t byte = 0; byte < bytes; ++byte) {
    for (unsigned left = bits[byte]; left != 0; left &= left - 1) {
      function(8 * byte + static_cast<std::size_t>(std::countr_zero(left)));
    }
  }
}

inline HWY_NOINLINE Vec16 MendGreen(Vec16 green, Vec16 uv, Mask16 exact) {
  const Tag16 d;
  HWY_ALIGN std::uint16_t terms[hn::MaxLanes(Tag16())];
  HWY_ALIGN std::uint16_t chroma[hn::MaxLanes(Tag16())];
  hn::Store(green, d, terms);
  hn::Store(uv, d, chroma);
  ForEachLane(d, exact, [&](std::size_t i) HWY_ATTR {
    terms[i] = static_cast<std::uint16_t>(GreenOf(chroma[i]));
  });
  return hn::Load(d, terms);
}

// 43 dU + 89 dV, the differences as signed bytes.
HWY_INLINE VecI16 GreenSum(Vec16 differences) {
#if KORVEX2_X86
  const auto weights = hn::Set(Tag16(), 89 << 8 | 43);
  return VecI16{KORVEX2_INTRINSIC(maddubs_epi16)(weights.raw, differences.raw)};
#else
  const TagI16 d;
  const VecI16 du = hn::ShiftRight<8>(Signed(hn::ShiftLeft<8>(differences)));
  const VecI16 dv = hn::ShiftRight<8>(Signed(differences));
  return hn::Add(hn::Mul(du, hn::Set(d, 43)), hn::Mul(dv, hn::Set(d, 89)));
#endif
}

// The magnitude of the green term, and all bits of the lanes where it is below zero. With
// T = 344 dU + 714 dV = 8 (43 dU + 89 dV) + 2 dV its eighth, toward zero, is divided by 125, in
// 128ths as exact multiples show up there: by a fraction of zero.
HWY_INLINE void GreenTerm(Vec16 uv, Vec16 differences, Vec16& magnitude, Vec16& sign) {
  const Tag16 d;
  const Vec16 zero = hn::Zero(d);
  const VecI16 eighth = hn::Add(GreenSum(differences), hn::ShiftRight<10>(Signed(differences)));
  const Vec16 rest = hn::And(differences, hn::Set(d, 0x0300));  // of T / 8: 2 dV mod 8
  sign = Unsigned(hn::ShiftRight<15>(eighth));
  const Vec16 whole = hn::IfThenElseZero(hn::Eq(rest, zero), sign);  // -1 to add for the complement
  const Vec16 x = hn::Sub(hn::Xor(Unsigned(eighth), sign), whole);
  const Vec16 in128ths = hn::MulHigh(hn::Add(x, x), hn::Set(d, 33555));
  magnitude = hn::ShiftRight<7>(in128ths);

  const Vec16 fraction = hn::Or(hn::And(in128ths, hn::Set(d, 127)), rest);
  const Mask16 exact = hn::And(hn::Eq(fraction, zero), hn::Ne(magnitude, zero));
  if (HWY_UNLIKELY(!hn::AllFalse(d, exact))) {
    magnitude = MendGreen(magnitude, uv, exact);
  }
}

// The terms of blue in low bytes and of red in high ones: trunc(d * 1.772), trunc(d * 1.402) by
// |d| + floor(|d| * 0.772), the fractions given as ceil(f * 65536).
HWY_INLINE void BlueAndRedTerms(Vec16 differences, Vec16& up, Vec16& down) {
  const auto bytes = hn::BitCast(TagI8(), differences);
  const Vec8 size = hn::BitCast(Tag8(), hn::Abs(bytes));
  const Vec16 low = hn::Set(Tag16(), 0x00FF);
  const Vec16 ofU = hn::MulHigh(hn::And(AsWords(size), low), hn::Set(Tag16(), 50594));
  const Vec16 ofV = hn::MulHigh(hn::AndNot(low, AsWords(size)), hn::Set(Tag16(), 26346));
  const Vec8 term = hn::Add(size, AsBytes(hn::Or(ofU, hn::AndNot(low, ofV))));
  const auto negative = hn::RebindMask(Tag8(), hn::Lt(bytes, hn::Zero(TagI8())));
  up = AsWords(hn::IfThenZeroElse(negative, term));
  down = AsWords(hn::IfThenElseZero(negative, term));
}

HWY_INLINE Vec16 Differences(Vec16 uv) {
  return hn::Xor(uv, hn::Set(Tag16(), 0x8080));
}

HWY_INLINE Vec8 Shift(Vec8 y, Vec8 up, Vec8 down) {
  return hn::SaturatedSub(hn::SaturatedAdd(y, up), down);
}

// Bytes from the low, or the high, bytes of two vectors of words, one for even and one for odd.
HWY_INLINE Vec8 LowBytes(Vec16 even, Vec16 odd) {
  return AsBytes(hn::Or(hn::And(even, hn::Set(Tag16(), 0x00FF)), hn::ShiftLeft<8>(odd)));
}
HWY_INLINE Vec8 HighBytesOf(Vec16 even, Vec16 odd) {
  return AsBytes(hn::Or(hn::ShiftRight<8>(even), hn::AndNot(hn::Set(Tag16(), 0x00FF), odd)));
}

HWY_INLINE Vec8 TwiceLow(Vec16 words) {
  alignas(16) static constexpr std::uint8_t kPlaces[16] = {0, 0, 2,  2,  4,  4,  6,  6,
                                                           8, 8, 10, 10, 12, 12, 14, 14};
  return hn::TableLookupBytes(AsBytes(words), hn::LoadDup128(Tag8(), kPlaces));
}
HWY_INLINE Vec8 TwiceHigh(Vec16 words) {
  alignas(16) static constexpr std::uint8_t kPlaces[16] = {1, 1, 3,  3,  5,  5,  7,  7,
                                                           9, 9, 11, 11, 13, 13, 15, 15};
  return hn::TableLookupBytes(AsBytes(words), hn::LoadDup128(Tag8(), kPlaces));
}

HWY_INLINE Vec8 ShiftGreen(Vec8 y, Vec8 magnitude, Vec8 sign) {
  return Shift(y, hn::And(magnitude, sign), hn::AndNot(sign, magnitude));
}

// Pixels of which each two neighbours, even and odd, have one chroma.
HWY_INLINE void DecodePairs(Vec8 y, Vec16 uv, Vec8& r, Vec8& g, Vec8& b) {
  const Vec16 differences = Differences(uv);
  Vec16 up, down, green, sign;
  BlueAndRedTerms(differences, up, down);
  GreenTerm(uv, differences, green, sign);
  r = Shift(y, TwiceHigh(up), TwiceHigh(down));
  g = ShiftGreen(y, TwiceLow(green), AsBytes(sign));
  b = Shift(y, TwiceLow(up), TwiceLow(down));
}

// Pixels of which each has its own chroma: that of the even and that of the odd ones.
HWY_INLINE void DecodeEach(Vec8 y, Vec16 even, Vec16 odd, Vec8& r, Vec8& g, Vec8& b) {
  const Vec16 evenDifferences = Differences(even);
  const Vec16 oddDifferences = Differences(odd);
  Vec16 up0, down0, green0, sign0, up1, down1, green1, sign1;
  BlueAndRedTerms(evenDifferences, up0, down0);
  BlueAndRedTerms(oddDifferences, up1, down1);
  GreenTerm(even, evenDifferences, green0, sign0);
  GreenTerm(odd, oddDifferences, green1, sign1);
  r = Shift(y, HighBytesOf(up0, up1), HighBytesOf(down0, down1));
  g = ShiftGreen(y, LowBytes(green0, green1), LowBytes(sign0, sign1));
  b = Shift(y, LowBytes(up0, up1), LowBytes(down0, down1));
}

#endif  // HWY_TARGET != HWY_SCALAR

}  // namespace Korvex2::Kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
