// Luma of 16-bit samples: S = 299 R + 587 G + 114 B takes 26 bits. Included once per instruction
// set.

#if defined(KORVEX2_LUMA16_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KORVEX2_LUMA16_INL_H_
#undef KORVEX2_LUMA16_INL_H_
#else
#define KORVEX2_LUMA16_INL_H_
#endif

#include "kernels/scalar/Word.h"
#include "kernels/vector/Quads-inl.h"

HWY_BEFORE_NAMESPACE();
namespace Korvex2::Kernels::HWY_NAMESPACE {

#if KORVEX2_VBMI

// Three or four words a pixel, without regard to the last; blue or red first. Sums of 16 pixels.
template <std::size_t Channels, bool BlueFirst>
struct SumsOfWords {
  static constexpr std::size_t kBytesOfTwo = 4 * Channels;

  static HWY_INLINE Vec32 Get(const std::uint8_t* p) {
    constexpr std::size_t kBytes = 2 * Channels;
    constexpr std::size_t kSecond = 16 * kBytes - 64;
    constexpr auto kOfTwo = [](std::size_t i) { return i / 4 * kBytes + i % 4; };
    constexpr auto kOfThird = [](std::size_t i) { return i / 4 * kBytes + 4 + i % 2; };
    static constexpr Picks kTwo = MakePicks(kSecond, kOfTwo);
    static constexpr Picks kThird = MakePicks(kSecond, kOfThird);
    const Vec8 first = hn::LoadU(Tag8(), p);
    const Vec8 second = hn::LoadU(Tag8(), p + kSecond);
    // Products of words are signed: samples less 2^15, which comes to 1000 * 2^15 in the sum.
    const __m512i sign = _mm512_set1_epi16(-0x8000);
    const __m512i two = _mm512_xor_si512(Pick(kTwo, first, second).raw, sign);
    const __m512i third = _mm512_xor_si512(Pick(kThird, first, second).raw, sign);
    const int firstWeight = BlueFirst ? 114 : 299;
    const int thirdWeight = BlueFirst ? 299 : 114;
    const __m512i lifted = _mm512_set1_epi32(1000 << 15);
    const __m512i sum =
        _mm512_dpwssd_epi32(lifted, two, _mm512_set1_epi32(587 << 16 | firstWeight));
    return Vec32{_mm512_dpwssd_epi32(sum, third, _mm512_set1_epi32(thirdWeight))};
  }

  static std::uint32_t Mend(const std::uint8_t* p, std::size_t pixel) {
    const std::uint8_t* const words = p + 2 * Channels * pixel;  // at any address
    const auto first = Scalar::Load<std::uint16_t>(words);
    const auto green = Scalar::Load<std::uint16_t>(words + 2);
    const auto third = Scalar::Load<std::uint16_t>(words + 4);
    return BlueFirst ? Scalar::Luma(third, green, first) : Scalar::Luma(first, green, third);
  }
};

// floor(S / 1000) for S < 2^26. With x = floor(S / 8) < 2^23, exact as a float, x / 125 is at least
// 1 / 125 off the next integer: more than the product and its factor are off, 0.0051 together where
// the quotient has 16 bits, of which 0.002 are given in advance.
HWY_INLINE Vec32 ThousandthOf(Vec32 sum) {
  const __m512 x = _mm512_cvtepi32_ps(_mm512_srli_epi32(sum.raw, 3));
  const __m512 quotient = _mm512_fmadd_ps(x, _mm512_set1_ps(0.008F), _mm512_set1_ps(0.002F));
  return Vec32{_mm512_cvttps_epi32(quotient)};
}

// Luma of 16 pixels from their sums; `exact` are the pixels to mend.
HWY_INLINE Vec32 LumaOfSums(Vec32 sums, std::uint32_t& exact) {
  const Vec32 luma = ThousandthOf(sums);
  // Words suffice for what is left of the sums, which is less than 1000.
  const __m512i thousands = _mm512_mullo_epi16(luma.raw, _mm512_set1_epi16(1000));
  const __m512i rest = _mm512_sub_epi16(sums.raw, thousands);
  exact = _mm512_testn_epi32_mask(rest, _mm512_set1_epi32(0xFFFF));
  return luma;
}

template <typename Sums>
HWY_NOINLINE Vec16 MendLuma16(Vec16 luma, std::uint32_t exact, const std::uint8_t* p) {
  HWY_ALIGN std::uint16_t words[32];
  hn::Store(luma, Tag16(), words);
  for (; exact != 0; exact &= exact - 1) {
    const auto i = static_cast<std::size_t>(std::countr_zero(exact));
    words[i] = static_cast<std::uint16_t>(Sums::Mend(p, i));
  }
  return hn::Load(Tag16(), words);
}

// Luma of 32 pixels.
template <typename Sums>
HWY_INLINE Vec16 GetLuma16(const std::uint8_t* p) {
  std::uint32_t exact0, exact1;
  const Vec32 low = LumaOfSums(Sums::Get(p), exact0);
  const Vec32 high = LumaOfSums(Sums::Get(p + 8 * Sums::kBytesOfTwo), exact1);
  const Vec16 luma{_mm512_permutexvar_epi64(_mm512_setr_epi64(0, 2, 4, 6, 1, 3, 5, 7),
                                            PackWords(low, high).raw)};
  const std::uint32_t exact = exact0 | exact1 << 16;
  return HWY_UNLIKELY(exact != 0) ? MendLuma16<Sums>(luma, exact, p) : luma;
}

#endif  // KORVEX2_VBMI

}  // namespace Korvex2::Kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
