// Highway, with the vectors of bytes and words that all kernels are made of. Included once per
// instruction set.

#if defined(KORVEX2_HIGHWAY_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef KORVEX2_HIGHWAY_INL_H_
#undef KORVEX2_HIGHWAY_INL_H_
#else
#define KORVEX2_HIGHWAY_INL_H_
#endif

#include <cstddef>
#include <cstdint>

#include "hwy/highway.h"

// Highway makes sure of the 512-bit dot products before it chooses this set, but does not tell the
// compiler of them.
#if HWY_TARGET == HWY_AVX3_DL
#undef HWY_TARGET_STR
#define HWY_TARGET_STR                                            \
  HWY_TARGET_STR_AVX3                                             \
  ",vpclmulqdq,avx512vbmi,avx512vbmi2,vaes,avxvnni,avx512bitalg," \
  "avx512vpopcntdq,avx512vnni"
#endif

// x86 has shuffles of bytes within blocks of 16, and with VBMI within a whole vector, but no loads
// and stores that take channels apart.
#undef KORVEX2_X86
#if HWY_TARGET == HWY_SSE4 || HWY_TARGET == HWY_AVX2 || HWY_TARGET == HWY_AVX3 || \
    HWY_TARGET == HWY_AVX3_DL
#define KORVEX2_X86 1
#else
#define KORVEX2_X86 0
#endif
// The intrinsic of a name for vectors of this set's width.
#undef KORVEX2_INTRINSIC
#if HWY_TARGET == HWY_AVX3 || HWY_TARGET == HWY_AVX3_DL
#define KORVEX2_INTRINSIC(name) _mm512_##name
#elif HWY_TARGET == HWY_AVX2
#define KORVEX2_INTRINSIC(name) _mm256_##name
#else
#define KORVEX2_INTRINSIC(name) _mm_##name
#endif

#undef KORVEX2_NEON
#define KORVEX2_NEON (HWY_TARGET == HWY_NEON)

#undef KORVEX2_VBMI
#define KORVEX2_VBMI (HWY_TARGET == HWY_AVX3_DL)

HWY_BEFORE_NAMESPACE();
namespace Korvex2::Kernels::HWY_NAMESPACE {

#if HWY_TARGET != HWY_SCALAR

namespace hn = hwy::HWY_NAMESPACE;

using Tag8 = hn::ScalableTag<std::uint8_t>;
using Tag16 = hn::ScalableTag<std::uint16_t>;
using Tag32 = hn::ScalableTag<std::uint32_t>;
using Half8 = hn::Half<Tag8>;
using Half16 = hn::Half<Tag16>;
using Vec8 = hn::Vec<Tag8>;
using Vec16 = hn::Vec<Tag16>;
using Vec32 = hn::Vec<Tag32>;

HWY_INLINE Vec8 AsBytes(Vec16 v) {
  return hn::BitCast(Tag8(), v);
}
HWY_INLINE Vec8 AsBytes(Vec32 v) {
  return hn::BitCast(Tag8(), v);
}
HWY_INLINE Vec16 AsWords(Vec8 v) {
  return hn::BitCast(Tag16(), v);
}
HWY_INLINE Vec32 AsDoubleWords(Vec8 v) {
  return hn::BitCast(Tag32(), v);
}

// A table of one byte for each byte of the widest vector.
struct alignas(64) ByteTable {
  std::uint8_t at[64];
};

#endif  // HWY_TARGET != HWY_SCALAR

}  // namespace Korvex2::Kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif
