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

#include "hwy/highway.h"
#include "kernels/simd/Interleave-inl.h"

HWY_BEFORE_NAMESPACE();
namespace Korvex2::kernels::HWY_NAMESPACE {

#if HWY_TARGET != HWY_SCALAR

using TagI16 = hn::ScalableTag<std::int16_t>;
using VecI16 = hn::Vec<TagI16>;
using Mask16 = hn::Mask<Tag16>;

// --- Bytes as words: the even and the odd pixels of a vector ---

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

// --- Quotients ---

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

// S = -169 R - 331 G + 500 B + 128000.
HWY_INLINE Vec16 UQuotient(Vec16 r, Vec16 g, Vec16 b, Mask16& exact) {
  const Vec16 negative = hn::Add(Times(r, 22), Times(g, 42));
  const Vec16 k = hn::Sub(hn::Add(Times(b, 62), hn::Set(Tag16(), 16000)), negative);
  const Vec16 l = hn::Add(hn::Add(Times(r, 7), Times(g, 5)), hn::ShiftLeft<2>(b));
  const Vec16 x = hn::Add(k, hn::ShiftRight<3>(l));
  const Vec16 quotient = By125(x);
  exact = IsExact(x, quotient, l);
  return quotient;
}

// S = 500 R - 419 G - 81 B + 128000. No exact multiple comes out lower in doubles.
HWY_INLINE Vec16 VQuotient(Vec16 r, Vec16 g, Vec16 b) {
  const Vec16 negative = hn::Add(Times(g, 53), Times(b, 11));
  const Vec16 k = hn::Sub(hn::Add(Times(r, 62), hn::Set(Tag16(), 16000)), negative);
  const Vec16 l = hn::Add(hn::Add(hn::ShiftLeft<2>(r), Times(g, 5)), Times(b, 7));
  return By125(hn::Add(k, hn::ShiftRight<3>(l)));
}

// --- The same in doubles ---

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

struct UOfDoubles {
  HWY_INLINE VecD operator()(VecD r, VecD g, VecD b) const {
    const VecD sum = hn::Add(hn::Add(Weigh(r, -0.169), Weigh(g, -0.331)), Weigh(b, 0.5));
    return hn::Add(sum, hn::Set(TagD(), 128.0));
  }
};

// --- RGB to YUV ---

// --- Greys ---

// For R = G = B every sum is an exact multiple of 1000, so greys go by a table: whether the double
// sum comes out one below the multiple, a bit for each byte.
struct DropsOfGreys {
  std::uint8_t bits[32] = {};
};

template <typename Sum>
constexpr DropsOfGreys DropsOf(Sum sum, int multiple(int)) {
  DropsOfGreys drops;
  for (int v = 0; v < 256; ++v) {
    const bool below = static_cast<int>(sum(static_cast<double>(v))) < multiple(v);
    drops.bits[v / 8] = static_cast<std::uint8_t>(drops.bits[v / 8] | (below << (v % 8)));
  }
  return drops;
}

constexpr DropsOfGreys kLumaDrops =
    DropsOf([](double v) { return (v * 0.299 + v * 0.587) + v * 0.114; }, [](int v) { return v; });
constexpr DropsOfGreys kUDrops =
    DropsOf([](double v) { return ((v * -0.169 + v * -0.331) + v * 0.5) + 128.0; },
            [](int) { return 128; });
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

// What a quotient becomes where some lanes are exact multiples: greys by the table, and if there
// are others the whole vector in doubles.
template <typename Function>
HWY_NOINLINE Vec16 MendExact(Vec16 quotient, Mask16 exact, const DropsOfGreys& drops,
                             Function function, Vec16 r, Vec16 g, Vec16 b) {
  const Mask16 grey = hn::And(hn::Eq(r, g), hn::Eq(g, b));
  if (HWY_UNLIKELY(!hn::AllFalse(Tag16(), hn::AndNot(grey, exact)))) {
    return InDoubles(function, r, g, b);
  }
  const Vec16 drop = hn::BitCast(Tag16(), Drop(hn::BitCast(Tag8(), r), drops));
  return hn::Sub(quotient, hn::IfThenElseZero(grey, drop));
}

HWY_INLINE Vec16 Luma(Vec16 r, Vec16 g, Vec16 b) {
  Mask16 exact;
  const Vec16 quotient = LumaQuotient(r, g, b, exact);
  if (HWY_LIKELY(hn::AllFalse(Tag16(), exact))) {
    return quotient;
  }
  return MendExact(quotient, exact, kLumaDrops, LumaOfDoubles(), r, g, b);
}

HWY_INLINE Vec16 ChromaU(Vec16 r, Vec16 g, Vec16 b) {
  Mask16 exact;
  const Vec16 quotient = UQuotient(r, g, b, exact);
  if (HWY_LIKELY(hn::AllFalse(Tag16(), exact))) {
    return quotient;
  }
  return MendExact(quotient, exact, kUDrops, UOfDoubles(), r, g, b);
}

HWY_INLINE Vec8 LumaOfBytes(Vec8 r, Vec8 g, Vec8 b) {
  return Join(Luma(Even(r), Even(g), Even(b)), Luma(Odd(r), Odd(g), Odd(b)));
}

HWY_INLINE void Encode(Vec8 r, Vec8 g, Vec8 b, Vec8& y, Vec8& u, Vec8& v) {
  const Vec16 r0 = Even(r), g0 = Even(g), b0 = Even(b);
  const Vec16 r1 = Odd(r), g1 = Odd(g), b1 = Odd(b);
  y = Join(Luma(r0, g0, b0), Luma(r1, g1, b1));
  u = Join(ChromaU(r0, g0, b0), ChromaU(r1, g1, b1));
  v = Join(VQuotient(r0, g0, b0), VQuotient(r1, g1, b1));
}

// --- YUV to RGB ---

// trunc(d * 1.F) for |d| <= 128, F given as ceil(0.F * 65536): |d| + floor(|d| * 0.F).
HWY_INLINE VecI16 ScaledUp(VecI16 d, int fraction) {
  const Vec16 magnitude = Unsigned(hn::Abs(d));
  const Vec16 product =
      hn::MulHigh(magnitude, hn::Set(Tag16(), static_cast<std::uint16_t>(fraction)));
  const VecI16 sign = hn::ShiftRight<15>(d);
  return hn::Sub(hn::Xor(Signed(hn::Add(magnitude, product)), sign), sign);
}

// The chroma terms of the decoder; u and v are bytes minus 128.
struct GreenOfDoubles {
  HWY_INLINE VecD operator()(VecD u, VecD v, VecD) const {
    const VecD offset = hn::Set(TagD(), 128.0);
    const VecD du = hn::Sub(u, offset);
    const VecD dv = hn::Sub(v, offset);
    // Shifted into the positive after the truncation, since words are unsigned.
    return hn::Add(hn::Trunc(hn::Add(Weigh(du, 0.344), Weigh(dv, 0.714))), hn::Set(TagD(), 256.0));
  }
};

inline HWY_NOINLINE VecI16 GreenTermInDoubles(VecI16 du, VecI16 dv) {
  const VecI16 offset = hn::Set(TagI16(), 128);
  const Vec16 u = Unsigned(hn::Add(du, offset));
  const Vec16 v = Unsigned(hn::Add(dv, offset));
  const Vec16 shifted = InDoubles(GreenOfDoubles(), u, v, v);
  return hn::Sub(Signed(shifted), hn::Set(TagI16(), 256));
}

// trunc(T / 1000), T = 344 dU + 714 dV. T / 4 = 86 dU + 178.5 dV fits a word but for its sign,
// which a saturating sum tells; the magnitude is then divided as above.
HWY_INLINE VecI16 GreenTerm(VecI16 du, VecI16 dv) {
  const TagI16 d;
  const VecI16 ofU = hn::Mul(du, hn::Set(d, 86));
  const VecI16 ofV = hn::Add(hn::Mul(dv, hn::Set(d, 178)), hn::ShiftRight<1>(dv));
  const VecI16 sign = hn::ShiftRight<15>(hn::SaturatedAdd(ofU, ofV));
  const VecI16 half = hn::And(dv, hn::Set(d, 1));
  const VecI16 quarter = hn::Add(hn::Add(ofU, ofV), hn::And(half, sign));  // toward zero
  const Vec16 magnitude = Unsigned(hn::Sub(hn::Xor(quarter, sign), sign));
  const Vec16 quotient = By125(hn::ShiftRight<1>(magnitude));
  const VecI16 term = hn::Sub(hn::Xor(Signed(quotient), sign), sign);

  const Vec16 rest = hn::Or(hn::Sub(magnitude, Times(quotient, 250)), Unsigned(half));
  const Mask16 exact =
      hn::And(hn::Eq(rest, hn::Zero(Tag16())), hn::Ne(quotient, hn::Zero(Tag16())));
  if (HWY_LIKELY(hn::AllFalse(Tag16(), exact))) {
    return term;
  }
  return GreenTermInDoubles(du, dv);
}

HWY_INLINE void ChromaTerms(Vec16 u, Vec16 v, VecI16& rv, VecI16& guv, VecI16& bu) {
  const VecI16 offset = hn::Set(TagI16(), 128);
  const VecI16 du = hn::Sub(Signed(u), offset);
  const VecI16 dv = hn::Sub(Signed(v), offset);
  rv = ScaledUp(dv, 26346);  // 1.402
  guv = GreenTerm(du, dv);
  bu = ScaledUp(du, 50594);  // 1.772
}

HWY_INLINE Vec16 ClampToByte(VecI16 v) {
  const TagI16 d;
  return Unsigned(hn::Min(hn::Max(v, hn::Zero(d)), hn::Set(d, 255)));
}

#endif  // HWY_TARGET != HWY_SCALAR

}  // namespace Korvex2::kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
